// The controllers of values in rows, made known to the factory.
#include "workbench/views/ViewContext.h"

namespace TeskPlus {

void RegisterValueControllers(ControllerFactory&, ViewContext&) {}

} // namespace TeskPlus
