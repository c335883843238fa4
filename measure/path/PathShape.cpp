// The smallest shapes around a path.
#include "measure/Path.h"

#include "foundation/Angles.h"
#include "measure/fit/PointShape.h"
#include "measure/path/PathFrame.h"

#include <algorithm>

namespace Tesk {

using namespace paths;

namespace {

bool IsBefore(Site a, Site b)
{
    return a.X != b.X ? a.X < b.X : a.Y < b.Y;
}

/// Whether a vertex between two others is a corner of a hull that runs counterclockwise on the screen.
bool IsCorner(Site a, Site b, Site c)
{
    return Cross(a, b, c) < 0;
}

/// Adds vertices to a hull whose last one is a corner, dropping those behind it that are none.
void Chain(std::vector<Site>& hull, std::span<const Site> next)
{
    const std::size_t start = hull.size();
    for (const Site site : next) {
        while (hull.size() > start && !IsCorner(hull[hull.size() - 2], hull.back(), site))
            hull.pop_back();
        hull.push_back(site);
    }
}

/// The hull of sites in any order: the chains between the leftmost and the rightmost site, on either side of the line
/// through them.
std::vector<Site> HullOfAny(std::span<const Site> sites)
{
    const auto [leftmost, rightmost] = std::minmax_element(sites.begin(), sites.end(), IsBefore);
    const Site left = *leftmost, right = *rightmost;
    std::vector<Site> below, above;
    for (const Site site : sites)
        if (const std::int64_t side = Cross(left, right, site); side > 0)
            below.push_back(site);
        else if (side < 0)
            above.push_back(site);
    std::sort(below.begin(), below.end(), IsBefore);
    std::sort(above.begin(), above.end(), [](Site a, Site b) { return IsBefore(b, a); });
    std::vector<Site> hull = {left};
    if (Same(left, right)) return hull;
    below.push_back(right);
    Chain(hull, below);
    above.push_back(left);
    Chain(hull, above);
    hull.pop_back();
    return hull;
}

/// Whether corners that start with the leftmost are the hull of all sites: they run to the rightmost and back, and
/// leave no site outside.
bool IsHull(std::span<const Site> hull, std::span<const Site> sites)
{
    const auto right = std::max_element(hull.begin(), hull.end(), IsBefore);
    std::vector<Site> above(right, hull.end());
    above.push_back(hull.front());
    std::reverse(above.begin(), above.end());
    const std::span<const Site> below(hull.begin(), right + 1);
    if (!std::is_sorted(below.begin(), below.end(), IsBefore) || !std::is_sorted(above.begin(), above.end(), IsBefore))
        return false;
    return std::all_of(sites.begin(), sites.end(), [&](Site site) {
        const auto under = std::lower_bound(below.begin(), below.end(), site, IsBefore);
        if (under == below.end() || IsBefore(site, below.front())) return false;
        if (under == below.begin()) return true;
        const auto over = std::lower_bound(above.begin(), above.end(), site, IsBefore);
        return Cross(under[-1], *under, site) <= 0 && Cross(over[-1], *over, site) >= 0;
    });
}

/// The hull of a polygon that does not cross itself (Melkman 1987).
std::vector<Site> HullOfSimple(std::span<const Site> sites)
{
    const std::size_t n = sites.size();
    std::size_t second = 1;
    while (second < n && Same(sites[0], sites[second]))
        second++;
    std::size_t third = second + 1;
    while (third < n && Cross(sites[0], sites[second], sites[third]) == 0)
        third++;
    if (third >= n) return HullOfAny(sites);
    // Of the sites on the first line the ends alone can be corners. One behind the first site folds the polygon.
    Site from = sites[0], to = sites[second];
    for (std::size_t i = second + 1; i < third; i++) {
        if (IsBefore(from, to) == IsBefore(to, sites[i]))
            to = sites[i];
        else if (IsBefore(from, to) == IsBefore(sites[i], from))
            return HullOfAny(sites);
    }
    std::vector<Site> deque(2 * n + 1);
    std::size_t bottom = n - 1, top = n + 2;
    const Site apex = sites[third];
    deque[bottom] = deque[top] = apex;
    const bool turns = IsCorner(from, to, apex);
    deque[bottom + 1] = turns ? from : to;
    deque[bottom + 2] = turns ? to : from;
    for (std::size_t i = third + 1; i < n; i++) {
        const Site site = sites[i];
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
    std::rotate(first, std::min_element(first, last, IsBefore), last);
    *last = *first;
    std::vector<Site> hull = {*first};
    Chain(hull, {first + 1, last + 1});
    hull.pop_back();
    return hull;
}

std::vector<Site> HullOf(std::span<const Site> sites, bool simple)
{
    // Contours of thin blobs cross themselves, and are easily taken for simple ones.
    if (simple)
        if (std::vector<Site> hull = HullOfSimple(sites); IsHull(hull, sites)) return hull;
    return HullOfAny(sites);
}

int CheckLength(int length)
{
    return length < 1 ? Status::Format(VoidObject, L"This Path is void") : NoError;
}

} // namespace

std::vector<XY> Path::Hull(bool simple) const
{
    std::vector<XY> corners;
    for (const Site site : HullOf(View(), simple))
        corners.emplace_back(site.X, site.Y);
    return corners;
}

void Path::Box(int& X, int& Y, int& Width, int& Height) const
{
    const Entry entry("Tesk::Path::Box");
    if (entry.Refuses(CheckSites())) return;
    const std::span<const Site> sites = View();
    int left = sites[0].X, right = left, top = sites[0].Y, bottom = top;
    for (const Site site : sites) {
        left = Min<int>(left, site.X);
        right = Max<int>(right, site.X);
        top = Min<int>(top, site.Y);
        bottom = Max<int>(bottom, site.Y);
    }
    X = left;
    Y = top;
    Width = right - left;
    Height = bottom - top;
}

void Path::Rectangle(double& Xc, double& Yc, double& Width, double& Height, double& Angle, bool Simple) const
{
    const Entry entry("Tesk::Path::Rectangle");
    if (entry.Refuses(CheckLength(Length))) return;
    entry.Refuses(Allocating([&] {
        const shapes::Rectangle found = shapes::SmallestRectangle(Hull(Simple));
        Xc = found.Center.X;
        Yc = found.Center.Y;
        Width = found.Width;
        Height = found.Height;
        Angle = ToDegrees(found.Angle);
    }));
}

void Path::Parallelogram(XY& P, XY& Q, XY& R, bool Simple) const
{
    const Entry entry("Tesk::Path::Parallelogram");
    if (entry.Refuses(CheckLength(Length))) return;
    entry.Refuses(Allocating([&] {
        const shapes::Parallelogram found = shapes::SmallestParallelogram(Hull(Simple));
        P = found.P;
        Q = found.Q;
        R = found.R;
    }));
}

void Path::Circle(double& Xc, double& Yc, double& Radius, bool Simple) const
{
    const Entry entry("Tesk::Path::Circle");
    if (entry.Refuses(CheckLength(Length))) return;
    entry.Refuses(Allocating([&] {
        const shapes::Circle found = shapes::SmallestCircle(Hull(Simple));
        Xc = found.Center.X;
        Yc = found.Center.Y;
        Radius = found.Radius;
    }));
}

void Path::ConvexHull(Path& Dst, bool Simple) const
{
    const Entry entry("Tesk::Path::ConvexHull");
    if (entry.Refuses(CheckSites())) return;
    entry.Refuses(Allocating([&] { Dst.Take(HullOf(View(), Simple), true, OrgX, OrgY); }));
}

} // namespace Tesk
