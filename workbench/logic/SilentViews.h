// The views of a driver without a screen: nothing is shown, and every question has its answer beforehand.
#pragma once

#include "workbench/logic/OperationHandler.h"

#include <deque>

namespace TeskPlus {

class SilentViews : public IOperationViews
{
public:
    /// The paths that the next file dialogs answer; a dialog without one is cancelled.
    std::deque<std::string> Paths;
    /// The buttons pressed on the next messages; the last button where none is left.
    std::deque<int> Answers;
    /// What was told last.
    std::wstring LastMessage, StatusText;

    void CreateOperationForm(const OperationFormInfo&) override { hasForm_ = true; }
    void CloseOperationForm() override { hasForm_ = false; }
    void HideOperationForm() override {}
    void ShowOperationForm(const WindowPoint*) override {}
    bool HasOperationForm() const override { return hasForm_; }
    WindowPoint OperationFormLocation() const override { return {}; }
    WindowSize OperationFormSize() const override { return {}; }
    void SelectTab(int) override {}
    void ShowRadioGroup(const RadioGroupInfo&) override {}
    void CheckRadioButton(int) override {}
    void LayOutPanel(CommandPanel&) override {}
    void ClearPanel() override {}
    void EnableDeleteButton(bool) override {}
    void ShowApplyButton(bool) override {}
    void CreateSelectorControl(VariableSelector&) override {}
    WindowSize ControlSize(const IController&) const override { return {}; }
    void MoveControl(IController&, WindowPoint) override {}
    WindowSize WorkAreaSize() const override { return {}; }
    std::vector<WindowRect> OccupiedPlaces(const std::vector<IController*>&) const override { return {}; }
    void ShowStale(IController&, bool) override {}
    void SetFormOrder(const Operation*) override {}
    ControlHandle ParentWindow() const override { return nullptr; }
    int ShowMessage(const MessageInfo& Message) override;
    std::optional<std::string> ChooseFile(const FileDialogInfo& Dialog) override;
    void SetStatusText(const std::wstring& Text) override { StatusText = Text; }
    void SetBusy(const Operation*) override {}
    bool IsHelp() const override { return false; }
    void ShowContextualHelp(const std::vector<HelpParagraph>&) override {}
    void HideContextualHelp() override {}
    void LayOutParameters(const ParametersPanel&) override {}
    void ShowParametersForm(bool) override {}
    void PassBlobSelection() override {}

private:
    bool hasForm_ = false;
};

/// Makers for every type that has a controller: they show nothing, and a path is asked of the views.
void RegisterSilentControllers(ControllerFactory& Factory, IOperationViews& Views);

} // namespace TeskPlus
