// A line gauge is dragged on its picture, and has a sheet and a plot of the probe that this chooses.
#include "workbench/views/objects/GaugeView.h"

#include "engine/TypeNames.h"
#include "gauge/EdgeLine.h"

namespace TeskPlus {

namespace {

void Place(EdgeLine& gauge, XY center, double length)
{
    gauge.Locate(center, length, 0, startingProbe);
}

} // namespace

extern const ObjectView viewEdgeLine{.Type = CodeOf(L"EdgeLine"),
                                     .Overlay = &rowOverlay<EdgeLine, Place>,
                                     .Sheet = &rowSheet,
                                     .Plot = &probePlot<EdgeLine>};

} // namespace TeskPlus
