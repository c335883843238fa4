// The choice of a variable for an argument that takes an object.
#pragma once

#include "workbench/logic/IController.h"

namespace TeskPlus {

class VariableSelector
{
public:
    /// Operation id, argument index, chosen variable, and whether it is the one that stands.
    using Delegate = std::function<void(int, int, AnyVariable*, bool)>;

    /// With no variable the selector stands for a missing input: red, empty, and without effect.
    VariableSelector(Engine& Engine, AnyVariable* Variable, int Node, int Index, int OperationId, Delegate Chosen);
    VariableSelector(const VariableSelector&) = delete;
    VariableSelector& operator=(const VariableSelector&) = delete;
    /// The view's box goes with it.
    ~VariableSelector()
    {
        if (Released) Released();
    }

    /// The candidates, newest first.
    const std::vector<AnyVariable*>& Items() const { return items_; }
    /// Position of the current variable's name in `Items`; -1 for none.
    int SelectedIndex() const;
    AnyVariable* CurrentVariable() const { return currentVariable_; }
    void SetCurrentVariable(AnyVariable* Variable) { currentVariable_ = Variable; }
    bool IsMissing() const { return !currentVariable_; }
    int Type() const;
    std::uint32_t Attributes() const;
    int Node() const { return node_; }
    int Index() const { return index_; }

    /// The user chose an entry; the one that stands already does nothing.
    void Choose(int Item);
    /// The user clicked the closed box: the chosen variable's controller comes to the front.
    void Click();
    /// Refills the list and tells the view.
    void UpdateComboBoxItems();

    /// Set by the view: refill the box from `Items` and `SelectedIndex`, with its change event off.
    std::function<void()> Refilled;
    /// Set by the view: the selector is about to go.
    std::function<void()> Released;
    /// The view's box.
    ControlHandle Control = nullptr;

private:
    Engine& engine_;
    AnyVariable* currentVariable_;
    int node_, index_, operationId_;
    Delegate chosen_;
    std::vector<AnyVariable*> items_;
};

} // namespace TeskPlus
