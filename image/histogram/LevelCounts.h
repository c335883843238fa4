// Counting the pixels of each level: the one loop under histograms, thresholds and equalisations.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace Tesk {

class Image;

namespace levels {

inline constexpr int byteLevels = 256;

/// How many pixels of a window have each value. A store has fewer pixels than a count can hold.
std::array<std::uint32_t, byteLevels> CountGray(const Image& src);
/// For each of the three channels, red first.
std::array<std::array<std::uint32_t, byteLevels>, 3> CountRgb(const Image& src);
/// Values beyond the last of `entries` levels count there.
std::vector<std::uint32_t> CountGray16(const Image& src, int entries);

/// The sums of the pixels and of their squares, without counting levels.
struct PixelSums
{
    std::uint64_t sum = 0, squares = 0;

    double Mean(double pixels) const { return static_cast<double>(sum) / pixels; }
    double Variance(double pixels) const
    {
        const double mean = Mean(pixels);
        return static_cast<double>(squares) / pixels - mean * mean;
    }
};

PixelSums SumGray(const Image& src);
/// Values beyond the last of `entries` levels stand for that one.
PixelSums SumGray16(const Image& src, int entries);
/// Red first.
std::array<PixelSums, 3> SumRgb(const Image& src);

/// The threshold that makes the variance within the two parts least (Otsu 1979), and the means of the parts below it
/// and from it up. Of splits that are equally good the middle is taken; without any, 0 and the ends of the scale.
struct Split
{
    int threshold = 0;
    double below = 0, above = 255;
};

template <typename Count>
Split BestSplit(const Count* counts, int size)
{
    double n = 0, s = 0;
    for (int v = 0; v < size; v++) {
        n += static_cast<double>(counts[v]);
        s += static_cast<double>(counts[v]) * v;
    }
    Split split;
    double best = 0, n1 = 0, s1 = 0;
    int first = -1, last = -1;
    for (int t = 0; t < size; t++) {
        const double n2 = n - n1, s2 = s - s1;
        if (n1 > 0 && n2 > 0) {
            const double criterion = -(s1 * s1 / n1 + s2 * s2 / n2);
            if (first < 0 || criterion < best) {
                best = criterion;
                first = last = t;
                split.below = s1 / n1;
                split.above = s2 / n2;
            } else if (criterion == best) {
                last = t;
            }
        }
        n1 += static_cast<double>(counts[t]);
        s1 += static_cast<double>(counts[t]) * t;
    }
    split.threshold = first < 0 ? 0 : (first + last) >> 1;
    return split;
}

/// That of the pixels of a `Gray` image.
inline Split BestSplit(const Image& gray)
{
    return BestSplit(CountGray(gray).data(), byteLevels);
}

} // namespace levels

} // namespace Tesk
