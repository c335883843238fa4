// Teaching a comparator: the reference, the aligners and the detectors.
#include "gauge/Comparator.h"

#include "foundation/Angles.h"
#include "foundation/Entry.h"
#include "gauge/compare/CompareFrame.h"
#include "image/core/Refusals.h"
#include "image/geometry/GeometryModel.h"
#include "image/histogram/LevelCounts.h"
#include "image/operator/PixelSteps.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <span>
#include <vector>

namespace Tesk {

using namespace compare;

namespace {

constexpr int firstMargin = 32; ///< in pixels, on each side

/// A rectangle grown by margins, of which those at the left and the top are negative; held to what coordinates can be.
Limits Grown(const Limits& roi, std::span<const int> margins)
{
    const auto held = [](std::int64_t v) {
        return static_cast<int>(Clamp<std::int64_t>(v, -std::int64_t{farthest}, std::int64_t{farthest}));
    };
    return {held(std::int64_t{roi.X} + margins[0]), held(std::int64_t{roi.Y} + margins[1]),
            held(std::int64_t{roi.Width} - margins[0] + margins[2]),
            held(std::int64_t{roi.Height} - margins[1] + margins[3])};
}

Limits Shrunk(const Limits& roi, std::span<const int> margins)
{
    return {roi.X - margins[0], roi.Y - margins[1], roi.Width - margins[2] + margins[0],
            roi.Height - margins[3] + margins[1]};
}

/// Whether something is left of an extent between a near and a far margin.
bool Holds(int extent, int near, int far)
{
    return std::int64_t{extent} - far + near >= 1;
}

/// The largest value of |cos| over a range of angles in degrees, `quarter` quarters of a turn away from the x axis.
double LargestCosine(double from, double to, int quarter)
{
    constexpr double half = 180, right = 90;
    const double shift = right * quarter;
    if (std::floor((to - shift) / half) > std::floor((from - shift) / half) || std::fmod(from - shift, half) == 0)
        return 1;
    return Max(std::abs(std::cos(ToRadians(from - shift))), std::abs(std::cos(ToRadians(to - shift))));
}

/// How far a rectangle of this extent reaches beyond itself along a coordinate at a turn; `across` is its other extent.
double Beyond(double extent, double across, double degrees, double scale)
{
    const double a = ToRadians(degrees);
    return (scale * (extent * std::abs(std::cos(a)) + across * std::abs(std::sin(a))) - extent) / 2;
}

/// By how much a margin widens for the turned and scaled rectangle: by its diagonal, as far as that can lie along the
/// coordinate; by the sides of the turned rectangle where its diagonal stays clear of it.
int Sweep(int extent, int across, double from, double to, double scale, int quarter)
{
    const double diagonal = std::trunc(std::hypot(extent, across)) * scale;
    const double reach = std::trunc(diagonal * LargestCosine(from, to, quarter)) - extent;
    const double turned = Max(Beyond(extent, across, from, scale), Beyond(extent, across, to, scale));
    return static_cast<int>(Clamp(Max(reach, std::ceil(turned)), 0.0, double(farthest)));
}

} // namespace

RgbPixel Comparator::TooDarkColor(0, 0, 255);
RgbPixel Comparator::TooLightColor(255, 0, 0);

Comparator::Comparator()
{
    SearchMargins.values_ = {-firstMargin, -firstMargin, firstMargin, firstMargin};
    SearchRanges.values_ = {0, 0, 1, 1};
    ReferenceMean.values_ = {0, 0, 0};
}

Comparator::~Comparator() = default;

Comparator::Comparator(const Comparator& Other)
{
    *this = Other;
}

Comparator& Comparator::operator=(const Comparator& Other)
{
    if (&Other == this) return *this;
    Mode = Other.Mode;
    NumAligners = Other.NumAligners;
    AlignerIndex = Other.AlignerIndex;
    NumDetectors = Other.NumDetectors;
    DetectorIndex = Other.DetectorIndex;
    InstanceIndex = Other.InstanceIndex;
    Overrun = Other.Overrun;
    MinShiftX = Other.MinShiftX, MaxShiftX = Other.MaxShiftX;
    MinShiftY = Other.MinShiftY, MaxShiftY = Other.MaxShiftY;
    MinRotation = Other.MinRotation, MaxRotation = Other.MaxRotation;
    MinScaling = Other.MinScaling, MaxScaling = Other.MaxScaling;
    GainCompensation = Other.GainCompensation;
    NumSamples = Other.NumSamples;
    Statistical = Other.Statistical;
    Model = Other.Model;
    SearchMargins = Other.SearchMargins;
    SearchRanges = Other.SearchRanges;
    ReferenceVariance = Other.ReferenceVariance;
    ReferenceMean = Other.ReferenceMean;
    Handle = Other.Handle;
    HitType = Other.HitType;
    HitIndex = Other.HitIndex;
    // The pixels of these are never written: who learns others takes other images.
    reference_.ShallowCopy(Other.reference_, true);
    TakeLimits(Other.lower_, Other.upper_);
    aligners_ = Other.aligners_;
    detectors_ = Other.detectors_;
    clip_ = Other.clip_;
    detectorRegion_ = Other.detectorRegion_;
    isStale_ = Other.isStale_;
    samples_ = Other.samples_;
    searched_ = Other.searched_;
    grab_ = Other.grab_;
    taken_ = Other.taken_;
    return *this;
}

std::vector<Limits> Comparator::ROIs() const
{
    std::vector<Limits> rois;
    for (int i = 0; i < NumAligners; i++) {
        rois.push_back(AlignerAt(i).train);
        rois.push_back(AlignerAt(i).search);
    }
    rois.insert(rois.end(), detectors_.begin(), detectors_.end());
    return rois;
}

/// Those of `ROIs`, for the same number of aligners.
void Comparator::PutROIs(std::span<const Limits> rois)
{
    for (int i = 0; i < NumAligners; i++) {
        AlignerAt(i).train = rois[2 * static_cast<std::size_t>(i)];
        AlignerAt(i).search = rois[2 * static_cast<std::size_t>(i) + 1];
    }
    const auto detectors = rois.subspan(2 * static_cast<std::size_t>(NumAligners));
    detectors_.assign(detectors.begin(), detectors.end());
    NumDetectors = static_cast<int>(detectors_.size());
    DetectorIndex = Clamp(DetectorIndex, 0, Max(NumDetectors - 1, 0));
    isStale_ = true;
}

void Comparator::ShallowCopy(const Comparator& Src, bool KeepView)
{
    const Entry entry("Tesk::Comparator::ShallowCopy");
    if (&Src == this) return;
    entry.Guards(images::noWorkingMemory, [&] {
        const Use own{InstanceIndex, GainCompensation, ROIs()}, former = taken_;
        const DraggingHandles handle = Handle;
        const ROITypes hitType = HitType;
        const int hitIndex = HitIndex;
        const Grab grab = grab_;
        *this = Src;
        taken_ = {Src.InstanceIndex, Src.GainCompensation, Src.ROIs()};
        if (KeepView) return;
        if (own.InstanceIndex != former.InstanceIndex) InstanceIndex = own.InstanceIndex;
        if (own.GainCompensation != former.GainCompensation) GainCompensation = own.GainCompensation;
        if (taken_.rois == former.rois && own.rois != former.rois) PutROIs(own.rois);
        // A ROI is dragged here while it is used.
        Handle = handle;
        HitType = hitType;
        HitIndex = hitIndex;
        grab_ = grab;
    });
}

void Comparator::TakeROIs(const Comparator& Src)
{
    const Entry entry("Tesk::Comparator::TakeROIs");
    if (NumAligners != Src.NumAligners || Src.NumDetectors < 1) return;
    entry.Guards(images::noWorkingMemory, [&] { PutROIs(Src.ROIs()); });
    DetectorIndex = Src.DetectorIndex;
}

void Comparator::TakeLimits(const Image& lower, const Image& upper)
{
    lower_.ShallowCopy(lower, true);
    upper_.ShallowCopy(upper, true);
}

bool Comparator::RefusesIdle(const Entry& entry) const
{
    if (Mode != CompareIdle && reference_.Type != Undefined) return false;
    return entry.Refuse(CannotPerform, L"This Comparator has not been initialized - Use SetReference");
}

bool Comparator::RefusesROI(const Entry& entry, const Limits& roi) const
{
    if (roi.X >= 0 && roi.Y >= 0 && roi.Width > 0 && roi.Height > 0 && roi.X + roi.Width <= reference_.Width &&
        roi.Y + roi.Height <= reference_.Height)
        return false;
    return entry.Refuse(OutOfRange, L"The ROI (%d, %d), %d x %d, must lie in the reference image of %d x %d",
                        int(roi.X), int(roi.Y), int(roi.Width), int(roi.Height), int(reference_.Width),
                        int(reference_.Height));
}

namespace {

int CheckGrid(int numX, int numY, RegistrationModels model)
{
    if (model < Translation || model > Rational)
        return Status::Format(UnsupportedType, L"This geometric model (%d) is not known", int(model));
    const std::int64_t count = numX < 1 || numY < 1 ? 0 : std::int64_t{numX} * numY;
    if (count < models::FewestAnchors(model))
        return Status::Format(UnsupportedType, L"This geometric model (%ls) requires at least %d aligners",
                              models::ModelName(model), models::FewestAnchors(model));
    if (count > Comparator::MostAligners)
        return Status::Format(NotImplemented, L"Sorry, the multi-match feature is not implemented yet");
    return NoError;
}

} // namespace

void Comparator::SetReference(const Image& Src, int NumX, int NumY, RegistrationModels Model)
{
    const Entry entry("Tesk::Comparator::SetReference");
    if (entry.Refuses(CheckColors(Src)) || entry.Refuses(CheckGrid(NumX, NumY, Model))) return;
    const int width = Src.Width, height = Src.Height;
    if (width > farthest || height > farthest) {
        entry.Refuse(OutOfRange, L"The reference image (%d x %d) is too large", width, height);
        return;
    }
    const Limits cell(0, 0, width / (2 * NumX), height / (2 * NumY));
    const std::span<const int> margins = SearchMargins;
    if (!Holds(cell.Width, margins[0], margins[2]) || !Holds(cell.Height, margins[1], margins[3])) {
        entry.Refuse(OutOfRange, L"The Search margins %d, %d are too large for this Image size %d x %d",
                     margins[2] - margins[0], margins[3] - margins[1], width, height);
        return;
    }
    Image copy;
    if (points::CopyPixels(entry, Src, copy)) return;
    reference_.ShallowCopy(copy, true);
    TakeLimits(Image(), Image());
    for (int j = 0; j < NumY; j++)
        for (int i = 0; i < NumX; i++) {
            AlignerState& aligner = AlignerAt(j * NumX + i);
            aligner.search = Limits(static_cast<int>(width * (i + 0.25) / NumX),
                                    static_cast<int>(height * (j + 0.25) / NumY), cell.Width, cell.Height);
            aligner.train = Shrunk(aligner.search, margins);
            aligner.locator = Locator();
        }
    this->Model = Model;
    NumAligners = NumX * NumY;
    AlignerIndex = -1;
    detectors_.assign(1, Shrunk(Limits(0, 0, width, height), margins));
    NumDetectors = 1;
    DetectorIndex = 0;
    isStale_ = true;
    taken_.rois.clear();
    NumSamples = 0;
    samples_.Reset();
    clip_.Clear();
    Overrun = false;
    Mode = EditingAligners;
}

bool Comparator::RefusesAligners(const Entry& entry) const
{
    if (RefusesIdle(entry)) return true;
    if (NumAligners < 1) return entry.Refuse(OutOfRange, L"No aligner has been defined - Use Set");
    if (AlignerIndex >= -1 && AlignerIndex < NumAligners) return false;
    return entry.Refuse(OutOfRange, L"The aligner index (%d) must be in range [0..%d]", AlignerIndex, NumAligners - 1);
}

/// Its index; -1, and reported, if there is none.
int Comparator::EditedAligner(const Entry& entry) const
{
    if (RefusesAligners(entry)) return -1;
    if (AlignerIndex >= 0) return AlignerIndex;
    if (NumAligners == 1) return 0;
    entry.Refuse(OutOfRange, L"The aligner index (%d) must be in range [0..%d]", AlignerIndex, NumAligners - 1);
    return -1;
}

Limits Comparator::AlignerTrainROI() const
{
    const int index = EditedAligner(Entry("Tesk::Comparator::AlignerTrainROI"));
    return index < 0 ? Limits(0, 0, 0, 0) : AlignerAt(index).train;
}

void Comparator::AlignerTrainROI(const Limits& ROI)
{
    const Entry entry("Tesk::Comparator::AlignerTrainROI");
    const int index = EditedAligner(entry);
    if (index >= 0 && !RefusesROI(entry, ROI)) AlignerAt(index).train = ROI;
}

Limits Comparator::AlignerSearchROI() const
{
    const int index = EditedAligner(Entry("Tesk::Comparator::AlignerSearchROI"));
    return index < 0 ? Limits(0, 0, 0, 0) : AlignerAt(index).search;
}

void Comparator::AlignerSearchROI(const Limits& ROI)
{
    const Entry entry("Tesk::Comparator::AlignerSearchROI");
    const int index = EditedAligner(entry);
    if (index >= 0 && !RefusesROI(entry, ROI)) AlignerAt(index).search = ROI;
}

Locator& Comparator::Aligner(int Index)
{
    const Entry entry("Tesk::Comparator::Aligner");
    static thread_local Locator none;
    if (RefusesIdle(entry)) return none;
    if (Index >= 0 && Index < NumAligners) return AlignerAt(Index).locator;
    entry.Refuse(OutOfRange, L"The aligner index (%d) must be in range [0..%d]", Index, NumAligners - 1);
    return none;
}

void Comparator::AlignerSearchRange(int Left, int Top, int Right, int Bottom, double MinAngle, double MaxAngle,
                                    double MinScale, double MaxScale)
{
    const Entry entry("Tesk::Comparator::AlignerSearchRange");
    if (RefusesAligners(entry)) return;
    const auto isUsable = [](double from, double to) { return std::isfinite(from) && std::isfinite(to) && from <= to; };
    if (!isUsable(MinAngle, MaxAngle) || !isUsable(MinScale, MaxScale) || MinScale <= 0) {
        entry.Refuse(OutOfRange, L"The search ranges [%g..%g], [%g..%g] are not usable", MinAngle, MaxAngle, MinScale,
                     MaxScale);
        return;
    }
    int aside = 0, above = 0;
    if (MinAngle != 0 || MaxAngle != 0 || MinScale != 1 || MaxScale != 1)
        for (int i = FirstAligner(); i < EndAligner(); i++) {
            const Limits& roi = AlignerAt(i).train;
            aside = Max(aside, Sweep(roi.Width, roi.Height, MinAngle, MaxAngle, MaxScale, 0));
            above = Max(above, Sweep(roi.Height, roi.Width, MinAngle, MaxAngle, MaxScale, 1));
        }
    const auto held = [](std::int64_t v) {
        return static_cast<int>(Clamp<std::int64_t>(v, -std::int64_t{farthest}, std::int64_t{farthest}));
    };
    SearchMargins.values_ = {held(std::int64_t{Left} - aside), held(std::int64_t{Top} - above),
                             held(std::int64_t{Right} + aside), held(std::int64_t{Bottom} + above)};
    SearchRanges.values_ = {MinAngle, MaxAngle, MinScale, MaxScale};
    for (int i = FirstAligner(); i < EndAligner(); i++) {
        AlignerState& aligner = AlignerAt(i);
        aligner.search = Grown(aligner.train, SearchMargins);
        TakeRanges(aligner.locator);
    }
}

void Comparator::TakeRanges(Locator& locator) const
{
    locator.MinAngle = SearchRanges[0];
    locator.MaxAngle = SearchRanges[1];
    locator.MinScale = SearchRanges[2];
    locator.MaxScale = SearchRanges[3];
}

void Comparator::TrainAligners()
{
    constexpr const char* context = "Tesk::Comparator::TrainAligners";
    const Entry entry(context);
    if (RefusesAligners(entry)) return;
    if (NumAligners > MostAligners) {
        entry.Refuse(OutOfRange, L"The number of training patterns (%d) may not exceed %d, currently", int(NumAligners),
                     MostAligners);
        return;
    }
    for (int i = FirstAligner(); i < EndAligner(); i++) {
        AlignerState& aligner = AlignerAt(i);
        if (RefusesROI(entry, aligner.train)) return;
        Image pattern;
        ViewOf(reference_, aligner.train, pattern);
        aligner.locator.Train(pattern);
        if (Status::Error().Code != NoError) return;
        aligner.trained = aligner.train;
        TakeRanges(aligner.locator);
    }
    Image area;
    ViewOf(reference_, WorkingArea(), area);
    Statistics statistics;
    if (entry.Refuses(WithMemory(images::noWorkingMemory, [&] { statistics = StatisticsOf(area, false); }))) return;
    ReferenceMean.values_.assign(statistics.means.begin(), statistics.means.end());
    ReferenceVariance = statistics.variance;
}

int Comparator::AppendDetectorROI(const Limits& ROI)
{
    const Entry entry("Tesk::Comparator::AppendDetectorROI");
    if (RefusesIdle(entry)) return -1;
    if (ROI.Width < 1 || ROI.Height < 1) {
        entry.Refuse(OutOfRange, L"The detector ROI (%d x %d) is empty", int(ROI.Width), int(ROI.Height));
        return -1;
    }
    if (!entry.Guards(images::noWorkingMemory, [&] { detectors_.push_back(ROI); })) return -1;
    NumDetectors = static_cast<int>(detectors_.size());
    DetectorIndex = NumDetectors - 1;
    isStale_ = true;
    Mode = EditingDetectors;
    return DetectorIndex;
}

bool Comparator::RefusesDetector(const Entry& entry) const
{
    if (RefusesIdle(entry)) return true;
    if (DetectorIndex >= 0 && DetectorIndex < NumDetectors) return false;
    return entry.Refuse(OutOfRange, L"The detector index (%d) must be in range [0..%d]", DetectorIndex,
                        NumDetectors - 1);
}

void Comparator::RemoveDetectorROI()
{
    const Entry entry("Tesk::Comparator::RemoveDetectorROI");
    if (RefusesIdle(entry)) return;
    if (NumDetectors < 2) {
        entry.Refuse(OutOfRange, L"No inspect has been defined - Use AddDetectorROI");
        return;
    }
    if (RefusesDetector(entry)) return;
    if (DetectorIndex == 0) {
        entry.Refuse(OutOfRange, L"The detector at 0 is the working area, it cannot be removed");
        return;
    }
    detectors_.erase(detectors_.begin() + DetectorIndex);
    NumDetectors = static_cast<int>(detectors_.size());
    DetectorIndex = Min(DetectorIndex, NumDetectors - 1);
    isStale_ = true;
    Mode = EditingDetectors;
}

Limits Comparator::DetectorROI() const
{
    const Entry entry("Tesk::Comparator::DetectorROI");
    return RefusesDetector(entry) ? Limits(0, 0, 0, 0) : detectors_[static_cast<std::size_t>(DetectorIndex)];
}

void Comparator::DetectorROI(const Limits& ROI)
{
    const Entry entry("Tesk::Comparator::DetectorROI");
    if (RefusesDetector(entry)) return;
    if (DetectorIndex == 0) {
        if (RefusesROI(entry, ROI)) return;
    } else if (ROI.Width < 1 || ROI.Height < 1) {
        entry.Refuse(OutOfRange, L"The detector ROI (%d x %d) is empty", int(ROI.Width), int(ROI.Height));
        return;
    }
    PutDetector(DetectorIndex, ROI);
}

void Comparator::PutDetector(int index, const Limits& roi)
{
    detectors_[static_cast<std::size_t>(index)] = roi;
    isStale_ = true;
    Mode = EditingDetectors;
}

} // namespace Tesk
