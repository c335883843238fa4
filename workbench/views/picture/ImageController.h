// The picture of an image variable: its zoom, its window, the pixel under the pointer, and the overlays of other
// variables, which are drawn and dragged on it.
#pragma once

#include "workbench/logic/ControllerBase.h"
#include "workbench/views/picture/CustomImageForm.h"
#include "workbench/views/picture/Overlay.h"

namespace TeskPlus {

class ImageController final : public ControllerBase, private IPictureOwner
{
public:
    explicit ImageController(const ControllerRequest& Request);
    ~ImageController() override;

    void UpdateControl(bool Mode, bool Dragging) override;
    void AddChild(IController& Child) override;
    void RemoveChild(IController& Child) override;
    void ShowCtrl(bool BringToFront) override;
    /// Unless `Keep`, unpinned overlays go first; hides only where none is left.
    bool HideCtrl(bool Keep) override;
    void SetWindowPossiblity(bool Possible) override;
    ControlHandle Control() const override { return form_.Panel(); }

    CustomImageForm& Form() { return form_; }
    /// Whether it, or an overlay on it, stays on the screen whatever operation is selected.
    bool IsPinnedByAny() const;
    /// From here on the window keeps the size that the user gave it.
    void StopAutomaticResizing() { automaticResizing_ = false; }
    bool IsAutomaticResizing() const { return automaticResizing_; }

private:
    void DrawPicture(CairoTarget& Surface, TargetPoint Corner, double PixelRatio) override;
    void PointerMoved(QPoint At) override;
    void LeftPressed(QPoint At) override;
    void LeftReleased(QPoint At) override;
    void PointerLeft() override;
    void MenuAsked(QPoint At) override;

    Image* Picture() const { return ObjectOf<Image>(this); }
    bool IsVoid() const;
    void ChangeZoom(int exponent);
    void ChangeWindow(bool hasWindow);
    void ShowWindowBox();
    void ShowPixel();
    /// The overlay under the pointer becomes the selected one, or none.
    void FindChild(QPoint at);
    bool HoverChild(IController& child, QPoint at);
    void HoverWindow(QPoint at);
    void Drag(QPoint at);
    void Run(Operation* operation, AnyVariable* variable, bool selected);

    CustomImageForm form_;
    double zoom_ = 1.0;
    IController* selectedChildController_ = nullptr;
    Operation* childrenOperation_ = nullptr;
    int PixelX = -1, PixelY = -1; ///< -1 while the pointer is elsewhere
    bool isButtonLeftDown = false;
    bool isWindowHeld_ = false; ///< the button went down on the image's own window
    bool automaticResizing_ = true;
    int previousImageWidth_ = -1, previousImageHeight_ = -1;
    bool isWindowPossible_ = false;
};

/// The exponent of the zoom at which an image is first shown.
int StartingZoom(int StoreWidth, int StoreHeight);
/// What the cursor label tells of a pixel, in store coordinates; empty for the types that have no text.
std::wstring PixelText(const Image& Picture, int X, int Y);

} // namespace TeskPlus
