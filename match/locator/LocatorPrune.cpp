// Pruning of a locator's candidates: of those that overlap, the better one stays.
#include "match/locator/LocatorSearch.h"

#include <algorithm>
#include <cmath>

namespace Tesk::locator {

namespace {

/// A convex polygon: a rectangle that at most four lines cut.
struct Polygon
{
    std::array<XY, 8> points;
    std::size_t count = 0;

    void Append(const XY& p)
    {
        if (count < points.size()) points[count++] = p;
    }

    /// Keeps the part where `distance` is not negative (Sutherland and Hodgman 1974).
    template <typename F>
    void Clip(F distance)
    {
        Polygon rest;
        for (std::size_t i = 0; i < count; i++) {
            const XY &p = points[i], &q = points[i + 1 < count ? i + 1 : 0];
            const double dp = distance(p), dq = distance(q);
            if (dp >= 0) rest.Append(p);
            if ((dp < 0) == (dq < 0)) continue;
            const double t = dp / (dp - dq);
            rest.Append({p.X + t * (q.X - p.X), p.Y + t * (q.Y - p.Y)});
        }
        *this = rest;
    }

    double TwiceArea() const
    {
        double sum = 0;
        for (std::size_t i = 0; i < count; i++) {
            const XY &p = points[i], &q = points[i + 1 < count ? i + 1 : 0];
            sum += p.X * q.Y - q.X * p.Y;
        }
        return std::abs(sum);
    }
};

bool Intersect(const Box& a, const Box& b)
{
    return a.x < b.x + b.width && b.x < a.x + a.width && a.y < b.y + b.height && b.y < a.y + a.height;
}

/// Twice the area that two turned patterns have in common.
double TwiceOverlap(const Candidate& i, const Candidate& j, double width, double height)
{
    const double ci = std::cos(i.angle), si = std::sin(i.angle), turn = j.angle - i.angle, c = std::cos(turn),
                 s = std::sin(turn), dx = j.ix - i.ix, dy = j.iy - i.iy;
    const XY center(ci * dx - si * dy, si * dx + ci * dy);
    const double w = width / 2 * j.scale, h = height / 2 * j.scale, limitX = width / 2 * i.scale,
                 limitY = height / 2 * i.scale;
    Polygon polygon;
    for (const auto [u, v] : {XY(-w, -h), XY(w, -h), XY(w, h), XY(-w, h)})
        polygon.Append({center.X + c * u + s * v, center.Y - s * u + c * v});
    polygon.Clip([=](const XY& p) { return p.X + limitX; });
    polygon.Clip([=](const XY& p) { return limitY - p.Y; });
    polygon.Clip([=](const XY& p) { return limitX - p.X; });
    polygon.Clip([=](const XY& p) { return p.Y + limitY; });
    return polygon.TwiceArea();
}

} // namespace

void SortByScore(std::vector<Candidate>& candidates)
{
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const Candidate& a, const Candidate& b) { return a.score > b.score; });
}

void Prune(std::vector<Candidate>& candidates, const Model& model, int depth, double maxOverlap, double limit)
{
    const Image& pattern = model.levels[static_cast<std::size_t>(depth)].pattern;
    const double width = pattern.Width - 1, height = pattern.Height - 1;
    for (Candidate& c : candidates)
        c.history[static_cast<std::size_t>(depth)] = c.score;
    for (auto i = candidates.begin(); i != candidates.end(); ++i) {
        if (!(i->score >= 0)) continue;
        for (auto j = i + 1; j != candidates.end(); ++j) {
            if (i->ix == j->ix && i->iy == j->iy && i->ia == j->ia && i->is == j->is) {
                j->score = dead;
                break;
            }
            if (!(j->score >= 0) || !Intersect(i->box, j->box)) continue;
            if (!(TwiceOverlap(*i, *j, width, height) > (i->area + j->area) * maxOverlap)) continue;
            if (j->score > i->score) {
                i->score = dead;
                break;
            }
            j->score = dead;
        }
    }
    std::erase_if(candidates, [](const Candidate& c) { return !(c.score >= 0); });
    SortByScore(candidates);
    if (static_cast<double>(candidates.size()) > limit) candidates.resize(static_cast<std::size_t>(limit));
}

} // namespace Tesk::locator
