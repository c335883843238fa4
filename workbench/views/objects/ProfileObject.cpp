// A profile is a sheet with its plot on a page of its own. It is dragged on a picture by the values that move it.
#include "workbench/views/objects/CurvePlot.h"
#include "workbench/views/objects/ObjectView.h"

#include "engine/TypeNames.h"

namespace TeskPlus {

namespace {
constexpr PlotRow plot{.Width = 512,
                       .Height = 256,
                       .Color = Blue,
                       .Plot = PlotCurve,
                       .CopyLabel = L"&Copy values to Clipboard",
                       .CopyText = CurveText,
                       .Axes = CurveAxes,
                       .ReadOut = CurveReadOut};
constexpr SheetView sheet{.Menu = sheetMenu::Tabs, .PlotPage = L"Plot"};
} // namespace

extern const ObjectView viewProfile{.Type = CodeOf(L"Profile"), .Sheet = &sheet, .Plot = &plot};

} // namespace TeskPlus
