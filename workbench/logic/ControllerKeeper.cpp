#include "workbench/logic/ControllerKeeper.h"

#include <cstddef>
#include <set>

namespace TeskPlus {

namespace {

void ClearVisible(Operation& operation, const std::wstring& name)
{
    for (Arg& argument : operation.Args)
        if (argument.Variable && argument.Variable->NameText == name) argument.Visible = false;
}

} // namespace

ControllerKeeper::~ControllerKeeper()
{
    // A picture may go before what is drawn on it.
    for (const auto& controller : controllers_)
        controller->SetMotherController(nullptr);
}

IController* ControllerKeeper::Find(const std::wstring& Name) const
{
    for (const auto& controller : controllers_)
        if (controller->VariableIdentifier() == Name) return controller.get();
    return nullptr;
}

IController* ControllerKeeper::Find(const AnyVariable* Variable) const
{
    return Variable && Variable->Name ? Find(Variable->NameText) : nullptr;
}

IController* ControllerKeeper::Find(const std::wstring& Name, const ControllerList& Created) const
{
    if (IController* known = Find(Name)) return known;
    for (const auto& controller : Created)
        if (controller->VariableIdentifier() == Name) return controller.get();
    return nullptr;
}

void ControllerKeeper::Keep(ControllerList& Created)
{
    for (auto& controller : Created)
        controllers_.push_back(std::move(controller));
    Created.clear();
}

void ControllerKeeper::TakeOver(IController& Controller, Operation& Owner, Arg& Argument)
{
    if (Operation* former = Controller.CurrentOperation()) ClearVisible(*former, Controller.VariableIdentifier());
    Argument.Visible = true;
    Controller.SetCurrentOperation(&Owner);
    Controller.SetCurrentVariable(Argument.Variable);
}

void ControllerKeeper::Repoint(IController& Controller)
{
    Controller.SetCurrentOperation(nullptr);
    for (const auto& operation : engine_.Operations)
        for (const auto* arguments : {&operation->Args, &operation->Held})
            for (const Arg& argument : *arguments)
                if (argument.Variable && argument.Variable->NameText == Controller.VariableIdentifier()) {
                    Controller.SetCurrentOperation(operation.get());
                    Controller.SetCurrentVariable(argument.Variable);
                }
}

void ControllerKeeper::RepointFrom(const Operation* Former)
{
    for (const auto& controller : controllers_)
        if (controller->CurrentOperation() == Former) Repoint(*controller);
}

void ControllerKeeper::RepointGone(const std::function<bool(const AnyVariable*)>& IsGone)
{
    for (const auto& controller : controllers_)
        if (IsGone(controller->CurrentVariable())) Repoint(*controller);
}

/// The other controllers let go of one that is about to be destroyed.
void ControllerKeeper::Detach(IController& controller)
{
    for (const auto& other : controllers_) {
        if (other.get() == &controller) continue;
        if (other->Manipulator() == &controller) other->SetManipulator(nullptr);
        if (other->MotherController() == &controller) other->SetMotherController(nullptr);
        other->RemoveChild(controller);
    }
}

void ControllerKeeper::DeleteUnused(const std::function<void(IController&)>& Forget)
{
    std::set<std::wstring> names;
    for (const AnyVariable* variable : engine_.GetVariables(-1, 0, true))
        names.insert(variable->NameText);
    for (std::size_t i = controllers_.size(); i-- > 0;) {
        if (names.count(controllers_[i]->VariableIdentifier())) continue;
        Forget(*controllers_[i]);
        Detach(*controllers_[i]);
        controllers_.erase(controllers_.begin() + static_cast<std::ptrdiff_t>(i));
    }
}

void ControllerKeeper::PullPinned(const Operation* Owner, const AnyVariable* Variable)
{
    for (const auto& controller : controllers_)
        if (IsPinned(controller->ControllerState()) && controller->CurrentOperation() == Owner &&
            controller->CurrentVariable() == Variable) {
            controller->UpdateProperty();
            return;
        }
}

void ControllerKeeper::PushChanged(bool Dragging)
{
    for (const auto& controller : controllers_) {
        AnyVariable* variable = controller->CurrentVariable();
        if (!variable || !variable->Changed || (controller->ControllerAttributes() & attributeValue::Value)) continue;
        controller->UpdateControl(false, Dragging);
        variable->Changed = false;
    }
}

} // namespace TeskPlus
