// The 3 x 3 filters of `Gray` images, one row kernel each.
#pragma once

#include "image/Image.h"
#include "image/filter/FilterKernels.h"

namespace Tesk::filters {

/// Two filters that differ in the treatment of results out of range: that for `Saturate`, and that for the other mode.
struct ClippedFilters
{
    kernels::Square3 saturated;
    GrayClipping other;
    kernels::Square3 otherwise;
};

/// A whole public method, refusals included.
void SquareFilter(const char* context, kernels::Square3 filter, const Image& src, Image& dst);
void SquareFilter(const char* context, const ClippedFilters& filters, GrayClipping clip, const Image& src, Image& dst);

/// The rows alone; `dst` has the size of `src`, and may be the same pixels. Throws `std::bad_alloc`.
void FilterSquares(kernels::Square3 filter, const Image& src, Image& dst);
/// The binomial mask 1 2 1 so many times; every pass but the first stays in the destination.
void FilterBinomially(int passes, const Image& src, Image& dst);

} // namespace Tesk::filters
