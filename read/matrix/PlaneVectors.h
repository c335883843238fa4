// Lengths and areas in the plane.
#pragma once

#include "foundation/Records.h"

#include <cmath>

namespace Tesk::matrix {

inline double SquaredLength(XY v)
{
    return v.X * v.X + v.Y * v.Y;
}
inline double Length(XY v)
{
    return std::hypot(v.X, v.Y);
}
/// Above 0 where `b` lies clockwise of `a` on the screen.
inline double Cross(XY a, XY b)
{
    return a.X * b.Y - b.X * a.Y;
}

} // namespace Tesk::matrix
