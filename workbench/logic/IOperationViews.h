// Everything that the logic asks of a screen. A driver without one passes empty answers.
#pragma once

#include "workbench/logic/CommandPanel.h"
#include "workbench/logic/ParametersPanel.h"

#include <optional>

namespace TeskPlus {

/// The window of one operation, as it is to be made: empty of rows, and not yet shown.
struct OperationFormInfo
{
    operationItemInfo Item;
    bool HasBar = true;            ///< false for a window of help texts
    std::vector<LabeledItem> Tabs; ///< none where the class has a single tab
    int CurrentTab = -1;
};

/// The radio group of a choice.
struct RadioGroupInfo
{
    std::wstring Caption; ///< the choice's label, or "Operation" inside a tab group
    std::vector<LabeledItem> Buttons;
    int CheckedMethod = -1;
};

enum class messageIcon
{
    None,
    Warning,
    Question
};

/// A message with named buttons.
struct MessageInfo
{
    std::wstring Text, Title;
    messageIcon Icon = messageIcon::None;
    std::vector<std::wstring> Buttons = {L"OK"};
    int CancelButton = 0; ///< what closing the box means
};

struct FileDialogInfo
{
    std::wstring Filter; ///< "Images|*.bmp;*.png|All Files|*.*"
    bool Save = false;
};

/// A paragraph of a help window.
struct HelpParagraph
{
    std::wstring Text;
    bool IsTitle = false;
};

class IOperationViews
{
public:
    virtual ~IOperationViews() = default;

    // The operation's window.

    /// Closes the former window and makes one. The tabs call `OperationHandler::ChangeTab`.
    virtual void CreateOperationForm(const OperationFormInfo& Info) = 0;
    virtual void CloseOperationForm() = 0;
    virtual void HideOperationForm() = 0;
    /// Shows the window at a place, or with null where it stands.
    virtual void ShowOperationForm(const WindowPoint* Location) = 0;
    virtual bool HasOperationForm() const = 0;
    virtual WindowPoint OperationFormLocation() const = 0;
    virtual WindowSize OperationFormSize() const = 0;
    /// Marks a tab as the current one, with no event.
    virtual void SelectTab(int Tab) = 0;
    /// Makes the radio group, or with no buttons takes it away. A flip calls `OperationHandler::SubstituteOperation`.
    virtual void ShowRadioGroup(const RadioGroupInfo& Group) = 0;
    /// Checks the button of a method, with no event.
    virtual void CheckRadioButton(int Method) = 0;
    /// Puts the rows of the panel into the window; `ClearPanel` takes them out, and leaves the controls alive.
    virtual void LayOutPanel(CommandPanel& Panel) = 0;
    virtual void ClearPanel() = 0;
    virtual void EnableDeleteButton(bool Enabled) = 0;
    virtual void ShowApplyButton(bool Shown) = 0;

    // Windows and controls of controllers.

    /// The box of a selector, which calls its `Choose` and `Click`.
    virtual void CreateSelectorControl(VariableSelector& Selector) = 0;
    virtual WindowSize ControlSize(const IController& Controller) const = 0;
    virtual void MoveControl(IController& Controller, WindowPoint Location) = 0;
    /// Where the windows go: the work area.
    virtual WindowSize WorkAreaSize() const = 0;
    /// The windows on the screen, the operation's own included, and those that the controllers are about to show.
    virtual std::vector<WindowRect> OccupiedPlaces(const std::vector<IController*>& Coming) const = 0;
    /// Marks what a controller shows as out of date, or no longer.
    virtual void ShowStale(IController& Controller, bool IsStale) = 0;
    /// Puts the windows in their order: the help, the parameters panel, the pinned and then the other windows of the
    /// variables of the operation (null for none), the rest, the work area.
    virtual void SetFormOrder(const Operation* Current) = 0;
    /// The window into which controls are made.
    virtual ControlHandle ParentWindow() const = 0;

    // Messages.

    /// The index of the button that was pressed.
    virtual int ShowMessage(const MessageInfo& Message) = 0;
    /// The chosen path; nothing if the user cancelled.
    virtual std::optional<std::string> ChooseFile(const FileDialogInfo& Dialog) = 0;
    /// The error of the latest run in the status bar, red and bold; empty for none.
    virtual void SetStatusText(const std::wstring& Text) = 0;
    /// Before the engine runs an operation, and with null when it is done: a long one shows a busy cursor and its name.
    virtual void SetBusy(const Operation* Running) = 0;
    virtual bool IsHelp() const = 0;
    virtual void ShowContextualHelp(const std::vector<HelpParagraph>& Paragraphs) = 0;
    virtual void HideContextualHelp() = 0;

    // The parameters panel.

    virtual void LayOutParameters(const ParametersPanel& Panel) = 0;
    virtual void ShowParametersForm(bool Shown) = 0;

    /// Passes the blob on which the user clicked in a picture, if any, on to the library.
    virtual void PassBlobSelection() = 0;
};

} // namespace TeskPlus
