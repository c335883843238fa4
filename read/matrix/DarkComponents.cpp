// The connected dark regions of an image: runs, labelled by those above them.
#include "read/matrix/DarkComponents.h"

#include "measure/region/ScanKernels.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Tesk::matrix {

void DarkComponents::Find(const Image& gray, int threshold, std::int64_t leastArea)
{
    width_ = gray.Width;
    height_ = gray.Height;
    edges_.resize(static_cast<std::size_t>(width_) + 1 + kernels::edgeSlack);
    runs_.clear();
    labels_.Clear();
    rows_.assign(1, 0);
    for (int y = 0; y < height_; ++y) {
        ScanRow(gray, y, threshold);
        rows_.push_back(runs_.size());
    }
    Sort(leastArea);
}

void DarkComponents::ScanRow(const Image& gray, int y, int threshold)
{
    const std::size_t count = kernels::BandEdges(gray.Row(y), static_cast<std::size_t>(width_),
                                                 kernels::Band::Above(threshold, false), edges_.data());
    std::size_t above = y > 0 ? rows_[static_cast<std::size_t>(y) - 1] : 0;
    const std::size_t aboveEnd = runs_.size();
    for (std::size_t i = 0; i < count; i += 2) {
        DarkRun run{edges_[i], edges_[i + 1] + 1, y, 0};
        run.label = LabelOf(run, above, aboveEnd);
        runs_.push_back(run);
    }
}

/// The label of the runs above that touch a run, of which `above` is the first that may.
int DarkComponents::LabelOf(const DarkRun& run, std::size_t& above, std::size_t aboveEnd)
{
    while (above < aboveEnd && runs_[above].end <= run.first)
        ++above;
    int label = -1;
    for (std::size_t i = above; i < aboveEnd && runs_[i].first < run.end; ++i)
        if (label < 0)
            label = runs_[i].label;
        else if (label != runs_[i].label)
            label = labels_.Unite(label, runs_[i].label);
    return label < 0 ? labels_.Add() : label;
}

void DarkComponents::Sort(std::int64_t leastArea)
{
    const auto labels = static_cast<std::size_t>(labels_.Count());
    starts_.assign(labels + 1, 0);
    for (DarkRun& run : runs_) {
        run.label = labels_.Root(run.label);
        ++starts_[static_cast<std::size_t>(run.label) + 1];
    }
    for (std::size_t i = 1; i < starts_.size(); ++i)
        starts_[i] += starts_[i - 1];
    sorted_.resize(runs_.size());
    for (const DarkRun& run : runs_)
        sorted_[starts_[static_cast<std::size_t>(run.label)]++] = run;

    components_.clear();
    std::size_t from = 0;
    for (std::size_t label = 0; label < labels; ++label) { // each start has moved to its end
        DarkComponent component{from, starts_[label], 0};
        for (const DarkRun& run : RunsOf(component))
            component.area += run.Length();
        if (component.area >= leastArea) components_.push_back(component);
        from = starts_[label];
    }
    std::stable_sort(components_.begin(), components_.end(),
                     [](const DarkComponent& a, const DarkComponent& b) { return a.area > b.area; });
}

void DarkComponents::ExtentsOf(const DarkComponent& component, std::vector<RowExtent>& extents) const
{
    extents.clear();
    for (const DarkRun& run : RunsOf(component))
        if (extents.empty() || extents.back().y != run.y)
            extents.push_back({run.y, run.first, run.Last()});
        else
            extents.back().last = run.Last();
}

ComponentShape DarkComponents::ShapeOf(const DarkComponent& component) const
{
    const std::span<const DarkRun> runs = RunsOf(component);
    // Moments about a corner of the region, where numbers stay small.
    const double x0 = runs.front().first, y0 = runs.front().y;
    double sx = 0, sy = 0, sxx = 0, sxy = 0, syy = 0;
    std::int64_t spans = 0;
    int end = 0, spanFirst = 0;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        const DarkRun& run = runs[i];
        const double n = run.Length(), middle = (run.first + run.Last()) / 2.0 - x0, y = run.y - y0;
        sx += n * middle;
        sxx += n * (middle * middle + (n * n - 1) / 12);
        sy += n * y;
        syy += n * y * y;
        sxy += n * middle * y;
        end = std::max(end, run.end);
        if (i == 0 || runs[i - 1].y != run.y) spanFirst = run.first;
        if (i + 1 == runs.size() || runs[i + 1].y != run.y) spans += run.Last() + 1 - spanFirst;
    }
    const auto area = static_cast<double>(component.area);
    const double mx = sx / area, my = sy / area;
    const double xx = sxx / area - mx * mx + 1.0 / 12, yy = syy / area - my * my + 1.0 / 12, xy = sxy / area - mx * my;
    const double mean = (xx + yy) / 2, radius = std::hypot((xx - yy) / 2, xy);
    ComponentShape shape;
    shape.centroid = {x0 + mx, y0 + my};
    shape.dense = 3 * component.area > spans;
    shape.aspect = std::sqrt(std::max(mean - radius, 0.0) / (mean + radius));
    shape.atFarEdges = end >= width_ || runs.back().y >= height_ - 2;
    return shape;
}

} // namespace Tesk::matrix
