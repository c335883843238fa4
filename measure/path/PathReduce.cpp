// Paths with fewer sites, and the pixels of a polygon.
#include "measure/Path.h"

#include "measure/path/PathFrame.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace Tesk {

using namespace paths;

namespace {

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

/// Keeps the sites of a one-sided hull from which the others lie no farther than a deviation.
class Corridor
{
public:
    Corridor(Round sites, double deviation) : sites_(sites), squaredDeviation_(deviation * deviation) {}

    /// The kept indexes from `start` on, at most to `last`. Of the hulls to either side the one that reaches farther is
    /// taken; where both reach as far the stretch is as good as straight.
    const std::vector<std::int64_t>& From(std::int64_t start, std::int64_t last)
    {
        Walk(start, last, 1, clockwise_);
        Walk(start, last, -1, counterclockwise_);
        if (clockwise_.back() > counterclockwise_.back()) return clockwise_;
        if (clockwise_.back() < counterclockwise_.back()) return counterclockwise_;
        clockwise_ = {start, clockwise_.back()};
        return clockwise_;
    }

private:
    void Walk(std::int64_t start, std::int64_t last, int sense, std::vector<std::int64_t>& kept) const
    {
        kept = {start, start + 1};
        std::vector<std::int64_t>& dropped = dropped_;
        for (std::int64_t j = start + 2; j <= last; j++) {
            dropped.clear();
            bool folds = false;
            while (kept.size() > 1) {
                const Site a = sites_[kept[kept.size() - 2]], b = sites_[kept.back()], c = sites_[j];
                const std::int64_t turn = sense * Cross(a, b, c);
                if (turn > 0) break;
                // A path that turns back on itself has its end there, though it does not leave the line.
                folds = turn == 0 && std::int64_t{b.X - a.X} * (c.X - b.X) + std::int64_t{b.Y - a.Y} * (c.Y - b.Y) < 0;
                if (folds) break;
                dropped.push_back(kept.back());
                kept.pop_back();
            }
            if (folds || !IsNear(kept.back(), j)) {
                kept.insert(kept.end(), dropped.rbegin(), dropped.rend());
                return;
            }
            kept.push_back(j);
        }
    }

    /// Whether the sites between two indexes lie near the line through them.
    bool IsNear(std::int64_t from, std::int64_t to) const
    {
        const Site a = sites_[from], b = sites_[to];
        std::int64_t largest = 0;
        for (std::int64_t i = from + 1; i < to; i++)
            largest = Max(largest, std::abs(Cross(a, b, sites_[i])));
        const auto excursion = static_cast<double>(largest);
        return static_cast<double>(SquaredDistance(a, b)) * squaredDeviation_ >= excursion * excursion;
    }

    Round sites_;
    double squaredDeviation_;
    std::vector<std::int64_t> clockwise_, counterclockwise_;
    mutable std::vector<std::int64_t> dropped_;
};

/// The kept indexes from `start` to `last`, that one excluded.
std::vector<std::int64_t> KeptBetween(Corridor& corridor, std::int64_t start, std::int64_t last)
{
    std::vector<std::int64_t> kept;
    while (start < last) {
        const std::vector<std::int64_t>& stretch = corridor.From(start, last);
        kept.insert(kept.end(), stretch.begin(), stretch.end() - 1);
        start = stretch.back();
    }
    return kept;
}

/// The first kept index behind the end of a closed path, brought back into it: a place where the loop may well begin.
std::int64_t LoopStart(Corridor& corridor, std::int64_t length)
{
    for (std::int64_t start = 0;;) {
        const std::vector<std::int64_t>& stretch = corridor.From(start, 2 * length);
        for (const std::int64_t index : stretch)
            if (index >= length) return index % length;
        start = stretch.back();
    }
}

std::vector<Site> SitesAt(const std::vector<std::int64_t>& indexes, Round sites)
{
    std::vector<Site> chosen;
    chosen.reserve(indexes.size() + 1);
    for (const std::int64_t index : indexes)
        chosen.push_back(sites[index]);
    return chosen;
}

/// Whether the middle site between two indexes lies near the line through them.
bool MiddleIsNear(Round sites, std::int64_t from, std::int64_t to, double squaredDeviation)
{
    const Site a = sites[from], b = sites[to];
    const auto cross = static_cast<double>(Cross(a, b, sites[(from + to) / 2]));
    return static_cast<double>(SquaredDistance(a, b)) * squaredDeviation >= cross * cross;
}

std::vector<std::int64_t> PolygonVertices(Round sites, double squaredDeviation)
{
    const std::int64_t length = sites.Length();
    std::int64_t first = length - 1;
    while (first > 0 && MiddleIsNear(sites, first, length, squaredDeviation))
        first--;
    std::vector<std::int64_t> vertices;
    const std::int64_t last = first + length;
    for (std::int64_t at = first; at < last;) {
        vertices.push_back(at);
        std::int64_t next = at + 1;
        while (next < last && MiddleIsNear(sites, at, next + 1, squaredDeviation))
            next++;
        at = next;
    }
    // An outline that folds onto itself leaves no line from its first site; it has two ends all the same.
    if (vertices.size() == 1) {
        std::int64_t farthest = first;
        for (std::int64_t i = first; i < last; i++)
            if (SquaredDistance(sites[first], sites[i]) > SquaredDistance(sites[first], sites[farthest])) farthest = i;
        if (farthest > first) vertices.push_back(farthest);
    }
    return vertices;
}

std::int64_t Steps(Site from, Site to)
{
    return Max(std::abs(to.X - from.X), std::abs(to.Y - from.Y));
}

/// The pixels of a segment without its last one.
void AppendSegment(Site from, Site to, std::vector<Site>& pixels)
{
    const int extentX = std::abs(to.X - from.X), extentY = std::abs(to.Y - from.Y);
    const int stepX = to.X < from.X ? -1 : 1, stepY = to.Y < from.Y ? -1 : 1;
    const bool flat = extentX >= extentY;
    const int major = flat ? extentX : extentY, minor = flat ? extentY : extentX;
    int x = from.X, y = from.Y, error = major / 2;
    for (int i = 0; i < major; i++) {
        pixels.emplace_back(x, y);
        error -= minor;
        const bool aside = error < 0;
        if (aside) error += major;
        if (flat || aside) x += stepX;
        if (!flat || aside) y += stepY;
    }
}

} // namespace

void Path::Smooth(Path& Dst, double Deviation) const
{
    const Entry entry("Tesk::Path::Smooth");
    if (entry.Refuses(CheckSites())) return;
    entry.Refuses(Allocating([&] {
        const Round sites(View());
        if (Length < 3) {
            Dst.Take({Sites(), Sites() + Length}, Closed, OrgX, OrgY);
            return;
        }
        Corridor corridor(sites, Deviation);
        std::vector<std::int64_t> kept;
        if (Closed) {
            const std::int64_t start = LoopStart(corridor, Length);
            kept = KeptBetween(corridor, start, start + Length);
        } else {
            kept = KeptBetween(corridor, 0, Length - 1);
            kept.push_back(Length - 1);
        }
        Dst.Take(SitesAt(kept, sites), Closed, OrgX, OrgY);
    }));
}

void Path::Vectorize(Path& Dst, double Deviation) const
{
    const Entry entry("Tesk::Path::Vectorize");
    if (entry.Refuses(CheckSites())) return;
    entry.Refuses(Allocating([&] {
        const Round sites(View());
        Dst.Take(SitesAt(PolygonVertices(sites, Deviation * Deviation), sites), true, OrgX, OrgY);
    }));
}

void Path::PolygonToRaster(Path& Dst) const
{
    const Entry entry("Tesk::Path::PolygonToRaster");
    if (Length < 1) {
        entry.Refuse(VoidObject, L"The source path is void");
        return;
    }
    entry.Refuses(Allocating([&] {
        const std::span<const Site> sites = View();
        std::int64_t steps = 0;
        for (std::size_t i = 0; i < sites.size(); i++)
            steps += Steps(sites[i], sites[(i + 1) % sites.size()]);
        if (steps > INT32_MAX) throw std::bad_alloc();
        std::vector<Site> pixels;
        pixels.reserve(static_cast<std::size_t>(Max<std::int64_t>(steps, 1)));
        for (std::size_t i = 0; i < sites.size(); i++)
            AppendSegment(sites[i], sites[(i + 1) % sites.size()], pixels);
        // A polygon without extent is one pixel.
        if (pixels.empty()) pixels.push_back(sites.front());
        Dst.Take(std::move(pixels), true, OrgX, OrgY);
    }));
}

} // namespace Tesk
