// The walk round the outline of a piece of runs, clockwise on the screen.
#pragma once

#include "foundation/Records.h"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

namespace Tesk::regions {

/// The eight directions, clockwise from the right.
struct Direction
{
    int x, y;
};
inline constexpr std::array<Direction, 8> directions = {
    {{1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}, {-1, -1}, {0, -1}, {1, -1}}};

/// Walks round the piece that holds the first of some runs in scan order: those of a region, or of one blob. Pixels
/// that meet at a corner belong together. Keeps its memory from one walk to the next.
///
///     OutlineWalk walk;
///     walk.Follow(runs, [&](int x, int y) { path.Append(x, y); });
class OutlineWalk
{
public:
    /// Calls `emit(x, y)` for each pixel of the outline, from the first pixel of the first run on, every time that the
    /// walk comes by; never for a single pixel. May throw `std::bad_alloc`.
    template <typename F>
    void Follow(std::span<const LabeledRun> runs, F emit)
    {
        // An erosion may leave runs without a pixel.
        while (!runs.empty() && runs[0].Start >= runs[0].End)
            runs = runs.subspan(1);
        if (runs.empty()) return;
        Index(runs);
        Place place = {runs[0].Start, runs[0].Y, 0};
        int d = 0;
        Place next = place;
        while (d < 4 && !Step(place, d, next))
            d++;
        if (d == 4) return;
        const int firstDirection = d;
        const Place second = next;
        // A walk round runs that overlap may miss its start; it would turn in a circle for ever.
        for (std::int64_t left = StepsAtMost(); left > 0; left--) {
            emit(place.x, place.y);
            d = ((d & ~1) - 1) & 7;
            place = next;
            int turns = 0;
            while (turns < 8 && !Step(place, d, next)) {
                d = (d + 1) & 7;
                turns++;
            }
            if (turns == 8 || (next.x == second.x && next.y == second.y && d == firstDirection)) return;
        }
    }

private:
    /// A pixel, and the run in which it was found.
    struct Place
    {
        int x, y;
        std::size_t run;
    };

    /// Where each row begins among the runs, so that neighbours are found by bisection.
    void Index(std::span<const LabeledRun> runs)
    {
        runs_ = runs;
        top_ = runs.front().Y;
        rows_.assign(static_cast<std::size_t>(Max(runs.back().Y - top_ + 2, 2)), runs.size());
        int y = top_;
        for (std::size_t i = 0; i < runs.size(); i++)
            for (; y <= runs[i].Y && y - top_ < static_cast<int>(rows_.size()); y++)
                rows_[static_cast<std::size_t>(y - top_)] = i;
    }

    std::span<const LabeledRun> Row(int y) const
    {
        if (y < top_ || y - top_ + 1 >= static_cast<int>(rows_.size())) return {};
        const auto row = static_cast<std::size_t>(y - top_);
        return runs_.subspan(rows_[row], rows_[row + 1] - rows_[row]);
    }

    /// The neighbour in a direction, if it is inside.
    bool Step(const Place& place, int d, Place& next) const
    {
        const int x = place.x + directions[static_cast<std::size_t>(d)].x,
                  y = place.y + directions[static_cast<std::size_t>(d)].y;
        std::size_t run = place.run;
        if (d == 0) {
            if (x >= runs_[run].End) return false;
        } else if (d == 4) {
            if (x < runs_[run].Start) return false;
        } else {
            const std::span<const LabeledRun> row = Row(y);
            // Below, the first run that is not over; above, the last one that has begun.
            const auto found =
                d < 4 ? std::partition_point(row.begin(), row.end(), [x](const LabeledRun& r) { return r.End <= x; })
                      : std::partition_point(row.begin(), row.end(), [x](const LabeledRun& r) { return r.Start <= x; });
            if (d < 4 ? found == row.end() || found->Start > x : found == row.begin() || found[-1].End <= x)
                return false;
            run = static_cast<std::size_t>(&*found - runs_.data()) - (d < 4 ? 0 : 1);
        }
        next = {x, y, run};
        return true;
    }

    std::int64_t StepsAtMost() const
    {
        std::int64_t pixels = 0;
        for (const LabeledRun& run : runs_)
            pixels += Max(run.End - run.Start, 0);
        return 8 * pixels;
    }

    std::span<const LabeledRun> runs_;
    std::vector<std::size_t> rows_;
    int top_ = 0;
};

} // namespace Tesk::regions
