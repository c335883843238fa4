// Geometric transforms: exact turns, resampling, and warps by an affine map, a polar unwinding, a grid or a recorded
// map.
#pragma once

#include "image/Image.h"

namespace Tesk {

/// One pixel of a `GeoMap` image: where a warp takes its value from, and how it mixes four source pixels.
struct GeoMapPixel
{
    std::uint32_t Offset; ///< bytes from the first pixel of the source's window to the upper left pixel
    std::uint16_t Fx, Fy; ///< weights of the left column and the upper row, in 65,536ths; 0 stands for all of it
    bool operator==(const GeoMapPixel&) const = default;
};
static_assert(sizeof(GeoMapPixel) == 8, "an image row is an array of these");

/// Operations that move pixels, on `Gray`, `Gray16` and `Rgb` images unless told otherwise, from the window of `Src`
/// into the window of `Dst`, in place too. Refused by all: a void source (`VoidObject`), other pixel types
/// (`UnsupportedType`), no memory (`CannotAllocate`).
///
/// `Flip`, `Mirror`, `Turn`, `DownSample`, `UpSample` and `Transform` size `Dst` themselves. `Affine`, `Rotate`,
/// `Skew`, `Unwind` and `GridDeform` fill the window of `Dst` as it stands; a void one (`VoidObject`) and one that is
/// neither of the source's type nor a `GeoMap` (`IncompatibleType`) are refused. These are inverse warps: for each
/// pixel of the result a source position is worked out in 65,536ths of a pixel, and the source is sampled there,
/// bilinearly with `Interpolate`, else at the nearest pixel; positions outside the source take the pixel at its border.
/// A `GeoMap` receives the positions, for `Transform` to apply later; its source may be `Rgba`, too, where told.
/// Neither takes a source over an external buffer whose rows run from the bottom up (`UnsupportedType`): the offsets of
/// a map have no sign.
///
///     Image small, turned;
///     Geometry::DownSample(320, 240, image, small);
///     turned.Set(image); // warps fill the window that is there
///     const XY middle(image.Width / 2.0, image.Height / 2.0);
///     Geometry::Rotate(middle, middle, 12.5, 1, image, turned);
class Geometry
{
public:
    /// Turns an image upside down.
    static void Flip(const Image& Src, Image& Dst);
    /// Exchanges left and right.
    static void Mirror(const Image& Src, Image& Dst);
    /// Turns an image by `Quadrant & 3` quarters, clockwise on the screen.
    static void Turn(int Quadrant, const Image& Src, Image& Dst);

    /// Makes a smaller image of `Width` x `Height` pixels, `Rgba` too: with `Filter` of the truncated means of the
    /// source's blocks (0 for an empty block, where the result is larger), else of single pixels. Refused, too: sizes
    /// below 1 (`OutOfRange`).
    static void DownSample(int Width, int Height, const Image& Src, Image& Dst, bool Filter = true);
    /// Makes a larger image of `Width` x `Height` pixels whose corner pixels are those of the source. Refused, too:
    /// sizes below 1 (`OutOfRange`).
    static void UpSample(int Width, int Height, const Image& Src, Image& Dst, bool Interpolate = true);

    /// Warps by the map from a position (i, j) of the result to (`TXx` i + `TXy` j + `TX`, `TYx` i + `TYy` j + `TY`) in
    /// the source; maps of `Rgba` too. True if some positions lie outside the source. Refused, too: coefficients that
    /// are no numbers, positions more than 2^31 pixels away (`OutOfRange`); the result is then false.
    static bool Affine(double TXx, double TXy, double TX, double TYx, double TYy, double TY, const Image& Src,
                       Image& Dst, bool Interpolate = true);
    /// Turns an image by `Angle` degrees and magnifies it by `Scale` about an anchor, which moves to `DstAnchor`. As
    /// `Affine`.
    static bool Rotate(const XY& SrcAnchor, const XY& DstAnchor, double Angle, double Scale, const Image& Src,
                       Image& Dst, bool Interpolate = true);
    /// Turns an image so that two anchors come to lie where they are wanted, without `Scaling` the second in its
    /// direction only. As `Affine`; refused, too: anchors that coincide (`OutOfRange`).
    static bool Rotate(const XY& SrcAnchor0, const XY& SrcAnchor1, const XY& DstAnchor0, const XY& DstAnchor1,
                       const Image& Src, Image& Dst, bool Scaling, bool Interpolate = true);
    /// Stretches and skews an image so that three anchors come to lie where they are wanted. As `Affine`; refused, too:
    /// destination anchors on one line (`OutOfRange`).
    static bool Skew(const XY& SrcAnchor0, const XY& SrcAnchor1, const XY& SrcAnchor2, const XY& DstAnchor0,
                     const XY& DstAnchor1, const XY& DstAnchor2, const Image& Src, Image& Dst, bool Interpolate = true);

    /// Straightens a ring: the columns of the result run from `BegAngle` to `EndAngle` (degrees, clockwise on the
    /// screen), its rows from `EndRadius` at the top to `BegRadius` (pixels). Maps of `Rgba` too. Refused, too: numbers
    /// that are not finite or over 2^30 (`OutOfRange`).
    static void Unwind(XY& Center, double BegAngle, double EndAngle, double BegRadius, double EndRadius,
                       const Image& Src, Image& Dst, bool Interpolate = true);

    /// Warps by a map that another warp has recorded for a source of the same size, pitch and pixel size. Refused, too:
    /// a `Map` of another type (`IncompatibleType`), one that points outside the source or between the bytes of a
    /// `Gray16` pixel (`IncompatibleSize`).
    static void Transform(const Image& Map, const Image& Src, Image& Dst, bool Interpolate = true);

    /// Warps through natural cubic splines. `F` holds `NY` rows of `NX` source positions, rows `N` entries apart; node
    /// (c, r) stands for the pixel (`X0` + c `TX`, `Y0` + r `TY`) of the result. Pixels left of the first node, at or
    /// behind the last one keep their values. Bilinear sampling in doubles. Refused, too: no array, fewer than 2 nodes
    /// or steps below 1 (`OutOfRange`).
    static void GridDeform(XY* F, int N, int NX, int NY, Image& Src, int X0, int TX, int Y0, int TY, Image& Dst);

    /// Sets the two scales below, by which all measurements are multiplied, from one known distance. Refused: a size of
    /// 0, sizes whose ratio is no usable number (`OutOfRange`).
    static void SimpleCalibration(double LengthInPixels, double TrueLength);
    static ReadOnly<double, Geometry> ScaleToPixel;   ///< pixels to a unit of true length; process-wide, 1 at start
    static ReadOnly<double, Geometry> ScaleFromPixel; ///< true length of a pixel; process-wide, 1 at start

    /// Takes the model of another geometry; there is no view of it to keep.
    void ShallowCopy(const Geometry& Src, bool KeepView);
};

} // namespace Tesk
