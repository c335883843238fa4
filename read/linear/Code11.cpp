// Code 11, of digits and dashes: five elements and a gap a character, one or two check characters. USS Code 11.
#include "read/linear/LinearFrame.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Tesk::linear {

namespace {

constexpr std::string_view characters = "0123456789-"; // by value
constexpr std::array<std::string_view, 12> patterns = {"NNNNW", "WNNNW", "NWNNW", "WWNNN", "NNWNW", "WNWNN",
                                                       "NWWNN", "NNNWW", "WNNWN", "WNNNN", "NNWNN", "NNWWN"};
constexpr int startStop = 11;

/// The widths of narrow and wide bars and spaces, which ink makes different. They follow the symbol: characters of one
/// wide element do not tell by themselves what is narrow.
class Levels
{
public:
    /// Takes them from a start character. False if the elements from `first` on are none.
    bool Start(const Line& line, int first)
    {
        for (int i = 0; i < 5; ++i)
            levels_[IsWide(startStop, i)][static_cast<std::size_t>(i % 2)] = line.Width(first + i);
        for (std::size_t colour = 0; colour < 2; ++colour)
            if (3 * levels_[1][colour] < 4 * levels_[0][colour]) return false;
        return ReadCharacter(line, first) == startStop;
    }

    /// The value of the character whose five elements begin at `first`, or -1.
    int ReadCharacter(const Line& line, int first)
    {
        unsigned wide = 0;
        for (int i = 0; i < 5; ++i) {
            const std::size_t colour = static_cast<std::size_t>(i % 2);
            const std::int64_t width = line.Width(first + i);
            const bool isWide = 2 * width > levels_[0][colour] + levels_[1][colour];
            if (2 * width < levels_[0][colour] || width > 2 * levels_[1][colour]) return -1;
            std::int64_t& level = levels_[isWide][colour];
            level = (3 * level + width) / 4;
            wide = wide << 1 | (isWide ? 1u : 0u);
        }
        for (std::size_t value = 0; value < patterns.size(); ++value)
            if (TwoWidthMask(patterns[value]) == wide) return static_cast<int>(value);
        return -1;
    }

private:
    static bool IsWide(int value, int element)
    {
        return patterns[static_cast<std::size_t>(value)][static_cast<std::size_t>(element)] == 'W';
    }

    std::array<std::array<std::int64_t, 2>, 2> levels_{}; ///< by whether wide, and bars before spaces
};

/// Whether the last character is the check character, modulo 11, of those before it, whose weights run from 1 to
/// `weights` again and again, from the right.
bool HasCheckCharacter(std::string_view text, std::size_t weights)
{
    std::size_t sum = 0;
    for (std::size_t i = 0; i + 1 < text.size(); ++i)
        sum += (i % weights + 1) * characters.find(text[text.size() - 2 - i]);
    return text.size() > 1 && sum % 11 == characters.find(text.back());
}

bool IsValid(std::string_view text)
{
    constexpr std::size_t mostWithOneCheck = 11; // ten characters and C
    if (text.size() <= mostWithOneCheck) return HasCheckCharacter(text, 10);
    return HasCheckCharacter(text, 9) && HasCheckCharacter(text.substr(0, text.size() - 1), 10);
}

/// Reads the symbol that begins at the edge `first`, as `ReadFromEachEdge` tells.
int ReadSymbol(const Line& line, int first)
{
    Levels levels;
    if (!levels.Start(line, first)) return -1;
    ElementSpread spread;
    spread.Add(line, first, TwoWidthMask(patterns[startStop]), 5);
    Symbol symbol(Code11);
    const auto addElements = [&](int value) {
        symbol.AddTwoWidth(TwoWidthMask(patterns[static_cast<std::size_t>(value)]), 5);
    };
    addElements(startStop);
    int next = first + 6;
    for (;; next += 6) {
        if (next + 5 >= line.Edges() || symbol.Text().size() > maximumTextLength) return -1;
        if (2 * line.Width(next - 1) > line.Span(next - 6, 5)) return -1;
        const int value = levels.ReadCharacter(line, next);
        if (value < 0) return -1;
        spread.Add(line, next, TwoWidthMask(patterns[static_cast<std::size_t>(value)]), 5);
        symbol.AddPattern(1);
        addElements(value);
        if (value == startStop) break;
        if (symbol.Text().size() == maximumTextLength) return -1;
        symbol.Add(characters[static_cast<std::size_t>(value)]);
    }
    if (symbol.Text().empty() || !spread.IsUniform()) return -1;
    const int last = next + 5, elements = last - first;
    if (!line.IsQuiet(first, last, 7 * line.Span(first, elements), elements + 1)) return -1;
    if (!IsValid(symbol.Text())) symbol.Flag(ChecksumFailed);
    return line.Report(symbol, first);
}

} // namespace

bool DecodeCode11(const Line& line)
{
    // A start, a character and a stop, with two gaps.
    return ReadFromEachEdge(line, 18, [&](int first) { return ReadSymbol(line, first); });
}

} // namespace Tesk::linear
