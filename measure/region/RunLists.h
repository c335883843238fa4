// What all work on lists of runs shares: making and ordering runs.
#pragma once

#include "foundation/Records.h"
#include "foundation/Status.h"

#include <algorithm>
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

} // namespace Tesk::regions
