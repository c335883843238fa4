// Fills the panel of an operation: a row for each argument, with its controller, its selector and its help.
#pragma once

#include "workbench/logic/ControllerFactory.h"
#include "workbench/logic/ControllerKeeper.h"
#include "workbench/logic/IOperationViews.h"

namespace TeskPlus {

/// The operation for which a panel is built, and why.
struct PanelRequest
{
    Operation& Shown;
    int Id;
    operationType Reason;
    int ClassNode; ///< under which the user sees it
};

/// What became of a panel. Where a controller could not be made, or its dialog was cancelled, the rows are not
/// complete.
struct PanelOutcome
{
    enum outcome
    {
        Built,
        NoController,
        DialogCancelled
    } Outcome = Built;
    int Missing = 0;     ///< inputs without a variable
    int MissingType = 0; ///< of the first of them
    bool IsComplete() const { return Outcome == Built && Missing == 0; }
};

class PanelBuilder
{
public:
    PanelBuilder(Engine& Engine, IOperationViews& Views, const ControllerFactory& Factory, ControllerKeeper& Keeper,
                 ControllerEventDelegate Changed, VariableSelector::Delegate Chosen)
        : engine_(Engine), views_(Views), factory_(Factory), keeper_(Keeper), changed_(std::move(Changed)),
          chosen_(std::move(Chosen))
    {}

    /// Fills an empty panel. What it makes goes to `Created`, which the keeper takes over once the operation stands.
    PanelOutcome Build(CommandPanel& Panel, const PanelRequest& Request, ControllerList& Created);
    /// The controller of one argument; null where none can be made.
    std::unique_ptr<IController> MakeController(Operation& Owner, int Id, int Row, bool FromDefault) const;
    /// Puts sizes and anchors to those of the source image; the variable whose change runs the operation.
    AnyVariable* ResetSizes(const CommandPanel& Panel) const;

private:
    PanelOutcome::outcome AddRow(CommandPanel& panel, const PanelRequest& request, int row, ControllerList& created);
    void AddSelector(CommandPanel& panel, const PanelRequest& request, int row, AnyVariable* variable);

    Engine& engine_;
    IOperationViews& views_;
    const ControllerFactory& factory_;
    ControllerKeeper& keeper_;
    ControllerEventDelegate changed_;
    VariableSelector::Delegate chosen_;
};

} // namespace TeskPlus
