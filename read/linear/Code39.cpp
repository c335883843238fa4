// Code 39, and the full ASCII set as pairs of its characters. Three of the nine elements of a character are wide.
// ISO/IEC 16388.
#include "read/linear/Code39Patterns.h"
#include "read/linear/LinearFrame.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Tesk::linear {

namespace {

constexpr int startStop = 43;

/// The value of each mask of nine elements, -1 where there is none.
constexpr auto valuesByMask = [] {
    std::array<std::int8_t, 512> values{};
    values.fill(-1);
    for (std::size_t value = 0; value < code39Characters.size(); ++value)
        values[TwoWidthMask(code39Characters[value].elements)] = static_cast<std::int8_t>(value);
    return values;
}();

/// Whether the elements from `first` on may be a start character, by a look at its first eight.
bool MayStart(const Line& line, int first)
{
    const auto isWider = [&](int wide, int narrow) { return line.Width(first + wide) >= line.Width(first + narrow); };
    return isWider(1, 0) && isWider(1, 2) && isWider(4, 3) && isWider(4, 5) && isWider(6, 5) && isWider(6, 7);
}

/// The value of the character whose nine elements begin at `first`, or -1.
int ReadCharacter(const Line& line, int first, ElementSpread& spread)
{
    const unsigned wideElements = WideElements(RanksOf<9>(line, first, 1, true), 6);
    std::int64_t wide = 0;
    for (int i = 0; i < 9; ++i)
        if (wideElements >> (8 - i) & 1) wide += line.Width(first + i);
    const std::int64_t narrow = line.Span(first, 9) - wide;
    if (2 * wide < narrow || 2 * wide > 5 * narrow) return -1;
    spread.Add(line, first, wideElements, 9);
    return valuesByMask[wideElements];
}

/// Whether the last character is the check character, modulo 43, of the other ones.
bool HasCheckCharacter(std::string_view text)
{
    const auto valueOf = [](char character) {
        int value = 0;
        while (code39Characters[static_cast<std::size_t>(value)].character != character)
            ++value;
        return value;
    };
    int sum = 0;
    for (const char character : text.substr(0, text.size() - 1))
        sum += valueOf(character);
    return text.size() > 1 && sum % 43 == valueOf(text.back());
}

/// Whether the shift characters of a text must be those of the full ASCII set: a shift stands for a character that
/// cannot be printed without it, so that a plain text with a slash is not taken for one.
bool IsNeeded(char shift, char letter)
{
    const bool isPlain = shift == '/' && ((letter >= 'P' && letter <= 'Y') || letter == 'M' || letter == 'N');
    return !isPlain && !(shift == '%' && letter >= 'X');
}

/// Adds the text with each pair that begins with a shift character as the character that it stands for. False if there
/// is a shift character that has no letter behind it, or, if `strict`, one that no printer would put there.
bool AddFullASCII(std::string_view text, bool strict, Symbol& symbol)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (std::string_view("$%/+").find(text[i]) == std::string_view::npos) {
            symbol.Add(text[i]);
            continue;
        }
        if (i + 1 == text.size()) return false;
        const int character = ShiftedCharacter(text[i], text[i + 1]);
        if (character < 0 || (strict && !IsNeeded(text[i], text[i + 1]))) return false;
        symbol.Add(static_cast<char>(character));
        ++i;
    }
    return true;
}

/// Puts the text into the symbol as the enabled symbologies have it: a text without pairs is no less a Code 39 for the
/// other one being enabled. False if it is none.
bool AddText(const LinearSettings& settings, std::string_view text, Symbol& symbol)
{
    if (settings.detect39Extended && AddFullASCII(text, settings.detect39, symbol)) {
        if (!settings.detect39 || symbol.Text().size() < text.size()) symbol.SetSymbology(Code39Extended);
        return true;
    }
    if (!settings.detect39) return false;
    symbol.Clear();
    symbol.Add(text);
    return true;
}

/// Reads the symbol that begins at the edge `first`, as `ReadFromEachEdge` tells.
int ReadSymbol(const Line& line, int first)
{
    ElementSpread spread;
    if (!MayStart(line, first) || ReadCharacter(line, first, spread) != startStop) return -1;
    std::array<char, 2 * maximumTextLength> characters;
    std::size_t count = 0;
    Symbol symbol(Code39);
    const auto addElements = [&](int value) {
        symbol.AddTwoWidth(TwoWidthMask(code39Characters[static_cast<std::size_t>(value)].elements), 9);
    };
    addElements(startStop);
    int next = first + 10;
    for (;; next += 10) {
        if (next + 9 >= line.Edges()) return -1;
        // A gap is never wider than 5.3 modules, of the 12 or more of a character.
        if (2 * line.Width(next - 1) > line.Span(next - 10, 9)) return -1;
        const int value = ReadCharacter(line, next, spread);
        if (value < 0) return -1;
        symbol.AddPattern(1);
        addElements(value);
        if (value == startStop) break;
        if (count == characters.size()) return -1;
        characters[count++] = code39Characters[static_cast<std::size_t>(value)].character;
    }
    if (count == 0 || !spread.IsUniform()) return -1;
    const int last = next + 9, elements = last - first;
    if (!line.IsQuiet(first, last, 8 * line.Span(first, elements), elements + 1)) return -1;
    const std::string_view text(characters.data(), count);
    if (!HasCheckCharacter(text)) symbol.Flag(ChecksumFailed);
    return AddText(line.settings, text, symbol) ? line.Report(symbol, first) : -1;
}

} // namespace

bool DecodeCode39(const Line& line)
{
    return ReadFromEachEdge(line, 30, [&](int first) { return ReadSymbol(line, first); });
}

} // namespace Tesk::linear
