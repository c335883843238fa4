// Fits by their mode, and deviations from ideal shapes, for whole and for real points.
#include "measure/fit/PointMeasure.h"

#include "foundation/Angles.h"
#include "measure/fit/PointFit.h"
#include "measure/fit/PointShape.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <utility>

namespace Tesk::fits {

namespace {

/// The tolerance of a robust fit, as a share of the spread of the points.
constexpr double toleranceOfSpread = 0.03;
constexpr int mostIterations = 3;

template <typename P>
double Tolerance(std::span<const P> points)
{
    return toleranceOfSpread * Spread(points);
}

template <typename P>
XY Real(const P& point)
{
    return {static_cast<double>(point.X), static_cast<double>(point.Y)};
}

XY DirectionOf(double degrees)
{
    return {std::cos(ToRadians(degrees)), std::sin(ToRadians(degrees))};
}

/// A point in the frame of a shape.
XY InFrame(XY point, XY center, XY direction)
{
    const double x = point.X - center.X, y = point.Y - center.Y;
    return {x * direction.X + y * direction.Y, y * direction.X - x * direction.Y};
}

/// The mean of `distance(point)`, or the root of the mean of its square.
template <typename P, typename F>
double Mean(std::span<const P> points, bool rms, F distance)
{
    double sum = 0;
    for (const P& point : points) {
        const double d = distance(Real(point));
        sum += rms ? d * d : std::abs(d);
    }
    const double mean = sum / static_cast<double>(points.size());
    return rms ? std::sqrt(mean) : mean;
}

/// The circle with the centre and the area of the polygon.
template <typename P>
bool FilledCircle(std::span<const P> points, Circle& circle)
{
    // About the first point; products of whole coordinates stay exact.
    const XY origin = Real(points[0]);
    double twice = 0, x = 0, y = 0;
    for (std::size_t i = 1; i < points.size(); i++) {
        const XY p = Real(points[i - 1]), q = Real(points[i]);
        const XY a(p.X - origin.X, p.Y - origin.Y), b(q.X - origin.X, q.Y - origin.Y);
        const double c = a.X * b.Y - a.Y * b.X;
        twice += c;
        x += (a.X + b.X) * c;
        y += (a.Y + b.Y) * c;
    }
    const double area = std::abs(twice) / 2, sense = twice < 0 ? -1 : 1;
    const Circle found{{origin.X + x * (sense / 6) / area, origin.Y + y * (sense / 6) / area},
                       std::sqrt(area / std::numbers::pi)};
    if (twice == 0 || !std::isfinite(found.Center.X + found.Center.Y + found.Radius)) return false;
    circle = found;
    return true;
}

template <typename P>
bool FitCircle(std::span<const P> points, FittingModes mode, Circle& circle)
{
    if (points.size() < 3) return false;
    if (points.size() == 3) return CircleThrough(Real(points[0]), Real(points[1]), Real(points[2]), circle);
    switch (mode) {
    case AverageFit:
        return FilledCircle(points, circle);
    case FastFit:
        return FitCircleKasa(points, circle);
    case RobustFit:
        return FitCircleRobust(points, Tolerance(points), circle);
    default:
        return FitCircleTaubin(points, circle);
    }
}

template <typename P>
bool FitEllipseBy(std::span<const P> points, FittingModes mode, Ellipse& ellipse)
{
    constexpr std::size_t chosen = 5;
    if (points.size() < chosen) return false;
    if (points.size() == chosen || mode == AverageFit || mode == FastFit) {
        std::array<P, chosen> through;
        for (std::size_t i = 0; i < chosen; i++)
            through[i] = points[i * points.size() / chosen];
        return EllipseThrough(std::span<const P, chosen>(through), ellipse);
    }
    if (mode == RobustFit) return FitEllipseRobust(points, Tolerance(points), ellipse);
    return FitEllipse(points, ellipse);
}

} // namespace

template <typename P>
bool LineFit(std::span<const P> points, FittingModes mode, XY& center, double& angle)
{
    Line line;
    if (points.size() == 2) {
        const XY a = Real(points[0]), b = Real(points[1]);
        if (a.X == b.X && a.Y == b.Y) return false;
        line = {{a.X + (b.X - a.X) / 2, a.Y + (b.Y - a.Y) / 2}, {b.X - a.X, b.Y - a.Y}};
        if (!std::isfinite(line.Center.X + line.Center.Y)) return false;
    } else if (!(mode == RobustFit ? FitLineRobust(points, Tolerance(points), line) : FitLine(points, line))) {
        return false;
    }
    center = line.Center;
    angle = ToDegrees(std::atan2(line.Direction.Y, line.Direction.X));
    return true;
}

template <typename P>
bool CircleFit(std::span<const P> points, FittingModes mode, XY& center, double& radius)
{
    Circle circle;
    if (!FitCircle(points, mode, circle)) return false;
    center = circle.Center;
    radius = circle.Radius;
    return true;
}

template <typename P>
bool EllipseFit(std::span<const P> points, FittingModes mode, XY& center, XY& axis, double& angle)
{
    Ellipse ellipse;
    if (!FitEllipseBy(points, mode, ellipse)) return false;
    if (ellipse.FirstAxis < ellipse.SecondAxis) {
        std::swap(ellipse.FirstAxis, ellipse.SecondAxis);
        ellipse.Angle += (ellipse.Angle > 0 ? -1 : 1) * std::numbers::pi / 2;
    }
    center = ellipse.Center;
    axis = {ellipse.FirstAxis, ellipse.SecondAxis};
    angle = ToDegrees(ellipse.Angle);
    return true;
}

template <typename P>
double LineDeviation(std::span<const P> points, XY center, double angle, bool rms)
{
    const XY direction = DirectionOf(angle);
    return Mean(points, rms, [&](XY p) { return InFrame(p, center, direction).Y; });
}

template <typename P>
double CircleDeviation(std::span<const P> points, XY center, double radius, bool rms)
{
    return Mean(points, rms, [&](XY p) { return std::hypot(p.X - center.X, p.Y - center.Y) - radius; });
}

template <typename P>
double RectangleDeviation(std::span<const P> points, XY center, XY sides, double angle, bool rms)
{
    const XY direction = DirectionOf(angle), half(sides.X / 2, sides.Y / 2);
    return Mean(points, rms, [&](XY p) { return shapes::DistanceToRectangle(InFrame(p, center, direction), half); });
}

template <typename P>
double EllipseDeviation(std::span<const P> points, XY center, XY axis, double angle, bool rms, int iterations)
{
    const XY direction = DirectionOf(angle);
    const int held = Clamp(iterations, 0, mostIterations);
    return Mean(points, rms, [&](XY p) {
        return std::sqrt(shapes::SquaredDistanceToEllipse(InFrame(p, center, direction), axis, held));
    });
}

#define TESK_MEASURES(P)                                                                                               \
    template bool LineFit(std::span<const P>, FittingModes, XY&, double&);                                             \
    template bool CircleFit(std::span<const P>, FittingModes, XY&, double&);                                           \
    template bool EllipseFit(std::span<const P>, FittingModes, XY&, XY&, double&);                                     \
    template double LineDeviation(std::span<const P>, XY, double, bool);                                               \
    template double CircleDeviation(std::span<const P>, XY, double, bool);                                             \
    template double RectangleDeviation(std::span<const P>, XY, XY, double, bool);                                      \
    template double EllipseDeviation(std::span<const P>, XY, XY, double, bool, int)
TESK_MEASURES(Site);
TESK_MEASURES(XY);

} // namespace Tesk::fits
