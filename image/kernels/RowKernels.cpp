// The row kernels on bytes, in vectors.
#include "image/kernels/RowKernels.h"

#include "image/kernels/ByLevel.h"

#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "image/kernels/RowKernels.cpp"
#include <hwy/foreach_target.h>

#include <hwy/cache_control.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Tesk::kernels {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using Bytes = hn::ScalableTag<std::uint8_t>;

/// A result of so many bytes is gone from the nearer caches before it is looked at again: it goes to memory at once,
/// which need not be read first, and the whole takes a quarter less time.
constexpr std::size_t streamed = std::size_t{8} << 20;

/// The part of a large result, from its first whole line on, that goes to memory past the caches; how far it is done.
template <typename F>
std::size_t StreamPairs(const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* d, std::size_t n, F f)
{
    const Bytes bytes;
    const std::size_t lanes = hn::Lanes(bytes);
    hn::StoreU(f(hn::LoadU(bytes, a), hn::LoadU(bytes, b)), bytes, d);
    std::size_t i = lanes - reinterpret_cast<std::uintptr_t>(d) % lanes;
    for (; i + 4 * lanes <= n; i += 4 * lanes)
        for (std::size_t k = 0; k < 4 * lanes; k += lanes)
            hn::Stream(f(hn::LoadU(bytes, a + i + k), hn::LoadU(bytes, b + i + k)), bytes, d + i + k);
    hwy::FlushStream();
    return i;
}

/// Whole vectors, then one last step through a buffer, so that nothing behind the rows is touched.
template <typename F>
void EachPair(const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* d, std::size_t n, F f)
{
    const Bytes bytes;
    const std::size_t lanes = hn::Lanes(bytes);
    // In place the lines are read anyhow.
    std::size_t i = n >= streamed && d != a && d != b ? StreamPairs(a, b, d, n, f) : 0;
    // Four at a time, all loads before the stores: one branch for many bytes, which counts at 128 bits.
    for (; i + 4 * lanes <= n; i += 4 * lanes) {
        const auto r0 = f(hn::LoadU(bytes, a + i), hn::LoadU(bytes, b + i));
        const auto r1 = f(hn::LoadU(bytes, a + i + lanes), hn::LoadU(bytes, b + i + lanes));
        const auto r2 = f(hn::LoadU(bytes, a + i + 2 * lanes), hn::LoadU(bytes, b + i + 2 * lanes));
        const auto r3 = f(hn::LoadU(bytes, a + i + 3 * lanes), hn::LoadU(bytes, b + i + 3 * lanes));
        hn::StoreU(r0, bytes, d + i);
        hn::StoreU(r1, bytes, d + i + lanes);
        hn::StoreU(r2, bytes, d + i + 2 * lanes);
        hn::StoreU(r3, bytes, d + i + 3 * lanes);
    }
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
    case BytePair::AddSaturated:
        EachPair(a, b, d, n, [](V s, V t) { return hn::SaturatedAdd(s, t); });
        break;
    case BytePair::SubtractSaturated:
        EachPair(a, b, d, n, [](V s, V t) { return hn::SaturatedSub(s, t); });
        break;
    case BytePair::Difference:
        EachPair(a, b, d, n, [](V s, V t) { return hn::Or(hn::SaturatedSub(s, t), hn::SaturatedSub(t, s)); });
        break;
    case BytePair::Maximum:
        EachPair(a, b, d, n, [](V s, V t) { return hn::Max(s, t); });
        break;
    case BytePair::Minimum:
        EachPair(a, b, d, n, [](V s, V t) { return hn::Min(s, t); });
        break;
    case BytePair::And:
        EachPair(a, b, d, n, [](V s, V t) { return hn::And(s, t); });
        break;
    case BytePair::Or:
        EachPair(a, b, d, n, [](V s, V t) { return hn::Or(s, t); });
        break;
    case BytePair::Xor:
        EachPair(a, b, d, n, [](V s, V t) { return hn::Xor(s, t); });
        break;
    case BytePair::AddHalved:
        EachPair(a, b, d, n, halved);
        break;
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
    const auto wa = hn::Set(words, static_cast<std::uint16_t>(A)),
               wb = hn::Set(words, static_cast<std::uint16_t>(256 - A));
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

void Threshold(const std::uint8_t* s, std::uint8_t* d, std::size_t n, std::uint8_t threshold, std::uint8_t high,
               std::uint8_t low)
{
    const Bytes bytes;
    using V = hn::Vec<Bytes>;
    const V t = hn::Set(bytes, threshold), h = hn::Set(bytes, high), l = hn::Set(bytes, low);
    // An unsigned byte is at most the threshold where the saturated difference is nothing.
    EachPair(s, s, d, n, [&](V v, V) { return hn::IfThenElse(hn::Eq(hn::SaturatedSub(v, t), hn::Zero(bytes)), l, h); });
}

void Lookup(const std::uint8_t* s, std::uint8_t* d, std::size_t n, const std::uint8_t* table)
{
    std::size_t i = 0;
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    // Sixteen shuffles, one for each high nibble. A shuffle gives 0 for a negative index, so once the index has gone
    // down by 16 k, it adds what part k differs by from the one before, and the sum for a byte ends at its own part.
    // The upper half of the bytes is negative in the lower tables, and the other way round. Below 256 bits that is
    // slower than one load a byte.
    const Bytes bytes;
    const hn::Repartition<std::int8_t, Bytes> chars;
    using VC = hn::Vec<decltype(chars)>;
    const auto half = hn::Set(chars, -128), step = hn::Set(chars, 16);
    HWY_ALIGN std::uint8_t changes[256];
    for (std::size_t k = 0; k < 256; k++)
        changes[k] = static_cast<std::uint8_t>(k % 128 < 16 ? table[k] : table[k] ^ table[k - 16]);
    VC parts[16];
    for (std::size_t k = 0; k < 16; k++)
        parts[k] = hn::BitCast(chars, hn::LoadDup128(bytes, changes + 16 * k));
    const auto look = [&](const std::uint8_t* from) HWY_ATTR {
        VC lower = hn::BitCast(chars, hn::LoadU(bytes, from)), upper = hn::Xor(lower, half);
        VC result = hn::Or(hn::TableLookupBytesOr0(parts[0], lower), hn::TableLookupBytesOr0(parts[8], upper));
        for (std::size_t k = 1; k < 8; k++) {
            lower = hn::SaturatedSub(lower, step);
            upper = hn::SaturatedSub(upper, step);
            result = hn::Xor(result, hn::Xor(hn::TableLookupBytesOr0(parts[k], lower),
                                             hn::TableLookupBytesOr0(parts[8 + k], upper)));
        }
        return hn::BitCast(bytes, result);
    };
    const std::size_t lanes = hn::Lanes(bytes);
    for (; i + 2 * lanes <= n; i += 2 * lanes) {
        const auto first = look(s + i), second = look(s + i + lanes);
        hn::StoreU(first, bytes, d + i);
        hn::StoreU(second, bytes, d + i + lanes);
    }
    for (; i + lanes <= n; i += lanes)
        hn::StoreU(look(s + i), bytes, d + i);
#else
    // Eight at a time through one register, so that the stores do not wait for the next loads.
    for (; i + 8 <= n; i += 8) {
        std::uint64_t in = 0, out = 0;
        std::memcpy(&in, s + i, 8);
        for (int k = 0; k < 64; k += 8)
            out |= static_cast<std::uint64_t>(table[in >> k & 255]) << k;
        std::memcpy(d + i, &out, 8);
    }
#endif
    LookupRowPlain(s + i, d + i, n - i, table);
}

void LargestOfThree(const std::uint8_t* s, std::uint8_t* d, std::size_t n)
{
    std::size_t i = 0;
#if HWY_TARGET != HWY_SCALAR
    const Bytes bytes;
    for (; i + hn::Lanes(bytes) <= n; i += hn::Lanes(bytes)) {
        hn::Vec<Bytes> b, g, r;
        hn::LoadInterleaved3(bytes, s + 3 * i, b, g, r);
        hn::StoreU(hn::Max(b, hn::Max(g, r)), bytes, d + i);
    }
#endif
    LargestOfThreeRowPlain(s + 3 * i, d + i, n - i);
}

void Widen(const std::uint8_t* s, std::uint16_t* d, std::size_t n, int shift)
{
    std::size_t i = 0;
#if HWY_TARGET != HWY_SCALAR
    const hn::ScalableTag<std::uint16_t> words;
    const hn::Rebind<std::uint8_t, decltype(words)> halves;
    for (; i + hn::Lanes(words) <= n; i += hn::Lanes(words))
        hn::StoreU(hn::ShiftLeftSame(hn::PromoteTo(words, hn::LoadU(halves, s + i)), shift), words, d + i);
#endif
    WidenRowPlain(s + i, d + i, n - i, shift);
}

void Moments(const std::uint8_t* s, std::size_t n, std::uint64_t& sum, std::uint64_t& squares)
{
    std::size_t i = 0;
#if HWY_TARGET != HWY_SCALAR
    const Bytes bytes;
    const hn::Repartition<std::int16_t, Bytes> shorts;
    const hn::Repartition<std::int32_t, Bytes> ints;
    const hn::Repartition<std::uint64_t, Bytes> longs;
    const auto low = hn::Set(shorts, 0x00ff);
    const std::size_t lanes = hn::Lanes(bytes);
    // A 32-bit lane takes four squares a step, and so 8192 steps.
    constexpr std::size_t steps = 8192;
    auto sums = hn::Zero(longs), wide = hn::Zero(longs);
    while (i + lanes <= n) {
        auto evens = hn::Zero(ints), odds = hn::Zero(ints), moreEvens = hn::Zero(ints), moreOdds = hn::Zero(ints);
        for (std::size_t step = 0; step < steps && i + lanes <= n; step++, i += lanes) {
            const auto v = hn::LoadU(bytes, s + i);
            const auto even = hn::And(hn::BitCast(shorts, v), low);
            const auto odd =
                hn::BitCast(shorts, hn::ShiftRight<8>(hn::BitCast(hn::RebindToUnsigned<decltype(shorts)>(), v)));
            sums = hn::Add(sums, hn::SumsOf8(v));
            evens = hn::ReorderWidenMulAccumulate(ints, even, even, evens, moreEvens);
            odds = hn::ReorderWidenMulAccumulate(ints, odd, odd, odds, moreOdds);
        }
        const auto lower = hn::Set(longs, 0xffffffff);
        for (const auto part : {evens, odds, moreEvens, moreOdds}) {
            const auto pairs = hn::BitCast(longs, part);
            wide = hn::Add(wide, hn::Add(hn::And(pairs, lower), hn::ShiftRight<32>(pairs)));
        }
    }
    sum += hn::GetLane(hn::SumOfLanes(longs, sums));
    squares += hn::GetLane(hn::SumOfLanes(longs, wide));
#endif
    MomentsRowPlain(s + i, n - i, sum, squares);
}

void WordMoments(const std::uint16_t* s, std::size_t n, std::uint16_t largest, std::uint64_t& sum,
                 std::uint64_t& squares)
{
    std::size_t i = 0;
#if HWY_TARGET != HWY_SCALAR
    const hn::ScalableTag<std::uint16_t> words;
    const hn::RebindToSigned<decltype(words)> shorts;
    const hn::Repartition<std::int32_t, decltype(words)> ints;
    const hn::Repartition<std::uint64_t, decltype(words)> longs;
    const auto most = hn::Set(words, largest), middle = hn::Set(words, 0x8000);
    const auto ones = hn::Set(shorts, 1);
    const auto lower = hn::Set(longs, 0xffffffff);
    const std::size_t lanes = hn::Lanes(words);
    // Pixels less 32768 multiply with sign; a lane takes the sum of two a step, and so 16384 steps.
    constexpr std::size_t steps = 16384;
    std::int64_t offsets = 0;
    auto wide = hn::Zero(longs);
    while (i + lanes <= n) {
        auto sums = hn::Zero(ints), moreSums = hn::Zero(ints);
        for (std::size_t step = 0; step < steps && i + lanes <= n; step++, i += lanes) {
            const auto v = hn::BitCast(shorts, hn::Xor(hn::Min(hn::LoadU(words, s + i), most), middle));
            auto more = hn::Zero(ints);
            const auto pairs = hn::ReorderWidenMulAccumulate(ints, v, v, hn::Zero(ints), more);
            sums = hn::ReorderWidenMulAccumulate(ints, v, ones, sums, moreSums);
            // Two squares are up to 2^31: without sign.
            const auto two = hn::BitCast(longs, hn::Add(pairs, more));
            wide = hn::Add(wide, hn::Add(hn::And(two, lower), hn::ShiftRight<32>(two)));
        }
        HWY_ALIGN std::int32_t parts[HWY_MAX_BYTES / sizeof(std::int32_t)];
        for (const auto part : {sums, moreSums}) {
            hn::Store(part, ints, parts);
            for (std::size_t k = 0; k < hn::Lanes(ints); k++)
                offsets += parts[k];
        }
    }
    const auto shift = static_cast<std::uint64_t>(offsets);
    sum += shift + (std::uint64_t{i} << 15);
    squares += hn::GetLane(hn::SumOfLanes(longs, wide)) + (shift << 16) + (std::uint64_t{i} << 30);
#endif
    MomentsRowPlain(s + i, n - i, largest, sum, squares);
}

} // namespace HWY_NAMESPACE
} // namespace Tesk::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Tesk::kernels {

HWY_EXPORT(Pair);
HWY_EXPORT(Blend);
HWY_EXPORT(Threshold);
HWY_EXPORT(Lookup);
HWY_EXPORT(LargestOfThree);
HWY_EXPORT(Widen);
HWY_EXPORT(Moments);
HWY_EXPORT(WordMoments);

void BytePairRow(BytePair Operation, const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* d, std::size_t n)
{
    ByLevel(BytePairRowPlain, HWY_DYNAMIC_DISPATCH(Pair))(Operation, a, b, d, n);
}

void BlendRow(const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* d, std::size_t n, int A)
{
    // 255 * 256 is the largest sum, so 16 bits hold it.
    ByLevel(BlendRowPlain, HWY_DYNAMIC_DISPATCH(Blend))(a, b, d, n, A);
}

void ThresholdRow(const std::uint8_t* s, std::uint8_t* d, std::size_t n, std::uint8_t Threshold_, std::uint8_t High,
                  std::uint8_t Low)
{
    ByLevel(ThresholdRowPlain, HWY_DYNAMIC_DISPATCH(Threshold))(s, d, n, Threshold_, High, Low);
}

void LookupRow(const std::uint8_t* s, std::uint8_t* d, std::size_t n, const std::uint8_t Table[256])
{
    ByLevel(LookupRowPlain, HWY_DYNAMIC_DISPATCH(Lookup))(s, d, n, Table);
}

void LargestOfThreeRow(const std::uint8_t* s, std::uint8_t* d, std::size_t n)
{
    ByLevel(LargestOfThreeRowPlain, HWY_DYNAMIC_DISPATCH(LargestOfThree))(s, d, n);
}

void WidenRow(const std::uint8_t* s, std::uint16_t* d, std::size_t n, int Shift)
{
    ByLevel(WidenRowPlain, HWY_DYNAMIC_DISPATCH(Widen))(s, d, n, Shift);
}

void MomentsRow(const std::uint8_t* s, std::size_t n, std::uint64_t& Sum, std::uint64_t& Squares)
{
    ByLevel(MomentsRowPlain, HWY_DYNAMIC_DISPATCH(Moments))(s, n, Sum, Squares);
}

void MomentsRow(const std::uint16_t* s, std::size_t n, std::uint16_t Largest, std::uint64_t& Sum,
                std::uint64_t& Squares)
{
    ByLevel(MomentsRowPlain, HWY_DYNAMIC_DISPATCH(WordMoments))(s, n, Largest, Sum, Squares);
}

} // namespace Tesk::kernels
#endif
