// What the fits share: sums about the mean of the points, and the search for the model on which most points agree.
#pragma once

#include "measure/fit/PointFit.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <type_traits>

namespace Tesk::fits {

/// Below this share of the squared extent, the determinant of a covariance is rounding: the points lie on a line.
inline constexpr double collinear = 1e-13;

inline constexpr auto all = [](XY) { return true; };

template <typename P>
XY Real(P p)
{
    return {static_cast<double>(p.X), static_cast<double>(p.Y)};
}

inline double Cross(XY a, XY b)
{
    return a.X * b.Y - a.Y * b.X;
}

/// The mean of the points that are kept, and their number. Whole points have a whole one near their mean, so that sums
/// about it are exact.
template <typename P, typename Keep>
XY MeanOf(std::span<const P> points, Keep keep, double& count)
{
    double n = 0, sx = 0, sy = 0;
    for (const P& point : points) {
        const XY p = Real(point);
        if (!keep(p)) continue;
        n++;
        sx += p.X;
        sy += p.Y;
    }
    count = n;
    if (n == 0) return {0, 0};
    if constexpr (std::is_same_v<P, Site>) return {std::round(sx / n), std::round(sy / n)};
    return {sx / n, sy / n};
}

/// Sums over the points that are kept, about a place near their mean.
struct Sums
{
    XY Origin{0, 0};
    double N = 0, X = 0, Y = 0, XX = 0, XY_ = 0, YY = 0;

    XY Mean() const { return {Origin.X + X / N, Origin.Y + Y / N}; }
};

/// Sums of whole coordinates are exact wherever they are taken from, so that one pass over the sites does; 62 bits hold
/// them for as many sites as an `int` counts.
template <typename Keep>
Sums SumsOfSites(std::span<const Site> sites, Keep keep)
{
    std::int64_t n = 0, x = 0, y = 0, xx = 0, xy = 0, yy = 0;
    for (const Site site : sites) {
        if (!keep(Real(site))) continue;
        n++;
        x += site.X;
        y += site.Y;
        xx += site.X * site.X;
        xy += site.X * site.Y;
        yy += site.Y * site.Y;
    }
    Sums s;
    if (n == 0) return s;
    s.N = static_cast<double>(n);
    s.Origin = {std::round(static_cast<double>(x) / s.N), std::round(static_cast<double>(y) / s.N)};
    const auto p = static_cast<std::int64_t>(s.Origin.X), q = static_cast<std::int64_t>(s.Origin.Y);
    s.X = static_cast<double>(x - n * p);
    s.Y = static_cast<double>(y - n * q);
    s.XX = static_cast<double>(xx - 2 * p * x + n * p * p);
    s.XY_ = static_cast<double>(xy - p * y - q * x + n * p * q);
    s.YY = static_cast<double>(yy - 2 * q * y + n * q * q);
    return s;
}

template <typename P, typename Keep>
Sums SumsOf(std::span<const P> points, Keep keep)
{
    if constexpr (std::is_same_v<P, Site>) return SumsOfSites(points, keep);
    Sums s;
    s.Origin = MeanOf(points, keep, s.N);
    for (const P& point : points) {
        if (!keep(Real(point))) continue;
        const XY p = Real(point) - s.Origin;
        s.X += p.X;
        s.Y += p.Y;
        s.XX += p.X * p.X;
        s.XY_ += p.X * p.Y;
        s.YY += p.Y * p.Y;
    }
    return s;
}

/// The choices of `Chosen` out of `Seeds`, as bit masks in ascending order: those of fewer seeds come first.
template <int Seeds, int Chosen>
constexpr auto Choices()
{
    constexpr int count = [] {
        int n = 0;
        for (unsigned mask = 0; mask < 1u << Seeds; mask++)
            n += std::popcount(mask) == Chosen;
        return n;
    }();
    std::array<unsigned, count> masks{};
    std::size_t i = 0;
    for (unsigned mask = 0; mask < 1u << Seeds; mask++)
        if (std::popcount(mask) == Chosen) masks[i++] = mask;
    return masks;
}

/// How far a point is from a model: `Part / Weight` is the mean over several.
struct Residual
{
    double Part, Weight;
    bool IsWithin;
};

/// The model through some of at most `Seeds` points, spread evenly over their order, on which most points agree, and of
/// those the one with the least mean residual. `make(chosen, model)` builds one, `measure(model, point)` gives its
/// residual.
template <int Seeds, int Chosen, typename P, typename Model, typename Make, typename Measure>
Agreement Consensus(std::span<const P> points, Model& best, Make make, Measure measure)
{
    static constexpr auto choices = Choices<Seeds, Chosen>();
    const std::size_t seeds = Min<std::size_t>(points.size(), Seeds);
    Agreement winner;
    for (const unsigned mask : choices) {
        if (mask >> seeds) break;
        std::array<XY, Chosen> chosen;
        std::size_t filled = 0;
        for (std::size_t j = 0; j < seeds; j++)
            if (mask >> j & 1) chosen[filled++] = Real(points[j * points.size() / seeds]);
        Model model;
        if (!make(chosen, model)) continue;
        int count = 0;
        double part = 0, weight = 0, wholePart = 0, wholeWeight = 0;
        for (const P& point : points) {
            const Residual residual = measure(model, Real(point));
            wholePart += residual.Part;
            wholeWeight += residual.Weight;
            if (!residual.IsWithin) continue;
            count++;
            part += residual.Part;
            weight += residual.Weight;
        }
        const double inner = weight > 0 ? part / weight : 0;
        if (count < winner.Count || count == 0 || (count == winner.Count && inner >= winner.Inner)) continue;
        winner = {count, inner, wholeWeight > 0 ? wholePart / wholeWeight : 0};
        best = model;
    }
    return winner;
}

} // namespace Tesk::fits
