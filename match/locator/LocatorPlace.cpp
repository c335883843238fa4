// What a locator tells of the places that it found.
#include "match/Locator.h"

#include "foundation/Angles.h"
#include "foundation/Entry.h"
#include "foundation/Graph.h"
#include "image/Geometry.h"
#include "image/core/Destination.h"
#include "image/core/Refusals.h"
#include "image/geometry/Warps.h"
#include "match/locator/LocatorPlace.h"
#include "measure/Path.h"
#include "measure/Poly.h"

#include <cmath>

namespace Tesk {

using namespace locator;

const Candidate* Locator::Reach(const char* context, int index, const wchar_t* range) const
{
    if (NumLocations < 1) {
        Status::Raise(Status::Format(OutOfRange, L"No location has been found yet"), context);
        return nullptr;
    }
    if (index < 0 || index >= NumLocations) {
        Status::Raise(Status::Format(OutOfRange, range, index, NumLocations - 1), context);
        return nullptr;
    }
    return &locations_->list[static_cast<std::size_t>(index)];
}

const Candidate* Locator::ReachTrained(const char* context, int index) const
{
    if (model_) return Reach(context, index, L"The location index (%d) is out of the locations range [0..%d]");
    Status::Raise(Status::Format(VoidObject, L"No model has been defined, train first"), context);
    return nullptr;
}

namespace {

constexpr const wchar_t* indexRange = L"The location index (%d) is out of the range [0..%d]";

} // namespace

/// Fills the record but for the calibration.
bool Locator::Place(const char* context, int index, int depth) const
{
    const Candidate* found = Reach(context, index, indexRange);
    if (!found) return false;
    pose_.X = found->x;
    pose_.Y = found->y;
    if (depth != -1 && depth != StopDepth) {
        const int depths = Min(MaxDepths, model_->areaDepths);
        if (depth < 0 || depth >= depths) {
            Status::Raise(
                Status::Format(OutOfRange, L"The Depth (%d) is out of the range [0..%d]", depth, Max(depths - 1, 0)),
                context);
            return false;
        }
        const Image &asked = model_->At(depth).pattern, &stop = model_->At(StopDepth).pattern;
        pose_.X += (asked.Width - stop.Width) / 2.0;
        pose_.Y += (asked.Height - stop.Height) / 2.0;
    }
    pose_.Angle = ToDegrees(found->angle);
    pose_.Scale = found->scale;
    pose_.Score = found->score;
    pose_.Contrast = found->contrast;
    return true;
}

const _LocatorPose& Locator::Location(int Index, int Depth) const
{
    constexpr const char* context = "Tesk::Locator::Location";
    const Entry entry(context);
    if (Place(context, Index, Depth)) {
        pose_.X *= Geometry::ScaleFromPixel;
        pose_.Y *= Geometry::ScaleFromPixel;
    }
    return pose_;
}

const _LocatorPose& Locator::Location(const Geometry& Calibration, int Index, int Depth) const
{
    constexpr const char* context = "Tesk::Locator::Location";
    const Entry entry(context);
    if (Place(context, Index, Depth)) {
        const XY mapped = Calibration.MapPoint({pose_.X, pose_.Y});
        pose_.X = mapped.X;
        pose_.Y = mapped.Y;
    }
    return pose_;
}

void Locator::Corners(int LocationIndex, Poly& Dst) const
{
    constexpr const char* context = "Tesk::Locator::Corners";
    const Entry entry(context);
    const Candidate* found = ReachTrained(context, LocationIndex);
    if (!found) return;
    const Image& pattern = model_->At(StopDepth).pattern;
    const double w = pattern.Width / 2.0, h = pattern.Height / 2.0, a = found->scale * std::cos(found->angle),
                 b = found->scale * std::sin(found->angle), x = found->ix + originX_, y = found->iy + originY_;
    Dst.Clear();
    for (const auto [px, py] : {XY(w, h), XY(-w, h), XY(-w, -h), XY(w, -h)})
        Dst.Append(x + (a * px + b * py), y + (a * py - b * px));
    Dst.Closed = true;
}

void Locator::EdgePoints(int LocationIndex, Path& Dst) const
{
    constexpr const char* context = "Tesk::Locator::EdgePoints";
    const Entry entry(context);
    const Candidate* found = ReachTrained(context, LocationIndex);
    if (!found) return;
    entry.Guards(images::noWorkingMemory, [&] {
        Outline outline;
        const XY target(found->ix + originX_, found->iy + originY_);
        outline.Sample(model_->At(StopDepth), found->angle, found->scale, target, anywhere);
        Dst.Clear();
        for (const Pixel& p : outline.points)
            Dst.Append(p.x, p.y);
    });
}

void Locator::Register(int LocationIndex, const Image& Src, Image& Dst, bool Interpolate) const
{
    constexpr const char* context = "Tesk::Locator::Register";
    const Entry entry(context);
    if (entry.Refuses(images::CheckType(Src, {Gray, Rgb}))) return;
    const Candidate* found = Reach(context, LocationIndex, indexRange);
    if (!found) return;
    const Image& pattern = model_->levels[0].pattern;
    const double a = found->scale * std::cos(found->angle), b = found->scale * std::sin(found->angle),
                 w = (pattern.Width - 1) / 2.0, h = (pattern.Height - 1) / 2.0;
    const warps::AffineMap map = {a, b, found->x - a * w - b * h, -b, a, found->y + b * w - a * h};
    entry.Refuses(WithMemory(images::noWorkingMemory, [&] {
        return warps::SampleAffine(map, Src, Dst, pattern.Width, pattern.Height, Interpolate);
    }));
}

XY Locator::TransformPoint(XY P, int LocationIndex, bool ToImage, bool Local) const
{
    constexpr const char* context = "Tesk::Locator::TransformPoint";
    const Entry entry(context);
    const Candidate* found = Reach(context, LocationIndex, indexRange);
    if (!found) return P;
    const Image& pattern = model_->levels[0].pattern;
    const XY center((pattern.Width - 1) / 2.0 + (Local ? 0 : model_->x),
                    (pattern.Height - 1) / 2.0 + (Local ? 0 : model_->y));
    const double c = std::cos(found->angle), s = std::sin(found->angle), k = found->scale;
    if (ToImage) {
        const double u = P.X - center.X, v = P.Y - center.Y;
        return {found->x + k * c * u + k * s * v, found->y - k * s * u + k * c * v};
    }
    const double x = (P.X - found->x) / k, y = (P.Y - found->y) / k;
    return {center.X + c * x - s * y, center.Y + s * x + c * y};
}

void Locator::Select(int LocationIndex)
{
    const bool isOne = LocationIndex >= 0 && LocationIndex < NumLocations;
    Handle = isOne ? AllHandle : NoHandle;
    HitIndex = isOne ? LocationIndex : -1;
}

DraggingHandles Locator::HitLocation(int MouseX, int MouseY)
{
    const Entry entry("Tesk::Locator::HitLocation");
    Select(LocationAt(MouseX, MouseY));
    return Handle;
}

int Locator::LocationAt(int MouseX, int MouseY) const
{
    const double px = MouseX / Graph::Zoom, py = MouseY / Graph::Zoom;
    for (int i = 0; i < NumLocations; i++) {
        const Candidate& found = locations_->list[static_cast<std::size_t>(i)];
        const Image& pattern = model_->At(StopDepth).pattern;
        const double c = std::cos(found.angle), s = std::sin(found.angle), x = px - found.x, y = py - found.y,
                     u = (c * x - s * y) / found.scale, v = (s * x + c * y) / found.scale;
        if (std::abs(u) <= (pattern.Width - 1) / 2.0 && std::abs(v) <= (pattern.Height - 1) / 2.0) return i;
    }
    return -1;
}

} // namespace Tesk
