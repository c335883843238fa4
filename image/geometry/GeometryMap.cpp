// The warp by a recorded map.
#include "foundation/Entry.h"
#include "image/Geometry.h"
#include "image/core/Destination.h"
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
    if (entry.Refuses(CheckImage(Map, GeoMap)) || entry.Refuses(images::CheckType(Src, warps::sampledTypes)) ||
        entry.Refuses(warps::RefuseExtent(Src)) || entry.Refuses(RefuseReach(Map, Src, Interpolate)))
        return;
    Image map, src, work;
    map.ShallowCopy(Map, true);
    src.ShallowCopy(Src, true);
    if (images::RefusesSize(Dst, map.Width, map.Height, src.Type)) return;
    Dst.DetachIfShared(false);
    Dst.GradGain = 1;
    // The offsets of a map go by the rows of the source as they stand, so that no copy of it serves: where the
    // destination lies over the source, the result is worked out elsewhere.
    const bool apart = !images::Overlap(src, Dst);
    if (!apart && entry.Refuses(work.TrySet(map.Width, map.Height, src.Type))) return;
    Image& out = apart ? Dst : work;
    const kernels::Surface surface = warps::SurfaceOf(src);
    for (int y = 0; y < out.Height; y++)
        warps::SampleRow(surface, map.Row<GeoMapPixel>(y), out.Row(y), static_cast<std::size_t>(int(out.Width)),
                         Interpolate);
    if (!apart) images::CopyRows(work, Dst);
}

} // namespace Tesk
