#include "image/core/SizingFrame.h"

#include <limits>

namespace Tesk::sizing {

bool SizeWindow(Image& image, int width, int height, PixelTypes type)
{
    if (image.Type == type && image.Width == width && image.Height == height) return true;
    if (image.Type == type && image.StoreWidth == width && image.StoreHeight == height) {
        image.Window();
        return true;
    }
    return image.TrySet(width, height, type);
}

bool RefuseSize(Image& image, std::int64_t width, std::int64_t height, PixelTypes type)
{
    const auto fits = [](std::int64_t v) { return v <= std::numeric_limits<int>::max(); };
    if (fits(width) && fits(height) && SizeWindow(image, static_cast<int>(width), static_cast<int>(height), type))
        return false;
    return Status::Raise(Status::Format(CannotAllocate, L"Cannot allocate the image buffer"), "Tesk::Image::Set");
}

} // namespace Tesk::sizing
