// The sigma filter, by the mask, by counts of levels, or by counts in columns, whichever is the least work.
#include "image/Kernel.h"
#include "image/filter/KernelFrame.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace Tesk {

using namespace filters;

namespace {

/// Squares up to this have counts that 16 bits hold, and sums that 32 bits do.
constexpr int largestFastSize = 255;

void AddCounts(std::uint16_t* counts, const std::uint16_t* more, int levels)
{
    for (int g = 0; g < levels; g++)
        counts[g] = static_cast<std::uint16_t>(counts[g] + more[g]);
}

void ExchangeCounts(std::uint16_t* counts, const std::uint16_t* entering, const std::uint16_t* leaving, int levels)
{
    for (int g = 0; g < levels; g++)
        counts[g] = static_cast<std::uint16_t>(counts[g] + entering[g] - leaving[g]);
}

/// Counts of levels, and of segments of levels with the sums of their pixels, so that a wide range costs little more
/// than the levels of two segments.
template <typename T>
class RangeCounts
{
public:
    void Clear()
    {
        bins_.Clear();
        std::fill(segments_.begin(), segments_.end(), Part());
    }
    void Add(T value, std::uint32_t times)
    {
        bins_.Add(value, times);
        if constexpr (levels > segment) {
            Part& part = segments_[value / segment];
            part.count += times;
            // The opposite of a count has its sign in 32 bits.
            part.sum += static_cast<std::int64_t>(static_cast<std::int32_t>(times)) * value;
        }
    }
    /// The mean of the pixels from one level to another, truncated; 0 without any.
    T Mean(int from, int to) const
    {
        Total total;
        if (const int first = (from + segment - 1) / segment, end = (to + 1) / segment; first < end) {
            AddLevels(from, first * segment, total);
            for (int k = first; k < end; k++) {
                total.count += segments_[static_cast<std::size_t>(k)].count;
                total.sum += static_cast<std::uint64_t>(segments_[static_cast<std::size_t>(k)].sum);
            }
            AddLevels(end * segment, to + 1, total);
        } else {
            AddLevels(from, to + 1, total);
        }
        return static_cast<T>(total.count == 0 ? 0 : total.sum / total.count);
    }

private:
    // Bytes make one segment, of which the sums are not kept: their ranges are short.
    static constexpr int levels = std::numeric_limits<T>::max() + 1, segment = levels > 256 ? 256 : 2 * levels;

    struct Part
    {
        std::uint32_t count = 0;
        std::int64_t sum = 0;
    };
    struct Total
    {
        std::uint64_t count = 0, sum = 0;
    };

    void AddLevels(int from, int end, Total& total) const
    {
        for (int g = from; g < end; g++) {
            const std::uint64_t bin = bins_.Data()[g];
            total.count += bin;
            total.sum += bin * static_cast<std::uint64_t>(g);
        }
    }

    LevelBins<T> bins_;
    std::vector<Part> segments_ = std::vector<Part>(levels / segment + 1);
};

template <typename T>
void SigmaByCounts(const Image& src, int size, int range, Image& dst)
{
    constexpr int largest = std::numeric_limits<T>::max();
    RangeCounts<T> counts;
    EachSquareCounts<T>(src, size, counts, [&](int y) {
        return [=, &counts, s = src.Row<T>(y), d = dst.Row<T>(y)](int x) {
            d[x] = counts.Mean(Max(0, s[x] - range), Min(largest, s[x] + range));
        };
    });
}

/// Pixel by pixel of the square, for a whole row at a time.
template <typename T>
void SigmaByMask(const Image& src, int size, int range, Image& dst)
{
    const int h = size / 2, n = src.Width;
    RowRing<T> ring(src, h, h);
    std::vector<std::uint32_t> counts(static_cast<std::size_t>(n)), sums(counts.size());
    std::uint32_t *count = counts.data(), *sum = sums.data();
    for (int y = 0; y < src.Height; y++) {
        ring.MoveTo(y);
        const T* middle = ring.Row(y);
        std::fill_n(count, n, 0u);
        std::fill_n(sum, n, 0u);
        for (int j = -h; j <= h; j++)
            for (int i = -h; i <= h; i++) {
                const T* s = ring.Row(y + j) + i;
                for (int x = 0; x < n; x++) {
                    const int difference = s[x] - middle[x];
                    const std::uint32_t near = difference <= range && -difference <= range;
                    count[x] += near;
                    sum[x] += s[x] & (0 - near);
                }
            }
        T* d = dst.Row<T>(y);
        for (int x = 0; x < n; x++)
            d[x] = static_cast<T>(count[x] == 0 ? 0 : sum[x] / count[x]);
    }
}

/// Counts of levels in the square and in each column of it: a step adds one column and takes one away, whatever their
/// height (Perreault and Hebert 2007).
void SigmaByColumns(const Image& src, int size, int range, Image& dst)
{
    constexpr int levels = 256;
    using Counts = std::array<std::uint16_t, levels>;
    const int h = size / 2, n = src.Width, bottom = src.Height - 1;
    RowRing<GrayPixel> ring(src, 0, h + 1);
    std::vector<Counts> columns(static_cast<std::size_t>(n));
    const auto column = [&](int x) -> Counts& { return columns[static_cast<std::size_t>(Clamp(x, 0, n - 1))]; };
    for (int j = -h - 1; j < h; j++)
        for (int x = 0; x < n; x++)
            column(x)[src.Row(Clamp(j, 0, bottom))[x]]++;
    for (int y = 0; y <= bottom; y++) {
        ring.MoveTo(y);
        const GrayPixel *leaving = ring.Row(y - h - 1), *entering = ring.Row(y + h), *middle = ring.Row(y);
        for (int x = 0; x < n; x++) {
            columns[static_cast<std::size_t>(x)][leaving[x]]--;
            columns[static_cast<std::size_t>(x)][entering[x]]++;
        }
        Counts square{};
        for (int i = -h - 1; i < h; i++)
            AddCounts(square.data(), column(i).data(), levels);
        GrayPixel* d = dst.Row(y);
        for (int x = 0; x < n; x++) {
            ExchangeCounts(square.data(), column(x + h).data(), column(x - h - 1).data(), levels);
            const int from = Max(0, middle[x] - range), to = Min(levels - 1, middle[x] + range);
            std::uint32_t count = 0, sum = 0;
            for (int g = from; g <= to; g++) {
                count += square[static_cast<std::size_t>(g)];
                sum += square[static_cast<std::size_t>(g)] * static_cast<std::uint32_t>(g);
            }
            d[x] = static_cast<GrayPixel>(count == 0 ? 0 : sum / count);
        }
    }
}

/// The mean of those pixels of a square that are near the one in its middle. Counts of 16 bits cost two sides of the
/// square and the levels that are near, of which two segments and as many segments at most are looked at.
template <typename T>
void SigmaFilter(const Image& src, int size, int range, Image& dst)
{
    constexpr std::int64_t mostLooked = 3 * 256;
    const std::int64_t looked = Min<std::int64_t>(2 * std::int64_t{range} + 1, mostLooked);
    if (size <= largestFastSize && std::int64_t{size} * size <= 4 * size + looked) {
        SigmaByMask<T>(src, size, range, dst);
        return;
    }
    if constexpr (sizeof(T) == 1)
        if (size <= largestFastSize) {
            SigmaByColumns(src, size, range, dst);
            return;
        }
    SigmaByCounts<T>(src, size, range, dst);
}

} // namespace

void Kernel::Bilateral(int FilterSize, int GrayRange, const Image& Src, Image& Dst)
{
    const Entry entry("Tesk::Kernel::Bilateral");
    if (entry.Refuses(CheckType(Src, {Gray, Gray16})) || entry.Refuses(CheckSize(L"Size", FilterSize))) return;
    Sources held;
    if (Prepare(entry, Src, Dst, Src.Type, held, InPlace::Copied)) return;
    // A negative range holds no pixel; beyond the gray scale nothing changes any more.
    const int range = Clamp(GrayRange, -1, 65535);
    Guarded(entry, [&] {
        VisitPixels<Gray, Gray16>(held.a.Type, [&]<typename T>() { SigmaFilter<T>(held.a, FilterSize, range, Dst); });
    });
}

} // namespace Tesk
