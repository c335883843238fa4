// The sequence of operations: binding, deciding what must run, dispatch, properties, names, scripts.
#pragma once

#include "engine/Operation.h"
#include "engine/TreeNode.h"

#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Tesk {

class Engine
{
    // Stands first, so that the operations, which give up their uses, go before the variables.
    std::vector<std::unique_ptr<AnyVariable>> variables_;

public:
    /// The prototype tree: `NumNodes` nodes, 0 the root.
    static const TreeNode* const Tree[];
    static const int NumNodes;
    /// The node of a method, or of an argument, typed.
    static const MethodNode* OpNode(int Index) { return static_cast<const MethodNode*>(Tree[Index]); }
    static const ArgumentNode* VarNode(int Index) { return static_cast<const ArgumentNode*>(Tree[Index]); }
    /// Whether what a node describes cannot be called yet: its method, its property, its type, or for a class or a
    /// choice every method in it. Such a node has no dispatch; the views show it disabled.
    static bool IsPending(int Node);
    /// Why, for a tooltip.
    static const wchar_t* const PendingReason;

    /// The first method of a class with its own name and its label; null stands for any. -1 if there is none.
    static int FindMethod(const wchar_t* Class, const wchar_t* Identifier, const wchar_t* Label);

    /// Where the engine tells what it does; null for silence.
    static std::FILE* Trace;
    /// Called before each operation that `Execute` runs, if set.
    std::function<void(const Operation&)> BeforeRun;

    /// The operations in execution order; an operation's index is its id.
    std::vector<std::unique_ptr<Operation>> Operations;
    std::int32_t Clock = 0;

    int NumOperations() const { return static_cast<int>(Operations.size()); }

    /// Takes an operation over, at a position or, with -1, at the end.
    Operation& InsertOperation(std::unique_ptr<Operation> New, int Position = -1);
    /// Removes an operation, unless a later one reads an output of it: then the result is false, with the output's
    /// position and the reader's index. With `Test` only the answer is given.
    bool RemoveOperation(int Index, int& Argument, int& Consumer, bool Test);
    /// Has the operation run at the next `Execute`; the only thing that a deferred method runs by.
    void ChangeOperation(int Index) { Operations[static_cast<std::size_t>(Index)]->Dirty = true; }
    void ChangeVariable(AnyVariable* Variable) { Variable->Stamp = Clock; }

    /// Binds and creates the arguments. -1, or the index of the node that found no variable.
    int FillOperation(int Index);
    int HonorArguments(int Index);
    void CreateArguments(int Index);
    /// Rebinds one argument to another variable.
    bool ReplaceOperationArgument(int Operation, int Argument, AnyVariable* Variable);

    /// Brings the sequence up to date; stops at the first failure, whose code stands in `Status`.
    void Execute();

    /// One entry for each name, in the order in which the names first occur: the latest variable of the name up to
    /// operation `Last` (-1 for all), of a type (0 for any).
    std::vector<AnyVariable*> GetVariables(int Last, int Type, bool WithHeld) const;
    std::vector<const Arg*> GetArguments(int Last, int Type, bool WithHeld) const;

    /// Makes a variable for an argument, with the node's default; null for a node that is no argument or a type without
    /// a variable.
    AnyVariable* CreateVariable(int Node, int Operation);
    /// Whether a variable can pass from one argument to the other.
    bool Compatible(int A, int B) const;
    /// Fetches a property of an object, or passes one on; false for what is no property, or may not be set. Only the
    /// settings of the whole process go without an object.
    bool GetProperty(AnyVariable* Out, int Node, AnyVariable* Object);
    bool SetProperty(AnyVariable* In, int Node, AnyVariable* Object);

    /// Whether the name was free. Unless `Test`, all that bear the variable's name take the new one, with a number
    /// behind it if it was taken.
    bool RenameVariable(AnyVariable* Variable, const wchar_t* NewName, bool Test);
    void UnreserveVariables();
    /// Frees the variables that no argument holds and no other variable reads; how many. A caller that keeps pointers
    /// to variables of its own lets go of those without `Uses` first.
    int ReclaimVariables();
    int NumVariables() const { return static_cast<int>(variables_.size()); }
    /// A free name: the stem alone for a counter of -1, else with the counter, which ends on the number used.
    std::wstring UniqueName(const wchar_t* Stem, int& Counter) const;

    /// Marks the variables that are arguments of an operation.
    void MarkBound() const;
    /// What a shadow reads, by those marks: its source, or behind sources that have left their operation the first that
    /// has not. Null for a variable that is no shadow.
    static AnyVariable* SourceOf(const AnyVariable& Shadow);

    /// Prints the sequence as a program, or with an operation's index that operation's section; language 0 native C++,
    /// 1 C#, 2 Visual Basic, 3 C++.NET.
    void Write(std::FILE* File, int Language, int Which = Auto) const;

private:
    template <typename Visit>
    void ForArguments(int last, bool withHeld, Visit visit) const;
    AnyVariable* MakeShadow(int type, AnyVariable* source);
    void SetName(AnyVariable& variable, std::wstring name);
    void Refresh(AnyVariable& shadow, int type);
    static bool IsDeferred(const Operation& operation);
    bool IsAtRest(const Operation& operation) const;
    bool IsAlwaysNew(const AnyVariable& variable) const;
    bool WillShow(std::size_t from);
    void Dispatch(Operation& operation);
};

/// The whole program, or one operation's section, as text.
std::wstring ScriptText(const Engine& Engine, int Language, int Which = Auto);

} // namespace Tesk
