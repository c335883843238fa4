// A sequence of points with integer coordinates: a contour, a polygon, a list of places.
#pragma once

#include "foundation/ReadOnly.h"
#include "foundation/Records.h"

#include <memory>
#include <vector>

namespace Tesk {

/// The sites of a path are shared by its shallow copies until one of them is written.
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
    Site* Sites() const { return Length > 0 ? sites_->data() : nullptr; }

    /// Marks the sites in `Graph::PointColor`, and joins them by strokes in `Graph::LineColor`, from the origin of the
    /// image that the path was followed in.
    void Draw(bool Vertices, bool Edges) const;

    /// Shares the sites of `Src`. A path has no window, so the second argument changes nothing.
    void ShallowCopy(const Path& Src, bool KeepWindow);
    /// Moves to sites of its own, so that those who share the former ones keep theirs.
    void Detach(bool CopySites);

private:
    std::shared_ptr<std::vector<Site>> sites_;
};

} // namespace Tesk
