// Profiles across the axis, their edges, and the stripe straightened.
#include "gauge/snake/SnakeProbe.h"

#include "foundation/Entry.h"
#include "gauge/SnakeGauge.h"
#include "image/core/Destination.h"
#include "image/core/PixelTypes.h"
#include "image/core/Refusals.h"
#include "measure/fit/EdgeWalk.h"
#include "measure/profile/LinePixels.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <vector>

namespace Tesk {

namespace snakes {

XY Aside(const AxisSample& sample, double deviation)
{
    return {sample.X - deviation * sample.TangentY, sample.Y + deviation * sample.TangentX};
}

void TakeProfile(const Image& src, const AxisSample& sample, double breadth, int thickness,
                 std::vector<std::int32_t>& profile, std::vector<std::int32_t>& line)
{
    const XY beg = Aside(sample, -breadth), end = Aside(sample, breadth);
    const profiles::Direction u = profiles::DirectionOf(beg, end);
    const int count = u.length >= 1 ? static_cast<int>(u.length) : 0;
    profile.assign(static_cast<std::size_t>(count), 0);
    if (count == 0) return;
    const int lines = Clamp(thickness, 1, largestThickness);
    if (lines == 1) {
        profiles::FetchLine(src, beg, u, count, true, profile.data());
        return;
    }
    line.resize(static_cast<std::size_t>(count));
    for (int k = 0; k < lines; k++) {
        const double aside = k - (lines - 1) / 2.0;
        profiles::FetchLine(src, XY(beg.X - aside * u.y, beg.Y + aside * u.x), u, count, true, line.data());
        std::transform(profile.begin(), profile.end(), line.begin(), profile.begin(),
                       [](std::int32_t sum, std::int32_t v) { return sum + v; });
    }
    for (std::int32_t& v : profile)
        v /= lines;
}

bool FindEdge(const std::vector<std::int32_t>& profile, int first, const EdgeLimits& limits, ProbeEdge& edge)
{
    if (first < 0 || first >= static_cast<int>(profile.size())) return false;
    const std::int32_t* signal = profile.data() + first;
    profiles::EdgeStep found{};
    const bool any = profiles::SelectEdge(
        signal, static_cast<int>(profile.size()) - first, limits.minimumStep, limits.noise, limits.polarity,
        limits.selection, found, [&](const profiles::EdgeStep& candidate) {
            return candidate.Step() / candidate.Span() >= limits.minimumSlope && candidate.Span() <= limits.maximumSpan;
        });
    if (!any) return false;
    edge = {first + found.Position(signal), found.Step(), found.Step() / found.Span(), found.Span(), found.Rising};
    return true;
}

} // namespace snakes

using namespace snakes;

namespace {

/// The profile of a column, put into it.
template <typename T>
void PutColumn(const std::int32_t* profile, int x, Image& dst)
{
    for (int y = 0; y < dst.Height; y++) {
        T& pixel = dst.Row<T>(y)[x];
        if constexpr (std::is_same_v<T, RgbPixel>)
            pixel = RgbPixel(profile[3 * y], profile[3 * y + 1], profile[3 * y + 2]);
        else
            pixel = static_cast<T>(profile[y]);
    }
}

} // namespace

void SnakeGauge::Sample(const Image& Src, Image& Dst, bool Interpolate) const
{
    const Entry entry("Tesk::SnakeGauge::Sample");
    Snake own;
    const Snake* axis = this;
    if (entry.Refuses(Sampled(own, axis))) return;
    if (entry.Refuses(images::CheckType(Src, {Gray, Gray16, Rgb}))) return;
    const double breadth = HeldBreadth(Breadth);
    const int height = 2 * static_cast<int>(breadth) + 2;
    images::Sources held;
    if (images::Prepare(entry, Src, Dst, axis->NumAxisSamples, height, held)) return;
    entry.Guards(images::noWorkingMemory, [&] {
        std::vector<std::int32_t> profile(static_cast<std::size_t>(height * images::Channels(Dst.Type)));
        for (int i = 0; i < Dst.Width; i++) {
            const AxisSample& sample = axis->Samples[static_cast<std::size_t>(i)];
            const profiles::Direction across{-sample.TangentY, sample.TangentX, 1};
            profiles::FetchLine(held.a, Aside(sample, -breadth), across, height, Interpolate, profile.data());
            profiles::ByPixel(Dst.Type, [&]<typename T>(T*) { PutColumn<T>(profile.data(), i, Dst); });
        }
    });
}

} // namespace Tesk
