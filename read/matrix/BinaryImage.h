// The dark pixels of an image, as the searches for finder patterns take them.
#pragma once

#include "image/Image.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace Tesk::matrix {

/// An image that each object has for itself: working memory, of which a copy takes nothing along.
class WorkImage : public Image
{
public:
    WorkImage() = default;
    WorkImage(const WorkImage&) : Image() {}
    WorkImage& operator=(const WorkImage&) { return *this; }
    using Image::operator=;
};

/// Bytes, 1 for a dark pixel and 0 for a light one, with a light pixel on each side.
class BinaryImage
{
public:
    static constexpr std::uint8_t dark = 1;

    int Width() const { return width_; }
    int Height() const { return height_; }
    /// Of the image or one pixel beyond it.
    bool IsDark(int x, int y) const { return *At(x, y) != 0; }
    /// The pixel nearest to a place; what lies beyond the image is light.
    bool IsDark(XY place) const
    {
        const bool isInside = place.X >= -0.5 && place.Y >= -0.5 && place.X < width_ - 0.5 && place.Y < height_ - 0.5;
        return isInside && IsDark(static_cast<int>(place.X + 0.5), static_cast<int>(place.Y + 0.5));
    }
    bool Holds(int x, int y) const { return x >= 0 && y >= 0 && x < width_ && y < height_; }
    const std::uint8_t* At(int x, int y) const { return pixels_.data() + Index(x, y); }
    std::ptrdiff_t Stride() const { return stride_; }

    /// Dark is what is darker by more than `offset` than the mean of the square around. Throws `std::bad_alloc`.
    void BinarizeByMean(const Image& gray, int boxSize, int offset);
    /// Dark is what is below the threshold.
    void BinarizeBelow(const Image& gray, int threshold);
    /// Exchanges dark and light; what is beyond the image stays light.
    void Invert();

private:
    std::size_t Index(int x, int y) const { return static_cast<std::size_t>((y + 1) * stride_ + x + 1); }
    std::uint8_t* Row(int y) { return pixels_.data() + Index(0, y); }
    void Resize(int width, int height);

    int width_ = 0, height_ = 0;
    std::ptrdiff_t stride_ = 2;
    std::vector<std::uint8_t> pixels_ = std::vector<std::uint8_t>(4);
    WorkImage means_;
};

} // namespace Tesk::matrix
