// Any bytes as a region file: read, then combined, reshaped, followed, measured, drawn into an image and written again.
#include "foundation/Archive.h"
#include "image/Histogram.h"
#include "image/Image.h"
#include "image/Morpho.h"
#include "measure/Path.h"
#include "measure/Region.h"

#include "Checks.h"

#include <cmath>
#include <cstring>

using namespace Tesk;
using namespace Tesk::fuzz;

namespace {

constexpr int side = 64;

bool IsOrdered(const Region& region)
{
    const auto runs = region.Runs();
    for (std::size_t i = 1; i < runs.size(); i++)
        if (runs[i].Y < runs[i - 1].Y || (runs[i].Y == runs[i - 1].Y && runs[i].Start < runs[i - 1].Start))
            return false;
    return true;
}

void Combine(Region& region)
{
    Region sorted(region), result, box;
    box.BoxAppend(Limits(-20, -20, 50, 50));
    result.Unite(sorted, box);
    Require(IsOrdered(result) && result.Area() >= box.Area());
    result.Intersect(sorted, box);
    result.Subtract(sorted, box);
    result.Invert(0, 0, side, side, sorted);
    Require(result.NumRuns == 0 || result.Area() <= side * side);
    region.Containment(box);
    Morpho element;
    element.Set(5, 7, 3);
    result.Erode(sorted, element);
    result.Dilate(sorted, element);
    result.Gradient(sorted, element, InternalGradient);
    result.Convexify();
}

void Measure(Region& region)
{
    Path path;
    region.Follow(path);
    region.ConvexHull(path);
    double x = 0, y = 0, width = 0, height = 0, angle = 0;
    region.Rectangle(x, y, width, height, angle);
    Require(std::isfinite(x + y + width + height + angle));
    region.Circle(x, y, width);
    Require(std::isfinite(x + y + width));
    int area = 0;
    region.Center(area);
    region.Box(3);
    Image image;
    image.Set(side, side, Gray);
    for (int row = 0; row < side; row++)
        std::memset(image.Row(row), row, side);
    region.Fill(9, image);
    region.Fill(image, image, 3, -2);
    region.Mean(image, area);
    Histogram histogram;
    histogram.Compute(image, region);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Status::ErrorBehavior(IgnoreIt);
    constexpr int most = 2000;
    Region region;
    region.AddRun(1, 2, 3);
    Archive reader = Archive::FromMemory({data, size});
    region.Transfer(reader);
    if (!reader.Good()) {
        Require(region.NumRuns == 1 && region.Runs()[0].Y == 3);
        return 0;
    }
    const std::vector<std::uint8_t> bytes = Written(region);
    Require(bytes.size() <= size);
    if (region.NumRuns < 1 || region.NumRuns > most) return 0;
    // A list that is said to be sorted may lie; nothing may break on it, but its results mean nothing.
    if (region.Sorted && !IsOrdered(region)) {
        Measure(region);
        return 0;
    }
    Measure(region);
    Combine(region);
    return 0;
}
