// The kernels of rank filters: sorting networks across vectors, and histograms of columns.
#include "image/morpho/RankKernels.h"

#include "image/morpho/MorphoKernels.h"

#include <cstring>
#include <type_traits>
#include <utility>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "image/morpho/RankKernels.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Tesk::kernels {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// Vectors in ascending order, lane by lane.
template <typename V, std::size_t N>
struct Sorted
{
    V v[N];
};

template <typename F, std::size_t... I>
HWY_INLINE void UnrollOver(F f, std::index_sequence<I...>)
{
    (f(std::integral_constant<std::size_t, I>()), ...);
}

/// Calls `f(0)` to `f(N - 1)` with constants, so that what no one uses of a network falls away.
template <std::size_t N, typename F>
HWY_INLINE void Unroll(F f)
{
    UnrollOver(f, std::make_index_sequence<N>());
}

/// Every second one, from the first or from the second on.
template <std::size_t First, typename V, std::size_t N>
HWY_INLINE Sorted<V, (N + 1 - First) / 2> EverySecond(const Sorted<V, N>& a)
{
    Sorted<V, (N + 1 - First) / 2> half;
    Unroll<(N + 1 - First) / 2>([&](auto i) __attribute__((always_inline)) { half.v[i] = a.v[2 * i + First]; });
    return half;
}

/// The ranks `First` to `First + Count - 1`.
template <std::size_t First, std::size_t Count, typename V, std::size_t N>
HWY_INLINE Sorted<V, Count> Middle(const Sorted<V, N>& a)
{
    Sorted<V, Count> part;
    Unroll<Count>([&](auto i) __attribute__((always_inline)) { part.v[i] = a.v[First + i]; });
    return part;
}

/// Interleaves the merged even and odd halves and puts neighbours in order.
template <typename V, std::size_t E, std::size_t O>
HWY_INLINE Sorted<V, E + O> Interleave(const Sorted<V, E>& even, const Sorted<V, O>& odd)
{
    Sorted<V, E + O> merged;
    merged.v[0] = even.v[0];
    constexpr std::size_t pairs = E - 1 < O ? E - 1 : O;
    Unroll<pairs>([&](auto i) __attribute__((always_inline)) {
        merged.v[2 * i + 1] = hn::Min(even.v[i + 1], odd.v[i]);
        merged.v[2 * i + 2] = hn::Max(even.v[i + 1], odd.v[i]);
    });
    if constexpr (E == O) merged.v[E + O - 1] = odd.v[O - 1];
    if constexpr (E == O + 2) merged.v[E + O - 1] = even.v[E - 1];
    return merged;
}

/// Odd-even merge (Batcher 1968) of lists of any two lengths.
template <typename V, std::size_t M, std::size_t N>
HWY_INLINE Sorted<V, M + N> Merge(const Sorted<V, M>& a, const Sorted<V, N>& b)
{
    if constexpr (M == 1 && N == 1)
        return {{hn::Min(a.v[0], b.v[0]), hn::Max(a.v[0], b.v[0])}};
    else if constexpr (M == 1)
        return Interleave(Merge(a, EverySecond<0>(b)), EverySecond<1>(b));
    else if constexpr (N == 1)
        return Interleave(Merge(EverySecond<0>(a), b), EverySecond<1>(a));
    else
        return Interleave(Merge(EverySecond<0>(a), EverySecond<0>(b)), Merge(EverySecond<1>(a), EverySecond<1>(b)));
}

/// Sorts `N` vectors that `load(0)` to `load(N - 1)` give.
template <std::size_t N, std::size_t First = 0, typename F>
HWY_INLINE auto Sort(F load)
{
    using V = decltype(load(std::integral_constant<std::size_t, 0>()));
    if constexpr (N == 1)
        return Sorted<V, 1>{{load(std::integral_constant<std::size_t, First>())}};
    else
        return Merge(Sort<N / 2, First>(load), Sort<N - N / 2, First + N / 2>(load));
}

/// The element in the middle of `N + 1` and `N` sorted ones together.
template <typename V, std::size_t N>
HWY_INLINE V MiddleOf(const Sorted<V, N + 1>& a, const Sorted<V, N>& b)
{
    V middle = a.v[N];
    Unroll<N>([&](auto i)
                  __attribute__((always_inline)) { middle = hn::Min(middle, hn::Max(a.v[i], b.v[N - 1 - i])); });
    return middle;
}

/// Two rows have all but one row of their squares in common. Of these the columns are sorted, and pairs of neighbour
/// columns merged.
template <std::size_t N, typename T>
class SortedColumns
{
    using Tag = hn::ScalableTag<T>;
    using V = hn::Vec<Tag>;

public:
    static constexpr std::size_t K = N - 1;

    SortedColumns(const T* const* rows, T* const* work, std::size_t n)
    {
        const Tag tag;
        for (std::size_t k = 0; k < K; k++)
            columns_[k] = work[k];
        for (std::size_t k = 0; k < 2 * K; k++)
            pairs_[k] = work[K + k];
        for (std::size_t i = 0; i < n + K; i += hn::Lanes(tag)) {
            const auto sorted =
                Sort<K>([&](auto k) __attribute__((always_inline)) { return hn::LoadU(tag, rows[k + 1] + i); });
            Unroll<K>([&](auto k) __attribute__((always_inline)) { hn::StoreU(sorted.v[k], tag, columns_[k] + i); });
        }
        for (std::size_t i = 0; i < n + K - 1; i += hn::Lanes(tag)) {
            const auto merged = Merge(Column(i), Column(i + 1));
            Unroll<2 * K>([&](auto k) __attribute__((always_inline)) { hn::StoreU(merged.v[k], tag, pairs_[k] + i); });
        }
    }

    HWY_INLINE Sorted<V, K> Column(std::size_t i) const
    {
        Sorted<V, K> list;
        Unroll<K>([&](auto k) __attribute__((always_inline)) { list.v[k] = hn::LoadU(Tag(), columns_[k] + i); });
        return list;
    }
    HWY_INLINE Sorted<V, 2 * K> Pair(std::size_t i) const
    {
        Sorted<V, 2 * K> list;
        Unroll<2 * K>([&](auto k) __attribute__((always_inline)) { list.v[k] = hn::LoadU(Tag(), pairs_[k] + i); });
        return list;
    }
    /// The pixels of one row of a square.
    static HWY_INLINE Sorted<V, N> Own(const T* row)
    {
        return Sort<N>([&](auto k) __attribute__((always_inline)) { return hn::LoadU(Tag(), row + k); });
    }

private:
    T* columns_[K];
    T* pairs_[2 * K];
};

/// Calls `step(i)` for the vectors of a row; the last one ends with it, unless the row is shorter than all of them.
template <typename T, typename F>
HWY_INLINE void EachVector(std::size_t n, F step)
{
    const std::size_t lanes = hn::Lanes(hn::ScalableTag<T>());
    std::size_t i = 0;
    for (; i + lanes <= n; i += lanes)
        step(i);
    if (i < n) step(n < rowStep ? i : n - lanes);
}

/// The pairs are merged to a square without its first or last row, of which only the middle ranks can be the median;
/// then each row adds its own pixels.
template <std::size_t N, typename T>
void MedianPair(const T* const* rows, T* const* work, T* d0, T* d1, std::size_t n)
{
    constexpr std::size_t median = (N * N - 1) / 2;
    const hn::ScalableTag<T> tag;
    using V = hn::Vec<decltype(tag)>;
    const SortedColumns<N, T> columns(rows, work, n);
    const auto column = [&](std::size_t i) __attribute__((always_inline))
    {
        return columns.Column(i);
    };
    const auto pair = [&](std::size_t i) __attribute__((always_inline))
    {
        return columns.Pair(i);
    };
    const auto own = [&](const T* row) __attribute__((always_inline))
    {
        return columns.Own(row);
    };
    const auto finish = [&](std::size_t i, const Sorted<V, N + 1>& common) __attribute__((always_inline))
    {
        hn::StoreU(MiddleOf(common, own(rows[0] + i)), tag, d0 + i);
        hn::StoreU(MiddleOf(common, own(rows[N] + i)), tag, d1 + i);
    };
    // Of s values sorted so far, those can be the median that have at most its rank before and behind them.
    const auto step = [&](std::size_t i) __attribute__((always_inline))
    {
        if constexpr (N == 3) {
            finish(i, Middle<1, 4>(Merge(pair(i), column(i + 2))));
        } else if constexpr (N == 5) {
            const auto four = Middle<3, 10>(Merge(pair(i), pair(i + 2)));
            finish(i, Middle<4, 6>(Merge(four, column(i + 4))));
        } else if constexpr (N == 7) {
            const auto six = Middle<11, 14>(Merge(Merge(pair(i), pair(i + 2)), pair(i + 4)));
            finish(i, Middle<6, 8>(Merge(six, column(i + 6))));
        } else {
            const auto six = Middle<7, 34>(Merge(Merge(pair(i), pair(i + 2)), pair(i + 4)));
            const auto eight = Middle<16, 18>(Merge(six, pair(i + 6)));
            finish(i, Middle<8, 10>(Merge(eight, column(i + 8))));
        }
    };
    static_assert(median == 4 || median == 12 || median == 24 || median == 40);
    EachVector<T>(n, step);
}

/// The common part is sorted whole and laid down in a buffer, so that the rank may be any: rank r of two sorted lists
/// is the least of max(a[r - j], b[j - 1]) over how many values j of b stand up to it. Before the common part lie
/// values that are always less, behind it such as are never less.
template <std::size_t N, typename T>
void RankPair(std::size_t rank, const T* const* rows, T* const* work, T* d0, T* d1, std::size_t n)
{
    constexpr std::size_t common = N * (N - 1), step = hn::MaxLanes(hn::ScalableTag<T>());
    const hn::ScalableTag<T> tag;
    using V = hn::Vec<decltype(tag)>;
    HWY_ALIGN T lists[(N + common + N) * step];
    const auto list = [&](std::size_t k) __attribute__((always_inline))
    {
        return lists + k * step;
    };
    for (std::size_t k = 0; k < N; k++) {
        hn::Store(hn::Zero(tag), tag, list(k));
        hn::Store(hn::Set(tag, hwy::LimitsMax<T>()), tag, list(N + common + k));
    }
    const T* up = list(N + rank);
    const SortedColumns<N, T> columns(rows, work, n);
    const auto finish = [&](const T* row, T* d) __attribute__((always_inline))
    {
        const auto own = columns.Own(row);
        V found = hn::Load(tag, up);
        Unroll<N>([&](auto j) __attribute__((always_inline)) {
            found = hn::Min(found, hn::Max(hn::Load(tag, up - (j + 1) * step), own.v[j]));
        });
        hn::StoreU(found, tag, d);
    };
    EachVector<T>(
        n, [&](std::size_t i) __attribute__((always_inline)) {
            const auto lay = [&](const auto& sorted) __attribute__((always_inline))
            {
                Unroll<common>([&](auto k)
                                   __attribute__((always_inline)) { hn::Store(sorted.v[k], tag, list(N + k)); });
            };
            if constexpr (N == 3)
                lay(Merge(columns.Pair(i), columns.Column(i + 2)));
            else
                lay(Merge(Merge(columns.Pair(i), columns.Pair(i + 2)), columns.Column(i + 4)));
            finish(rows[0] + i, d0 + i);
            finish(rows[N] + i, d1 + i);
        });
}

template <typename T>
void RankOf(int size, int rank, const T* const* rows, T* const* work, T* d0, T* d1, std::size_t n)
{
    static_assert(largestRanked == 5);
    if (size == 3)
        RankPair<3>(static_cast<std::size_t>(rank), rows, work, d0, d1, n);
    else
        RankPair<5>(static_cast<std::size_t>(rank), rows, work, d0, d1, n);
}

void Rank8(int size, int rank, const std::uint8_t* const* rows, std::uint8_t* const* work, std::uint8_t* d0,
           std::uint8_t* d1, std::size_t n)
{
    RankOf(size, rank, rows, work, d0, d1, n);
}
void Rank16(int size, int rank, const std::uint16_t* const* rows, std::uint16_t* const* work, std::uint16_t* d0,
            std::uint16_t* d1, std::size_t n)
{
    RankOf(size, rank, rows, work, d0, d1, n);
}

template <typename T>
void MedianOf(int size, const T* const* rows, T* const* work, T* d0, T* d1, std::size_t n)
{
    switch (size) {
    case 3:
        return MedianPair<3>(rows, work, d0, d1, n);
    case 5:
        return MedianPair<5>(rows, work, d0, d1, n);
    case 7:
        return MedianPair<7>(rows, work, d0, d1, n);
    default:
        return MedianPair<9>(rows, work, d0, d1, n);
    }
}

void Median8(int size, const std::uint8_t* const* rows, std::uint8_t* const* work, std::uint8_t* d0, std::uint8_t* d1,
             std::size_t n)
{
    MedianOf(size, rows, work, d0, d1, n);
}
void Median16(int size, const std::uint16_t* const* rows, std::uint16_t* const* work, std::uint16_t* d0,
              std::uint16_t* d1, std::size_t n)
{
    MedianOf(size, rows, work, d0, d1, n);
}

/// Counts in sixteen bins, each with those before it: the number of bins up to a rank is where the rank lies, and sums
/// of such counts are such counts.
constexpr std::size_t bins = 16;

/// Sixteen counts of a box, which may exceed a byte.
class Box
{
    using Tag = hn::CappedTag<std::int16_t, bins>;
    static constexpr std::size_t lanes = hn::MaxLanes(Tag()), parts = bins / lanes;
    using V = hn::Vec<Tag>;

public:
    HWY_INLINE Box()
    {
        for (std::size_t k = 0; k < parts; k++)
            v_[k] = hn::Zero(Tag());
    }
    HWY_INLINE explicit Box(const std::int16_t* counts)
    {
        for (std::size_t k = 0; k < parts; k++)
            v_[k] = hn::Load(Tag(), counts + k * lanes);
    }

    HWY_INLINE void Add(const std::uint8_t* column)
    {
        for (std::size_t k = 0; k < parts; k++)
            v_[k] = hn::Add(v_[k], Wide(column, k));
    }
    HWY_INLINE void Move(const std::uint8_t* entering, const std::uint8_t* leaving)
    {
        for (std::size_t k = 0; k < parts; k++)
            v_[k] = hn::Add(v_[k], hn::Sub(Wide(entering, k), Wide(leaving, k)));
    }
    /// How many bins end at or before the rank.
    HWY_INLINE std::size_t Find(int rank) const
    {
        std::size_t count = 0;
        const V above = hn::Set(Tag(), static_cast<std::int16_t>(rank + 1));
        for (std::size_t k = 0; k < parts; k++)
            count += hn::CountTrue(Tag(), hn::Gt(above, v_[k]));
        return count;
    }
    HWY_INLINE void Store(std::int16_t* counts) const
    {
        for (std::size_t k = 0; k < parts; k++)
            hn::Store(v_[k], Tag(), counts + k * lanes);
    }

private:
    static HWY_INLINE V Wide(const std::uint8_t* column, std::size_t k)
    {
        return hn::PromoteTo(Tag(), hn::LoadU(hn::Rebind<std::uint8_t, Tag>(), column + k * lanes));
    }

    V v_[parts];
};

/// Adds or takes away one pixel of a bin.
using Bins = hn::CappedTag<std::uint8_t, bins>;

HWY_INLINE void Change(std::uint8_t* column, const std::uint8_t* entering, const std::uint8_t* leaving)
{
    for (std::size_t k = 0; k < bins; k += hn::Lanes(Bins()))
        hn::StoreU(hn::Sub(hn::Add(hn::LoadU(Bins(), column + k), hn::Load(Bins(), entering + k)),
                           hn::Load(Bins(), leaving + k)),
                   Bins(), column + k);
}

void Ranks(const ColumnRanks& strip, std::uint8_t* work)
{
    // ones[b] has 1 in the bins from b on; ones[bins] has none.
    HWY_ALIGN std::uint8_t ones[bins + 1][bins];
    for (std::size_t b = 0; b <= bins; b++)
        for (std::size_t k = 0; k < bins; k++)
            ones[b][k] = k >= b;
    const std::uint8_t* none = ones[bins];
    const int diameter = 2 * strip.radiusX + 1;
    const std::size_t columns = static_cast<std::size_t>(strip.width + diameter), segment = columns * bins;
    std::uint8_t *coarse = work, *fine = work + segment;
    std::memset(work, 0, (bins + 1) * segment);
    const auto row = [&](int y) {
        y = y < 0 ? 0 : y < strip.height ? y : strip.height - 1;
        return strip.src + strip.srcPitch * y;
    };
    const auto fineOf = [&](std::size_t column, std::uint8_t value)
                            HWY_ATTR { return fine + (value >> 4) * segment + column * bins; };
    for (int k = -strip.radiusY; k <= strip.radiusY; k++)
        for (std::size_t c = 0; c < columns; c++) {
            const std::uint8_t value = row(k)[strip.columns[c]];
            Change(coarse + c * bins, ones[value >> 4], none);
            Change(fineOf(c, value), ones[value & 15], none);
        }
    // The counts of the segments of the box, and the pixel at which each was looked at last.
    HWY_ALIGN std::int16_t segments[bins][bins] = {};
    HWY_ALIGN std::int16_t found[2 * bins] = {};
    std::int16_t* below = found + bins;
    for (int y = 0; y < strip.height; y++) {
        if (y > 0) {
            const std::uint8_t *entering = row(y + strip.radiusY), *leaving = row(y - strip.radiusY - 1);
            for (std::size_t c = 0; c < columns; c++) {
                const std::uint8_t in = entering[strip.columns[c]], out = leaving[strip.columns[c]];
                Change(coarse + c * bins, ones[in >> 4], ones[out >> 4]);
                Change(fineOf(c, in), ones[in & 15], none);
                Change(fineOf(c, out), none, ones[out & 15]);
            }
        }
        std::uint8_t* d = strip.dst + strip.dstPitch * y;
        int last[bins];
        for (int& l : last)
            l = -diameter - 1;
        // The box of pixel x holds the columns x + 1 to x + diameter.
        Box box;
        for (int c = 1; c < diameter; c++)
            box.Add(coarse + static_cast<std::size_t>(c) * bins);
        for (int x = 0; x < strip.width; x++) {
            const auto at = static_cast<std::size_t>(x), end = at + static_cast<std::size_t>(diameter);
            // Column 0 holds a pixel that is not in the first box, and was not added above.
            box.Move(coarse + end * bins, x > 0 ? coarse + at * bins : none);
            const std::size_t s = box.Find(strip.rank);
            box.Store(below);
            const int rest = strip.rank - below[static_cast<std::ptrdiff_t>(s) - 1];
            const std::uint8_t* counts = fine + s * segment;
            Box part(segments[s]);
            if (2 * (x - last[s]) > diameter) {
                part = Box();
                for (std::size_t c = at + 1; c <= end; c++)
                    part.Add(counts + c * bins);
            } else {
                for (std::size_t c = static_cast<std::size_t>(last[s] + 1); c <= at; c++)
                    part.Move(counts + (c + static_cast<std::size_t>(diameter)) * bins, counts + c * bins);
            }
            part.Store(segments[s]);
            last[s] = x;
            d[x] = static_cast<std::uint8_t>(s * bins + part.Find(rest));
        }
    }
}

} // namespace HWY_NAMESPACE
} // namespace Tesk::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Tesk::kernels {

HWY_EXPORT(Median8);
HWY_EXPORT(Median16);
HWY_EXPORT(Rank8);
HWY_EXPORT(Rank16);
HWY_EXPORT(Ranks);

void MedianRowPair(int Size, const std::uint8_t* const* rows, std::uint8_t* const* work, std::uint8_t* d0,
                   std::uint8_t* d1, std::size_t n)
{
    HWY_DYNAMIC_DISPATCH(Median8)(Size, rows, work, d0, d1, n);
}

void MedianRowPair(int Size, const std::uint16_t* const* rows, std::uint16_t* const* work, std::uint16_t* d0,
                   std::uint16_t* d1, std::size_t n)
{
    HWY_DYNAMIC_DISPATCH(Median16)(Size, rows, work, d0, d1, n);
}

void RankRowPair(int Size, int Rank, const std::uint8_t* const* rows, std::uint8_t* const* work, std::uint8_t* d0,
                 std::uint8_t* d1, std::size_t n)
{
    HWY_DYNAMIC_DISPATCH(Rank8)(Size, Rank, rows, work, d0, d1, n);
}

void RankRowPair(int Size, int Rank, const std::uint16_t* const* rows, std::uint16_t* const* work, std::uint16_t* d0,
                 std::uint16_t* d1, std::size_t n)
{
    HWY_DYNAMIC_DISPATCH(Rank16)(Size, Rank, rows, work, d0, d1, n);
}

void RankStrip(const ColumnRanks& Strip, std::uint8_t* work)
{
    HWY_DYNAMIC_DISPATCH(Ranks)(Strip, work);
}

} // namespace Tesk::kernels
#endif
