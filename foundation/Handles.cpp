// What the mouse pointer is on, by distances on the screen, and how what it holds moves.
#include "foundation/Handles.h"

#include "foundation/Graph.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>

namespace Tesk {

namespace {

/// A position of the screen in image pixels, held to what a drag can reach.
double FromTarget(int v)
{
    constexpr double farthest = 1e9;
    const double position = Clamp(v / Graph::Zoom, -farthest, farthest);
    return position == position ? position : 0;
}

double Distance(int a, int b)
{
    return std::abs(static_cast<double>(a) - b);
}

/// Moves the near edge of an extent; the far one stays.
void DragNear(int& from, int& extent, int to)
{
    const int end = from + extent;
    from = Clamp(to, 0, end - 1);
    extent = end - from;
}

/// Moves the far edge; the near one stays.
void DragFar(int from, int& extent, int area, int to)
{
    extent = Clamp(to - from, 0, area - from - 1) + 1;
}

} // namespace

bool IsNear(int at, int line)
{
    return Distance(at, line) < handleTolerance;
}

bool IsNear(int at, int from, int to)
{
    return at > from - handleTolerance && at < to + handleTolerance;
}

XY ScreenPointer::Position() const
{
    return {FromTarget(x_) - origin_.X, FromTarget(y_) - origin_.Y};
}

XY ScreenPointer::Pixel() const
{
    return {std::trunc(FromTarget(x_)) - origin_.X, std::trunc(FromTarget(y_)) - origin_.Y};
}

XY ScreenPointer::Point() const
{
    // Half a pixel of the screen on, and half a pixel of the image back.
    const auto point = [](int v) { return FromTarget(v) + (FromTarget(1) - 1) / 2; };
    return {point(x_) - origin_.X, point(y_) - origin_.Y};
}

bool ScreenPointer::IsOn(const XY& point, double reach) const
{
    return Distance(Graph::ToTarget(point.X + origin_.X), x_) < reach &&
           Distance(Graph::ToTarget(point.Y + origin_.Y), y_) < reach;
}

bool ScreenPointer::IsOnMark(const XY& point) const
{
    return IsNear(x_, Graph::ToTargetMark(point.X + origin_.X)) && IsNear(y_, Graph::ToTargetMark(point.Y + origin_.Y));
}

ScreenPointer::Projection ScreenPointer::Project(const XY& from, const XY& to) const
{
    const double x = Graph::ToTarget(from.X + origin_.X), y = Graph::ToTarget(from.Y + origin_.Y);
    const double dx = Graph::ToTarget(to.X + origin_.X) - x, dy = Graph::ToTarget(to.Y + origin_.Y) - y;
    const double squared = dx * dx + dy * dy;
    const double along = squared > 0 ? ((x_ - x) * dx + (y_ - y) * dy) / squared : 0, held = Clamp(along, 0.0, 1.0);
    return {along, std::hypot(x_ - x - held * dx, y_ - y - held * dy)};
}

bool ScreenPointer::IsOnBody(const XY& from, const XY& to, double breadth) const
{
    const Projection place = Project(from, to);
    return place.Along >= 0 && place.Along <= 1 && place.Distance < Max(handleTolerance, breadth * Graph::Zoom / 2);
}

bool ScreenPointer::IsNearSegment(const XY& from, const XY& to, double breadth) const
{
    return Project(from, to).Distance < Max(handleTolerance, breadth * Graph::Zoom / 2);
}

bool ScreenPointer::IsOnRing(const XY& center, double radius, double breadth) const
{
    const XY at = Point();
    return std::abs(std::hypot(at.X - center.X, at.Y - center.Y) - radius) <= breadth / 2;
}

bool ScreenPointer::IsOnRing(const XY& center, double radius, double breadth, double fromRadians, double sweep) const
{
    constexpr double turn = 2 * std::numbers::pi;
    if (!IsOnRing(center, radius, breadth)) return false;
    const XY at = Point();
    const double angle = std::atan2(at.Y - center.Y, at.X - center.X), behind = angle - fromRadians;
    const double onward = std::fmod(std::fmod(sweep < 0 ? -behind : behind, turn) + turn, turn);
    return onward <= std::abs(sweep);
}

std::int64_t ScreenPointer::SquaredDistance(const XY& point) const
{
    // Farther than that all is equally far, so that no square leaves the range.
    const auto away = [](int a, int b) { return Min(Abs(std::int64_t{a} - b), std::int64_t{1} << 30); };
    return Sqr(away(x_, Graph::ToTarget(point.X + origin_.X))) + Sqr(away(y_, Graph::ToTarget(point.Y + origin_.Y)));
}

void Grab::Take(const XY& pointer, const XY& point)
{
    offset_ = XY(point.X - pointer.X, point.Y - pointer.Y);
}

XY Grab::Moved(const XY& pointer) const
{
    return {pointer.X + offset_.X, pointer.Y + offset_.Y};
}

XY ToFrame(const XY& point, const XY& corner, double radians)
{
    const double dx = point.X - corner.X, dy = point.Y - corner.Y, c = std::cos(radians), s = std::sin(radians);
    return {dx * c + dy * s, dy * c - dx * s};
}

XY FromFrame(const XY& point, const XY& corner, double radians)
{
    const double c = std::cos(radians), s = std::sin(radians);
    return {corner.X + point.X * c - point.Y * s, corner.Y + point.X * s + point.Y * c};
}

void DrawHandle(const XY& point, bool round)
{
    const GraphSettings kept;
    Graph::FillColor = White;
    Graph::Marker(point.X, point.Y, round, handleRadius);
}

void DrawBox(const SourceRectangle& box, bool handles, bool cross)
{
    if (!Graph::DrawTo()) return;
    const int left = Graph::ToTarget(box.X), right = Graph::ToTarget(box.X + box.Width);
    const int top = Graph::ToTarget(box.Y), bottom = Graph::ToTarget(box.Y + box.Height);
    const PredefinedColors line = Graph::LineColor, fill = Graph::FillColor;
    Graph::FillColor = NoColor;
    Graph::TargetRectangle(left, top, right, bottom, cross);
    if (handles) {
        Graph::FillColor = White;
        // Setting a colour goes through the next drawing call, which is a marker of the right size about each corner.
        const double zoom = Graph::Zoom;
        for (const auto& corner :
             {TargetPoint{right, bottom}, TargetPoint{left, bottom}, TargetPoint{right, top}, TargetPoint{left, top}})
            Graph::Marker(corner.X / zoom - 1 + 0.5 / zoom, corner.Y / zoom - 1 + 0.5 / zoom, true, handleRadius);
    }
    Graph::FillColor = fill;
    Graph::LineColor = line;
}

DraggingHandles HitBox(const SourceRectangle& box, int x, int y)
{
    const int left = Graph::ToTarget(box.X), top = Graph::ToTarget(box.Y);
    const auto far = [](std::int64_t near, int extent) {
        return static_cast<int>(Min<std::int64_t>(near + extent, MaxInt));
    };
    const int right = far(left, Graph::ToTarget(box.Width)), bottom = far(top, Graph::ToTarget(box.Height));
    const bool inX = left <= x && x <= right, inY = top <= y && y <= bottom;
    if (IsNear(x, left) && IsNear(y, top)) return NWHandle;
    if (IsNear(x, right) && IsNear(y, top)) return NEHandle;
    if (IsNear(x, left) && IsNear(y, bottom)) return SWHandle;
    if (IsNear(x, right) && IsNear(y, bottom)) return SEHandle;
    if (IsNear(y, top) && inX) return NHandle;
    if (IsNear(x, left) && inY) return WHandle;
    if (IsNear(x, right) && inY) return EHandle;
    if (IsNear(y, bottom) && inX) return SHandle;
    return inX && inY ? AllHandle : NoHandle;
}

SourceRectangle DragBox(SourceRectangle box, DraggingHandles handle, const XY& pixel, const Grab& grab, int areaWidth,
                        int areaHeight)
{
    const int x = static_cast<int>(pixel.X), y = static_cast<int>(pixel.Y);
    const auto isOneOf = [handle](DraggingHandles a, DraggingHandles b, DraggingHandles c) {
        return handle == a || handle == b || handle == c;
    };
    if (handle == AllHandle) {
        const XY moved = grab.Moved(pixel);
        box.X = static_cast<int>(Clamp<double>(moved.X, 0, areaWidth - box.Width));
        box.Y = static_cast<int>(Clamp<double>(moved.Y, 0, areaHeight - box.Height));
    }
    if (isOneOf(NWHandle, WHandle, SWHandle)) DragNear(box.X, box.Width, x);
    if (isOneOf(NEHandle, EHandle, SEHandle)) DragFar(box.X, box.Width, areaWidth, x);
    if (isOneOf(NWHandle, NHandle, NEHandle)) DragNear(box.Y, box.Height, y);
    if (isOneOf(SWHandle, SHandle, SEHandle)) DragFar(box.Y, box.Height, areaHeight, y);
    return box;
}

int Octant(double dx, double dy)
{
    // Whole pixels, and half of the square root of two in 65536ths.
    constexpr double farthest = 1e9;
    const auto whole = [](double v) { return v == v ? static_cast<std::int64_t>(Clamp(v, -farthest, farthest)) : 0; };
    const auto slanted = [](std::int64_t v) { return Abs(v) * 46341 >> 16; };
    const std::int64_t x = whole(dx), y = whole(dy);
    const std::int64_t reaches[] = {Abs(x), slanted(x + y), Abs(y), slanted(y - x)};
    const auto nearest = std::distance(std::begin(reaches), std::max_element(std::begin(reaches), std::end(reaches)));
    return static_cast<int>(nearest) + (y - x < 0 ? 4 : 0);
}

} // namespace Tesk
