// Row kernels of distance maps, compiled for every SIMD target. Sums saturate at the largest value of the type.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Tesk::kernels {

/// d[i] = min(s[i], s[i - step] + step, s[i + step] + step). `n` is rounded up to `rowStep`; a step is read on either
/// side.
void SpreadRow(const std::uint8_t* s, std::uint8_t* d, std::size_t n, std::size_t step);
void SpreadRow(const std::uint16_t* s, std::uint16_t* d, std::size_t n, std::size_t step);

/// d[i] = min(d[i], the least of others[i] and, if `diagonal`, of its two neighbours + 1). `n` is rounded up to
/// `rowStep`; one more pixel is read on either side of `others`.
void SweepRow(const std::uint8_t* others, std::uint8_t* d, std::size_t n, bool diagonal);
void SweepRow(const std::uint16_t* others, std::uint16_t* d, std::size_t n, bool diagonal);

/// squares[i] = min(squares[i], s[i - step] + step * step, s[i + step] + step * step) for `rowStep` steps from `first`
/// on (not above 256), as far as they can lower it; for `rowStep` pixels. The result is the largest of them.
std::uint16_t NearSquaresBlock(const std::uint16_t* s, std::uint16_t* squares, std::size_t first);

/// d[i] = the whole part of the square root of squares[i]. `n` is rounded up to `rowStep`.
void RootRow(const std::uint16_t* squares, std::uint8_t* d, std::size_t n);

} // namespace Tesk::kernels
