// Outlines of candidates: convex hulls of rows, completed from the solid sides of a symbol.
#include "read/matrix/Outline.h"

#include "measure/fit/PointHull.h"
#include "read/core/BresenhamLine.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <utility>

namespace Tesk::matrix {

namespace {

/// A site that may lie beyond what coordinates hold.
Site Held(int x, int y)
{
    return {std::clamp<int>(x, INT16_MIN, INT16_MAX), std::clamp<int>(y, INT16_MIN, INT16_MAX)};
}

} // namespace

int EdgeCosts::Along(Site from, Site to) const
{
    const int dx = to.X - from.X, dy = to.Y - from.Y;
    const BresenhamLine line(from.X, from.Y, to.X, to.Y);
    const int steps = line.Steps(), lastX = gray_.Width - 1, lastY = gray_.Height - 1;
    if (steps == 0) return 0;
    steps_ += steps;
    std::int64_t gx = 0, gy = 0;
    const auto isInside = [&](Site site) { return site.X > 0 && site.Y > 0 && site.X < lastX && site.Y < lastY; };
    if (isInside(from) && isInside(to)) {
        const std::uint8_t* first = gray_.FirstPixel;
        const std::ptrdiff_t pitch = gray_.Pitch;
        int sumX = 0, sumY = 0; // of at most 2^15 differences of bytes
        line.Visit(steps, [&](int x, int y) {
            const std::uint8_t* pixel = first + y * pitch + x;
            sumX += pixel[1] - pixel[-1];
            sumY += pixel[pitch] - pixel[-pitch];
        });
        gx = sumX;
        gy = sumY;
    } else
        line.Visit(steps, [&](int x, int y) {
            x = std::clamp(x, 0, lastX);
            y = std::clamp(y, 0, lastY);
            const std::uint8_t* row = gray_.Row(y);
            gx += row[std::min(x + 1, lastX)] - row[std::max(x - 1, 0)];
            gy += gray_.Row(std::min(y + 1, lastY))[x] - gray_.Row(std::max(y - 1, 0))[x];
        });
    // The outward normal lies on the right of the segment.
    const double outward = static_cast<double>(gy * dx - gx * dy) / std::hypot(dx, dy);
    return static_cast<int>(sign_ * outward);
}

int EdgeCosts::Of(Site from, Site to) const
{
    const int steps = std::max(std::abs(to.X - from.X), std::abs(to.Y - from.Y));
    return steps == 0 ? 0 : Along(from, to) / steps;
}

bool EdgeCosts::Holds(XY place) const
{
    return place.X >= 0 && place.Y >= 0 && place.X <= gray_.Width - 1 && place.Y <= gray_.Height - 1;
}

void HullOfRows(std::span<const RowExtent> rows, std::vector<Site>& hull)
{
    hull.clear();
    if (rows.empty()) return;
    std::vector<Site> side;
    for (const RowExtent& row : rows)
        side.emplace_back(row.first, row.y);
    hull.push_back(side.front());
    hulls::Chain<Site>(hull, std::span<const Site>(side).subspan(1));
    side.clear();
    for (auto row = rows.rbegin(); row != rows.rend(); ++row)
        side.emplace_back(row->last, row->y);
    if (!hulls::Same(hull.back(), side.front())) hull.push_back(side.front());
    hulls::Chain<Site>(hull, std::span<const Site>(side).subspan(1));
    if (hull.size() > 1 && hulls::Same(hull.front(), hull.back())) hull.pop_back();
}

void CompleteHull(std::vector<Site>& hull)
{
    const std::size_t n = hull.size();
    std::size_t from = 0, to = 0;
    int longest = -1;
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t j = i + 1; j < n; ++j)
            if (const int length = SquaredLength(hull[i], hull[j]); length > longest) {
                longest = length;
                from = i;
                to = j;
            }
    std::size_t farthest = from;
    std::int64_t most = -1;
    for (std::size_t i = 0; i < n; ++i)
        if (const std::int64_t away = std::abs(hulls::Cross(hull[from], hull[to], hull[i])); away > most) {
            most = away;
            farthest = i;
        }
    if (farthest < from || farthest > to) std::swap(from, to);
    std::vector<Site> complete;
    for (std::size_t i = from; i != to; i = (i + 1) % n)
        complete.push_back(hull[i]);
    const std::size_t half = complete.size();
    const Site a = hull[from], b = hull[to];
    complete.push_back(b);
    for (std::size_t i = 1; i < half; ++i)
        complete.push_back(Held(a.X + b.X - complete[i].X, a.Y + b.Y - complete[i].Y));
    hull = std::move(complete);
}

void RowsOfPolygon(std::span<const Site> polygon, int height, std::vector<RowExtent>& rows)
{
    rows.clear();
    int top = INT16_MAX, bottom = INT16_MIN;
    for (const Site corner : polygon) {
        top = std::min<int>(top, corner.Y);
        bottom = std::max<int>(bottom, corner.Y);
    }
    top = std::max(top, 0);
    bottom = std::min(bottom, height - 1);
    for (int y = top; y <= bottom; ++y)
        rows.push_back({y, INT16_MAX, INT16_MIN});
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        Site a = polygon[i], b = polygon[(i + 1) % polygon.size()];
        if (a.Y > b.Y) std::swap(a, b);
        const int rise = b.Y - a.Y;
        for (int y = std::max<int>(a.Y, top); y <= std::min<int>(b.Y, bottom); ++y) {
            RowExtent& row = rows[static_cast<std::size_t>(y - top)];
            const int x = rise == 0 ? a.X : a.X + (b.X - a.X) * (y - a.Y) / rise;
            row.first = std::min({row.first, x, rise == 0 ? int{b.X} : x});
            row.last = std::max({row.last, x, rise == 0 ? int{b.X} : x});
        }
    }
}

bool Intersect(XY a, XY b, XY c, XY d, XY& meet)
{
    const XY u = b - a, v = d - c;
    const double cross = u.X * v.Y - u.Y * v.X;
    if (!(std::abs(cross) > 1e-9 * std::hypot(u.X, u.Y) * std::hypot(v.X, v.Y))) return false;
    const XY w = c - a;
    meet = a + ((w.X * v.Y - w.Y * v.X) / cross) * u;
    return std::isfinite(meet.X) && std::isfinite(meet.Y);
}

} // namespace Tesk::matrix
