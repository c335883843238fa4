// What can be measured of the runs of a region alone.
#include "foundation/Entry.h"
#include "measure/Region.h"
#include "measure/region/RegionFrame.h"

namespace Tesk {

using namespace regions;

namespace {

constexpr const wchar_t* isEmpty = L"The Region is empty";

std::int64_t CountPixels(RunSpan runs)
{
    std::int64_t pixels = 0;
    for (const LabeledRun& run : runs)
        pixels += run.End - run.Start;
    return pixels;
}

int Saturated(std::int64_t value)
{
    return static_cast<int>(Clamp<std::int64_t>(value, INT32_MIN, INT32_MAX));
}

} // namespace

int Region::Area() const
{
    const Entry entry("Tesk::Region::Area");
    if (NumRuns < 1 && entry.Refuse(VoidObject, isEmpty)) return 0;
    return Saturated(CountPixels(Runs()));
}

XY Region::Center(int& Area) const
{
    const Entry entry("Tesk::Region::Center");
    if (NumRuns < 1 && entry.Refuse(VoidObject, isEmpty)) return {0, 0};
    const std::int64_t pixels = CountPixels(Runs());
    std::int64_t twiceX = 0, y = 0;
    for (const LabeledRun& run : Runs()) {
        const std::int64_t length = run.End - run.Start;
        twiceX += (run.Start + run.End - 1) * length;
        y += run.Y * length;
    }
    Area = Saturated(pixels);
    // Runs that an erosion left without a pixel have no center either.
    if (pixels == 0) return {0, 0};
    const auto area = static_cast<double>(pixels);
    return {static_cast<double>(twiceX) / (2 * area), static_cast<double>(y) / area};
}

Limits Region::Box(int Margin) const
{
    const Entry entry("Tesk::Region::Box");
    if (NumRuns < 1 && entry.Refuse(VoidObject, isEmpty)) return {0, 0, 0, 0};
    int left = INT16_MAX, right = INT16_MIN, top = INT16_MAX, bottom = INT16_MIN;
    for (const LabeledRun& run : Runs()) {
        left = Min<int>(left, run.Start);
        right = Max<int>(right, run.End);
        top = Min<int>(top, run.Y);
        bottom = Max<int>(bottom, run.Y);
    }
    const auto held = [](std::int64_t v) { return static_cast<int>(Clamp<std::int64_t>(v, INT16_MIN, INT16_MAX)); };
    const std::int64_t margin = Margin;
    return {held(left - margin), held(top - margin), held(right - left + 2 * margin),
            held(bottom - top + 1 + 2 * margin)};
}

} // namespace Tesk
