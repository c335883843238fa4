// Lists of runs as sets of pixels: their algebra, and their erosion and dilation. All lists are in scan order, and so
// are the results; the runs of a row may overlap. What allocates may throw `std::bad_alloc`.
#pragma once

#include "foundation/Records.h"

#include <span>
#include <vector>

namespace Tesk::regions {

using RunList = std::vector<LabeledRun>;
using RunSpan = std::span<const LabeledRun>;

/// The pixels of a rectangle that are in no run. A rectangle reaches as far as the coordinates of runs do.
RunList Inverted(std::int64_t x, std::int64_t y, std::int64_t width, std::int64_t height, RunSpan src);
/// Runs that overlap or touch become one.
RunList United(RunSpan a, RunSpan b);
/// The overlaps of each pair of runs.
RunList Intersected(RunSpan a, RunSpan b);
/// What is left of each run of `a`.
RunList Subtracted(RunSpan a, RunSpan b);

/// Whether the lists are the same but for their labels.
bool IsSame(RunSpan a, RunSpan b);
/// How `a` lies to `b`, in terms of runs.
RangeMode ContainmentOf(RunSpan a, RunSpan b);

/// Half the extents of a structuring element: a stack of rows, each as wide as the box less what the diagonal cuts.
struct Element
{
    int halfWidth, diagonal, box; ///< `diagonal` steps narrow by a pixel each, `box` rows are of full width

    Element(int width, int height, int diagonalSize)
        : halfWidth(width >> 1), diagonal(diagonalSize >> 1), box((height >> 1) - diagonal)
    {}
};

RunList Eroded(RunSpan src, const Element& element);
RunList Dilated(RunSpan src, const Element& element);

} // namespace Tesk::regions
