// The road of an operation: created, selected, swapped, deleted.
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

} // namespace

OperationHandler::OperationHandler(Tesk::Engine& Engine, IOperationViews& Views, const ControllerFactory& Factory)
    : engine_(Engine), views_(Views), factory_(Factory), parametersPanel_(Engine, Views, Factory)
{
    engine_.BeforeRun = [this](const Operation& running) { views_.SetBusy(&running); };
}

OperationHandler::~OperationHandler()
{
    engine_.BeforeRun = nullptr;
    // A picture may go before what is drawn on it.
    for (const auto& controller : controllers_)
        controller->SetMotherController(nullptr);
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
    int missingType = 0;
    const int result = Engine::IsPending(item.OperationNode)
                           ? noController
                           : CreateControllers(created, operationType::New, item.ClassNode, missingType);
    if (result == 0) {
        RunPanel(false);
        // On another tab the window is the former one, and stays.
        WindowPoint place;
        const bool placed = formIsNew_;
        if (placed) place = spiral_.Next(views_.WorkAreaSize(), views_.OperationFormSize(), views_.IsHelp());
        ShowPanel(placed ? &place : nullptr, false);
        Keep(created);
        StoreOperationFormLocation();
        currentIsNew_ = true;
        SetItem(operation, item);
        if (operationListAddDelegate_) operationListAddDelegate_(id, item, true);
        UpdateContextualHelpForm();
        currentMenuNode_ = item.ChoiceNode;
        return true;
    }
    if (result != dialogCancelled) Warn(result > 0 ? MissingText(missingType) : notIntegrated);
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
    Repoint(operation);
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

void OperationHandler::ShowPanel(const WindowPoint* location, bool keepPlaces)
{
    const Raised selecting(operationSelectMode_);
    views_.ShowOperationForm(location);
    formIsNew_ = false;
    currentCommandPanel_->ShowControllers(spiral_, keepPlaces, views_.WorkAreaSize());
}

void OperationHandler::Keep(ControllerList& created)
{
    for (auto& controller : created)
        controllers_.push_back(std::move(controller));
    created.clear();
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
    int missingType = 0, result = 0;
    if (isGroup && Engine::IsPending(Item.OperationNode)) {
        result = noController;
    } else if (isGroup) {
        operation->Set(engine_, Item.OperationNode, true);
        UnbindOwnResults(*operation);
        AskForNewFile(*operation, former.Node);
        ReserveBound(*operation);
        result = CreateControllers(created, operationType::Swap, Item.ClassNode, missingType);
    } else {
        views_.LayOutPanel(*currentCommandPanel_);
    }
    if (result != 0) {
        TakeBackSwap(*operation, former, Item.ClassNode, created);
        if (result != dialogCancelled) Warn(result > 0 ? MissingText(missingType) : swapNotIntegrated);
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
    Keep(created);
    views_.CheckRadioButton(operation->Node);
    const operationItemInfo item{operation->Node, Item.ClassNode, Item.ChoiceNode, Item.IsMultiTab};
    SetItem(*operation, item);
    if (operationListAddDelegate_) operationListAddDelegate_(currentOperationID_, item, false);
    UpdateContextualHelpForm();
    currentMenuNode_ = Item.ChoiceNode;
    SetFormOrder();
}

/// What the former method made is no input of the next one: without that method nothing makes it.
void OperationHandler::UnbindOwnResults(Operation& operation)
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
void OperationHandler::AskForNewFile(Operation& operation, int formerNode)
{
    if (!std::wcscmp(Engine::Tree[formerNode]->Identifier, Engine::Tree[operation.Node]->Identifier)) return;
    for (Arg& argument : operation.Args) {
        if (!argument.Variable || !IsPathType(Engine::VarNode(argument.Node)->Type)) continue;
        argument.Variable->Uses--;
        argument.Variable = engine_.CreateVariable(argument.Node, currentOperationID_);
        if (argument.Variable) argument.Variable->Uses++;
    }
}

/// The inputs that an operation has already are not to be bound a second time.
void OperationHandler::ReserveBound(const Operation& operation)
{
    engine_.UnreserveVariables();
    if (currentOperationID_ == 0) return;
    for (AnyVariable* candidate : engine_.GetVariables(currentOperationID_ - 1, 0, false))
        for (const Arg& argument : operation.Args)
            if (argument.Variable && argument.Variable->NameText == candidate->NameText) candidate->Reserved = true;
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
    int missingType = 0;
    CreateControllers(created, operationType::Select, classNode, missingType);
    currentCommandPanel_->SetInitialized();
    currentCommandPanel_->UpdateMotherControllers();
    currentCommandPanel_->UpdateControls(false);
    ShowPanel(nullptr, true);
    Keep(created);
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
        int missingType = 0;
        CreateControllers(created, operationType::Select, Class, missingType);
        Keep(created);
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
        for (const auto& controller : controllers_) {
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
    if (id == currentOperationID_) {
        currentOperationID_ = -1;
        currentOperationRunningMutex_ = false;
    } else if (id < currentOperationID_) {
        currentOperationID_--;
    }
    Repoint(operation);
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
    return parametersPanel_.AddController(Op, Controller, Node, IsProperty, currentOperationID_, RunDelegate(),
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
