// A point gauge is dragged on its picture; its edges stand in a table below its sheet, and its probe in a plot.
#include "workbench/views/objects/GaugeView.h"

#include "engine/TypeNames.h"

namespace TeskPlus {

namespace {

void Draw(AnyVariable& Object, const IController&)
{
    GaugeOf<EdgePoint>(Object).Draw(true, true);
}

void Place(EdgePoint& gauge, XY center, double length)
{
    gauge.Locate(center, length, 0);
}

std::vector<QString> Columns(AnyVariable&)
{
    return {"X", "Y", "Slope", "Span", "Step"};
}

int Count(AnyVariable& Object)
{
    return GaugeOf<EdgePoint>(Object).NumPoints(Both);
}

std::vector<std::optional<double>> Values(AnyVariable& Object, int Line)
{
    const Edge edge = GaugeOf<EdgePoint>(Object).FittedEdge(Line, Both);
    return {edge.X, edge.Y, edge.Slope, edge.Span, edge.Step};
}

constexpr OverlayRow overlay{.Hit = HitGauge<EdgePoint>,
                             .Drag = DragGauge<EdgePoint>,
                             .IsHeld = IsGaugeHeld<EdgePoint>,
                             .Color = Blue,
                             .Draw = Draw,
                             .Start = StartGauge<EdgePoint, Place>,
                             .FollowsWindow = true};
constexpr SheetView sheet{};
const FeaturesRow features{
    .MinimumWidth = 250, .Columns = Columns, .Count = Count, .Values = Values, .FixedSize = QSize(251, 250)};

} // namespace

extern const ObjectView viewEdgePoint{.Type = CodeOf(L"EdgePoint"),
                                      .Overlay = &overlay,
                                      .Sheet = &sheet,
                                      .Plot = &probePlot<EdgePoint>,
                                      .Features = &features};

} // namespace TeskPlus
