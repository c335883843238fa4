// The kernel that samples gray pictures along a probe.
#include "gauge/edge/SamplerKernels.h"

#include "image/kernels/ByLevel.h"

#include <cstring>
#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "gauge/edge/SamplerKernels.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Tesk::kernels {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

using Reals = hn::CappedTag<double, 4>;
using Integers = hn::Rebind<std::int32_t, Reals>;

/// Two neighbours in a row for each lane, the first in the lower byte.
template <typename D>
auto Pairs(D integers, const std::uint8_t* base, const std::int32_t* offsets)
{
    constexpr std::size_t lanes = hn::MaxLanes(D());
    using Word = std::conditional_t<lanes == 4, std::uint64_t, std::uint32_t>;
    Word word = 0;
    for (std::size_t k = 0; k < lanes; k++) {
        std::uint16_t pair;
        std::memcpy(&pair, base + offsets[k], sizeof pair);
        word |= static_cast<Word>(pair) << 16 * k;
    }
    const hn::Simd<Word, 1, 0> whole;
    return hn::PromoteTo(integers, hn::BitCast(hn::Rebind<std::uint16_t, D>(), hn::Set(whole, word)));
}

/// The value between the two neighbours of each lane.
template <typename V, typename F>
F Along(V pairs, F fraction)
{
    const auto first = hn::And(pairs, hn::Set(Integers(), 0xff)), second = hn::ShiftRight<8>(pairs);
    return hn::Add(hn::PromoteTo(Reals(), first), hn::Mul(fraction, hn::PromoteTo(Reals(), hn::Sub(second, first))));
}

#endif

void Bilinear(const GrayRows& rows, const edges::ProbeGrid& grid, double half, std::int32_t* samples)
{
#if HWY_TARGET == HWY_SCALAR
    BilinearSumsPlain(rows, grid, half, samples);
#else
    // Lanes are neighbours along the probe, so that each adds up across it in the order of the definition.
    const Reals reals;
    const Integers integers;
    constexpr std::size_t lanes = hn::MaxLanes(Reals());
    const auto pitch = hn::Set(integers, rows.pitch);
    const std::uint8_t *upper = rows.first, *lower = rows.first + rows.pitch;
    HWY_ALIGN std::int32_t offsets[lanes], tail[lanes];
    const int last = grid.samples - 1;
    for (int i = 0; i <= last; i += static_cast<int>(lanes)) {
        const auto index = hn::Min(hn::Iota(reals, i), hn::Set(reals, last));
        const auto x0 = hn::Add(hn::Set(reals, grid.start.X), hn::Mul(index, hn::Set(reals, grid.along.X)));
        const auto y0 = hn::Add(hn::Set(reals, grid.start.Y), hn::Mul(index, hn::Set(reals, grid.along.Y)));
        auto sum = hn::Zero(reals);
        for (int j = 0; j < grid.breadth; j++) {
            const auto x = hn::Add(x0, hn::Set(reals, j * grid.across.X));
            const auto y = hn::Add(y0, hn::Set(reals, j * grid.across.Y));
            const auto column = hn::DemoteTo(integers, x), row = hn::DemoteTo(integers, y);
            hn::Store(hn::Add(hn::Mul(row, pitch), column), integers, offsets);
            const auto fractionX = hn::Sub(x, hn::PromoteTo(reals, column)),
                       fractionY = hn::Sub(y, hn::PromoteTo(reals, row));
            const auto top = Along(Pairs(integers, upper, offsets), fractionX);
            const auto bottom = Along(Pairs(integers, lower, offsets), fractionX);
            sum = hn::Add(sum, hn::Add(top, hn::Mul(fractionY, hn::Sub(bottom, top))));
        }
        const auto whole = hn::DemoteTo(integers, hn::Add(sum, hn::Set(reals, half)));
        if (last - i + 1 >= static_cast<int>(lanes)) {
            hn::StoreU(whole, integers, samples + i);
        } else {
            hn::Store(whole, integers, tail);
            std::memcpy(samples + i, tail, static_cast<std::size_t>(last - i + 1) * sizeof *tail);
        }
    }
#endif
}

} // namespace HWY_NAMESPACE
} // namespace Tesk::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Tesk::kernels {

HWY_EXPORT(Bilinear);

void BilinearSums(const GrayRows& rows, const edges::ProbeGrid& grid, double half, std::int32_t* samples)
{
    ByLevel(BilinearSumsPlain, HWY_DYNAMIC_DISPATCH(Bilinear))(rows, grid, half, samples);
}

} // namespace Tesk::kernels
#endif
