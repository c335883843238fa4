// Any bytes as a file of a gauge: read, then placed on a picture, detected, drawn, dragged and written again.
#include TESK_FUZZ_HEADER

#include "foundation/Archive.h"
#include "foundation/CairoTarget.h"
#include "foundation/Graph.h"
#include "image/Image.h"

#include "Checks.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

using namespace Tesk;
using namespace Tesk::fuzz;

namespace {

using Gauge = TESK_FUZZ_GAUGE;

const Image& Picture()
{
    static Image image;
    if (image.Type != Undefined) return image;
    image.Set(64, 48, Gray);
    for (int y = 0; y < image.Height; y++)
        for (int x = 0; x < image.Width; x++)
            image.Row(y)[x] = static_cast<std::uint8_t>(x * x + 5 * y * y < 900 ? 200 - y : 30 + x);
    return image;
}

template <typename T>
double LongestProbe(const T& gauge)
{
    const double length = std::hypot(gauge.To.X - gauge.From.X, gauge.To.Y - gauge.From.Y);
    if constexpr (requires { gauge.ProbeLength; })
        return std::max<double>(length, gauge.ProbeLength);
    else
        return length;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const Image& picture = Picture();
    static CairoTarget target(64, 48);
    Status::ErrorBehavior(IgnoreIt);
    Gauge gauge;
    Archive reader = Archive::FromMemory({data, size}, ShortFile::KeepsFields);
    gauge.Transfer(reader);
    const std::vector<std::uint8_t> bytes = Written(gauge);
    Gauge again;
    Archive second = Archive::FromMemory(bytes, ShortFile::KeepsFields);
    again.Transfer(second);
    // Angles are kept in radians and shown in degrees: their last digit may change.
    Require(second.Good() && Written(again).size() == bytes.size());

    // Broad and long probes only cost time.
    constexpr int broadest = 40;
    constexpr double longest = 1e3;
    gauge.Breadth = std::min(gauge.Breadth, broadest);
    if (LongestProbe(gauge) > longest) return 0;
    gauge.SetWindow(picture);
    Graph::DrawTo(&target);
    gauge.Detect(picture);
    gauge.Draw(true, true);
    for (int at = 0; at < 64; at += 7)
        if (gauge.HitHandle(at, 3 * at / 4) != NoHandle) {
            gauge.HandleOctant();
            gauge.Drag(at + 5, at - 9);
        }
    gauge.Detect(picture);
    gauge.Draw(true, true);
    Graph::DrawTo(nullptr);
    return 0;
}
