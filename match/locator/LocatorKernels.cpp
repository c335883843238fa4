// The sums under the scores of a locator, in vectors.
#include "match/locator/LocatorKernels.h"

#include "image/kernels/ByLevel.h"

#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "match/locator/LocatorKernels.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Tesk::kernels {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR

void SumOverRuns(const std::uint8_t* image, const PatternRun* runs, std::size_t count, const std::uint8_t* pattern,
                 RunSums* sums, std::size_t steps)
{
    SumRunsPlain(image, runs, count, pattern, sums, steps);
}

bool CoverRuns(const std::uint8_t* mask, const PatternRun* runs, std::size_t count)
{
    return CoversRunsPlain(mask, runs, count);
}

void SumOverVectors(const std::int32_t* gradient, const std::int32_t* offsets, const std::int32_t* pattern,
                    std::size_t count, VectorSums* sums, std::size_t steps)
{
    SumVectorsPlain(gradient, offsets, pattern, count, sums, steps);
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::CappedTag<std::uint8_t, runStep>;
using Shorts = hn::Repartition<std::int16_t, Bytes>;
using Ints = hn::Repartition<std::int32_t, Bytes>;
using Longs = hn::Repartition<std::uint64_t, Bytes>;

/// Ones for the bytes of a run, then zeros.
alignas(64) constexpr std::uint8_t insideRun[2 * runStep] = {255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255,
                                                             255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255,
                                                             255, 255, 255, 255, 255, 255, 255, 255, 255, 255};

HWY_INLINE hn::Vec<Bytes> InsideOf(std::size_t left)
{
    return hn::LoadU(Bytes(), insideRun + runStep - left);
}

/// The sums of one origin in vectors: 32 bits hold a lane's share of `flushAfter` pixels.
class Sums
{
public:
    HWY_INLINE Sums()
        : image_(hn::Zero(Longs())), squares_(hn::Zero(Ints())), squares1_(hn::Zero(Ints())),
          products_(hn::Zero(Ints())), products1_(hn::Zero(Ints()))
    {}

    HWY_INLINE void Add(hn::Vec<Bytes> i, hn::Vec<Bytes> t)
    {
        const Bytes bytes;
        const Shorts shorts;
        const Ints ints;
        const auto zero = hn::Zero(bytes);
        const auto i0 = hn::BitCast(shorts, hn::InterleaveLower(bytes, i, zero)),
                   i1 = hn::BitCast(shorts, hn::InterleaveUpper(bytes, i, zero)),
                   t0 = hn::BitCast(shorts, hn::InterleaveLower(bytes, t, zero)),
                   t1 = hn::BitCast(shorts, hn::InterleaveUpper(bytes, t, zero));
        image_ = hn::Add(image_, hn::SumsOf8(i));
        squares_ = hn::ReorderWidenMulAccumulate(ints, i0, i0, squares_, squares1_);
        squares_ = hn::ReorderWidenMulAccumulate(ints, i1, i1, squares_, squares1_);
        products_ = hn::ReorderWidenMulAccumulate(ints, i0, t0, products_, products1_);
        products_ = hn::ReorderWidenMulAccumulate(ints, i1, t1, products_, products1_);
    }

    HWY_INLINE void Flush(RunSums& sums)
    {
        const Ints ints;
        sums.squares += Total(hn::Add(squares_, squares1_));
        sums.products += Total(hn::Add(products_, products1_));
        squares_ = squares1_ = products_ = products1_ = hn::Zero(ints);
        sums.image += static_cast<std::int64_t>(hn::GetLane(hn::SumOfLanes(Longs(), image_)));
        image_ = hn::Zero(Longs());
    }

private:
    // None is negative, so that the upper half of a pair of lanes is one shift away.
    static HWY_INLINE std::int64_t Total(hn::Vec<Ints> v)
    {
        const Longs longs;
        const auto pairs = hn::BitCast(longs, v);
        const auto sum = hn::Add(hn::And(pairs, hn::Set(longs, 0xffffffffu)), hn::ShiftRight<32>(pairs));
        return static_cast<std::int64_t>(hn::GetLane(hn::SumOfLanes(longs, sum)));
    }

    hn::Vec<Longs> image_;
    hn::Vec<Ints> squares_, squares1_, products_, products1_;
};

void SumOverRuns(const std::uint8_t* image, const PatternRun* runs, std::size_t count, const std::uint8_t* pattern,
                 RunSums* sums, std::size_t steps)
{
    const Bytes bytes;
    const std::size_t lanes = hn::Lanes(bytes);
    constexpr std::size_t flushAfter = 32768;
    for (std::size_t step = 0; step < steps; step++) {
        RunSums total;
        Sums partial;
        std::size_t added = 0;
        const std::uint8_t* t = pattern;
        for (const PatternRun *run = runs, *end = runs + count; run != end; run++) {
            const std::uint8_t* i = image + step + run->offset;
            if (added + run->length > flushAfter) {
                partial.Flush(total);
                added = 0;
            }
            added += run->length;
            std::size_t x = 0;
            for (; x + lanes <= run->length; x += lanes)
                partial.Add(hn::LoadU(bytes, i + x), hn::LoadU(bytes, t + x));
            if (x < run->length)
                partial.Add(hn::And(hn::LoadU(bytes, i + x), InsideOf(run->length - x)), hn::LoadU(bytes, t + x));
            t += run->Padded();
        }
        partial.Flush(total);
        sums[step] = total;
    }
}

bool CoverRuns(const std::uint8_t* mask, const PatternRun* runs, std::size_t count)
{
    const Bytes bytes;
    const std::size_t lanes = hn::Lanes(bytes);
    const auto half = hn::Set(bytes, std::uint8_t{128});
    for (const PatternRun *run = runs, *end = runs + count; run != end; run++) {
        auto all = half;
        for (std::size_t x = 0; x < run->length; x += lanes) {
            auto v = hn::LoadU(bytes, mask + run->offset + x);
            if (run->length - x < lanes) v = hn::Or(v, hn::Not(InsideOf(run->length - x)));
            all = hn::And(all, v);
        }
        if (!hn::AllTrue(bytes, hn::Eq(all, half))) return false;
    }
    return true;
}

void SumOverVectors(const std::int32_t* gradient, const std::int32_t* offsets, const std::int32_t* pattern,
                    std::size_t count, VectorSums* sums, std::size_t steps)
{
    const Ints ints;
    const Shorts shorts;
    const std::size_t lanes = hn::Lanes(ints);
    // A lane adds two products a time, of at most 32767 * 767 each.
    constexpr std::size_t flushAfter = 40;
    for (std::size_t step = 0; step < steps; step++) {
        VectorSums total;
        auto dot = hn::Zero(ints), dot1 = dot, energy = dot, energy1 = dot;
        std::size_t i = 0;
        const auto flush = [&]() HWY_ATTR {
            alignas(64) std::int32_t lane[hn::MaxLanes(Ints())];
            const auto add = [&](auto v, std::int64_t& sum) HWY_ATTR {
                hn::Store(v, ints, lane);
                for (std::size_t k = 0; k < lanes; k++)
                    sum += lane[k];
            };
            add(hn::Add(dot, dot1), total.dot);
            add(hn::Add(energy, energy1), total.energy);
            dot = dot1 = energy = energy1 = hn::Zero(ints);
        };
        std::size_t pending = 0;
        for (; i + lanes <= count; i += lanes) {
            const auto g = hn::BitCast(shorts, hn::GatherIndex(ints, gradient + step, hn::LoadU(ints, offsets + i))),
                       t = hn::BitCast(shorts, hn::LoadU(ints, pattern + i));
            dot = hn::ReorderWidenMulAccumulate(ints, g, t, dot, dot1);
            energy = hn::ReorderWidenMulAccumulate(ints, g, g, energy, energy1);
            if (++pending == flushAfter) {
                flush();
                pending = 0;
            }
        }
        flush();
        VectorSums rest;
        SumVectorsPlain(gradient + step, offsets + i, pattern + i, count - i, &rest, 1);
        sums[step] = {total.dot + rest.dot, total.energy + rest.energy};
    }
}

#endif

} // namespace HWY_NAMESPACE
} // namespace Tesk::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Tesk::kernels {

HWY_EXPORT(SumOverRuns);
HWY_EXPORT(CoverRuns);
HWY_EXPORT(SumOverVectors);

void SumRunsPlain(const std::uint8_t* image, const PatternRun* runs, std::size_t count, const std::uint8_t* pattern,
                  RunSums* sums, std::size_t steps)
{
    for (std::size_t step = 0; step < steps; step++) {
        RunSums total;
        const std::uint8_t* t = pattern;
        for (const PatternRun *run = runs, *end = runs + count; run != end; run++) {
            const std::uint8_t* i = image + step + run->offset;
            for (std::size_t x = 0; x < run->length; x++) {
                total.image += i[x];
                total.squares += i[x] * i[x];
                total.products += t[x] * i[x];
            }
            t += run->Padded();
        }
        sums[step] = total;
    }
}

bool CoversRunsPlain(const std::uint8_t* mask, const PatternRun* runs, std::size_t count)
{
    for (const PatternRun *run = runs, *end = runs + count; run != end; run++)
        for (std::size_t x = 0; x < run->length; x++)
            if (mask[run->offset + static_cast<std::ptrdiff_t>(x)] < 128) return false;
    return true;
}

void SumVectorsPlain(const std::int32_t* gradient, const std::int32_t* offsets, const std::int32_t* pattern,
                     std::size_t count, VectorSums* sums, std::size_t steps)
{
    for (std::size_t step = 0; step < steps; step++) {
        VectorSums total;
        for (std::size_t i = 0; i < count; i++) {
            std::int16_t g[2], t[2];
            std::memcpy(g, gradient + step + offsets[i], sizeof g);
            std::memcpy(t, pattern + i, sizeof t);
            total.dot += t[0] * g[0] + t[1] * g[1];
            total.energy += g[0] * g[0] + g[1] * g[1];
        }
        sums[step] = total;
    }
}

void SumRuns(const std::uint8_t* image, const PatternRun* runs, std::size_t count, const std::uint8_t* pattern,
             RunSums* sums, std::size_t steps)
{
    ByLevel(SumRunsPlain, HWY_DYNAMIC_DISPATCH(SumOverRuns))(image, runs, count, pattern, sums, steps);
}

bool CoversRuns(const std::uint8_t* mask, const PatternRun* runs, std::size_t count)
{
    return ByLevel(CoversRunsPlain, HWY_DYNAMIC_DISPATCH(CoverRuns))(mask, runs, count);
}

void SumVectors(const std::int32_t* gradient, const std::int32_t* offsets, const std::int32_t* pattern,
                std::size_t count, VectorSums* sums, std::size_t steps)
{
    ByLevel(SumVectorsPlain, HWY_DYNAMIC_DISPATCH(SumOverVectors))(gradient, offsets, pattern, count, sums, steps);
}

} // namespace Tesk::kernels
#endif
