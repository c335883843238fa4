// Finder and alignment patterns of QR: runs of a row in the ratio of the pattern, the same on three lines through their
// middle, and boundaries that close around it.
#include "read/matrix/FinderPatterns.h"

#include "read/matrix/ContourTracer.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <span>

namespace Tesk::matrix {

namespace {

/// Runs may be off by one module, or by so many pixels where modules are small.
constexpr double leastTolerance = 4;
/// A line through the middle is followed over so many widths in each direction.
constexpr double lineReach = 3;
constexpr int alignmentReach = 10;
constexpr int fewestWalks = 7;

bool IsNear(double run, double modules, double tolerance)
{
    return std::abs(run - modules) <= tolerance;
}

/// Whether the runs of a pattern stand in its ratio: 5 of a finder, 3 of an alignment pattern. The margins beside them
/// are never too short, as the tolerance is a module or more.
bool HasRatio(std::span<const int> runs)
{
    int sum = 0;
    for (const int run : runs)
        sum += run;
    const bool isFinder = runs.size() == 5;
    const double module = sum / (isFinder ? 7.0 : 3.0), tolerance = std::max(module, leastTolerance);
    for (std::size_t i = 0; i < runs.size(); ++i) {
        const bool isMiddle = i == runs.size() / 2;
        const bool fits = !isMiddle  ? IsNear(runs[i], module, tolerance)
                          : isFinder ? IsNear(runs[i], 3 * module, tolerance)
                                     : IsNear(runs[i], module, module);
        if (!fits) return false;
    }
    return true;
}

Site Along(Site from, Step step, int count)
{
    return Site(from.X + count * step.x, from.Y + count * step.y);
}

/// Collects the distances of the first `count` transitions from a pixel on; false if there are fewer within `reach`.
bool Follow(const BinaryImage& image, Site from, Step step, int reach, std::span<int> distances)
{
    const std::uint8_t* pixel = image.At(from.X, from.Y);
    const std::ptrdiff_t stride = step.y * image.Stride() + step.x;
    // The light frame ends the last dark run.
    const int roomX = step.x == 0 ? reach : step.x > 0 ? image.Width() - from.X : from.X + 1;
    const int roomY = step.y == 0 ? reach : step.y > 0 ? image.Height() - from.Y : from.Y + 1;
    reach = std::min({reach, roomX, roomY});
    std::size_t found = 0;
    for (int i = 1; i <= reach; ++i) {
        pixel += stride;
        if (pixel[0] == pixel[-stride]) continue;
        distances[found++] = i;
        if (found == distances.size()) return true;
    }
    return false;
}

} // namespace

void FinderPatterns::FindTransitions(const BinaryImage& image, int y, int x, int endX)
{
    transitions_.clear();
    // Begins with a light run, if only an empty one, and ends with one.
    transitions_.push_back(x);
    bool dark = false;
    const std::uint8_t* row = image.At(0, y);
    for (; x < endX; ++x)
        if ((row[x] != 0) != dark) {
            dark = !dark;
            transitions_.push_back(x);
        }
    if (dark) transitions_.push_back(endX);
    transitions_.push_back(endX);
}

/// The pattern begins at the transition `first`.
bool FinderPatterns::TestRow(Form form, std::size_t first, int y, Candidate& candidate) const
{
    const std::size_t count = form == Finder ? 5 : 3;
    std::array<int, 5> runs;
    for (std::size_t i = 0; i < count; ++i)
        runs[i] = transitions_[first + i + 1] - transitions_[first + i];
    if (!HasRatio(std::span(runs).first(count))) return false;
    const std::size_t middle = first + count / 2;
    candidate.center = Site((transitions_[middle] + transitions_[middle + 1] - 1) / 2, y);
    candidate.size = transitions_[first + count] - transitions_[first];
    return true;
}

/// Tests the pattern on a line in the direction `line` of `stepsAround`, and back.
bool FinderPatterns::TestLine(const BinaryImage& image, Form form, std::size_t line, Candidate& candidate)
{
    const Step step = stepsAround[line];
    const std::size_t side = form == Finder ? 3 : 2;
    const int reach = static_cast<int>(lineReach * candidate.size);
    std::array<int, 3> ahead, back;
    if (!Follow(image, candidate.center, step, reach, std::span(ahead).first(side))) return false;
    if (!Follow(image, candidate.center, {-step.x, -step.y}, reach, std::span(back).first(side))) return false;
    std::array<int, 5> runs;
    const std::size_t middle = side - 1;
    runs[middle] = ahead[0] + back[0] - 1;
    for (std::size_t i = 1; i < side; ++i) {
        runs[middle + i] = ahead[i] - ahead[i - 1];
        runs[middle - i] = back[i] - back[i - 1];
    }
    if (!HasRatio(std::span(runs).first(2 * side - 1))) return false;
    // The last pixel of the dark ring of a finder, the first one of that around an alignment pattern.
    const int inside = form == Finder ? 1 : 0;
    candidate.inner[line] = Along(candidate.center, step, ahead[0] - 1);
    candidate.inner[line + 4] = Along(candidate.center, step, 1 - back[0]);
    candidate.outer[line] = Along(candidate.center, step, ahead[side - 1] - inside);
    candidate.outer[line + 4] = Along(candidate.center, step, inside - back[side - 1]);
    const double length = line % 2 == 0 ? 1 : std::sqrt(2.0);
    candidate.size = std::min(candidate.size, length * (ahead[side - 1] + back[side - 1] - 1));
    return true;
}

bool FinderPatterns::Verify(const BinaryImage& image, Form form, const Candidate& candidate, FinderRecord& record)
{
    const ContourTracer tracer(image);
    const auto closes = [&](const std::array<Site, 8>& points, int limit, bool aroundHole) {
        int walks = 0;
        for (std::size_t i = 0; i < points.size(); ++i) {
            const std::size_t next = (i + (aroundHole ? 7 : 1)) % 8;
            const int toLight = static_cast<int>((i + (aroundHole ? 4 : 0)) % 8);
            walks += tracer.Arrives(points[i], toLight, points[next], limit);
        }
        return walks >= (form == Finder ? fewestWalks : 8);
    };
    const int size = static_cast<int>(candidate.size), limit = form == Finder ? size : size + alignmentReach;
    if (form == Finder && !closes(candidate.inner, size / 2, false)) return false;
    if (!closes(candidate.outer, limit, form == Alignment)) return false;
    record = {.center = XY(candidate.center.X, candidate.center.Y), .size = candidate.size, .isFree = true};
    record.hasRing = true;
    const double outward = form == Finder ? 0.5 : -0.5; // to the edge of the pixel
    for (std::size_t i = 0; i < record.ring.size(); ++i) {
        const Step step = stepsAround[i];
        record.ring[i] = XY(candidate.outer[i].X + outward * step.x, candidate.outer[i].Y + outward * step.y);
    }
    const int toLight = form == Finder ? 0 : 4;
    for (std::size_t i = 0; i < record.ring.size(); i += 2) {
        const int direction = (toLight + static_cast<int>(i)) % 8;
        if (tracer.Middle(candidate.outer[i], direction, 8 * limit + 8, record.center)) break;
    }
    return true;
}

bool FinderPatterns::IsKnown(Site center) const
{
    return std::any_of(list_.begin(), list_.end(), [&](const FinderRecord& known) {
        const double reach = known.size / 2;
        return std::abs(known.center.X - center.X) <= reach && std::abs(known.center.Y - center.Y) <= reach;
    });
}

/// Calls `found(record)`, which returns whether to go on, for each pattern of the row.
template <typename Found>
void FinderPatterns::SearchRow(const BinaryImage& image, Form form, int y, const SearchArea& area, Found found)
{
    FindTransitions(image, y, area.x, area.endX);
    const std::size_t runs = form == Finder ? 5 : 3;
    // A dark run begins at each odd transition.
    for (std::size_t first = form == Finder ? 1 : 2; first + runs + 1 < transitions_.size(); first += 2) {
        Candidate candidate;
        if (!TestRow(form, first, y, candidate) || (form == Finder && IsKnown(candidate.center))) continue;
        bool fits = true;
        for (const std::size_t line : {std::size_t{2}, std::size_t{1}, std::size_t{3}, std::size_t{0}})
            fits = fits && TestLine(image, form, line, candidate);
        FinderRecord record;
        if (fits && Verify(image, form, candidate, record) && !found(record)) return;
    }
}

void FinderPatterns::ListPatterns(const BinaryImage& image, Form form, const SearchArea& area)
{
    list_.clear();
    const SearchArea clipped{std::max(area.x, 0), std::max(area.y, 0), std::min(area.endX, image.Width()),
                             std::min(area.endY, image.Height())};
    for (int y = clipped.y; y < clipped.endY && list_.size() < mostFinders; ++y)
        SearchRow(image, form, y, clipped, [&](const FinderRecord& record) {
            list_.push_back(record);
            return list_.size() < mostFinders;
        });
}

} // namespace Tesk::matrix
