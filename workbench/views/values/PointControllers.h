// Points: two numbers in a row, and a mark on the mother's picture that can be dragged.
#pragma once

#include "workbench/views/values/ValueController.h"

namespace TeskPlus {

/// How a point with fractions takes the pointer: any handle moves the whole of it.
extern const OverlayRow xyOverlay;

/// A point with fractions, of type `XY`.
class XYController final : public OverlayValueController, public IAnchor
{
public:
    explicit XYController(const ControllerRequest& Request);

    const OverlayRow* Overlay() const override { return &xyOverlay; }
    void UpdateProperty() override;
    void UpdateControl(bool Mode, bool Dragging) override;
    void UpdateChildControl() override;
    /// A new mother puts an anchor back to its place.
    void SetMotherController(IController* Mother) override;
    void ResetAnchor(int Width, int Height) override;

private:
    XYWidget& Widget() const { return *static_cast<XYWidget*>(widget_.data()); }
    /// The mother's picture; null for none, and for one that has no size yet.
    const Image* Picture() const;
    /// The place that the name of the point gives it on an image of that size.
    void ResetLocation(int Width, int Height);
};

/// A pixel, of type `Site`, that starts in the middle of the picture's window.
class SiteController final : public OverlayValueController
{
public:
    explicit SiteController(const ControllerRequest& Request);

    const OverlayRow* Overlay() const override;
    void UpdateProperty() override;
    void UpdateControl(bool Mode, bool Dragging) override;
    void UpdateChildControl() override;
    void SetMotherController(IController* Mother) override;

private:
    XYWidget& Widget() const { return *static_cast<XYWidget*>(widget_.data()); }
    void ShowSite();
    /// Back to the middle, if the window is another than the last one seen.
    void FollowWindow();

    int windowX_ = -1, windowY_ = -1, windowWidth_ = -1, windowHeight_ = -1;
};

} // namespace TeskPlus
