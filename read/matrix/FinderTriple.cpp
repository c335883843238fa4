// Three finder patterns as those of one QR symbol: which pairs can be, the corner, the modules, the timing lines.
#include "read/matrix/FinderTriple.h"

#include "read/codewords/QRTables.h"
#include "read/matrix/PlaneVectors.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <utility>

namespace Tesk::matrix {

namespace {

/// Patterns are 7 modules wide, and their middles 14 to 170 modules apart along a side. Seen turned, their lines are up
/// to a twelfth longer.
constexpr double finderModules = 7;
constexpr double leastDistance = 1.7, largestDistance = 35.4;
constexpr double fewestTransitions = 6;
constexpr double largestSizeRatio = 1.5;
/// From the middle of a pattern to the ring around, and to the edge.
constexpr double ringModules = 3, edgeModules = 3.5;
/// The cells of a side that do not lie between the inner cells of its two patterns.
constexpr int cellsBeside = 13;

bool AreAlike(double a, double b)
{
    return std::max(a, b) <= largestSizeRatio * std::min(a, b);
}

/// Steps of the longer axis of a line.
int StepsOf(XY from, XY to)
{
    return static_cast<int>(std::lround(std::max(std::abs(to.X - from.X), std::abs(to.Y - from.Y))));
}

/// Calls `f(dark)` for the pixels of a line, one a step; those beyond the image are light. `f` returns whether to go
/// on.
template <typename F>
void EachPixel(const BinaryImage& image, XY from, XY to, F f)
{
    const int steps = StepsOf(from, to);
    const XY step = 1.0 / std::max(steps, 1) * (to - from);
    for (int i = 0; i <= steps; ++i)
        if (!f(image.IsDark(from + static_cast<double>(i) * step))) return;
}

} // namespace

bool ArePaired(const BinaryImage& image, const FinderRecord& a, const FinderRecord& b)
{
    if (!AreAlike(a.size, b.size)) return false;
    const double size = (a.size + b.size) / 2, distance = Length(b.center - a.center);
    if (distance < leastDistance * size || distance > largestDistance * size) return false;
    int transitions = 0, run = 0;
    bool last = true, tooLong = false;
    EachPixel(image, a.center, b.center, [&](bool dark) {
        transitions += dark != last;
        run = dark == last ? run + 1 : 1;
        last = dark;
        tooLong = run > 2 * size;
        return !tooLong;
    });
    return !tooLong && transitions >= std::max(fewestTransitions, distance / (std::sqrt(2.0) * size));
}

bool FinderTriple::Order(const FinderRecord& a, const FinderRecord& b, const FinderRecord& c)
{
    std::array<const FinderRecord*, 3> order{&a, &b, &c};
    const auto [least, most] = std::minmax({a.size, b.size, c.size});
    if (!AreAlike(least, most)) return false;
    // The corner is opposite to the longest side.
    const std::array<double, 3> sides{Length(c.center - b.center), Length(c.center - a.center),
                                      Length(b.center - a.center)};
    const auto corner = std::max_element(sides.begin(), sides.end()) - sides.begin();
    std::swap(order[0], order[static_cast<std::size_t>(corner)]);
    if (Cross(order[1]->center - order[0]->center, order[2]->center - order[0]->center) < 0)
        std::swap(order[1], order[2]);
    const XY along = order[1]->center - order[0]->center, down = order[2]->center - order[0]->center;
    const double diagonal = Length(along - down), area = Cross(along, down) / 2;
    if (!(area > 0) || 5 * area < diagonal * diagonal) return false;
    along_ = 1 / Length(along) * along;
    down_ = 1 / Length(down) * down;
    estimate_ = finderModules + 3 * finderModules * diagonal / std::sqrt(2.0) / (a.size + b.size + c.size);
    for (std::size_t i = 0; i < 3; ++i)
        SetFrame(frames_[i], *order[i]);
    return true;
}

/// The points of the ring lie on the sides of a square in the symbol: each tells the module across its side.
void FinderTriple::SetFrame(FinderFrame& frame, const FinderRecord& record) const
{
    double alongSum = 0, downSum = 0;
    int alongCount = 0, downCount = 0;
    const double area = Cross(along_, down_);
    for (const XY& point : record.ring) {
        const XY to = point - record.center;
        const double along = std::abs(Cross(to, down_) / area), down = std::abs(Cross(along_, to) / area);
        (along > down ? alongSum : downSum) += std::max(along, down) / edgeModules;
        ++(along > down ? alongCount : downCount);
    }
    const double plain = record.size / finderModules;
    frame.center = record.center;
    frame.along = (record.hasRing && alongCount > 0 ? alongSum / alongCount : plain) * along_;
    frame.down = (record.hasRing && downCount > 0 ? downSum / downCount : plain) * down_;
}

void FinderTriple::Mirror()
{
    std::swap(frames_[1], frames_[2]);
    std::swap(along_, down_);
    for (FinderFrame& frame : frames_)
        std::swap(frame.along, frame.down);
}

XY FinderTriple::InnerCell(std::size_t i) const
{
    const FinderFrame& frame = frames_[i];
    const double along = i == 1 ? -ringModules : ringModules, down = i == 2 ? -ringModules : ringModules;
    return frame.center + along * frame.along + down * frame.down;
}

XY FinderTriple::PlaceBeside(int side, int column, int row) const
{
    const FinderFrame& frame = frames_[2 * column > side ? 1 : 2 * row > side ? 2 : 0];
    const double far = side - 1 - ringModules;
    const double along = column - (&frame == &frames_[1] ? far : ringModules);
    const double down = row - (&frame == &frames_[2] ? far : ringModules);
    return frame.center + along * frame.along + down * frame.down;
}

int FinderTriple::SideByTiming(const BinaryImage& image, std::size_t toward) const
{
    const XY from = InnerCell(0), to = InnerCell(toward);
    const int pixels = StepsOf(from, to) + 1;
    // How much longer modules are at the beginning than at the end, by perspective; and as if there were none.
    const double ratio = toward == 1 ? Length(frames_[0].along) / Length(frames_[1].along)
                                     : Length(frames_[0].down) / Length(frames_[2].down);
    const double bend = std::sqrt(ratio) - 1;
    int best = 0, fewest = std::numeric_limits<int>::max();
    for (const double bent : {0.0, bend})
        for (int count = codewords::QRSide(1) - cellsBeside; count <= std::min(164, pixels / 2); count += 4) {
            int mismatches = 0, i = 0;
            EachPixel(image, from, to, [&](bool dark) {
                const double at = static_cast<double>(i++) / std::max(pixels - 1, 1);
                const double cell = at * count / (1 + bent - bent * at);
                mismatches += dark != (std::lround(cell) % 2 == 0);
                return mismatches < fewest;
            });
            if (mismatches >= fewest) continue;
            fewest = mismatches;
            best = count;
        }
    const int side = best + cellsBeside;
    const bool fits = side >= codewords::QRSide(1) && AreAlike(side, estimate_);
    return best > 0 && fits ? side : 0;
}

} // namespace Tesk::matrix
