// Regions for tests, and the same sets of pixels one by one.
#pragma once

#include "measure/Region.h"
#include "tests/Failures.h"
#include "tests/Noise.h"

#include <gtest/gtest.h>

#include <ostream>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

namespace Tesk::checks {

using RegionMethods = IgnoringFailures;

using Pixels = std::set<std::pair<int, int>>;             ///< row, column
using RunTuples = std::vector<std::tuple<int, int, int>>; ///< start, end, row

inline RunTuples RunsOf(const Region& region)
{
    RunTuples runs;
    for (const LabeledRun& run : region.Runs())
        runs.emplace_back(run.Start, run.End, run.Y);
    return runs;
}

inline Pixels PixelsOf(const Region& region)
{
    Pixels pixels;
    for (const LabeledRun& run : region.Runs())
        for (int x = run.Start; x < run.End; x++)
            pixels.emplace(run.Y, x);
    return pixels;
}

inline Region RegionOf(const RunTuples& runs, bool sorted = true)
{
    Region region;
    for (const auto& [start, end, y] : runs)
        region.AddRun(start, end, y);
    region.Sorted = sorted;
    return region;
}

/// Runs in scan order with gaps between them, on rows from -size to size.
inline Region RandomRegion(Noise& noise, int size)
{
    Region region;
    for (int y = -size; y <= size; y++)
        for (int x = -size + static_cast<int>(noise.Byte() % 8); x < size;) {
            const int end = x + 1 + noise.Byte() % 7;
            region.AddRun(x, end, y);
            x = end + 1 + noise.Byte() % 4 * (noise.Byte() % 3);
        }
    return region;
}

/// The same runs and others over them in any order.
inline Region Shuffled(const Region& region, Noise& noise)
{
    std::vector<LabeledRun> runs(region.Runs().begin(), region.Runs().end());
    Region shuffled;
    while (!runs.empty()) {
        const std::size_t i = (noise() >> 8) % runs.size();
        shuffled.AddRun(runs[i].Start, runs[i].End, runs[i].Y);
        if (noise.Byte() < 64) shuffled.AddRun(runs[i].Start, (runs[i].Start + runs[i].End + 1) / 2, runs[i].Y);
        runs.erase(runs.begin() + static_cast<std::ptrdiff_t>(i));
    }
    shuffled.Sorted = false;
    return shuffled;
}

inline bool IsInScanOrder(const Region& region)
{
    const auto runs = region.Runs();
    for (std::size_t i = 1; i < runs.size(); i++)
        if (runs[i].Y < runs[i - 1].Y || (runs[i].Y == runs[i - 1].Y && runs[i].Start < runs[i - 1].Start))
            return false;
    return region.Sorted;
}

} // namespace Tesk::checks
