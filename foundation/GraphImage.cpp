// Images on a target: into a displayable form, reduced, stretched, blended.
#include "foundation/drawing/AreaDivider.h"
#include "foundation/Entry.h"
#include "foundation/Graph.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

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

constexpr double inchesPerMetre = 39.370079;

const std::uint8_t* RowOf(const ImageView& view, int y)
{
    return view.Pixels + static_cast<std::ptrdiff_t>(view.Pitch) * (view.Source.Y + y);
}

/// Pixels of a row of the source rectangle in their displayable form: 1, 8 or 32 bits each.
void ConvertRow(const ImageView& view, int y, int from, int to, std::uint8_t* dst)
{
    const std::uint8_t* row = RowOf(view, y);
    const int x0 = view.Source.X + from, width = to - from, shift = Clamp(view.Depth, 8, 31) - 8;
    switch (view.Type) {
    case Gray16:
        for (int x = 0; x < width; x++)
            dst[x] = Byte(reinterpret_cast<const Gray16Pixel*>(row)[x0 + x] >> shift);
        break;
    case Gray32:
        for (int x = 0; x < width; x++)
            dst[x] = Byte(reinterpret_cast<const Gray32Pixel*>(row)[x0 + x] >> shift);
        break;
    case Grad:
        for (int x = 0; x < width; x++)
            dst[x] =
                static_cast<std::uint8_t>(GradientGray(reinterpret_cast<const GradPixel*>(row)[x0 + x], view.Gain));
        break;
    case Gray1:
        std::fill_n(dst, (width + 7) >> 3, std::uint8_t{0});
        for (int x = 0; x < width; x++)
            if (row[(x0 + x) >> 3] & 0x80 >> ((x0 + x) & 7)) dst[x >> 3] |= static_cast<std::uint8_t>(0x80 >> (x & 7));
        break;
    case Rgba: // premultiplied; the products of three factors stay below 2^31
        row += std::ptrdiff_t{4} * x0;
        for (int x = 0; x < width; x++, row += 4, dst += 4) {
            const std::uint32_t factor = row[3] * 33025u;
            for (int c = 0; c < 3; c++)
                dst[c] = static_cast<std::uint8_t>(row[c] * factor >> 23);
            dst[3] = row[3];
        }
        break;
    default:
        break;
    }
}

class ConvertedRows final : public BitmapRows
{
public:
    explicit ConvertedRows(const ImageView& view) : view_(view) {}
    void Get(int y, int from, int to, std::uint8_t* dst) const override { ConvertRow(view_, y, from, to, dst); }

private:
    const ImageView& view_;
};

int BitCountOf(PixelTypes type)
{
    switch (type) {
    case Gray:
    case Gray16:
    case Gray32:
    case Grad:
        return 8;
    case Gray1:
        return 1;
    case Rgb:
        return 24;
    case Rgba:
        return 32;
    default:
        return 0;
    }
}

/// Whether the rows of the store are what a target takes, so that nothing needs to be copied.
bool IsDisplayable(const ImageView& view)
{
    switch (view.Type) {
    case Gray:
    case Rgb:
        return true;
    case Rgba:
        return Graph::AlphaMode != Premultiplied;
    case Gray1:
        return view.Source.X % 8 == 0;
    default:
        return false;
    }
}

/// Where the pixels of a smaller extent begin in a larger one; each has at least one.
std::vector<int> Edges(int size, int newSize)
{
    std::vector<int> edges(static_cast<std::size_t>(newSize) + 1);
    for (int i = 0; i <= newSize; i++)
        edges[static_cast<std::size_t>(i)] = static_cast<int>(std::int64_t{i} * size / newSize);
    return edges;
}

/// Means of the pixels that fall on each pixel of a smaller gray bitmap.
std::vector<std::uint8_t> Reduce(const TargetBitmap& bitmap, int newWidth, int newHeight)
{
    std::vector<std::uint8_t> reduced(static_cast<std::size_t>(newWidth) * static_cast<std::size_t>(newHeight));
    std::vector<std::uint32_t> sums(static_cast<std::size_t>(bitmap.Width));
    const std::vector<int> columns = Edges(bitmap.Width, newWidth), rows = Edges(bitmap.Height, newHeight);
    // Columns come in two widths.
    const int narrow = Max(bitmap.Width / newWidth, 1);
    std::uint8_t* dst = reduced.data();
    for (std::size_t y = 0; y + 1 < rows.size(); y++) {
        const int top = rows[y], bottom = Max(rows[y + 1], top + 1);
        const auto height = static_cast<std::uint64_t>(bottom - top);
        std::fill(sums.begin(), sums.end(), 0u);
        for (int sy = top; sy < bottom; sy++) {
            const std::uint8_t* row = bitmap.Pixels + static_cast<std::ptrdiff_t>(bitmap.Pitch) * sy;
            for (std::size_t x = 0; x < sums.size(); x++)
                sums[x] += row[x];
        }
        const AreaDivider mean[] = {AreaDivider(height * static_cast<std::uint64_t>(narrow)),
                                    AreaDivider(height * static_cast<std::uint64_t>(narrow + 1))};
        for (std::size_t x = 0; x + 1 < columns.size(); x++) {
            const int left = columns[x], right = Max(columns[x + 1], left + 1);
            std::uint64_t sum = 0;
            for (int sx = left; sx < right; sx++)
                sum += sums[static_cast<std::size_t>(sx)];
            *dst++ = mean[right - left > narrow](sum);
        }
    }
    return reduced;
}

/// The colours of gray values 0 to 255, or of black and white.
void FillPalette(std::array<RgbPixel, tableEntries>& palette, PixelTypes type, const LookupTableView* table)
{
    for (int i = 0; i < tableEntries; i++) {
        RgbPixel& color = palette[static_cast<std::size_t>(i)];
        if (!table) {
            const int gray = type == Gray1 ? 255 * i : i;
            color = RgbPixel(gray, gray, gray);
        } else if (table->Type == Rgb) {
            const std::int32_t* sample = table->Samples + 3 * i;
            color = RgbPixel(Byte(sample[0]), Byte(sample[1]), Byte(sample[2]));
        } else {
            const int gray = Byte(table->Samples[i]);
            color = RgbPixel(gray, gray, gray);
        }
    }
}

} // namespace

void Graph::DrawImage(const ImageView& View, const LookupTableView* Table)
{
    const Entry entry("Tesk::Graph::_Image");
    if (Table && entry.Refuses(CheckTable(View.Type, *Table))) return;
    entry.Guards(L"Cannot allocate the memory to draw an image", [&] { Render(View, Table); });
}

void Graph::Render(const ImageView& View, const LookupTableView* Table)
{
    GraphTarget* current = DrawTo();
    const int bitCount = BitCountOf(View.Type), width = View.Source.Width, height = View.Source.Height;
    if (!current || bitCount == 0 || width < 1 || height < 1) return;
    std::array<RgbPixel, tableEntries> palette{};
    FillPalette(palette, View.Type, Table);
    TargetBitmap bitmap{width,
                        height,
                        bitCount,
                        View.Pitch,
                        RowOf(View, 0) + static_cast<std::ptrdiff_t>(View.Source.X) * bitCount / 8,
                        palette.data(),
                        bitCount == 32 && AlphaMode != Opaque,
                        static_cast<int>(Clamp(Resolution, 0.0, 1e6) * inchesPerMetre)};
    const auto zoomed = [](int size) { return size * Zoom >= 1 ? static_cast<int>(Min(size * Zoom, 1e9)) : 1; };
    const int zoomedWidth = zoomed(width), zoomedHeight = zoomed(height);
    if (!IsDisplayable(View)) {
        bitmap.Pixels = nullptr;
        current->BlitRows(bitmap, ConvertedRows(View), 0, 0, zoomedWidth, zoomedHeight);
        return;
    }
    std::vector<std::uint8_t> pixels;
    if (SmoothReduction && Zoom < 1 && View.Type == Gray) {
        pixels = Reduce(bitmap, zoomedWidth, zoomedHeight);
        bitmap.Width = bitmap.Pitch = zoomedWidth;
        bitmap.Height = zoomedHeight;
        bitmap.Pixels = pixels.data();
    }
    current->Blit(bitmap, 0, 0, zoomedWidth, zoomedHeight);
}

} // namespace Tesk
