// A rectangle gauge is dragged on its picture, and has a sheet and a plot of the probe that this chooses.
#include "workbench/views/objects/GaugeView.h"

#include "engine/TypeNames.h"
#include "gauge/EdgeRectangle.h"

namespace TeskPlus {

namespace {

void Place(EdgeRectangle& gauge, XY center, double length)
{
    gauge.Locate(center, XY(length, length), 0, startingProbe);
}

} // namespace

extern const ObjectView viewEdgeRectangle{.Type = CodeOf(L"EdgeRectangle"),
                                          .Overlay = &rowOverlay<EdgeRectangle, Place>,
                                          .Sheet = &rowSheet,
                                          .Plot = &probePlot<EdgeRectangle>};

} // namespace TeskPlus
