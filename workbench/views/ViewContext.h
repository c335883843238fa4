// What every view may ask for, and where controllers are made known to the factory.
#pragma once

#include "workbench/logic/ControllerFactory.h"

class QMdiArea;

namespace TeskPlus {

class OperationHandler;
class OperationViews;

/// The parts of the main window that controllers work with; they outlive every controller.
struct ViewContext
{
    Tesk::Engine* engine = nullptr;
    OperationHandler* handler = nullptr;
    OperationViews* views = nullptr;
    QMdiArea* workArea = nullptr;
};

/// Values in rows: numbers, choices, texts, colors, points.
void RegisterValueControllers(ControllerFactory& factory, ViewContext& context);
/// Objects in windows: pictures with their overlays, sheets, plots, tables.
void RegisterObjectControllers(ControllerFactory& factory, ViewContext& context);

} // namespace TeskPlus
