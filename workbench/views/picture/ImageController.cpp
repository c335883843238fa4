#include "workbench/views/picture/ImageController.h"

#include "engine/TypeNames.h"
#include "foundation/Status.h"
#include "image/Source.h"
#include "workbench/views/Text.h"
#include "workbench/views/picture/BoxCursor.h"
#include "workbench/views/picture/CopyText.h"
#include "workbench/views/picture/GraphSurface.h"

#include <QMenu>

#include <algorithm>
#include <cmath>
#include <cwchar>

namespace TeskPlus {

namespace {

/// A new image is shown as large as it fits here.
constexpr double roomWidth = 768, roomHeight = 576;

template <typename... Values>
std::wstring Formatted(const wchar_t* format, Values... values)
{
    wchar_t text[80];
    const int length = std::swprintf(text, std::size(text), format, values...);
    return length > 0 ? std::wstring(text) : std::wstring();
}

} // namespace

int StartingZoom(int StoreWidth, int StoreHeight)
{
    const double fit = std::min(roomWidth / std::max(StoreWidth, 1), roomHeight / std::max(StoreHeight, 1));
    return std::clamp(static_cast<int>(std::floor(std::log2(fit))), CustomImageForm::smallestZoom,
                      CustomImageForm::largestZoom);
}

std::wstring PixelText(const Image& Picture, int X, int Y)
{
    if (X < 0 || Y < 0 || X >= Picture.StoreWidth || Y >= Picture.StoreHeight) return {};
    // Pixels are read inside the window; the pointer goes beyond it.
    Image whole;
    whole.ShallowCopy(Picture, false);
    whole.Window();
    switch (Picture.Type) {
    case Gray:
        return Formatted(L"Gray %03d", int{whole.PixelGray(X, Y)});
    case Gray16:
        return Formatted(L"Gray %05d", int{whole.PixelGray16(X, Y)});
    case Grad: {
        const GradPixel p = whole.PixelGrad(X, Y);
        return Formatted(L"Grad %d,%d", int{p.X}, int{p.Y});
    }
    case Rgb: {
        const RgbPixel p = whole.PixelRgb(X, Y);
        return Formatted(L"RGB %03d:%03d:%03d", int{p.Red}, int{p.Green}, int{p.Blue});
    }
    case Rgba: {
        const RgbaPixel p = whole.PixelRgba(X, Y);
        return Formatted(L"RGB %03d:%03d:%03d:%03d", int{p.Red}, int{p.Green}, int{p.Blue}, int{p.Alpha});
    }
    case Gray1:
        return whole.PixelGray1(X, Y) ? L"Binary 1" : L"Binary 0";
    default:
        return {};
    }
}

ImageController::ImageController(const ControllerRequest& Request) : ControllerBase(Request, true), form_(*this)
{
    form_.ZoomChanged = [this](int exponent) { ChangeZoom(exponent); };
    form_.WindowChanged = [this](bool hasWindow) { ChangeWindow(hasWindow); };
    // What has no selector to say otherwise may be windowed.
    isWindowPossible_ = !(argumentAttr_ & attributeValue::Out);
    UpdateControl(false, false);
}

ImageController::~ImageController() = default;

bool ImageController::IsVoid() const
{
    const Image* image = Picture();
    return !image || image->Type == Undefined || image->Width < 1;
}

void ImageController::UpdateControl(bool, bool)
{
    if (IsVoid()) return;
    const Image& image = *Picture();
    if (image.StoreWidth != previousImageWidth_ || image.StoreHeight != previousImageHeight_) {
        previousImageWidth_ = image.StoreWidth;
        previousImageHeight_ = image.StoreHeight;
        form_.SetZoom(StartingZoom(image.StoreWidth, image.StoreHeight));
        zoom_ = std::exp2(form_.Zoom());
        automaticResizing_ = true;
    }
    form_.SetSize(static_cast<int>(image.StoreWidth * zoom_), static_cast<int>(image.StoreHeight * zoom_),
                  automaticResizing_);
    ShowWindowBox();
    ShowPixel();
    form_.Refresh();
}

void ImageController::ChangeZoom(int exponent)
{
    zoom_ = std::exp2(exponent);
    automaticResizing_ = true;
    // The pixel under the pointer is another one now; the next move tells which.
    PixelX = PixelY = -1;
    UpdateControl(false, false);
}

void ImageController::ShowWindowBox()
{
    const Image* image = Picture();
    form_.SetWindowBox(isWindowPossible_, image && image->Type != Undefined && image->HasWindow());
}

void ImageController::ChangeWindow(bool hasWindow)
{
    Image* image = Picture();
    if (!image || image->Type == Undefined) {
        ShowWindowBox();
        return;
    }
    const int width = image->StoreWidth, height = image->StoreHeight;
    if (hasWindow)
        image->Window(width / 4, height / 4, std::max(width / 2, 1), std::max(height / 2, 1));
    else {
        image->Window();
        form_.SetCursor(Qt::ArrowCursor);
    }
    Run(currentOperation_, currentVariable_, false);
    ShowWindowBox();
    form_.Refresh();
}

void ImageController::SetWindowPossiblity(bool Possible)
{
    isWindowPossible_ = Possible;
    ShowWindowBox();
}

void ImageController::AddChild(IController& Child)
{
    if (std::find(children_.begin(), children_.end(), &Child) != children_.end()) return;
    if (Engine::Trace)
        std::fprintf(Engine::Trace, "ImageController::AddChild %s %s ",
                     Narrow(typeString[Child.ControllerType()]).c_str(),
                     Narrow(Child.ControllerName().c_str()).c_str());
    children_.push_back(&Child);
    form_.Refresh();
}

void ImageController::RemoveChild(IController& Child)
{
    ControllerBase::RemoveChild(Child);
    if (selectedChildController_ == &Child) selectedChildController_ = nullptr;
    form_.Refresh();
}

bool ImageController::IsPinnedByAny() const
{
    return IsPinned(argumentState_) || std::any_of(children_.begin(), children_.end(), [](const IController* child) {
               return IsPinned(child->ControllerState());
           });
}

void ImageController::ShowCtrl(bool)
{
    ShowWindowBox();
    form_.Refresh();
}

bool ImageController::HideCtrl(bool Keep)
{
    if (!Keep) {
        const auto unpinned = [&] {
            return std::find_if(children_.begin(), children_.end(),
                                [](const IController* child) { return !IsPinned(child->ControllerState()); });
        };
        // Hiding takes the child off the list, so each search starts from its beginning.
        for (auto child = unpinned(); child != children_.end(); child = unpinned()) {
            IController& hidden = **child;
            hidden.SetControllerState(controllerState::Hidden);
            hidden.HideCtrl(false);
            RemoveChild(hidden);
        }
    }
    return argumentState_ < controllerState::Shown && children_.empty();
}

void ImageController::DrawPicture(CairoTarget& Surface, TargetPoint Corner, double PixelRatio)
{
    Surface.SetCorner(Corner);
    if (IsVoid()) {
        const QColor shade = form_.Picture()->palette().color(QPalette::Mid);
        Surface.SetCorner({0, 0});
        Surface.FillRectangle(0, 0, Surface.Width(), Surface.Height(),
                              RgbPixel(shade.red(), shade.green(), shade.blue()));
        return;
    }
    const Image& image = *Picture();
    const GraphDrawing drawing(Surface, zoom_ * PixelRatio, PixelRatio);
    image.Draw(false);
    if (image.HasWindow()) {
        Graph::LineColor = Blue;
        image.DrawWindow(true);
    }
    for (IController* child : std::vector<IController*>(children_)) {
        const GraphSettings kept(Graph::Zoom);
        child->UpdateChildControl();
    }
}

void ImageController::ShowPixel()
{
    if (PixelX < 0 || IsVoid()) {
        form_.SetCursorText({});
        return;
    }
    form_.SetCursorText(Qt16(PixelText(*Picture(), PixelX, PixelY) + Formatted(L" @ (%d,%d)", PixelX, PixelY)));
}

void ImageController::PointerLeft()
{
    PixelX = PixelY = -1;
    ShowPixel();
}

void ImageController::PointerMoved(QPoint At)
{
    if (IsVoid()) return;
    PixelX = static_cast<int>(At.x() / zoom_);
    PixelY = static_cast<int>(At.y() / zoom_);
    if (isButtonLeftDown)
        Drag(At);
    else
        FindChild(At);
    ShowPixel();
}

bool ImageController::HoverChild(IController& child, QPoint at)
{
    const OverlayRow* row = FindOverlay(child);
    if (!row || !row->Hit) return false;
    const GraphSettings settings(zoom_);
    const OverlayHit hit = row->Hit(child, at.x(), at.y());
    if (hit.IsHit && hit.Cursor) form_.SetCursor(*hit.Cursor);
    return hit.IsHit;
}

void ImageController::FindChild(QPoint at)
{
    selectedChildController_ = nullptr;
    for (IController* child : children_)
        if (HoverChild(*child, at)) {
            selectedChildController_ = child;
            return;
        }
    HoverWindow(at);
}

void ImageController::HoverWindow(QPoint at)
{
    const Image* image = Picture();
    if (!image || !image->HasWindow()) {
        form_.SetCursor(Qt::ArrowCursor);
        return;
    }
    const GraphSettings settings(zoom_);
    form_.SetCursor(CursorOfBox(image->HitHandle(at.x(), at.y())));
}

void ImageController::LeftPressed(QPoint At)
{
    if (IsVoid()) return;
    // A press without a move before it, as on a touch screen, finds what is there.
    FindChild(At);
    isButtonLeftDown = true;
    isWindowHeld_ = false;
    childrenOperation_ = nullptr;
    if (!selectedChildController_) {
        isWindowHeld_ = Picture()->HasWindow() && Image::Handle != NoHandle;
        if (isWindowHeld_) form_.SetCursor(Qt::CrossCursor);
        return;
    }
    IController& child = *selectedChildController_;
    const OverlayRow* row = FindOverlay(child);
    if (!row) return;
    if (row->Press) {
        const GraphSettings settings(zoom_);
        if (!row->Press(child, At.x(), At.y())) return;
        childrenOperation_ = child.CurrentOperation();
        Run(childrenOperation_, child.CurrentVariable(), true);
    } else if (row->IsHeld && row->IsHeld(child)) {
        form_.SetCursor(Qt::CrossCursor);
        const IController* dragged = row->Dragged ? row->Dragged(child) : &child;
        childrenOperation_ = dragged ? dragged->CurrentOperation() : nullptr;
    }
}

void ImageController::Drag(QPoint at)
{
    if (selectedChildController_) {
        IController& child = *selectedChildController_;
        const OverlayRow* row = FindOverlay(child);
        if (!childrenOperation_ || !row || !row->Drag) return;
        {
            const GraphSettings settings(zoom_);
            row->Drag(child, *Picture(), at.x(), at.y());
        }
        Run(childrenOperation_, child.CurrentVariable(), false);
    } else if (isWindowHeld_) {
        {
            const GraphSettings settings(zoom_);
            Picture()->Drag(at.x(), at.y());
        }
        Run(currentOperation_, currentVariable_, false);
    }
}

void ImageController::LeftReleased(QPoint At)
{
    isButtonLeftDown = isWindowHeld_ = false;
    if (IsVoid()) return;
    const OverlayRow* row = selectedChildController_ ? FindOverlay(*selectedChildController_) : nullptr;
    if (!selectedChildController_)
        HoverWindow(At);
    else if (row && row->HitsOnRelease && !HoverChild(*selectedChildController_, At))
        form_.SetCursor(Qt::ArrowCursor);
}

/// A selection hands over what the library knows already, and may change who draws on which picture.
void ImageController::Run(Operation* operation, AnyVariable* variable, bool selected)
{
    if (controllerEventDelegate_) controllerEventDelegate_(operation, variable, selected, selected, false, false);
    // Where runs are blocked nothing else tells the picture.
    form_.Refresh();
}

void ImageController::MenuAsked(QPoint At)
{
    if (IsVoid()) return;
    PixelX = static_cast<int>(At.x() / zoom_);
    PixelY = static_cast<int>(At.y() / zoom_);
    auto* menu = new QMenu(form_.Panel());
    menu->setObjectName("PictureMenu");
    menu->setAttribute(Qt::WA_DeleteOnClose);
    // The pixel is that of the press, wherever the pointer goes in the menu.
    const int x = PixelX, y = PixelY;
    menu->addAction(QObject::tr("&Copy Image to Clipboard"), [this] {
        if (!IsVoid()) Source::CopyToClipboard(*Picture());
    });
    menu->addAction(QObject::tr("&Copy Window to Clipboard"), [this] {
        Source::CopyToClipboard(static_cast<QWidget*>(static_cast<QScrollArea*>(form_.Panel())->viewport()));
    });
    menu->addAction(QObject::tr("&Copy Pixel to Clipboard"), [this, x, y] {
        if (!IsVoid()) CopyText(PixelText(*Picture(), x, y));
    });
    menu->addAction(QObject::tr("&Copy Coordinates to Clipboard"), [x, y] { CopyText(Formatted(L"(%d, %d)", x, y)); });
    menu->popup(form_.Picture()->mapToGlobal(At));
}

} // namespace TeskPlus
