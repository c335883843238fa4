// What the vector forms of the neighbourhood filters share; included once for every target.
#if defined(TESK_FILTER_STEPS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef TESK_FILTER_STEPS_INL
#undef TESK_FILTER_STEPS_INL
#else
#define TESK_FILTER_STEPS_INL
#endif

#include <hwy/highway.h>

#include <cstdint>
#include <cstring>

HWY_BEFORE_NAMESPACE();
namespace Tesk::kernels {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

using Bytes = hn::ScalableTag<std::uint8_t>;
using Words = hn::Repartition<std::uint16_t, Bytes>;
using Shorts = hn::Repartition<std::int16_t, Bytes>;
using Ints = hn::Repartition<std::uint32_t, Bytes>;
using VB = hn::Vec<Bytes>;
using VS = hn::Vec<Shorts>;
using VW = hn::Vec<Words>;

/// Steps of `lanes` that cover `n` results; the last one goes back to end where the row ends. A row shorter than a step
/// goes through a buffer. `f(i)` gives the vector that stands at `i`.
template <typename D, typename T, typename F>
HWY_INLINE void EachStep(D tag, T* d, std::size_t n, F f)
{
    const std::size_t lanes = hn::Lanes(tag);
    if (n < lanes) {
        HWY_ALIGN T rest[HWY_MAX_BYTES / sizeof(T)];
        hn::Store(f(std::size_t{0}), tag, rest);
        std::memcpy(d, rest, n * sizeof(T));
        return;
    }
    std::size_t i = 0;
    for (; i + lanes <= n; i += lanes)
        hn::StoreU(f(i), tag, d + i);
    if (i < n) hn::StoreU(f(n - lanes), tag, d + (n - lanes));
}

/// Results from 0 to 255 in even and odd lanes, as bytes in their order.
HWY_INLINE VB Interleave(VS even, VS odd)
{
    return hn::BitCast(Bytes(), hn::Or(even, hn::ShiftLeft<8>(odd)));
}

// Quotients: sum / N is ((sum + addend) * multiplier) >> shift for every sum that can be, where the error of the
// rounded multiplier, at most N / 2 in units of its last place, times the largest sum stays below 1 << shift.

template <typename T>
struct Reciprocal
{
    T multiplier, addend;
    int shift;

    explicit Reciprocal(std::uint32_t N)
    {
        constexpr int bits = 8 * sizeof(T);
        int log = 0;
        while (N >> (log + 1) != 0)
            log++;
        shift = log;
        const auto power = std::uint64_t{1} << (bits + log);
        const std::uint64_t below = power / N, rest = power % N;
        const bool up = 2 * rest > N;
        multiplier = static_cast<T>(up ? below + 1 : N == 1 ? power - 1 : below);
        addend = up ? 0 : 1;
    }
};

/// In all lanes.
template <class D>
struct Reciprocals
{
    hn::Vec<D> multiplier, addend;
    int shift;

    explicit Reciprocals(std::uint32_t N)
    {
        const Reciprocal<hn::TFromD<D>> r(N);
        multiplier = hn::Set(D(), r.multiplier);
        addend = hn::Set(D(), r.addend);
        shift = r.shift;
    }
};

/// Of 16-bit sums.
template <class D = Words>
struct WordQuotient : Reciprocals<D>
{
    explicit WordQuotient(std::uint32_t N) : Reciprocals<D>(N) {}
    HWY_INLINE hn::Vec<D> operator()(hn::Vec<D> sum) const
    {
        return hn::ShiftRightSame(hn::MulHigh(hn::Add(sum, this->addend), this->multiplier), this->shift);
    }
};

/// Of 32-bit sums.
template <class D = Ints>
struct IntQuotient : Reciprocals<D>
{
    explicit IntQuotient(std::uint32_t N) : Reciprocals<D>(N) {}
    HWY_INLINE hn::Vec<D> operator()(hn::Vec<D> sum) const
    {
        const D ints;
        const hn::Repartition<std::uint64_t, D> longs;
        sum = hn::Add(sum, this->addend);
        const auto oddSum = hn::BitCast(ints, hn::ShiftRight<32>(hn::BitCast(longs, sum)));
        const auto even = hn::ShiftRight<32>(hn::MulEven(sum, this->multiplier));
        const auto odd = hn::AndNot(hn::Set(longs, 0xffffffff), hn::MulEven(oddSum, this->multiplier));
        return hn::ShiftRightSame(hn::BitCast(ints, hn::Or(even, odd)), this->shift);
    }
};

#endif

} // namespace HWY_NAMESPACE
} // namespace Tesk::kernels
HWY_AFTER_NAMESPACE();

#endif
