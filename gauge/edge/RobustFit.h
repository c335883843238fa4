// The fit without outliers that the gauges share: to all points, then four times to those near the shape.
#pragma once

#include "foundation/Records.h"
#include "gauge/EdgeRow.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <span>

namespace Tesk::edges {

struct FitQuality
{
    int kept = 0;
    double deviation = 0, robust = 0; ///< mean residuals of all points, and of those kept
    double threshold = 0;             ///< residuals up to it are kept
};

/// Two and a half times a residual of the middle, which is of `leastOrder` at the least, counted from 0. None is beyond
/// it if there are not so many.
inline double OutlierThreshold(FitScratch& scratch, int leastOrder)
{
    constexpr double factor = 2.5;
    auto& ordered = scratch.ordered;
    ordered.assign(scratch.residuals.begin(), scratch.residuals.end());
    const auto order = static_cast<std::ptrdiff_t>(Max((static_cast<int>(ordered.size()) + 1) / 2, leastOrder));
    if (order >= static_cast<std::ptrdiff_t>(ordered.size())) return std::numeric_limits<double>::infinity();
    std::nth_element(ordered.begin(), ordered.begin() + order, ordered.end());
    return factor * ordered[static_cast<std::size_t>(order)];
}

/// Fits a model that has `leastOrder`, a `Fit(keep)` to the points `i` for which `keep(i)` holds, and the `Residual(i)`
/// of a point. The first fit is to the points of `start`. False if one of the fits fails.
template <typename Model, typename Start>
bool FitRobust(std::span<const XY> points, FitScratch& scratch, Model& model, FitQuality& quality, Start start)
{
    constexpr int rounds = 4;
    // What rounding leaves of the residuals of points on a shape.
    constexpr double negligible = 1e-12;
    double extent = 0, threshold = 0;
    for (const XY p : points)
        extent = std::max({extent, Abs(p.X), Abs(p.Y)});
    if (!model.Fit(start)) return false;
    auto& residuals = scratch.residuals;
    residuals.resize(points.size());
    const auto isKept = [&](std::size_t i) { return residuals[i] <= threshold; };
    for (int round = 0;; round++) {
        for (std::size_t i = 0; i < points.size(); i++)
            residuals[i] = model.Residual(i);
        threshold = Max(OutlierThreshold(scratch, Model::leastOrder), negligible * extent);
        if (round == rounds) break;
        if (!model.Fit(isKept)) return false;
    }
    quality = {0, 0, 0, threshold};
    for (std::size_t i = 0; i < points.size(); i++) {
        quality.deviation += residuals[i];
        if (!isKept(i)) continue;
        quality.robust += residuals[i];
        quality.kept++;
    }
    quality.deviation /= static_cast<double>(points.size());
    if (quality.kept > 0) quality.robust /= quality.kept;
    return true;
}

/// The same from all points.
template <typename Model>
bool FitRobust(std::span<const XY> points, FitScratch& scratch, Model& model, FitQuality& quality)
{
    return FitRobust(points, scratch, model, quality, [](std::size_t) { return true; });
}

/// The points that are kept, one after the other.
template <typename Keep>
std::span<const XY> Gather(std::span<const XY> points, Keep keep, FitScratch& scratch)
{
    scratch.points.clear();
    scratch.points.reserve(points.size());
    for (std::size_t i = 0; i < points.size(); i++)
        if (keep(i)) scratch.points.push_back(points[i]);
    return scratch.points;
}

} // namespace Tesk::edges
