// The lattice of a DotCode symbol: which dots stand at which cells, and where cells lie.
#pragma once

#include "foundation/Records.h"
#include "read/matrix/DotField.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Tesk::matrix {

/// Cells from `left` to `right` and from `top` to `bottom`, all of them included.
struct CellExtent
{
    int left = 0, right = 0, top = 0, bottom = 0;

    int Width() const { return right - left + 1; }
    int Height() const { return bottom - top + 1; }
};

/// A cell's place is `origin` + column * `along` + row * `down`.
struct CellMap
{
    XY origin{0, 0}, along{1, 0}, down{0, 1};

    XY operator()(double column, double row) const { return origin + column * along + row * down; }
};

/// Cells whose column and row add up to an even number can have a dot; the seed stands at column and row 0.
class DotLattice
{
public:
    static constexpr int side = 128;        ///< of the table, in which columns and rows are taken modulo this
    static constexpr int longestSide = 121; ///< of a symbol
    static constexpr int fewestCells = 76;

    /// Finds the lattice about a dot and walks over all of it; false where there is none that can be a symbol.
    bool Grow(const DotField& field, int seed);
    /// Fits where the cells lie; false where a corner has no dots.
    bool Fit(const DotField& field);

    const CellExtent& Extent() const { return extent_; }
    /// The dot at a cell; negative for none.
    int At(int column, int row) const { return table_[Index(column, row)]; }
    bool HasDot(int column, int row) const { return At(column, row) >= 0; }
    /// Where a place, in cells with their middles at whole numbers, lies after `Fit`.
    XY Place(double column, double row) const;
    /// Calls `f(dot)` for each dot of the lattice.
    template <typename F>
    void EachDot(F f) const
    {
        if (isEmpty_) return;
        for (const std::int16_t dot : table_)
            if (dot >= 0) f(int{dot});
    }

private:
    static constexpr std::int16_t noDot = -1, unseen = -2;
    static constexpr std::uint8_t mostTries = 4;
    static constexpr int nodeDistance = 10;
    static constexpr std::size_t mostNodes = side / nodeDistance + 2;
    struct Walker
    {
        int column, row;
        CellMap map;
    };

    static std::size_t Index(int column, int row)
    {
        return static_cast<std::size_t>((row & (side - 1)) * side + (column & (side - 1)));
    }
    static bool FindVectors(const DotField& field, int seed, CellMap& map);
    static bool FitAround(const DotField& field, int seed, CellMap& map);
    bool Visit(const DotField& field, const Walker& walker, CellMap& map);
    void Spread(const Walker& walker, const CellMap& map);
    bool Walk(const DotField& field, const CellMap& map);
    bool FitNode(const DotField& field, int column, int row, XY& place) const;
    void FillNodes(const std::vector<bool>& fitted);

    std::array<std::int16_t, std::size_t{side} * side> table_;
    std::array<std::uint8_t, std::size_t{side} * side> tries_; ///< `mostTries` where a node is finished
    bool isEmpty_ = true;                                      ///< nothing was entered in the table
    std::vector<Walker> walkers_;
    CellExtent extent_;
    std::vector<int> nodeColumns_, nodeRows_;
    std::vector<XY> nodes_;
    std::vector<bool> fitted_;
};

} // namespace Tesk::matrix
