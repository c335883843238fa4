// Quads on the screen: drawn, hit and dragged.
#include "measure/Quad.h"

#include "foundation/Graph.h"
#include "foundation/Handles.h"

#include <cmath>
#include <numbers>

namespace Tesk {

namespace {

constexpr double pi = std::numbers::pi, turn = 2 * pi;
/// No drag makes a side shorter, in pixels.
constexpr double shortest = 1;
constexpr int markArms = 5;
Grab grab;

/// The sides that a handle moves.
struct Sides
{
    bool left, top, right, bottom;

    explicit Sides(DraggingHandles handle)
        : left(handle == NWHandle || handle == WHandle || handle == SWHandle),
          top(handle == NWHandle || handle == NHandle || handle == NEHandle),
          right(handle == NEHandle || handle == EHandle || handle == SEHandle),
          bottom(handle == SWHandle || handle == SHandle || handle == SEHandle)
    {}
    bool IsCorner() const { return (left || right) && (top || bottom); }
};

/// Moves one end of a stretch, or with `centered` both about its middle.
void MoveEnd(double& low, double& high, bool movesLow, double to, bool centered)
{
    const double middle = (low + high) / 2;
    if (centered) {
        const double half = Max(movesLow ? middle - to : to - middle, shortest / 2);
        low = middle - half;
        high = middle + half;
    } else if (movesLow) {
        low = Min(to, high - shortest);
    } else {
        high = Max(to, low + shortest);
    }
}

/// The angle that differs from another by whole turns and lies nearest to a third.
double Nearest(double angle, double to)
{
    return angle - turn * std::round((angle - to) / turn);
}

} // namespace

/// Where a handle stands, as shares of the way along the width and across the height.
XY Quad::Place(double along, double across) const
{
    if (Bent) return RingPoint(Width - across * Height, along);
    return FromFrame({along * Width, across * Height}, {X, Y}, Angle);
}

XY Quad::PlaceOf(DraggingHandles handle) const
{
    const Sides sides(handle);
    return Place(sides.left ? 0 : sides.right ? 1 : 0.5, sides.top ? 0 : sides.bottom ? 1 : 0.5);
}

void Quad::Draw(bool Handles, bool Anchors) const
{
    const double start = StartAngle();
    if (!Bent) {
        Graph::Polyline4(Corner(0), Corner(1), Corner(2), Corner(3), -1);
    } else {
        for (const double radius : {double(Width), Width - Height})
            Graph::EllipseArcRadians(X, Y, std::abs(radius), std::abs(radius), 0, Min(start, start + Bend),
                                     Max(start, start + Bend));
        if (std::abs(Bend) < turn)
            for (const int i : {0, 1})
                Graph::Line(Corner(i).X, Corner(i).Y, Corner(3 - i).X, Corner(3 - i).Y);
    }
    if (Anchors) {
        const XY middle = Middle();
        const double direction = Angle + Bend / 2, length = Height / 2;
        Graph::Cross(middle.X, middle.Y, markArms);
        Graph::Line(middle.X, middle.Y, middle.X + length * std::cos(direction),
                    middle.Y + length * std::sin(direction), 1);
    }
    if (Handles)
        for (const DraggingHandles handle : Quad::Handles)
            DrawHandle(PlaceOf(handle));
}

DraggingHandles Quad::HitHandle(int X, int Y) const
{
    Handle = Hit(ScreenPointer(X, Y));
    return Handle;
}

DraggingHandles Quad::Hit(const ScreenPointer& pointer) const
{
    for (const DraggingHandles handle : Handles)
        if (pointer.IsOn(PlaceOf(handle))) return handle;
    const XY corner(this->X, this->Y);
    bool inside = false;
    if (Bent) {
        inside = pointer.IsOnRing(corner, std::abs(Width - Height / 2), std::abs(Height), StartAngle(), Bend);
    } else {
        const XY at = ToFrame(pointer.Point(), corner, Angle);
        inside = at.X >= Min(0.0, double(Width)) && at.X <= Max(0.0, double(Width)) &&
                 at.Y >= Min(0.0, double(Height)) && at.Y <= Max(0.0, double(Height));
    }
    if (!inside) return NoHandle;
    grab.Take(Aligned ? pointer.Pixel() : pointer.Position(), corner);
    return AllHandle;
}

void Quad::Drag(int X, int Y)
{
    DragTo(Handle, ScreenPointer(X, Y));
}

void Quad::DragTo(DraggingHandles handle, const ScreenPointer& pointer)
{
    if (handle == AllHandle) {
        const XY corner = grab.Moved(Aligned ? pointer.Pixel() : pointer.Position());
        this->X = corner.X;
        this->Y = corner.Y;
    } else if (handle >= NHandle && handle <= NEHandle) {
        if (Bent)
            DragBent(handle, pointer.Point());
        else
            DragStraight(handle, Aligned ? pointer.Pixel() : pointer.Point());
    }
}

void Quad::DragStraight(DraggingHandles handle, XY to)
{
    const Sides sides(handle);
    const XY corner(X, Y), at = ToFrame(to, corner, Angle);
    const bool centered = Centered && !sides.IsCorner();
    double left = 0, top = 0, right = Width, bottom = Height;
    if (sides.left || sides.right) MoveEnd(left, right, sides.left, at.X, centered);
    if (sides.top || sides.bottom) MoveEnd(top, bottom, sides.top, at.Y, centered);
    const XY moved = FromFrame({left, top}, corner, Angle);
    X = moved.X;
    Y = moved.Y;
    Width = right - left;
    Height = bottom - top;
}

void Quad::DragBent(DraggingHandles handle, XY to)
{
    const Sides sides(handle);
    const bool centered = Centered && !sides.IsCorner();
    // The radii of a quad that was bent counterclockwise about its middle are negative.
    const double side = Width < 0 ? -1 : 1;
    double inner = Width - Height, outer = Width;
    if (sides.top || sides.bottom) MoveEnd(inner, outer, sides.bottom, side * std::hypot(to.X - X, to.Y - Y), centered);
    if (side > 0 && inner < 0) {
        inner = 0;
        outer = Max(outer, shortest);
    } else if (side < 0 && outer > 0) {
        outer = 0;
        inner = Min(inner, -shortest);
    }
    Width = outer;
    Height = outer - inner;
    if (!sides.left && !sides.right) return;
    // The sweep counted in the sense of the bend, from the start: `first` to `last`.
    const double sense = Bend < 0 ? -1 : 1, start = StartAngle(), seen = std::atan2(to.Y - Y, to.X - X);
    double first = 0, last = std::abs(Bend);
    const double at = Nearest(sense * (seen - start), sides.left ? first : last),
                 length = Max(shortest, std::abs(Width - Height / 2));
    double scaledFirst = first * length, scaledLast = last * length;
    MoveEnd(scaledFirst, scaledLast, sides.left, at * length, centered);
    first = scaledFirst / length;
    last = Min(scaledLast / length, first + turn);
    Bend = sense * (last - first);
    const double moved = start + sense * first + sense * pi / 2, rest = std::fmod(moved, turn);
    Angle = rest < 0 ? rest + turn : rest;
}

} // namespace Tesk
