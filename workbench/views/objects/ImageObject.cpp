// An image is a picture with its zoom and its overlays, on a sheet of its own class.
#include "workbench/views/objects/ImagePropertyPageController.h"
#include "workbench/views/objects/ObjectView.h"

#include "engine/TypeNames.h"

namespace TeskPlus {

namespace {
constexpr SheetView sheet{.Make = MakeSheet<ImagePropertyPageController>};
}

extern const ObjectView viewImage{.Type = CodeOf(L"Image"), .Sheet = &sheet};

} // namespace TeskPlus
