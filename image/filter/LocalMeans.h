// Means, sums and histograms of the boxes around pixels: what the filters and other classes share.
#pragma once

#include "image/Image.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

namespace Tesk::filters {

/// Refuses a size that is not odd, or beyond 32767, where sums of 16-bit pixels over a square would not fit in 64 bits.
/// `name` is "Width", "Height", "Size" or "size", as the message has it. An `ErrorCodes` value.
int CheckSize(const wchar_t* name, int size);

/// The truncated mean of a box around each pixel of a `Gray` or `Gray16` window, rows and columns replicated. `dst` has
/// the size and type of `src` and shares no pixel with it; sizes are odd, 1 to 32767. Throws `std::bad_alloc`.
void BoxMeans(const Image& src, int width, int height, Image& dst);

/// The cascade of three boxes along rows, then columns, each truncated; as above, but `dst` may be `src`.
void GaussMeans(const Image& src, int width, int height, Image& dst);

/// Sums of `count` pixels of row `y` from column `x` on.
using SumsOfRow = std::function<void(int x, int y, std::size_t count, const std::int64_t* sums)>;

/// The same cascade on a `Gray16` window, whose last boxes are left undivided: a mean is a sum by
/// `GaussProduct(height)`. A pixel of the window is read no more once its sum has been handed on. Throws
/// `std::bad_alloc`.
void EachGaussSum(const Image& src, int width, int height, const SumsOfRow& f);
std::uint64_t GaussProduct(int size);

/// How often each line of `count` lies within `radius` of line 0, the lines beyond the ends counted as the nearest.
/// `f(line, times)`.
template <typename F>
void EachLineAroundFirst(int count, int radius, F f)
{
    f(0, radius + 1);
    for (int k = 1; k <= radius && k < count; k++)
        f(k, k == count - 1 ? radius - k + 1 : 1);
    if (count == 1 && radius > 0) f(0, radius);
}

/// The exact sums of a box around each pixel, in 64 bits: `f(x, y, sum)` in the order of the rows. `T` is the pixel,
/// and `value` what is summed of it.
template <typename T, typename Value, typename F>
void EachBoxSum(const Image& src, int width, int height, Value value, F f)
{
    const int w = width / 2, h = height / 2, columns = src.Width, rows = src.Height;
    std::vector<std::int64_t> sums(static_cast<std::size_t>(columns));
    EachLineAroundFirst(rows, h, [&](int y, int times) {
        const T* s = src.Row<T>(y);
        for (int x = 0; x < columns; x++)
            sums[static_cast<std::size_t>(x)] += times * value(s[x]);
    });
    const auto at = [&](int x) { return sums[static_cast<std::size_t>(x < 0 ? 0 : x < columns ? x : columns - 1)]; };
    for (int y = 0; y < rows; y++) {
        std::int64_t sum = 0;
        EachLineAroundFirst(columns, w, [&](int x, int times) { sum += times * at(x); });
        for (int x = 0; x < columns; x++) {
            f(x, y, sum);
            sum += at(x + w + 1) - at(x - w);
        }
        const T* enter = src.Row<T>(y + h + 1 < rows ? y + h + 1 : rows - 1);
        const T* leave = src.Row<T>(y > h ? y - h : 0);
        for (int x = 0; x < columns; x++)
            sums[static_cast<std::size_t>(x)] += value(enter[x]) - value(leave[x]);
    }
}

/// The counts of a square as it slides along each row (Huang 1979), the pixels beyond the window counted as the
/// nearest: `row(y)` gives the function that is called as `f(x)` along that row. `counts` has `Clear()` and
/// `Add(value, times)`, where `times` is modulo 2^32: taking out is adding the opposite.
template <typename T, typename Counts, typename Row>
void EachSquareCounts(const Image& src, int size, Counts& counts, Row row)
{
    const int h = size / 2, columns = src.Width, rows = src.Height;
    for (int y = 0; y < rows; y++) {
        const int top = Max(y - h, 0), bottom = Min(y + h, rows - 1);
        const auto add = [&](int x, int times) {
            x = Clamp(x, 0, columns - 1);
            const auto count = [&](int line, int more) {
                counts.Add(src.Row<T>(line)[x], static_cast<std::uint32_t>(more * times));
            };
            for (int line = top; line <= bottom; line++)
                count(line, 1);
            if (y - h < 0) count(0, h - y);
            if (y + h > rows - 1) count(rows - 1, y + h - rows + 1);
        };
        counts.Clear();
        EachLineAroundFirst(columns, h, add);
        auto f = row(y);
        for (int x = 0; x < columns; x++) {
            f(x);
            add(x + h + 1, 1);
            add(x - h, -1);
        }
    }
}

/// A count for each level of a pixel.
template <typename T>
class LevelBins
{
public:
    void Clear() { std::fill(bins_.begin(), bins_.end(), 0u); }
    void Add(T value, std::uint32_t times) { bins_[value] += times; }
    const std::uint32_t* Data() const { return bins_.data(); }

private:
    std::vector<std::uint32_t> bins_ = std::vector<std::uint32_t>(std::size_t{std::numeric_limits<T>::max()} + 1);
};

/// The same with plain bins: `f(x, bins)`.
template <typename T, typename Row>
void EachSquareHistogram(const Image& src, int size, Row row)
{
    LevelBins<T> bins;
    EachSquareCounts<T>(src, size, bins,
                        [&](int y) { return [&bins, f = row(y)](int x) mutable { f(x, bins.Data()); }; });
}

} // namespace Tesk::filters
