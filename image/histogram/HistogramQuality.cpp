// Measures of the quality of an image: noise and saturation; the moments of its colours.
#include "image/Histogram.h"

#include "image/core/PixelLoops.h"
#include "image/histogram/HistogramFrame.h"
#include "image/histogram/NoiseEstimate.h"
#include "image/operator/PixelSteps.h"

#include <array>
#include <vector>

namespace Tesk {

using namespace levels;

namespace {

/// Turns the mean answer of the mask into a standard deviation.
constexpr double noiseScale = 0.20833333333333334;

/// One dimension of the mask; the mask is its product with itself.
constexpr std::array<int, 3> plainMask = {1, -2, 1};
constexpr std::array<int, 5> largeMask = {1, -4, 6, -4, 1};

/// Calls `row(y, answers)` for the inner rows of an image whose pixels are `channels` numbers of type `T`; `answers`
/// holds the magnitudes of the answer at the inner pixels. False without inner pixels.
template <typename T, std::size_t size, typename F>
bool EachAnswer(const Image& src, int channels, const std::array<int, size>& mask, F row)
{
    constexpr int reach = static_cast<int>(size) - 1;
    if (src.Width <= reach || src.Height <= reach) return false;
    const int count = (src.Width - reach) * channels;
    std::array<std::vector<std::int32_t>, size> along;
    for (auto& line : along)
        line.resize(static_cast<std::size_t>(count));
    std::vector<std::int32_t> answers(static_cast<std::size_t>(count));
    for (int y = 0; y < src.Height; y++) {
        const T* s = src.Row<T>(y);
        std::int32_t* line = along[static_cast<std::size_t>(y) % size].data();
        for (int i = 0; i < count; i++) {
            int sum = 0;
            for (std::size_t k = 0; k < size; k++)
                sum += mask[k] * s[i + static_cast<int>(k) * channels];
            line[i] = sum;
        }
        if (y < reach) continue;
        const std::int32_t* lines[size];
        for (std::size_t k = 0; k < size; k++)
            lines[k] = along[(static_cast<std::size_t>(y - reach) + k) % size].data();
        for (int i = 0; i < count; i++) {
            int sum = 0;
            for (std::size_t k = 0; k < size; k++)
                sum += mask[k] * lines[k][i];
            answers[static_cast<std::size_t>(i)] = sum < 0 ? -sum : sum;
        }
        row(y - reach / 2, answers);
    }
    return true;
}

template <typename F>
bool EachAnswer(const Image& src, bool large, F row)
{
    bool any = false;
    VisitSamples<Gray, Gray16, Rgb>(src.Type, [&]<int channels, typename T>() {
        any = large ? EachAnswer<T>(src, channels, largeMask, row) : EachAnswer<T>(src, channels, plainMask, row);
    });
    return any;
}

constexpr Types noiseTypes = {Gray, Gray16, Rgb};

/// The extreme levels of each channel of a `Gray` or `Rgb` image, in memory order.
struct Extremes
{
    std::array<std::uint8_t, 3> first{}, last{};
    std::array<double, 3> firstCount{}, lastCount{};
};

template <typename Counted>
void FindExtremes(const Counted& counts, std::size_t channel, Extremes& extremes)
{
    std::size_t low = 0, high = counts.size() - 1;
    while (low < high && counts[low] == 0)
        low++;
    while (high > low && counts[high] == 0)
        high--;
    extremes.first[channel] = static_cast<std::uint8_t>(low);
    extremes.last[channel] = static_cast<std::uint8_t>(high);
    extremes.firstCount[channel] = counts[low];
    extremes.lastCount[channel] = counts[high];
}

Extremes ExtremesOf(const Image& src)
{
    Extremes extremes;
    if (src.Type == Gray) {
        FindExtremes(CountGray(src), 0, extremes);
        return extremes;
    }
    const auto counts = CountRgb(src);
    for (std::size_t c = 0; c < 3; c++)
        FindExtremes(counts[2 - c], c, extremes);
    return extremes;
}

void LevelsOf(const Image& src, const Extremes& extremes, int& darkest, int& lightest)
{
    darkest = extremes.first[0];
    lightest = extremes.last[0];
    if (src.Type == Gray) return;
    for (std::size_t c = 1; c < 3; c++) {
        darkest = Min<int>(darkest, extremes.first[c]);
        lightest = Max<int>(lightest, extremes.last[c]);
    }
}

} // namespace

double levels::NoiseOf(const Image& src, bool large)
{
    std::int64_t sum = 0, inner = 0;
    EachAnswer(src, large, [&](int, const std::vector<std::int32_t>& answers) {
        inner += static_cast<std::int64_t>(answers.size());
        for (const std::int32_t answer : answers)
            sum += answer;
    });
    return inner > 0 ? static_cast<double>(sum) * noiseScale / static_cast<double>(inner) : 0;
}

double Histogram::Noise(const Image& Src, bool Large)
{
    const Entry entry("Tesk::Histogram::Noise");
    if (entry.Refuses(CheckType(Src, noiseTypes))) return 0;
    double result = 0;
    Guarded(entry, [&] { result = NoiseOf(Src, Large); });
    return result;
}

void Histogram::ShowNoise(const Image& Src, Image& Dst, bool Large)
{
    const Entry entry("Tesk::Histogram::ShowNoise");
    if (entry.Refuses(CheckType(Src, noiseTypes))) return;
    Sources held;
    if (images::Prepare(entry, Src, Dst, Src.Type == Rgb ? Rgb : Gray, held, InPlace::Copied)) return;
    FillRows(Dst, 0);
    const int border = (Large ? 2 : 1) * (Dst.Type == Rgb ? 3 : 1);
    Guarded(entry, [&] {
        EachAnswer(held.a, Large, [&](int y, const std::vector<std::int32_t>& answers) {
            std::uint8_t* d = Dst.Row(y) + border;
            for (const std::int32_t answer : answers)
                *d++ = static_cast<std::uint8_t>(Min(answer, 255));
        });
    });
}

void Histogram::Saturation(const Image& Src, int& Darkest, int& Lightest, double& BlackFraction, double& WhiteFraction)
{
    const Entry entry("Tesk::Histogram::Saturation");
    if (entry.Refuses(CheckType(Src, {Gray, Rgb}))) return;
    const Extremes extremes = ExtremesOf(Src);
    const double pixels = PixelCount(Src);
    LevelsOf(Src, extremes, Darkest, Lightest);
    if (Src.Type == Gray) {
        BlackFraction = extremes.firstCount[0] / pixels;
        WhiteFraction = extremes.lastCount[0] / pixels;
        return;
    }
    std::int64_t black = 0, white = 0;
    for (int y = 0; y < Src.Height; y++) {
        const std::uint8_t* s = Src.Row(y);
        for (int x = 0; x < Src.Width; x++, s += 3) {
            const bool dark = s[0] == extremes.first[0] || s[1] == extremes.first[1] || s[2] == extremes.first[2];
            const bool light = s[0] == extremes.last[0] || s[1] == extremes.last[1] || s[2] == extremes.last[2];
            black += dark;
            white += !dark && light;
        }
    }
    BlackFraction = static_cast<double>(black) / pixels;
    WhiteFraction = static_cast<double>(white) / pixels;
}

void Histogram::ShowSaturation(const Image& Src, Image& Dst, int Dark, int Light)
{
    const Entry entry("Tesk::Histogram::ShowSaturation");
    if (entry.Refuses(CheckType(Src, {Gray, Rgb}))) return;
    int dark = Dark, light = Light;
    if (Dark == NotInitialized || Light == NotInitialized) {
        int darkest = 0, lightest = 0;
        LevelsOf(Src, ExtremesOf(Src), darkest, lightest);
        if (Dark == NotInitialized) dark = darkest;
        if (Light == NotInitialized) light = lightest;
    }
    if (points::CopyPixels(entry, Src, Dst, Rgb)) return;
    // A colour image over itself is not copied, and may be shared still.
    Dst.DetachIfShared(true);
    constexpr RgbPixel darkMark(0, 0, 255), lightMark(255, 0, 0);
    EachPixel<RgbPixel, RgbPixel>(Dst, Dst, [=](RgbPixel p) {
        if (Min(p.Red, Min(p.Green, p.Blue)) <= dark) return darkMark;
        return Max(p.Red, Max(p.Green, p.Blue)) >= light ? lightMark : p;
    });
}

void Histogram::Covariance(const Image& Src, double& RR, double& GG, double& BB, double& RG, double& GB, double& BR)
{
    const Entry entry("Tesk::Histogram::Covariance");
    if (entry.Refuses(CheckOnly(Src, Rgb))) return;
    std::int64_t r = 0, g = 0, b = 0, rr = 0, gg = 0, bb = 0, rg = 0, gb = 0, br = 0;
    for (int y = 0; y < Src.Height; y++)
        for (int x = 0; x < Src.Width; x++) {
            const RgbPixel p = Src.Row<RgbPixel>(y)[x];
            r += p.Red;
            g += p.Green;
            b += p.Blue;
            rr += p.Red * p.Red;
            gg += p.Green * p.Green;
            bb += p.Blue * p.Blue;
            rg += p.Red * p.Green;
            gb += p.Green * p.Blue;
            br += p.Blue * p.Red;
        }
    const double n = PixelCount(Src);
    const auto moment = [n](std::int64_t product, std::int64_t s, std::int64_t t) {
        return static_cast<double>(product) / n - static_cast<double>(s) / n * (static_cast<double>(t) / n);
    };
    RR = moment(rr, r, r);
    GG = moment(gg, g, g);
    BB = moment(bb, b, b);
    RG = moment(rg, r, g);
    GB = moment(gb, g, b);
    BR = moment(br, b, r);
}

} // namespace Tesk
