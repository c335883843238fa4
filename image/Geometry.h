// Geometric transforms: exact turns, resampling, and warps by an affine map, a polar unwinding, a grid or a recorded
// map.
#pragma once

#include "image/Image.h"

#include <array>
#include <functional>
#include <span>
#include <vector>

namespace Tesk {

class Archive;
class Entry;
class Region;

/// A point of the source frame, and the point of the destination frame that belongs to it.
struct AnchorPair
{
    XY Src, Dst;
};

/// One pixel of a `GeoMap` image: where a warp takes its value from, and how it mixes four source pixels.
struct GeoMapPixel
{
    std::uint32_t Offset; ///< bytes from the first pixel of the source's window to the upper left pixel
    std::uint16_t Fx, Fy; ///< weights of the left column and the upper row, in 65,536ths; 0 stands for all of it
    bool operator==(const GeoMapPixel&) const = default;
};
static_assert(sizeof(GeoMapPixel) == 8, "an image row is an array of these");

/// A map between two frames of coordinates that is learnt from pairs of points, and the operations that move pixels.
///
///     Geometry camera;
///     camera.Append({102.4, 87.1}, {0, 0});            // pixels, and true positions
///     ...                                              // four pairs at least
///     camera.ModelFit(Perspective, image);
///     const XY position = camera.MapPoint({310.5, 200});
///
/// Those that move pixels work on `Gray`, `Gray16` and `Rgb` images unless told otherwise, from the window of `Src`
/// into the window of `Dst`, in place too. Refused by all: a void source (`VoidObject`), other pixel types
/// (`UnsupportedType`), no memory (`CannotAllocate`).
///
/// `Flip`, `Mirror`, `Turn`, `DownSample`, `UpSample` and `Transform` size `Dst` themselves. `Affine`, `Rotate`,
/// `Skew`, `Unwind` and `GridDeform` fill the window of `Dst` as it stands, or the size that a void one was asked for;
/// another void one (`VoidObject`) and one that is neither of the source's type nor a `GeoMap` (`IncompatibleType`) are
/// refused. These are inverse warps: for each
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
    static void Unwind(const XY& Center, double BegAngle, double EndAngle, double BegRadius, double EndRadius,
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

    /// \name The model
    /// A new geometry shifts by nothing, and has no anchors. A copy has anchors of its own.
    /// @{

    using Coefficients = std::array<double, 14>;

    ReadOnly<RegistrationModels, Geometry> Model = Translation; ///< the model in force
    ReadOnly<int, Geometry> NumAnchors;                         ///< pairs of anchors

    Geometry() = default;
    Geometry(const Geometry& Other);
    Geometry& operator=(const Geometry& Other);
    ~Geometry() = default;

    /// Adds a pair of anchors behind the last one. Refused: `CannotAllocate`.
    void Append(const XY& Src, const XY& Dst);
    /// An anchor by its index. Refused: no anchors, an index out of range (`OutOfRange`); the reference is then to a
    /// dummy point.
    XY& Src(int Index);
    XY& Dst(int Index);
    const XY& Src(int Index) const;
    const XY& Dst(int Index) const;

    /// Fits a model from source to destination and, on its own, one back, by least squares. The centre of `Src` is that
    /// of the radial models, `Quadratic` and `General`, which refuse a void image (`VoidObject`); the others do not
    /// look at it. Refused, too: anchors too few for the model or in a degenerate configuration (`OutOfRange`). The
    /// model is in force even so, with the coefficients that it had, or if it was another one, those that move nothing.
    /// The models with a denominator minimise the equations multiplied out by it.
    void ModelFit(enum RegistrationModels Model, const Image& Src);
    /// Sets a `Scaling` without anchors by which the length `X` along x becomes `Y`, and `U` along y becomes `V`; 0 for
    /// one of these takes `X` or `Y`. Refused: `X` or `Y` of 0, scales that are no usable numbers (`OutOfRange`).
    void PureScaling(double X, double Y, double U = 0, double V = 0);

    /// Maps a point from the source frame to the destination frame. On the horizon of a view the result is infinite or
    /// no number.
    XY MapPoint(const XY& Point) const;
    /// Maps a point from the destination frame to the source frame.
    XY ReverseMapPoint(const XY& Point) const;

    /// What the model says in numbers, from source to destination and back. With c0, c1, ... for the coefficients:
    /// `Translation` gives (x + c2, y + c5), the models up to `Affinity` (c0 x + c1 y + c2, c3 x + c4 y + c5).
    const Coefficients& Forward() const { return forward_; }
    const Coefficients& Inverse() const { return inverse_; }
    /// @}

    /// Finds the dots of a target, or with `Chessboard` its squares of one colour, numbers them, and fits a model from
    /// the image to the target's own coordinates: `GridStep` apart, with the origin at the column and the row that are
    /// told, counted from 0. The numbered dots become the anchors, and the scale in the middle of the image becomes
    /// that of `SimpleCalibration`. `Src` is as for the automatic `Blobs::Segment`, and `Gray` or `Gray16` for a
    /// chessboard. Refused, with both scales at 1: fewer than 5 dots clear of the border, dots that form no grid
    /// (`OutOfRange`), and, with the anchors that were found, what `ModelFit` and `SimpleCalibration` refuse.
    void CalibrateTarget(enum RegistrationModels Model, const Image& Src, double GridStep, bool WhiteOnBlack = false,
                         bool Chessboard = false, double OriginColumn = 0, double OriginRow = 0);

    /// \name Registration
    /// As `Affine`, but for the types `Gray`, `Gray16` and `Rgb` alone.
    /// @{

    /// Brings an image of the source frame into the destination frame.
    void Undistort(const Image& Src, Image& Dst, bool Interpolate = true) const;
    /// The same. `Valid` receives the runs of pixels of the result whose positions lie between pixels of the source,
    /// from the corner of the window of `Dst`; true if some positions lie outside the source.
    bool Register(const Image& Src, Image& Dst, Region& Valid, bool Interpolate = true) const;
    /// Brings an image of the destination frame into the source frame.
    void ReverseRegister(const Image& Src, Image& Dst, bool Interpolate = true) const;
    /// @}

    /// ".cal" files: the model without the anchors, and the two scales. Refused: `CannotOpen`, `CannotRead`,
    /// `CannotWrite`, `UnsupportedFormat` (another file), `OutOfRange` (another version, numbers that are not finite,
    /// scales that cannot be). Nothing changes if a file is refused. A longer existing file is not cut.
    void Read(const char* PathName);
    void Read(const wchar_t* PathName);
    void Write(const char* PathName) const;
    void Write(const wchar_t* PathName) const;
    /// The content of such a file, as a block of other model files.
    void Transfer(Archive& Block);

    /// Marks the anchors of one frame, displaced by an origin: circles for the source, squares for the destination, of
    /// `Radius` target pixels.
    void DrawAnchors(double OrgX = 0, double OrgY = 0, int Radius = 3, bool Source = true) const;
    /// Whether the pointer is on the mark of an anchor of one frame: `SrcAnchorHandle`, `DstAnchorHandle` or
    /// `NoHandle`; kept in `Handle` for `Drag`.
    DraggingHandles HitHandle(int X, int Y, double OrgX = 0, double OrgY = 0, bool Source = true) const;
    /// Moves the anchor last hit by as much as the pointer has moved since. Refused: `CannotAllocate`.
    void Drag(int X, int Y);
    static ReadOnly<DraggingHandles, Geometry> Handle; ///< the handle last hit

    /// Takes the model and shares the anchors of another geometry; there is no view of it to keep.
    void ShallowCopy(const Geometry& Src, bool KeepView);

private:
    std::span<const AnchorPair> Anchors() const;
    /// A pair that no other geometry shares; null, and reported, if there is none, or no memory.
    AnchorPair* Reach(const Entry& entry, int index);
    bool RefuseIndex(const Entry& entry, int index) const;
    /// Puts a model in force; one that was not moves nothing.
    void Take(enum RegistrationModels model);
    bool FitAnchors(const Entry& entry, enum RegistrationModels model, const Image& src);
    static int TryCalibrate(double lengthInPixels, double trueLength);
    /// Fills an image through one of the maps; false if it was refused.
    bool Resample(const Entry& entry, const Coefficients& c, const Image& src, Image& dst, bool interpolate,
                  bool& outside, const std::function<void(int, int, int)>& valid = {}) const;

    Coefficients forward_{}, inverse_{};
    CopyOnWrite<std::vector<AnchorPair>> anchors_;
};

} // namespace Tesk
