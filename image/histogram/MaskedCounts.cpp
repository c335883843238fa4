// The loop over the pixels under the runs of a region.
#include "image/histogram/MaskedCounts.h"

#include "image/Image.h"
#include "measure/region/RunLists.h"

namespace Tesk::levels {

std::vector<std::uint64_t> CountMasked(const Image& src, std::span<const LabeledRun> mask, int entries)
{
    const std::size_t levels = static_cast<std::size_t>(entries), channels = src.Type == Rgb ? 3 : 1;
    // Two tables by turns, so that the increments of equal neighbours do not wait for each other.
    std::vector<std::uint64_t> counts(levels * channels), others(counts.size());
    regions::EachClipped(mask, src.Width, src.Height, [&](int x, std::size_t n, int y) {
        if (src.Type == Gray16) {
            const Gray16Pixel* pixel = src.Row<Gray16Pixel>(y) + x;
            for (std::size_t i = 0; i < n; i++)
                counts[Min<std::size_t>(pixel[i], levels - 1)]++;
        } else if (src.Type == Rgb) {
            const RgbPixel* pixel = src.Row<RgbPixel>(y) + x;
            for (std::size_t i = 0; i < n; i++) {
                counts[3 * std::size_t{pixel[i].Red}]++;
                counts[3 * std::size_t{pixel[i].Green} + 1]++;
                counts[3 * std::size_t{pixel[i].Blue} + 2]++;
            }
        } else {
            const GrayPixel* pixel = src.Row(y) + x;
            std::size_t i = 0;
            for (; i + 2 <= n; i += 2) {
                counts[pixel[i]]++;
                others[pixel[i + 1]]++;
            }
            if (i < n) counts[pixel[i]]++;
        }
    });
    for (std::size_t i = 0; i < counts.size(); i++)
        counts[i] += others[i];
    return counts;
}

} // namespace Tesk::levels
