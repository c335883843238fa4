// A histogram is a plot in a window of its own.
#include "workbench/views/objects/CurvePlot.h"
#include "workbench/views/objects/ObjectView.h"

#include "engine/TypeNames.h"

namespace TeskPlus {

namespace {
constexpr PlotRow plot{512, 256, Green, PlotCurve, L"&Copy frequencies to Clipboard", CurveText};
}

extern const ObjectView viewHistogram{.Type = CodeOf(L"Histogram"), .Plot = &plot};

} // namespace TeskPlus
