// Blobs on the screen: what is drawn of them, and which one lies under a point.
#include "foundation/Graph.h"
#include "image/Geometry.h"
#include "measure/blobs/BlobMeasures.h"
#include "measure/blobs/BlobsFrame.h"
#include "measure/region/RunPixels.h"

#include <cstring>
#include <string>

namespace Tesk {

using namespace blobs;

namespace {

constexpr int hitColor = 48, selectedColor = 12, otherColor = 3;

/// Arms of the mark of a center, in pixels of the screen.
constexpr int markArms = 3;

/// Whether a position on the screen lies on what the pixels from one to another, both included, are drawn to. Where
/// pixels are smaller than those of the screen, several are drawn to one.
bool Covers(int first, int last, int position)
{
    return position >= Graph::ToTarget(first) &&
           (position < Graph::ToTarget(last + 1) || position <= Graph::ToTarget(last));
}

} // namespace

int Blobs::HitBlob(int X, int Y, int BlobIndex) const
{
    const Entry entry("Tesk::Blobs::HitBlob");
    HitBlobIndex = MinInt;
    int begin = 0, end = 0;
    if (RefusesIndex(RangeOf(BlobIndex, begin, end))) return MinInt;
    for (int position = begin; position < end; position++)
        for (const LabeledRun& run : RunsOf(position))
            if (run.Start < run.End && Covers(run.Y, run.Y, Y) && Covers(run.Start, run.End - 1, X))
                return HitBlobIndex = position;
    return MinInt;
}

template <typename F>
void Blobs::DrawEach(int blobIndex, F draw) const
{
    int begin = 0, end = 0;
    if (RefusesIndex(RangeOf(blobIndex, begin, end))) return;
    const GraphSettings settings;
    for (int position = begin; position < end; position++) {
        if (Graph::AutoColors) {
            const auto color = static_cast<PredefinedColors>(position == HitBlobIndex ? hitColor
                                                             : position < NumSelected ? selectedColor
                                                                                      : otherColor);
            Graph::LineColor = Graph::PointColor = Graph::TextColor = color;
        }
        if (!draw(position)) return;
    }
}

void Blobs::DrawBlob(int BlobIndex, bool ShowNumber, bool ShowClass) const
{
    const Entry entry("Tesk::Blobs::DrawBlob");
    if (!Graph::AutoColors && Graph::FillColor == NoColor) {
        entry.Refuse(OutOfRange,
                     L"Can't draw the Blob, the filling color is set to NoColor while AutoColor is disabled");
        return;
    }
    DrawEach(BlobIndex, [&](int position) {
        const std::span<const LabeledRun> runs = RunsOf(position);
        // Outlines stay as hollow as the user has them.
        if (Graph::AutoColors) Graph::FillColor = Graph::LineColor;
        if (entry.Refuses(regions::DrawRuns(runs))) return false;
        if (runs.empty() || (!ShowNumber && !ShowClass)) return true;
        const int number = ShowClass ? RecordOf(Order[position]).Class : position;
        Graph::Text(runs[0].Start, runs[0].Y, std::to_string(number).c_str());
        return true;
    });
}

void Blobs::DrawOutline(int BlobIndex, bool ShowNumber) const
{
    const Entry entry("Tesk::Blobs::DrawOutline");
    Workplace work;
    std::vector<XY> points;
    entry.Guards(noRuns, [&] {
        DrawEach(BlobIndex, [&](int position) {
            const std::span<const LabeledRun> runs = RunsOf(position);
            if (runs.empty()) return true;
            points.clear();
            work.walk.Follow(runs, [&points](int x, int y) { points.emplace_back(x, y); });
            if (points.empty())
                Graph::Plot(runs[0].Start, runs[0].Y, 0);
            else
                Graph::Polyline(points, true);
            if (ShowNumber) Graph::Text(runs[0].Start, runs[0].Y, std::to_string(position).c_str());
            return true;
        });
    });
}

void Blobs::DrawHull(int BlobIndex) const
{
    const Entry entry("Tesk::Blobs::DrawHull");
    Workplace work;
    entry.Guards(noRuns, [&] {
        DrawEach(BlobIndex, [&](int position) {
            FindHull(work, RunsOf(position));
            if (work.hull.size() == 1)
                Graph::Plot(work.hull[0].X, work.hull[0].Y, 0);
            else if (!work.hull.empty())
                Graph::Polyline(work.hull.data(), static_cast<int>(work.hull.size()), true);
            return true;
        });
    });
}

template <typename F>
void Blobs::DrawMeasured(const char* context, std::initializer_list<int> features, const Image* src, int blobIndex,
                         F draw)
{
    const Entry entry(context);
    int begin = 0, end = 0;
    if (RefusesIndex(RangeOf(blobIndex, begin, end))) return;
    for (const int feature : features) {
        if (src && entry.Refuses(TryEvaluate(feature, *src, blobIndex))) return;
        if (!HasColumn(feature)) return;
    }
    DrawEach(blobIndex, [&](int position) {
        const int row = Order[position];
        for (const int feature : features)
            if (std::memcmp(FeatureCell(row, feature), &notComputed, sizeof notComputed) == 0) return true;
        draw(row);
        return true;
    });
}

void Blobs::DrawBox(int BlobIndex, bool Center)
{
    const Image none;
    DrawMeasured("Tesk::Blobs::DrawBox", {BlobBox}, &none, BlobIndex, [&](int row) {
        const double x = Measured(row, BlobBoxX), y = Measured(row, BlobBoxY), width = Measured(row, BlobBoxWidth),
                     height = Measured(row, BlobBoxHeight);
        Graph::Rectangle(x - 0.5, y - 0.5, width + 0.5, height + 0.5);
        if (Center) Graph::Cross(x + (width - 1) / 2, y + (height - 1) / 2, markArms);
    });
}

void Blobs::DrawPoint(const char* context, int feature, const Image* src, int blobIndex)
{
    DrawMeasured(context, {feature}, src, blobIndex, [&](int row) {
        const double scale = Geometry::ScaleToPixel;
        Graph::Cross(Measured(row, feature) * scale, Measured(row, feature + 1) * scale, markArms);
    });
}

void Blobs::DrawInertia(const char* context, int center, int first, const Image* src, int blobIndex, bool cross)
{
    DrawMeasured(context, {center, first}, src, blobIndex, [&](int row) {
        const double scale = Geometry::ScaleToPixel;
        const double x = Measured(row, center) * scale, y = Measured(row, center + 1) * scale;
        // The angle of the feature runs against that of drawing.
        Graph::Ellipse(x, y, Measured(row, first) * scale / 2, Measured(row, first + 1) * scale / 2,
                       -Measured(row, first + 2));
        if (cross) Graph::Cross(x, y, markArms);
    });
}

void Blobs::DrawRotatedBox(const char* context, int first, int blobIndex, bool cross)
{
    const Image none;
    DrawMeasured(context, {first}, &none, blobIndex, [&](int row) {
        const double scale = Geometry::ScaleToPixel;
        const double x = Measured(row, first) * scale, y = Measured(row, first + 1) * scale;
        Graph::RotatedRectangle(x, y, Measured(row, first + 2) * scale, Measured(row, first + 3) * scale,
                                -Measured(row, first + 4), false);
        if (cross) Graph::Cross(x, y, markArms);
    });
}

void Blobs::DrawCenter(int BlobIndex)
{
    const Image none;
    DrawPoint("Tesk::Blobs::DrawCenter", BlobCenter, &none, BlobIndex);
}

void Blobs::DrawCentroid(int BlobIndex)
{
    DrawPoint("Tesk::Blobs::DrawCentroid", BlobCentroid, nullptr, BlobIndex);
}

void Blobs::DrawCentroid(const Image& Src, int BlobIndex)
{
    DrawPoint("Tesk::Blobs::DrawCentroid", BlobCentroid, &Src, BlobIndex);
}

void Blobs::DrawEllipse(int BlobIndex, bool Center)
{
    const Image none;
    DrawInertia("Tesk::Blobs::DrawEllipse", BlobCenter, BlobEllipse, &none, BlobIndex, Center);
}

void Blobs::DrawEllipsoid(int BlobIndex, bool Center)
{
    DrawInertia("Tesk::Blobs::DrawEllipsoid", BlobCentroid, BlobEllipsoid, nullptr, BlobIndex, Center);
}

void Blobs::DrawEllipsoid(const Image& Src, int BlobIndex, bool Center)
{
    DrawInertia("Tesk::Blobs::DrawEllipsoid", BlobCentroid, BlobEllipsoid, &Src, BlobIndex, Center);
}

void Blobs::DrawFeretBox(int BlobIndex, bool Center)
{
    DrawRotatedBox("Tesk::Blobs::DrawFeretBox", BlobFeretBox, BlobIndex, Center);
}

void Blobs::DrawDiametralBox(int BlobIndex, bool Center)
{
    DrawRotatedBox("Tesk::Blobs::DrawDiametralBox", BlobDiametralBox, BlobIndex, Center);
}

} // namespace Tesk
