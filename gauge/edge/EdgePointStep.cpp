// The place of an edge by a blurred step that is fitted to the samples around its lobe.
//
// It is fitted to samples that are not smoothed yet: their noise is nearly white, so that least squares uses all that
// they tell, whatever the smoothing with which the edge was found.
#include "gauge/EdgePoint.h"

#include "gauge/edge/Lobes.h"
#include "gauge/edge/StepFit.h"

#include <cmath>
#include <numbers>

namespace Tesk {

using namespace edges;

namespace {

/// In widths and samples: how far the step itself reaches, and what beside it tells of the two levels.
constexpr double coreWidths = 3.5, coreSamples = 1, flankWidths = 5, flankSamples = 4;
/// Another lobe that is stronger than that part of this one ends the samples that are used.
constexpr int foreignPart = 4;
constexpr int fewestSamples = 5;

/// The width of the step in the signal that has this lobe, less what smoothing and derivative added.
double WidthOf(const Lobe& lobe, int smoothing)
{
    constexpr double narrowest = 0.25;
    const double height = std::abs(static_cast<double>(lobe.step)),
                 slope = std::abs(static_cast<double>(lobe.peak)) / 2;
    const double width = height / (slope * std::sqrt(2 * std::numbers::pi));
    // Variances of a box of that many samples, and of one of two samples.
    const double added = (static_cast<double>(smoothing) * smoothing - 1) / 12 + 1.0 / 3;
    return std::sqrt(Max(width * width - added, narrowest));
}

} // namespace

/// The third central moment that bilinear interpolation adds to the blur, in the mean over the pixels around a place:
/// two neighbours with the weights 1 - f and f have f (1 - f) (1 - 2 f).
double EdgePoint::SkewAt(double position) const
{
    const XY u = direction_;
    const auto moment = [](double v) {
        // Before 0 the fraction is negative, and counts from the other neighbour.
        const double f = v - static_cast<double>(static_cast<std::int64_t>(v));
        return f < 0 ? f * (1 + f) * (1 + 2 * f) : f * (1 - f) * (1 - 2 * f);
    };
    const double cubeX = u.X * u.X * u.X, cubeY = u.Y * u.Y * u.Y, middle = std::round(position);
    const int breadth = Max(Breadth, 1);
    constexpr double farthest = 1e15;
    if (!(Abs(Beg.X) < farthest && Abs(Beg.Y) < farthest)) return 0;
    double sum = 0;
    for (int i = -1; i <= 1; i++)
        for (int j = 0; j < breadth; j++) {
            const double along = middle + i, across = j - (breadth - 1) / 2.0;
            sum +=
                cubeX * moment(Beg.X + along * u.X - across * u.Y) + cubeY * moment(Beg.Y + along * u.Y + across * u.X);
        }
    return sum / (3.0 * breadth);
}

/// A better place, or the same where the step does not fit.
double EdgePoint::Refined(const Lobe& lobe, int noise, double position) const
{
    if (lobe.step == 0 || lobe.peak == 0) return position;
    const std::int32_t *p = Signal.data(), *d = Derivative.data();
    const int before = (Smoothing - 1) / 2, last = SignalLength - 1, quiet = Max(noise, Abs(lobe.peak) / foreignPart);
    const double width = WidthOf(lobe, Smoothing);
    const double flank = flankWidths * width + flankSamples, core = coreWidths * width + coreSamples;

    int from = lobe.start, to = lobe.start + lobe.span;
    while (from > 0 && from > position - flank && Abs(d[from - 1]) <= quiet)
        from--;
    while (to < last && to < position + flank && Abs(d[to + 1]) <= quiet)
        to++;
    // Into the samples before smoothing, which go on at the ends of the probe.
    const double place = position + before;
    const int first = from == 0 ? Max(0, static_cast<int>(place - flank)) : from + before;
    const int end = to == last ? Min(last + 2 * before, static_cast<int>(place + flank)) : to + before;
    const StepSamples window{Smoothing >= 2 ? raw_.data() : p, first, Max(first, static_cast<int>(place - core)),
                             Min(end, static_cast<int>(place + core) + 1), end};
    if (window.coreTo - window.coreFrom + 1 < fewestSamples) return position;
    const double scale = 1.0 / Smoothing, height = scale * lobe.step;
    BlurredStep step{scale * p[lobe.start] + height / 2, height, place, width};
    return FitStep(window, SkewAt(position), step) ? step.place - before : position;
}

} // namespace Tesk
