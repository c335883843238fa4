// What paths and polygons measure alike: fits by their mode, and how far points lie from ideal shapes.
//
// Angles are in degrees, from the x axis towards the y axis. A fit that the points do not determine returns false and
// leaves its results as they were.
#pragma once

#include "foundation/Records.h"

#include <span>

namespace Tesk::fits {

template <typename P>
bool LineFit(std::span<const P> points, FittingModes mode, XY& center, double& angle);
template <typename P>
bool CircleFit(std::span<const P> points, FittingModes mode, XY& center, double& radius);
/// `axis` holds the long and the short half axis.
template <typename P>
bool EllipseFit(std::span<const P> points, FittingModes mode, XY& center, XY& axis, double& angle);

/// The mean distance of the points, or with `rms` the root of the mean squared one.
template <typename P>
double LineDeviation(std::span<const P> points, XY center, double angle, bool rms);
template <typename P>
double CircleDeviation(std::span<const P> points, XY center, double radius, bool rms);
template <typename P>
double RectangleDeviation(std::span<const P> points, XY center, XY sides, double angle, bool rms);
/// `iterations` is held to 0 to 3.
template <typename P>
double EllipseDeviation(std::span<const P> points, XY center, XY axis, double angle, bool rms, int iterations);

} // namespace Tesk::fits
