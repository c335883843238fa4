// Calibration with a target: its dots are found as blobs, numbered, and fitted.
#include "image/Geometry.h"

#include "foundation/Entry.h"
#include "image/core/Destination.h"
#include "image/core/PixelTypes.h"
#include "image/core/Refusals.h"
#include "image/geometry/GeometryTarget.h"
#include "image/morpho/MorphoExtremum.h"
#include "measure/Blobs.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

namespace Tesk {

namespace {

constexpr int leastArea = 3, fewestDots = 5;
constexpr const wchar_t* noMemory = L"Cannot allocate the anchors buffer";

/// Squares that meet at their corners come apart where a small element eats them from all sides.
void PartSquares(const Image& src, bool whiteOnBlack, Image& parted)
{
    constexpr int size = 3;
    images::MakeLike(src, src.Type, parted);
    const morpho::Element square(size, size, 1, src);
    morpho::Apply(whiteOnBlack ? morpho::Extremum::Minimum : morpho::Extremum::Maximum, square, src, parted);
}

/// The centres of the blobs that may be dots: those clear of the border, of the size of most, the smallest first.
int FindCentres(const Image& src, bool whiteOnBlack, std::vector<XY>& centres)
{
    Blobs blobs;
    if (const int code = blobs.TrySegment(src, whiteOnBlack, true, leastArea, MaxInt)) return code;
    if (blobs.NumBlobs > 0)
        if (const int code = blobs.TryBorderSelect(src, Remove)) return code;
    const int count = blobs.NumSelectedBlobs;
    if (count < fewestDots) return Status::Format(OutOfRange, L"Not enough dots (%d) were found in the target", count);
    if (const int code = blobs.TryEvaluate(BlobCenter, src, AllSelected)) return code;
    const Blobs& measured = blobs;
    std::vector<int> areas, order(static_cast<std::size_t>(count));
    for (int i = 0; i < count; i++)
        areas.push_back(measured.IntFeature(i, BlobArea));
    const auto areaOf = [&areas](int i) { return areas[static_cast<std::size_t>(i)]; };
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return areaOf(a) < areaOf(b); });
    const targets::AreaRange common = targets::CommonAreas(areas);
    for (const int i : order)
        if (areaOf(i) >= common.smallest && areaOf(i) <= common.largest)
            centres.emplace_back(measured.FloatFeature(i, BlobCenterX), measured.FloatFeature(i, BlobCenterY));
    return NoError;
}

} // namespace

void Geometry::CalibrateTarget(enum RegistrationModels Model, const Image& Src, double GridStep, bool WhiteOnBlack,
                               bool Chessboard, double OriginColumn, double OriginRow)
{
    const Entry entry("Tesk::Geometry::CalibrateTarget");
    if (entry.Refuses(CheckImage(Src))) return;
    constexpr images::Types parted = {Gray, Gray16};
    if (Chessboard && !parted.Has(Src.Type)) {
        entry.Refuses(images::RefuseType(Src.Type));
        return;
    }
    if (!std::isfinite(GridStep) || !std::isfinite(OriginColumn) || !std::isfinite(OriginRow)) {
        entry.Refuse(OutOfRange, L"The grid step (%g) and the origin (%g, %g) must be finite", GridStep, OriginColumn,
                     OriginRow);
        return;
    }
    ScaleToPixel = ScaleFromPixel = 1.0;
    targets::Calibration found;
    const int code = WithMemory(noMemory, [&]() -> int {
        Image working;
        if (Chessboard) PartSquares(Src, WhiteOnBlack, working);
        std::vector<XY> centres;
        if (const int failure = FindCentres(Chessboard ? working : Src, WhiteOnBlack, centres)) return failure;
        const targets::Target target{GridStep, Chessboard, XY(OriginColumn, OriginRow)};
        return targets::Calibrate(centres, target, Model, Src.Width, Src.Height, found);
    });
    if (code && !found.refusedBy) {
        entry.Refuses(code);
        return;
    }
    // From here on as by `Append`, `ModelFit` and `SimpleCalibration`, each under its own name.
    if (!entry.Guards(noMemory, [&] { anchors_.Replace(std::move(found.anchors)); })) return;
    NumAnchors = static_cast<int>(anchors_.Read().size());
    Take(Model);
    if (Status::Raise(code, found.refusedBy)) return;
    forward_ = found.fit.forward;
    inverse_ = found.fit.inverse;
    Status::Raise(TryCalibrate(targets::lengthInPixels, found.trueLength), "Tesk::Geometry::SimpleCalibration");
}

} // namespace Tesk
