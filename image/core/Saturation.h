// Numbers held to the range of the integers that store them.
#pragma once

#include "foundation/Records.h"

#include <cstdint>

namespace Tesk::images {

/// Truncates to the range of a byte; not a number counts as 0.
inline std::uint8_t TruncatedByte(double value)
{
    return value >= 255 ? std::uint8_t{255} : value > 0 ? static_cast<std::uint8_t>(value) : std::uint8_t{0};
}

inline int Saturated(std::int64_t value)
{
    return static_cast<int>(Clamp<std::int64_t>(value, INT32_MIN, INT32_MAX));
}

/// Truncates, with what an `int` cannot hold held at its ends; not a number counts as 0.
inline int Truncated(double value)
{
    return value >= 2147483647.0    ? INT32_MAX
           : value <= -2147483648.0 ? INT32_MIN
           : value == value         ? static_cast<int>(value)
                                    : 0;
}

} // namespace Tesk::images
