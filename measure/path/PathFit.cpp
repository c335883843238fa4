// Lines, circles and ellipses fitted to paths, and how far the sites lie from ideal shapes.
#include "measure/Path.h"

#include "foundation/Angles.h"
#include "measure/fit/PointFit.h"
#include "measure/fit/PointShape.h"
#include "measure/path/PathFrame.h"
#include "measure/path/PathMoments.h"

#include <array>
#include <utility>

namespace Tesk {

using namespace paths;

namespace {

/// The tolerance of a robust fit, as a share of the spread of the sites.
constexpr double toleranceOfSpread = 0.03;
constexpr int mostIterations = 3;

double Tolerance(std::span<const Site> sites)
{
    return toleranceOfSpread * fits::Spread(sites);
}

XY Direction(double degrees)
{
    const double radians = ToRadians(degrees);
    return {std::cos(radians), std::sin(radians)};
}

/// A site in the frame of a shape.
XY InFrame(Site site, XY center, XY direction)
{
    const double x = site.X - center.X, y = site.Y - center.Y;
    return {x * direction.X + y * direction.Y, y * direction.X - x * direction.Y};
}

/// The mean of `squared(site)` or of its root.
template <typename F>
double MeanDistance(std::span<const Site> sites, bool rms, F squared)
{
    double sum = 0;
    for (const Site site : sites)
        sum += rms ? squared(site) : std::sqrt(squared(site));
    const double mean = sum / static_cast<double>(sites.size());
    return rms ? std::sqrt(mean) : mean;
}

bool FilledCircle(std::span<const Site> sites, fits::Circle& circle)
{
    const PolygonMoments moments = MomentsOf(sites);
    if (moments.IsFlat()) return false;
    circle = {moments.Center(), std::sqrt(moments.Area() / std::numbers::pi)};
    return true;
}

bool FitCircle(std::span<const Site> sites, FittingModes mode, fits::Circle& circle)
{
    if (sites.size() < 3) return false;
    if (sites.size() == 3) {
        const auto corner = [&](std::size_t i) { return XY(sites[i].X, sites[i].Y); };
        return fits::CircleThrough(corner(0), corner(1), corner(2), circle);
    }
    switch (mode) {
    case AverageFit:
        return FilledCircle(sites, circle);
    case FastFit:
        return fits::FitCircleKasa(sites, circle);
    case RobustFit:
        return fits::FitCircleRobust(sites, Tolerance(sites), circle);
    default:
        return fits::FitCircleTaubin(sites, circle);
    }
}

bool FitEllipse(std::span<const Site> sites, FittingModes mode, fits::Ellipse& ellipse)
{
    constexpr std::size_t chosen = 5;
    if (sites.size() < chosen) return false;
    if (sites.size() == chosen || mode == AverageFit || mode == FastFit) {
        std::array<Site, chosen> through;
        for (std::size_t i = 0; i < chosen; i++)
            through[i] = sites[i * sites.size() / chosen];
        return fits::EllipseThrough(std::span<const Site, chosen>(through), ellipse);
    }
    if (mode == RobustFit) return fits::FitEllipseRobust(sites, Tolerance(sites), ellipse);
    return fits::FitEllipse(sites, ellipse);
}

} // namespace

bool Path::LineFit(XY& Center, double& Angle, FittingModes Mode) const
{
    const Entry entry("Tesk::Path::LineFit");
    if (entry.Refuses(CheckSites())) return false;
    const std::span<const Site> sites = View();
    fits::Line line;
    if (Length == 2) {
        const Site a = sites[0], b = sites[1];
        if (Same(a, b)) return false;
        line = {{(a.X + b.X) / 2.0, (a.Y + b.Y) / 2.0}, {double(b.X - a.X), double(b.Y - a.Y)}};
    } else if (!(Mode == RobustFit ? fits::FitLineRobust(sites, Tolerance(sites), line) : fits::FitLine(sites, line))) {
        return false;
    }
    Center = line.Center;
    Angle = ToDegrees(std::atan2(line.Direction.Y, line.Direction.X));
    return true;
}

bool Path::CircleFit(XY& Center, double& Radius, FittingModes Mode) const
{
    const Entry entry("Tesk::Path::CircleFit");
    if (entry.Refuses(CheckSites())) return false;
    fits::Circle circle;
    if (!FitCircle(View(), Mode, circle)) return false;
    Center = circle.Center;
    Radius = circle.Radius;
    return true;
}

bool Path::EllipseFit(XY& Center, XY& Axis, double& Angle, FittingModes Mode) const
{
    const Entry entry("Tesk::Path::EllipseFit");
    if (entry.Refuses(CheckSites())) return false;
    fits::Ellipse ellipse;
    if (!FitEllipse(View(), Mode, ellipse)) return false;
    if (ellipse.FirstAxis < ellipse.SecondAxis) {
        std::swap(ellipse.FirstAxis, ellipse.SecondAxis);
        ellipse.Angle += (ellipse.Angle > 0 ? -1 : 1) * std::numbers::pi / 2;
    }
    Center = ellipse.Center;
    Axis = {ellipse.FirstAxis, ellipse.SecondAxis};
    Angle = ToDegrees(ellipse.Angle);
    return true;
}

double Path::LineDeviation(XY Center, double Angle, bool RMS) const
{
    const Entry entry("Tesk::Path::LineDeviation");
    if (entry.Refuses(CheckSites())) return 0;
    const XY direction = Direction(Angle);
    return MeanDistance(View(), RMS, [&](Site site) { return Sqr(InFrame(site, Center, direction).Y); });
}

double Path::CircleDeviation(XY Center, double Radius, bool RMS) const
{
    const Entry entry("Tesk::Path::CircleDeviation");
    if (entry.Refuses(CheckSites())) return 0;
    return MeanDistance(View(), RMS,
                        [&](Site site) { return Sqr(std::hypot(site.X - Center.X, site.Y - Center.Y) - Radius); });
}

double Path::RectangleDeviation(XY Center, XY Sides, double Angle, bool RMS) const
{
    const Entry entry("Tesk::Path::RectangleDeviation");
    if (entry.Refuses(CheckSites())) return 0;
    const XY direction = Direction(Angle), half(Sides.X / 2, Sides.Y / 2);
    return MeanDistance(View(), RMS, [&](Site site) {
        return Sqr(shapes::DistanceToRectangle(InFrame(site, Center, direction), half));
    });
}

double Path::EllipseDeviation(XY Center, XY Axis, double Angle, bool RMS, int NumIterations) const
{
    const Entry entry("Tesk::Path::EllipseDeviation");
    if (entry.Refuses(CheckSites())) return 0;
    const XY direction = Direction(Angle);
    const int iterations = Clamp(NumIterations, 0, mostIterations);
    return MeanDistance(View(), RMS, [&](Site site) {
        return shapes::SquaredDistanceToEllipse(InFrame(site, Center, direction), Axis, iterations);
    });
}

} // namespace Tesk
