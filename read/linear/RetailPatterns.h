// The digits of the retail symbologies as widths. ISO/IEC 15420, tables 1 to 4.
#pragma once

#include <array>
#include <cstdint>

namespace Tesk::linear {

/// The widths of the ten digits in number set A, and C, whose bars are the spaces of A: rows 0 to 9; and in number set
/// B, which is C mirrored: rows 10 to 19.
constexpr std::array<std::array<std::uint8_t, 4>, 20> retailDigits = {{
    {3, 2, 1, 1}, {2, 2, 2, 1}, {2, 1, 2, 2}, {1, 4, 1, 1}, {1, 1, 3, 2}, {1, 2, 3, 1}, {1, 1, 1, 4},
    {1, 3, 1, 2}, {1, 2, 1, 3}, {3, 1, 1, 2}, {1, 1, 2, 3}, {1, 2, 2, 2}, {2, 2, 1, 2}, {1, 1, 4, 1},
    {2, 3, 1, 1}, {1, 3, 2, 1}, {4, 1, 1, 1}, {2, 1, 3, 1}, {3, 1, 2, 1}, {2, 1, 1, 3},
}};

/// The number sets of the left half of EAN-13 by the first digit, a bit a digit, the highest for the first: set for B.
constexpr std::array<unsigned, 10> firstDigitSets = {0b000000, 0b001011, 0b001101, 0b001110, 0b010011,
                                                     0b011001, 0b011100, 0b010101, 0b010110, 0b011010};

/// The number sets of UPC-E of number system 1 by the check digit; those of number system 0 are the opposite ones.
constexpr std::array<unsigned, 10> upceCheckSets = {0b000111, 0b001011, 0b001101, 0b001110, 0b010011,
                                                    0b011001, 0b011100, 0b010101, 0b010110, 0b011010};

} // namespace Tesk::linear
