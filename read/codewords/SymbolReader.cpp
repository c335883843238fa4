// Reads a matrix code from its cells to its text: place, correct, mark, decode.
#include "read/codewords/SymbolReader.h"

#include "read/codewords/DataMatrixText.h"
#include "read/codewords/QRText.h"

namespace Tesk::codewords {

bool SymbolReader::CorrectView(DataMatrixGrid& grid)
{
    const auto words = Take(dataMatrix_.Size().Words());
    dataMatrix_.Read(grid, words);
    if (!CorrectDataMatrix(words, dataMatrix_.Size(), unusedError_)) return false;
    dataMatrix_.Mark(grid, words);
    return true;
}

ReadState SymbolReader::ReadDataMatrix(DataMatrixGrid& grid, int size, int views, bool identifier)
{
    unusedError_ = 0;
    if (!dataMatrix_.Prepare(size)) return DataMatrixErrors;
    const int rows = dataMatrix_.Size().rows, columns = dataMatrix_.Size().columns;
    view_ = Straight;
    bool corrected = (views & Straight) != 0 && CorrectView(grid);
    if (!corrected && (views & Mirrored) != 0) {
        view_ = Mirrored;
        grid.Mirror(columns, rows);
        corrected = CorrectView(grid);
        grid.Mirror(rows, columns);
    }
    if (!corrected) return DataMatrixErrors;
    const auto data = Words().first(static_cast<std::size_t>(dataMatrix_.Size().data));
    return DataMatrixText(data, identifier, text_) ? SymbolRead : DataMatrixNoText;
}

ReadState SymbolReader::ReadQR(QRGrid& grid, int version, const QRFormat& format, bool identifier)
{
    unusedError_ = 0;
    if (!qr_.Prepare(version) || format.level < LevelL || format.level > LevelH) return NoSymbolCells;
    const QRBlocks blocks = BlocksOfQR(version, format.level);
    const auto words = Take(blocks.words);
    const auto data = std::span(data_).first(static_cast<std::size_t>(blocks.Data()));
    qr_.Mask(grid, format.mask);
    qr_.Read(grid, words);
    const bool corrected = CorrectQR(words, version, format.level, data, unusedError_);
    if (corrected) qr_.Mark(grid, words, format);
    qr_.Mask(grid, format.mask);
    if (!corrected) return BlockErrors;
    return QRText(data, version, identifier, text_) ? SymbolRead : NoText;
}

ReadState SymbolReader::FinishDotCode(std::span<std::uint16_t> words, bool identifier)
{
    if (!CorrectDotCode(words, unusedError_)) return BlockErrors;
    const int data = DotCodeBlocks::Of(dotCode_.Words()).data;
    return DotCodeText(words.first(static_cast<std::size_t>(data)), identifier, text_) ? SymbolRead : NoText;
}

} // namespace Tesk::codewords
