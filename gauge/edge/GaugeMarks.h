// What gauges draw alike: boxes around probes, arrows, points.
#pragma once

#include "foundation/Graph.h"

#include <cmath>

namespace Tesk::edges {

/// A point of the frame that begins at another and runs in a direction of length 1.
inline XY Beside(XY from, XY direction, double along, double across)
{
    return {from.X + along * direction.X - across * direction.Y, from.Y + along * direction.Y + across * direction.X};
}

/// Of length 1, along x where the points coincide.
inline XY DirectionOf(XY from, XY to)
{
    const double dx = to.X - from.X, dy = to.Y - from.Y, length = std::hypot(dx, dy);
    return length > 0 && std::isfinite(length) ? XY(dx / length, dy / length) : XY(1, 0);
}

inline void DrawStroke(XY from, XY to)
{
    Graph::Line(from.X, from.Y, to.X, to.Y);
}

/// The box around a segment, `breadth` wide, that goes on `beyond` its ends.
inline void DrawBox(XY from, XY to, double breadth, double beyond)
{
    const XY u = DirectionOf(from, to);
    const XY corners[] = {Beside(from, u, -beyond, -breadth / 2), Beside(to, u, beyond, -breadth / 2),
                          Beside(to, u, beyond, breadth / 2), Beside(from, u, -beyond, breadth / 2)};
    for (int i = 0; i < 4; i++)
        DrawStroke(corners[i], corners[(i + 1) % 4]);
}

/// A head at a point, for an arrow in a direction that may be `extent` image pixels long.
inline void DrawArrowHead(XY tip, XY direction, double extent)
{
    constexpr double longest = 10, aside = 0.6; // in pixels of the screen, and as a part of the length
    const double size = Min(extent, longest / Graph::Zoom);
    DrawStroke(tip, Beside(tip, direction, -size, -aside * size));
    DrawStroke(tip, Beside(tip, direction, -size, aside * size));
}

inline void DrawArrow(XY from, XY to, double extent)
{
    DrawStroke(from, to);
    DrawArrowHead(to, DirectionOf(from, to), extent);
}

/// A small cross at a point between pixels.
inline void DrawPoint(XY p)
{
    constexpr double arm = 3.5;
    const double r = arm / Graph::Zoom;
    DrawStroke({p.X - r, p.Y}, {p.X + r, p.Y});
    DrawStroke({p.X, p.Y - r}, {p.X, p.Y + r});
}

} // namespace Tesk::edges
