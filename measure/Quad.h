// A rectangle that may be turned, and bent into a sector of a ring.
#pragma once

#include "foundation/ReadOnly.h"
#include "foundation/Records.h"

namespace Tesk {

class Image;
class ScreenPointer;

/// A strip of `Width` x `Height` pixels that starts at its first corner and runs along `Angle`. Bent, it runs round a
/// circle, and `Angle` is the direction in which its outline sets out: as seen from the centre of the circle the sector
/// starts a quarter turn before it, or bent counterclockwise a quarter turn behind it. Setters take angles in degrees,
/// from the x axis towards the y axis; fields are in radians. A setter refuses numbers that are not finite or over 2^30
/// (`OutOfRange`) and leaves the quad as it was.
///
///     Quad quad;
///     quad.SetCenter(320, 240, 200, 80, 30, 0);        // a rectangle about the middle of a picture, turned
///     Image upright;
///     quad.Sample(picture, upright, true);             // its inside, 200 x 80 pixels
///     quad.SetArc(320, 240, 90, 120, 0, 180);          // half a ring
class Quad
{
    template <typename T>
    using Field = ReadOnly<T, Quad>;

public:
    Field<double> X, Y;   ///< the first corner; bent, the centre of the circle
    Field<double> Width;  ///< length along `Angle`; bent, the outer radius, whose sign does not matter to the outline
    Field<double> Height; ///< extent across, to the right of `Angle` on the screen; bent, the difference of the radii
    Field<double> Angle;  ///< 0 to 2 pi
    Field<double> Bend;  ///< angle swept round the circle, -2 pi to 2 pi, positive clockwise on the screen; 0: straight
    Field<bool> Aligned; ///< an upright box of whole pixels
    Field<bool> Bent;    ///< a sector of a ring
    bool Centered = false; ///< a drag of a side resizes about the middle

    /// An upright box.
    void Set(int X, int Y, int Width, int Height);
    /// A full disc about (`X`, `Y`).
    void SetCircle(double X, double Y, double Radius, double Angle);
    /// The sector of the ring between two radii that sets out in the direction `FromAngle` and ends in the direction
    /// `ToAngle`; over more than a full turn, whole turns are left out.
    void SetArc(double X, double Y, double InnerRadius, double OuterRadius, double FromAngle, double ToAngle);
    /// By the middle of the shape. Bent, `Width` is the length of the line half way between the two arcs; its radius,
    /// `Width` over the bend in radians, has the sign of the bend. The centre of the circle lies that far from (`X`,
    /// `Y`), against the direction `Angle` + `Bend` / 2: that of the middle as `Sample` reads a counterclockwise bend.
    void SetCenter(double X, double Y, double Width, double Height, double Angle, double Bend);
    /// By the first corner. Bent, with radii as for `SetCenter`, the centre of the circle lies an outer radius from
    /// (`X`, `Y`), against the direction `Angle`.
    void SetCorner(double X, double Y, double Width, double Height, double Angle, double Bend);
    /// A straight quad by its first corner, with the angle in radians as model files keep it.
    void SetTurned(double X, double Y, double Width, double Height, double Radians);
    /// A sector whose middle line runs through three points: they stand in the middle of its first third, within it,
    /// and in the middle of its last third. False, and the quad as it was, if they lie on a line or the sector would
    /// exceed a full turn.
    bool FitArc(XY From, XY Middle, XY To, double Height = 0);

    /// The corners, numbered in the order of a walk round the shape from the first one, along `Width`; `Index`
    /// modulo 4.
    XY Corner(int Index) const;
    /// The middle of the shape; bent, that of the line half way between the two arcs.
    XY Middle() const;
    /// Where the sector of a bent quad starts, as seen from the centre of its circle, in radians.
    double StartAngle() const;

    /// The box of the shape, all four sides in whole coordinates, truncated.
    void Bounds(int& Left, int& Top, int& Right, int& Bottom) const;

    /// Reads the inside into an image of `Height` rows, the first corner at the top left. Straight, sizes are rounded;
    /// bent, `Height` is truncated and the width is the length of the middle line, truncated. The columns of a ring
    /// bent clockwise go from the start of its outline to its end; bent counterclockwise, from the direction `Angle` as
    /// seen from the centre, on by `Bend`. `Src` is `Gray`, `Gray16`, `Gray32` or `Rgb` (`UnsupportedType`), its
    /// window's corner being (0, 0); positions outside take the pixel at its border. Refused, too: a void source
    /// (`VoidObject`), sizes below 1 or without memory (`CannotAllocate`), positions more than 2^31 pixels away
    /// (`OutOfRange`).
    void Sample(const Image& Src, Image& Dst, bool Bilinear) const;

    /// Outlines the shape in `Graph::LineColor`; with `Handles`, marks what `HitHandle` finds, and with `Anchors` the
    /// middle and the direction of the width.
    void Draw(bool Handles, bool Anchors) const;
    /// The handle under a point of the screen, kept in `Handle` for `Drag`: a corner (`NWHandle` is the first one,
    /// `NEHandle` the second), the middle of a side (`NHandle` between them), the inside (`AllHandle`).
    DraggingHandles HitHandle(int X, int Y) const;
    /// Moves the handle last hit to a point of the screen, in the quad's own frame: a corner resizes from the opposite
    /// one, a side moves alone, the inside moves the whole. No side becomes shorter than a pixel.
    void Drag(int X, int Y);
    static ReadOnly<DraggingHandles, Quad> Handle;

    /// What gauges need that hold a quad: the handles in the order in which they are hit, where each stands, and hits
    /// and drags whose handle they keep.
    /// @{
    static constexpr DraggingHandles Handles[] = {NWHandle, NEHandle, SEHandle, SWHandle,
                                                  NHandle,  EHandle,  SHandle,  WHandle};
    XY PlaceOf(DraggingHandles Handle) const;
    DraggingHandles Hit(const ScreenPointer& Pointer) const;
    void DragTo(DraggingHandles Handle, const ScreenPointer& Pointer);
    /// @}

private:
    struct Shape
    {
        double X, Y, Width, Height, Angle, Bend;
        bool Bent;
    };
    void Take(const char* context, const Shape& shape);
    void Put(const Shape& shape);
    XY RingPoint(double radius, double share) const;
    XY Place(double along, double across) const;
    void DragStraight(DraggingHandles handle, XY to);
    void DragBent(DraggingHandles handle, XY to);
};

} // namespace Tesk
