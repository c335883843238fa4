// How far the edges of a symbol lie from where its elements should end.
#pragma once

#include "read/linear/LinearCode.h"

#include <span>

namespace Tesk::linear {

/// The root mean square distance of the edges of a read from their nominal places, in modules. What changes slowly
/// along the symbol, as by perspective or on a cylinder, and the growth of all bars, counts for nothing; a character
/// that was mistaken moves some edges by a module.
double Misfit(std::span<const int> edges, const SymbolRead& read);

} // namespace Tesk::linear
