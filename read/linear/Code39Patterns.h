// The characters of Code 39 as narrow and wide elements, and the pairs of characters that stand for the full ASCII set.
// ISO/IEC 16388, tables 1 and A.1.
#pragma once

#include <array>
#include <string_view>

namespace Tesk::linear {

struct Code39Character
{
    char character;
    std::string_view elements;
};

/// In the order of their values in the check character; the last one is the start and stop character.
constexpr std::array<Code39Character, 44> code39Characters = {{
    {'0', "NNNWWNWNN"}, {'1', "WNNWNNNNW"}, {'2', "NNWWNNNNW"}, {'3', "WNWWNNNNN"}, {'4', "NNNWWNNNW"},
    {'5', "WNNWWNNNN"}, {'6', "NNWWWNNNN"}, {'7', "NNNWNNWNW"}, {'8', "WNNWNNWNN"}, {'9', "NNWWNNWNN"},
    {'A', "WNNNNWNNW"}, {'B', "NNWNNWNNW"}, {'C', "WNWNNWNNN"}, {'D', "NNNNWWNNW"}, {'E', "WNNNWWNNN"},
    {'F', "NNWNWWNNN"}, {'G', "NNNNNWWNW"}, {'H', "WNNNNWWNN"}, {'I', "NNWNNWWNN"}, {'J', "NNNNWWWNN"},
    {'K', "WNNNNNNWW"}, {'L', "NNWNNNNWW"}, {'M', "WNWNNNNWN"}, {'N', "NNNNWNNWW"}, {'O', "WNNNWNNWN"},
    {'P', "NNWNWNNWN"}, {'Q', "NNNNNNWWW"}, {'R', "WNNNNNWWN"}, {'S', "NNWNNNWWN"}, {'T', "NNNNWNWWN"},
    {'U', "WWNNNNNNW"}, {'V', "NWWNNNNNW"}, {'W', "WWWNNNNNN"}, {'X', "NWNNWNNNW"}, {'Y', "WWNNWNNNN"},
    {'Z', "NWWNWNNNN"}, {'-', "NWNNNNWNW"}, {'.', "WWNNNNWNN"}, {' ', "NWWNNNWNN"}, {'$', "NWNWNWNNN"},
    {'/', "NWNWNNNWN"}, {'+', "NWNNNWNWN"}, {'%', "NNNWNWNWN"}, {'*', "NWNNWNWNN"},
}};

/// What a letter means behind a shift character, `$`, `%`, `/` or `+`, which Code 93 has too; -1 if nothing.
constexpr int ShiftedCharacter(char shift, char letter)
{
    if (letter < 'A' || letter > 'Z') return -1;
    const int place = letter - 'A';
    switch (shift) {
    case '$':
        return 1 + place;
    case '+':
        return 'a' + place;
    case '/': // punctuation, the digits from P to Y, and the colon
        return letter <= 'O' ? '!' + place : letter <= 'Y' ? '0' + (letter - 'P') : ':';
    case '%':
        if (letter <= 'E') return 27 + place;
        if (letter <= 'J') return ';' + (letter - 'F');
        if (letter <= 'O') return '[' + (letter - 'K');
        if (letter <= 'T') return '{' + (letter - 'P');
        return letter == 'U' ? 0 : letter == 'V' ? '@' : letter == 'W' ? '`' : 127;
    default:
        return -1;
    }
}

} // namespace Tesk::linear
