#include "workbench/logic/MultiController.h"

#include <algorithm>
#include <utility>

namespace TeskPlus {

void MultiController::Add(std::unique_ptr<IController> Member)
{
    if (!Member) return;
    members_.push_back(Member.get());
    owned_.push_back(std::move(Member));
    members_.back()->SetControllerContainer(&members_);
}

void MultiController::UpdateProperty()
{
    for (IController* member : members_)
        member->UpdateProperty();
}

void MultiController::UpdateControl(bool, bool Dragging)
{
    for (IController* member : members_)
        member->UpdateControl(false, Dragging);
}

void MultiController::UpdateChildControl()
{
    for (IController* member : members_)
        member->UpdateChildControl();
}

void MultiController::AddChild(IController& Child)
{
    for (IController* member : members_)
        member->AddChild(Child);
}

void MultiController::RemoveChild(IController& Child)
{
    for (IController* member : members_)
        member->RemoveChild(Child);
}

void MultiController::SetMotherController(IController* Mother)
{
    ControllerBase::SetMotherController(Mother);
    for (IController* member : members_)
        member->SetMotherController(Mother);
}

void MultiController::ShowCtrl(bool BringToFront)
{
    for (IController* member : members_)
        member->ShowCtrl(BringToFront);
}

bool MultiController::HideCtrl(bool Keep)
{
    return std::all_of(members_.begin(), members_.end(), [&](IController* member) { return member->HideCtrl(Keep); });
}

void MultiController::SetWindowPossiblity(bool Possible)
{
    for (IController* member : members_)
        member->SetWindowPossiblity(Possible);
}

void MultiController::SetIsExternalWidget(bool External)
{
    ControllerBase::SetIsExternalWidget(External);
    for (IController* member : members_)
        member->SetIsExternalWidget(External);
}

void MultiController::SetCurrentOperation(Operation* Current)
{
    ControllerBase::SetCurrentOperation(Current);
    for (IController* member : members_)
        member->SetCurrentOperation(Current);
}

void MultiController::SetCurrentVariable(AnyVariable* Variable)
{
    ControllerBase::SetCurrentVariable(Variable);
    for (IController* member : members_)
        member->SetCurrentVariable(Variable);
}

void MultiController::SetVariableIdentifier(const std::wstring& Name)
{
    ControllerBase::SetVariableIdentifier(Name);
    for (IController* member : members_)
        member->SetVariableIdentifier(Name);
}

void MultiController::SetControllerState(controllerState State)
{
    ControllerBase::SetControllerState(State);
    for (IController* member : members_)
        member->SetControllerState(State);
}

void MultiController::SetManipulator(IController* Object)
{
    ControllerBase::SetManipulator(Object);
    for (IController* member : members_)
        member->SetManipulator(Object);
}

ControlHandle MultiController::Control() const
{
    return members_.empty() ? nullptr : members_.front()->Control();
}

IController* SheetControllerOf(IController* Controller)
{
    if (dynamic_cast<IPropertySheet*>(Controller)) return Controller;
    if (const auto* several = dynamic_cast<MultiController*>(Controller))
        for (IController* member : several->Members())
            if (dynamic_cast<IPropertySheet*>(member)) return member;
    return nullptr;
}

IPropertySheet* SheetOf(IController* Controller)
{
    return dynamic_cast<IPropertySheet*>(SheetControllerOf(Controller));
}

} // namespace TeskPlus
