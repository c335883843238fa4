// The size and the orientation of a Data Matrix by its borders, and its cells.
#pragma once

#include "foundation/Enumerations.h"
#include "image/Image.h"
#include "read/codewords/CellGrid.h"
#include "read/matrix/Outline.h"
#include "read/matrix/PerspectiveMap.h"
#include "read/matrix/SymbolSearch.h"

#include <array>
#include <vector>

namespace Tesk::matrix {

/// The sizes that are looked for.
struct SizeRange
{
    int from = Size10, to = Size144;
};

/// A quadrilateral taken for a symbol: its solid sides meet at corner 0, its second row of corners lies opposite.
struct SymbolLayout
{
    Quadrilateral corners{};
    Sizes size = Size10;
    int rows = 0, columns = 0; ///< as seen: those of a mirrored rectangle are exchanged
    bool exchanged = false;
    double score = 0; ///< the mean gray value of what should be dark on the two clock tracks
};

/// Chooses size and orientation. False if the range has no size that an outline of this shape can be.
bool FindLayout(const Image& work, const Quadrilateral& outline, bool squareLike, SizeRange range,
                SymbolLayout& layout);

/// The same by the outermost cells, in perspective: the size and orientation with the fewest wrong ones. False if more
/// than a fifth of them are wrong.
bool FindLayoutByBorders(const Image& work, int threshold, const Quadrilateral& outline, bool squareLike,
                         SizeRange range, SymbolLayout& layout);

/// Where rows and columns lie, as fractions of the sides, downwards and from left to right in the upright symbol.
struct CellPlaces
{
    std::vector<double> nodesDown, nodesAcross;     ///< borders of cells, one more than there are cells
    std::vector<double> centersDown, centersAcross; ///< middles, with one more ahead and one more behind
    bool inPerspective = false;                     ///< fractions of a plane in perspective, not of its picture

    /// Evenly.
    void Spread(int rows, int columns);
    /// Between borders that were found.
    void Follow(const std::vector<double>& down, const std::vector<double>& across);
};

/// Finds the borders of cells on the two clock tracks.
class ClockTracks
{
public:
    /// False if the tracks do not show as many cells as the layout has.
    bool Find(const Image& work, const SymbolLayout& layout, CellPlaces& places);

private:
    bool Borders(const Image& work, const SymbolLayout& layout, std::size_t side, int inset, int cells,
                 std::vector<double>& borders);
    void FindTransitions(int most);
    bool Mend(int cells);

    std::vector<int> line_, smooth_;
    std::vector<double> transitions_, mended_;
    std::vector<double> down_, across_;
};

/// How a cell is judged.
enum class CellVote
{
    OnePixel,
    FivePixels ///< the majority of a pixel and its four neighbours
};

/// Reads the cells and one more around; counts the light and the dark ones of the symbol.
void SampleCells(const Image& work, int threshold, const SymbolLayout& layout, const CellPlaces& places, CellVote vote,
                 codewords::DataMatrixGrid& grid, int& light, int& dark);

/// Places between four corners in the order of a layout, by fractions.
class CellPlane
{
public:
    CellPlane(const std::array<XY, 4>& corners, const CellPlaces& places) : corners_(corners)
    {
        inPerspective_ = places.inPerspective && map_.Set({XY(0, 1), XY(1, 1), XY(1, 0), XY(0, 0)},
                                                          {corners[0], corners[1], corners[2], corners[3]});
    }

    XY operator()(double down, double across) const
    {
        if (inPerspective_) return map_({across, down});
        const XY top = corners_[3] + across * (corners_[2] - corners_[3]);
        const XY bottom = corners_[0] + across * (corners_[1] - corners_[0]);
        return top + down * (bottom - top);
    }

private:
    std::array<XY, 4> corners_;
    PerspectiveMap map_;
    bool inPerspective_;
};

/// The corners as places on a scale.
std::array<XY, 4> Scaled(const Quadrilateral& corners, double scale);

} // namespace Tesk::matrix
