// How far the measured widths of a symbol's elements are from being taken for others: the decodability of ISO/IEC
// 15416, by the reference decoding of each symbology.
#include "read/linear/LinearCode.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>

namespace Tesk::linear {

namespace {

/// Elements that are measured together, and what is expected of them.
struct Character
{
    std::span<const int> widths;
    std::span<const std::uint8_t> modules;
    std::size_t first; ///< the place of its first element in the symbol; bars have even places

    double Total() const
    {
        double sum = 0;
        for (const int width : widths)
            sum += width;
        return sum;
    }
    int Modules() const
    {
        int sum = 0;
        for (const std::uint8_t width : modules)
            sum += width;
        return sum;
    }
    /// What the bars measure beyond what is expected of them, in modules.
    double BarExcess() const
    {
        double excess = 0;
        for (std::size_t i = 0; i < widths.size(); ++i)
            if ((first + i) % 2 == 0) excess += double{1} * widths[i] * Modules() / Total() - modules[i];
        return excess;
    }
    bool IsWide(std::size_t element) const { return modules[element] > 1; }
};

/// Sums of adjacent elements may be off by half a module before they are rounded to another number. The last two
/// follow from the other ones.
double EdgeToSimilarEdge(const Character& character)
{
    const double total = character.Total();
    const int modules = character.Modules();
    double worst = 0;
    for (std::size_t i = 0; i + 2 < character.widths.size(); ++i) {
        const double sum = (double{1} * character.widths[i] + character.widths[i + 1]) * modules / total;
        worst = std::max(worst, std::abs(sum - character.modules[i] - character.modules[i + 1]));
    }
    return 1 - 2 * worst;
}

/// The digits 1, 2, 7 and 8 of retail are told apart by their bars, which may be off by a module.
double RetailDigit(const Character& character)
{
    const std::uint8_t first = character.modules[0], second = character.modules[1], third = character.modules[2];
    const int sums = 10 * (first + second) + second + third;
    const bool isAmbiguous = sums == 44 || sums == 33 || sums == 34 || sums == 43;
    const double value = EdgeToSimilarEdge(character);
    return isAmbiguous ? std::min(value, 1 - std::abs(character.BarExcess())) : value;
}

/// The bars of Code 128 together may be off by 1.75 modules.
double Code128Character(const Character& character)
{
    return std::min(EdgeToSimilarEdge(character), 1 - std::abs(character.BarExcess()) / 1.75);
}

/// The mean widths of the narrow and of the wide elements of a symbol.
struct Means
{
    std::array<double, 2> mean{};

    Means(std::span<const int> widths, std::span<const std::uint8_t> modules, int spaceModules = 0)
    {
        std::array<double, 2> counts{};
        for (std::size_t i = 0; i < widths.size(); ++i) {
            if (modules[i] == spaceModules) continue;
            const std::size_t kind = modules[i] > 1 ? 1 : 0;
            mean[kind] += widths[i];
            ++counts[kind];
        }
        for (std::size_t kind = 0; kind < 2; ++kind)
            mean[kind] /= std::max(counts[kind], 1.0);
    }
};

/// The smallest distance from the threshold, as a part of that of the mean of the elements of its kind.
double TwoWidth(const Character& character, double threshold, const Means& means)
{
    if (means.mean[0] >= threshold || (means.mean[1] > 0 && means.mean[1] <= threshold)) return 0;
    double least = 1;
    for (std::size_t i = 0; i < character.widths.size(); ++i) {
        const double mean = means.mean[character.IsWide(i) ? 1 : 0];
        least = std::min(least, (threshold - character.widths[i]) / (threshold - mean));
    }
    return least;
}

/// The middle between narrow and wide where the wide elements have two and a half times the width.
double CodabarThreshold(const Character& character)
{
    constexpr double ratio = 2.5;
    double wide = 0;
    for (std::size_t i = 0; i < character.widths.size(); ++i)
        wide += character.IsWide(i) ? 1 : 0;
    return character.Total() * (1 + ratio) / 2 / (static_cast<double>(character.widths.size()) + (ratio - 1) * wide);
}

/// Where the characters of a symbology stand.
struct Layout
{
    std::size_t first, count, stride,
        behind; ///< elements before, in and from one to the next character, and behind all
};

template <typename F>
double LeastOf(std::span<const int> widths, std::span<const std::uint8_t> modules, Layout layout, F value)
{
    double least = 1;
    bool found = false;
    for (std::size_t i = layout.first; i + layout.count + layout.behind <= widths.size(); i += layout.stride) {
        const Character character{widths.subspan(i, layout.count), modules.subspan(i, layout.count), i};
        if (character.Total() <= 0) return 0;
        least = std::min(least, value(character));
        found = true;
    }
    return found ? least : 0;
}

double TwoWidthSymbol(std::span<const int> widths, std::span<const std::uint8_t> modules, Layout layout, double factor)
{
    const Means means(widths, modules);
    return LeastOf(widths, modules, layout,
                   [&](const Character& character) { return TwoWidth(character, factor * character.Total(), means); });
}

/// A value for each of the layouts, the least of them.
template <typename F>
double LeastOfAll(std::span<const int> widths, std::span<const std::uint8_t> modules,
                  std::initializer_list<Layout> layouts, F value)
{
    double least = 1;
    for (const Layout& layout : layouts)
        least = std::min(least, LeastOf(widths, modules, layout, value));
    return least;
}

double Pharmacode(std::span<const int> widths, std::span<const std::uint8_t> modules)
{
    double spaces = 0, count = 0;
    for (std::size_t i = 1; i < widths.size(); i += 2, ++count)
        spaces += widths[i];
    const Means means(widths, modules, 2);
    return LeastOf(widths, modules, {0, 1, 2, 0},
                   [&](const Character& bar) { return TwoWidth(bar, spaces / std::max(count, 1.0), means); });
}

/// The decodability, below 0 where elements are taken for others.
double Value(Symbologies symbology, std::span<const int> w, std::span<const std::uint8_t> m)
{
    switch (symbology) {
    case CodeEAN13:
    case CodeUPCA:
        return w.size() == 59 ? LeastOfAll(w, m, {{3, 4, 4, 32}, {32, 4, 4, 3}}, RetailDigit) : 0;
    case CodeEAN8:
        return w.size() == 43 ? LeastOfAll(w, m, {{3, 4, 4, 24}, {24, 4, 4, 3}}, RetailDigit) : 0;
    case CodeUPCE:
        return w.size() == 33 ? LeastOf(w, m, {3, 4, 4, 6}, RetailDigit) : 0;
    case CodeEAN128:
        return LeastOf(w, m, {0, 6, 6, 1}, Code128Character);
    case Code93:
        return LeastOf(w, m, {0, 6, 6, 1}, EdgeToSimilarEdge);
    case Code2of5:
    case CodeITF14:
        return TwoWidthSymbol(w, m, {4, 10, 10, 3}, 0.125);
    case Code39:
    case Code39Extended:
        return TwoWidthSymbol(w, m, {0, 9, 10, 0}, 0.12987013);
    case CodeMatrix2of5:
        return TwoWidthSymbol(w, m, {6, 5, 6, 5}, 0.23333333);
    case CodeMSI:
        return TwoWidthSymbol(w, m, {2, 8, 8, 3}, 0.125);
    case Code11:
        return TwoWidthSymbol(w, m, {0, 5, 6, 0}, 0.19607843);
    case CodeCodabar: {
        const Means means(w, m);
        return LeastOf(w, m, {0, 7, 8, 0}, [&](const Character& character) {
            return TwoWidth(character, CodabarThreshold(character), means);
        });
    }
    case CodePharmacode:
        return Pharmacode(w, m);
    case CodeDatabar:
        return w.size() == 45
                   ? LeastOfAll(w, m, {{1, 8, 45, 0}, {9, 5, 45, 0}, {14, 8, 8, 15}, {30, 5, 45, 0}, {35, 8, 45, 0}},
                                EdgeToSimilarEdge)
                   : 0;
    case CodeDatabarLimited:
        return w.size() == 45 ? LeastOf(w, m, {1, 14, 14, 2}, EdgeToSimilarEdge) : 0;
    default:
        return 0;
    }
}

} // namespace

double Decodability(Symbologies symbology, std::span<const int> elementWidths, std::span<const std::uint8_t> modules)
{
    if (elementWidths.size() != modules.size()) return 0;
    return std::clamp(Value(symbology, elementWidths, modules), 0.0, 1.0);
}

bool ReferenceDecodes(Symbologies symbology, std::span<const int> elementWidths, std::span<const std::uint8_t> modules)
{
    return Decodability(symbology, elementWidths, modules) > 0;
}

} // namespace Tesk::linear
