// GS1 DataBar Limited: two data characters with a check character between them. ISO/IEC 24724, clause 6.
#include "read/linear/DatabarFrame.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace Tesk::linear {

namespace {

constexpr int elements = 45; // with the outer bars of the guards, whose outer spaces cannot be seen
constexpr int leftData = 1, check = 15, rightData = 29, characterElements = 14;
constexpr int checkModules = 18, modulus = 89;
constexpr std::int64_t rightValues = 2013571, linkage = 2'015'133'531'096, limit = 2'000'000'000'000;

/// Whether a data character has 26 modules where the check character has 18, give or take one and a half.
bool HasRatio(std::int64_t data, std::int64_t checkWidth)
{
    return 36 * data >= 49 * checkWidth && 36 * data <= 55 * checkWidth;
}

int CheckElement(int value, int i)
{
    const LimitedCheck& widths = limitedChecks[static_cast<std::size_t>(value)];
    int pattern = i % 2 == 0 ? widths.odd : widths.even;
    for (int k = i / 2; k < characterElements / 2 - 1; ++k)
        pattern /= 10;
    return pattern % 10;
}

/// Whether the elements from `first` on are those of a check character, by the sums of adjacent ones.
bool IsCheckCharacter(const Line& line, int first, int value)
{
    const std::int64_t total = line.Span(first, characterElements);
    for (int i = 0; i + 1 < characterElements; ++i) {
        const int expected = CheckElement(value, i) + CheckElement(value, i + 1);
        if (2 * std::abs(checkModules * line.Span(first + i, 2) - expected * total) > total) return false;
    }
    return true;
}

/// Reads the symbol that begins at the edge `first`, as `ReadFromEachEdge` tells.
int ReadSymbol(const Line& line, int first)
{
    const std::int64_t checkWidth = line.Span(first + check, characterElements);
    if (!HasRatio(line.Span(first + leftData, characterElements), checkWidth)) return -1;
    if (!HasRatio(line.Span(first + rightData, characterElements), checkWidth)) return -1;
    for (const int guard : {0, elements - 2, elements - 1})
        if (!IsNarrow(line.Width(first + guard) * checkModules, checkWidth)) return -1;
    // The bars of a check character have as many modules as its spaces.
    std::int64_t spread = 0;
    for (int i = 0; i < characterElements; ++i)
        spread += (i % 2 == 0 ? -1 : 1) * line.Width(first + check + i);
    spread /= characterElements;
    const DatabarValue left = ReadDatabarCharacter(line, first + leftData, 1, true, limitedData, spread);
    if (left.value < 0) return -1;
    const DatabarValue right = ReadDatabarCharacter(line, first + rightData, 1, true, limitedData, spread);
    if (right.value < 0) return -1;
    const int sum = (WeighedSum(left, characterElements, 0, modulus) +
                     WeighedSum(right, characterElements, characterElements, modulus)) %
                    modulus;
    if (!IsCheckCharacter(line, first + check, sum)) return -1;
    std::int64_t number = left.value * rightValues + right.value;
    if (number >= linkage) number -= linkage;
    if (right.value >= rightValues || number >= limit) return -1;

    Symbol symbol(CodeDatabarLimited);
    symbol.AddPattern(1);
    AddDatabarElements(left, characterElements, false, symbol);
    for (int i = 0; i < characterElements; ++i)
        symbol.AddPattern(CheckElement(sum, i));
    AddDatabarElements(right, characterElements, false, symbol);
    symbol.AddPattern(11);
    AddArticleNumber(number, symbol);
    return line.Report(symbol, first);
}

} // namespace

bool DecodeDatabarLimited(const Line& line)
{
    return ReadFromEachEdge(
        line, elements + 1, [&](int first) { return ReadSymbol(line, first); }, false);
}

} // namespace Tesk::linear
