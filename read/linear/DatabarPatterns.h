// Numbers of GS1 DataBar and of GS1 DataBar Limited: groups of the widths of data characters, finder patterns and check
// characters. ISO/IEC 24724, tables 3 to 6 and annex B.
#pragma once

#include <array>
#include <cstdint>

namespace Tesk::linear {

/// The values whose odd and even elements have certain sums of modules: `first` + the product of the two ranks.
struct DatabarGroup
{
    int oddModules, evenModules;
    int oddWidest, evenWidest;
    int oddCount, evenCount; ///< combinations in use
    int first;               ///< value
};

/// How the values of a data character are told by its elements.
struct DatabarCharacter
{
    int modules, pairs; ///< pairs of an odd and an even element
    bool oddHasNarrow;  ///< among the odd elements is one of one module; else among the even ones
    bool oddFirst;      ///< the rank of the odd elements weighs more
    const DatabarGroup* groups;
    int groupCount;
};

constexpr DatabarGroup outsideGroups[] = {{12, 4, 8, 1, 161, 1, 0},
                                          {10, 6, 6, 3, 80, 10, 161},
                                          {8, 8, 4, 5, 31, 34, 961},
                                          {6, 10, 3, 6, 10, 70, 2015},
                                          {4, 12, 1, 8, 1, 126, 2715}};
constexpr DatabarGroup insideGroups[] = {
    {5, 10, 2, 7, 4, 84, 0}, {7, 8, 4, 5, 20, 35, 336}, {9, 6, 6, 3, 48, 10, 1036}, {11, 4, 8, 1, 81, 1, 1516}};
constexpr DatabarGroup limitedGroups[] = {{17, 9, 6, 3, 6538, 28, 0},         {13, 13, 5, 4, 875, 728, 183064},
                                          {9, 17, 3, 6, 28, 6454, 820064},    {15, 11, 5, 4, 2415, 203, 1000776},
                                          {11, 15, 4, 5, 203, 2408, 1491021}, {19, 7, 8, 1, 17094, 1, 1979845},
                                          {7, 19, 1, 8, 1, 16632, 1996939}};

constexpr DatabarCharacter databarOutside = {16, 4, false, true, outsideGroups, 5};
constexpr DatabarCharacter databarInside = {15, 4, true, false, insideGroups, 4};
constexpr DatabarCharacter limitedData = {26, 7, false, true, limitedGroups, 7};

/// The finder patterns of GS1 DataBar by value, from the outside.
constexpr std::array<int, 9> databarFinders = {38211, 35511, 33711, 31911, 27411, 25611, 23811, 15711, 13911};

/// The check characters of GS1 DataBar Limited by value: the widths of the odd and of the even elements.
struct LimitedCheck
{
    int odd, even;
};
constexpr std::array<LimitedCheck, 89> limitedChecks = {{
    {1111131, 1111131}, {1111131, 1111221}, {1111131, 1111311}, {1111131, 1112121}, {1111131, 1112211},
    {1111131, 1113111}, {1111131, 1121121}, {1111131, 1121211}, {1111131, 1122111}, {1111131, 1131111},
    {1111131, 1211121}, {1111131, 1211211}, {1111131, 1212111}, {1111131, 1221111}, {1111131, 1311111},
    {1111131, 2111121}, {1111131, 2111211}, {1111131, 2112111}, {1111131, 2121111}, {1111131, 2211111},
    {1111131, 3111111}, {1111221, 1111131}, {1111221, 1111221}, {1111221, 1111311}, {1111221, 1112121},
    {1111221, 1112211}, {1111221, 1113111}, {1111221, 1121121}, {1111221, 1121211}, {1111221, 1122111},
    {1111221, 1131111}, {1111221, 1211121}, {1111221, 1211211}, {1111221, 1212111}, {1111221, 1221111},
    {1111221, 1311111}, {1111221, 2111121}, {1111221, 2111211}, {1111221, 2112111}, {1111221, 2121111},
    {1111221, 2211111}, {1111221, 3111111}, {1111311, 1111131}, {1111311, 1111221}, {1111311, 1112121},
    {1111311, 1211121}, {1111311, 2111121}, {1112121, 1111131}, {1112121, 1111221}, {1112121, 1111311},
    {1112121, 1112121}, {1112121, 1211121}, {1112121, 1211211}, {1112121, 1212111}, {1112121, 1221111},
    {1112121, 1311111}, {1112121, 2111121}, {1112121, 2111211}, {1112121, 2211111}, {1121121, 1111131},
    {1121121, 1111221}, {1121121, 1111311}, {1121121, 1112121}, {1121121, 1112211}, {1121121, 1121121},
    {1121121, 2111121}, {1121121, 2111211}, {1121121, 2112111}, {1121121, 2121111}, {1121121, 2211111},
    {1121121, 3111111}, {1211121, 1111131}, {1211121, 1111221}, {1211121, 1111311}, {1211121, 1112121},
    {1211121, 1112211}, {1211121, 1113111}, {1211121, 1121121}, {1211121, 1121211}, {1211121, 1211121},
    {2111121, 1111221}, {2111121, 1111311}, {2111121, 1112121}, {2111121, 1112211}, {2111121, 1113111},
    {2111121, 1121211}, {2111121, 1122111}, {2111121, 1211211}, {2111211, 1111221},
}};

} // namespace Tesk::linear
