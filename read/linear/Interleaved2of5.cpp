// Interleaved 2 of 5, and ITF-14, which has 14 digits: one digit in the bars and one in the spaces. ISO/IEC 16390.
#include "read/linear/LinearFrame.h"
#include "read/linear/TwoOfFivePatterns.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Tesk::linear {

namespace {

/// The widths that a narrow element may have, by all elements so far.
struct NarrowWindow
{
    std::int64_t lower = 0, upper = INT64_MAX;

    void AddNarrow(std::int64_t width)
    {
        lower = std::max(lower, 2 * width / 5);
        upper = std::min(upper, 2 * width);
    }
    void AddWide(std::int64_t width)
    {
        lower = std::max(lower, width / 4);
        upper = std::min(upper, 2 * width / 5);
    }
    bool IsEmpty() const { return lower > upper; }
};

/// The digit of five elements, every second one from `first` on, which narrow the window down; -1 if there is none.
int ReadDigit(const Line& line, int first, NarrowWindow& window, ElementSpread& spread)
{
    const unsigned wide = WideElements(RanksOf<5>(line, first, 2, false), 3);
    for (int i = 0; i < 5; ++i) {
        const std::int64_t width = line.Width(first + 2 * i);
        spread.Add(line, first + 2 * i, wide >> (4 - i) & 1, 1);
        if (wide >> (4 - i) & 1)
            window.AddWide(width);
        else
            window.AddNarrow(width);
    }
    return window.IsEmpty() ? -1 : twoOfFiveByMask[wide];
}

void AddPair(int bars, int spaces, Symbol& symbol)
{
    for (std::size_t i = 0; i < 5; ++i)
        for (const int digit : {bars, spaces})
            symbol.AddPattern(twoOfFiveDigits[static_cast<std::size_t>(digit)][i] == 'W' ? 3 : 1);
    symbol.Add(static_cast<char>('0' + bars));
    symbol.Add(static_cast<char>('0' + spaces));
}

bool IsStop(const Line& line, int first, NarrowWindow window)
{
    if (first + 3 >= line.Edges()) return false;
    window.AddWide(line.Width(first));
    window.AddNarrow(line.Width(first + 1));
    window.AddNarrow(line.Width(first + 2));
    return !window.IsEmpty();
}

/// Reads the symbol that begins at the edge `first`, as `ReadFromEachEdge` tells.
int ReadSymbol(const Line& line, int first)
{
    NarrowWindow window;
    for (int i = 0; i < 4; ++i)
        window.AddNarrow(line.Width(first + i));
    if (window.IsEmpty()) return -1;
    Symbol symbol(Code2of5);
    symbol.AddPattern(1111);
    ElementSpread spread;
    spread.Add(line, first, 0, 4);
    int next = first + 4;
    while (next + 10 < line.Edges()) {
        NarrowWindow narrower = window;
        ElementSpread wider = spread;
        const int bars = ReadDigit(line, next, narrower, wider);
        const int spaces = bars < 0 ? -1 : ReadDigit(line, next + 1, narrower, wider);
        if (spaces < 0) break;
        if (symbol.Text().size() + 2 > maximumTextLength) return -1;
        window = narrower;
        spread = wider;
        AddPair(bars, spaces, symbol);
        next += 10;
    }
    if (symbol.Text().empty() || !IsStop(line, next, window)) return -1;
    spread.Add(line, next, 0b100, 3);
    if (!spread.IsUniform()) return -1;
    symbol.AddPattern(311);
    const int last = next + 3;
    // A pair has 18 modules where wide elements have three, and the frame nine.
    const std::int64_t pairs = static_cast<std::int64_t>(symbol.Text().size() / 2), thirds = 6 * pairs + 3;
    if (!line.IsQuiet(first, last, 8 * line.Span(first, last - first), 3 * thirds)) return -1;

    const std::string_view text = symbol.Text();
    const bool isValid = CheckDigit(text.substr(0, text.size() - 1)) == text.back() - '0';
    if (!isValid) symbol.Flag(ChecksumFailed);
    const LinearSettings& settings = line.settings;
    const bool isITF14 = settings.detectITF14 && text.size() == 14 && (isValid || !settings.detect2of5);
    if (!isITF14 && !settings.detect2of5) return -1;
    if (isITF14) symbol.SetSymbology(CodeITF14);
    return line.Report(symbol, first);
}

} // namespace

bool DecodeInterleaved2of5(const Line& line)
{
    return ReadFromEachEdge(line, 18, [&](int first) { return ReadSymbol(line, first); });
}

} // namespace Tesk::linear
