// The row kernels of distance maps, in vectors.
#include "image/morpho/DistanceKernels.h"

#include "image/morpho/MorphoKernels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "image/morpho/DistanceKernels.cpp"
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

std::uint16_t NearSquares(const std::uint16_t* s, std::uint16_t* squares, std::size_t first)
{
    const hn::ScalableTag<std::uint16_t> tag;
    const std::size_t lanes = hn::Lanes(tag);
    const auto set = [tag](std::size_t v) HWY_ATTR { return hn::Set(tag, static_cast<std::uint16_t>(v)); };
    const auto two = set(2);
    auto largest = hn::Zero(tag);
    for (std::size_t i = 0; i < rowStep; i += 2 * lanes) {
        const auto nearer = [=](auto least, const std::uint16_t* from, std::size_t step, auto square) HWY_ATTR {
            const auto near = hn::Min(hn::LoadU(tag, from - step), hn::LoadU(tag, from + step));
            return hn::Min(least, hn::SaturatedAdd(near, square));
        };
        auto a = hn::LoadU(tag, squares + i), b = hn::LoadU(tag, squares + i + lanes);
        auto square = set(first * first), difference = set(2 * first + 1);
        // Most pixels of a picture with many features are done after a few steps, so that looking seldom pays.
        constexpr std::size_t untilLook = 4;
        for (std::size_t step = first; step < first + rowStep;) {
            for (std::size_t k = 0; k < untilLook; k++, step++) {
                a = nearer(a, s + i, step, square);
                b = nearer(b, s + i + lanes, step, square);
                square = hn::SaturatedAdd(square, difference);
                difference = hn::Add(difference, two);
            }
            // Squares up to the next one are as low as they get.
            if (hn::AllTrue(tag, hn::Eq(hn::Max(hn::Max(a, b), square), square))) break;
        }
        hn::StoreU(a, tag, squares + i);
        hn::StoreU(b, tag, squares + i + lanes);
        largest = hn::Max(largest, hn::Max(a, b));
    }
    return hn::GetLane(hn::MaxOfLanes(tag, largest));
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
std::uint16_t NearSquaresBlock(const std::uint16_t* s, std::uint16_t* squares, std::size_t first)
{
    return HWY_DYNAMIC_DISPATCH(NearSquares)(s, squares, first);
}
void RootRow(const std::uint16_t* squares, std::uint8_t* d, std::size_t n)
{
    HWY_DYNAMIC_DISPATCH(Roots)(squares, d, n);
}

} // namespace Tesk::kernels
#endif
