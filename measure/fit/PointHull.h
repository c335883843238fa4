// Convex hulls of points: `Site` exactly, `XY` as far as doubles go.
#pragma once

#include "foundation/Records.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Tesk::hulls {

template <typename P>
bool Same(P a, P b)
{
    return a.X == b.X && a.Y == b.Y;
}

/// The cross product of `p - a` and `q - a`: positive where the turn from one to the other is clockwise on the screen.
inline std::int64_t Cross(Site a, Site p, Site q)
{
    return std::int64_t{p.X - a.X} * (q.Y - a.Y) - std::int64_t{p.Y - a.Y} * (q.X - a.X);
}
inline double Cross(XY a, XY p, XY q)
{
    return (p.X - a.X) * (q.Y - a.Y) - (p.Y - a.Y) * (q.X - a.X);
}

template <typename P>
bool IsBefore(P a, P b)
{
    return a.X != b.X ? a.X < b.X : a.Y < b.Y;
}

/// Whether a vertex between two others is a corner of a hull that runs counterclockwise on the screen.
template <typename P>
bool IsCorner(P a, P b, P c)
{
    return Cross(a, b, c) < 0;
}

/// Adds vertices to a hull whose last one is a corner, dropping those behind it that are none.
template <typename P>
void Chain(std::vector<P>& hull, std::span<const P> next)
{
    const std::size_t start = hull.size();
    for (const P& site : next) {
        while (hull.size() > start && !IsCorner(hull[hull.size() - 2], hull.back(), site))
            hull.pop_back();
        hull.push_back(site);
    }
}

/// The hull of sites in any order: the chains between the leftmost and the rightmost site, on either side of the line
/// through them.
template <typename P>
std::vector<P> HullOfAny(std::span<const P> sites)
{
    const auto [leftmost, rightmost] = std::minmax_element(sites.begin(), sites.end(), IsBefore<P>);
    const P left = *leftmost, right = *rightmost;
    std::vector<P> below, above;
    for (const P& site : sites)
        if (const auto side = Cross(left, right, site); side > 0)
            below.push_back(site);
        else if (side < 0)
            above.push_back(site);
    std::sort(below.begin(), below.end(), IsBefore<P>);
    std::sort(above.begin(), above.end(), [](P a, P b) { return IsBefore(b, a); });
    std::vector<P> hull = {left};
    if (Same(left, right)) return hull;
    below.push_back(right);
    Chain<P>(hull, below);
    above.push_back(left);
    Chain<P>(hull, above);
    hull.pop_back();
    return hull;
}

/// Whether corners that start with the leftmost are the hull of all sites: they run to the rightmost and back, and
/// leave no site outside.
template <typename P>
bool IsHull(std::span<const P> hull, std::span<const P> sites)
{
    const auto right = std::max_element(hull.begin(), hull.end(), IsBefore<P>);
    std::vector<P> above(right, hull.end());
    above.push_back(hull.front());
    std::reverse(above.begin(), above.end());
    const std::span<const P> below(hull.begin(), right + 1);
    if (!std::is_sorted(below.begin(), below.end(), IsBefore<P>) ||
        !std::is_sorted(above.begin(), above.end(), IsBefore<P>))
        return false;
    return std::all_of(sites.begin(), sites.end(), [&](const P& site) {
        const auto under = std::lower_bound(below.begin(), below.end(), site, IsBefore<P>);
        if (under == below.end() || IsBefore(site, below.front())) return false;
        if (under == below.begin()) return true;
        const auto over = std::lower_bound(above.begin(), above.end(), site, IsBefore<P>);
        return Cross(under[-1], *under, site) <= 0 && Cross(over[-1], *over, site) >= 0;
    });
}

/// The hull of a polygon that does not cross itself (Melkman 1987).
template <typename P>
std::vector<P> HullOfSimple(std::span<const P> sites)
{
    const std::size_t n = sites.size();
    std::size_t second = 1;
    while (second < n && Same(sites[0], sites[second]))
        second++;
    std::size_t third = second + 1;
    while (third < n && Cross(sites[0], sites[second], sites[third]) == 0)
        third++;
    if (third >= n) return HullOfAny<P>(sites);
    // Of the sites on the first line the ends alone can be corners. One behind the first site folds the polygon.
    P from = sites[0], to = sites[second];
    for (std::size_t i = second + 1; i < third; i++) {
        if (IsBefore(from, to) == IsBefore(to, sites[i]))
            to = sites[i];
        else if (IsBefore(from, to) == IsBefore(sites[i], from))
            return HullOfAny<P>(sites);
    }
    std::vector<P> deque(2 * n + 1);
    std::size_t bottom = n - 1, top = n + 2;
    const P apex = sites[third];
    deque[bottom] = deque[top] = apex;
    const bool turns = IsCorner(from, to, apex);
    deque[bottom + 1] = turns ? from : to;
    deque[bottom + 2] = turns ? to : from;
    for (std::size_t i = third + 1; i < n; i++) {
        const P site = sites[i];
        if (IsCorner(deque[bottom], deque[bottom + 1], site) && IsCorner(deque[top - 1], deque[top], site)) continue;
        while (top - bottom > 1 && !IsCorner(deque[top - 1], deque[top], site))
            top--;
        deque[++top] = site;
        while (top - bottom > 1 && !IsCorner(site, deque[bottom], deque[bottom + 1]))
            bottom++;
        deque[--bottom] = site;
    }
    // Sites on a side may stand between its ends. The leftmost is a corner in any case.
    const auto first = deque.begin() + static_cast<std::ptrdiff_t>(bottom),
               last = deque.begin() + static_cast<std::ptrdiff_t>(top);
    std::rotate(first, std::min_element(first, last, IsBefore<P>), last);
    *last = *first;
    std::vector<P> hull = {*first};
    Chain<P>(hull, {first + 1, last + 1});
    hull.pop_back();
    return hull;
}

/// The corners of the hull of at least one point, all of them finite, counterclockwise on the screen from the leftmost.
/// `simple` tells that the polygon of the points does not cross itself, which is faster.
template <typename P>
std::vector<P> HullOf(std::span<const P> sites, bool simple)
{
    // Contours of thin blobs cross themselves, and are easily taken for simple ones.
    if (simple)
        if (std::vector<P> hull = HullOfSimple<P>(sites); IsHull<P>(hull, sites)) return hull;
    return HullOfAny<P>(sites);
}

} // namespace Tesk::hulls
