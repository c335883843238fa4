// Working out the features of the blobs that lack them: which come together, what they need, where they go.
#include "image/Geometry.h"
#include "measure/Path.h"
#include "measure/blobs/BlobMeasures.h"
#include "measure/blobs/BlobsFrame.h"

#include <cstring>

namespace Tesk {

using namespace blobs;

namespace {

enum class Pixels
{
    None,
    GrayOnly,
    GrayOrGray16
};

constexpr int mostColumns = 7;

/// Features that are worked out together. The blobs that lack one of the first `members` columns are measured; the
/// others come along.
struct Group
{
    Measure measure;
    int members = 0, columns = 0;
    int column[mostColumns] = {};
    int needs[2] = {-1, -1};
    Pixels pixels = Pixels::None;
};

constexpr Group Single(Measure measure, int feature, Pixels pixels = Pixels::None)
{
    return {measure, 1, 1, {feature}, {-1, -1}, pixels};
}

constexpr Group Ratio(Measure measure, int feature, int need, int other = -1)
{
    return {measure, 1, 1, {feature}, {need, other}};
}

constexpr Group groups[] = {
    Single(WorldArea, BlobWorldArea),
    Single(Perimeter, BlobPerimeter),
    Single(FullPerimeter, BlobFullPerimeter),
    Ratio(PerimetricRatio, BlobPerimetricRatio, BlobPerimeter),
    Single(FilledArea, BlobFilledArea),
    Ratio(RatioToArea, BlobFillingRatio, BlobFilledArea),
    Single(ConvexArea, BlobConvexArea),
    Ratio(RatioToArea, BlobConvexAreaRatio, BlobConvexArea),
    Single(ConvexPerimeter, BlobConvexPerimeter),
    Ratio(ConvexPerimeterRatio, BlobConvexPerimeterRatio, BlobPerimeter, BlobConvexPerimeter),
    {Center, 2, 2, {BlobCenterX, BlobCenterY}},
    {Ellipse, 4, 4, {BlobEllipseWidth, BlobEllipseHeight, BlobEllipseAngle, BlobEccentricity}},
    Single(Mass, BlobMass, Pixels::GrayOrGray16),
    Single(Average, BlobAverage, Pixels::GrayOrGray16),
    {Deviation, 1, 2, {BlobDeviation, BlobAverage}, {-1, -1}, Pixels::GrayOrGray16},
    Single(Median, BlobMedian, Pixels::GrayOnly),
    Single(Minimum, BlobMinimum, Pixels::GrayOrGray16),
    Single(Maximum, BlobMaximum, Pixels::GrayOrGray16),
    {Centroid, 2, 3, {BlobCentroidX, BlobCentroidY, BlobMass}, {-1, -1}, Pixels::GrayOnly},
    {Ellipsoid,
     4,
     7,
     {BlobEllipsoidWidth, BlobEllipsoidHeight, BlobEllipsoidAngle, BlobEllipsoidEccentricity, BlobCentroidX,
      BlobCentroidY, BlobMass},
     {-1, -1},
     Pixels::GrayOnly},
    {Box, 5, 5, {BlobBoxX, BlobBoxY, BlobBoxWidth, BlobBoxHeight, BlobAspectRatio}},
    {WorldBox, 4, 5, {BlobWorldBoxX, BlobWorldBoxY, BlobWorldBoxWidth, BlobWorldBoxHeight, BlobAspectRatio}},
    {FeretBox,
     6,
     6,
     {BlobFeretCenterX, BlobFeretCenterY, BlobFeretWidth, BlobFeretHeight, BlobFeretAngle, BlobFeretRatio}},
    {DiametralBox,
     6,
     6,
     {BlobDiametralCenterX, BlobDiametralCenterY, BlobDiametralWidth, BlobDiametralHeight, BlobDiametralAngle,
      BlobDiametralRatio}},
    {Outline, 2, 2, {BlobOutlineBeg, BlobOutlineEnd}},
    {Vector, 2, 2, {BlobVectorBeg, BlobVectorEnd}},
};

/// The group that a feature belongs to; null for one that is not worked out.
const Group* GroupOf(int feature)
{
    for (const Group& group : groups)
        for (int i = 0; i < group.members; i++)
            if (group.column[i] == feature) return &group;
    return nullptr;
}

const wchar_t* GrayFeatureName(int feature)
{
    switch (feature) {
    case BlobMass:
        return L"BlobMass";
    case BlobAverage:
        return L"BlobAverage";
    case BlobDeviation:
        return L"BlobDeviation";
    case BlobMinimum:
        return L"BlobMinimum";
    default:
        return L"BlobMaximum";
    }
}

int CheckPixels(const Group& group, const Image& src)
{
    if (group.pixels == Pixels::None) return NoError;
    if (group.pixels == Pixels::GrayOnly) return CheckImage(src, Gray);
    if (const int code = CheckImage(src)) return code;
    if (src.Type == Gray || src.Type == Gray16) return NoError;
    return Status::Format(UnsupportedType,
                          L"The image type (%ls) is not supported for the %ls feature; use Gray or Gray16",
                          PixelTypeName(src.Type), GrayFeatureName(group.column[0]));
}

bool IsMissing(const std::uint8_t* cell)
{
    return std::memcmp(cell, &notComputed, sizeof notComputed) == 0;
}

void Store(std::uint8_t* cell, int type, double value)
{
    if (!IsMissing(cell)) return;
    if (type == Int) {
        const auto whole = static_cast<std::int32_t>(Clamp<double>(value, MinInt, MaxInt));
        std::memcpy(cell, &whole, sizeof whole);
    } else {
        // A negative zero has the bits of a cell that was not computed.
        const float real = static_cast<float>(value) + 0.0f;
        std::memcpy(cell, &real, sizeof real);
    }
}

double Load(const std::uint8_t* cell, int type)
{
    if (type == Float) {
        float real;
        std::memcpy(&real, cell, sizeof real);
        return real;
    }
    std::int32_t whole;
    std::memcpy(&whole, cell, sizeof whole);
    return whole;
}

} // namespace

int Blobs::TryEvaluate(int Feature, const Image& Src, int BlobIndex, const Geometry* Calibrator)
{
    if (Feature == BlobClass || Feature == BlobArea) {
        int begin = 0, end = 0;
        if (const int code = RangeOf(BlobIndex, begin, end)) return code;
        return NumBlobs > 0 && !HasColumn(Feature) ? CheckReading(Feature, Int) : int(NoError);
    }
    const Group* group = GroupOf(Feature);
    if (!group) return Status::Format(OutOfRange, L"This feature (%ls) cannot be computed", UnicodeName(Feature));
    int begin = 0, end = 0;
    if (const int code = RangeOf(BlobIndex, begin, end)) return code;
    if (const int code = CheckPixels(*group, Src)) return code;
    for (const int need : group->needs)
        if (need >= 0)
            if (const int code = TryEvaluate(need, Src, BlobIndex)) return code;
    for (int i = 0; i < group->columns; i++)
        if (const int code = ProvideColumn(group->column[i])) return code;

    return WithMemory(noTable, [&] {
        Workplace work;
        work.src = &Src;
        work.scale = Geometry::ScaleFromPixel;
        work.calibrator = Calibrator;
        if (group->measure == blobs::Outline) work.outlines = &outlines_.Write();
        if (group->measure == Vector) work.vectors = &vectors_.Write();
        std::uint8_t* rows = nullptr;
        const int* order = Order;
        const auto pitch = static_cast<std::size_t>(int(RowPitch));
        for (int position = begin; position < end; position++) {
            const int row = order[position];
            bool missing = false;
            for (int i = 0; i < group->members; i++)
                missing |= IsMissing(FeatureCell(row, group->column[i]));
            if (!missing) continue;
            Subject blob = {RunsOf(position), RecordOf(row).Area, {}};
            for (int i = 0; i < 2 && group->needs[i] >= 0; i++)
                blob.needed[i] = Load(FeatureCell(row, group->needs[i]), FeatureType(group->needs[i]));
            double values[mostColumns] = {};
            if (!group->measure(work, blob, values)) continue;
            // Cells that others share are copied only if one has to be written.
            if (!rows) rows = WriteRows();
            std::uint8_t* cells = rows + static_cast<std::size_t>(row) * pitch;
            for (int i = 0; i < group->columns; i++)
                Store(cells + Record(ColumnOf(group->column[i])).Offset, FeatureType(group->column[i]), values[i]);
        }
    });
}

void Blobs::Evaluate(const Geometry& Calibrator, enum Features Feature, const Image& Src, int BlobIndex)
{
    const Entry entry("Tesk::Blobs::Evaluate");
    int begin = 0, end = 0;
    if (RefusesIndex(RangeOf(BlobIndex, begin, end))) return;
    const bool isCalibrated = Feature == BlobWorldArea || (Feature >= BlobWorldBoxX && Feature <= BlobWorldBoxHeight);
    if (!isCalibrated)
        entry.Refuse(OutOfRange, L"There is no such calibrated feature (%ls)", UnicodeName(Feature));
    else
        entry.Refuses(TryEvaluate(Feature, Src, BlobIndex, &Calibrator));
}

int Blobs::TryProvide(int feature, const Image& src, int blobIndex)
{
    const bool stored =
        feature >= NumPredefinedFeatures || (feature >= BlobMatchingScore && feature <= BlobMatchingAngle);
    return stored && HasColumn(feature) ? int(NoError) : TryEvaluate(feature, src, blobIndex);
}

void Blobs::Evaluate(enum Features Feature, const Image& Src, int BlobIndex)
{
    const Entry entry("Tesk::Blobs::Evaluate");
    int begin = 0, end = 0;
    if (!RefusesIndex(RangeOf(BlobIndex, begin, end))) entry.Refuses(TryEvaluate(Feature, Src, BlobIndex));
}

void Blobs::Outline(int BlobIndex, const Image&, Path& Dst) const
{
    const Entry entry("Tesk::Blobs::Outline");
    if (RefusesIndex(CheckBlob(BlobIndex))) return;
    entry.Guards(noRuns, [&] {
        Path path;
        regions::OutlineWalk().Follow(RunsOf(BlobIndex), [&path](int x, int y) { path.Append(x, y); });
        Dst = std::move(path);
    });
}

void Blobs::ConvexHull(int BlobIndex, const Image&, Path& Dst) const
{
    const Entry entry("Tesk::Blobs::ConvexHull");
    if (RefusesIndex(CheckBlob(BlobIndex))) return;
    entry.Guards(noRuns, [&] {
        Workplace work;
        FindHull(work, RunsOf(BlobIndex));
        Path path;
        for (const Site corner : work.hull)
            path.Append(corner);
        Dst = std::move(path);
    });
}

} // namespace Tesk
