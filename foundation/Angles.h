// Angles: users give and get degrees, arithmetic takes radians.
#pragma once

#include <numbers>

namespace Tesk {

inline constexpr double degreesPerRadian = 180 / std::numbers::pi, radiansPerDegree = std::numbers::pi / 180;

constexpr double ToRadians(double degrees)
{
    return degrees * radiansPerDegree;
}

constexpr double ToDegrees(double radians)
{
    return radians * degreesPerRadian;
}

} // namespace Tesk
