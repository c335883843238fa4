// Small values that pass between the menus, the operation window, the list and the handler.
#pragma once

#include "engine/Engine.h"

#include <string>
#include <vector>

namespace TeskPlus {

using namespace Tesk;

/// A place in the tree. Every menu item, radio button, tab and list entry carries one.
struct operationItemInfo
{
    int OperationNode = -1, ClassNode = -1, ChoiceNode = -1; ///< node indexes; -1 for none
    bool IsMultiTab = false;                                 ///< the operation's window has class tabs

    bool operator==(const operationItemInfo&) const = default;
};

/// The reason for building a panel.
enum class operationType
{
    New = 1,
    Swap = 2,
    Select = 3
};

struct WindowPoint
{
    int X = 0, Y = 0;
    bool operator==(const WindowPoint&) const = default;
};

struct WindowSize
{
    int Width = 0, Height = 0;
};

/// Where the user left an operation's window.
struct PanelLocation
{
    const Operation* Owner = nullptr;
    WindowPoint Position;
};

/// A tab of a class, a button of a radio group: a text, and where it leads.
struct LabeledItem
{
    std::wstring Label;
    operationItemInfo Item;
    bool IsPending = false; ///< shown disabled, with `Engine::PendingReason` as its tooltip
};

/// The tabs of a class: a `ChoiceNode` stands for its first method, a `MethodNode` for itself.
std::vector<LabeledItem> ClassTabs(int Class);
/// The methods of a choice.
std::vector<LabeledItem> ChoiceButtons(int Class, int Choice);
/// The class of a method's node: the first `ClassNode` before it. -1 for none.
int ClassOfNode(int Node);
/// The place of a method as the menus give it: its choice only where that is a group of interchangeable methods.
operationItemInfo ItemOfMethod(int Method);

} // namespace TeskPlus
