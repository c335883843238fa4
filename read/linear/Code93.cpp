// Code 93: six elements and nine modules a character, two check characters. AIM BC5.
#include "read/linear/Code39Patterns.h"
#include "read/linear/Code93Patterns.h"
#include "read/linear/LinearFrame.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace Tesk::linear {

namespace {

constexpr int modules = 9; // of a character
constexpr int startStop = 47, firstShift = 43;
constexpr int quietModules = 8; // of the 10 that are printed, as in Code 128

/// The value of each combination of six widths of 1 to 4, -1 where there is none.
constexpr auto valuesByWidths = [] {
    std::array<std::int8_t, 4096> values{};
    values.fill(-1);
    for (std::size_t value = 0; value < code93Patterns.size(); ++value) {
        std::size_t index = 0;
        for (int unit = 100000; unit > 0; unit /= 10)
            index = index * 4 + static_cast<std::size_t>(code93Patterns[value] / unit % 10 - 1);
        values[index] = static_cast<std::int8_t>(value);
    }
    return values;
}();

/// The width of an element in modules of a character that is `width` wide.
std::int64_t ModulesOf(std::int64_t element, std::int64_t width)
{
    return (modules * element + width / 2) / width;
}

/// The value of the character whose six elements begin at `first`, or -1.
int ReadCharacter(const Line& line, int first)
{
    const std::int64_t width = line.Span(first, 6);
    if (width <= 0) return -1;
    std::size_t index = 0;
    for (int i = 0; i < 6; ++i) {
        const std::int64_t element = ModulesOf(line.Width(first + i), width);
        if (element < 1 || element > 4) return -1;
        index = index * 4 + static_cast<std::size_t>(element - 1);
    }
    return valuesByWidths[index];
}

/// Whether the last value is the check character of those before it, whose weights run from 1 to `weights` again and
/// again, from the right.
bool HasCheckCharacter(std::span<const std::uint8_t> values, std::size_t weights)
{
    std::size_t sum = 0;
    for (std::size_t i = 0; i + 1 < values.size(); ++i)
        sum += (i % weights + 1) * values[values.size() - 2 - i];
    return sum % 47 == values.back();
}

bool AddText(std::span<const std::uint8_t> values, Symbol& symbol)
{
    for (std::size_t i = 0; i < values.size(); ++i) {
        const char character = code93Characters[values[i]];
        if (values[i] < firstShift) {
            symbol.Add(character);
            continue;
        }
        if (++i == values.size()) return false;
        const int shifted = ShiftedCharacter(character, code93Characters[values[i]]);
        if (shifted < 0) return false;
        symbol.Add(static_cast<char>(shifted));
    }
    return true;
}

/// Reads the symbol that begins at the edge `first`, as `ReadFromEachEdge` tells.
int ReadSymbol(const Line& line, int first)
{
    // The fifth element of the start character is much wider than its neighbours: most edges are passed here.
    const std::int64_t widest = line.Width(first + 4);
    if (widest <= line.Width(first + 3) || widest <= line.Width(first + 5)) return -1;
    if (ReadCharacter(line, first) != startStop) return -1;
    Symbol symbol(Code93);
    symbol.AddPattern(code93Patterns[startStop]);
    std::array<std::uint8_t, 2 * maximumTextLength + 2> values;
    std::size_t count = 0;
    int next = first + 6;
    for (;; next += 6) {
        if (next + 7 >= line.Edges()) return -1;
        const int value = ReadCharacter(line, next);
        if (value < 0) return -1;
        symbol.AddPattern(code93Patterns[static_cast<std::size_t>(value)]);
        if (value == startStop) break;
        if (count == values.size()) return -1;
        values[count++] = static_cast<std::uint8_t>(value);
    }
    if (count < 3 || ModulesOf(line.Width(next + 6), line.Span(next, 6)) != 1) return -1;
    symbol.AddPattern(1);
    const std::span<const std::uint8_t> all = std::span(values).first(count);
    if (!HasCheckCharacter(all, 15) || !HasCheckCharacter(all.first(count - 1), 20)) return -1;
    const int last = next + 7, elements = last - first;
    const std::int64_t total = line.Span(first, elements);
    if (!line.IsQuiet(first, last, quietModules * total, modules * (elements / 6) + 1)) return -1;
    return AddText(all.first(count - 2), symbol) ? line.Report(symbol, first) : -1;
}

} // namespace

bool DecodeCode93(const Line& line)
{
    // A start, a character, two check characters, a stop and the terminator.
    return ReadFromEachEdge(line, 32, [&](int first) { return ReadSymbol(line, first); });
}

} // namespace Tesk::linear
