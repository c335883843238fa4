// An ellipse gauge is dragged on its picture, and has a sheet and a plot of the probe that this chooses.
#include "workbench/views/objects/GaugeView.h"

#include "engine/TypeNames.h"
#include "gauge/EdgeEllipse.h"

namespace TeskPlus {

namespace {

void Place(EdgeEllipse& gauge, XY center, double length)
{
    gauge.Locate(center, length / 2, length / 4, 0, startingProbe);
}

} // namespace

extern const ObjectView viewEdgeEllipse{.Type = CodeOf(L"EdgeEllipse"),
                                        .Overlay = &rowOverlay<EdgeEllipse, Place>,
                                        .Sheet = &rowSheet,
                                        .Plot = &probePlot<EdgeEllipse>};

} // namespace TeskPlus
