#include "workbench/views/picture/GenericChildController.h"

#include "foundation/Graph.h"

namespace TeskPlus {

GenericChildController::GenericChildController(const ControllerRequest& Request, const OverlayRow* row)
    : ControllerBase(Request, true), row_(row)
{}

void GenericChildController::Repaint()
{
    if (motherController_) motherController_->UpdateControl(true, false);
}

void GenericChildController::FollowPicture(bool isNew)
{
    // The mother may be an overlay herself.
    const Image* picture = nullptr;
    for (const IController* mother = motherController_; mother && !picture; mother = mother->MotherController())
        picture = PictureOf(mother);
    if (!picture || picture->Type == Undefined || picture->Width < 1) {
        if (isNew && motherController_ && row_ && row_->StartsWithoutPicture && currentVariable_)
            row_->Start(*currentVariable_, Image());
        return;
    }
    if (Image* framed = ObjectOf<Image>(motherController_); framed && row_ && row_->Frame && currentVariable_)
        row_->Frame(*currentVariable_, *this, *framed);
    const bool changed = picture->X != windowX_ || picture->Y != windowY_ || picture->Width != windowWidth_ ||
                         picture->Height != windowHeight_;
    windowX_ = picture->X;
    windowY_ = picture->Y;
    windowWidth_ = picture->Width;
    windowHeight_ = picture->Height;
    if (row_ && row_->Start && currentVariable_ && (isNew || (changed && row_->FollowsWindow)))
        row_->Start(*currentVariable_, *picture);
}

void GenericChildController::UpdateProperty()
{
    FollowPicture(false);
}

void GenericChildController::UpdateControl(bool, bool)
{
    Repaint();
}

void GenericChildController::UpdateChildControl()
{
    if (!motherController_) return;
    if (row_ && currentVariable_) {
        DrawMark({row_->Color, row_->Draw});
        for (const OverlayMark& mark : row_->Marks)
            DrawMark(mark);
    }
    for (IController* child : children_)
        child->UpdateChildControl();
}

void GenericChildController::DrawMark(const OverlayMark& mark)
{
    if (!mark.Draw || (mark.IsShown && !mark.IsShown(*currentVariable_, *this))) return;
    if (mark.Color != Current) Graph::LineColor = Graph::PointColor = mark.Color;
    mark.Draw(*currentVariable_, *this);
}

void GenericChildController::SetMotherController(IController* Mother)
{
    if (Mother == motherController_) return;
    if (motherController_) motherController_->RemoveChild(*this);
    ControllerBase::SetMotherController(Mother);
    FollowPicture(true);
}

void GenericChildController::AddChild(IController& Child)
{
    ControllerBase::AddChild(Child);
    Repaint();
}

void GenericChildController::RemoveChild(IController& Child)
{
    ControllerBase::RemoveChild(Child);
    Repaint();
}

void GenericChildController::ShowCtrl(bool BringToFront)
{
    if (!motherController_) return;
    motherController_->AddChild(*this);
    motherController_->ShowCtrl(BringToFront);
    Repaint();
}

bool GenericChildController::HideCtrl(bool)
{
    if (argumentState_ >= controllerState::Shown) return false;
    if (motherController_) {
        motherController_->RemoveChild(*this);
        motherController_->HideCtrl(true);
        Repaint();
    }
    return true;
}

} // namespace TeskPlus
