// Places the codewords of a Data Matrix by the algorithm of ISO/IEC 16022, annex "ECC 200 symbol character placement".
#include "read/codewords/DataMatrixCells.h"

namespace Tesk::codewords {

namespace {

/// A bit's place; negative ones count from the last row or column.
struct Place
{
    int row, column;
};

/// The shape of a codeword, against its lower right module; top bit first.
constexpr Place wordShape[8] = {{-2, -2}, {-2, -1}, {-1, -2}, {-1, -1}, {-1, 0}, {0, -2}, {0, -1}, {0, 0}};

/// The codewords that are broken by the corners of the matrix, in the standard's four cases.
constexpr Place cornerShapes[4][8] = {
    {{-1, 0}, {-1, 1}, {-1, 2}, {0, -2}, {0, -1}, {1, -1}, {2, -1}, {3, -1}},
    {{-3, 0}, {-2, 0}, {-1, 0}, {0, -4}, {0, -3}, {0, -2}, {0, -1}, {1, -1}},
    {{-3, 0}, {-2, 0}, {-1, 0}, {0, -2}, {0, -1}, {1, -1}, {2, -1}, {3, -1}},
    {{-1, 0}, {-1, -1}, {0, -3}, {0, -2}, {0, -1}, {1, -3}, {1, -2}, {1, -1}},
};

} // namespace

bool DataMatrixCells::Prepare(int size)
{
    if (!IsDataMatrixSize(size)) return false;
    if (size == size_) return true;
    size_ = size;
    modules_.fill(SymbolModule::Unplaced);
    PlaceBorders();
    PlaceWords();
    return true;
}

void DataMatrixCells::PlaceBorders()
{
    const DataMatrixSize& size = Size();
    const int high = size.RegionRows() + 2, wide = size.RegionColumns() + 2;
    for (int row = 0; row < size.rows; ++row)
        for (int column = 0; column < size.columns; ++column) {
            const int y = row % high, x = column % wide;
            if (y != 0 && x != 0 && y != high - 1 && x != wide - 1) continue;
            const bool dark = x == 0 || y == high - 1 || (y == 0 ? x % 2 == 0 : y % 2 != 0);
            modules_[static_cast<std::size_t>(row * 144 + column)] =
                dark ? SymbolModule::FixedDark : SymbolModule::FixedLight;
        }
}

/// The module of the mapping matrix, which is what the regions hold without their borders.
SymbolModule& DataMatrixCells::DataModule(int row, int column)
{
    const DataMatrixSize& size = Size();
    row += 1 + 2 * (row / size.RegionRows());
    column += 1 + 2 * (column / size.RegionColumns());
    return modules_[static_cast<std::size_t>(row * 144 + column)];
}

void DataMatrixCells::PlaceBit(int row, int column, int word, int bit)
{
    const int rows = Size().regionsDown * Size().RegionRows(), columns = Size().regionsAcross * Size().RegionColumns();
    // What leaves the matrix comes in on the other side, shifted.
    if (row < 0) {
        row += rows;
        column += 4 - (rows + 4) % 8;
    }
    if (column < 0) {
        column += columns;
        row += 4 - (columns + 4) % 8;
    }
    DataModule(row, column) = {word, bit};
}

void DataMatrixCells::PlaceWord(int row, int column, int word)
{
    for (int i = 0; i < 8; ++i)
        PlaceBit(row + wordShape[i].row, column + wordShape[i].column, word, 7 - i);
}

void DataMatrixCells::PlaceCorner(int shape, int word)
{
    const int rows = Size().regionsDown * Size().RegionRows(), columns = Size().regionsAcross * Size().RegionColumns();
    for (int i = 0; i < 8; ++i) {
        const Place& place = cornerShapes[shape][i];
        PlaceBit(place.row < 0 ? rows + place.row : place.row, place.column < 0 ? columns + place.column : place.column,
                 word, 7 - i);
    }
}

void DataMatrixCells::PlaceWords()
{
    const int rows = Size().regionsDown * Size().RegionRows(), columns = Size().regionsAcross * Size().RegionColumns();
    int word = 0, row = 4, column = 0;
    do {
        if (row == rows && column == 0) PlaceCorner(0, word++);
        if (row == rows - 2 && column == 0 && columns % 4 != 0) PlaceCorner(1, word++);
        if (row == rows - 2 && column == 0 && columns % 8 == 4) PlaceCorner(2, word++);
        if (row == rows + 4 && column == 2 && columns % 8 == 0) PlaceCorner(3, word++);
        // Diagonals, upward and downward in turn.
        do {
            if (row < rows && column >= 0 && column < columns && DataModule(row, column).Is(SymbolModule::Unplaced))
                PlaceWord(row, column, word++);
            row -= 2;
            column += 2;
        } while (row >= 0 && column < columns);
        row += 1;
        column += 3;
        do {
            if (row >= 0 && row < rows && column < columns && DataModule(row, column).Is(SymbolModule::Unplaced))
                PlaceWord(row, column, word++);
            row += 2;
            column -= 2;
        } while (row < rows && column >= 0);
        row += 3;
        column += 1;
    } while (row < rows || column < columns);

    // Four modules that no codeword reaches.
    if (!DataModule(rows - 1, columns - 1).Is(SymbolModule::Unplaced)) return;
    for (int i = 0; i < 4; ++i)
        DataModule(rows - 1 - i / 2, columns - 1 - i % 2) =
            i == 0 || i == 3 ? SymbolModule::FixedDark : SymbolModule::FixedLight;
}

void DataMatrixCells::Read(const DataMatrixGrid& grid, std::span<std::uint16_t> words) const
{
    for (std::uint16_t& word : words)
        word = 0;
    for (int row = 0; row < Size().rows; ++row)
        for (int column = 0; column < Size().columns; ++column) {
            const SymbolModule module = At(row, column);
            if (module.IsData() && grid.IsDark(row, column))
                words[static_cast<std::size_t>(module.Word())] |= static_cast<std::uint16_t>(1 << module.Bit());
        }
}

void DataMatrixCells::Mark(DataMatrixGrid& grid, std::span<const std::uint16_t> words) const
{
    for (int row = 0; row < Size().rows; ++row)
        for (int column = 0; column < Size().columns; ++column) {
            const SymbolModule module = At(row, column);
            const bool dark = module.IsData()
                                  ? (words[static_cast<std::size_t>(module.Word())] >> module.Bit() & 1) != 0
                                  : module.Is(SymbolModule::FixedDark);
            std::uint8_t& cell = grid.At(row, column);
            cell = static_cast<std::uint8_t>((cell & LightCell) | (dark == grid.IsDark(row, column) ? 0 : WrongCell));
        }
}

} // namespace Tesk::codewords
