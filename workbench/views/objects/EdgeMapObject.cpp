// An edge map is drawn on its picture, and has a sheet.
#include "workbench/views/objects/ObjectView.h"

#include "engine/TypeNames.h"
#include "gauge/EdgeMap.h"

namespace TeskPlus {

namespace {

void Draw(AnyVariable& Object, const IController& Child)
{
    static_cast<Var<EdgeMap>&>(Object).Value.Draw(OptionOf(Child, 0, false));
}

constexpr SheetOption options[] = {{L"View Vector Endpoints", false}};
constexpr OverlayRow overlay{.Color = Green, .Draw = Draw};
constexpr SheetView sheet{.Options = options};

} // namespace

extern const ObjectView viewEdgeMap{.Type = CodeOf(L"EdgeMap"), .Overlay = &overlay, .Sheet = &sheet};

} // namespace TeskPlus
