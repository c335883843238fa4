// Comparison of thumbnails: the correlation of their pixels, whatever their brightness and gain.
#pragma once

#include "read/chars/CompareKernels.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Tesk {
class Image;
}

namespace Tesk::chars {

struct Match
{
    double score = -1, contrast = 0;
};

/// Sums of pixels and of their squares.
struct PixelSums
{
    std::int64_t sum = 0, squares = 0;
};

/// A thumbnail in 16-bit rows padded by zeros, with the sums of what stands left of each column.
class Packed
{
public:
    /// Takes `height` rows of bytes, `pitch` bytes from one to the next.
    void Take(const std::uint8_t* pixels, std::ptrdiff_t pitch, int width, int height);
    void Take(const Image& thumbnail);

    int Width() const { return width_; }
    int Height() const { return height_; }
    std::size_t Stride() const { return stride_; }
    const std::int16_t* Row(int y) const { return pixels_.data() + static_cast<std::size_t>(y) * stride_; }
    /// Of the columns from `first` on, over all rows.
    PixelSums Sums(int first, int count) const;

private:
    int width_ = 0, height_ = 0;
    std::size_t stride_ = 0;
    std::vector<std::int16_t> pixels_;
    std::vector<PixelSums> left_;
};

} // namespace Tesk::chars
