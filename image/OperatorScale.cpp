// Gray scaling: gain and offset, normalisation, equalisation.
#include "image/Operator.h"

#include "image/LevelCounts.h"
#include "image/OperatorFrame.h"

#include <array>
#include <vector>

namespace Tesk {

namespace {

using namespace points;

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
    const int entries = 1 << Operator::GrayDepth;
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

/// The rank of each pixel in the box around it; the box's histogram slides along the row (Huang 1979).
void EqualizeAdaptive(const Image& src, Image& dst, int size)
{
    const int width = src.Width, height = src.Height, half = size / 2;
    const auto pixel = [&](int x, int y) { return src.Row(Clamp(y, 0, height - 1))[Clamp(x, 0, width - 1)]; };
    const std::int64_t area = std::int64_t{size} * size;
    for (int y = 0; y < height; y++) {
        std::array<std::int64_t, 256> counts{};
        for (int dy = -half; dy <= half; dy++)
            for (int dx = -half; dx <= half; dx++)
                counts[pixel(dx, y + dy)]++;
        for (int x = 0; x < width; x++) {
            std::int64_t below = 0;
            for (int v = 0; v < src.Row(y)[x]; v++)
                below += counts[static_cast<std::size_t>(v)];
            dst.Row(y)[x] = static_cast<std::uint8_t>(below * 255 / area);
            for (int dy = -half; dy <= half; dy++) {
                counts[pixel(x - half, y + dy)]--;
                counts[pixel(x + half + 1, y + dy)]++;
            }
        }
    }
}

} // namespace

void Operator::GainOffset(double Gain, double Offset, const Image& Src, Image& Dst)
{
    const Entry entry("Tesk::Operator::GainOffset");
    Sources held;
    if (Prepare(entry, Src, Dst, Undefined, held)) return;
    if (!bytePixels.Has(held.a.Type)) {
        entry.Refuses(RefuseType(held.a.Type));
        return;
    }
    ThroughTable(held.a, Dst, [=](int v) { return TruncatedByte(Gain * v + Offset); });
}

void Operator::Normalize(double Mean, double Variance, const Image& Src, Image& Dst)
{
    {
        const Entry entry("Tesk::Operator::Normalize");
        if (entry.Refuses(CheckImage(Src))) return;
        if (Src.Type != Gray) {
            entry.Refuses(RefuseType(Src.Type));
            return;
        }
    }
    const levels::ByteSums sums = levels::SumGray(Src);
    const double n = static_cast<double>(Src.Width) * Src.Height, mean = sums.Mean(n), variance = sums.Variance(n);
    const double wantedMean = Mean < 0 ? 128 : Mean, wantedVariance = Variance < 0 ? 16384 : Variance;
    // A constant image has no contrast to scale: it takes the mean.
    const double gain = variance > 0 ? std::sqrt(wantedVariance / variance) : 0;
    GainOffset(gain, wantedMean - gain * mean, Src, Dst);
}

void Operator::Equalize(const Image& Src, Image& Dst)
{
    const Entry entry("Tesk::Operator::Equalize");
    Sources held;
    if (Prepare(entry, Src, Dst, Undefined, held)) return;
    switch (held.a.Type) {
    case Gray:
        EqualizeGray(held.a, Dst);
        break;
    case Gray16:
        EqualizeGray16(held.a, Dst);
        break;
    case Rgb:
        EqualizeRgb(held.a, Dst);
        break;
    default:
        entry.Refuses(RefuseType(held.a.Type));
    }
}

void Operator::Equalize(int FilterSize, const Image& Src, Image& Dst)
{
    const Entry entry("Tesk::Operator::Equalize");
    if (entry.Refuses(CheckImage(Src))) return;
    constexpr int largestSize = 32767;
    if (FilterSize < 1 || FilterSize % 2 == 0 || FilterSize > largestSize) {
        entry.Refuse(OutOfRange, L"The filter size (%d) must be a positive odd number", FilterSize);
        return;
    }
    if (Src.Type != Gray) {
        entry.Refuses(RefuseType(Src.Type));
        return;
    }
    Image source;
    if (Src.Buffer == Dst.Buffer)
        Copy(Src, source);
    else
        source.ShallowCopy(Src, true);
    if (entry.Refuses(Status::Error().Code)) return;
    Sources held;
    if (!Prepare(entry, source, Dst, Gray, held)) EqualizeAdaptive(source, Dst, FilterSize);
}

} // namespace Tesk
