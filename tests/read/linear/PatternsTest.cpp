// The tables of the symbologies, by what their standards say of all their rows.
#include "read/linear/CodabarPatterns.h"
#include "read/linear/Code128Patterns.h"
#include "read/linear/Code39Patterns.h"
#include "read/linear/Code93Patterns.h"
#include "read/linear/DatabarFrame.h"
#include "read/linear/RetailPatterns.h"
#include "read/linear/TwoOfFivePatterns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <numeric>
#include <set>
#include <string_view>
#include <vector>

namespace Tesk::linear {
namespace {

int SumOfDigits(int pattern, int step = 1)
{
    int sum = 0;
    for (int unit = step == 1 ? 1 : 10; unit <= 100000; unit *= step == 1 ? 10 : 100)
        sum += pattern / unit % 10;
    return sum;
}

TEST(PatternsTest, CharactersOfFixedWidthHaveTheirModulesAndDiffer)
{
    std::set<int> sums;
    for (const int pattern : code128Patterns) {
        EXPECT_EQ(SumOfDigits(pattern), 11);
        EXPECT_EQ(SumOfDigits(pattern, 2) % 2, 0) << "bars are even";
        int key = 0;
        for (int i = 0; i < 4; ++i)
            key = 10 * key + ElementOf(pattern, i) + ElementOf(pattern, i + 1);
        EXPECT_TRUE(sums.insert(key).second) << pattern << " has the sums of another one";
    }
    std::set<int> code93;
    for (const int pattern : code93Patterns) {
        EXPECT_EQ(SumOfDigits(pattern), 9);
        EXPECT_TRUE(code93.insert(pattern).second);
    }
}

TEST(PatternsTest, DigitsOfRetailHaveOddBarsInSetAAndMirrorInSetB)
{
    for (std::size_t row = 0; row < 10; ++row) {
        const auto &a = retailDigits[row], &b = retailDigits[row + 10];
        EXPECT_EQ(std::accumulate(a.begin(), a.end(), 0), 7);
        EXPECT_EQ((a[1] + a[3]) % 2, 1);
        EXPECT_TRUE(std::equal(a.begin(), a.end(), b.rbegin()));
    }
    EXPECT_EQ(std::set(firstDigitSets.begin(), firstDigitSets.end()).size(), 10u);
    for (const unsigned sets : upceCheckSets)
        EXPECT_EQ(std::popcount(sets), 3) << "three digits of each set";
}

TEST(PatternsTest, TwoWidthCharactersHaveTheirWideElementsAndDiffer)
{
    std::set<unsigned> masks;
    for (const Code39Character& character : code39Characters) {
        EXPECT_EQ(std::ranges::count(character.elements, 'W'), 3) << character.character;
        EXPECT_TRUE(masks.insert(TwoWidthMask(character.elements)).second);
    }
    masks.clear();
    for (const CodabarCharacter& character : codabarCharacters) {
        const auto wide = std::ranges::count(character.elements, 'W');
        EXPECT_TRUE(wide == 2 || wide == 3);
        EXPECT_TRUE(masks.insert(TwoWidthMask(character.elements)).second);
    }
    masks.clear();
    for (const std::string_view digit : twoOfFiveDigits) {
        EXPECT_EQ(std::ranges::count(digit, 'W'), 2);
        masks.insert(TwoWidthMask(digit));
    }
    EXPECT_EQ(masks.size(), 10u) << "all ways to choose two of five";
}

/// All widths of the sum, in lexicographic order.
void Enumerate(int modules, std::size_t parts, int widest, bool hasNarrow, std::vector<int>& widths,
               std::vector<std::vector<int>>& all)
{
    if (widths.size() == parts) {
        if (modules == 0 && (!hasNarrow || std::ranges::find(widths, 1) != widths.end())) all.push_back(widths);
        return;
    }
    for (int width = 1; width <= std::min(widest, modules); ++width) {
        widths.push_back(width);
        Enumerate(modules - width, parts, widest, hasNarrow, widths, all);
        widths.pop_back();
    }
}

TEST(PatternsTest, DatabarGroupsFollowEachOtherAndHaveTheirCombinations)
{
    struct Case
    {
        const DatabarCharacter& character;
        int values;
        bool truncated; ///< the last groups leave combinations unused
    };
    for (const Case& c :
         {Case{databarOutside, 2841, false}, {databarInside, 1597, true}, {limitedData, 2013571, false}}) {
        int next = 0;
        for (int i = 0; i < c.character.groupCount; ++i) {
            const DatabarGroup& group = c.character.groups[i];
            EXPECT_EQ(group.oddModules + group.evenModules, c.character.modules);
            EXPECT_EQ(group.first, next);
            next += group.oddCount * group.evenCount;
            const auto odd =
                CountWidths(group.oddModules, c.character.pairs, group.oddWidest, c.character.oddHasNarrow);
            const auto even =
                CountWidths(group.evenModules, c.character.pairs, group.evenWidest, !c.character.oddHasNarrow);
            EXPECT_TRUE(odd == group.oddCount || (c.truncated && odd > group.oddCount)) << odd;
            EXPECT_EQ(even, group.evenCount);
        }
        EXPECT_EQ(next, c.values);
    }
    for (const bool hasNarrow : {false, true}) {
        std::vector<int> widths;
        std::vector<std::vector<int>> all;
        Enumerate(12, 4, 6, hasNarrow, widths, all);
        EXPECT_EQ(CountWidths(12, 4, 6, hasNarrow), static_cast<int>(all.size()));
        for (std::size_t rank = 0; rank < all.size(); ++rank)
            EXPECT_EQ(RankOfWidths(all[rank], 6, hasNarrow), static_cast<int>(rank));
    }
    for (const int finder : databarFinders)
        EXPECT_EQ(SumOfDigits(finder), 15);
}

TEST(PatternsTest, CheckCharactersOfDatabarLimitedAscendWithNineModulesOfEachKind)
{
    for (std::size_t i = 0; i < limitedChecks.size(); ++i) {
        const auto [odd, even] = limitedChecks[i];
        EXPECT_EQ(SumOfDigits(odd) + odd / 1000000, 9);
        EXPECT_EQ(SumOfDigits(even) + even / 1000000, 9);
        EXPECT_EQ(odd % 10 * (even % 10), 1);
        if (i == 0) continue;
        const auto [oddBefore, evenBefore] = limitedChecks[i - 1];
        EXPECT_TRUE(oddBefore < odd || (oddBefore == odd && evenBefore < even));
    }
}

} // namespace
} // namespace Tesk::linear
