#include "workbench/logic/ControllerFactory.h"

#include "foundation/Status.h"

#include <cstdio>
#include <initializer_list>
#include <utility>

namespace TeskPlus {

void ControllerFactory::Register(int Type, ControllerMaker Maker)
{
    makers_[Type] = std::move(Maker);
}

void ControllerFactory::Register(const std::vector<int>& Types, const ControllerMaker& Maker)
{
    for (const int type : Types)
        Register(type, Maker);
}

std::unique_ptr<IController> ControllerFactory::CreateController(const ControllerRequest& Request) const
{
    const ArgumentNode& node = *Engine::VarNode(Request.Node);
    if (Engine::Trace) std::fprintf(Engine::Trace, "CreateController %s\n", Narrow(node.Identifier).c_str());
    const auto maker = makers_.find(node.Type);
    if (maker != makers_.end() && maker->second) return maker->second(Request);
    if (Engine::Trace) std::fprintf(Engine::Trace, "Unsupported data type (%d)\n", node.Type);
    return nullptr;
}

methodRole RoleOfMethod(int Method)
{
    const bool isMethod = Method >= 0 && Method < Engine::NumNodes && Engine::Tree[Method]->Kind() == MethodKind;
    return isMethod ? Engine::OpNode(Method)->Role : methodRole::Plain;
}

integerKind IntegerKind(int Method, int Node)
{
    if (Method < 0 || Engine::Tree[Method]->Kind() != MethodKind) return integerKind::Plain;
    const argumentRole role = Engine::VarNode(Node)->Role;
    if (Engine::OpNode(Method)->MovesProfile())
        return role == argumentRole::Breadth ? integerKind::ProfileThickness : integerKind::Profile;
    return role == argumentRole::Threshold ? integerKind::PathThreshold : integerKind::Plain;
}

} // namespace TeskPlus
