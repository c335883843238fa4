// Statistics and thresholds, of histograms and of images.
#include "image/core/GrayDepth.h"
#include "image/histogram/CountStatistics.h"
#include "image/histogram/HistogramFrame.h"

#include <vector>

namespace Tesk {

namespace levels {

namespace {

/// Runs `f` on the counts of a gray histogram; `neutral` on a refusal.
template <typename T, typename F>
T OnHistogram(const char* context, const Histogram& histogram, T neutral, F f)
{
    const Entry entry(context);
    if (histogram.Length >= 1 && !IsGray(histogram.Type)) {
        entry.Refuse(UnsupportedType, L"Histogram pixel Type (%ls) not supported for this operation",
                     PixelTypeName(histogram.Type));
        return neutral;
    }
    const Counts counts = Summed(histogram.Samples(), histogram.Length, histogram.I, 1);
    if (counts.total < 1) {
        entry.Refuse(VoidObject, L"Void histogram");
        return neutral;
    }
    Guarded(entry, [&] { neutral = f(counts); });
    return neutral;
}

int CheckGrays(const Image& src)
{
    if (const int code = CheckImage(src)) return code;
    if (src.Type == Gray || src.Type == Gray16) return NoError;
    return Status::Format(UnsupportedType, L"Image pixel Type (%ls) not supported for this operation",
                          PixelTypeName(src.Type));
}

/// Runs `f` on the counts of a `Gray` or `Gray16` image.
template <typename T, typename F>
T OnImage(const char* context, const Image& src, T neutral, F f)
{
    const Entry entry(context);
    if (entry.Refuses(CheckGrays(src))) return neutral;
    Guarded(entry, [&] {
        std::vector<std::int32_t> counts;
        const auto take = [&](const auto& counted) {
            counts.reserve(counted.size());
            for (const std::uint32_t count : counted)
                counts.push_back(CountSample(count));
        };
        if (src.Type == Gray)
            take(CountGray(src));
        else
            take(CountGray16(src, Gray16Levels()));
        neutral = f(Summed(counts.data(), static_cast<int>(counts.size()), 0, 1));
    });
    return neutral;
}

/// Runs `f` on the counts of each channel of a colour histogram; false on a refusal.
template <typename F>
bool OnColors(const char* context, const Histogram& histogram, F f)
{
    const Entry entry(context);
    if (histogram.Length >= 1 && histogram.Type != Rgb)
        return !entry.Refuse(UnsupportedType, L"Histogram pixel Type (%ls) not supported for this operation, use Rgb",
                             PixelTypeName(histogram.Type));
    Counts counts[3];
    for (int c = 0; c < 3; c++) {
        counts[c] = Summed(histogram.Samples() + (histogram.Length ? c : 0), histogram.Length, histogram.I, 3);
        if (counts[c].total < 1) return !entry.Refuse(VoidObject, L"Void histogram");
    }
    f(counts);
    return true;
}

template <typename F>
bool OnColors(const char* context, const Image& src, F f)
{
    const Entry entry(context);
    if (entry.Refuses(CheckOnly(src, Rgb))) return false;
    const auto counted = CountRgb(src);
    std::int32_t held[3][byteLevels];
    Counts counts[3];
    for (std::size_t c = 0; c < 3; c++) {
        for (std::size_t v = 0; v < byteLevels; v++)
            held[c][v] = CountSample(counted[c][v]);
        counts[c] = Summed(held[c], byteLevels, 0, 1);
    }
    f(counts);
    return true;
}

void ColorRange(const Counts (&counts)[3], RgbPixel& minimum, RgbPixel& maximum)
{
    int low[3], high[3];
    for (int c = 0; c < 3; c++)
        RangeOf(counts[c], low[c], high[c]);
    minimum = RgbPixel(low[0], low[1], low[2]);
    maximum = RgbPixel(high[0], high[1], high[2]);
}

double ColorVariance(const Counts (&counts)[3], double& r, double& g, double& b)
{
    return (VarianceOf(counts[0], r) + VarianceOf(counts[1], g) + VarianceOf(counts[2], b)) / 3;
}

/// Runs `f` on the sums of the channels of a colour image; false on a refusal.
template <typename F>
bool OnColorSums(const char* context, const Image& src, F f)
{
    const Entry entry(context);
    if (entry.Refuses(CheckOnly(src, Rgb))) return false;
    f(SumRgb(src));
    return true;
}

int ImageQuantile(const Image& src, const Counts& h, double percent)
{
    return LevelsUpTo(h, Target(src.Width * percent * src.Height));
}

} // namespace

Moments MomentsOf(const Image& gray)
{
    const PixelSums sums = gray.Type == Gray16 ? SumGray16(gray, Gray16Levels()) : SumGray(gray);
    const double pixels = PixelCount(gray);
    return {sums.Mean(pixels), sums.Variance(pixels)};
}

} // namespace levels

using namespace levels;

int Histogram::Count(int Threshold, bool Above) const
{
    return OnHistogram("Tesk::Histogram::Count", *this, 0,
                       [=](const Counts& h) { return CountSample(CountOf(h, Threshold, Above)); });
}

int Histogram::Count(int Threshold, bool Above, const Image& Src)
{
    return OnImage("Tesk::Histogram::Count", Src, 0,
                   [=](const Counts& h) { return CountSample(CountOf(h, Threshold, Above)); });
}

double Histogram::Mean() const
{
    return OnHistogram("Tesk::Histogram::Mean", *this, 0.0, MeanOf);
}

double Histogram::Mean(const Image& Src)
{
    const Entry entry("Tesk::Histogram::Mean");
    return entry.Refuses(CheckGrays(Src)) ? 0 : MomentsOf(Src).mean;
}

void Histogram::Mean(double& MeanR, double& MeanG, double& MeanB) const
{
    OnColors("Tesk::Histogram::Mean", *this, [&](const Counts(&counts)[3]) {
        MeanR = MeanOf(counts[0]);
        MeanG = MeanOf(counts[1]);
        MeanB = MeanOf(counts[2]);
    });
}

void Histogram::Mean(const Image& Src, double& MeanR, double& MeanG, double& MeanB)
{
    OnColorSums("Tesk::Histogram::Mean", Src, [&](const std::array<PixelSums, 3>& sums) {
        MeanR = sums[0].Mean(PixelCount(Src));
        MeanG = sums[1].Mean(PixelCount(Src));
        MeanB = sums[2].Mean(PixelCount(Src));
    });
}

int Histogram::Quantile(double Percent) const
{
    return OnHistogram("Tesk::Histogram::Quantile", *this, 0, [=](const Counts& h) {
        return h.offset + LevelsUpTo(h, Target(static_cast<double>(h.total) * Percent + 0.5));
    });
}

int Histogram::Quantile(double Percent, const Image& Src)
{
    return OnImage("Tesk::Histogram::Quantile", Src, 0,
                   [&](const Counts& h) { return ImageQuantile(Src, h, Percent); });
}

int Histogram::Median() const
{
    return OnHistogram("Tesk::Histogram::Median", *this, 0, [](const Counts& h) {
        return h.offset + LevelsUpTo(h, Target(static_cast<double>(h.total) * 0.5 + 0.5));
    });
}

int Histogram::Median(const Image& Src)
{
    return OnImage("Tesk::Histogram::Median", Src, 0, [&](const Counts& h) { return ImageQuantile(Src, h, 0.5); });
}

int Histogram::Mode() const
{
    return OnHistogram("Tesk::Histogram::Mode", *this, 0, ModeOf);
}

int Histogram::Mode(const Image& Src)
{
    return OnImage("Tesk::Histogram::Mode", Src, 0, ModeOf);
}

double Histogram::TrimmedMean(double Percent) const
{
    return OnHistogram("Tesk::Histogram::TrimmedMean", *this, 0.0,
                       [=](const Counts& h) { return TrimmedMeanOf(h, Percent); });
}

double Histogram::TrimmedMean(double Percent, const Image& Src)
{
    return OnImage("Tesk::Histogram::TrimmedMean", Src, 0.0,
                   [=](const Counts& h) { return TrimmedMeanOf(h, Percent); });
}

void Histogram::Range(int& Minimum, int& Maximum) const
{
    OnHistogram("Tesk::Histogram::Range", *this, false, [&](const Counts& h) {
        RangeOf(h, Minimum, Maximum);
        return true;
    });
}

void Histogram::Range(const Image& Src, int& Minimum, int& Maximum)
{
    OnImage("Tesk::Histogram::Range", Src, false, [&](const Counts& h) {
        RangeOf(h, Minimum, Maximum);
        return true;
    });
}

void Histogram::Range(RgbPixel& Minimum, RgbPixel& Maximum) const
{
    OnColors("Tesk::Histogram::Range", *this, [&](const Counts(&counts)[3]) { ColorRange(counts, Minimum, Maximum); });
}

void Histogram::Range(const Image& Src, RgbPixel& Minimum, RgbPixel& Maximum)
{
    OnColors("Tesk::Histogram::Range", Src, [&](const Counts(&counts)[3]) { ColorRange(counts, Minimum, Maximum); });
}

double Histogram::Variance(double& Mean) const
{
    return OnHistogram("Tesk::Histogram::Variance", *this, 0.0, [&](const Counts& h) { return VarianceOf(h, Mean); });
}

double Histogram::Variance(const Image& Src, double& Mean)
{
    const Entry entry("Tesk::Histogram::Variance");
    if (entry.Refuses(CheckGrays(Src))) return 0;
    const Moments moments = MomentsOf(Src);
    Mean = moments.mean;
    return moments.variance;
}

double Histogram::Variance(double& MeanR, double& MeanG, double& MeanB) const
{
    double variance = 0;
    OnColors("Tesk::Histogram::Variance", *this,
             [&](const Counts(&counts)[3]) { variance = ColorVariance(counts, MeanR, MeanG, MeanB); });
    return variance;
}

double Histogram::Variance(const Image& Src, double& MeanR, double& MeanG, double& MeanB)
{
    double variance = 0;
    OnColorSums("Tesk::Histogram::Variance", Src, [&](const std::array<PixelSums, 3>& sums) {
        const double pixels = PixelCount(Src);
        MeanR = sums[0].Mean(pixels);
        MeanG = sums[1].Mean(pixels);
        MeanB = sums[2].Mean(pixels);
        variance = (sums[0].Variance(pixels) + sums[1].Variance(pixels) + sums[2].Variance(pixels)) / 3;
    });
    return variance;
}

double Histogram::MedianAbsoluteDeviation(int& Median) const
{
    return OnHistogram("Tesk::Histogram::MedianAbsoluteDeviation", *this, 0.0, [&](const Counts& h) {
        Median = h.offset + LevelsUpTo(h, h.total / 2);
        return MeanDistance(h, Median);
    });
}

double Histogram::MedianAbsoluteDeviation(const Image& Src, int& Median)
{
    return OnImage("Tesk::Histogram::MedianAbsoluteDeviation", Src, 0.0, [&](const Counts& h) {
        Median = LevelsUpTo(h, h.total / 2);
        return MeanDistance(h, Median);
    });
}

double Histogram::Skewness(double& Mean, double& Variance) const
{
    return OnHistogram("Tesk::Histogram::Skewness", *this, 0.0,
                       [&](const Counts& h) { return StandardizedMoment(h, 3, Mean, Variance); });
}

double Histogram::Skewness(const Image& Src, double& Mean, double& Variance)
{
    return OnImage("Tesk::Histogram::Skewness", Src, 0.0,
                   [&](const Counts& h) { return StandardizedMoment(h, 3, Mean, Variance); });
}

double Histogram::Kurtosis(double& Mean, double& Variance) const
{
    return OnHistogram("Tesk::Histogram::Kurtosis", *this, 0.0,
                       [&](const Counts& h) { return StandardizedMoment(h, 4, Mean, Variance); });
}

double Histogram::Kurtosis(const Image& Src, double& Mean, double& Variance)
{
    return OnImage("Tesk::Histogram::Kurtosis", Src, 0.0,
                   [&](const Counts& h) { return StandardizedMoment(h, 4, Mean, Variance); });
}

double Histogram::Entropy() const
{
    return OnHistogram("Tesk::Histogram::Entropy", *this, 0.0, EntropyOf);
}

double Histogram::Entropy(const Image& Src)
{
    return OnImage("Tesk::Histogram::Entropy", Src, 0.0, EntropyOf);
}

int Histogram::BestThreshold() const
{
    return OnHistogram("Tesk::Histogram::BestThreshold", *this, 0, BestThresholdOf);
}

int Histogram::BestThreshold(const Image& Src)
{
    return OnImage("Tesk::Histogram::BestThreshold", Src, 0, BestThresholdOf);
}

int Histogram::EntropyThreshold() const
{
    return OnHistogram("Tesk::Histogram::EntropyThreshold", *this, 0, EntropyThresholdOf);
}

int Histogram::EntropyThreshold(const Image& Src)
{
    return OnImage("Tesk::Histogram::EntropyThreshold", Src, 0, EntropyThresholdOf);
}

int Histogram::IsodataThreshold() const
{
    return OnHistogram("Tesk::Histogram::IsodataThreshold", *this, 0, IsodataThresholdOf);
}

int Histogram::IsodataThreshold(const Image& Src)
{
    return OnImage("Tesk::Histogram::IsodataThreshold", Src, 0, IsodataThresholdOf);
}

} // namespace Tesk
