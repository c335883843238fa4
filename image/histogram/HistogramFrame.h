// The counts that statistics work on, wherever they come from, and the refusals of histograms.
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

/// The counts of the levels `offset` to `offset + size - 1`.
struct Counts
{
    const std::int32_t* counts = nullptr;
    int size = 0, offset = 0, stride = 1;
    std::int64_t total = 0;

    /// A count below 0 can only have been written there; it counts as none.
    std::int64_t operator[](int i) const { return Max(counts[static_cast<std::ptrdiff_t>(i) * stride], 0); }
};

/// Counts with their sum.
Counts Summed(const std::int32_t* counts, int size, int offset, int stride);

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

/// Those of a `Gray` image.
Moments MomentsOf(const Image& gray);

} // namespace Tesk::levels
