// A path of straight lines and circular arcs.
#pragma once

#include "foundation/CopyOnWrite.h"
#include "foundation/ReadOnly.h"
#include "foundation/Records.h"

#include <vector>

namespace Tesk {

/// Each vertex tells the curvature of the segment to the next one, whose arc is the smaller of the two that a circle
/// offers. An `ArcPath` that is copied shares its vertices with the copy until one of them is written.
///
///     ArcPath outline;
///     contour.Vectorize(outline, 1);       // of a followed contour
///     for (int i = 0; i < outline.Length; i++)
///         std::printf("%d %d %g\n", outline.Vertex(i).X, outline.Vertex(i).Y, outline.Vertex(i).Bulge);
class ArcPath
{
    template <typename T>
    using Field = ReadOnly<T, ArcPath>;

public:
    Field<int> Handle = NoHandle; ///< the handle last hit, a `DraggingHandles` value
    Field<int> HitIndex = -1;     ///< the vertex last hit, -1 for none
    Field<int> Length;            ///< number of vertices
    bool Closed = false;          ///< the last vertex is followed by the first one
    int OrgX = 0, OrgY = 0;       ///< origin of the image that the path was followed in; drawing adds it

    /// Adds a vertex behind the last one. Refused: `CannotAllocate`.
    void Append(const ArcSite& Vertex);
    void Append(int X, int Y, double Bulge = 0) { Append(ArcSite(X, Y, Bulge)); }
    /// Leaves no vertex, and the path open.
    void Clear();

    /// A vertex by its index. Refused: an empty path (`VoidObject`), an index out of range (`OutOfRange`), no memory to
    /// part from a copy (`CannotAllocate`); the reference is then to a dummy vertex.
    ArcSite& Vertex(int Index);
    const ArcSite& Vertex(int Index) const;

    /// The middle of the arc that leaves a vertex. Refused as `Vertex`.
    XY ArcMiddle(int Index) const;

    /// Draws the segments in `Graph::LineColor`, and with `Marks` the vertices in `Graph::PointColor`.
    void Draw(bool Marks) const;
    /// Takes hold of the vertex nearest to a point of the screen, or without `Nearest` of the first one within 6 pixels
    /// of it: `AllHandle`, and `NoHandle` if there is none.
    DraggingHandles HitHandle(int X, int Y, bool Nearest = true);
    /// Moves that vertex to the pixel at a point of the screen.
    void Drag(int X, int Y);

    /// Prints length, kind, and the first and last vertices, `Vertices` of them, to the library's text output.
    void Print(int Vertices = 10) const;

private:
    friend class Path;
    int CheckIndex(int index) const;
    XY MiddleOf(std::size_t index) const;
    void Take(std::vector<ArcSite>&& sites, bool closed, int orgX, int orgY);

    CopyOnWrite<std::vector<ArcSite>> sites_;
};

} // namespace Tesk
