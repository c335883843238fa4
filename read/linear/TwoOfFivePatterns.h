// The digits of the 2 of 5 symbologies as narrow and wide elements. ISO/IEC 16390, table 1.
#pragma once

#include "read/linear/LinearFrame.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Tesk::linear {

constexpr std::array<std::string_view, 10> twoOfFiveDigits = {"NNWWN", "WNNNW", "NWNNW", "WWNNN", "NNWNW",
                                                              "WNWNN", "NWWNN", "NNNWW", "WNNWN", "NWNWN"};

/// The digit of each mask of five elements, -1 where there is none.
constexpr auto twoOfFiveByMask = [] {
    std::array<std::int8_t, 32> digits{};
    digits.fill(-1);
    for (std::size_t digit = 0; digit < twoOfFiveDigits.size(); ++digit)
        digits[TwoWidthMask(twoOfFiveDigits[digit])] = static_cast<std::int8_t>(digit);
    return digits;
}();

} // namespace Tesk::linear
