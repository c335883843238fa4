// Matrix 2 of 5: a digit in three bars and the two spaces between them, and a gap. The digits are those of ISO/IEC
// 16390.
#include "read/linear/LinearFrame.h"
#include "read/linear/TwoOfFivePatterns.h"

#include <algorithm>
#include <cstdint>

namespace Tesk::linear {

namespace {

/// The extremes of the wide and the narrow elements of a character.
struct Extremes
{
    std::int64_t narrowMost = 0, narrowLeast = INT64_MAX, wideMost = 0, wideLeast = INT64_MAX;
};

Extremes ExtremesOf(const Line& line, int first, unsigned wide)
{
    Extremes extremes;
    for (int i = 0; i < 5; ++i) {
        const std::int64_t width = line.Width(first + i);
        const bool isWide = wide >> (4 - i) & 1;
        std::int64_t& most = isWide ? extremes.wideMost : extremes.narrowMost;
        std::int64_t& least = isWide ? extremes.wideLeast : extremes.narrowLeast;
        most = std::max(most, width);
        least = std::min(least, width);
    }
    return extremes;
}

/// The digit whose elements begin at `first`, or -1. The wide elements are alike, which sets the stop character apart,
/// and at most five times as wide as the narrow ones.
int ReadDigit(const Line& line, int first, ElementSpread& spread)
{
    const unsigned wide = WideElements(RanksOf<5>(line, first, 1, false), 3);
    const int digit = twoOfFiveByMask[wide];
    if (digit < 0) return -1;
    const Extremes extremes = ExtremesOf(line, first, wide);
    const bool fits = extremes.wideMost <= 5 * extremes.narrowLeast && extremes.wideMost <= 2 * extremes.wideLeast &&
                      4 * extremes.wideLeast >= 5 * extremes.narrowMost;
    if (!fits) return -1;
    spread.Add(line, first, wide, 5);
    return digit;
}

/// Whether a start or stop character, one wide element before four narrow ones, begins at `first`.
bool IsFrame(const Line& line, int first)
{
    const Extremes extremes = ExtremesOf(line, first, 0b10000);
    return 2 * extremes.wideMost >= 3 * extremes.narrowMost && 4 * extremes.wideMost <= 5 * line.Span(first + 1, 4);
}

/// A gap is as wide as a narrow element, and not wider than a whole half of the character before it; and characters of
/// one symbol are about as wide as each other: of 7 to 9 modules.
bool Joins(const Line& line, int first, int next)
{
    const std::int64_t before = line.Span(first, 5), behind = line.Span(next, 5);
    return 2 * line.Width(next - 1) <= before && 2 * before <= 3 * behind && 2 * behind <= 3 * before;
}

/// Reads the symbol that begins at the edge `first`, as `ReadFromEachEdge` tells.
int ReadSymbol(const Line& line, int first)
{
    if (!IsFrame(line, first)) return -1;
    Symbol symbol(CodeMatrix2of5);
    symbol.AddPattern(311111);
    ElementSpread spread;
    // The wide bar of the frame may be wider than those of digits: only its narrow elements are compared with theirs.
    spread.Add(line, first + 1, 0, 5);
    int next = first + 6;
    for (;; next += 6) {
        if (next + 5 >= line.Edges() || !Joins(line, next - 6, next)) return -1;
        const int digit = ReadDigit(line, next, spread);
        if (digit < 0) break;
        symbol.AddTwoWidth(TwoWidthMask(twoOfFiveDigits[static_cast<std::size_t>(digit)]), 5);
        symbol.AddPattern(1);
        symbol.Add(static_cast<char>('0' + digit));
        if (symbol.Text().size() == maximumTextLength) return -1;
    }
    if (symbol.Text().empty() || !IsFrame(line, next)) return -1;
    spread.Add(line, next + 1, 0, 4);
    if (!spread.IsUniform()) return -1;
    symbol.AddPattern(31111);
    const int last = next + 5;
    // A digit has 10 modules with its gap where wide elements have three, and the frame 15.
    const std::int64_t modules = 10 * static_cast<std::int64_t>(symbol.Text().size()) + 15;
    if (!line.IsQuiet(first, last, 8 * line.Span(first, last - first), modules)) return -1;
    return line.Report(symbol, first);
}

} // namespace

bool DecodeMatrix2of5(const Line& line)
{
    return ReadFromEachEdge(line, 18, [&](int first) { return ReadSymbol(line, first); });
}

} // namespace Tesk::linear
