#include "engine/Operation.h"

#include "engine/Engine.h"

namespace Tesk {

namespace {

void GiveUp(std::vector<Arg>& arguments)
{
    for (Arg& argument : arguments)
        if (argument.Variable) argument.Variable->Uses--;
    arguments.clear();
}

/// The nodes of a subtree that are arguments, depth first.
void AppendArguments(int node, std::vector<Arg>& arguments)
{
    for (int child = Engine::Tree[node]->FirstChild; child >= 0; child = Engine::Tree[child]->NextSibling) {
        if (Engine::Tree[child]->Kind() == ArgumentKind) arguments.push_back({nullptr, child, false});
        AppendArguments(child, arguments);
    }
}

} // namespace

Operation::~Operation()
{
    GiveUp(Args);
    GiveUp(Held);
}

void Operation::Hold(const Engine& engine, const Arg& argument)
{
    argument.Variable->Uses++;
    for (Arg& held : Held) {
        if (!engine.Compatible(held.Node, argument.Node)) continue;
        held.Variable->Uses--;
        held.Variable = argument.Variable;
        return;
    }
    argument.Variable->Reserved = false;
    Held.push_back(argument);
}

void Operation::Set(Engine& Engine, int Method, bool Keep)
{
    if (Keep)
        for (const Arg& argument : Args)
            if (argument.Variable) Hold(Engine, argument);
    GiveUp(Args);
    const bool isMethod = Method >= 0 && Method < Engine::NumNodes && Engine::Tree[Method]->Kind() == MethodKind;
    Node = isMethod ? Method : -1;
    if (!isMethod) return;
    AppendArguments(Method, Args);
    if (!Keep) return;
    for (Arg& argument : Args)
        for (const Arg& held : Held)
            if (Engine.Compatible(argument.Node, held.Node)) {
                argument.Variable = held.Variable;
                argument.Variable->Uses++;
                break;
            }
}

void Operation::Restore(const Memo& Former)
{
    for (const auto* arguments : {&Former.Args, &Former.Held})
        for (const Arg& argument : *arguments)
            if (argument.Variable) argument.Variable->Uses++;
    GiveUp(Args);
    GiveUp(Held);
    Node = Former.Node;
    Args = Former.Args;
    Held = Former.Held;
    Dirty = Former.Dirty;
}

void Operation::Reset()
{
    GiveUp(Held);
}

void Operation::RenameTargets(Engine& Engine)
{
    for (const Arg& argument : Args) {
        if (!argument.Variable || !argument.Variable->AutoNamed) continue;
        const ArgumentNode& node = *Engine::VarNode(argument.Node);
        if (!(node.Flags & attributeValue::Out) || (node.Flags & attributeValue::Instance)) continue;
        int counter = 0;
        const std::wstring name = Engine.UniqueName(node.Alias ? node.Alias : node.Identifier, counter);
        Engine.RenameVariable(argument.Variable, name.c_str(), false);
        argument.Variable->AutoNamed = true;
    }
}

} // namespace Tesk
