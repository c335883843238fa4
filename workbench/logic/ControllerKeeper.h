// The controllers that live: one for each name of a variable, whichever operation is selected.
#pragma once

#include "workbench/logic/IController.h"

#include <memory>

namespace TeskPlus {

using ControllerList = std::vector<std::unique_ptr<IController>>;

class ControllerKeeper
{
public:
    explicit ControllerKeeper(Tesk::Engine& Engine) : engine_(Engine) {}
    ControllerKeeper(const ControllerKeeper&) = delete;
    ControllerKeeper& operator=(const ControllerKeeper&) = delete;
    ~ControllerKeeper();

    const ControllerList& All() const { return controllers_; }
    /// By the variable's name; null for none.
    IController* Find(const std::wstring& Name) const;
    IController* Find(const AnyVariable* Variable) const;
    /// Among those that live, and those of the panel that is being built.
    IController* Find(const std::wstring& Name, const ControllerList& Created) const;
    /// Takes over what a panel has made.
    void Keep(ControllerList& Created);
    /// The controller shows this argument now: whoever had it shows it no more.
    static void TakeOver(IController& Controller, Operation& Owner, Arg& Argument);

    /// A controller whose operation has lost its variable belongs to the latest one that has it.
    void Repoint(IController& Controller);
    /// All that belong to an operation, which may be gone.
    void RepointFrom(const Operation* Former);
    /// All whose variables the test holds for.
    void RepointGone(const std::function<bool(const AnyVariable*)>& IsGone);
    /// Destroys the controllers of names that no variable bears any more; whoever else knows one is told first.
    void DeleteUnused(const std::function<void(IController&)>& Forget);

    /// Pull of the pinned controller of an operation's variable, if there is one.
    void PullPinned(const Operation* Owner, const AnyVariable* Variable);
    /// Push to the controllers whose variables the latest run has changed.
    void PushChanged(bool Dragging);

private:
    void Detach(IController& controller);

    Tesk::Engine& engine_;
    ControllerList controllers_;
};

} // namespace TeskPlus
