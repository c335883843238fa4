// The data characters of GS1 DataBar: widths of elements, ranked among all that have the same sum. ISO/IEC 24724, annex
// B.
#include "read/linear/DatabarFrame.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string_view>

namespace Tesk::linear {

namespace {

constexpr std::int64_t Binomial(int n, int k)
{
    if (n < k || k < 0) return 0;
    std::int64_t result = 1;
    for (int i = 1; i <= k; ++i)
        result = result * (n - k + i) / i;
    return result;
}

/// The number of ways in which `parts` widths of 1 to `widest` have the sum `modules`.
std::int64_t CountBounded(int modules, int parts, int widest)
{
    if (parts == 0) return modules == 0 ? 1 : 0;
    if (widest < 1) return 0;
    std::int64_t count = 0;
    for (int tooWide = 0; tooWide <= parts && modules - tooWide * widest >= parts; ++tooWide)
        count += (tooWide % 2 == 0 ? 1 : -1) * Binomial(parts, tooWide) *
                 Binomial(modules - tooWide * widest - 1, parts - 1);
    return count;
}

using Elements = std::array<int, 7>;

/// Rounds the elements of one of the two sets to modules of which there must be `sum`; one more or less is taken from
/// the element that was rounded most. False if that isn't enough.
bool RoundSet(std::span<const std::int64_t> widths, std::int64_t total, int modules, int sum, Elements& rounded)
{
    std::array<std::int64_t, 7> errors{};
    int excess = -sum;
    for (std::size_t i = 0; i < widths.size(); ++i) {
        const std::int64_t scaled = modules * widths[i];
        const std::int64_t element = std::max<std::int64_t>((2 * scaled + total) / (2 * total), 1);
        rounded[i] = static_cast<int>(element);
        errors[i] = scaled - element * total;
        excess += rounded[i];
    }
    const auto begin = errors.begin(), end = begin + static_cast<std::ptrdiff_t>(widths.size());
    if (excess == 1) {
        --rounded[static_cast<std::size_t>(std::min_element(begin, end) - begin)];
    } else if (excess == -1) {
        ++rounded[static_cast<std::size_t>(std::max_element(begin, end) - begin)];
    } else if (excess != 0) {
        return false;
    }
    return *std::min_element(rounded.begin(), rounded.begin() + (end - begin)) >= 1;
}

bool AreWithin(std::span<const int> widths, int widest)
{
    return *std::max_element(widths.begin(), widths.end()) <= widest;
}

} // namespace

std::int64_t CountWidths(int modules, int parts, int widest, bool hasNarrow)
{
    const std::int64_t all = CountBounded(modules, parts, widest);
    return hasNarrow ? all - CountBounded(modules - parts, parts, widest - 1) : all;
}

std::int64_t RankOfWidths(std::span<const int> widths, int widest, bool hasNarrow)
{
    int modules = 0;
    for (const int width : widths)
        modules += width;
    std::int64_t rank = 0;
    for (std::size_t i = 0; i + 1 < widths.size(); ++i) {
        const int parts = static_cast<int>(widths.size() - 1 - i);
        for (int narrower = 1; narrower < widths[i]; ++narrower)
            rank += CountWidths(modules - narrower, parts, widest, hasNarrow && narrower > 1);
        modules -= widths[i];
        hasNarrow = hasNarrow && widths[i] > 1;
    }
    return rank;
}

DatabarValue ReadDatabarCharacter(const Line& line, int first, int step, bool spaceFirst,
                                  const DatabarCharacter& character, std::int64_t spread)
{
    const std::size_t pairs = static_cast<std::size_t>(character.pairs);
    std::array<std::int64_t, 7> oddWidths{}, evenWidths{};
    std::int64_t odd = 0, even = 0;
    const std::int64_t oddSpread = spaceFirst ? -spread : spread;
    for (std::size_t i = 0; i < pairs; ++i) {
        const int element = first + 2 * step * static_cast<int>(i);
        odd += oddWidths[i] = line.Width(element) - oddSpread;
        even += evenWidths[i] = line.Width(element + step) + oddSpread;
    }
    const std::int64_t total = odd + even;
    if (total <= 0) return {};
    // The modules of the odd elements together are odd or even, as those of the first group.
    const int parity = character.groups[0].oddModules % 2, modules = character.modules;
    const std::int64_t half = (modules * odd - parity * total + total) / (2 * total);
    const auto* group = std::find_if(character.groups, character.groups + character.groupCount,
                                     [&](const DatabarGroup& g) { return g.oddModules == parity + 2 * half; });
    if (group == character.groups + character.groupCount) return {};
    Elements oddModules{}, evenModules{};
    if (!RoundSet(std::span(oddWidths).first(pairs), total, modules, group->oddModules, oddModules)) return {};
    if (!RoundSet(std::span(evenWidths).first(pairs), total, modules, group->evenModules, evenModules)) return {};
    const std::span<const int> odds = std::span(oddModules).first(pairs), evens = std::span(evenModules).first(pairs);
    if (!AreWithin(odds, group->oddWidest) || !AreWithin(evens, group->evenWidest)) return {};
    const auto hasNarrow = [](std::span<const int> widths) { return std::ranges::find(widths, 1) != widths.end(); };
    if (!hasNarrow(character.oddHasNarrow ? odds : evens)) return {};
    const std::int64_t oddRank = RankOfWidths(odds, group->oddWidest, character.oddHasNarrow);
    const std::int64_t evenRank = RankOfWidths(evens, group->evenWidest, !character.oddHasNarrow);
    if (oddRank >= group->oddCount || evenRank >= group->evenCount) return {};

    DatabarValue result;
    result.value = group->first + static_cast<int>(character.oddFirst ? oddRank * group->evenCount + evenRank
                                                                      : evenRank * group->oddCount + oddRank);
    for (std::size_t i = 0; i < pairs; ++i) {
        result.widths[2 * i] = odds[i];
        result.widths[2 * i + 1] = evens[i];
    }
    return result;
}

int WeighedSum(const DatabarValue& value, int count, int exponent, int modulus)
{
    int weight = 1, sum = 0;
    for (int i = 0; i < exponent; ++i)
        weight = weight * 3 % modulus;
    for (int i = 0; i < count; ++i) {
        sum += weight * value.widths[static_cast<std::size_t>(i)];
        weight = weight * 3 % modulus;
    }
    return sum % modulus;
}

void AddDatabarElements(const DatabarValue& value, int count, bool backward, Symbol& symbol)
{
    for (int i = 0; i < count; ++i)
        symbol.AddPattern(value.widths[static_cast<std::size_t>(backward ? count - 1 - i : i)]);
}

ArticleText TextOfArticle(std::int64_t number)
{
    ArticleText text{};
    const int length = std::snprintf(text.data(), text.size(), "(01)%013lld", static_cast<long long>(number));
    text[static_cast<std::size_t>(length)] =
        static_cast<char>('0' + CheckDigit(std::string_view(text.data()).substr(4)));
    return text;
}

void AddArticleNumber(std::int64_t number, Symbol& symbol)
{
    symbol.Add(TextOfArticle(number).data());
}

} // namespace Tesk::linear
