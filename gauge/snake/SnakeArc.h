// The arc through three nodes.
#pragma once

#include "foundation/Records.h"
#include "measure/fit/PointFit.h"

#include <cmath>
#include <numbers>

namespace Tesk::snakes {

/// An arc from an angle over a sweep, positive from x towards y, that passes its middle node after a part of it.
struct Arc
{
    fits::Circle circle;
    double start = 0, sweep = 0, toMiddle = 0;

    double Sense() const { return sweep < 0 ? -1 : 1; }
    XY At(double angle) const
    {
        return {circle.Center.X + circle.Radius * std::cos(angle), circle.Center.Y + circle.Radius * std::sin(angle)};
    }
    XY Tangent(double angle) const { return {-Sense() * std::sin(angle), Sense() * std::cos(angle)}; }
};

/// From `from` by `middle` to `to`. Where the ends coincide it is the whole circle whose diameter leads to the middle.
/// False if the three are on a line.
inline bool ArcThrough(XY from, XY middle, XY to, Arc& arc)
{
    constexpr double turn = 2 * std::numbers::pi;
    const auto angleOf = [&](XY p) { return std::atan2(p.Y - arc.circle.Center.Y, p.X - arc.circle.Center.X); };
    if (from.X == to.X && from.Y == to.Y) {
        const double radius = std::hypot(middle.X - from.X, middle.Y - from.Y) / 2;
        if (!(radius > 0)) return false;
        arc.circle = {{from.X + (middle.X - from.X) / 2, from.Y + (middle.Y - from.Y) / 2}, radius};
        arc.start = angleOf(from);
        arc.sweep = turn;
        arc.toMiddle = turn / 2;
        return true;
    }
    if (!fits::CircleThrough(from, middle, to, arc.circle)) return false;
    const double sense = (middle.X - from.X) * (to.Y - middle.Y) - (middle.Y - from.Y) * (to.X - middle.X) < 0 ? -1 : 1;
    const auto ahead = [&](double angle) {
        const double way = sense * (angle - arc.start);
        return sense * (way < 0 ? way + turn : way);
    };
    arc.start = angleOf(from);
    arc.sweep = ahead(angleOf(to));
    arc.toMiddle = ahead(angleOf(middle));
    return true;
}

} // namespace Tesk::snakes
