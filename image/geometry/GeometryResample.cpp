// Resampling to a given size: block means, single pixels, bilinear enlargement.
#include "foundation/Entry.h"
#include "image/Geometry.h"
#include "image/core/Destination.h"
#include "image/core/PixelTypes.h"
#include "image/geometry/ResampleKernels.h"
#include "image/geometry/WarpFrame.h"
#include "image/pyramid/PyramidScale.h"

#include <limits>
#include <utility>
#include <vector>

namespace Tesk {

namespace {

/// The source pixel, or the start of a block of them, for each pixel of the result.
using Places = std::vector<std::size_t>;

/// i (from - 1) / (to - 1), truncating. A result of one pixel has no step and takes the first.
Places Spread(int from, int to)
{
    Places places(static_cast<std::size_t>(to));
    for (std::size_t i = 1; i < places.size(); i++)
        places[i] = i * static_cast<std::size_t>(from - 1) / (places.size() - 1);
    return places;
}

/// i from / to, truncating, for the starts and the end of all blocks.
Places BlockBounds(int from, int to)
{
    Places bounds(static_cast<std::size_t>(to) + 1);
    for (std::size_t i = 0; i < bounds.size(); i++)
        bounds[i] = i * static_cast<std::size_t>(from) / static_cast<std::size_t>(to);
    return bounds;
}

void PickPixels(const Image& src, Image& dst, const Places& columns, const Places& rows)
{
    const auto elementSize = static_cast<std::size_t>(ElementSize(src.Type));
    for (int y = 0; y < dst.Height; y++)
        kernels::PickRow(src.Row(static_cast<int>(rows[static_cast<std::size_t>(y)])), columns.data(), dst.Row(y),
                         columns.size(), elementSize);
}

/// Sums of 32 bits hold 65,537 samples of 16 bits; a block of more pixels takes 64.
template <int Channels, typename T, typename Sum>
void MeanBlocks(const Image& src, Image& dst)
{
    const Places columns = BlockBounds(src.Width, dst.Width), rows = BlockBounds(src.Height, dst.Height);
    const std::size_t samples = static_cast<std::size_t>(int(src.Width)) * Channels;
    std::vector<Sum> sums(samples);
    for (int y = 0; y < dst.Height; y++) {
        const auto top = static_cast<int>(rows[static_cast<std::size_t>(y)]),
                   bottom = static_cast<int>(rows[static_cast<std::size_t>(y) + 1]);
        sums.assign(samples, 0);
        for (int row = top; row < bottom; row++) {
            const T* s = src.Row<T>(row);
            for (std::size_t i = 0; i < samples; i++)
                sums[i] += s[i];
        }
        T* d = dst.Row<T>(y);
        for (std::size_t x = 0; x + 1 < columns.size(); x++) {
            const std::size_t left = columns[x], right = columns[x + 1];
            const Sum count = static_cast<Sum>((right - left) * static_cast<std::size_t>(bottom - top));
            for (std::size_t c = 0; c < Channels; c++) {
                Sum sum = 0;
                for (std::size_t i = left; i < right; i++)
                    sum += sums[i * Channels + c];
                *d++ = static_cast<T>(count ? sum / count : 0);
            }
        }
    }
}

template <int Channels, typename T>
void MeanBlocks(const Image& src, Image& dst)
{
    const auto larger = [](int from, int to) { return std::int64_t{from} / to + 1; };
    if (larger(src.Width, dst.Width) * larger(src.Height, dst.Height) <= 65536)
        MeanBlocks<Channels, T, std::uint32_t>(src, dst);
    else
        MeanBlocks<Channels, T, std::uint64_t>(src, dst);
}

/// Positions of the pixels of an enlargement: i (from - 1) / (to - 1), so that both ends meet.
std::vector<kernels::Tap> Taps(int from, int to)
{
    std::vector<kernels::Tap> taps(static_cast<std::size_t>(to));
    for (std::size_t i = 1; i < taps.size(); i++) {
        const std::uint64_t position = i * static_cast<std::uint64_t>(from - 1) * warps::one / (taps.size() - 1);
        taps[i] = {static_cast<std::uint32_t>(position >> warps::fractionBits),
                   static_cast<std::uint32_t>(position & (warps::one - 1))};
    }
    return taps;
}

/// The nearest pixel to each of those positions, halves upwards.
Places Nearest(int from, int to)
{
    Places places(static_cast<std::size_t>(to));
    const std::size_t steps = places.size() - 1;
    for (std::size_t i = 1; i < places.size(); i++)
        places[i] = (2 * i * static_cast<std::size_t>(from - 1) + steps) / (2 * steps);
    return places;
}

/// Each source row is spread once; two neighbours give all rows of the result between them.
template <int Channels, typename T>
void Enlarge(const Image& src, Image& dst)
{
    const std::vector<kernels::Tap> columns = Taps(src.Width, dst.Width), rows = Taps(src.Height, dst.Height);
    const std::size_t samples = columns.size() * Channels;
    std::vector<T> upper(samples), lower(samples);
    constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();
    std::uint32_t upperRow = none, lowerRow = none;
    const kernels::ByteSpread ready =
        sizeof(T) == 1 ? kernels::ByteSpread(columns, static_cast<std::size_t>(int(src.Width)), Channels)
                       : kernels::ByteSpread({}, 0, Channels);
    const auto spread = [&](std::uint32_t row, std::vector<T>& d) {
        const T* s = src.Row<T>(static_cast<int>(row));
        std::size_t done = 0;
        if constexpr (sizeof(T) == 1) done = ready.Row(s, d.data()) / Channels;
        kernels::SpreadRowPlain<Channels>(s, columns.data() + done, d.data() + done * Channels, columns.size() - done);
    };
    for (int y = 0; y < dst.Height; y++) {
        const kernels::Tap tap = rows[static_cast<std::size_t>(y)];
        if (tap.first != upperRow) {
            std::swap(upper, lower);
            std::swap(upperRow, lowerRow);
            if (tap.first != upperRow) spread(tap.first, upper);
            upperRow = tap.first;
        }
        // Without weight there may be no next row.
        if (tap.fraction && lowerRow != tap.first + 1) {
            lowerRow = tap.first + 1;
            spread(lowerRow, lower);
        }
        kernels::MixRows(upper.data(), tap.fraction ? lower.data() : upper.data(), dst.Row<T>(y), samples,
                         tap.fraction);
    }
}

int CheckSize(int width, int height)
{
    if (width > 0 && height > 0) return NoError;
    return Status::Format(OutOfRange, L"The size (%d, %d) of the result must be positive", width, height);
}

} // namespace

void Geometry::DownSample(int Width, int Height, const Image& Src, Image& Dst, bool Filter)
{
    const Entry entry("Tesk::Geometry::DownSample");
    if (entry.Refuses(images::CheckType(Src, {Gray, Gray16, Rgb, Rgba})) || entry.Refuses(CheckSize(Width, Height)))
        return;
    images::Sources held;
    if (Prepare(entry, Src, Dst, Width, Height, held)) return;
    entry.Guards(images::noImage, [&] {
        const Image& s = held.a;
        const bool halves = s.Width == 2 * Dst.Width && s.Height == 2 * Dst.Height;
        if (!Filter)
            PickPixels(s, Dst, Spread(s.Width, Dst.Width), Spread(s.Height, Dst.Height));
        else if (halves && s.Type != Rgba)
            pyramid::Reduce(s, Dst, true);
        else
            images::VisitSamples<Gray, Gray16, Rgb, Rgba>(
                s.Type, [&]<int channels, typename T>() { MeanBlocks<channels, T>(s, Dst); });
    });
}

void Geometry::UpSample(int Width, int Height, const Image& Src, Image& Dst, bool Interpolate)
{
    const Entry entry("Tesk::Geometry::UpSample");
    if (entry.Refuses(images::CheckType(Src, warps::sampledTypes)) || entry.Refuses(CheckSize(Width, Height))) return;
    images::Sources held;
    if (Prepare(entry, Src, Dst, Width, Height, held)) return;
    entry.Guards(images::noImage, [&] {
        const Image& s = held.a;
        if (Interpolate)
            images::VisitSamples<Gray, Gray16, Rgb>(s.Type,
                                                    [&]<int channels, typename T>() { Enlarge<channels, T>(s, Dst); });
        else
            PickPixels(s, Dst, Nearest(s.Width, Dst.Width), Nearest(s.Height, Dst.Height));
    });
}

} // namespace Tesk
