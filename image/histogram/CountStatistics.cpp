// The formulas of the statistics and thresholds of counts.
#include "image/histogram/CountStatistics.h"

#include "image/histogram/LevelCounts.h"

#include <cfloat>
#include <cmath>
#include <vector>

namespace Tesk::levels {

namespace {

double RealCount(const Counts& h, int i)
{
    return static_cast<double>(h[i]);
}

/// h log h, 0 for an empty level.
double Information(double count)
{
    return count > 0 ? count * std::log(count) : 0;
}

} // namespace

Counts Summed(const std::int32_t* counts, int size, int offset, int stride)
{
    Counts summed{counts, size, offset, stride, 0};
    for (int i = 0; i < size; i++)
        summed.total += summed[i];
    return summed;
}

double MeanOf(const Counts& h)
{
    double sum = 0;
    for (int i = 0; i < h.size; i++)
        sum += RealCount(h, i) * (i + h.offset);
    return sum / static_cast<double>(h.total);
}

double VarianceOf(const Counts& h, double& mean)
{
    double squares = 0;
    for (int i = 0; i < h.size; i++)
        squares += RealCount(h, i) * (i + h.offset) * (i + h.offset);
    mean = MeanOf(h);
    return squares / static_cast<double>(h.total) - mean * mean;
}

double StandardizedMoment(const Counts& h, int power, double& mean, double& variance)
{
    variance = VarianceOf(h, mean);
    if (!(variance > 0)) return 0;
    double sum = 0;
    for (int i = 0; i < h.size; i++)
        sum += RealCount(h, i) * std::pow(i + h.offset - mean, power);
    return sum / static_cast<double>(h.total) / std::pow(variance, power / 2.0);
}

std::int64_t Target(double value)
{
    constexpr double most = 1e18;
    return value > 0 ? static_cast<std::int64_t>(Min(value, most)) : 0;
}

int LevelsUpTo(const Counts& h, std::int64_t target)
{
    int levels = 0;
    for (std::int64_t sum = 0; sum < target && levels < h.size; levels++)
        sum += h[levels];
    return levels;
}

double TrimmedMeanOf(const Counts& h, double percent)
{
    const std::int64_t target = Target(percent * 0.5 * static_cast<double>(h.total));
    int i = LevelsUpTo(h, target);
    std::int64_t sum = 0, taken = 0;
    for (int k = 0; k < i; k++)
        sum += h[k];
    double weighted = 0;
    for (; sum < h.total - target && i < h.size; i++) {
        sum += h[i];
        taken += h[i];
        weighted += RealCount(h, i) * (i + h.offset);
    }
    return taken > 0 ? weighted / static_cast<double>(taken) : i + h.offset;
}

int ModeOf(const Counts& h)
{
    int mode = 0;
    for (int i = 1; i < h.size; i++)
        if (h[i] > h[mode]) mode = i;
    return mode + h.offset;
}

void RangeOf(const Counts& h, int& first, int& last)
{
    int low = 0, high = h.size - 1;
    while (low < high && h[low] == 0)
        low++;
    while (high > low && h[high] == 0)
        high--;
    first = low + h.offset;
    last = high + h.offset;
}

double MeanDistance(const Counts& h, int median)
{
    double sum = 0;
    for (int i = 0; i < h.size; i++)
        sum += RealCount(h, i) * std::abs(i + h.offset - median);
    return sum / static_cast<double>(h.total);
}

double EntropyOf(const Counts& h)
{
    double sum = 0;
    for (int i = 0; i < h.size; i++)
        sum += Information(RealCount(h, i));
    const auto total = static_cast<double>(h.total);
    return (std::log(total) - sum / total) / std::log(2.0);
}

int BestThresholdOf(const Counts& h)
{
    std::vector<std::int64_t> counts(static_cast<std::size_t>(h.size));
    for (int i = 0; i < h.size; i++)
        counts[static_cast<std::size_t>(i)] = h[i];
    const int threshold = BestSplit(counts.data(), h.size).threshold;
    return threshold == 0 ? 0 : threshold + h.offset;
}

namespace {

/// The sizes and the sums of the two parts of the counts, below a threshold and from it up.
struct Parts
{
    double n1, n2, s1, s2, l1, l2;
};

/// Calls `visit(t, parts)` for each threshold with pixels on either side. `l1` and `l2` are sums of h log h.
template <typename F>
void EachThreshold(const Counts& h, F visit)
{
    Parts parts{};
    for (int i = 0; i < h.size; i++) {
        parts.n2 += RealCount(h, i);
        parts.s2 += RealCount(h, i) * i;
        parts.l2 += Information(RealCount(h, i));
    }
    for (int t = 0; t < h.size; t++) {
        if (parts.n1 > 0 && parts.n2 > 0) visit(t, parts);
        const double n = RealCount(h, t), information = Information(n);
        parts.n1 += n;
        parts.n2 -= n;
        parts.s1 += n * t;
        parts.s2 -= n * t;
        parts.l1 += information;
        parts.l2 -= information;
    }
}

} // namespace

int EntropyThresholdOf(const Counts& h)
{
    double best = -FLT_MAX;
    int threshold = 0;
    EachThreshold(h, [&](int t, const Parts& p) {
        const double entropy = std::log(p.n1 * p.n2) - p.l1 / p.n1 - p.l2 / p.n2;
        if (entropy > best) {
            best = entropy;
            threshold = t + h.offset;
        }
    });
    return threshold;
}

int IsodataThresholdOf(const Counts& h)
{
    double best = FLT_MAX;
    int threshold = 0;
    EachThreshold(h, [&](int t, const Parts& p) {
        const double distance = std::abs((p.s1 / p.n1 + p.s2 / p.n2) / 2 - t);
        if (distance < best) {
            best = distance;
            threshold = t + h.offset;
        }
    });
    return threshold;
}

std::int64_t CountOf(const Counts& h, int threshold, bool above)
{
    std::int64_t below = 0;
    for (int i = 0; i < h.size && std::int64_t{i} + h.offset < threshold; i++)
        below += h[i];
    return above ? h.total - below : below;
}

} // namespace Tesk::levels
