// What the makers of pictures share: shapes by their coverage of a pixel, and the noise of a camera.
#pragma once

#include "foundation/Records.h"

#include <cmath>
#include <cstdint>

namespace scene {

/// A linear congruential generator (Knuth's MMIX constants), so that every machine makes the same picture.
class Noise
{
public:
    double Next()
    {
        state_ = state_ * 6364136223846793005u + 1442695040888963407u;
        return static_cast<double>(state_ >> 40) / static_cast<double>(1u << 24) - 0.5;
    }

private:
    std::uint64_t state_ = 20;
};

/// How much of a pixel lies inside a shape, from the signed distance to its edge; the edge is spread over `blur`
/// pixels.
inline double Coverage(double distance, double blur = 1)
{
    return Tesk::Clamp(0.5 - distance / blur, 0.0, 1.0);
}

/// Signed distances to the edge of a shape, below 0 inside.
inline double Washer(double x, double y, double cx, double cy, double inner, double outer)
{
    const double r = std::hypot(x - cx, y - cy);
    return Tesk::Max(r - outer, inner - r);
}

inline double Rod(double x, double y, double cx, double cy, double length, double radius, double degrees)
{
    const double angle = degrees * 3.14159265358979323846 / 180;
    const double along = (x - cx) * std::cos(angle) + (y - cy) * std::sin(angle);
    const double across = (y - cy) * std::cos(angle) - (x - cx) * std::sin(angle);
    const double beyond = Tesk::Max(std::abs(along) - length / 2, 0.0);
    return std::hypot(beyond, across) - radius;
}

} // namespace scene
