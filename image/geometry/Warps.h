// The warps as other families use them: inner forms, which also sample `Gray32`.
#pragma once

#include "image/Geometry.h"

#include <cstdint>
#include <functional>

namespace Tesk::warps {

/// The map from a position of the result to one of the source: x = xx i + xy j + x0, and y likewise.
struct AffineMap
{
    double xx, xy, x0, yx, yy, y0;
};

/// The part of a ring between two directions (in degrees) and two radii, of which the end is the first row.
struct Ring
{
    XY center;
    double begAngle, endAngle, begRadius, endRadius;
};

/// Takes runs of a result whose positions lie between pixels of the source: the first column, the one behind the last,
/// the row.
using RunSink = std::function<void(int, int, int)>;

/// Samples a `Gray`, `Gray16`, `Gray32` or `Rgb` image into one that is given that size and the source's type; `valid`
/// takes the runs of the result that lie in the source, `outside` whether some of it does not.
int SampleAffine(const AffineMap& map, const Image& src, Image& dst, std::int64_t width, std::int64_t height,
                 bool interpolate, const RunSink& valid = {}, bool* outside = nullptr);
int SampleRing(const Ring& ring, const Image& src, Image& dst, std::int64_t width, std::int64_t height,
               bool interpolate);

} // namespace Tesk::warps
