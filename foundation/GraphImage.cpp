// Images on a target: into a displayable form, reduced, stretched, blended.
#include "foundation/Entry.h"
#include "foundation/Graph.h"

#include <algorithm>
#include <array>

namespace Tesk {

namespace {

constexpr int tableEntries = 256;

const wchar_t* TypeName(PixelTypes type)
{
    static constexpr const wchar_t* names[] = {L"Undefined", L"Gray",    L"Gray16", L"Gray32", L"Rgb",  L"Rgba",
                                               L"Gradient",  L"Map",     L"Int",    L"Float",  L"Dble", L"Bool",
                                               L"IntXY",     L"FloatXY", L"DbleXY", L"Gray1",  L"Short"};
    return type >= Undefined && type <= Short ? names[type] : names[0];
}

int CheckTable(PixelTypes image, const LookupTableView& table)
{
    if (image != Gray)
        return Status::Format(UnsupportedType,
                              L"Only Gray images can be rendered through a lookup-table, this one is %ls",
                              TypeName(image));
    if (table.Type != Gray && table.Type != Rgb)
        return Status::Format(IncompatibleType,
                              L"Gray images can be rendered through a Gray or Rgb lookup-table, this one is %ls",
                              TypeName(table.Type));
    if (table.Entries != tableEntries)
        return Status::Format(IncompatibleSize,
                              L"The lookup-table for Gray image rendering must have 256 entries, this one has %d",
                              table.Entries);
    return NoError;
}

std::uint8_t Byte(std::int64_t value)
{
    return static_cast<std::uint8_t>(Clamp<std::int64_t>(value, 0, 255));
}

/// The depth of 16-bit and 32-bit pixels on the screen is that of their full range.
constexpr int wideShift = 8;

/// A row of the source rectangle in its displayable form: 8, 24 or 32 bits a pixel.
void ConvertRow(const ImageView& view, int y, std::uint8_t* dst, bool premultiply)
{
    const std::uint8_t* row = view.Pixels + static_cast<std::ptrdiff_t>(view.Pitch) * (view.Source.Y + y);
    const int x0 = view.Source.X, width = view.Source.Width;
    switch (view.Type) {
    case Gray:
        std::copy_n(row + x0, width, dst);
        break;
    case Gray16:
        for (int x = 0; x < width; x++)
            dst[x] = Byte(reinterpret_cast<const Gray16Pixel*>(row)[x0 + x] >> wideShift);
        break;
    case Gray32:
        for (int x = 0; x < width; x++)
            dst[x] = Byte(reinterpret_cast<const Gray32Pixel*>(row)[x0 + x] >> wideShift);
        break;
    case Grad:
        for (int x = 0; x < width; x++) {
            const GradPixel p = reinterpret_cast<const GradPixel*>(row)[x0 + x];
            dst[x] = Byte(Max(Abs(int{p.X}), Abs(int{p.Y})) / Max(view.Gain, 1));
        }
        break;
    case Gray1:
        for (int x = 0; x < width; x++)
            dst[x] = row[(x0 + x) >> 3] & 0x80 >> ((x0 + x) & 7) ? 255 : 0;
        break;
    case Rgb:
        std::copy_n(row + 3 * x0, 3 * width, dst);
        break;
    case Rgba:
        std::copy_n(row + 4 * x0, 4 * width, dst);
        if (!premultiply) break;
        for (int x = 0; x < width; x++, dst += 4)
            for (int c = 0; c < 3; c++)
                dst[c] = Byte((std::int64_t{dst[c]} * dst[3] * 33025) >> 23);
        break;
    default:
        break;
    }
}

int BitCountOf(PixelTypes type)
{
    switch (type) {
    case Gray:
    case Gray16:
    case Gray32:
    case Grad:
    case Gray1:
        return 8;
    case Rgb:
        return 24;
    case Rgba:
        return 32;
    default:
        return 0;
    }
}

/// Means of the pixels that fall on each pixel of a smaller gray bitmap.
std::vector<std::uint8_t> Reduce(const std::vector<std::uint8_t>& pixels, int width, int height, int newWidth,
                                 int newHeight)
{
    std::vector<std::uint8_t> reduced(static_cast<std::size_t>(newWidth) * static_cast<std::size_t>(newHeight));
    const auto edge = [](int i, int from, int to) { return static_cast<int>(std::int64_t{i} * from / to); };
    for (int y = 0; y < newHeight; y++)
        for (int x = 0; x < newWidth; x++) {
            const int left = edge(x, width, newWidth), right = Max(edge(x + 1, width, newWidth), left + 1);
            const int top = edge(y, height, newHeight), bottom = Max(edge(y + 1, height, newHeight), top + 1);
            std::int64_t sum = 0;
            for (int sy = top; sy < bottom; sy++)
                for (int sx = left; sx < right; sx++)
                    sum += pixels[static_cast<std::size_t>(sy) * static_cast<std::size_t>(width) +
                                  static_cast<std::size_t>(sx)];
            reduced[static_cast<std::size_t>(y) * static_cast<std::size_t>(newWidth) + static_cast<std::size_t>(x)] =
                static_cast<std::uint8_t>(sum / (std::int64_t{right - left} * (bottom - top)));
        }
    return reduced;
}

} // namespace

void Graph::DrawImage(const ImageView& View, const LookupTableView* Table)
{
    const Entry entry("Tesk::Graph::_Image");
    if (Table && entry.Refuses(CheckTable(View.Type, *Table))) return;
    GraphTarget* current = DrawTo();
    const int bitCount = BitCountOf(View.Type), width = View.Source.Width, height = View.Source.Height;
    if (!current || bitCount == 0 || width < 1 || height < 1) return;
    std::array<RgbPixel, tableEntries> palette{};
    for (int i = 0; i < tableEntries; i++) {
        const std::int32_t* sample = Table ? Table->Samples + (Table->Type == Rgb ? 3 * i : i) : nullptr;
        if (!sample)
            palette[static_cast<std::size_t>(i)] = RgbPixel(i, i, i);
        else if (Table->Type == Rgb)
            palette[static_cast<std::size_t>(i)] = RgbPixel(Byte(sample[0]), Byte(sample[1]), Byte(sample[2]));
        else
            palette[static_cast<std::size_t>(i)] = RgbPixel(Byte(*sample), Byte(*sample), Byte(*sample));
    }
    TargetBitmap bitmap{
        width, height, bitCount, width * bitCount / 8, nullptr, palette.data(), bitCount == 32 && AlphaMode != Opaque};
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(bitmap.Pitch) * static_cast<std::size_t>(height));
    for (int y = 0; y < height; y++)
        ConvertRow(View, y, pixels.data() + static_cast<std::ptrdiff_t>(bitmap.Pitch) * y, AlphaMode == Premultiplied);
    const int zoomedWidth = Max(static_cast<int>(width * Zoom), 1),
              zoomedHeight = Max(static_cast<int>(height * Zoom), 1);
    if (SmoothReduction && Zoom < 1 && View.Type == Gray && !Table) {
        pixels = Reduce(pixels, width, height, zoomedWidth, zoomedHeight);
        bitmap.Width = bitmap.Pitch = zoomedWidth;
        bitmap.Height = zoomedHeight;
    }
    bitmap.Pixels = pixels.data();
    current->Blit(bitmap, 0, 0, zoomedWidth, zoomedHeight);
}

} // namespace Tesk
