#include "image/kernels/PyramidKernels.h"

#include "foundation/Status.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "image/kernels/PyramidKernels.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Tesk::kernels {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

void Halve(const std::uint8_t* top, const std::uint8_t* bottom, std::uint8_t* d, std::size_t n)
{
    std::size_t i = 0;
#if HWY_TARGET != HWY_SCALAR
    const hn::ScalableTag<std::uint8_t> bytes;
    const hn::Repartition<std::uint16_t, decltype(bytes)> words;
    const auto low = hn::Set(words, 0x00ff);
    const std::size_t lanes = hn::Lanes(bytes);
    const auto half = [&](std::size_t at) {
        const auto t = hn::BitCast(words, hn::LoadU(bytes, top + at)),
                   b = hn::BitCast(words, hn::LoadU(bytes, bottom + at));
        const auto sum =
            hn::Add(hn::Add(hn::And(t, low), hn::ShiftRight<8>(t)), hn::Add(hn::And(b, low), hn::ShiftRight<8>(b)));
        return hn::BitCast(bytes, hn::ShiftRight<2>(sum));
    };
    for (; i + lanes <= n; i += lanes) {
        const auto lower = half(2 * i), upper = half(2 * i + lanes);
        hn::StoreU(hn::ConcatEven(bytes, upper, lower), bytes, d + i);
    }
#endif
    HalveRowPlain<1>(top + 2 * i, bottom + 2 * i, d + i, n - i);
}

void Double(const std::uint8_t* top, const std::uint8_t* bottom, std::uint8_t* d, std::size_t n, int weightTop,
            int weightBottom, int shift)
{
    std::size_t i = 0;
#if HWY_TARGET != HWY_SCALAR
    const hn::ScalableTag<std::uint16_t> words;
    const hn::Rebind<std::uint8_t, decltype(words)> halves;
    const hn::Repartition<std::uint8_t, decltype(words)> bytes;
    const auto wt = hn::Set(words, static_cast<std::uint16_t>(weightTop)),
               wb = hn::Set(words, static_cast<std::uint16_t>(weightBottom));
    const auto column = [&](std::size_t at) {
        return hn::Add(hn::Mul(hn::PromoteTo(words, hn::LoadU(halves, top + at)), wt),
                       hn::Mul(hn::PromoteTo(words, hn::LoadU(halves, bottom + at)), wb));
    };
    // 16 times 255 at most. Both results of a pair are bytes of one word, low first.
    for (; i + 1 + hn::Lanes(words) <= n; i += hn::Lanes(words)) {
        const auto v = column(i), next = column(i + 1);
        const auto sum = hn::Add(v, next);
        const auto near = hn::ShiftRightSame(hn::Add(sum, hn::Add(v, v)), shift);
        const auto far = hn::ShiftRightSame(hn::Add(sum, hn::Add(next, next)), shift);
        hn::StoreU(hn::BitCast(bytes, hn::Or(near, hn::ShiftLeft<8>(far))), bytes, d + 2 * i + 1);
    }
#endif
    const std::uint8_t first =
        static_cast<std::uint8_t>((weightTop * top[0] + weightBottom * bottom[0]) >> (shift - 2));
    const std::uint8_t joint = i ? d[2 * i] : first;
    DoubleRowPlain<1>(top + i, bottom + i, d + 2 * i, n - i, weightTop, weightBottom, shift);
    d[2 * i] = joint;
    d[0] = first;
}

} // namespace HWY_NAMESPACE
} // namespace Tesk::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Tesk::kernels {

HWY_EXPORT(Halve);
HWY_EXPORT(Double);

void HalveRow(const std::uint8_t* top, const std::uint8_t* bottom, std::uint8_t* d, std::size_t n)
{
    if (Status::SIMDLevel() == NoSIMD)
        HalveRowPlain<1>(top, bottom, d, n);
    else
        HWY_DYNAMIC_DISPATCH(Halve)(top, bottom, d, n);
}

void DoubleRow(const std::uint8_t* top, const std::uint8_t* bottom, std::uint8_t* d, std::size_t n, int WeightTop,
               int WeightBottom, int Shift)
{
    if (Status::SIMDLevel() == NoSIMD)
        DoubleRowPlain<1>(top, bottom, d, n, WeightTop, WeightBottom, Shift);
    else
        HWY_DYNAMIC_DISPATCH(Double)(top, bottom, d, n, WeightTop, WeightBottom, Shift);
}

} // namespace Tesk::kernels
#endif
