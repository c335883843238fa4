// The window of a profile: its plot, and its properties.
#pragma once

#include "workbench/views/objects/GenericPlotController.h"
#include "workbench/views/objects/PropertySheetController.h"

namespace TeskPlus {

class ProfilePropertyPageController final : public PropertySheetController
{
public:
    ProfilePropertyPageController(const ControllerRequest& Request, ViewContext& Context);

protected:
    void AddExtras(int page) override;

private:
    GenericPlotController* plot_;
};

} // namespace TeskPlus
