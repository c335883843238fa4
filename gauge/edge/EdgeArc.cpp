// The arc gauge: its probes, the circle through their edges or around them, and the edges that cross the arc.
#include "gauge/EdgeArc.h"

#include "foundation/Angles.h"
#include "gauge/edge/ProbeRow.h"
#include "gauge/edge/RobustFit.h"
#include "gauge/edge/WorldMap.h"
#include "image/geometry/Warps.h"
#include "measure/fit/PointFit.h"
#include "measure/fit/PointShape.h"

#include <cmath>
#include <numbers>
#include <utility>

namespace Tesk {

using namespace edges;

namespace {

constexpr std::size_t fewestPoints = 3;
constexpr double turn = 2 * std::numbers::pi;
/// Of the unrolled ring.
constexpr double mostPixels = 1 << 27;

/// For the robust scheme.
struct CircleModel
{
    static constexpr int leastOrder = 3;
    std::span<const XY> points;
    FitScratch& scratch;
    fits::Circle circle;

    template <typename Keep>
    bool Fit(Keep keep)
    {
        return fits::FitCircleKasa(Gather(points, keep, scratch), circle);
    }
    double Residual(std::size_t i) const
    {
        const XY c = circle.Center;
        return std::abs(std::hypot(points[i].X - c.X, points[i].Y - c.Y) - circle.Radius);
    }
};

double AngleOf(XY center, XY p)
{
    return std::atan2(p.Y - center.Y, p.X - center.X);
}

/// Half a probe that points outwards.
XY HalfRadially(double angle, double probeLength, bool oblique)
{
    const double half = probeLength / 2, c = std::cos(angle), s = std::sin(angle);
    if (oblique) return {half * c, half * s};
    return std::abs(c) >= std::abs(s) ? XY(std::copysign(half, c), 0) : XY(0, std::copysign(half, s));
}

} // namespace

void EdgeArc::Locate(XY Center, double Radius, double ProbeLength)
{
    const Entry entry("Tesk::EdgeArc::Locate");
    PlaceCircle(Center, Radius, ProbeLength);
}

void EdgeArc::Locate(XY Center, double Radius, double StartAngle, double EndAngle, double ProbeLength)
{
    const Entry entry("Tesk::EdgeArc::Locate");
    PlaceArc(Center, Radius, ToRadians(StartAngle), ToRadians(EndAngle), ProbeLength);
}

void EdgeArc::PlaceCircle(XY center, double radius, double probeLength)
{
    const double aside = std::numbers::sqrt3 / 2 * radius;
    Closed = true;
    ArcBeg = {center.X + aside, center.Y - radius / 2};
    ArcMid = {center.X, center.Y + radius};
    ArcEnd = {center.X - aside, center.Y - radius / 2};
    ProbeLength = std::trunc(probeLength);
    Take(center, radius, -turn / 12, turn * 7 / 12);
    Refresh();
}

void EdgeArc::PlaceArc(XY center, double radius, double startRadians, double endRadians, double probeLength)
{
    Closed = false;
    ArcBeg = center + Radially(radius, startRadians);
    ArcMid = center + Radially(radius, (startRadians + endRadians) / 2);
    ArcEnd = center + Radially(radius, endRadians);
    ProbeLength = probeLength;
    Take(center, radius, Min(startRadians, endRadians), Max(startRadians, endRadians));
    Refresh();
}

/// For three points that do not tell it, as those of a full turn.
void EdgeArc::Take(XY center, double radius, double startRadians, double endRadians)
{
    for (const double v : {center.X, center.Y, radius, startRadians, endRadians})
        if (!std::isfinite(v)) return;
    Center = center;
    Radius = std::abs(radius);
    StartAngle = startRadians;
    EndAngle = endRadians;
}

/// Works out what follows from the three points; false, and that as it was, if they lie on a line.
bool EdgeArc::Refresh()
{
    fits::Circle circle;
    if (!fits::CircleThrough(ArcBeg, ArcMid, ArcEnd, circle)) return false;
    Center = circle.Center;
    Radius = circle.Radius;
    double start = AngleOf(circle.Center, ArcBeg), end = AngleOf(circle.Center, ArcEnd);
    const double bend = (ArcBeg.X - ArcMid.X) * (ArcMid.Y - ArcEnd.Y) - (ArcBeg.Y - ArcMid.Y) * (ArcMid.X - ArcEnd.X);
    if (!(bend > 0)) std::swap(start, end);
    StartAngle = start;
    EndAngle = end < start ? end + turn : end;
    return true;
}

double EdgeArc::SweepEnd() const
{
    return Closed ? StartAngle + turn : double(EndAngle);
}

XY EdgeArc::OnArc(double radians, double radius) const
{
    return Center + Radially(radius, radians);
}

bool EdgeArc::Measure(const Image& src, int edgeIndex, const WorldMap& world)
{
    const Entry entry("Tesk::EdgeArc::_Detect");
    Refresh();
    const double end = SweepEnd(), length = (end - StartAngle) * Radius, part = Clearance / length;
    const int samples = SamplesOver(length);
    if (Refuses(entry, src, samples)) return false;
    Restart();
    const double first = (1 - part) * end + part * StartAngle, last = (1 - part) * StartAngle + part * end;
    const bool ran = RunProbes(src, edgeIndex, [&](int i) {
        const double angle = Spaced(first, last, i, samples);
        PlaceProbe(OnArc(angle, Radius), HalfRadially(angle, ProbeLength, Oblique));
    });
    if (!ran || SamplePoints.size() < fewestPoints) return false;
    Transform(world);
    if (SamplePoints.size() < fewestPoints) return false;

    XY center;
    double radius = 0;
    bool fitted = false;
    entry.Guards(images::noWorkingMemory, [&] {
        if (Fitting == FitOver || world.HasCalibrator() || (Fitting != FitBefore && Fitting != FitAfter)) {
            fitted = FitOverPoints(center, radius);
        } else {
            const shapes::Circle around = shapes::SmallestCircle(SamplePoints);
            center = around.Center;
            radius = around.Radius;
            fitted = std::isfinite(radius);
        }
    });
    if (!fitted) return false;
    FittedCenter = center;
    FittedRadius = radius;
    SetFitState(1);
    return true;
}

bool EdgeArc::FitOverPoints(XY& center, double& radius)
{
    CircleModel model{SamplePoints, scratch_, {}};
    FitQuality quality;
    if (!FitRobust(SamplePoints, scratch_, model, quality)) return false;
    SetQuality(quality.kept, quality.deviation, quality.robust);
    center = model.circle.Center;
    radius = model.circle.Radius;
    return true;
}

void EdgeArc::DetectAlong(const Image& Src)
{
    const Entry entry("Tesk::EdgeArc::DetectAlong");
    entry.Refuses(Along(Src));
}

/// Unrolls the ring and runs one probe along its middle, as broad as the ring.
int EdgeArc::Along(const Image& src)
{
    if (const int code = images::CheckType(src, {Gray})) return code;
    Refresh();
    const double sweep = SweepEnd() - StartAngle, width = std::trunc(std::abs(sweep) * Radius + 0.5),
                 height = std::trunc(ProbeLength + 0.5);
    if (!std::isfinite(width) || !std::isfinite(height))
        return Status::Format(OutOfRange, L"The ring is not finite or leads too far from the source image");
    if (width > mostPixels || height > mostPixels || width * height > mostPixels)
        return Status::Format(CannotAllocate, images::noInternalBuffer);
    Image ring;
    if (width >= 1 && height >= 1) {
        const warps::Ring place{Center, ToDegrees(StartAngle), ToDegrees(StartAngle + sweep), Radius - ProbeLength / 2,
                                Radius + ProbeLength / 2};
        if (const int code = warps::SampleRing(place, src, ring, static_cast<std::int64_t>(width),
                                               static_cast<std::int64_t>(height), true))
            return code;
    }
    Restart();
    From = {0, ProbeLength / 2};
    To = {width >= 1 && height >= 1 ? width : 0, ProbeLength / 2};
    Breadth = static_cast<int>(ProbeLength);
    if (const int code = Probe(ring)) return code;
    Replace([&](Edge& edge) {
        const double angle = StartAngle + sweep * edge.X / (width - 1);
        const XY place = OnArc(angle, Radius);
        edge.Position = ToDegrees(angle);
        edge.X = place.X;
        edge.Y = place.Y;
        return std::isfinite(angle);
    });
    SetFitState(2);
    return NoError;
}

void EdgeArc::Realign()
{
    const Entry entry("Tesk::EdgeArc::Realign");
    if (FitState != 1) return;
    // A drag of a closed gauge leaves angles of a full turn, at which no three points stand.
    Refresh();
    const double scale = WorldMap().Scale(), radius = FittedRadius / scale, middle = AngleOf(Center, ArcMid);
    XY center = FittedCenter;
    if (!WorldMap().Reverse(center) || !std::isfinite(radius)) return;
    const double start = StartAngle, end = EndAngle;
    ArcBeg = center + Radially(radius, start);
    ArcMid = center + Radially(radius, middle);
    ArcEnd = center + Radially(radius, end);
    Take(center, radius, start, end);
    Refresh();
}

} // namespace Tesk
