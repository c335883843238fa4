// The definitions of the kernels that scan rows, pixel by pixel.
#include "measure/region/RunScanner.h"

namespace Tesk::kernels {

std::size_t BandEdgesPlain(const std::uint8_t* s, std::size_t n, Band band, std::int32_t* edges)
{
    return regions::EdgesWhere(n, edges, [&](std::size_t x) { return band.Has(s[x]); });
}

std::size_t LimitEdgesPlain(const std::uint8_t* s, const std::uint8_t* low, const std::uint8_t* high, std::size_t n,
                            std::int32_t* edges)
{
    return regions::EdgesWhere(n, edges, [&](std::size_t x) { return s[x] < low[x] || s[x] > high[x]; });
}

std::size_t BitEdgesPlain(const std::uint8_t* s, std::size_t n, std::int32_t* edges)
{
    return regions::EdgesWhere(n, edges, [&](std::size_t x) { return (s[x / 8] << x % 8 & 0x80) != 0; });
}

std::size_t WordEdgesPlain(const std::uint64_t* s, std::size_t n, std::int32_t* edges)
{
    return regions::EdgesWhere(n, edges, [&](std::size_t x) { return (s[x / 64] >> x % 64 & 1) != 0; });
}

} // namespace Tesk::kernels
