// Paths reduced to lines and arcs.
#include "measure/ArcPath.h"
#include "measure/Path.h"

#include "measure/fit/PointFit.h"
#include "measure/path/ChordWalk.h"
#include "measure/path/PathRound.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <span>
#include <vector>

namespace Tesk {

using namespace paths;

namespace {

/// Sites of a run that is an arc.
constexpr std::int64_t leastOfArc = 4;
/// The fourth of four even sites leaves the circle through the three before it by up to eight times what each of them
/// leaves the true one, and by the root of 20 times on an average.
constexpr double spreadOfFourth = 32;

XY Real(Site site)
{
    return {double(site.X), double(site.Y)};
}

/// Whether four sites, spread evenly over a run of less than half a turn, lie on one circle.
bool IsConcyclic(Round sites, std::int64_t from, std::int64_t to, double squaredDeviation)
{
    const Site a = sites[from], b = sites[from + (to - from) / 3], c = sites[to - (to - from) / 3], d = sites[to];
    const Site middle = sites[(from + to) / 2];
    const std::int64_t facing =
        std::int64_t{a.X - middle.X} * (d.X - middle.X) + std::int64_t{a.Y - middle.Y} * (d.Y - middle.Y);
    if (facing >= 0) return false;
    // The determinant is the product of the three sides and of the distance of the fourth site from the circle.
    const auto lift = [&](Site p) { return static_cast<double>(SquaredDistance(d, p)); };
    const auto area = [&](Site p, Site q) { return static_cast<double>(Cross(d, p, q)); };
    const double determinant = lift(a) * area(b, c) + lift(b) * area(c, a) + lift(c) * area(a, b);
    const double sides = static_cast<double>(SquaredDistance(a, b)) * static_cast<double>(SquaredDistance(b, c)) *
                         static_cast<double>(SquaredDistance(a, c));
    return determinant * determinant <= spreadOfFourth * squaredDeviation * sides;
}

/// A line or an arc from one index to another.
struct Segment
{
    std::int64_t to = 0;
    double bulge = 0;
};

/// The arc through both ends and the middle, or the line where the middle is near it.
Segment SegmentTo(Round sites, std::int64_t from, std::int64_t to, double squaredDeviation)
{
    Segment segment{to, 0};
    if (to - from + 1 < leastOfArc || MiddleIsNear(sites, from, to, squaredDeviation)) return segment;
    const Site a = sites[from], m = sites[(from + to) / 2], b = sites[to];
    fits::Circle circle;
    if (!fits::CircleThrough(Real(a), Real(m), Real(b), circle)) return segment;
    segment.bulge = (Cross(a, m, b) > 0 ? 1 : -1) / circle.Radius;
    return segment;
}

bool HoldsAll(Round sites, std::int64_t from, const Segment& segment, double deviation)
{
    const Site a = sites[from], b = sites[segment.to];
    fits::Circle circle;
    const bool curved =
        segment.bulge != 0 && fits::CircleThrough(Real(a), Real(sites[(from + segment.to) / 2]), Real(b), circle);
    for (std::int64_t i = from + 1; i < segment.to; i++) {
        const Site p = sites[i];
        const double distance = curved
                                    ? std::abs(std::hypot(p.X - circle.Center.X, p.Y - circle.Center.Y) - circle.Radius)
                                    : DistanceToSegment(p, a, b);
        if (!(distance <= deviation)) return false;
        // On the other side of the chord a site near the circle is not near the arc.
        if (curved && (Cross(a, b, p) > 0) == (segment.bulge > 0) && !(DistanceToSegment(p, a, b) <= deviation))
            return false;
    }
    return true;
}

Segment Longest(Round sites, std::int64_t from, std::int64_t last, double deviation)
{
    const double squaredDeviation = deviation * deviation;
    std::int64_t line = from + 1, arc = from;
    while (line < last && MiddleIsNear(sites, from, line + 1, squaredDeviation))
        line++;
    if (from + leastOfArc - 1 <= last && IsConcyclic(sites, from, from + leastOfArc - 1, squaredDeviation)) {
        arc = from + leastOfArc - 1;
        while (arc < last && IsConcyclic(sites, from, arc + 1, squaredDeviation))
            arc++;
    }
    // The walks look at few sites; what they passed over is looked at here, and given up piece by piece.
    Segment segment = SegmentTo(sites, from, Max(line, arc), squaredDeviation);
    while (segment.to > from + 1 && !HoldsAll(sites, from, segment, deviation))
        segment = SegmentTo(sites, from, segment.to - Max<std::int64_t>(1, (segment.to - from) / 8), squaredDeviation);
    return segment;
}

} // namespace

std::vector<ArcSite> paths::LinesAndArcs(std::span<const Site> chain, bool closed, double deviation)
{
    const Round sites(chain);
    const std::int64_t length = sites.Length();
    std::vector<ArcSite> found;
    if (length < leastOfArc) return found;
    std::int64_t first = 0;
    if (closed) {
        first = length - 1;
        while (first > 0 && MiddleIsNear(sites, first, length, deviation * deviation))
            first--;
    }
    const std::int64_t last = closed ? first + length : length - 1;
    for (std::int64_t at = first; at < last;) {
        const Segment segment = Longest(sites, at, last, deviation);
        found.emplace_back(sites[at].X, sites[at].Y, segment.bulge);
        at = segment.to;
    }
    if (!closed) found.emplace_back(sites[last].X, sites[last].Y, 0);
    return found;
}

void Path::Vectorize(ArcPath& Dst, double Deviation) const
{
    const Entry entry("Tesk::Path::Vectorize");
    if (entry.Refuses(CheckSites())) return;
    entry.Refuses(Allocating([&] { Dst.Take(LinesAndArcs(View(), Closed, Deviation), Closed, OrgX, OrgY); }));
}

} // namespace Tesk
