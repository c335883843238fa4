// The sums under the correlation of thumbnails, in vectors.
#include "read/chars/CompareKernels.h"

#include "image/kernels/ByLevel.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "read/chars/CompareKernels.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Tesk::kernels {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR

void AddProducts(const std::int16_t* font, std::size_t fontStride, const ThumbnailRows& images, std::int64_t* products)
{
    SumProductsPlain(font, fontStride, images, products);
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using Shorts = hn::CappedTag<std::int16_t, thumbnailStep>;
using Ints = hn::Repartition<std::int32_t, Shorts>;
using Unsigned = hn::Repartition<std::uint32_t, Shorts>;

/// No more than 65536 products fit into 32 bits, so that a total is exact without a sign.
HWY_INLINE std::int64_t Total(hn::Vec<Ints> v)
{
    const Unsigned sums;
    return hn::GetLane(hn::SumOfLanes(sums, hn::BitCast(sums, v)));
}

/// `Count` thumbnails, up to four, share each load of the font's pixels.
template <std::size_t Count>
HWY_INLINE void AddGroup(const std::int16_t* font, std::size_t fontStride, const ThumbnailRows& images,
                         const std::int16_t* first, std::int64_t* products)
{
    const Shorts shorts;
    const Ints ints;
    const std::size_t lanes = hn::Lanes(shorts);
    auto sum0 = hn::Zero(ints), sum1 = sum0, sum2 = sum0, sum3 = sum0, odd0 = sum0, odd1 = sum0, odd2 = sum0,
         odd3 = sum0;
    for (std::size_t y = 0; y < images.rows; y++) {
        const std::int16_t *f = font + y * fontStride, *i = first + y * images.stride;
        for (std::size_t x = 0; x < images.width; x += lanes) {
            const auto v = hn::LoadU(shorts, f + x);
            const auto next = [&](std::size_t k) HWY_ATTR { return hn::LoadU(shorts, i + k * images.step + x); };
            sum0 = hn::ReorderWidenMulAccumulate(ints, v, next(0), sum0, odd0);
            if constexpr (Count > 1) sum1 = hn::ReorderWidenMulAccumulate(ints, v, next(1), sum1, odd1);
            if constexpr (Count > 2) sum2 = hn::ReorderWidenMulAccumulate(ints, v, next(2), sum2, odd2);
            if constexpr (Count > 3) sum3 = hn::ReorderWidenMulAccumulate(ints, v, next(3), sum3, odd3);
        }
    }
    products[0] = Total(hn::Add(sum0, odd0));
    if constexpr (Count > 1) products[1] = Total(hn::Add(sum1, odd1));
    if constexpr (Count > 2) products[2] = Total(hn::Add(sum2, odd2));
    if constexpr (Count > 3) products[3] = Total(hn::Add(sum3, odd3));
}

void AddProducts(const std::int16_t* font, std::size_t fontStride, const ThumbnailRows& images, std::int64_t* products)
{
    std::size_t k = 0;
    const auto first = [&] { return images.pixels + k * images.step; };
    for (; k + 4 <= images.count; k += 4)
        AddGroup<4>(font, fontStride, images, first(), products + k);
    switch (images.count - k) {
    case 3:
        AddGroup<3>(font, fontStride, images, first(), products + k);
        break;
    case 2:
        AddGroup<2>(font, fontStride, images, first(), products + k);
        break;
    case 1:
        AddGroup<1>(font, fontStride, images, first(), products + k);
        break;
    default:
        break;
    }
}

#endif

} // namespace HWY_NAMESPACE
} // namespace Tesk::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Tesk::kernels {

HWY_EXPORT(AddProducts);

namespace {

/// As many products as the vectors may add up.
constexpr std::size_t mostProducts = 65536;

/// Thumbnails larger than one call may take, by bands of rows.
void SumBands(const std::int16_t* font, std::size_t fontStride, const ThumbnailRows& images, std::int64_t* products)
{
    constexpr std::size_t atOnce = 16;
    const auto band = ByLevel(SumProductsPlain, HWY_DYNAMIC_DISPATCH(AddProducts));
    const std::size_t rows = std::max<std::size_t>(1, mostProducts / std::max<std::size_t>(1, images.width));
    std::fill(products, products + images.count, 0);
    for (std::size_t k = 0; k < images.count; k += atOnce)
        for (std::size_t y = 0; y < images.rows; y += rows) {
            std::int64_t part[atOnce];
            ThumbnailRows some = images;
            some.pixels += k * images.step + y * images.stride;
            some.count = std::min(atOnce, images.count - k);
            some.rows = std::min(rows, images.rows - y);
            band(font + y * fontStride, fontStride, some, part);
            for (std::size_t i = 0; i < some.count; i++)
                products[k + i] += part[i];
        }
}

} // namespace

void SumProductsPlain(const std::int16_t* font, std::size_t fontStride, const ThumbnailRows& images,
                      std::int64_t* products)
{
    for (std::size_t k = 0; k < images.count; k++) {
        std::int64_t sum = 0;
        for (std::size_t y = 0; y < images.rows; y++) {
            const std::int16_t *f = font + y * fontStride, *i = images.pixels + k * images.step + y * images.stride;
            for (std::size_t x = 0; x < images.width; x++)
                sum += f[x] * i[x];
        }
        products[k] = sum;
    }
}

void SumProducts(const std::int16_t* font, std::size_t fontStride, const ThumbnailRows& images, std::int64_t* products)
{
    if (images.width * images.rows > mostProducts) return SumBands(font, fontStride, images, products);
    ThumbnailRows all = images;
    if (fontStride == images.width && images.stride == images.width) {
        // Without gaps, a thumbnail is one long row.
        all.width *= all.rows;
        all.rows = 1;
    }
    ByLevel(SumProductsPlain, HWY_DYNAMIC_DISPATCH(AddProducts))(font, fontStride, all, products);
}

} // namespace Tesk::kernels
#endif
