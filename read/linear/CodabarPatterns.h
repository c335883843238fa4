// The characters of Codabar as narrow and wide elements. AIM BC3, table 1.
#pragma once

#include <array>
#include <string_view>

namespace Tesk::linear {

struct CodabarCharacter
{
    char character;
    std::string_view elements;
};

/// The last four are start and stop characters.
constexpr std::array<CodabarCharacter, 20> codabarCharacters = {{
    {'0', "NNNNNWW"}, {'1', "NNNNWWN"}, {'2', "NNNWNNW"}, {'3', "WWNNNNN"}, {'4', "NNWNNWN"},
    {'5', "WNNNNWN"}, {'6', "NWNNNNW"}, {'7', "NWNNWNN"}, {'8', "NWWNNNN"}, {'9', "WNNWNNN"},
    {'-', "NNNWWNN"}, {'$', "NNWWNNN"}, {':', "WNNNWNW"}, {'/', "WNWNNNW"}, {'.', "WNWNWNN"},
    {'+', "NNWNWNW"}, {'A', "NNWWNWN"}, {'B', "NWNWNNW"}, {'C', "NNNWNWW"}, {'D', "NNNWWWN"},
}};

} // namespace Tesk::linear
