// Row kernels of the warps: sampling a source along a line, and at the positions of a recorded map.
#pragma once

#include "image/Geometry.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Tesk::kernels {

/// The window that a warp samples.
struct Surface
{
    const std::uint8_t* first;
    std::ptrdiff_t pitch;
    int width, height;
    PixelTypes type; ///< `Gray`, `Gray16` or `Rgb`
};

/// Positions along a row of the result, in 65,536ths of a pixel: (x + i dx, y + i dy).
struct Line
{
    std::int32_t x, y, dx, dy;
};

/// The same, wherever they lie.
struct WideLine
{
    std::int64_t x, y, dx, dy;
};

/// Bilinear samples at `n` positions along a line. All positions lie within columns 0 to width - 2 and rows 0 to
/// height - 2, fractions included.
void BilinearLineRow(const Surface& s, Line line, std::uint8_t* d, std::size_t n);
/// The pixels at the whole parts of `n` positions, all of them inside the surface.
void NearestLineRow(const Surface& s, Line line, std::uint8_t* d, std::size_t n);
/// Bilinear samples at `n` entries of a map, none of which leads outside the surface.
void BilinearMapRow(const Surface& s, const GeoMapPixel* map, std::uint8_t* d, std::size_t n);
/// The pixels at the offsets of `n` entries.
void NearestMapRow(const Surface& s, const GeoMapPixel* map, std::uint8_t* d, std::size_t n);
/// Entries of `n` positions along a line in 65,536ths of a pixel, clamped to the surface; without `interpolate` the
/// nearest pixel at the whole part has all the weight.
void EntriesRow(const Surface& s, int elementSize, const WideLine& line, GeoMapPixel* map, std::size_t n,
                bool interpolate);
/// Whether some of `n` entries lead outside the surface: the pixel itself, or with `interpolate` a neighbour with
/// weight; or between the two bytes of a pixel of 16 bits.
bool LeadOutside(const Surface& s, int elementSize, const GeoMapPixel* map, std::size_t n, bool interpolate);

// The definitions of the above.

/// (1 - v) ((1 - u) p00 + u p10) + v ((1 - u) p01 + u p11) with both inner means truncated, of the pixel at `p`, its
/// neighbour `right` bytes on and those `below` bytes on. `u`, `v` in 65,536ths.
template <int Channels, typename T>
inline void Bilinear(const std::uint8_t* p, std::size_t right, std::ptrdiff_t below, std::uint32_t u, std::uint32_t v,
                     T* d)
{
    const auto* upper = reinterpret_cast<const T*>(p);
    const auto* lower = reinterpret_cast<const T*>(p + below);
    const std::size_t next = right / sizeof(T);
    for (std::size_t c = 0; c < Channels; c++) {
        const std::uint32_t a = (upper[c] * (0x10000 - u) + upper[c + next] * u) >> 16;
        const std::uint32_t b = (lower[c] * (0x10000 - u) + lower[c + next] * u) >> 16;
        d[c] = static_cast<T>((a * (0x10000 - v) + b * v) >> 16);
    }
}

template <int Channels, typename T>
void BilinearLineRowPlain(const Surface& s, Line line, T* d, std::size_t n)
{
    constexpr std::size_t size = Channels * sizeof(T);
    auto x = static_cast<std::uint32_t>(line.x), y = static_cast<std::uint32_t>(line.y);
    for (std::size_t i = 0; i < n; i++) {
        const std::uint8_t* p = s.first + static_cast<std::ptrdiff_t>(y >> 16) * s.pitch + (x >> 16) * size;
        Bilinear<Channels>(p, size, s.pitch, x & 0xffff, y & 0xffff, d + i * Channels);
        x += static_cast<std::uint32_t>(line.dx);
        y += static_cast<std::uint32_t>(line.dy);
    }
}

template <int Channels, typename T>
void NearestLineRowPlain(const Surface& s, Line line, T* d, std::size_t n)
{
    constexpr std::size_t size = Channels * sizeof(T);
    auto x = static_cast<std::uint32_t>(line.x), y = static_cast<std::uint32_t>(line.y);
    for (std::size_t i = 0; i < n; i++) {
        std::memcpy(d + i * Channels, s.first + static_cast<std::ptrdiff_t>(y >> 16) * s.pitch + (x >> 16) * size,
                    size);
        x += static_cast<std::uint32_t>(line.dx);
        y += static_cast<std::uint32_t>(line.dy);
    }
}

template <int Channels, typename T>
void BilinearMapRowPlain(const Surface& s, const GeoMapPixel* map, T* d, std::size_t n)
{
    for (std::size_t i = 0; i < n; i++)
        // A neighbour without weight may not exist.
        Bilinear<Channels>(s.first + map[i].Offset, map[i].Fx ? Channels * sizeof(T) : 0, map[i].Fy ? s.pitch : 0,
                           -map[i].Fx & 0xffff, -map[i].Fy & 0xffff, d + i * Channels);
}

template <int Channels, typename T>
void NearestMapRowPlain(const Surface& s, const GeoMapPixel* map, T* d, std::size_t n)
{
    for (std::size_t i = 0; i < n; i++)
        std::memcpy(d + i * Channels, s.first + map[i].Offset, Channels * sizeof(T));
}

/// The entry of one position.
inline GeoMapPixel EntryAt(const Surface& s, int elementSize, std::int64_t x, std::int64_t y, bool interpolate)
{
    const auto clamped = [](std::int64_t v, int extent) {
        const std::int64_t last = std::int64_t{extent - 1} << 16;
        return static_cast<std::uint64_t>(v < 0 ? 0 : v > last ? last : v);
    };
    const std::uint64_t cx = clamped(x, s.width), cy = clamped(y, s.height);
    const auto weight = [interpolate](std::uint64_t v) { return static_cast<std::uint16_t>(interpolate ? 0 - v : 0); };
    return {static_cast<std::uint32_t>((cy >> 16) * static_cast<std::uint64_t>(s.pitch) +
                                       (cx >> 16) * static_cast<std::uint64_t>(elementSize)),
            weight(cx), weight(cy)};
}

inline bool LeadOutsidePlain(const Surface& s, int elementSize, const GeoMapPixel* map, std::size_t n, bool interpolate)
{
    const auto size = static_cast<std::uint64_t>(elementSize), pitch = static_cast<std::uint64_t>(s.pitch);
    const std::uint64_t last =
        pitch * static_cast<std::uint64_t>(s.height - 1) + size * static_cast<std::uint64_t>(s.width - 1);
    const std::uint64_t right = interpolate ? size : 0, below = interpolate ? pitch : 0;
    const std::uint32_t between = elementSize == 2 ? 1 : 0;
    for (std::size_t i = 0; i < n; i++)
        if (map[i].Offset & between || map[i].Offset + (map[i].Fx ? right : 0) + (map[i].Fy ? below : 0) > last)
            return true;
    return false;
}

} // namespace Tesk::kernels
