// What all work on lists of runs shares: making, ordering and clipping runs.
#pragma once

#include "foundation/Records.h"
#include "foundation/Status.h"
#include "image/Image.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace Tesk::regions {

/// Scan order: by row, then by first column.
inline bool IsBefore(const LabeledRun& a, const LabeledRun& b)
{
    return a.Y != b.Y ? a.Y < b.Y : a.Start < b.Start;
}

/// Coordinates that 16 bits do not hold wrap.
inline LabeledRun MakeRun(int start, int end, int y, int label = 0)
{
    return {static_cast<std::int16_t>(start), static_cast<std::int16_t>(end), static_cast<std::int16_t>(y), label};
}

/// Refuses a window that lies beyond the coordinates of runs. An `ErrorCodes` value.
inline int CheckReach(const Image& src)
{
    // The end of a run is the column behind its last pixel.
    if (std::int64_t{src.X} + src.Width <= INT16_MAX && std::int64_t{src.Y} + src.Height <= INT16_MAX + 1)
        return NoError;
    return Status::Format(OutOfRange, L"The image size (%d, %d) is larger than the coordinates of a region reach (%d)",
                          int(src.Width), int(src.Height), INT16_MAX);
}

inline void SortRuns(std::vector<LabeledRun>& runs)
{
    std::sort(runs.begin(), runs.end(), IsBefore);
}

inline int CheckIndex(int index, int numRuns)
{
    if (numRuns < 1) return Status::Format(OutOfRange, L"No run is available");
    if (index >= 0 && index < numRuns) return NoError;
    return Status::Format(OutOfRange, L"The run index (%d) must be in range [0..%d]", index, numRuns - 1);
}

/// Runs `f(first column, pixels, row)` for the part of each run that lies in a window of that size, counted from its
/// corner.
template <typename F>
void EachClipped(std::span<const LabeledRun> runs, int width, int height, F f)
{
    for (const LabeledRun& run : runs) {
        const int start = Max<int>(run.Start, 0), end = Min<int>(run.End, width);
        if (run.Y >= 0 && run.Y < height && start < end) f(start, static_cast<std::size_t>(end - start), int{run.Y});
    }
}

} // namespace Tesk::regions
