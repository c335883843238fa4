// The reflectance of each cell of a symbol, as the mean over a disc.
#pragma once

#include "foundation/Enumerations.h"
#include "foundation/Records.h"
#include "image/Image.h"
#include "read/matrix/SymbolSearch.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Tesk::matrix {

/// The pixels around one, up to a rounded radius of at most 64 pixels.
class ReflectanceDisc
{
public:
    static constexpr int mostRadius = 64;

    explicit ReflectanceDisc(double diameter);
    int Radius() const { return radius_; }
    /// The rounded mean about the pixel nearest to a place; pixels outside a `Gray` image are those at its border.
    int Mean(const Image& gray, XY place) const;

private:
    int radius_;
    std::array<int, mostRadius + 1> extents_{}; ///< of the rows, from the middle one on
};

/// Gray values of the cells of a symbol and of some more around. What a symbol is printed in is low, whatever its
/// polarity.
class CellTones
{
public:
    CellTones(int rows, int columns, int margin)
        : rows_(rows), columns_(columns), margin_(margin),
          tones_(static_cast<std::size_t>(rows + 2 * margin) * static_cast<std::size_t>(columns + 2 * margin))
    {}

    int Rows() const { return rows_; }
    int Columns() const { return columns_; }
    int Margin() const { return margin_; }
    std::uint8_t& At(int row, int column) { return tones_[Index(row, column)]; }
    int At(int row, int column) const { return tones_[Index(row, column)]; }

    /// `Seen(row, column)` tells the tone of each cell of a table of the same size.
    template <typename Seen>
    void Fill(Seen seen)
    {
        for (int row = -margin_; row < rows_ + margin_; ++row)
            for (int column = -margin_; column < columns_ + margin_; ++column)
                At(row, column) = static_cast<std::uint8_t>(seen(row, column));
    }
    /// The level below which cells are dark: where the variance within both parts is least.
    int BestThreshold() const;

private:
    std::size_t Index(int row, int column) const
    {
        return static_cast<std::size_t>(row + margin_) * static_cast<std::size_t>(columns_ + 2 * margin_) +
               static_cast<std::size_t>(column + margin_);
    }

    int rows_, columns_, margin_;
    std::vector<std::uint8_t> tones_;
};

/// Reads the cells, and a margin where the outermost cells are continued.
CellTones ReadTones(const Image& source, const SampledSymbol& symbol, CodePolarities polarity, double diameter,
                    int margin);

/// How cells are judged.
struct ToneScale
{
    int threshold = 0;
    double contrast = 0; ///< in gray levels

    bool IsDark(int tone) const { return tone < threshold; }
    /// 0 at the threshold, about 1 where all cells are alike.
    double Modulation(int tone) const { return contrast > 0 ? 2 * std::abs(tone - threshold) / contrast : 0; }
    /// The modulation as a grade: 4 from 0.5 up, 3 from 0.4, 2 from 0.3, 1 from 0.2, else 0.
    int LevelOf(int tone) const;
    /// The same for a cell that should be dark or light: 0 where it is not.
    int LevelOf(int tone, bool dark) const { return IsDark(tone) == dark ? LevelOf(tone) : 0; }
};

} // namespace Tesk::matrix
