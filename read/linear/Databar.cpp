// GS1 DataBar: four data characters beside two finder patterns, whose values are the check. ISO/IEC 24724, clause 5.
#include "read/linear/DatabarFrame.h"

#include <cstdint>

namespace Tesk::linear {

namespace {

constexpr int elements = 45; // with the outer bars of the guards, whose outer spaces cannot be seen
constexpr int outerLeft = 1, leftFinder = 9, innerLeft = 14, innerRight = 22, rightFinder = 30, outerRight = 35;
constexpr int innerValues = 1597;
constexpr std::int64_t halfValues = 4537077, linkage = 10'000'000'000'000;

/// The value of the finder pattern whose first element is `first`, the next one `step` further; -1 if there is none.
int ReadFinder(const Line& line, int first, int step)
{
    constexpr int modules = 15;
    const std::int64_t a = line.Width(first), b = line.Width(first + step), c = line.Width(first + 2 * step);
    const std::int64_t rest = line.Width(first + 3 * step) + line.Width(first + 4 * step);
    const std::int64_t total = a + b + c + rest;
    if (total <= 0) return -1;
    // The second and third element have 10 to 12 of the modules, and the last two have two.
    const std::int64_t inner = b + c;
    if (24 * inner < 19 * (inner + rest) || 28 * inner > 25 * (inner + rest)) return -1;
    const auto modulesOf = [&](std::int64_t width) { return (2 * modules * width + total) / (2 * total); };
    for (std::size_t value = 0; value < databarFinders.size(); ++value) {
        const int pattern = databarFinders[value];
        const int first2 = pattern / 10000 + pattern / 1000 % 10, second2 = pattern / 1000 % 10 + pattern / 100 % 10;
        if (modulesOf(a + b) == first2 && modulesOf(b + c) == second2) return static_cast<int>(value);
    }
    return -1;
}

/// What ink that spreads has added to each bar of a finder pattern. The left one has bars as its second and fourth
/// element, the right one, which is mirrored, as its other ones.
std::int64_t SpreadOf(const Line& line, int first, int step, int value)
{
    const int pattern = databarFinders[static_cast<std::size_t>(value)];
    const int expected = pattern / 1000 % 10 + pattern / 10 % 10;
    const std::int64_t total = line.Span(step > 0 ? first : first - 4, 5);
    const std::int64_t measured = line.Width(first + step) + line.Width(first + 3 * step);
    // The spread changes the total too, by one of it, and the two elements by two.
    return step * (15 * measured - expected * total) / (30 + expected);
}

/// The values of the two finder patterns, as one number, that belong to a sum of widths.
int FindersOf(int sum)
{
    int finders = sum;
    if (finders >= 8) ++finders;
    if (finders >= 72) ++finders;
    return finders;
}

void AddFinder(int value, bool backward, Symbol& symbol)
{
    const int pattern = databarFinders[static_cast<std::size_t>(value)];
    for (int i = 0, forward = 10000, back = 1; i < 5; ++i, forward /= 10, back *= 10)
        symbol.AddPattern(pattern / (backward ? back : forward) % 10);
}

/// Reads the symbol that begins at the edge `first`, as `ReadFromEachEdge` tells.
int ReadSymbol(const Line& line, int first)
{
    const int left = ReadFinder(line, first + leftFinder, 1);
    if (left < 0) return -1;
    const int right = ReadFinder(line, first + rightFinder + 4, -1);
    if (right < 0) return -1;
    // The finder pattern beside a guard has fifteen modules.
    for (const int guard : {0, elements - 2, elements - 1}) {
        const std::int64_t finder = line.Span(first + (guard == 0 ? leftFinder : rightFinder), 5);
        if (!IsNarrow(15 * line.Width(first + guard), finder)) return -1;
    }
    const std::int64_t spread =
        (SpreadOf(line, first + leftFinder, 1, left) + SpreadOf(line, first + rightFinder + 4, -1, right)) / 2;
    // Each character counts its elements towards its finder pattern.
    const DatabarValue values[] = {
        ReadDatabarCharacter(line, first + outerLeft, 1, true, databarOutside, spread),
        ReadDatabarCharacter(line, first + innerLeft + 7, -1, true, databarInside, spread),
        ReadDatabarCharacter(line, first + outerRight + 7, -1, false, databarOutside, spread),
        ReadDatabarCharacter(line, first + innerRight, 1, false, databarInside, spread)};
    int sum = 0;
    for (int i = 0; i < 4; ++i) {
        if (values[i].value < 0) return -1;
        sum += WeighedSum(values[i], 8, 8 * i, 79);
    }
    if (FindersOf(sum % 79) != 9 * left + right) return -1;
    const std::int64_t leftValue = std::int64_t{innerValues} * values[0].value + values[1].value;
    const std::int64_t rightValue = std::int64_t{innerValues} * values[2].value + values[3].value;
    std::int64_t number = leftValue * halfValues + rightValue;
    if (number >= linkage) number -= linkage;
    if (rightValue >= halfValues || number >= linkage) return -1;

    Symbol symbol(CodeDatabar);
    symbol.AddPattern(1);
    AddDatabarElements(values[0], 8, false, symbol);
    AddFinder(left, false, symbol);
    AddDatabarElements(values[1], 8, true, symbol);
    AddDatabarElements(values[3], 8, false, symbol);
    AddFinder(right, true, symbol);
    AddDatabarElements(values[2], 8, true, symbol);
    symbol.AddPattern(11);
    AddArticleNumber(number, symbol);
    return line.Report(symbol, first);
}

} // namespace

bool DecodeDatabar(const Line& line)
{
    return ReadFromEachEdge(
        line, elements + 1, [&](int first) { return ReadSymbol(line, first); }, false);
}

} // namespace Tesk::linear
