// Whole symbols, made by others, from cells to text: as they are, damaged, and turned.
#include "MadeSymbols.h"
#include "read/codewords/SymbolReader.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace Tesk::codewords {
namespace {

struct Reader : SymbolReader
{
    template <typename IsDark>
    bool ReadDataMatrixCells(int size, IsDark isDark, int views = Straight)
    {
        const DataMatrixSize& cells = DataMatrixSizes()[static_cast<std::size_t>(size)];
        for (int row = 0; row < cells.rows; ++row)
            for (int column = 0; column < cells.columns; ++column)
                dataMatrixGrid.At(row, column) = isDark(row, column) ? 0 : LightCell;
        return ReadDataMatrix(dataMatrixGrid, size, views, true) == SymbolRead;
    }

    template <typename IsDark>
    bool ReadQRCells(int side, IsDark isDark)
    {
        QRFormat format;
        int version = 0;
        if (!ReadQRFormat(side, isDark, format) || !ReadQRVersion(side, isDark, version)) return false;
        for (int row = 0; row < side; ++row)
            for (int column = 0; column < side; ++column)
                qrGrid.At(row, column) = isDark(row, column) ? 0 : LightCell;
        return ReadQR(qrGrid, version, format, true) == SymbolRead;
    }

    DataMatrixGrid dataMatrixGrid;
    QRGrid qrGrid;
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
        return reader.ReadDataMatrixCells(SizeOf(symbol.rows, symbol.columns), cells);
    if (symbol.family == MadeFamily::QR) return reader.ReadQRCells(symbol.rows, cells);
    return reader.ReadDotCode(symbol.columns, symbol.rows, true, cells, true) == SymbolRead;
}

TEST(MadeSymbols, AreReadAsTheyAre)
{
    const auto reader = std::make_unique<Reader>();
    for (const MadeSymbol& symbol : madeSymbols) {
        SCOPED_TRACE(symbol.name);
        ASSERT_TRUE(ReadCells(*reader, symbol, Cells(symbol)));
        EXPECT_EQ(reader->Text().View(), symbol.text);
        // Dots in the corners may be printed in any case, which costs two words.
        EXPECT_GE(reader->UnusedError(), symbol.family == MadeFamily::DotCode ? 0.7 : 1.0);
        const bool appended = std::string(symbol.name).find("Structured Append") != std::string::npos;
        EXPECT_EQ(reader->Text().symbolTotal, appended ? 7 : 0);
        EXPECT_EQ(reader->Text().symbolPosition, !appended ? 0 : symbol.family == MadeFamily::QR ? 3 : 2);
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
            EXPECT_EQ(reader->Text().View(), symbol.text);
            if (symbol.family == MadeFamily::DotCode) continue;
            const bool qr = symbol.family == MadeFamily::QR;
            for (int row = 0; row < symbol.rows; ++row)
                for (int column = 0; column < symbol.columns; ++column) {
                    if (qr && reader->QR().At(row, column).Is(SymbolModule::RemainderBit)) continue;
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
        const auto turned = [&](int row, int column) {
            return dark(symbol.rows - 1 - row, symbol.columns - 1 - column);
        };
        EXPECT_EQ(reader->ReadDotCode(symbol.columns, symbol.rows, false, turned, true), SymbolRead);
        EXPECT_EQ(reader->Text().View(), symbol.text);
        // A quarter turn exchanges the sides.
        const auto quarter = [&](int row, int column) { return dark(column, symbol.columns - 1 - row); };
        EXPECT_EQ(reader->ReadDotCode(symbol.rows, symbol.columns, symbol.columns % 2 != 0, quarter, true), SymbolRead);
        EXPECT_EQ(reader->Text().View(), symbol.text);
    }
}

TEST(MadeSymbols, MirroredDataMatrixIsReadWhereThatIsAskedFor)
{
    const auto reader = std::make_unique<Reader>();
    for (const MadeSymbol& symbol : madeSymbols) {
        const Cells dark(symbol);
        const auto mirrored = [&](int row, int column) {
            return dark(symbol.rows - 1 - column, symbol.columns - 1 - row);
        };
        if (symbol.family != MadeFamily::DataMatrix || symbol.rows != symbol.columns) continue;
        const int size = SizeOf(symbol.rows, symbol.columns);
        EXPECT_FALSE(reader->ReadDataMatrixCells(size, mirrored));
        EXPECT_TRUE(reader->ReadDataMatrixCells(size, mirrored, AutoView));
        EXPECT_EQ(reader->View(), Mirrored);
        EXPECT_EQ(reader->Text().View(), symbol.text);
        EXPECT_EQ(reader->dataMatrixGrid.At(0, 0), mirrored(0, 0) ? 0 : LightCell);
    }
}

TEST(MadeSymbols, CellsOfNoSymbolAreRefused)
{
    const auto reader = std::make_unique<Reader>();
    std::mt19937 random(9);
    const auto noise = [&](int, int) { return random() % 2 != 0; };
    int read = 0;
    for (int i = 0; i < 300; ++i) {
        read += reader->ReadDataMatrixCells(Size18 + i % (Size16x48 - Size18), noise);
        read += reader->ReadQRCells(QRSide(1 + i % 40), noise);
        read += reader->ReadDotCode(i % 131, (7 * i) % 131 + 1, i % 2 == 0, noise, false) == SymbolRead;
    }
    // A small Data Matrix of noise may be a code word.
    EXPECT_LE(read, 6);
}

} // namespace
} // namespace Tesk::codewords
