// A geometry has no window: its anchors are marked on its picture.
#include "workbench/views/objects/ObjectView.h"

#include "engine/TypeNames.h"
#include "image/Geometry.h"

namespace TeskPlus {

namespace {

void Draw(AnyVariable& Object, const IController&)
{
    static_cast<Var<Geometry>&>(Object).Value.DrawAnchors();
}

constexpr OverlayRow overlay{.Color = Green, .Draw = Draw};

} // namespace

extern const ObjectView viewGeometry{.Type = CodeOf(L"Geometry"), .Overlay = &overlay};

} // namespace TeskPlus
