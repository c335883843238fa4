// What the methods of histograms share: refusals, and the moments of an image.
#pragma once

#include "foundation/Entry.h"
#include "image/Histogram.h"
#include "image/Image.h"
#include "image/core/PixelTypes.h"
#include "image/core/Refusals.h"
#include "image/core/Saturation.h"
#include "image/histogram/LevelCounts.h"

namespace Tesk::levels {

using namespace images;

/// A count as a sample holds it.
inline std::int32_t CountSample(std::int64_t count)
{
    return static_cast<std::int32_t>(Min<std::int64_t>(count, INT32_MAX));
}

/// Runs the part of a method that allocates memory.
template <typename F>
void Guarded(const Entry& entry, F work)
{
    entry.Guards(noInternalBuffer, work);
}

inline double PixelCount(const Image& image)
{
    return static_cast<double>(image.Width) * image.Height;
}

/// Statistics and drawings that take only `Gray`, or only `Rgb`, name the type in words of their own.
inline int CheckOnly(const Image& src, PixelTypes type)
{
    if (const int code = CheckImage(src)) return code;
    if (src.Type == type) return NoError;
    return Status::Format(UnsupportedType, L"Image pixel Type (%ls) not supported for this operation%ls",
                          PixelTypeName(src.Type), type == Rgb ? L", use Rgb" : L"");
}

struct Moments
{
    double mean, variance;
};

/// Those of a `Gray` or `Gray16` image, of exact sums.
Moments MomentsOf(const Image& gray);

} // namespace Tesk::levels
