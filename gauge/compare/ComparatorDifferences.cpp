// What differs: pixels of an aligned image that are out of their limits, painted, counted, or as blobs.
#include "gauge/Comparator.h"

#include "foundation/Entry.h"
#include "foundation/Graph.h"
#include "gauge/compare/CompareFrame.h"
#include "image/Histogram.h"
#include "image/core/Destination.h"
#include "image/core/Refusals.h"
#include "image/histogram/LevelCounts.h"
#include "image/operator/PixelSteps.h"
#include "measure/Blobs.h"
#include "measure/region/RunPixels.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Tesk {

using namespace compare;

namespace {

constexpr const char* context = "Tesk::Comparator::Differences";

/// Whether a pixel that is out of its limits is too dark: if one of its samples is.
bool IsTooDark(const View& view, int y, int column)
{
    const int channels = images::Channels(view.src.Type);
    const std::uint8_t *s = view.src.Row(y), *low = view.low.Row(y);
    for (int i = column * channels; i < (column + 1) * channels; i++)
        if (s[i] < low[i]) return true;
    return false;
}

/// Calls `visit(y, from, to)` for runs of pixels out of limits. A pixel that ends one run may begin the next.
template <typename F>
void EachDifference(const View& view, std::span<const LabeledRun> clip, F visit)
{
    const int channels = images::Channels(view.src.Type);
    EachExcess(view, clip, [&](int y, int from, int to) { visit(y, from / channels, (to - 1) / channels + 1); });
}

} // namespace

/// True, and reported, if an image cannot be compared; else views of it and of the limits of the working area.
bool Comparator::RefusesCompared(const Entry& entry, const Image& src, View& view) const
{
    if (RefusesIdle(entry)) return true;
    if (Mode < Aligned)
        return entry.Refuse(CannotPerform, L"This Comparator has not been aligned to the Reference - Use Align");
    if (entry.Refuses(CheckImage(src, reference_.Type)) || entry.Refuses(CheckImage(lower_))) return true;
    if (!ViewArea(src, view.src)) return entry.Refuses(images::RefuseSizes(src, lower_));
    ViewOf(lower_, WorkingArea(), view.low);
    ViewOf(upper_, WorkingArea(), view.high);
    return false;
}

void Comparator::Differences(Image& Src, Image& Dst)
{
    const Entry entry(context);
    View view;
    if (RefusesCompared(entry, Src, view)) return;
    const int x = view.src.X - Src.X, y = view.src.Y - Src.Y;
    // The pixels are read while they are painted over.
    if (Dst.Type == Rgb && entry.Refuses(images::KeepApart(view.src, Dst, images::InPlace::Copied))) return;
    if (points::CopyPixels(entry, Src, Dst, Rgb)) return;
    Dst.DetachIfShared(true);
    if (!entry.Guards(images::noWorkingMemory, [&] {
            EachDifference(view, clip_.Runs(), [&](int row, int from, int to) {
                RgbPixel* d = Dst.Row<RgbPixel>(row + y) + x;
                for (int i = from; i < to; i++)
                    d[i] = IsTooDark(view, row, i) ? TooDarkColor : TooLightColor;
            });
        }))
        return;
    Mode = Inspected;
}

void Comparator::Differences(Image& Src, Histogram& Dark, Histogram& Light)
{
    const Entry entry(context);
    View view;
    if (RefusesCompared(entry, Src, view)) return;
    if (Overrun && !IsPureShift()) {
        entry.Refuse(CannotPerform, L"When overrun occurs, you must pas the overrun mask to this function");
        return;
    }
    if (!Dark.SetUp(entry, view.src.Type, levels::byteLevels, true) ||
        (&Dark != &Light && !Light.SetUp(entry, view.src.Type, levels::byteLevels, true)))
        return;
    const int channels = images::Channels(view.src.Type);
    std::int32_t *dark = Dark.Samples(), *light = Light.Samples();
    if (!entry.Guards(images::noWorkingMemory, [&] {
            EachExcess(view, clip_.Runs(), [&](int y, int from, int to) {
                const std::uint8_t *s = view.src.Row(y), *low = view.low.Row(y), *high = view.high.Row(y);
                for (int i = from; i < to; i++) {
                    // Counts are told red first, pixels blue first.
                    const int channel = channels - 1 - i % channels;
                    if (s[i] < low[i]) dark[(low[i] - s[i]) * channels + channel]++;
                    if (s[i] > high[i]) light[(s[i] - high[i]) * channels + channel]++;
                }
            });
        }))
        return;
    Mode = Inspected;
}

void Comparator::Differences(Image& Src, Blobs& Defects, int MinimumArea, int MaximumArea)
{
    const Entry entry(context);
    View view;
    if (RefusesCompared(entry, Src, view)) return;
    if (view.src.Type == Gray) {
        Defects._Segment(clip_, view.src, view.low, view.high, MinimumArea, MaximumArea);
    } else {
        // A mask that lies where the image does, so that blobs have the same coordinates.
        Image mask;
        if (entry.Refuses(mask.Fit(view.src.X + view.src.Width, view.src.Y + view.src.Height, Gray))) return;
        images::FillRows(mask, 0);
        mask.Window(view.src.X, view.src.Y, view.src.Width, view.src.Height);
        if (!entry.Guards(images::noWorkingMemory, [&] {
                EachDifference(view, clip_.Runs(), [&](int y, int from, int to) {
                    std::uint8_t* row = mask.Row(y);
                    for (int i = from; i < to; i++)
                        row[i] = lightest;
                });
            }))
            return;
        constexpr int middle = 128;
        Defects.Segment(middle, mask, true, true, MinimumArea, MaximumArea);
    }
    if (Status::Error().Code == NoError) Mode = Inspected;
}

void Comparator::DrawDifferences(const Image& Src) const
{
    const Entry entry("Tesk::Comparator::DrawDifferences");
    View view;
    if (RefusesCompared(entry, Src, view)) return;
    if (Mode < Inspected) {
        entry.Refuse(CannotPerform, L"This Comparator has not been compared to the reference - Use Difference");
        return;
    }
    const GraphSettings kept;
    entry.Guards(images::noWorkingMemory, [&] {
        std::vector<LabeledRun> dark, light;
        EachDifference(view, clip_.Runs(), [&](int y, int from, int to) {
            for (int i = from, end = from; i < to; i = end) {
                const bool isDark = IsTooDark(view, y, i);
                while (end < to && IsTooDark(view, y, end) == isDark)
                    end++;
                (isDark ? dark : light)
                    .push_back({static_cast<std::int16_t>(i + view.src.X), static_cast<std::int16_t>(end + view.src.X),
                                static_cast<std::int16_t>(y + view.src.Y), 0});
            }
        });
        for (const auto& [runs, color] : {std::pair(&dark, Blue), std::pair(&light, Red)}) {
            if (Graph::AutoColors) Graph::FillColor = color;
            if (entry.Refuses(regions::DrawRuns(*runs))) return;
        }
    });
}

} // namespace Tesk
