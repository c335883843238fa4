// The means that the low-pass filters, the high-pass filters and other classes share.
#pragma once

#include "image/Image.h"

#include <cstdint>
#include <vector>

namespace Tesk::filters {

/// The truncated mean of a box around each pixel of a `Gray` or `Gray16` window, rows and columns replicated. `dst` has
/// the size and type of `src` and shares no pixel with it; sizes are odd, 1 to 32767. Throws `std::bad_alloc`.
void BoxMeans(const Image& src, int width, int height, Image& dst);

/// The cascade of three boxes along rows, then columns, each truncated; as above, but `dst` may be `src`.
void GaussMeans(const Image& src, int width, int height, Image& dst);

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

} // namespace Tesk::filters
