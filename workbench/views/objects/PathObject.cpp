// A path is drawn on its picture, and has a sheet.
#include "workbench/views/objects/ObjectView.h"

#include "engine/TypeNames.h"
#include "measure/Path.h"

namespace TeskPlus {

namespace {

/// Extrema are single places, other paths outlines; an outline of the user's own stands out from those of methods.
void Draw(AnyVariable& Object, const IController& Child)
{
    const std::wstring& name = Child.VariableIdentifier();
    const bool isRegional = name.starts_with(L"Regional");
    DrawIn(name.starts_with(L"Path") ? Red : Blue,
           [&] { static_cast<Var<Path>&>(Object).Value.Draw(isRegional, !isRegional); });
}

constexpr OverlayRow overlay{.Draw = Draw};
constexpr SheetView sheet{};

} // namespace

extern const ObjectView viewPath{.Type = CodeOf(L"Path"), .Overlay = &overlay, .Sheet = &sheet};

} // namespace TeskPlus
