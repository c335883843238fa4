// Training and recognition, as the users of a shape matcher call them.
#include "match/ShapeMatcher.h"

#include "foundation/Angles.h"
#include "foundation/Entry.h"
#include "image/core/Refusals.h"
#include "match/shape/ShapeModel.h"
#include "measure/Blobs.h"
#include "measure/Path.h"
#include "measure/path/PathMoments.h"
#include "measure/region/Outline.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace Tesk {

using namespace shapes;

namespace {

std::span<const Site> SitesOf(const Path& path)
{
    return {path.Sites(), static_cast<std::size_t>(int(path.Length))};
}

void FollowBlob(const Blobs& blobs, int position, regions::OutlineWalk& walk, std::vector<Site>& outline)
{
    outline.clear();
    walk.Follow(blobs.RunsOf(position), [&](int x, int y) { outline.emplace_back(x, y); });
}

int CheckBlobIndex(const Blobs& blobs, int index)
{
    if (blobs.NumBlobs < 1) return Status::Format(VoidObject, L"No blob is available");
    if (index >= 0 && index < blobs.NumBlobs) return NoError;
    return Status::Format(OutOfRange, L"The blob index (%d) must be in range [0..%d]", index, blobs.NumBlobs - 1);
}

} // namespace

int ShapeMatcher::Selected = -1;

void ShapeMatcher::Append(Shape shape)
{
    shapes_.push_back(std::move(shape));
    NumTrained = static_cast<int>(shapes_.size());
}

int ShapeMatcher::TryTrain(std::span<const Site> outline, int classIndex, int symmetry, const wchar_t* smallArea,
                           const wchar_t* shortLength)
{
    return WithMemory(images::noWorkingMemory, [&] {
        int area = 0;
        XY center(0, 0);
        Measure(outline, area, center);
        if (area < leastArea) return Status::Format(OutOfRange, smallArea, area, leastArea);
        const auto length = static_cast<double>(paths::PerimeterOf(outline));
        if (length < leastLength) return Status::Format(OutOfRange, shortLength, length, leastLength);
        const auto shape = std::make_shared<ShapeModel>();
        shape->classIndex = classIndex;
        shape->symmetry = symmetry;
        shape->outline.assign(outline.begin(), outline.end());
        if (const int code = shape->Build()) return code;
        Append(shape);
        return int{NoError};
    });
}

void ShapeMatcher::Train(const Path& Outline, int ClassIndex, int Symmetry)
{
    const Entry entry("Tesk::ShapeMatcher::Train");
    entry.Refuses(TryTrain(SitesOf(Outline), ClassIndex, Symmetry,
                           L"This outline has too small an area for training (%d < %d pixels)",
                           L"This outline is too short for training (%.1f < %d perimeter length)"));
}

void ShapeMatcher::TrainBlob(const Blobs& Src, int BlobIndex, int ClassIndex, int Symmetry)
{
    const Entry entry("Tesk::ShapeMatcher::TrainBlob");
    if (entry.Refuses(CheckBlobIndex(Src, BlobIndex))) return;
    std::vector<Site> outline;
    if (!entry.Guards(images::noWorkingMemory, [&] {
            regions::OutlineWalk walk;
            FollowBlob(Src, BlobIndex, walk, outline);
        }))
        return;
    entry.Refuses(TryTrain(outline, ClassIndex, Symmetry, L"This blob is too small for training (%d < %d pixels)",
                           L"This blob is too small for training (%.1f < %d perimeter length)"));
}

void ShapeMatcher::Train(const Image& Edges, int ClassIndex, int Symmetry)
{
    const Entry entry("Tesk::ShapeMatcher::Train");
    if (entry.Refuses(images::CheckType(Edges, {Gray}))) return;
    const std::int64_t pixels = std::int64_t{Edges.Width} * Edges.Height;
    if (pixels < leastArea) {
        entry.Refuse(OutOfRange, L"This image has too small an area for training (%d < %d pixels)",
                     static_cast<int>(pixels), leastArea);
        return;
    }
    std::int64_t dark = 0;
    for (int y = 0; y < Edges.Height; y++)
        dark += std::count_if(Edges.Row(y), Edges.Row(y) + Edges.Width, [](std::uint8_t v) { return v < 128; });
    if (dark < leastLength) {
        entry.Refuse(OutOfRange, L"This edge map is too sparse for training (%d < %d edge pixels)",
                     static_cast<int>(dark), leastLength);
        return;
    }
    entry.Refuses(WithMemory(images::noWorkingMemory, [&] {
        const auto shape = std::make_shared<ShapeModel>();
        shape->classIndex = ClassIndex;
        shape->symmetry = Symmetry;
        if (const int code = shape->Build(Edges)) return code;
        Append(shape);
        return int{NoError};
    }));
}

void ShapeMatcher::Clear()
{
    const Entry entry("Tesk::ShapeMatcher::Clear");
    shapes_.clear();
    NumTrained = 0;
    Matched = -1;
    matched_.reset();
}

void ShapeMatcher::DeleteSelected()
{
    const Entry entry("Tesk::ShapeMatcher::DeleteSelected");
    if (NumTrained < 1) {
        entry.Refuse(VoidObject, L"No reference shape is available, perform training");
        return;
    }
    if (Selected < 0 || Selected >= NumTrained) {
        entry.Refuse(OutOfRange, L"The shape index (%d) must be in range [0..%d]", Selected, NumTrained - 1);
        return;
    }
    shapes_.erase(shapes_.begin() + Selected);
    NumTrained = static_cast<int>(shapes_.size());
    if (Matched >= Selected) Matched = Matched == Selected ? -1 : Matched - 1;
    Selected = -1;
}

bool ShapeMatcher::RefusesUntrained(const Entry& entry) const
{
    return NumTrained < 1 && entry.Refuse(VoidObject, L"No reference shape is available, perform training");
}

bool ShapeMatcher::Best(std::span<const Site> outline, Match& best) const
{
    int area = 0;
    XY center(0, 0);
    if (!Measure(outline, area, center)) return false;
    const double scale = std::sqrt(normalArea / area);
    for (int i = 0; i < NumTrained; i++) {
        const ShapeModel& shape = *shapes_[static_cast<std::size_t>(i)];
        if (!(shape.scale * MinScale <= scale && scale <= shape.scale * MaxScale)) continue;
        Match match;
        if (!MatchOutline(outline, center, scale, shape, match)) continue;
        if (best.shape && !(match.error < best.error)) continue;
        best = match;
        best.index = i;
    }
    return best.shape != nullptr;
}

int ShapeMatcher::Recognize(Path& Outline)
{
    const Entry entry("Tesk::ShapeMatcher::Recognize");
    if (RefusesUntrained(entry)) return -1;
    Match best;
    bool found = false;
    const bool done = entry.Guards(images::noWorkingMemory, [&] { found = Best(SitesOf(Outline), best); });
    if (!done) return -1;
    if (!found || !(MaxSimilarity >= best.error)) {
        Matched = -1;
        return -1;
    }
    const XY place = best.Place();
    X = place.X;
    Y = place.Y;
    Angle = ToDegrees(best.Radians());
    Scale = best.Scale();
    Similarity = best.error;
    Class = best.shape->classIndex;
    Matched = best.index;
    matched_ = shapes_[static_cast<std::size_t>(best.index)];
    std::copy_n(best.transform.begin(), 6, transform_);
    return best.index;
}

void ShapeMatcher::RecognizeBlobs(Blobs& Src, int BlobIndex)
{
    const Entry entry("Tesk::ShapeMatcher::RecognizeBlobs");
    if (RefusesUntrained(entry)) return;
    int begin = 0, end = 0;
    if (Src.NumBlobs < 1) {
        entry.Refuse(VoidObject, L"No blob is available");
        return;
    }
    if (BlobIndex != All && BlobIndex != AllSelected && BlobIndex != AllDeselected &&
        entry.Refuses(CheckBlobIndex(Src, BlobIndex)))
        return;
    entry.Refuses(WithMemory(images::noWorkingMemory, [&] {
        if (const int code = Src.RangeOf(BlobIndex, begin, end)) return code;
        const Image none;
        if (const int code = Src.TryEvaluate(BlobCenter, none, BlobIndex)) return code;
        for (int feature = BlobMatchingScore; feature <= BlobMatchingAngle; feature++)
            if (const int code = Src.ProvideColumn(feature)) return code;
        regions::OutlineWalk walk;
        std::vector<Site> outline;
        for (int i = begin; i < end; i++) {
            FollowBlob(Src, i, walk, outline);
            Match best;
            if (!Best(outline, best)) continue;
            const XY place = best.Place();
            const std::pair<int, double> features[] = {{BlobClass, best.shape->classIndex},
                                                       {BlobMatchingScore, best.error},
                                                       {BlobMatchingX, place.X},
                                                       {BlobMatchingY, place.Y},
                                                       {BlobMatchingScale, best.Scale()},
                                                       {BlobMatchingAngle, -ToDegrees(best.Radians())}};
            for (const auto& [feature, value] : features)
                if (const int code = Src.TrySetFeature(i, feature, value)) return code;
        }
        return int{NoError};
    }));
}

void ShapeMatcher::ShallowCopy(const ShapeMatcher& Src, bool KeepView)
{
    const Entry entry("Tesk::ShapeMatcher::ShallowCopy");
    entry.Guards(images::noWorkingMemory, [&] {
        if (KeepView) {
            *this = Src;
            return;
        }
        shapes_ = Src.shapes_;
        NumTrained = Src.NumTrained;
        Class = Src.Class;
        X = Src.X;
        Y = Src.Y;
        Angle = Src.Angle;
        Scale = Src.Scale;
        Similarity = Src.Similarity;
        Matched = Src.Matched;
        matched_ = Src.matched_;
        std::copy_n(Src.transform_, 6, transform_);
    });
}

} // namespace Tesk
