// Distances from ideal shapes, and the smallest shapes around convex polygons.
#include "measure/fit/PointShape.h"

#include "measure/fit/PointFit.h"

#include <cmath>
#include <numbers>
#include <numeric>
#include <optional>
#include <utility>
#include <vector>

namespace Tesk::shapes {

namespace {

/// Areas and radii that differ by less are equal but for rounding.
constexpr double tie = 1e-12;

double Dot(XY a, XY b)
{
    return a.X * b.X + a.Y * b.Y;
}

double Cross(XY a, XY b)
{
    return a.X * b.Y - a.Y * b.X;
}

/// A polygon that is a point or a segment, as a rectangle without height.
Rectangle Flat(std::span<const XY> hull)
{
    const XY d = hull.back() - hull.front();
    double angle = std::atan2(d.Y, d.X);
    if (angle < 0) angle += std::numbers::pi;
    if (angle >= std::numbers::pi) angle -= std::numbers::pi;
    return {0.5 * (hull.front() + hull.back()), std::hypot(d.X, d.Y), 0, angle};
}

/// The crossing nearer to `p` of the ellipse with the line through `p` and `c`; none where they miss each other.
std::optional<XY> Foot(XY p, XY c, XY axis)
{
    const XY d = c - p, scale(1 / axis.X, 1 / axis.Y);
    const XY u(d.X * scale.X, d.Y * scale.Y), v(p.X * scale.X, p.Y * scale.Y);
    // |v + t u| = 1.
    const double a = Dot(u, u), b = Dot(u, v), q = Dot(v, v) - 1, discriminant = b * b - a * q;
    if (!(a > 0) || !(discriminant >= 0)) return {};
    const double larger = b > 0 ? -b - std::sqrt(discriminant) : -b + std::sqrt(discriminant);
    // The roots are larger / a and q / larger: the latter is the smaller one, computed without cancellation.
    const double t = larger != 0 ? q / larger : 0;
    return p + t * d;
}

double SquaredDistanceToSegment(XY p, XY axis)
{
    const XY past(Max(0.0, std::abs(p.X) - axis.X), Max(0.0, std::abs(p.Y) - axis.Y));
    return Dot(past, past);
}

Circle Diametral(XY a, XY b)
{
    return {0.5 * (a + b), std::hypot(a.X - b.X, a.Y - b.Y) / 2};
}

bool Holds(const Circle& circle, XY p)
{
    return std::hypot(p.X - circle.Center.X, p.Y - circle.Center.Y) <= circle.Radius * (1 + tie);
}

} // namespace

double DistanceToRectangle(XY p, XY halfSides)
{
    const double x = std::abs(p.X) - std::abs(halfSides.X), y = std::abs(p.Y) - std::abs(halfSides.Y);
    if (x > 0 && y > 0) return std::hypot(x, y);
    if (x > 0) return x;
    if (y > 0) return y;
    return Min(-x, -y);
}

double SquaredDistanceToEllipse(XY p, XY axis, int iterations)
{
    const double a = std::abs(axis.X), b = std::abs(axis.Y);
    if (!(a > 0) || !(b > 0)) return SquaredDistanceToSegment(p, {a, b});
    // By symmetry in the first quadrant. The line to the centre of curvature at the nearer vertex is a first normal.
    p = {std::abs(p.X), std::abs(p.Y)};
    const bool alongX = !(p.X * a - a * a < p.Y * b - b * b);
    const XY center = alongX ? XY(a - b * b / a, 0) : XY(0, b - a * a / b);
    XY foot = Foot(p, center, {a, b}).value_or(alongX ? XY(a, 0) : XY(0, b));
    for (int i = 0; i < iterations; i++) {
        const XY g(foot.X / (a * a), foot.Y / (b * b));
        const double k = Dot(g, g) * a * a * b * b;
        foot = Foot(p, foot - k * g, {a, b}).value_or(foot);
    }
    return Dot(foot - p, foot - p);
}

Rectangle SmallestRectangle(std::span<const XY> hull)
{
    const std::size_t n = hull.size();
    if (n < 3) return Flat(hull);
    Rectangle best;
    double leastArea = -1;
    std::size_t farthest = 0, across = 0, nearest = 0;
    for (std::size_t i = 0; i < n; i++) {
        const XY from = hull[i], side = hull[(i + 1) % n] - from;
        const double length = std::hypot(side.X, side.Y);
        const XY u = (1 / length) * side, inwards(u.Y, -u.X);
        // The extreme vertices only move on as the side turns.
        const auto advance = [&](std::size_t& at, XY direction) {
            for (std::size_t steps = 0; steps < n && Dot(hull[(at + 1) % n] - hull[at], direction) > 0; steps++)
                at = (at + 1) % n;
        };
        if (i == 0) farthest = 1;
        advance(farthest, u);
        if (i == 0) across = farthest;
        advance(across, inwards);
        if (i == 0) nearest = across;
        advance(nearest, {-u.X, -u.Y});
        const double right = Dot(hull[farthest] - from, u), left = Dot(hull[nearest] - from, u);
        const double height = Dot(hull[across] - from, inwards), area = (right - left) * height;
        if (leastArea >= 0 && area >= leastArea * (1 - tie)) continue;
        leastArea = area;
        best = {from + (left + right) / 2 * u + height / 2 * inwards, right - left, height, std::atan2(u.Y, u.X)};
    }
    if (best.Width < best.Height) {
        std::swap(best.Width, best.Height);
        best.Angle += std::numbers::pi / 2;
    }
    if (best.Angle < 0) best.Angle += std::numbers::pi;
    if (best.Angle >= std::numbers::pi) best.Angle -= std::numbers::pi;
    return best;
}

Parallelogram SmallestParallelogram(std::span<const XY> hull)
{
    const std::size_t n = hull.size();
    if (n < 3) return {hull.front(), hull.back(), hull.back()};
    /// A strip between a side of the polygon and the vertex farthest from it: `offset <= p . normal <= offset + width`.
    struct Strip
    {
        XY along, normal;
        double offset, width;
    };
    std::vector<Strip> strips;
    strips.reserve(n);
    std::size_t across = 1;
    for (std::size_t i = 0; i < n; i++) {
        const XY side = hull[(i + 1) % n] - hull[i];
        const XY u = (1 / std::hypot(side.X, side.Y)) * side, inwards(u.Y, -u.X);
        for (std::size_t steps = 0; steps < n && Dot(hull[(across + 1) % n] - hull[across], inwards) > 0; steps++)
            across = (across + 1) % n;
        strips.push_back({u, inwards, Dot(hull[i], inwards), Dot(hull[across] - hull[i], inwards)});
    }
    double leastArea = -1;
    const Strip *one = nullptr, *two = nullptr;
    for (const Strip& first : strips)
        for (const Strip* second = &first + 1; second < strips.data() + n; second++) {
            const double sine = std::abs(Cross(first.along, second->along));
            if (!(sine > tie)) continue;
            const double area = first.width * second->width / sine;
            if (leastArea >= 0 && area >= leastArea * (1 - tie)) continue;
            leastArea = area;
            one = &first;
            two = second;
        }
    if (!one) return {hull.front(), hull.back(), hull.back()};
    // Where the edges of the two strips meet.
    const double d = Cross(one->normal, two->normal);
    const auto corner = [&](double a, double b) {
        const double s = one->offset + a, t = two->offset + b;
        return XY((s * two->normal.Y - t * one->normal.Y) / d, (t * one->normal.X - s * two->normal.X) / d);
    };
    return {corner(0, two->width), corner(0, 0), corner(one->width, 0)};
}

Circle SmallestCircle(std::span<const XY> points)
{
    // The recursion unrolled: a point outside the circle of those before it lies on the border of the circle with it.
    // Taking the points by an even stride rather than along the outline keeps that rare.
    const std::size_t n = points.size();
    std::size_t stride = Max<std::size_t>(1, static_cast<std::size_t>(static_cast<double>(n) * 0.618));
    while (std::gcd(stride, n) != 1)
        stride++;
    const auto point = [&](std::size_t i) { return points[i * stride % n]; };
    Circle circle{point(0), 0};
    for (std::size_t i = 1; i < n; i++) {
        if (Holds(circle, point(i))) continue;
        circle = {point(i), 0};
        for (std::size_t j = 0; j < i; j++) {
            if (Holds(circle, point(j))) continue;
            circle = Diametral(point(i), point(j));
            for (std::size_t k = 0; k < j; k++) {
                if (Holds(circle, point(k))) continue;
                fits::Circle through;
                if (fits::CircleThrough(point(i), point(j), point(k), through))
                    circle = {through.Center, through.Radius};
            }
        }
    }
    return circle;
}

} // namespace Tesk::shapes
