// The quality of print in the manner of ISO/IEC 15416: profiles across a symbol, and the grades of each.
#include "image/Operator.h"
#include "read/linear/ScanState.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <numeric>

namespace Tesk::linear {

namespace {

enum Indicators : std::size_t
{
    Scan,
    MinimumReflectance,
    EdgeDetermination,
    SymbolContrast,
    EdgeContrast,
    Modulation,
    Defects,
    Decode,
    Decodable,
    QuietZone
};

constexpr int gradeA = 4, gradeF = 0;
/// Modules before the symbol and behind it that a profile begins and ends with.
constexpr double modulesBefore = 3, modulesBehind = 2;
/// Of the whole scale of reflectance.
constexpr double leastEdgeContrast = 0.15;

/// 4 to 1 for a value that reaches the levels of A to D, else 0.
int GradeFrom(double value, double a, double b, double c, double d)
{
    return value >= a ? 4 : value >= b ? 3 : value >= c ? 2 : value >= d ? 1 : gradeF;
}

int GradeBelow(double value, double a, double b, double c, double d)
{
    return value < a ? 4 : value < b ? 3 : value < c ? 2 : value < d ? 1 : gradeF;
}

/// The value of white.
int FullScale(PixelTypes type)
{
    return type == Gray16 ? (1 << std::clamp(Operator::GrayDepth, 8, 16)) - 1 : 255;
}

/// The parts of a profile between its crossings of the global threshold: quiet zones, bars and spaces.
struct Elements
{
    std::array<int, maximumElements + 2> crossings{}; ///< index of the first sample behind each
    std::array<int, maximumElements + 2> places{};    ///< the same in 1/256 sample
    int count = 0;                                    ///< of crossings
};

/// Finds up to one crossing more than expected. The threshold is given doubled.
void FindCrossings(std::span<const int> line, int doubled, int expected, Elements& elements)
{
    elements.count = 0;
    for (std::size_t i = 1; i < line.size() && elements.count <= expected; i++) {
        const int before = 2 * line[i - 1] - doubled, here = 2 * line[i] - doubled;
        if ((before < 0) == (here < 0)) continue;
        const auto at = static_cast<std::size_t>(elements.count++);
        elements.crossings[at] = static_cast<int>(i);
        elements.places[at] = static_cast<int>(256 * (static_cast<std::int64_t>(i) - 1) +
                                               std::int64_t{256} * std::abs(before) / std::abs(here - before));
    }
}

/// The largest inner swing of an element, `sign` -1 for dark ones: from its highest peak to its lowest valley between
/// two peaks.
int InnerSwing(std::span<const int> part, int sign)
{
    std::size_t first = 0, last = part.size() - 1;
    while (first + 1 < part.size() && sign * part[first + 1] >= sign * part[first])
        first++;
    while (last > 0 && sign * part[last - 1] >= sign * part[last])
        last--;
    if (first >= last) return 0;
    int peak = sign * part[first], valley = peak;
    for (std::size_t i = first; i <= last; i++) {
        peak = std::max(peak, sign * part[i]);
        valley = std::min(valley, sign * part[i]);
    }
    return peak - valley;
}

/// Grades what depends on the gray values within and beside the elements.
void GradeReflectance(std::span<const int> line, const Elements& elements, int doubled, int range, int scale,
                      std::array<int, PrintQuality::indicators>& values)
{
    int leastContrast = MaxInt, largestSwing = 0, lastExtreme = 0;
    for (int k = 0; k <= elements.count; k++) {
        const auto from = static_cast<std::size_t>(k > 0 ? elements.crossings[static_cast<std::size_t>(k) - 1] : 0);
        const auto to = k < elements.count ? static_cast<std::size_t>(elements.crossings[static_cast<std::size_t>(k)])
                                           : line.size();
        const auto part = line.subspan(from, to - from);
        const bool bright = 2 * part[0] >= doubled;
        const int extreme =
            bright ? *std::max_element(part.begin(), part.end()) : *std::min_element(part.begin(), part.end());
        largestSwing = std::max(largestSwing, InnerSwing(part, bright ? 1 : -1));
        if (k > 0) leastContrast = std::min(leastContrast, std::abs(extreme - lastExtreme));
        lastExtreme = extreme;
    }
    values[EdgeContrast] = leastContrast >= leastEdgeContrast * (scale + 1) ? gradeA : gradeF;
    values[Modulation] = GradeFrom(static_cast<double>(leastContrast) / range, 0.70, 0.60, 0.50, 0.40);
    values[Defects] = GradeBelow(static_cast<double>(largestSwing) / range, 0.15, 0.20, 0.25, 0.30);
}

void GradeProfile(std::span<const int> line, const ScanVote& symbol, double module, int scale,
                  std::array<int, PrintQuality::indicators>& values)
{
    values[Scan] = gradeA;
    const auto [least, most] = std::minmax_element(line.begin(), line.end());
    const int doubled = *least + *most, range = *most - *least;
    Elements elements;
    FindCrossings(line, doubled, symbol.elementCount + 1, elements);
    if (range == 0 || symbol.elementCount == 0 || elements.count != symbol.elementCount + 1) return;
    values[EdgeDetermination] = gradeA;
    values[MinimumReflectance] = 2 * *least <= *most ? gradeA : gradeF;
    values[SymbolContrast] = GradeFrom(static_cast<double>(range) / scale, 0.70, 0.55, 0.40, 0.20);
    GradeReflectance(line, elements, doubled, range, scale, values);

    std::array<int, maximumElements> widths{};
    for (std::size_t i = 0; i < static_cast<std::size_t>(symbol.elementCount); i++)
        widths[i] = elements.places[i + 1] - elements.places[i];
    const auto count = static_cast<std::size_t>(symbol.elementCount);
    const auto measured = std::span<const int>(widths).first(count);
    const auto modules = std::span<const std::uint8_t>(symbol.modules).first(count);
    values[Decode] = ReferenceDecodes(symbol.symbology, measured, modules) ? gradeA : gradeF;
    values[Decodable] = GradeFrom(Decodability(symbol.symbology, measured, modules), 0.62, 0.50, 0.37, 0.25);
    // The corners are whole pixels: half of each zone allows for them.
    const double before = elements.places[0] / 256.0;
    const double behind = static_cast<double>(line.size()) - 1 - elements.places[count] / 256.0;
    values[QuietZone] = before >= modulesBefore / 2 * module && behind >= modulesBehind / 2 * module ? gradeA : gradeF;
}

} // namespace

int PrintQuality::Grade(std::size_t profile) const
{
    return *std::min_element(values[profile].begin(), values[profile].end());
}

double PrintQuality::Mean() const
{
    double sum = 0;
    for (std::size_t i = 0; i < profiles; i++)
        sum += Grade(i);
    return sum / profiles;
}

PrintQuality GradePrint(const Raster& raster, const ScanVote& symbol, XY origin, std::vector<int>& line)
{
    PrintQuality quality;
    const auto& [a, b, c, d] = symbol.corners;
    const int modules = std::accumulate(symbol.modules.begin(), symbol.modules.begin() + symbol.elementCount, 0);
    if (modules == 0) return quality;
    for (int i = 1; i <= PrintQuality::profiles; i++) {
        const double part = i / (PrintQuality::profiles + 1.0);
        const XY from(a.X + part * (d.X - a.X) - origin.X, a.Y + part * (d.Y - a.Y) - origin.Y);
        const XY to(b.X + part * (c.X - b.X) - origin.X, b.Y + part * (c.Y - b.Y) - origin.Y);
        const double length = std::hypot(to.X - from.X, to.Y - from.Y);
        if (length < 1) continue;
        const double module = length / modules, dx = (to.X - from.X) / length, dy = (to.Y - from.Y) / length;
        const int count = static_cast<int>(length + (modulesBefore + modulesBehind) * module) + 1;
        if (static_cast<int>(line.size()) < count) line.resize(static_cast<std::size_t>(count));
        const double lead = modulesBefore * module;
        raster.Sample(XY(from.X - lead * dx, from.Y - lead * dy), dx, dy, count, line.data());
        GradeProfile(std::span<const int>(line).first(static_cast<std::size_t>(count)), symbol, module,
                     FullScale(raster.Type()), quality.values[static_cast<std::size_t>(i - 1)]);
    }
    return quality;
}

} // namespace Tesk::linear
