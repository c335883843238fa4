// Line gauges on the screen: drawn, hit and dragged.
#include "gauge/EdgeLine.h"

#include "foundation/Entry.h"
#include "foundation/Graph.h"
#include "gauge/edge/GaugeMarks.h"
#include "gauge/edge/WorldMap.h"

namespace Tesk {

using namespace edges;

namespace {

/// The marks by which the length of the probes is dragged.
struct SideMarks
{
    XY first, second;

    SideMarks(XY beg, XY end, double probeLength)
    {
        const XY middle((beg.X + end.X) / 2, (beg.Y + end.Y) / 2), u = DirectionOf(beg, end);
        first = Beside(middle, u, 0, -probeLength / 2);
        second = Beside(middle, u, 0, probeLength / 2);
    }
};

} // namespace

void EdgeLine::DrawOutline() const
{
    const XY beg = InWindow(RefBeg), end = InWindow(RefEnd);
    DrawBox(beg, end, ProbeLength, 0);
    DrawArrow(beg, end, ProbeLength / 2);
}

void EdgeLine::DrawHandles() const
{
    const XY beg = InWindow(RefBeg), end = InWindow(RefEnd);
    const SideMarks marks(beg, end, ProbeLength);
    for (const XY mark : {beg, end, marks.first, marks.second})
        DrawHandle(mark, false);
}

/// Between the perpendiculars at the ends of the segment.
void EdgeLine::DrawFitted(const WorldMap& world) const
{
    XY from = FittedBeg, to = FittedEnd;
    if (!world.Reverse(from) || !world.Reverse(to)) return;
    const XY u = DirectionOf(RefBeg, RefEnd), v = DirectionOf(from, to);
    const double slant = u.X * v.X + u.Y * v.Y;
    const auto across = [&](XY end) {
        const double along = ((end.X - from.X) * u.X + (end.Y - from.Y) * u.Y) / slant;
        return InWindow(Beside(from, v, along, 0));
    };
    constexpr double steepest = 1e-3;
    if (std::abs(slant) > steepest)
        DrawStroke(across(RefBeg), across(RefEnd));
    else
        DrawStroke(InWindow(from), InWindow(to));
}

DraggingHandles EdgeLine::HitHandle(int X, int Y)
{
    const Entry entry("Tesk::EdgeLine::HitHandle");
    const ScreenPointer pointer = PointerAt(X, Y);
    const DraggingHandles hit = HitSegment(pointer, RefBeg, RefEnd, ProbeLength);
    const SideMarks marks(RefBeg, RefEnd, ProbeLength);
    const bool isEnd = hit == FromHandle || hit == ToHandle;
    return SetHandle(!isEnd && (pointer.IsOn(marks.first) || pointer.IsOn(marks.second)) ? LengthHandle : hit);
}

int EdgeLine::HandleOctant() const
{
    const Entry entry("Tesk::EdgeLine::HandleOctant");
    return (Octant(RefEnd.X - RefBeg.X, RefEnd.Y - RefBeg.Y) + (Handle == LengthHandle ? 2 : 0)) % 8;
}

void EdgeLine::Drag(int X, int Y)
{
    const Entry entry("Tesk::EdgeLine::Drag");
    const ScreenPointer pointer = PointerAt(X, Y);
    if (Handle != LengthHandle) {
        DragSegment(pointer, RefBeg, RefEnd);
        return;
    }
    const XY pixel = pointer.Pixel(), u = DirectionOf(RefBeg, RefEnd);
    const double distance = std::abs((pixel.Y - RefBeg.Y) * u.X - (pixel.X - RefBeg.X) * u.Y);
    if (std::isfinite(distance)) ProbeLength = std::trunc(2 * distance);
}

} // namespace Tesk
