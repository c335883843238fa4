#include "workbench/views/objects/ImagePropertyPageController.h"

#include <QHBoxLayout>

namespace TeskPlus {

namespace {
constexpr const wchar_t* bitmapPage = L"Bitmap";
}

ImagePropertyPageController::ImagePropertyPageController(const ControllerRequest& Request, ViewContext& Context)
    : PropertySheetController(Request, Context, sheetMenu::Tabs)
{
    auto picture = std::make_unique<ImageController>(Request);
    picture_ = picture.get();
    InsertExternalController(std::move(picture));
    Window().Bar().addWidget(picture_->Form().ToolBar(), 1);
    picture_->Form().SizeChanged = [this] { Fit(); };
    QObject::connect(&Window(), &ToolWindow::Resized, &Window(), [this] {
        if (!ShowsPicture()) return;
        picture_->StopAutomaticResizing();
        chosen_ = Window().size();
    });
    AddPage(bitmapPage);
    BuildPropertySheet(NumPages() - 1);
}

bool ImagePropertyPageController::ShowsPicture() const
{
    return GetSelectedPageName() == bitmapPage;
}

void ImagePropertyPageController::AddExtras(int)
{
    if (ShowsPicture()) AddControlFromExternalController(picture_->Form().Panel(), true);
}

void ImagePropertyPageController::Fit()
{
    // Rows take the room that they need; the picture behind them gets back what the user has given it.
    if (!ShowsPicture() || picture_->IsAutomaticResizing())
        PropertySheetController::Fit();
    else if (chosen_.isValid())
        Window().resize(chosen_);
}

void ImagePropertyPageController::UpdateControl(bool Mode, bool Dragging)
{
    if (Mode)
        picture_->UpdateControl(Mode, Dragging);
    else
        PropertySheetController::UpdateControl(Mode, Dragging);
}

} // namespace TeskPlus
