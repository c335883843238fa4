// The outline of a Data Matrix candidate: a hull, completed, reduced to a quadrilateral, and moved onto its sides.
#pragma once

#include "foundation/Records.h"
#include "image/Image.h"
#include "read/matrix/DarkComponents.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace Tesk::matrix {

/// Corners in pixels, counterclockwise on the screen.
using Quadrilateral = std::array<Site, 4>;

/// The squared length of a segment.
inline int SquaredLength(Site a, Site b)
{
    const int dx = b.X - a.X, dy = b.Y - a.Y;
    return dx * dx + dy * dy;
}

/// How well segments lie on the border of a symbol: the lower the better.
class EdgeCosts
{
public:
    EdgeCosts(const Image& gray, CodePolarities polarity) : gray_(gray), sign_(polarity == WhiteOnBlack ? 1 : -1) {}

    /// The mean along a segment of how much darker (for dark symbols) the image is on its left, by the gradient.
    int Of(Site from, Site to) const;
    /// The same in total: what the sides of a hull add up to does not depend on how many of them there are.
    int Along(Site from, Site to) const;
    const Image& Gray() const { return gray_; }
    std::int64_t Steps() const { return steps_; } ///< pixels looked at so far
    bool Holds(XY place) const;

private:
    const Image& gray_;
    int sign_;
    mutable std::int64_t steps_ = 0;
};

/// The convex hull of rows, counterclockwise on the screen. Throws `std::bad_alloc`, as the others.
void HullOfRows(std::span<const RowExtent> rows, std::vector<Site>& hull);

/// Replaces the part of a convex hull that lies on one side of its longest chord by the reflection of the other, which
/// holds the vertex farthest from the chord: the far corner of a symbol of which the solid sides alone were found.
void CompleteHull(std::vector<Site>& hull);

/// The rows of a convex polygon, cut to that many.
void RowsOfPolygon(std::span<const Site> polygon, int height, std::vector<RowExtent>& rows);

/// Reduces a hull to four corners by moves, one vertex at a time, that keep the total cost of its sides least.
Quadrilateral ReduceHull(std::span<const Site> hull, const EdgeCosts& costs);

/// Moves each side by up to an eighteenth of its neighbours to where its cost is least.
Quadrilateral RefineSides(const Quadrilateral& outline, const EdgeCosts& costs);

/// Where the lines through two pairs of places meet; false if they are parallel.
bool Intersect(XY a, XY b, XY c, XY d, XY& meet);

} // namespace Tesk::matrix
