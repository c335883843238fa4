// The warp by a recorded map.
#include "foundation/Entry.h"
#include "image/Geometry.h"
#include "image/core/SizingFrame.h"
#include "image/geometry/WarpFrame.h"

namespace Tesk {

namespace {

/// Refuses a map that was not made for a source like this one.
int RefuseReach(const Image& map, const Image& src, bool interpolate)
{
    const kernels::Surface s = warps::SurfaceOf(src);
    const auto columns = static_cast<std::size_t>(int(map.Width));
    for (int y = 0; y < map.Height; y++)
        if (kernels::LeadOutside(s, ElementSize(src.Type), map.Row<GeoMapPixel>(y), columns, interpolate))
            return Status::Format(IncompatibleSize, L"The map leads outside the source image (%d, %d)", int(src.Width),
                                  int(src.Height));
    return NoError;
}

} // namespace

void Geometry::Transform(const Image& Map, const Image& Src, Image& Dst, bool Interpolate)
{
    const Entry entry("Tesk::Geometry::Transform");
    if (entry.Refuses(CheckImage(Map, GeoMap)) || entry.Refuses(CheckImage(Src)) ||
        entry.Refuses(warps::RefuseUnlessSampled(Src.Type)) || entry.Refuses(warps::RefuseExtent(Src)) ||
        entry.Refuses(RefuseReach(Map, Src, Interpolate)))
        return;
    Image map;
    map.ShallowCopy(Map, true);
    sizing::FillSized(entry, Src, Dst, Map.Width, Map.Height, [&](const Image& s, Image& d) {
        const kernels::Surface surface = warps::SurfaceOf(s);
        for (int y = 0; y < d.Height; y++)
            warps::SampleRow(surface, map.Row<GeoMapPixel>(y), d.Row(y), static_cast<std::size_t>(int(d.Width)),
                             Interpolate);
    });
}

} // namespace Tesk
