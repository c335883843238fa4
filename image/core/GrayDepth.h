// What `Operator::GrayDepth` says of 16-bit pixels, held to its range whatever it was set to.
#pragma once

#include "image/Operator.h"

namespace Tesk::levels {

/// How many levels `Gray16` pixels have, for depths from 9 to 16.
inline int Gray16Levels()
{
    return 1 << Clamp(Operator::GrayDepth, 9, 16);
}

/// The bits between an 8-bit gray value and one of the gray depth: 0 to 8.
inline int GrayShift()
{
    return Clamp(Operator::GrayDepth, 8, 16) - 8;
}

} // namespace Tesk::levels
