// Codabar: two or three of the seven elements of a character are wide. AIM BC3.
#include "read/linear/CodabarPatterns.h"
#include "read/linear/LinearFrame.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace Tesk::linear {

namespace {

constexpr auto charactersByMask = [] {
    std::array<char, 128> characters{};
    for (const CodabarCharacter& character : codabarCharacters)
        characters[TwoWidthMask(character.elements)] = character.character;
    return characters;
}();

/// The character of which the `wideCount` widest of seven elements are wide, or 0.
char CharacterOf(const Line& line, int first, const std::array<int, 7>& ranks, int wideCount, ElementSpread& spread)
{
    const unsigned wideElements = WideElements(ranks, 7 - wideCount);
    const char character = charactersByMask[wideElements];
    if (character == 0) return 0;
    std::int64_t wide = 0;
    for (int i = 0; i < 7; ++i)
        if (ranks[static_cast<std::size_t>(i)] >= 7 - wideCount) wide += line.Width(first + i);
    const std::int64_t narrow = line.Span(first, 7) - wide;
    // The greatest ratio of the widths is the same for both: 3.5 * 5 / (2 * 2), or 35 / 8.
    if (2 * wide < narrow) return 0;
    if (wideCount == 2 ? 4 * wide > 7 * narrow : 32 * wide > 105 * narrow) return 0;
    spread.Add(line, first, wideElements, 7);
    return character;
}

/// The character whose seven elements begin at `first`, or 0.
char ReadCharacter(const Line& line, int first, ElementSpread& spread)
{
    const std::array<int, 7> ranks = RanksOf<7>(line, first, 1, true);
    std::array<std::int64_t, 7> sorted;
    for (int i = 0; i < 7; ++i)
        sorted[static_cast<std::size_t>(6 - ranks[static_cast<std::size_t>(i)])] = line.Width(first + i);
    // The third widest element is a wide one if it is nearer to the second than to the fourth. Where that makes no
    // character, as bars and spaces of some prints differ in width, the other count may.
    const int wideCount = sorted[2] - sorted[3] > sorted[1] - sorted[2] ? 3 : 2;
    const char character = CharacterOf(line, first, ranks, wideCount, spread);
    return character != 0 ? character : CharacterOf(line, first, ranks, 5 - wideCount, spread);
}

bool IsFrame(char character)
{
    return character >= 'A' && character <= 'D';
}

/// Reads the symbol that begins at the edge `first`, as `ReadFromEachEdge` tells.
int ReadSymbol(const Line& line, int first)
{
    ElementSpread spread;
    char character = ReadCharacter(line, first, spread);
    if (!IsFrame(character)) return -1;
    Symbol symbol(CodeCodabar);
    int next = first;
    for (int count = 0;; ++count, next += 8) {
        if (count > maximumTextLength || next + 7 >= line.Edges()) return -1;
        // Gaps are as wide as an element, and never as a character.
        if (count > 0 && 2 * line.Width(next - 1) > line.Span(next - 8, 7)) return -1;
        character = ReadCharacter(line, next, spread);
        if (character == 0) return -1;
        symbol.Add(character);
        for (const CodabarCharacter& known : codabarCharacters)
            if (known.character == character) symbol.AddTwoWidth(TwoWidthMask(known.elements), 7);
        if (count > 0 && IsFrame(character)) break;
        symbol.AddPattern(1);
    }
    if (symbol.Text().size() < 3 || !spread.IsUniform()) return -1;
    const int last = next + 7, elements = last - first;
    if (!line.IsQuiet(first, last, 7 * line.Span(first, elements), elements + 1)) return -1;
    if (!LuhnHolds(symbol.Text())) symbol.Flag(ChecksumFailed);
    return line.Report(symbol, first);
}

} // namespace

bool DecodeCodabar(const Line& line)
{
    return ReadFromEachEdge(line, 24, [&](int first) { return ReadSymbol(line, first); });
}

} // namespace Tesk::linear
