#include "image/geometry/WarpFrame.h"

#include "image/core/SizingFrame.h"
#include "image/operator/OperatorFrame.h"

#include <limits>

namespace Tesk::warps {

int RefuseUnlessSampled(PixelTypes type)
{
    constexpr points::Types sampled = {Gray, Gray16, Rgb};
    return sampled.Has(type) ? NoError : points::RefuseType(type);
}

namespace {

int RefuseDestination(const Image& src, const Image& dst)
{
    if (dst.Type == Undefined) return Status::Format(VoidObject, L"Void destination image");
    if (dst.Type != src.Type && dst.Type != GeoMap)
        return Status::Format(IncompatibleType, L"Incompatible destination image type, %ls instead of %ls",
                              PixelTypeName(dst.Type), PixelTypeName(src.Type));
    return NoError;
}

/// Offsets of maps have 32 bits and no sign; only an external buffer can need more.
bool HasOffsets(const Image& src)
{
    return src.Pitch > 0 && std::int64_t{src.Pitch} * src.Height <= std::numeric_limits<std::uint32_t>::max();
}

} // namespace

int RefuseExtent(const Image& src)
{
    if (HasOffsets(src)) return NoError;
    return Status::Format(UnsupportedType, L"The rows of the source image (%d bytes each) cannot be addressed",
                          int(src.Pitch));
}

int RefuseImages(const Image& Src, const Image& Dst, bool withRgba)
{
    if (const int code = CheckImage(Src)) return code;
    if (const int code = RefuseDestination(Src, Dst)) return code;
    const bool mapped = withRgba && Dst.Type == GeoMap && Src.Type == Rgba;
    if (const int code = mapped ? NoError : RefuseUnlessSampled(Src.Type)) return code;
    return Dst.Type == GeoMap ? RefuseExtent(Src) : NoError;
}

bool Prepare(const Image& Src, Image& Dst, bool keeps, Image& held)
{
    held.ShallowCopy(Src, true);
    Dst.DetachIfShared(keeps);
    // A map only measures the source.
    if (Dst.Type != GeoMap && (sizing::Reaches(Dst, held) || !HasOffsets(held))) {
        Image copy;
        if (sizing::RefuseSize(copy, Src.Width, Src.Height, Src.Type)) return true;
        points::CopyRows(held, copy);
        held.ShallowCopy(copy, true);
    }
    Dst.GradGain = 1;
    Status::Error().Code = NoError;
    return false;
}

kernels::Surface SurfaceOf(const Image& image)
{
    return {image.FirstPixel, image.Pitch, image.Width, image.Height, image.Type};
}

} // namespace Tesk::warps
