// Means over the pixels that fall on one pixel of a smaller picture.
#pragma once

#include <cstdint>

namespace Tesk {

/// Divides sums of `area` bytes by it. Up to the area named, the multiplication is exact for all such sums.
class AreaDivider
{
public:
    explicit AreaDivider(std::uint64_t area) : area_(area), factor_(area <= largestArea ? (one / area) + 1 : 0) {}
    std::uint8_t operator()(std::uint64_t sum) const
    {
        return static_cast<std::uint8_t>(factor_ ? sum * factor_ >> shift : sum / area_);
    }

private:
    // The factor is too large by less than 1, so a quotient by less than sum / 2^40: under 1 / area for sums below
    // 256 * area, as long as 256 * area^2 is at most 2^40.
    static constexpr int shift = 40;
    static constexpr std::uint64_t one = std::uint64_t{1} << shift, largestArea = 65536;

    std::uint64_t area_, factor_;
};

} // namespace Tesk
