// UPC-E: six digits whose number sets tell the number system and the check digit. ISO/IEC 15420.
#include "read/linear/RetailFrame.h"
#include "read/linear/RetailPatterns.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Tesk::linear {

namespace {

constexpr RetailLayout upce = {33, 51, 6, 0, 6};

/// The eleven digits of UPC-A, without the check digit, that were shortened by leaving out zeros.
std::array<char, 11> Lengthened(char system, std::string_view six)
{
    std::array<char, 11> digits;
    digits.fill('0');
    digits[0] = system;
    const int last = six[5] - '0';
    // How many digits of the maker's number are kept; the others belong to the article's number, at the end.
    const std::size_t kept = last <= 2 ? 2u : last == 3 ? 3u : last == 4 ? 4u : 5u;
    for (std::size_t i = 0; i < kept; ++i)
        digits[1 + i] = six[i];
    for (std::size_t i = kept; i < 5; ++i)
        digits[6 + i] = six[i];
    if (last <= 2) digits[3] = six[5];
    if (last >= 5) digits[10] = six[5];
    return digits;
}

/// Whether the bars of the guards are alike, and their spaces: six digits with one check would be read from random
/// elements too often.
bool HasEvenGuards(const Line& line, int first)
{
    std::array<std::int64_t, 2> least = {INT64_MAX, INT64_MAX}, most = {0, 0};
    for (int i = 0; i < upce.elements; ++i) {
        if (i == 3) i = upce.elements - upce.endGuard;
        const std::size_t colour = static_cast<std::size_t>(i % 2);
        least[colour] = std::min(least[colour], line.Width(first + i));
        most[colour] = std::max(most[colour], line.Width(first + i));
    }
    return most[0] <= 2 * least[0] && most[1] <= 2 * least[1];
}

} // namespace

bool DecodeUPCE(const Line& line)
{
    return ReadRetail(line, upce, [&](int first, const RetailRows& rows) {
        if (rows[0] < 0 || !HasEvenGuards(line, first)) return -1;
        std::array<char, 8> text;
        for (int i = 0; i < 6; ++i)
            text[static_cast<std::size_t>(i + 1)] = DigitOf(rows, i);
        const unsigned sets = SetsOf(rows, 0, 6);
        for (std::size_t check = 0; check < upceCheckSets.size(); ++check) {
            if (sets != upceCheckSets[check] && (sets ^ 0b111111) != upceCheckSets[check]) continue;
            text[0] = sets == upceCheckSets[check] ? '1' : '0';
            text[7] = static_cast<char>('0' + check);
            const std::array<char, 11> digits = Lengthened(text[0], {text.data() + 1, 6});
            if (CheckDigit({digits.data(), digits.size()}) != static_cast<int>(check)) continue;
            Symbol symbol(CodeUPCE);
            symbol.Add({text.data(), text.size()});
            symbol.AddPattern(111);
            AddDigits(symbol, rows, 0, 6);
            symbol.AddPattern(111111);
            return line.Report(symbol, first);
        }
        return -1;
    });
}

} // namespace Tesk::linear
