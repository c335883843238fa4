// The sampled cells of a symbol, with a border around, in a table of the largest size.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Tesk::codewords {

/// What a cell shows, as bits: a dark cell without marks is 0.
enum CellBits : std::uint8_t
{
    LightCell = 1,
    WrongCell = 2, ///< differs from the corrected codeword, or from its fixed pattern
};

/// Up to `Largest` x `Largest` cells and `Border` more on each side. Row and column 0 are those of the symbol's first
/// cell.
template <int Largest, int Border>
class CellGrid
{
public:
    static constexpr int stride = Largest + 2 * Border;

    std::uint8_t& At(int row, int column) { return cells_[Index(row, column)]; }
    std::uint8_t At(int row, int column) const { return cells_[Index(row, column)]; }
    bool IsDark(int row, int column) const { return (At(row, column) & LightCell) == 0; }

    /// Mirrors `rows` x `columns` cells and their border at the diagonal through the lower left corner, where the solid
    /// sides of a Data Matrix meet: what is seen from the other side. They become `columns` x `rows`.
    void Mirror(int rows, int columns)
    {
        const CellGrid seen = *this;
        for (int row = -Border; row < columns + Border; ++row)
            for (int column = -Border; column < rows + Border; ++column)
                At(row, column) = seen.At(rows - 1 - column, columns - 1 - row);
    }

private:
    static constexpr std::size_t Index(int row, int column)
    {
        return static_cast<std::size_t>((row + Border) * stride + column + Border);
    }

    std::array<std::uint8_t, static_cast<std::size_t>(stride) * stride> cells_{};
};

using DataMatrixGrid = CellGrid<144, 1>;
using QRGrid = CellGrid<177, 4>;

/// What a symbol has at a cell: a bit of a codeword, or something that is no data.
class SymbolModule
{
public:
    enum Kind : std::uint16_t
    {
        FixedDark = 0xFFF0,
        FixedLight,
        FormatBit,    ///< of QR
        VersionBit,   ///< of QR
        RemainderBit, ///< of QR: masked as the data are, and means nothing
        Unplaced
    };

    constexpr SymbolModule() = default;
    constexpr SymbolModule(Kind kind) : code_(kind) {}
    /// `bit` 7 is the top one.
    constexpr SymbolModule(int word, int bit) : code_(static_cast<std::uint16_t>(8 * word + bit)) {}

    constexpr bool IsData() const { return code_ < FixedDark; }
    constexpr bool IsFixed() const { return code_ == FixedDark || code_ == FixedLight; }
    constexpr bool Is(Kind kind) const { return code_ == kind; }
    constexpr int Word() const { return code_ >> 3; } ///< of a data module: the codeword, from 0
    constexpr int Bit() const { return code_ & 7; }   ///< of a data module: the place of its bit, 7 the top one

private:
    std::uint16_t code_ = Unplaced;
};

} // namespace Tesk::codewords
