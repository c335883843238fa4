// Rows of probes: their number, their points in the units of the result, their part of the files.
#include "gauge/EdgeRow.h"

#include "foundation/Archive.h"
#include "gauge/edge/GaugeMarks.h"
#include "gauge/edge/ProbeRow.h"
#include "gauge/edge/ProbeSampler.h"
#include "gauge/edge/WorldMap.h"

#include <cmath>

namespace Tesk {

using namespace edges;

namespace {

constexpr double mostProbes = 65536;

} // namespace

bool EdgeRow::Detect(const Image& Src, int EdgeIndex)
{
    return Measure(Src, EdgeIndex, WorldMap());
}

bool EdgeRow::Detect(const Image& Src, const Geometry& Calibrator, int EdgeIndex)
{
    return Measure(Src, EdgeIndex, WorldMap(Calibrator));
}

int EdgeRow::SamplesOver(double length) const
{
    const double samples = std::ceil((length - 2 * Clearance) / Density) + 1;
    return samples > 0 && length > 0 ? static_cast<int>(Min(samples, mostProbes)) : 0;
}

bool EdgeRow::Refuses(const Entry& entry, const Image& src, int samples)
{
    if (SampleIndex != All && (SampleIndex < 0 || SampleIndex >= samples))
        return entry.Refuse(OutOfRange, L"The sample index (%d) is out of the allowed range [0..%d]", SampleIndex,
                            samples - 1);
    if (Status::Raise(CheckSampled(src), probeContext)) return true;
    NumSamples = samples;
    return false;
}

void EdgeRow::Restart()
{
    SamplePoints.values_.clear();
    NumDetectedPoints = NumFittedPoints = FitState = 0;
    Deviation = RobustDeviation = 0;
    inPixels_ = true;
}

void EdgeRow::Transform(const WorldMap& world)
{
    std::erase_if(SamplePoints.values_, [&](XY& point) { return !world.Apply(point); });
    NumDetectedPoints = static_cast<int>(SamplePoints.size());
    inPixels_ = false;
}

void EdgeRow::SetQuality(int fitted, double deviation, double robust)
{
    NumFittedPoints = fitted;
    Deviation = deviation;
    RobustDeviation = robust;
}

void EdgeRow::Draw(bool Handles, bool Points) const
{
    const Entry entry("Tesk::EdgeRow::Draw");
    DrawAll(Handles, Points, WorldMap());
}

void EdgeRow::Draw(bool Handles, bool Points, const Geometry& Calibrator) const
{
    const Entry entry("Tesk::EdgeRow::Draw");
    DrawAll(Handles, Points, WorldMap(Calibrator));
}

void EdgeRow::DrawAll(bool handles, bool points, const WorldMap& world) const
{
    DrawOutline();
    if (SampleIndex != All) DrawProbe(false);
    if (handles) DrawHandles();
    if (points) DrawPoints(world);
    if (SampleIndex == All && FitState == 1) DrawFitted(world);
}

void EdgeRow::DrawPoints(const WorldMap& world) const
{
    for (XY point : SamplePoints)
        if (inPixels_ || world.Reverse(point)) DrawPoint(InWindow(point));
}

void EdgeRow::TransferSampling(Archive& block)
{
    block(ProbeLength, Density, Clearance, Oblique);
}

/// The first versions of the files do not have it.
void EdgeRow::TransferFitting(Archive& block, bool present)
{
    if (present)
        block(Fitting);
    else
        Fitting = FitOver;
}

} // namespace Tesk
