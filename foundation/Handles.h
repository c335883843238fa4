// Handles on the screen: what the mouse pointer is on, and how what it holds moves with it.
#pragma once

#include "foundation/Records.h"

#include <cstdint>

namespace Tesk {

struct SourceRectangle;

/// A pointer nearer than this many pixels of the screen to a mark, on each coordinate, or to a line is on it.
inline constexpr double handleTolerance = 6.0;
/// The marks that can be dragged are drawn this many pixels of the screen to each side.
inline constexpr int handleRadius = 5;

/// Whether a coordinate of the screen is on a line across it.
bool IsNear(int at, int line);
/// Whether a coordinate of the screen is between two others, or near them.
bool IsNear(int at, int from, int to);

/// The pointer: a pixel of the screen under `Graph::Zoom`. Points are asked for in image pixels from an origin, which
/// is the corner of the window for all that is placed in one.
///
///     const ScreenPointer pointer(X, Y, XY(Window.X, Window.Y));
///     Handle = pointer.IsOn(Beg)                      ? FromHandle
///              : pointer.IsOn(End)                    ? ToHandle
///              : pointer.IsOnBody(Beg, End, Breadth) ? AllHandle : NoHandle;
///     if (Handle == AllHandle) grab.Take(pointer.Pixel(), Beg);
class ScreenPointer
{
public:
    ScreenPointer(int x, int y, const XY& origin = XY(0, 0)) : x_(x), y_(y), origin_(origin) {}

    /// The pointer's pixel by the zoom, as it is; what lies far is held to a thousand million.
    XY Position() const;
    /// The pixel of the image there, with the fraction cut before the origin is taken off: where a drag leads to.
    XY Pixel() const;
    /// The point to which strokes lead that end in the middle of the pointer's pixel.
    XY Point() const;

    /// On a point that strokes lead to. A `reach` other than the tolerance is in pixels of the screen.
    bool IsOn(const XY& point, double reach = handleTolerance) const;
    /// On a mark that is centred on a pixel (`Graph::Marker`).
    bool IsOnMark(const XY& point) const;
    /// On what extends from one point to another, `breadth` image pixels wide: beside the segment, not before or
    /// behind.
    bool IsOnBody(const XY& from, const XY& to, double breadth) const;
    /// The same with round ends.
    bool IsNearSegment(const XY& from, const XY& to, double breadth) const;
    /// On a ring around a point, `breadth` image pixels wide.
    bool IsOnRing(const XY& center, double radius, double breadth) const;
    /// The same for the part of it that goes on from an angle by `sweep`, either way round.
    bool IsOnRing(const XY& center, double radius, double breadth, double fromRadians, double sweep) const;

    /// The index of the nearest on the screen of `count` points, `pointAt(i)` each; the first of equals, -1 for none.
    template <typename F>
    int Nearest(int count, F pointAt) const
    {
        int nearest = -1;
        for (std::int64_t i = 0, least = INT64_MAX; i < count; i++)
            if (const std::int64_t squared = SquaredDistance(pointAt(static_cast<int>(i))); squared < least) {
                least = squared;
                nearest = static_cast<int>(i);
            }
        return nearest;
    }

    /// The index of the first of them that the pointer is on; -1 for none.
    template <typename F>
    int FirstOn(int count, F pointAt) const
    {
        for (int i = 0; i < count; i++)
            if (IsOn(pointAt(i))) return i;
        return -1;
    }

private:
    /// How far along a segment the pointer stands, as a part of it, and how far from its nearest point.
    struct Projection
    {
        double Along, Distance;
    };
    Projection Project(const XY& from, const XY& to) const;
    std::int64_t SquaredDistance(const XY& point) const;

    int x_, y_;
    XY origin_;
};

/// Where the pointer took hold of a point, so that a drag moves the point by as much as the pointer. All positions are
/// of one kind, `Pixel` or `Position`. A thing of several points moves each by the difference that its first one makes.
class Grab
{
public:
    void Take(const XY& pointer, const XY& point);
    /// Where the point goes.
    XY Moved(const XY& pointer) const;

private:
    XY offset_{0, 0};
};

/// A point in the frame that stands at another and is turned by an angle from x to y, and back.
XY ToFrame(const XY& point, const XY& corner, double radians);
XY FromFrame(const XY& point, const XY& corner, double radians);

/// Draws the mark of a handle on the pixel of a point, filled with `White`: a disc or a square.
void DrawHandle(const XY& point, bool round = true);

/// Outlines a box of whole pixels in `Graph::LineColor`, with discs at its corners if `handles`, and with its diagonals
/// if `cross`.
void DrawBox(const SourceRectangle& box, bool handles, bool cross = false);
/// What a point of the screen is on: a corner, a side, the inside, or `NoHandle`.
DraggingHandles HitBox(const SourceRectangle& box, int x, int y);
/// The box whose corner, side or whole was dragged to a pixel, within an area of that size from 0, 0. The whole goes by
/// what `grab` took hold of.
SourceRectangle DragBox(SourceRectangle box, DraggingHandles handle, const XY& pixel, const Grab& grab, int areaWidth,
                        int areaHeight);

/// A direction in eighths of a turn from x to y, for the choice of a cursor. The first of the nearest, opposite ways by
/// the sign of `dy - dx`: 4 to 7 where that is negative.
int Octant(double dx, double dy);

} // namespace Tesk
