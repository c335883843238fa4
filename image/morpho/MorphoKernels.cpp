// The row kernels of extrema, in vectors.
#include "image/morpho/MorphoKernels.h"

#include "image/kernels/ByLevel.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "image/morpho/MorphoKernels.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Tesk::kernels {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

template <Extremum Which, typename V>
V Outer(V a, V b)
{
    return Which == Extremum::Maximum ? hn::Max(a, b) : hn::Min(a, b);
}

template <Extremum Which, typename T>
T OuterOf(T a, T b)
{
    return (Which == Extremum::Maximum) == (a > b) ? a : b;
}

/// Whole vectors, then a last one that ends with the row: to take an extremum twice changes nothing. Rows shorter than
/// a vector go pixel by pixel.
template <Extremum Which, int count, typename T>
void OfRows(const T* const* rows, T* d, std::size_t n)
{
    const hn::ScalableTag<T> tag;
    const std::size_t lanes = hn::Lanes(tag);
    const T* r[count];
    for (int k = 0; k < count; k++)
        r[k] = rows[k];
    const auto step = [&](std::size_t i) {
        auto v = hn::LoadU(tag, r[0] + i);
        for (int k = 1; k < count; k++)
            v = Outer<Which>(v, hn::LoadU(tag, r[k] + i));
        hn::StoreU(v, tag, d + i);
    };
    std::size_t i = 0;
    for (; i + lanes <= n; i += lanes)
        step(i);
    if (i < n && n >= lanes) {
        step(n - lanes);
        return;
    }
    for (; i < n; i++) {
        T v = r[0][i];
        for (int k = 1; k < count; k++)
            v = OuterOf<Which>(v, r[k][i]);
        d[i] = v;
    }
}

template <Extremum Which, typename T>
void OfRowsCounted(const T* const* rows, int count, T* d, std::size_t n)
{
    switch (count) {
    case 2:
        return OfRows<Which, 2>(rows, d, n);
    case 3:
        return OfRows<Which, 3>(rows, d, n);
    case 4:
        return OfRows<Which, 4>(rows, d, n);
    default:
        return OfRows<Which, 5>(rows, d, n);
    }
}

template <typename T>
void OfRowsWhich(Extremum which, const T* const* rows, int count, T* d, std::size_t n)
{
    if (which == Extremum::Maximum)
        OfRowsCounted<Extremum::Maximum>(rows, count, d, n);
    else
        OfRowsCounted<Extremum::Minimum>(rows, count, d, n);
}

/// As `OfRows`, for both results.
template <Extremum Which, int count, typename T>
void OfRowPair(const T* const* rows, T* d0, T* d1, std::size_t n)
{
    const hn::ScalableTag<T> tag;
    const std::size_t lanes = hn::Lanes(tag);
    const T* r[count];
    for (int k = 0; k < count; k++)
        r[k] = rows[k];
    const auto step = [&](std::size_t i) {
        auto v = hn::LoadU(tag, r[1] + i);
        for (int k = 2; k < count - 1; k++)
            v = Outer<Which>(v, hn::LoadU(tag, r[k] + i));
        hn::StoreU(Outer<Which>(v, hn::LoadU(tag, r[0] + i)), tag, d0 + i);
        hn::StoreU(Outer<Which>(v, hn::LoadU(tag, r[count - 1] + i)), tag, d1 + i);
    };
    std::size_t i = 0;
    for (; i + lanes <= n; i += lanes)
        step(i);
    if (i < n && n >= lanes) {
        step(n - lanes);
        return;
    }
    for (; i < n; i++) {
        T v = r[1][i];
        for (int k = 2; k < count - 1; k++)
            v = OuterOf<Which>(v, r[k][i]);
        d0[i] = OuterOf<Which>(v, r[0][i]);
        d1[i] = OuterOf<Which>(v, r[count - 1][i]);
    }
}

template <Extremum Which, typename T>
void OfRowPairCounted(const T* const* rows, int count, T* d0, T* d1, std::size_t n)
{
    switch (count) {
    case 4:
        return OfRowPair<Which, 4>(rows, d0, d1, n);
    case 6:
        return OfRowPair<Which, 6>(rows, d0, d1, n);
    case 8:
        return OfRowPair<Which, 8>(rows, d0, d1, n);
    default:
        return OfRowPair<Which, 10>(rows, d0, d1, n);
    }
}

template <typename T>
void OfRowPairWhich(Extremum which, const T* const* rows, int count, T* d0, T* d1, std::size_t n)
{
    if (which == Extremum::Maximum)
        OfRowPairCounted<Extremum::Maximum>(rows, count, d0, d1, n);
    else
        OfRowPairCounted<Extremum::Minimum>(rows, count, d0, d1, n);
}

template <Extremum Which, typename T>
void WidenRow(T* d, std::size_t n, std::size_t step)
{
    const hn::ScalableTag<T> tag;
    // What is written lies before all that is still to be read.
    for (std::size_t i = 0; i < n; i += hn::Lanes(tag)) {
        const auto a = Outer<Which>(hn::LoadU(tag, d + i), hn::LoadU(tag, d + i + step));
        const auto b = Outer<Which>(hn::LoadU(tag, d + i + 2 * step), hn::LoadU(tag, d + i + 3 * step));
        hn::StoreU(Outer<Which>(a, b), tag, d + i);
    }
}

template <typename T>
void WidenWhich(Extremum which, T* d, std::size_t n, std::size_t step)
{
    if (which == Extremum::Maximum)
        WidenRow<Extremum::Maximum>(d, n, step);
    else
        WidenRow<Extremum::Minimum>(d, n, step);
}

template <Extremum Which, typename T>
void RunRow(const T* s, T* running, const T* others, T* d, std::size_t n)
{
    const hn::ScalableTag<T> tag;
    const std::size_t lanes = hn::Lanes(tag);
    const auto step = [&](std::size_t i) {
        const auto v = Outer<Which>(hn::LoadU(tag, s + i), hn::LoadU(tag, running + i));
        hn::StoreU(v, tag, running + i);
        hn::StoreU(Outer<Which>(v, hn::LoadU(tag, others + i)), tag, d + i);
    };
    std::size_t i = 0;
    for (; i + lanes <= n; i += lanes)
        step(i);
    if (i < n && n >= lanes) {
        step(n - lanes);
        return;
    }
    for (; i < n; i++) {
        running[i] = OuterOf<Which>(s[i], running[i]);
        d[i] = OuterOf<Which>(running[i], others[i]);
    }
}

template <typename T>
void RunWhich(Extremum which, const T* s, T* running, const T* others, T* d, std::size_t n)
{
    if (which == Extremum::Maximum)
        RunRow<Extremum::Maximum>(s, running, others, d, n);
    else
        RunRow<Extremum::Minimum>(s, running, others, d, n);
}

void OfRows8(Extremum which, const std::uint8_t* const* rows, int count, std::uint8_t* d, std::size_t n)
{
    OfRowsWhich(which, rows, count, d, n);
}
void OfRows16(Extremum which, const std::uint16_t* const* rows, int count, std::uint16_t* d, std::size_t n)
{
    OfRowsWhich(which, rows, count, d, n);
}
void OfRowPair8(Extremum which, const std::uint8_t* const* rows, int count, std::uint8_t* d0, std::uint8_t* d1,
                std::size_t n)
{
    OfRowPairWhich(which, rows, count, d0, d1, n);
}
void OfRowPair16(Extremum which, const std::uint16_t* const* rows, int count, std::uint16_t* d0, std::uint16_t* d1,
                 std::size_t n)
{
    OfRowPairWhich(which, rows, count, d0, d1, n);
}
void Widen8(Extremum which, std::uint8_t* d, std::size_t n, std::size_t step)
{
    WidenWhich(which, d, n, step);
}
void Widen16(Extremum which, std::uint16_t* d, std::size_t n, std::size_t step)
{
    WidenWhich(which, d, n, step);
}
void Run8(Extremum which, const std::uint8_t* s, std::uint8_t* running, const std::uint8_t* others, std::uint8_t* d,
          std::size_t n)
{
    RunWhich(which, s, running, others, d, n);
}
void Run16(Extremum which, const std::uint16_t* s, std::uint16_t* running, const std::uint16_t* others,
           std::uint16_t* d, std::size_t n)
{
    RunWhich(which, s, running, others, d, n);
}

} // namespace HWY_NAMESPACE
} // namespace Tesk::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Tesk::kernels {

HWY_EXPORT(OfRows8);
HWY_EXPORT(OfRows16);
HWY_EXPORT(OfRowPair8);
HWY_EXPORT(OfRowPair16);
HWY_EXPORT(Widen8);
HWY_EXPORT(Widen16);
HWY_EXPORT(Run8);
HWY_EXPORT(Run16);

namespace {

template <typename T>
T OuterPlain(Extremum which, T a, T b)
{
    return (which == Extremum::Maximum) == (a > b) ? a : b;
}

template <typename T>
void OfRowsPlain(Extremum which, const T* const* rows, int count, T* d, std::size_t n)
{
    for (std::size_t i = 0; i < n; i++) {
        T v = rows[0][i];
        for (int k = 1; k < count; k++)
            v = OuterPlain(which, v, rows[k][i]);
        d[i] = v;
    }
}

template <typename T>
void OfRowPairPlain(Extremum which, const T* const* rows, int count, T* d0, T* d1, std::size_t n)
{
    OfRowsPlain(which, rows, count - 1, d0, n);
    OfRowsPlain(which, rows + 1, count - 1, d1, n);
}

template <typename T>
void WidenPlain(Extremum which, T* d, std::size_t n, std::size_t step)
{
    for (std::size_t i = 0; i < n; i++)
        for (std::size_t k = 1; k < 4; k++)
            d[i] = OuterPlain(which, d[i], d[i + k * step]);
}

template <typename T>
void RunPlain(Extremum which, const T* s, T* running, const T* others, T* d, std::size_t n)
{
    for (std::size_t i = 0; i < n; i++) {
        running[i] = OuterPlain(which, s[i], running[i]);
        d[i] = OuterPlain(which, running[i], others[i]);
    }
}

} // namespace

void ExtremumRow(Extremum Which, const std::uint8_t* const* rows, int count, std::uint8_t* d, std::size_t n)
{
    ByLevel(OfRowsPlain, HWY_DYNAMIC_DISPATCH(OfRows8))(Which, rows, count, d, n);
}

void ExtremumRow(Extremum Which, const std::uint16_t* const* rows, int count, std::uint16_t* d, std::size_t n)
{
    ByLevel(OfRowsPlain, HWY_DYNAMIC_DISPATCH(OfRows16))(Which, rows, count, d, n);
}

void ExtremumRowPair(Extremum Which, const std::uint8_t* const* rows, int count, std::uint8_t* d0, std::uint8_t* d1,
                     std::size_t n)
{
    ByLevel(OfRowPairPlain, HWY_DYNAMIC_DISPATCH(OfRowPair8))(Which, rows, count, d0, d1, n);
}

void ExtremumRowPair(Extremum Which, const std::uint16_t* const* rows, int count, std::uint16_t* d0, std::uint16_t* d1,
                     std::size_t n)
{
    ByLevel(OfRowPairPlain, HWY_DYNAMIC_DISPATCH(OfRowPair16))(Which, rows, count, d0, d1, n);
}

void WidenExtremumRow(Extremum Which, std::uint8_t* d, std::size_t n, std::size_t step)
{
    ByLevel(WidenPlain, HWY_DYNAMIC_DISPATCH(Widen8))(Which, d, n, step);
}

void WidenExtremumRow(Extremum Which, std::uint16_t* d, std::size_t n, std::size_t step)
{
    ByLevel(WidenPlain, HWY_DYNAMIC_DISPATCH(Widen16))(Which, d, n, step);
}

void RunExtremumRow(Extremum Which, const std::uint8_t* s, std::uint8_t* running, const std::uint8_t* others,
                    std::uint8_t* d, std::size_t n)
{
    ByLevel(RunPlain, HWY_DYNAMIC_DISPATCH(Run8))(Which, s, running, others, d, n);
}

void RunExtremumRow(Extremum Which, const std::uint16_t* s, std::uint16_t* running, const std::uint16_t* others,
                    std::uint16_t* d, std::size_t n)
{
    ByLevel(RunPlain, HWY_DYNAMIC_DISPATCH(Run16))(Which, s, running, others, d, n);
}

} // namespace Tesk::kernels
#endif
