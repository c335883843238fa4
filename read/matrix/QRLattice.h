// Where the cells of a QR symbol lie in an image: alignment patterns, and perspective maps between them.
#pragma once

#include "foundation/Records.h"
#include "read/codewords/CellGrid.h"
#include "read/codewords/QRTables.h"
#include "read/matrix/BinaryImage.h"
#include "read/matrix/FinderPatterns.h"
#include "read/matrix/FinderTriple.h"
#include "read/matrix/PerspectiveMap.h"
#include "read/matrix/SymbolSearch.h"

#include <array>
#include <cstddef>

namespace Tesk::matrix {

/// Places are in cells, the middle of the first cell at 0, and in pixels.
class QRLattice
{
public:
    /// The map of a symbol of so many cells a side of which the finder patterns alone are known: their middles make a
    /// parallelogram, or with `perspective` a figure as their modules become smaller.
    bool SetByFinders(const FinderTriple& finders, int side, bool perspective);
    /// Looks for the alignment patterns of the version, near to where the finder patterns tell.
    bool SetByAlignment(const FinderTriple& finders, int version, const BinaryImage& image, FinderPatterns& patterns);

    /// The pixel of the middle of a cell where the finder patterns alone tell it.
    XY PlainPlace(double column, double row) const { return plain_({column, row}); }
    /// The pixel of a place.
    XY Place(double column, double row) const;

    /// Takes a pixel for each cell and for a margin of 4.
    void Sample(const BinaryImage& image, codewords::QRGrid& cells) const;
    /// What grading needs of the places, by `scale` on the source, and of the cells.
    void Describe(const codewords::QRGrid& cells, double scale, SampledSymbol& sampled) const;

private:
    static constexpr std::size_t mostLines = 7;

    XY& Node(std::size_t row, std::size_t column) { return nodes_[row * mostLines + column]; }
    XY PlainNode(std::size_t row, std::size_t column) const;
    XY Predict(std::size_t row, std::size_t column);
    bool FindPattern(const BinaryImage& image, FinderPatterns& patterns, XY& place) const;
    int CellsAlike(const BinaryImage& image, XY center) const;
    bool SetPatches();
    std::size_t PatchOf(double at) const;

    int side_ = 0;
    XY along_{1, 0}, down_{0, 1}; ///< of a cell at the pattern that is looked for
    codewords::QRAlignment lines_;
    PerspectiveMap plain_;
    std::array<XY, mostLines * mostLines> nodes_{};
    std::array<PerspectiveMap, (mostLines - 1) * (mostLines - 1)> patches_;
    std::size_t patchCount_ = 0; ///< a side; 0 without alignment patterns
};

} // namespace Tesk::matrix
