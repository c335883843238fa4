// What is measured on one blob: each function works out a group of features in one pass over its runs.
#pragma once

#include "image/Image.h"
#include "measure/region/Outline.h"
#include "measure/region/RowChains.h"

#include <span>
#include <vector>

namespace Tesk {
class Geometry;
}

namespace Tesk::blobs {

/// The links of a run in the contour of its blob: where the contour goes on from its right end upwards, and from its
/// left and its right end downwards.
struct ContourLinks
{
    int upRight, downLeft, downRight;
};

/// What serves one blob after the other, so that none costs memory of its own.
struct Workplace
{
    const Image* src = nullptr;
    double scale = 1;                                         ///< true length of a pixel
    const Geometry* calibrator = nullptr;                     ///< if given, takes the place of the scale
    std::vector<Site>*outlines = nullptr, *vectors = nullptr; ///< where the points of all blobs are stored
    regions::OutlineWalk walk;
    regions::RowChains chains;
    std::vector<Site> hull;
    std::vector<ContourLinks> links;
    std::vector<std::int32_t> counts;
};

struct Subject
{
    std::span<const LabeledRun> runs;
    int area;
    double needed[2]; ///< the features that it needs
};

/// Writes the values of the features of a group, in the order of its columns. False if there is nothing to store.
using Measure = bool (*)(Workplace& work, const Subject& blob, double* values);

/// \name Size and shape
/// @{
bool WorldArea(Workplace& work, const Subject& blob, double* values);
bool Perimeter(Workplace& work, const Subject& blob, double* values);
bool FullPerimeter(Workplace& work, const Subject& blob, double* values);
bool PerimetricRatio(Workplace& work, const Subject& blob, double* values);
bool FilledArea(Workplace& work, const Subject& blob, double* values);
bool RatioToArea(Workplace& work, const Subject& blob, double* values);
bool Box(Workplace& work, const Subject& blob, double* values);
bool WorldBox(Workplace& work, const Subject& blob, double* values);
bool Outline(Workplace& work, const Subject& blob, double* values);
bool Vector(Workplace& work, const Subject& blob, double* values);
/// @}

/// \name The convex hull
/// @{
bool ConvexArea(Workplace& work, const Subject& blob, double* values);
bool ConvexPerimeter(Workplace& work, const Subject& blob, double* values);
bool ConvexPerimeterRatio(Workplace& work, const Subject& blob, double* values);
bool FeretBox(Workplace& work, const Subject& blob, double* values);
bool DiametralBox(Workplace& work, const Subject& blob, double* values);
/// @}

/// \name Moments
/// @{
bool Center(Workplace& work, const Subject& blob, double* values);
bool Ellipse(Workplace& work, const Subject& blob, double* values);
bool Centroid(Workplace& work, const Subject& blob, double* values);
bool Ellipsoid(Workplace& work, const Subject& blob, double* values);
/// @}

/// \name Gray values
/// @{
bool Mass(Workplace& work, const Subject& blob, double* values);
bool Average(Workplace& work, const Subject& blob, double* values);
bool Deviation(Workplace& work, const Subject& blob, double* values);
bool Median(Workplace& work, const Subject& blob, double* values);
bool Minimum(Workplace& work, const Subject& blob, double* values);
bool Maximum(Workplace& work, const Subject& blob, double* values);
/// @}

/// Leaves the corners of the convex hull in `work.hull`.
void FindHull(Workplace& work, std::span<const LabeledRun> runs);

/// Calls `f(first pixel, pixels, x, y)` for the part of each run that lies in the window of an image.
template <typename T, typename F>
void EachRow(std::span<const LabeledRun> runs, const Image& src, F f)
{
    for (const LabeledRun& run : runs) {
        const int y = run.Y - src.Y, from = Max(run.Start - src.X, 0), to = Min(run.End - src.X, int(src.Width));
        if (y >= 0 && y < src.Height && from < to) f(src.Row<T>(y) + from, to - from, from + src.X, int{run.Y});
    }
}

} // namespace Tesk::blobs
