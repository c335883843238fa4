// The counts that statistics work on, wherever they come from, and the refusals of histograms.
#pragma once

#include "foundation/Entry.h"
#include "image/Histogram.h"
#include "image/Image.h"
#include "image/histogram/LevelCounts.h"

namespace Tesk::levels {

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
inline std::int32_t Held(std::int64_t count)
{
    return static_cast<std::int32_t>(Min<std::int64_t>(count, INT32_MAX));
}

inline int RefuseImage(PixelTypes type)
{
    return Status::Format(UnsupportedType, L"The image type (%ls) is not supported for this operation",
                          PixelTypeName(type));
}

struct Moments
{
    double mean, variance;
};

/// Those of a `Gray` image.
Moments MomentsOf(const Image& gray);

} // namespace Tesk::levels
