// Scans the window of an image for runs of active pixels, row by row, whole or under a mask, into any sink.
//
// A scanner of rows gives the columns at which the runs of a row begin and end; a sink takes each row as a whole:
//
//     ScanWindow(src, BandScanner{src, Band::Above(threshold, true)}, [&](const ScannedRow& row) {
//         for (std::size_t i = 0; i < row.Runs(); i++)
//             Use(row.Start(i), row.End(i), row.y);
//     });
#pragma once

#include "image/Image.h"
#include "measure/region/ScanKernels.h"

#include <span>
#include <vector>

namespace Tesk::regions {

using kernels::Band;

/// The runs of one row, from left to right, in coordinates of the whole picture.
struct ScannedRow
{
    std::span<const std::int32_t> edges; ///< columns of the window at which runs begin and end, by turns
    int x, y;                            ///< the window's left column; the row

    std::size_t Runs() const { return edges.size() / 2; }
    int Start(std::size_t run) const { return edges[2 * run] + x; }
    int End(std::size_t run) const { return edges[2 * run + 1] + x; }
};

/// The columns at which runs of active pixels begin and end, pixel by pixel.
template <typename Active>
std::size_t EdgesWhere(std::size_t n, std::int32_t* edges, Active active)
{
    std::size_t count = 0;
    bool open = false;
    for (std::size_t x = 0; x < n; x++)
        if (active(x) != open) {
            open = !open;
            edges[count++] = static_cast<std::int32_t>(x);
        }
    if (open) edges[count++] = static_cast<std::int32_t>(n);
    return count;
}

// Scanners of rows: the edges of the `n` pixels from column `x` of row `y` of the window on, counted from `x`.

/// `Gray` pixels with a value in a band.
struct BandScanner
{
    const Image& src;
    Band band;

    std::size_t operator()(int x, int y, std::size_t n, std::int32_t* edges) const
    {
        return kernels::BandEdges(src.Row(y) + x, n, band, edges);
    }
};

/// `Gray` pixels below those of one image or above those of another, both of the size of the window.
struct LimitScanner
{
    const Image &src, &low, &high;

    std::size_t operator()(int x, int y, std::size_t n, std::int32_t* edges) const
    {
        return kernels::LimitEdges(src.Row(y) + x, low.Row(y) + x, high.Row(y) + x, n, edges);
    }
};

/// `Gray1` pixels that are set; whole rows only.
struct BitScanner
{
    const Image& src;

    std::size_t operator()(int, int y, std::size_t n, std::int32_t* edges) const
    {
        return kernels::BitEdges(src.Row(y), n, edges);
    }
};

/// Pixels for which `active(column, row)` holds.
template <typename Active>
struct PixelScanner
{
    Active active;

    std::size_t operator()(int x, int y, std::size_t n, std::int32_t* edges) const
    {
        return EdgesWhere(n, edges, [&](std::size_t i) { return active(x + static_cast<int>(i), y); });
    }
};
// For compilers that do not deduce aggregates.
template <typename Active>
PixelScanner(Active) -> PixelScanner<Active>;

/// Feeds each row of the window to the sink, also those without a run. May throw `std::bad_alloc`.
template <typename Scanner, typename Sink>
void ScanWindow(const Image& src, const Scanner& scanner, Sink&& sink)
{
    const auto width = static_cast<std::size_t>(int(src.Width));
    std::vector<std::int32_t> edges(width + 1 + kernels::edgeSlack);
    for (int y = 0; y < src.Height; y++) {
        const std::size_t count = scanner(0, y, width, edges.data());
        sink(ScannedRow{{edges.data(), count}, src.X, y + src.Y});
    }
}

/// The same for the pixels of a mask in scan order, whose coordinates count from the corner of the window. Each of its
/// runs is scanned by itself, so that runs end where it ends. Only rows on which it has pixels are fed.
template <typename Scanner, typename Sink>
void ScanMasked(const Image& src, std::span<const LabeledRun> mask, const Scanner& scanner, Sink&& sink)
{
    std::vector<std::int32_t> edges;
    for (std::size_t i = 0; i < mask.size();) {
        const int y = mask[i].Y;
        std::size_t count = 0;
        bool fed = false;
        for (; i < mask.size() && mask[i].Y == y; i++) {
            const int start = Max<int>(mask[i].Start, 0), end = Min<int>(mask[i].End, src.Width);
            if (y < 0 || y >= src.Height || start >= end) continue;
            const auto n = static_cast<std::size_t>(end - start);
            if (edges.size() < count + n + 1 + kernels::edgeSlack) edges.resize(2 * (count + n + kernels::edgeSlack));
            const std::size_t more = scanner(start, y, n, edges.data() + count);
            for (std::size_t k = count; k < count + more; k++)
                edges[k] += start;
            count += more;
            fed = true;
        }
        if (fed) sink(ScannedRow{{edges.data(), count}, src.X, y + src.Y});
    }
}

} // namespace Tesk::regions
