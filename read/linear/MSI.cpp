// MSI, a modified Plessey code: each bit of a digit is a bar and a space of three modules together.
#include "read/linear/LinearFrame.h"

#include <cstdint>

namespace Tesk::linear {

namespace {

/// Whether an element is narrow where a digit's eight elements are `digitWidth` wide.
bool IsNarrow(std::int64_t width, std::int64_t digitWidth)
{
    return 8 * width < digitWidth;
}

/// The digit whose eight elements begin at `first`, or -1.
int ReadDigit(const Line& line, int first, ElementSpread& spread)
{
    const std::int64_t width = line.Span(first, 8);
    int digit = 0;
    for (int i = 0; i < 8; i += 2) {
        const bool isZero = IsNarrow(line.Width(first + i), width);
        if (isZero == IsNarrow(line.Width(first + i + 1), width)) return -1;
        spread.Add(line, first + i, isZero ? 0b01 : 0b10, 2);
        digit = 2 * digit + (isZero ? 0 : 1);
    }
    return digit < 10 ? digit : -1;
}

/// Reads the symbol that begins at the edge `first`, as `ReadFromEachEdge` tells.
int ReadSymbol(const Line& line, int first)
{
    const std::int64_t firstWidth = line.Span(first + 2, 8);
    if (IsNarrow(line.Width(first), firstWidth) || !IsNarrow(line.Width(first + 1), firstWidth)) return -1;
    Symbol symbol(CodeMSI);
    symbol.AddPattern(21);
    ElementSpread spread;
    spread.Add(line, first, 0b10, 2);
    int next = first + 2;
    for (; next + 8 < line.Edges(); next += 8) {
        const int digit = ReadDigit(line, next, spread);
        if (digit < 0) break;
        if (symbol.Text().size() == maximumTextLength) return -1;
        symbol.Add(static_cast<char>('0' + digit));
        for (int bit = 3; bit >= 0; --bit)
            symbol.AddPattern(digit >> bit & 1 ? 21 : 12);
    }
    if (symbol.Text().empty() || next + 3 >= line.Edges()) return -1;
    const std::int64_t lastWidth = line.Span(next - 8, 8);
    if (!IsNarrow(line.Width(next), lastWidth) || IsNarrow(line.Width(next + 1), lastWidth) ||
        !IsNarrow(line.Width(next + 2), lastWidth))
        return -1;
    spread.Add(line, next, 0b010, 3);
    if (!spread.IsUniform()) return -1;
    symbol.AddPattern(121);
    const int last = next + 3;
    const std::int64_t modules = 12 * static_cast<std::int64_t>(symbol.Text().size()) + 7;
    if (!line.IsQuiet(first, last, 8 * line.Span(first, last - first), modules)) return -1;
    if (!LuhnHolds(symbol.Text())) symbol.Flag(ChecksumFailed);
    return line.Report(symbol, first);
}

} // namespace

bool DecodeMSI(const Line& line)
{
    return ReadFromEachEdge(line, 14, [&](int first) { return ReadSymbol(line, first); });
}

} // namespace Tesk::linear
