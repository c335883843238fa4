// The numbers of DotCode: dot patterns and words.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Tesk::codewords {

/// The lattice of the largest symbol.
constexpr int maximumDotCodeSide = 128;
/// The mask and the words of nine dots that it holds.
constexpr int maximumDotCodeWords = (maximumDotCodeSide * maximumDotCodeSide / 2 - 2) / 9 + 1;
constexpr int dotCodeWordDots = 9, dotCodeMaskDots = 2;
constexpr int dotCodeValues = 113;

/// The dots of each word value, the first one in the top of 9 bits.
extern const std::array<std::uint16_t, dotCodeValues> dotCodePatterns;
/// The value of 9 dots, or `erasedWord`.
std::uint16_t DotCodeValue(int pattern);

/// How the words of a symbol, with the mask as word 0, are dealt: word `w` belongs to block `w % blocks`.
struct DotCodeBlocks
{
    int words, data, blocks;

    /// Of the words read, one is left over where their number is a multiple of 3.
    static constexpr DotCodeBlocks Of(int wordsRead)
    {
        const int n = wordsRead % 3 == 0 ? wordsRead - 1 : wordsRead;
        return {n, n - n / 3 - 2, (n + dotCodeValues - 2) / (dotCodeValues - 1)};
    }
    constexpr int BlockWords(int block) const { return (words - 1 + blocks - block) / blocks; }
    constexpr int BlockData(int block) const { return (data - 1 + blocks - block) / blocks; }
};

} // namespace Tesk::codewords
