#include "workbench/logic/OperationItemInfo.h"

namespace TeskPlus {

namespace {

/// The first method in a subtree, and the choice that holds it.
bool FindFirstMethod(int node, int choice, operationItemInfo& item)
{
    if (Engine::Tree[node]->Kind() == MethodKind) {
        item.OperationNode = node;
        item.ChoiceNode = choice;
        return true;
    }
    if (Engine::Tree[node]->Kind() != ChoiceKind) return false;
    for (int child = Engine::Tree[node]->FirstChild; child >= 0; child = Engine::Tree[child]->NextSibling)
        if (FindFirstMethod(child, node, item)) return true;
    return false;
}

int ParentOf(int node)
{
    // A parent stands before its children, and is the nearest whose list of children holds the node.
    for (int parent = node - 1; parent >= 0; parent--)
        for (int child = Engine::Tree[parent]->FirstChild; child >= 0 && child <= node;
             child = Engine::Tree[child]->NextSibling)
            if (child == node) return parent;
    return -1;
}

} // namespace

std::vector<LabeledItem> ClassTabs(int Class)
{
    std::vector<LabeledItem> tabs;
    if (Class < 0 || Class >= Engine::NumNodes) return tabs;
    for (int child = Engine::Tree[Class]->FirstChild; child >= 0; child = Engine::Tree[child]->NextSibling) {
        operationItemInfo item;
        item.ClassNode = Class;
        if (!FindFirstMethod(child, -1, item)) continue;
        // A plain menu level has no radio buttons.
        if (item.ChoiceNode >= 0 && !(Engine::Tree[item.ChoiceNode]->Flags & GroupFlag)) item.ChoiceNode = -1;
        tabs.push_back({Engine::Tree[child]->Label, item, Engine::IsPending(child)});
    }
    for (LabeledItem& tab : tabs)
        tab.Item.IsMultiTab = tabs.size() > 1;
    return tabs;
}

std::vector<LabeledItem> ChoiceButtons(int Class, int Choice)
{
    std::vector<LabeledItem> buttons;
    if (Choice < 0 || Choice >= Engine::NumNodes) return buttons;
    const bool isMultiTab = ClassTabs(Class).size() > 1;
    for (int child = Engine::Tree[Choice]->FirstChild; child >= 0; child = Engine::Tree[child]->NextSibling)
        if (Engine::Tree[child]->Kind() == MethodKind)
            buttons.push_back(
                {Engine::Tree[child]->Label, {child, Class, Choice, isMultiTab}, Engine::IsPending(child)});
    return buttons;
}

int ClassOfNode(int Node)
{
    if (Node >= Engine::NumNodes) return -1;
    while (Node >= 0 && Engine::Tree[Node]->Kind() != ClassKind)
        Node--;
    return Node;
}

operationItemInfo ItemOfMethod(int Method)
{
    operationItemInfo item;
    if (Method < 0 || Method >= Engine::NumNodes) return item;
    item.OperationNode = Method;
    item.ClassNode = ClassOfNode(Method);
    const int parent = ParentOf(Method);
    if (parent >= 0 && Engine::Tree[parent]->Kind() == ChoiceKind && (Engine::Tree[parent]->Flags & GroupFlag))
        item.ChoiceNode = parent;
    item.IsMultiTab = ClassTabs(item.ClassNode).size() > 1;
    return item;
}

} // namespace TeskPlus
