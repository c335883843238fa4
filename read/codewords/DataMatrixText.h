// The codewords of a Data Matrix: corrected, and turned into text.
#pragma once

#include "read/codewords/DataMatrixSizes.h"
#include "read/codewords/SymbolText.h"

#include <cstdint>
#include <span>

namespace Tesk::codewords {

/// Corrects all blocks of a symbol in place, erasures included; false if one cannot be. `unusedError` is the share of
/// the correction that the worst block had left.
bool CorrectDataMatrix(std::span<std::uint16_t> words, const DataMatrixSize& size, double& unusedError);

/// Turns the data codewords, which are the first `size.data` ones, into text; false with a failure of state 5.
///
/// Structured Append as ISO/IEC 16022 numbers it: `symbolPosition` counts from 0, `symbolTotal` is 2 to 16, and 0 with
/// a position that the total does not have. In the first symbol of a sequence FNC1 may stand behind its four codewords.
bool DataMatrixText(std::span<const std::uint16_t> data, bool identifier, SymbolText& text);

} // namespace Tesk::codewords
