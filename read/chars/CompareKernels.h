// The sums under the correlation of thumbnails, with the plain loop that defines them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Tesk::kernels {

/// Rows are followed by zeros up to a multiple of this.
inline constexpr std::size_t thumbnailStep = 16;

constexpr std::size_t PaddedWidth(int width)
{
    return (static_cast<std::size_t>(width) + thumbnailStep - 1) / thumbnailStep * thumbnailStep;
}

/// Thumbnails of one size that follow each other, of values from 0 to 255. Padding must hold zeros here; what is read
/// beside it on the other side does not matter then.
struct ThumbnailRows
{
    const std::int16_t* pixels;
    std::size_t stride; ///< from row to row
    std::size_t step;   ///< from thumbnail to thumbnail
    std::size_t count;  ///< of thumbnails
    std::size_t width;  ///< padded
    std::size_t rows;
};

/// products[k] = the sum of F * I over the pixels of thumbnail k.
void SumProducts(const std::int16_t* font, std::size_t fontStride, const ThumbnailRows& images, std::int64_t* products);
void SumProductsPlain(const std::int16_t* font, std::size_t fontStride, const ThumbnailRows& images,
                      std::int64_t* products);

} // namespace Tesk::kernels
