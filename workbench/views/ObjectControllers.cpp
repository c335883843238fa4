// The controllers of objects in windows, made known to the factory.
#include "workbench/views/ViewContext.h"

namespace TeskPlus {

void RegisterObjectControllers(ControllerFactory&, ViewContext&) {}

} // namespace TeskPlus
