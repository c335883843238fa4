// The kernel that samples gray pictures along a probe.
//
// The sums are defined in doubles. Several at a time are worked out in floats, from positions in 2^-25ths of a pixel,
// with a bound on the error; those that lie so near a whole number that truncation may differ are done again by the
// definition, one in a hundred.
#include "gauge/edge/SamplerKernels.h"

#include "image/kernels/ByLevel.h"

#include <algorithm>
#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "gauge/edge/SamplerKernels.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Tesk::kernels {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

const hn::CappedTag<float, 8> floats;
const hn::RebindToSigned<decltype(floats)> integers;
using Integers = hn::VFromD<decltype(integers)>;
using Floats = hn::VFromD<decltype(floats)>;
constexpr int lanes = static_cast<int>(hn::MaxLanes(floats));
/// Beyond it floats do not tell the sums well enough.
constexpr int broadest = 32;
/// Bits behind the point of positions. Those before it hold what a block of lanes can reach to both sides.
constexpr int bits = 25, farthest = lanes + broadest;
static_assert(2 * farthest + 1 < 1 << (31 - bits + 1));

HWY_INLINE std::int32_t Fixed(double v)
{
    // Rounded half up, since it may be negative.
    constexpr double one = 1 << bits, shift = 1024;
    return static_cast<std::int32_t>(static_cast<std::int64_t>((v + shift) * one + 0.5) -
                                     static_cast<std::int64_t>(shift * one));
}

/// A coordinate of neighbours along the probe, from a pixel before all of them.
struct Places
{
    Integers value;

    explicit HWY_INLINE Places(double step)
    {
        HWY_ALIGN std::int32_t steps[lanes];
        for (int k = 0; k < lanes; k++)
            steps[k] = Fixed(k * step);
        value = hn::Load(integers, steps);
    }
    HWY_INLINE void Move(Integers by) { value = hn::Add(value, by); }
    HWY_INLINE Integers Whole() const
    {
        const hn::RebindToUnsigned<decltype(floats)> words;
        return hn::BitCast(integers, hn::ShiftRight<bits>(hn::BitCast(words, value)));
    }
    HWY_INLINE Floats Fraction() const
    {
        constexpr int one = 1 << bits;
        const auto rest = hn::ConvertTo(floats, hn::And(value, hn::Set(integers, one - 1)));
        return hn::Mul(rest, hn::Set(floats, 1.0f / one));
    }
};

/// Four bytes from each of four places, of which the first two are the neighbours in a row.
HWY_INLINE auto FourAt(const std::uint8_t* first, std::ptrdiff_t block, const std::int32_t* offsets)
{
    const hn::CappedTag<std::uint32_t, 1> single;
    const hn::CappedTag<std::uint32_t, 2> pair;
    const hn::CappedTag<std::uint32_t, 4> four;
    const auto at = [&](int k) HWY_ATTR {
        return hn::LoadU(single, reinterpret_cast<const std::uint32_t*>(first + (block + offsets[k])));
    };
    return hn::Combine(four, hn::Combine(pair, at(3), at(2)), hn::Combine(pair, at(1), at(0)));
}

template <typename D>
HWY_INLINE Integers Gathered([[maybe_unused]] D words, const std::uint8_t* first, std::ptrdiff_t block,
                             const std::int32_t* offsets)
{
    const hn::RebindToSigned<D> integersOf;
    if constexpr (hn::MaxLanes(D()) == 8)
        return hn::BitCast(integersOf,
                           hn::Combine(words, FourAt(first, block, offsets + 4), FourAt(first, block, offsets)));
    else
        return hn::BitCast(integersOf, FourAt(first, block, offsets));
}

/// Whether all places are in 16ths of a pixel: floats are then exact.
HWY_INLINE bool IsCoarse(const edges::ProbeGrid& grid)
{
    const auto isCoarse = [](XY v) {
        return v.X * 16 == static_cast<double>(static_cast<std::int64_t>(v.X * 16)) &&
               v.Y * 16 == static_cast<double>(static_cast<std::int64_t>(v.Y * 16));
    };
    return isCoarse(grid.along) && isCoarse(grid.start) && isCoarse(grid.across);
}

void Sums(const GrayRows& rows, const edges::ProbeGrid& grid, double half, bool exact, std::int32_t* samples)
{
    // Of the positions and the interpolations, and of the rounding of their sum.
    constexpr double ofEach = 1e-3, ofSum = 2e-5;
    const auto bound = static_cast<float>(exact ? -1 : grid.breadth * (ofEach + ofSum * grid.breadth));
    const hn::RebindToUnsigned<decltype(floats)> words;
    const auto least = hn::Set(floats, bound), most = hn::Set(floats, 1 - bound);
    const Places alongX(grid.along.X), alongY(grid.along.Y);
    const auto acrossX = hn::Set(integers, Fixed(grid.across.X)), acrossY = hn::Set(integers, Fixed(grid.across.Y));
    const auto pitch = hn::Set(integers, rows.pitch), byte = hn::Set(integers, 0xff);
    HWY_ALIGN std::int32_t offsets[lanes];
    HWY_ALIGN float rests[lanes];
    // One or two samples behind the last block cost less by themselves.
    constexpr int few = 2;
    const int inBlocks = grid.samples % lanes <= few ? grid.samples - grid.samples % lanes : grid.samples;
    for (int i = inBlocks; i < grid.samples; i++)
        samples[i] = BilinearSum(rows, grid, i, half);
    for (int next = 0; next < inBlocks; next += lanes) {
        const int i = std::min(next, grid.samples - lanes);
        const XY at = grid.At(i, 0);
        const int column = static_cast<int>(at.X) - farthest, row = static_cast<int>(at.Y) - farthest;
        const std::ptrdiff_t block = static_cast<std::ptrdiff_t>(rows.pitch) * row + column, below = block + rows.pitch;
        Places x = alongX, y = alongY;
        x.Move(hn::Set(integers, Fixed(at.X - column)));
        y.Move(hn::Set(integers, Fixed(at.Y - row)));
        auto corners = hn::Zero(integers);
        auto sum = hn::Zero(floats);
        for (int j = 0; j < grid.breadth; j++) {
            hn::Store(hn::Add(hn::Mul(y.Whole(), pitch), x.Whole()), integers, offsets);
            const auto top = Gathered(words, rows.first, block, offsets),
                       bottom = Gathered(words, rows.first, below, offsets);
            const auto a = hn::And(top, byte), b = hn::And(hn::ShiftRight<8>(top), byte);
            const auto c = hn::And(bottom, byte), d = hn::And(hn::ShiftRight<8>(bottom), byte);
            const auto right = hn::Sub(b, a), down = hn::Sub(c, a), both = hn::Sub(hn::Sub(d, c), right);
            const auto fractionX = x.Fraction(), fractionY = y.Fraction();
            const auto across = hn::Add(hn::ConvertTo(floats, down), hn::Mul(fractionX, hn::ConvertTo(floats, both)));
            corners = hn::Add(corners, a);
            sum = hn::Add(sum, hn::Add(hn::Mul(fractionX, hn::ConvertTo(floats, right)), hn::Mul(fractionY, across)));
            x.Move(acrossX);
            y.Move(acrossY);
        }
        const auto total =
            hn::Add(hn::Add(hn::ConvertTo(floats, corners), sum), hn::Set(floats, static_cast<float>(half)));
        const auto whole = hn::ConvertTo(integers, total);
        hn::StoreU(whole, integers, samples + i);
        const auto rest = hn::Sub(total, hn::ConvertTo(floats, whole));
        if (hn::AllFalse(floats, hn::Or(hn::Lt(rest, least), hn::Gt(rest, most)))) continue;
        hn::Store(rest, floats, rests);
        for (int k = 0; k < lanes; k++)
            if (rests[k] < bound || rests[k] > 1 - bound) samples[i + k] = BilinearSum(rows, grid, i + k, half);
    }
}

#endif

void Bilinear(const GrayRows& rows, const edges::ProbeGrid& grid, double half, std::int32_t* samples)
{
#if HWY_TARGET != HWY_SCALAR
    // Without the half most sums over flat places would lie on whole numbers.
    const bool exact = IsCoarse(grid);
    if (grid.samples >= lanes && grid.breadth <= broadest && (half > 0 || exact))
        return Sums(rows, grid, half, exact, samples);
#endif
    BilinearSumsPlain(rows, grid, half, samples);
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
