// Building the panel of an operation, and running the sequence after a change of what it shows.
#include "workbench/logic/OperationHandler.h"

#include "engine/TypeNames.h"
#include "workbench/logic/Raised.h"
#include "workbench/logic/Refusal.h"

#include "foundation/Status.h"
#include "image/Image.h"

#include <algorithm>
#include <cwchar>
#include <set>

namespace TeskPlus {

using namespace attributeValue;

namespace {

/// The size of an image where there is none to go by.
constexpr int standardSize = 512;

bool IsLabeled(const Arg& argument, const wchar_t* label)
{
    return !std::wcscmp(Engine::Tree[argument.Node]->Label, label);
}

void ClearVisible(Operation& operation, const std::wstring& name)
{
    for (Arg& argument : operation.Args)
        if (argument.Variable && argument.Variable->NameText == name) argument.Visible = false;
}

Image& ImageOf(const Arg& argument)
{
    return static_cast<Var<Image>*>(argument.Variable)->Value;
}

} // namespace

IController* OperationHandler::GetController(const std::wstring& Name) const
{
    for (const auto& controller : controllers_)
        if (controller->VariableIdentifier() == Name) return controller.get();
    return nullptr;
}

IController* OperationHandler::GetController(const AnyVariable* Variable) const
{
    return Variable && Variable->Name ? GetController(Variable->NameText) : nullptr;
}

/// Among those that live, and those of the panel that is being built.
IController* OperationHandler::FindController(const std::wstring& name, const ControllerList& created) const
{
    if (IController* known = GetController(name)) return known;
    for (const auto& controller : created)
        if (controller->VariableIdentifier() == name) return controller.get();
    return nullptr;
}

ControllerEventDelegate OperationHandler::RunDelegate()
{
    return [this](Operation* op, AnyVariable* var, bool taken, bool mothers, bool dragging, bool fromParameters) {
        DoRun(op, var, taken, mothers, dragging, fromParameters);
    };
}

std::unique_ptr<IController> OperationHandler::MakeController(Operation& operation, int row, bool fromDefault)
{
    const Arg& argument = operation.Args[static_cast<std::size_t>(row)];
    ControllerRequest request{engine_, RunDelegate()};
    request.Method = operation.Node;
    request.Variable = argument.Variable;
    request.Node = argument.Node;
    request.Index = row;
    request.OperationId = currentOperationID_;
    request.FromDefault = fromDefault;
    request.Parent = views_.ParentWindow();
    request.CurrentOperation = &operation;
    return factory_.CreateController(request);
}

/// The controller shows this argument now: whoever had it shows it no more.
void OperationHandler::TakeOver(IController& controller, Operation& operation, Arg& argument)
{
    if (Operation* former = controller.CurrentOperation()) ClearVisible(*former, controller.VariableIdentifier());
    argument.Visible = true;
    controller.SetCurrentOperation(&operation);
    controller.SetCurrentVariable(argument.Variable);
}

void OperationHandler::AddSelector(int row, AnyVariable* variable)
{
    const Operation& operation = *CurrentOperation();
    currentCommandPanel_->InsertSelector(
        row, std::make_unique<VariableSelector>(engine_, variable, operation.Args[static_cast<std::size_t>(row)].Node,
                                                row, currentOperationID_,
                                                [this](int id, int argument, AnyVariable* chosen, bool same) {
                                                    ReplaceController(id, argument, chosen, same);
                                                }));
}

/// 0, `noController`, `dialogCancelled`, or 1 for a missing input.
int OperationHandler::AddRow(int row, ControllerList& created, operationType reason, int& missingType)
{
    Operation& operation = *CurrentOperation();
    Arg& argument = operation.Args[static_cast<std::size_t>(row)];
    const ArgumentNode& node = *Engine::VarNode(argument.Node);
    IController* controller = nullptr;
    if (!argument.Variable) {
        if (missingType == 0) missingType = node.Type;
        AddSelector(row, nullptr);
    } else {
        controller = FindController(argument.Variable->NameText, created);
        if (!controller) {
            argument.Visible = true;
            auto made = MakeController(operation, row, reason != operationType::Select);
            if (!made) return IsPathType(node.Type) ? dialogCancelled : noController;
            controller = made.get();
            controller->SetCurrentOperation(&operation);
            created.push_back(std::move(made));
        } else if (!IsPinned(controller->ControllerState())) {
            TakeOver(*controller, operation, argument);
        } else {
            argument.Visible = controller->CurrentOperation() == &operation;
        }
        currentCommandPanel_->InsertController(row, controller);
        if (controller->IsStructure()) AddSelector(row, argument.Variable);
    }
    if (node.Type != CodeOf(L"XY") && node.Type != CodeOf(L"Site"))
        currentCommandPanel_->InsertHelpWidget(row, node.Documentation);
    return argument.Variable ? 0 : 1;
}

bool OperationHandler::NeedsResetButton(const Operation& operation, int classNode) const
{
    if (classNode < 0 || std::wcscmp(Engine::Tree[classNode]->Identifier, L"Geometry") != 0) return false;
    const auto has = [&](const wchar_t* label) {
        return std::any_of(operation.Args.begin(), operation.Args.end(),
                           [&](const Arg& argument) { return IsLabeled(argument, label); });
    };
    return has(L"Width") && has(L"Height");
}

int OperationHandler::CreateControllers(ControllerList& created, operationType reason, int classNode, int& missingType)
{
    Operation& operation = *CurrentOperation();
    if (reason != operationType::Select) engine_.FillOperation(currentOperationID_);
    if (currentCommandPanel_) currentCommandPanel_->HideUnusedControllers(operation, previousOperationVisibleFlags_);
    views_.ClearPanel();
    currentCommandPanel_ = std::make_unique<CommandPanel>(views_, operation);
    CommandPanel& panel = *currentCommandPanel_;
    const MethodNode& method = *Engine::OpNode(operation.Node);
    panel.InsertTitle(method.Documentation);
    if (NeedsResetButton(operation, classNode))
        panel.InsertResetButton(L"Reset the size of the destination image and the existing anchors");

    int missing = 0;
    bool refused = false;
    for (int row = 0; row < operation.NumArgs(); row++) {
        const int result = AddRow(row, created, reason, missingType);
        if (result == dialogCancelled) return dialogCancelled;
        if (result == noController) refused = true;
        if (result > 0) missing++;
    }
    if (!refused) views_.LayOutPanel(panel);
    views_.EnableDeleteButton(reason == operationType::New || CheckOperationDeletion(currentOperationID_));
    currentOperationRunningMutex_ = (method.Flags & DeferredMethod) != 0;
    // It waits for Apply, also while other operations run.
    if (currentOperationRunningMutex_ && reason != operationType::Select) operation.Dirty = false;
    views_.ShowApplyButton(currentOperationRunningMutex_);
    if (refused) return noController;
    if (reason != operationType::Select && panel.HasResetButton() && missing == 0) InitControllers();
    return missing;
}

AnyVariable* OperationHandler::InitControllers()
{
    Operation& operation = *CurrentOperation();
    const Arg* source = nullptr;
    for (const Arg& argument : operation.Args) {
        const ArgumentNode& node = *Engine::VarNode(argument.Node);
        if (!source && argument.Variable && node.Type == CodeOf(L"Image") && (node.Flags & In)) source = &argument;
    }
    const int width = source ? int{ImageOf(*source).Width} : standardSize;
    const int height = source ? int{ImageOf(*source).Height} : standardSize;
    for (int row = 0; row < operation.NumArgs(); row++) {
        const Arg& argument = operation.Args[static_cast<std::size_t>(row)];
        const ArgumentNode& node = *Engine::VarNode(argument.Node);
        if (!argument.Variable) continue;
        IController* controller = currentCommandPanel_->Rows()[static_cast<std::size_t>(row)].Controller;
        if (node.Type == CodeOf(L"Image") && !(node.Flags & In)) {
            Image& image = ImageOf(argument);
            // An image without a type has no pixels to make room for: the operation will type it.
            if (image.Type != Undefined) image.Set(width, height, image.Type);
        } else if (node.Type == CodeOf(L"int") && (IsLabeled(argument, L"Width") || IsLabeled(argument, L"Height"))) {
            static_cast<Var<int>*>(argument.Variable)->Value = IsLabeled(argument, L"Width") ? width : height;
            if (controller) controller->UpdateControl(false, false);
        } else if (auto* anchor = dynamic_cast<IAnchor*>(controller)) {
            anchor->ResetAnchor(width, height);
        }
    }
    if (source) return source->Variable;
    return operation.Args.empty() ? nullptr : operation.Args.front().Variable;
}

void OperationHandler::ResetButton_Click()
{
    Operation* operation = CurrentOperation();
    if (!operation || !currentCommandPanel_ || !currentCommandPanel_->IsInitialized()) return;
    AnyVariable* variable = InitControllers();
    DoRun(operation, variable, false, false, false, false);
}

void OperationHandler::DropPanel()
{
    currentCommandPanel_.reset();
    previousOperationVisibleFlags_.clear();
}

/// A controller whose operation has lost its variable belongs to the latest one that has it.
void OperationHandler::RepointOne(IController& controller)
{
    controller.SetCurrentOperation(nullptr);
    for (const auto& operation : engine_.Operations)
        for (const auto* arguments : {&operation->Args, &operation->Held})
            for (const Arg& argument : *arguments)
                if (argument.Variable && argument.Variable->NameText == controller.VariableIdentifier()) {
                    controller.SetCurrentOperation(operation.get());
                    controller.SetCurrentVariable(argument.Variable);
                }
}

void OperationHandler::Repoint(const Operation* former)
{
    for (const auto& controller : controllers_)
        if (controller->CurrentOperation() == former) RepointOne(*controller);
}

/// Everyone lets go of a controller that is about to be destroyed.
void OperationHandler::Detach(IController& controller)
{
    if (currentCommandPanel_) currentCommandPanel_->Forget(&controller);
    parametersPanel_.Forget(&controller);
    for (const auto& other : controllers_) {
        if (other.get() == &controller) continue;
        if (other->Manipulator() == &controller) other->SetManipulator(nullptr);
        if (other->MotherController() == &controller) other->SetMotherController(nullptr);
        other->RemoveChild(controller);
    }
}

void OperationHandler::DeleteUnusedControllers()
{
    std::set<std::wstring> names;
    for (const AnyVariable* variable : engine_.GetVariables(-1, 0, true))
        names.insert(variable->NameText);
    for (std::size_t i = controllers_.size(); i-- > 0;) {
        if (names.count(controllers_[i]->VariableIdentifier())) continue;
        Detach(*controllers_[i]);
        controllers_.erase(controllers_.begin() + static_cast<std::ptrdiff_t>(i));
    }
}

/// What undone operations have left behind is freed; whoever showed it shows the latest variable of the name.
void OperationHandler::ReclaimVariables()
{
    const auto isGone = [](const AnyVariable* variable) { return variable && variable->Uses <= 0; };
    for (const auto& controller : controllers_)
        if (isGone(controller->CurrentVariable())) RepointOne(*controller);
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
    engine_.Execute();
    views_.SetBusy(nullptr);
    const std::wstring error = Status::Error().Code != NoError ? Status::UnicodeError() : refused;
    RefreshTimings();
    views_.PassBlobSelection();
    views_.SetStatusText(error);
    PushValues(Dragging);
}

/// The first run of a panel that has just been built; where runs are blocked it still shows what its variables hold.
void OperationHandler::RunPanel(bool taken)
{
    currentCommandPanel_->SetInitialized();
    DoRun(nullptr, nullptr, taken, true, false, false);
    if (currentOperationRunningMutex_) {
        currentCommandPanel_->UpdateMotherControllers();
        currentCommandPanel_->UpdateControls(false);
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
    if (!op) return;
    for (const auto& controller : controllers_)
        if (IsPinned(controller->ControllerState()) && controller->CurrentOperation() == op &&
            controller->CurrentVariable() == var) {
            controller->UpdateProperty();
            return;
        }
}

void OperationHandler::PushValues(bool dragging)
{
    parametersPanel_.UpdateControls(dragging);
    if (CurrentOperation() && currentCommandPanel_) currentCommandPanel_->UpdateControls(dragging);
    for (const auto& controller : controllers_) {
        AnyVariable* variable = controller->CurrentVariable();
        if (!variable || !variable->Changed || (controller->ControllerAttributes() & Value)) continue;
        controller->UpdateControl(false, dragging);
        variable->Changed = false;
    }
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
        auto made = MakeController(*operation, Argument, false);
        if (!made) return;
        chosen = made.get();
        created.push_back(std::move(made));
        Keep(created);
    }
    if (!IsPinned(chosen->ControllerState()))
        TakeOver(*chosen, *operation, argument);
    else
        argument.Visible = chosen->CurrentOperation() == operation;
    panel.ReplaceController(Argument, chosen);
    parametersPanel_.UpdateParametersPanel(panel, [this](const std::wstring& name) { return GetController(name); });
    if (former && former != chosen && former->CurrentOperation() == operation) RepointOne(*former);
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
