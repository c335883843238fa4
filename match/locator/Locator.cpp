// Training and searching, as a locator's users call them.
#include "match/Locator.h"

#include "foundation/Entry.h"
#include "image/core/Destination.h"
#include "image/core/Refusals.h"
#include "image/operator/PixelSteps.h"
#include "match/locator/LocatorSearch.h"
#include "measure/Region.h"

#include <cstdint>
#include <utility>

namespace Tesk {

using namespace locator;

namespace {

constexpr const wchar_t* noModel = L"No model has been defined, train first";

const Image& VoidImage()
{
    static const Image none;
    return none;
}

/// An image as `Gray` pixels: itself, or a conversion of it. True, and reported, if there is none.
bool RefusesGray(const Entry& entry, const Image& src, Image& converted, const Image*& gray)
{
    if (entry.Refuses(images::CheckType(src, {Gray, Gray16, Rgb, Rgba}))) return true;
    gray = &src;
    if (src.Type == Gray) return false;
    gray = &converted;
    return points::CopyPixels(entry, src, converted, Gray);
}

/// A copy in a store of its own, without window.
int CopyTo(Image& dst, const Image& src)
{
    if (const int code = dst.Fit(src.Width, src.Height, Gray)) return code;
    images::CopyRows(src, dst);
    return NoError;
}

/// 255 over the runs, 0 elsewhere.
int DrawRuns(const Region& region, const Image& like, bool window, Image& mask)
{
    if (const int code = mask.Fit(like.Width, like.Height, Gray)) return code;
    images::FillRows(mask, 0);
    const int x = window ? 0 : int(like.X), y = window ? 0 : int(like.Y), width = mask.Width, height = mask.Height;
    for (const LabeledRun& run : region.Runs()) {
        const int start = Max(run.Start - x, 0), end = Min(run.End - x, width), row = run.Y - y;
        if (row < 0 || row >= height) continue;
        for (int i = start; i < end; i++)
            mask.Row(row)[i] = 255;
    }
    return NoError;
}

} // namespace

Locator::Locator() = default;
Locator::~Locator() = default;

Locator::Locator(const Locator& Other)
{
    *this = Other;
}

Locator& Locator::operator=(const Locator& Other)
{
    if (&Other == this) return *this;
    MaxLocations = Other.MaxLocations;
    MinScore = Other.MinScore;
    MinContrast = Other.MinContrast;
    MinAngle = Other.MinAngle;
    MaxAngle = Other.MaxAngle;
    MinScale = Other.MinScale;
    MaxScale = Other.MaxScale;
    Edges = Other.Edges;
    Symmetry = Other.Symmetry;
    MaxOverlap = Other.MaxOverlap;
    MaxDepths = Other.MaxDepths;
    StopDepth = Other.StopDepth;
    Handle = Other.Handle;
    HitIndex = Other.HitIndex;
    Share(Other);
    return *this;
}

void Locator::ShallowCopy(const Locator& Src, bool KeepView)
{
    const Entry entry("Tesk::Locator::ShallowCopy");
    if (KeepView)
        *this = Src;
    else
        Share(Src);
}

void Locator::Share(const Locator& src)
{
    model_ = src.model_;
    searchMask_ = src.searchMask_;
    locations_ = src.locations_;
    originX_ = src.originX_;
    originY_ = src.originY_;
    MaxAreaDepths = src.MaxAreaDepths;
    MaxEdgesDepths = src.MaxEdgesDepths;
    NumLocations = src.NumLocations;
}

void Locator::Take(std::shared_ptr<const Model> model)
{
    MaxAreaDepths = model->areaDepths;
    MaxEdgesDepths = model->edgesDepths;
    model_ = std::move(model);
    // What was found and what restricts a search belong to the former model.
    locations_.reset();
    NumLocations = 0;
    Handle = NoHandle;
    HitIndex = -1;
}

int Locator::TryTrain(const Image& gray, const Image& src, int mode, const Image* mask, bool edgeMask)
{
    return WithMemory(images::noWorkingMemory, [&] {
        const auto model = std::make_shared<Model>();
        model->mode = static_cast<Modes>(mode);
        model->x = src.X;
        model->y = src.Y;
        if (const int code = CopyTo(model->levels[0].pattern, gray)) return code;
        if (mask)
            if (const int code = CopyTo(model->levels[0].mask, *mask)) return code;
        if (const int code = model->Build(edgeMask)) return code;
        std::shared_ptr<Masks> masks;
        if (searchMask_) {
            masks = std::make_shared<Masks>();
            if (const int code = CopyTo(masks->levels[0], searchMask_->levels[0])) return code;
            if (const int code = masks->Build(*model, model->areaDepths)) return code;
        }
        searchMask_ = masks;
        Take(model);
        return int{NoError};
    });
}

namespace {

int CheckPattern(const Image& src)
{
    const std::int64_t pixels = std::int64_t{src.Width} * src.Height;
    if (pixels >= leastPixels) return NoError;
    return Status::Format(OutOfRange, L"The pattern is only %d pixels large, at least %d are required",
                          static_cast<int>(pixels), leastPixels);
}

} // namespace

void Locator::Train(const Image& Src, bool Disk)
{
    const Entry entry("Tesk::Locator::Train");
    Image converted;
    const Image* gray;
    if (entry.Refuses(CheckImage(Src)) || entry.Refuses(CheckPattern(Src)) || RefusesGray(entry, Src, converted, gray))
        return;
    entry.Refuses(TryTrain(*gray, Src, static_cast<int>(Disk ? Modes::Disk : Modes::Rectangle), nullptr, false));
}

void Locator::Train(const Image& Mask, const Image& Src, bool EdgeMask)
{
    const Entry entry("Tesk::Locator::Train");
    if (entry.Refuses(CheckImage(Src)) || entry.Refuses(CheckImage(Mask))) return;
    if (Mask.Width != Src.Width || Mask.Height != Src.Height) {
        entry.Refuse(IncompatibleSize, L"Incompatible source image sizes, (%d, %d) vs. (%d, %d)", int(Mask.Width),
                     int(Mask.Height), int(Src.Width), int(Src.Height));
        return;
    }
    Image converted, convertedMask;
    const Image *gray, *mask;
    if (entry.Refuses(CheckPattern(Src)) || RefusesGray(entry, Src, converted, gray) ||
        RefusesGray(entry, Mask, convertedMask, mask))
        return;
    entry.Refuses(TryTrain(*gray, Src, static_cast<int>(Modes::Mask), mask, EdgeMask));
}

void Locator::Train(const Region& Mask, const Image& Src, bool SrcWindow)
{
    const Entry entry("Tesk::Locator::Train");
    Image converted, mask;
    const Image* gray;
    if (entry.Refuses(CheckImage(Src)) || entry.Refuses(CheckPattern(Src)) ||
        RefusesGray(entry, Src, converted, gray) || entry.Refuses(DrawRuns(Mask, Src, SrcWindow, mask)))
        return;
    entry.Refuses(TryTrain(*gray, Src, static_cast<int>(Modes::Mask), &mask, false));
}

const Image& Locator::TemplateImage() const
{
    const Entry entry("Tesk::Locator::TemplateImage");
    return model_ ? model_->levels[0].pattern : VoidImage();
}

const Image& Locator::MaskImage() const
{
    const Entry entry("Tesk::Locator::MaskImage");
    return model_ ? model_->levels[0].mask : VoidImage();
}

const Image& Locator::SearchMaskImage() const
{
    const Entry entry("Tesk::Locator::SearchMaskImage");
    return searchMask_ ? searchMask_->levels[0] : VoidImage();
}

int Locator::TryMask(std::shared_ptr<Masks> masks)
{
    if (model_)
        if (const int code = masks->Build(*model_, Max(model_->areaDepths, model_->edgesDepths))) return code;
    searchMask_ = std::move(masks);
    return NoError;
}

void Locator::SearchMask(const Image& Mask)
{
    const Entry entry("Tesk::Locator::SearchMask");
    Image converted;
    const Image* gray;
    if (entry.Refuses(CheckImage(Mask)) || RefusesGray(entry, Mask, converted, gray)) return;
    entry.Refuses(WithMemory(images::noWorkingMemory, [&] {
        const auto masks = std::make_shared<Masks>();
        if (const int code = CopyTo(masks->levels[0], *gray)) return code;
        return TryMask(masks);
    }));
}

void Locator::SearchMask(const Region& Mask, const Image& Src, bool SrcWindow)
{
    const Entry entry("Tesk::Locator::SearchMask");
    if (entry.Refuses(CheckImage(Src))) return;
    if (Mask.NumRuns < 1) {
        entry.Refuse(VoidObject, L"The Region is empty");
        return;
    }
    entry.Refuses(WithMemory(images::noWorkingMemory, [&] {
        const auto masks = std::make_shared<Masks>();
        if (const int code = DrawRuns(Mask, Src, SrcWindow, masks->levels[0])) return code;
        return TryMask(masks);
    }));
}

void Locator::SearchMask()
{
    const Entry entry("Tesk::Locator::SearchMask");
    searchMask_.reset();
}

int Locator::CheckSearch(const Image& src, Settings& settings) const
{
    const Image& pattern = model_->levels[0].pattern;
    if (src.Width < pattern.Width || src.Height < pattern.Height)
        return Status::Format(UnsupportedType,
                              L"The search image (%d x %d) is smaller than the pattern (%d x %d), reduce the pattern",
                              int(src.Width), int(src.Height), int(pattern.Width), int(pattern.Height));
    if (searchMask_) {
        const Image& mask = searchMask_->levels[0];
        if (mask.Width != src.Width || mask.Height != src.Height)
            return Status::Format(
                IncompatibleSize,
                L"The search mask size (%d x %d) does not match the search image size (%d, %d), adjust",
                int(mask.Width), int(mask.Height), int(src.Width), int(src.Height));
    }
    if (MaxDepths < 1)
        return Status::Format(OutOfRange, L"The pyramid height (%d) must be positive, use a larger template",
                              MaxDepths);
    const int depths = Min(MaxDepths, Edges ? model_->edgesDepths : model_->areaDepths);
    if (StopDepth < 0 || StopDepth >= depths)
        return Status::Format(OutOfRange, L"The stop depth value (%d) must be in range [0..%d]", StopDepth,
                              Max(depths - 1, 0));
    settings = {MinAngle,   MaxAngle,     MinScale,  MaxScale,   MinScore, MinContrast,
                MaxOverlap, MaxLocations, StopDepth, depths - 1, Edges};
    return NoError;
}

int Locator::TryFind(const Image& gray, const Image& src, const Settings& settings)
{
    return WithMemory(images::noWorkingMemory, [&] {
        const auto found = std::make_shared<Locations>();
        if (!search_) search_ = std::make_unique<locator::Search>();
        if (const int code = search_->Run(*model_, searchMask_.get(), gray, settings, found->list)) return code;
        for (Candidate& c : found->list) {
            c.x += src.X;
            c.y += src.Y;
        }
        originX_ = src.X;
        originY_ = src.Y;
        NumLocations = static_cast<int>(found->list.size());
        locations_ = found;
        return int{NoError};
    });
}

void Locator::Find(const Image& Src)
{
    const Entry entry("Tesk::Locator::Find");
    if (entry.Refuses(CheckImage(Src))) return;
    if (!model_) {
        entry.Refuse(VoidObject, noModel);
        return;
    }
    if (entry.Refuses(images::CheckType(Src, {Gray, Gray16, Rgb, Rgba}))) return;
    Settings settings;
    Image converted;
    const Image* gray;
    if (entry.Refuses(CheckSearch(Src, settings)) || RefusesGray(entry, Src, converted, gray)) return;
    if (entry.Refuses(TryFind(*gray, Src, settings))) return;
    // A search that is repeated keeps the location that was chosen by its place in the order.
    Select(HitIndex);
}

} // namespace Tesk
