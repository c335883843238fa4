// The bookkeeping that all controllers share: what the node says, and whose value is shown.
#pragma once

#include "workbench/logic/ControllerFactory.h"

namespace TeskPlus {

/// Holds the fields of a controller, and does nothing on a screen. A controller derives from it and overrides what it
/// shows.
class ControllerBase : public IController
{
public:
    /// Copies the name, type and flags of the node; values in rows start shown, objects never shown.
    ControllerBase(const ControllerRequest& Request, bool IsStructure);
    ControllerBase(const ControllerBase&) = delete;
    ControllerBase& operator=(const ControllerBase&) = delete;
    /// Takes itself off its mother.
    ~ControllerBase() override;

    void UpdateProperty() override {}
    void UpdateControl(bool, bool) override {}
    void UpdateChildControl() override {}
    void AddChild(IController& Child) override;
    void RemoveChild(IController& Child) override;
    void SetMotherController(IController* Mother) override { motherController_ = Mother; }
    void ShowCtrl(bool) override {}
    bool HideCtrl(bool Keep) override;
    void SetWindowPossiblity(bool) override {}
    bool IsExternalWidget() const override { return isExternalWidget_; }
    void SetIsExternalWidget(bool External) override { isExternalWidget_ = External; }
    bool IsProperty() const override { return isProperty_; }
    Operation* CurrentOperation() const override { return currentOperation_; }
    void SetCurrentOperation(Operation* Current) override { currentOperation_ = Current; }
    AnyVariable* CurrentVariable() const override { return currentVariable_; }
    void SetCurrentVariable(AnyVariable* Variable) override { currentVariable_ = Variable; }
    const std::wstring& VariableIdentifier() const override { return variableIdentifier_; }
    void SetVariableIdentifier(const std::wstring& Name) override { variableIdentifier_ = Name; }
    IController* Manipulator() const override { return manipulator_; }
    void SetManipulator(IController* Object) override { manipulator_ = Object; }
    IController* MotherController() const override { return motherController_; }
    int ControllerNode() const override { return argumentNode_; }
    const std::vector<IController*>* ControllerContainer() const override { return container_; }
    void SetControllerContainer(const std::vector<IController*>* Container) override { container_ = Container; }
    const std::wstring& ControllerName() const override { return argumentName_; }
    void SetControllerName(const std::wstring& Name) override { argumentName_ = Name; }
    std::uint32_t ControllerAttributes() const override { return argumentAttr_; }
    int ControllerType() const override { return argumentType_; }
    controllerState ControllerState() const override { return argumentState_; }
    void SetControllerState(controllerState State) override { argumentState_ = State; }
    ControlHandle Control() const override { return nullptr; }
    bool IsStructure() const override { return isStructure_; }

    const std::vector<IController*>& Children() const { return children_; }

protected:
    /// Tells of a change, with the controller's own operation and variable.
    void Notify(bool taken, bool mothers, bool dragging);

    Engine& engine_;
    AnyVariable* currentVariable_;
    Operation* currentOperation_ = nullptr;
    int argumentNode_, argumentIndex_;
    std::wstring argumentName_;
    int argumentType_;
    std::uint32_t argumentAttr_;
    controllerState argumentState_;
    std::wstring variableIdentifier_;
    bool isExternalWidget_ = false, isProperty_, isStructure_;
    const std::vector<IController*>* container_ = nullptr;
    IController *manipulator_ = nullptr, *motherController_ = nullptr;
    std::vector<IController*> children_;
    ControllerEventDelegate controllerEventDelegate_;
};

} // namespace TeskPlus
