// A polygon or polyline with real coordinates.
#pragma once

#include "foundation/CopyOnWrite.h"
#include "foundation/ReadOnly.h"
#include "foundation/Records.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace Tesk {

class Archive;
class Entry;

/// The companion of `Path` for points that are known to parts of a pixel. Copies share the vertices until one of them
/// is written.
///
///     Poly poly;
///     for (const XY& point : points)
///         poly.Append(point);
///     XY center;
///     double radius;
///     if (poly.CircleFit(center, radius)) roundness = poly.CircleDeviation(center, radius);
///
/// Lengths are in pixels and angles in degrees, from the x axis towards the y axis. Every method that needs a vertex
/// refuses an empty polygon (`VoidObject`); the bounding shapes, features and deviations refuse one with a vertex that
/// is not finite or beyond 1e150 (`OutOfRange`), to which no fit exists; what cannot get its memory reports
/// `CannotAllocate`. All leave their results as they were. A destination may be the polygon itself.
class Poly
{
    template <typename T>
    using Field = ReadOnly<T, Poly>;

public:
    Field<int> Length;   ///< number of vertices
    bool Closed = false; ///< the last vertex is followed by the first one

    /// Adds a vertex behind the last one. Refused: `CannotAllocate`.
    void Append(const XY& Vertex);
    void Append(double X, double Y) { Append(XY(X, Y)); }
    /// Leaves no vertex, and the polygon open.
    void Clear();

    /// A vertex by its index. Refused, too: an index out of range (`OutOfRange`); the reference is then to a dummy
    /// vertex.
    XY& Vertex(int Index);
    const XY& Vertex(int Index) const;
    /// The vertices, `Length` of them.
    const XY* Vertices() const { return vertices_.Read().data(); }

    /// \name Fits
    /// False, and results as they were, for vertices too few or in a degenerate position. `RobustFit` is a consensus
    /// search without random numbers: it bears up to three outliers in ten vertices.
    /// @{

    /// The line of least perpendicular distances; `Center` is a point on it.
    bool LineFit(XY& Center, double& Angle, FittingModes Mode = AccurateFit) const;
    /// From three vertices on. `AverageFit` takes the centre and the area of the polygon, `FastFit` is the fit of Kasa
    /// (1976), `AccurateFit` that of Taubin (1991).
    bool CircleFit(XY& Center, double& Radius, FittingModes Mode = AccurateFit) const;
    /// From five vertices on. `Axis` holds the long and the short half axis, `Angle` the direction of the long one.
    /// `AverageFit` and `FastFit` take the conic through five vertices, `AccurateFit` is the direct fit of Fitzgibbon,
    /// Pilu and Fisher (1999) as computed by Halir and Flusser (1998).
    bool EllipseFit(XY& Center, XY& Axis, double& Angle, FittingModes Mode = AccurateFit) const;
    /// @}

    /// \name Deviations
    /// The mean distance of the vertices from an ideal shape, or with `RMS` the root of the mean squared one; 0 if
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
    /// `Simple` tells that the polygon does not cross itself, which is faster. The result is the same if it does.
    /// @{

    /// The smallest and the largest coordinates: a single vertex has a box of size 0.
    void Box(double& X, double& Y, double& Width, double& Height) const;
    /// The rectangle of least area. `Width` is the longer side and `Angle` its direction, 0 to 180.
    void Rectangle(double& Xc, double& Yc, double& Width, double& Height, double& Angle, bool Simple = true) const;
    /// The circle of least radius (Welzl 1991).
    void Circle(double& Xc, double& Yc, double& Radius, bool Simple = true) const;
    /// The corners of the convex hull, without those on its sides, counterclockwise from the leftmost one. With
    /// `Simple` by the algorithm of Melkman (1987).
    void ConvexHull(Poly& Dst, bool Simple = false) const;
    /// @}

    /// The length round the closed loop; without `Euclidean`, of each segment the larger of its extents along x and y.
    double Perimeter(bool Euclidean = true) const;
    /// The mean of the vertices.
    void Center(double& X, double& Y) const;

    /// The vertices, or one of them, as text that stands until the next call. -1 for all; other negative indexes count
    /// from the end. Refused: `OutOfRange`, also for an empty polygon.
    const char* ToAsciiString(int Index) const;

    /// Polygon files. Refused: `CannotOpen`, `CannotRead` (a file that promises more than it holds), `CannotWrite`,
    /// `UnsupportedFormat` (another file), `OutOfRange` (a newer version). A longer existing file is not cut.
    void Read(const char* PathName);
    void Read(const wchar_t* PathName);
    void Write(const char* PathName) const;
    void Write(const wchar_t* PathName) const;
    /// The content of such a file, as a block of other model files.
    void Transfer(Archive& Block);

    /// Marks the vertices in `Graph::PointColor`, and joins them by strokes in `Graph::LineColor`.
    void Draw(bool Vertices, bool Edges = true) const;

    /// Shares the vertices of `Src`. A polygon has no window, so the second argument changes nothing.
    void ShallowCopy(const Poly& Src, bool KeepWindow);

private:
    bool RefuseVoid(const Entry& entry, const wchar_t* message) const;
    bool Refuses(const Entry& entry, const wchar_t* message) const;
    int CheckIndex(int index) const;
    std::span<const XY> View() const { return vertices_.Read(); }
    void Take(std::vector<XY>&& vertices, bool closed);

    CopyOnWrite<std::vector<XY>> vertices_;
    mutable std::string text_; ///< what `ToAsciiString` gave last
};

} // namespace Tesk
