// A snake gauge lies on its picture, where its nodes are dragged; what it has found of edges is drawn along it. The
// buttons of its sheet replace the curve by a new one.
#include "workbench/views/objects/ObjectView.h"

#include "engine/TypeNames.h"
#include "gauge/SnakeGauge.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace TeskPlus {

namespace {

SnakeGauge& GaugeOf(AnyVariable& object)
{
    return static_cast<Var<SnakeGauge>&>(object).Value;
}

/// Where there is no picture to go by.
constexpr double standardSize = 512;

/// A new curve in the middle of the window takes the place of the nodes.
template <typename F>
void Replace(SnakeGauge& gauge, F append)
{
    const GraphSettings unscaled(1.0);
    const GaugeWindow window = gauge.Window;
    const bool isPlaced = window.Width > 0 && window.Height > 0;
    const double width = isPlaced ? window.Width : standardSize, height = isPlaced ? window.Height : standardSize;
    gauge.Clear();
    append(gauge, XY(width / 2, height / 2), width / 2, height / 2);
}

void Rectangle(SnakeGauge& gauge, XY center, double width, double height)
{
    gauge.RectangleAppend(center, XY(width, height));
}

void Circle(SnakeGauge& gauge, XY center, double width, double height)
{
    gauge.CircleAppend(center, std::min(width, height) / 2);
}

void Spline(SnakeGauge& gauge, XY center, double width, double height)
{
    constexpr int nodes = 8;
    for (int i = 0; i < nodes; i++) {
        const double angle = 2 * std::numbers::pi * i / nodes;
        const XY place(center.X + width / 2 * std::cos(angle), center.Y + height / 2 * std::sin(angle));
        gauge.Append(place, i == 0 ? SCorner : Tesk::Spline);
    }
    gauge.Close();
}

using Figure = void (*)(SnakeGauge& Gauge, XY Center, double Width, double Height);

template <Figure Append>
void Press(AnyVariable& Object, int)
{
    Replace(GaugeOf(Object), Append);
}

/// A curve that was read, or drawn before, keeps its nodes.
void Start(AnyVariable& Object, const Image& Picture)
{
    SnakeGauge& gauge = GaugeOf(Object);
    gauge.SetWindow(Picture);
    if (gauge.Length == 0) Replace(gauge, Rectangle);
}

OverlayHit Hit(IController& Child, int X, int Y)
{
    SnakeGauge* gauge = ObjectOf<SnakeGauge>(&Child);
    if (!gauge) return {};
    gauge->ClosestTo(XY(X, Y));
    return {gauge->Handle != NoHandle, std::nullopt};
}

void Drag(IController& Child, const Image&, int X, int Y)
{
    if (SnakeGauge* gauge = ObjectOf<SnakeGauge>(&Child)) gauge->Drag(XY(X, Y));
}

bool IsHeld(const IController& Child)
{
    const SnakeGauge* gauge = ObjectOf<SnakeGauge>(&Child);
    return gauge && gauge->Handle != NoHandle;
}

void Draw(AnyVariable& Object, const IController&)
{
    GaugeOf(Object).Draw(true, true, false);
}

void DrawEdge(AnyVariable& Object, const IController& Child)
{
    GaugeOf(Object).DrawEdge(OptionOf(Child, 0, true), false);
}

constexpr OverlayMark marks[] = {{Green, DrawEdge}};
constexpr OverlayRow overlay{.Hit = Hit,
                             .Drag = Drag,
                             .IsHeld = IsHeld,
                             .HitsOnRelease = false,
                             .Color = Blue,
                             .Draw = Draw,
                             .Marks = marks,
                             .Start = Start,
                             .FollowsWindow = true};
constexpr SheetOption options[] = {{L"Show Edge Points", true}};
constexpr SheetButton buttons[] = {
    {L"New Rectangle", Press<Rectangle>}, {L"New Circle", Press<Circle>}, {L"New Spline", Press<Spline>}};
constexpr SheetView sheet{.Options = options, .Buttons = buttons};

} // namespace

extern const ObjectView viewSnakeGauge{.Type = CodeOf(L"SnakeGauge"), .Overlay = &overlay, .Sheet = &sheet};

} // namespace TeskPlus
