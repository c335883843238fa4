#include "workbench/views/objects/ProfilePropertyPageController.h"

namespace TeskPlus {

namespace {
constexpr const wchar_t* plotPage = L"Plot";
}

ProfilePropertyPageController::ProfilePropertyPageController(const ControllerRequest& Request, ViewContext& Context)
    : PropertySheetController(Request, Context, sheetMenu::Tabs)
{
    auto plot = std::make_unique<GenericPlotController>(Request, *FindPlot(argumentType_), nullptr);
    plot_ = plot.get();
    InsertExternalController(std::move(plot));
    AddPage(plotPage);
    BuildPropertySheet(NumPages() - 1);
}

void ProfilePropertyPageController::AddExtras(int)
{
    if (GetSelectedPageName() == plotPage) AddControlFromExternalController(plot_->Picture(), true);
}

} // namespace TeskPlus
