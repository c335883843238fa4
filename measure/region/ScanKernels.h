// Rows of pixels as the columns at which their runs begin and end, compiled for every SIMD target.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Tesk::kernels {

/// Room that the kernels need behind the columns that they count.
inline constexpr std::size_t edgeSlack = 64;

/// The values `low` to `high`, or all others.
struct Band
{
    std::uint8_t low = 0, high = 255;
    bool inside = true;

    bool Has(std::uint8_t value) const { return (value >= low && value <= high) == inside; }

    /// At least `threshold`, or below it.
    static constexpr Band Above(int threshold, bool above)
    {
        return threshold > 255 ? Band{0, 255, !above}
                               : Band{static_cast<std::uint8_t>(threshold > 0 ? threshold : 0), 255, above};
    }
    /// From one value to another, or with the first above the other, all but those between.
    static constexpr Band Between(int from, int to)
    {
        const bool inside = from < to;
        const int low = inside ? from : to, high = inside ? to : from;
        if (high < 0 || low > 255) return {0, 255, !inside};
        return {static_cast<std::uint8_t>(low > 0 ? low : 0), static_cast<std::uint8_t>(high < 255 ? high : 255),
                inside};
    }
};

/// Writes the columns at which runs of pixels in the band begin and end, by turns, of `n` pixels; a run that is open at
/// the end ends at `n`. The result is how many there are. `edges` has room for `n + 1 + edgeSlack`.
std::size_t BandEdges(const std::uint8_t* s, std::size_t n, Band band, std::int32_t* edges);

/// The same for pixels below those of `low` or above those of `high`.
std::size_t LimitEdges(const std::uint8_t* s, const std::uint8_t* low, const std::uint8_t* high, std::size_t n,
                       std::int32_t* edges);

/// The same for the bits that are set of `n` packed pixels, the most significant bit first.
std::size_t BitEdges(const std::uint8_t* s, std::size_t n, std::int32_t* edges);

/// The same for the bits that are set of `n` pixels in words, the first pixel in the lowest bit.
std::size_t WordEdges(const std::uint64_t* s, std::size_t n, std::int32_t* edges);

// The definitions of the above.
std::size_t BandEdgesPlain(const std::uint8_t* s, std::size_t n, Band band, std::int32_t* edges);
std::size_t LimitEdgesPlain(const std::uint8_t* s, const std::uint8_t* low, const std::uint8_t* high, std::size_t n,
                            std::int32_t* edges);
std::size_t BitEdgesPlain(const std::uint8_t* s, std::size_t n, std::int32_t* edges);
std::size_t WordEdgesPlain(const std::uint64_t* s, std::size_t n, std::int32_t* edges);

} // namespace Tesk::kernels
