// Row kernels of morphology, for 8-bit and 16-bit pixels: each compiled for every SIMD target, beside the plain loop
// that defines its result.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Tesk::kernels {

enum class Extremum
{
    Maximum,
    Minimum
};

/// Rows are padded to a multiple of this, where kernels run over their ends.
inline constexpr std::size_t rowStep = 64;

inline constexpr int mostRows = 5, mostPairedRows = 10;

/// d[i] = the extremum of rows[0][i] to rows[count - 1][i], for `count` from 2 to `mostRows`. `d` may be one of the
/// rows; nothing outside `n` pixels is read or written.
void ExtremumRow(Extremum Which, const std::uint8_t* const* rows, int count, std::uint8_t* d, std::size_t n);
void ExtremumRow(Extremum Which, const std::uint16_t* const* rows, int count, std::uint16_t* d, std::size_t n);

/// Two results at once, which have all rows but one in common: d0[i] of rows[0] to rows[count - 2], d1[i] of rows[1] to
/// rows[count - 1], for an even `count` from 4 to `mostPairedRows`. `d0` and `d1` are none of the rows.
void ExtremumRowPair(Extremum Which, const std::uint8_t* const* rows, int count, std::uint8_t* d0, std::uint8_t* d1,
                     std::size_t n);
void ExtremumRowPair(Extremum Which, const std::uint16_t* const* rows, int count, std::uint16_t* d0, std::uint16_t* d1,
                     std::size_t n);

/// d[i] = the extremum of d[i], d[i + step], ... d[i + 3 step] as they were before. Writes `n` pixels rounded up to
/// `rowStep`, and reads as many and 3 step.
void WidenExtremumRow(Extremum Which, std::uint8_t* d, std::size_t n, std::size_t step);
void WidenExtremumRow(Extremum Which, std::uint16_t* d, std::size_t n, std::size_t step);

/// running[i] = the extremum of running[i] and s[i], then d[i] that of running[i] and others[i].
void RunExtremumRow(Extremum Which, const std::uint8_t* s, std::uint8_t* running, const std::uint8_t* others,
                    std::uint8_t* d, std::size_t n);
void RunExtremumRow(Extremum Which, const std::uint16_t* s, std::uint16_t* running, const std::uint16_t* others,
                    std::uint16_t* d, std::size_t n);

} // namespace Tesk::kernels
