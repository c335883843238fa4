// Any bytes as a path file: read, then measured in every way, reduced and written again.
#include "foundation/Archive.h"
#include "measure/Path.h"

#include "Checks.h"

#include <cmath>

using namespace Tesk;
using namespace Tesk::fuzz;

namespace {

void Measure(const Path& path)
{
    constexpr FittingModes modes[] = {AverageFit, FastFit, AccurateFit, RobustFit};
    XY center(0, 0), axis(0, 0), corner(0, 0);
    double value = 0, x = 0, y = 0, width = 0, height = 0;
    for (const FittingModes mode : modes) {
        path.LineFit(center, value, mode);
        Require(std::isfinite(path.LineDeviation(center, value)));
        path.CircleFit(center, value, mode);
        Require(std::isfinite(path.CircleDeviation(center, value)));
        path.EllipseFit(center, axis, value, mode);
        Require(std::isfinite(path.EllipseDeviation(center, axis, value, true, 3)));
    }
    int area = 0;
    double eccentricity = 0;
    path.FilledEllipse(area, x, y, width, height, value, eccentricity);
    Require(std::isfinite(x + y + width + height + value + eccentricity));
    for (const bool simple : {false, true}) {
        path.Rectangle(x, y, width, height, value, simple);
        Require(std::isfinite(x + y + width + height + value));
        path.Parallelogram(center, axis, corner, simple);
        Require(std::isfinite(center.X + center.Y + axis.X + axis.Y + corner.X + corner.Y));
        path.Circle(x, y, value, simple);
        Require(std::isfinite(x + y + value));
    }
    Path reduced;
    path.Smooth(reduced, 1);
    Require(reduced.Length <= path.Length);
    path.Vectorize(reduced, 1);
    Require(reduced.Length <= path.Length);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Status::ErrorBehavior(IgnoreIt);
    constexpr int longest = 2000;
    Path path;
    path.Append(1, 2);
    Archive reader = Archive::FromMemory({data, size});
    path.Transfer(reader);
    if (!reader.Good()) {
        Require(path.Length == 1 && path.Vertex(0).Y == 2);
        return 0;
    }
    const std::vector<std::uint8_t> bytes = Written(path);
    Require(bytes.size() <= size);
    if (path.Length > 0 && path.Length < longest) Measure(path);
    return 0;
}
