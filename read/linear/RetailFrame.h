// What EAN-13, UPC-A, EAN-8 and UPC-E have in common: windows of a fixed number of elements and modules, whose digits
// are the nearest of twenty patterns. ISO/IEC 15420.
#pragma once

#include "read/linear/LinearFrame.h"

#include <array>
#include <cstddef>

namespace Tesk::linear {

/// The elements of a symbology of retail.
struct RetailLayout
{
    int elements, modules;
    int digits;     ///< in all
    int secondHalf; ///< the element at which it begins, of EAN
    int endGuard;   ///< number of elements
};

/// The rows of `retailDigits` of a symbol, of which the first `RetailLayout::digits` count.
using RetailRows = std::array<int, 12>;

/// How digits are measured: the four ways in which a window is tried.
struct RetailAttempt
{
    bool edgeToSimilarEdge; ///< sums of adjacent elements; else each element
    bool ownModule;         ///< the module of each digit's own width; else of the whole window
};

/// The first element of a digit.
inline int DigitElement(const RetailLayout& layout, int digit)
{
    const int half = layout.secondHalf > 0 ? layout.digits / 2 : layout.digits;
    return digit < half ? 3 + 4 * digit : layout.secondHalf + 4 * (digit - half);
}

/// Whether the widths of the elements at `first`, and its quiet zones, may be those of a symbol.
bool MayBeRetail(const Line& line, int first, const RetailLayout& layout);
/// The row of each digit; the first is -1 if one of them is too far from all rows.
RetailRows MatchDigits(const Line& line, int first, const RetailLayout& layout, RetailAttempt attempt);
/// A bit for each of `count` digits from `digit` on, the highest for the first: set for number set B.
unsigned SetsOf(const RetailRows& rows, int digit, int count);

/// Tries the windows of a line in the four ways; `take` gets the first edge and the rows and returns as
/// `ReadFromEachEdge` tells.
template <typename F>
bool ReadRetail(const Line& line, const RetailLayout& layout, F take)
{
    return ReadFromEachEdge(line, layout.elements + 1, [&](int first) {
        if (!MayBeRetail(line, first, layout)) return -1;
        for (const RetailAttempt attempt : {RetailAttempt{false, false}, {false, true}, {true, false}, {true, true}}) {
            const int last = take(first, MatchDigits(line, first, layout, attempt));
            if (last >= 0) return last;
        }
        return -1;
    });
}

/// The digits of the rows, as characters.
inline char DigitOf(const RetailRows& rows, int digit)
{
    return static_cast<char>('0' + rows[static_cast<std::size_t>(digit)] % 10);
}
/// Adds the elements of `count` digits from `digit` on.
void AddDigits(Symbol& symbol, const RetailRows& rows, int digit, int count);

} // namespace Tesk::linear
