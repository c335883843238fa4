// Rectangle gauges on the screen: drawn, hit and dragged.
#include "gauge/EdgeRectangle.h"

#include "foundation/Angles.h"
#include "foundation/Entry.h"
#include "foundation/Graph.h"
#include "foundation/Handles.h"
#include "gauge/edge/GaugeMarks.h"
#include "gauge/edge/WorldMap.h"

#include <algorithm>
#include <cmath>

namespace Tesk {

using namespace edges;

void EdgeRectangle::DrawOutline() const
{
    for (int side = 0; side < 4; side += FourSides ? 1 : 2) {
        const XY from = InWindow(Rectangle.Corner(side)), to = InWindow(Rectangle.Corner(side + 1));
        DrawBox(from, to, ProbeLength, 0);
        DrawArrow(from, to, ProbeLength / 2);
    }
}

void EdgeRectangle::DrawHandles() const
{
    for (const DraggingHandles handle : Quad::Handles)
        DrawHandle(InWindow(Rectangle.PlaceOf(handle)), false);
    for (const int direction : {-1, 1})
        DrawHandle(InWindow(LengthMark(direction)), false);
}

void EdgeRectangle::DrawFitted(const WorldMap& world) const
{
    for (std::size_t side = 0; side < 4; side += FourSides ? 1 : 2) {
        XY from = FittedCorners[side], to = FittedCorners[(side + 1) % 4];
        if (world.Reverse(from) && world.Reverse(to)) DrawStroke(InWindow(from), InWindow(to));
    }
}

/// By which the length of the probes is dragged: the ends of the one in the middle of the first side.
XY EdgeRectangle::LengthMark(int direction) const
{
    return FromFrame({Rectangle.Width / 2, direction * ProbeLength / 2}, Rectangle.Corner(0), Rectangle.Angle);
}

DraggingHandles EdgeRectangle::HitHandle(int X, int Y)
{
    const Entry entry("Tesk::EdgeRectangle::HitHandle");
    const ScreenPointer pointer = PointerAt(X, Y);
    const DraggingHandles hit = Rectangle.Hit(pointer);
    const bool isBody = hit == AllHandle || hit == NoHandle;
    return SetHandle(isBody && (pointer.IsOn(LengthMark(-1)) || pointer.IsOn(LengthMark(1))) ? LengthHandle : hit);
}

int EdgeRectangle::HandleOctant() const
{
    const Entry entry("Tesk::EdgeRectangle::HandleOctant");
    const XY first = Rectangle.Corner(0), second = Rectangle.Corner(1);
    const int along = Octant(second.X - first.X, second.Y - first.Y);
    if (Handle == LengthHandle) return (along + 2) % 8;
    if (Handle == AllHandle || Handle == NoHandle) return along;
    const XY middle = Rectangle.Middle(), at = Rectangle.PlaceOf(Handle);
    return Octant(at.X - middle.X, at.Y - middle.Y);
}

void EdgeRectangle::Drag(int X, int Y)
{
    const Entry entry("Tesk::EdgeRectangle::Drag");
    const ScreenPointer pointer = PointerAt(X, Y);
    if (Handle != LengthHandle) {
        Rectangle.DragTo(Handle, pointer);
        AngleDegrees = ToDegrees(ReferenceAngle());
        return;
    }
    const XY at = ToFrame(pointer.Pixel(), Rectangle.Corner(0), Rectangle.Angle);
    const double nearest =
        std::min({std::abs(at.X), std::abs(at.X - Rectangle.Width), std::abs(at.Y), std::abs(at.Y - Rectangle.Height)});
    if (2 * nearest < Min(Rectangle.Width, Rectangle.Height)) ProbeLength = 2 * nearest;
}

} // namespace Tesk
