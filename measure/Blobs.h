// The separate objects of an image: found by segmentation, measured by features, selected and sorted by them.
#pragma once

#include "measure/FeatureTable.h"
#include "measure/Region.h"

#include <array>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace Tesk {

class Entry;
class Geometry;
class Histogram;
class Image;
class Path;

/// The runs of the region side hold the pixels of all blobs, those of one blob side by side in scan order; the table
/// side has a row for each blob and a column for each feature that was asked for. Both are shared by copies until one
/// of them is written. A blob is told by its position in the table's order: selecting and sorting change what an index
/// means.
///
///     Blobs blobs;
///     blobs.AppendBlob(region, false);
///     blobs.ByFeatureSelect(BlobArea, image, 20, MaxInt, Select);
///     blobs.ByFeatureSort(BlobCenterX, image, true);
///     blobs.Evaluate(BlobBox, image);
///     int left = blobs.IntFeature(0, BlobBoxX);
///
/// A `BlobIndex` names one blob, or `All`, `AllSelected` or `AllDeselected` where a method takes more. Features are
/// worked out when they are first needed, and kept; a cell that was not worked out holds the bits 0x80000000.
/// Coordinates are those of the whole picture, and real ones are multiplied by `Geometry::ScaleFromPixel`. Gray
/// features look at the pixels that lie in the window of the image.
///
/// Refused by all that take one: an index of a blob that there is not (`OutOfRange`). No memory: `CannotAllocate`.
class Blobs : public FeatureTable, public Region
{
    template <typename T>
    using Field = ReadOnly<T, Blobs>;

public:
    Field<int> NumBlobs;
    int DefaultClass = 0; ///< class of the blobs that are found, or made of regions
    Field<int> NumSelectedBlobs;
    Field<int> Threshold;         ///< of the last segmentation; 0 where no single threshold applies
    Field<bool> Connexity8{true}; ///< whether the last segmentation joined pixels that meet at a corner

    /// The blob last hit by the mouse, `MinInt` for none; one for all objects.
    static int HitBlobIndex;

    static constexpr int NumPredefinedFeatures = 60, MostUserFeatures = 16;

    Blobs();
    Blobs(const Blobs& Other) = default;
    Blobs& operator=(const Blobs& Other) = default;
    ~Blobs() override = default;

    /// \name Segmentation
    /// The pieces of the active pixels that hang together, by their corners too if `Connexity8`, in coordinates of the
    /// whole picture. They replace what is there, all selected, in the order of their first pixels; those with less
    /// than `MinimumArea` or more than `MaximumArea` pixels are no blobs, though their runs stay among those of the
    /// region side. Labels are those of runs united as they are scanned (union-find; Tarjan 1975).
    ///
    /// Under a mask, whose coordinates count from the corner of the window, to which it is cut, only its pixels are
    /// active, and those of a row meet those of the last row before on which it has any. Results of type `int` are the
    /// threshold used. `Auto` and `MinInt` stand for the best threshold of `Gray` images.
    ///
    /// Refused, all as it was: void images (`VoidObject`), other pixel types (`UnsupportedType`), windows beyond the
    /// coordinates of runs (`OutOfRange`), no memory (`CannotAllocate`).
    /// @{

    /// Pixels at or above a threshold, or without `Above` below it, of a `Gray` or `Gray16` image.
    int Segment(int Threshold, const Image& Src, bool Above = true, bool Connexity8 = true, int MinimumArea = 5,
                int MaximumArea = MaxInt);
    /// Pixels that stand at least `Noise` above the mean of the square of `Size` around them, or without `Above` the
    /// others; `Gray` or `Gray16`. Refused, too: sizes that are not odd (`OutOfRange`).
    void Segment(int Size, int Noise, const Image& Src, bool Above = true, bool Connexity8 = true, int MinimumArea = 5,
                 int MaximumArea = MaxInt);
    /// Pixels of an `Rgb` image whose projection on the line between two colours is nearer to the second, or without
    /// `Above` to the first.
    void Segment(RgbPixel BackColor, RgbPixel ForeColor, const Image& Src, bool Above = true, bool Connexity8 = true,
                 int MinimumArea = 5, int MaximumArea = MaxInt);
    /// By the best threshold of a `Gray` image or the two dominant colours of an `Rgb` one: the means on either side of
    /// the mean along the principal axis, of which the darker is the first. Of a `Gray1` image the pixels that are set.
    int Segment(const Image& Src, bool Above = true, bool Connexity8 = true, int MinimumArea = 5,
                int MaximumArea = MaxInt);
    /// Pixels of a `Gray` image from the first threshold to the second, or if the first is not below the second, those
    /// below the second or above the first. `SameClass` is reserved.
    void Segment(const Image& Src, int BelowThreshold, int AboveThreshold, bool Connexity8 = true, int MinimumArea = 5,
                 int MaximumArea = MaxInt, bool SameClass = true);
    /// The best threshold is that of the pixels of the mask, of `Gray16` ones too.
    int Segment(int Threshold, const Region& Mask, const Image& Src, bool Above = true, bool Connexity8 = true,
                int MinimumArea = 5, int MaximumArea = MaxInt);
    /// For `Gray`. The squares around the pixels reach beyond the mask.
    void Segment(int Size, int Noise, const Region& Mask, const Image& Src, bool Above = true, bool Connexity8 = true,
                 int MinimumArea = 5, int MaximumArea = MaxInt);
    /// By the threshold in the middle between two gray values; `Gray` or `Gray16`.
    void Segment(GrayPixel Background, GrayPixel Foreground, const Region& Mask, const Image& Src, bool Above = true,
                 bool Connexity8 = true, int MinimumArea = 5, int MaximumArea = MaxInt);
    void Segment(RgbPixel BackColor, RgbPixel ForeColor, const Region& Mask, const Image& Src, bool Above = true,
                 bool Connexity8 = true, int MinimumArea = 5, int MaximumArea = MaxInt);
    /// For `Gray` and `Rgb`, by the threshold or the colours of the whole window.
    int Segment(const Region& Mask, const Image& Src, bool Above = true, bool Connexity8 = true, int MinimumArea = 5,
                int MaximumArea = MaxInt);
    void Segment(const Region& Mask, const Image& Src, int BelowThreshold, int AboveThreshold, bool Connexity8 = true,
                 int MinimumArea = 5, int MaximumArea = MaxInt, bool SameClass = true);

    /// Pixels of a `Gray` image below those of `Low` or above those of `High`, which are of the same type and window
    /// size (`IncompatibleType`, `IncompatibleSize`), by the connexity of the last segmentation.
    void _Segment(const Image& Src, const Image& Low, const Image& High, int MinimumArea, int MaximumArea);
    void _Segment(const Region& Mask, const Image& Src, const Image& Low, const Image& High, int MinimumArea,
                  int MaximumArea);

    /// Appends a run with the label of the runs that it meets in the row before, which become of one label, or with a
    /// new one. Runs of a row come from left to right. Without memory the run is dropped.
    void AddRun(int Start, int End, int Y) override;
    /// Ends a row: the runs since the last end are what those of the next row may meet.
    void EndRow() override;
    /// @}

    /// \name Construction by hand
    /// @{

    /// Adds one blob of another object, or with `Merge` adds its pixels to the last blob: to the one in the table's
    /// last row, whose features are then forgotten but for those of the user. The blob takes the class of the source,
    /// and its area or what it adds to it. Refused, too: no blob to merge with (`VoidObject`).
    void AppendBlob(const Blobs& Src, int BlobIndex, bool Merge);
    /// The same with all pixels of a region, as a blob of `DefaultClass`. Refused, too: an empty region (`VoidObject`).
    void AppendBlob(const Region& Src, bool Merge);
    /// Adds a feature of the user, of type `Int` or `Float`, and gives its number, from 60 on. Refused, with 60: other
    /// types (`UnsupportedType`), a seventeenth feature (`OutOfRange`).
    int AppendFeature(int Type);
    /// Leaves no blob; the columns stay.
    void Clear();
    /// @}

    /// Works out a feature, and those that come with it, of the blobs that lack it. `Src`, the image in which the blobs
    /// were found, matters for gray features only: a type other than `Gray` and `Gray16` is refused
    /// (`UnsupportedType`), or, for those of `Gray` alone, another than that (`IncompatibleType`). Refused, too:
    /// features that are not worked out here (`OutOfRange`).
    void Evaluate(enum Features Feature, const Image& Src, int BlobIndex = AllSelected);
    /// The same in the units of a calibrator, for `BlobWorldArea` and the features of the world box alone
    /// (`OutOfRange`). A blob's area is scaled as the calibrator scales areas at its centre; the box is that of the
    /// mapped ends of its runs, or for a calibrator that only shifts or scales, of the mapped box.
    void Evaluate(const Geometry& Calibrator, enum Features Feature, const Image& Src, int BlobIndex = AllSelected);

    /// \name Selection
    /// Works out the feature first, as `Evaluate` does. `Add` takes matching blobs into the selection, `Remove` takes
    /// them out of it; `Select` begins with none selected and adds, `Deselect` begins with all and removes. Blobs that
    /// are added follow the selected ones in their order. Refused: no blob (`VoidObject`), another mode, bounds of
    /// another kind than the feature (`OutOfRange`).
    /// @{

    /// By a feature's value. A cell that could not be worked out does not match.
    void ByFeatureSelect(enum Features Feature, const Image& Src, int Minimum = MinInt, int Maximum = MaxInt,
                         enum SelectionMode Selection = Select, enum RangeMode Range = Inside);
    void ByFeatureSelect(enum Features Feature, const Image& Src, float Minimum = MinFloat, float Maximum = MaxFloat,
                         enum SelectionMode Selection = Select, enum RangeMode Range = Inside);
    /// Blobs whose upright box meets the border of the image's window. Refused, too: a void image (`VoidObject`).
    void BorderSelect(const Image& Src, enum SelectionMode Selection = Remove);
    /// Blobs that lie partly on the border of a region: its pixels with a neighbour outside, among eight, or with
    /// `Connexity8` among four. Refused, too: an empty region (`OutOfRange`).
    void BorderSelect(Region& Src, bool Connexity8, enum SelectionMode Selection = Remove);
    /// By how the upright box lies to a window.
    void BoxInWindowSelect(int X, int Y, int Width, int Height, enum SelectionMode Selection = Remove,
                           enum RangeMode Range = Inside);
    /// By how the runs lie to a window.
    void BlobInWindowSelect(int X, int Y, int Width, int Height, enum SelectionMode Selection = Remove,
                            enum RangeMode Range = Inside);
    /// By how the pixels lie to a region.
    void BlobInRegionSelect(const Region& Src, enum SelectionMode Selection = Remove, enum RangeMode Range = Inside);
    /// The selected blob with the smallest value, or with the largest unless `Increasing`; the first of equals.
    int ByFeatureFirst(enum Features Feature, const Image& Src, bool Increasing = true);
    /// Sorts the selected blobs; equal ones keep their order.
    void ByFeatureSort(enum Features Feature, const Image& Src, bool Increasing = true);
    /// @}

    /// Replaces blobs by their convex hulls, filled; what was worked out stays as it is.
    void Convexify(int BlobIndex = AllSelected);

    /// \name Statistics
    /// Of a feature over a set of blobs, `All`, `AllSelected` or `AllDeselected` (`OutOfRange` for another index). It
    /// is worked out first, as by `Evaluate`; blobs for which it could not be are left out. Refused, with 0: no blob
    /// (`OutOfRange`).
    /// @{

    /// The mean, or the sum unless `Average`.
    double FeatureAverage(enum Features Feature, const Image& Src, int Index = AllSelected, bool Average = true);
    /// The population standard deviation.
    double FeatureDeviation(enum Features Feature, const Image& Src, int Index = AllSelected);
    double FeatureMinimum(enum Features Feature, const Image& Src, int Index = AllSelected);
    double FeatureMaximum(enum Features Feature, const Image& Src, int Index = AllSelected);
    /// The value at that fraction, 0 to 1, of the sorted ones.
    double FeatureQuantile(enum Features Feature, const Image& Src, double Percent = 0.5, int Index = AllSelected);
    /// The sum of the products of the deviations of two features from their means. `Correlation`, -1 to 1, is 0 if one
    /// of them is constant.
    double FeatureCovariance(enum Features Feature, enum Features FeatureB, double& Correlation, const Image& Src,
                             int Index = AllSelected);
    /// The half-sample mode (Bickel 2006): the middle of the closest values.
    double FeatureMode(enum Features Feature, const Image& Src, int Index = AllSelected);
    /// The index of the first blob with that value.
    int FeatureMinimumIndex(enum Features Feature, const Image& Src, int Index = AllSelected);
    int FeatureMaximumIndex(enum Features Feature, const Image& Src, int Index = AllSelected);
    /// @}

    /// \name One blob
    /// @{

    /// Counts its gray values, or without `Clear` adds them to the counts of a histogram of 256 levels
    /// (`UnsupportedType`, `IncompatibleSize`). Refused, too: another image than `Gray` (`IncompatibleType`).
    void PixelHistogram(int BlobIndex, const Image& Src, Histogram& Dst, bool Clear = true) const;
    /// Its outer outline, clockwise, in coordinates of the whole picture; empty for a single pixel.
    void Outline(int BlobIndex, const Image& Src, Path& Dst) const;
    /// The corners of its convex hull, counterclockwise from the top left one.
    void ConvexHull(int BlobIndex, const Image& Src, Path& Dst) const;
    int NumRuns(int BlobIndex) const;
    /// Refused, too: an index of a run that it has not (`OutOfRange`).
    void Run(int BlobIndex, int RunIndex, int& Start, int& End, int& Y) const;
    /// The first pixel of the first run.
    Site FirstPixel(int BlobIndex) const;
    /// Writes a value over the pixels of a blob or of several, where they lie in the window of the image; the types are
    /// those of `Region::ToImage`.
    void ToImage(int BlobIndex, int Value, Image& Dst) const;
    /// @}

    /// \name Features
    /// By their numbers, those of the user included. Refused: a feature that has no column, a value of another type
    /// (`OutOfRange`).
    /// @{

    /// Whether a blob has a feature; for `BlobIndex` -1 whether the feature has a column.
    bool IsComputed(int BlobIndex, int Feature) const;
    /// The value; a dummy after a refusal. The forms that can be written take cells of their own first.
    int& IntFeature(int BlobIndex, int Feature);
    const int& IntFeature(int BlobIndex, int Feature) const;
    float& FloatFeature(int BlobIndex, int Feature);
    const float& FloatFeature(int BlobIndex, int Feature) const;
    /// `Int` or `Float`; `Undefined` for a number that is no feature.
    int Type(int Feature) const;
    /// The name in tables and messages; empty for a number that is no feature.
    const wchar_t* UnicodeName(int Feature) const;
    /// The feature in a column of the table, from 2 on. Refused, with 60: another column (`OutOfRange`).
    int WhichFeature(int Column) const;
    /// The outline points of all blobs, `BlobOutlineBeg` to `BlobOutlineEnd` of each, and the corners of the polygons
    /// that come within a pixel of them.
    std::span<const Site> Outlines() const { return outlines_.Read(); }
    std::span<const Site> Vectors() const { return vectors_.Read(); }
    /// @}

    /// The names and the values of the features, a blob a line, separated by tabs; what was not worked out is empty.
    /// `Feature` -1 stands for all. The text stands until the next call. Refused: an unknown feature, no blob
    /// (`OutOfRange`).
    const wchar_t* ToUnicodeString(int Feature = -1, int BlobIndex = All) const;
    void CopyToClipboard(int Feature = -1, int BlobIndex = All) const;

    /// The first of the blobs that covers a position on the screen, under the zoom of `Graph`; it becomes
    /// `HitBlobIndex`. `MinInt` for none.
    int HitBlob(int X, int Y, int BlobIndex = All) const;

    /// \name Drawing
    /// Under the zoom of `Graph`, and in its colours, or under `Graph::AutoColors` in one for the blob that was hit,
    /// one for selected ones and one for all others. Features are worked out where they are needed.
    /// @{

    /// The pixels, with the index or the class at the first of them. Refused: no filling colour (`OutOfRange`).
    void DrawBlob(int BlobIndex = All, bool ShowNumber = false, bool ShowClass = false) const;
    void DrawOutline(int BlobIndex = All, bool ShowNumber = false) const;
    void DrawHull(int BlobIndex = All) const;
    void DrawBox(int BlobIndex = All, bool Center = false);
    void DrawCenter(int BlobIndex = All);
    void DrawEllipse(int BlobIndex = All, bool Center = false);
    void DrawFeretBox(int BlobIndex = All, bool Center = false);
    void DrawDiametralBox(int BlobIndex = All, bool Center = false);
    /// Without an image only where they have been worked out.
    void DrawCentroid(int BlobIndex = All);
    void DrawCentroid(const Image& Src, int BlobIndex = All);
    void DrawEllipsoid(int BlobIndex = All, bool Center = false);
    void DrawEllipsoid(const Image& Src, int BlobIndex = All, bool Center = false);
    /// @}

    /// Shares the content of `Src`. There is no window, so the second argument changes nothing.
    void ShallowCopy(const Blobs& Src, bool KeepWindow);

    /// \name Inner forms, for other classes of the library
    /// They return an `ErrorCodes` value.
    /// @{

    /// The positions from `Begin` up to `End` that a `BlobIndex` names.
    int RangeOf(int BlobIndex, int& Begin, int& End) const;
    /// The runs of the blob at a position, which must be valid.
    std::span<const LabeledRun> RunsOf(int Position) const;
    /// With a calibrator for `BlobWorldArea` and the world box.
    int TryEvaluate(int Feature, const Image& Src, int BlobIndex, const Geometry* Calibrator = nullptr);
    int TrySegment(const Image& Src, bool Above, bool Connexity8, int MinimumArea, int MaximumArea);
    /// By a threshold; `Auto` becomes the one in use.
    int TrySegment(int& Threshold, const Image& Src, bool Above, bool Connexity8, int MinimumArea, int MaximumArea);
    int TryBorderSelect(const Image& Src, int Selection);
    /// Makes sure that a predefined feature has a column.
    int ProvideColumn(int Feature);
    /// Writes a feature that has a column of `Int` or `Float`, of the blob at a position, which must be valid.
    int TrySetFeature(int Position, int Feature, double Value);
    /// Takes runs in scan order whose labels, each below `NumLabels`, say to which blob they belong, as a segmentation
    /// does. The runs are written.
    int TryTakeLabeled(std::span<LabeledRun> Runs, int NumLabels, bool Connexity8);
    /// @}

protected:
    /// The first columns of a row. `First` and `Last` are the range of its runs.
    struct BlobRecord
    {
        std::int32_t First, Last, Class, Area;
    };
    static constexpr int NumRecordColumns = 4;

    /// Drops all blobs, columns and outlines, and makes the columns of the records.
    int ResetTable();
    /// Adds selected blobs behind the others, whose features are not worked out. All runs must be there.
    int AddBlobs(std::span<const BlobRecord> records);
    /// The inner form of `AppendFeature`: the new feature is the last one of the user.
    int TryAppendUserFeature(int type);

    void CountsChanged() override;
    void SamplesReplaced() override;

private:
    // A segmentation labels runs by union-find while rows are scanned: it needs the parent and the class of each label,
    // and the runs of the row before.
    CopyOnWrite<std::vector<std::int32_t>> parents_, classes_;
    std::int32_t numLabels_ = 0, prevBegin_ = 0, prevEnd_ = 0;

    struct Scope;
    int TryThreshold(const Scope& scope, int& threshold, const Image& src, bool above);
    int TryAdaptive(const Scope& scope, int size, int noise, const Image& src, bool above);
    int TryColors(const Scope& scope, RgbPixel back, RgbPixel fore, const Image& src, bool above);
    int TryAutomatic(const Scope& scope, const Image& src, bool above, int& threshold);
    int TryBand(const Scope& scope, const Image& src, int below, int above);
    int TryTolerances(const Scope& scope, const Image& src, const Image& low, const Image& high);
    template <typename Scanner>
    int TryScan(const Scope& scope, const Image& src, const Scanner& scanner, int threshold);
    template <typename Scanner>
    void Feed(const Scope& scope, const Image& src, const Scanner& scanner, std::vector<LabeledRun>& runs);
    int TryFinish(std::span<LabeledRun> scanned, const Scope& scope, int threshold);

    /// Whether the table begins with the columns of the records.
    bool HasRecords() const;
    /// With a range of runs that there are.
    BlobRecord RecordOf(int row) const;
    std::span<const LabeledRun> RunsOfRow(int row) const;
    void SetRecord(int row, const BlobRecord& record);
    const std::uint8_t* FeatureCell(int row, int feature) const;
    int ColumnOf(int feature) const { return featureColumn_[static_cast<std::size_t>(feature)]; }
    bool IsFeature(int feature) const { return feature >= 0 && feature < NumPredefinedFeatures + numUserFeatures_; }
    bool HasColumn(int feature) const { return IsFeature(feature) && ColumnOf(feature) != MinInt; }
    int CheckBlob(int blobIndex) const;
    int CheckReading(int feature, int type) const;
    int AppendColumn(int feature, int type, const wchar_t* name);
    int TryAppend(std::span<const LabeledRun> runs, int blobClass, bool merge, std::optional<int> area);
    void InsertRuns(std::span<const LabeledRun> runs, const BlobRecord& record, int label);
    void ForgetFeatures(int row);

    /// The inner form of `Evaluate`, but that a feature that is stored by others is taken as it stands.
    int TryProvide(int feature, const Image& src, int blobIndex);
    int CheckSelecting(int selection) const;
    /// For the blobs that a selection looks at.
    int TryProvideFor(int feature, const Image& src, int selection);
    template <typename T>
    void SelectByFeature(int feature, const Image& src, T minimum, T maximum, int selection, int range);
    template <typename F>
    int TrySelectWhere(int selection, F matches);
    void SelectInRegion(const Entry& entry, std::span<const LabeledRun> region, int selection, int range);

    /// The values of features, a list for each, of the blobs that have all of them, and the positions of these.
    int TryCollect(std::initializer_list<int> features, const Image& src, int index, bool setsOnly,
                   std::vector<double>* values, std::vector<int>* positions);
    template <typename F>
    double Summarize(const char* context, int feature, const Image& src, int index, bool setsOnly, F f);
    int ExtremeIndex(const char* context, int feature, const Image& src, int index, bool largest);
    double Measured(int row, int feature) const;

    int TryPrint(int feature, int blobIndex, std::wstring& text) const;
    /// Calls `draw(position)` in the colours of each blob, until it is false.
    template <typename F>
    void DrawEach(int blobIndex, F draw) const;
    /// Calls `draw(row)` for the blobs that have the features; with an image these are worked out first.
    template <typename F>
    void DrawMeasured(const char* context, std::initializer_list<int> features, const Image* src, int blobIndex,
                      F draw);
    void DrawPoint(const char* context, int feature, const Image* src, int blobIndex);
    void DrawInertia(const char* context, int center, int first, const Image* src, int blobIndex, bool cross);
    void DrawRotatedBox(const char* context, int first, int blobIndex, bool cross);

    std::array<int, NumPredefinedFeatures + MostUserFeatures> featureColumn_;
    int numUserFeatures_ = 0;
    CopyOnWrite<std::vector<Site>> outlines_, vectors_;
    mutable std::wstring text_; ///< what `ToUnicodeString` gave last
};

} // namespace Tesk
