// A blurred step fitted to samples, by least squares.
#pragma once

#include <cstdint>

namespace Tesk::edges {

/// middle + height (Phi((x - place) / width) - 1/2), Phi being the distribution function of the normal distribution.
struct BlurredStep
{
    double middle, height, place, width;
};

/// The samples `from` to `to`, of which those before `coreFrom` and behind `coreTo` are clear of the step.
struct StepSamples
{
    const std::int32_t* samples;
    int from, coreFrom, coreTo, to;
};

/// Improves a step by Gauss-Newton iterations; `skew` is the third central moment of what the sampling adds to the
/// blur. False, and the step as it was, if they do not settle near where they began.
bool FitStep(const StepSamples& window, double skew, BlurredStep& step);

} // namespace Tesk::edges
