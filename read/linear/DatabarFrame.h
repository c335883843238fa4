// What GS1 DataBar and GS1 DataBar Limited have in common: data characters told by the widths of their elements, and
// the article number as text. ISO/IEC 24724.
#pragma once

#include "read/linear/DatabarPatterns.h"
#include "read/linear/LinearFrame.h"

#include <array>
#include <cstdint>
#include <span>

namespace Tesk::linear {

/// The number of ways in which `parts` widths of 1 to `widest` have the sum `modules`; if `hasNarrow`, only those in
/// which one of them is 1.
std::int64_t CountWidths(int modules, int parts, int widest, bool hasNarrow);
/// The place of the widths among all of the same sum, in lexicographic order.
std::int64_t RankOfWidths(std::span<const int> widths, int widest, bool hasNarrow);

/// Whether an element of a guard, which has one module, has a third to two.
constexpr bool IsNarrow(std::int64_t width, std::int64_t module)
{
    return 3 * width >= module && width <= 2 * module;
}

/// A data character that was read.
struct DatabarValue
{
    int value = -1;
    std::array<int, 14> widths{}; ///< of its elements in modules, from the one that counts as the first
};

/// Reads the data character whose first element is `first`, a space or a bar, the next one `step` further. Ink that
/// spreads has made bars wider by `spread`, and spaces narrower.
DatabarValue ReadDatabarCharacter(const Line& line, int first, int step, bool spaceFirst,
                                  const DatabarCharacter& character, std::int64_t spread);
/// The sum of the widths weighed by the powers of three from the `exponent`th on, modulo `modulus`.
int WeighedSum(const DatabarValue& value, int count, int exponent, int modulus);
/// Adds the elements of a character, from the last if `backward`.
void AddDatabarElements(const DatabarValue& value, int count, bool backward, Symbol& symbol);
/// "(01)", the number as 13 digits, and its check digit.
using ArticleText = std::array<char, 32>;
ArticleText TextOfArticle(std::int64_t number);
/// Adds the number of 13 digits with its application identifier and its check digit.
void AddArticleNumber(std::int64_t number, Symbol& symbol);

} // namespace Tesk::linear
