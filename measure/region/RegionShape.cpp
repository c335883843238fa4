// The outline of a region, and the smallest shapes around it.
#include "foundation/Angles.h"
#include "foundation/Entry.h"
#include "measure/Path.h"
#include "measure/Region.h"
#include "measure/fit/PointShape.h"
#include "measure/region/Outline.h"
#include "measure/region/RegionFrame.h"
#include "measure/region/RowChains.h"

#include <utility>

namespace Tesk {

using namespace regions;

namespace {

/// An erosion may leave runs without a pixel.
bool HasPixels(RunSpan runs)
{
    return std::any_of(runs.begin(), runs.end(), [](const LabeledRun& run) { return run.Start < run.End; });
}

RowChains ConvexChains(RunSpan runs)
{
    RowChains chains(runs);
    chains.Convexify();
    return chains;
}

std::vector<XY> HullPoints(RunSpan runs)
{
    std::vector<XY> points;
    for (const Site site : ConvexChains(runs).Hull())
        points.emplace_back(site.X, site.Y);
    return points;
}

Path PathOf(std::span<const Site> sites, bool closed)
{
    Path path;
    for (const Site site : sites)
        path.Append(site);
    path.Closed = closed;
    return path;
}

} // namespace

void Region::Convexify()
{
    const Entry entry("Tesk::Region::Convexify");
    if (!HasPixels(Runs()) && entry.Refuse(VoidObject, emptyRegion)) return;
    Become(entry, [&] {
        Sort();
        RunList filled;
        ConvexChains(Runs()).EachRow(
            [&](int left, int right, int y) { filled.push_back(MakeRun(left, right + 1, y)); });
        return filled;
    });
}

void Region::ConvexHull(Path& Hull)
{
    const Entry entry("Tesk::Region::ConvexHull");
    if (!HasPixels(Runs()) && entry.Refuse(VoidObject, emptyRegion)) return;
    entry.Guards(noRuns, [&] {
        Sort();
        Hull = PathOf(ConvexChains(Runs()).Hull(), true);
    });
}

void Region::Rectangle(double& Xc, double& Yc, double& Width, double& Height, double& Angle)
{
    const Entry entry("Tesk::Region::Rectangle");
    if (!HasPixels(Runs()) && entry.Refuse(VoidObject, voidRegion)) return;
    entry.Guards(noRuns, [&] {
        Sort();
        const shapes::Rectangle found = shapes::SmallestRectangle(HullPoints(Runs()));
        Xc = found.Center.X;
        Yc = found.Center.Y;
        Width = found.Width;
        Height = found.Height;
        Angle = ToDegrees(found.Angle);
    });
}

void Region::Circle(double& Xc, double& Yc, double& Radius)
{
    const Entry entry("Tesk::Region::Circle");
    if (!HasPixels(Runs()) && entry.Refuse(VoidObject, voidRegion)) return;
    entry.Guards(noRuns, [&] {
        Sort();
        const shapes::Circle found = shapes::SmallestCircle(HullPoints(Runs()));
        Xc = found.Center.X;
        Yc = found.Center.Y;
        Radius = found.Radius;
    });
}

void Region::Follow(Path& Outline)
{
    const Entry entry("Tesk::Region::Follow");
    entry.Guards(noRuns, [&] {
        Sort();
        std::vector<Site> sites;
        OutlineWalk().Follow(Runs(), [&sites](int x, int y) { sites.emplace_back(x, y); });
        Outline = PathOf(sites, false);
    });
}

} // namespace Tesk
