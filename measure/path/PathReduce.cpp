// Paths with fewer sites, and the pixels of a polygon.
#include "measure/Path.h"

#include "measure/path/ChordWalk.h"
#include "measure/path/PathRound.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace Tesk {

using namespace paths;

namespace {

/// Where a segment from a site may lead that stays near the sites behind it: a sector of directions, and a distance.
/// Each site is taken in once, so that a stretch costs no more than its length.
class Reach
{
public:
    void Take(Site from, Site site, double deviation)
    {
        const double dx = site.X - from.X, dy = site.Y - from.Y, distance = std::hypot(dx, dy);
        if (!(distance > deviation)) return;
        farthest_ = Max(farthest_, distance);
        // The lines that touch the circle about the site.
        const double s = deviation / distance, c = std::sqrt(1 - s * s);
        const XY low(dx * c + dy * s, dy * c - dx * s), high(dx * c - dy * s, dy * c + dx * s);
        if (free_) {
            low_ = low;
            high_ = high;
            free_ = false;
            return;
        }
        const XY formerLow = low_, formerHigh = high_;
        if (IsWithin(low, formerLow, formerHigh))
            low_ = low;
        else if (!IsWithin(formerLow, low, high))
            closed_ = true;
        if (IsWithin(high, formerLow, formerHigh))
            high_ = high;
        else if (!IsWithin(formerHigh, low, high))
            closed_ = true;
    }

    bool Holds(Site from, Site to, double deviation) const
    {
        if (free_) return deviation >= 0;
        const XY d(to.X - from.X, to.Y - from.Y);
        return !closed_ && IsWithin(d, low_, high_) && farthest_ <= std::hypot(d.X, d.Y) + deviation;
    }

private:
    static bool IsWithin(XY d, XY low, XY high)
    {
        // Directions less than half a turn apart; a hair wider, so that what lies on the border is held.
        constexpr double hair = 1e-12;
        const double length = std::hypot(d.X, d.Y), slackLow = hair * length * std::hypot(low.X, low.Y),
                     slackHigh = hair * length * std::hypot(high.X, high.Y);
        return low.X * d.Y - low.Y * d.X >= -slackLow && d.X * high.Y - d.Y * high.X >= -slackHigh &&
               d.X * (low.X + high.X) + d.Y * (low.Y + high.Y) > 0;
    }

    bool free_ = true, closed_ = false;
    XY low_{0, 0}, high_{0, 0};
    double farthest_ = 0;
};

/// Keeps the sites of a one-sided hull from which the others lie no farther than a deviation.
class Corridor
{
public:
    Corridor(Round sites, double deviation) : sites_(sites), deviation_(deviation) {}

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
    void Walk(std::int64_t start, std::int64_t last, int sense, std::vector<std::int64_t>& kept)
    {
        kept = {start, start + 1};
        reaches_.assign(2, Reach());
        for (std::int64_t j = start + 2; j <= last; j++) {
            dropped_.clear();
            bool folds = false;
            while (kept.size() > 1) {
                const Site a = sites_[kept[kept.size() - 2]], b = sites_[kept.back()], c = sites_[j];
                const std::int64_t turn = sense * Cross(a, b, c);
                if (turn > 0) break;
                // A path that turns back on itself has its end there, though it does not leave the line.
                folds = turn == 0 && std::int64_t{b.X - a.X} * (c.X - b.X) + std::int64_t{b.Y - a.Y} * (c.Y - b.Y) < 0;
                if (folds) break;
                dropped_.push_back(kept.back());
                kept.pop_back();
                reaches_.pop_back();
                // What stood behind the dropped site stands behind the one before it now.
                for (std::int64_t i = dropped_.back(); i < j; i++)
                    reaches_.back().Take(sites_[kept.back()], sites_[i], deviation_);
            }
            if (folds || !reaches_.back().Holds(sites_[kept.back()], sites_[j], deviation_)) {
                kept.insert(kept.end(), dropped_.rbegin(), dropped_.rend());
                return;
            }
            kept.push_back(j);
            reaches_.emplace_back();
        }
    }

    Round sites_;
    double deviation_;
    std::vector<std::int64_t> clockwise_, counterclockwise_, dropped_;
    std::vector<Reach> reaches_; ///< of the kept indexes, over the sites before the next one
};

/// Adds what is missing between kept indexes: the farthest sites, until none is farther than the deviation from the
/// segment in its place.
std::vector<std::int64_t> Completed(const std::vector<std::int64_t>& kept, std::int64_t last, Round sites,
                                    double deviation)
{
    constexpr double rounding = 1e-9;
    std::vector<std::int64_t> complete, ahead;
    for (std::size_t k = 0; k < kept.size(); k++) {
        ahead.push_back(k + 1 < kept.size() ? kept[k + 1] : last);
        for (std::int64_t from = kept[k]; !ahead.empty();) {
            const std::int64_t to = ahead.back();
            std::int64_t farthest = from;
            double largest = Max(0.0, deviation) + rounding;
            for (std::int64_t i = from + 1; i < to; i++)
                if (const double distance = DistanceToSegment(sites[i], sites[from], sites[to]); distance > largest) {
                    largest = distance;
                    farthest = i;
                }
            if (farthest > from) {
                ahead.push_back(farthest);
                continue;
            }
            complete.push_back(from);
            from = to;
            ahead.pop_back();
        }
    }
    return complete;
}

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

void paths::ChordVertices(std::span<const Site> chain, double deviation, std::vector<Site>& vertices)
{
    vertices.clear();
    if (chain.empty()) return;
    const Round sites(chain);
    const std::int64_t last = sites.Length() - 1;
    for (std::int64_t at = 0; at < last;) {
        vertices.push_back(sites[at]);
        std::int64_t next = at + 1;
        while (next < last && MiddleIsNear(sites, at, next + 1, deviation * deviation))
            next++;
        at = next;
    }
    vertices.push_back(sites[last]);
}

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
            kept = Completed(KeptBetween(corridor, start, start + Length), start + Length, sites, Deviation);
        } else {
            kept = Completed(KeptBetween(corridor, 0, Length - 1), Length - 1, sites, Deviation);
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
