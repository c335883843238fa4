// The row kernels of the neighbourhood filters, in vectors.
#include "image/filter/FilterKernels.h"

#include "image/kernels/ByLevel.h"

#include <cmath>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "image/filter/FilterKernels.cpp"
#include <hwy/foreach_target.h>

#include "image/filter/FilterSteps-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Tesk::kernels {
namespace HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

/// The pixels of a row around those of a step, as 16-bit lanes: even and odd bytes, and the neighbours of those to the
/// left and right that are not among them.
struct Around
{
    VS left, even, odd, right;
};

HWY_INLINE Around Take(const std::uint8_t* s)
{
    const Bytes bytes;
    const Words words;
    const Shorts shorts;
    const VW low = hn::Set(words, 0x00ff);
    const VW before = hn::BitCast(words, hn::LoadU(bytes, s - 1)), here = hn::BitCast(words, hn::LoadU(bytes, s)),
             after = hn::BitCast(words, hn::LoadU(bytes, s + 1));
    return {hn::BitCast(shorts, hn::And(before, low)), hn::BitCast(shorts, hn::And(here, low)),
            hn::BitCast(shorts, hn::ShiftRight<8>(here)), hn::BitCast(shorts, hn::ShiftRight<8>(after))};
}

/// A column of three pixels.
struct Column
{
    VS above, here, below;

    HWY_INLINE VS Sum() const { return hn::Add(hn::Add(above, below), here); }
    HWY_INLINE VS Binomial() const { return hn::Add(hn::Add(above, below), hn::Add(here, here)); }
    HWY_INLINE VS Difference() const { return hn::Sub(below, above); }
};

/// `f(left, middle, right)`, three columns, gives the result in the range of a byte.
template <typename F>
HWY_INLINE void EachSquare(const std::uint8_t* above, const std::uint8_t* here, const std::uint8_t* below,
                           std::uint8_t* d, std::size_t n, F f)
{
    EachStep(Bytes(), d, n, [&](std::size_t i) HWY_ATTR {
        const Around a = Take(above + i), h = Take(here + i), b = Take(below + i);
        const Column left{a.left, h.left, b.left}, even{a.even, h.even, b.even}, odd{a.odd, h.odd, b.odd},
            right{a.right, h.right, b.right};
        return Interleave(f(left, even, odd), f(even, odd, right));
    });
}

HWY_INLINE VS Clamped(VS v)
{
    const Shorts shorts;
    return hn::Min(hn::Max(v, hn::Zero(shorts)), hn::Set(shorts, 255));
}

HWY_INLINE VS Saturated(VS v)
{
    return hn::Min(v, hn::Set(Shorts(), 255));
}

/// (v * Factor) >> Shift without sign: the product is below 65536.
template <int Factor, int Shift>
HWY_INLINE VS Scaled(VS v)
{
    const Words words;
    return hn::BitCast(Shorts(), hn::ShiftRight<Shift>(hn::Mul(hn::BitCast(words, v), hn::Set(words, Factor))));
}

struct SobelMask
{
    static HWY_INLINE VS X(const Column& l, const Column&, const Column& r)
    {
        return hn::Abs(hn::Sub(r.Binomial(), l.Binomial()));
    }
    static HWY_INLINE VS Y(const Column& l, const Column& m, const Column& r)
    {
        const VS d = m.Difference();
        return hn::Abs(hn::Add(hn::Add(l.Difference(), d), hn::Add(d, r.Difference())));
    }
};

struct PrewittMask
{
    static HWY_INLINE VS X(const Column& l, const Column&, const Column& r)
    {
        return hn::Abs(hn::Sub(r.Sum(), l.Sum()));
    }
    static HWY_INLINE VS Y(const Column& l, const Column& m, const Column& r)
    {
        return hn::Abs(hn::Add(hn::Add(l.Difference(), m.Difference()), r.Difference()));
    }
};

struct LargerOf
{
    template <typename M>
    static HWY_INLINE VS Of(const Column& l, const Column& m, const Column& r)
    {
        return hn::Max(M::X(l, m, r), M::Y(l, m, r));
    }
};

struct SumOf
{
    template <typename M>
    static HWY_INLINE VS Of(const Column& l, const Column& m, const Column& r)
    {
        return hn::Add(M::X(l, m, r), M::Y(l, m, r));
    }
};

struct XOf
{
    template <typename M>
    static HWY_INLINE VS Of(const Column& l, const Column& m, const Column& r)
    {
        return M::X(l, m, r);
    }
};

struct YOf
{
    template <typename M>
    static HWY_INLINE VS Of(const Column& l, const Column& m, const Column& r)
    {
        return M::Y(l, m, r);
    }
};

/// A byte filter on the four neighbours: differences without widening.
template <typename F>
HWY_INLINE void EachCross(const std::uint8_t* above, const std::uint8_t* here, const std::uint8_t* below,
                          std::uint8_t* d, std::size_t n, F f)
{
    const Bytes bytes;
    const auto distance = [](VB a, VB b) HWY_ATTR { return hn::Or(hn::SaturatedSub(a, b), hn::SaturatedSub(b, a)); };
    EachStep(bytes, d, n, [&](std::size_t i) HWY_ATTR {
        return f(distance(hn::LoadU(bytes, here + i - 1), hn::LoadU(bytes, here + i + 1)),
                 distance(hn::LoadU(bytes, above + i), hn::LoadU(bytes, below + i)));
    });
}

void Square3Step(Square3 filter, const std::uint8_t* a, const std::uint8_t* h, const std::uint8_t* b, std::uint8_t* d,
                 std::size_t n)
{
    using C = const Column&;
#define TESK_SQUARE(Name, Body)                                                                                        \
    case Square3::Name:                                                                                                \
        return EachSquare(a, h, b, d, n, [](C l, C m, C r) HWY_ATTR { return Body; })
#define TESK_CROSS(Name, Body)                                                                                         \
    case Square3::Name:                                                                                                \
        return EachCross(a, h, b, d, n, [](VB x, VB y) HWY_ATTR { return Body; })

    const auto sum = [](C l, C m, C r) HWY_ATTR { return hn::Add(hn::Add(l.Sum(), r.Sum()), m.Sum()); };
    const auto cross = [](C l, C m, C r) HWY_ATTR {
        const VS four = hn::Add(hn::Add(l.here, r.here), hn::Add(m.above, m.below));
        return hn::Sub(hn::Add(hn::ShiftLeft<2>(m.here), m.here), four);
    };
    switch (filter) {
    case Square3::Smooth:
        return EachSquare(a, h, b, d, n, [&](C l, C m, C r) HWY_ATTR {
            const VS s = sum(l, m, r);
            return hn::ShiftRight<3>(hn::Sub(s, hn::ShiftRight<6>(hn::Sub(hn::ShiftLeft<3>(s), s))));
        });
    case Square3::Smooth8:
        return EachSquare(a, h, b, d, n, [&](C l, C m, C r) HWY_ATTR {
            return hn::ShiftRight<3>(hn::Add(hn::Add(l.Sum(), r.Sum()), hn::Add(m.above, m.below)));
        });
    case Square3::Binomial:
        return EachSquare(a, h, b, d, n, [](C l, C m, C r) HWY_ATTR {
            const VS c = m.Binomial();
            return hn::ShiftRight<4>(hn::Add(hn::Add(l.Binomial(), c), hn::Add(c, r.Binomial())));
        });
    case Square3::Sharpen4:
        return EachSquare(a, h, b, d, n, [&](C l, C m, C r) HWY_ATTR { return Clamped(cross(l, m, r)); });
    case Square3::Sharpen4Absolute:
        return EachSquare(a, h, b, d, n, [&](C l, C m, C r) HWY_ATTR { return Saturated(hn::Abs(cross(l, m, r))); });
    case Square3::Sharpen8:
        return EachSquare(a, h, b, d, n, [&](C l, C m, C r) HWY_ATTR {
            return Clamped(hn::Sub(hn::Mul(m.here, hn::Set(Shorts(), 10)), sum(l, m, r)));
        });
    case Square3::Sharpen8Absolute:
        return EachSquare(a, h, b, d, n, [&](C l, C m, C r) HWY_ATTR {
            return Saturated(hn::Abs(hn::Sub(hn::Mul(m.here, hn::Set(Shorts(), 10)), sum(l, m, r))));
        });
        TESK_CROSS(GradientLarger, hn::Max(x, y));
        TESK_CROSS(GradientX, (static_cast<void>(y), x));
        TESK_CROSS(GradientY, (static_cast<void>(x), y));
        TESK_CROSS(GradientSum, hn::SaturatedAdd(x, y));
        // The rounding average loses its rounding where the sum is odd.
        TESK_CROSS(GradientHalfSum, hn::Sub(hn::AverageRound(x, y), hn::And(hn::Xor(x, y), hn::Set(Bytes(), 1))));
        TESK_SQUARE(SobelLarger, Saturated(LargerOf::Of<SobelMask>(l, m, r)));
        TESK_SQUARE(SobelSum, Saturated(SumOf::Of<SobelMask>(l, m, r)));
        TESK_SQUARE(SobelX, Saturated(XOf::Of<SobelMask>(l, m, r)));
        TESK_SQUARE(SobelY, Saturated(YOf::Of<SobelMask>(l, m, r)));
        TESK_SQUARE(SobelLargerScaled, hn::ShiftRight<2>(LargerOf::Of<SobelMask>(l, m, r)));
        TESK_SQUARE(SobelSumScaled, hn::ShiftRight<3>(SumOf::Of<SobelMask>(l, m, r)));
        TESK_SQUARE(SobelXScaled, hn::ShiftRight<2>(XOf::Of<SobelMask>(l, m, r)));
        TESK_SQUARE(SobelYScaled, hn::ShiftRight<2>(YOf::Of<SobelMask>(l, m, r)));
        TESK_SQUARE(PrewittLarger, Saturated(LargerOf::Of<PrewittMask>(l, m, r)));
        TESK_SQUARE(PrewittSum, Saturated(SumOf::Of<PrewittMask>(l, m, r)));
        TESK_SQUARE(PrewittX, Saturated(XOf::Of<PrewittMask>(l, m, r)));
        TESK_SQUARE(PrewittY, Saturated(YOf::Of<PrewittMask>(l, m, r)));
        TESK_SQUARE(PrewittLargerScaled, (Scaled<42, 7>(LargerOf::Of<PrewittMask>(l, m, r))));
        TESK_SQUARE(PrewittSumScaled, (Scaled<42, 8>(SumOf::Of<PrewittMask>(l, m, r))));
        TESK_SQUARE(PrewittXScaled, (Scaled<85, 8>(XOf::Of<PrewittMask>(l, m, r))));
        TESK_SQUARE(PrewittYScaled, (Scaled<85, 8>(YOf::Of<PrewittMask>(l, m, r))));
    }
#undef TESK_SQUARE
#undef TESK_CROSS
}

void UnsharpStep(const std::uint8_t* above, const std::uint8_t* here, const std::uint8_t* below, std::uint8_t* d,
                 std::size_t n, std::ptrdiff_t step, int K)
{
    const Bytes bytes;
    const Words words;
    const Shorts shorts;
    const VS factor = hn::Set(shorts, static_cast<std::int16_t>(K));
    const VW low = hn::Set(words, 0x00ff);
    EachStep(bytes, d, n, [&](std::size_t i) HWY_ATTR {
        VS even = hn::Zero(shorts), odd = even;
        const auto add = [&](const std::uint8_t* s) HWY_ATTR {
            const VW v = hn::BitCast(words, hn::LoadU(bytes, s + i));
            even = hn::Add(even, hn::BitCast(shorts, hn::And(v, low)));
            odd = hn::Add(odd, hn::BitCast(shorts, hn::ShiftRight<8>(v)));
        };
        add(above - step), add(above), add(above + step);
        add(here - step), add(here + step);
        add(below - step), add(below), add(below + step);
        const VW centre = hn::BitCast(words, hn::LoadU(bytes, here + i));
        // The high half of a product by 64 times the difference is the product shifted by 10.
        const auto result = [&](VS s, VS sum) HWY_ATTR {
            const VS difference = hn::Sub(s, hn::ShiftRight<3>(sum));
            return Clamped(hn::SaturatedAdd(s, hn::MulHigh(hn::ShiftLeft<6>(difference), factor)));
        };
        return Interleave(result(hn::BitCast(shorts, hn::And(centre, low)), even),
                          result(hn::BitCast(shorts, hn::ShiftRight<8>(centre)), odd));
    });
}

/// Symmetric binomial weights on 16-bit lanes: every sum is below 65536. `at(k)` gives the k-th of `order + 1` values.
template <typename F>
HWY_INLINE VW Weighted(int order, F at)
{
    const Words words;
    const auto both = [&](int k) HWY_ATTR { return hn::Add(at(k), at(order - k)); };
    const auto times = [&](VW v, std::uint16_t factor) HWY_ATTR { return hn::Mul(v, hn::Set(words, factor)); };
    switch (order) {
    case 4:
        return hn::Add(hn::Add(both(0), hn::ShiftLeft<2>(both(1))), times(at(2), 6));
    case 6:
        return hn::Add(hn::Add(both(0), times(both(1), 6)), hn::Add(times(both(2), 15), times(at(3), 20)));
    default:
        return hn::Add(hn::Add(hn::Add(both(0), hn::ShiftLeft<3>(both(1))), times(both(2), 28)),
                       hn::Add(times(both(3), 56), times(at(4), 70)));
    }
}

void BinomialWordsStep(int order, const std::uint8_t* s, std::uint16_t* d, std::size_t n)
{
    const Words words;
    const hn::Rebind<std::uint8_t, Words> halves;
    const std::uint8_t* first = s - order / 2;
    EachStep(words, d, n, [&](std::size_t i) HWY_ATTR {
        return Weighted(order, [&](int k) HWY_ATTR {
            return hn::PromoteTo(words, hn::LoadU(halves, first + i + static_cast<std::size_t>(k)));
        });
    });
}

void BinomialColumnsStep(int order, const std::uint16_t* const* rows, std::uint16_t* d, std::size_t n)
{
    const Words words;
    const auto at = [&](std::size_t i)
                        HWY_ATTR { return [=](int k) HWY_ATTR { return hn::LoadU(Words(), rows[k] + i); }; };
    // A shift by s of the sum of 16 bits times weights that reach 1 << (8 + s) is that of the high parts, which fits,
    // and the shifted one of the low parts.
    const VW low6 = hn::Set(words, 15), low8 = hn::Set(words, 255);
    EachStep(words, d, n, [&](std::size_t i) HWY_ATTR {
        const auto value = at(i);
        if (order == 4) return Weighted(4, value);
        if (order == 6) {
            const VW high = Weighted(6, [&](int k) HWY_ATTR { return hn::ShiftRight<4>(value(k)); });
            return hn::Add(high,
                           hn::ShiftRight<4>(Weighted(6, [&](int k) HWY_ATTR { return hn::And(value(k), low6); })));
        }
        const VW high = Weighted(8, [&](int k) HWY_ATTR { return hn::ShiftRight<8>(value(k)); });
        return hn::Add(high, hn::ShiftRight<8>(Weighted(8, [&](int k) HWY_ATTR { return hn::And(value(k), low8); })));
    });
}

void ShiftedDifferenceStep(const std::uint16_t* a, const std::uint16_t* b, std::int16_t* d, std::size_t n, int shift)
{
    const Words words;
    const Shorts shorts;
    const VW one = hn::Set(words, 1);
    EachStep(shorts, d, n, [&](std::size_t i) HWY_ATTR {
        const VW p = hn::LoadU(words, a + i), q = hn::LoadU(words, b + i);
        // Half the difference, which takes 17 bits, from the halves; a borrow where only q is odd.
        const VW borrow = hn::And(hn::AndNot(p, q), one);
        const VW half = hn::Sub(hn::Sub(hn::ShiftRight<1>(p), hn::ShiftRight<1>(q)), borrow);
        const VS signedHalf = hn::BitCast(shorts, half);
        return shift == 7 ? hn::ShiftRight<6>(signedHalf) : hn::ShiftRight<5>(signedHalf);
    });
}

void MagnitudeStep(const std::int16_t* x, const std::int16_t* y, std::uint8_t* d, std::size_t n)
{
#if HWY_ARCH_X86
    const Shorts shorts;
    const hn::Repartition<std::int32_t, Shorts> ints;
    const hn::Repartition<float, Shorts> floats;
    const hn::Rebind<std::uint8_t, Shorts> halves;
    // Squares and adds neighbouring lanes, in their order on this processor.
    const auto root = [&](VS pairs) HWY_ATTR {
        auto none = hn::Zero(ints);
        const auto squares = hn::ReorderWidenMulAccumulate(ints, pairs, pairs, hn::Zero(ints), none);
        return hn::ConvertTo(ints, hn::Sqrt(hn::ConvertTo(floats, squares)));
    };
    EachStep(halves, d, n, [&](std::size_t i) HWY_ATTR {
        const VS gx = hn::LoadU(shorts, x + i), gy = hn::LoadU(shorts, y + i);
        // Interleaving and packing both work within blocks of 128 bits, so the order comes back.
        const auto lower = root(hn::InterleaveLower(gx, gy)), upper = root(hn::InterleaveUpper(shorts, gx, gy));
        return hn::DemoteTo(halves, hn::ReorderDemote2To(shorts, lower, upper));
    });
#else
    MagnitudeRowPlain(x, y, d, n);
#endif
}

#else // one lane has no halves to work in: the plain loops serve

void Square3Step(Square3 filter, const std::uint8_t* above, const std::uint8_t* here, const std::uint8_t* below,
                 std::uint8_t* d, std::size_t n)
{
    Square3RowPlain(filter, above, here, below, d, n);
}

void UnsharpStep(const std::uint8_t* above, const std::uint8_t* here, const std::uint8_t* below, std::uint8_t* d,
                 std::size_t n, std::ptrdiff_t step, int K)
{
    UnsharpRowPlain(above, here, below, d, n, step, K);
}

void BinomialWordsStep(int order, const std::uint8_t* s, std::uint16_t* d, std::size_t n)
{
    BinomialWordsRowPlain(order, s, d, n);
}

void BinomialColumnsStep(int order, const std::uint16_t* const* rows, std::uint16_t* d, std::size_t n)
{
    BinomialColumnsRowPlain(order, rows, d, n);
}

void ShiftedDifferenceStep(const std::uint16_t* a, const std::uint16_t* b, std::int16_t* d, std::size_t n, int shift)
{
    ShiftedDifferenceRowPlain(a, b, d, n, shift);
}

void MagnitudeStep(const std::int16_t* x, const std::int16_t* y, std::uint8_t* d, std::size_t n)
{
    MagnitudeRowPlain(x, y, d, n);
}

#endif

} // namespace HWY_NAMESPACE
} // namespace Tesk::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Tesk::kernels {

HWY_EXPORT(Square3Step);
HWY_EXPORT(UnsharpStep);
HWY_EXPORT(BinomialWordsStep);
HWY_EXPORT(BinomialColumnsStep);
HWY_EXPORT(ShiftedDifferenceStep);
HWY_EXPORT(MagnitudeStep);

void Square3Row(Square3 Filter, const std::uint8_t* above, const std::uint8_t* here, const std::uint8_t* below,
                std::uint8_t* d, std::size_t n)
{
    ByLevel(Square3RowPlain, HWY_DYNAMIC_DISPATCH(Square3Step))(Filter, above, here, below, d, n);
}

void UnsharpRow(const std::uint8_t* above, const std::uint8_t* here, const std::uint8_t* below, std::uint8_t* d,
                std::size_t n, std::ptrdiff_t step, int K)
{
    // The vectors multiply by 16 bits.
    const bool fits = K >= -32767 && K <= 32767;
    const auto row = fits ? ByLevel(UnsharpRowPlain, HWY_DYNAMIC_DISPATCH(UnsharpStep)) : UnsharpRowPlain;
    row(above, here, below, d, n, step, K);
}

void BinomialWordsRow(int Order, const std::uint8_t* s, std::uint16_t* d, std::size_t n)
{
    ByLevel(BinomialWordsRowPlain, HWY_DYNAMIC_DISPATCH(BinomialWordsStep))(Order, s, d, n);
}

void BinomialColumnsRow(int Order, const std::uint16_t* const* rows, std::uint16_t* d, std::size_t n)
{
    ByLevel(BinomialColumnsRowPlain, HWY_DYNAMIC_DISPATCH(BinomialColumnsStep))(Order, rows, d, n);
}

void ShiftedDifferenceRow(const std::uint16_t* a, const std::uint16_t* b, std::int16_t* d, std::size_t n, int Shift)
{
    ByLevel(ShiftedDifferenceRowPlain, HWY_DYNAMIC_DISPATCH(ShiftedDifferenceStep))(a, b, d, n, Shift);
}

void MagnitudeRow(const std::int16_t* x, const std::int16_t* y, std::uint8_t* d, std::size_t n)
{
    ByLevel(MagnitudeRowPlain, HWY_DYNAMIC_DISPATCH(MagnitudeStep))(x, y, d, n);
}

} // namespace Tesk::kernels
#endif
