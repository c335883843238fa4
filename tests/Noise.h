// Numbers without any order, the same for the same seed on every machine.
#pragma once

#include <cstdint>

namespace Tesk::checks {

/// A linear congruential generator (Numerical Recipes); only its upper bits are random.
struct Noise
{
    std::uint32_t state;

    std::uint32_t operator()() { return state = state * 1664525u + 1013904223u; }
    std::uint8_t Byte() { return static_cast<std::uint8_t>((*this)() >> 24); }
};

} // namespace Tesk::checks
