// Windows bitmaps: uncompressed, 1, 8, 16, 24 and 32 bits a pixel, rows from the bottom.
#include "image/files/ImageFile.h"

#include "foundation/Entry.h"
#include "image/core/GrayDepth.h"

#include <array>
#include <cstring>
#include <vector>

namespace Tesk::files {

namespace {

constexpr int fileHeaderSize = 14, infoHeaderSize = bitmapHeaderSize, coreHeaderSize = 12;

/// What the headers tell.
struct Bitmap
{
    std::int64_t width = 0, height = 0;
    int bitCount = 0;
    std::uint32_t dataOffset = 0, headerSize = 0, colorsUsed = 0;
    /// Blue, green, red, gray.
    std::array<std::array<std::uint8_t, 4>, 256> palette{};
    bool paletteIsGray = true;
};

int ReadHeaders(ImageFile& file, Bitmap& bitmap)
{
    std::array<std::uint8_t, fileHeaderSize> header{};
    std::array<std::uint8_t, infoHeaderSize> info{};
    if (std::fread(header.data(), 1, header.size(), file.stream) != header.size())
        return Status::Format(CannotRead, L"Cannot read from file \"%ls\"", file.Name());
    if (header[0] != 'B' || header[1] != 'M')
        return Status::Format(UnsupportedFormat, L"File \"%ls\" is not a BMP image file (unrecognized signature)",
                              file.Name());
    if (std::fread(info.data(), 1, info.size(), file.stream) != info.size())
        return Status::Format(CannotRead, L"Cannot read the header from the BMP file \"%ls\"", file.Name());
    bitmap.dataOffset = GetLittle(&header[10], 4);
    bitmap.headerSize = GetLittle(&info[0], 4);
    if (bitmap.headerSize == coreHeaderSize) {
        bitmap.width = GetLittle(&info[4], 2);
        bitmap.height = GetLittle(&info[6], 2);
        bitmap.bitCount = static_cast<int>(GetLittle(&info[10], 2));
        return NoError;
    }
    if (bitmap.headerSize < infoHeaderSize) return Status::Format(UnsupportedFormat, L"Unsupported BMP header format");
    bitmap.width = static_cast<std::int32_t>(GetLittle(&info[4], 4));
    bitmap.height = Abs<std::int64_t>(static_cast<std::int32_t>(GetLittle(&info[8], 4)));
    bitmap.bitCount = static_cast<int>(GetLittle(&info[14], 2));
    bitmap.colorsUsed = GetLittle(&info[32], 4);
    if (GetLittle(&info[16], 4) != 0)
        return Status::Format(UnsupportedFormat, L"Compressed BMP file formats are not supported");
    return NoError;
}

int ReadPalette(ImageFile& file, Bitmap& bitmap)
{
    // The palette follows the header, however long that is; the short header has entries of three bytes.
    const std::size_t entryBytes = bitmap.headerSize == coreHeaderSize ? 3 : 4;
    const std::size_t entries = bitmap.colorsUsed == 0 || bitmap.colorsUsed > 256 ? 256 : bitmap.colorsUsed;
    bool read =
        std::fseek(file.stream, static_cast<long>(fileHeaderSize + std::int64_t{bitmap.headerSize}), SEEK_SET) == 0;
    for (std::size_t i = 0; read && i < entries; i++) {
        auto& color = bitmap.palette[i];
        read = std::fread(color.data(), 1, entryBytes, file.stream) == entryBytes;
        bitmap.paletteIsGray = bitmap.paletteIsGray && color[0] == color[1] && color[1] == color[2];
        color[3] = static_cast<std::uint8_t>((366 * color[1] + 37 * color[0] + 109 * color[2]) >> 9);
    }
    if (read) return NoError;
    return Status::Format(CannotRead, L"Cannot read the color palette from file \"%ls\"", file.Name());
}

using RowConverter = void (*)(const Bitmap&, const std::uint8_t*, std::uint8_t*, int);

void CopyBytes(const Bitmap& bitmap, const std::uint8_t* src, std::uint8_t* dst, int width)
{
    std::memcpy(dst, src, static_cast<std::size_t>((std::int64_t{width} * bitmap.bitCount + 7) / 8));
}

/// The converter from the native type, or null where there is none.
RowConverter ConverterOf(PixelTypes native, PixelTypes wanted)
{
    switch (native) {
    case Gray:
        if (wanted == Gray)
            return [](const Bitmap& b, const std::uint8_t* src, std::uint8_t* dst, int width) {
                for (int x = 0; x < width; x++)
                    dst[x] = b.palette[src[x]][3];
            };
        if (wanted == Gray16)
            return [](const Bitmap&, const std::uint8_t* src, std::uint8_t* dst, int width) {
                const int shift = levels::GrayShift();
                for (int x = 0; x < width; x++)
                    reinterpret_cast<std::uint16_t*>(dst)[x] = static_cast<std::uint16_t>(src[x] << shift);
            };
        if (wanted == Rgb)
            return [](const Bitmap& b, const std::uint8_t* src, std::uint8_t* dst, int width) {
                for (int x = 0; x < width; x++)
                    std::memcpy(dst + 3 * x, b.palette[src[x]].data(), 3);
            };
        return nullptr;
    case Gray16:
        if (wanted == Gray)
            return [](const Bitmap&, const std::uint8_t* src, std::uint8_t* dst, int width) {
                Gray16ToGray(reinterpret_cast<const std::uint16_t*>(src), dst, width);
            };
        if (wanted == Rgb)
            return [](const Bitmap&, const std::uint8_t* src, std::uint8_t* dst, int width) {
                const int shift = levels::GrayShift();
                for (int x = 0; x < width; x++)
                    std::memset(dst + 3 * x, reinterpret_cast<const std::uint16_t*>(src)[x] >> shift & 255, 3);
            };
        break;
    case Rgb:
        if (wanted == Gray)
            return [](const Bitmap&, const std::uint8_t* src, std::uint8_t* dst, int width) {
                BgrToGray(src, dst, width);
            };
        break;
    case Rgba:
        if (wanted == Gray)
            return [](const Bitmap&, const std::uint8_t* src, std::uint8_t* dst, int width) {
                BgraToGray(src, dst, width);
            };
        break;
    case Gray1:
        if (wanted == Gray)
            return [](const Bitmap&, const std::uint8_t* src, std::uint8_t* dst, int width) {
                BitsToGray(src, dst, width);
            };
        break;
    default:
        break;
    }
    return native == wanted ? CopyBytes : nullptr;
}

int NativeType(int bitCount, PixelTypes& type)
{
    switch (bitCount) {
    case 1:
        type = Gray1;
        return NoError;
    case 8:
        type = Gray;
        return NoError;
    case 16:
        type = Gray16;
        return NoError;
    case 24:
        type = Rgb;
        return NoError;
    case 32:
        type = Rgba;
        return NoError;
    default:
        return Status::Format(UnsupportedFormat,
                              L"Unsupported BMP image format, bit count is %d, not among 8, 16, 24 or 32", bitCount);
    }
}

int ReadBmp(ImageFile& file, Image& dst, PixelTypes wanted)
{
    Bitmap bitmap;
    if (const int code = ReadHeaders(file, bitmap)) return code;
    PixelTypes native = Undefined;
    if (bitmap.bitCount == 8)
        if (const int code = ReadPalette(file, bitmap)) return code;
    if (const int code = NativeType(bitmap.bitCount, native)) return code;
    if (wanted == Undefined) wanted = native == Gray && !bitmap.paletteIsGray ? Rgb : native;
    const RowConverter convert = ConverterOf(native, wanted);
    if (!convert) return RefuseConversion(native, wanted);
    if (std::fseek(file.stream, static_cast<long>(bitmap.dataOffset), SEEK_SET) != 0)
        return Status::Format(CannotRead, L"Cannot read image bitmap from file \"%ls\"", file.Name());
    const std::int64_t rowBytes = BitmapRowBytes(bitmap.width, bitmap.bitCount);
    const auto shortRow = [&] {
        return Status::Format(CannotRead, L"Cannot read image row from the BMP file \"%ls\"", file.Name());
    };
    if (bitmap.width > 0 && bitmap.height > 0 && rowBytes > file.Left() / bitmap.height) return shortRow();
    if (const int code = Allocate(file, dst, bitmap.width, bitmap.height, wanted, bitmap.bitCount)) return code;
    std::vector<std::uint8_t> row(static_cast<std::size_t>(rowBytes));
    for (int y = dst.Height - 1; y >= 0; y--) {
        if (std::fread(row.data(), 1, row.size(), file.stream) != row.size()) return shortRow();
        convert(bitmap, row.data(), dst.Row(y), dst.Width);
    }
    return NoError;
}

int CheckBmpType(PixelTypes type)
{
    if (type == Gray || type == Gray16 || type == Rgb || type == Rgba || type == Gray1) return NoError;
    return Status::Format(UnsupportedType,
                          L"The image type (%ls) is not supported for this operation, use one of Gray* or Rgb*",
                          PixelTypeName(type));
}

int WriteBmp(ImageFile& file, const Image& src)
{
    int bitCount = 0, paletteEntries = 0;
    switch (src.Type) {
    case Gray:
        bitCount = 8;
        paletteEntries = 256;
        break;
    case Gray16:
        bitCount = 16;
        break;
    case Rgb:
        bitCount = 24;
        break;
    case Rgba:
        bitCount = 32;
        break;
    case Gray1:
        bitCount = 1;
        paletteEntries = 2;
        break;
    default:
        break;
    }
    const int rowBytes = RowBytes(src.Width, src.Type),
              paddedBytes = static_cast<int>(BitmapRowBytes(src.Width, bitCount));
    const int dataOffset = fileHeaderSize + infoHeaderSize + 4 * paletteEntries;
    std::array<std::uint8_t, fileHeaderSize> header{'B', 'M'};
    PutLittle(&header[2],
              static_cast<std::uint32_t>(paddedBytes) * static_cast<std::uint32_t>(int(src.Height)) +
                  static_cast<std::uint32_t>(dataOffset),
              4);
    PutLittle(&header[10], static_cast<std::uint32_t>(dataOffset), 4);
    if (std::fwrite(header.data(), 1, header.size(), file.stream) != header.size())
        return Status::Format(CannotWrite, L"Cannot write to file \"%ls\"", file.Name());
    std::array<std::uint8_t, infoHeaderSize> info{};
    PutBitmapHeader(info.data(), src.Width, src.Height, bitCount, 0);
    if (std::fwrite(info.data(), 1, info.size(), file.stream) != info.size())
        return Status::Format(CannotWrite, L"Cannot write header to BMP file \"%ls\"", file.Name());
    for (int i = 0; i < paletteEntries; i++) {
        const auto gray = static_cast<std::uint8_t>(paletteEntries == 2 ? 255 * i : i);
        const std::uint8_t entry[4] = {gray, gray, gray, 0};
        if (std::fwrite(entry, 1, 4, file.stream) != 4)
            return Status::Format(CannotWrite, L"Cannot write the palette to the BMP file \"%ls\"", file.Name());
    }
    if (std::fseek(file.stream, dataOffset, SEEK_SET) != 0)
        return Status::Format(CannotWrite, L"Cannot write image bitmap to file \"%ls\"", file.Name());
    std::vector<std::uint8_t> row(static_cast<std::size_t>(paddedBytes));
    for (int y = src.Height - 1; y >= 0; y--) {
        std::memcpy(row.data(), src.Row(y), static_cast<std::size_t>(rowBytes));
        if (std::fwrite(row.data(), 1, row.size(), file.stream) != row.size())
            return Status::Format(CannotWrite, L"Cannot write image row to file \"%ls\"", file.Name());
    }
    return NoError;
}

} // namespace

extern const Format bmp;
const Format bmp = {{L".bmp"}, ReadBmp, CheckBmpType, WriteBmp};

} // namespace Tesk::files
