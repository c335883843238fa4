// The segmentations: which pixels are active, in a whole window or under a mask.
#include "measure/Blobs.h"

#include "foundation/Entry.h"
#include "image/core/GrayDepth.h"
#include "image/histogram/LevelCounts.h"
#include "image/histogram/MaskedCounts.h"
#include "image/operator/PixelSteps.h"
#include "measure/blobs/BlobsColor.h"
#include "measure/blobs/BlobsFrame.h"
#include "measure/blobs/BlobsLabel.h"
#include "measure/region/RunLists.h"
#include "measure/region/RunScanner.h"

#include <algorithm>
#include <initializer_list>
#include <typeinfo>

namespace Tesk {

using namespace blobs;
using namespace regions;

namespace {

constexpr const char* context = "Tesk::Blobs::Segment";
constexpr const wchar_t *image = L"image", *sourceImage = L"source image";

/// The window of a source of one of some types, `wanted` in the words of the refusal.
int CheckSource(const Image& src, std::initializer_list<PixelTypes> types, const wchar_t* name, const wchar_t* wanted)
{
    if (const int code = CheckImage(src)) return code;
    if (std::find(types.begin(), types.end(), PixelTypes(src.Type)) == types.end())
        return Status::Format(UnsupportedType, L"The %ls type (%ls) is not supported for this operation, use %ls", name,
                              PixelTypeName(src.Type), wanted);
    return CheckReach(src);
}

int BestThresholdIn(const Region& mask, const Image& src)
{
    const int entries = src.Type == Gray16 ? levels::Gray16Levels() : levels::byteLevels;
    return levels::BestSplit(levels::CountMasked(src, mask.Runs(), entries).data(), entries).threshold;
}

/// `Gray16` pixels on one side of a threshold.
auto WordScanner(const Image& src, int threshold, bool above)
{
    return PixelScanner{
        [&src, threshold, above](int x, int y) { return (src.Row<Gray16Pixel>(y)[x] >= threshold) == above; }};
}

/// Feeds the rows of a scope to a sink.
template <typename Scanner, typename Sink>
void ScanScope(const Region* mask, const Image& src, const Scanner& scanner, Sink&& sink)
{
    if (!mask) {
        ScanWindow(src, scanner, sink);
    } else if (mask->Sorted) {
        ScanMasked(src, mask->Runs(), scanner, sink);
    } else {
        std::vector<LabeledRun> runs(mask->Runs().begin(), mask->Runs().end());
        SortRuns(runs);
        ScanMasked(src, runs, scanner, sink);
    }
}

} // namespace

/// Labels the runs of the scope as they are scanned. A class that takes runs in its own way is fed through its virtual
/// methods.
template <typename Scanner>
int Blobs::TryScan(const Scope& scope, const Image& src, const Scanner& scanner, int threshold)
{
    const Region held = scope.mask ? *scope.mask : Region(); // the mask may be this object
    const Scope own{scope.mask ? &held : nullptr, scope.connexity8, scope.minimumArea, scope.maximumArea};
    return WithMemory(noRuns, [&]() -> int {
        numLabels_ = 0;
        prevBegin_ = prevEnd_ = Region::NumRuns;
        if (typeid(*this) != typeid(Blobs)) {
            std::vector<LabeledRun> runs;
            Feed(own, src, scanner, runs);
            return TryFinish(runs, own, threshold);
        }
        RunLabeler labeler(parents_.Overwrite(), own.connexity8, own.mask != nullptr);
        ScanScope(own.mask, src, scanner, [&labeler](const ScannedRow& row) { labeler.AddRow(row); });
        numLabels_ = labeler.NumLabels();
        return TryFinish(labeler.Runs(), own, threshold);
    });
}

template <typename Scanner>
void Blobs::Feed(const Scope& scope, const Image& src, const Scanner& scanner, std::vector<LabeledRun>& runs)
{
    RewriteRuns();
    prevBegin_ = prevEnd_ = 0;
    Connexity8 = scope.connexity8;
    ScanScope(scope.mask, src, scanner, [this](const ScannedRow& row) {
        for (std::size_t i = 0; i < row.Runs(); i++)
            AddRun(row.Start(i), row.End(i), row.y);
        EndRow();
    });
    if (!scope.mask) EndRow();
    runs.assign(Runs().begin(), Runs().end());
    // What such a class has added by itself may have no label.
    std::erase_if(runs, [this](const LabeledRun& run) { return run.Label < 0 || run.Label >= numLabels_; });
}

int Blobs::TryThreshold(const Scope& scope, int& threshold, const Image& src, bool above)
{
    if (const int code = CheckSource(src, {Gray, Gray16}, scope.mask ? sourceImage : image, L"one of Gray, Gray16"))
        return code;
    if (threshold == Auto || threshold == MinInt) {
        if (!scope.mask && src.Type != Gray)
            return Status::Format(UnsupportedType, L"Image pixel Type (%ls) not supported for this operation",
                                  PixelTypeName(src.Type));
        if (const int code = WithMemory(noRuns, [&] {
                threshold = scope.mask ? BestThresholdIn(*scope.mask, src) : levels::BestSplit(src).threshold;
            }))
            return code;
    }
    if (src.Type == Gray16) return TryScan(scope, src, WordScanner(src, threshold, above), threshold);
    return TryScan(scope, src, BandScanner{src, Band::Above(threshold, above)}, threshold);
}

int Blobs::TryAdaptive(const Scope& scope, int size, int noise, const Image& src, bool above)
{
    const int code =
        scope.mask ? CheckSource(src, {Gray}, image, L"Gray") : CheckSource(src, {Gray, Gray16}, image, L"Gray");
    if (code) return code;
    return WithMemory(noRuns, [&]() -> int {
        Image binary;
        if (const int failure = points::BinarizeAdaptively(size, noise, src, binary)) return failure;
        constexpr int middle = 128;
        // The window is that of the source.
        return TryScan(scope, src, BandScanner{binary, Band::Above(middle, above)}, 0);
    });
}

int Blobs::TryColors(const Scope& scope, RgbPixel back, RgbPixel fore, const Image& src, bool above)
{
    if (const int code = CheckSource(src, {Rgb}, image, L"Rgb")) return code;
    const ColorPlane plane(back, fore);
    return TryScan(scope, src,
                   PixelScanner{[&](int x, int y) { return plane.IsAbove(src.Row<RgbPixel>(y)[x]) == above; }}, 0);
}

int Blobs::TryAutomatic(const Scope& scope, const Image& src, bool above, int& threshold)
{
    const int code = scope.mask ? CheckSource(src, {Gray, Rgb}, image, L"Gray or Rgb")
                                : CheckSource(src, {Gray, Rgb, Gray1}, image, L"Gray or Rgb");
    if (code) return code;
    if (src.Type == Gray1) return TryScan(scope, src, BitScanner{src}, 0);
    if (src.Type == Rgb) {
        const DominantColors colors(src);
        return TryColors(scope, colors.back, colors.fore, src, above);
    }
    threshold = levels::BestSplit(src).threshold;
    return TryScan(scope, src, BandScanner{src, Band::Above(threshold, above)}, threshold);
}

int Blobs::TryBand(const Scope& scope, const Image& src, int below, int above)
{
    if (const int code = CheckSource(src, {Gray}, image, L"Gray")) return code;
    return TryScan(scope, src, BandScanner{src, Band::Between(below, above)}, 0);
}

int Blobs::TryTolerances(const Scope& scope, const Image& src, const Image& low, const Image& high)
{
    if (const int code = CheckSource(src, {Gray}, sourceImage, L"Gray")) return code;
    if (const int code = CheckImages(src, low)) return code;
    if (const int code = CheckImages(src, high)) return code;
    return TryScan(scope, src, LimitScanner{src, low, high}, 0);
}

int Blobs::Segment(int Threshold, const Image& Src, bool Above, bool Connexity8, int MinimumArea, int MaximumArea)
{
    const Entry entry(context);
    return entry.Refuses(TryThreshold({nullptr, Connexity8, MinimumArea, MaximumArea}, Threshold, Src, Above))
               ? 0
               : Threshold;
}

void Blobs::Segment(int Size, int Noise, const Image& Src, bool Above, bool Connexity8, int MinimumArea,
                    int MaximumArea)
{
    const Entry entry(context);
    entry.Refuses(TryAdaptive({nullptr, Connexity8, MinimumArea, MaximumArea}, Size, Noise, Src, Above));
}

void Blobs::Segment(RgbPixel BackColor, RgbPixel ForeColor, const Image& Src, bool Above, bool Connexity8,
                    int MinimumArea, int MaximumArea)
{
    const Entry entry(context);
    entry.Refuses(TryColors({nullptr, Connexity8, MinimumArea, MaximumArea}, BackColor, ForeColor, Src, Above));
}

int Blobs::TrySegment(const Image& Src, bool Above, bool Connexity8, int MinimumArea, int MaximumArea)
{
    int threshold = 0;
    return TryAutomatic({nullptr, Connexity8, MinimumArea, MaximumArea}, Src, Above, threshold);
}

int Blobs::TrySegment(int& Threshold, const Image& Src, bool Above, bool Connexity8, int MinimumArea, int MaximumArea)
{
    return TryThreshold({nullptr, Connexity8, MinimumArea, MaximumArea}, Threshold, Src, Above);
}

int Blobs::Segment(const Image& Src, bool Above, bool Connexity8, int MinimumArea, int MaximumArea)
{
    const Entry entry(context);
    int threshold = 0;
    return entry.Refuses(TryAutomatic({nullptr, Connexity8, MinimumArea, MaximumArea}, Src, Above, threshold))
               ? 0
               : threshold;
}

void Blobs::Segment(const Image& Src, int BelowThreshold, int AboveThreshold, bool Connexity8, int MinimumArea,
                    int MaximumArea, bool)
{
    const Entry entry(context);
    entry.Refuses(TryBand({nullptr, Connexity8, MinimumArea, MaximumArea}, Src, BelowThreshold, AboveThreshold));
}

int Blobs::Segment(int Threshold, const Region& Mask, const Image& Src, bool Above, bool Connexity8, int MinimumArea,
                   int MaximumArea)
{
    const Entry entry(context);
    return entry.Refuses(TryThreshold({&Mask, Connexity8, MinimumArea, MaximumArea}, Threshold, Src, Above))
               ? 0
               : Threshold;
}

void Blobs::Segment(int Size, int Noise, const Region& Mask, const Image& Src, bool Above, bool Connexity8,
                    int MinimumArea, int MaximumArea)
{
    const Entry entry(context);
    entry.Refuses(TryAdaptive({&Mask, Connexity8, MinimumArea, MaximumArea}, Size, Noise, Src, Above));
}

void Blobs::Segment(GrayPixel Background, GrayPixel Foreground, const Region& Mask, const Image& Src, bool Above,
                    bool Connexity8, int MinimumArea, int MaximumArea)
{
    const Entry entry(context);
    int threshold = (Background + Foreground) >> 1;
    entry.Refuses(TryThreshold({&Mask, Connexity8, MinimumArea, MaximumArea}, threshold, Src, Above));
}

void Blobs::Segment(RgbPixel BackColor, RgbPixel ForeColor, const Region& Mask, const Image& Src, bool Above,
                    bool Connexity8, int MinimumArea, int MaximumArea)
{
    const Entry entry(context);
    entry.Refuses(TryColors({&Mask, Connexity8, MinimumArea, MaximumArea}, BackColor, ForeColor, Src, Above));
}

int Blobs::Segment(const Region& Mask, const Image& Src, bool Above, bool Connexity8, int MinimumArea, int MaximumArea)
{
    const Entry entry(context);
    int threshold = 0;
    return entry.Refuses(TryAutomatic({&Mask, Connexity8, MinimumArea, MaximumArea}, Src, Above, threshold))
               ? 0
               : threshold;
}

void Blobs::Segment(const Region& Mask, const Image& Src, int BelowThreshold, int AboveThreshold, bool Connexity8,
                    int MinimumArea, int MaximumArea, bool)
{
    const Entry entry(context);
    entry.Refuses(TryBand({&Mask, Connexity8, MinimumArea, MaximumArea}, Src, BelowThreshold, AboveThreshold));
}

void Blobs::_Segment(const Image& Src, const Image& Low, const Image& High, int MinimumArea, int MaximumArea)
{
    const Entry entry("Tesk::Blobs::_Segment");
    entry.Refuses(TryTolerances({nullptr, Connexity8, MinimumArea, MaximumArea}, Src, Low, High));
}

void Blobs::_Segment(const Region& Mask, const Image& Src, const Image& Low, const Image& High, int MinimumArea,
                     int MaximumArea)
{
    const Entry entry("Tesk::Blobs::_Segment");
    entry.Refuses(TryTolerances({&Mask, Connexity8, MinimumArea, MaximumArea}, Src, Low, High));
}

} // namespace Tesk
