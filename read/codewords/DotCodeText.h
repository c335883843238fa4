// The words of a DotCode: corrected, and turned into text.
#pragma once

#include "read/codewords/DotCodeTables.h"
#include "read/codewords/SymbolText.h"

#include <cstdint>
#include <span>

namespace Tesk::codewords {

/// Corrects all blocks of the words read, the mask first, in place, erasures included; false if one cannot be with two
/// check words to spare. `unusedError` is the share of the correction that the worst block had left, 0 after a failure.
bool CorrectDotCode(std::span<std::uint16_t> words, double& unusedError);

/// Turns data words, the mask first, into text; false with a failure of state 104.
///
/// Structured Append counts positions from 0: it is FNC2 at the end of the message behind the position and the total,
/// each a digit from 1 on or a letter, which do not go into the text.
bool DotCodeText(std::span<const std::uint16_t> data, bool identifier, SymbolText& text);

} // namespace Tesk::codewords
