// The row kernels of warps: the pixels along a line, and those at the entries of a map.
#include "image/geometry/WarpKernels.h"

#include "foundation/Status.h"

#include <algorithm>
#include <limits>
#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "image/geometry/WarpKernels.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Tesk::kernels {
namespace HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

namespace hn = hwy::HWY_NAMESPACE;
using Words = hn::ScalableTag<std::int32_t>;
using Shorts = hn::Repartition<std::int16_t, Words>;

/// a + ((b - a) w >> 16) for 16-bit lanes with unsigned weights. The signed product takes weights of half and more for
/// negative ones, and then lacks one difference.
template <class D, class V = hn::Vec<D>>
HWY_INLINE V Mix(D, V a, V b, V w)
{
    const V difference = hn::Sub(b, a);
    return hn::Add(hn::Add(a, hn::MulHigh(difference, w)), hn::And(difference, hn::ShiftRight<15>(w)));
}

/// The same weight in both halves of a lane.
template <class V>
HWY_INLINE V Twice(V w)
{
    return hn::Or(w, hn::ShiftLeft<16>(w));
}

/// Bilinear samples of bytes, one in each 32-bit lane, from the pairs of bytes at `upper` and `lower`.
template <class V>
HWY_INLINE V GrayMix(V upper, V lower, V u, V v)
{
    const Words words;
    const Shorts shorts;
    const hn::Repartition<std::uint16_t, Words> unsignedShorts;
    const auto pairs =
        hn::BitCast(unsignedShorts, hn::Or(hn::And(upper, hn::Set(words, 0xffff)), hn::ShiftLeft<16>(lower)));
    const auto left = hn::BitCast(shorts, hn::And(pairs, hn::Set(unsignedShorts, 0xff)));
    const auto right = hn::BitCast(shorts, hn::ShiftRight<8>(pairs));
    const auto rows = Mix(shorts, left, right, hn::BitCast(shorts, Twice(u)));
    const hn::Repartition<std::uint32_t, Words> unsignedWords;
    const auto below = hn::BitCast(shorts, hn::ShiftRight<16>(hn::BitCast(unsignedWords, rows)));
    const auto mixed = Mix(shorts, rows, below, hn::BitCast(shorts, v));
    return hn::And(hn::BitCast(words, mixed), hn::Set(words, 0xff));
}

HWY_INLINE void StoreBytes(hn::Vec<Words> v, std::uint8_t* d)
{
    const hn::Rebind<std::uint8_t, Words> bytes;
    hn::StoreU(hn::DemoteTo(bytes, v), bytes, d);
}

template <class V>
HWY_INLINE V Gather(const std::uint8_t* base, V offsets)
{
    return hn::GatherOffset(Words(), reinterpret_cast<const std::int32_t*>(base), offsets);
}

/// The positions of whole vectors along a line.
struct Positions
{
    HWY_INLINE Positions(const Surface& s, const Line& line, int elementSize)
        : pitch(hn::Set(words, static_cast<std::int32_t>(s.pitch))), size(elementSize),
          stepX(hn::Set(words, Times(line.dx, hn::Lanes(words)))),
          stepY(hn::Set(words, Times(line.dy, hn::Lanes(words)))),
          x(hn::Add(hn::Set(words, line.x), hn::Mul(hn::Iota(words, 0), hn::Set(words, line.dx)))),
          y(hn::Add(hn::Set(words, line.y), hn::Mul(hn::Iota(words, 0), hn::Set(words, line.dy))))
    {}

    static std::int32_t Times(std::int32_t step, std::size_t n)
    {
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(step) * static_cast<std::uint32_t>(n));
    }

    HWY_INLINE hn::Vec<Words> Offsets() const
    {
        const auto column = hn::ShiftRight<16>(x);
        const auto bytes = size == 1   ? column
                           : size == 2 ? hn::ShiftLeft<1>(column)
                                       : hn::Add(column, hn::ShiftLeft<1>(column));
        return hn::Add(hn::Mul(hn::ShiftRight<16>(y), pitch), bytes);
    }

    HWY_INLINE void Advance()
    {
        x = hn::Add(x, stepX);
        y = hn::Add(y, stepY);
    }

    Words words;
    hn::Vec<Words> pitch;
    int size;
    hn::Vec<Words> stepX, stepY, x, y;
};

HWY_INLINE hn::Vec<Words> Fraction(hn::Vec<Words> v)
{
    return hn::And(v, hn::Set(Words(), 0xffff));
}

std::size_t GrayLine(const Surface& s, const Line& line, std::uint8_t* d, std::size_t n)
{
    const Words words;
    const std::size_t lanes = hn::Lanes(words);
    Positions at(s, line, 1);
    std::size_t i = 0;
    for (; i + lanes <= n; i += lanes, at.Advance()) {
        const auto offsets = at.Offsets();
        StoreBytes(
            GrayMix(Gather(s.first, offsets), Gather(s.first + s.pitch, offsets), Fraction(at.x), Fraction(at.y)),
            d + i);
    }
    return i;
}

std::size_t GrayMap(const Surface& s, const GeoMapPixel* map, std::uint8_t* d, std::size_t n, std::int32_t lastRead)
{
    const Words words;
    const std::size_t lanes = hn::Lanes(words);
    const auto pitch = hn::Set(words, static_cast<std::int32_t>(s.pitch)), last = hn::Set(words, lastRead);
    const auto zero = hn::Zero(words);
    std::size_t i = 0;
    for (; i + lanes <= n; i += lanes) {
        hn::Vec<Words> offsets, weights;
        hn::LoadInterleaved2(words, reinterpret_cast<const std::int32_t*>(map + i), offsets, weights);
        const auto u = Fraction(hn::Sub(zero, weights)), v = Fraction(hn::Sub(zero, hn::ShiftRight<16>(weights)));
        // A row without weight may not exist.
        const auto below = hn::Add(offsets, hn::IfThenZeroElse(hn::Eq(v, zero), pitch));
        if (!hn::AllFalse(words, hn::Gt(below, last))) {
            BilinearMapRowPlain<1>(s, map + i, d + i, lanes);
            continue;
        }
        StoreBytes(GrayMix(Gather(s.first, offsets), Gather(s.first, below), u, v), d + i);
    }
    return i;
}

/// Four pixels of three bytes at a time, in blocks of 16 bytes: the upper and the lower pair of neighbours of one
/// pixel.
struct ColorQuad
{
    using Blocks = hn::CappedTag<std::uint8_t, 32>;
    using BlockShorts = hn::Repartition<std::int16_t, Blocks>;
    using BlockWords = hn::Repartition<std::int32_t, Blocks>;
    using Block = hn::FixedTag<std::uint8_t, 16>;
    using Half = hn::FixedTag<std::uint8_t, 8>;

    alignas(16) std::int32_t upper[4], lower[4], u[4], v[4];

    static HWY_INLINE hn::Vec<Block> Pairs(const std::uint8_t* p, const std::uint8_t* below)
    {
        return hn::Combine(Block(), hn::LoadU(Half(), below), hn::LoadU(Half(), p));
    }

    static HWY_INLINE hn::Vec<Blocks> Spread(const std::uint8_t* pattern) { return hn::LoadDup128(Blocks(), pattern); }

    HWY_INLINE hn::Vec<Blocks> PairsOf(const std::uint8_t* base, std::size_t k) const
    {
        const auto first = Pairs(base + upper[k], base + lower[k]);
#if HWY_MAX_BYTES >= 32
        return hn::Combine(Blocks(), Pairs(base + upper[k + 1], base + lower[k + 1]), first);
#else
        return first;
#endif
    }

    HWY_INLINE hn::Vec<BlockShorts> WeightsOf(std::size_t k) const
    {
        const hn::FixedTag<std::int32_t, 4> four;
        const BlockShorts shorts;
#if HWY_MAX_BYTES >= 32
        return hn::BitCast(shorts, hn::Combine(BlockWords(), hn::Set(four, u[k + 1]), hn::Set(four, u[k])));
#else
        return hn::BitCast(shorts, hn::Set(four, u[k]));
#endif
    }

    /// Both rows of a block's pixel, mixed along the row: words blue, green, red, none of the upper, then the lower
    /// one.
    HWY_INLINE hn::Vec<BlockShorts> Rows(const std::uint8_t* base, std::size_t k) const
    {
        HWY_ALIGN static constexpr std::uint8_t leftBytes[16] = {0, 128, 1, 128, 2,  128, 128, 128,
                                                                 8, 128, 9, 128, 10, 128, 128, 128};
        HWY_ALIGN static constexpr std::uint8_t rightBytes[16] = {3,  128, 4,  128, 5,  128, 128, 128,
                                                                  11, 128, 12, 128, 13, 128, 128, 128};
        const BlockShorts shorts;
        const auto pairs = PairsOf(base, k);
        return Mix(shorts, hn::BitCast(shorts, hn::TableLookupBytesOr0(pairs, Spread(leftBytes))),
                   hn::BitCast(shorts, hn::TableLookupBytesOr0(pairs, Spread(rightBytes))), WeightsOf(k));
    }

    /// Two rows of each of 2 * blocks pixels, mixed down the column, from pixel `k` on: the words of the first half of
    /// these pixels lie in the lower halves of the blocks.
    HWY_INLINE hn::Vec<BlockShorts> Pixels(const std::uint8_t* base, std::size_t k, hn::Vec<BlockShorts> weights) const
    {
        const BlockShorts shorts;
        const hn::Repartition<std::uint64_t, Blocks> longs;
        constexpr std::size_t blocks = HWY_MAX_BYTES >= 32 ? 2 : 1;
        const auto first = hn::BitCast(longs, Rows(base, k)), second = hn::BitCast(longs, Rows(base, k + blocks));
        return Mix(shorts, hn::BitCast(shorts, hn::InterleaveLower(longs, first, second)),
                   hn::BitCast(shorts, hn::InterleaveUpper(longs, first, second)), weights);
    }

    /// Twelve bytes of four pixels, and four bytes of nothing.
    HWY_INLINE hn::Vec<Block> Mixed(const std::uint8_t* base) const
    {
        const Block block;
        const BlockShorts shorts;
        const auto w = hn::LoadDup128(Blocks(), reinterpret_cast<const std::uint8_t*>(v));
#if HWY_MAX_BYTES >= 32
        // Pixels 0 and 2 in the lower block, 1 and 3 in the upper one.
        HWY_ALIGN static constexpr std::uint8_t weightBytes[32] = {
            0, 1, 0, 1, 0, 1, 0, 1, 8, 9, 8, 9, 8, 9, 8, 9, 4, 5, 4, 5, 4, 5, 4, 5, 12, 13, 12, 13, 12, 13, 12, 13};
        HWY_ALIGN static constexpr std::uint8_t placeBytes[32] = {0,   2,   4,   128, 128, 128, 8,   10,  12,  128, 128,
                                                                  128, 128, 128, 128, 128, 128, 128, 128, 0,   2,   4,
                                                                  128, 128, 128, 8,   10,  12,  128, 128, 128, 128};
        const auto weights = hn::BitCast(shorts, hn::TableLookupBytes(w, hn::Load(Blocks(), weightBytes)));
        const auto placed =
            hn::TableLookupBytesOr0(hn::BitCast(Blocks(), Pixels(base, 0, weights)), hn::Load(Blocks(), placeBytes));
        return hn::Or(hn::LowerHalf(block, placed), hn::UpperHalf(block, placed));
#else
        HWY_ALIGN static constexpr std::uint8_t weightBytes[2][16] = {
            {0, 1, 0, 1, 0, 1, 0, 1, 4, 5, 4, 5, 4, 5, 4, 5}, {8, 9, 8, 9, 8, 9, 8, 9, 12, 13, 12, 13, 12, 13, 12, 13}};
        HWY_ALIGN static constexpr std::uint8_t placeBytes[2][16] = {
            {0, 2, 4, 8, 10, 12, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128},
            {128, 128, 128, 128, 128, 128, 0, 2, 4, 8, 10, 12, 128, 128, 128, 128}};
        const auto half = [&](std::size_t k) {
            const auto weights = hn::BitCast(shorts, hn::TableLookupBytes(w, hn::Load(block, weightBytes[k])));
            return hn::TableLookupBytesOr0(hn::BitCast(block, Pixels(base, 2 * k, weights)),
                                           hn::Load(block, placeBytes[k]));
        };
        return hn::Or(half(0), half(1));
#endif
    }
};

/// 16 bytes are stored for 12: they must not reach behind the row.
constexpr std::size_t quadReach = 6;

std::size_t ColorLine(const Surface& s, const Line& line, std::uint8_t* d, std::size_t n)
{
    const hn::FixedTag<std::int32_t, 4> four;
    const auto step = [&](std::int32_t v) { return hn::Mul(hn::Iota(four, 0), hn::Set(four, v)); };
    const auto pitch = hn::Set(four, static_cast<std::int32_t>(s.pitch));
    const auto stepX = hn::Set(four, Positions::Times(line.dx, 4)), stepY = hn::Set(four, Positions::Times(line.dy, 4));
    auto x = hn::Add(hn::Set(four, line.x), step(line.dx)), y = hn::Add(hn::Set(four, line.y), step(line.dy));
    const auto fraction = hn::Set(four, 0xffff);
    ColorQuad quad;
    std::size_t i = 0;
    for (; i + quadReach <= n; i += 4) {
        const auto column = hn::ShiftRight<16>(x);
        const auto offsets = hn::Add(hn::Mul(hn::ShiftRight<16>(y), pitch), hn::Add(column, hn::ShiftLeft<1>(column)));
        hn::Store(offsets, four, quad.upper);
        hn::Store(hn::Add(offsets, pitch), four, quad.lower);
        hn::Store(Twice(hn::And(x, fraction)), four, quad.u);
        hn::Store(hn::And(y, fraction), four, quad.v);
        hn::StoreU(quad.Mixed(s.first), ColorQuad::Block(), d + 3 * i);
        x = hn::Add(x, stepX);
        y = hn::Add(y, stepY);
    }
    return i;
}

std::size_t ColorMap(const Surface& s, const GeoMapPixel* map, std::uint8_t* d, std::size_t n, std::int32_t lastRead)
{
    const hn::FixedTag<std::int32_t, 4> four;
    const auto pitch = hn::Set(four, static_cast<std::int32_t>(s.pitch)), last = hn::Set(four, lastRead);
    const auto fraction = hn::Set(four, 0xffff), zero = hn::Zero(four);
    ColorQuad quad;
    std::size_t i = 0;
    for (; i + quadReach <= n; i += 4) {
        hn::Vec<decltype(four)> offsets, weights;
        hn::LoadInterleaved2(four, reinterpret_cast<const std::int32_t*>(map + i), offsets, weights);
        const auto u = hn::And(hn::Sub(zero, weights), fraction),
                   v = hn::And(hn::Sub(zero, hn::ShiftRight<16>(weights)), fraction);
        const auto below = hn::Add(offsets, hn::IfThenZeroElse(hn::Eq(v, zero), pitch));
        if (!hn::AllFalse(four, hn::Gt(below, last))) {
            BilinearMapRowPlain<3>(s, map + i, d + 3 * i, 4);
            continue;
        }
        hn::Store(offsets, four, quad.upper);
        hn::Store(below, four, quad.lower);
        hn::Store(Twice(u), four, quad.u);
        hn::Store(v, four, quad.v);
        hn::StoreU(quad.Mixed(s.first), ColorQuad::Block(), d + 3 * i);
    }
    return i;
}

/// Offsets a vector at a time, the pixels one by one.
template <int Size>
std::size_t NearestLine(const Surface& s, const Line& line, std::uint8_t* d, std::size_t n)
{
    const Words words;
    const std::size_t lanes = hn::Lanes(words);
    Positions at(s, line, Size);
    HWY_ALIGN std::int32_t offsets[hn::MaxLanes(words)];
    std::size_t i = 0;
    // Three bytes are moved as four: one byte behind the last pixel is the next one's.
    for (; i + lanes + (Size == 3) <= n; i += lanes, at.Advance()) {
        hn::Store(at.Offsets(), words, offsets);
        for (std::size_t k = 0; k < lanes; k++)
            std::memcpy(d + (i + k) * Size, s.first + offsets[k], Size == 3 ? 4 : Size);
    }
    return i;
}

std::size_t Entries(const Surface& s, int elementSize, const Line& line, GeoMapPixel* map, std::size_t n,
                    bool interpolate)
{
    const Words words;
    const std::size_t lanes = hn::Lanes(words);
    const auto zero = hn::Zero(words), size = hn::Set(words, elementSize);
    const auto lastX = hn::Set(words, (s.width - 1) << 16), lastY = hn::Set(words, (s.height - 1) << 16);
    const auto weighed = hn::Set(words, interpolate ? -1 : 0);
    Positions at(s, line, elementSize);
    std::size_t i = 0;
    for (; i + lanes <= n; i += lanes, at.Advance()) {
        const auto x = hn::Max(zero, hn::Min(at.x, lastX)), y = hn::Max(zero, hn::Min(at.y, lastY));
        const auto offsets = hn::Add(hn::Mul(hn::ShiftRight<16>(y), at.pitch), hn::Mul(hn::ShiftRight<16>(x), size));
        const auto weights = hn::Or(Fraction(hn::Sub(zero, x)), hn::ShiftLeft<16>(hn::Sub(zero, y)));
        hn::StoreInterleaved2(offsets, hn::And(weights, weighed), words, reinterpret_cast<std::int32_t*>(map + i));
    }
    return i;
}

std::size_t Outside(const Surface& s, int elementSize, const GeoMapPixel* map, std::size_t n, bool interpolate,
                    bool& outside)
{
    const Words words;
    const std::size_t lanes = hn::Lanes(words);
    const auto pitch = static_cast<std::int32_t>(s.pitch);
    const auto zero = hn::Zero(words), last = hn::Set(words, pitch * (s.height - 1) + elementSize * (s.width - 1));
    const auto right = hn::Set(words, interpolate ? elementSize : 0), below = hn::Set(words, interpolate ? pitch : 0);
    const auto fx = hn::Set(words, 0xffff), fy = hn::Set(words, static_cast<std::int32_t>(0xffff0000u));
    // The sign of a lane tells of an offset behind its limit, of more than 31 bits, or between the bytes of a pixel.
    const auto between = hn::Set(words, elementSize == 2 ? 1 : 0);
    auto bad = zero;
    std::size_t i = 0;
    for (; i + lanes <= n; i += lanes) {
        hn::Vec<Words> offsets, weights;
        hn::LoadInterleaved2(words, reinterpret_cast<const std::int32_t*>(map + i), offsets, weights);
        const auto beside = hn::IfThenZeroElse(hn::Eq(hn::And(weights, fx), zero), right);
        const auto beneath = hn::IfThenZeroElse(hn::Eq(hn::And(weights, fy), zero), below);
        const auto limit = hn::Sub(hn::Sub(last, beside), beneath);
        bad = hn::Or(bad, hn::Or(offsets, hn::VecFromMask(words, hn::Gt(offsets, limit))));
        bad = hn::Or(bad, hn::ShiftLeft<31>(hn::And(offsets, between)));
    }
    outside = !hn::AllFalse(words, hn::Lt(bad, zero));
    return i;
}

#else

std::size_t Outside(const Surface&, int, const GeoMapPixel*, std::size_t, bool, bool&)
{
    return 0;
}
std::size_t Entries(const Surface&, int, const Line&, GeoMapPixel*, std::size_t, bool)
{
    return 0;
}
std::size_t GrayLine(const Surface&, const Line&, std::uint8_t*, std::size_t)
{
    return 0;
}
std::size_t ColorLine(const Surface&, const Line&, std::uint8_t*, std::size_t)
{
    return 0;
}
std::size_t GrayMap(const Surface&, const GeoMapPixel*, std::uint8_t*, std::size_t, std::int32_t)
{
    return 0;
}
std::size_t ColorMap(const Surface&, const GeoMapPixel*, std::uint8_t*, std::size_t, std::int32_t)
{
    return 0;
}
template <int Size>
std::size_t NearestLine(const Surface&, const Line&, std::uint8_t*, std::size_t)
{
    return 0;
}

#endif

std::size_t NearestGrayLine(const Surface& s, const Line& line, std::uint8_t* d, std::size_t n)
{
    return NearestLine<1>(s, line, d, n);
}
std::size_t NearestColorLine(const Surface& s, const Line& line, std::uint8_t* d, std::size_t n)
{
    return NearestLine<3>(s, line, d, n);
}

} // namespace HWY_NAMESPACE
} // namespace Tesk::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Tesk::kernels {

HWY_EXPORT(GrayLine);
HWY_EXPORT(ColorLine);
HWY_EXPORT(GrayMap);
HWY_EXPORT(ColorMap);
HWY_EXPORT(NearestGrayLine);
HWY_EXPORT(NearestColorLine);
HWY_EXPORT(Entries);
HWY_EXPORT(Outside);

namespace {

/// Calls `f` with a value of the sample's type and the number of channels.
template <typename F>
void ByType(PixelTypes type, F f)
{
    if (type == Gray)
        f(std::uint8_t{}, std::integral_constant<int, 1>{});
    else if (type == Gray16)
        f(std::uint16_t{}, std::integral_constant<int, 1>{});
    else
        f(std::uint8_t{}, std::integral_constant<int, 3>{});
}

std::int32_t After(std::int32_t from, std::int32_t step, std::size_t n)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(from) +
                                     static_cast<std::uint32_t>(step) * static_cast<std::uint32_t>(n));
}

Line Rest(const Line& line, std::size_t done)
{
    return {After(line.x, line.dx, done), After(line.y, line.dy, done), line.dx, line.dy};
}

/// Whether offsets have 31 bits.
bool Small(const Surface& s)
{
    return s.pitch > 0 && std::int64_t{s.pitch} * s.height <= std::numeric_limits<std::int32_t>::max();
}

/// Vectors load some bytes more than a pixel needs. Whether all rows that a line reads, `reach` rows for each pixel,
/// lie above the last one, behind which there may be nothing.
bool EndsAboveTheLastRow(const Surface& s, const Line& line, std::size_t n, int reach)
{
    return (std::max(line.y, After(line.y, line.dy, n - 1)) >> 16) + reach < s.height;
}

/// The last offset from which eight bytes may be read; negative for none.
std::int32_t LastRead(const Surface& s, int elementSize)
{
    const std::int64_t end = std::int64_t{s.pitch} * (s.height - 1) + std::int64_t{elementSize} * s.width;
    return static_cast<std::int32_t>(end - 8);
}

} // namespace

void BilinearLineRow(const Surface& s, Line line, std::uint8_t* d, std::size_t n)
{
    if (n == 0) return;
    std::size_t done = 0;
    if (s.type != Gray16 && Status::SIMDLevel() != NoSIMD && Small(s) && EndsAboveTheLastRow(s, line, n, 2))
        done = s.type == Gray ? HWY_DYNAMIC_DISPATCH(GrayLine)(s, line, d, n)
                              : HWY_DYNAMIC_DISPATCH(ColorLine)(s, line, d, n);
    ByType(s.type, [&](auto sample, auto channels) {
        BilinearLineRowPlain<channels()>(s, Rest(line, done),
                                         reinterpret_cast<decltype(sample)*>(d) + done * channels(), n - done);
    });
}

void NearestLineRow(const Surface& s, Line line, std::uint8_t* d, std::size_t n)
{
    if (n == 0) return;
    std::size_t done = 0;
    if (s.type != Gray16 && Status::SIMDLevel() != NoSIMD && Small(s) && EndsAboveTheLastRow(s, line, n, 1))
        done = s.type == Gray ? HWY_DYNAMIC_DISPATCH(NearestGrayLine)(s, line, d, n)
                              : HWY_DYNAMIC_DISPATCH(NearestColorLine)(s, line, d, n);
    ByType(s.type, [&](auto sample, auto channels) {
        NearestLineRowPlain<channels()>(s, Rest(line, done), reinterpret_cast<decltype(sample)*>(d) + done * channels(),
                                        n - done);
    });
}

void BilinearMapRow(const Surface& s, const GeoMapPixel* map, std::uint8_t* d, std::size_t n)
{
    std::size_t done = 0;
    if (s.type != Gray16 && Status::SIMDLevel() != NoSIMD && Small(s))
        done = s.type == Gray ? HWY_DYNAMIC_DISPATCH(GrayMap)(s, map, d, n, LastRead(s, 1))
                              : HWY_DYNAMIC_DISPATCH(ColorMap)(s, map, d, n, LastRead(s, 3));
    ByType(s.type, [&](auto sample, auto channels) {
        BilinearMapRowPlain<channels()>(s, map + done, reinterpret_cast<decltype(sample)*>(d) + done * channels(),
                                        n - done);
    });
}

void NearestMapRow(const Surface& s, const GeoMapPixel* map, std::uint8_t* d, std::size_t n)
{
    ByType(s.type, [&](auto sample, auto channels) {
        NearestMapRowPlain<channels()>(s, map, reinterpret_cast<decltype(sample)*>(d), n);
    });
}

void EntriesRow(const Surface& s, int elementSize, const WideLine& line, GeoMapPixel* map, std::size_t n,
                bool interpolate)
{
    if (n == 0) return;
    const auto fits = [](std::int64_t v) { return v == static_cast<std::int32_t>(v); };
    const auto last = static_cast<std::int64_t>(n - 1);
    const std::int64_t lastX = line.x + line.dx * last, lastY = line.y + line.dy * last;
    std::size_t done = 0;
    if (Status::SIMDLevel() != NoSIMD && s.width < 1 << 15 && s.height < 1 << 15 && Small(s) && fits(line.x) &&
        fits(line.y) && fits(lastX) && fits(lastY)) {
        const Line narrow{static_cast<std::int32_t>(line.x), static_cast<std::int32_t>(line.y),
                          static_cast<std::int32_t>(line.dx), static_cast<std::int32_t>(line.dy)};
        done = HWY_DYNAMIC_DISPATCH(Entries)(s, elementSize, narrow, map, n, interpolate);
    }
    for (std::size_t i = done; i < n; i++) {
        const auto k = static_cast<std::int64_t>(i);
        map[i] = EntryAt(s, elementSize, line.x + line.dx * k, line.y + line.dy * k, interpolate);
    }
}

bool LeadOutside(const Surface& s, int elementSize, const GeoMapPixel* map, std::size_t n, bool interpolate)
{
    std::size_t done = 0;
    if (Status::SIMDLevel() != NoSIMD && Small(s) && s.pitch < 1 << 30) {
        bool outside = false;
        done = HWY_DYNAMIC_DISPATCH(Outside)(s, elementSize, map, n, interpolate, outside);
        if (outside) return true;
    }
    return LeadOutsidePlain(s, elementSize, map + done, n - done, interpolate);
}

} // namespace Tesk::kernels
#endif
