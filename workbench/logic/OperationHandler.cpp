// The road of an operation: created, selected, swapped.
#include "workbench/logic/OperationHandler.h"

#include "engine/TypeNames.h"
#include "workbench/logic/Raised.h"

#include <algorithm>
#include <cwchar>
#include <set>
#include <utility>

namespace TeskPlus {

using namespace attributeValue;

namespace {

constexpr const wchar_t* notIntegrated = L"This feature is not integrated yet. Thank you for your understanding.";
constexpr const wchar_t* swapNotIntegrated =
    L"This Tesk feature is not integrated in Tesk+ yet. Thank you for your understanding.";

bool IsDescendant(int node, int ancestor)
{
    const int next = Engine::Tree[ancestor]->NextSibling;
    return node >= ancestor && (next < 0 || node < next);
}

/// The child of a class under which a method stands, among its tabs; -1 for none.
int TabOf(const std::vector<LabeledItem>& tabs, int classNode, int method)
{
    int position = 0;
    for (int child = Engine::Tree[classNode]->FirstChild; child >= 0; child = Engine::Tree[child]->NextSibling) {
        const bool isTab = position < static_cast<int>(tabs.size()) &&
                           IsDescendant(tabs[static_cast<std::size_t>(position)].Item.OperationNode, child);
        if (isTab && IsDescendant(method, child)) return position;
        if (isTab) position++;
    }
    return -1;
}

/// The message for an input that finds no variable.
std::wstring MissingText(int type)
{
    return std::wstring(L"Cannot find a suitable ") + typeString[type] + L" input variable, please create it";
}

/// What the former method made is no input of the next one: without that method nothing makes it.
void UnbindOwnResults(Operation& operation)
{
    for (Arg& argument : operation.Args) {
        const std::uint32_t flags = Engine::VarNode(argument.Node)->Flags;
        const bool isInput = (flags & attributeValue::In) && !(flags & (attributeValue::Out | attributeValue::Value));
        if (!isInput || !argument.Variable || argument.Variable->Source) continue;
        argument.Variable->Uses--;
        argument.Variable = nullptr;
    }
}

/// A file that was read is not to be written over, nor the other way round: another kind of method starts with a path
/// of its own, for which its dialog asks.
void AskForNewFile(Engine& engine, Operation& operation, int id, int formerNode)
{
    if (!std::wcscmp(Engine::Tree[formerNode]->Identifier, Engine::Tree[operation.Node]->Identifier)) return;
    for (Arg& argument : operation.Args) {
        if (!argument.Variable || !IsPathType(Engine::VarNode(argument.Node)->Type)) continue;
        argument.Variable->Uses--;
        argument.Variable = engine.CreateVariable(argument.Node, id);
        if (argument.Variable) argument.Variable->Uses++;
    }
}

/// The inputs that an operation has already are not to be bound a second time.
void ReserveBound(Engine& engine, const Operation& operation, int id)
{
    engine.UnreserveVariables();
    if (id == 0) return;
    for (AnyVariable* candidate : engine.GetVariables(id - 1, 0, false))
        for (const Arg& argument : operation.Args)
            if (argument.Variable && argument.Variable->NameText == candidate->NameText) candidate->Reserved = true;
}

} // namespace

OperationHandler::OperationHandler(Tesk::Engine& Engine, IOperationViews& Views, const ControllerFactory& Factory)
    : engine_(Engine), views_(Views), factory_(Factory),
      run_([this](Operation* op, AnyVariable* var, bool taken, bool mothers, bool dragging, bool fromParameters) {
          DoRun(op, var, taken, mothers, dragging, fromParameters);
      }),
      keeper_(Engine), parametersPanel_(Engine, Views, Factory),
      builder_(Engine, Views, Factory, keeper_, run_, [this](int id, int argument, AnyVariable* chosen, bool same) {
          ReplaceController(id, argument, chosen, same);
      })
{
    engine_.BeforeRun = [this](const Operation& running) {
        lastBegun_ = &running;
        views_.SetBusy(&running);
    };
}

OperationHandler::~OperationHandler()
{
    engine_.BeforeRun = nullptr;
}

Operation* OperationHandler::CurrentOperation() const
{
    if (currentOperationID_ < 0 || currentOperationID_ >= engine_.NumOperations()) return nullptr;
    return engine_.Operations[static_cast<std::size_t>(currentOperationID_)].get();
}

operationItemInfo OperationHandler::ItemOf(int Id) const
{
    if (Id < 0 || Id >= engine_.NumOperations()) return {};
    const Operation* operation = engine_.Operations[static_cast<std::size_t>(Id)].get();
    for (const auto& [owner, item] : items_)
        if (owner == operation) return item;
    return ItemOfMethod(operation->Node);
}

void OperationHandler::SetItem(const Operation& operation, const operationItemInfo& item)
{
    for (auto& entry : items_)
        if (entry.first == &operation) {
            entry.second = item;
            return;
        }
    items_.emplace_back(&operation, item);
}

void OperationHandler::StoreOperationFormLocation()
{
    const Operation* operation = CurrentOperation();
    if (!operation || !views_.HasOperationForm()) return;
    const WindowPoint place = views_.OperationFormLocation();
    for (PanelLocation& location : commandPanelLocations_)
        if (location.Owner == operation) {
            location.Position = place;
            return;
        }
    commandPanelLocations_.push_back({operation, place});
}

void OperationHandler::CreateOperationForm(int Method, int Class, int Choice, bool Flag)
{
    if (Flag && views_.HasOperationForm()) return;
    OperationFormInfo info;
    info.Item = {Method, Class, Choice, false};
    auto tabs = ClassTabs(Class);
    if (tabs.size() > 1) {
        info.Item.IsMultiTab = true;
        info.CurrentTab = TabOf(tabs, Class, Method);
        info.Tabs = std::move(tabs);
    }
    formIsNew_ = true;
    views_.CreateOperationForm(info);
}

void OperationHandler::ShowRadioGroup(const operationItemInfo& item)
{
    RadioGroupInfo group;
    if (item.ChoiceNode >= 0) {
        group.Buttons = ChoiceButtons(item.ClassNode, item.ChoiceNode);
        group.Caption = ClassTabs(item.ClassNode).size() > 1 ? L"Operation" : Engine::Tree[item.ChoiceNode]->Label;
        group.CheckedMethod = item.OperationNode;
    }
    views_.ShowRadioGroup(group);
}

void OperationHandler::RecordVisibleFlags()
{
    previousOperationVisibleFlags_.clear();
    Operation* operation = CurrentOperation();
    if (operation && currentCommandPanel_ && &currentCommandPanel_->PanelOperation() == operation)
        previousOperationVisibleFlags_ = currentCommandPanel_->ResetVisibleFlag(*operation);
}

void OperationHandler::LeaveOperation()
{
    Operation* operation = CurrentOperation();
    if (!operation) return;
    operation->Reset();
    DeleteUnusedControllers();
    ReclaimVariables();
}

bool OperationHandler::MenuItemClicked(const operationItemInfo& Item)
{
    StoreOperationFormLocation();
    CreateOperationForm(Item.OperationNode, Item.ClassNode, Item.ChoiceNode, false);
    return AddNewOperation(Item.OperationNode, Item.ClassNode, Item.ChoiceNode);
}

bool OperationHandler::AddNewOperation(int Method, int Class, int Choice)
{
    if (Method < 0 || Method >= Engine::NumNodes || Engine::Tree[Method]->Kind() != MethodKind) return false;
    LeaveOperation();
    operationItemInfo item{Method, Class, Choice, ClassTabs(Class).size() > 1};
    ShowRadioGroup(item);
    const bool created = CreateOperation(item);
    SetFormOrder();
    return created;
}

/// Behind the selection or at the end, as the user wants it.
int OperationHandler::PlaceOfNew()
{
    const int id = currentOperationID_;
    if (!CurrentOperation() || IsLastOperation(id)) return engine_.NumOperations();
    MessageInfo question;
    question.Text = L"Do you want to insert the new operation after the current one or at the end?";
    question.Title = Title;
    question.Icon = messageIcon::Question;
    question.Buttons = {L"Current", L"End"};
    question.CancelButton = 1;
    return views_.ShowMessage(question) == 0 ? id + 1 : engine_.NumOperations();
}

bool OperationHandler::CreateOperation(const operationItemInfo& item)
{
    RecordVisibleFlags();
    const int id = PlaceOfNew();
    currentOperationID_ = id;
    engine_.UnreserveVariables();
    auto made = std::make_unique<Operation>();
    made->Set(engine_, item.OperationNode, item.ChoiceNode != -1);
    Operation& operation = engine_.InsertOperation(std::move(made), id);

    ControllerList created;
    const PanelOutcome outcome = Engine::IsPending(item.OperationNode)
                                     ? PanelOutcome{PanelOutcome::NoController}
                                     : CreateControllers(created, operationType::New, item.ClassNode);
    if (outcome.IsComplete()) {
        RunPanel(false);
        // The help has its text before other windows look for places beside it.
        SetItem(operation, item);
        UpdateContextualHelpForm();
        // On another tab the window is the former one, and stays.
        WindowPoint place;
        const bool placed = formIsNew_;
        if (placed)
            place = spiral_.Next(views_.WorkAreaSize(), views_.OperationFormSize(), views_.IsHelp(),
                                 currentCommandPanel_->OccupiedPlaces());
        ShowPanel(placed ? &place : nullptr, false);
        keeper_.Keep(created);
        StoreOperationFormLocation();
        currentIsNew_ = true;
        if (operationListAddDelegate_) operationListAddDelegate_(id, item, true);
        UpdateContextualHelpForm();
        currentMenuNode_ = item.ChoiceNode;
        return true;
    }
    Explain(outcome, notIntegrated);
    TakeBackNew(id, created);
    return false;
}

/// Removes an operation that could not be finished, and selects the one before it.
void OperationHandler::TakeBackNew(int id, ControllerList& created)
{
    if (currentCommandPanel_) currentCommandPanel_->HideControllers();
    views_.ClearPanel();
    views_.HideOperationForm();
    DropPanel();
    created.clear();
    Operation* operation = engine_.Operations[static_cast<std::size_t>(id)].get();
    int argument, consumer;
    currentOperationID_ = -1;
    // It has made nothing: what it was to change and a later operation reads was there before it.
    while (!engine_.RemoveOperation(id, argument, consumer, false)) {
        Arg& changed = operation->Args[static_cast<std::size_t>(argument)];
        changed.Variable->Uses--;
        changed.Variable = nullptr;
    }
    ForgetFailure(operation);
    keeper_.RepointFrom(operation);
    DeleteUnusedControllers();
    ReclaimVariables();
    SelectBefore(id);
    currentMenuNode_ = -2;
}

void OperationHandler::SelectBefore(int id)
{
    if (id - 1 < 0) {
        SelectNone();
        return;
    }
    const operationItemInfo item = ItemOf(id - 1);
    SelectOperation(id - 1, item.ClassNode, item.ChoiceNode);
}

void OperationHandler::Warn(const std::wstring& text)
{
    MessageInfo message;
    message.Text = text;
    message.Title = Title;
    message.Icon = messageIcon::Warning;
    views_.ShowMessage(message);
}

/// Tells why a panel is not complete; a dialog that the user has cancelled needs no words.
void OperationHandler::Explain(const PanelOutcome& outcome, const wchar_t* notIntegrated)
{
    if (outcome.Outcome == PanelOutcome::NoController)
        Warn(notIntegrated);
    else if (outcome.Outcome == PanelOutcome::Built)
        Warn(MissingText(outcome.MissingType));
}

void OperationHandler::ShowPanel(const WindowPoint* location, bool keepPlaces)
{
    const Raised selecting(operationSelectMode_);
    views_.ShowOperationForm(location);
    formIsNew_ = false;
    currentCommandPanel_->ShowControllers(spiral_, keepPlaces, views_.WorkAreaSize());
}

void OperationHandler::SubstituteOperation(const operationItemInfo& Item)
{
    Operation* operation = CurrentOperation();
    if (!operation || !currentCommandPanel_ || Item.OperationNode == operation->Node) return;
    StoreOperationFormLocation();
    views_.ClearPanel();
    RecordVisibleFlags();
    const Operation::Memo former = operation->Save();
    const bool isGroup = Item.ChoiceNode >= 0 && (Engine::Tree[Item.ChoiceNode]->Flags & GroupFlag);
    ControllerList created;
    PanelOutcome outcome;
    if (isGroup && Engine::IsPending(Item.OperationNode)) {
        outcome.Outcome = PanelOutcome::NoController;
    } else if (isGroup) {
        operation->Set(engine_, Item.OperationNode, true);
        UnbindOwnResults(*operation);
        AskForNewFile(engine_, *operation, currentOperationID_, former.Node);
        ReserveBound(engine_, *operation, currentOperationID_);
        outcome = CreateControllers(created, operationType::Swap, Item.ClassNode);
    } else {
        views_.LayOutPanel(*currentCommandPanel_);
    }
    if (!outcome.IsComplete()) {
        TakeBackSwap(*operation, former, Item.ClassNode, created);
        Explain(outcome, swapNotIntegrated);
        return;
    }
    parametersPanel_.UpdateParametersPanel(*currentCommandPanel_,
                                           [this](const std::wstring& name) { return GetController(name); });
    parametersPanel_.ShowParametersForm();
    operation->RenameTargets(engine_);
    UpdateNames();
    if (!currentOperationRunningMutex_) engine_.ChangeOperation(currentOperationID_);
    RunPanel(false);
    ShowPanel(nullptr, false);
    keeper_.Keep(created);
    views_.CheckRadioButton(operation->Node);
    const operationItemInfo item{operation->Node, Item.ClassNode, Item.ChoiceNode, Item.IsMultiTab};
    SetItem(*operation, item);
    if (operationListAddDelegate_) operationListAddDelegate_(currentOperationID_, item, false);
    UpdateContextualHelpForm();
    currentMenuNode_ = Item.ChoiceNode;
    SetFormOrder();
}

void OperationHandler::TakeBackSwap(Operation& operation, const Operation::Memo& former, int classNode,
                                    ControllerList& created)
{
    views_.ClearPanel();
    DropPanel();
    created.clear();
    operation.Restore(former);
    for (Arg& argument : operation.Args)
        argument.Visible = false;
    DeleteUnusedControllers();
    CreateControllers(created, operationType::Select, classNode);
    currentCommandPanel_->SetInitialized();
    currentCommandPanel_->UpdateMotherControllers();
    currentCommandPanel_->UpdateControls(false);
    ShowPanel(nullptr, true);
    keeper_.Keep(created);
    views_.CheckRadioButton(operation.Node);
    currentMenuNode_ = -2;
    SetFormOrder();
}

/// Each controller of the panel bears its variable's name, and so do the pinned copies.
void OperationHandler::UpdateNames()
{
    for (const PanelRow& row : currentCommandPanel_->Rows()) {
        if (!row.Controller || !row.Controller->CurrentVariable()) continue;
        const std::wstring before = row.Controller->VariableIdentifier();
        const std::wstring& now = row.Controller->CurrentVariable()->NameText;
        if (before == now) continue;
        row.Controller->SetVariableIdentifier(now);
        parametersPanel_.RenameVariable(before, now);
    }
    currentCommandPanel_->UpdateSelectors();
}

bool OperationHandler::ChangeTab(const operationItemInfo& Item)
{
    if (CurrentOperation()) {
        MessageInfo question;
        question.Text = L"Press Keep to retain the current operation or Delete to discard it\n"
                        L"before moving to other tab";
        question.Title = Title;
        question.Icon = messageIcon::Question;
        question.Buttons = {L"Keep", L"Delete", L"Cancel"};
        question.CancelButton = 2;
        const int answer = views_.ShowMessage(question);
        // An operation that a later one needs cannot go: that is no reason to lose the place.
        if (answer == 2 || (answer == 1 && !CheckOperationDeletion(currentOperationID_))) {
            const operationItemInfo item = ItemOf(currentOperationID_);
            SelectOperation(currentOperationID_, item.ClassNode, item.ChoiceNode);
            return false;
        }
        StoreOperationFormLocation();
        if (answer == 1) DeleteOperation(true);
    }
    views_.ClearPanel();
    return AddNewOperation(Item.OperationNode, Item.ClassNode, Item.ChoiceNode);
}

void OperationHandler::SelectOperation(int Id, int Class, int Choice)
{
    if (Id < 0 || Id >= engine_.NumOperations()) {
        SelectNone();
        return;
    }
    const int previous = currentOperationID_;
    {
        const Raised selecting(operationSelectMode_);
        StoreOperationFormLocation();
        RecordVisibleFlags();
        LeaveOperation();
        currentOperationID_ = Id;
        currentIsNew_ = false;
        Operation& operation = *CurrentOperation();
        views_.ClearPanel();
        CreateOperationForm(operation.Node, Class, Choice, false);
        ShowRadioGroup({operation.Node, Class, Choice, false});
        ControllerList created;
        CreateControllers(created, operationType::Select, Class);
        keeper_.Keep(created);
        currentMenuNode_ = Choice;
        RunPanel(true);
        WindowPoint place;
        for (const PanelLocation& location : commandPanelLocations_)
            if (location.Owner == &operation) place = location.Position;
        ShowPanel(&place, false);
        UpdateContextualHelpForm();
        SetFormOrder();
    }
    if (operationListSelectDelegate_) operationListSelectDelegate_(previous, Id, false);
}

void OperationHandler::SelectNone()
{
    const int previous = currentOperationID_;
    StoreOperationFormLocation();
    RecordVisibleFlags();
    LeaveOperation();
    if (currentCommandPanel_) currentCommandPanel_->HideControllers();
    views_.ClearPanel();
    views_.CloseOperationForm();
    DropPanel();
    currentOperationID_ = -1;
    currentMenuNode_ = -1;
    currentOperationRunningMutex_ = false;
    previousOperationVisibleFlags_.clear();
    views_.HideContextualHelp();
    if (operationListSelectDelegate_) operationListSelectDelegate_(previous, -1, false);
}

void OperationHandler::HideOperationAndControllerForms()
{
    if (currentCommandPanel_) currentCommandPanel_->HideControllers();
    views_.HideOperationForm();
}

void OperationHandler::SetFormOrder()
{
    views_.SetFormOrder(CurrentOperation());
}

void OperationHandler::UpdateContextualHelpForm()
{
    if (!views_.IsHelp()) {
        views_.HideContextualHelp();
        return;
    }
    const Operation* operation = CurrentOperation();
    if (!operation) {
        views_.HideContextualHelp();
        return;
    }
    std::vector<HelpParagraph> paragraphs;
    const operationItemInfo item = ItemOf(currentOperationID_);
    for (const int node : {item.ClassNode, item.ChoiceNode})
        if (node >= 0 && *Engine::Tree[node]->Documentation)
            paragraphs.push_back({Engine::Tree[node]->Documentation, false});
    views_.ShowContextualHelp(paragraphs);
}

bool OperationHandler::AddControllerToParametersPanel(Operation& Op, IController& Controller, int Node, bool IsProperty)
{
    return parametersPanel_.AddController(Op, Controller, Node, IsProperty, currentOperationID_, run_,
                                          currentCommandPanel_.get());
}

bool OperationHandler::RemoveControllerFromParametersPanel(Operation& Op, IController& Controller, int Node,
                                                           bool IsProperty)
{
    return parametersPanel_.RemoveController(Op, Controller, Node, IsProperty, false);
}

bool OperationHandler::IsPined(Operation& Op, IController& Controller, int Node, bool IsProperty)
{
    return parametersPanel_.RemoveController(Op, Controller, Node, IsProperty, true);
}

void OperationHandler::UpdateControllerIdentifier(bool IsValue, const std::wstring& Old, const std::wstring& New)
{
    // The row of a property bears the name of its object.
    parametersPanel_.RenameVariable(Old, New);
    if (!IsValue && currentCommandPanel_) currentCommandPanel_->UpdateSelectors();
}

void OperationHandler::ParametersFormActivated()
{
    if (operationSelectMode_) return;
    const int previous = currentOperationID_;
    LeaveOperation();
    currentOperationID_ = -1;
    currentOperationRunningMutex_ = false;
    previousOperationVisibleFlags_.clear();
    if (operationListSelectDelegate_) operationListSelectDelegate_(previous, -1, false);
}

void OperationHandler::RefreshTimings()
{
    if (operationListTimingsDelegate_) operationListTimingsDelegate_();
}

} // namespace TeskPlus
