// The numbers of QR Code, Model 2: blocks, alignment patterns, format and version words.
#pragma once

#include <array>

namespace Tesk::codewords {

constexpr int maximumQRVersion = 40;
constexpr int maximumQRWords = 3706;
constexpr int maximumQRBlockWords = 153;

constexpr bool IsQRVersion(int version)
{
    return version >= 1 && version <= maximumQRVersion;
}
constexpr int QRSide(int version)
{
    return 4 * version + 17;
}

/// Levels of correction, in this order.
enum QRLevel : int
{
    LevelL,
    LevelM,
    LevelQ,
    LevelH
};

/// How the codewords of a symbol are dealt to blocks. The long blocks stand behind the short ones and have one data
/// word more.
struct QRBlocks
{
    int words; ///< of all blocks
    int blocks, shortBlocks;
    int shortData; ///< data words of a short block
    int check;     ///< check words of any block

    constexpr int Data() const { return words - blocks * check; }
    constexpr int BlockData(int block) const { return shortData + (block < shortBlocks ? 0 : 1); }
    /// The place in the symbol of word `index` of a block, check words behind the data words.
    constexpr int Word(int block, int index) const
    {
        const int data = BlockData(block);
        if (index >= data) return Data() + (index - data) * blocks + block;
        return index < shortData ? index * blocks + block : shortData * blocks + block - shortBlocks;
    }
    /// The block of a word of the symbol.
    constexpr int BlockOf(int word) const
    {
        if (word >= Data()) return (word - Data()) % blocks;
        return word < shortData * blocks ? word % blocks : shortBlocks + word - shortData * blocks;
    }
};

/// For a valid version and level.
QRBlocks BlocksOfQR(int version, int level);
/// What a version and level keep back from correction, so that it does not correct to a wrong word.
int MisdecodeProtection(int version, int level);

/// Codewords and left over bits that the modules of a version hold.
struct QRCapacity
{
    int words, remainderBits;
};
QRCapacity CapacityOfQR(int version);

/// The rows, and the columns, of the centres of alignment patterns; none in version 1. Those that would lie on a finder
/// pattern are left out of the symbol.
struct QRAlignment
{
    int count = 0;
    std::array<int, 7> centres{};

    /// Whether the pattern of these two indices is in the symbol.
    constexpr bool Has(int i, int j) const
    {
        return !((i == 0 && j == 0) || (i == 0 && j == count - 1) || (i == count - 1 && j == 0));
    }
};
QRAlignment AlignmentOfQR(int version);

/// What the format information tells.
struct QRFormat
{
    int level = LevelL, mask = 0;
    int word = 0; ///< as it stands in the symbol, mask pattern included
};

/// The 15 bits in a symbol of a level and a mask.
int QRFormatWord(int level, int mask);
/// The 18 bits in a symbol of version 7 and up.
int QRVersionWord(int version);
/// The nearest of the valid words, the first of equals; false if 4 bits or more differ.
bool MatchQRFormat(int bits, QRFormat& format);
bool MatchQRVersion(int bits, int& version);

/// Whether a mask inverts the module.
constexpr bool QRMaskInverts(int mask, int row, int column)
{
    switch (mask) {
    case 0:
        return (row + column) % 2 == 0;
    case 1:
        return row % 2 == 0;
    case 2:
        return column % 3 == 0;
    case 3:
        return (row + column) % 3 == 0;
    case 4:
        return (row / 2 + column / 3) % 2 == 0;
    case 5:
        return row * column % 2 + row * column % 3 == 0;
    case 6:
        return (row * column % 2 + row * column % 3) % 2 == 0;
    default:
        return ((row + column) % 2 + row * column % 3) % 2 == 0;
    }
}

} // namespace Tesk::codewords
