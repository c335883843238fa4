// High-pass filters: sharpening, unsharp masking, and the differences from the low-pass filters.
#include "image/Kernel.h"
#include "image/filter/KernelFrame.h"
#include "image/filter/LocalMeans.h"
#include "image/filter/SquareFilters.h"

namespace Tesk {

namespace {

using namespace filters;
using kernels::Square3;

/// The range of the results of a high-pass filter, and what stands for 0 where they are signed.
struct Range
{
    int largest, zero, largestSigned;
};

constexpr Range bytes = {255, 128, 255}, words = {32767, 32768, 65535};

int Clipped(std::int64_t value, GrayClipping clip, const Range& range)
{
    if (clip == Rescale) return static_cast<int>(Clamp<std::int64_t>(value + range.zero, 0, range.largestSigned));
    return static_cast<int>(Clamp<std::int64_t>(clip == Absolute && value < 0 ? -value : value, 0, range.largest));
}

/// Truncates what may be any number; beyond these limits every clip mode gives the same.
std::int64_t Truncated(double value)
{
    constexpr double limit = 1e9;
    return value > limit     ? static_cast<std::int64_t>(limit)
           : value > -limit  ? static_cast<std::int64_t>(value)
           : value <= -limit ? -static_cast<std::int64_t>(limit)
                             : 0;
}

template <typename T>
void Differences(const Image& src, const Image& means, Image& dst, GrayClipping clip, double gain, const Range& range)
{
    for (int y = 0; y < dst.Height; y++) {
        const T* s = src.Row<T>(y);
        const T* m = means.Row<T>(y);
        T* d = dst.Row<T>(y);
        for (int x = 0; x < dst.Width; x++)
            d[x] = static_cast<T>(Clipped(gain == 1 ? s[x] - m[x] : Truncated(gain * s[x] - gain * m[x]), clip, range));
    }
}

enum class LowPass
{
    Box,
    Gauss
};

/// With a gain, the means of 16-bit pixels keep their fraction.
void FractionDifferences(LowPass lowPass, int width, int height, const Image& src, Image& dst, GrayClipping clip,
                         double gain)
{
    const bool box = lowPass == LowPass::Box;
    const double count = box ? static_cast<double>(width) * height : static_cast<double>(GaussProduct(height));
    const auto put = [&](int x, int y, std::size_t n, const std::int64_t* sums) {
        const Gray16Pixel* s = src.Row<Gray16Pixel>(y) + x;
        Gray16Pixel* d = dst.Row<Gray16Pixel>(y) + x;
        for (std::size_t i = 0; i < n; i++) {
            const double value = s[i] * gain - static_cast<double>(sums[i]) * gain / count;
            d[i] = static_cast<Gray16Pixel>(Clipped(Truncated(value), clip, words));
        }
    };
    if (!box) {
        EachGaussSum(src, width, height, put);
        return;
    }
    std::vector<std::int64_t> row(static_cast<std::size_t>(int(src.Width)));
    EachBoxSum<Gray16Pixel>(
        src, width, height, [](Gray16Pixel value) { return std::int64_t{value}; },
        [&](int x, int y, std::int64_t sum) {
            row[static_cast<std::size_t>(x)] = sum;
            if (x + 1 == src.Width) put(0, y, row.size(), row.data());
        });
}

void HighPass(const char* context, LowPass lowPass, int width, int height, const Image& src, Image& dst,
              GrayClipping clip, double gain)
{
    const Entry entry(context);
    if (entry.Refuses(CheckType(src, {Gray, Gray16})) || entry.Refuses(CheckSizes(width, height)) ||
        entry.Refuses(CheckClip(clip, {Saturate, Absolute, Rescale})))
        return;
    const bool fractions = src.Type == Gray16 && gain != 1;
    Sources held;
    // Where a mean has been worked out, one pixel of the source is left to be read; but the sums of a box still take
    // out rows that have been passed.
    const InPlace inPlace = fractions && lowPass == LowPass::Box ? InPlace::Copied : InPlace::Served;
    if (Prepare(entry, src, dst, src.Type, held, inPlace)) return;
    Guarded(entry, [&] {
        if (fractions) {
            FractionDifferences(lowPass, width, height, held.a, dst, clip, gain);
            return;
        }
        Image low;
        MakeLike(held.a, held.a.Type, low);
        (lowPass == LowPass::Box ? BoxMeans : GaussMeans)(held.a, width, height, low);
        VisitPixels<Gray, Gray16>(held.a.Type, [&]<typename T>() {
            Differences<T>(held.a, low, dst, clip, gain, sizeof(T) == 1 ? bytes : words);
        });
    });
}

} // namespace

void Kernel::Sharpen4(const Image& Src, Image& Dst, GrayClipping Clip)
{
    SquareFilter("Tesk::Kernel::Sharpen4", {Square3::Sharpen4, Absolute, Square3::Sharpen4Absolute}, Clip, Src, Dst);
}

void Kernel::Sharpen8(const Image& Src, Image& Dst, GrayClipping Clip)
{
    SquareFilter("Tesk::Kernel::Sharpen8", {Square3::Sharpen8, Absolute, Square3::Sharpen8Absolute}, Clip, Src, Dst);
}

void Kernel::Unsharp(double Strength, const Image& Src, Image& Dst)
{
    const Entry entry("Tesk::Kernel::Unsharp");
    if (entry.Refuses(CheckType(Src, {Gray, Rgb}))) return;
    Sources held;
    if (Prepare(entry, Src, Dst, Src.Type, held)) return;
    // A factor of 512 drives any difference to an end; a strength that is no number adds nothing.
    constexpr int limit = 512 * 1024;
    const double factor = Strength * 1024;
    const int K = factor >= limit ? limit : factor <= -limit ? -limit : factor == factor ? static_cast<int>(factor) : 0;
    Guarded(entry, [&] {
        const int step = ElementSize(held.a.Type);
        RowRing<std::uint8_t> ring(held.a, step, 1, step);
        const auto n = static_cast<std::size_t>(held.a.Width * step);
        for (int y = 0; y < Dst.Height; y++) {
            ring.MoveTo(y);
            kernels::UnsharpRow(ring.Row(y - 1), ring.Row(y), ring.Row(y + 1), Dst.Row(y), n, step, K);
        }
    });
}

void Kernel::BoxHighPass(int FilterWidth, int FilterHeight, const Image& Src, Image& Dst, GrayClipping Clip,
                         double Gain)
{
    HighPass("Tesk::Kernel::BoxHighPass", LowPass::Box, FilterWidth, FilterHeight, Src, Dst, Clip, Gain);
}

void Kernel::GaussHighPass(int FilterWidth, int FilterHeight, const Image& Src, Image& Dst, GrayClipping Clip,
                           double Gain)
{
    HighPass("Tesk::Kernel::GaussHighPass", LowPass::Gauss, FilterWidth, FilterHeight, Src, Dst, Clip, Gain);
}

} // namespace Tesk
