#include "image/filter/KernelFrame.h"

namespace Tesk::filters {

int RefuseSize(const wchar_t* name, int size)
{
    if (size <= largestSize || size % 2 == 0)
        return Status::Format(OutOfRange, L"The filter %ls (%d) must be a positive odd number", name, size);
    return Status::Format(OutOfRange, L"The filter %ls (%d) is out of the range 1 to %d", name, size, largestSize);
}

bool Source::Hold(const Entry& entry, const Image& src, Image& dst, PixelTypes type, InPlace inPlace)
{
    const bool read = src.FirstPixel == dst.FirstPixel;
    image_.ShallowCopy(src, true);
    dst.Set(image_, type);
    if (Status::Error().Code != NoError) return true;
    dst.DetachIfShared(read);
    dst.GradGain = 1;
    Status::Error().Code = NoError;
    return points::KeepApart(entry, image_, dst, inPlace);
}

} // namespace Tesk::filters
