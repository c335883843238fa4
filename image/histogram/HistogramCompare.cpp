// Differences between two images, and bringing one to the mean and variance of another.
#include "image/Histogram.h"

#include "image/core/PixelLoops.h"
#include "image/histogram/HistogramFrame.h"
#include "image/operator/PixelSteps.h"

#include <array>
#include <cmath>

namespace Tesk {

using namespace levels;

namespace {

int CheckPair(const Image& src, const Image& srcB, Types types)
{
    if (const int code = CheckImages(src, srcB)) return code;
    return types.Has(src.Type) ? NoError : RefuseType(src.Type);
}

constexpr Types comparedTypes = {Gray, Gray16, Rgb};

/// Calls `f(a, b, n)` for pairs of rows, of numbers of the width of a channel.
template <typename F>
void EachRowPair(const Image& a, const Image& b, F f)
{
    VisitSamples<Gray, Gray16, Rgb>(a.Type, [&]<int channels, typename T>() {
        for (int y = 0; y < a.Height; y++)
            f(a.Row<T>(y), b.Row<T>(y), a.Width * channels);
    });
}

/// The differences of a row fit into 32 bits in pieces of this many numbers.
constexpr int piece = 16384;

/// What brings a source to a mean and a variance.
struct Fit
{
    double gain, offset;
};

Fit FitTo(const Moments& source, double mean, double variance)
{
    const double wanted = variance < 0 ? source.variance : variance;
    const double gain = source.variance > 0 ? std::sqrt(wanted / source.variance) : 0;
    return {gain, (mean < 0 ? source.mean : mean) - gain * source.mean};
}

/// Scales the three channels, red first. True, and reported, if it was refused.
bool ScaleColors(const Entry& entry, const Image& src, Image& dst, double gain, const std::array<double, 3>& offsets)
{
    Sources held;
    if (Prepare(entry, src, dst, Undefined, held)) return true;
    std::uint8_t tables[3][byteLevels];
    for (std::size_t c = 0; c < 3; c++)
        for (int v = 0; v < byteLevels; v++)
            tables[c][v] = TruncatedByte(gain * v + offsets[c]);
    EachPixel<RgbPixel, RgbPixel>(
        held.a, dst, [&](RgbPixel p) { return RgbPixel(tables[0][p.Red], tables[1][p.Green], tables[2][p.Blue]); });
    return false;
}

/// A copy of an image as `Gray`; a view of it where it is that and no write into `dst`, in its window as it stands or
/// as its size will make it, reaches it. True, and reported, if there is no memory.
bool RefusesGrayApart(const Entry& entry, const Image& src, const Image& dst, Image& gray)
{
    const bool reached = src.Buffer == dst.Buffer || Overlap(src, dst);
    if (src.Type != Gray || reached) return points::CopyPixels(entry, src, gray, Gray);
    gray.ShallowCopy(src, true);
    return false;
}

} // namespace

int Histogram::CountDifferences(const Image& Src, const Image& SrcB)
{
    const Entry entry("Tesk::Histogram::CountDifferences");
    if (entry.Refuses(CheckPair(Src, SrcB, comparedTypes))) return 0;
    std::int64_t count = 0;
    if (Src.Type == Rgb) {
        for (int y = 0; y < Src.Height; y++) {
            const std::uint8_t *a = Src.Row(y), *b = SrcB.Row(y);
            for (int x = 0; x < Src.Width; x++, a += 3, b += 3)
                count += ((a[0] ^ b[0]) | (a[1] ^ b[1]) | (a[2] ^ b[2])) != 0;
        }
    } else {
        EachRowPair(Src, SrcB, [&](const auto* a, const auto* b, int n) {
            int row = 0;
            for (int i = 0; i < n; i++)
                row += a[i] != b[i];
            count += row;
        });
    }
    return CountSample(count);
}

double Histogram::SumAbsoluteDifferences(const Image& Src, const Image& SrcB, bool Average)
{
    const Entry entry("Tesk::Histogram::SumAbsoluteDifferences");
    if (entry.Refuses(CheckPair(Src, SrcB, comparedTypes))) return 0;
    std::int64_t sum = 0;
    EachRowPair(Src, SrcB, [&](const auto* a, const auto* b, int n) {
        for (int from = 0; from < n; from += piece) {
            const int end = Min(n, from + piece);
            std::uint32_t part = 0;
            for (int i = from; i < end; i++)
                part += static_cast<std::uint32_t>(std::abs(a[i] - b[i]));
            sum += part;
        }
    });
    return Average ? static_cast<double>(sum) / PixelCount(Src) : static_cast<double>(sum);
}

double Histogram::SumSquaredDifferences(const Image& Src, const Image& SrcB, bool RMS)
{
    const Entry entry("Tesk::Histogram::SumSquaredDifferences");
    if (entry.Refuses(CheckPair(Src, SrcB, comparedTypes))) return 0;
    std::uint64_t sum = 0;
    EachRowPair(Src, SrcB, [&](const auto* a, const auto* b, int n) {
        // Squares of bytes fit into 32 bits by the piece, those of 16-bit numbers do not.
        using Part = std::conditional_t<sizeof(*a) == 1, std::uint32_t, std::uint64_t>;
        for (int from = 0; from < n; from += piece) {
            const int end = Min(n, from + piece);
            Part part = 0;
            for (int i = from; i < end; i++) {
                const auto d = static_cast<std::uint32_t>(std::abs(a[i] - b[i]));
                part += d * d;
            }
            sum += part;
        }
    });
    return RMS ? std::sqrt(static_cast<double>(sum) / PixelCount(Src)) : static_cast<double>(sum);
}

double Histogram::NormalizedCorrelation(const Image& Src, const Image& SrcB)
{
    const Entry entry("Tesk::Histogram::NormalizedCorrelation");
    if (entry.Refuses(CheckPair(Src, SrcB, {Gray, Rgb}))) return 0;
    const std::size_t channels = Src.Type == Rgb ? 3 : 1;
    std::array<std::int64_t, 3> a{}, b{}, aa{}, bb{}, ab{};
    for (int y = 0; y < Src.Height; y++) {
        const std::uint8_t *s = Src.Row(y), *t = SrcB.Row(y);
        for (std::size_t c = 0; c < channels; c++)
            for (std::size_t from = 0, n = static_cast<std::size_t>(int(Src.Width)); from < n; from += piece) {
                const std::size_t end = Min(n, from + piece);
                std::uint32_t sa = 0, sb = 0, saa = 0, sbb = 0, sab = 0;
                for (std::size_t i = from; i < end; i++) {
                    const std::uint32_t p = s[i * channels + c], q = t[i * channels + c];
                    sa += p;
                    sb += q;
                    saa += p * p;
                    sbb += q * q;
                    sab += p * q;
                }
                a[c] += sa;
                b[c] += sb;
                aa[c] += saa;
                bb[c] += sbb;
                ab[c] += sab;
            }
    }
    // The channels' variances and covariances add up, each about its own means.
    const double n = PixelCount(Src);
    double varianceA = 0, varianceB = 0, covariance = 0;
    for (std::size_t c = 0; c < channels; c++) {
        const double meanA = static_cast<double>(a[c]) / n, meanB = static_cast<double>(b[c]) / n;
        varianceA += static_cast<double>(aa[c]) / n - meanA * meanA;
        varianceB += static_cast<double>(bb[c]) / n - meanB * meanB;
        covariance += static_cast<double>(ab[c]) / n - meanA * meanB;
    }
    return varianceA > 0 && varianceB > 0 ? covariance / std::sqrt(varianceA * varianceB) : 0;
}

void Histogram::Normalize(double Mean, double Variance, const Image& Src, Image& Dst, double& Gain, double& Offset)
{
    const Entry entry("Tesk::Histogram::Normalize");
    if (entry.Refuses(CheckOnly(Src, Gray))) return;
    const Fit fit = FitTo(MomentsOf(Src), Mean, Variance);
    if (points::ScalePixels(entry, fit.gain, fit.offset, Src, Dst)) return;
    Gain = fit.gain;
    Offset = fit.offset;
}

void Histogram::Normalize(double MeanR, double MeanG, double MeanB, double Variance, const Image& Src, Image& Dst,
                          double& Gain, double& OffsetR, double& OffsetG, double& OffsetB)
{
    const Entry entry("Tesk::Histogram::Normalize");
    if (entry.Refuses(CheckOnly(Src, Rgb))) return;
    std::array<double, 3> means{}, offsets = {MeanR, MeanG, MeanB};
    const double variance = Histogram::Variance(Src, means[0], means[1], means[2]);
    double gain = 0;
    for (std::size_t c = 0; c < 3; c++) {
        const Fit fit = FitTo({means[c], variance}, offsets[c], Variance);
        gain = fit.gain;
        offsets[c] = fit.offset;
    }
    if (ScaleColors(entry, Src, Dst, gain, offsets)) return;
    Gain = gain;
    OffsetR = offsets[0];
    OffsetG = offsets[1];
    OffsetB = offsets[2];
}

void Histogram::Normalize(const Image& Src, const Image& SrcB, Image& Dst, double& Gain, double& Offset)
{
    {
        const Entry entry("Tesk::Histogram::Normalize");
        if (entry.Refuses(CheckOnly(Src, Gray)) || entry.Refuses(CheckOnly(SrcB, Gray))) return;
    }
    const Moments wanted = MomentsOf(SrcB);
    Normalize(wanted.mean, wanted.variance, Src, Dst, Gain, Offset);
}

void Histogram::ShowDifferences(const Image& Src, const Image& SrcB, Image& Dst, int Threshold, bool Normalize)
{
    const Entry entry("Tesk::Histogram::ShowDifferences");
    if (entry.Refuses(CheckPair(Src, SrcB, {Gray, Gray16, Gray32, Rgb, Rgba, Grad, Gray1}))) return;
    Image a, b;
    if (RefusesGrayApart(entry, Src, Dst, a) || RefusesGrayApart(entry, SrcB, Dst, b)) return;
    double gain = 1, offset = 0;
    if (Normalize) {
        const Moments momentsA = MomentsOf(a), momentsB = MomentsOf(b);
        gain = momentsB.variance > 0 ? momentsA.variance / momentsB.variance : 0;
        offset = momentsA.mean - gain * momentsB.mean;
    }
    if (points::CopyPixels(entry, Src.Type == Rgb || Src.Type == Rgba ? Src : a, Dst, Rgb)) return;
    // A colour image over itself is not copied, and may be shared still.
    Dst.DetachIfShared(true);
    const double threshold = Threshold;
    for (int y = 0; y < Dst.Height; y++) {
        const std::uint8_t *s = a.Row(y), *t = b.Row(y);
        auto* d = Dst.Row<RgbPixel>(y);
        for (int x = 0; x < Dst.Width; x++) {
            const double difference = std::trunc(s[x] - (t[x] * gain + offset));
            if (difference >= threshold)
                d[x] = RgbPixel(255, 0, 0);
            else if (difference <= -threshold)
                d[x] = RgbPixel(0, 0, 255);
        }
    }
}

} // namespace Tesk
