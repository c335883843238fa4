// Code 128, and GS1-128. Characters are told by the sums of adjacent elements, so that ink that spreads does not
// matter. ISO/IEC 15417.
#include "read/linear/Code128Patterns.h"
#include "read/linear/LinearFrame.h"

#include <array>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

namespace Tesk::linear {

namespace {

constexpr int modules = 11; // of a symbol character
constexpr int startA = 103, startC = 105, stop = 106;
constexpr char groupSeparator = 29;
constexpr int smallestSum = 2, largestSum = 7;

/// The value of each combination of the first four sums of adjacent elements, -1 where there is none.
constexpr auto valuesBySums = [] {
    std::array<std::int8_t, 6 * 6 * 6 * 6> values{};
    values.fill(-1);
    for (std::size_t value = 0; value < code128Patterns.size(); ++value) {
        std::size_t index = 0;
        for (int i = 0; i < 4; ++i) {
            const int sum = ElementOf(code128Patterns[value], i) + ElementOf(code128Patterns[value], i + 1);
            index = index * 6 + static_cast<std::size_t>(sum - smallestSum);
        }
        values[index] = static_cast<std::int8_t>(value);
    }
    return values;
}();

/// The value of the symbol character whose six elements begin at `first`, or -1.
int ReadCharacter(const Line& line, int first)
{
    const std::int64_t width = line.Span(first, 6);
    if (width <= 0) return -1;
    std::size_t index = 0;
    for (int i = 0; i < 4; ++i) {
        const std::int64_t sum = (2 * modules * line.Span(first + i, 2) + width) / (2 * width);
        if (sum < smallestSum || sum > largestSum) return -1;
        index = index * 6 + static_cast<std::size_t>(sum - smallestSum);
    }
    const int value = valuesBySums[index];
    if (value < 0) return -1;
    // The bars together may be off by less than 1.75 modules.
    const int pattern = code128Patterns[static_cast<std::size_t>(value)];
    const int barModules = ElementOf(pattern, 0) + ElementOf(pattern, 2) + ElementOf(pattern, 4);
    const std::int64_t bars = line.Width(first) + line.Width(first + 2) + line.Width(first + 4);
    return 4 * std::abs(modules * bars - barModules * width) < 7 * width ? value : -1;
}

/// Turns the values between the start and the check character into text.
class Interpreter
{
public:
    explicit Interpreter(bool identifier) : identifier_(identifier) {}

    /// False if a value has no meaning in its place.
    bool Interpret(int start, std::span<const std::uint8_t> values, Symbol& symbol)
    {
        set_ = static_cast<char>('A' + start - startA);
        for (const std::uint8_t value : values) {
            const char set = shifted_ ? (set_ == 'A' ? 'B' : 'A') : set_;
            shifted_ = false;
            if (set == 'C' ? !TakeDigits(value, symbol) : !Take(set, value, symbol)) return false;
            ++place_;
        }
        return true;
    }

private:
    bool TakeDigits(int value, Symbol& symbol)
    {
        if (value >= 100) return TakeFunction('C', value, symbol);
        symbol.Add(static_cast<char>('0' + value / 10));
        symbol.Add(static_cast<char>('0' + value % 10));
        return true;
    }

    bool Take(char set, int value, Symbol& symbol)
    {
        if (value >= 96) return TakeFunction(set, value, symbol);
        const int code = set == 'A' && value >= 64 ? value - 64 : value + 32;
        symbol.Add(static_cast<char>(code + (upperOnce_ != upper_ ? 128 : 0)));
        upperOnce_ = false;
        return true;
    }

    bool TakeFunction(char set, int value, Symbol& symbol)
    {
        if (value == 102) {
            TakeFNC1(symbol);
        } else if (value == 101 && set != 'A') {
            set_ = 'A';
        } else if (value == 100 && set != 'B') {
            set_ = 'B';
        } else if (value == 100 || value == 101) { // FNC4: two of them hold until the next two
            if (upperOnce_) upper_ = !upper_;
            upperOnce_ = !upperOnce_;
        } else if (value == 99) {
            set_ = 'C';
        } else if (value == 98) {
            shifted_ = true;
        } else if (value == 97) {
            symbol.Flag(AppendRequested);
        } else if (value == 96) {
            symbol.Flag(ReaderProgrammed);
        } else {
            return false;
        }
        return true;
    }

    void TakeFNC1(Symbol& symbol)
    {
        const auto text = symbol.Text();
        const bool twoDigits = text.size() == 2 && std::isdigit(static_cast<unsigned char>(text[0])) != 0 &&
                               std::isdigit(static_cast<unsigned char>(text[1])) != 0;
        if (place_ == 0) {
            symbol.SetFNC1(1);
            if (identifier_) symbol.Add("]C1");
        } else if (!seenFNC1_ && (place_ == 1 || twoDigits)) {
            symbol.SetFNC1(2);
        } else {
            symbol.Add(groupSeparator);
        }
        seenFNC1_ = true;
    }

    bool identifier_;
    char set_ = 'A';
    int place_ = 0;
    bool shifted_ = false, upper_ = false, upperOnce_ = false, seenFNC1_ = false;
};

/// Reads the symbol that begins at the edge `first`, as `ReadFromEachEdge` tells.
int ReadSymbol(const Line& line, int first)
{
    const int start = ReadCharacter(line, first);
    if (start < startA || start > startC) return -1;
    std::array<std::uint8_t, maximumElements / 6> values;
    std::size_t count = 0;
    int next = first + 6, check = start;
    for (;; next += 6) {
        if (next + 7 >= line.Edges() || count == values.size()) return -1;
        const int value = ReadCharacter(line, next);
        if (value == stop) break;
        if (value < 0 || value >= startA) return -1;
        values[count++] = static_cast<std::uint8_t>(value);
        check = (check + static_cast<int>(count) * value) % 103;
    }
    if (count < 2) return -1;
    // The check character itself was added with its place as weight.
    const int checkValue = values[count - 1];
    if ((check + 103 * 103 - static_cast<int>(count) % 103 * checkValue) % 103 != checkValue) return -1;
    // The last bar of the stop character has two modules.
    const std::int64_t terminator = 2 * modules * line.Width(next + 6), unit = line.Span(next, 6);
    if (terminator < 2 * unit || terminator > 7 * unit) return -1;
    const int last = next + 7, elements = last - first;
    if (!line.IsQuiet(first, last, 48 * line.Span(first, elements), modules * elements)) return -1;

    Symbol symbol(CodeEAN128);
    symbol.AddPattern(code128Patterns[static_cast<std::size_t>(start)]);
    for (std::size_t i = 0; i < count; ++i)
        symbol.AddPattern(code128Patterns[values[i]]);
    symbol.AddPattern(code128Patterns[stop]);
    symbol.AddPattern(2);
    Interpreter interpreter(line.settings.symbologyIdentifier);
    if (!interpreter.Interpret(start, std::span(values).first(count - 1), symbol)) return -1;
    return line.Report(symbol, first);
}

} // namespace

bool DecodeCode128(const Line& line)
{
    return ReadFromEachEdge(line, 20, [&](int first) { return ReadSymbol(line, first); });
}

} // namespace Tesk::linear
