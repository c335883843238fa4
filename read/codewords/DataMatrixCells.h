// Where the codewords of a Data Matrix lie in its cells.
#pragma once

#include "read/codewords/CellGrid.h"
#include "read/codewords/DataMatrixSizes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace Tesk::codewords {

/// The modules of a size: its codewords as the standard places them, and the fixed borders of its regions.
class DataMatrixCells
{
public:
    /// Works out the modules of one of the `Sizes`, unless they are there already; false for a size of another family.
    bool Prepare(int size);
    const DataMatrixSize& Size() const { return DataMatrixSizes()[static_cast<std::size_t>(size_)]; }
    /// The first column and the last row of each region are dark, the first row and the last column alternate.
    SymbolModule At(int row, int column) const
    {
        return modules_[static_cast<std::size_t>(row) * 144 + static_cast<std::size_t>(column)];
    }

    /// Reads the codewords from the cells; `words` takes `Size().Words()` of them.
    void Read(const DataMatrixGrid& grid, std::span<std::uint16_t> words) const;
    /// Marks the cells that differ from the corrected codewords or from the fixed patterns, and takes all other marks
    /// away.
    void Mark(DataMatrixGrid& grid, std::span<const std::uint16_t> words) const;

private:
    void PlaceBorders();
    void PlaceWords();
    void PlaceWord(int row, int column, int word);
    void PlaceCorner(int shape, int word);
    void PlaceBit(int row, int column, int word, int bit);
    SymbolModule& DataModule(int row, int column);

    int size_ = -1;
    std::array<SymbolModule, std::size_t{144} * 144> modules_;
};

} // namespace Tesk::codewords
