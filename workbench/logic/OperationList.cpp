// The lines of the list: made, collapsed to what is pinned, brought back, and what clicks do to them.
#include "workbench/logic/OperationList.h"

#include "engine/TypeNames.h"
#include "workbench/logic/MultiController.h"

#include <algorithm>
#include <array>
#include <cwchar>
#include <utility>

namespace TeskPlus {

using namespace attributeValue;

namespace {

std::wstring OperationText(const Operation& operation)
{
    const MethodNode& method = *Engine::OpNode(operation.Node);
    const int owner = ClassOfNode(operation.Node);
    return std::wstring(method.Label) + L" (" + (owner < 0 ? L"" : Engine::Tree[owner]->Identifier) + L"." +
           method.Identifier + L")";
}

std::wstring TypedText(const std::wstring& name, int node)
{
    return name + L" (" + typeString[Engine::VarNode(node)->Type] + L")";
}

std::wstring WithTime(const std::wstring& text, std::int32_t microseconds)
{
    std::array<wchar_t, 40> time{};
    std::swprintf(time.data(), time.size(), L" | %.15g ms", microseconds * 0.001);
    return text.substr(0, text.find(L" | ")) + time.data();
}

bool HasPinnedLine(const ListLine& line)
{
    return std::any_of(line.Lines.begin(), line.Lines.end(),
                       [](const ListLine& child) { return child.ImageIndex == lineImage::Pinned; });
}

} // namespace

OperationList::OperationList(OperationHandler& Handler) : handler_(Handler), engine_(Handler.GetEngine())
{
    Handler.operationListAddDelegate_ = [this](int id, const operationItemInfo& item, bool isNew) {
        AddOperation(id, item, isNew);
    };
    Handler.operationListSelectDelegate_ = [this](int previous, int id, bool keepItems) {
        SelectOperation(previous, id, keepItems);
    };
    Handler.operationListRemoveDelegate_ = [this](int id) { RemoveOperation(id); };
    Handler.operationListRefreshDelegate_ = [this] { CreateNewOperationItems(handler_.CurrentOperationId()); };
    Handler.operationListTimingsDelegate_ = [this] { UpdateTimings(); };
}

void OperationList::Tell() const
{
    if (Changed) Changed();
}

ListLine* OperationList::Find(const ListPath& path)
{
    std::vector<ListLine>* lines = &lines_;
    ListLine* line = nullptr;
    const int places[] = {path.Operation, path.Variable, path.Property};
    for (int level = 0; level <= path.Level(); level++) {
        if (places[level] < 0 || places[level] >= static_cast<int>(lines->size())) return nullptr;
        line = &(*lines)[static_cast<std::size_t>(places[level])];
        lines = &line->Lines;
    }
    return line;
}

const ListLine* OperationList::LineAt(const ListPath& Path) const
{
    return const_cast<OperationList*>(this)->Find(Path);
}

void OperationList::AddOperation(int Id, const operationItemInfo& Item, bool IsNew)
{
    if (Id < 0 || Id >= engine_.NumOperations()) return;
    for (ListLine& entry : lines_) {
        if (entry.ImageIndex == lineImage::CurrentOperation) UpdateOperationItems(entry, false);
        entry.ImageIndex = lineImage::None;
    }
    ListLine made;
    made.Text = OperationText(*engine_.Operations[static_cast<std::size_t>(Id)]);
    made.Item = Item;
    made.ImageIndex = lineImage::CurrentOperation;
    if (Id >= static_cast<int>(lines_.size()))
        lines_.push_back(std::move(made));
    else if (IsNew)
        lines_.insert(lines_.begin() + Id, std::move(made));
    else
        lines_[static_cast<std::size_t>(Id)] = std::move(made);
    CreateNewOperationItems(Id);
    // A swap renames the results that the engine named, wherever they are read.
    if (!IsNew) RefreshNames();
    UpdateTimings();
}

void OperationList::RemoveOperation(int Id)
{
    if (Id < 0 || Id >= static_cast<int>(lines_.size())) return;
    lines_.erase(lines_.begin() + Id);
    Tell();
}

void OperationList::SelectOperation(int, int Id, bool KeepItems)
{
    for (ListLine& entry : lines_) {
        if (entry.ImageIndex == lineImage::CurrentOperation && !KeepItems) UpdateOperationItems(entry, false);
        entry.ImageIndex = lineImage::None;
    }
    if (ListLine* entry = Find({Id})) {
        entry->ImageIndex = lineImage::CurrentOperation;
        UpdateOperationItems(*entry, true);
    }
    Tell();
}

bool OperationList::IsValueRow(const Operation& operation, int argument) const
{
    const ArgumentNode& node = *Engine::VarNode(operation.Args[static_cast<std::size_t>(argument)].Node);
    return (node.Flags & Value) && node.Type != CodeOf(L"Site") && node.Type != CodeOf(L"XY");
}

ListLine OperationList::VariableLine(Operation& operation, int argument) const
{
    const Arg& shown = operation.Args[static_cast<std::size_t>(argument)];
    ListLine line;
    line.Text = TypedText(shown.Variable->NameText, shown.Node);
    line.Variable = {&operation, shown.Node, shown.Variable->NameText};
    line.Argument = argument;
    return line;
}

/// The properties of a variable's sheet; with `pinnedOnly` those that stay when the line is collapsed.
void OperationList::AddProperties(ListLine& line, bool pinnedOnly) const
{
    line.Lines.clear();
    IController* controller = handler_.GetController(line.Variable.VariableIdentifier);
    const IPropertySheet* sheet = SheetOf(controller);
    if (!sheet) return;
    const auto& pages = sheet->PageNodes();
    const bool firstOnly = controller->ControllerType() == CodeOf(L"Morpho");
    for (std::size_t page = 0; page < (firstOnly ? std::min<std::size_t>(1, pages.size()) : pages.size()); page++)
        for (int node = Engine::Tree[pages[page]]->FirstChild; node >= 0; node = Engine::Tree[node]->NextSibling) {
            if (Engine::Tree[node]->Kind() != ArgumentKind) continue;
            const bool pinned = handler_.IsPined(*line.Variable.Op, *controller, node, true);
            if (!pinned && (pinnedOnly || line.ImageIndex == lineImage::None)) continue;
            ListLine property;
            property.Text = TypedText(Engine::Tree[node]->Label, node);
            property.ImageIndex = pinned ? lineImage::Pinned : lineImage::CanBePinned;
            property.Variable = {line.Variable.Op, node, line.Variable.VariableIdentifier};
            property.Argument = line.Argument;
            line.Lines.push_back(std::move(property));
        }
}

void OperationList::CreateNewOperationItems(int Id)
{
    ListLine* entry = Find({Id});
    if (!entry || Id >= engine_.NumOperations()) return;
    Operation& operation = *engine_.Operations[static_cast<std::size_t>(Id)];
    entry->Lines.clear();
    for (int k = 0; k < operation.NumArgs(); k++) {
        const Arg& argument = operation.Args[static_cast<std::size_t>(k)];
        if (!argument.Variable) continue;
        ListLine line = VariableLine(operation, k);
        IController* controller = handler_.GetController(argument.Variable);
        if (IsValueRow(operation, k)) {
            const bool pinned = controller && handler_.IsPined(operation, *controller, argument.Node, false);
            line.ImageIndex = pinned ? lineImage::Pinned : lineImage::CanBePinned;
        } else {
            if (argument.Visible)
                line.ImageIndex =
                    controller && IsPinned(controller->ControllerState()) ? lineImage::Pinned : lineImage::CanBePinned;
            AddProperties(line, false);
            if (line.ImageIndex == lineImage::None) continue;
        }
        entry->Lines.push_back(std::move(line));
        entry->IsExpanded = true;
    }
    Tell();
}

/// Collapses an entry to what stays pinned, or brings its lines back.
void OperationList::UpdateOperationItems(ListLine& entry, bool expand)
{
    const auto id = static_cast<std::size_t>(&entry - lines_.data());
    if (!expand) {
        for (ListLine& line : entry.Lines) {
            line.IsExpanded = HasPinnedLine(line);
            line.Checked = false;
            if (line.IsExpanded)
                std::erase_if(line.Lines, [](const ListLine& child) { return child.ImageIndex != lineImage::Pinned; });
        }
        std::erase_if(entry.Lines,
                      [](const ListLine& line) { return !line.IsExpanded && line.ImageIndex != lineImage::Pinned; });
        entry.IsExpanded = !entry.Lines.empty();
        return;
    }
    if (id >= engine_.Operations.size()) return;
    Operation& operation = *engine_.Operations[id];
    for (int k = 0; k < operation.NumArgs(); k++) {
        const Arg& argument = operation.Args[static_cast<std::size_t>(k)];
        if (!argument.Variable) continue;
        const auto place = std::find_if(entry.Lines.begin(), entry.Lines.end(),
                                        [&](const ListLine& line) { return line.Argument >= k; });
        if (place != entry.Lines.end() && place->Argument == k) {
            if (place->ImageIndex == lineImage::None && argument.Visible) place->ImageIndex = lineImage::CanBePinned;
            if (!IsValueRow(operation, k)) AddProperties(*place, false);
            continue;
        }
        if (!IsValueRow(operation, k) && !argument.Visible) continue;
        ListLine line = VariableLine(operation, k);
        line.ImageIndex = lineImage::CanBePinned;
        if (!IsValueRow(operation, k)) AddProperties(line, false);
        entry.Lines.insert(place, std::move(line));
    }
    entry.IsExpanded = !entry.Lines.empty();
}

void OperationList::UpdateTimings()
{
    std::vector<int> changed;
    for (std::size_t id = 0; id < lines_.size() && id < engine_.Operations.size(); id++) {
        ListLine& line = lines_[id];
        const std::int32_t duration = engine_.Operations[id]->Duration;
        const std::wstring& failure = handler_.FailureOf(*engine_.Operations[id]);
        if (line.Duration == duration && line.Failure == failure) continue;
        line.Duration = duration;
        line.Text = WithTime(line.Text, duration);
        line.Failure = failure;
        changed.push_back(static_cast<int>(id));
    }
    if (!changed.empty() && TextsChanged) TextsChanged(changed);
}

void OperationList::NodeMouseClick(const ListPath& Path)
{
    ListLine* line = Find(Path);
    if (!line || isRenaming_) return;
    if (Path.Level() == 0) {
        if (Path.Operation == handler_.CurrentOperationId()) return;
        const operationItemInfo item = line->Item;
        handler_.SelectOperation(Path.Operation, item.ClassNode, item.ChoiceNode);
        return;
    }
    if (Path.Operation != handler_.CurrentOperationId()) return;
    if (Path.Level() == 1)
        ClickVariable(*line);
    else
        ClickProperty(*line);
    Tell();
}

void OperationList::ClickVariable(ListLine& line)
{
    IController* controller = handler_.GetController(line.Variable.VariableIdentifier);
    Operation* operation = handler_.CurrentOperation();
    if (!controller || !operation) return;
    const bool isValue = IsValueRow(*operation, line.Argument);
    if (line.ImageIndex == lineImage::CanBePinned) {
        line.ImageIndex = lineImage::Pinned;
        if (isValue)
            handler_.AddControllerToParametersPanel(*operation, *controller, line.Variable.VariableNode, false);
        ShowVariable(4, *controller);
        return;
    }
    if (isValue)
        handler_.RemoveControllerFromParametersPanel(*operation, *controller, line.Variable.VariableNode, false);
    line.ImageIndex =
        controller->ControllerState() == controllerState::PinnedAndShown ? lineImage::CanBePinned : lineImage::None;
    HideVariable(*controller);
}

void OperationList::ClickProperty(ListLine& line)
{
    IController* controller = handler_.GetController(line.Variable.VariableIdentifier);
    Operation* operation = line.Variable.Op;
    if (!controller || !operation) return;
    if (line.ImageIndex == lineImage::CanBePinned) {
        line.ImageIndex = lineImage::Pinned;
        handler_.AddControllerToParametersPanel(*operation, *controller, line.Variable.VariableNode, true);
        return;
    }
    handler_.RemoveControllerFromParametersPanel(*operation, *controller, line.Variable.VariableNode, true);
    line.ImageIndex = operation == handler_.CurrentOperation() ? lineImage::CanBePinned : lineImage::None;
}

/// Mode 2 shows for the moment, mode 4 pins.
void OperationList::ShowVariable(int mode, IController& controller)
{
    HideHover();
    const controllerState state = controller.ControllerState();
    if (mode == 2) {
        if (state != controllerState::Hidden) return;
        controller.SetControllerState(controllerState::Glanced);
        controller.ShowCtrl(true);
        return;
    }
    if (state < controllerState::Shown)
        controller.SetControllerState(controllerState::Pinned);
    else if (state == controllerState::Shown)
        controller.SetControllerState(controllerState::PinnedAndShown);
    controller.ShowCtrl(true);
}

void OperationList::HideVariable(IController& controller)
{
    const auto clearFirst = [&] {
        for (const auto& operation : engine_.Operations)
            for (Arg& argument : operation->Args)
                if (argument.Visible && argument.Variable &&
                    argument.Variable->NameText == controller.VariableIdentifier()) {
                    argument.Visible = false;
                    return;
                }
    };
    if (controller.ControllerState() == controllerState::Pinned) {
        controller.SetControllerState(controllerState::Hidden);
        if (controller.HideCtrl(false)) clearFirst();
    } else if (controller.ControllerState() == controllerState::PinnedAndShown) {
        controller.SetControllerState(controllerState::Shown);
        clearFirst();
        if (Operation* selected = handler_.CurrentOperation())
            for (Arg& argument : selected->Args)
                if (argument.Variable && argument.Variable->NameText == controller.VariableIdentifier()) {
                    argument.Visible = true;
                    controller.SetCurrentOperation(selected);
                    controller.SetCurrentVariable(argument.Variable);
                    controller.ShowCtrl(false);
                    break;
                }
    }
}

void OperationList::HideHover()
{
    for (const auto& controller : handler_.Controllers())
        if (controller->ControllerState() == controllerState::Glanced) {
            controller->SetControllerState(controllerState::Hidden);
            controller->HideCtrl(false);
        }
}

void OperationList::NodeMouseHover(const ListPath& Path)
{
    if (isRenaming_) return;
    const ListLine* line = LineAt(Path);
    IController* controller =
        Path.Level() == 1 && line ? handler_.GetController(line->Variable.VariableIdentifier) : nullptr;
    // A value has no window to be glanced at.
    if (controller && controller->IsStructure())
        ShowVariable(2, *controller);
    else
        HideHover();
}

bool OperationList::BeforeExpand(const ListPath& Path)
{
    ListLine* line = Find(Path);
    if (!line || Path.Operation != handler_.CurrentOperationId()) return false;
    if (Path.Level() == 1) {
        AddProperties(*line, false);
        line->Checked = false;
    }
    line->IsExpanded = true;
    Tell();
    return true;
}

bool OperationList::BeforeCollapse(const ListPath& Path)
{
    ListLine* line = Find(Path);
    if (!line || Path.Operation != handler_.CurrentOperationId()) return false;
    bool collapses = true;
    if (Path.Level() == 1) {
        AddProperties(*line, false);
        if (HasPinnedLine(*line)) {
            line->Checked = !line->Checked;
            if (line->Checked) AddProperties(*line, true);
            collapses = false;
        }
    }
    line->IsExpanded = !collapses;
    Tell();
    return collapses;
}

} // namespace TeskPlus
