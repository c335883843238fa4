// Images on the clipboard, in the form of device-independent bitmaps, and profiles as text.
#include "image/Source.h"

#include "foundation/Entry.h"
#include "foundation/Services.h"
#include "image/core/Refusals.h"
#include "image/files/BitmapHeader.h"
#include "measure/Profile.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

namespace Tesk {

namespace {

using namespace files;

/// Runs the part of a method that allocates memory.
template <typename F>
void Guarded(const Entry& entry, F work)
{
    entry.Guards(images::noInternalBuffer, work);
}

using Block = std::vector<std::uint8_t>;

constexpr std::size_t headerSize = bitmapHeaderSize, paletteSize = 1024;
constexpr int uncompressed = 0, bitFields = 3;

/// What the header of a bitmap tells, and where its rows are.
struct Bitmap
{
    std::int64_t width, height;
    PixelTypes type;
    std::int64_t offset, rowBytes, colors;
    bool bottomUp;
};

int ReadHeader(const Block& block, Bitmap& bitmap)
{
    const auto refuse = [] { return Status::Format(CannotRead, L"There is no suitable image data in the clipboard"); };
    if (block.size() < headerSize) return refuse();
    const std::int64_t height = static_cast<std::int32_t>(GetLittle(&block[8], 4));
    const int compression = static_cast<int>(GetLittle(&block[16], 4));
    const int bitCount = static_cast<int>(GetLittle(&block[14], 2));
    if (compression != uncompressed && compression != bitFields)
        return Status::Format(UnsupportedType,
                              L"The image Compression mode (%d) is not supported for this clipboard operation",
                              compression);
    if (bitCount != 8 && bitCount != 24 && bitCount != 32)
        return Status::Format(UnsupportedType, L"The image BitCount (%d) is not supported for this clipboard operation",
                              bitCount);
    bitmap.width = static_cast<std::int32_t>(GetLittle(&block[4], 4));
    bitmap.height = Abs(height);
    bitmap.bottomUp = height > 0;
    bitmap.type = bitCount == 8 ? Gray : bitCount == 24 ? Rgb : Rgba;
    bitmap.colors = bitCount != 8 ? 0 : GetLittle(&block[32], 4) == 0 ? 256 : GetLittle(&block[32], 4);
    const std::int64_t masks = bitCount != 8 && compression == bitFields ? 12 : 0;
    bitmap.offset = std::int64_t{GetLittle(&block[0], 4)} + 4 * bitmap.colors + masks;
    bitmap.rowBytes = BitmapRowBytes(bitmap.width, bitCount);
    const std::int64_t left = static_cast<std::int64_t>(block.size()) - bitmap.offset;
    const bool fits = bitmap.width > 0 && bitmap.height > 0 && left > 0 && bitmap.rowBytes <= left / bitmap.height;
    return fits ? NoError : refuse();
}

/// The window of an image as a bitmap.
Block BitmapOf(const Image& src)
{
    const int bitCount = 8 * ElementSize(src.Type);
    const auto rowBytes = static_cast<std::size_t>(RowBytes(src.Width, src.Type)),
               paddedBytes = static_cast<std::size_t>(BitmapRowBytes(src.Width, bitCount));
    const auto height = static_cast<std::size_t>(int(src.Height));
    const auto pitch = Max(paddedBytes, static_cast<std::size_t>(Max(int(src.Pitch), 0)));
    Block block(pitch * height + headerSize + paletteSize);
    PutBitmapHeader(block.data(), src.Width, src.Height, bitCount, src.Type == Gray ? 256 : 0);
    std::size_t at = headerSize;
    if (src.Type == Gray) {
        for (std::size_t i = 0; i < 256; i++)
            std::memset(&block[headerSize + 4 * i], static_cast<int>(i), 3);
        at += paletteSize;
    }
    for (int y = src.Height - 1; y >= 0; y--, at += paddedBytes)
        std::memcpy(&block[at], src.Row(y), rowBytes);
    return block;
}

/// Rows of four bytes a pixel, top row first, as a bitmap.
Block BitmapOf(const std::vector<std::uint8_t>& pixels, int width, int height)
{
    const std::size_t rowBytes = 4 * static_cast<std::size_t>(width), rows = static_cast<std::size_t>(height);
    Block block(headerSize + rowBytes * rows);
    PutBitmapHeader(block.data(), width, height, 32, 0);
    for (std::size_t y = 0; y < rows; y++)
        std::memcpy(&block[headerSize + rowBytes * (rows - 1 - y)], &pixels[rowBytes * y], rowBytes);
    return block;
}

/// The window of a profile as lines, with a zero behind them.
Block TextOf(const Profile& src)
{
    Block text;
    const int channels = src.Type == Rgb ? 3 : 1;
    const std::int32_t* sample = src.Samples();
    for (int i = 0; i < src.Length; i++, sample += channels) {
        char line[48];
        const int length = channels == 3
                               ? std::snprintf(line, sizeof line, "%d\t%d\t%d\r\n", sample[0], sample[1], sample[2])
                               : std::snprintf(line, sizeof line, "%d\r\n", sample[0]);
        text.insert(text.end(), line, line + length);
    }
    text.push_back(0);
    return text;
}

void Offer(int format, Block block)
{
    Services::Clipboard().Empty();
    Services::Clipboard().Put(format, std::move(block));
}

/// The pixels of a bitmap whose header was read.
void TakePixels(const Block& block, const Bitmap& bitmap, Image& dst)
{
    std::array<std::uint8_t, 256> gray{};
    const std::uint8_t* palette = &block[static_cast<std::size_t>(bitmap.offset - 4 * bitmap.colors)];
    for (std::size_t i = 0; i < 256 && static_cast<std::int64_t>(i) < bitmap.colors; i++)
        gray[i] = static_cast<std::uint8_t>((palette[4 * i] + palette[4 * i + 1] + palette[4 * i + 2]) / 3);
    const auto bytes = static_cast<std::size_t>(RowBytes(dst.Width, dst.Type));
    for (int y = 0; y < dst.Height; y++) {
        const std::int64_t line = bitmap.bottomUp ? bitmap.height - 1 - y : y;
        const std::uint8_t* src = &block[static_cast<std::size_t>(bitmap.offset + bitmap.rowBytes * line)];
        if (dst.Type != Gray) {
            std::memcpy(dst.Row(y), src, bytes);
            continue;
        }
        for (std::size_t x = 0; x < bytes; x++)
            dst.Row(y)[x] = gray[src[x]];
    }
}

} // namespace

void Source::CopyToClipboard(const Image& Src)
{
    const Entry entry("Tesk::Source::CopyToClipboard");
    if (entry.Refuses(CheckImage(Src))) return;
    if (Src.Type != Gray && Src.Type != Rgb && Src.Type != Rgba) {
        entry.Refuse(UnsupportedType, L"The image type (%ls) is not supported for this clipboard operation",
                     PixelTypeName(Src.Type));
        return;
    }
    Guarded(entry, [&] { Offer(IClipboard::Dib, BitmapOf(Src)); });
}

void Source::CopyToClipboard(const Profile& Src)
{
    const Entry entry("Tesk::Source::CopyToClipboard");
    if (entry.Refuses(CheckProfile(Src))) return;
    if (Src.Type != Gray && Src.Type != Rgb) {
        entry.Refuse(UnsupportedType, L"The profile pixel Type (%ls) is not supported for this clipboard operation",
                     PixelTypeName(Src.Type));
        return;
    }
    Guarded(entry, [&] { Offer(IClipboard::Text, TextOf(Src)); });
}

void Source::CopyToClipboard(void* Window)
{
    const Entry entry("Tesk::Source::CopyToClipboard");
    bool captured = true;
    Guarded(entry, [&] {
        int width = 0, height = 0;
        std::vector<std::uint8_t> pixels;
        captured = Services::WindowCapture().Capture(Window, width, height, pixels) && width > 0 && height > 0 &&
                   pixels.size() / 4 / static_cast<std::size_t>(width) >= static_cast<std::size_t>(height);
        if (captured) Offer(IClipboard::Bitmap, BitmapOf(pixels, width, height));
    });
    if (!captured) entry.Refuse(CannotPerform, L"The window cannot be captured");
}

void Source::PasteFromClipboard(Image& Dst)
{
    const Entry entry("Tesk::Source::PasteFromClipboard");
    Guarded(entry, [&] {
        Block block;
        Bitmap bitmap{};
        Services::Clipboard().Get(IClipboard::Dib, block);
        if (entry.Refuses(ReadHeader(block, bitmap))) return;
        const int width = static_cast<int>(bitmap.width), height = static_cast<int>(bitmap.height);
        if (Status::Raise(Dst.TrySet(width, height, bitmap.type), "Tesk::Image::Set")) return;
        Dst.DetachIfShared(false);
        TakePixels(block, bitmap, Dst);
    });
}

} // namespace Tesk
