// Places patterns, information and codewords of a QR symbol: ISO/IEC 18004, symbol structure and codeword placement.
#include "read/codewords/QRCells.h"

#include <algorithm>
#include <cstdlib>

namespace Tesk::codewords {

namespace {

constexpr SymbolModule Fixed(bool dark)
{
    return dark ? SymbolModule::FixedDark : SymbolModule::FixedLight;
}

} // namespace

bool QRCells::Prepare(int version)
{
    if (!IsQRVersion(version)) return false;
    if (version == version_) return true;
    version_ = version;
    modules_.fill(SymbolModule::Unplaced);
    PlaceTiming();
    PlaceFinder(3, 3);
    PlaceFinder(3, Side() - 4);
    PlaceFinder(Side() - 4, 3);
    PlaceAlignment();
    PlaceInformation();
    PlaceWords();
    return true;
}

void QRCells::PlaceTiming()
{
    for (int i = 0; i < Side(); ++i)
        Module(6, i) = Module(i, 6) = Fixed(i % 2 == 0);
}

/// With its separator.
void QRCells::PlaceFinder(int row, int column)
{
    for (int y = std::max(row - 4, 0); y <= std::min(row + 4, Side() - 1); ++y)
        for (int x = std::max(column - 4, 0); x <= std::min(column + 4, Side() - 1); ++x) {
            const int ring = std::max(std::abs(y - row), std::abs(x - column));
            Module(y, x) = Fixed(ring != 2 && ring != 4);
        }
}

void QRCells::PlaceAlignment()
{
    const QRAlignment alignment = AlignmentOfQR(version_);
    for (int i = 0; i < alignment.count; ++i)
        for (int j = 0; j < alignment.count; ++j) {
            if (!alignment.Has(i, j)) continue;
            const int row = alignment.centres[static_cast<std::size_t>(i)];
            const int column = alignment.centres[static_cast<std::size_t>(j)];
            for (int y = -2; y <= 2; ++y)
                for (int x = -2; x <= 2; ++x)
                    Module(row + y, column + x) = Fixed(std::max(std::abs(y), std::abs(x)) != 1);
        }
}

void QRCells::PlaceInformation()
{
    for (int copy = 0; copy < 2; ++copy) {
        for (int bit = 0; bit < 15; ++bit) {
            const QRCell cell = QRFormatCell(Side(), copy, bit);
            Module(cell.row, cell.column) = SymbolModule::FormatBit;
        }
        for (int bit = 0; bit < 18 && version_ >= 7; ++bit) {
            const QRCell cell = QRVersionCell(Side(), copy, bit);
            Module(cell.row, cell.column) = SymbolModule::VersionBit;
        }
    }
    Module(Side() - 8, 8) = SymbolModule::FixedDark;
}

/// Up and down in columns of two, from the right; the column of the timing pattern is stepped over.
void QRCells::PlaceWords()
{
    const int words = CapacityOfQR(version_).words;
    int next = 0;
    bool upward = true;
    for (int right = Side() - 1; right > 0; right -= 2, upward = !upward) {
        if (right == 6) right = 5;
        for (int i = 0; i < Side(); ++i)
            for (const int column : {right, right - 1}) {
                SymbolModule& module = Module(upward ? Side() - 1 - i : i, column);
                if (!module.Is(SymbolModule::Unplaced)) continue;
                if (next < 8 * words)
                    module = {next / 8, 7 - next % 8};
                else
                    module = SymbolModule::RemainderBit;
                ++next;
            }
    }
}

void QRCells::Mask(QRGrid& grid, int mask) const
{
    for (int row = 0; row < Side(); ++row)
        for (int column = 0; column < Side(); ++column) {
            const SymbolModule module = At(row, column);
            if ((module.IsData() || module.Is(SymbolModule::RemainderBit)) && QRMaskInverts(mask, row, column))
                grid.At(row, column) ^= LightCell;
        }
}

void QRCells::Read(const QRGrid& grid, std::span<std::uint16_t> words) const
{
    for (std::uint16_t& word : words)
        word = 0;
    for (int row = 0; row < Side(); ++row)
        for (int column = 0; column < Side(); ++column) {
            const SymbolModule module = At(row, column);
            if (module.IsData() && grid.IsDark(row, column))
                words[static_cast<std::size_t>(module.Word())] |= static_cast<std::uint16_t>(1 << module.Bit());
        }
}

void QRCells::Mark(QRGrid& grid, std::span<const std::uint16_t> words, const QRFormat& format) const
{
    const auto mark = [&](int row, int column, bool dark) {
        std::uint8_t& cell = grid.At(row, column);
        cell = static_cast<std::uint8_t>((cell & LightCell) | (dark == grid.IsDark(row, column) ? 0 : WrongCell));
    };
    for (int row = 0; row < Side(); ++row)
        for (int column = 0; column < Side(); ++column) {
            const SymbolModule module = At(row, column);
            if (module.IsData())
                mark(row, column, (words[static_cast<std::size_t>(module.Word())] >> module.Bit() & 1) != 0);
            else if (module.IsFixed())
                mark(row, column, module.Is(SymbolModule::FixedDark));
        }
    for (int copy = 0; copy < 2; ++copy) {
        for (int bit = 0; bit < 15; ++bit) {
            const QRCell cell = QRFormatCell(Side(), copy, bit);
            mark(cell.row, cell.column, (format.word >> bit & 1) != 0);
        }
        for (int bit = 0; bit < 18 && version_ >= 7; ++bit) {
            const QRCell cell = QRVersionCell(Side(), copy, bit);
            mark(cell.row, cell.column, (QRVersionWord(version_) >> bit & 1) != 0);
        }
    }
}

} // namespace Tesk::codewords
