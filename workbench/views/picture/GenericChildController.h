// An object that is drawn on the picture of another variable, and has no widget.
#pragma once

#include "workbench/logic/ControllerBase.h"
#include "workbench/views/picture/Overlay.h"

namespace TeskPlus {

class GenericChildController : public ControllerBase, public IOverlay
{
public:
    GenericChildController(const ControllerRequest& Request, const OverlayRow* row);

    const OverlayRow* Overlay() const override { return row_; }
    /// Puts the object to its starting place where the picture asks for it.
    void UpdateProperty() override;
    /// Has the mother repaint.
    void UpdateControl(bool Mode, bool Dragging) override;
    /// Draws the object, and what is drawn on it.
    void UpdateChildControl() override;
    void SetMotherController(IController* Mother) override;
    void AddChild(IController& Child) override;
    void RemoveChild(IController& Child) override;
    void ShowCtrl(bool BringToFront) override;
    bool HideCtrl(bool Keep) override;

private:
    void Repaint();
    void DrawMark(const OverlayMark& mark);
    void FollowPicture(bool isNew);

    const OverlayRow* row_;
    int windowX_ = -1, windowY_ = -1, windowWidth_ = -1, windowHeight_ = -1; ///< of the picture, as last seen
};

} // namespace TeskPlus
