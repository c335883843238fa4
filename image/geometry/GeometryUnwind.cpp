// The polar unwinding of a ring.
#include "foundation/Angles.h"
#include "foundation/Entry.h"
#include "image/Geometry.h"
#include "image/geometry/WarpFrame.h"

#include <vector>

namespace Tesk {

using warps::Ring;

int warps::RefuseRing(const Ring& ring)
{
    constexpr double farthest = 1073741824.0;
    for (const double v : {ring.center.X, ring.center.Y, ring.begAngle, ring.endAngle, ring.begRadius, ring.endRadius})
        if (!(std::abs(v) <= farthest))
            return Status::Format(OutOfRange, L"The ring is not finite or leads too far from the source image");
    return NoError;
}

/// Fills the rows of the result, which are samples of the source, or the entries themselves.
void warps::FillRing(const Ring& ring, const Image& src, Image& dst, bool interpolate)
{
    const kernels::Surface s = SurfaceOf(src);
    const int elementSize = ElementSize(src.Type), lastColumn = dst.Width - 1, lastRow = dst.Height - 1;
    const auto columns = static_cast<std::size_t>(int(dst.Width));
    std::vector<XY> directions(columns);
    for (std::size_t i = 0; i < columns; i++) {
        const double column = static_cast<double>(i);
        const double angle =
            lastColumn ? ((lastColumn - column) * ring.begAngle + column * ring.endAngle) / lastColumn : ring.begAngle;
        const double radians = ToRadians(angle);
        directions[i] = {std::cos(radians), std::sin(radians)};
    }
    const double half = interpolate ? 0 : 0.5;
    std::vector<GeoMapPixel> own(dst.Type == GeoMap ? 0 : columns);
    for (int j = 0; j <= lastRow; j++) {
        const double radius =
            lastRow ? ring.endRadius + j * (ring.begRadius - ring.endRadius) / lastRow : ring.endRadius;
        GeoMapPixel* entries = dst.Type == GeoMap ? dst.Row<GeoMapPixel>(j) : own.data();
        for (std::size_t i = 0; i < columns; i++)
            entries[i] = kernels::EntryAt(s, elementSize, Fixed(ring.center.X + radius * directions[i].X + half),
                                          Fixed(ring.center.Y + radius * directions[i].Y + half), interpolate);
        if (dst.Type != GeoMap) SampleRow(s, entries, dst.Row(j), columns, interpolate);
    }
}

void Geometry::Unwind(const XY& Center, double BegAngle, double EndAngle, double BegRadius, double EndRadius,
                      const Image& Src, Image& Dst, bool Interpolate)
{
    const Entry entry("Tesk::Geometry::Unwind");
    if (entry.Refuses(warps::RefuseImages(Src, Dst, true))) return;
    const Ring ring{Center, BegAngle, EndAngle, BegRadius, EndRadius};
    if (entry.Refuses(warps::RefuseRing(ring))) return;
    Image src;
    if (entry.Refuses(warps::HoldSource(Src, Dst, false, src))) return;
    entry.Guards(images::noImage, [&] { warps::FillRing(ring, src, Dst, Interpolate); });
}

} // namespace Tesk
