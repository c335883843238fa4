// Probes on the screen: drawn, hit and dragged.
#include "gauge/EdgePoint.h"

#include "foundation/Entry.h"
#include "foundation/Graph.h"
#include "gauge/edge/GaugeMarks.h"
#include "image/Image.h"

namespace Tesk {

using namespace edges;

void EdgePoint::SetWindow(const Image& Mother)
{
    SetWindow(Mother.X, Mother.Y, Mother.Width, Mother.Height);
}

void EdgePoint::SetWindow(const Limits& Window)
{
    SetWindow(Window.X, Window.Y, Window.Width, Window.Height);
}

void EdgePoint::SetWindow(int X, int Y, int Width, int Height)
{
    const Entry entry("Tesk::EdgePoint::SetWindow");
    Window = {X, Y, Width, Height};
}

void EdgePoint::DrawProbe(bool points) const
{
    constexpr double outside = 6; // pixels of the screen by which strokes stand out of the box
    const XY beg = InWindow(Beg), end = InWindow(End), u = DirectionOf(beg, end);
    DrawBox(beg, end, Breadth, Smoothing / 2.0);
    DrawArrow(beg, end, std::hypot(End.X - Beg.X, End.Y - Beg.Y) / 2);
    if (!points) return;
    const double reach = Breadth / 2.0 + outside / Graph::Zoom;
    for (const Edge& edge : Edges)
        DrawStroke(Beside(beg, u, edge.Position, -reach), Beside(beg, u, edge.Position, reach));
}

void EdgePoint::Draw(bool Handles, bool Points) const
{
    const Entry entry("Tesk::EdgePoint::Draw");
    DrawProbe(Points);
    if (!Handles) return;
    DrawHandle(InWindow(Beg));
    DrawHandle(InWindow(End));
}

ScreenPointer EdgePoint::PointerAt(int x, int y) const
{
    return {x, y, XY(Window.X, Window.Y)};
}

DraggingHandles EdgePoint::HitHandle(int X, int Y)
{
    const Entry entry("Tesk::EdgePoint::HitHandle");
    const ScreenPointer pointer = PointerAt(X, Y);
    Handle = HitSegment(pointer, Beg, End, Breadth);
    return Handle;
}

/// The handles at the ends of a segment and of its body, of which a drag takes hold.
DraggingHandles EdgePoint::HitSegment(const ScreenPointer& pointer, XY from, XY to, double breadth)
{
    if (pointer.IsOn(from)) return FromHandle;
    if (pointer.IsOn(to)) return ToHandle;
    if (!pointer.IsOnBody(from, to, breadth)) return NoHandle;
    grabBeg_.Take(pointer.Pixel(), from);
    grabEnd_.Take(pointer.Pixel(), to);
    return AllHandle;
}

int EdgePoint::HandleOctant() const
{
    const Entry entry("Tesk::EdgePoint::HandleOctant");
    return Octant(End.X - Beg.X, End.Y - Beg.Y);
}

void EdgePoint::Drag(int X, int Y)
{
    const Entry entry("Tesk::EdgePoint::Drag");
    DragSegment(PointerAt(X, Y), Beg, End);
}

void EdgePoint::DragSegment(const ScreenPointer& pointer, XY& from, XY& to) const
{
    const XY pixel = pointer.Pixel();
    if (Handle == FromHandle) {
        from = pixel;
    } else if (Handle == ToHandle) {
        to = pixel;
    } else if (Handle == AllHandle) {
        from = grabBeg_.Moved(pixel);
        to = grabEnd_.Moved(pixel);
    }
}

} // namespace Tesk
