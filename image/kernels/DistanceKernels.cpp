#include "image/kernels/DistanceKernels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "image/kernels/DistanceKernels.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Tesk::kernels {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

template <typename T>
void SpreadOf(const T* s, T* d, std::size_t n, std::size_t step)
{
    const hn::ScalableTag<T> tag;
    const auto length = hn::Set(tag, static_cast<T>(step));
    for (std::size_t i = 0; i < n; i += hn::Lanes(tag)) {
        const auto near = hn::Min(hn::LoadU(tag, s + i - step), hn::LoadU(tag, s + i + step));
        hn::StoreU(hn::Min(hn::LoadU(tag, s + i), hn::SaturatedAdd(near, length)), tag, d + i);
    }
}

template <typename T>
void SweepOf(const T* others, T* d, std::size_t n, bool diagonal)
{
    const hn::ScalableTag<T> tag;
    const auto one = hn::Set(tag, T{1});
    const auto put = [&](std::size_t i, auto near) HWY_ATTR {
        hn::StoreU(hn::Min(hn::LoadU(tag, d + i), hn::SaturatedAdd(near, one)), tag, d + i);
    };
    if (diagonal)
        for (std::size_t i = 0; i < n; i += hn::Lanes(tag))
            put(i, hn::Min(hn::LoadU(tag, others + i),
                           hn::Min(hn::LoadU(tag, others + i - 1), hn::LoadU(tag, others + i + 1))));
    else
        for (std::size_t i = 0; i < n; i += hn::Lanes(tag))
            put(i, hn::LoadU(tag, others + i));
}

void Spread8(const std::uint8_t* s, std::uint8_t* d, std::size_t n, std::size_t step)
{
    SpreadOf(s, d, n, step);
}
void Spread16(const std::uint16_t* s, std::uint16_t* d, std::size_t n, std::size_t step)
{
    SpreadOf(s, d, n, step);
}
void Sweep8(const std::uint8_t* others, std::uint8_t* d, std::size_t n, bool diagonal)
{
    SweepOf(others, d, n, diagonal);
}
void Sweep16(const std::uint16_t* others, std::uint16_t* d, std::size_t n, bool diagonal)
{
    SweepOf(others, d, n, diagonal);
}

bool NearSquares(const std::uint16_t* s, std::uint16_t* squares, std::size_t n, std::size_t step)
{
    const hn::ScalableTag<std::uint16_t> tag;
    const auto square = hn::Set(tag, static_cast<std::uint16_t>(step * step));
    auto largest = hn::Zero(tag);
    for (std::size_t i = 0; i < n; i += hn::Lanes(tag)) {
        const auto near = hn::Min(hn::LoadU(tag, s + i - step), hn::LoadU(tag, s + i + step));
        const auto least = hn::Min(hn::LoadU(tag, squares + i), hn::SaturatedAdd(near, square));
        hn::StoreU(least, tag, squares + i);
        largest = hn::Max(largest, least);
    }
    return hn::GetLane(hn::MaxOfLanes(tag, largest)) > (step + 1) * (step + 1);
}

void Roots(const std::uint16_t* squares, std::uint8_t* d, std::size_t n)
{
    // A 32-bit float holds these squares exactly, and no root of a smaller one rounds up to a whole number.
    const hn::ScalableTag<float> floats;
    const hn::RebindToSigned<decltype(floats)> ints;
    const hn::Rebind<std::uint16_t, decltype(floats)> words;
    const hn::Rebind<std::uint8_t, decltype(floats)> bytes;
    for (std::size_t i = 0; i < n; i += hn::Lanes(floats)) {
        const auto square = hn::ConvertTo(floats, hn::PromoteTo(ints, hn::LoadU(words, squares + i)));
        hn::StoreU(hn::DemoteTo(bytes, hn::ConvertTo(ints, hn::Sqrt(square))), bytes, d + i);
    }
}

} // namespace HWY_NAMESPACE
} // namespace Tesk::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Tesk::kernels {

HWY_EXPORT(Spread8);
HWY_EXPORT(Spread16);
HWY_EXPORT(Sweep8);
HWY_EXPORT(Sweep16);
HWY_EXPORT(NearSquares);
HWY_EXPORT(Roots);

void SpreadRow(const std::uint8_t* s, std::uint8_t* d, std::size_t n, std::size_t step)
{
    HWY_DYNAMIC_DISPATCH(Spread8)(s, d, n, step);
}
void SpreadRow(const std::uint16_t* s, std::uint16_t* d, std::size_t n, std::size_t step)
{
    HWY_DYNAMIC_DISPATCH(Spread16)(s, d, n, step);
}
void SweepRow(const std::uint8_t* others, std::uint8_t* d, std::size_t n, bool diagonal)
{
    HWY_DYNAMIC_DISPATCH(Sweep8)(others, d, n, diagonal);
}
void SweepRow(const std::uint16_t* others, std::uint16_t* d, std::size_t n, bool diagonal)
{
    HWY_DYNAMIC_DISPATCH(Sweep16)(others, d, n, diagonal);
}
bool NearSquaresRow(const std::uint16_t* s, std::uint16_t* squares, std::size_t n, std::size_t step)
{
    return HWY_DYNAMIC_DISPATCH(NearSquares)(s, squares, n, step);
}
void RootRow(const std::uint16_t* squares, std::uint8_t* d, std::size_t n)
{
    HWY_DYNAMIC_DISPATCH(Roots)(squares, d, n);
}

} // namespace Tesk::kernels
#endif
