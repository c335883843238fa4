// The checks that the warps share, and the source that they hold.
#include "image/geometry/WarpFrame.h"

#include <limits>

namespace Tesk::warps {

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

/// Makes a view of a source a copy where writes would reach it, or where the offsets of a map cannot address its rows.
int KeepAddressed(Image& held, const Image& dst)
{
    return HasOffsets(held) ? KeepApart(held, dst, InPlace::Copied) : CopyWindow(held);
}

} // namespace

int RefuseExtent(const Image& src)
{
    if (HasOffsets(src)) return NoError;
    return Status::Format(UnsupportedType, L"The rows of the source image (%d bytes each) cannot be addressed",
                          int(src.Pitch));
}

int RefuseImages(const Image& Src, Image& Dst, bool withRgba)
{
    if (const int code = CheckImage(Src)) return code;
    if (sampledTypes.Has(Src.Type))
        if (const int code = Dst.Settle(Src.Type)) return code;
    if (const int code = RefuseDestination(Src, Dst)) return code;
    const bool mapped = withRgba && Dst.Type == GeoMap && Src.Type == Rgba;
    if (!mapped && !sampledTypes.Has(Src.Type)) return RefuseType(Src.Type);
    return Dst.Type == GeoMap ? RefuseExtent(Src) : NoError;
}

int HoldSource(const Image& Src, Image& Dst, bool keeps, Image& held)
{
    held.ShallowCopy(Src, true);
    Dst.DetachIfShared(keeps);
    Dst.GradGain = 1;
    // A map only measures the source.
    if (Dst.Type == GeoMap) return NoError;
    return KeepAddressed(held, Dst);
}

void BilinearWideRow(const kernels::Surface& s, const GeoMapPixel* entries, std::int32_t* d, std::size_t n)
{
    constexpr std::int64_t whole = one;
    for (std::size_t i = 0; i < n; i++) {
        const GeoMapPixel& entry = entries[i];
        const auto at = [&](std::ptrdiff_t offset) {
            return std::int64_t{*reinterpret_cast<const std::int32_t*>(s.first + entry.Offset + offset)};
        };
        // A neighbour without weight may not exist.
        const std::ptrdiff_t right = entry.Fx ? sizeof(std::int32_t) : 0, below = entry.Fy ? s.pitch : 0;
        const std::int64_t u = -entry.Fx & 0xffff, v = -entry.Fy & 0xffff;
        const std::int64_t upper = (at(0) * (whole - u) + at(right) * u) >> fractionBits;
        const std::int64_t lower = (at(below) * (whole - u) + at(below + right) * u) >> fractionBits;
        d[i] = static_cast<std::int32_t>((upper * (whole - v) + lower * v) >> fractionBits);
    }
}

kernels::Surface SurfaceOf(const Image& image)
{
    return {image.FirstPixel, image.Pitch, image.Width, image.Height, image.Type};
}

namespace {

/// Sizes the destination and fills it by `fill(source, destination)`, with a source that lies elsewhere.
template <typename F>
int FillSized(const Image& Src, Image& Dst, std::int64_t width, std::int64_t height, F fill)
{
    return WithMemory(L"Cannot allocate the image buffer", [&]() -> int {
        Image src;
        src.ShallowCopy(Src, true);
        if (const int code = Dst.Fit(width, height, src.Type)) return code;
        Dst.DetachIfShared(false);
        Dst.GradGain = 1;
        if (const int code = KeepAddressed(src, Dst)) return code;
        fill(src, Dst);
        return NoError;
    });
}

/// What other families sample.
constexpr Types anySampled = {Gray, Gray16, Gray32, Rgb};

} // namespace

int SampleAffine(const AffineMap& map, const Image& src, Image& dst, std::int64_t width, std::int64_t height,
                 bool interpolate, const RunSink& valid, bool* outside)
{
    if (const int code = CheckType(src, anySampled)) return code;
    if (const int code = RefuseFar(map, width, height)) return code;
    return FillSized(src, dst, width, height, [&](const Image& from, Image& to) {
        const bool isOutside = FillAffine(map, from, to, interpolate, valid);
        if (outside) *outside = isOutside;
    });
}

int SampleRing(const Ring& ring, const Image& src, Image& dst, std::int64_t width, std::int64_t height,
               bool interpolate)
{
    if (const int code = CheckType(src, anySampled)) return code;
    if (const int code = RefuseRing(ring)) return code;
    return FillSized(src, dst, width, height,
                     [&](const Image& from, Image& to) { FillRing(ring, from, to, interpolate); });
}

} // namespace Tesk::warps
