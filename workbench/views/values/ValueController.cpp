#include "workbench/views/values/ValueController.h"

#include "engine/TypeNames.h"
#include "workbench/logic/Refusal.h"

namespace TeskPlus {

void ValueController::SetWidget(ValueWidget* widget)
{
    widget_ = widget;
    widget_->setObjectName(QString::fromWCharArray(Engine::VarNode(argumentNode_)->Identifier));
    widget_->Changed = [this](bool dragging) {
        isFromUser_ = true;
        Notify(false, false, dragging);
    };
}

AnyVariable* ValueController::Target()
{
    if (!isProperty_) return currentVariable_;
    if (!scratch_) {
        const TypeRow* row = FindType(argumentType_);
        if (!row) return nullptr;
        scratch_ = row->Make();
    }
    return scratch_.get();
}

AnyVariable* ValueController::Fetch()
{
    AnyVariable* target = Target();
    if (!isProperty_ || !target || !currentVariable_) return isProperty_ ? nullptr : target;
    return engine_.GetProperty(target, argumentNode_, currentVariable_) ? target : nullptr;
}

void ValueController::Store()
{
    if (!isProperty_ || !scratch_ || !currentVariable_) return;
    engine_.SetProperty(scratch_.get(), argumentNode_, currentVariable_);
    Refusal::Note();
}

int ValueController::ReadInteger()
{
    const TypeRow* row = FindType(argumentType_);
    const AnyVariable* variable = Fetch();
    return row && row->ReadInteger && variable ? row->ReadInteger(*variable) : 0;
}

void ValueController::WriteInteger(int value)
{
    const TypeRow* row = FindType(argumentType_);
    AnyVariable* variable = Target();
    if (!row || !row->WriteInteger || !variable) return;
    row->WriteInteger(*variable, value);
    Store();
}

Operation* ValueController::RetrieveOperation() const
{
    for (auto at = engine_.Operations.rbegin(); at != engine_.Operations.rend(); ++at)
        for (const Arg& argument : (*at)->Args)
            if (argument.Variable && argument.Variable->NameText == variableIdentifier_) return at->get();
    return nullptr;
}

int ValueController::RetrievePropertyValueFromNode(int node) const
{
    const Operation* operation = RetrieveOperation();
    if (!operation || node < 0) return 0;
    for (const Arg& argument : operation->Args)
        if (argument.Variable && Engine::VarNode(argument.Node)->Flags & attributeValue::Instance) {
            Var<int> value;
            return engine_.GetProperty(&value, node, argument.Variable) ? value.Value : 0;
        }
    return 0;
}

const Image* OverlayValueController::MotherImage() const
{
    if (!motherController_ || motherController_->ControllerType() != CodeOf(L"Image")) return nullptr;
    const auto* variable = dynamic_cast<const Var<Image>*>(motherController_->CurrentVariable());
    return variable ? &variable->Value : nullptr;
}

void OverlayValueController::RepaintMother() const
{
    if (motherController_) motherController_->UpdateControl(true, false);
}

void OverlayValueController::ShowCtrl(bool)
{
    if (!motherController_) return;
    motherController_->AddChild(*this);
    motherController_->ShowCtrl(false);
    RepaintMother();
}

bool OverlayValueController::HideCtrl(bool)
{
    if (argumentState_ >= controllerState::Shown) return false;
    if (motherController_) {
        motherController_->RemoveChild(*this);
        motherController_->HideCtrl(true);
        RepaintMother();
    }
    return true;
}

} // namespace TeskPlus
