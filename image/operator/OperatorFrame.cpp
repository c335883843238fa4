#include "image/operator/OperatorFrame.h"

#include <functional>

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

bool Overlap(const Image& a, const Image& b)
{
    // Rows may go upward in memory or downward.
    const auto lastRow = [](const Image& image) { return image.Row(image.Height - 1); };
    const std::less<const std::uint8_t*> before;
    const auto first = [&](const Image& image) {
        return std::min<const std::uint8_t*>(image.FirstPixel, lastRow(image), before);
    };
    const auto end = [&](const Image& image) {
        return std::max<const std::uint8_t*>(image.FirstPixel, lastRow(image), before) + ByteCount(image);
    };
    return before(first(a), end(b)) && before(first(b), end(a));
}

bool KeepApart(const Entry& entry, Image& held, const Image& dst, InPlace inPlace)
{
    const bool samePlace = held.FirstPixel == dst.FirstPixel && held.Pitch == dst.Pitch && held.Type == dst.Type;
    if (!Overlap(held, dst) || (samePlace && inPlace == InPlace::Served)) return false;
    Image copy;
    if (!copy.TrySet(held.Width, held.Height, held.Type))
        return entry.Refuse(CannotAllocate, L"Cannot allocate the image buffer");
    CopyRows(held, copy);
    copy.GradGain = held.GradGain;
    held.ShallowCopy(copy, true);
    return false;
}

namespace {

bool SizeAndDetach(const Image& src, Image& dst, PixelTypes type, bool read)
{
    dst.Set(src, type);
    if (Status::Error().Code != NoError) return true;
    const int gain = src.GradGain;
    dst.DetachIfShared(read);
    dst.GradGain = dst.Type == Grad ? gain : 1;
    Status::Error().Code = NoError;
    return false;
}

} // namespace

bool Prepare(const Entry& entry, const Image& src, Image& dst, PixelTypes type, Sources& held)
{
    if (entry.Refuses(CheckImage(src))) return true;
    const bool read = src.FirstPixel == dst.FirstPixel;
    held.a.ShallowCopy(src, true);
    return SizeAndDetach(held.a, dst, type, read) || KeepApart(entry, held.a, dst);
}

bool Prepare(const Entry& entry, const Image& src, const Image& srcB, Image& dst, PixelTypes type, Sources& held)
{
    if (entry.Refuses(CheckImages(src, srcB))) return true;
    const bool read = src.FirstPixel == dst.FirstPixel || srcB.FirstPixel == dst.FirstPixel;
    held.a.ShallowCopy(src, true);
    held.b.ShallowCopy(srcB, true);
    return SizeAndDetach(held.a, dst, type, read) || KeepApart(entry, held.a, dst) || KeepApart(entry, held.b, dst);
}

bool Prepare(const Entry& entry, const Image& src, Types types, Image& dst, Sources& held)
{
    if (Prepare(entry, src, dst, Undefined, held)) return true;
    return !types.Has(held.a.Type) && entry.Refuses(RefuseType(held.a.Type));
}

bool Prepare(const Entry& entry, const Image& src, const Image& srcB, Types types, Image& dst, Sources& held)
{
    if (Prepare(entry, src, srcB, dst, Undefined, held)) return true;
    return !types.Has(held.a.Type) && entry.Refuses(RefuseType(held.a.Type));
}

} // namespace Tesk::points
