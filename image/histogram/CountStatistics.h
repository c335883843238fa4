// Statistics and thresholds of counts, wherever they come from. All take counts with a total above 0.
#pragma once

#include "foundation/Records.h"

#include <cstddef>
#include <cstdint>

namespace Tesk::levels {

/// The counts of the levels `offset` to `offset + size - 1`.
struct Counts
{
    const std::int32_t* counts = nullptr;
    int size = 0, offset = 0, stride = 1;
    std::int64_t total = 0;

    /// A count below 0 can only have been written there; it counts as none.
    std::int64_t operator[](int i) const { return Max(counts[static_cast<std::ptrdiff_t>(i) * stride], 0); }
};

/// Counts with their sum.
Counts Summed(const std::int32_t* counts, int size, int offset, int stride);

double MeanOf(const Counts& h);
double VarianceOf(const Counts& h, double& mean);
/// The `power`-th moment about the mean, over that power of the standard deviation.
double StandardizedMoment(const Counts& h, int power, double& mean, double& variance);
/// The mean without the darkest and the lightest half of that share of the pixels.
double TrimmedMeanOf(const Counts& h, double percent);
int ModeOf(const Counts& h);
void RangeOf(const Counts& h, int& first, int& last);
/// The mean distance of the levels to one of them.
double MeanDistance(const Counts& h, int median);
/// In bits.
double EntropyOf(const Counts& h);
/// The pixels below a threshold, or from it up.
std::int64_t CountOf(const Counts& h, int threshold, bool above);

/// A fraction of the total, held to what a sum of counts can be.
std::int64_t Target(double value);
/// How many levels it takes from the first one until `target` pixels are counted.
int LevelsUpTo(const Counts& h, std::int64_t target);

/// By the least variance within the parts (Otsu 1979); may throw `std::bad_alloc`.
int BestThresholdOf(const Counts& h);
/// By the largest sum of the entropies of the parts (Kapur, Sahoo and Wong 1985).
int EntropyThresholdOf(const Counts& h);
/// The one nearest to half way between the means of its parts (Ridler and Calvard 1978).
int IsodataThresholdOf(const Counts& h);

} // namespace Tesk::levels
