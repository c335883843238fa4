// A geometry has no window, and no mark of its own: it carries the anchors that are drawn on it to its picture.
#include "workbench/views/objects/ObjectView.h"

#include "engine/TypeNames.h"

namespace TeskPlus {

namespace {
constexpr OverlayRow overlay{};
}

extern const ObjectView viewGeometry{.Type = CodeOf(L"Geometry"), .Overlay = &overlay};

} // namespace TeskPlus
