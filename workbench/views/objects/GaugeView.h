// What the gauges share: their mark on the picture with its handles, where they start, and the plot of their probe.
#pragma once

#include "engine/Operation.h"
#include "gauge/EdgeRow.h"
#include "image/Geometry.h"
#include "workbench/views/objects/ObjectView.h"

#include <algorithm>
#include <type_traits>

namespace TeskPlus {

template <typename Gauge>
Gauge& GaugeOf(AnyVariable& Object)
{
    return static_cast<Var<Gauge>&>(Object).Value;
}

/// The cursor of a handle that moves in a direction, in eighths of a turn.
Qt::CursorShape CursorOfOctant(int Octant);

template <typename Gauge>
OverlayHit HitGauge(IController& Child, int X, int Y)
{
    Gauge* gauge = ObjectOf<Gauge>(&Child);
    const DraggingHandles handle = gauge ? gauge->HitHandle(X, Y) : NoHandle;
    if (handle == NoHandle) return {};
    return {true, handle == AllHandle ? Qt::SizeAllCursor : CursorOfOctant(gauge->HandleOctant())};
}

template <typename Gauge>
void DragGauge(IController& Child, const Image&, int X, int Y)
{
    if (Gauge* gauge = ObjectOf<Gauge>(&Child)) gauge->Drag(X, Y);
}

template <typename Gauge>
bool IsGaugeHeld(const IController& Child)
{
    const Gauge* gauge = ObjectOf<Gauge>(&Child);
    return gauge && gauge->Handle != NoHandle;
}

/// The length of probes of gauges that are new.
constexpr double startingProbe = 32;

/// The middle of a picture's window, and a length that fits there.
template <typename Gauge, void (*Place)(Gauge& Object, XY Center, double Length)>
void StartGauge(AnyVariable& Object, const Image& Picture)
{
    constexpr double longest = 100;
    Gauge& gauge = GaugeOf<Gauge>(Object);
    gauge.SetWindow(Picture);
    Place(gauge, XY(Picture.Width / 2, Picture.Height / 2), std::min(Picture.Width / 4.0, longest));
}

/// The calibrator in whose units the operation of an overlay measures; null for none.
const Geometry* CalibratorOf(const IController& Child);

/// With the edge of each probe while the box of the sheet says so, where they were found on the picture.
template <typename Gauge>
void DrawRow(AnyVariable& Object, const IController& Child)
{
    const bool showsPoints = OptionOf(Child, 0, true);
    if (const Geometry* calibrator = CalibratorOf(Child))
        GaugeOf<Gauge>(Object).Draw(true, showsPoints, *calibrator);
    else
        GaugeOf<Gauge>(Object).Draw(true, showsPoints);
}

template <typename Gauge, void (*Place)(Gauge& Object, XY Center, double Length)>
constexpr OverlayRow rowOverlay{.Hit = HitGauge<Gauge>,
                                .Drag = DragGauge<Gauge>,
                                .IsHeld = IsGaugeHeld<Gauge>,
                                .Color = Blue,
                                .Draw = DrawRow<Gauge>,
                                .Start = StartGauge<Gauge, Place>,
                                .FollowsWindow = true};

constexpr SheetOption rowOptions[] = {{L"Show Sample Points", true}};
constexpr SheetView rowSheet{.Menu = sheetMenu::Tabs, .FirstPage = 1, .Options = rowOptions};

using GaugeAccess = EdgePoint& (*)(AnyVariable& Object);

template <typename Gauge>
EdgePoint& ProbeOf(AnyVariable& Object)
{
    return GaugeOf<Gauge>(Object);
}

std::unique_ptr<PlotHandles> MakeProbeHandles(GaugeAccess Gauge);
PlotAxes ProbeAxes(const EdgePoint& Gauge);
QString ProbeReadOut(const EdgePoint& Gauge, double Across);

/// The boxes beside the plot of a probe, which switch its thresholds off.
template <typename Gauge>
constexpr PlotBox probeBoxes[] = {
    {L"Step", [](const AnyVariable& Object) { return static_cast<const Var<Gauge>&>(Object).Value.MinimumStep; },
     [](AnyVariable& Object, int Value) { GaugeOf<Gauge>(Object).MinimumStep = Value; }},
    {L"Slope", [](const AnyVariable& Object) { return static_cast<const Var<Gauge>&>(Object).Value.MinimumSlope; },
     [](AnyVariable& Object, int Value) { GaugeOf<Gauge>(Object).MinimumSlope = Value; }}};

/// The probe of a point gauge, or the one that a row is asked to show.
template <typename Gauge>
constexpr PlotRow probePlot{
    .Width = 512,
    .Height = 512,
    .Color = Blue,
    .MakeHandles = [] { return MakeProbeHandles(ProbeOf<Gauge>); },
    .Boxes = probeBoxes<Gauge>,
    .IsShown =
        [](const AnyVariable& Object) {
            if constexpr (std::is_base_of_v<EdgeRow, Gauge>)
                return static_cast<const Var<Gauge>&>(Object).Value.SampleIndex != All;
            else
                return true;
        },
    .Axes = [](const AnyVariable& Object) { return ProbeAxes(static_cast<const Var<Gauge>&>(Object).Value); },
    .ReadOut = [](const AnyVariable& Object,
                  double Across) { return ProbeReadOut(static_cast<const Var<Gauge>&>(Object).Value, Across); }};

} // namespace TeskPlus
