// Row kernels of sums over boxes, and of the means and deviations that they give: each written once with Highway,
// beside the plain loop that defines its result. Rows of working buffers have room for 128 bytes behind them, which may
// be read; the rows of images, and all that is written, end where they end.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Tesk::kernels {

/// sums[i] += enter[i] - leave[i], where `enter` and `leave` are rows of an image.
void MoveSums(const std::uint8_t* enter, const std::uint8_t* leave, std::uint16_t* sums, std::size_t n);
void MoveSums(const std::uint16_t* enter, const std::uint16_t* leave, std::uint32_t* sums, std::size_t n);
/// sums[i] += enter[i]^2 - leave[i]^2.
void MoveSquares(const std::uint8_t* enter, const std::uint8_t* leave, std::uint32_t* sums, std::size_t n);

/// p[0] = 0, p[i + 1] = p[i] + s[i] for `n` values, modulo the range of the type: differences are exact where the true
/// ones fit. The spare room behind `p` may be written.
void PrefixSums(const std::uint16_t* s, std::uint16_t* p, std::size_t n);
void PrefixSums(const std::uint16_t* s, std::uint32_t* p, std::size_t n);
void PrefixSums(const std::uint32_t* s, std::uint32_t* p, std::size_t n);

/// d[i] = (p[i + width] - p[i]) / N, for odd N: up to 255 in 16 bits, up to 65025 in 32 bits. The quotient must fit.
void QuotientRow(const std::uint16_t* p, std::size_t width, std::uint8_t* d, std::size_t n, std::uint32_t N);
void QuotientRow(const std::uint32_t* p, std::size_t width, std::uint8_t* d, std::size_t n, std::uint32_t N);
void QuotientRow(const std::uint32_t* p, std::size_t width, std::uint16_t* d, std::size_t n, std::uint32_t N);

/// d[i] = trunc(sqrt(N Q - S S) / N) with S and Q the differences, over `width`, of the prefix sums of values and
/// squares.
void DeviationRow(const std::uint32_t* s, const std::uint32_t* q, std::size_t width, std::uint8_t* d, std::size_t n,
                  std::uint32_t N);

// The definitions of the above.
void MoveSumsPlain(const std::uint8_t* enter, const std::uint8_t* leave, std::uint16_t* sums, std::size_t n);
void MoveSumsPlain(const std::uint16_t* enter, const std::uint16_t* leave, std::uint32_t* sums, std::size_t n);
void MoveSquaresPlain(const std::uint8_t* enter, const std::uint8_t* leave, std::uint32_t* sums, std::size_t n);
void PrefixSumsPlain(const std::uint16_t* s, std::uint16_t* p, std::size_t n);
void PrefixSumsPlain(const std::uint16_t* s, std::uint32_t* p, std::size_t n);
void PrefixSumsPlain(const std::uint32_t* s, std::uint32_t* p, std::size_t n);
void QuotientRowPlain(const std::uint16_t* p, std::size_t width, std::uint8_t* d, std::size_t n, std::uint32_t N);
void QuotientRowPlain(const std::uint32_t* p, std::size_t width, std::uint8_t* d, std::size_t n, std::uint32_t N);
void QuotientRowPlain(const std::uint32_t* p, std::size_t width, std::uint16_t* d, std::size_t n, std::uint32_t N);
void DeviationRowPlain(const std::uint32_t* s, const std::uint32_t* q, std::size_t width, std::uint8_t* d,
                       std::size_t n, std::uint32_t N);

} // namespace Tesk::kernels
