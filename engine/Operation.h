// One recorded call: a method of the tree, and the variables bound to its arguments.
#pragma once

#include "engine/Variable.h"

#include <vector>

namespace Tesk {

/// One argument of an operation.
struct Arg
{
    AnyVariable* Variable = nullptr; ///< null until bound
    std::int32_t Node = -1;          ///< index of the argument's node
    bool Visible = false;            ///< its value is on the screen for this operation
};

class Operation
{
public:
    std::int32_t Node = -1;    ///< index of the method's node
    std::vector<Arg> Args;     ///< in the order of the node's argument children
    std::vector<Arg> Held;     ///< arguments of former methods of this operation, kept for possible use
    std::int32_t Duration = 0; ///< microseconds of the last run
    bool Dirty = false;        ///< run at the next `Execute` whatever the stamps say

    Operation() = default;
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;
    /// Gives up a use of each variable.
    ~Operation();

    int NumArgs() const { return static_cast<int>(Args.size()); }
    int NumHeld() const { return static_cast<int>(Held.size()); }

    /// (Re)builds the argument list for a method. With `Keep` the variables of the former method are held, and those
    /// that fit the new one are bound at once.
    void Set(Engine& Engine, int Method, bool Keep);
    /// Empties `Held`.
    void Reset();
    /// What `Set` changes, to go back to when a swap cannot be finished.
    struct Memo
    {
        std::int32_t Node;
        std::vector<Arg> Args, Held;
        bool Dirty;
    };
    Memo Save() const { return {Node, Args, Held, Dirty}; }
    void Restore(const Memo& Former);
    /// Renames the outputs that the engine named after the method.
    void RenameTargets(Engine& Engine);

private:
    void Hold(const Engine& engine, const Arg& argument);
};

} // namespace Tesk
