// Any bytes as a file of a geometric model: read, then used to map points and images, and written again.
#include "foundation/Archive.h"
#include "image/Geometry.h"

#include "Checks.h"

#include <algorithm>

using namespace Tesk;
using namespace Tesk::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Status::ErrorBehavior(IgnoreIt);
    Geometry geometry;
    geometry.Append({1, 2}, {3, 4});
    Archive reader = Archive::FromMemory({data, size});
    geometry.Transfer(reader);
    if (!reader.Good()) {
        Require(geometry.NumAnchors == 1 && geometry.MapPoint({5, 6}).Y == 6);
        return 0;
    }
    Require(geometry.NumAnchors == 0);
    const std::vector<std::uint8_t> bytes = Written(geometry);
    Require(bytes.size() <= size && std::equal(bytes.begin(), bytes.end(), data));
    Image src, dst, map;
    src.Set(7, 5, Rgb);
    for (int y = 0; y < src.Height; y++)
        std::fill_n(src.Row<RgbPixel>(y), int(src.Width), RgbPixel(1, 2, y));
    dst.Set(9, 6, Rgb);
    map.Set(9, 6, GeoMap);
    for (const bool interpolate : {false, true}) {
        geometry.Undistort(src, dst, interpolate);
        geometry.ReverseRegister(src, map, interpolate);
    }
    return 0;
}
