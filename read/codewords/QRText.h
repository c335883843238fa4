// The codewords of a QR symbol: corrected, and turned into text.
#pragma once

#include "read/codewords/QRTables.h"
#include "read/codewords/SymbolText.h"

#include <cstdint>
#include <span>

namespace Tesk::codewords {

/// Corrects all blocks of a symbol in place, erasures included, and takes their data words out in order to `data`,
/// which takes `blocks.Data()`; false if a block cannot be corrected within the protection from wrong corrections.
/// `unusedError` is the share of the correction that the worst block had left.
bool CorrectQR(std::span<std::uint16_t> words, int version, int level, std::span<std::uint16_t> data,
               double& unusedError);

/// Turns data words into text; false with a failure of state 104. Structured Append counts positions from 1.
bool QRText(std::span<const std::uint16_t> data, int version, bool identifier, SymbolText& text);

} // namespace Tesk::codewords
