// The end of an operation: it goes with all that shows it, unless a later one needs what it makes.
#include "workbench/logic/OperationHandler.h"

#include "workbench/logic/Raised.h"

namespace TeskPlus {

bool OperationHandler::CheckOperationDeletion(int Id) const
{
    int argument, consumer;
    return engine_.RemoveOperation(Id, argument, consumer, true);
}

/// Removes one operation with all that shows it; false if a later one reads an output of it.
bool OperationHandler::DeleteOne(int id, bool keepWindow)
{
    if (!CheckOperationDeletion(id)) return false;
    Operation* const operation = engine_.Operations[static_cast<std::size_t>(id)].get();
    for (const Arg& argument : operation->Args)
        if (argument.Visible && argument.Variable)
            if (IController* controller = GetController(argument.Variable))
                controller->SetControllerState(controllerState::Shown);
    if (currentCommandPanel_ && &currentCommandPanel_->PanelOperation() == operation) {
        currentCommandPanel_->HideControllers();
        views_.ClearPanel();
        if (!keepWindow) views_.HideOperationForm();
        DropPanel();
    } else {
        for (const auto& controller : keeper_.All()) {
            if (controller->CurrentOperation() != operation) continue;
            if (controller->ControllerState() <= controllerState::Shown)
                controller->SetControllerState(controllerState::Hidden);
            controller->HideCtrl(false);
        }
    }
    std::erase_if(commandPanelLocations_, [&](const PanelLocation& place) { return place.Owner == operation; });
    std::erase_if(items_, [&](const auto& entry) { return entry.first == operation; });
    parametersPanel_.RemoveControllers(*operation);
    int argument, consumer;
    engine_.RemoveOperation(id, argument, consumer, false);
    ForgetFailure(operation);
    if (id == currentOperationID_) {
        currentOperationID_ = -1;
        currentOperationRunningMutex_ = false;
    } else if (id < currentOperationID_) {
        currentOperationID_--;
    }
    keeper_.RepointFrom(operation);
    DeleteUnusedControllers();
    ReclaimVariables();
    if (operationListRemoveDelegate_) operationListRemoveDelegate_(id);
    return true;
}

void OperationHandler::DeleteOperation(int Id, bool KeepWindow)
{
    const Raised selecting(operationSelectMode_);
    if (!DeleteOne(Id, KeepWindow)) return;
    if (KeepWindow)
        currentOperationID_ = Id - 1;
    else
        SelectBefore(Id);
    // With nothing selected no panel has run what it leaves: without its failure the others may go on.
    if (!CurrentOperation()) DoRun(nullptr, nullptr, true, false, false, false);
}

void OperationHandler::DeleteToEnd(int Id)
{
    if (Id < 0 || Id >= engine_.NumOperations()) return;
    const Raised selecting(operationSelectMode_);
    for (int last = engine_.NumOperations() - 1; last > Id; last--)
        if (!DeleteOne(last, false)) return;
    DeleteOperation(Id, false);
}

void OperationHandler::DeleteButton_Click()
{
    if (!CurrentOperation()) return;
    if (!currentIsNew_) {
        MessageInfo question;
        question.Text = L"Do you want to delete the current operation?";
        question.Title = Title;
        question.Icon = messageIcon::Question;
        question.Buttons = {L"Yes", L"No"};
        question.CancelButton = 1;
        if (views_.ShowMessage(question) != 0) return;
    }
    DeleteOperation(false);
}

} // namespace TeskPlus
