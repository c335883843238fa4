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
    QObject::connect(&Window(), &ToolWindow::Resized, &Window(), [this] { picture_->StopAutomaticResizing(); });
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
    // A page of rows takes what room the picture has left it.
    if (ShowsPicture() && picture_->IsAutomaticResizing()) PropertySheetController::Fit();
}

void ImagePropertyPageController::UpdateControl(bool Mode, bool Dragging)
{
    if (Mode)
        picture_->UpdateControl(Mode, Dragging);
    else
        PropertySheetController::UpdateControl(Mode, Dragging);
}

} // namespace TeskPlus
