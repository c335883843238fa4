// Rows of sums over boxes, and of the means and deviations that they give.
#include "image/filter/BoxKernels.h"

#include "image/kernels/ByLevel.h"

#include <cmath>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "image/filter/BoxKernels.cpp"
#include <hwy/foreach_target.h>

#include "image/filter/FilterSteps-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Tesk::kernels {
namespace HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

/// sums[i] += enter[i] - leave[i] by pairs of vectors in the wide lanes; the last few by the plain loop, since these
/// rows may be the last ones of an image.
template <typename S, typename T, typename F>
HWY_INLINE std::size_t Move(const S* enter, const S* leave, T* sums, std::size_t n, F f)
{
    const hn::ScalableTag<T> wide;
    const hn::Rebind<S, decltype(wide)> narrow;
    std::size_t i = 0;
    for (; i + hn::Lanes(wide) <= n; i += hn::Lanes(wide))
        hn::StoreU(hn::Add(hn::LoadU(wide, sums + i), f(hn::PromoteTo(wide, hn::LoadU(narrow, enter + i)),
                                                        hn::PromoteTo(wide, hn::LoadU(narrow, leave + i)))),
                   wide, sums + i);
    return i;
}

void MovePixelSums(const std::uint8_t* enter, const std::uint8_t* leave, std::uint16_t* sums, std::size_t n)
{
    const std::size_t i = Move(enter, leave, sums, n, [](auto a, auto b) HWY_ATTR { return hn::Sub(a, b); });
    MoveSumsPlain(enter + i, leave + i, sums + i, n - i);
}

void MoveWordSums(const std::uint16_t* enter, const std::uint16_t* leave, std::uint32_t* sums, std::size_t n)
{
    const std::size_t i = Move(enter, leave, sums, n, [](auto a, auto b) HWY_ATTR { return hn::Sub(a, b); });
    MoveSumsPlain(enter + i, leave + i, sums + i, n - i);
}

void MoveByteSquares(const std::uint8_t* enter, const std::uint8_t* leave, std::uint32_t* sums, std::size_t n)
{
    const std::size_t i =
        Move(enter, leave, sums, n, [](auto a, auto b) HWY_ATTR { return hn::Mul(hn::Add(a, b), hn::Sub(a, b)); });
    MoveSquaresPlain(enter + i, leave + i, sums + i, n - i);
}

/// The sums of the lanes up to each, within every block of 128 bits.
HWY_INLINE hn::Vec<hn::CappedTag<std::uint16_t, 16>> SumsInBlock(hn::CappedTag<std::uint16_t, 16> d,
                                                                 hn::Vec<hn::CappedTag<std::uint16_t, 16>> v)
{
    v = hn::Add(v, hn::ShiftLeftLanes<1>(d, v));
    v = hn::Add(v, hn::ShiftLeftLanes<2>(d, v));
    return hn::Add(v, hn::ShiftLeftLanes<4>(d, v));
}

HWY_INLINE hn::Vec<hn::CappedTag<std::uint32_t, 8>> SumsInBlock(hn::CappedTag<std::uint32_t, 8> d,
                                                                hn::Vec<hn::CappedTag<std::uint32_t, 8>> v)
{
    v = hn::Add(v, hn::ShiftLeftLanes<1>(d, v));
    return hn::Add(v, hn::ShiftLeftLanes<2>(d, v));
}

/// The whole of each step is added up apart from the carry, so that a step waits for one addition of the former one.
template <typename T, typename F>
HWY_INLINE void Prefix(T* p, std::size_t n, F load)
{
    const hn::CappedTag<T, 32 / sizeof(T)> d;
    constexpr std::size_t block = 16 / sizeof(T);
    auto carry = hn::Zero(d);
    p[0] = 0;
    for (std::size_t i = 0; i < n; i += hn::Lanes(d)) {
        auto v = SumsInBlock(d, load(d, i));
        auto total = hn::Broadcast<block - 1>(v);
        if constexpr (hn::MaxLanes(hn::CappedTag<T, 32 / sizeof(T)>()) > block) {
            v = hn::Add(v, hn::ConcatLowerLower(d, total, hn::Zero(d)));
            total = hn::Add(total, hn::ConcatLowerUpper(d, total, total));
        }
        hn::StoreU(hn::Add(v, carry), d, p + 1 + i);
        carry = hn::Add(carry, total);
    }
}

void PrefixWords(const std::uint16_t* s, std::uint16_t* p, std::size_t n)
{
    Prefix(p, n, [s](auto d, std::size_t i) HWY_ATTR { return hn::LoadU(d, s + i); });
}

void PrefixWide(const std::uint16_t* s, std::uint32_t* p, std::size_t n)
{
    Prefix(p, n, [s](auto d, std::size_t i) HWY_ATTR {
        return hn::PromoteTo(d, hn::LoadU(hn::Rebind<std::uint16_t, decltype(d)>(), s + i));
    });
}

void PrefixInts(const std::uint32_t* s, std::uint32_t* p, std::size_t n)
{
    Prefix(p, n, [s](auto d, std::size_t i) HWY_ATTR { return hn::LoadU(d, s + i); });
}

void WordQuotients(const std::uint16_t* p, std::size_t width, std::uint8_t* d, std::size_t n, std::uint32_t N)
{
    const Words words;
    const Shorts shorts;
    const hn::Rebind<std::uint8_t, Shorts> halves;
    const WordQuotient quotient(N);
    EachStep(halves, d, n, [&](std::size_t i) HWY_ATTR {
        const VW sum = hn::Sub(hn::LoadU(words, p + i + width), hn::LoadU(words, p + i));
        return hn::DemoteTo(halves, hn::BitCast(shorts, quotient(sum)));
    });
}

template <typename T>
HWY_INLINE void Quotients(const std::uint32_t* p, std::size_t width, T* d, std::size_t n, std::uint32_t N)
{
    const Ints ints;
    const hn::RebindToSigned<Ints> wholes;
    const hn::Rebind<T, Ints> narrow;
    const IntQuotient quotient(N);
    EachStep(narrow, d, n, [&](std::size_t i) HWY_ATTR {
        const auto sum = hn::Sub(hn::LoadU(ints, p + i + width), hn::LoadU(ints, p + i));
        return hn::DemoteTo(narrow, hn::BitCast(wholes, quotient(sum)));
    });
}

void IntQuotientsToBytes(const std::uint32_t* p, std::size_t width, std::uint8_t* d, std::size_t n, std::uint32_t N)
{
    Quotients(p, width, d, n, N);
}

void IntQuotientsToWords(const std::uint32_t* p, std::size_t width, std::uint16_t* d, std::size_t n, std::uint32_t N)
{
    Quotients(p, width, d, n, N);
}

void Deviations(const std::uint32_t* s, const std::uint32_t* q, std::size_t width, std::uint8_t* d, std::size_t n,
                std::uint32_t N)
{
    using VI = hn::Vec<Ints>;
    const Ints ints;
    const hn::RebindToSigned<Ints> wholes;
    const hn::RebindToFloat<Ints> floats;
    const hn::Repartition<std::uint64_t, Ints> longs;
    const hn::Repartition<double, Ints> doubles;
    const hn::Rebind<std::uint8_t, Ints> bytes;
    const auto count = hn::Set(ints, N);
    const auto odd = [&](VI v) HWY_ATTR { return hn::BitCast(ints, hn::ShiftRight<32>(hn::BitCast(longs, v))); };
    // Even and odd lanes have their exact products in 64 bits each.
    const auto spreadOf = [&](VI S, VI Q) HWY_ATTR { return hn::Sub(hn::MulEven(count, Q), hn::MulEven(S, S)); };
    // A number below 2^52 becomes a double within the digits of 2^52. Half of one more keeps it from 0, and the factor
    // 2^-896 is what the exponents of double and single precision differ by: then 32 of its bits are a float.
    const auto digits = hn::BitCast(longs, hn::Set(doubles, 4503599627370496.0));
    const auto rest = hn::Set(doubles, 4503599627370496.0 - 0.5);
    const auto scale = hn::Set(doubles, std::ldexp(1.000001 / N / N, -896));
    const auto scaled = [&](auto spread) HWY_ATTR {
        const auto real = hn::Sub(hn::BitCast(doubles, hn::Or(spread, digits)), rest);
        return hn::BitCast(longs, hn::Mul(real, scale));
    };
    const auto upper = hn::Set(longs, 0xffffffff00000000u);
    EachStep(bytes, d, n, [&](std::size_t i) HWY_ATTR {
        const VI S = hn::Sub(hn::LoadU(ints, s + i + width), hn::LoadU(ints, s + i));
        const VI Q = hn::Sub(hn::LoadU(ints, q + i + width), hn::LoadU(ints, q + i));
        const auto even = spreadOf(S, Q), other = spreadOf(odd(S), odd(Q));
        // A root in single precision, lifted a little, is the wanted one or the next; then the exact squares decide.
        const auto quotient = hn::Or(hn::ShiftRight<29>(scaled(even)), hn::And(hn::ShiftLeft<3>(scaled(other)), upper));
        const auto guess = hn::ConvertTo(wholes, hn::Sqrt(hn::BitCast(floats, quotient)));
        const VI root = hn::Mul(hn::BitCast(ints, guess), count), oddRoot = odd(root);
        const auto left = hn::Sub(even, hn::MulEven(root, root)), right = hn::Sub(other, hn::MulEven(oddRoot, oddRoot));
        const auto signs = hn::BitCast(wholes, hn::Or(hn::ShiftRight<32>(left), hn::And(right, upper)));
        return hn::DemoteTo(bytes, hn::Add(guess, hn::ShiftRight<31>(signs)));
    });
}

#else // one lane has no halves to work in: the plain loops serve

void MovePixelSums(const std::uint8_t* enter, const std::uint8_t* leave, std::uint16_t* sums, std::size_t n)
{
    MoveSumsPlain(enter, leave, sums, n);
}

void MoveWordSums(const std::uint16_t* enter, const std::uint16_t* leave, std::uint32_t* sums, std::size_t n)
{
    MoveSumsPlain(enter, leave, sums, n);
}

void MoveByteSquares(const std::uint8_t* enter, const std::uint8_t* leave, std::uint32_t* sums, std::size_t n)
{
    MoveSquaresPlain(enter, leave, sums, n);
}

void PrefixWords(const std::uint16_t* s, std::uint16_t* p, std::size_t n)
{
    PrefixSumsPlain(s, p, n);
}

void PrefixWide(const std::uint16_t* s, std::uint32_t* p, std::size_t n)
{
    PrefixSumsPlain(s, p, n);
}

void PrefixInts(const std::uint32_t* s, std::uint32_t* p, std::size_t n)
{
    PrefixSumsPlain(s, p, n);
}

void WordQuotients(const std::uint16_t* p, std::size_t width, std::uint8_t* d, std::size_t n, std::uint32_t N)
{
    QuotientRowPlain(p, width, d, n, N);
}

void IntQuotientsToBytes(const std::uint32_t* p, std::size_t width, std::uint8_t* d, std::size_t n, std::uint32_t N)
{
    QuotientRowPlain(p, width, d, n, N);
}

void IntQuotientsToWords(const std::uint32_t* p, std::size_t width, std::uint16_t* d, std::size_t n, std::uint32_t N)
{
    QuotientRowPlain(p, width, d, n, N);
}

void Deviations(const std::uint32_t* s, const std::uint32_t* q, std::size_t width, std::uint8_t* d, std::size_t n,
                std::uint32_t N)
{
    DeviationRowPlain(s, q, width, d, n, N);
}

#endif

} // namespace HWY_NAMESPACE
} // namespace Tesk::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Tesk::kernels {

HWY_EXPORT(MovePixelSums);
HWY_EXPORT(MoveWordSums);
HWY_EXPORT(MoveByteSquares);
HWY_EXPORT(PrefixWords);
HWY_EXPORT(PrefixWide);
HWY_EXPORT(PrefixInts);
HWY_EXPORT(WordQuotients);
HWY_EXPORT(IntQuotientsToBytes);
HWY_EXPORT(IntQuotientsToWords);
HWY_EXPORT(Deviations);

void MoveSums(const std::uint8_t* enter, const std::uint8_t* leave, std::uint16_t* sums, std::size_t n)
{
    ByLevel(MoveSumsPlain, HWY_DYNAMIC_DISPATCH(MovePixelSums))(enter, leave, sums, n);
}

void MoveSums(const std::uint16_t* enter, const std::uint16_t* leave, std::uint32_t* sums, std::size_t n)
{
    ByLevel(MoveSumsPlain, HWY_DYNAMIC_DISPATCH(MoveWordSums))(enter, leave, sums, n);
}

void MoveSquares(const std::uint8_t* enter, const std::uint8_t* leave, std::uint32_t* sums, std::size_t n)
{
    ByLevel(MoveSquaresPlain, HWY_DYNAMIC_DISPATCH(MoveByteSquares))(enter, leave, sums, n);
}

void PrefixSums(const std::uint16_t* s, std::uint16_t* p, std::size_t n)
{
    ByLevel(PrefixSumsPlain, HWY_DYNAMIC_DISPATCH(PrefixWords))(s, p, n);
}

void PrefixSums(const std::uint16_t* s, std::uint32_t* p, std::size_t n)
{
    ByLevel(PrefixSumsPlain, HWY_DYNAMIC_DISPATCH(PrefixWide))(s, p, n);
}

void PrefixSums(const std::uint32_t* s, std::uint32_t* p, std::size_t n)
{
    ByLevel(PrefixSumsPlain, HWY_DYNAMIC_DISPATCH(PrefixInts))(s, p, n);
}

void QuotientRow(const std::uint16_t* p, std::size_t width, std::uint8_t* d, std::size_t n, std::uint32_t N)
{
    ByLevel(QuotientRowPlain, HWY_DYNAMIC_DISPATCH(WordQuotients))(p, width, d, n, N);
}

void QuotientRow(const std::uint32_t* p, std::size_t width, std::uint8_t* d, std::size_t n, std::uint32_t N)
{
    ByLevel(QuotientRowPlain, HWY_DYNAMIC_DISPATCH(IntQuotientsToBytes))(p, width, d, n, N);
}

void QuotientRow(const std::uint32_t* p, std::size_t width, std::uint16_t* d, std::size_t n, std::uint32_t N)
{
    ByLevel(QuotientRowPlain, HWY_DYNAMIC_DISPATCH(IntQuotientsToWords))(p, width, d, n, N);
}

void DeviationRow(const std::uint32_t* s, const std::uint32_t* q, std::size_t width, std::uint8_t* d, std::size_t n,
                  std::uint32_t N)
{
    ByLevel(DeviationRowPlain, HWY_DYNAMIC_DISPATCH(Deviations))(s, q, width, d, n, N);
}

} // namespace Tesk::kernels
#endif
