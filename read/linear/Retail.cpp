// The widths and digits of the symbologies of retail, and EAN-13, UPC-A and EAN-8. ISO/IEC 15420.
#include "read/linear/RetailFrame.h"
#include "read/linear/RetailPatterns.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace Tesk::linear {

bool MayBeRetail(const Line& line, int first, const RetailLayout& layout)
{
    constexpr int quietModules = 5;
    const std::int64_t window = line.Span(first, layout.elements);
    const int middle = layout.secondHalf > 0 ? layout.secondHalf - 5 : layout.elements;
    for (int i = 0; i < layout.elements; ++i) {
        const bool isGuard = i < 3 || i >= layout.elements - layout.endGuard || (i >= middle && i < layout.secondHalf);
        const std::int64_t scaled = line.Width(first + i) * layout.modules;
        if (1000 * scaled < 333 * window || scaled > (isGuard ? 2 : 5) * window) return false;
    }
    // A digit has seven modules, and never five or nine. UPC-E, which has one guard that could be taken for half of the
    // other, may be off by one only.
    const int off = layout.secondHalf > 0 ? 2 : 1;
    for (int digit = 0; digit < layout.digits; ++digit) {
        const std::int64_t scaled = line.Span(first + DigitElement(layout, digit), 4) * layout.modules;
        if ((7 - off) * window >= scaled || scaled >= (7 + off) * window) return false;
    }
    return line.IsQuiet(first, first + layout.elements, quietModules * window, layout.modules);
}

namespace {

using DigitWidths = std::array<std::int64_t, 4>;

/// The greatest distance of a digit from its row, in modules: random elements are mostly further off.
constexpr int tolerance = 2;

/// The row at the smallest distance, the lower one of two; -1 if it is too far. `module` counts in sevenths of the unit
/// of the widths.
int NearestRow(const DigitWidths& widths, std::int64_t module, bool edgeToSimilarEdge)
{
    int nearest = -1;
    std::int64_t smallest = tolerance * module + 1;
    for (int row = 0; row < 20; ++row) {
        const auto& pattern = retailDigits[static_cast<std::size_t>(row)];
        std::int64_t distance = 0;
        for (std::size_t i = 0; i < (edgeToSimilarEdge ? 3u : 4u); ++i) {
            const std::int64_t width = widths[i] + (edgeToSimilarEdge ? widths[i + 1] : 0);
            const int modules = pattern[i] + (edgeToSimilarEdge ? pattern[i + 1] : 0);
            distance += std::abs(7 * width - modules * module);
        }
        if (distance < smallest) {
            smallest = distance;
            nearest = row;
        }
    }
    return nearest;
}

/// Sums of adjacent elements do not tell 1 from 7 nor 2 from 8: the place of the narrowest element does.
int SplitRow(int row, const DigitWidths& widths)
{
    const auto narrowest = std::min_element(widths.begin(), widths.end()) - widths.begin();
    switch (row) {
    case 1:
        return narrowest == 3 ? 1 : 7;
    case 2:
        return narrowest == 1 ? 2 : 8;
    case 11:
        return narrowest == 0 ? 11 : 17;
    case 12:
        return narrowest == 2 ? 12 : 18;
    default:
        return row;
    }
}

} // namespace

RetailRows MatchDigits(const Line& line, int first, const RetailLayout& layout, RetailAttempt attempt)
{
    RetailRows rows{};
    const std::int64_t windowModule = 7 * line.Span(first, layout.elements) / layout.modules;
    for (int digit = 0; digit < layout.digits; ++digit) {
        const int element = first + DigitElement(layout, digit);
        const DigitWidths widths = {line.Width(element), line.Width(element + 1), line.Width(element + 2),
                                    line.Width(element + 3)};
        const std::int64_t module = attempt.ownModule ? line.Span(element, 4) : windowModule;
        int row = NearestRow(widths, module, attempt.edgeToSimilarEdge);
        if (row < 0) return {{-1}};
        if (attempt.edgeToSimilarEdge) row = SplitRow(row, widths);
        rows[static_cast<std::size_t>(digit)] = row;
    }
    return rows;
}

unsigned SetsOf(const RetailRows& rows, int digit, int count)
{
    unsigned sets = 0;
    for (int i = 0; i < count; ++i)
        sets = sets << 1 | (rows[static_cast<std::size_t>(digit + i)] >= 10 ? 1u : 0u);
    return sets;
}

void AddDigits(Symbol& symbol, const RetailRows& rows, int digit, int count)
{
    for (int i = 0; i < count; ++i)
        for (const std::uint8_t width :
             retailDigits[static_cast<std::size_t>(rows[static_cast<std::size_t>(digit + i)])])
            symbol.AddPattern(width);
}

namespace {

constexpr RetailLayout ean13 = {59, 95, 12, 32, 3};
constexpr RetailLayout ean8 = {43, 67, 8, 24, 3};

/// The rows as they are met from the other end: mirrored, a digit of set A looks like one of set B.
RetailRows Mirrored(const RetailRows& rows, int count)
{
    if (rows[0] < 0) return rows;
    RetailRows mirrored{};
    for (int i = 0; i < count; ++i)
        mirrored[static_cast<std::size_t>(i)] = (rows[static_cast<std::size_t>(count - 1 - i)] + 10) % 20;
    return mirrored;
}

void AddElements(Symbol& symbol, const RetailRows& rows, int digits)
{
    symbol.AddPattern(111);
    AddDigits(symbol, rows, 0, digits / 2);
    symbol.AddPattern(11111);
    AddDigits(symbol, rows, digits / 2, digits / 2);
    symbol.AddPattern(111);
}

bool HasCheckDigit(std::string_view digits)
{
    return CheckDigit(digits.substr(0, digits.size() - 1)) == digits.back() - '0';
}

int TakeEAN13(const Line& line, int first, const RetailRows& rows, bool mirrored)
{
    // The right half is in set C throughout, which has the widths of set A.
    if (rows[0] < 0 || SetsOf(rows, 6, 6) != 0) return -1;
    const auto set = std::find(firstDigitSets.begin(), firstDigitSets.end(), SetsOf(rows, 0, 6));
    if (set == firstDigitSets.end()) return -1;
    std::array<char, 13> digits;
    digits[0] = static_cast<char>('0' + (set - firstDigitSets.begin()));
    for (int i = 0; i < 12; ++i)
        digits[static_cast<std::size_t>(i + 1)] = DigitOf(rows, i);
    const std::string_view text(digits.data(), digits.size());
    if (!HasCheckDigit(text)) return -1;
    const bool isUPCA = line.settings.detectUPCA && text.front() == '0';
    if (!isUPCA && !line.settings.detectEAN13) return -1;
    Symbol symbol(isUPCA ? CodeUPCA : CodeEAN13);
    symbol.Add(text.substr(isUPCA ? 1 : 0));
    AddElements(symbol, rows, 12);
    return line.Report(symbol, first, mirrored);
}

int TakeEAN8(const Line& line, int first, const RetailRows& rows, bool mirrored)
{
    if (rows[0] < 0 || SetsOf(rows, 0, 8) != 0) return -1;
    std::array<char, 8> digits;
    for (int i = 0; i < 8; ++i)
        digits[static_cast<std::size_t>(i)] = DigitOf(rows, i);
    const std::string_view text(digits.data(), digits.size());
    if (!HasCheckDigit(text)) return -1;
    Symbol symbol(CodeEAN8);
    symbol.Add(text);
    AddElements(symbol, rows, 8);
    return line.Report(symbol, first, mirrored);
}

} // namespace

bool DecodeEAN13(const Line& line)
{
    return ReadRetail(line, ean13, [&](int first, const RetailRows& rows) {
        const int last = TakeEAN13(line, first, rows, false);
        return last >= 0 ? last : TakeEAN13(line, first, Mirrored(rows, 12), true);
    });
}

bool DecodeEAN8(const Line& line)
{
    return ReadRetail(line, ean8, [&](int first, const RetailRows& rows) {
        const int last = TakeEAN8(line, first, rows, false);
        return last >= 0 ? last : TakeEAN8(line, first, Mirrored(rows, 8), true);
    });
}

} // namespace Tesk::linear
