// Ellipse gauges on the screen: drawn, hit and dragged.
#include "gauge/EdgeEllipse.h"

#include "foundation/Angles.h"
#include "foundation/Entry.h"
#include "foundation/Graph.h"
#include "foundation/Handles.h"
#include "gauge/edge/CurveStroke.h"
#include "gauge/edge/GaugeMarks.h"
#include "gauge/edge/WorldMap.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Tesk {

using namespace edges;

namespace {

constexpr DraggingHandles pointHandles[] = {FromHandle, MiddleHandle0, MiddleHandle1, MiddleHandle2, ToHandle};
constexpr double longestAxis = 2048;

} // namespace

void EdgeEllipse::DrawOutline() const
{
    const Reference reference = Ref();
    const XY center = InWindow(reference.center);
    const double angle = std::atan2(reference.sine, reference.cosine), half = ProbeLength / 2;
    for (const double beyond : {-half, half})
        if (reference.first + beyond > 0 && reference.second + beyond > 0)
            Graph::EllipseArcRadians(center.X, center.Y, reference.first + beyond, reference.second + beyond, angle,
                                     Min(reference.start, reference.end), Max(reference.start, reference.end));
    for (const double end : {reference.start, reference.end})
        DrawStroke(InWindow(reference.At(end, -half)), InWindow(reference.At(end, half)));
    constexpr double beforeEnd = 0.01;
    const XY tip = InWindow(reference.At(reference.end));
    DrawArrowHead(
        tip, DirectionOf(InWindow(reference.At(reference.end + beforeEnd * (reference.start - reference.end))), tip),
        half);
}

void EdgeEllipse::DrawHandles() const
{
    for (const XY point : Points())
        DrawHandle(InWindow(point), false);
    for (const int direction : {-1, 1})
        DrawHandle(InWindow(LengthMark(Ref(), direction)), false);
}

/// The whole of it, or what corresponds to the reference.
void EdgeEllipse::DrawFitted(const WorldMap& world) const
{
    const double angle = ToRadians(FittedAngle);
    const Reference fitted{FittedCenter, FittedFirstAxis, FittedSecondAxis, std::cos(angle), std::sin(angle), 0, 0};
    double from = 0, to = 2 * std::numbers::pi;
    if (!Closed) {
        const Reference reference = Ref();
        XY start = reference.At(reference.start);
        if (!world.Apply(start)) return;
        from = fitted.ParameterOf(start);
        to = from + reference.end - reference.start;
    }
    DrawCurve(
        [&](double parameter, XY& point) {
            point = fitted.At(parameter);
            if (!world.Reverse(point)) return false;
            point = InWindow(point);
            return true;
        },
        from, to);
}

/// By which the length of the probes is dragged: the ends of the one at two fifths before the end.
XY EdgeEllipse::LengthMark(const Reference& reference, int direction) const
{
    return reference.At(0.4 * reference.start + 0.6 * reference.end, direction * ProbeLength / 2);
}

DraggingHandles EdgeEllipse::HitHandle(int X, int Y)
{
    const Entry entry("Tesk::EdgeEllipse::HitHandle");
    const ScreenPointer pointer = PointerAt(X, Y);
    const Reference reference = Ref();
    const auto points = Points();
    const int index = pointer.FirstOn(5, [&](int i) { return points[static_cast<std::size_t>(i)]; });
    if (index >= 0) return SetHandle(pointHandles[index]);
    if (pointer.IsOn(LengthMark(reference, -1)) || pointer.IsOn(LengthMark(reference, 1)))
        return SetHandle(LengthHandle);
    if (!(std::abs(reference.RadiusOf(pointer.Point()) - reference.first) <= ProbeLength / 2))
        return SetHandle(NoHandle);
    grab_.Take(pointer.Pixel(), reference.center);
    return SetHandle(AllHandle);
}

int EdgeEllipse::HandleOctant() const
{
    const Entry entry("Tesk::EdgeEllipse::HandleOctant");
    const Reference reference = Ref();
    const auto* const held = std::find(std::begin(pointHandles), std::end(pointHandles), Handle);
    const XY at = held != std::end(pointHandles) ? Points()[static_cast<std::size_t>(held - pointHandles)]
                                                 : LengthMark(reference, 1);
    const int octant = Octant(at.X - reference.center.X, at.Y - reference.center.Y);
    return Handle == LengthHandle ? (octant + 2) % 8 : octant;
}

void EdgeEllipse::Drag(int X, int Y)
{
    const Entry entry("Tesk::EdgeEllipse::Drag");
    Refresh();
    const XY pixel = PointerAt(X, Y).Pixel();
    if (Handle == LengthHandle) {
        const Reference reference = Ref();
        const double length = 2 * std::abs(reference.RadiusOf(pixel) - reference.first);
        if (std::isfinite(length)) ProbeLength = Max(length, 1.0);
    } else if (Handle == AllHandle) {
        const XY by = grab_.Moved(pixel) - Center;
        Center = Center + by;
        for (XY& point : RefPoints)
            point = point + by;
        known_ = RefPoints;
    }
    const auto* const held = std::find(std::begin(pointHandles), std::end(pointHandles), Handle);
    if (held == std::end(pointHandles)) return;
    auto moved = RefPoints;
    moved[static_cast<std::size_t>(held - pointHandles)] = pixel;
    Reference reference;
    if (!RefThrough(moved, reference) || !(reference.first < longestAxis)) return;
    RefPoints = moved;
    RefState = 1;
    Refresh();
}

} // namespace Tesk
