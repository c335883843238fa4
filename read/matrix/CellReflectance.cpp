// The reflectance of each cell of a symbol.
#include "read/matrix/CellReflectance.h"

#include "image/histogram/LevelCounts.h"

#include <algorithm>

namespace Tesk::matrix {

namespace {

/// The middle of a cell; those outside the symbol go on as the outermost two do.
XY MiddleOf(const SampledSymbol& symbol, int row, int column)
{
    const int r = std::clamp(row, 0, symbol.rows - 1), c = std::clamp(column, 0, symbol.columns - 1);
    const int rowBefore = r == 0 ? std::min(1, symbol.rows - 1) : r - 1;
    const int columnBefore = c == 0 ? std::min(1, symbol.columns - 1) : c - 1;
    const XY middle = symbol.Center(r, c);
    return middle + std::abs(row - r) * (middle - symbol.Center(rowBefore, c)) +
           std::abs(column - c) * (middle - symbol.Center(r, columnBefore));
}

/// The pixel nearest to a place, within the image.
int NearestPixel(double place, int count)
{
    return place > 0 ? static_cast<int>(std::lround(std::min(place, count - 1.0))) : 0;
}

} // namespace

ReflectanceDisc::ReflectanceDisc(double diameter)
    : radius_(static_cast<int>(std::lround(std::clamp(diameter / 2, 0.5, static_cast<double>(mostRadius)))))
{
    for (int y = 0; y <= radius_; ++y)
        extents_[static_cast<std::size_t>(y)] = static_cast<int>(std::sqrt(radius_ * radius_ - y * y));
}

int ReflectanceDisc::Mean(const Image& gray, XY place) const
{
    const int lastX = gray.Width - 1, lastY = gray.Height - 1;
    const int middleX = NearestPixel(place.X, gray.Width), middleY = NearestPixel(place.Y, gray.Height);
    int sum = 0, count = 0;
    for (int y = -radius_; y <= radius_; ++y) {
        const int extent = extents_[static_cast<std::size_t>(std::abs(y))];
        const std::uint8_t* row = gray.Row(std::clamp(middleY + y, 0, lastY));
        for (int x = -extent; x <= extent; ++x)
            sum += row[std::clamp(middleX + x, 0, lastX)];
        count += 2 * extent + 1;
    }
    return (sum + count / 2) / count;
}

int CellTones::BestThreshold() const
{
    std::array<std::uint32_t, levels::byteLevels> counts{};
    for (int row = 0; row < rows_; ++row)
        for (int column = 0; column < columns_; ++column)
            ++counts[static_cast<std::size_t>(At(row, column))];
    return levels::BestSplit(counts.data(), levels::byteLevels).threshold;
}

CellTones ReadTones(const Image& source, const SampledSymbol& symbol, CodePolarities polarity, double diameter,
                    int margin)
{
    const ReflectanceDisc disc(diameter);
    const int turn = polarity == WhiteOnBlack ? 255 : 0;
    CellTones tones(symbol.rows, symbol.columns, margin);
    tones.Fill([&](int row, int column) { return disc.Mean(source, MiddleOf(symbol, row, column)) ^ turn; });
    return tones;
}

int ToneScale::LevelOf(int tone) const
{
    if (contrast <= 0) return 0;
    return static_cast<int>(std::clamp(20 * std::abs(tone - threshold) / contrast - 1, 0.0, 4.0));
}

} // namespace Tesk::matrix
