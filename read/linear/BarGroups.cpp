// Groups of bars in any orientation: edges linked to bar sides, and bar sides to what may be a symbol.
#include "read/linear/BarGroups.h"

#include "measure/fit/PointFit.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <numeric>

namespace Tesk::linear {

namespace {

constexpr int none = -1;

/// A bar side keeps to a line by that part of its length.
constexpr double straightness = 0.025;
/// Bar sides of more than this slope against the lines' normal are those of the other pass: 1.25 is beyond 45 degrees.
constexpr int steepest = 320;
/// Neighbours overlap by this part of the shorter one, and differ in slope by no more than this.
constexpr double leastOverlap = 0.5, parallelism = 0.12;
/// Gaps within a symbol are at most 9 modules, and two symbols in a row are at least 14 apart.
constexpr int widestGap = 11;
constexpr int gapNeighbours = 6;

constexpr std::size_t fewestChains = 4;
constexpr double sameLength = 1.3, widestSpread = 0.15;

int Fit(std::vector<XY>& points, std::vector<XY>& kept, fits::Line& line)
{
    kept = points;
    for (int round = 0; round < 3; round++) {
        if (kept.size() < 2 || !fits::FitLine(std::span<const XY>(kept), line)) return false;
        const auto distance = [&](XY p) {
            return std::abs((p.X - line.Center.X) * line.Direction.Y - (p.Y - line.Center.Y) * line.Direction.X);
        };
        double sum = 0;
        for (const XY p : kept)
            sum += distance(p);
        const double limit = 2.5 * sum / static_cast<double>(kept.size()) + 0.5;
        kept.clear();
        std::copy_if(points.begin(), points.end(), std::back_inserter(kept),
                     [&](XY p) { return distance(p) <= limit; });
    }
    return kept.size() >= 2 && fits::FitLine(std::span<const XY>(kept), line);
}

} // namespace

double BarFinder::Chain::Length() const
{
    return std::hypot(to.X - from.X, to.Y - from.Y);
}

std::span<const BarGroup> BarFinder::Find(const Raster& raster, bool alongRows, int density, EdgeRule rule, int reach)
{
    density_ = density;
    reach_ = reach;
    work_ = 0;
    groups_.clear();
    FindEdgesOfLines(raster, alongRows, rule);
    Link();
    CollectChains();
    // What is removed may have stood between the parts of a side.
    RemoveOthers();
    Link();
    CollectChains();
    Unite();
    MakeGroups(alongRows);
    return groups_;
}

void BarFinder::FindEdgesOfLines(const Raster& raster, bool alongRows, EdgeRule rule)
{
    const int length = alongRows ? raster.Width() : raster.Height(),
              across = alongRows ? raster.Height() : raster.Width();
    line_.resize(static_cast<std::size_t>(length));
    found_.resize(static_cast<std::size_t>(length) + 2);
    turns_.resize(static_cast<std::size_t>(length) + 2);
    edges_.clear();
    lineStarts_.clear();
    for (int v = density_ / 2; v < across; v += density_) {
        const int last = length - 1;
        raster.Walk(alongRows ? Pixel{0, v} : Pixel{v, 0}, alongRows ? Pixel{last, v} : Pixel{v, last}, line_.data());
        const auto turns =
            std::span<const Turn>(turns_).first(static_cast<std::size_t>(FindTurns(line_, rule.noise, turns_.data())));
        bool rising = false;
        const int count = EdgesBetween(line_, turns, rule.step, found_.data(), rising);
        const int line = static_cast<int>(lineStarts_.size());
        lineStarts_.push_back(static_cast<int>(edges_.size()));
        for (int i = 0; i < count; i++, rising = !rising) {
            const int position = found_[static_cast<std::size_t>(i)];
            edges_.push_back({position, SlopeAt(raster, alongRows, v, position), none, none, none, line, rising});
        }
        work_ += length + 10 * count; // linking takes longer than finding
        if (density_ > across) break;
    }
    edgesFound_ = static_cast<int>(edges_.size());
    lineStarts_.push_back(edgesFound_);
}

/// The slope by the gradient across the edge, so that bars narrower than their shift from line to line are followed,
/// too.
int BarFinder::SlopeAt(const Raster& raster, bool alongRows, int v, int position) const
{
    const int length = static_cast<int>(line_.size()), across = alongRows ? raster.Height() : raster.Width();
    // The crossing lies between the pixel before this one and this one.
    const int i = position >> 8, from = std::max(i - 2, 1), to = std::min(i + 1, length - 2);
    const int before = std::max(v - 1, 0), behind = std::min(v + 1, across - 1);
    int alongLine = 0, acrossLines = 0;
    for (int u = from; u <= to; u++) {
        alongLine += line_[static_cast<std::size_t>(u + 1)] - line_[static_cast<std::size_t>(u - 1)];
        acrossLines +=
            alongRows ? raster.At(u, behind) - raster.At(u, before) : raster.At(behind, u) - raster.At(before, u);
    }
    if (alongLine == 0) return 0;
    const std::int64_t slope = std::int64_t{-256} * acrossLines / alongLine;
    return static_cast<int>(std::clamp<std::int64_t>(slope, -steepest, steepest)) * density_;
}

void BarFinder::Link()
{
    for (Edge& edge : edges_)
        edge.next = edge.previous = none;
    const int lines = static_cast<int>(lineStarts_.size()) - 1;
    // Over one line and, where a side is broken there, over two.
    for (int reach = 1; reach <= 2; reach++)
        for (int line = 0; line + reach < lines; line++)
            LinkLines(line, line + reach);
}

/// Links each edge that has none yet to the one of its polarity that is nearest to where its slope leads, if that one
/// has no nearer one.
void BarFinder::LinkLines(int line, int next)
{
    const int tolerance = std::clamp(density_ * 90, 256, 768) * (next - line);
    const auto start = [&](int l) { return lineStarts_[static_cast<std::size_t>(l)]; };
    int low = start(next);
    for (int e = start(line); e < start(line + 1); e++) {
        Edge& edge = edges_[static_cast<std::size_t>(e)];
        if (edge.next != none) continue;
        const int expected = edge.position + edge.slope * (next - line);
        while (low > start(next) && edges_[static_cast<std::size_t>(low - 1)].position >= expected - tolerance)
            low--;
        while (low < start(next + 1) && edges_[static_cast<std::size_t>(low)].position < expected - tolerance)
            low++;
        int best = none, least = tolerance + 1;
        for (int f = low; f < start(next + 1); f++) {
            const Edge& other = edges_[static_cast<std::size_t>(f)];
            if (other.position > expected + tolerance) break;
            if (other.rising != edge.rising) continue;
            const int distance = std::abs(other.position - expected) +
                                 std::abs(other.position - other.slope * (next - line) - edge.position);
            if (distance / 2 < least) {
                least = distance / 2;
                best = f;
            }
        }
        if (best == none) continue;
        Edge& other = edges_[static_cast<std::size_t>(best)];
        if (other.previous != none) {
            Edge& rival = edges_[static_cast<std::size_t>(other.previous)];
            if (rival.line != line) continue;
            const int his = std::abs(rival.position + rival.slope * (next - line) - other.position);
            if (his <= std::abs(expected - other.position)) continue;
            rival.next = none;
        }
        other.previous = e;
        edge.next = best;
    }
}

bool BarFinder::IsStraight(const Chain& chain) const
{
    const double height = chain.to.Y - chain.from.Y, limit = straightness * chain.Length();
    const double slope = (chain.to.X - chain.from.X) / height, squash = 1 / std::hypot(1.0, slope);
    for (int e = chain.head; e != none; e = edges_[static_cast<std::size_t>(e)].next) {
        const Edge& edge = edges_[static_cast<std::size_t>(e)];
        const double expected = chain.from.X + slope * (edge.line * density_ + density_ / 2 - chain.from.Y);
        if (std::abs(edge.position / 256.0 - expected) * squash > limit) return false;
    }
    return true;
}

void BarFinder::CollectChains()
{
    chains_.clear();
    for (std::size_t i = 0; i < edges_.size(); i++) {
        if (edges_[i].previous != none) continue;
        Chain chain{static_cast<int>(i), static_cast<int>(i), {0, 0}, {0, 0}};
        while (edges_[static_cast<std::size_t>(chain.tail)].next != none)
            chain.tail = edges_[static_cast<std::size_t>(chain.tail)].next;
        const auto place = [&](int e) {
            const Edge& edge = edges_[static_cast<std::size_t>(e)];
            return XY(edge.position / 256.0, edge.line * density_ + density_ / 2);
        };
        chain.from = place(chain.head);
        chain.to = place(chain.tail);
        const bool good = chain.to.Y - chain.from.Y >= reach_ * density_ && IsStraight(chain);
        const int mark = good ? static_cast<int>(chains_.size()) : none;
        for (int e = chain.head; e != none; e = edges_[static_cast<std::size_t>(e)].next)
            edges_[static_cast<std::size_t>(e)].chain = mark;
        if (good) chains_.push_back(chain);
    }
}

/// Keeps the edges of chains alone.
void BarFinder::RemoveOthers()
{
    std::size_t kept = 0;
    for (std::size_t line = 0; line + 1 < lineStarts_.size(); line++) {
        const auto from = static_cast<std::size_t>(lineStarts_[line]);
        const auto to = static_cast<std::size_t>(lineStarts_[line + 1]);
        lineStarts_[line] = static_cast<int>(kept);
        for (std::size_t i = from; i < to; i++)
            if (edges_[i].chain != none) edges_[kept++] = edges_[i];
    }
    lineStarts_.back() = static_cast<int>(kept);
    edges_.resize(kept, Edge{});
}

bool BarFinder::AreNeighbours(const Chain& a, const Chain& b) const
{
    const double heightA = a.to.Y - a.from.Y, heightB = b.to.Y - b.from.Y;
    const double slopeA = (a.to.X - a.from.X) / heightA, slopeB = (b.to.X - b.from.X) / heightB;
    if (std::abs(slopeA - slopeB) > parallelism * (1 + slopeA * slopeA)) return false;
    // Levels are told along the bars: of slanted ones, neighbours begin one before the other.
    const double slope = (slopeA + slopeB) / 2;
    const auto level = [&](XY p) { return slope * p.X + p.Y; };
    const double overlap = std::min(level(a.to), level(b.to)) - std::max(level(a.from), level(b.from));
    return overlap >= leastOverlap * std::min(level(a.to) - level(a.from), level(b.to) - level(b.from));
}

int BarFinder::Root(int chain)
{
    auto at = [&](int c) -> int& { return rootOf_[static_cast<std::size_t>(c)]; };
    while (at(chain) != chain) {
        at(chain) = at(at(chain));
        chain = at(chain);
    }
    return chain;
}

/// Unites the chains of neighbouring edges, where the gap between them is one that a symbol with such modules has.
void BarFinder::Unite()
{
    rootOf_.resize(chains_.size());
    std::iota(rootOf_.begin(), rootOf_.end(), 0);
    for (std::size_t line = 0; line + 1 < lineStarts_.size(); line++) {
        members_.clear();
        for (int e = lineStarts_[line]; e < lineStarts_[line + 1]; e++)
            if (edges_[static_cast<std::size_t>(e)].chain >= 0) members_.push_back(e);
        const int count = static_cast<int>(members_.size());
        const auto edge = [&](int k) -> const Edge& {
            return edges_[static_cast<std::size_t>(members_[static_cast<std::size_t>(k)])];
        };
        // The second narrowest of the gaps from one member to another.
        const auto narrow = [&](int from, int to) {
            int least = MaxInt, second = MaxInt;
            for (int k = std::max(from, 0); k < std::min(to, count - 1); k++) {
                const int gap = edge(k + 1).position - edge(k).position;
                second = std::min(second, std::max(least, gap));
                least = std::min(least, gap);
            }
            return second;
        };
        for (int k = 0; k + 1 < count; k++) {
            const int a = edge(k).chain, b = edge(k + 1).chain;
            if (a == b || Root(a) == Root(b)) continue;
            const std::int64_t gap = edge(k + 1).position - edge(k).position;
            const int module = std::min(narrow(k - gapNeighbours, k), narrow(k + 1, k + 1 + gapNeighbours));
            if (gap > std::int64_t{widestGap} * module) continue;
            if (AreNeighbours(chains_[static_cast<std::size_t>(a)], chains_[static_cast<std::size_t>(b)]))
                rootOf_[static_cast<std::size_t>(Root(b))] = Root(a);
        }
        work_ += count;
    }
}

void BarFinder::MakeGroups(bool alongRows)
{
    members_.resize(chains_.size());
    std::iota(members_.begin(), members_.end(), 0);
    for (int chain : members_)
        rootOf_[static_cast<std::size_t>(chain)] = Root(chain);
    std::sort(members_.begin(), members_.end(), [&](int a, int b) {
        const int rootA = rootOf_[static_cast<std::size_t>(a)], rootB = rootOf_[static_cast<std::size_t>(b)];
        return rootA != rootB ? rootA < rootB : a < b;
    });
    for (std::size_t i = 0, end = 0; i < members_.size(); i = end) {
        const auto root = [&](std::size_t k) { return rootOf_[static_cast<std::size_t>(members_[k])]; };
        while (end < members_.size() && root(end) == root(i))
            end++;
        if (end - i >= fewestChains) MakeGroup(std::span(members_).subspan(i, end - i), alongRows);
    }
}

void BarFinder::MakeGroup(std::span<const int> chains, bool alongRows)
{
    XY along(0, 0);
    lengths_.clear();
    for (const int c : chains) {
        const Chain& chain = chains_[static_cast<std::size_t>(c)];
        const double length = chain.Length();
        along.X += (chain.to.X - chain.from.X) / length;
        along.Y += (chain.to.Y - chain.from.Y) / length;
        lengths_.push_back(length);
    }
    const double norm = std::hypot(along.X, along.Y);
    along = {along.X / norm, along.Y / norm};
    const auto quantile = lengths_.begin() + static_cast<std::ptrdiff_t>(4 * lengths_.size() / 5);
    std::nth_element(lengths_.begin(), quantile, lengths_.end());
    const double reference = *quantile;

    centers_.clear();
    for (const int c : chains) {
        const Chain& chain = chains_[static_cast<std::size_t>(c)];
        const double length = chain.Length();
        if (length > reference * sameLength || length * sameLength < reference) continue;
        centers_.emplace_back((chain.from.X + chain.to.X) / 2, (chain.from.Y + chain.to.Y) / 2);
    }
    fits::Line axis;
    if (centers_.size() < 2 || !Fit(centers_, kept_, axis)) return;
    double least = MaxFloat, most = MinFloat, apart = 0;
    for (const XY p : centers_) {
        const double dx = p.X - axis.Center.X, dy = p.Y - axis.Center.Y;
        const double t = dx * axis.Direction.X + dy * axis.Direction.Y;
        least = std::min(least, t);
        most = std::max(most, t);
        apart += std::abs(dx * axis.Direction.Y - dy * axis.Direction.X);
    }
    if (apart > widestSpread * static_cast<double>(centers_.size()) * reference) return;
    const auto place = [&](double t) {
        const XY p(axis.Center.X + t * axis.Direction.X, axis.Center.Y + t * axis.Direction.Y);
        return alongRows ? p : XY(p.Y, p.X);
    };
    BarGroup group{place(least), place(most), alongRows ? along : XY(along.Y, along.X), reference};
    const double dx = group.last.X - group.first.X, dy = group.last.Y - group.first.Y;
    // Codes are read from left to right, or from the top where they stand upright.
    if (std::abs(dx) >= std::abs(dy) ? dx < 0 : dy < 0) std::swap(group.first, group.last);
    groups_.push_back(group);
}

} // namespace Tesk::linear
