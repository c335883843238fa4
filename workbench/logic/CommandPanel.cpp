#include "workbench/logic/CommandPanel.h"

#include "engine/TypeNames.h"
#include "workbench/logic/ControllerFactory.h"
#include "workbench/logic/IOperationViews.h"
#include "workbench/logic/MultiController.h"

#include <algorithm>
#include <cwchar>
#include <initializer_list>
#include <utility>

namespace TeskPlus {

using namespace attributeValue;

namespace {

/// A controller's members, where it has any, else itself.
std::vector<IController*> PartsOf(IController& controller)
{
    if (const auto* several = dynamic_cast<MultiController*>(&controller)) return several->Members();
    return {&controller};
}

bool IsNamed(const Arg& argument, const std::wstring& name)
{
    return argument.Variable && argument.Variable->NameText == name;
}

Arg* FindArgument(Operation& operation, const std::wstring& name)
{
    for (Arg& argument : operation.Args)
        if (IsNamed(argument, name)) return &argument;
    return nullptr;
}

/// The type of the object that the values of a method move on the picture; 0 for none.
int ManipulatorOf(int method)
{
    if (method < 0) return 0;
    const MethodNode& node = *Engine::OpNode(method);
    return node.MovesProfile() ? CodeOf(L"Profile") : node.MovesSite() ? CodeOf(L"Site") : 0;
}

} // namespace

CommandPanel::CommandPanel(IOperationViews& Views, Operation& Operation) : views_(Views)
{
    Reset(Operation);
}

void CommandPanel::Reset(Operation& Operation)
{
    operation_ = &Operation;
    rows_.clear();
    rows_.resize(Operation.Args.size());
    title_.clear();
    resetHelp_.clear();
    externalControls_.clear();
    manipulator_ = ManipulatorOf(Operation.Node);
    manipulatorController_ = nullptr;
    isInitialized_ = false;
}

PanelRow& CommandPanel::RowAt(int row)
{
    if (row >= static_cast<int>(rows_.size())) rows_.resize(static_cast<std::size_t>(row) + 1);
    return rows_[static_cast<std::size_t>(row)];
}

void CommandPanel::InsertController(int Row, IController* Controller)
{
    RowAt(Row).Controller = Controller;
    if (Controller && manipulator_ != 0 && Controller->ControllerType() == manipulator_)
        manipulatorController_ = Controller;
}

void CommandPanel::InsertSelector(int Row, std::unique_ptr<VariableSelector> Selector)
{
    PanelRow& row = RowAt(Row);
    row.Selector = std::move(Selector);
    views_.CreateSelectorControl(*row.Selector);
    if (!row.Controller) return;
    if (row.Selector->Type() == CodeOf(L"Profile") || row.Selector->Type() == CodeOf(L"Site"))
        manipulatorController_ = row.Controller;
    row.Controller->SetWindowPossiblity(!(row.Selector->Attributes() & Out));
}

void CommandPanel::InsertHelpWidget(int Row, const wchar_t* Text)
{
    RowAt(Row).Help = Text ? Text : L"";
    RowAt(Row).HasHelp = true;
}

std::vector<LayoutRow> CommandPanel::BuildCommandPanel() const
{
    std::vector<LayoutRow> grid;
    for (const PanelRow& row : rows_) {
        LayoutRow line;
        if (row.Controller && !row.Controller->IsStructure())
            line.Controller = row.Controller;
        else if (row.Selector && row.Selector->Type() != CodeOf(L"Site") && row.Selector->Type() != CodeOf(L"XY"))
            line.Selector = row.Selector.get();
        if (row.HasHelp) line.Help = &row.Help;
        grid.push_back(line);
    }
    return grid;
}

void CommandPanel::UpdateProperties(AnyVariable* Variable)
{
    // Switches first: a threshold that is taken from the picture goes by the one below it.
    for (const bool switches : {true, false})
        for (const PanelRow& row : rows_) {
            if (!row.Controller || (Variable && row.Controller->CurrentVariable() != Variable)) continue;
            if ((row.Controller->ControllerType() == CodeOf(L"bool")) != switches) continue;
            row.Controller->UpdateProperty();
            if (Variable) return;
        }
}

void CommandPanel::UpdateControls(bool Dragging)
{
    for (const PanelRow& row : rows_) {
        if (!row.Controller) continue;
        row.Controller->UpdateControl(false, Dragging);
        if (AnyVariable* variable = row.Controller->CurrentVariable()) variable->Changed = false;
    }
}

void CommandPanel::Place(IController& controller, WindowSpiral& spiral, WindowSize workArea)
{
    for (IController* part : PartsOf(controller)) {
        if (!dynamic_cast<IPlacedWindow*>(part)) continue;
        // Each goes beside those that were placed before it, which are not on the screen yet.
        std::vector<WindowRect> others = OccupiedPlaces();
        others.insert(others.end(), placed_.begin(), placed_.end());
        const WindowSize size = views_.ControlSize(*part);
        const WindowPoint place = spiral.Next(workArea, size, views_.IsHelp(), others);
        placed_.push_back({place.X, place.Y, size.Width, size.Height});
        views_.MoveControl(*part, place);
    }
}

std::vector<WindowRect> CommandPanel::OccupiedPlaces() const
{
    std::vector<IController*> known;
    for (const PanelRow& row : rows_) {
        if (!row.Controller) continue;
        for (IController* part : PartsOf(*row.Controller))
            if (part->ControllerState() != controllerState::NeverShown) known.push_back(part);
    }
    return views_.OccupiedPlaces(known);
}

void CommandPanel::ShowControllers(WindowSpiral& Spiral, bool KeepPlace, WindowSize WorkArea)
{
    placed_.clear();
    for (const PanelRow& row : rows_) {
        if (!row.Controller) continue;
        IController& controller = *row.Controller;
        if (controller.ControllerState() < controllerState::Shown) {
            if (!KeepPlace && controller.ControllerState() == controllerState::NeverShown)
                Place(controller, Spiral, WorkArea);
            controller.SetControllerState(controllerState::Shown);
        } else if (controller.ControllerState() == controllerState::Pinned) {
            controller.SetControllerState(controllerState::PinnedAndShown);
        }
        controller.ShowCtrl(IsPinned(controller.ControllerState()));
    }
}

void CommandPanel::ShowController(int Row)
{
    IController* controller = RowAt(Row).Controller;
    if (!controller) return;
    if (controller->ControllerState() < controllerState::Shown)
        controller->SetControllerState(controllerState::Shown);
    else if (controller->ControllerState() == controllerState::Pinned)
        controller->SetControllerState(controllerState::PinnedAndShown);
    controller->ShowCtrl(true);
}

void CommandPanel::HideController(int Row)
{
    IController* controller = RowAt(Row).Controller;
    if (!controller) return;
    if (controller->ControllerState() <= controllerState::Shown)
        controller->SetControllerState(controllerState::Hidden);
    else if (controller->ControllerState() == controllerState::PinnedAndShown)
        controller->SetControllerState(controllerState::Pinned);
    const bool hidden = controller->HideCtrl(false);
    if (Row < operation_->NumArgs()) {
        Arg& argument = operation_->Args[static_cast<std::size_t>(Row)];
        if (argument.Visible) argument.Visible = !hidden;
    }
}

void CommandPanel::HideControllers()
{
    if (rows_.size() != operation_->Args.size()) return;
    for (int row = 0; row < static_cast<int>(rows_.size()); row++)
        HideController(row);
}

void CommandPanel::HideUnusedControllers(Operation& Next, const std::vector<bool>& Flags)
{
    for (std::size_t row = 0; row < rows_.size(); row++) {
        if (!rows_[row].Controller) continue;
        IController& controller = *rows_[row].Controller;
        if (Arg* argument = FindArgument(Next, controller.VariableIdentifier())) {
            const bool pinned = row < Flags.size() && Flags[row];
            if (!pinned) argument->Visible = true;
            continue;
        }
        if (controller.ControllerState() <= controllerState::Shown) {
            controller.SetControllerState(controllerState::Hidden);
            if (!controller.HideCtrl(false) && controller.CurrentOperation())
                if (Arg* own = FindArgument(*controller.CurrentOperation(), controller.VariableIdentifier()))
                    own->Visible = true;
            continue;
        }
        controller.SetControllerState(controllerState::Pinned);
        controller.HideCtrl(false);
    }
}

std::vector<bool> CommandPanel::ResetVisibleFlag(Operation& Operation)
{
    std::vector<bool> flags;
    for (std::size_t row = 0; row < rows_.size(); row++) {
        const IController* controller = rows_[row].Controller;
        const bool pinned = controller && IsPinned(controller->ControllerState());
        if (controller && !pinned && row < Operation.Args.size()) Operation.Args[row].Visible = false;
        flags.push_back(pinned);
    }
    return flags;
}

IController* CommandPanel::MotherOf(int mother) const
{
    if (mother < 0) return nullptr;
    for (const Arg& argument : operation_->Args)
        if (argument.Node == mother && argument.Variable) return GetLocalController(argument.Variable->NameText);
    return nullptr;
}

void CommandPanel::UpdateMotherControllers()
{
    if (manipulatorController_)
        for (const PanelRow& row : rows_)
            if (row.Controller) row.Controller->SetManipulator(manipulatorController_);
    int instanceMother = -1;
    for (const Arg& argument : operation_->Args)
        if (Engine::VarNode(argument.Node)->Flags & Instance) instanceMother = Engine::VarNode(argument.Node)->Mother;
    for (std::size_t row = 0; row < rows_.size() && row < operation_->Args.size(); row++) {
        if (!rows_[row].Controller) continue;
        const ArgumentNode& node = *Engine::VarNode(operation_->Args[row].Node);
        const bool isEnd = node.Role == argumentRole::Beginning || node.Role == argumentRole::End;
        int mother = -1;
        if (rows_[row].Selector && !isEnd)
            mother = node.Mother;
        else if (manipulator_ == CodeOf(L"Profile"))
            mother = isEnd || node.Role == argumentRole::Position ? node.Mother : -1;
        else if (manipulator_ == CodeOf(L"Site"))
            mother = instanceMother;
        else if (node.Type == CodeOf(L"XY"))
            mother = node.Mother;
        if (IController* picture = MotherOf(mother); picture && picture != rows_[row].Controller)
            rows_[row].Controller->SetMotherController(picture);
    }
}

void CommandPanel::ReplaceController(int Row, IController* Controller)
{
    PanelRow& row = RowAt(Row);
    if (manipulatorController_ == row.Controller) manipulatorController_ = nullptr;
    row.Controller = Controller;
    if (!row.Selector || !Controller) return;
    if (Row < operation_->NumArgs())
        row.Selector->SetCurrentVariable(operation_->Args[static_cast<std::size_t>(Row)].Variable);
    row.Selector->UpdateComboBoxItems();
    if (row.Selector->Type() == CodeOf(L"Profile") || row.Selector->Type() == CodeOf(L"Site"))
        manipulatorController_ = Controller;
    Controller->SetWindowPossiblity(!(row.Selector->Attributes() & Out));
}

IController* CommandPanel::GetLocalController(const std::wstring& Name) const
{
    for (const PanelRow& row : rows_)
        if (row.Controller && row.Controller->VariableIdentifier() == Name) return row.Controller;
    return nullptr;
}

void CommandPanel::UpdateSelectors()
{
    for (const PanelRow& row : rows_)
        if (row.Selector) row.Selector->UpdateComboBoxItems();
}

void CommandPanel::Forget(const IController* Controller)
{
    if (manipulatorController_ == Controller) manipulatorController_ = nullptr;
    for (PanelRow& row : rows_)
        if (row.Controller == Controller) row.Controller = nullptr;
}

} // namespace TeskPlus
