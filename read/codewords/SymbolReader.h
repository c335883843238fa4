// Reads a matrix code from its cells to its text.
#pragma once

#include "foundation/Enumerations.h"
#include "read/codewords/CellGrid.h"
#include "read/codewords/DataMatrixCells.h"
#include "read/codewords/DotCodeCells.h"
#include "read/codewords/DotCodeText.h"
#include "read/codewords/QRCells.h"
#include "read/codewords/SymbolText.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace Tesk::codewords {

/// How far a symbol was read.
enum ReadState : int
{
    SymbolRead = 0,
    DataMatrixErrors = 3, ///< too many for correction
    DataMatrixNoText = 5,
    NoSymbolCells = 102, ///< a size, version or lattice that no symbol has
    BlockErrors = 103,   ///< of QR or DotCode: too many for correction
    NoText = 104,        ///< of QR or DotCode
};

/// The tables of the symbol at hand and its codewords: working memory of some 200 kilobytes, none of which is allocated
/// while it reads. What it tells holds until the next symbol is read, for grading too.
class SymbolReader
{
public:
    /// Reads the cells of one of the `Sizes`, straight and then mirrored as `views` (a set of `CodeViews`) has it. A
    /// mirrored rectangle has its rows and columns exchanged in the grid. After a read, and only then, wrong cells are
    /// marked.
    ReadState ReadDataMatrix(DataMatrixGrid& grid, int size, int views, bool identifier);
    /// Reads cells whose format and version are known. After a correction, and only then, wrong cells are marked; the
    /// mask stays in the cells.
    ReadState ReadQR(QRGrid& grid, int version, const QRFormat& format, bool identifier);
    /// Reads a lattice of dots, which `hasDot(row, column)` tells; see `DotCodeCells::Prepare`.
    template <typename HasDot>
    ReadState ReadDotCode(int width, int height, bool firstCell, HasDot hasDot, bool identifier)
    {
        unusedError_ = 0;
        if (!dotCode_.Prepare(width, height, firstCell)) return NoSymbolCells;
        const auto words = Take(dotCode_.Words());
        dotCode_.Read(hasDot, words);
        return FinishDotCode(words, identifier);
    }

    const SymbolText& Text() const { return text_; }
    double UnusedError() const { return unusedError_; } ///< the share of the correction that the worst block had left
    CodeViews View() const { return view_; }            ///< of a Data Matrix
    /// Corrected, in the order of the symbol, check words included.
    std::span<const std::uint16_t> Words() const { return {words_.data(), count_}; }
    const DataMatrixCells& DataMatrix() const { return dataMatrix_; }
    const QRCells& QR() const { return qr_; }
    const DotCodeCells& DotCode() const { return dotCode_; }

private:
    std::span<std::uint16_t> Take(int count)
    {
        count_ = static_cast<std::size_t>(count);
        return {words_.data(), count_};
    }
    bool CorrectView(DataMatrixGrid& grid);
    ReadState FinishDotCode(std::span<std::uint16_t> words, bool identifier);

    DataMatrixCells dataMatrix_;
    QRCells qr_;
    DotCodeCells dotCode_;
    SymbolText text_;
    std::array<std::uint16_t, maximumQRWords> words_{}, data_{};
    std::size_t count_ = 0;
    double unusedError_ = 0;
    CodeViews view_ = Straight;
};
static_assert(maximumQRWords >= maximumDataMatrixWords && maximumQRWords >= maximumDotCodeWords);

} // namespace Tesk::codewords
