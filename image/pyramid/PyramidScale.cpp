// Halving, doubling and tile statistics.
#include "image/pyramid/PyramidScale.h"

#include "foundation/Entry.h"
#include "image/Pyramid.h"
#include "image/core/Destination.h"
#include "image/core/PixelTypes.h"
#include "image/core/Refusals.h"
#include "image/pyramid/PyramidKernels.h"

#include <vector>

namespace Tesk {

namespace pyramid {

int CheckScalable(const Image& src)
{
    return images::CheckType(src, {Gray, Gray16, Rgb}, L", use Gray, Gray16 or Rgb");
}

namespace {

/// Two outputs by two of each block of three by three, for pixels of `Channels` samples.
template <int Channels, typename T>
void TwoThirdsRows(const T* const rows[3], T* upper, T* lower, int blocks)
{
    for (int i = 0; i < blocks; i++)
        for (int c = 0; c < Channels; c++) {
            const auto at = [&](int y, int x) { return int{rows[y][(3 * i + x) * Channels + c]}; };
            const auto mixed = [&](int y, int x) {
                return static_cast<T>((4 * at(y, x) + 2 * at(y, 1) + 2 * at(1, x) + at(1, 1)) / 9);
            };
            const int left = 2 * i * Channels + c, right = left + Channels;
            upper[left] = mixed(0, 0);
            upper[right] = mixed(0, 2);
            lower[left] = mixed(2, 0);
            lower[right] = mixed(2, 2);
        }
}

template <int Channels, typename T>
void ReduceRows(const Image& src, Image& dst, bool dyadic)
{
    if (dyadic) {
        const auto n = static_cast<std::size_t>(int(dst.Width));
        for (int y = 0; y < dst.Height; y++)
            if constexpr (Channels == 1 && sizeof(T) == 1)
                kernels::HalveRow(src.Row(2 * y), src.Row(2 * y + 1), dst.Row(y), n);
            else if constexpr (Channels == 3)
                kernels::HalveColorRow(src.Row(2 * y), src.Row(2 * y + 1), dst.Row(y), n);
            else
                kernels::HalveRowPlain<Channels>(src.Row<T>(2 * y), src.Row<T>(2 * y + 1), dst.Row<T>(y), n);
        return;
    }
    for (int b = 0; b < dst.Height / 2; b++) {
        const T* const rows[3] = {src.Row<T>(3 * b), src.Row<T>(3 * b + 1), src.Row<T>(3 * b + 2)};
        TwoThirdsRows<Channels>(rows, dst.Row<T>(2 * b), dst.Row<T>(2 * b + 1), dst.Width / 2);
    }
}

template <int Channels, typename T>
void DoubleRows(const Image& src, Image& dst)
{
    const auto n = static_cast<std::size_t>(int(src.Width));
    const auto row = [&](int top, int bottom, int y, int weightTop, int weightBottom, int shift) {
        if constexpr (Channels == 1 && sizeof(T) == 1)
            kernels::DoubleRow(src.Row(top), src.Row(bottom), dst.Row(y), n, weightTop, weightBottom, shift);
        else if constexpr (Channels == 3)
            kernels::DoubleColorRow(src.Row(top), src.Row(bottom), dst.Row(y), n, weightTop, weightBottom, shift);
        else
            kernels::DoubleRowPlain<Channels>(src.Row<T>(top), src.Row<T>(bottom), dst.Row<T>(y), n, weightTop,
                                              weightBottom, shift);
    };
    const int last = src.Height - 1;
    row(0, 0, 0, 1, 0, 2);
    for (int y = 0; y < last; y++) {
        row(y, y + 1, 2 * y + 1, 3, 1, 4);
        row(y, y + 1, 2 * y + 2, 1, 3, 4);
    }
    row(last, last, 2 * last + 1, 1, 0, 2);
}

} // namespace

void Reduce(const Image& src, Image& dst, bool dyadic)
{
    images::VisitSamples<Gray, Gray16, Rgb>(
        src.Type, [&]<int channels, typename T>() { ReduceRows<channels, T>(src, dst, dyadic); });
}

} // namespace pyramid

namespace {

/// Fills a destination of a size of its own by `compute(source, destination)`; one without pixels is refused.
template <typename F>
void ScaleInto(const Entry& entry, const Image& src, Image& dst, std::int64_t width, std::int64_t height, F compute)
{
    if (width < 1 || height < 1) {
        entry.Refuse(IncompatibleSize, L"The image (%d, %d) is too small for this operation", int(src.Width),
                     int(src.Height));
        return;
    }
    images::Sources held;
    if (Prepare(entry, src, dst, width, height, held)) return;
    entry.Guards(images::noImage, [&] { compute(held.a, dst); });
}

/// What the pixels of one tile amount to.
struct TileSums
{
    std::int64_t count, sum, squares;
    int lowest, highest;
};

/// The statistics of a row of tiles are gathered column by column first, so that the inner loop runs along the rows.
template <typename F>
void Tiles(const char* context, int tile, const Image& Src, Image& Dst, bool partial, F f)
{
    const Entry entry(context);
    if (entry.Refuses(images::CheckType(Src, {Gray}))) return;
    if (tile < 1) {
        entry.Refuse(OutOfRange, L"The tile size (%d) must be positive", tile);
        return;
    }
    const std::int64_t rest = partial ? std::int64_t{tile} - 1 : 0;
    const auto compute = [=](const Image& src, Image& dst, auto zero) {
        using Sum = decltype(zero);
        const int used = static_cast<int>(Min<std::int64_t>(src.Width, std::int64_t{dst.Width} * tile));
        const auto columns = static_cast<std::size_t>(used);
        std::vector<Sum> sums(columns), squares(columns);
        std::vector<std::uint8_t> lowest(columns), highest(columns);
        for (int ty = 0; ty < dst.Height; ty++) {
            sums.assign(columns, 0);
            squares.assign(columns, 0);
            lowest.assign(columns, 255);
            highest.assign(columns, 0);
            const std::int64_t fromY = std::int64_t{ty} * tile, toY = Min<std::int64_t>(fromY + tile, src.Height);
            for (std::int64_t y = fromY; y < toY; y++) {
                const std::uint8_t* s = src.Row(static_cast<int>(y));
                for (std::size_t x = 0; x < columns; x++) {
                    const Sum v = s[x];
                    sums[x] += v;
                    squares[x] += v * v;
                    lowest[x] = Min(lowest[x], s[x]);
                    highest[x] = Max(highest[x], s[x]);
                }
            }
            for (int tx = 0; tx < dst.Width; tx++) {
                const std::int64_t fromX = std::int64_t{tx} * tile, toX = Min<std::int64_t>(fromX + tile, used);
                TileSums all{(toX - fromX) * (toY - fromY), 0, 0, 255, 0};
                for (auto x = static_cast<std::size_t>(fromX); x < static_cast<std::size_t>(toX); x++) {
                    all.sum += static_cast<std::int64_t>(sums[x]);
                    all.squares += static_cast<std::int64_t>(squares[x]);
                    all.lowest = Min<int>(all.lowest, lowest[x]);
                    all.highest = Max<int>(all.highest, highest[x]);
                }
                dst.Row(ty)[tx] = static_cast<std::uint8_t>(f(all));
            }
        }
    };
    // 65,536 squares of a byte fit in 32 bits.
    ScaleInto(entry, Src, Dst, (Src.Width + rest) / tile, (Src.Height + rest) / tile,
              [&](const Image& src, Image& dst) {
                  if (tile <= 65536)
                      compute(src, dst, std::uint32_t{0});
                  else
                      compute(src, dst, std::uint64_t{0});
              });
}

} // namespace

void Pyramid::Double(const Image& Src, Image& Dst)
{
    const Entry entry("Tesk::Pyramid::Double");
    if (entry.Refuses(pyramid::CheckScalable(Src))) return;
    ScaleInto(entry, Src, Dst, std::int64_t{2} * Src.Width, std::int64_t{2} * Src.Height, [](const Image& s, Image& d) {
        images::VisitSamples<Gray, Gray16, Rgb>(
            s.Type, [&]<int channels, typename T>() { pyramid::DoubleRows<channels, T>(s, d); });
    });
}

void Pyramid::Halve(const Image& Src, Image& Dst, bool Dyadic)
{
    const Entry entry("Tesk::Pyramid::Halve");
    if (entry.Refuses(pyramid::CheckScalable(Src))) return;
    const auto reduced = [Dyadic](int v) { return Dyadic ? v >> 1 : v / 3 * 2; };
    ScaleInto(entry, Src, Dst, reduced(Src.Width), reduced(Src.Height),
              [Dyadic](const Image& s, Image& d) { pyramid::Reduce(s, d, Dyadic); });
}

void Pyramid::TileMean(int TileSize, const Image& Src, Image& Dst, bool PartialTiles)
{
    Tiles("Tesk::Pyramid::TileMean", TileSize, Src, Dst, PartialTiles,
          [](const TileSums& t) { return t.sum / t.count; });
}

void Pyramid::TileMidRange(int TileSize, const Image& Src, Image& Dst, bool PartialTiles)
{
    Tiles("Tesk::Pyramid::TileMidRange", TileSize, Src, Dst, PartialTiles,
          [](const TileSums& t) { return (t.lowest + t.highest) >> 1; });
}

void Pyramid::TileDeviation(int TileSize, const Image& Src, Image& Dst, bool PartialTiles)
{
    Tiles("Tesk::Pyramid::TileDeviation", TileSize, Src, Dst, PartialTiles, [](const TileSums& t) {
        // 64 bits hold the products of tiles of up to 8 million pixels; beyond that, doubles round them.
        const double n = static_cast<double>(t.count), s = static_cast<double>(t.sum);
        const double spread = t.count < 1 << 23 ? static_cast<double>(t.count * t.squares - t.sum * t.sum)
                                                : Max(0.0, n * static_cast<double>(t.squares) - s * s);
        return static_cast<std::int64_t>(std::sqrt(spread)) / t.count;
    });
}

void Pyramid::TileRange(int TileSize, const Image& Src, Image& Dst, bool PartialTiles)
{
    Tiles("Tesk::Pyramid::TileRange", TileSize, Src, Dst, PartialTiles,
          [](const TileSums& t) { return t.highest - t.lowest; });
}

} // namespace Tesk
