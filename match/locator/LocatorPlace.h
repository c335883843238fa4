// What looking at locations and drawing them share.
#pragma once

#include "match/locator/LocatorModel.h"

namespace Tesk::locator {

/// Limits that hold any outline whose coordinates are whole numbers.
inline constexpr Box anywhere{0, 0, 1 << 28, 1 << 28};

} // namespace Tesk::locator
