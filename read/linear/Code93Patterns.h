// The characters of Code 93 as the widths of their elements, by value. AIM BC5, table 1.
#pragma once

#include <array>
#include <string_view>

namespace Tesk::linear {

/// Six widths as decimal digits; 43 to 46 are the shifts, and 47 is the start and stop character.
constexpr std::array<int, 48> code93Patterns = {
    131112, 111213, 111312, 111411, 121113, 121212, 121311, 111114, 131211, 141111, 211113, 211212,
    211311, 221112, 221211, 231111, 112113, 112212, 112311, 122112, 132111, 111123, 111222, 111321,
    121122, 131121, 212112, 212211, 211122, 211221, 221121, 222111, 112122, 112221, 122121, 123111,
    121131, 311112, 311211, 321111, 112131, 113121, 211131, 121221, 312111, 311121, 122211, 111141};

/// The characters of the values 0 to 42, and which shift of Code 39 those of 43 to 46 are.
constexpr std::string_view code93Characters = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ-. $/+%$%/+";

} // namespace Tesk::linear
