// The limits of pixels: from a tolerance about the reference, or from good samples.
#include "gauge/Comparator.h"

#include "foundation/Entry.h"
#include "gauge/compare/CompareFrame.h"
#include "image/core/Destination.h"
#include "image/core/Refusals.h"
#include "image/core/Saturation.h"
#include "image/morpho/MorphoExtremum.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace Tesk {

using namespace compare;

namespace {

/// More would not fit the counts, nor the sums of squares.
constexpr int mostSamples = 65535;
static_assert(std::uint64_t{mostSamples} * lightest * lightest <= std::numeric_limits<std::uint32_t>::max());

/// Adds a value, saturated.
void Raise(const Image& src, int by, Image& dst)
{
    std::uint8_t table[lightest + 1];
    for (int v = 0; v <= lightest; v++)
        table[v] = static_cast<std::uint8_t>(Clamp(v + by, 0, lightest));
    for (int y = 0; y < src.Height; y++) {
        const std::uint8_t* s = src.Row(y);
        std::uint8_t* d = dst.Row(y);
        for (int i = 0; i < images::ByteCount(src); i++)
            d[i] = table[s[i]];
    }
}

/// Copies the samples of one channel from or to their places among those of a pixel.
void CopyChannel(const Image& src, int channel, int stride, Image& dst, int dstChannel, int dstStride)
{
    for (int y = 0; y < src.Height; y++) {
        const std::uint8_t* s = src.Row(y) + channel;
        std::uint8_t* d = dst.Row(y) + dstChannel;
        for (std::ptrdiff_t x = 0; x < src.Width; x++)
            d[x * dstStride] = s[x * stride];
    }
}

/// The extremum in a square about each pixel, channel by channel. May throw `std::bad_alloc`.
void Spread(morpho::Extremum extremum, int size, Image& limit)
{
    const morpho::Element square(size, size, 1, limit);
    const int channels = images::Channels(limit.Type);
    Image from, to;
    images::MakeLike(limit, Gray, from);
    images::MakeLike(limit, Gray, to);
    for (int c = 0; c < channels; c++) {
        CopyChannel(limit, c, channels, from, 0, 1);
        morpho::Apply(extremum, square, from, to);
        CopyChannel(to, 0, 1, limit, c, channels);
    }
}

void AddToEnvelope(const std::uint8_t* s, std::size_t n, std::uint8_t* least, std::uint8_t* most)
{
    for (std::size_t i = 0; i < n; i++) {
        least[i] = Min(least[i], s[i]);
        most[i] = Max(most[i], s[i]);
    }
}

void AddToSums(const std::uint8_t* s, std::size_t n, std::uint32_t* sums, std::uint32_t* squares)
{
    for (std::size_t i = 0; i < n; i++) {
        sums[i] += s[i];
        squares[i] += std::uint32_t{s[i]} * s[i];
    }
}

struct Pair
{
    std::uint8_t lower = 0, upper = lightest;
};

/// The extremes, widened about their middle.
Pair EnvelopeLimits(std::uint8_t least, std::uint8_t most, double factor)
{
    constexpr double highest = 254;
    const double in = (1 - factor) / 2, out = (1 + factor) / 2;
    const auto held = [](double v) { return images::TruncatedByte(Min(v, highest)); };
    return {held(most * in + least * out), held(most * out + least * in)};
}

Pair DeviationLimits(std::uint32_t sum, std::uint32_t squares, std::uint16_t count, double factor)
{
    const double mean = static_cast<double>(sum) / count,
                 deviation = std::sqrt(Max(static_cast<double>(squares) / count - mean * mean, 0.0));
    return {images::TruncatedByte(mean - factor * deviation), images::TruncatedByte(mean + factor * deviation)};
}

Pair LimitsAt(const Samples& samples, std::size_t pixel, std::size_t i, double factor)
{
    const std::uint16_t count = samples.counts[pixel];
    if (count < 2) return {};
    if (samples.isStatistical) return DeviationLimits(samples.sums[i], samples.squares[i], count, factor);
    return EnvelopeLimits(samples.least[i], samples.most[i], factor);
}

} // namespace

void Comparator::StraightTolerancing(int Tolerance, int Radius)
{
    const Entry entry("Tesk::Comparator::StraightTolerancing");
    if (RefusesIdle(entry)) return;
    // No gray value moves farther, and no square reaches farther.
    const int tolerance = Clamp(Tolerance, -lightest, lightest), radius = Min(Radius, farthest / 2 - 1);
    Image lower, upper;
    if (entry.Refuses(WithMemory(images::noWorkingMemory, [&] {
            images::MakeLike(reference_, reference_.Type, lower);
            images::MakeLike(reference_, reference_.Type, upper);
            Raise(reference_, -tolerance, lower);
            Raise(reference_, tolerance, upper);
            if (radius < 1) return;
            Spread(morpho::Extremum::Minimum, 2 * radius + 1, lower);
            Spread(morpho::Extremum::Maximum, 2 * radius + 1, upper);
        })))
        return;
    TakeLimits(lower, upper);
    Mode = Trained;
}

void Comparator::StartTolerancing(bool Statistical)
{
    const Entry entry("Tesk::Comparator::StartTolerancing");
    if (RefusesIdle(entry)) return;
    if (entry.Refuses(WithMemory(images::noWorkingMemory, [&] {
            Samples made;
            made.isStatistical = Statistical;
            made.width = static_cast<std::size_t>(int(reference_.Width));
            made.channels = static_cast<std::size_t>(images::Channels(reference_.Type));
            const std::size_t pixels = made.width * static_cast<std::size_t>(int(reference_.Height)),
                              numbers = pixels * made.channels;
            made.counts.resize(pixels);
            if (Statistical) {
                made.sums.resize(numbers);
                made.squares.resize(numbers);
            } else {
                made.least.resize(numbers, lightest);
                made.most.resize(numbers, 0);
            }
            samples_.Replace(std::move(made));
        })))
        return;
    this->Statistical = Statistical;
    NumSamples = 0;
}

bool Comparator::RefusesUnaligned(const Entry& entry) const
{
    if (Mode != EditingAligners && Mode != EditingDetectors) return false;
    return entry.Refuse(CannotPerform, L"This Comparator has not been aligned to the Reference - Use Align");
}

/// Makes a view of the working area of an image that shows it, or all of the reference; false for any other.
bool Comparator::ViewArea(const Image& src, Image& view) const
{
    const Limits& area = WorkingArea();
    if (src.Width == area.Width && src.Height == area.Height)
        view.ShallowCopy(src, true);
    else if (src.Width == reference_.Width && src.Height == reference_.Height)
        ViewOf(src, area, view);
    else
        return false;
    return true;
}

void Comparator::NextTolerancing(const Image& Src)
{
    const Entry entry("Tesk::Comparator::NextTolerancing");
    if (RefusesIdle(entry) || RefusesUnaligned(entry) || entry.Refuses(CheckImage(Src, reference_.Type))) return;
    Image view;
    if (!ViewArea(Src, view)) {
        entry.Refuse(IncompatibleSize, L"Incompatible source and reference image sizes, (%d, %d) vs. (%d, %d)",
                     int(Src.Width), int(Src.Height), int(reference_.Width), int(reference_.Height));
        return;
    }
    if (samples_.Read().width == 0) {
        entry.Refuse(CannotPerform, L"Tolerancing has not been started - Use StartTolerancing");
        return;
    }
    if (NumSamples >= mostSamples) {
        entry.Refuse(OutOfRange, L"The number of samples may not exceed %d", mostSamples);
        return;
    }
    if (entry.Refuses(WithMemory(images::noWorkingMemory, [&] { AddSample(view); }))) return;
    NumSamples += 1;
}

void Comparator::AddSample(const Image& view)
{
    Samples& samples = samples_.Write();
    const Limits& area = WorkingArea();
    EachRun(clip_.Runs(), view.Width, view.Height, [&](int y, int from, int to) {
        const std::size_t pixel =
            static_cast<std::size_t>(y + area.Y) * samples.width + static_cast<std::size_t>(from + area.X);
        const std::size_t first = pixel * samples.channels, count = static_cast<std::size_t>(to - from);
        std::uint16_t* counts = samples.counts.data() + pixel;
        for (std::size_t i = 0; i < count; i++)
            counts[i]++;
        const std::uint8_t* s = view.Row(y) + static_cast<std::size_t>(from) * samples.channels;
        if (samples.isStatistical)
            AddToSums(s, count * samples.channels, samples.sums.data() + first, samples.squares.data() + first);
        else
            AddToEnvelope(s, count * samples.channels, samples.least.data() + first, samples.most.data() + first);
    });
}

void Comparator::EndTolerancing(double Factor)
{
    const Entry entry("Tesk::Comparator::EndTolerancing");
    if (RefusesIdle(entry)) return;
    if (!std::isfinite(Factor)) {
        entry.Refuse(OutOfRange, L"The factor (%g) is not a usable number", Factor);
        return;
    }
    const Samples& samples = samples_.Read();
    if (NumSamples < 1 || samples.width == 0) return;
    Image lower, upper;
    if (entry.Refuses(WithMemory(images::noWorkingMemory, [&] {
            images::MakeLike(reference_, reference_.Type, lower);
            images::MakeLike(reference_, reference_.Type, upper);
        })))
        return;
    const std::size_t channels = samples.channels, numbers = samples.width * channels;
    for (int y = 0; y < reference_.Height; y++) {
        const std::size_t first = static_cast<std::size_t>(y) * numbers;
        std::uint8_t *low = lower.Row(y), *high = upper.Row(y);
        for (std::size_t i = 0; i < numbers; i++) {
            const Pair limits = LimitsAt(samples, (first + i) / channels, first + i, Factor);
            low[i] = limits.lower;
            high[i] = limits.upper;
        }
    }
    TakeLimits(lower, upper);
    Mode = Trained;
}

} // namespace Tesk
