// The driver of the workbench: turns what the user does into changes of the engine's sequence, runs it, and tells the
// views what to show.
#pragma once

#include "workbench/logic/PanelBuilder.h"

#include <utility>

namespace TeskPlus {

class OperationHandler
{
public:
    /// The title of every message of the workbench.
    static constexpr const wchar_t* Title = L"Tesk+";

    OperationHandler(Engine& Engine, IOperationViews& Views, const ControllerFactory& Factory);
    OperationHandler(const OperationHandler&) = delete;
    OperationHandler& operator=(const OperationHandler&) = delete;
    ~OperationHandler();

    // What the list of operations does when the handler tells it.
    std::function<void(int Id, const operationItemInfo& Item, bool IsNew)> operationListAddDelegate_;
    std::function<void(int Previous, int Id, bool KeepItems)> operationListSelectDelegate_;
    std::function<void(int Id)> operationListRemoveDelegate_;
    std::function<void()> operationListRefreshDelegate_;
    std::function<void()> operationListTimingsDelegate_;

    /// Makes the operation's window, with the tabs of the class; `Flag` true keeps the window that is there.
    void CreateOperationForm(int Method, int Class, int Choice, bool Flag);
    /// Remembers where the user left the current operation's window.
    void StoreOperationFormLocation();
    /// Creates an operation behind the selected one or at the end. False if it was taken back.
    bool AddNewOperation(int Method, int Class, int Choice);
    /// All of a menu click: stores the place, makes the window, adds the operation.
    bool MenuItemClicked(const operationItemInfo& Item);
    /// Swaps the method of the current operation for a sister.
    void SubstituteOperation(const operationItemInfo& Item);
    /// Another class tab: asks what becomes of the current operation, then adds the tab's. False if the user cancelled;
    /// the window is then back on its former tab.
    bool ChangeTab(const operationItemInfo& Item);
    void SelectOperation(int Id, int Class, int Choice);
    /// Drops the selection, and with it the operation's window.
    void SelectNone();
    void DeleteOperation(int Id, bool KeepWindow);
    void DeleteOperation(bool KeepWindow) { DeleteOperation(currentOperationID_, KeepWindow); }
    /// Deletes an operation and those behind it.
    void DeleteToEnd(int Id);
    /// Runs a deferred method.
    void ApplyOperation();
    /// Runs the sequence after a change. With `Var`, of operation `Op`, only what depends on it is out of date.
    /// `Taken`: the values are in the variables already. `Mothers`: who draws on which picture may have changed.
    /// `Dragging`: the mouse button is still down. `FromParameters`: the change came from the parameters panel.
    void DoRun(Operation* Op, AnyVariable* Var, bool Taken, bool Mothers, bool Dragging, bool FromParameters);
    /// Binds an argument to another variable; with `Same` only brings that variable's controller to the front.
    void ReplaceController(int Id, int Argument, AnyVariable* Var, bool Same);
    /// Whether an operation may be deleted: no later one reads an output of it.
    bool CheckOperationDeletion(int Id) const;
    bool IsLastOperation(int Id) const { return Id == engine_.NumOperations() - 1; }
    /// By the variable's name; null for none.
    IController* GetController(const AnyVariable* Variable) const { return keeper_.Find(Variable); }
    IController* GetController(const std::wstring& Name) const { return keeper_.Find(Name); }
    /// Puts sizes and anchors back to those of the source image, and runs.
    void ResetButton_Click();
    /// Deletes the current operation; asks first, unless it has just been created.
    void DeleteButton_Click();

    // For the list of operations.

    void HideOperationAndControllerForms();
    void HideContextualHelp() { views_.HideContextualHelp(); }
    void UpdateContextualHelpForm();
    bool AddControllerToParametersPanel(Operation& Op, IController& Controller, int Node, bool IsProperty);
    bool RemoveControllerFromParametersPanel(Operation& Op, IController& Controller, int Node, bool IsProperty);
    bool IsPined(Operation& Op, IController& Controller, int Node, bool IsProperty);
    /// After a rename: the parameters panel's row of a value takes the name, or the selectors are refilled.
    void UpdateControllerIdentifier(bool IsValue, const std::wstring& Old, const std::wstring& New);
    /// The user activated the parameters panel: the selection is dropped, without touching what is shown.
    void ParametersFormActivated();
    void RefreshTimings();
    void SetFormOrder();

    Tesk::Engine& GetEngine() const { return engine_; }
    IOperationViews& Views() const { return views_; }
    const ControllerFactory& Factory() const { return factory_; }
    int CurrentOperationId() const { return currentOperationID_; }
    /// The selected operation; null for none.
    Operation* CurrentOperation() const;
    int CurrentMenuNode() const { return currentMenuNode_; }
    const ControllerList& Controllers() const { return keeper_.All(); }
    CommandPanel* CurrentCommandPanel() const { return currentCommandPanel_.get(); }
    ParametersPanel& Parameters() { return parametersPanel_; }
    /// Views ignore their change events while a selection is being made.
    bool OperationSelectMode() const { return operationSelectMode_; }
    /// Why an operation has stopped the latest run; empty for every other one.
    const std::wstring& FailureOf(const Operation& Op) const;
    bool IsRunningBlocked() const { return currentOperationRunningMutex_; }
    /// The place of an operation, with which it was created or swapped.
    operationItemInfo ItemOf(int Id) const;

private:
    bool CreateOperation(const operationItemInfo& item);
    int PlaceOfNew();
    void TakeBackNew(int id, ControllerList& created);
    void TakeBackSwap(Operation& operation, const Operation::Memo& former, int classNode, ControllerList& created);
    void UpdateNames();
    void SelectBefore(int id);
    bool DeleteOne(int id, bool keepWindow);
    void LeaveOperation();
    void RecordVisibleFlags();
    void SetItem(const Operation& operation, const operationItemInfo& item);
    void Warn(const std::wstring& text);
    void Explain(const PanelOutcome& outcome, const wchar_t* notIntegrated);

    PanelOutcome CreateControllers(ControllerList& created, operationType reason, int classNode);
    void ShowRadioGroup(const operationItemInfo& item);
    void ShowPanel(const WindowPoint* location, bool keepPlaces);
    void DropPanel();

    void DeleteUnusedControllers();
    void ReclaimVariables();

    void RunPanel(bool taken);
    void PullValues(Operation* op, AnyVariable* var, bool fromParameters);
    void PushValues(bool dragging);
    void NoteFailure();
    void ForgetFailure(const Operation* gone);
    void ShowStale();
    std::wstring FailureText() const;

    Tesk::Engine& engine_;
    IOperationViews& views_;
    const ControllerFactory& factory_;
    const ControllerEventDelegate run_; ///< `DoRun`, for the controls
    int currentOperationID_ = -1;
    int currentMenuNode_ = -1; ///< -2 when the last action did not end in a finished operation
    ControllerKeeper keeper_;
    std::unique_ptr<CommandPanel> currentCommandPanel_;
    bool currentOperationRunningMutex_ = false;
    bool operationSelectMode_ = false;
    bool currentIsNew_ = false; ///< created, and not selected again since
    bool formIsNew_ = false;    ///< the operation's window has not been placed yet
    bool running_ = false;
    const Operation* lastBegun_ = nullptr; ///< of the latest run
    const Operation* failed_ = nullptr;    ///< the operation at which the latest run stopped
    std::wstring failure_;                 ///< its message
    bool isStaleShown_ = false;
    std::vector<bool> previousOperationVisibleFlags_;
    std::vector<PanelLocation> commandPanelLocations_;
    std::vector<std::pair<const Operation*, operationItemInfo>> items_;
    WindowSpiral spiral_;
    ParametersPanel parametersPanel_;
    PanelBuilder builder_;
};

} // namespace TeskPlus
