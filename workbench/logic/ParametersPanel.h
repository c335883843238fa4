// The rows that pin a value or a property of any operation, whichever is selected.
#pragma once

#include "workbench/logic/CommandPanel.h"
#include "workbench/logic/ControllerFactory.h"

namespace TeskPlus {

struct ParameterRow
{
    Operation* Owner = nullptr;
    std::unique_ptr<IController> Controller; ///< a copy of its own, `IsExternalWidget`
    int Node = -1;
    bool IsProperty = false;
    std::wstring Help;
};

class ParametersPanel
{
public:
    ParametersPanel(Engine& Engine, IOperationViews& Views, const ControllerFactory& Factory)
        : engine_(Engine), views_(Views), factory_(Factory)
    {}

    /// Pins a value, or with `IsProperty` a property of the object that the controller shows. False if no controller
    /// can be made.
    bool AddController(Operation& Owner, IController& Controller, int Node, bool IsProperty, int OperationId,
                       const ControllerEventDelegate& Delegate, const CommandPanel* Current);
    /// Whether there was such a row; unless `TestOnly` it goes.
    bool RemoveController(const Operation& Owner, IController& Controller, int Node, bool IsProperty, bool TestOnly);
    void RemoveControllers(const Operation& Owner);
    /// Drops the rows of the panel's operation that no controller of the panel answers to any more; the controllers of
    /// their variables, found by name, are hidden.
    void UpdateParametersPanel(const CommandPanel& Panel, const std::function<IController*(const std::wstring&)>& Find);
    /// The copies take the manipulators and mothers of their originals on the panel.
    void UpdateMotherControllers(const CommandPanel* Current);
    void UpdateProperties();
    void UpdateControls(bool Dragging);
    /// Shows the window if there are rows, hides it if there are none.
    void ShowParametersForm();
    /// The row of a node and a variable's name; null for none.
    IController* GetController(int Node, const std::wstring& Name) const;
    /// A controller is about to go.
    void Forget(const IController* Controller);
    /// The variables for which the test holds are about to be destroyed: rows show their operation's own variable of
    /// the name instead, and go where there is none.
    void Repoint(const std::function<bool(const AnyVariable*)>& IsGone);
    void RenameVariable(const std::wstring& Old, const std::wstring& New);

    const std::vector<ParameterRow>& Rows() const { return rows_; }

private:
    void Changed();

    Engine& engine_;
    IOperationViews& views_;
    const ControllerFactory& factory_;
    std::vector<ParameterRow> rows_;
};

} // namespace TeskPlus
