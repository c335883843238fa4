#include "image/KernelFrame.h"

#include <functional>

namespace Tesk::filters {

int RefuseSize(const wchar_t* name, int size)
{
    if (size <= largestSize || size % 2 == 0)
        return Status::Format(OutOfRange, L"The filter %ls (%d) must be a positive odd number", name, size);
    return Status::Format(OutOfRange, L"The filter %ls (%d) is out of the range 1 to %d", name, size, largestSize);
}

namespace {

bool Overlap(const Image& a, const Image& b)
{
    const auto end = [](const Image& image) {
        return image.FirstPixel + static_cast<std::ptrdiff_t>(image.Pitch) * (image.Height - 1) +
               RowBytes(image.Width, image.Type);
    };
    const std::less<const std::uint8_t*> before;
    return before(a.FirstPixel, end(b)) && before(b.FirstPixel, end(a));
}

} // namespace

bool Source::Hold(const Entry& entry, const Image& src, Image& dst, PixelTypes type, InPlace inPlace)
{
    const bool read = src.FirstPixel == dst.FirstPixel;
    image_.ShallowCopy(src, true);
    dst.Set(image_, type);
    if (Status::Error().Code != NoError) return true;
    dst.DetachIfShared(read);
    dst.GradGain = 1;
    Status::Error().Code = NoError;
    const bool samePlace = image_.FirstPixel == dst.FirstPixel && image_.Pitch == dst.Pitch && image_.Type == dst.Type;
    if (!Overlap(image_, dst) || (samePlace && inPlace == InPlace::Served)) return false;
    Image copy;
    if (!copy.TrySet(image_.Width, image_.Height, image_.Type))
        return entry.Refuse(CannotAllocate, L"Cannot allocate the image buffer");
    for (int y = 0; y < image_.Height; y++)
        std::memcpy(copy.Row(y), image_.Row(y), static_cast<std::size_t>(RowBytes(image_.Width, image_.Type)));
    image_.ShallowCopy(copy, true);
    return false;
}

} // namespace Tesk::filters
