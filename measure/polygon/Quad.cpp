// Quads: how they are set, their corners and their box.
#include "measure/Quad.h"

#include "foundation/Angles.h"
#include "foundation/Entry.h"
#include "measure/fit/PointFit.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Tesk {

ReadOnly<DraggingHandles, Quad> Quad::Handle(NoHandle);

namespace {

constexpr double pi = std::numbers::pi, turn = 2 * pi, fullCircle = 360;
/// Coordinates and sizes beyond are of no picture.
constexpr double farthest = 1073741824;
/// From the three points of an arc to the sector on which they stand in the middles of the thirds. A hair below 3/2, so
/// that points two thirds of a turn apart still give a full ring.
constexpr double sectorOfPoints = 1.4999999999999998;

/// The remainder of an angle, 0 to below a period.
double Within(double angle, double period)
{
    const double rest = std::fmod(angle, period);
    const double positive = rest < 0 ? rest + period : rest;
    return positive == period ? 0 : positive;
}

/// An angle without the turns beyond the first; whole turns are one.
double Swept(double angle, double period)
{
    if (std::abs(angle) <= period) return angle;
    const double rest = std::fmod(angle, period);
    return rest == 0 ? std::copysign(period, angle) : rest;
}

double AngleOf(double degrees)
{
    return ToRadians(Within(degrees, fullCircle));
}

double BendOf(double degrees)
{
    return ToRadians(Swept(degrees, fullCircle));
}

/// The direction from the centre of its circle to the point where a bent quad sets out.
double StartOf(double angle, double bend)
{
    return bend > 0 ? angle - pi / 2 : bend < 0 ? angle + pi / 2 : angle;
}

XY From(XY p, double distance, double direction)
{
    return {p.X + distance * std::cos(direction), p.Y + distance * std::sin(direction)};
}

int Truncated(double v)
{
    return static_cast<int>(Clamp(v, -2147483648.0, 2147483647.0));
}

} // namespace

void Quad::Put(const Shape& shape)
{
    X = shape.X;
    Y = shape.Y;
    Width = shape.Width;
    Height = shape.Height;
    Angle = shape.Angle;
    Bend = shape.Bend;
    Aligned = false;
    Bent = shape.Bent;
}

void Quad::Take(const char* context, const Shape& shape)
{
    const Entry entry(context);
    for (const double v : {shape.X, shape.Y, shape.Width, shape.Height, shape.Angle, shape.Bend})
        if (!(std::abs(v) <= farthest)) {
            entry.Refuse(OutOfRange, L"The quad is not finite or too large");
            return;
        }
    Put(shape);
}

void Quad::Set(int X, int Y, int Width, int Height)
{
    const Entry entry("Tesk::Quad::Set");
    Put({double(X), double(Y), double(Width), double(Height), 0, 0, false});
    Aligned = true;
}

void Quad::SetCircle(double X, double Y, double Radius, double Angle)
{
    Take("Tesk::Quad::SetCircle", {X, Y, Radius, Radius, AngleOf(Angle), turn, true});
}

void Quad::SetArc(double X, double Y, double InnerRadius, double OuterRadius, double FromAngle, double ToAngle)
{
    Take("Tesk::Quad::SetArc",
         {X, Y, OuterRadius, OuterRadius - InnerRadius, AngleOf(FromAngle), BendOf(ToAngle - FromAngle), true});
}

void Quad::SetCenter(double X, double Y, double Width, double Height, double Angle, double Bend)
{
    const double a = AngleOf(Angle), bend = BendOf(Bend), c = std::cos(a), s = std::sin(a);
    if (bend == 0) {
        Take("Tesk::Quad::SetCenter",
             {X - (Width * c - Height * s) / 2, Y - (Width * s + Height * c) / 2, Width, Height, a, bend, false});
        return;
    }
    const double middle = Width / bend;
    const XY center = From({X, Y}, -middle, a + bend / 2);
    Take("Tesk::Quad::SetCenter", {center.X, center.Y, middle + Height / 2, Height, a, bend, true});
}

void Quad::SetCorner(double X, double Y, double Width, double Height, double Angle, double Bend)
{
    const double a = AngleOf(Angle), bend = BendOf(Bend);
    if (bend == 0) {
        Take("Tesk::Quad::SetCorner", {X, Y, Width, Height, a, bend, false});
        return;
    }
    const double outer = Width / bend + Height / 2;
    const XY center = From({X, Y}, -outer, a);
    Take("Tesk::Quad::SetCorner", {center.X, center.Y, outer, Height, a, bend, true});
}

void Quad::SetTurned(double X, double Y, double Width, double Height, double Radians)
{
    Take("Tesk::Quad::SetTurned", {X, Y, Width, Height, Within(Radians, turn), 0, false});
}

bool Quad::FitArc(XY From, XY Middle, XY To, double Height)
{
    const Entry entry("Tesk::Quad::FitArc");
    fits::Circle circle;
    if (!fits::CircleThrough(From, Middle, To, circle)) return false;
    const auto seen = [&](XY p) { return std::atan2(p.Y - circle.Center.Y, p.X - circle.Center.X); };
    const double from = seen(From), through = Within(seen(Middle) - from, turn), to = Within(seen(To) - from, turn);
    const double sweep = through < to ? to : to - turn, bend = sectorOfPoints * sweep;
    const double outer = circle.Radius + Height / 2;
    if (!(std::abs(bend) <= turn) || !(std::abs(outer) <= farthest) || !(std::abs(Height) <= farthest)) return false;
    const double start = from - (bend - sweep) / 2;
    Put({circle.Center.X, circle.Center.Y, outer, Height, Within(bend > 0 ? start + pi / 2 : start - pi / 2, turn),
         bend, true});
    return true;
}

double Quad::StartAngle() const
{
    return StartOf(Angle, Bend);
}

/// A point of the ring, on the circle of a radius whatever its sign, `share` of the way from the start of the sector to
/// its end.
XY Quad::RingPoint(double radius, double share) const
{
    return From({X, Y}, std::abs(radius), StartAngle() + share * Bend);
}

XY Quad::Corner(int Index) const
{
    const unsigned corner = static_cast<unsigned>(Index) % 4;
    const bool atEnd = corner == 1 || corner == 2, across = corner >= 2;
    if (Bent) return RingPoint(across ? Width - Height : double(Width), atEnd ? 1 : 0);
    const double along = atEnd ? double(Width) : 0, down = across ? double(Height) : 0;
    const double c = std::cos(Angle), s = std::sin(Angle);
    return {X + along * c - down * s, Y + along * s + down * c};
}

XY Quad::Middle() const
{
    if (Bent) return RingPoint(Width - Height / 2, 0.5);
    const XY one = Corner(0), other = Corner(2);
    return {(one.X + other.X) / 2, (one.Y + other.Y) / 2};
}

void Quad::Bounds(int& Left, int& Top, int& Right, int& Bottom) const
{
    const Entry entry("Tesk::Quad::Bounds");
    XY first = Corner(0);
    int left = Truncated(first.X), right = left, top = Truncated(first.Y), bottom = top;
    const auto unite = [&](XY p) {
        left = Min(left, Truncated(p.X));
        right = Max(right, Truncated(p.X));
        top = Min(top, Truncated(p.Y));
        bottom = Max(bottom, Truncated(p.Y));
    };
    for (int i = 1; i < 4; i++)
        unite(Corner(i));
    if (Bent) {
        // Where the arcs touch an upright line.
        const double lower = Min(StartAngle(), StartAngle() + Bend), upper = Max(StartAngle(), StartAngle() + Bend);
        for (double k = std::ceil(lower / (pi / 2)); k * (pi / 2) <= upper; k++) {
            const auto quadrant = static_cast<unsigned>(static_cast<int>(k)) % 4;
            const XY direction(quadrant == 0 ? 1 : quadrant == 2 ? -1 : 0, quadrant == 1 ? 1 : quadrant == 3 ? -1 : 0);
            for (const double radius : {std::abs(Width), std::abs(Width - Height)})
                unite({X + radius * direction.X, Y + radius * direction.Y});
        }
    }
    Left = left;
    Top = top;
    Right = right;
    Bottom = bottom;
}

} // namespace Tesk
