// The row kernels of Gaussians: weighted masks, and cascades of running sums.
#include "image/filter/GaussKernels.h"

#include "image/kernels/ByLevel.h"

#include <algorithm>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "image/filter/GaussKernels.cpp"
#include <hwy/foreach_target.h>

#include "image/filter/FilterSteps-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Tesk::kernels {
namespace HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

/// Even and odd bytes apart, opposite lines added before they are weighed.
template <int radius>
HWY_INLINE void WeighLines(const Mask& mask, const std::uint8_t* const* lines, std::uint8_t* d, std::size_t n)
{
    const Bytes bytes;
    const Words words;
    const VW low = hn::Set(words, 0x00ff);
    const WordQuotient quotient(mask.sum);
    VW weights[radius + 1];
    for (int k = 0; k <= radius; k++)
        weights[k] = hn::Set(words, mask.weights[k]);
    EachStep(bytes, d, n, [&](std::size_t i) HWY_ATTR {
        const VW middle = hn::BitCast(words, hn::LoadU(bytes, lines[radius] + i));
        VW even = hn::Mul(hn::And(middle, low), weights[radius]),
           odd = hn::Mul(hn::ShiftRight<8>(middle), weights[radius]);
        for (int k = 0; k < radius; k++) {
            const VW a = hn::BitCast(words, hn::LoadU(bytes, lines[k] + i)),
                     b = hn::BitCast(words, hn::LoadU(bytes, lines[2 * radius - k] + i));
            even = hn::Add(even, hn::Mul(hn::Add(hn::And(a, low), hn::And(b, low)), weights[k]));
            odd = hn::Add(odd, hn::Mul(hn::Add(hn::ShiftRight<8>(a), hn::ShiftRight<8>(b)), weights[k]));
        }
        return Interleave(hn::BitCast(Shorts(), quotient(even)), hn::BitCast(Shorts(), quotient(odd)));
    });
}

void WeighMask(const Mask& mask, const std::uint8_t* const* lines, std::uint8_t* d, std::size_t n)
{
    switch (mask.radius) {
    case 1:
        return WeighLines<1>(mask, lines, d, n);
    case 2:
        return WeighLines<2>(mask, lines, d, n);
    case 3:
        return WeighLines<3>(mask, lines, d, n);
    case 4:
        return WeighLines<4>(mask, lines, d, n);
    case 5:
        return WeighLines<5>(mask, lines, d, n);
    case 6:
        return WeighLines<6>(mask, lines, d, n);
    case 7:
        return WeighLines<7>(mask, lines, d, n);
    case 8:
        return WeighLines<8>(mask, lines, d, n);
    default:
        std::copy_n(lines[0], n, d);
    }
}

// Cascades of boxes

/// One part of a strip, as many columns as fit in a vector, down the lines. The comb of three boxes, two of which have
/// the same width, is taken of six lines; `comb(t)` gives it, and `put` gets the line that is done.
template <typename State, typename Comb, typename Put>
HWY_INLINE void Integrate(std::size_t warmUp, std::size_t n, State state, Comb comb, Put put)
{
    for (std::size_t t = 0; t < warmUp; t++)
        state.Add(comb(t));
    for (std::size_t t = 0; t < n; t++) {
        state.Add(comb(t + warmUp));
        put(t, state.Result());
    }
}

using StripWords = hn::CappedTag<std::uint16_t, stripLanes>;
using StripShorts = hn::RebindToSigned<StripWords>;
using StripInts = hn::Repartition<std::uint32_t, StripWords>;
using StripWholes = hn::RebindToSigned<StripInts>;

/// Sums that stay below 65536, and so are right modulo 65536, whatever the integrators on the way hold.
template <int boxes>
struct WordState
{
    hn::Vec<StripWords> sums[boxes];
    WordQuotient<StripWords> quotient;

    explicit WordState(std::uint32_t N) : quotient(N)
    {
        for (auto& sum : sums)
            sum = hn::Zero(StripWords());
    }
    HWY_INLINE void Add(hn::Vec<StripWords> v)
    {
        for (auto& sum : sums)
            v = sum = hn::Add(sum, v);
    }
    HWY_INLINE hn::Vec<StripShorts> Result() const { return hn::BitCast(StripShorts(), quotient(sums[boxes - 1])); }
};

struct IntState
{
    hn::Vec<StripInts> lower[3], upper[3];
    IntQuotient<StripInts> quotient;

    explicit IntState(std::uint32_t N) : quotient(N)
    {
        for (auto& sum : lower)
            sum = hn::Zero(StripInts());
        for (auto& sum : upper)
            sum = hn::Zero(StripInts());
    }
    HWY_INLINE void Add(hn::Vec<StripWords> v)
    {
        // Widened within blocks of 128 bits, as the packing at the end works.
        const auto zero = hn::Zero(StripWords());
        const auto widen = [](auto pairs) HWY_ATTR {
            return hn::BitCast(StripInts(), hn::ShiftRight<16>(hn::BitCast(StripWholes(), pairs)));
        };
        auto a = widen(hn::InterleaveLower(StripWords(), zero, v)),
             b = widen(hn::InterleaveUpper(StripWords(), zero, v));
        for (auto& sum : lower)
            a = sum = hn::Add(sum, a);
        for (auto& sum : upper)
            b = sum = hn::Add(sum, b);
    }
    HWY_INLINE hn::Vec<StripShorts> Result() const
    {
        return hn::ReorderDemote2To(StripShorts(), hn::BitCast(StripWholes(), quotient(lower[2])),
                                    hn::BitCast(StripWholes(), quotient(upper[2])));
    }
};

void CascadeSteps(const Cascade& boxes, const std::uint8_t* s, std::uint8_t* d, std::size_t n)
{
    const StripWords words;
    const hn::Rebind<std::uint8_t, StripWords> bytes;
    const std::size_t warmUp = 2 * boxes.Reach();
    // Two of the widths are equal, or two are 1.
    std::size_t twice = boxes.widths[1], once = boxes.widths[0];
    if (boxes.widths[0] == boxes.widths[1]) once = boxes.widths[2];
    const std::uint32_t N = boxes.Product();
    for (std::size_t part = 0; part < stripLanes; part += hn::Lanes(words)) {
        const std::uint8_t* from = s + part;
        const auto at = [=](std::size_t t, std::size_t back) HWY_ATTR {
            const std::uint8_t* line = from + stripLanes * t - stripLanes * back;
            return hn::PromoteTo(StripWords(), hn::LoadU(hn::Rebind<std::uint8_t, StripWords>(), line));
        };
        const auto put = [=](std::size_t t, hn::Vec<StripShorts> v)
                             HWY_ATTR { hn::StoreU(hn::DemoteTo(bytes, v), bytes, d + part + stripLanes * t); };
        const auto second = [=](std::size_t t) HWY_ATTR {
            const auto middle = at(t, twice);
            return hn::Sub(hn::Add(at(t, 0), at(t, 2 * twice)), hn::Add(middle, middle));
        };
        const auto third = [=](std::size_t t) HWY_ATTR {
            const auto ends =
                hn::Add(hn::Sub(at(t, 0), at(t, once)), hn::Sub(at(t, 2 * twice), at(t, 2 * twice + once)));
            const auto middle = hn::Sub(at(t, twice), at(t, twice + once));
            return hn::Sub(ends, hn::Add(middle, middle));
        };
        if (N == 1)
            for (std::size_t t = 0; t < n; t++)
                std::memcpy(d + part + stripLanes * t, from + stripLanes * t, hn::Lanes(words));
        else if (twice == 1)
            Integrate(
                warmUp, n, WordState<1>(N), [=](std::size_t t) HWY_ATTR { return hn::Sub(at(t, 0), at(t, once)); },
                put);
        else if (once == 1)
            Integrate(warmUp, n, WordState<2>(N), second, put);
        else if (N <= 255)
            Integrate(warmUp, n, WordState<3>(N), third, put);
        else
            Integrate(warmUp, n, IntState(N), third, put);
    }
}

/// Four perfect shuffles of sixteen rows of sixteen.
#else // one lane has no halves to work in: the plain loops serve

void WeighMask(const Mask& mask, const std::uint8_t* const* lines, std::uint8_t* d, std::size_t n)
{
    MaskRowPlain(mask, lines, d, n);
}

void CascadeSteps(const Cascade& boxes, const std::uint8_t* s, std::uint8_t* d, std::size_t n)
{
    CascadeStripPlain(boxes, s, d, n);
}

#endif

} // namespace HWY_NAMESPACE
} // namespace Tesk::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Tesk::kernels {

HWY_EXPORT(WeighMask);
HWY_EXPORT(CascadeSteps);

Mask::Mask(const Cascade& Boxes)
    : radius(static_cast<int>(Boxes.Reach())), weights{}, sum(static_cast<std::uint16_t>(Boxes.Product()))
{
    std::uint16_t all[2 * largestMaskRadius + 1] = {1};
    std::size_t size = 1;
    for (const std::size_t width : Boxes.widths) {
        std::uint16_t next[2 * largestMaskRadius + 1] = {};
        for (std::size_t i = 0; i < size; i++)
            for (std::size_t k = 0; k < width; k++)
                next[i + k] = static_cast<std::uint16_t>(next[i + k] + all[i]);
        size += width - 1;
        std::copy_n(next, size, all);
    }
    std::copy_n(all, radius + 1, weights);
}

void MaskRow(const Mask& Weights, const std::uint8_t* const* lines, std::uint8_t* d, std::size_t n)
{
    ByLevel(MaskRowPlain, HWY_DYNAMIC_DISPATCH(WeighMask))(Weights, lines, d, n);
}

void CascadeStrip(const Cascade& Boxes, const std::uint8_t* s, std::uint8_t* d, std::size_t n)
{
    ByLevel(CascadeStripPlain, HWY_DYNAMIC_DISPATCH(CascadeSteps))(Boxes, s, d, n);
}

void MaskRowPlain(const Mask& Weights, const std::uint8_t* const* lines, std::uint8_t* d, std::size_t n)
{
    for (std::size_t i = 0; i < n; i++) {
        int sum = 0;
        for (int k = 0; k <= 2 * Weights.radius; k++)
            sum += Weights.weights[std::min(k, 2 * Weights.radius - k)] * lines[k][i];
        d[i] = static_cast<std::uint8_t>(sum / Weights.sum);
    }
}

void CascadeStripPlain(const Cascade& Boxes, const std::uint8_t* s, std::uint8_t* d, std::size_t n)
{
    const std::size_t reach = Boxes.Reach(), a = Boxes.widths[0], b = Boxes.widths[1], c = Boxes.widths[2];
    const std::uint32_t product = Boxes.Product();
    for (std::size_t lane = 0; lane < stripLanes; lane++) {
        const auto at = [&](const std::uint8_t* line, std::size_t back) { return int{*(line - stripLanes * back)}; };
        std::uint32_t first = 0, second = 0, third = 0;
        for (std::size_t t = 0; t < n + 2 * reach; t++) {
            const std::uint8_t* line = s + stripLanes * t + lane;
            const int comb = at(line, 0) - at(line, a) - at(line, b) - at(line, c) + at(line, a + b) + at(line, a + c) +
                             at(line, b + c) - at(line, a + b + c);
            first += static_cast<std::uint32_t>(comb);
            second += first;
            third += second;
            if (t >= 2 * reach) d[stripLanes * (t - 2 * reach) + lane] = static_cast<std::uint8_t>(third / product);
        }
    }
}

} // namespace Tesk::kernels
#endif
