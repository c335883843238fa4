// The moments of the inside of a closed path.
#pragma once

#include "measure/path/PathFrame.h"

#include <span>

namespace Tesk::paths {

/// Twice the signed area, positive clockwise on the screen.
inline std::int64_t TwiceArea(std::span<const Site> sites)
{
    // About the first site, whose own two triangles are empty.
    std::int64_t sum = 0;
    for (std::size_t i = 1; i < sites.size(); i++)
        sum += Cross(sites[0], sites[i - 1], sites[i]);
    return sum;
}

/// The length of the closed path, that of each step without its fraction.
inline std::int64_t PerimeterOf(std::span<const Site> sites)
{
    std::int64_t sum = 0;
    for (std::size_t i = 0; i < sites.size(); i++)
        sum += static_cast<std::int64_t>(
            std::sqrt(static_cast<double>(SquaredDistance(sites[i > 0 ? i - 1 : sites.size() - 1], sites[i]))));
    return sum;
}

/// Integrals over the inside of a polygon, about its first site.
struct PolygonMoments
{
    Site Origin{0, 0};
    std::int64_t Twice = 0; ///< twice the signed area
    double X = 0, Y = 0, XX = 0, XY_ = 0, YY = 0;

    bool IsFlat() const { return Twice == 0; }
    double Area() const { return static_cast<double>(Twice < 0 ? -Twice : Twice) / 2; }
    XY Center() const { return {Origin.X + X / Area(), Origin.Y + Y / Area()}; }
};

/// The handedness of the polygon does not matter.
inline PolygonMoments MomentsOf(std::span<const Site> sites)
{
    PolygonMoments m;
    m.Origin = sites[0];
    m.Twice = TwiceArea(sites);
    for (std::size_t i = 1; i < sites.size(); i++) {
        const auto c = static_cast<double>(Cross(sites[0], sites[i - 1], sites[i]));
        const double x0 = sites[i - 1].X - m.Origin.X, y0 = sites[i - 1].Y - m.Origin.Y;
        const double x1 = sites[i].X - m.Origin.X, y1 = sites[i].Y - m.Origin.Y;
        m.X += (x0 + x1) * c;
        m.Y += (y0 + y1) * c;
        m.XX += (x0 * x0 + x0 * x1 + x1 * x1) * c;
        m.XY_ += (2 * x0 * y0 + x0 * y1 + x1 * y0 + 2 * x1 * y1) * c;
        m.YY += (y0 * y0 + y0 * y1 + y1 * y1) * c;
    }
    const double sense = m.Twice < 0 ? -1 : 1;
    m.X *= sense / 6;
    m.Y *= sense / 6;
    m.XX *= sense / 12;
    m.XY_ *= sense / 24;
    m.YY *= sense / 12;
    return m;
}

} // namespace Tesk::paths
