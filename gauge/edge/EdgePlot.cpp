// The signal of a probe as a plot, on which its thresholds are dragged.
#include "gauge/EdgePlot.h"

#include "foundation/Entry.h"
#include "foundation/Graph.h"
#include "foundation/Handles.h"
#include "gauge/EdgePoint.h"

#include <cmath>
#include <span>
#include <vector>

namespace Tesk {

namespace {

constexpr int captionMargin = 4;

/// In gray levels over the columns of a pane; where several samples share a pixel, not all are needed.
template <typename Place>
void DrawCurve(std::span<const std::int32_t> values, int scale, int width, Place place)
{
    const std::size_t share = Max<std::size_t>(1, values.size() / (4 * static_cast<std::size_t>(Max(width, 1))));
    std::vector<XY> points;
    for (std::size_t i = 0; i < values.size(); i += share)
        points.push_back(place(static_cast<double>(i), static_cast<double>(values[i]) / scale));
    Graph::Polyline(points, false);
}

void DrawCaption(double x, double y, const char* caption)
{
    const GraphSettings kept;
    Graph::TextAlignX = Graph::TextAlignY = -1;
    Graph::Text(x + captionMargin, y + captionMargin, caption);
}

bool HasLine(const EdgePoint& gauge, Polarities polarity)
{
    return gauge.Polarity != (polarity == Raising ? Falling : Raising);
}

} // namespace

double EdgePlot::Pane::PlaceOf(double value) const
{
    const double extent = high - low, part = extent != 0 ? (value - low) / extent : 0;
    return top + (1 - Clamp(part, 0.0, 1.0)) * (height - 1);
}

double EdgePlot::Pane::ValueAt(double y) const
{
    const double part = height > 1 ? 1 - (y - top) / (height - 1) : 0;
    return Clamp(low + part * (high - low), Min(low, high), Max(low, high));
}

EdgePlot::Pane EdgePlot::SignalPane() const
{
    return {double(Y), Height / 2.0, double(MinimumSignal), double(MaximumSignal)};
}

EdgePlot::Pane EdgePlot::DerivativePane() const
{
    return {Y + Height / 2.0, Height / 2.0, double(MinimumDerivative), double(MaximumDerivative)};
}

double EdgePlot::ColumnOf(double sample, int length) const
{
    return X + (length > 1 ? Clamp(sample / (length - 1), 0.0, 1.0) : 0.0) * (Width - 1);
}

void EdgePlot::SetFrame(int X, int Y, int Width, int Height)
{
    const Entry entry("Tesk::EdgePlot::SetFrame");
    this->X = X;
    this->Y = Y;
    this->Width = Width;
    this->Height = Height;
}

void EdgePlot::DrawLevel(const Pane& pane, double value) const
{
    const double y = pane.PlaceOf(value);
    Graph::Line(X, y, X + Width - 1.0, y);
}

void EdgePlot::DrawThresholds(const EdgePoint& gauge) const
{
    const double half = gauge.MinimumStep / 2.0;
    DrawLevel(SignalPane(), StepCenter + half);
    DrawLevel(SignalPane(), StepCenter - half);
    if (HasLine(gauge, Raising)) DrawLevel(DerivativePane(), gauge.MinimumSlope);
    if (HasLine(gauge, Falling)) DrawLevel(DerivativePane(), -double(gauge.MinimumSlope));
}

void EdgePlot::Draw(const EdgePoint& Gauge) const
{
    const Entry entry("Tesk::EdgePlot::Draw");
    if (Width < 2 || Height < 4) return;
    const GraphSettings kept;
    Graph::FillColor = NoColor;
    const Pane signal = SignalPane(), derivative = DerivativePane();
    DrawCaption(X, signal.top, "Signal");
    DrawCaption(X, derivative.top, "Derivative");
    DrawLevel(derivative, 0);
    const int length = Gauge.SignalLength;
    const bool drawn = entry.Guards(L"Cannot allocate the working memory", [&] {
        for (const bool derived : {false, true})
            DrawCurve(derived ? Gauge.Derivative : Gauge.Signal, Gauge.Scale, Width, [&](double i, double value) {
                return XY(ColumnOf(i, length), (derived ? derivative : signal).PlaceOf(value));
            });
    });
    if (!drawn) return;
    if (Graph::AutoColors) Graph::LineColor = Red;
    DrawThresholds(Gauge);
    if (Graph::AutoColors) Graph::LineColor = Green;
    for (const Edge& edge : Gauge.Edges) {
        const double x = ColumnOf(edge.Position, length);
        Graph::Line(x, Y, x, Y + Height - 1.0);
    }
}

DraggingHandles EdgePlot::HitHandle(int X, int Y, const EdgePoint& Gauge)
{
    const Entry entry("Tesk::EdgePlot::HitHandle");
    const double left = this->X, top = this->Y;
    const auto isOn = [&](const Pane& pane, double value) { return IsNear(Y, Graph::ToTarget(pane.PlaceOf(value))); };
    const bool inside = IsNear(X, Graph::ToTarget(left), Graph::ToTarget(left + Width - 1)) &&
                        IsNear(Y, Graph::ToTarget(top), Graph::ToTarget(top + Height - 1));
    const double half = Gauge.MinimumStep / 2.0, slope = Gauge.MinimumSlope;
    PointIndex = -1;
    if (!inside)
        Handle = NoHandle;
    else if (isOn(SignalPane(), StepCenter + half))
        Handle = HighMinimumStepHandle;
    else if (isOn(SignalPane(), StepCenter - half))
        Handle = LowMinimumStepHandle;
    else if (HasLine(Gauge, Raising) && isOn(DerivativePane(), slope))
        Handle = HighMinimumSlopeHandle;
    else if (HasLine(Gauge, Falling) && isOn(DerivativePane(), -slope))
        Handle = LowMinimumSlopeHandle;
    else {
        Handle = NoHandle;
        for (std::size_t i = 0; i < Gauge.Edges.size() && Handle == NoHandle; i++)
            if (IsNear(X, Graph::ToTarget(ColumnOf(Gauge.Edges[i].Position, Gauge.SignalLength)))) {
                Handle = PointHandle;
                PointIndex = static_cast<int>(i);
            }
    }
    return Handle;
}

void EdgePlot::Drag(int X, int Y, EdgePoint& Gauge)
{
    const Entry entry("Tesk::EdgePlot::Drag");
    const double y = ScreenPointer(X, Y).Position().Y, level = DerivativePane().ValueAt(y);
    if (Handle == HighMinimumSlopeHandle || Handle == LowMinimumSlopeHandle) {
        const double slope = Handle == HighMinimumSlopeHandle ? level : -level;
        Gauge.MinimumSlope = static_cast<int>(std::lround(Max(slope, 0.0)));
    } else if (Handle == HighMinimumStepHandle || Handle == LowMinimumStepHandle) {
        // The other line stays where it is.
        const bool high = Handle == HighMinimumStepHandle;
        const double half = Gauge.MinimumStep / 2.0, other = StepCenter + (high ? -half : half);
        const double to = SignalPane().ValueAt(y), width = std::round(Max(high ? to - other : other - to, 1.0));
        Gauge.MinimumStep = static_cast<int>(width);
        StepCenter = other + (high ? width : -width) / 2;
    }
}

} // namespace Tesk
