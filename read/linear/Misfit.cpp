// How far the edges of a symbol lie from where its elements should end.
#include "read/linear/Misfit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace Tesk::linear {

namespace {

/// The trend of the distances is their mean over so many edges to both sides.
constexpr std::size_t trendReach = 8;

bool HasTwoWidths(Symbologies symbology)
{
    return symbology == Code2of5 || symbology == CodeITF14 || symbology == Code39 || symbology == Code39Extended ||
           symbology == CodeCodabar || symbology == CodeMatrix2of5 || symbology == CodeMSI || symbology == Code11 ||
           symbology == CodePharmacode;
}

} // namespace

double Misfit(std::span<const int> edges, const SymbolRead& read)
{
    const auto count = static_cast<std::size_t>(read.elementCount);
    if (count < 2 || read.modules.size() != count || count > maximumElements) return 0;
    const auto part = edges.subspan(static_cast<std::size_t>(read.firstEdge), count + 1);
    const bool mirrored = read.start > read.end;
    const auto modulesOf = [&](std::size_t i) { return read.modules[mirrored ? count - 1 - i : i]; };

    // Wide elements may have from two to three times the width of narrow ones: as it is on the line.
    double wide = 0, narrow = 0, wides = 0, narrows = 0;
    for (std::size_t i = 0; i < count; i++) {
        const double width = part[i + 1] - part[i];
        (modulesOf(i) > 1 ? wide : narrow) += width;
        (modulesOf(i) > 1 ? wides : narrows)++;
    }
    const bool twoWidths = HasTwoWidths(read.symbology) && wides > 0 && narrows > 0 && narrow > 0;
    const double ratio = twoWidths ? wide / wides / (narrow / narrows) : 0;
    const auto nominal = [&](std::size_t i) {
        return twoWidths && modulesOf(i) > 1 ? ratio : static_cast<double>(modulesOf(i));
    };
    double total = 0;
    for (std::size_t i = 0; i < count; i++)
        total += nominal(i);
    const double unit = (part.back() - part.front()) / total;
    if (!(unit > 0)) return 0;

    // Sums of the distances before each edge, for the means.
    std::array<double, maximumElements + 2> sums{};
    double at = 0;
    for (std::size_t i = 0; i <= count; i++) {
        sums[i + 1] = sums[i] + (part[i] - part.front()) / unit - at;
        if (i < count) at += nominal(i);
    }
    double squares = 0, growth = 0;
    for (int pass = 0; pass < 2; pass++)
        for (std::size_t i = 0; i <= count; i++) {
            const std::size_t reach = std::min({i, count - i, trendReach});
            const double mean = (sums[i + reach + 1] - sums[i - reach]) / static_cast<double>(2 * reach + 1);
            const double apart = sums[i + 1] - sums[i] - mean, sign = i % 2 == 0 ? 1 : -1;
            if (pass == 0)
                growth += sign * apart / static_cast<double>(count + 1);
            else
                squares += (apart - sign * growth) * (apart - sign * growth);
        }
    return std::sqrt(squares / static_cast<double>(count + 1));
}

} // namespace Tesk::linear
