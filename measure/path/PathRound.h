// The sites of a closed path, round and round, and how far they lie from a segment.
#pragma once

#include "measure/path/PathFrame.h"

#include <cmath>
#include <cstdint>
#include <span>

namespace Tesk::paths {

/// The sites of a path by an index that runs on round a closed one.
class Round
{
public:
    explicit Round(std::span<const Site> sites) : sites_(sites), length_(static_cast<std::int64_t>(sites.size())) {}

    /// Indexes go at most twice round, which is sooner brought back than divided.
    Site operator[](std::int64_t i) const
    {
        while (i >= length_)
            i -= length_;
        return sites_[static_cast<std::size_t>(i)];
    }
    std::int64_t Length() const { return length_; }

private:
    std::span<const Site> sites_;
    std::int64_t length_;
};

inline double DistanceToSegment(Site p, Site a, Site b)
{
    const double dx = b.X - a.X, dy = b.Y - a.Y, px = p.X - a.X, py = p.Y - a.Y, squared = dx * dx + dy * dy;
    const double along = px * dx + py * dy;
    if (along <= 0) return std::hypot(px, py);
    if (along >= squared) return std::hypot(p.X - b.X, p.Y - b.Y);
    return std::abs(static_cast<double>(Cross(a, b, p))) / std::sqrt(squared);
}

/// Whether the middle site between two indexes lies near the line through them.
inline bool MiddleIsNear(Round sites, std::int64_t from, std::int64_t to, double squaredDeviation)
{
    const Site a = sites[from], b = sites[to];
    const auto cross = static_cast<double>(Cross(a, b, sites[(from + to) / 2]));
    return static_cast<double>(SquaredDistance(a, b)) * squaredDeviation >= cross * cross;
}

} // namespace Tesk::paths
