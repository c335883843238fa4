#include "workbench/logic/VariableSelector.h"

#include <algorithm>
#include <utility>

namespace TeskPlus {

using namespace attributeValue;

VariableSelector::VariableSelector(Engine& Engine, AnyVariable* Variable, int Node, int Index, int OperationId,
                                   Delegate Chosen)
    : engine_(Engine), currentVariable_(Variable), node_(Node), index_(Index), operationId_(OperationId)
{
    if (!currentVariable_) return;
    chosen_ = std::move(Chosen);
    UpdateComboBoxItems();
}

int VariableSelector::Type() const
{
    return Engine::VarNode(node_)->Type;
}

std::uint32_t VariableSelector::Attributes() const
{
    return Engine::VarNode(node_)->Flags;
}

int VariableSelector::SelectedIndex() const
{
    if (!currentVariable_) return -1;
    const auto found = std::find_if(items_.begin(), items_.end(), [&](const AnyVariable* item) {
        return item->NameText == currentVariable_->NameText;
    });
    return found == items_.end() ? -1 : static_cast<int>(found - items_.begin());
}

void VariableSelector::UpdateComboBoxItems()
{
    items_.clear();
    if (currentVariable_) {
        const bool pureInput = (Attributes() & (In | Out)) == In;
        const int last = pureInput ? operationId_ - 1 : operationId_;
        // A last operation of -1 would stand for all of them.
        if (last >= 0) items_ = engine_.GetVariables(last, Type(), false);
        std::reverse(items_.begin(), items_.end());
    }
    if (Refilled) Refilled();
}

void VariableSelector::Choose(int Item)
{
    if (!chosen_ || Item < 0 || Item >= static_cast<int>(items_.size()) || Item == SelectedIndex()) return;
    AnyVariable* variable = items_[static_cast<std::size_t>(Item)];
    currentVariable_ = variable;
    chosen_(operationId_, index_, variable, false);
}

void VariableSelector::Click()
{
    if (chosen_) chosen_(operationId_, index_, currentVariable_, true);
}

} // namespace TeskPlus
