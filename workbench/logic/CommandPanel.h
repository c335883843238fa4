// The rows of the selected operation: one for each argument, with its controller, its selector and its help.
#pragma once

#include "workbench/logic/IController.h"
#include "workbench/logic/OperationItemInfo.h"
#include "workbench/logic/VariableSelector.h"
#include "workbench/logic/WindowPlaces.h"

#include <memory>

namespace TeskPlus {

class IOperationViews;

/// The row of one argument; a part that is not there is null.
struct PanelRow
{
    IController* Controller = nullptr;
    std::unique_ptr<VariableSelector> Selector;
    std::wstring Help;
    bool HasHelp = false;
};

/// What the grid shows in one of its rows: a control or a selector in column 0, a help text in column 1.
struct LayoutRow
{
    IController* Controller = nullptr;
    VariableSelector* Selector = nullptr;
    const std::wstring* Help = nullptr;
};

class CommandPanel
{
public:
    CommandPanel(IOperationViews& Views, Operation& Operation);

    /// Empties the rows, for an operation.
    void Reset(Operation& Operation);
    /// Each appends to, or completes, the row of an argument.
    void InsertController(int Row, IController* Controller);
    void InsertSelector(int Row, std::unique_ptr<VariableSelector> Selector);
    void InsertHelpWidget(int Row, const wchar_t* Text);
    /// The help above the rows: the method's.
    void InsertTitle(const wchar_t* Text) { title_ = Text; }
    void InsertResetButton(const wchar_t* Help) { resetHelp_ = Help; }
    void InsertExternalControl(ControlHandle Control) { externalControls_.push_back(Control); }

    /// The rows of the grid, in order, for the view to fill. An extra control spans both columns, behind these.
    std::vector<LayoutRow> BuildCommandPanel() const;
    const std::wstring& Title() const { return title_; }
    bool HasResetButton() const { return !resetHelp_.empty(); }
    const std::wstring& ResetHelp() const { return resetHelp_; }
    const std::vector<ControlHandle>& ExternalControls() const { return externalControls_; }

    /// Pull: all controllers, or the first that has the variable.
    void UpdateProperties(AnyVariable* Variable);
    /// Push to all controllers; what they show is no longer changed.
    void UpdateControls(bool Dragging);

    /// Shows every controller; a window shown for the first time takes the next place of the spiral, unless
    /// `KeepPlace`.
    void ShowControllers(WindowSpiral& Spiral, bool KeepPlace, WindowSize WorkArea);
    /// Where a new window would cover one that is on the screen, or that the panel is about to show again.
    std::vector<WindowRect> OccupiedPlaces() const;
    void HideControllers();
    void ShowController(int Row);
    void HideController(int Row);
    /// Hides what a following operation does not use; the flags are those of `ResetVisibleFlag`.
    void HideUnusedControllers(Operation& Next, const std::vector<bool>& Flags);
    /// Clears `Visible` on the arguments; for each row, whether its controller is pinned.
    std::vector<bool> ResetVisibleFlag(Operation& Operation);
    /// Tells each controller on which picture it draws.
    void UpdateMotherControllers();
    void ReplaceController(int Row, IController* Controller);
    /// By variable name; null for none.
    IController* GetLocalController(const std::wstring& Name) const;
    void UpdateSelectors();
    /// A controller is about to go.
    void Forget(const IController* Controller);

    Operation& PanelOperation() const { return *operation_; }
    const std::vector<PanelRow>& Rows() const { return rows_; }
    int ManipulatorType() const { return manipulator_; }
    IController* ManipulatorController() const { return manipulatorController_; }
    bool IsInitialized() const { return isInitialized_; }
    void SetInitialized() { isInitialized_ = true; }

private:
    PanelRow& RowAt(int row);
    IController* MotherOf(int mother) const;
    void Place(IController& controller, WindowSpiral& spiral, WindowSize workArea);

    IOperationViews& views_;
    Operation* operation_ = nullptr;
    std::vector<PanelRow> rows_;
    std::vector<WindowRect> placed_; ///< by the showing that is under way
    std::wstring title_, resetHelp_;
    std::vector<ControlHandle> externalControls_;
    int manipulator_ = 0;
    IController* manipulatorController_ = nullptr;
    bool isInitialized_ = false;
};

} // namespace TeskPlus
