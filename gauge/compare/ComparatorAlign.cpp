// Bringing images over the reference, and how far they had moved.
#include "gauge/Comparator.h"

#include "foundation/Entry.h"
#include "gauge/compare/CompareFrame.h"
#include "image/Geometry.h"
#include "image/core/Destination.h"
#include "image/core/Refusals.h"
#include "image/core/Saturation.h"
#include "image/geometry/GeometryModel.h"
#include "image/geometry/Warps.h"
#include "image/histogram/LevelCounts.h"
#include "image/histogram/MaskedCounts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <utility>

namespace Tesk {

using namespace compare;

namespace {

/// What is looked for where all matches are wanted.
constexpr int mostInstances = 256;

XY MiddleOf(const Limits& roi)
{
    return {roi.X + (roi.Width - 1) / 2.0, roi.Y + (roi.Height - 1) / 2.0};
}

/// By how much a locator reports a place beyond the middle of its pattern: a pixel where that lies between two pixels.
XY Excess(const Locator& locator)
{
    const Image& pattern = locator.TemplateImage();
    return {1.0 - (pattern.Width & 1), 1.0 - (pattern.Height & 1)};
}

/// Where a point of the reference lies in the searched image's window.
XY InWindow(const Locator& locator, const Limits& trained, int instance, const Image& src, XY point)
{
    const XY local = point - XY(trained.X, trained.Y);
    return locator.TransformPoint(local, instance, true, true) - Excess(locator) - XY(src.X, src.Y);
}

/// Gives the pixels in front of, between and behind the runs of each row, which come in scan order, a value.
void FillAround(std::span<const LabeledRun> runs, Image& dst, int value)
{
    const auto channels = static_cast<std::size_t>(images::Channels(dst.Type));
    const auto fill = [&](int y, int from, int to) {
        if (from < to)
            std::memset(dst.Row(y) + static_cast<std::size_t>(from) * channels, value,
                        static_cast<std::size_t>(to - from) * channels);
    };
    std::size_t k = 0;
    for (int y = 0; y < dst.Height; y++) {
        int from = 0;
        for (; k < runs.size() && runs[k].Y == y; k++) {
            fill(y, from, runs[k].Start);
            from = runs[k].End;
        }
        fill(y, from, dst.Width);
    }
}

} // namespace

bool Comparator::IsPureShift() const
{
    return NumAligners == 1 && SearchRanges[0] == 0 && SearchRanges[1] == 0 && SearchRanges[2] == 1 &&
           SearchRanges[3] == 1;
}

/// Searches one aligner in its part of an image. True, and reported, if that was refused.
bool Comparator::FindAligner(const Entry& entry, int index, const Image& src)
{
    AlignerState& aligner = AlignerAt(index);
    Limits part = aligner.search;
    if (!part.Intersect(Limits(0, 0, Min<int>(src.Width, farthest), Min<int>(src.Height, farthest))))
        return entry.Refuse(OutOfRange, L"The search ROI (%d, %d), %d x %d, lies outside the image of %d x %d",
                            int(aligner.search.X), int(aligner.search.Y), int(aligner.search.Width),
                            int(aligner.search.Height), int(src.Width), int(src.Height));
    Image view;
    ViewOf(src, part, view);
    const int most = aligner.locator.MaxLocations;
    if (NumAligners == 1 && InstanceIndex == -1) aligner.locator.MaxLocations = Max(most, mostInstances);
    aligner.locator.Find(view);
    aligner.locator.MaxLocations = most;
    return Status::Error().Code != NoError;
}

int Comparator::CountMatched() const
{
    return static_cast<int>(std::count_if(aligners_.begin(), aligners_.begin() + NumAligners,
                                          [](const AlignerState& a) { return a.locator.NumLocations > 0; }));
}

/// Searches the selected aligners. True, and reported, if they do not tell where the part lies.
bool Comparator::Prealign(const Entry& entry, const Image& src)
{
    if (AlignerIndex < -1 || AlignerIndex >= NumAligners)
        return entry.Refuse(OutOfRange, L"The Aligner index %d must be in range [0..%d] or be All", AlignerIndex,
                            NumAligners - 1);
    if (entry.Refuses(CheckImage(src, reference_.Type))) return true;
    for (int i = FirstAligner(); i < EndAligner(); i++) {
        if (FindAligner(entry, i, src)) return true;
        if (NumAligners == 1 && AlignerAt(i).locator.NumLocations < 1)
            return entry.Refuse(CannotPerform, L"The aligner %d found no match, alignment is not possible", i);
    }
    if (NumAligners == 1) return false;
    const int fewest = models::FewestAnchors(Model), matched = CountMatched();
    if (fewest > MostAligners)
        return entry.Refuse(CannotPerform, L"The %ls aligment model is currently not supported",
                            models::ModelName(Model));
    if (matched < fewest)
        return entry.Refuse(CannotPerform,
                            L"The %ls alignment model requires at least %d aligners and %d found a match",
                            models::ModelName(Model), fewest, matched);
    return false;
}

bool Comparator::RefusesInstance(const Entry& entry, int index) const
{
    const int found = AlignerAt(0).locator.NumLocations;
    if (found < 1) return entry.Refuse(OutOfRange, L"No instance was found for alignment");
    if (index >= -1 && index < found) return false;
    return entry.Refuse(OutOfRange, L"The Instance index (%d) must be All or in range [0..%d]", index, found - 1);
}

void Comparator::Align(Image& Src, Image& Dst)
{
    const Entry entry("Tesk::Comparator::Align");
    if (RefusesIdle(entry)) return;
    Overrun = false;
    searched_ = XY(Src.X, Src.Y);
    // An image that cannot be aligned must not be compared by how the last one lay.
    if (Mode > Trained) Mode = lower_.Type == Undefined ? EditingDetectors : Trained;
    if (entry.Refuses(CheckColors(Src)) || entry.Refuses(CheckImage(Src, reference_.Type))) return;
    if (InstanceIndex == -1 || InstanceIndex == 0)
        if (Prealign(entry, Src)) return;
    if (NumAligners == 1 ? RefusesInstance(entry, InstanceIndex) : RefusesMatches(entry)) return;
    const int instance = Max(InstanceIndex, 0);
    const bool isShift = IsPureShift();
    const bool refused = isShift            ? Shift(entry, instance, Src, Dst)
                         : NumAligners == 1 ? Turn(entry, instance, Src, Dst)
                                            : Compose(entry, Src, Dst);
    if (refused) return;
    if (GainCompensation && (isShift || Dst.Type == Gray) && Compensate(entry, Dst)) return;
    if (Overrun) FillAround(clip_.Runs(), Dst, uncovered);
    if (!CutClip(entry)) Mode = Aligned;
}

bool Comparator::RefusesMatches(const Entry& entry) const
{
    if (CountMatched() >= models::FewestAnchors(Model)) return false;
    return entry.Refuse(CannotPerform, L"Not all %d aligners found an instance, composite alignment is not possible",
                        int(NumAligners));
}

/// Holds the source and gives the destination the size of the working area. True, and reported, if that was refused.
bool Comparator::PrepareAligned(const Entry& entry, const Image& src, Image& dst, Image& held) const
{
    held.ShallowCopy(src, true);
    if (images::RefusesSize(dst, WorkingArea().Width, WorkingArea().Height, held.Type)) return true;
    dst.DetachIfShared(false);
    return entry.Refuses(images::KeepApart(held, dst, images::InPlace::Copied));
}

bool Comparator::Shift(const Entry& entry, int instance, const Image& src, Image& dst)
{
    const Limits& area = WorkingArea();
    const XY offset = InWindow(AlignerAt(0).locator, AlignerAt(0).trained, instance, src, XY(0, 0));
    const int x = area.X + static_cast<int>(std::lround(offset.X)),
              y = area.Y + static_cast<int>(std::lround(offset.Y));
    Image held;
    if (PrepareAligned(entry, src, dst, held)) return true;
    const int left = Max(-x, 0), right = Min<int>(held.Width - x, area.Width), top = Max(-y, 0),
              bottom = Min<int>(held.Height - y, area.Height);
    Overrun = left > 0 || top > 0 || right < area.Width || bottom < area.Height;
    clip_.Clear();
    const auto size = static_cast<std::size_t>(ElementSize(dst.Type));
    for (int row = top; row < bottom && left < right; row++) {
        std::memcpy(dst.Row(row) + static_cast<std::size_t>(left) * size,
                    held.Row(row + y) + static_cast<std::size_t>(left + x) * size,
                    static_cast<std::size_t>(right - left) * size);
        clip_.AddRun(left, right, row);
    }
    return false;
}

bool Comparator::Turn(const Entry& entry, int instance, const Image& src, Image& dst)
{
    const Limits& area = WorkingArea();
    const auto at = [&](int x, int y) {
        return InWindow(AlignerAt(0).locator, AlignerAt(0).trained, instance, src, XY(area.X + x, area.Y + y));
    };
    const XY corner = at(0, 0), right = at(1, 0) - corner, down = at(0, 1) - corner;
    const warps::AffineMap map = {right.X, down.X, corner.X, right.Y, down.Y, corner.Y};
    clip_.Clear();
    bool outside = false;
    const auto add = [this](int from, int to, int y) { clip_.AddRun(from, to, y); };
    if (entry.Refuses(warps::SampleAffine(map, src, dst, area.Width, area.Height, true, add, &outside))) return true;
    Overrun = outside;
    return false;
}

bool Comparator::Compose(const Entry& entry, const Image& src, Image& dst)
{
    Geometry geometry;
    for (int i = 0; i < NumAligners; i++) {
        const AlignerState& aligner = AlignerAt(i);
        if (aligner.locator.NumLocations < 1) continue;
        const XY middle = MiddleOf(aligner.trained);
        geometry.Append(InWindow(aligner.locator, aligner.trained, 0, src, middle),
                        middle - XY(WorkingArea().X, WorkingArea().Y));
    }
    geometry.ModelFit(Model, src);
    if (Status::Error().Code != NoError) return true;
    Image held;
    if (PrepareAligned(entry, src, dst, held)) return true;
    Overrun = geometry.Register(held, dst, clip_);
    if (Status::Error().Code != NoError) return true;
    return false;
}

/// Of all pixels, or of those in the clip alone. May throw `std::bad_alloc`.
Statistics Comparator::StatisticsOf(const Image& image, bool clipped) const
{
    const auto channels = static_cast<std::size_t>(images::Channels(image.Type));
    std::array<levels::PixelSums, 3> sums;
    double pixels = static_cast<double>(image.Width) * image.Height;
    if (clipped) {
        const std::vector<std::uint64_t> counts = levels::CountMasked(image, clip_.Runs(), levels::byteLevels);
        pixels = 0;
        for (std::size_t i = 0; i < counts.size(); i++) {
            const std::uint64_t level = i / channels;
            sums[i % channels].sum += counts[i] * level;
            sums[i % channels].squares += counts[i] * level * level;
            if (i % channels == 0) pixels += static_cast<double>(counts[i]);
        }
    } else if (channels == 1) {
        sums[0] = levels::SumGray(image);
    } else {
        sums = levels::SumRgb(image);
    }
    Statistics statistics;
    if (pixels == 0) return statistics;
    for (std::size_t c = 0; c < channels; c++) {
        statistics.means[c] = sums[c].Mean(pixels);
        statistics.variance += sums[c].Variance(pixels) / static_cast<double>(channels);
    }
    return statistics;
}

/// Brings an aligned image to the mean and the variance of the reference. True, and reported, if that was refused.
bool Comparator::Compensate(const Entry& entry, Image& dst)
{
    Statistics wanted, own;
    std::copy(ReferenceMean.begin(), ReferenceMean.end(), wanted.means.begin());
    wanted.variance = ReferenceVariance;
    if (entry.Refuses(WithMemory(images::noWorkingMemory, [&] {
            own = StatisticsOf(dst, Overrun);
            if (!Overrun) return;
            Image area;
            ViewOf(reference_, WorkingArea(), area);
            wanted = StatisticsOf(area, true);
        })))
        return true;
    // An image without contrast takes the means.
    const double gain = own.variance > 0 ? std::sqrt(Max(wanted.variance, 0.0) / own.variance) : 0;
    const auto channels = static_cast<std::size_t>(images::Channels(dst.Type));
    std::uint8_t tables[3][levels::byteLevels];
    for (std::size_t c = 0; c < channels; c++)
        for (int v = 0; v < levels::byteLevels; v++)
            tables[c][v] = images::TruncatedByte(gain * v + (wanted.means[c] - gain * own.means[c]));
    for (int y = 0; y < dst.Height; y++) {
        std::uint8_t* row = dst.Row(y);
        const std::size_t n = static_cast<std::size_t>(int(dst.Width)) * channels;
        // Means are told red first, pixels blue first.
        for (std::size_t c = 0; c < channels; c++)
            for (std::size_t i = c; i < n; i += channels)
                row[i] = tables[channels - 1 - c][row[i]];
    }
    return false;
}

/// Cuts the clip to the detectors, if there are any. True, and reported, without memory.
bool Comparator::CutClip(const Entry& entry)
{
    return !entry.Guards(images::noWorkingMemory, [this] {
        if (isStale_) {
            Region all;
            for (std::size_t i = 1; i < detectors_.size(); i++)
                all.BoxAppend(detectors_[i]);
            detectorRegion_.Unite(all, all);
            isStale_ = false;
        }
        if (detectorRegion_.NumRuns > 0) clip_.Intersect(clip_, detectorRegion_);
    });
}

Region& Comparator::Clip()
{
    RefusesIdle(Entry("Tesk::Comparator::Clip"));
    return clip_;
}

void Comparator::ResetRanges()
{
    if (RefusesIdle(Entry("Tesk::Comparator::ResetRanges"))) return;
    MinShiftX = MaxShiftX = MinShiftY = MaxShiftY = 0.0;
    MinRotation = MaxRotation = MinScaling = MaxScaling = 0.0;
}

void Comparator::WidenRanges(const AlignerState& aligner, int instance)
{
    static const Geometry inPixels;
    const _LocatorPose pose = aligner.locator.Location(inPixels, instance);
    const XY shift = XY(pose.X, pose.Y) - Excess(aligner.locator) - searched_ - MiddleOf(aligner.trained);
    MinShiftX = Min<double>(MinShiftX, shift.X), MaxShiftX = Max<double>(MaxShiftX, shift.X);
    MinShiftY = Min<double>(MinShiftY, shift.Y), MaxShiftY = Max<double>(MaxShiftY, shift.Y);
    MinRotation = Min<double>(MinRotation, pose.Angle), MaxRotation = Max<double>(MaxRotation, pose.Angle);
    MinScaling = Min<double>(MinScaling, pose.Scale), MaxScaling = Max<double>(MaxScaling, pose.Scale);
}

void Comparator::UpdateRanges(int InstanceIndex)
{
    const Entry entry("Tesk::Comparator::UpdateRanges");
    if (RefusesAligners(entry)) return;
    if (NumAligners > 1) {
        if (InstanceIndex != 0 && InstanceIndex != -1) {
            entry.Refuse(OutOfRange, L"For composite alignment, the Instance index %d must be 0 or All", InstanceIndex);
            return;
        }
        for (int i = FirstAligner(); i < EndAligner(); i++)
            if (AlignerAt(i).locator.NumLocations > 0) WidenRanges(AlignerAt(i), 0);
        return;
    }
    const int found = AlignerAt(0).locator.NumLocations;
    if (found < 1) return;
    if (RefusesInstance(entry, InstanceIndex)) return;
    const int first = Max(InstanceIndex, 0), end = InstanceIndex < 0 ? found : first + 1;
    for (int i = first; i < end; i++)
        WidenRanges(AlignerAt(0), i);
}

} // namespace Tesk
