// Several controllers for one object: an overlay, a plot, a sheet.
#pragma once

#include "workbench/logic/ControllerBase.h"
#include "workbench/logic/ControllerGroup.h"

namespace TeskPlus {

/// Passes what it is told on to its members, in order; the overlay stands first.
class MultiController final : public ControllerBase
{
public:
    explicit MultiController(const ControllerRequest& Request) : ControllerBase(Request, true) {}

    /// Takes a member over, and makes itself its container.
    void Add(std::unique_ptr<IController> Member);
    const std::vector<IController*>& Members() const { return members_.Members(); }

    void UpdateProperty() override;
    /// Passes mode false, whatever it is given.
    void UpdateControl(bool Mode, bool Dragging) override;
    void UpdateChildControl() override;
    void AddChild(IController& Child) override;
    void RemoveChild(IController& Child) override;
    void SetMotherController(IController* Mother) override;
    void ShowCtrl(bool BringToFront) override;
    /// Asks the members in order, and stops at the first that refuses.
    bool HideCtrl(bool Keep) override;
    void SetWindowPossiblity(bool Possible) override;
    void SetIsExternalWidget(bool External) override;
    bool IsProperty() const override { return false; }
    void SetCurrentOperation(Operation* Current) override;
    void SetCurrentVariable(AnyVariable* Variable) override;
    void SetVariableIdentifier(const std::wstring& Name) override;
    void SetControllerState(controllerState State) override;
    void SetManipulator(IController* Object) override;
    ControlHandle Control() const override;

private:
    ControllerGroup members_;
};

/// The sheet of a controller: itself, or a member; null where there is none. Likewise the controller that is the sheet.
IPropertySheet* SheetOf(IController* Controller);
IController* SheetControllerOf(IController* Controller);

} // namespace TeskPlus
