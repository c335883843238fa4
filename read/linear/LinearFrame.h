// What the decoders of linear symbologies have in common: the widths between the edges of a line, the test of quiet
// zones, and a symbol that is put together while it is read.
#pragma once

#include "read/linear/LinearCode.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Tesk::linear {

/// A symbol while it is read. Text and elements beyond the room for them void it.
class Symbol
{
public:
    explicit Symbol(Symbologies symbology) { read_.symbology = symbology; }

    void Add(char character);
    void Add(std::string_view text);
    void Clear(); ///< forgets the text
    /// Adds elements of the widths that the decimal digits of `pattern` tell, such as 211412.
    void AddPattern(int pattern);
    /// Adds a narrow or a wide element for each of the lowest `count` bits of `mask`, from the highest to the lowest.
    void AddTwoWidth(unsigned mask, int count, int wide = 3);
    void Flag(int flags) { read_.flags |= flags; }
    void SetFNC1(int position);
    void SetSymbology(Symbologies symbology) { read_.symbology = symbology; }
    void SetRow(const DatabarRow& row) { read_.row = row; }
    std::string_view Text() const { return read_.Text(); }

private:
    friend class Line;
    void AddElement(int width);

    SymbolRead read_;
    std::array<std::uint8_t, maximumElements> modules_;
    int elements_ = 0;
    bool tooLong_ = false;
};

/// A list of edges with what decoders ask of it. Element `i` lies between the edges `i` and `i` + 1.
class Line
{
public:
    Line(const EdgeList& list, const LinearSettings& settings, ReadSink& sink)
        : list_(list), sink_(sink), settings(settings)
    {}

    int Edges() const { return static_cast<int>(list_.positions.size()); }
    bool IsForward() const { return list_.forward; }
    std::int64_t Width(int element) const { return Span(element, 1); }
    /// The width of `count` elements from `first` on.
    std::int64_t Span(int first, int count) const
    {
        const std::size_t from = static_cast<std::size_t>(first);
        return std::int64_t{list_.positions[from + static_cast<std::size_t>(count)]} - list_.positions[from];
    }
    /// Whether the element that follows edge `edge` is dark.
    bool DarkAfter(int edge) const { return list_.rising == (edge % 2 != 0); }
    /// Whether the elements before the edge `first` and behind the edge `last` are at least `zone` / `divisor` wide; at
    /// an end of the line nothing is asked. Always true unless quiet zones are to be checked.
    bool IsQuiet(int first, int last, std::int64_t zone, std::int64_t divisor) const;
    /// Whether a quiet zone may lie before the edge `first`, which has five elements behind it: in every symbology it
    /// is wider than three elements of mean width, and two of those at its side are asked for.
    bool MayBegin(int first) const
    {
        return !settings.checkQuietZone || first == 0 || 5 * Width(first - 1) >= 2 * Span(first, 5);
    }
    /// Reports a symbol whose first edge is `first`, unless it has no text or too much of it. `mirrored` if its text
    /// runs against the list; its elements are in the order of the text. The index of its last edge, or -1.
    int Report(Symbol& symbol, int first, bool mirrored = false) const;

private:
    const EdgeList& list_;
    ReadSink& sink_;

public:
    const LinearSettings& settings;
};

/// Calls `read` with each edge that has at least `edges` - 1 behind it; it returns the index of the last edge of the
/// symbol that it reported, or -1. Goes on behind a symbol. Whether there was one.
///
/// Edges that have no quiet zone before them are passed at once, which spares most of the work, unless the symbology
/// needs none.
template <typename F>
bool ReadFromEachEdge(const Line& line, int edges, F read, bool needsQuietZone = true)
{
    bool found = false;
    for (int first = 0; first + edges <= line.Edges();) {
        const int last = needsQuietZone && !line.MayBegin(first) ? -1 : read(first);
        found = found || last >= 0;
        first = last >= 0 ? last + 1 : first + 1;
    }
    return found;
}

/// The ranks of the widths of `count` elements, `step` apart: how many of the other ones are narrower. Of equal ones
/// the earlier counts as narrower if `ranked`, else neither does.
template <int count>
std::array<int, count> RanksOf(const Line& line, int first, int step, bool ranked)
{
    std::array<std::int64_t, count> widths;
    for (int i = 0; i < count; ++i)
        widths[static_cast<std::size_t>(i)] = line.Width(first + i * step);
    // Each pair is compared once, without a branch: this is where most of the time goes on lines without symbols.
    std::array<int, count> ranks{};
    const std::int64_t tie = ranked ? 0 : 1;
    for (std::size_t j = 1; j < count; ++j) {
        for (std::size_t i = 0; i < j; ++i) {
            ranks[i] += widths[j] < widths[i] ? 1 : 0;
            ranks[j] += widths[i] + tie <= widths[j] ? 1 : 0;
        }
    }
    return ranks;
}

/// A bit for each of the elements, the highest for the first: set where the rank is at least `narrower`.
template <std::size_t count>
unsigned WideElements(const std::array<int, count>& ranks, int narrower)
{
    unsigned wide = 0;
    for (const int rank : ranks)
        wide = wide << 1 | (rank >= narrower ? 1u : 0u);
    return wide;
}

/// The extremes of the widths of narrow and of wide elements, bars apart from spaces, as ink that spreads makes them
/// different. Elements of one kind are alike all over a symbol of a two-width symbology, even a bent one: random
/// patterns rarely look so.
class ElementSpread
{
public:
    /// Adds an element for each of the lowest `count` bits of `wide`, the highest for the one at `first`.
    void Add(const Line& line, int first, unsigned wide, int count);
    bool IsUniform() const;

private:
    struct Extremes
    {
        std::int64_t least = INT64_MAX, most = 0;
    };
    std::array<std::array<Extremes, 2>, 2> extremes_; ///< by the parity of the element, and whether it is wide
};

/// The pattern "WNN" is 4: a bit for each letter, set for W.
constexpr unsigned TwoWidthMask(std::string_view letters)
{
    unsigned mask = 0;
    for (const char letter : letters)
        mask = mask << 1 | (letter == 'W' ? 1u : 0u);
    return mask;
}

/// The check digit of GS1: the digits weigh 3, 1, 3 ... from the last.
int CheckDigit(std::string_view digits);
/// Whether the last digit is the check digit of Luhn's formula over the other ones; what is no digit does not count.
bool LuhnHolds(std::string_view text);

bool DecodeEAN13(const Line& line);
bool DecodeEAN8(const Line& line);
bool DecodeUPCE(const Line& line);
bool DecodeCode128(const Line& line);
bool DecodeInterleaved2of5(const Line& line);
bool DecodeMatrix2of5(const Line& line);
bool DecodeMSI(const Line& line);
bool DecodeCode11(const Line& line);
bool DecodePharmacode(const Line& line);
bool DecodeDatabar(const Line& line);
bool DecodeDatabarRow(const Line& line);
bool DecodeDatabarLimited(const Line& line);
bool DecodeCode39(const Line& line);
bool DecodeCode93(const Line& line);
bool DecodeCodabar(const Line& line);

} // namespace Tesk::linear
