// The window of an image: its picture, and its properties.
#pragma once

#include "workbench/views/objects/PropertySheetController.h"
#include "workbench/views/picture/ImageController.h"

namespace TeskPlus {

/// The mother of the overlays on its picture.
class ImagePropertyPageController final : public PropertySheetController
{
public:
    ImagePropertyPageController(const ControllerRequest& Request, ViewContext& Context);

    /// With `Mode`, from an overlay, only the picture is shown anew.
    void UpdateControl(bool Mode, bool Dragging) override;
    void AddChild(IController& Child) override { picture_->AddChild(Child); }
    void RemoveChild(IController& Child) override { picture_->RemoveChild(Child); }

    ImageController& Picture() { return *picture_; }

protected:
    void AddExtras(int page) override;
    bool ShowsPinned() const override { return picture_->IsPinnedByAny(); }
    void Fit() override;

private:
    bool ShowsPicture() const;

    ImageController* picture_;
    QSize chosen_; ///< the size that the user gave to the window of the picture
};

} // namespace TeskPlus
