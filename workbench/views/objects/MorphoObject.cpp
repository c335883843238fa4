// A structuring element is edited on the page of its family of shapes, with a picture of it.
#include "workbench/views/objects/MorphoPropertyPageController.h"
#include "workbench/views/objects/ObjectView.h"

#include "engine/TypeNames.h"

namespace TeskPlus {

namespace {
constexpr SheetView sheet{.Make = MakeSheet<MorphoPropertyPageController>};
}

extern const ObjectView viewMorpho{.Type = CodeOf(L"Morpho"), .Sheet = &sheet};

} // namespace TeskPlus
