// A sequence of points with integer coordinates: a contour, a polygon, a list of places.
#pragma once

#include "foundation/CopyOnWrite.h"
#include "foundation/ReadOnly.h"
#include "foundation/Records.h"

#include <span>
#include <string>
#include <vector>

namespace Tesk {

class ArcPath;
class Archive;
class Histogram;
class Image;

/// The sites of a path are shared by its shallow copies until one of them is written.
///
/// Lengths are in pixels and angles in degrees, from the x axis towards the y axis unless stated. Every method that
/// needs a site refuses an empty path (`VoidObject`), and one that cannot get its memory reports `CannotAllocate`; both
/// leave all results as they were. A destination may be the path itself; it takes over the origin.
///
///     Path contour, corners;
///     contour.Follow(Site(120, 80), 128, image); // the blob of pixels from 128 up
///     contour.Vectorize(corners, 1.5);
///     XY center;
///     double radius;
///     if (contour.CircleFit(center, radius)) center.Draw(false);
class Path
{
    template <typename T>
    using Field = ReadOnly<T, Path>;

public:
    Field<int> Length;      ///< number of sites
    bool Closed = false;    ///< the last site is followed by the first one
    int OrgX = 0, OrgY = 0; ///< origin of the image that the path was followed in; drawing adds it

    Path() = default;
    /// A copy has sites of its own.
    Path(const Path& Other);
    Path& operator=(const Path& Other);
    Path(Path&& Other) noexcept;
    Path& operator=(Path&& Other) noexcept;
    ~Path() = default;

    /// Adds a site behind the last one. Refused: `CannotAllocate`.
    void Append(Site Vertex);
    void Append(int X, int Y) { Append(Site(X, Y)); }
    /// Leaves no site, and the path open; the memory stays for the next ones.
    void Clear();

    /// A site by its index. Refused: an empty path (`VoidObject`), an index out of range (`OutOfRange`); the reference
    /// is then to a dummy site.
    Site& Vertex(int Index) const;

    /// The sites, `Length` of them; null while there is none.
    Site* Sites() const { return Length > 0 ? sites_.Get()->data() : nullptr; }

    /// Follows the contour of the blob in which `Seed` lies, clockwise, the seed first. `Src` is `Gray`
    /// (`IncompatibleType`), of at most 32,768 columns and rows (`OutOfRange`). A pixel belongs to the blob if it is at
    /// or above `Threshold`, or without `Above` if it is below it; `Auto` takes the gray value of the seed, so that the
    /// seed belongs to it. The seed is a position in the whole picture, the sites are positions in its window, whose
    /// corner becomes the origin.
    ///
    /// The path is empty if the seed lies outside the window or the blob, or has no neighbour outside it. It ends on
    /// the first return to the seed. Without `AlwaysClosed` a contour that meets the border of the window is open and
    /// runs from border to border, past the seed as often as the blob is one pixel thick there.
    void Follow(const Site& Seed, int Threshold, const Image& Src, bool Above = true, bool Connexity8 = true,
                bool AlwaysClosed = true);

    /// \name Reduction
    /// @{

    /// Drops sites in the hollows of the path: no dropped one is farther than `Deviation`, 0.1 to 16 pixels, from the
    /// segment that remains in its place. Of a convex path the corners of its hull remain.
    void Smooth(Path& Dst, double Deviation = 3) const;
    /// The vertices of a polygon from which the middle site of each side is no farther than `Deviation` pixels. The
    /// path counts as closed.
    void Vectorize(Path& Dst, double Deviation) const;
    /// Lines and circular arcs of less than half a turn from which no site is farther than `Deviation` pixels. Fewer
    /// than 4 sites leave nothing.
    void Vectorize(ArcPath& Dst, double Deviation) const;
    /// The 8-connected chain of the pixels along a polygon's sides (Bresenham 1965). The path counts as closed.
    void PolygonToRaster(Path& Dst) const;
    /// @}

    /// \name Fits
    /// False, and results as they were, for sites too few or in a degenerate position. `RobustFit` is a consensus
    /// search without random numbers: it bears up to three outliers in ten sites.
    /// @{

    /// The line of least perpendicular distances; `Center` is a point on it.
    bool LineFit(XY& Center, double& Angle, FittingModes Mode = AccurateFit) const;
    /// From three sites on. `AverageFit` takes the centre and the area of the polygon, `FastFit` is the fit of Kasa
    /// (1976), `AccurateFit` that of Taubin (1991).
    bool CircleFit(XY& Center, double& Radius, FittingModes Mode = AccurateFit) const;
    /// From five sites on. `Axis` holds the long and the short half axis, `Angle` the direction of the long one.
    /// `AverageFit` and `FastFit` take the conic through five sites, `AccurateFit` is the direct fit of Fitzgibbon,
    /// Pilu and Fisher (1999) as computed by Halir and Flusser (1998).
    bool EllipseFit(XY& Center, XY& Axis, double& Angle, FittingModes Mode = AccurateFit) const;
    /// @}

    /// \name Deviations
    /// The mean distance of the sites from an ideal shape, or with `RMS` the root of the mean squared one; 0 if
    /// refused.
    /// @{
    double LineDeviation(XY Center, double Angle, bool RMS = true) const;
    double CircleDeviation(XY Center, double Radius, bool RMS = true) const;
    /// From the sides; those along `Angle` are `Sides.X` long.
    double RectangleDeviation(XY Center, XY Sides, double Angle, bool RMS = true) const;
    /// `Axis` holds the half axes, the first along `Angle`. `NumIterations` (held to 0 to 3) refines the distances.
    double EllipseDeviation(XY Center, XY Axis, double Angle, bool RMS = true, int NumIterations = 0) const;
    /// @}

    /// \name Bounding shapes
    /// `Simple` tells that the path does not cross itself, which is faster. The result is the same if it does.
    /// @{

    /// The smallest and the largest coordinates: a single site has a box of size 0.
    void Box(int& X, int& Y, int& Width, int& Height) const;
    /// The rectangle of least area. `Width` is the longer side and `Angle` its direction, 0 to 180.
    void Rectangle(double& Xc, double& Yc, double& Width, double& Height, double& Angle, bool Simple = true) const;
    /// The parallelogram of least area: three corners in turn, the fourth being `P + R - Q`.
    void Parallelogram(XY& P, XY& Q, XY& R, bool Simple = true) const;
    /// The circle of least radius (Welzl 1991).
    void Circle(double& Xc, double& Yc, double& Radius, bool Simple = true) const;
    /// The corners of the convex hull, without those on its sides, counterclockwise from the leftmost one. With
    /// `Simple` by the algorithm of Melkman (1987).
    void ConvexHull(Path& Dst, bool Simple = false) const;
    /// @}

    /// \name Features
    /// @{

    /// The enclosed area in square pixels, rounded down; positive where the path runs clockwise on the screen.
    int Area() const;
    /// The length round the closed loop: of each segment the whole pixels of its length, or without `Euclidean` the
    /// larger of its extents along x and y.
    double Perimeter(bool Euclidean = true) const;
    /// The mean of the sites.
    void Center(double& X, double& Y) const;
    /// Area and centre of gravity of the polygon; false, `Area` being 0, if it has no area.
    bool FilledCenter(int& Area, double& X, double& Y) const;
    /// The ellipse with the polygon's moments of inertia: `Width` and `Height` are its full axes, the longer first, and
    /// `Angle` runs from the x axis against the y axis, -90 to 90. False, `Area` being 0, if there is no area.
    bool FilledEllipse(int& Area, double& X, double& Y, double& Width, double& Height, double& Angle,
                       double& Eccentricity) const;
    /// @}

    /// \name Gray values
    /// The pixels of a `Gray` image (`IncompatibleType`) on which the path is drawn: a site is a position in the whole
    /// picture, from the path's origin. Sites outside the window do not count.
    /// @{

    /// Their sum.
    int Mass(const Image& Src) const;
    /// Their sum, and the mean of the sites weighted by them; false if the sum is 0.
    bool Centroid(const Image& Src, int& Mass, double& X, double& Y) const;
    /// Counts them, or without `Clear` adds them to the counts of a histogram of 256 levels (`UnsupportedType`,
    /// `IncompatibleSize`).
    void GrayHistogram(const Image& Src, Histogram& Dst, bool Clear = true) const;
    /// @}

    /// The sites, or one of them, as text that stands until the next call. -1 for all; other negative indexes count
    /// from the end. Refused: `OutOfRange`, also for an empty path.
    const char* ToAsciiString(int Index) const;

    /// ".pth" files. Refused: `CannotOpen`, `CannotRead` (a file that promises more than it holds), `CannotWrite`,
    /// `UnsupportedFormat` (another file), `OutOfRange` (a newer version). A longer existing file is not cut.
    void Read(const char* PathName);
    void Read(const wchar_t* PathName);
    void Write(const char* PathName) const;
    void Write(const wchar_t* PathName) const;
    /// The content of such a file, as a block of other model files.
    void Transfer(Archive& Block);

    /// Marks the sites in `Graph::PointColor`, and joins them by strokes in `Graph::LineColor`, from the origin of the
    /// image that the path was followed in.
    void Draw(bool Vertices, bool Edges = true) const;

    /// Shares the sites of `Src`. A path has no window, so the second argument changes nothing.
    void ShallowCopy(const Path& Src, bool KeepWindow);
    /// Moves to sites of its own, so that those who share the former ones keep theirs.
    void Detach(bool CopySites);

private:
    int CheckSites() const;
    void Share(const Path& src);
    std::span<const Site> View() const { return {Sites(), static_cast<std::size_t>(int(Length))}; }
    void Take(std::vector<Site>&& sites, bool closed, int orgX, int orgY);
    std::vector<XY> Hull(bool simple) const;

    CopyOnWrite<std::vector<Site>> sites_;
    mutable std::string text_; ///< what `ToAsciiString` gave last
};

/// Refuses an image in which some pixels cannot be sites (`OutOfRange`).
int CheckReach(const Image& Src);

} // namespace Tesk
