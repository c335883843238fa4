// The row kernels of halving and doubling, in vectors.
#include "image/pyramid/PyramidKernels.h"

#include "image/kernels/ByLevel.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "image/pyramid/PyramidKernels.cpp"
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

void HalveColors(const std::uint8_t* top, const std::uint8_t* bottom, std::uint8_t* d, std::size_t n)
{
    std::size_t i = 0;
#if HWY_TARGET != HWY_SCALAR
    const hn::ScalableTag<std::uint8_t> bytes;
    const hn::Repartition<std::uint16_t, decltype(bytes)> words;
    using V = hn::Vec<decltype(bytes)>;
    const auto low = hn::Set(words, 0x00ff);
    const std::size_t lanes = hn::Lanes(bytes);
    const auto half = [&](V t, V b) {
        const auto upper = hn::BitCast(words, t), lower = hn::BitCast(words, b);
        const auto sum = hn::Add(hn::Add(hn::And(upper, low), hn::ShiftRight<8>(upper)),
                                 hn::Add(hn::And(lower, low), hn::ShiftRight<8>(lower)));
        return hn::BitCast(bytes, hn::ShiftRight<2>(sum));
    };
    const auto channel = [&](V t0, V b0, V t1, V b1) { return hn::ConcatEven(bytes, half(t1, b1), half(t0, b0)); };
    for (; i + lanes <= n; i += lanes) {
        V t[2][3], b[2][3];
        for (std::size_t k = 0; k < 2; k++) {
            const std::size_t at = 3 * (2 * i + k * lanes);
            hn::LoadInterleaved3(bytes, top + at, t[k][0], t[k][1], t[k][2]);
            hn::LoadInterleaved3(bytes, bottom + at, b[k][0], b[k][1], b[k][2]);
        }
        hn::StoreInterleaved3(channel(t[0][0], b[0][0], t[1][0], b[1][0]), channel(t[0][1], b[0][1], t[1][1], b[1][1]),
                              channel(t[0][2], b[0][2], t[1][2], b[1][2]), bytes, d + 3 * i);
    }
#endif
    HalveRowPlain<3>(top + 6 * i, bottom + 6 * i, d + 3 * i, n - i);
}

void DoubleColors(const std::uint8_t* top, const std::uint8_t* bottom, std::uint8_t* d, std::size_t n, int weightTop,
                  int weightBottom, int shift)
{
    std::size_t i = 0;
#if HWY_TARGET != HWY_SCALAR
    const hn::ScalableTag<std::uint8_t> bytes;
    const hn::Half<decltype(bytes)> halves;
    const hn::Repartition<std::uint16_t, decltype(bytes)> words;
    using V = hn::Vec<decltype(bytes)>;
    const auto wt = hn::Set(words, static_cast<std::uint16_t>(weightTop)),
               wb = hn::Set(words, static_cast<std::uint16_t>(weightBottom));
    const std::size_t lanes = hn::Lanes(bytes);
    const auto column = [&](hn::Vec<decltype(halves)> t, hn::Vec<decltype(halves)> b) {
        return hn::Add(hn::Mul(hn::PromoteTo(words, t), wt), hn::Mul(hn::PromoteTo(words, b), wb));
    };
    // Both results of a pair are bytes of one word, low first.
    const auto pair = [&](hn::Vec<decltype(words)> v, hn::Vec<decltype(words)> next) {
        const auto sum = hn::Add(v, next);
        const auto near = hn::ShiftRightSame(hn::Add(sum, hn::Add(v, v)), shift);
        const auto far = hn::ShiftRightSame(hn::Add(sum, hn::Add(next, next)), shift);
        return hn::BitCast(bytes, hn::Or(near, hn::ShiftLeft<8>(far)));
    };
    for (; i + 1 + lanes <= n; i += lanes) {
        V t[3], b[3], nextT[3], nextB[3], lower[3], upper[3];
        hn::LoadInterleaved3(bytes, top + 3 * i, t[0], t[1], t[2]);
        hn::LoadInterleaved3(bytes, bottom + 3 * i, b[0], b[1], b[2]);
        hn::LoadInterleaved3(bytes, top + 3 * i + 3, nextT[0], nextT[1], nextT[2]);
        hn::LoadInterleaved3(bytes, bottom + 3 * i + 3, nextB[0], nextB[1], nextB[2]);
        for (std::size_t c = 0; c < 3; c++) {
            lower[c] = pair(column(hn::LowerHalf(halves, t[c]), hn::LowerHalf(halves, b[c])),
                            column(hn::LowerHalf(halves, nextT[c]), hn::LowerHalf(halves, nextB[c])));
            upper[c] = pair(column(hn::UpperHalf(halves, t[c]), hn::UpperHalf(halves, b[c])),
                            column(hn::UpperHalf(halves, nextT[c]), hn::UpperHalf(halves, nextB[c])));
        }
        hn::StoreInterleaved3(lower[0], lower[1], lower[2], bytes, d + 3 * (2 * i + 1));
        hn::StoreInterleaved3(upper[0], upper[1], upper[2], bytes, d + 3 * (2 * i + 1 + lanes));
    }
#endif
    // The rest begins with a border of its own, which is none here.
    std::uint8_t first[3], joint[3];
    for (std::size_t c = 0; c < 3; c++) {
        first[c] = static_cast<std::uint8_t>((weightTop * top[c] + weightBottom * bottom[c]) >> (shift - 2));
        joint[c] = i ? d[6 * i + c] : first[c];
    }
    DoubleRowPlain<3>(top + 3 * i, bottom + 3 * i, d + 6 * i, n - i, weightTop, weightBottom, shift);
    for (std::size_t c = 0; c < 3; c++) {
        d[6 * i + c] = joint[c];
        d[c] = first[c];
    }
}

} // namespace HWY_NAMESPACE
} // namespace Tesk::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Tesk::kernels {

HWY_EXPORT(Halve);
HWY_EXPORT(Double);
HWY_EXPORT(HalveColors);
HWY_EXPORT(DoubleColors);

void HalveRow(const std::uint8_t* top, const std::uint8_t* bottom, std::uint8_t* d, std::size_t n)
{
    ByLevel(HalveRowPlain<1>, HWY_DYNAMIC_DISPATCH(Halve))(top, bottom, d, n);
}

void DoubleRow(const std::uint8_t* top, const std::uint8_t* bottom, std::uint8_t* d, std::size_t n, int WeightTop,
               int WeightBottom, int Shift)
{
    ByLevel(DoubleRowPlain<1>, HWY_DYNAMIC_DISPATCH(Double))(top, bottom, d, n, WeightTop, WeightBottom, Shift);
}

void HalveColorRow(const std::uint8_t* top, const std::uint8_t* bottom, std::uint8_t* d, std::size_t n)
{
    ByLevel(HalveRowPlain<3>, HWY_DYNAMIC_DISPATCH(HalveColors))(top, bottom, d, n);
}

void DoubleColorRow(const std::uint8_t* top, const std::uint8_t* bottom, std::uint8_t* d, std::size_t n, int WeightTop,
                    int WeightBottom, int Shift)
{
    ByLevel(DoubleRowPlain<3>, HWY_DYNAMIC_DISPATCH(DoubleColors))(top, bottom, d, n, WeightTop, WeightBottom, Shift);
}

} // namespace Tesk::kernels
#endif
