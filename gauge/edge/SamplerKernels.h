// Bilinear sums of pixels along a probe, compiled for every SIMD target.
#pragma once

#include "gauge/edge/ProbeSampler.h"

#include <cstddef>
#include <cstdint>

namespace Tesk::kernels {

/// A gray picture whose bytes are all within 2^31 of the first one.
struct GrayRows
{
    const std::uint8_t* first;
    std::int32_t pitch;
};

/// The sums for a probe that keeps clear of the border by two pixels; `half` is added to each before it is truncated.
void BilinearSums(const GrayRows& rows, const edges::ProbeGrid& grid, double half, std::int32_t* samples);

// The definition of the above, for any picture, and of one of the sums.
void BilinearSumsPlain(const GrayRows& rows, const edges::ProbeGrid& grid, double half, std::int32_t* samples);
std::int32_t BilinearSum(const GrayRows& rows, const edges::ProbeGrid& grid, int i, double half);

} // namespace Tesk::kernels
