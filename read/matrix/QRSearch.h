// Finds and reads QR symbols (ISO/IEC 18004, Model 2) in an image of the ladder.
#pragma once

#include "foundation/Enumerations.h"
#include "foundation/Records.h"
#include "read/codewords/CellGrid.h"
#include "read/codewords/QRTables.h"
#include "read/matrix/BinaryImage.h"
#include "read/matrix/FinderPatterns.h"
#include "read/matrix/FinderTriple.h"
#include "read/matrix/QRLattice.h"
#include "read/matrix/SymbolSearch.h"

#include <array>
#include <cstddef>
#include <vector>

namespace Tesk::matrix {

/// Keeps its working memory from one image to the next. What it tells of a symbol holds until the next search.
class QRSearch
{
public:
    /// Adds the symbols of the rung, of each polarity asked for, until the search is full. Returns whether one was
    /// read.
    bool Search(const Rung& rung, SymbolSearch& search);

    /// Takes three finder patterns as known, in pixels of the source window and with their width there: no others are
    /// looked for until `EndPreset`.
    void Preset(const std::array<Site, 3>& finders, int size);
    void EndPreset();

    /// The symbol read last, without the margin; kept where quality is asked for.
    const SampledSymbol& Sampled() const { return sampled_; }
    /// Its cells with a margin of 4, as `SymbolReader::ReadQR` left them.
    const codewords::QRGrid& Cells() const { return cells_; }
    int Version() const { return version_; }
    const codewords::QRFormat& Format() const { return format_; }

private:
    struct Task; ///< the search at hand

    void ListFinders(const Rung& rung);
    void FindPairs();
    bool SearchTriples(Task& task);
    bool SearchThirds(Task& task, std::size_t i, std::size_t j, std::size_t found);
    void AppendGuesses(std::size_t i, std::size_t j);
    bool ReadTriple(Task& task, const FinderRecord& a, const FinderRecord& b, const FinderRecord& c);
    bool ReadViews(Task& task, int side);
    bool ReadSymbol(Task& task, const FinderTriple& finders, bool perspective, CodeViews view, int side);
    void Keep(Task& task, CodeViews view);

    BinaryImage image_;
    FinderPatterns patterns_, alignment_;
    std::vector<bool> pairs_; ///< of the patterns found, row by row
    FinderTriple triple_;
    QRLattice lattice_;
    SampledSymbol sampled_;
    codewords::QRGrid cells_;
    int version_ = 0;
    codewords::QRFormat format_;
    std::array<Site, 3> preset_{};
    int presetSize_ = 0;
    bool isPreset_ = false;
};

} // namespace Tesk::matrix
