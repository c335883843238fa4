// The sums of pixels along a probe, across its breadth.
#pragma once

#include "image/Image.h"

#include <cstdint>

namespace Tesk::edges {

/// Sample `i` is the sum of the pixels at `At(i, j)` for all `j` below the breadth.
struct ProbeGrid
{
    XY start, along, across; ///< steps of a pixel
    int samples, breadth;

    XY At(int i, int j) const { return {start.X + i * along.X + j * across.X, start.Y + i * along.Y + j * across.Y}; }
};

/// Refuses a void image and all types but `Gray` and `Rgb`. An `ErrorCodes` value, with its message stored.
int CheckSampled(const Image& src);

/// Bilinear in doubles, the sum truncated: as it is for a breadth of 1, else with half a level more. Where the probe
/// comes near the border or leaves the image, places are held to it, and half a level is added always. `last` is the
/// place on the edge `j = 0` of the probe up to which it must keep clear of the border.
void SampleGray(const Image& src, const ProbeGrid& grid, XY last, std::int32_t* samples);

/// The sum of red, green and blue, bilinear in 65,536ths and truncated at each step; `whole` reads the pixels as they
/// stand. False if the probe leaves the image.
bool SampleRgb(const Image& src, const ProbeGrid& grid, bool whole, std::int32_t* samples);

} // namespace Tesk::edges
