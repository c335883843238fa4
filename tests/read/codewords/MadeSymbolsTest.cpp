// Whole symbols, made by others, from cells to text: as they are, damaged, and turned.
#include "MadeSymbols.h"
#include "read/codewords/DataMatrixCells.h"
#include "read/codewords/DataMatrixText.h"
#include "read/codewords/DotCodeCells.h"
#include "read/codewords/DotCodeText.h"
#include "read/codewords/QRCells.h"
#include "read/codewords/QRText.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace Tesk::codewords {
namespace {

/// All that is needed to read a symbol.
struct Reader
{
    DataMatrixCells dataMatrix;
    DataMatrixGrid dataMatrixGrid;
    QRCells qr;
    QRGrid qrGrid;
    DotCodeCells dotCode;
    SymbolText text;
    std::vector<std::uint16_t> words, data;
    double unused = 0;

    template <typename IsDark>
    bool ReadDataMatrix(int size, IsDark isDark)
    {
        if (!dataMatrix.Prepare(size)) return false;
        for (int row = 0; row < dataMatrix.Size().rows; ++row)
            for (int column = 0; column < dataMatrix.Size().columns; ++column)
                dataMatrixGrid.At(row, column) = isDark(row, column) ? 0 : LightCell;
        words.resize(static_cast<std::size_t>(dataMatrix.Size().Words()));
        dataMatrix.Read(dataMatrixGrid, words);
        if (!CorrectDataMatrix(words, dataMatrix.Size(), unused)) return false;
        dataMatrix.Mark(dataMatrixGrid, words);
        return DataMatrixText(std::span(words).first(static_cast<std::size_t>(dataMatrix.Size().data)), true, text);
    }

    template <typename IsDark>
    bool ReadQR(int side, IsDark isDark)
    {
        QRFormat format;
        int version = 0;
        if (!ReadQRFormat(side, isDark, format) || !ReadQRVersion(side, isDark, version) || !qr.Prepare(version))
            return false;
        for (int row = 0; row < side; ++row)
            for (int column = 0; column < side; ++column)
                qrGrid.At(row, column) = isDark(row, column) ? 0 : LightCell;
        qr.Mask(qrGrid, format.mask);
        const QRBlocks blocks = BlocksOfQR(version, format.level);
        words.resize(static_cast<std::size_t>(blocks.words));
        data.resize(static_cast<std::size_t>(blocks.Data()));
        qr.Read(qrGrid, words);
        if (!CorrectQR(words, version, format.level, data, unused)) return false;
        qr.Mark(qrGrid, words, format);
        return QRText(data, version, true, text);
    }

    template <typename HasDot>
    bool ReadDotCode(int rows, int columns, bool first, HasDot hasDot)
    {
        if (!dotCode.Prepare(columns, rows, first)) return false;
        words.resize(static_cast<std::size_t>(dotCode.Words()));
        dotCode.Read(hasDot, words);
        if (!CorrectDotCode(words, unused)) return false;
        const auto count = static_cast<std::size_t>(DotCodeBlocks::Of(dotCode.Words()).data);
        return DotCodeText(std::span(words).first(count), true, text);
    }
};

int SizeOf(int rows, int columns)
{
    for (int i = Size10; i <= Size16x48; ++i)
        if (DataMatrixSizes()[static_cast<std::size_t>(i)].rows == rows &&
            DataMatrixSizes()[static_cast<std::size_t>(i)].columns == columns)
            return i;
    return -1;
}

/// The cells of a symbol, of which some can be hurt.
struct Cells
{
    explicit Cells(const MadeSymbol& made) : columns(made.columns)
    {
        for (const char digit : made.cells)
            for (int bit = 3; bit >= 0; --bit)
                dark.push_back(((digit <= '9' ? digit - '0' : digit - 'a' + 10) >> bit & 1) != 0);
    }
    bool operator()(int row, int column) const { return dark[static_cast<std::size_t>(row * columns + column)]; }

    int columns;
    std::vector<bool> dark;
};

bool ReadCells(Reader& reader, const MadeSymbol& symbol, const Cells& cells)
{
    if (symbol.family == MadeFamily::DataMatrix)
        return reader.ReadDataMatrix(SizeOf(symbol.rows, symbol.columns), cells);
    if (symbol.family == MadeFamily::QR) return reader.ReadQR(symbol.rows, cells);
    return reader.ReadDotCode(symbol.rows, symbol.columns, true, cells);
}

TEST(MadeSymbols, AreReadAsTheyAre)
{
    const auto reader = std::make_unique<Reader>();
    for (const MadeSymbol& symbol : madeSymbols) {
        SCOPED_TRACE(symbol.name);
        ASSERT_TRUE(ReadCells(*reader, symbol, Cells(symbol)));
        EXPECT_EQ(reader->text.View(), symbol.text);
        // Dots in the corners may be printed in any case, which costs two words.
        EXPECT_GE(reader->unused, symbol.family == MadeFamily::DotCode ? 0.7 : 1.0);
        const bool appended = std::string(symbol.name).find("Structured Append") != std::string::npos;
        EXPECT_EQ(reader->text.symbolTotal, appended ? 7 : 0);
        EXPECT_EQ(reader->text.symbolPosition, !appended ? 0 : symbol.family == MadeFamily::QR ? 3 : 2);
    }
}

TEST(MadeSymbols, WrongCellsAreCorrectedAndMarked)
{
    const auto reader = std::make_unique<Reader>();
    std::mt19937 random(3);
    for (const MadeSymbol& symbol : madeSymbols)
        for (int repeat = 0; repeat < 8; ++repeat) {
            SCOPED_TRACE(symbol.name);
            const Cells whole(symbol);
            Cells cells = whole;
            for (int i = 0; i < 2; ++i)
                cells.dark[random() % static_cast<unsigned>(symbol.rows * symbol.columns)].flip();
            ASSERT_TRUE(ReadCells(*reader, symbol, cells));
            EXPECT_EQ(reader->text.View(), symbol.text);
            if (symbol.family == MadeFamily::DotCode) continue;
            const bool qr = symbol.family == MadeFamily::QR;
            for (int row = 0; row < symbol.rows; ++row)
                for (int column = 0; column < symbol.columns; ++column) {
                    if (qr && reader->qr.At(row, column).Is(SymbolModule::RemainderBit)) continue;
                    const int cell = qr ? reader->qrGrid.At(row, column) : reader->dataMatrixGrid.At(row, column);
                    EXPECT_EQ((cell & WrongCell) != 0, cells(row, column) != whole(row, column))
                        << row << ", " << column;
                }
        }
}

TEST(MadeSymbols, DotCodeIsReadUpsideDownByTheParityOfItsLattice)
{
    const auto reader = std::make_unique<Reader>();
    for (const MadeSymbol& symbol : madeSymbols) {
        if (symbol.family != MadeFamily::DotCode) continue;
        const Cells dark(symbol);
        EXPECT_TRUE(reader->ReadDotCode(symbol.rows, symbol.columns, false, [&](int row, int column) {
            return dark(symbol.rows - 1 - row, symbol.columns - 1 - column);
        }));
        EXPECT_EQ(reader->text.View(), symbol.text);
        // A quarter turn exchanges the sides.
        EXPECT_TRUE(reader->ReadDotCode(symbol.columns, symbol.rows, symbol.columns % 2 != 0,
                                        [&](int row, int column) { return dark(column, symbol.columns - 1 - row); }));
        EXPECT_EQ(reader->text.View(), symbol.text);
    }
}

TEST(MadeSymbols, CellsOfNoSymbolAreRefused)
{
    const auto reader = std::make_unique<Reader>();
    std::mt19937 random(9);
    const auto noise = [&](int, int) { return random() % 2 != 0; };
    int read = 0;
    for (int i = 0; i < 300; ++i) {
        read += reader->ReadDataMatrix(Size18 + i % (Size16x48 - Size18), noise);
        read += reader->ReadQR(QRSide(1 + i % 40), noise);
        read += reader->ReadDotCode(i % 131, (7 * i) % 131 + 1, i % 2 == 0, noise);
    }
    // A small Data Matrix of noise may be a code word.
    EXPECT_LE(read, 6);
}

} // namespace
} // namespace Tesk::codewords
