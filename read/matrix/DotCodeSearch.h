// Finds and reads DotCode symbols (AIM DotCode 4.0) in an image of the ladder.
#pragma once

#include "foundation/Enumerations.h"
#include "read/matrix/DotField.h"
#include "read/matrix/DotLattice.h"
#include "read/matrix/SymbolSearch.h"

#include <vector>

namespace Tesk::matrix {

/// Keeps its working memory from one image to the next. What it tells of a symbol holds until the next search.
class DotCodeSearch
{
public:
    /// Adds the symbols of the rung that are of one polarity, until the search is full. Returns whether one was read.
    bool Search(const Rung& rung, CodePolarities polarity, SymbolSearch& search);

    /// 0, as at first, for dots that stand out clearly; 1 looks instead for faint, joined, uneven and tiny ones, at
    /// several times the cost. Holds until it is set again.
    void SetEffort(int effort) { effort_ = effort; }

    /// Takes the deformation out of each dot's place: two vectors by length and angle, in radians, that a straight
    /// lattice's axes became. Vectors on a line are taken for no deformation.
    void Correct(double lengthX, double angleX, double lengthY, double angleY);

    /// The symbol read last, its lattice positions as cells; kept where quality is asked for.
    const SampledSymbol& Sampled() const { return sampled_; }
    /// Whether its lattice position of row 0 and column 0 can have a dot.
    bool FirstCell() const { return firstCell_; }

private:
    struct Task; ///< the search at hand

    bool SearchDots(Task& task, const DotRules& rules);
    bool ReadLattice(Task& task);
    void ListExtents(const SearchSettings& settings);
    bool ReadExtent(Task& task, const CellExtent& extent, CodeViews view);
    void Keep(Task& task, const CellExtent& extent, CodeViews view);
    void Describe(const Task& task, const CellExtent& extent);

    DotField field_;
    DotLattice lattice_;
    Deformation deformation_;
    std::vector<CellExtent> extents_;
    SampledSymbol sampled_;
    bool firstCell_ = true;
    int effort_ = 0;
};

} // namespace Tesk::matrix
