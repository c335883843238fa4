// Which loop of a row kernel runs at the SIMD level in force.
#pragma once

#include "foundation/Status.h"

namespace Tesk::kernels {

/// The plain loop at `NoSIMD`, else `vectors`, which is what `HWY_DYNAMIC_DISPATCH` gives.
template <typename Result, typename... Parameters>
auto ByLevel(Result (*plain)(Parameters...), Result (*vectors)(Parameters...))
{
    return Status::SIMDLevel() == NoSIMD ? plain : vectors;
}

} // namespace Tesk::kernels
