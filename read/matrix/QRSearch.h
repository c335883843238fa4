// Finds and reads QR symbols (ISO/IEC 18004, Model 2) in an image of the ladder.
#pragma once

#include "foundation/Records.h"
#include "read/codewords/CellGrid.h"
#include "read/codewords/QRTables.h"
#include "read/matrix/SymbolSearch.h"

#include <array>

namespace Tesk::matrix {

/// Keeps its working memory from one image to the next. What it tells of a symbol holds until the next search.
class QRSearch
{
public:
    /// Adds the symbols of the rung, of each polarity asked for, until the search is full. Returns whether one was read.
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
    SampledSymbol sampled_;
    codewords::QRGrid cells_;
    int version_ = 0;
    codewords::QRFormat format_;
};

} // namespace Tesk::matrix
