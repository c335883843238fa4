// How often the program asked for memory.
#pragma once

namespace Tesk::checks {

/// 0 in builds with the address sanitizer, which has its own operators.
int Allocations();

} // namespace Tesk::checks
