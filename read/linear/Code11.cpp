// Code 11, of digits and dashes: five elements and a gap a character, one or two check characters. USS Code 11.
#include "read/linear/LinearFrame.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Tesk::linear {

namespace {

constexpr std::string_view characters = "0123456789-"; // by value
constexpr std::array<std::string_view, 12> patterns = {"NNNNW", "WNNNW", "NWNNW", "WWNNN", "NNWNW", "WNWNN",
                                                       "NWWNN", "NNNWW", "WNNWN", "WNNNN", "NNWNN", "NNWWN"};
constexpr int startStop = 11;

/// The value of the character whose five elements begin at `first`, or -1. Each one has narrow and wide elements.
int ReadCharacter(const Line& line, int first, ElementSpread& spread)
{
    std::int64_t least = INT64_MAX, most = 0;
    for (int i = 0; i < 5; ++i) {
        least = std::min(least, line.Width(first + i));
        most = std::max(most, line.Width(first + i));
    }
    if (2 * most < 3 * least || most > 5 * least) return -1;
    unsigned wide = 0;
    for (int i = 0; i < 5; ++i)
        wide = wide << 1 | (2 * line.Width(first + i) > least + most ? 1u : 0u);
    spread.Add(line, first, wide, 5);
    for (std::size_t value = 0; value < patterns.size(); ++value)
        if (TwoWidthMask(patterns[value]) == wide) return static_cast<int>(value);
    return -1;
}

/// Whether the last character is the check character, modulo 11, of those before it, whose weights run from 1 to
/// `weights` again and again, from the right.
bool HasCheckCharacter(std::string_view text, std::size_t weights)
{
    std::size_t sum = 0;
    for (std::size_t i = 0; i + 1 < text.size(); ++i)
        sum += (i % weights + 1) * characters.find(text[text.size() - 2 - i]);
    return text.size() > 1 && sum % 11 == characters.find(text.back());
}

bool IsValid(std::string_view text)
{
    constexpr std::size_t mostWithOneCheck = 11; // ten characters and C
    if (text.size() <= mostWithOneCheck) return HasCheckCharacter(text, 10);
    return HasCheckCharacter(text, 9) && HasCheckCharacter(text.substr(0, text.size() - 1), 10);
}

/// Reads the symbol that begins at the edge `first`, as `ReadFromEachEdge` tells.
int ReadSymbol(const Line& line, int first)
{
    ElementSpread spread;
    if (ReadCharacter(line, first, spread) != startStop) return -1;
    Symbol symbol(Code11);
    const auto addElements = [&](int value) {
        symbol.AddTwoWidth(TwoWidthMask(patterns[static_cast<std::size_t>(value)]), 5);
    };
    addElements(startStop);
    int next = first + 6;
    for (;; next += 6) {
        if (next + 5 >= line.Edges() || symbol.Text().size() > maximumTextLength) return -1;
        if (2 * line.Width(next - 1) > line.Span(next - 6, 5)) return -1;
        const int value = ReadCharacter(line, next, spread);
        if (value < 0) return -1;
        symbol.AddPattern(1);
        addElements(value);
        if (value == startStop) break;
        if (symbol.Text().size() == maximumTextLength) return -1;
        symbol.Add(characters[static_cast<std::size_t>(value)]);
    }
    if (symbol.Text().empty() || !spread.IsUniform()) return -1;
    const int last = next + 5, elements = last - first;
    if (!line.IsQuiet(first, last, 7 * line.Span(first, elements), elements + 1)) return -1;
    if (!IsValid(symbol.Text())) symbol.Flag(ChecksumFailed);
    return line.Report(symbol, first);
}

} // namespace

bool DecodeCode11(const Line& line)
{
    // A start, a character and a stop, with two gaps.
    return ReadFromEachEdge(line, 18, [&](int first) { return ReadSymbol(line, first); });
}

} // namespace Tesk::linear
