// Arc gauges on the screen: drawn, hit and dragged.
#include "gauge/EdgeArc.h"

#include "foundation/Entry.h"
#include "foundation/Graph.h"
#include "gauge/edge/CurveStroke.h"
#include "gauge/edge/GaugeMarks.h"
#include "gauge/edge/ProbeRow.h"
#include "gauge/edge/WorldMap.h"

#include <numbers>

namespace Tesk {

using namespace edges;

namespace {

constexpr double turn = 2 * std::numbers::pi;

void DrawRing(XY center, double radius, double from, double to)
{
    if (radius > 0) Graph::EllipseArcRadians(center.X, center.Y, radius, radius, 0, from, to);
}

/// The marks by which the length of the probes is dragged.
struct LengthMarks
{
    XY inner, outer;

    LengthMarks(XY center, XY middle, double probeLength)
    {
        const XY outwards = DirectionOf(center, middle);
        inner = Beside(middle, outwards, -probeLength / 2, 0);
        outer = Beside(middle, outwards, probeLength / 2, 0);
    }
};

} // namespace

void EdgeArc::DrawOutline() const
{
    const XY center = InWindow(Center);
    const double start = StartAngle, end = SweepEnd(), half = ProbeLength / 2;
    DrawRing(center, Radius - half, start, end);
    DrawRing(center, Radius + half, start, end);
    for (const double angle : {start, end}) {
        DrawArrow(InWindow(OnArc(angle, Radius - half)), InWindow(OnArc(angle, Radius + half)), half);
        if (Closed) break;
    }
}

void EdgeArc::DrawHandles() const
{
    const LengthMarks marks(Center, ArcMid, ProbeLength);
    for (const XY mark : {ArcBeg, ArcMid, ArcEnd, marks.inner, marks.outer})
        DrawHandle(InWindow(mark), false);
}

/// A calibration may make another curve of the circle.
void EdgeArc::DrawFitted(const WorldMap& world) const
{
    const double start = Closed ? 0 : double(StartAngle), end = Closed ? turn : double(EndAngle);
    XY center = FittedCenter;
    if (!world.HasCalibrator()) {
        if (world.Reverse(center)) DrawRing(InWindow(center), FittedRadius / world.Scale(), start, end);
        return;
    }
    // The part of the circle of an open gauge is seen in the picture.
    double from = 0, sweep = turn;
    if (!Closed) {
        XY points[] = {ArcBeg, ArcMid, ArcEnd};
        double angles[3];
        for (int i = 0; i < 3; i++) {
            if (!world.Apply(points[i])) return;
            angles[i] = std::atan2(points[i].Y - center.Y, points[i].X - center.X);
        }
        const auto onward = [](double angle) { return angle - turn * std::floor(angle / turn); };
        from = angles[0];
        sweep = onward(angles[2] - from);
        if (onward(angles[1] - from) > sweep) sweep -= turn;
    }
    DrawCurve(
        [&](double angle, XY& place) {
            place = center + Radially(FittedRadius, angle);
            if (!world.Reverse(place)) return false;
            place = InWindow(place);
            return true;
        },
        from, from + sweep);
}

DraggingHandles EdgeArc::HitHandle(int X, int Y)
{
    const Entry entry("Tesk::EdgeArc::HitHandle");
    const ScreenPointer pointer = PointerAt(X, Y);
    if (pointer.IsOn(ArcBeg)) return SetHandle(FromHandle);
    if (pointer.IsOn(ArcMid)) return SetHandle(MiddleHandle);
    if (pointer.IsOn(ArcEnd)) return SetHandle(ToHandle);
    const LengthMarks marks(Center, ArcMid, ProbeLength);
    if (pointer.IsOn(marks.inner) || pointer.IsOn(marks.outer)) return SetHandle(LengthHandle);
    const bool onRing = Closed ? pointer.IsOnRing(Center, Radius, ProbeLength)
                               : pointer.IsOnRing(Center, Radius, ProbeLength, StartAngle, EndAngle - StartAngle);
    if (!onRing) return SetHandle(NoHandle);
    grab_.Take(pointer.Pixel(), ArcBeg);
    return SetHandle(AllHandle);
}

XY EdgeArc::PointAtHand() const
{
    return Handle == FromHandle ? ArcBeg : Handle == ToHandle ? ArcEnd : ArcMid;
}

int EdgeArc::HandleOctant() const
{
    const Entry entry("Tesk::EdgeArc::HandleOctant");
    const XY center = Center, point = PointAtHand();
    return (Octant(point.X - center.X, point.Y - center.Y) + (Handle == LengthHandle ? 2 : 0)) % 8;
}

void EdgeArc::Drag(int X, int Y)
{
    const Entry entry("Tesk::EdgeArc::Drag");
    const XY pixel = PointerAt(X, Y).Pixel(), center = Center;
    if (Handle == FromHandle) {
        ArcBeg = pixel;
    } else if (Handle == MiddleHandle) {
        ArcMid = pixel;
    } else if (Handle == ToHandle) {
        ArcEnd = pixel;
    } else if (Handle == AllHandle) {
        const XY by = grab_.Moved(pixel) - ArcBeg;
        for (XY* point : {&ArcBeg, &ArcMid, &ArcEnd})
            *point = *point + by;
    } else if (Handle == LengthHandle) {
        const double distance = std::hypot(pixel.X - center.X, pixel.Y - center.Y);
        ProbeLength = std::trunc(2 * Min(double(Radius), std::abs(distance - Radius)));
    } else {
        return;
    }
    Refresh();
    if (!Closed) return;
    StartAngle = 0;
    EndAngle = turn;
    ProbeLength = std::trunc(ProbeLength);
}

} // namespace Tesk
