// What the logic asks of the screen, answered with Qt: the operation's window, messages, help, the parameters panel.
#pragma once

#include "workbench/logic/IOperationViews.h"
#include "workbench/logic/OperationHandler.h"
#include "workbench/views/OperationForm.h"
#include "workbench/views/ViewContext.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>

class QMainWindow;
class QLabel;

namespace TeskPlus {

class OperationViews final : public QObject, public IOperationViews
{
    Q_OBJECT

public:
    OperationViews(QMainWindow& window, QMdiArea& workArea, QLabel& status);
    ~OperationViews() override;
    /// Once the handler exists.
    void SetHandler(OperationHandler& handler) { handler_ = &handler; }

    void CreateOperationForm(const OperationFormInfo& Info) override;
    void CloseOperationForm() override;
    void HideOperationForm() override;
    void ShowOperationForm(const WindowPoint* Location) override;
    bool HasOperationForm() const override;
    WindowPoint OperationFormLocation() const override;
    WindowSize OperationFormSize() const override;
    void SelectTab(int Tab) override;
    void ShowRadioGroup(const RadioGroupInfo& Group) override;
    void CheckRadioButton(int Method) override;
    void LayOutPanel(CommandPanel& Panel) override;
    void ClearPanel() override;
    void EnableDeleteButton(bool Enabled) override;
    void ShowApplyButton(bool Shown) override;

    void CreateSelectorControl(VariableSelector& Selector) override;
    WindowSize ControlSize(const IController& Controller) const override;
    void MoveControl(IController& Controller, WindowPoint Location) override;
    WindowSize WorkAreaSize() const override;
    std::vector<WindowRect> OccupiedPlaces(const std::vector<IController*>& Coming) const override;
    void ShowStale(IController& Controller, bool IsStale) override;
    void SetFormOrder(const Operation* Current) override;
    ControlHandle ParentWindow() const override;

    int ShowMessage(const MessageInfo& Message) override;
    std::optional<std::string> ChooseFile(const FileDialogInfo& Dialog) override;
    void SetStatusText(const std::wstring& Text) override;
    void SetBusy(const Operation* Running) override;
    bool IsHelp() const override;
    void ShowContextualHelp(const std::vector<HelpParagraph>& Paragraphs) override;
    void HideContextualHelp() override;

    void LayOutParameters(const ParametersPanel& Panel) override;
    void ShowParametersForm(bool Shown) override;

    void PassBlobSelection() override;

    /// What a click on blobs in a picture has left to pass on, if anything; the descriptions of objects install it.
    std::function<void()> blobSelection_;
    /// Once the work area has become smaller.
    void KeepWindowsInside();
    /// Shows or hides the help texts of all windows.
    void ToggleHelp();
    const OperationForm* Form() const { return form_; }

private:
    std::vector<ToolWindow*> Windows() const;
    WindowRect RectOf(const ToolWindow& window) const;
    void PlaceHelp();
    void RememberHelpPlace();
    void FillParameters(const ParametersPanel& panel);

    QMainWindow& window_;
    QMdiArea& workArea_;
    QLabel& status_;
    OperationHandler* handler_ = nullptr;
    QPointer<OperationForm> form_;
    QPointer<ToolWindow> contextualHelp_, parameters_;
    QWidget* parameterRows_ = nullptr;
    WindowPoint contextualHelpPanelLocation{15, 15};
    WindowPoint helpPlace_{15, 15}; ///< where the help stands, unless the user has moved it
    QElapsedTimer runTime_;         ///< since the first operation of a run began
    bool parametersShown_ = false, isBusy_ = false;
};

} // namespace TeskPlus
