// The steps from the images that a method is given to those that it works on.
#include "image/core/Destination.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>

namespace Tesk::images {

void CopyRows(const Image& src, Image& dst)
{
    const auto bytes = static_cast<std::size_t>(ByteCount(src));
    for (int y = 0; y < src.Height; y++)
        std::memcpy(dst.Row(y), src.Row(y), bytes);
}

void FillRows(Image& dst, int byte)
{
    for (int y = 0; y < dst.Height; y++)
        std::memset(dst.Row(y), byte, static_cast<std::size_t>(ByteCount(dst)));
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

int CopyWindow(Image& held)
{
    Image copy;
    if (const int code = copy.TrySet(held.Width, held.Height, held.Type)) return code;
    CopyRows(held, copy);
    copy.GradGain = held.GradGain;
    held.ShallowCopy(copy, true);
    return NoError;
}

int KeepApart(Image& held, const Image& dst, InPlace inPlace)
{
    const bool samePlace = held.FirstPixel == dst.FirstPixel && held.Pitch == dst.Pitch && held.Type == dst.Type;
    if (!Overlap(held, dst) || (samePlace && inPlace == InPlace::Served)) return NoError;
    return CopyWindow(held);
}

bool RefusesSize(Image& dst, std::int64_t width, std::int64_t height, PixelTypes type)
{
    return Status::Raise(dst.Fit(width, height, type), "Tesk::Image::Set");
}

bool RefusesLike(const Image& src, Image& dst, PixelTypes type, bool read)
{
    const int gain = src.GradGain;
    if (RefusesSize(dst, src.Width, src.Height, type == Undefined ? PixelTypes(src.Type) : type)) return true;
    dst.DetachIfShared(read);
    dst.GradGain = dst.Type == Grad ? gain : 1;
    return false;
}

bool Prepare(const Entry& entry, const Image& src, Image& dst, PixelTypes type, Sources& held, InPlace inPlace)
{
    if (entry.Refuses(CheckImage(src))) return true;
    const bool read = src.FirstPixel == dst.FirstPixel;
    held.a.ShallowCopy(src, true);
    return RefusesLike(held.a, dst, type, read) || entry.Refuses(KeepApart(held.a, dst, inPlace));
}

bool Prepare(const Entry& entry, const Image& src, const Image& srcB, Image& dst, PixelTypes type, Sources& held,
             InPlace inPlace)
{
    if (entry.Refuses(CheckImages(src, srcB))) return true;
    const bool read = src.FirstPixel == dst.FirstPixel || srcB.FirstPixel == dst.FirstPixel;
    held.a.ShallowCopy(src, true);
    held.b.ShallowCopy(srcB, true);
    return RefusesLike(held.a, dst, type, read) || entry.Refuses(KeepApart(held.a, dst, inPlace)) ||
           entry.Refuses(KeepApart(held.b, dst, inPlace));
}

bool Prepare(const Entry& entry, const Image& src, Image& dst, std::int64_t width, std::int64_t height, Sources& held)
{
    if (entry.Refuses(CheckImage(src))) return true;
    held.a.ShallowCopy(src, true);
    if (RefusesSize(dst, width, height, held.a.Type)) return true;
    dst.DetachIfShared(false);
    dst.GradGain = 1;
    return entry.Refuses(KeepApart(held.a, dst, InPlace::Copied));
}

void MakeLike(const Image& like, PixelTypes type, Image& work)
{
    if (work.TrySet(like.Width, like.Height, type) != NoError) throw std::bad_alloc();
}

} // namespace Tesk::images
