// A profile is a sheet with its plot on a page of its own. It is dragged on a picture by the values that move it.
#include "workbench/views/objects/CurvePlot.h"
#include "workbench/views/objects/ObjectView.h"

#include "engine/TypeNames.h"

namespace TeskPlus {

namespace {
constexpr PlotRow plot{512, 256, Blue, PlotCurve, L"&Copy values to Clipboard", CurveText};
constexpr SheetView sheet{.Menu = sheetMenu::Tabs, .PlotPage = L"Plot"};
} // namespace

extern const ObjectView viewProfile{.Type = CodeOf(L"Profile"), .Sheet = &sheet, .Plot = &plot};

} // namespace TeskPlus
