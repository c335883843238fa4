// A convolution mask is a sheet with the grid of its coefficients.
#include "workbench/views/objects/KernelController.h"
#include "workbench/views/objects/ObjectView.h"

#include "engine/TypeNames.h"

namespace TeskPlus {

namespace {
constexpr SheetView sheet{.Make = MakeSheet<KernelPropertyPageController>};
}

extern const ObjectView viewKernel{.Type = CodeOf(L"Kernel"), .Sheet = &sheet};

} // namespace TeskPlus
