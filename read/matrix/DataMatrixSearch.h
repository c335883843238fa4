// Finds and reads Data Matrix symbols (ISO/IEC 16022, ECC 200) in an image of the ladder.
#pragma once

#include "read/codewords/CellGrid.h"
#include "read/matrix/CellSampling.h"
#include "read/matrix/DarkComponents.h"
#include "read/matrix/Outline.h"
#include "read/matrix/SymbolSearch.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace Tesk::matrix {

/// A rung as it is searched.
struct SearchedImage
{
    const Rung& rung;
    const Image& work; ///< where symbols are dark
    int threshold;     ///< of `work`
    CodePolarities polarity;
    /// Of a closer look: the image that is searched for dark regions, where cells that do not touch are joined.
    const Image* joined = nullptr;
};

/// Keeps its working memory from one image to the next. What it tells of a symbol holds until the next search.
class DataMatrixSearch
{
public:
    /// Adds symbols until the search is full. Returns whether one was read. Throws `std::bad_alloc`.
    bool Search(const SearchedImage& image, SymbolSearch& search);
    /// Takes a polygon for the outline of a symbol. Whether one was read there, and added.
    bool ReadOutline(const SearchedImage& image, std::span<const Site> hull, SymbolSearch& search);

    /// The symbol read last; kept where quality is asked for.
    const SampledSymbol& Sampled() const { return sampled_; }
    /// Its cells, as `SymbolReader::ReadDataMatrix` left them.
    const codewords::DataMatrixGrid& Cells() const { return cells_; }
    std::int64_t Work() const { return work_; } ///< a measure of what all searches took

private:
    enum class Outcome
    {
        NoSize, ///< the outline is none of the sizes
        Errors, ///< too many in its cells
        NoText, ///< corrected, but not understood
        Read
    };

    bool TryComponent(const SearchedImage& image, const DarkComponent& component, SymbolSearch& search);
    void MergeRuns(int height);
    Outcome Read(const SearchedImage& image, const Quadrilateral& outline, bool squareLike, SymbolSearch& search);
    Outcome ReadByBorders(const SearchedImage& image, const Quadrilateral& outline, bool squareLike,
                          SymbolSearch& search);
    bool HasBorders() const;
    Outcome Correct(const SearchedImage& image, CellVote vote, SymbolSearch& search);
    void Keep(const SearchedImage& image, const std::array<XY, 4>& corners, SymbolSearch& search);
    void KeepSample(const std::array<XY, 4>& corners);
    void Grade(CodePolarities polarity, SymbolSearch& search);

    DarkComponents components_;
    std::vector<RowExtent> rows_, merged_;
    std::vector<Site> hull_;
    SymbolLayout layout_;
    CellPlaces places_;
    ClockTracks tracks_;
    codewords::DataMatrixGrid cells_;
    int light_ = 0, dark_ = 0;
    SampledSymbol sampled_;
    std::int64_t work_ = 0;
};

/// Where the lines fitted to the sides of a symbol meet: its corners to a fraction of a pixel. A side that no line fits
/// stays where it is.
std::array<XY, 4> FitSides(const Image& source, const std::array<XY, 4>& corners, CodePolarities polarity,
                           double probeLength);

} // namespace Tesk::matrix
