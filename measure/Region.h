// A set of pixels of any shape, in one piece or several, kept as horizontal runs.
#pragma once

#include "foundation/CopyOnWrite.h"
#include "foundation/ReadOnly.h"
#include "foundation/Records.h"

#include <span>
#include <vector>

namespace Tesk {

class Archive;
class Blobs;
class Entry;
class Image;
class Morpho;
class Path;
class Quad;

/// The runs of a region are shared by its shallow copies until one of them is written. Their coordinates are signed
/// 16-bit numbers.
///
///     Region bright;
///     bright.Binarize(Auto, picture);             // the pixels at or above the best threshold
///     bright.Erode(bright, square);               // `square` is a Morpho
///     bright.Fill(255, marked);
///
/// Scan order is by row, then by first column. Runs that were appended may overlap, and count as often as they cover a
/// pixel. What needs scan order sorts a region that is not `Sorted` first.
class Region
{
    template <typename T>
    using Field = ReadOnly<T, Region>;

public:
    Field<int> NumRuns; ///< number of runs
    bool Sorted = true; ///< the runs are known to be in scan order

    Region() = default;
    /// A copy has runs of its own as soon as it or the other one is written.
    Region(const Region& Other) = default;
    Region& operator=(const Region& Other) = default;
    Region(Region&& Other) noexcept;
    Region& operator=(Region&& Other) noexcept;

    /// Appends a run of the columns `Start` to `End - 1`. Without memory the run is dropped.
    virtual void AddRun(int Start, int End, int Y);
    /// Ends a row of pixels that is scanned.
    virtual void EndRow() {}
    virtual ~Region() = default;

    /// Leaves no run; the memory stays for the next ones.
    void Clear();

    /// \name Generation
    /// The runs of the pixels of a `Gray` window (`UnsupportedType`) that are at or above a threshold, or without
    /// `Above` below it, in coordinates of the whole picture. `Label` is reserved. Refused, too: a window beyond the
    /// coordinates of runs (`OutOfRange`).
    /// @{

    /// `Auto` and `MinInt` take `Histogram::BestThreshold`. The result is the threshold used.
    int Binarize(int Threshold, const Image& Src, bool Above = true, int Label = 0);
    /// By the threshold in the middle between two gray values.
    void Binarize(GrayPixel Background, GrayPixel Foreground, const Image& Src, bool Above = true, int Label = 0);
    /// By `Histogram::BestThreshold`, the result; of a `Gray1` image the pixels that are set, and 0.
    int Binarize(const Image& Src, bool Above = true);
    /// @}

    /// \name Accumulation
    /// The runs are added behind those that are there, with `Label`. Coordinates beyond those of runs are cut off.
    /// @{

    void BoxAppend(const Limits& Src, int Label = 0);
    /// The window of an image. Refused: a void image (`VoidObject`).
    void ImageAppend(const Image& Src, int Label = 0);
    /// The runs of a region with their own labels.
    void RegionAppend(const Region& Src);
    /// The runs of a blob, or of several, with their labels. Refused: an index of a blob that there is not
    /// (`OutOfRange`).
    void BlobAppend(const Blobs& Src, int BlobIndex = All);
    /// The inside of a path, which is taken as closed; without its lowest row and the right end of each row.
    void PathAppend(const Path& Src, int Label = 0);
    /// The inside of a turned rectangle or of a sector of a ring, without its lowest row.
    void QuadAppend(const Quad& Src, int Label = 0);
    /// The inside of an ellipse: half axes in pixels, the first turned by `Angle` degrees from x to y. `Label` is
    /// reserved. Refused: numbers far beyond the coordinates of runs, or not finite (`OutOfRange`).
    void EllipseAppend(XY Center, XY Axis, double Angle, int Label = 0);
    /// @}

    /// \name Arithmetic
    /// The result, in scan order and with labels that mean nothing, replaces the runs. The region may be a source
    /// itself. `DummyOver` is an image on which the workbench shows the result; it is not used.
    /// @{

    /// The pixels of a rectangle that are not in `Src`.
    void Invert(int X, int Y, int Width, int Height, Region& Src);
    void Invert(int X, int Y, int Width, int Height, Region& Src, const Image& DummyOver);
    /// Runs that overlap or touch become one.
    void Unite(Region& SrcA, Region& SrcB);
    void Unite(Region& SrcA, Region& SrcB, const Image& DummyOver);
    void Intersect(Region& SrcA, Region& SrcB);
    void Intersect(Region& SrcA, Region& SrcB, const Image& DummyOver);
    void Subtract(Region& SrcA, Region& SrcB);
    void Subtract(Region& SrcA, Region& SrcB, const Image& DummyOver);
    /// @}

    /// `Inside` if all of this region lies in `Src`, else `Over` if all of `Src` lies in it, `Outside` if they have no
    /// pixel in common, `Onside` else. Two empty regions are `Inside`.
    RangeMode Containment(const Region& Src);

    /// \name Reshaping
    /// As for arithmetic. Refused: an empty source (`OutOfRange`).
    /// @{

    void Erode(Region& Src, const Morpho& Structel);
    void Erode(Region& Src, const Morpho& Structel, const Image& DummyOver);
    void Dilate(Region& Src, const Morpho& Structel);
    void Dilate(Region& Src, const Morpho& Structel, const Image& DummyOver);
    /// Dilation less erosion (`StandardGradient`), dilation less source (`ExternalGradient`), source less erosion
    /// (`InternalGradient`). Other types are refused (`OutOfRange`).
    void Gradient(Region& Src, const Morpho& Structel, GradientTypes Type = StandardGradient);
    void Gradient(Region& Src, const Morpho& Structel, GradientTypes Type, const Image& DummyOver);
    /// @}

    /// \name Shape
    /// The hull is that of the pixels' centers. Refused: a region without a pixel (`VoidObject`).
    /// @{

    /// Fills the convex hull: one run for each of its rows.
    void Convexify();
    void Convexify(const Image& DummyOver);
    /// The corners of the convex hull, a closed path, counterclockwise from the top left one.
    void ConvexHull(Path& Hull);
    /// The rectangle of least area around the hull. `Width` is the longer side and `Angle` its direction in degrees.
    void Rectangle(double& Xc, double& Yc, double& Width, double& Height, double& Angle);
    /// The circle of least radius around the hull.
    void Circle(double& Xc, double& Yc, double& Radius);
    /// @}

    /// Walks clockwise round the 8-connected piece that holds the first run, into a path that is empty for a single
    /// pixel, and for an empty region.
    void Follow(Path& Outline);

    /// \name Pixels
    /// The coordinates of the runs count from the corner of the image's window, to which they are cut. Refused: a void
    /// image (`VoidObject`), another pixel type (`UnsupportedType`).
    /// @{

    /// For `Gray` and `Gray16`, which take the low bits of the value.
    void Fill(int Value, Image& Dst) const;
    /// For `Rgb`. The last column of the image is never filled.
    void Fill(RgbPixel Value, Image& Dst) const;
    /// Copies the pixels from an image of the same type (`IncompatibleType`), shifted to the right and down, for
    /// `Gray`, `Gray16`, `Rgb` and `Rgba`.
    void Fill(const Image& Src, Image& Dst, int SrcX = 0, int SrcY = 0) const;
    /// For `Gray`, `Gray16`, `Gray32`, `Rgb` and `Rgba`: the low bits of the value, in the order of memory.
    void ToImage(int Value, Image& Dst) const;
    /// Gives `Value` to all pixels of a `Gray` image that are connected to the seed and differ from it by at most
    /// `Tolerance`. The seed counts from the corner of the window. Refused: a seed outside of it, or that has the value
    /// already (`OutOfRange`).
    static void SeedFill(const Site& Seed, GrayPixel Value, Image& Src, bool Connexity8 = true, int Tolerance = 0);
    /// The mean of `Gray` pixels, without its fraction; `Area` counts those in the window. Refused: no such pixel
    /// (`VoidObject`).
    double Mean(const Image& Src, int& Area) const;
    /// The variance of `Gray` pixels about that mean. Refused: no such pixel (`VoidObject`).
    double Variance(const Image& Src, double& Mean, int& Area) const;
    /// @}

    /// \name Features
    /// Refused: an empty region (`VoidObject`); the result is 0 then.
    /// @{

    /// The number of pixels.
    int Area() const;
    /// The center of gravity, and the number of pixels.
    XY Center(int& Area) const;
    /// The upright box, larger by a margin on each side.
    Limits Box(int Margin) const;
    /// @}

    /// The runs, `NumRuns` of them.
    std::span<const LabeledRun> Runs() const { return runs_.Read(); }
    /// A run by its index. Refused: an index out of range (`OutOfRange`).
    void Run(int Index, int& Start, int& End, int& Y) const;
    void Run(int Index, LabeledRun& Run) const;

    /// ".rgn" files. Refused: `CannotOpen`, `CannotRead` (a file that promises more than it holds), `CannotWrite`,
    /// `UnsupportedFormat` (another file), `OutOfRange` (a newer version). A longer existing file is not cut.
    void Read(const char* PathName);
    void Read(const wchar_t* PathName);
    void Write(const char* PathName) const;
    void Write(const wchar_t* PathName) const;
    /// The content of such a file, as a block of other model files.
    void Transfer(Archive& Block);

    /// Draws the pixels in `Graph::FillColor`. Refused: `NoColor` (`OutOfRange`).
    void Draw() const;
    /// Draws the border: the pixels with a neighbour outside, among eight, or with `Connexity8` among four, so that the
    /// border is 8-connected.
    void DrawOutline(bool Connexity8) const;

    /// Shares the runs of `Src`. A region has no window, so the second argument changes nothing.
    void ShallowCopy(const Region& Src, bool KeepWindow);
    /// Moves to runs of its own, so that those who share the former ones keep theirs.
    void Detach(bool CopyRuns);

protected:
    /// The runs for writing, shared with nobody any more; `CountRuns` has to follow. May throw `std::bad_alloc`.
    std::vector<LabeledRun>& WriteRuns() { return runs_.Write(); }
    /// The same for a writer that needs none of the runs that stand here: none are left, their memory stays.
    std::vector<LabeledRun>& RewriteRuns();
    /// The same for a writer that fills all of them: so many, of any content.
    std::vector<LabeledRun>& RewriteRuns(std::size_t count);
    /// Makes `NumRuns` what the runs for writing have become.
    void CountRuns() { NumRuns = static_cast<int>(runs_.Read().size()); }
    /// Takes other runs; those who share the former ones keep them.
    void TakeRuns(std::vector<LabeledRun>&& runs, bool sorted);
    /// Brings the runs into scan order if they are not known to be. May throw `std::bad_alloc`.
    void Sort();

private:
    template <typename Scanner>
    void Scan(const Entry& entry, const Image& src, const Scanner& scanner);
    template <typename F>
    void Append(const Entry& entry, bool sorted, F add);
    template <typename F>
    void Become(const Entry& entry, F make);

    CopyOnWrite<std::vector<LabeledRun>> runs_;
};

inline void Region::Invert(int X, int Y, int Width, int Height, Region& Src, const Image&)
{
    Invert(X, Y, Width, Height, Src);
}

inline void Region::Unite(Region& SrcA, Region& SrcB, const Image&)
{
    Unite(SrcA, SrcB);
}

inline void Region::Intersect(Region& SrcA, Region& SrcB, const Image&)
{
    Intersect(SrcA, SrcB);
}

inline void Region::Subtract(Region& SrcA, Region& SrcB, const Image&)
{
    Subtract(SrcA, SrcB);
}

inline void Region::Erode(Region& Src, const Morpho& Structel, const Image&)
{
    Erode(Src, Structel);
}

inline void Region::Dilate(Region& Src, const Morpho& Structel, const Image&)
{
    Dilate(Src, Structel);
}

inline void Region::Gradient(Region& Src, const Morpho& Structel, GradientTypes Type, const Image&)
{
    Gradient(Src, Structel, Type);
}

inline void Region::Convexify(const Image&)
{
    Convexify();
}

} // namespace Tesk
