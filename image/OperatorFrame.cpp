#include "image/OperatorFrame.h"

namespace Tesk::points {

const wchar_t* ClippingName(GrayClipping clip)
{
    static constexpr const wchar_t* names[] = {L"Saturate", L"Absolute", L"Negative", L"Rescale"};
    return clip >= Saturate && clip <= Rescale ? names[clip] : L"?";
}

int RefuseType(PixelTypes type)
{
    return Status::Format(UnsupportedType, L"The image type (%ls) is not supported for this operation",
                          PixelTypeName(type));
}

int RefuseClip(GrayClipping clip)
{
    return Status::Format(OutOfRange, L"The clipping mode (%ls) is not supported for this operation",
                          ClippingName(clip));
}

namespace {

/// A view of a source, or a copy of its window where the destination's writes would reach it before it is read.
bool Hold(const Image& src, const Image& dst, PixelTypes type, Image& held)
{
    const bool shares = src.Buffer == dst.Buffer;
    const bool inPlace = src.FirstPixel == dst.FirstPixel && src.Type == type;
    if (!shares || inPlace || Status::Shallow) {
        held.ShallowCopy(src, true);
        return true;
    }
    if (!held.TrySet(src.Width, src.Height, src.Type)) return false;
    for (int y = 0; y < src.Height; y++)
        std::memcpy(held.Row(y), src.Row(y), static_cast<std::size_t>(ByteCount(src)));
    held.GradGain = src.GradGain;
    return true;
}

bool SizeAndDetach(const Entry& entry, const Image& src, Image& dst, PixelTypes type, bool read)
{
    dst.Set(src, type);
    if (Status::Error().Code != NoError) return true;
    const int gain = src.GradGain;
    dst.DetachIfShared(read);
    dst.GradGain = dst.Type == Grad ? gain : 1;
    Status::Error().Code = NoError;
    static_cast<void>(entry);
    return false;
}

} // namespace

bool Prepare(const Entry& entry, const Image& src, Image& dst, PixelTypes type, Sources& held)
{
    if (entry.Refuses(CheckImage(src))) return true;
    const PixelTypes wanted = type == Undefined ? PixelTypes(src.Type) : type;
    if (!Hold(src, dst, wanted, held.a)) return entry.Refuse(CannotAllocate, L"Cannot allocate the image buffer");
    const bool read = src.FirstPixel == dst.FirstPixel;
    return SizeAndDetach(entry, held.a, dst, wanted, read);
}

bool Prepare(const Entry& entry, const Image& src, const Image& srcB, Image& dst, PixelTypes type, Sources& held)
{
    if (entry.Refuses(CheckImages(src, srcB))) return true;
    const PixelTypes wanted = type == Undefined ? PixelTypes(src.Type) : type;
    if (!Hold(src, dst, wanted, held.a) || !Hold(srcB, dst, wanted, held.b))
        return entry.Refuse(CannotAllocate, L"Cannot allocate the image buffer");
    held.two = true;
    const bool read = src.FirstPixel == dst.FirstPixel || srcB.FirstPixel == dst.FirstPixel;
    return SizeAndDetach(entry, held.a, dst, wanted, read);
}

} // namespace Tesk::points
