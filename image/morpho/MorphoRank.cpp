// Rank filters: the element at one place of the sorted values under a box.
#include "image/Morpho.h"

#include "image/morpho/MorphoExtremum.h"
#include "image/morpho/MorphoFrame.h"
#include "image/morpho/RankKernels.h"

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

namespace Tesk {

namespace {

using namespace morpho;

/// A box by its half sizes, and the place in its sorted values that is asked for, from 0.
struct Box
{
    int radiusX, radiusY;
    std::int64_t rank;

    std::int64_t Area() const { return (2 * std::int64_t{radiusX} + 1) * (2 * std::int64_t{radiusY} + 1); }
    bool IsMedian() const { return rank == Area() / 2; }
};

/// Counts of the values under the box, and the level up to which they reach the rank.
template <typename T>
class SlidingCounts
{
public:
    explicit SlidingCounts(std::int64_t rank) : rank_(rank) {}

    void Clear()
    {
        counts_.fill(0);
        segments_.fill(0);
        level_ = 0;
        below_ = 0;
    }

    void Add(T value, std::int64_t times)
    {
        counts_[value] += times;
        segments_[value / segment] += times;
        if (value < level_) below_ += times;
    }

    /// Moves the level to where the rank is: at most `rank` values lie below it, and more at or below.
    T Level()
    {
        while (below_ > rank_) {
            if (level_ % segment == 0 && below_ - segments_[level_ / segment - 1] > rank_) {
                level_ -= segment;
                below_ -= segments_[level_ / segment];
            } else {
                below_ -= counts_[--level_];
            }
        }
        while (below_ + counts_[level_] <= rank_) {
            if (level_ % segment == 0 && below_ + segments_[level_ / segment] <= rank_) {
                below_ += segments_[level_ / segment];
                level_ += segment;
            } else {
                below_ += counts_[level_++];
            }
        }
        return static_cast<T>(level_);
    }

private:
    static constexpr std::size_t segment = sizeof(T) == 1 ? 16 : 256, levels = std::size_t{1} << 8 * sizeof(T);

    std::int64_t rank_, below_ = 0;
    std::size_t level_ = 0;
    std::array<std::int64_t, levels> counts_{};
    std::array<std::int64_t, levels / segment> segments_{};
};

/// Calls `f(k, times)` for each place from 0 to size - 1 that stands under `center - radius` to `center + radius`; the
/// ends stand for all places beyond them.
template <typename F>
void EachRepeated(int center, int radius, int size, F f)
{
    const std::int64_t first = std::int64_t{center} - radius, last = std::int64_t{center} + radius, end = size - 1;
    const std::int64_t before = Max<std::int64_t>(0, -first), behind = Max<std::int64_t>(0, last - end);
    for (std::int64_t k = Max<std::int64_t>(first, 0); k <= Min(last, end); k++)
        f(static_cast<int>(k), 1 + (k == 0 ? before : 0) + (k == end ? behind : 0));
}

/// The definition: counts of one box after the other (Huang 1979).
template <typename T>
void RankByCounts(const Box& box, const Image& src, Image& dst)
{
    const auto counts = std::make_unique<SlidingCounts<T>>(box.rank);
    const int width = src.Width, height = src.Height;
    const auto column = [&](int y, std::int64_t x, std::int64_t times) {
        const auto inside = static_cast<int>(Clamp<std::int64_t>(x, 0, width - 1));
        EachRepeated(y, box.radiusY, height,
                     [&](int k, std::int64_t rows) { counts->Add(src.Row<T>(k)[inside], rows * times); });
    };
    for (int y = 0; y < height; y++) {
        counts->Clear();
        EachRepeated(0, box.radiusX, width, [&](int x, std::int64_t times) { column(y, x, times); });
        for (int x = 0; x < width; x++) {
            if (x > 0) {
                column(y, std::int64_t{x} + box.radiusX, 1);
                column(y, std::int64_t{x} - box.radiusX - 1, -1);
            }
            dst.Row<T>(y)[x] = counts->Level();
        }
    }
}

/// Copies a row with its ends repeated.
template <typename T>
void Pad(const T* s, std::size_t width, std::size_t radius, T* d)
{
    std::fill_n(d, radius, s[0]);
    std::copy_n(s, width, d + radius);
    std::fill_n(d + radius + width, radius, s[width - 1]);
}

/// Small squares, two rows at a time.
template <typename T>
void RankBySorting(const Box& box, const Image& src, Image& dst)
{
    const int radius = box.radiusX, size = 2 * radius + 1, height = src.Height, ring = size + 1;
    const auto width = static_cast<std::size_t>(int(src.Width)), pad = static_cast<std::size_t>(radius),
               pitch = width + 2 * pad + 2 * kernels::rowStep;
    // The padded rows under the two squares, the lines that the kernel works in, and two rows of results that have no
    // place in the destination.
    const std::size_t workLines = kernels::MedianWorkLines(size);
    std::vector<T> memory((static_cast<std::size_t>(ring) + workLines + 2) * pitch);
    std::vector<T*> work;
    for (std::size_t k = 0; k < workLines + 2; k++)
        work.push_back(memory.data() + (static_cast<std::size_t>(ring) + k) * pitch);
    std::vector<const T*> rows(static_cast<std::size_t>(ring));
    const auto padded = [&](int y) { return memory.data() + static_cast<std::size_t>(y % ring) * pitch; };
    const bool narrow = width < kernels::rowStep;
    int next = 0;
    for (int y = 0; y < height; y += 2) {
        for (; next < height && next <= y + radius + 1; next++)
            Pad(src.Row<T>(next), width, pad, padded(next));
        for (int k = 0; k <= size; k++)
            rows[static_cast<std::size_t>(k)] = padded(Clamp(y - radius + k, 0, height - 1));
        const bool last = y + 1 == height;
        T* d[2] = {narrow ? work[workLines] : dst.Row<T>(y), narrow || last ? work[workLines + 1] : dst.Row<T>(y + 1)};
        if (box.IsMedian())
            kernels::MedianRowPair(size, rows.data(), work.data(), d[0], d[1], width);
        else
            kernels::RankRowPair(size, static_cast<int>(box.rank), rows.data(), work.data(), d[0], d[1], width);
        if (!narrow) continue;
        std::copy_n(d[0], width, dst.Row<T>(y));
        if (!last) std::copy_n(d[1], width, dst.Row<T>(y + 1));
    }
}

/// Columns at a time, so that their histograms stay in the cache.
constexpr int stripWidth = 1024;

void RankByColumns(const Box& box, const Image& src, Image& dst)
{
    const int width = src.Width;
    std::vector<int> columns;
    std::vector<std::uint8_t> work;
    for (int left = 0; left < width; left += stripWidth) {
        kernels::ColumnRanks strip{
            src.Row(0),  src.Pitch,   dst.Row(0) + left,          dst.Pitch, Min(stripWidth, width - left), src.Height,
            box.radiusX, box.radiusY, static_cast<int>(box.rank), nullptr};
        columns.clear();
        for (int x = left - box.radiusX - 1; x < left + strip.width + box.radiusX; x++)
            columns.push_back(Clamp(x, 0, width - 1));
        strip.columns = columns.data();
        work.resize(kernels::ColumnRankBytes(strip));
        kernels::RankStrip(strip, work.data());
    }
}

template <typename T>
void RankBox(const Box& box, const Image& src, Image& dst)
{
    const int largestSorted = box.IsMedian() ? kernels::largestMedian : kernels::largestRanked;
    const bool vectors = Status::SIMDLevel() != NoSIMD, square = box.radiusX == box.radiusY;
    if (vectors && square && 2 * box.radiusX + 1 <= largestSorted)
        RankBySorting<T>(box, src, dst);
    else if (vectors && sizeof(T) == 1 && Max(box.radiusX, box.radiusY) <= kernels::largestRadius)
        RankByColumns(box, src, dst);
    else
        RankByCounts<T>(box, src, dst);
}

void RankInto(const Entry& entry, const Morpho& morpho, double percent, const Image& src, Image& dst)
{
    if (entry.Refuses(CheckType(src, grayTypes))) return;
    if (morpho.Diagonal != 1) {
        entry.Refuse(OutOfRange, L"Diamond and octagon shapes are not supported");
        return;
    }
    if (!(percent >= 0 && percent < 1)) {
        entry.Refuse(OutOfRange, L"The Percent (%g) must be in range [0..1)", percent);
        return;
    }
    Sources held;
    if (Prepare(entry, src, grayTypes, dst, held)) return;
    Box box{morpho.Width / 2, morpho.Height / 2, 0};
    box.rank = Min(static_cast<std::int64_t>(static_cast<double>(box.Area()) * percent), box.Area() - 1);
    Guarded(entry, [&] {
        // The ends of the order are the extrema: edge pixels repeated change none.
        if (box.rank == 0 || box.rank == box.Area() - 1)
            Apply(box.rank == 0 ? Extremum::Minimum : Extremum::Maximum,
                  Element(morpho.Width, morpho.Height, 1, held.a), held.a, dst);
        else
            VisitPixels<Gray, Gray16>(held.a.Type, [&]<typename T>() { RankBox<T>(box, held.a, dst); });
    });
}

} // namespace

void Morpho::Median(const Image& Src, Image& Dst) const
{
    RankInto(Entry("Tesk::Morpho::Median"), *this, 0.5, Src, Dst);
}

void Morpho::Rank(double Percent, const Image& Src, Image& Dst) const
{
    RankInto(Entry("Tesk::Morpho::Rank"), *this, Percent, Src, Dst);
}

} // namespace Tesk
