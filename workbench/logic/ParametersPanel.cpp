#include "workbench/logic/ParametersPanel.h"

#include "workbench/logic/IOperationViews.h"
#include "workbench/logic/MultiController.h"

#include <algorithm>
#include <cstddef>
#include <cwchar>
#include <utility>

namespace TeskPlus {

namespace {

bool MovesPicture(const IController& controller)
{
    return KindOf(controller.ControllerType()) == typeKind::Integer && controller.CurrentOperation() &&
           IntegerKind(controller.CurrentOperation()->Node, controller.ControllerNode()) != integerKind::Plain;
}

} // namespace

void ParametersPanel::Changed()
{
    views_.LayOutParameters(*this);
    ShowParametersForm();
}

bool ParametersPanel::AddController(Operation& Owner, IController& Controller, int Node, bool IsProperty,
                                    int OperationId, const ControllerEventDelegate& Delegate,
                                    const CommandPanel* Current)
{
    if (RemoveController(Owner, Controller, Node, IsProperty, true)) return true;
    IController* const sheet = IsProperty ? SheetControllerOf(&Controller) : nullptr;
    AnyVariable* const variable = (sheet ? sheet : &Controller)->CurrentVariable();
    ControllerRequest request{engine_, Delegate};
    request.Method = IsProperty ? -1 : Owner.Node;
    request.Variable = variable;
    request.Node = Node;
    request.OperationId = OperationId;
    request.IsProperty = IsProperty;
    request.CurrentOperation = &Owner;
    request.Parent = views_.ParentWindow();
    auto copy = factory_.CreateController(request);
    if (!copy) return false;
    copy->SetCurrentOperation(&Owner);
    copy->SetVariableIdentifier(Controller.VariableIdentifier());
    copy->SetIsExternalWidget(true);
    copy->UpdateControl(false, false);
    rows_.push_back({&Owner, std::move(copy), Node, IsProperty, Engine::Tree[Node]->Documentation});
    UpdateMotherControllers(Current);
    // Once more, now that it knows what it moves.
    rows_.back().Controller->UpdateControl(false, false);
    Changed();
    return true;
}

bool ParametersPanel::RemoveController(const Operation& Owner, IController& Controller, int Node, bool IsProperty,
                                       bool TestOnly)
{
    const auto row = std::find_if(rows_.begin(), rows_.end(), [&](const ParameterRow& candidate) {
        return candidate.Owner == &Owner && candidate.IsProperty == IsProperty &&
               !std::wcscmp(Engine::Tree[candidate.Node]->Label, Engine::Tree[Node]->Label) &&
               candidate.Controller->VariableIdentifier() == Controller.VariableIdentifier();
    });
    if (row == rows_.end()) return false;
    if (TestOnly) return true;
    // The view lets go of the row's controls before they are destroyed.
    ParameterRow gone = std::move(*row);
    rows_.erase(row);
    Changed();
    return true;
}

void ParametersPanel::RemoveControllers(const Operation& Owner)
{
    std::vector<ParameterRow> gone;
    for (std::size_t i = rows_.size(); i-- > 0;)
        if (rows_[i].Owner == &Owner) {
            gone.push_back(std::move(rows_[i]));
            rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(i));
        }
    if (!gone.empty()) Changed();
}

void ParametersPanel::UpdateParametersPanel(const CommandPanel& Panel,
                                            const std::function<IController*(const std::wstring&)>& Find)
{
    const Operation& owner = Panel.PanelOperation();
    std::vector<ParameterRow> gone;
    for (std::size_t i = rows_.size(); i-- > 0;) {
        const ParameterRow& row = rows_[i];
        if (row.Owner != &owner) continue;
        const bool answered = std::any_of(Panel.Rows().begin(), Panel.Rows().end(), [&](const PanelRow& local) {
            return local.Controller && local.Controller->VariableIdentifier() == row.Controller->VariableIdentifier() &&
                   (row.IsProperty || local.Controller->ControllerName() == row.Controller->ControllerName());
        });
        if (answered) continue;
        if (IController* main = Find(row.Controller->VariableIdentifier())) {
            main->SetControllerState(controllerState::Hidden);
            main->HideCtrl(false);
        }
        gone.push_back(std::move(rows_[i]));
        rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(i));
    }
    // Sister methods may share a row; its copy then shows the variable that stands in it now.
    for (const ParameterRow& row : rows_)
        if (row.Owner == &owner)
            if (const IController* local = Panel.GetLocalController(row.Controller->VariableIdentifier()))
                row.Controller->SetCurrentVariable(local->CurrentVariable());
    if (!gone.empty()) Changed();
}

void ParametersPanel::UpdateMotherControllers(const CommandPanel* Current)
{
    if (!Current) return;
    for (const PanelRow& local : Current->Rows()) {
        if (!local.Controller || !MovesPicture(*local.Controller)) continue;
        IController* copy = GetController(local.Controller->ControllerNode(), local.Controller->VariableIdentifier());
        if (!copy) continue;
        copy->SetManipulator(local.Controller->Manipulator());
        copy->SetMotherController(local.Controller->MotherController());
    }
}

void ParametersPanel::UpdateProperties()
{
    for (const ParameterRow& row : rows_)
        row.Controller->UpdateProperty();
}

void ParametersPanel::UpdateControls(bool Dragging)
{
    for (const ParameterRow& row : rows_)
        row.Controller->UpdateControl(false, Dragging);
}

void ParametersPanel::ShowParametersForm()
{
    views_.ShowParametersForm(!rows_.empty());
}

IController* ParametersPanel::GetController(int Node, const std::wstring& Name) const
{
    for (const ParameterRow& row : rows_)
        if (row.Node == Node && row.Controller->VariableIdentifier() == Name) return row.Controller.get();
    return nullptr;
}

void ParametersPanel::Forget(const IController* Controller)
{
    for (const ParameterRow& row : rows_) {
        if (row.Controller->Manipulator() == Controller) row.Controller->SetManipulator(nullptr);
        if (row.Controller->MotherController() == Controller) row.Controller->SetMotherController(nullptr);
    }
}

void ParametersPanel::Repoint(const std::function<bool(const AnyVariable*)>& IsGone)
{
    std::vector<ParameterRow> gone;
    for (std::size_t i = rows_.size(); i-- > 0;) {
        IController& controller = *rows_[i].Controller;
        if (!IsGone(controller.CurrentVariable())) continue;
        const auto& arguments = rows_[i].Owner->Args;
        const auto own = std::find_if(arguments.begin(), arguments.end(), [&](const Arg& argument) {
            return argument.Variable && argument.Variable->NameText == controller.VariableIdentifier();
        });
        if (own != arguments.end()) {
            controller.SetCurrentVariable(own->Variable);
            continue;
        }
        gone.push_back(std::move(rows_[i]));
        rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(i));
    }
    if (!gone.empty()) Changed();
}

void ParametersPanel::RenameVariable(const std::wstring& Old, const std::wstring& New)
{
    for (const ParameterRow& row : rows_)
        if (row.Controller->VariableIdentifier() == Old) row.Controller->SetVariableIdentifier(New);
}

} // namespace TeskPlus
