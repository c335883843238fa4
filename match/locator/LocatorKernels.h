// The sums under all scores of a locator, over pixels and over gradients, with the plain loops that define them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Tesk::kernels {

/// The pixels of a run are followed by zeros up to a multiple of this; as many bytes, less one, are read behind the
/// last pixel of a run of an image.
inline constexpr std::size_t runStep = 32;

/// A run of the pattern, in bytes from the pixel under its origin.
struct PatternRun
{
    std::ptrdiff_t offset;
    std::size_t length;

    std::size_t Padded() const { return (length + runStep - 1) / runStep * runStep; }
};

struct RunSums
{
    std::int64_t image = 0, squares = 0, products = 0;
    bool operator==(const RunSums&) const = default;
};

/// The sums of I, I * I and T * I over the runs, for `steps` origins that follow each other; `pattern` holds T, run by
/// run, each padded.
void SumRuns(const std::uint8_t* image, const PatternRun* runs, std::size_t count, const std::uint8_t* pattern,
             RunSums* sums, std::size_t steps);
void SumRunsPlain(const std::uint8_t* image, const PatternRun* runs, std::size_t count, const std::uint8_t* pattern,
                  RunSums* sums, std::size_t steps);

/// Whether all bytes of a mask under the runs are at least 128.
bool CoversRuns(const std::uint8_t* mask, const PatternRun* runs, std::size_t count);
bool CoversRunsPlain(const std::uint8_t* mask, const PatternRun* runs, std::size_t count);

struct VectorSums
{
    std::int64_t dot = 0, energy = 0;
    bool operator==(const VectorSums&) const = default;
};

/// The sums of t * g and g * g over the vectors `pattern` and those of `gradient` at offsets, both pairs of two 16-bit
/// numbers, for `steps` origins that follow each other. Components of the gradient are at most 767.
void SumVectors(const std::int32_t* gradient, const std::int32_t* offsets, const std::int32_t* pattern,
                std::size_t count, VectorSums* sums, std::size_t steps);
void SumVectorsPlain(const std::int32_t* gradient, const std::int32_t* offsets, const std::int32_t* pattern,
                     std::size_t count, VectorSums* sums, std::size_t steps);

} // namespace Tesk::kernels
