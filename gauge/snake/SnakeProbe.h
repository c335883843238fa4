// One profile across the axis of a snake, and the edges on it.
#pragma once

#include "image/Image.h"

#include <cstdint>
#include <vector>

namespace Tesk {

struct AxisSample;

namespace snakes {

inline constexpr double farthestBreadth = 4096;
inline constexpr int largestThickness = 1024;

/// What a probe found: the values of `AxisSample::State`.
enum States
{
    Missing = 0,
    Conforming = 1,
    Intrusion = 2,
    Protrusion = 3
};

/// What an edge must be, and which one is taken.
struct EdgeLimits
{
    int minimumStep, minimumSlope, maximumSpan, noise;
    Polarities polarity;
    int selection;
};

struct ProbeEdge
{
    double position; ///< samples from the beginning of the profile
    std::int64_t step, slope;
    int span;
    bool rising;
};

/// How far profiles reach: not a number counts as 0.
inline double HeldBreadth(double breadth)
{
    return breadth > 0 ? Min(breadth, farthestBreadth) : 0;
}

/// The point of the normal through an axis sample that lies aside by a deviation.
XY Aside(const AxisSample& sample, double deviation);

/// Takes the profile across an axis sample from a `Gray` or `Gray16` image, averaged over `thickness`; `line` is memory
/// that is used again. Throws `std::bad_alloc`.
void TakeProfile(const Image& src, const AxisSample& sample, double breadth, int thickness,
                 std::vector<std::int32_t>& profile, std::vector<std::int32_t>& line);

/// The edge of a profile from the sample `first` on; false if there is none.
bool FindEdge(const std::vector<std::int32_t>& profile, int first, const EdgeLimits& limits, ProbeEdge& edge);

} // namespace snakes
} // namespace Tesk
