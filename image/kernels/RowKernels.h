// Row kernels on bytes: each written once with Highway, compiled for every SIMD target, beside the plain loop that
// defines its result.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Tesk::kernels {

/// Operations on two bytes of the same place.
enum class BytePair
{
    AddSaturated,      ///< min(255, a + b)
    SubtractSaturated, ///< max(0, a - b)
    Difference,        ///< |a - b|
    Maximum,
    Minimum,
    And,
    Or,
    Xor,
    AddHalved,     ///< (a + b) >> 1
    SubtractHalved ///< (a - b + 255) >> 1
};

/// d[i] = a[i] op b[i] for `n` bytes, at the SIMD level in force. Rows may be the same, at the same place. Nothing
/// outside the rows is read or written.
void BytePairRow(BytePair Operation, const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* d, std::size_t n);

/// d[i] = (a[i] * A + b[i] * (256 - A)) >> 8, for A from 0 to 256.
void BlendRow(const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* d, std::size_t n, int A);

/// d[i] = s[i] > Threshold ? High : Low.
void ThresholdRow(const std::uint8_t* s, std::uint8_t* d, std::size_t n, std::uint8_t Threshold, std::uint8_t High,
                  std::uint8_t Low);

/// d[i] = Table[s[i]].
void LookupRow(const std::uint8_t* s, std::uint8_t* d, std::size_t n, const std::uint8_t Table[256]);

/// d[i] = the largest of s[3 i], s[3 i + 1], s[3 i + 2].
void LargestOfThreeRow(const std::uint8_t* s, std::uint8_t* d, std::size_t n);

/// d[i] = s[i] << Shift, for shifts from 0 to 8.
void WidenRow(const std::uint8_t* s, std::uint16_t* d, std::size_t n, int Shift);

/// Adds the `n` bytes to `Sum`, and their squares to `Squares`.
void MomentsRow(const std::uint8_t* s, std::size_t n, std::uint64_t& Sum, std::uint64_t& Squares);
/// The same of 16-bit pixels, each at most `Largest`.
void MomentsRow(const std::uint16_t* s, std::size_t n, std::uint16_t Largest, std::uint64_t& Sum,
                std::uint64_t& Squares);

// The definitions of the above.
void MomentsRowPlain(const std::uint8_t* s, std::size_t n, std::uint64_t& Sum, std::uint64_t& Squares);
void MomentsRowPlain(const std::uint16_t* s, std::size_t n, std::uint16_t Largest, std::uint64_t& Sum,
                     std::uint64_t& Squares);
void LookupRowPlain(const std::uint8_t* s, std::uint8_t* d, std::size_t n, const std::uint8_t Table[256]);
void LargestOfThreeRowPlain(const std::uint8_t* s, std::uint8_t* d, std::size_t n);
void WidenRowPlain(const std::uint8_t* s, std::uint16_t* d, std::size_t n, int Shift);
void BytePairRowPlain(BytePair Operation, const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* d, std::size_t n);
void BlendRowPlain(const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* d, std::size_t n, int A);
void ThresholdRowPlain(const std::uint8_t* s, std::uint8_t* d, std::size_t n, std::uint8_t Threshold, std::uint8_t High,
                       std::uint8_t Low);

} // namespace Tesk::kernels
