// The hull of runs by way of the ends of their rows.
#include "measure/region/RowChains.h"

namespace Tesk::regions {

namespace {

/// Keeps the sites at which a chain turns to one side: `sense` 1 for chains that bulge to the left, -1 to the right.
void KeepTurns(std::vector<Site>& chain, int sense)
{
    std::size_t count = 0;
    for (const Site c : chain) {
        while (count > 1) {
            const Site a = chain[count - 2], b = chain[count - 1];
            if (sense * (std::int64_t{a.Y - b.Y} * (b.X - c.X) - std::int64_t{a.X - b.X} * (b.Y - c.Y)) > 0) break;
            count--;
        }
        chain[count++] = c;
    }
    chain.resize(count);
}

bool Same(Site a, Site b)
{
    return a.X == b.X && a.Y == b.Y;
}

} // namespace

void RowChains::Assign(std::span<const LabeledRun> runs)
{
    left.clear();
    right.clear();
    for (const LabeledRun& run : runs) {
        // An erosion may leave runs without a pixel.
        if (run.Start >= run.End) continue;
        if (left.empty() || left.back().Y != run.Y) {
            left.emplace_back(run.Start, run.Y);
            right.emplace_back(run.End - 1, run.Y);
        }
        right.back().X = static_cast<std::int16_t>(Max(right.back().X + 0, run.End - 1));
    }
}

void RowChains::Convexify()
{
    KeepTurns(left, 1);
    KeepTurns(right, -1);
}

std::vector<Site> RowChains::Hull() const
{
    std::vector<Site> hull;
    Hull(hull);
    return hull;
}

void RowChains::Hull(std::vector<Site>& hull) const
{
    hull.assign(left.begin(), left.end());
    if (hull.empty()) return;
    for (auto site = right.rbegin(); site != right.rend(); ++site)
        if (!Same(*site, hull.back())) hull.push_back(*site);
    if (hull.size() > 1 && Same(hull.front(), hull.back())) hull.pop_back();
}

} // namespace Tesk::regions
