// Filters on profiles: running means, what they leave, sums and differences.
#include "measure/Profile.h"

#include "measure/profile/ProfileFrame.h"

#include <vector>

namespace Tesk {

using namespace profiles;

namespace {

using Signal = std::vector<std::int32_t>;

bool IsFiltered(PixelTypes type)
{
    return IsGray(type) || type == Rgb;
}

int CheckLength(int length)
{
    if (length > 0 && length % 2 == 1) return NoError;
    return Status::Format(OutOfRange, L"The filter length (%d) must be a positive odd number", length);
}

/// The mean over `radius` samples on either side, the end samples going on beyond the ends. A sum is kept, from which
/// one sample is dropped and to which one is added at each step.
void RunningMean(Signal& signal, std::int64_t radius)
{
    if (radius == 0) return;
    const auto n = static_cast<std::int64_t>(signal.size());
    const std::int64_t width = 2 * radius + 1, inside = Min(radius, n - 1);
    const Signal source = signal;
    const std::int64_t first = source.front(), last = source.back();
    std::int64_t sum = first * radius + last * (radius - inside);
    for (std::int64_t i = 0; i <= inside; i++)
        sum += source[static_cast<std::size_t>(i)];
    for (std::int64_t i = 0; i < n; i++) {
        signal[static_cast<std::size_t>(i)] = static_cast<std::int32_t>(sum / width);
        const std::int64_t added = i + radius + 1, dropped = i - radius;
        sum += added < n ? source[static_cast<std::size_t>(added)] : last;
        sum -= dropped >= 0 ? source[static_cast<std::size_t>(dropped)] : first;
    }
}

/// Three running means whose radii add up to that of the filter.
void GaussMean(Signal& signal, std::int64_t radius)
{
    const std::int64_t r1 = (radius + 2) / 3, r2 = (radius - r1 + 1) / 2, r3 = radius - r1 - r2;
    for (const std::int64_t r : {r1, r2, r3})
        RunningMean(signal, r);
}

void Subtract(const Signal& source, Signal& signal)
{
    for (std::size_t i = 0; i < signal.size(); i++)
        signal[i] = Saturated(std::int64_t{source[i]} - signal[i]);
}

void RunningSum(Signal& signal)
{
    std::int64_t sum = 0;
    for (auto& value : signal)
        value = Saturated(sum += value);
}

void Difference(Signal& signal)
{
    const std::size_t n = signal.size();
    if (n == 1) {
        signal[0] = 0;
        return;
    }
    const Signal v = signal;
    signal[0] = Saturated(2 * (std::int64_t{v[1]} - v[0]));
    signal[n - 1] = Saturated(2 * (std::int64_t{v[n - 1]} - v[n - 2]));
    for (std::size_t i = 1; i + 1 < n; i++)
        signal[i] = Saturated(std::int64_t{v[i + 1]} - v[i - 1]);
}

/// Filters each channel of a source into a destination that stands ready.
template <typename F>
void EachChannel(const Profile& src, const Profile& dst, F filter)
{
    const int channels = Channels(src.Type);
    Signal signal(static_cast<std::size_t>(int(src.Length)));
    for (int c = 0; c < channels; c++) {
        for (std::size_t i = 0; i < signal.size(); i++)
            signal[i] = src.Samples()[i * static_cast<std::size_t>(channels) + static_cast<std::size_t>(c)];
        filter(signal);
        for (std::size_t i = 0; i < signal.size(); i++)
            dst.Samples()[i * static_cast<std::size_t>(channels) + static_cast<std::size_t>(c)] = signal[i];
    }
}

} // namespace

template <typename F>
int Profile::Filter(const Profile& src, Profile& dst, F filter)
{
    return Allocating([&] {
        Profile held;
        if (!Prepare(src, dst, src.Type, held)) return RefuseMemory();
        EachChannel(held, dst, filter);
        return int{NoError};
    });
}

void Profile::BoxLowPass(int FilterLength, const Profile& Src, Profile& Dst)
{
    const Entry entry("Tesk::Profile::BoxLowPass");
    if (entry.Refuses(CheckSamples(Src, IsFiltered)) || entry.Refuses(CheckLength(FilterLength))) return;
    entry.Refuses(Filter(Src, Dst, [=](Signal& signal) { RunningMean(signal, FilterLength / 2); }));
}

void Profile::BoxHighPass(int FilterLength, const Profile& Src, Profile& Dst)
{
    const Entry entry("Tesk::Profile::BoxHighPass");
    if (entry.Refuses(CheckSamples(Src, IsFiltered)) || entry.Refuses(CheckLength(FilterLength))) return;
    entry.Refuses(Filter(Src, Dst, [=](Signal& signal) {
        const Signal source = signal;
        RunningMean(signal, FilterLength / 2);
        Subtract(source, signal);
    }));
}

void Profile::GaussLowPass(int FilterLength, const Profile& Src, Profile& Dst)
{
    const Entry entry("Tesk::Profile::GaussLowPass");
    if (entry.Refuses(CheckSamples(Src, IsGray)) || entry.Refuses(CheckLength(FilterLength))) return;
    entry.Refuses(Filter(Src, Dst, [=](Signal& signal) { GaussMean(signal, FilterLength / 2); }));
}

void Profile::GaussHighPass(int FilterLength, const Profile& Src, Profile& Dst)
{
    const Entry entry("Tesk::Profile::GaussHighPass");
    if (entry.Refuses(CheckSamples(Src, IsGray)) || entry.Refuses(CheckLength(FilterLength))) return;
    entry.Refuses(Filter(Src, Dst, [=](Signal& signal) {
        const Signal source = signal;
        GaussMean(signal, FilterLength / 2);
        Subtract(source, signal);
    }));
}

void Profile::Integrate(const Profile& Src, Profile& Dst)
{
    const Entry entry("Tesk::Profile::Integrate");
    if (!entry.Refuses(CheckSamples(Src, IsFiltered))) entry.Refuses(Filter(Src, Dst, RunningSum));
}

void Profile::Derive(const Profile& Src, Profile& Dst)
{
    const Entry entry("Tesk::Profile::Derive");
    if (!entry.Refuses(CheckSamples(Src, IsFiltered))) entry.Refuses(Filter(Src, Dst, Difference));
}

} // namespace Tesk
