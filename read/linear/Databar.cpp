// GS1 DataBar: four data characters beside two finder patterns, whose values are the check. ISO/IEC 24724, clause 5.
#include "read/linear/DatabarFrame.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string_view>

namespace Tesk::linear {

namespace {

constexpr int elements = 45; // with the outer bars of the guards, whose outer spaces cannot be seen
constexpr int leftFinder = 9, rightFinder = 30;
constexpr int upperElements = 23, lowerElements = 25; // of the rows of a stacked symbol
constexpr int innerValues = 1597, checkModulus = 79;
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

/// The number of a symbol, of the values and the weighed sum of its halves; -1 if they belong to none.
std::int64_t NumberOf(std::int64_t leftValue, std::int64_t rightValue, int sum, int leftFinder, int rightFinder)
{
    if (FindersOf(sum % checkModulus) != 9 * leftFinder + rightFinder) return -1;
    std::int64_t number = leftValue * halfValues + rightValue;
    if (number >= linkage) number -= linkage;
    return rightValue >= halfValues || number >= linkage ? -1 : number;
}

/// A half of a symbol: an outer and an inner character, which count their elements towards the finder pattern between.
struct Half
{
    int finder = -1;
    DatabarValue outer, inner;

    bool IsRead() const { return outer.value >= 0 && inner.value >= 0; }
    std::int64_t Value() const { return std::int64_t{innerValues} * outer.value + inner.value; }
    int Sum(bool left) const
    {
        return WeighedSum(outer, 8, left ? 0 : 16, checkModulus) + WeighedSum(inner, 8, left ? 8 : 24, checkModulus);
    }
};

/// Reads the characters beside a finder pattern of which the first element, in its own order, is `finder`.
void ReadCharacters(const Line& line, int finder, int step, std::int64_t spread, Half& half)
{
    half.outer = ReadDatabarCharacter(line, finder - 8 * step, step, step > 0, databarOutside, spread);
    half.inner = ReadDatabarCharacter(line, finder + 12 * step, -step, step > 0, databarInside, spread);
}

/// Whether an element of a guard is as narrow as the finder pattern beside, of fifteen modules, asks.
bool IsGuard(const Line& line, int element, int finder)
{
    return IsNarrow(15 * line.Width(element), line.Span(finder, 5));
}

void AddHalf(const Half& half, bool left, Symbol& symbol)
{
    AddDatabarElements(left ? half.outer : half.inner, 8, false, symbol);
    AddFinder(half.finder, !left, symbol);
    AddDatabarElements(left ? half.inner : half.outer, 8, true, symbol);
}

/// Reads the symbol that begins at the edge `first`, as `ReadFromEachEdge` tells.
int ReadSymbol(const Line& line, int first)
{
    const int leftBegin = first + leftFinder, rightBegin = first + rightFinder;
    Half left, right;
    left.finder = ReadFinder(line, leftBegin, 1);
    if (left.finder < 0) return -1;
    right.finder = ReadFinder(line, rightBegin + 4, -1);
    if (right.finder < 0) return -1;
    if (!IsGuard(line, first, leftBegin) || !IsGuard(line, first + elements - 2, rightBegin) ||
        !IsGuard(line, first + elements - 1, rightBegin))
        return -1;
    const std::int64_t spread =
        (SpreadOf(line, leftBegin, 1, left.finder) + SpreadOf(line, rightBegin + 4, -1, right.finder)) / 2;
    ReadCharacters(line, leftBegin, 1, spread, left);
    ReadCharacters(line, rightBegin + 4, -1, spread, right);
    if (!left.IsRead() || !right.IsRead()) return -1;
    const std::int64_t number =
        NumberOf(left.Value(), right.Value(), left.Sum(true) + right.Sum(false), left.finder, right.finder);
    if (number < 0) return -1;

    Symbol symbol(CodeDatabar);
    symbol.AddPattern(1);
    AddHalf(left, true, symbol);
    AddHalf(right, false, symbol);
    symbol.AddPattern(11);
    AddArticleNumber(number, symbol);
    return line.Report(symbol, first);
}

/// Reads the upper row of a stacked symbol that begins at the edge `first`, or the lower one. Where an upper one ends
/// in a bar after its inner character, a lower one begins with a bar and a space: without its first bar and with
/// colours inverted, it is an upper one seen from its other end.
int ReadRow(const Line& line, int first, bool upper)
{
    if (!line.DarkAfter(first)) return -1;
    const int begin = first + (upper ? leftFinder : 10), step = upper ? 1 : -1, ownFirst = upper ? begin : begin + 4;
    Half half;
    half.finder = ReadFinder(line, ownFirst, step);
    if (half.finder < 0) return -1;
    const int count = upper ? upperElements : lowerElements;
    for (const int guard : {0, upper ? 0 : 1, count - (upper ? 1 : 2), count - 1})
        if (!IsGuard(line, first + guard, begin)) return -1;
    ReadCharacters(line, ownFirst, step, SpreadOf(line, ownFirst, step, half.finder), half);
    if (!half.IsRead()) return -1;

    Symbol symbol(NoSymbology);
    symbol.AddPattern(upper ? 1 : 11);
    AddHalf(half, upper, symbol);
    symbol.AddPattern(upper ? 1 : 11);
    symbol.SetRow({upper, half.finder, half.Sum(upper), half.Value()});
    std::array<char, 32> text;
    std::snprintf(text.data(), text.size(), "%c%d %lld", upper ? '<' : '>', half.finder,
                  static_cast<long long>(half.Value()));
    symbol.Add(text.data());
    return line.Report(symbol, first);
}

} // namespace

bool DecodeDatabar(const Line& line)
{
    return ReadFromEachEdge(
        line, elements + 1, [&](int first) { return ReadSymbol(line, first); }, false);
}

bool DecodeDatabarRow(const Line& line)
{
    const bool upper = ReadFromEachEdge(
        line, upperElements + 1, [&](int first) { return ReadRow(line, first, true); }, false);
    const bool lower = ReadFromEachEdge(
        line, lowerElements + 1, [&](int first) { return ReadRow(line, first, false); }, false);
    return upper || lower;
}

std::string_view TextOfDatabarRows(const DatabarRow& upper, const DatabarRow& lower,
                                   std::array<char, maximumTextLength + 1>& text)
{
    if (!upper.isUpper || lower.isUpper) return {};
    const std::int64_t number = NumberOf(upper.value, lower.value, upper.sum + lower.sum, upper.finder, lower.finder);
    if (number < 0) return {};
    const ArticleText article = TextOfArticle(number);
    text = {};
    std::copy(article.begin(), article.end(), text.begin());
    return text.data();
}

} // namespace Tesk::linear
