// Any bytes as a polygon file: read, then measured in every way and written again.
#include "foundation/Archive.h"
#include "measure/Poly.h"

#include "Checks.h"

#include <cmath>
#include <cstdint>
#include <vector>

using namespace Tesk;
using namespace Tesk::fuzz;

namespace {

void Measure(const Poly& poly)
{
    constexpr FittingModes modes[] = {AverageFit, FastFit, AccurateFit, RobustFit};
    XY center(0, 0), axis(0, 0);
    double value = 0, x = 0, y = 0, width = 0, height = 0;
    for (const FittingModes mode : modes) {
        if (poly.LineFit(center, value, mode)) Require(std::isfinite(center.X + center.Y + value));
        if (poly.CircleFit(center, value, mode)) Require(std::isfinite(center.X + center.Y + value));
        if (poly.EllipseFit(center, axis, value, mode)) Require(std::isfinite(axis.X + axis.Y + value));
    }
    poly.EllipseDeviation(center, axis, value, true, 3);
    Poly hull, simple;
    poly.ConvexHull(hull, false);
    poly.ConvexHull(simple, true);
    Require(hull.Length <= poly.Length && simple.Length <= poly.Length);
    poly.Rectangle(x, y, width, height, value);
    poly.Circle(x, y, value);
    poly.Perimeter();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Status::ErrorBehavior(IgnoreIt);
    constexpr int longest = 2000;
    Poly poly;
    poly.Append(1, 2);
    Archive reader = Archive::FromMemory({data, size});
    poly.Transfer(reader);
    if (!reader.Good()) {
        Require(poly.Length == 1 && poly.Vertex(0).Y == 2);
        return 0;
    }
    const std::vector<std::uint8_t> bytes = Written(poly);
    Require(bytes.size() <= size);
    if (poly.Length > 0 && poly.Length < longest) Measure(poly);
    return 0;
}
