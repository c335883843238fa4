// Inspections along a snake, and what is asked of them.
#include "gauge/SnakeGauge.h"

#include "foundation/Entry.h"
#include "gauge/snake/SnakeProbe.h"
#include "image/core/Refusals.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

namespace Tesk {

using namespace snakes;

namespace {

int Either(int second, int first)
{
    return second == Auto ? first : second;
}

int RefuseUninspected()
{
    return Status::Format(OutOfRange, L"No edge point is available, perform inspection");
}

std::int32_t Held32(std::int64_t v)
{
    return static_cast<std::int32_t>(Min<std::int64_t>(v, INT32_MAX));
}

} // namespace

EdgeLimits SnakeGauge::FirstLimits() const
{
    return {MinimumStep, MinimumSlope, MaximumSpan, Noise, Polarity, Selection};
}

EdgeLimits SnakeGauge::SecondLimits() const
{
    return {Either(MinimumStep2, MinimumStep),
            Either(MinimumSlope2, MinimumSlope),
            Either(MaximumSpan2, MaximumSpan),
            Either(Noise2, Noise),
            static_cast<Polarities>(Either(Polarity2, Polarity)),
            Either(Selection2, Selection)};
}

/// Refuses more pixels than anybody waits for.
int SnakeGauge::CheckWork(int samples) const
{
    constexpr double mostPixels = 1 << 30;
    const double probes = std::ceil(static_cast<double>(samples) / Step());
    if (probes * 2 * HeldBreadth(Breadth) * Clamp(Thickness, 1, largestThickness) <= mostPixels) return NoError;
    return Status::Format(OutOfRange, L"The probes of this snake take too many pixels");
}

void SnakeGauge::Clear()
{
    const Entry entry("Tesk::SnakeGauge::Clear");
    Empty();
    inspected_ = NoInspection;
}

void SnakeGauge::ShallowCopy(const SnakeGauge& Src, bool KeepView)
{
    const Entry entry("Tesk::SnakeGauge::ShallowCopy");
    if (&Src == this || (!KeepView && takenEdition_ == Src.Edition())) return;
    entry.Guards(images::noWorkingMemory, [&] {
        SnakeGauge copy = KeepView ? Src : *this;
        if (!KeepView) {
            static_cast<Snake&>(copy) = Src;
            copy.Window = Window;
            copy.inspected_ = NoInspection;
        }
        copy.takenEdition_ = Src.Edition();
        *this = std::move(copy);
    });
}

/// Finds the edge or the two edges on the profile across a sample.
void SnakeGauge::Probe(const Image& src, AxisSample& sample, bool ribbon)
{
    const double breadth = HeldBreadth(Breadth);
    TakeProfile(src, sample, breadth, Thickness, profile_, line_);
    ProbeEdge first, second;
    if (!FindEdge(profile_, 0, FirstLimits(), first)) return;
    if (ribbon && !FindEdge(profile_, static_cast<int>(first.position), SecondLimits(), second)) return;
    sample.State = Conforming;
    sample.Deviation = first.position - breadth;
    const XY edge = Aside(sample, sample.Deviation);
    sample.EdgeX = edge.X;
    sample.EdgeY = edge.Y;
    if (!ribbon) return;
    sample.Deviation2 = second.position - breadth;
    const XY edge2 = Aside(sample, sample.Deviation2);
    sample.Edge2X = edge2.X;
    sample.Edge2Y = edge2.Y;
}

int SnakeGauge::Inspect(const Image& src, bool fit, bool ribbon)
{
    if (const int code = Refresh()) return code;
    if (const int code = images::CheckType(src, {Gray, Gray16})) return code;
    if (const int code = CheckWork(NumAxisSamples)) return code;
    return WithMemory(images::noWorkingMemory, [&] {
        const int step = Step();
        // What may need memory comes before anything is changed.
        points_.reserve(Samples.size() / static_cast<std::size_t>(step) + 1);
        const auto longest = static_cast<std::size_t>(2 * HeldBreadth(Breadth)) + 1;
        profile_.reserve(longest);
        line_.reserve(longest);
        auto& samples = WritableSamples();
        for (AxisSample& sample : samples) {
            AxisSample bare;
            bare.X = sample.X;
            bare.Y = sample.Y;
            bare.TangentX = sample.TangentX;
            bare.TangentY = sample.TangentY;
            sample = bare;
        }
        for (std::size_t i = 0; i < samples.size(); i += static_cast<std::size_t>(step))
            Probe(src, samples[i], ribbon);
        inspected_ = ribbon ? RibbonInspection : EdgeInspection;
        inspectedSampling_ = Sampling();
        inspectedStep_ = step;
        for (int i = 0; i < NumSections; i++)
            JudgeSection(WritableSections()[static_cast<std::size_t>(i)], fit, ribbon);
    });
}

void SnakeGauge::InspectEdge(const Image& Src, bool Fit)
{
    const Entry entry("Tesk::SnakeGauge::InspectEdge");
    entry.Refuses(Inspect(Src, Fit, false));
}

void SnakeGauge::InspectRibbon(const Image& Src, bool Fit)
{
    const Entry entry("Tesk::SnakeGauge::InspectRibbon");
    entry.Refuses(Inspect(Src, Fit, true));
}

bool SnakeGauge::AssessEdge(const Image& Src, double Fraction, int& StepThreshold, int& SlopeThreshold,
                            int& SpanThreshold, int& NumRaising, int& NumFalling, int Selection) const
{
    const Entry entry("Tesk::SnakeGauge::AssessEdge");
    Snake own;
    const Snake* axis = this;
    if (entry.Refuses(Sampled(own, axis)) || entry.Refuses(images::CheckType(Src, {Gray, Gray16})) ||
        entry.Refuses(CheckWork(axis->NumAxisSamples)))
        return false;
    std::vector<std::int32_t> steps, slopes, spans;
    int rising = 0;
    const bool ran = entry.Guards(images::noWorkingMemory, [&] {
        std::vector<std::int32_t> profile, line;
        EdgeLimits limits = FirstLimits();
        limits.minimumSlope = MinInt;
        limits.selection = Selection;
        for (std::size_t i = 0; i < axis->Samples.size(); i += static_cast<std::size_t>(Step())) {
            TakeProfile(Src, axis->Samples[i], HeldBreadth(Breadth), Thickness, profile, line);
            ProbeEdge edge;
            if (!FindEdge(profile, 0, limits, edge)) continue;
            steps.push_back(Held32(edge.step));
            slopes.push_back(Held32(edge.slope));
            spans.push_back(edge.span);
            rising += edge.rising ? 1 : 0;
        }
    });
    if (!ran) return false;
    const std::size_t count = steps.size();
    NumRaising = rising;
    NumFalling = static_cast<int>(count) - rising;
    if (count < 2) return false;
    const double last = static_cast<double>(count - 1), place = static_cast<double>(count) * Fraction;
    const auto rank = static_cast<std::ptrdiff_t>(place > 0 ? Min(place, last) : 0.0);
    const auto ordered = [rank](std::vector<std::int32_t>& values) {
        std::nth_element(values.begin(), values.begin() + rank, values.end());
        return values[static_cast<std::size_t>(rank)];
    };
    StepThreshold = ordered(steps);
    SlopeThreshold = ordered(slopes);
    SpanThreshold = ordered(spans);
    return true;
}

int SnakeGauge::CheckInspected(bool ribbon) const
{
    const bool is = NumAxisSamples >= 0 && inspectedSampling_ == Sampling() &&
                    (ribbon ? inspected_ == RibbonInspection : inspected_ != NoInspection);
    return is ? NoError : RefuseUninspected();
}

void SnakeGauge::NumAnomalies(int MinLength, int& NumIntrusions, int& NumProtrusions, int& NumMissing) const
{
    const Entry entry("Tesk::SnakeGauge::NumAnomalies");
    if (entry.Refuses(CheckInspected(false))) return;
    const auto step = static_cast<std::size_t>(inspectedStep_), count = (Samples.size() + step - 1) / step;
    const auto stateAt = [&](std::size_t probe) { return Samples[probe % count * step].State; };
    // A run that goes over the end of a closed axis is met at its beginning.
    std::size_t first = 0;
    while (Closed && first + 1 < count && stateAt(first + count - 1) == stateAt(first))
        first++;
    if (first + 1 == count) first = 0;
    std::array<int, 4> runs{};
    for (std::size_t i = 0; i < count;) {
        const int state = stateAt(first + i);
        std::size_t length = 0;
        while (i < count && stateAt(first + i) == state) {
            i++;
            length++;
        }
        if (static_cast<std::int64_t>(length * step) >= MinLength) runs[static_cast<std::size_t>(state)]++;
    }
    NumIntrusions = runs[Intrusion];
    NumProtrusions = runs[Protrusion];
    NumMissing = runs[Missing];
}

int SnakeGauge::CheckLocation(int index, bool ribbon) const
{
    if (const int code = CheckInspected(ribbon)) return code;
    if (index >= 0 && index < NumAxisSamples) return NoError;
    return Status::Format(OutOfRange, L"The location index (%d) is out of the range [0..%d]", index,
                          NumAxisSamples - 1);
}

AxisSample SnakeGauge::EdgePoint(int Index) const
{
    const Entry entry("Tesk::SnakeGauge::EdgePoint");
    return entry.Refuses(CheckLocation(Index, false)) ? AxisSample{} : Samples[static_cast<std::size_t>(Index)];
}

AxisSample SnakeGauge::RibbonPoint(int Index) const
{
    const Entry entry("Tesk::SnakeGauge::RibbonPoint");
    return entry.Refuses(CheckLocation(Index, true)) ? AxisSample{} : Samples[static_cast<std::size_t>(Index)];
}

int SnakeGauge::CheckSection(int index) const
{
    if (NumSections < 1) return Status::Format(OutOfRange, L"No Section has been created yet");
    if (index >= 0 && index < NumSections) return NoError;
    return Status::Format(OutOfRange, L"The Section Index (%d) must be in range [0..%d]", index, NumSections - 1);
}

void SnakeGauge::SectionSegment(int Index, XY& Beg, XY& End) const
{
    const Entry entry("Tesk::SnakeGauge::SectionSegment");
    if (entry.Refuses(CheckSection(Index))) return;
    const SnakeSection& section = Sections[static_cast<std::size_t>(Index)];
    if (section.Type != HCorner) {
        entry.Refuse(OutOfRange, L"This is not a line segment section");
        return;
    }
    Beg = section.FittedBeg;
    End = section.FittedEnd;
}

void SnakeGauge::SectionArc(int Index, XY& Beg, XY& End, XY& Center, double& Radius) const
{
    const Entry entry("Tesk::SnakeGauge::SectionArc");
    if (entry.Refuses(CheckSection(Index))) return;
    const SnakeSection& section = Sections[static_cast<std::size_t>(Index)];
    if (section.Type != Circular) {
        entry.Refuse(OutOfRange, L"This is not a circular arc section");
        return;
    }
    Beg = section.FittedBeg;
    End = section.FittedEnd;
    Center = section.FittedCenter;
    Radius = section.FittedRadius;
}

} // namespace Tesk
