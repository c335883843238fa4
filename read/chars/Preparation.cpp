// What is done to an image before characters are looked for.
#include "foundation/Entry.h"
#include "image/core/Destination.h"
#include "image/core/PixelLoops.h"
#include "image/core/Refusals.h"
#include "image/filter/LocalMeans.h"
#include "image/histogram/LevelCounts.h"
#include "image/morpho/MorphoExtremum.h"
#include "read/chars/Segmentation.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace Tesk::chars {

namespace {

using kernels::Extremum;

constexpr int middleLevel = 128;
/// How far from the local mean the segmentation of a levelled image sets its threshold.
constexpr int levelledStep = 20;
/// The square of the local mean, in heights of a character.
constexpr int localHeights = 4;

/// The 3 by 3 box for radius 1, else an octagon.
morpho::Element ElementOf(int radius, const Image& image)
{
    const int side = 2 * radius + 1;
    return {side, side, radius == 1 ? 1 : side - 2 * (side / 4), image};
}

void Apply(Extremum extremum, int radius, Image& image)
{
    Image result;
    images::MakeLike(image, Gray, result);
    morpho::Apply(extremum, ElementOf(radius, image), image, result);
    image.ShallowCopy(result, true);
}

/// 255 where characters may stand, or the other way round for dark ones: the strokes widened, made binary.
void MakeMask(const Image& turned, const SegmentSettings& settings, Image& mask)
{
    images::MakeLike(turned, Gray, mask);
    morpho::Apply(settings.whiteOnBlack ? Extremum::Maximum : Extremum::Minimum, ElementOf(settings.masking, turned),
                  turned, mask);
    const int threshold = levels::BestSplit(mask).threshold;
    images::ThroughTable(mask, mask, [threshold](int v) { return v >= threshold ? 255 : 0; });
}

void Combine(const Image& mask, bool whiteOnBlack, Image& image)
{
    if (whiteOnBlack)
        images::EachBytePair(image, mask, image, [](int a, int b) { return a & b; });
    else
        images::EachBytePair(image, mask, image, [](int a, int b) { return a | b; });
}

/// Takes the mean around each pixel away.
void LevelLight(Image& image, int charHeight)
{
    Image means;
    images::MakeLike(image, Gray, means);
    const int size = localHeights * charHeight + 1;
    filters::BoxMeans(image, size, size, means);
    images::EachBytePair(image, means, image, [](int v, int mean) { return Clamp(v - mean + middleLevel, 0, 255); });
}

/// A rise or a fall between two turning points.
struct RowEdge
{
    int row;
    std::int64_t amplitude;
};

/// The row from which on a rise or a fall is past its middle.
int MiddleRow(std::span<const std::int64_t> sums, int from, int to)
{
    const std::int64_t begin = sums[static_cast<std::size_t>(from)], end = sums[static_cast<std::size_t>(to)];
    for (int row = from; row < to; row++) {
        const std::int64_t twice = 2 * sums[static_cast<std::size_t>(row)];
        if (end > begin ? twice >= begin + end : twice <= begin + end) return row;
    }
    return to;
}

/// The edges between turning points that differ by at least `swing`, falls and rises in turn.
std::vector<RowEdge> FindEdges(std::span<const std::int64_t> sums, std::int64_t swing)
{
    std::vector<int> turns;
    int lowest = 0, highest = 0, direction = 0;
    const auto at = [&](int row) { return sums[static_cast<std::size_t>(row)]; };
    for (int row = 1; row < static_cast<int>(sums.size()); row++) {
        if (at(row) < at(lowest)) lowest = row;
        if (at(row) > at(highest)) highest = row;
        if (direction <= 0 && at(row) - at(lowest) >= swing) {
            turns.push_back(lowest);
            direction = 1;
            highest = row;
        } else if (direction >= 0 && at(highest) - at(row) >= swing) {
            turns.push_back(highest);
            direction = -1;
            lowest = row;
        }
    }
    if (direction != 0) turns.push_back(direction > 0 ? highest : lowest);
    std::vector<RowEdge> edges;
    for (std::size_t i = 1; i < turns.size(); i++)
        edges.push_back({MiddleRow(sums, turns[i - 1], turns[i]), at(turns[i]) - at(turns[i - 1])});
    return edges;
}

} // namespace

void CutRows(Image& image, int rows, int charWidth, bool whiteOnBlack)
{
    // The gaps are the high parts of the profile.
    std::vector<std::int64_t> sums(static_cast<std::size_t>(int(image.Height)));
    for (int y = 0; y < image.Height; y++) {
        std::int64_t& sum = sums[static_cast<std::size_t>(y)];
        for (int x = 0; x < image.Width; x++)
            sum += image.Row(y)[x];
        if (whiteOnBlack) sum = -sum;
    }
    const std::vector<RowEdge> edges = FindEdges(sums, std::int64_t{charWidth} * 255);
    if (edges.size() < 2 * static_cast<std::size_t>(rows)) return;

    std::vector<std::pair<std::int64_t, int>> gaps; // depth and middle
    for (std::size_t i = 1; i + 2 < edges.size(); i++)
        if (edges[i].amplitude > 0 && edges[i + 1].amplitude < 0)
            gaps.emplace_back(edges[i].amplitude - edges[i + 1].amplitude, (edges[i].row + edges[i + 1].row) / 2);
    std::stable_sort(gaps.begin(), gaps.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
    const std::size_t cuts = std::min(gaps.size(), static_cast<std::size_t>(rows - 1));
    for (std::size_t i = 0; i < cuts; i++)
        std::fill_n(image.Row(gaps[i].second), int(image.Width), std::uint8_t(whiteOnBlack ? 0 : 255));
}

int Prepare(const Image& turned, const SegmentSettings& settings, Prepared& prepared)
{
    return WithMemory(images::noWorkingMemory, [&] {
        Image& image = prepared.image;
        images::MakeLike(turned, Gray, image);
        images::CopyRows(turned, image);
        const bool light = settings.whiteOnBlack;
        const Extremum thicken = light ? Extremum::Maximum : Extremum::Minimum;
        const Extremum thin = light ? Extremum::Minimum : Extremum::Maximum;
        if (settings.dotted > 0) {
            Apply(thicken, settings.dotted, image);
            Apply(thin, settings.dotted, image);
        }
        if (settings.inking != 0)
            Apply(settings.inking > 0 ? thicken : thin, settings.inking > 0 ? settings.inking : -settings.inking,
                  image);
        Image mask;
        if (settings.masking > 0) MakeMask(turned, settings, mask);

        if (settings.localThreshold) {
            LevelLight(image, settings.charHeight);
            prepared.threshold = light ? middleLevel + levelledStep : middleLevel - levelledStep;
        } else {
            prepared.threshold = settings.threshold == Auto ? levels::BestSplit(image).threshold : settings.threshold;
        }
        if (settings.masking > 0) Combine(mask, light, image);
        if (settings.splitRows > 0) CutRows(image, settings.splitRows, settings.charWidth, light);
    });
}

} // namespace Tesk::chars
