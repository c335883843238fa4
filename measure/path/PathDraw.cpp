// Paths on the screen.
#include "measure/Path.h"

#include "foundation/Graph.h"

namespace Tesk {

namespace {

/// Arms of the mark of a site, in pixels of the screen.
constexpr int markArms = 3;

} // namespace

void Path::Draw(bool Vertices, bool Edges) const
{
    if (Length < 1) return;
    std::vector<XY> points;
    points.reserve(static_cast<std::size_t>(int(Length)));
    for (const Site* site = Sites(); site < Sites() + Length; site++)
        points.emplace_back(site->X + OrgX, site->Y + OrgY);
    if (Edges && Length > 1) Graph::Polyline(points, Closed);
    // A single site has no stroke that would show it.
    if (Vertices || (Edges && Length == 1))
        for (const XY& point : points)
            Graph::Cross(point.X, point.Y, markArms);
}

} // namespace Tesk
