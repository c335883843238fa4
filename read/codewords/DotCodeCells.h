// Where the words of a DotCode lie in its lattice of dots.
#pragma once

#include "read/codewords/DotCodeTables.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace Tesk::codewords {

struct DotPlace
{
    std::uint8_t row, column;
};

/// The dots of a lattice in the order in which the symbol is read. The parities of the lattice tell which of its four
/// sides is the upper one: the symbol stands upright with an odd width, an even height and a first cell that can have a
/// dot.
class DotCodeCells
{
public:
    /// Works out the order for `width` x `height` cells; `firstCell` tells whether the cell of row and column 0 is one
    /// of those that can have a dot. False for sizes that are none of a symbol.
    bool Prepare(int width, int height, bool firstCell);
    int Dots() const { return count_; }
    /// Words that the dots hold, the mask counted.
    int Words() const { return (count_ - dotCodeMaskDots) / dotCodeWordDots + 1; }
    DotPlace Dot(int index) const { return places_[static_cast<std::size_t>(index)]; }
    /// The first dot of a word, of `DotsOf` it. The top bit comes first.
    static constexpr int FirstDot(int word) { return word == 0 ? 0 : dotCodeMaskDots + (word - 1) * dotCodeWordDots; }
    static constexpr int DotsOf(int word) { return word == 0 ? dotCodeMaskDots : dotCodeWordDots; }
    /// The dots of a corrected word, as bits.
    static int PatternOf(int word, std::uint16_t value);

    /// Reads the words from the dots, which `hasDot(row, column)` tells; those of no valid pattern are erased. `words`
    /// takes `Words()` of them.
    template <typename HasDot>
    void Read(HasDot hasDot, std::span<std::uint16_t> words) const
    {
        for (int word = 0; word < Words(); ++word) {
            int bits = 0;
            for (int i = 0; i < DotsOf(word); ++i) {
                const DotPlace place = Dot(FirstDot(word) + i);
                bits = bits << 1 | (hasDot(int{place.row}, int{place.column}) ? 1 : 0);
            }
            words[static_cast<std::size_t>(word)] = word == 0 ? static_cast<std::uint16_t>(bits) : DotCodeValue(bits);
        }
    }

private:
    void Add(int row, int column);

    int width_ = 0, height_ = 0, count_ = 0;
    bool firstCell_ = false;
    std::array<DotPlace, std::size_t{maximumDotCodeSide} * maximumDotCodeSide / 2> places_;
};

} // namespace Tesk::codewords
