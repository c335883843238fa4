// Where format, version and codewords of a QR symbol lie in its cells.
#pragma once

#include "read/codewords/CellGrid.h"
#include "read/codewords/QRTables.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace Tesk::codewords {

struct QRCell
{
    int row, column;
};

/// The cell of a bit of the format information, 14 the top one. Copy 0 is around the upper left finder pattern.
constexpr QRCell QRFormatCell(int side, int copy, int bit)
{
    if (copy == 0) {
        if (bit < 6) return {bit, 8};
        if (bit < 8) return {bit + 1, 8};
        return {8, bit == 8 ? 7 : 14 - bit};
    }
    return bit < 8 ? QRCell{8, side - 1 - bit} : QRCell{side - 15 + bit, 8};
}

/// The cell of a bit of the version information, 17 the top one. Copy 0 is beside the upper right finder pattern.
constexpr QRCell QRVersionCell(int side, int copy, int bit)
{
    const int along = bit / 3, across = side - 11 + bit % 3;
    return copy == 0 ? QRCell{along, across} : QRCell{across, along};
}

/// Reads the format from one copy, else from the other; `isDark(row, column)` tells the cells.
template <typename IsDark>
bool ReadQRFormat(int side, IsDark isDark, QRFormat& format)
{
    for (int copy = 0; copy < 2; ++copy) {
        int bits = 0;
        for (int bit = 0; bit < 15; ++bit) {
            const QRCell cell = QRFormatCell(side, copy, bit);
            if (isDark(cell.row, cell.column)) bits |= 1 << bit;
        }
        if (MatchQRFormat(bits, format)) return true;
    }
    return false;
}

/// The version, from its information or by the side; false if it does not make a symbol of this side.
template <typename IsDark>
bool ReadQRVersion(int side, IsDark isDark, int& version)
{
    bool known = side < QRSide(7);
    version = (side - 17) / 4;
    for (int copy = 0; copy < 2 && !known && side <= QRSide(maximumQRVersion); ++copy) {
        int bits = 0;
        for (int bit = 0; bit < 18; ++bit) {
            const QRCell cell = QRVersionCell(side, copy, bit);
            if (isDark(cell.row, cell.column)) bits |= 1 << bit;
        }
        known = MatchQRVersion(bits, version);
    }
    return known && IsQRVersion(version) && QRSide(version) == side;
}

/// The modules of a version.
class QRCells
{
public:
    /// Works out the modules of a version, unless they are there already; false for a version that is none.
    bool Prepare(int version);
    int Version() const { return version_; }
    int Side() const { return QRSide(version_); }
    SymbolModule At(int row, int column) const
    {
        return modules_[static_cast<std::size_t>(row) * largestSide + static_cast<std::size_t>(column)];
    }

    /// Inverts the modules that the mask inverts; a second time takes that back.
    void Mask(QRGrid& grid, int mask) const;
    /// Reads the codewords from cells without mask; `words` takes `CapacityOfQR(Version()).words` of them.
    void Read(const QRGrid& grid, std::span<std::uint16_t> words) const;
    /// Marks the cells without mask that differ from the corrected codewords, the fixed patterns, and the right format
    /// and version; takes all other marks away.
    void Mark(QRGrid& grid, std::span<const std::uint16_t> words, const QRFormat& format) const;

private:
    static constexpr int largestSide = QRSide(maximumQRVersion);

    SymbolModule& Module(int row, int column) { return modules_[static_cast<std::size_t>(row * largestSide + column)]; }
    void PlaceFinder(int row, int column);
    void PlaceTiming();
    void PlaceAlignment();
    void PlaceInformation();
    void PlaceWords();

    int version_ = 0;
    std::array<SymbolModule, std::size_t{largestSide} * largestSide> modules_;
};

} // namespace Tesk::codewords
