#include "image/kernels/RowKernels.h"

#include "foundation/Status.h"

#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "image/kernels/RowKernels.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Tesk::kernels {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using Bytes = hn::ScalableTag<std::uint8_t>;

/// Whole vectors, then one last step through a buffer, so that nothing behind the rows is touched.
template <typename F>
void EachPair(const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* d, std::size_t n, F f)
{
    const Bytes bytes;
    const std::size_t lanes = hn::Lanes(bytes);
    std::size_t i = 0;
    for (; i + lanes <= n; i += lanes)
        hn::StoreU(f(hn::LoadU(bytes, a + i), hn::LoadU(bytes, b + i)), bytes, d + i);
    if (i == n) return;
    HWY_ALIGN std::uint8_t tailA[HWY_MAX_BYTES] = {};
    HWY_ALIGN std::uint8_t tailB[HWY_MAX_BYTES] = {};
    std::memcpy(tailA, a + i, n - i);
    std::memcpy(tailB, b + i, n - i);
    hn::Store(f(hn::Load(bytes, tailA), hn::Load(bytes, tailB)), bytes, tailA);
    std::memcpy(d + i, tailA, n - i);
}

void Pair(BytePair operation, const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* d, std::size_t n)
{
    const Bytes bytes;
    using V = hn::Vec<Bytes>;
    const V all = hn::Set(bytes, 255);
    // The rounding average loses its rounding where the sum is odd.
    const V one = hn::Set(bytes, 1);
    const auto halved = [&](V s, V t) { return hn::Sub(hn::AverageRound(s, t), hn::And(hn::Xor(s, t), one)); };
    switch (operation) {
    case BytePair::AddSaturated: EachPair(a, b, d, n, [](V s, V t) { return hn::SaturatedAdd(s, t); }); break;
    case BytePair::SubtractSaturated: EachPair(a, b, d, n, [](V s, V t) { return hn::SaturatedSub(s, t); }); break;
    case BytePair::Difference:
        EachPair(a, b, d, n, [](V s, V t) { return hn::Or(hn::SaturatedSub(s, t), hn::SaturatedSub(t, s)); });
        break;
    case BytePair::Maximum: EachPair(a, b, d, n, [](V s, V t) { return hn::Max(s, t); }); break;
    case BytePair::Minimum: EachPair(a, b, d, n, [](V s, V t) { return hn::Min(s, t); }); break;
    case BytePair::And: EachPair(a, b, d, n, [](V s, V t) { return hn::And(s, t); }); break;
    case BytePair::Or: EachPair(a, b, d, n, [](V s, V t) { return hn::Or(s, t); }); break;
    case BytePair::Xor: EachPair(a, b, d, n, [](V s, V t) { return hn::Xor(s, t); }); break;
    case BytePair::AddHalved: EachPair(a, b, d, n, halved); break;
    case BytePair::SubtractHalved:
        // 255 - b is the complement of b.
        EachPair(a, b, d, n, [&](V s, V t) { return halved(s, hn::Xor(t, all)); });
        break;
    }
}

void Blend(const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* d, std::size_t n, int A)
{
#if HWY_TARGET == HWY_SCALAR
    // One lane has no halves to work in.
    BlendRowPlain(a, b, d, n, A);
#else
    const Bytes bytes;
    const hn::Repartition<std::uint16_t, Bytes> words;
    const auto wa = hn::Set(words, static_cast<std::uint16_t>(A)), wb = hn::Set(words, static_cast<std::uint16_t>(256 - A));
    const auto low = hn::Set(words, 0x00ff);
    // Even and odd bytes as 16-bit lanes: the products fit, and the high byte of a sum is its result.
    EachPair(a, b, d, n, [&](hn::Vec<Bytes> s, hn::Vec<Bytes> t) {
        const auto s16 = hn::BitCast(words, s), t16 = hn::BitCast(words, t);
        const auto even = hn::Add(hn::Mul(hn::And(s16, low), wa), hn::Mul(hn::And(t16, low), wb));
        const auto odd = hn::Add(hn::Mul(hn::ShiftRight<8>(s16), wa), hn::Mul(hn::ShiftRight<8>(t16), wb));
        return hn::BitCast(bytes, hn::Or(hn::ShiftRight<8>(even), hn::AndNot(low, odd)));
    });
#endif
}

void Threshold(const std::uint8_t* s, std::uint8_t* d, std::size_t n, std::uint8_t threshold, std::uint8_t high, std::uint8_t low)
{
    const Bytes bytes;
    using V = hn::Vec<Bytes>;
    const V t = hn::Set(bytes, threshold), h = hn::Set(bytes, high), l = hn::Set(bytes, low);
    // An unsigned byte is at most the threshold where the saturated difference is nothing.
    EachPair(s, s, d, n, [&](V v, V) { return hn::IfThenElse(hn::Eq(hn::SaturatedSub(v, t), hn::Zero(bytes)), l, h); });
}

} // namespace HWY_NAMESPACE
} // namespace Tesk::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Tesk::kernels {

HWY_EXPORT(Pair);
HWY_EXPORT(Blend);
HWY_EXPORT(Threshold);

void BytePairRow(BytePair Operation, const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* d, std::size_t n)
{
    if (Status::SIMDLevel() == NoSIMD) BytePairRowPlain(Operation, a, b, d, n);
    else HWY_DYNAMIC_DISPATCH(Pair)(Operation, a, b, d, n);
}

void BlendRow(const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* d, std::size_t n, int A)
{
    // 255 * 256 is the largest sum, so 16 bits hold it.
    if (Status::SIMDLevel() == NoSIMD) BlendRowPlain(a, b, d, n, A);
    else HWY_DYNAMIC_DISPATCH(Blend)(a, b, d, n, A);
}

void ThresholdRow(const std::uint8_t* s, std::uint8_t* d, std::size_t n, std::uint8_t Threshold_, std::uint8_t High,
                  std::uint8_t Low)
{
    if (Status::SIMDLevel() == NoSIMD) ThresholdRowPlain(s, d, n, Threshold_, High, Low);
    else HWY_DYNAMIC_DISPATCH(Threshold)(s, d, n, Threshold_, High, Low);
}

} // namespace Tesk::kernels
#endif
