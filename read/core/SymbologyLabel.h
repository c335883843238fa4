// The names of symbologies as people read them.
#pragma once

#include "foundation/Enumerations.h"

namespace Tesk {

/// "UPC-A" for `CodeUPCA`; "Unknown" for what has no name.
const wchar_t* SymbologyLabel(Symbologies symbology);

} // namespace Tesk
