// The kernels of exact transforms: reversed rows, and transposition by blocks.
#include "image/geometry/TurnKernels.h"

#include "image/kernels/ByLevel.h"

#include <algorithm>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "image/geometry/TurnKernels.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Tesk::kernels {
namespace HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

namespace hn = hwy::HWY_NAMESPACE;
using Bytes = hn::ScalableTag<std::uint8_t>;

HWY_INLINE hn::Vec<Bytes> Reversed(hn::Vec<Bytes> v)
{
    HWY_ALIGN static constexpr std::uint8_t backwards[16] = {15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0};
    const Bytes bytes;
    return hn::ReverseBlocks(bytes, hn::TableLookupBytes(v, hn::LoadDup128(bytes, backwards)));
}

std::size_t ReverseBytes(const std::uint8_t* s, std::uint8_t* d, std::size_t n)
{
    const Bytes bytes;
    const std::size_t lanes = hn::Lanes(bytes);
    std::size_t i = 0;
    for (; i + lanes <= n; i += lanes)
        hn::StoreU(Reversed(hn::LoadU(bytes, s + n - i - lanes)), bytes, d + i);
    return i;
}

std::size_t ReverseTriples(const std::uint8_t* s, std::uint8_t* d, std::size_t n)
{
    const Bytes bytes;
    const std::size_t lanes = hn::Lanes(bytes);
    std::size_t i = 0;
    for (; i + lanes <= n; i += lanes) {
        hn::Vec<Bytes> b, g, r;
        hn::LoadInterleaved3(bytes, s + 3 * (n - i - lanes), b, g, r);
        hn::StoreInterleaved3(Reversed(b), Reversed(g), Reversed(r), bytes, d + 3 * i);
    }
    return i;
}

/// 16 rows of 16 bytes: four rounds, each of which interleaves rows of the first half with rows of the second one.
void TransposeBlock(const std::uint8_t* s, std::ptrdiff_t sp, std::uint8_t* d, std::ptrdiff_t dp)
{
    const hn::FixedTag<std::uint8_t, 16> bytes;
    hn::Vec<decltype(bytes)> a[16], b[16];
    for (int k = 0; k < 16; k++)
        a[k] = hn::LoadU(bytes, s + k * sp);
    const auto round = [&](const auto* from, auto* to) {
        for (int k = 0; k < 8; k++) {
            to[2 * k] = hn::InterleaveLower(bytes, from[k], from[k + 8]);
            to[2 * k + 1] = hn::InterleaveUpper(bytes, from[k], from[k + 8]);
        }
    };
    round(a, b);
    round(b, a);
    round(a, b);
    round(b, a);
    for (int k = 0; k < 16; k++)
        hn::StoreU(a[k], bytes, d + k * dp);
}

#else

std::size_t ReverseBytes(const std::uint8_t*, std::uint8_t*, std::size_t)
{
    return 0;
}
std::size_t ReverseTriples(const std::uint8_t*, std::uint8_t*, std::size_t)
{
    return 0;
}
void TransposeBlock(const std::uint8_t* s, std::ptrdiff_t sp, std::uint8_t* d, std::ptrdiff_t dp)
{
    Transpose16Plain(s, sp, d, dp);
}

#endif

/// The whole blocks of a part of an image; the caller does the rest.
void TransposeBlocks(const std::uint8_t* s, std::ptrdiff_t sp, std::size_t width, std::size_t height, std::uint8_t* d,
                     std::ptrdiff_t dp)
{
    for (std::size_t x = 0; x + 16 <= width; x += 16)
        for (std::size_t y = 0; y + 16 <= height; y += 16)
            TransposeBlock(s + static_cast<std::ptrdiff_t>(y) * sp + x, sp, d + static_cast<std::ptrdiff_t>(x) * dp + y,
                           dp);
}

} // namespace HWY_NAMESPACE
} // namespace Tesk::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Tesk::kernels {

HWY_EXPORT(ReverseBytes);
HWY_EXPORT(ReverseTriples);
HWY_EXPORT(TransposeBlock);
HWY_EXPORT(TransposeBlocks);

namespace {

template <std::size_t Size>
void ReversePlain(const std::uint8_t* s, std::uint8_t* d, std::size_t n)
{
    for (std::size_t i = 0; i < n; i++)
        std::memcpy(d + i * Size, s + (n - 1 - i) * Size, Size);
}

/// A window of the source and where its first pixel goes.
struct Part
{
    const std::uint8_t* s;
    std::ptrdiff_t sp;
    std::size_t width, height;
    std::uint8_t* d;
    std::ptrdiff_t dp;

    const std::uint8_t* Source(std::size_t x, std::size_t y, std::size_t size) const
    {
        return s + static_cast<std::ptrdiff_t>(y) * sp + x * size;
    }
    std::uint8_t* Destination(std::size_t x, std::size_t y, std::size_t size) const
    {
        return d + static_cast<std::ptrdiff_t>(x) * dp + y * size;
    }
    Part From(std::size_t x, std::size_t y, std::size_t w, std::size_t h, std::size_t size) const
    {
        return {Source(x, y, size), sp, w, h, Destination(x, y, size), dp};
    }
};

template <std::size_t Size>
void TransposePlain(const Part& p)
{
    for (std::size_t x = 0; x < p.width; x++)
        for (std::size_t y = 0; y < p.height; y++)
            std::memcpy(p.Destination(x, y, Size), p.Source(x, y, Size), Size);
}

/// Three bytes moved as four, where a further column of the source, and a further row of it, follow: what one move
/// writes too far, a later one writes over.
void TransposeTriples(const Part& p)
{
    for (std::size_t x = 0; x < p.width; x++) {
        const std::uint8_t* s = p.Source(x, 0, 3);
        std::uint8_t* d = p.Destination(x, 0, 3);
        for (std::size_t y = 0; y < p.height; y++, s += p.sp, d += 3)
            std::memcpy(d, s, 4);
    }
}

void TransposeBytes(const Part& p)
{
    const std::size_t width = p.width & ~std::size_t{15}, height = p.height & ~std::size_t{15};
    HWY_DYNAMIC_DISPATCH(TransposeBlocks)(p.s, p.sp, width, height, p.d, p.dp);
    TransposePlain<1>(p.From(width, 0, p.width - width, p.height, 1));
    TransposePlain<1>(p.From(0, height, width, p.height - height, 1));
}

/// Calls `f` with tiles, whose rows and columns stay in the cache while they are turned; columns of the source go
/// downwards in each.
template <typename F>
void EachTile(const Part& p, std::size_t size, F f)
{
    constexpr std::size_t tile = 64;
    for (std::size_t y = 0; y < p.height; y += tile)
        for (std::size_t x = 0; x < p.width; x += tile)
            f(p.From(x, y, std::min(tile, p.width - x), std::min(tile, p.height - y), size));
}

} // namespace

void ReverseRow(const std::uint8_t* s, std::uint8_t* d, std::size_t n, std::size_t ElementSize)
{
    const bool plain = Status::SIMDLevel() == NoSIMD;
    if (ElementSize == 1) {
        const std::size_t done = plain ? 0 : HWY_DYNAMIC_DISPATCH(ReverseBytes)(s, d, n);
        ReversePlain<1>(s, d + done, n - done);
    } else if (ElementSize == 2) {
        ReversePlain<2>(s, d, n);
    } else {
        const std::size_t done = plain ? 0 : HWY_DYNAMIC_DISPATCH(ReverseTriples)(s, d, n);
        ReversePlain<3>(s, d + 3 * done, n - done);
    }
}

void Transpose(const std::uint8_t* s, std::ptrdiff_t SourcePitch, std::size_t Width, std::size_t Height,
               std::uint8_t* d, std::ptrdiff_t DestinationPitch, std::size_t ElementSize)
{
    const Part all{s, SourcePitch, Width, Height, d, DestinationPitch};
    if (ElementSize == 1 && Status::SIMDLevel() != NoSIMD) {
        EachTile(all, 1, TransposeBytes);
    } else if (ElementSize == 1) {
        EachTile(all, 1, TransposePlain<1>);
    } else if (ElementSize == 2) {
        EachTile(all, 2, TransposePlain<2>);
    } else {
        EachTile(all.From(0, 0, Width - 1, Height - 1, 3), 3, TransposeTriples);
        TransposePlain<3>(all.From(Width - 1, 0, 1, Height, 3));
        TransposePlain<3>(all.From(0, Height - 1, Width - 1, 1, 3));
    }
}

void Transpose16(const std::uint8_t* s, std::ptrdiff_t pitch, std::uint8_t* d, std::ptrdiff_t dPitch)
{
    ByLevel(Transpose16Plain, HWY_DYNAMIC_DISPATCH(TransposeBlock))(s, pitch, d, dPitch);
}

void Transpose16Plain(const std::uint8_t* s, std::ptrdiff_t pitch, std::uint8_t* d, std::ptrdiff_t dPitch)
{
    for (int y = 0; y < 16; y++)
        for (int x = 0; x < 16; x++)
            d[x * dPitch + y] = s[y * pitch + x];
}

} // namespace Tesk::kernels
#endif
