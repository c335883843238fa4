// Tests at every SIMD level, whichever the machine has: a level that it lacks stands for the one below.
#pragma once

#include "foundation/Status.h"

#include <gtest/gtest.h>

namespace Tesk::checks {

inline constexpr SIMDLevels allLevels[] = {NoSIMD, SIMDSSE2, SIMDSSE3, SIMDSSE4, SIMDAVX2, SIMDAVX512};

/// Holds a SIMD level for the time of a block.
class AtLevel
{
public:
    explicit AtLevel(SIMDLevels level) { Status::SIMDLevel(level); }
    ~AtLevel() { Status::SIMDLevel(former_); }
    AtLevel(const AtLevel&) = delete;
    AtLevel& operator=(const AtLevel&) = delete;

private:
    SIMDLevels former_ = Status::SIMDLevel();
};

/// Runs a test at each SIMD level.
class AtEachLevel : public ::testing::TestWithParam<SIMDLevels>
{
    AtLevel level_{GetParam()};
};

} // namespace Tesk::checks
