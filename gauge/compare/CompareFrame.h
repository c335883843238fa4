// What the sources of the comparator share: views of the compared pixels, samples, the words of refusals.
#pragma once

#include "foundation/Entry.h"
#include "image/Image.h"
#include "image/core/PixelTypes.h"
#include "measure/region/ScanKernels.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Tesk::compare {

/// The scale of samples of a channel.
inline constexpr int lightest = 255;
/// What the coordinates of ROIs hold.
inline constexpr int farthest = 32767;
/// What aligned images show where the source does not reach.
inline constexpr int uncovered = 128;

/// Means of the channels, red first, and the mean of their variances.
struct Statistics
{
    std::array<double, 3> means{};
    double variance = 0;
};

/// An aligned image, and the limits of its pixels.
struct View
{
    Image src, low, high;
};

/// What the good samples have shown of each pixel of the reference; channels stand side by side as in images.
struct Samples
{
    bool isStatistical = false;
    std::size_t width = 0, channels = 1; ///< a width of 0: none were begun
    std::vector<std::uint16_t> counts;
    std::vector<std::uint8_t> least, most;
    std::vector<std::uint32_t> sums, squares;
};

/// Makes a view of a window of another image, at a place within its window.
inline void ViewOf(const Image& src, const Limits& box, Image& view)
{
    const int x = src.X, y = src.Y;
    view.ShallowCopy(src, true);
    view.Window(x + box.X, y + box.Y, box.Width, box.Height);
}

inline int CheckColors(const Image& src)
{
    if (const int code = CheckImage(src)) return code;
    if (src.Type == Gray || src.Type == Rgb) return NoError;
    return Status::Format(UnsupportedType, L"The image type (%ls) must be one of Gray or Rgb", PixelTypeName(src.Type));
}

/// Calls `visit(y, from, to)` for each run, cut to a window of that size, in the order of the list.
template <typename F>
void EachRun(std::span<const LabeledRun> runs, int width, int height, F visit)
{
    for (const LabeledRun& run : runs) {
        const int from = Max<int>(run.Start, 0), to = Min<int>(run.End, width);
        if (run.Y >= 0 && run.Y < height && from < to) visit(int(run.Y), from, to);
    }
}

/// Calls `visit(y, from, to)` for each run of neighbouring samples that are out of their limits, counted from the left
/// end of the row: columns of a `Gray` image, bytes of an `Rgb` one. May throw `std::bad_alloc`.
template <typename F>
void EachExcess(const View& view, std::span<const LabeledRun> clip, F visit)
{
    const int channels = images::Channels(view.src.Type);
    std::vector<std::int32_t> edges(static_cast<std::size_t>(channels * view.src.Width) + 1 + kernels::edgeSlack);
    EachRun(clip, view.src.Width, view.src.Height, [&](int y, int from, int to) {
        const int first = from * channels;
        const std::size_t count =
            kernels::LimitEdges(view.src.Row(y) + first, view.low.Row(y) + first, view.high.Row(y) + first,
                                static_cast<std::size_t>((to - from) * channels), edges.data());
        for (std::size_t i = 0; i < count; i += 2)
            visit(y, first + edges[i], first + edges[i + 1]);
    });
}

} // namespace Tesk::compare
