// The dark pixels of an image: local and global thresholds.
#include "read/matrix/BinaryImage.h"

#include "image/filter/LocalMeans.h"

#include <algorithm>
#include <new>

namespace Tesk::matrix {

void BinaryImage::Resize(int width, int height)
{
    if (width == width_ && height == height_) return;
    stride_ = std::ptrdiff_t{width} + 2;
    pixels_.assign(static_cast<std::size_t>(stride_) * static_cast<std::size_t>(height + 2), 0);
    width_ = width;
    height_ = height;
}

void BinaryImage::BinarizeByMean(const Image& gray, int boxSize, int offset)
{
    Resize(gray.Width, gray.Height);
    if (means_.Fit(width_, height_, Gray) != NoError) throw std::bad_alloc();
    filters::BoxMeans(gray, boxSize, boxSize, means_);
    for (int y = 0; y < height_; ++y) {
        const std::uint8_t *s = gray.Row(y), *mean = means_.Row(y);
        std::uint8_t* d = Row(y);
        for (int x = 0; x < width_; ++x)
            d[x] = s[x] + offset < mean[x] ? dark : 0;
    }
}

void BinaryImage::BinarizeBelow(const Image& gray, int threshold)
{
    Resize(gray.Width, gray.Height);
    for (int y = 0; y < height_; ++y) {
        const std::uint8_t* s = gray.Row(y);
        std::uint8_t* d = Row(y);
        for (int x = 0; x < width_; ++x)
            d[x] = s[x] < threshold ? dark : 0;
    }
}

void BinaryImage::Invert()
{
    for (int y = 0; y < height_; ++y)
        std::for_each_n(Row(y), width_, [](std::uint8_t& pixel) { pixel ^= dark; });
}

} // namespace Tesk::matrix
