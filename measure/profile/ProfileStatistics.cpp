// Statistics of the samples of a profile.
#include "measure/Profile.h"

#include "measure/profile/ProfileFrame.h"

#include <algorithm>
#include <vector>

namespace Tesk {

using namespace profiles;

namespace {

std::vector<std::int32_t> Copied(const Profile& profile)
{
    const std::int32_t* samples = profile.Samples();
    return {samples, samples + profile.Length};
}

double MeanOf(const std::int32_t* samples, int count)
{
    std::int64_t sum = 0;
    for (int i = 0; i < count; i++)
        sum += samples[i];
    return static_cast<double>(sum) / count;
}

} // namespace

int Profile::Rank(double percent, int& sample) const
{
    if (const int code = CheckSamples(*this, IsGray)) return code;
    return Allocating([&] {
        auto sorted = Copied(*this);
        const auto kth = sorted.begin() + Clamp(Truncated(Length * percent), 0, Length - 1);
        std::nth_element(sorted.begin(), kth, sorted.end());
        sample = *kth;
    });
}

int Profile::Quantile(double Percent) const
{
    const Entry entry("Tesk::Profile::Quantile");
    int sample = 0;
    entry.Refuses(Rank(Percent, sample));
    return sample;
}

int Profile::Median() const
{
    const Entry entry("Tesk::Profile::Median");
    int sample = 0;
    entry.Refuses(Rank(0.5, sample));
    return sample;
}

double Profile::Mean() const
{
    const Entry entry("Tesk::Profile::Mean");
    if (entry.Refuses(CheckSamples(*this, IsGray))) return 0;
    return MeanOf(Samples(), Length);
}

double Profile::TrimmedMean(double Percent) const
{
    const Entry entry("Tesk::Profile::TrimmedMean");
    if (entry.Refuses(CheckSamples(*this, IsGray))) return 0;
    double result = 0;
    entry.Refuses(Allocating([&] {
        const std::int64_t cut = Max(Truncated(Percent * 0.5 * Length), 0);
        const std::int64_t count = Length - 2 * cut - 1;
        if (count < 1) return;
        auto sorted = Copied(*this);
        std::sort(sorted.begin(), sorted.end());
        result = MeanOf(sorted.data() + cut, static_cast<int>(count));
    }));
    return result;
}

void Profile::Range(int& Minimum, int& Maximum) const
{
    const Entry entry("Tesk::Profile::Range");
    if (entry.Refuses(CheckSamples(*this, IsGray))) return;
    const auto [least, most] = std::minmax_element(Samples(), Samples() + Length);
    Minimum = *least;
    Maximum = *most;
}

double Profile::Variance(double& Mean) const
{
    const Entry entry("Tesk::Profile::Variance");
    if (entry.Refuses(CheckSamples(*this, IsGray))) return 0;
    const double mean = MeanOf(Samples(), Length);
    double squares = 0;
    for (int i = 0; i < Length; i++)
        squares += Sqr(Samples()[i] - mean);
    Mean = mean;
    return squares / Length;
}

} // namespace Tesk
