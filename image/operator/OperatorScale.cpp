// Gray scaling: gain and offset, normalisation, equalisation.
#include "image/Operator.h"

#include "image/core/GrayDepth.h"
#include "image/filter/LocalMeans.h"
#include "image/histogram/LevelCounts.h"
#include "image/operator/OperatorFrame.h"
#include "image/operator/PixelSteps.h"

#include <array>
#include <cmath>
#include <cstring>
#include <numeric>
#include <vector>

namespace Tesk {

namespace {

using namespace points;

/// Whether all pixels are equal: each is the one before it. Other images are left at their first difference.
bool HasOneLevel(const Image& src)
{
    const auto bytes = static_cast<std::size_t>(ByteCount(src)), step = static_cast<std::size_t>(ElementSize(src.Type));
    for (int y = 0; y < src.Height; y++) {
        const std::uint8_t* row = src.Row(y);
        if (std::memcmp(row, src.Row(0), step) != 0 || std::memcmp(row, row + step, bytes - step) != 0) return false;
    }
    return true;
}

void EqualizeGray(const Image& src, Image& dst)
{
    const auto counts = levels::CountGray(src);
    const std::int64_t n = std::int64_t{src.Width} * src.Height;
    std::int64_t below = 0;
    ThroughTable(src, dst, [&](int v) {
        const std::int64_t entry = below * 255 / n;
        below += counts[static_cast<std::size_t>(v)];
        return entry;
    });
}

void EqualizeGray16(const Image& src, Image& dst)
{
    const int entries = levels::Gray16Levels();
    const auto counts = levels::CountGray16(src, entries);
    std::vector<Gray16Pixel> table(static_cast<std::size_t>(entries));
    const std::int64_t n = std::int64_t{src.Width} * src.Height;
    std::int64_t below = 0;
    for (std::size_t v = 0; v < table.size(); v++) {
        table[v] = static_cast<Gray16Pixel>(below * (entries - 1) / n);
        below += counts[v];
    }
    // A value beyond the significant depth counts as the largest.
    const auto last = static_cast<Gray16Pixel>(entries - 1);
    EachPixel<Gray16Pixel, Gray16Pixel>(src, dst, [&](Gray16Pixel v) { return table[Min(v, last)]; });
}

void EqualizeRgb(const Image& src, Image& dst)
{
    std::array<std::int64_t, 768> counts{};
    for (int y = 0; y < src.Height; y++)
        for (int x = 0; x < src.Width; x++) {
            const RgbPixel p = src.Row<RgbPixel>(y)[x];
            counts[static_cast<std::size_t>(p.Red + p.Green + p.Blue)]++;
        }
    const double n = static_cast<double>(src.Width) * src.Height;
    std::array<double, 768> ratio{};
    std::int64_t below = 0;
    for (std::size_t i = 0; i < ratio.size(); i++) {
        ratio[i] = 3 * static_cast<double>(below) / n;
        below += counts[i];
    }
    EachPixel<RgbPixel, RgbPixel>(src, dst, [&](RgbPixel p) {
        const double k = ratio[static_cast<std::size_t>(p.Red + p.Green + p.Blue)];
        return RgbPixel(TruncatedByte(p.Red * k), TruncatedByte(p.Green * k), TruncatedByte(p.Blue * k));
    });
}

/// The rank of each pixel in the box around it.
void EqualizeAdaptive(const Image& src, Image& dst, int size)
{
    const std::int64_t area = std::int64_t{size} * size;
    filters::EachSquareHistogram<GrayPixel>(src, size, [&](int y) {
        return [=, s = src.Row(y), d = dst.Row(y)](int x, const std::uint32_t* bins) {
            const std::int64_t below = std::accumulate(bins, bins + s[x], std::int64_t{0});
            d[x] = static_cast<std::uint8_t>(below * 255 / area);
        };
    });
}

} // namespace

bool points::ScalePixels(const Entry& entry, double gain, double offset, const Image& src, Image& dst)
{
    Sources held;
    if (Prepare(entry, src, bytePixels, dst, held)) return true;
    ThroughTable(held.a, dst, [=](int v) { return TruncatedByte(gain * v + offset); });
    return false;
}

void Operator::GainOffset(double Gain, double Offset, const Image& Src, Image& Dst)
{
    points::ScalePixels(Entry("Tesk::Operator::GainOffset"), Gain, Offset, Src, Dst);
}

void Operator::Normalize(double Mean, double Variance, const Image& Src, Image& Dst)
{
    const Entry entry("Tesk::Operator::Normalize");
    if (entry.Refuses(CheckType(Src, {Gray}))) return;
    const levels::PixelSums sums = levels::SumGray(Src);
    const double n = static_cast<double>(Src.Width) * Src.Height, mean = sums.Mean(n), variance = sums.Variance(n);
    const double wantedMean = Mean < 0 ? 128 : Mean, wantedVariance = Variance < 0 ? 16384 : Variance;
    // A constant image has no contrast to scale: it takes the mean.
    const double gain = variance > 0 ? std::sqrt(wantedVariance / variance) : 0;
    points::ScalePixels(entry, gain, wantedMean - gain * mean, Src, Dst);
}

void Operator::Equalize(const Image& Src, Image& Dst)
{
    const Entry entry("Tesk::Operator::Equalize");
    Sources held;
    if (Prepare(entry, Src, Dst, Undefined, held)) return;
    const PixelTypes type = held.a.Type;
    if (type != Gray && type != Gray16 && type != Rgb) {
        entry.Refuses(RefuseType(type));
    } else if (HasOneLevel(held.a)) {
        // No pixel is darker than another.
        for (int y = 0; y < Dst.Height; y++)
            std::memset(Dst.Row(y), 0, static_cast<std::size_t>(ByteCount(Dst)));
    } else if (type == Gray) {
        EqualizeGray(held.a, Dst);
    } else if (type == Gray16) {
        entry.Guards(noFilterBuffers, [&] { EqualizeGray16(held.a, Dst); });
    } else {
        EqualizeRgb(held.a, Dst);
    }
}

void Operator::Equalize(int FilterSize, const Image& Src, Image& Dst)
{
    const Entry entry("Tesk::Operator::Equalize");
    if (entry.Refuses(CheckImage(Src)) || entry.Refuses(filters::CheckSize(L"size", FilterSize)) ||
        entry.Refuses(CheckType(Src, {Gray})))
        return;
    Sources held;
    if (Prepare(entry, Src, Dst, Gray, held, InPlace::Copied)) return;
    entry.Guards(noFilterBuffers, [&] { EqualizeAdaptive(held.a, Dst, FilterSize); });
}

} // namespace Tesk
