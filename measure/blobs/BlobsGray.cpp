// The gray values of a blob.
#include "foundation/Entry.h"
#include "image/Histogram.h"
#include "measure/blobs/BlobMeasures.h"
#include "measure/blobs/BlobsFrame.h"

#include <algorithm>
#include <cmath>

namespace Tesk {

using namespace blobs;

namespace blobs {

namespace {

/// Calls `f(first pixel, pixels)` for each row of `Gray` or `Gray16` pixels.
template <typename F>
void EachGrayRow(const Subject& blob, const Image& src, F f)
{
    if (src.Type == Gray16)
        EachRow<std::uint16_t>(blob.runs, src, [&](const std::uint16_t* pixels, int n, int, int) { f(pixels, n); });
    else
        EachRow<std::uint8_t>(blob.runs, src, [&](const std::uint8_t* pixels, int n, int, int) { f(pixels, n); });
}

struct Sums
{
    std::int64_t count = 0, mass = 0, squares = 0;
};

Sums SumsOf(const Subject& blob, const Image& src)
{
    Sums sums;
    EachGrayRow(blob, src, [&sums](const auto* pixels, int n) {
        sums.count += n;
        for (int i = 0; i < n; i++) {
            const std::int64_t v = pixels[i];
            sums.mass += v;
            sums.squares += v * v;
        }
    });
    return sums;
}

/// The darkest and the lightest pixel; false without a pixel.
bool Extremes(const Subject& blob, const Image& src, int& least, int& most)
{
    bool any = false;
    EachGrayRow(blob, src, [&](const auto* pixels, int n) {
        const auto [low, high] = std::minmax_element(pixels, pixels + n);
        least = any ? Min<int>(least, *low) : *low;
        most = any ? Max<int>(most, *high) : *high;
        any = true;
    });
    return any;
}

constexpr int levels = 256;

} // namespace

bool Mass(Workplace& work, const Subject& blob, double* values)
{
    values[0] = static_cast<double>(SumsOf(blob, *work.src).mass);
    return true;
}

bool Average(Workplace& work, const Subject& blob, double* values)
{
    const Sums sums = SumsOf(blob, *work.src);
    if (sums.count == 0) return false;
    values[0] = static_cast<double>(sums.mass) / static_cast<double>(sums.count);
    return true;
}

bool Deviation(Workplace& work, const Subject& blob, double* values)
{
    const Sums sums = SumsOf(blob, *work.src);
    if (sums.count == 0) return false;
    const auto n = static_cast<double>(sums.count);
    const double mean = static_cast<double>(sums.mass) / n;
    values[0] = std::sqrt(Max(static_cast<double>(sums.squares) / n - mean * mean, 0.0));
    values[1] = mean;
    return true;
}

bool Median(Workplace& work, const Subject& blob, double* values)
{
    work.counts.assign(levels, 0);
    std::int64_t count = 0;
    EachRow<std::uint8_t>(blob.runs, *work.src, [&](const std::uint8_t* pixels, int n, int, int) {
        count += n;
        for (int i = 0; i < n; i++)
            work.counts[pixels[i]]++;
    });
    if (count == 0) return false;
    // One above the level in which the middle pixel falls, as for histograms.
    const std::int64_t target = (count + 1) / 2;
    int level = 0;
    for (std::int64_t sum = 0; sum < target; level++)
        sum += work.counts[static_cast<std::size_t>(level)];
    values[0] = level;
    return true;
}

bool Minimum(Workplace& work, const Subject& blob, double* values)
{
    int least = 0, most = 0;
    if (!Extremes(blob, *work.src, least, most)) return false;
    values[0] = least;
    return true;
}

bool Maximum(Workplace& work, const Subject& blob, double* values)
{
    int least = 0, most = 0;
    if (!Extremes(blob, *work.src, least, most)) return false;
    values[0] = most;
    return true;
}

} // namespace blobs

void Blobs::PixelHistogram(int BlobIndex, const Image& Src, Histogram& Dst, bool Clear) const
{
    const Entry entry("Tesk::Blobs::PixelHistogram");
    if (RefusesIndex(CheckBlob(BlobIndex)) || entry.Refuses(CheckImage(Src, Gray))) return;
    if (!Dst.SetUp(entry, Gray, levels, Clear)) return;
    std::int32_t* counts = Dst.Samples();
    EachRow<std::uint8_t>(RunsOf(BlobIndex), Src, [&](const std::uint8_t* pixels, int n, int, int) {
        for (int i = 0; i < n; i++)
            if (counts[pixels[i]] < MaxInt) counts[pixels[i]]++;
    });
}

} // namespace Tesk
