// Adding shapes to a region.
#include "foundation/Angles.h"
#include "foundation/Entry.h"
#include "image/Image.h"
#include "measure/Blobs.h"
#include "measure/Path.h"
#include "measure/Quad.h"
#include "measure/Region.h"
#include "measure/region/CurvedPolygon.h"
#include "measure/region/PolygonRuns.h"
#include "measure/region/RegionFrame.h"

#include <cmath>

namespace Tesk {

using namespace regions;

/// Appends what `add` appends to a list; without memory none of it stays.
template <typename F>
void Region::Append(const Entry& entry, bool sorted, F add)
{
    const std::size_t before = Runs().size();
    const bool done = entry.Guards(noRuns, [&] { add(WriteRuns()); });
    if (done)
        Sorted = sorted;
    else if (Runs().size() > before)
        WriteRuns().resize(before);
    CountRuns();
}

namespace {

/// One run for each row of a box, cut to what coordinates of runs reach.
void AppendBox(std::int64_t x, std::int64_t y, std::int64_t width, std::int64_t height, int label, RunList& runs)
{
    const auto held = [](std::int64_t v) { return static_cast<int>(Clamp<std::int64_t>(v, INT16_MIN, INT16_MAX)); };
    for (std::int64_t row = y; width > 0 && row < y + height && row <= INT16_MAX; row++)
        if (row >= INT16_MIN) runs.push_back(MakeRun(held(x), held(x + width), static_cast<int>(row), label));
}

/// How far an ellipse may reach: what lies further out has no pixel in a region.
constexpr double farthest = 1 << 17;

bool IsNear(double value)
{
    return std::abs(value) <= farthest;
}

} // namespace

void Region::BoxAppend(const Limits& Src, int Label)
{
    const Entry entry("Tesk::Region::BoxAppend");
    Append(entry, NumRuns == 0, [&](RunList& runs) { AppendBox(Src.X, Src.Y, Src.Width, Src.Height, Label, runs); });
}

void Region::ImageAppend(const Image& Src, int Label)
{
    const Entry entry("Tesk::Region::ImageAppend");
    if (entry.Refuses(CheckImage(Src))) return;
    Append(entry, NumRuns == 0, [&](RunList& runs) { AppendBox(Src.X, Src.Y, Src.Width, Src.Height, Label, runs); });
}

void Region::RegionAppend(const Region& Src)
{
    const Entry entry("Tesk::Region::RegionAppend");
    // The region may be added to itself.
    const Region held(Src);
    Append(entry, NumRuns == 0 && held.Sorted,
           [&](RunList& runs) { runs.insert(runs.end(), held.Runs().begin(), held.Runs().end()); });
}

void Region::BlobAppend(const Blobs& Src, int BlobIndex)
{
    const Entry entry("Tesk::Region::BlobAppend");
    const Blobs held(Src); // the source may be this region
    int begin = 0, end = 0;
    if (entry.Refuses(held.RangeOf(BlobIndex, begin, end))) return;
    // The runs of one blob are in scan order.
    Append(entry, NumRuns == 0 && end - begin == 1, [&](RunList& runs) {
        for (int i = begin; i < end; i++)
            runs.insert(runs.end(), held.RunsOf(i).begin(), held.RunsOf(i).end());
    });
}

void Region::PathAppend(const Path& Src, int Label)
{
    const Entry entry("Tesk::Region::PathAppend");
    Append(entry, false, [&](RunList& runs) {
        AppendPolygon({Src.Sites(), static_cast<std::size_t>(int(Src.Length))}, Label, runs);
    });
}

void Region::QuadAppend(const Quad& Src, int Label)
{
    const Entry entry("Tesk::Region::QuadAppend");
    Append(entry, false, [&](RunList& runs) { AppendCurved(OutlineOf(Src), Label, runs); });
}

void Region::EllipseAppend(XY Center, XY Axis, double Angle, int)
{
    const Entry entry("Tesk::Region::EllipseAppend");
    if (!IsNear(Center.X) || !IsNear(Center.Y) || !IsNear(Axis.X) || !IsNear(Axis.Y) || !std::isfinite(Angle)) {
        entry.Refuse(OutOfRange, L"The ellipse is out of the coordinates of a region");
        return;
    }
    Append(entry, false, [&](RunList& runs) { AppendEllipse(Center, Axis, ToRadians(Angle), runs); });
}

} // namespace Tesk
