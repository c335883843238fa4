// Kernels of the Gaussians, which are boxes in a cascade: as one weighted mask while that is small, and as combs and
// running sums beyond. Compiled for every SIMD target, beside the plain loops that define the results.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Tesk::kernels {

/// Three boxes in a cascade, of odd widths whose product is at most 628575, as combs and running sums modulo 2^32.
struct Cascade
{
    std::size_t widths[3];
    std::size_t Reach() const { return (widths[0] + widths[1] + widths[2] - 3) / 2; }
    /// Lines of zeros that stand before the first line of a strip.
    std::size_t Before() const { return widths[0] + widths[1] + widths[2]; }
    std::uint32_t Product() const { return static_cast<std::uint32_t>(widths[0] * widths[1] * widths[2]); }
};

inline constexpr std::size_t stripLanes = 16;

/// The largest radius of a mask: beyond it the sums of bytes leave 16 bits.
inline constexpr int largestMaskRadius = 8;

/// A symmetric mask of 2 * radius + 1 weights, whose sum is odd and at most 255.
struct Mask
{
    int radius;
    std::uint16_t weights[largestMaskRadius + 1]; ///< the first one outermost, the one at `radius` in the middle
    std::uint16_t sum;

    /// The boxes convolved, if their reach is at most `largestMaskRadius`.
    explicit Mask(const Cascade& Boxes);
};

/// d[i] is the weighted sum of `lines[k][i]`, for k from 0 to 2 * radius, divided by the sum of the weights. The lines
/// are rows around the current one, or one row at successive columns, all in working buffers with 128 bytes behind.
void MaskRow(const Mask& Weights, const std::uint8_t* const* lines, std::uint8_t* d, std::size_t n);

/// Filters `stripLanes` columns, `n` lines down. `s` is the first of `n + 2 * Reach()` lines of 16 bytes, the ends
/// replicated by the caller, with `Before()` lines of zeros before it. The result is divided by the product of the
/// widths.
void CascadeStrip(const Cascade& Boxes, const std::uint8_t* s, std::uint8_t* d, std::size_t n);

// The definitions of the above.
void CascadeStripPlain(const Cascade& Boxes, const std::uint8_t* s, std::uint8_t* d, std::size_t n);
void MaskRowPlain(const Mask& Weights, const std::uint8_t* const* lines, std::uint8_t* d, std::size_t n);

} // namespace Tesk::kernels
