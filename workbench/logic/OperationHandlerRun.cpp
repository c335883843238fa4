// Running the sequence after a change of what the panel of the current operation shows.
#include "workbench/logic/OperationHandler.h"

#include "workbench/logic/Raised.h"
#include "workbench/logic/Refusal.h"

#include "foundation/Status.h"

#include <algorithm>
#include <set>

namespace TeskPlus {

namespace {

/// Whether the operation holds former values, seen from what is known to be out of date before it. An input that is a
/// view of such a variable, or of one that it has not taken over yet, joins them.
bool IsStale(const Operation& operation, std::set<const AnyVariable*>& stale)
{
    bool isStale = operation.Dirty;
    std::int32_t newestInput = 0, oldestOutput = MaxInt;
    for (const Arg& argument : operation.Args) {
        const AnyVariable* variable = argument.Variable;
        if (!variable) continue;
        const std::uint32_t flags = Engine::VarNode(argument.Node)->Flags;
        if (flags & attributeValue::In) {
            const AnyVariable* source = Engine::SourceOf(*variable);
            if (source && (stale.count(source) || source->Stamp > variable->Stamp)) {
                stale.insert(variable);
                isStale = true;
            }
            newestInput = std::max(newestInput, variable->Stamp);
        }
        if (flags & attributeValue::Out) oldestOutput = std::min(oldestOutput, variable->Stamp);
    }
    return isStale || newestInput >= oldestOutput;
}

/// What shows former values because the run stopped at an operation; nothing for null.
std::set<const AnyVariable*> StaleVariables(const Engine& engine, const Operation* failed)
{
    std::set<const AnyVariable*> stale;
    bool isBehind = false;
    for (const auto& operation : engine.Operations) {
        isBehind = isBehind || operation.get() == failed;
        if (!isBehind || !IsStale(*operation, stale)) continue;
        for (const Arg& argument : operation->Args)
            if (argument.Variable && Engine::VarNode(argument.Node)->Flags & attributeValue::Out)
                stale.insert(argument.Variable);
    }
    return stale;
}

} // namespace

/// Makes the panel of the current operation anew.
PanelOutcome OperationHandler::CreateControllers(ControllerList& created, operationType reason, int classNode)
{
    Operation& operation = *CurrentOperation();
    const bool isSelected = reason == operationType::Select;
    if (!isSelected) engine_.FillOperation(currentOperationID_);
    if (currentCommandPanel_) currentCommandPanel_->HideUnusedControllers(operation, previousOperationVisibleFlags_);
    views_.ClearPanel();
    currentCommandPanel_ = std::make_unique<CommandPanel>(views_, operation);
    const PanelOutcome outcome =
        builder_.Build(*currentCommandPanel_, {operation, currentOperationID_, reason, classNode}, created);
    if (outcome.Outcome == PanelOutcome::DialogCancelled) return outcome;
    views_.EnableDeleteButton(reason == operationType::New || CheckOperationDeletion(currentOperationID_));
    currentOperationRunningMutex_ = (Engine::OpNode(operation.Node)->Flags & DeferredMethod) != 0;
    // It waits for Apply, also while other operations run.
    if (currentOperationRunningMutex_ && !isSelected) operation.Dirty = false;
    views_.ShowApplyButton(currentOperationRunningMutex_);
    if (!isSelected && currentCommandPanel_->HasResetButton() && outcome.IsComplete())
        builder_.ResetSizes(*currentCommandPanel_);
    return outcome;
}

void OperationHandler::ResetButton_Click()
{
    Operation* operation = CurrentOperation();
    if (!operation || !currentCommandPanel_ || !currentCommandPanel_->IsInitialized()) return;
    AnyVariable* variable = builder_.ResetSizes(*currentCommandPanel_);
    DoRun(operation, variable, false, false, false, false);
}

void OperationHandler::DropPanel()
{
    currentCommandPanel_.reset();
    previousOperationVisibleFlags_.clear();
}

/// The controllers of names that are gone go, too; the panels let go of them first.
void OperationHandler::DeleteUnusedControllers()
{
    keeper_.DeleteUnused([this](IController& controller) {
        if (currentCommandPanel_) currentCommandPanel_->Forget(&controller);
        parametersPanel_.Forget(&controller);
    });
}

/// What undone operations have left behind is freed; whoever showed it shows the latest variable of the name.
void OperationHandler::ReclaimVariables()
{
    const auto isGone = [](const AnyVariable* variable) { return variable && variable->Uses <= 0; };
    keeper_.RepointGone(isGone);
    parametersPanel_.Repoint(isGone);
    engine_.ReclaimVariables();
    if (currentCommandPanel_) currentCommandPanel_->UpdateSelectors();
}

void OperationHandler::DoRun(Operation* Op, AnyVariable* Var, bool Taken, bool Mothers, bool Dragging,
                             bool FromParameters)
{
    if (Var && !Op) return;
    if (currentCommandPanel_ && !currentCommandPanel_->IsInitialized()) return;
    if (currentOperationRunningMutex_ || running_) return;
    const Raised running(running_);
    views_.SetStatusText(L"");
    if (Mothers && currentCommandPanel_) currentCommandPanel_->UpdateMotherControllers();
    if (Mothers) parametersPanel_.UpdateMotherControllers(currentCommandPanel_.get());
    if (Var) engine_.ChangeVariable(Var);
    Status::ErrorBehavior(IgnoreIt);
    if (!Taken) PullValues(Op, Var, FromParameters);
    const std::wstring refused = Refusal::Take();
    lastBegun_ = nullptr;
    engine_.Execute();
    views_.SetBusy(nullptr);
    NoteFailure();
    RefreshTimings();
    views_.PassBlobSelection();
    views_.SetStatusText(failure_.empty() ? refused : FailureText());
    PushValues(Dragging);
    ShowStale();
}

void OperationHandler::NoteFailure()
{
    const bool isFailed = Status::Error().Code != NoError;
    failed_ = isFailed ? lastBegun_ : nullptr;
    failure_ = isFailed ? Status::UnicodeError() : L"";
}

void OperationHandler::ForgetFailure(const Operation* gone)
{
    if (failed_ != gone) return;
    failed_ = nullptr;
    failure_.clear();
}

const std::wstring& OperationHandler::FailureOf(const Operation& Op) const
{
    static const std::wstring none;
    return &Op == failed_ ? failure_ : none;
}

/// Under the selection of another operation the message says whose it is.
std::wstring OperationHandler::FailureText() const
{
    const bool isOwn = !failed_ || !CurrentOperation() || failed_ == CurrentOperation();
    return isOwn ? failure_ : std::wstring(Engine::OpNode(failed_->Node)->Label) + L": " + failure_;
}

/// What the operation that failed makes, and what depends on it or waits behind it, is out of date.
void OperationHandler::ShowStale()
{
    if (!failed_ && !isStaleShown_) return;
    isStaleShown_ = failed_ != nullptr;
    const std::set<const AnyVariable*> stale = StaleVariables(engine_, failed_);
    const auto show = [&](IController* controller) {
        if (controller) views_.ShowStale(*controller, stale.count(controller->CurrentVariable()) != 0);
    };
    for (const auto& controller : keeper_.All())
        show(controller.get());
    // Those of a new operation are kept only when it is finished.
    if (currentCommandPanel_)
        for (const PanelRow& row : currentCommandPanel_->Rows())
            show(row.Controller);
}

/// The first run of a panel that has just been built; where runs are blocked it still shows what its variables hold.
void OperationHandler::RunPanel(bool taken)
{
    currentCommandPanel_->SetInitialized();
    DoRun(nullptr, nullptr, taken, true, false, false);
    if (currentOperationRunningMutex_) {
        currentCommandPanel_->UpdateMotherControllers();
        currentCommandPanel_->UpdateControls(false);
        views_.SetStatusText(FailureText());
        ShowStale();
    }
    RefreshTimings();
}

void OperationHandler::PullValues(Operation* op, AnyVariable* var, bool fromParameters)
{
    const bool selected = CurrentOperation() && currentCommandPanel_;
    if (op && fromParameters) {
        parametersPanel_.UpdateProperties();
        return;
    }
    if (selected) currentCommandPanel_->UpdateProperties(nullptr);
    if (op) keeper_.PullPinned(op, var);
}

void OperationHandler::PushValues(bool dragging)
{
    parametersPanel_.UpdateControls(dragging);
    if (CurrentOperation() && currentCommandPanel_) currentCommandPanel_->UpdateControls(dragging);
    keeper_.PushChanged(dragging);
}

void OperationHandler::ApplyOperation()
{
    if (!currentOperationRunningMutex_) return;
    currentOperationRunningMutex_ = false;
    engine_.ChangeOperation(currentOperationID_);
    DoRun(nullptr, nullptr, false, true, false, false);
    RefreshTimings();
    currentOperationRunningMutex_ = true;
}

void OperationHandler::ReplaceController(int Id, int Argument, AnyVariable* Var, bool Same)
{
    if (!currentCommandPanel_ || !currentCommandPanel_->IsInitialized() || !Var) return;
    Operation* operation = CurrentOperation();
    if (!operation || Id != currentOperationID_ || Argument < 0 || Argument >= operation->NumArgs()) return;
    CommandPanel& panel = *currentCommandPanel_;
    if (Same) {
        if (IController* chosen = GetController(Var)) chosen->ShowCtrl(true);
        return;
    }
    for (const PanelRow& row : panel.Rows())
        if (row.Controller && IsPinned(row.Controller->ControllerState()) &&
            row.Controller->CurrentOperation() == operation)
            row.Controller->SetControllerState(controllerState::Shown);
    IController* former = panel.Rows()[static_cast<std::size_t>(Argument)].Controller;
    panel.HideController(Argument);
    Arg& argument = operation->Args[static_cast<std::size_t>(Argument)];
    if (!engine_.ReplaceOperationArgument(Id, Argument, Var)) {
        panel.ShowController(Argument);
        panel.ReplaceController(Argument, former);
        return;
    }
    IController* chosen = GetController(argument.Variable);
    ControllerList created;
    if (!chosen) {
        auto made = builder_.MakeController(*operation, Id, Argument, false);
        if (!made) return;
        chosen = made.get();
        created.push_back(std::move(made));
        keeper_.Keep(created);
    }
    if (!IsPinned(chosen->ControllerState()))
        ControllerKeeper::TakeOver(*chosen, *operation, argument);
    else
        argument.Visible = chosen->CurrentOperation() == operation;
    panel.ReplaceController(Argument, chosen);
    parametersPanel_.UpdateParametersPanel(panel, [this](const std::wstring& name) { return GetController(name); });
    if (former && former != chosen && former->CurrentOperation() == operation) keeper_.Repoint(*former);
    panel.UpdateMotherControllers();
    // Another output is older than nothing: the choice itself is what runs the operation.
    engine_.ChangeOperation(Id);
    DoRun(operation, argument.Variable, false, false, false, false);
    RefreshTimings();
    panel.ShowControllers(spiral_, false, views_.WorkAreaSize());
    if (operationListRefreshDelegate_) operationListRefreshDelegate_();
    SetFormOrder();
}

} // namespace TeskPlus
