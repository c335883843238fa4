// The search for the place of a layout.
#include "read/chars/Placement.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>

namespace Tesk::chars {

namespace {

constexpr int rounds = 5;
/// Offsets tried to either side, in widths of a character.
constexpr int farthest = 2;
constexpr int mostAngles = 360;

double InterquartileMean(std::vector<double>& values)
{
    std::sort(values.begin(), values.end());
    const auto quarter = static_cast<std::ptrdiff_t>(values.size() / 4);
    return std::accumulate(values.begin() + quarter, values.end() - quarter, 0.0) /
           static_cast<double>(static_cast<std::ptrdiff_t>(values.size()) - 2 * quarter);
}

double SquaredDistance(XY a, XY b)
{
    return (a.X - b.X) * (a.X - b.X) + (a.Y - b.Y) * (a.Y - b.Y);
}

struct Candidate
{
    double squared;
    int layout, found;
};

/// The indices of boxes in the order of their centres from left to right.
std::vector<int> FromLeft(std::span<const XY> centers)
{
    std::vector<int> order(centers.size());
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(), [&](int a, int b) {
        return centers[static_cast<std::size_t>(a)].X < centers[static_cast<std::size_t>(b)].X;
    });
    return order;
}

std::vector<XY> CentersOf(std::span<const CharBox> boxes)
{
    std::vector<XY> centers;
    for (const CharBox& box : boxes)
        centers.push_back(CenterOf(box));
    return centers;
}

/// The rotation and the shift by which paired centres come nearest to each other.
Placement Fit(std::span<const XY> layout, std::span<const XY> found, const Pairing& pairing)
{
    XY from(0, 0), to(0, 0);
    for (std::size_t i = 0; i < layout.size(); i++)
        if (const int k = pairing.found[i]; k >= 0) {
            from = from + layout[i];
            to = to + found[static_cast<std::size_t>(k)];
        }
    const double n = pairing.pairs;
    from = XY(from.X / n, from.Y / n);
    to = XY(to.X / n, to.Y / n);
    double dot = 0, cross = 0;
    for (std::size_t i = 0; i < layout.size(); i++)
        if (const int k = pairing.found[i]; k >= 0) {
            const XY a = layout[i] - from, b = found[static_cast<std::size_t>(k)] - to;
            dot += a.X * b.X + a.Y * b.Y;
            cross += a.X * b.Y - a.Y * b.X;
        }
    Placement fit;
    fit.angle = dot == 0 && cross == 0 ? 0 : std::atan2(cross, dot);
    fit.shift = to - fit(from);
    return fit;
}

/// The rotation that turns the farthest ends of a layout by half the height of a character.
double AngleStep(std::span<const XY> layout, XY middle, int charHeight)
{
    double farthestSquared = 1;
    for (const XY& center : layout)
        farthestSquared = std::max(farthestSquared, SquaredDistance(center, middle));
    return charHeight / 2.0 / std::sqrt(farthestSquared);
}

bool IsBetter(const Pairing& a, const Pairing& b)
{
    return a.pairs != b.pairs ? a.pairs > b.pairs : a.residual < b.residual;
}

} // namespace

XY Placement::operator()(XY point) const
{
    const double c = std::cos(angle), s = std::sin(angle);
    return {c * point.X - s * point.Y + shift.X, s * point.X + c * point.Y + shift.Y};
}

XY MiddleOf(std::span<const CharBox> boxes)
{
    std::vector<double> x, y;
    for (const CharBox& box : boxes) {
        x.push_back(CenterOf(box).X);
        y.push_back(CenterOf(box).Y);
    }
    return {InterquartileMean(x), InterquartileMean(y)};
}

CharBox Placed(const CharBox& box, const Placement& placement)
{
    const XY center = placement(CenterOf(box));
    return {static_cast<int>(std::lround(center.X - box.Width / 2.0)),
            static_cast<int>(std::lround(center.Y - box.Height / 2.0)), box.Width, box.Height};
}

Pairing Pair(std::span<const CharBox> layout, const Placement& placement, std::span<const CharBox> found,
             bool overlapping)
{
    const std::vector<XY> centers = CentersOf(found);
    const std::vector<int> order = FromLeft(centers);
    int widest = 0;
    for (const CharBox& box : found)
        widest = std::max(widest, box.Width);

    constexpr Candidate nobody = {std::numeric_limits<double>::max(), -1, -1};
    std::vector<Candidate> ofLayout(layout.size(), nobody), ofFound(found.size(), nobody);
    for (std::size_t i = 0; i < layout.size(); i++) {
        const XY at = placement(CenterOf(layout[i]));
        const double reach = overlapping ? (layout[i].Width + widest) / 2.0 : std::numeric_limits<double>::max();
        auto next = std::lower_bound(order.begin(), order.end(), at.X - reach,
                                     [&](int k, double x) { return centers[static_cast<std::size_t>(k)].X < x; });
        for (; next != order.end() && centers[static_cast<std::size_t>(*next)].X <= at.X + reach; ++next) {
            const auto k = static_cast<std::size_t>(*next);
            const CharBox& box = found[k];
            if (overlapping && (2 * std::fabs(at.X - centers[k].X) >= layout[i].Width + box.Width ||
                                2 * std::fabs(at.Y - centers[k].Y) >= layout[i].Height + box.Height))
                continue;
            const Candidate candidate = {SquaredDistance(at, centers[k]), static_cast<int>(i), *next};
            if (candidate.squared < ofLayout[i].squared) ofLayout[i] = candidate;
            if (candidate.squared < ofFound[k].squared) ofFound[k] = candidate;
        }
    }
    Pairing pairing;
    pairing.found.assign(layout.size(), -1);
    for (std::size_t i = 0; i < layout.size(); i++) {
        const int k = ofLayout[i].found;
        if (k < 0 || ofFound[static_cast<std::size_t>(k)].layout != static_cast<int>(i)) continue;
        pairing.found[i] = k;
        pairing.pairs++;
        pairing.residual += std::sqrt(ofLayout[i].squared);
    }
    if (pairing.pairs > 0) pairing.residual /= pairing.pairs;
    return pairing;
}

Placement LayoutSearch::Find(std::span<const CharBox> layout, std::span<const CharBox> found) const
{
    const std::vector<XY> from = CentersOf(layout), to = CentersOf(found);
    const XY middle = MiddleOf(layout), target = MiddleOf(found);
    const double range = std::max(maxAngle - minAngle, 0.0);
    const double wanted = std::ceil(range / AngleStep(from, middle, charHeight));
    const int angles = static_cast<int>(std::clamp(wanted, 1.0, double{mostAngles}));

    Placement best;
    Pairing bestPairing;
    bool isFirst = true;
    for (int offset = -farthest; offset <= farthest; offset++)
        for (int k = 0; k < angles; k++) {
            Placement placement;
            placement.angle = minAngle + (k + 0.5) * range / angles;
            placement.shift = target + XY(offset * charWidth, 0) - placement(middle);
            Pairing pairing = Pair(layout, placement, found, true);
            for (int round = 0; round < rounds && pairing.pairs > 0; round++) {
                placement = Fit(from, to, pairing);
                pairing = Pair(layout, placement, found, true);
            }
            if (!isFirst && !IsBetter(pairing, bestPairing)) continue;
            isFirst = false;
            best = placement;
            bestPairing = pairing;
        }
    return best;
}

Placement LayoutSearch::Shift(std::span<const CharBox> layout, std::span<const CharBox> found) const
{
    const Placement shifted = {0, MiddleOf(found) - MiddleOf(layout)};
    LayoutSearch upright = *this;
    upright.minAngle = upright.maxAngle = 0;
    const Placement searched = upright.Find(layout, found);
    const bool isBetter = IsBetter(Pair(layout, searched, found, true), Pair(layout, shifted, found, true));
    return isBetter ? searched : shifted;
}

} // namespace Tesk::chars
