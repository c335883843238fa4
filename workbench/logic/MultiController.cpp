#include "workbench/logic/MultiController.h"

#include <algorithm>
#include <utility>

namespace TeskPlus {

void MultiController::Add(std::unique_ptr<IController> Member)
{
    if (!Member) return;
    members_.Add(std::move(Member)).SetControllerContainer(&Members());
}

void MultiController::UpdateProperty()
{
    members_.Tell(&IController::UpdateProperty);
}

void MultiController::UpdateControl(bool, bool Dragging)
{
    members_.Tell(&IController::UpdateControl, false, Dragging);
}

void MultiController::UpdateChildControl()
{
    members_.Tell(&IController::UpdateChildControl);
}

void MultiController::AddChild(IController& Child)
{
    members_.Tell(&IController::AddChild, Child);
}

void MultiController::RemoveChild(IController& Child)
{
    members_.Tell(&IController::RemoveChild, Child);
}

void MultiController::SetMotherController(IController* Mother)
{
    ControllerBase::SetMotherController(Mother);
    members_.Tell(&IController::SetMotherController, Mother);
}

void MultiController::ShowCtrl(bool BringToFront)
{
    members_.Tell(&IController::ShowCtrl, BringToFront);
}

bool MultiController::HideCtrl(bool Keep)
{
    return std::all_of(Members().begin(), Members().end(), [&](IController* member) { return member->HideCtrl(Keep); });
}

void MultiController::SetWindowPossiblity(bool Possible)
{
    members_.Tell(&IController::SetWindowPossiblity, Possible);
}

void MultiController::SetIsExternalWidget(bool External)
{
    ControllerBase::SetIsExternalWidget(External);
    members_.Tell(&IController::SetIsExternalWidget, External);
}

void MultiController::SetCurrentOperation(Operation* Current)
{
    ControllerBase::SetCurrentOperation(Current);
    members_.Tell(&IController::SetCurrentOperation, Current);
}

void MultiController::SetCurrentVariable(AnyVariable* Variable)
{
    ControllerBase::SetCurrentVariable(Variable);
    members_.Tell(&IController::SetCurrentVariable, Variable);
}

void MultiController::SetVariableIdentifier(const std::wstring& Name)
{
    ControllerBase::SetVariableIdentifier(Name);
    members_.Tell(&IController::SetVariableIdentifier, Name);
}

void MultiController::SetControllerState(controllerState State)
{
    ControllerBase::SetControllerState(State);
    members_.Tell(&IController::SetControllerState, State);
}

void MultiController::SetManipulator(IController* Object)
{
    ControllerBase::SetManipulator(Object);
    members_.Tell(&IController::SetManipulator, Object);
}

ControlHandle MultiController::Control() const
{
    return Members().empty() ? nullptr : Members().front()->Control();
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
