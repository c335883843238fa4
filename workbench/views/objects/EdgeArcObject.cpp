// An arc gauge is dragged on its picture, and has a sheet and a plot of the probe that this chooses.
#include "workbench/views/objects/GaugeView.h"

#include "engine/TypeNames.h"
#include "gauge/EdgeArc.h"

namespace TeskPlus {

namespace {

void Place(EdgeArc& gauge, XY center, double length)
{
    gauge.Locate(center, length / 2, startingProbe);
}

} // namespace

extern const ObjectView viewEdgeArc{.Type = CodeOf(L"EdgeArc"),
                                    .Overlay = &rowOverlay<EdgeArc, Place>,
                                    .Sheet = &rowSheet,
                                    .Plot = &probePlot<EdgeArc>};

} // namespace TeskPlus
