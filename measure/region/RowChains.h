// The hull of runs by way of the ends of their rows.
#pragma once

#include "foundation/Records.h"

#include <span>
#include <vector>

namespace Tesk::regions {

/// For each row that holds pixels, from the top down, its leftmost and its rightmost one. The runs are in scan order.
struct RowChains
{
    std::vector<Site> left, right;

    RowChains() = default;
    explicit RowChains(std::span<const LabeledRun> runs) { Assign(runs); }
    /// Takes other runs, in the memory that is there.
    void Assign(std::span<const LabeledRun> runs);

    /// Leaves the corners of the convex hull.
    void Convexify();
    /// The corners of the convex hull, counterclockwise on the screen from the top left one; of convex chains.
    std::vector<Site> Hull() const;
    void Hull(std::vector<Site>& hull) const;
    /// Calls `emit(left, right, y)` for each row of the hull, the ends being pixels; of convex chains.
    template <typename F>
    void EachRow(F emit) const
    {
        if (left.empty()) return;
        Segment onLeft(left), onRight(right);
        for (int y = left.front().Y; y <= left.back().Y; y++)
            emit(onLeft.At(y), onRight.At(y), y);
    }

private:
    /// The side of a chain that a row meets, for rows from the top down.
    class Segment
    {
    public:
        explicit Segment(const std::vector<Site>& chain) : chain_(chain) {}

        int At(int y)
        {
            while (next_ + 1 < chain_.size() && chain_[next_].Y < y)
                next_++;
            const Site q = chain_[next_], p = chain_[next_ > 0 ? next_ - 1 : 0];
            if (q.Y == p.Y) return q.X;
            return p.X + static_cast<int>(std::int64_t{y - p.Y} * (q.X - p.X) / (q.Y - p.Y));
        }

    private:
        const std::vector<Site>& chain_;
        std::size_t next_ = 0;
    };
};

} // namespace Tesk::regions
