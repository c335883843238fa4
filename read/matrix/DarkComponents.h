// The connected dark regions of an image as lists of runs.
#pragma once

#include "foundation/DisjointSets.h"
#include "foundation/Records.h"
#include "image/Image.h"

#include <cstdint>
#include <span>
#include <vector>

namespace Tesk::matrix {

/// Neighbouring dark pixels of a row.
struct DarkRun
{
    int first, end; ///< `end` is two behind the last pixel: runs that touch, diagonals included, overlap by it
    int y;
    int label;

    int Last() const { return end - 2; }
    int Length() const { return end - 1 - first; }
};

struct DarkComponent
{
    std::size_t firstRun, endRun;
    std::int64_t area; ///< pixels
};

/// The extent of something on a row.
struct RowExtent
{
    int y, first, last;
};

/// What tells a compact component from a scattered one.
struct ComponentShape
{
    XY centroid;
    bool dense;      ///< its pixels fill over a third of the spans of its rows
    double aspect;   ///< of the ellipse of its moments: the short axis over the long one
    bool atFarEdges; ///< it reaches the last two columns or rows, where runs may be cut
};

/// Labels 8-connected regions; keeps its tables from one image to the next.
class DarkComponents
{
public:
    /// Finds the regions of pixels below a threshold that have at least `leastArea` pixels, the largest first; of equal
    /// ones the upper. Throws `std::bad_alloc`.
    void Find(const Image& gray, int threshold, std::int64_t leastArea);

    std::span<const DarkComponent> All() const { return components_; }
    /// Its runs, row by row.
    std::span<const DarkRun> RunsOf(const DarkComponent& component) const
    {
        return std::span(sorted_).subspan(component.firstRun, component.endRun - component.firstRun);
    }
    /// All runs of a row, of whatever region, from left to right.
    std::span<const DarkRun> RunsOfRow(int y) const
    {
        const auto row = static_cast<std::size_t>(y);
        return std::span(runs_).subspan(rows_[row], rows_[row + 1] - rows_[row]);
    }
    ComponentShape ShapeOf(const DarkComponent& component) const;
    /// The rows of a region from its leftmost to its rightmost pixel.
    void ExtentsOf(const DarkComponent& component, std::vector<RowExtent>& extents) const;

private:
    void ScanRow(const Image& gray, int y, int threshold);
    int LabelOf(const DarkRun& run, std::size_t& above, std::size_t aboveEnd);
    void Sort(std::int64_t leastArea);

    int width_ = 0, height_ = 0;
    std::vector<std::int32_t> edges_;
    std::vector<DarkRun> runs_, sorted_;
    std::vector<std::size_t> rows_; ///< where the runs of each row begin
    DisjointSets labels_;           ///< a set for each region
    std::vector<std::size_t> starts_;
    std::vector<DarkComponent> components_;
};

} // namespace Tesk::matrix
