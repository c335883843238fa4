// A histogram is a plot in a window of its own.
#include "workbench/views/objects/CurvePlot.h"
#include "workbench/views/objects/ObjectView.h"

#include "engine/TypeNames.h"

namespace TeskPlus {

namespace {
constexpr PlotRow plot{.Width = 512,
                       .Height = 256,
                       .Color = Green,
                       .Plot = PlotCurve,
                       .CopyLabel = L"&Copy frequencies to Clipboard",
                       .CopyText = CurveText,
                       .Axes = CurveAxes,
                       .ReadOut = CurveReadOut};
}

extern const ObjectView viewHistogram{.Type = CodeOf(L"Histogram"), .Plot = &plot};

} // namespace TeskPlus
