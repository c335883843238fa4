// The comparator: checks parts, prints in the first place, against a reference, pixel by pixel.
#pragma once

#include "foundation/CopyOnWrite.h"
#include "foundation/Handles.h"
#include "foundation/ReadOnly.h"
#include "foundation/ReadOnlyArray.h"
#include "image/Image.h"
#include "match/Locator.h"
#include "measure/Region.h"

#include <array>
#include <span>
#include <vector>

namespace Tesk {

class Archive;
class Blobs;
class Entry;
class Histogram;

namespace compare {
struct Samples;
struct Statistics;
struct View;
} // namespace compare

/// Learns a reference, and for each of its pixels a lower and an upper limit: from a tolerance, or from good samples.
/// Locators trained on parts of the reference, the aligners, bring each image over it, and the pixels that are out of
/// their limits are painted, counted or made blobs.
///
/// The working area is the part of the reference that aligned images show. Positions in aligned images, in `Clip` and
/// of detector ROIs count from its corner; those of the aligners' ROIs and of the limits from the corner of the
/// reference. Images are of the type of the reference, `Gray` or `Rgb` (another one: `IncompatibleType`).
///
/// Refused by phase (`CannotPerform`): all but `SetReference` and `Read` without a reference, `NextTolerancing` while
/// ROIs are edited and no image has been aligned since, `Differences` until one has been. Refused throughout: void
/// images (`VoidObject`), no memory (`CannotAllocate`).
///
///     Comparator label;
///     label.SetReference(good, 2, 1, Similarity);
///     label.AlignerSearchRange(-40, -40, 40, 40, -5, 5, 1, 1);
///     label.TrainAligners();
///     label.StartTolerancing(false);
///     for (Image& sample : samples) label.Align(sample, aligned), label.NextTolerancing(aligned);
///     label.EndTolerancing(1.5);
///     label.Align(image, aligned);
///     label.Differences(aligned, defects, 10);
class Comparator
{
    template <typename T>
    using Field = ReadOnly<T, Comparator>;

public:
    static constexpr int MostAligners = 4;

    ComparatorMode Mode = CompareIdle; ///< how far the work has come
    Field<int> NumAligners;            ///< 1 to 4 with a reference
    int AlignerIndex = -1;             ///< the aligner that is edited, trained and searched; -1 for all
    Field<int> NumDetectors;           ///< entries of the list of detectors, the working area being the first
    int DetectorIndex = 0;             ///< the detector that is edited; 0 for the working area
    int InstanceIndex = 0;             ///< with a single aligner, which of its matches to align; -1 looks for all
    Field<bool> Overrun = false;       ///< a part of the last aligned image lay outside the source
    Field<double> MinShiftX, MaxShiftX, MinShiftY, MaxShiftY; ///< measured motion, in pixels
    Field<double> MinRotation, MaxRotation;                   ///< in degrees
    Field<double> MinScaling = 1, MaxScaling = 1;
    bool GainCompensation = false;                          ///< brings aligned images to the contrast of the reference
    Field<int> NumSamples;                                  ///< since `StartTolerancing`
    Field<bool> Statistical = false;                        ///< limits by mean and deviation rather than by envelope
    Field<RegistrationModels> Model = Translation;          ///< of several aligners together
    ReadOnlyArray<int, Comparator> SearchMargins;           ///< left, top, right, bottom, in pixels
    ReadOnlyArray<double, Comparator> SearchRanges;         ///< least and largest angle in degrees, then scale
    Field<double> ReferenceVariance;                        ///< of the working area, the mean of its channels
    ReadOnlyArray<double, Comparator> ReferenceMean;        ///< of the channels, red first, or of the gray values
    const Image& Reference = reference_;                    ///< void at first
    const Image &LowerLimit = lower_, &UpperLimit = upper_; ///< of the size of the reference; void until learned

    static RgbPixel TooDarkColor;  ///< paints pixels below their lower limits; blue at start
    static RgbPixel TooLightColor; ///< paints those above their upper limits; red at start

    Comparator();
    Comparator(const Comparator& Other);
    Comparator& operator=(const Comparator& Other);
    ~Comparator();

    /// Takes a copy of a `Gray` or `Rgb` image (`UnsupportedType`) and places `NumX` x `NumY` aligners on it, in rows.
    /// Refused, too, changing nothing: fewer aligners than the model needs (`UnsupportedType`), more than 4
    /// (`NotImplemented`), an image too small for the search margins, 32 pixels on each side at first, or beyond
    /// 32,767 pixels (`OutOfRange`).
    void SetReference(const Image& Src, int NumX, int NumY, RegistrationModels Model);

    /// \name Aligners
    /// Of the one at `AlignerIndex`, which may be -1 for a single one. Refused: an index out of range, ROIs that do not
    /// lie in the reference (`OutOfRange`).
    /// @{

    Limits AlignerTrainROI() const;
    /// Has an effect from the next `TrainAligners` on.
    void AlignerTrainROI(const Limits& ROI);
    Limits AlignerSearchROI() const;
    void AlignerSearchROI(const Limits& ROI);
    /// The search ROIs become the train ROIs grown by these margins, the first two of which are negative, and by what
    /// the train ROI sweeps when it turns and grows within the ranges. Angles in degrees. Refused, too: ranges that are
    /// no numbers, or scales not above 0 (`OutOfRange`).
    void AlignerSearchRange(int Left, int Top, int Right, int Bottom, double MinAngle, double MaxAngle, double MinScale,
                            double MaxScale);
    /// Trains the locators of the selected aligners on their train ROIs, which must have 64 pixels (`OutOfRange`).
    void TrainAligners();
    /// The locator of the aligner by its index, to be tuned. Refused: `OutOfRange`; the reference is then to a locator
    /// that serves nothing.
    Locator& Aligner(int Index);
    /// @}

    /// \name Detectors
    /// Comparison is limited to the detector ROIs as soon as there are any. They count from the corner of the working
    /// area. `Mode` becomes `EditingDetectors`. Refused: empty ROIs, an index out of range (`OutOfRange`).
    /// @{

    /// The index of the new detector, which becomes `DetectorIndex`; -1 if it was refused.
    int AppendDetectorROI(const Limits& ROI);
    /// Removes the one at `DetectorIndex`; the working area stays (`OutOfRange`).
    void RemoveDetectorROI();
    /// The ROI at `DetectorIndex`; the working area, at 0, must lie in the reference.
    Limits DetectorROI() const;
    void DetectorROI(const Limits& ROI);
    /// @}

    /// \name Tolerances
    /// `Mode` becomes `Trained` at the end.
    /// @{

    /// The reference less and plus a tolerance in gray values; with a `Radius` the limits leave room for edges that
    /// move by so many pixels: the least and the largest within a square of 2 `Radius` + 1 pixels.
    void StraightTolerancing(int Tolerance, int Radius);
    /// Forgets all samples. The limits will be the extremes of the samples, or if `Statistical` come from their mean
    /// and standard deviation.
    void StartTolerancing(bool Statistical);
    /// Takes in the pixels in `Clip` of an aligned image. An image of the size of the reference serves, too, by its
    /// working area. Refused, too: another size (`IncompatibleSize`), before `StartTolerancing` (`CannotPerform`), more
    /// than 65,535 samples (`OutOfRange`).
    void NextTolerancing(const Image& Src);
    /// Makes limits of the samples; nothing without any. Pixels that fewer than two samples show are never out of
    /// limits. The extremes are widened about their middle by `Factor`, up to 254; the limits by statistics are
    /// `Factor` standard deviations about the mean. Both are truncated. Refused: a factor that is no number
    /// (`OutOfRange`).
    void EndTolerancing(double Factor);
    /// @}

    /// \name Inspection
    /// @{

    /// Searches the aligners and brings an image over the reference: `Dst` shows the working area. One aligner without
    /// a range of angles or scales shifts by whole pixels; otherwise pixels are interpolated. Where `Dst` shows what
    /// lies outside of the source it is 128, `Overrun` is true, and `Clip` leaves it out. With an `InstanceIndex` above
    /// 0 the matches of the last search are used. Refused, too: no match, or too few of them for the model
    /// (`CannotPerform`), an instance that was not found (`OutOfRange`), and what `Locator::Find` refuses.
    void Align(Image& Src, Image& Dst);
    /// Sets the measured motion to 0.
    void ResetRanges();
    /// Widens it by the last alignment: by a match, or all for -1. Refused, too: an index out of range (`OutOfRange`).
    void UpdateRanges(int InstanceIndex = 0);

    /// Paints the pixels of an aligned image that are out of their limits on a copy of it in colours. An `Rgb` pixel is
    /// too dark if one of its channels is. Refused, too, here and below: another size than that of the working area or
    /// the limits (`IncompatibleSize`).
    void Differences(Image& Src, Image& Dst);
    /// Counts by how much pixels are out of limits, in 256 levels. `Dark` and `Light` may be one. Refused, too: an
    /// overrun, unless the image was only shifted (`CannotPerform`).
    void Differences(Image& Src, Histogram& Dark, Histogram& Light);
    /// Makes blobs of them, of at least and at most that many pixels.
    void Differences(Image& Src, Blobs& Defects, int MinimumArea = 5, int MaximumArea = MaxInt);
    /// The pixels that are compared.
    Region& Clip();
    /// @}

    /// \name Interaction
    /// ROIs are chosen by a sum of `ROITypes`. A hit tells what the pointer is on.
    /// @{
    Field<DraggingHandles> Handle;
    Field<ROITypes> HitType = NoType;
    Field<int> HitIndex = -1; ///< of the aligner or detector

    /// Draws ROIs, with the handles by which they are dragged if `Handles`.
    void DrawROI(int Types, bool Handles = false) const;
    void DrawROI(bool TrainROI, bool SearchROI, bool DetectROI) const;
    /// The handle under a point of the screen, of the working area last.
    DraggingHandles HitROI(int X, int Y, int Types = Train | Search | Detect);
    /// Moves it. A train ROI has an effect from the next `TrainAligners` on.
    void DragROI(int X, int Y);
    /// Draws the differing pixels of an image that was compared, in blue and red with `Graph::AutoColors`. Refused,
    /// too: before `Differences` (`CannotPerform`).
    void DrawDifferences(const Image& Src) const;
    /// @}

    /// ".cmp" files. Samples and `Clip` are not stored: an image has to be aligned first. Refused, leaving all as it
    /// was: those that cannot be opened (`CannotOpen`) or written (`CannotWrite`), are none or of another version
    /// (`UnsupportedFormat`) or broken (`CannotRead`).
    void Read(const char* PathName);
    void Read(const wchar_t* PathName);
    void Write(const char* PathName) const;
    void Write(const wchar_t* PathName) const;
    void Transfer(Archive& Block);

    /// Shares what another comparator has learned and its state. Without `KeepView`, what has been changed here since
    /// the last time stays: `InstanceIndex`, `GainCompensation`, and the ROIs as long as those of `Src` are the same.
    void ShallowCopy(const Comparator& Src, bool KeepView);
    /// Takes the ROIs of one with as many aligners, and nothing of another one. The phase stays.
    void TakeROIs(const Comparator& Src);

private:
    struct AlignerState
    {
        Limits train{0, 0, 0, 0}, search{0, 0, 0, 0};
        Limits trained{0, 0, 0, 0}; ///< the train ROI that the locator has learned
        Locator locator;
    };

    bool RefusesIdle(const Entry& entry) const;
    bool RefusesUnaligned(const Entry& entry) const;
    bool RefusesDetector(const Entry& entry) const;
    bool RefusesROI(const Entry& entry, const Limits& roi) const;
    bool RefusesAligners(const Entry& entry) const;
    bool RefusesMatches(const Entry& entry) const;
    bool RefusesInstance(const Entry& entry, int index) const;
    bool ViewArea(const Image& src, Image& view) const;
    void AddSample(const Image& view);
    bool RefusesCompared(const Entry& entry, const Image& src, compare::View& view) const;
    /// The aligners that `AlignerIndex` selects, from `first` up to `end`.
    int FirstAligner() const { return AlignerIndex < 0 ? 0 : AlignerIndex; }
    int EndAligner() const { return AlignerIndex < 0 ? int(NumAligners) : AlignerIndex + 1; }
    AlignerState& AlignerAt(int index) { return aligners_[static_cast<std::size_t>(index)]; }
    const AlignerState& AlignerAt(int index) const { return aligners_[static_cast<std::size_t>(index)]; }
    int EditedAligner(const Entry& entry) const;
    const Limits& WorkingArea() const { return detectors_[0]; }
    bool IsPureShift() const;
    void TakeRanges(Locator& locator) const;
    void PutDetector(int index, const Limits& roi);
    std::vector<Limits> ROIs() const;
    void PutROIs(std::span<const Limits> rois);

    bool Prealign(const Entry& entry, const Image& src);
    bool FindAligner(const Entry& entry, int index, const Image& src);
    int CountMatched() const;
    bool PrepareAligned(const Entry& entry, const Image& src, Image& dst, Image& held) const;
    bool Shift(const Entry& entry, int instance, const Image& src, Image& dst);
    bool Turn(const Entry& entry, int instance, const Image& src, Image& dst);
    bool Compose(const Entry& entry, const Image& src, Image& dst);
    bool Compensate(const Entry& entry, Image& dst);
    bool CutClip(const Entry& entry);
    void TakeLimits(const Image& lower, const Image& upper);
    void WidenRanges(const AlignerState& aligner, int instance);
    compare::Statistics StatisticsOf(const Image& image, bool clipped) const;
    void TransferAligners(Archive& block);
    void TransferRanges(Archive& block);
    bool IsWhole() const;

    const Limits& ROIAt(ROITypes type, int index) const;
    XY OriginOf(ROITypes type, int index) const;
    template <typename F>
    bool AnyROI(int types, F f) const;

    /// What another use of the same comparator may have otherwise.
    struct Use
    {
        int InstanceIndex = 0;
        bool GainCompensation = false;
        std::vector<Limits> rois; ///< of the aligners, to train and to search, then of the detectors
    };

    Image reference_, lower_, upper_;
    std::array<AlignerState, MostAligners> aligners_;
    std::vector<Limits> detectors_;
    Region clip_, detectorRegion_;
    bool isStale_ = true; ///< the detectors changed since their union was made
    CopyOnWrite<compare::Samples> samples_;
    XY searched_{0, 0}; ///< the corner of the window that was aligned last
    Grab grab_;
    Use taken_; ///< by the last `ShallowCopy`
};

} // namespace Tesk
