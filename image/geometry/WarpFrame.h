// What the warps share: the checks of a destination, the source held apart, positions and map entries.
#pragma once

#include "foundation/Entry.h"
#include "image/core/Destination.h"
#include "image/core/PixelTypes.h"
#include "image/core/Refusals.h"
#include "image/geometry/WarpKernels.h"
#include "image/geometry/Warps.h"

#include <cmath>

namespace Tesk::warps {

using namespace images;

inline constexpr int fractionBits = 16;
inline constexpr std::int64_t one = 1 << fractionBits;

/// Checks source and destination of a warp; a map of `Rgba` is accepted `withRgba`. A destination that has no more than
/// a size becomes one of the source's type. An `ErrorCodes` value.
int RefuseImages(const Image& Src, Image& Dst, bool withRgba);

/// Holds a checked source (a view, or a copy where the destination shares its memory or the offsets of a map
/// cannot address the rows) and detaches the destination, with its pixels if it `keeps` some of them. An `ErrorCodes`
/// value.
int HoldSource(const Image& Src, Image& Dst, bool keeps, Image& held);

/// The types of pixels that warps sample.
inline constexpr images::Types sampledTypes = {Gray, Gray16, Rgb};

/// Refuses sources that the offsets of a map cannot address.
int RefuseExtent(const Image& src);

kernels::Surface SurfaceOf(const Image& image);

/// A number in 65,536ths, as the warps count: the nearest below, towards 0 under -1/2. A number that the arithmetic of
/// doubles left a hair from a whole count is that count.
inline std::int64_t Fixed(double value)
{
    constexpr double offset = 32768, noise = 1.0 / 1024;
    const double shifted = value * static_cast<double>(one) + offset;
    return static_cast<std::int64_t>(shifted + (shifted < 0 ? -noise : noise)) - static_cast<std::int64_t>(offset);
}

/// Bilinear samples of 32 bits, which the kernels do not serve, rounded down.
void BilinearWideRow(const kernels::Surface& s, const GeoMapPixel* entries, std::int32_t* d, std::size_t n);

/// The pixels of a row at entries of a map.
inline void SampleRow(const kernels::Surface& s, const GeoMapPixel* entries, std::uint8_t* d, std::size_t n,
                      bool interpolate)
{
    if (s.type == Gray32) {
        auto* wide = reinterpret_cast<std::int32_t*>(d);
        if (interpolate)
            BilinearWideRow(s, entries, wide, n);
        else
            kernels::NearestMapRowPlain<1>(s, entries, wide, n);
    } else if (interpolate)
        kernels::BilinearMapRow(s, entries, d, n);
    else
        kernels::NearestMapRow(s, entries, d, n);
}

/// Refuses maps that 65,536ths cannot hold in 64 bits, numbers that are none included, over a result of that size.
int RefuseFar(const AffineMap& map, std::int64_t width, std::int64_t height);
/// Fills the window of `dst`, which shares no memory with the source; true if some positions lie outside the source.
bool FillAffine(const AffineMap& map, const Image& src, Image& dst, bool interpolate, const RunSink& valid = {});

int RefuseRing(const Ring& ring);
void FillRing(const Ring& ring, const Image& src, Image& dst, bool interpolate);

} // namespace Tesk::warps
