// Distances from ideal shapes, and the smallest shapes around convex polygons.
#pragma once

#include "foundation/Records.h"

#include <span>

namespace Tesk::shapes {

/// From a point to the nearest side of an upright rectangle about the origin, inside and outside.
double DistanceToRectangle(XY p, XY halfSides);
/// The squared distance from a point to an upright ellipse about the origin, along the normal of the ellipse that
/// `iterations` of Newton's method find; 0 gives a fair one, 3 a very good one. A half axis may be 0.
double SquaredDistanceToEllipse(XY p, XY axis, int iterations);

struct Rectangle
{
    XY Center{0, 0};
    double Width = 0, Height = 0; ///< the longer side and the shorter one
    double Angle = 0;             ///< of the longer one, in radians, 0 to pi
};

struct Parallelogram
{
    XY P{0, 0}, Q{0, 0}, R{0, 0}; ///< corners in turn; the fourth is `P + R - Q`
};

struct Circle
{
    XY Center{0, 0};
    double Radius = 0;
};

/// The smallest shapes around a convex polygon, which has at least one vertex and runs counterclockwise on the screen
/// without vertices on its sides. Of equals the first is taken, in the order of the sides.
/// @{

/// By rotating calipers.
Rectangle SmallestRectangle(std::span<const XY> hull);
/// From the widths across each side: the best parallelogram has a side of the polygon on two of its own.
Parallelogram SmallestParallelogram(std::span<const XY> hull);
/// @}

/// The smallest circle around any points (Welzl 1991), at least one.
Circle SmallestCircle(std::span<const XY> points);

} // namespace Tesk::shapes
