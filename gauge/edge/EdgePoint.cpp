// The detection of a probe: its samples, their derivative, and what is made of its lobes.
#include "gauge/EdgePoint.h"

#include "foundation/Angles.h"
#include "foundation/Entry.h"
#include "gauge/edge/Lobes.h"
#include "gauge/edge/ProbeRow.h"
#include "gauge/edge/ProbeSampler.h"
#include "gauge/edge/WorldMap.h"
#include "image/Geometry.h"
#include "image/core/Refusals.h"

#include <cmath>

namespace Tesk {

using namespace edges;

namespace {

constexpr int fewestSamples = 3;
/// What one probe may cost: samples, pixels read, and pixels in a sum, of which four thousand times as much is an int.
constexpr double mostSamples = 1 << 22, mostPixels = 1 << 27, mostSummed = 1 << 18;
/// A direction below that stands for an axis.
constexpr double upright = 1.0 / 65536;

struct Span
{
    XY direction;
    double length;
};

Span SpanOf(XY beg, XY end)
{
    const double dx = end.X - beg.X, dy = end.Y - beg.Y;
    const double length = dx == 0 ? std::abs(dy) : dy == 0 ? std::abs(dx) : std::sqrt(dx * dx + dy * dy);
    return {{dx / length, dy / length}, length};
}

bool IsWhole(XY p)
{
    return p.X == std::floor(p.X) && p.Y == std::floor(p.Y);
}

/// Each sum of `length` samples that follow each other, in place of the first of them.
void RunningSums(std::int32_t* samples, int count, int length)
{
    std::int32_t sum = 0;
    for (int i = 0; i < length - 1; i++)
        sum += samples[i];
    for (int i = 0; i + length <= count; i++) {
        sum += samples[i + length - 1];
        const std::int32_t first = samples[i];
        samples[i] = sum;
        sum -= first;
    }
}

/// A threshold in the units of the derivative.
std::int32_t Scaled(int level, int scale)
{
    return static_cast<std::int32_t>(Clamp<std::int64_t>(std::int64_t{level} * scale, 0, INT32_MAX));
}

} // namespace

void EdgePoint::Locate(XY Center, double Length, double Angle)
{
    const Entry entry("Tesk::EdgePoint::Locate");
    PlaceProbe(Center, Radially(Length / 2, ToRadians(Angle)));
}

void EdgePoint::PlaceProbe(XY middle, XY half)
{
    Beg = middle - half;
    End = middle + half;
}

/// Fills `Signal` with the smoothed samples. False, with `code` set on a refusal, if there are none.
bool EdgePoint::Sample(const Image& src, int& code)
{
    const Span span = SpanOf(Beg, End);
    const double needed = Smoothing + std::ceil(span.length);
    if (!(span.length > 0) || needed < fewestSamples) return false;
    code = CheckSampled(src);
    if (code != NoError) return false;
    const int channels = images::Channels(src.Type);
    const int breadth = Max(Breadth, 1);
    if (!(needed <= mostSamples) || needed * breadth > mostPixels ||
        static_cast<double>(breadth) * Smoothing * channels > mostSummed)
        return false;

    const int count = static_cast<int>(needed), before = (Smoothing - 1) / 2;
    const XY u = span.direction, m(-u.Y, u.X);
    const double aside = (breadth - 1) / 2.0;
    const XY start(Beg.X - before * u.X - aside * m.X, Beg.Y - before * u.Y - aside * m.Y);
    const ProbeGrid grid{start, u, m, count, breadth};
    auto& signal = Signal.values_;
    signal.resize(static_cast<std::size_t>(count));
    if (channels == 1) {
        SampleGray(src, grid, grid.At(count + Smoothing - 1, 0), signal.data());
    } else {
        const bool whole = (std::abs(u.X) < upright || std::abs(u.Y) < upright) && IsWhole(Beg) && IsWhole(End);
        if (!SampleRgb(src, grid, whole, signal.data())) return false;
    }
    if (StepModel && Smoothing >= 2) raw_.assign(signal.begin(), signal.end());
    if (Smoothing >= 2) RunningSums(signal.data(), count, Smoothing);
    SignalLength = count - Smoothing + 1;
    signal.resize(static_cast<std::size_t>(int(SignalLength)));
    Scale = breadth * Smoothing * channels;
    direction_ = u;
    return true;
}

int EdgePoint::Probe(const Image& src)
{
    // The lowest bit makes it odd.
    Smoothing = Max(Smoothing, 1) | 1;
    NumEdges = SignalLength = 0;
    Edges.values_.clear();
    return WithMemory(images::noWorkingMemory, [&]() -> int {
        int code = NoError;
        if (Sample(src, code)) {
            FindEdges();
        } else {
            Signal.values_.clear();
            Derivative.values_.clear();
        }
        return code;
    });
}

void EdgePoint::FindEdges()
{
    const int length = SignalLength;
    const std::int32_t* p = Signal.data();
    Derivative.values_.resize(static_cast<std::size_t>(length));
    Derive(p, length, Derivative.values_.data());

    const std::int32_t noise = Scaled(Noise, Scale);
    const LobeLimits limits{Polarity & Raising ? noise : INT32_MAX, Polarity & Falling ? -noise : -INT32_MAX,
                            Scaled(MinimumSlope, Scale), Scaled(MinimumStep, Scale), MinimumSpan};
    const auto accept = [&](const Lobe& lobe) {
        double position;
        if (!limits.Accept(lobe) || !PlaceOf(lobe, Derivative.data(), length, position)) return;
        if (StepModel) position = Refined(lobe, noise, position);
        Edges.values_.push_back({lobe.peak / Scale, lobe.span, lobe.step / Scale, lobe.start, position,
                                 Beg.X + direction_.X * position, Beg.Y + direction_.Y * position});
    };
    if (SplitPeaks)
        SplitLobes(p, Derivative.data(), length, limits, accept);
    else
        PlainLobes(p, Derivative.data(), length, limits, accept);
    NumEdges = static_cast<int>(Edges.size());
}

bool EdgePoint::Detect(const Image& Src)
{
    const Entry entry(probeContext);
    if (entry.Refuses(Probe(Src))) return false;
    return Rescale(WorldMap());
}

bool EdgePoint::Detect(const Image& Src, const Geometry& Calibrator)
{
    const Entry entry(probeContext);
    if (entry.Refuses(Probe(Src))) return false;
    return Rescale(WorldMap(Calibrator));
}

/// Brings the edges to the units of the result. Whether some are left.
bool EdgePoint::Rescale(const WorldMap& world)
{
    Replace([&](Edge& edge) {
        XY place(edge.X, edge.Y);
        if (!world.Apply(place)) return false;
        edge.X = place.X;
        edge.Y = place.Y;
        return true;
    });
    return NumEdges > 0;
}

int EdgePoint::NumPoints(Polarities Polarity) const
{
    const Entry entry("Tesk::EdgePoint::NumPoints");
    return Count(Polarity);
}

int EdgePoint::Count(Polarities polarity) const
{
    int count = 0;
    for (const Edge& edge : Edges)
        count += IsOf(edge.Slope, polarity);
    return count;
}

const Edge* EdgePoint::Selected(int index, Polarities polarity) const
{
    const Edge* selected = nullptr;
    const auto largest = [&](auto measure, std::int32_t Edge::*sign) {
        int best = 0;
        for (const Edge& edge : Edges)
            if (const int value = measure(edge); IsOf(edge.*sign, polarity) && value > best) {
                best = value;
                selected = &edge;
            }
        return selected;
    };
    switch (index) {
    case BestSlope:
        return largest([](const Edge& edge) { return Abs(edge.Slope); }, &Edge::Slope);
    case BestStep:
        return largest([](const Edge& edge) { return Abs(edge.Step); }, &Edge::Step);
    case BestSpan:
        return largest([](const Edge& edge) { return edge.Span; }, &Edge::Step);
    case OverCenter:
    case AsFirst:
        return nullptr;
    default:
        break;
    }
    std::int64_t rank = index < 0 ? std::int64_t{index} + Count(polarity) : index;
    for (const Edge& edge : Edges)
        if (IsOf(edge.Slope, polarity) && rank-- == 0) return &edge;
    return nullptr;
}

/// The refusal of a selection that finds no edge.
int EdgePoint::Missing(int index, Polarities polarity) const
{
    const int count = Count(polarity);
    if (count == 0) return Status::Format(OutOfRange, L"No edge points were detected");
    return Status::Format(OutOfRange, L"The element index (%d) is out of the edge points range [%d..%d]", index, -count,
                          count - 1);
}

Edge EdgePoint::FittedEdge(int Index, Polarities Polarity) const
{
    const Entry entry("Tesk::EdgePoint::FittedEdge");
    if (const Edge* edge = Selected(Index, Polarity)) return *edge;
    entry.Refuses(Missing(Index, Polarity));
    return Edge{};
}

XY EdgePoint::FittedPoint(int Index, Polarities Polarity) const
{
    return PointOf(Index, Polarity, WorldMap());
}

XY EdgePoint::FittedPoint(const Geometry& Calibrator, int Index, Polarities Polarity) const
{
    return PointOf(Index, Polarity, WorldMap(Calibrator));
}

XY EdgePoint::PointOf(int index, Polarities polarity, const WorldMap& world) const
{
    const Entry entry("Tesk::EdgePoint::FittedPoint");
    const Edge* edge = Selected(index, polarity);
    if (!edge) {
        entry.Refuses(Missing(index, polarity));
        return {0, 0};
    }
    XY place(edge->X, edge->Y);
    return world.Apply(place) ? place : XY(0, 0);
}

} // namespace Tesk
