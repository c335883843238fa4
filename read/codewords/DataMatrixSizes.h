// The sizes of Data Matrix symbols, ECC 200.
#pragma once

#include "foundation/Enumerations.h"

#include <span>

namespace Tesk::codewords {

/// A size, in cells, data regions and codewords. Codeword `w` belongs to block `w % blocks`.
struct DataMatrixSize
{
    int rows, columns;              ///< cells of the symbol
    int regionsDown, regionsAcross; ///< each with its own border of one cell
    int data, check;                ///< codewords of all blocks
    int blocks;

    constexpr int RegionRows() const { return rows / regionsDown - 2; } ///< data modules of a region
    constexpr int RegionColumns() const { return columns / regionsAcross - 2; }
    constexpr int Words() const { return data + check; }
    /// Data codewords of a block: in the size of 144 x 144 the last two have one less.
    constexpr int BlockData(int block) const { return (data - block + blocks - 1) / blocks; }
    constexpr int BlockCheck() const { return check / blocks; }
};

/// The most codewords of a size.
constexpr int maximumDataMatrixWords = 2178;

/// All of them, from `Size10` to `Size16x48`.
std::span<const DataMatrixSize> DataMatrixSizes();
constexpr bool IsDataMatrixSize(int size)
{
    return size >= Size10 && size <= Size16x48;
}

} // namespace Tesk::codewords
