#include "image/kernels/WarpKernels.h"

#include "foundation/Status.h"

namespace Tesk::kernels {

namespace {

/// Calls `f` with a value of the sample's type and the number of channels.
template <typename F>
void ByType(PixelTypes type, F f)
{
    if (type == Gray)
        f(std::uint8_t{}, std::integral_constant<int, 1>{});
    else if (type == Gray16)
        f(std::uint16_t{}, std::integral_constant<int, 1>{});
    else
        f(std::uint8_t{}, std::integral_constant<int, 3>{});
}

} // namespace

void BilinearLineRow(const Surface& s, Line line, std::uint8_t* d, std::size_t n)
{
    ByType(s.type, [&](auto sample, auto channels) {
        BilinearLineRowPlain<channels()>(s, line, reinterpret_cast<decltype(sample)*>(d), n);
    });
}

void NearestLineRow(const Surface& s, Line line, std::uint8_t* d, std::size_t n)
{
    ByType(s.type, [&](auto sample, auto channels) {
        NearestLineRowPlain<channels()>(s, line, reinterpret_cast<decltype(sample)*>(d), n);
    });
}

void BilinearMapRow(const Surface& s, const GeoMapPixel* map, std::uint8_t* d, std::size_t n)
{
    ByType(s.type, [&](auto sample, auto channels) {
        BilinearMapRowPlain<channels()>(s, map, reinterpret_cast<decltype(sample)*>(d), n);
    });
}

void NearestMapRow(const Surface& s, const GeoMapPixel* map, std::uint8_t* d, std::size_t n)
{
    ByType(s.type, [&](auto sample, auto channels) {
        NearestMapRowPlain<channels()>(s, map, reinterpret_cast<decltype(sample)*>(d), n);
    });
}

std::uint64_t MapReach(const GeoMapPixel* map, std::size_t n, std::ptrdiff_t pitch, int elementSize, bool interpolate)
{
    const auto below = interpolate ? static_cast<std::uint64_t>(pitch) : 0;
    const auto right = interpolate ? static_cast<std::uint64_t>(elementSize) : 0;
    std::uint64_t reach = 0;
    for (std::size_t i = 0; i < n; i++) {
        const std::uint64_t last = map[i].Offset + (map[i].Fx ? right : 0) + (map[i].Fy ? below : 0);
        reach = last > reach ? last : reach;
    }
    return reach;
}

} // namespace Tesk::kernels
