// The row kernels of resampling: mixing two rows, spreading one, picking pixels.
#include "image/geometry/ResampleKernels.h"

#include "foundation/Status.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "image/geometry/ResampleKernels.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Tesk::kernels {
namespace HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

namespace hn = hwy::HWY_NAMESPACE;

/// a + ((b - a) w >> 16): the signed product takes weights of half and more for negative ones, and then lacks one
/// difference, which `negative` lets through.
template <class V>
HWY_INLINE V Mix(V a, V b, V w, V negative)
{
    const V difference = hn::Sub(b, a);
    return hn::Add(hn::Add(a, hn::MulHigh(difference, w)), hn::And(difference, negative));
}

std::size_t MixBytes(const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* d, std::size_t n, std::uint32_t weight)
{
    const hn::ScalableTag<std::int16_t> shorts;
    const hn::Rebind<std::uint8_t, decltype(shorts)> bytes;
    const std::size_t lanes = hn::Lanes(shorts);
    const auto w = hn::Set(shorts, static_cast<std::int16_t>(weight)), negative = hn::ShiftRight<15>(w);
    const auto mixed = [&](std::size_t at) {
        return Mix(hn::PromoteTo(shorts, hn::LoadU(bytes, a + at)), hn::PromoteTo(shorts, hn::LoadU(bytes, b + at)), w,
                   negative);
    };
    std::size_t i = 0;
    for (; i + 2 * lanes <= n; i += 2 * lanes) {
        const auto first = mixed(i), second = mixed(i + lanes);
        hn::StoreU(hn::DemoteTo(bytes, first), bytes, d + i);
        hn::StoreU(hn::DemoteTo(bytes, second), bytes, d + i + lanes);
    }
    return i;
}

void SpreadGroups(const ByteSpread::Group* groups, std::size_t count, const std::uint8_t* s, std::uint8_t* d)
{
    const hn::FixedTag<std::uint8_t, 16> bytes;
    const hn::FixedTag<std::uint16_t, 8> words;
    const hn::FixedTag<std::int16_t, 8> shorts;
    const hn::FixedTag<std::uint8_t, 8> half;
    for (std::size_t k = 0; k < count; k++) {
        const auto pairs = hn::BitCast(
            words, hn::TableLookupBytes(hn::LoadU(bytes, s + groups[k].from), hn::LoadU(bytes, groups[k].pairs)));
        const auto first = hn::BitCast(shorts, hn::And(pairs, hn::Set(words, 0xff)));
        const auto second = hn::BitCast(shorts, hn::ShiftRight<8>(pairs));
        const auto w = hn::LoadU(shorts, groups[k].weights);
        hn::StoreU(hn::DemoteTo(half, Mix(first, second, w, hn::ShiftRight<15>(w))), half, d + 8 * k);
    }
}

#else

std::size_t MixBytes(const std::uint8_t*, const std::uint8_t*, std::uint8_t*, std::size_t, std::uint32_t)
{
    return 0;
}

void SpreadGroups(const ByteSpread::Group* groups, std::size_t count, const std::uint8_t* s, std::uint8_t* d)
{
    for (std::size_t k = 0; k < count; k++)
        for (std::size_t i = 0; i < 8; i++) {
            const std::uint8_t* p = s + groups[k].from;
            const std::uint32_t u = static_cast<std::uint16_t>(groups[k].weights[i]);
            d[8 * k + i] = static_cast<std::uint8_t>(
                (p[groups[k].pairs[2 * i]] * (0x10000 - u) + p[groups[k].pairs[2 * i + 1]] * u) >> 16);
        }
}

#endif

} // namespace HWY_NAMESPACE
} // namespace Tesk::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Tesk::kernels {

HWY_EXPORT(MixBytes);
HWY_EXPORT(SpreadGroups);

namespace {

template <std::size_t Size>
void Pick(const std::uint8_t* s, const std::size_t* places, std::uint8_t* d, std::size_t n)
{
    for (std::size_t i = 0; i < n; i++)
        std::memcpy(d + i * Size, s + places[i] * Size, Size);
}

} // namespace

void PickRow(const std::uint8_t* s, const std::size_t* Places, std::uint8_t* d, std::size_t n, std::size_t ElementSize)
{
    if (ElementSize == 1)
        Pick<1>(s, Places, d, n);
    else if (ElementSize == 2)
        Pick<2>(s, Places, d, n);
    else if (ElementSize == 3)
        Pick<3>(s, Places, d, n);
    else
        Pick<4>(s, Places, d, n);
}

void MixRows(const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* d, std::size_t n, std::uint32_t Weight)
{
    const std::size_t done = Status::SIMDLevel() == NoSIMD ? 0 : HWY_DYNAMIC_DISPATCH(MixBytes)(a, b, d, n, Weight);
    MixRowsPlain(a + done, b + done, d + done, n - done, Weight);
}

ByteSpread::ByteSpread(const std::vector<Tap>& taps, std::size_t Width, std::size_t Channels)
{
    constexpr std::size_t samples = 8, window = 16;
    const std::size_t length = Width * Channels, count = taps.size() * Channels / samples;
    if (length < window) return;
    groups_.resize(count);
    for (std::size_t k = 0; k < count; k++) {
        Group& group = groups_[k];
        const auto place = [&](std::size_t i) { return taps[i / Channels].first * Channels + i % Channels; };
        group.from = length;
        for (std::size_t i = 0; i < samples; i++)
            group.from = std::min(group.from, place(samples * k + i));
        group.from = std::min(group.from, length - window);
        for (std::size_t i = 0; i < samples; i++) {
            const std::uint32_t fraction = taps[(samples * k + i) / Channels].fraction;
            const std::size_t first = place(samples * k + i) - group.from, second = first + (fraction ? Channels : 0);
            if (second >= window) {
                groups_.clear();
                return;
            }
            group.pairs[2 * i] = static_cast<std::uint8_t>(first);
            group.pairs[2 * i + 1] = static_cast<std::uint8_t>(second);
            group.weights[i] = static_cast<std::int16_t>(fraction);
        }
    }
}

std::size_t ByteSpread::Row(const std::uint8_t* s, std::uint8_t* d) const
{
    if (Status::SIMDLevel() == NoSIMD) return 0;
    HWY_DYNAMIC_DISPATCH(SpreadGroups)(groups_.data(), groups_.size(), s, d);
    return groups_.size() * 8;
}

} // namespace Tesk::kernels
#endif
