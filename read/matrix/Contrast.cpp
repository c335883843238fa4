// The contrast of a symbol and the growth of its print: a scan-line fill, a histogram, and its best split.
#include "read/matrix/Contrast.h"

#include "image/histogram/LevelCounts.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Tesk::matrix {

namespace {

/// Of the side of a light cell in that of a light and a dark one.
constexpr double nominalGrowth = 0.5, smallestGrowth = 0.35, largestGrowth = 0.65;

/// Where a side of a polygon meets a row.
struct Crossing
{
    int y;
    double x;
};

/// The first pixel at or behind a place, within 0 and `count`.
int FirstPixel(double place, int count)
{
    return static_cast<int>(std::ceil(std::clamp(place, 0.0, static_cast<double>(count))));
}

void AddCrossings(XY from, XY to, int height, std::vector<Crossing>& crossings)
{
    if (!std::isfinite(from.X) || !std::isfinite(from.Y) || !std::isfinite(to.X) || !std::isfinite(to.Y)) return;
    if (from.Y > to.Y) std::swap(from, to);
    const int end = FirstPixel(to.Y, height);
    for (int y = FirstPixel(from.Y, height); y < end; ++y)
        crossings.push_back({y, from.X + (y - from.Y) / (to.Y - from.Y) * (to.X - from.X)});
}

} // namespace

std::vector<XY> OutlineOf(const SampledSymbol& symbol)
{
    std::vector<XY> outline;
    if (symbol.nodes.empty()) return outline;
    const int rows = symbol.rows, columns = symbol.columns;
    outline.reserve(static_cast<std::size_t>(2 * (rows + columns)));
    for (int column = 0; column < columns; ++column)
        outline.push_back(symbol.Node(0, column));
    for (int row = 0; row < rows; ++row)
        outline.push_back(symbol.Node(row, columns));
    for (int column = columns; column > 0; --column)
        outline.push_back(symbol.Node(rows, column));
    for (int row = rows; row > 0; --row)
        outline.push_back(symbol.Node(row, 0));
    return outline;
}

GrayCounts CountInside(const Image& gray, std::span<const XY> polygon)
{
    std::vector<Crossing> crossings;
    for (std::size_t i = 0; i < polygon.size(); ++i)
        AddCrossings(polygon[i], polygon[(i + 1) % polygon.size()], gray.Height, crossings);
    std::sort(crossings.begin(), crossings.end(),
              [](const Crossing& a, const Crossing& b) { return a.y != b.y ? a.y < b.y : a.x < b.x; });
    GrayCounts counts{};
    // A closed polygon meets each row an even number of times.
    for (std::size_t i = 0; i + 1 < crossings.size(); i += 2) {
        const std::uint8_t* row = gray.Row(crossings[i].y);
        const int end = FirstPixel(crossings[i + 1].x, gray.Width);
        for (int x = FirstPixel(crossings[i].x, gray.Width); x < end; ++x)
            ++counts[row[x]];
    }
    return counts;
}

ContrastMeasure MeasureContrast(const GrayCounts& counts)
{
    const levels::Split split = levels::BestSplit(counts.data(), static_cast<int>(counts.size()));
    ContrastMeasure measure;
    if (split.threshold == 0) return measure;
    measure.threshold = split.threshold;
    measure.dark = split.below;
    measure.light = split.above;
    for (std::size_t level = 0; level < counts.size(); ++level)
        (static_cast<int>(level) < split.threshold ? measure.darkPixels : measure.lightPixels) += counts[level];
    return measure;
}

double PrintGrowth(const ContrastMeasure& contrast, const SampledSymbol& symbol, CodePolarities polarity)
{
    if (symbol.lightCells <= 0 || symbol.darkCells <= 0) return 0;
    const bool isLight = polarity == WhiteOnBlack;
    const auto ink = static_cast<double>(isLight ? contrast.lightPixels : contrast.darkPixels);
    const auto rest = static_cast<double>(isLight ? contrast.darkPixels : contrast.lightPixels);
    const double lightSide = std::sqrt(rest / symbol.lightCells), darkSide = std::sqrt(ink / symbol.darkCells);
    if (lightSide + darkSide <= 0) return 0;
    const double growth = lightSide / (lightSide + darkSide);
    const double tolerance = growth > nominalGrowth ? largestGrowth - nominalGrowth : nominalGrowth - smallestGrowth;
    return (growth - nominalGrowth) / tolerance;
}

} // namespace Tesk::matrix
