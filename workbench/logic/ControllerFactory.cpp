#include "workbench/logic/ControllerFactory.h"

#include "foundation/Status.h"

#include <cstdio>
#include <initializer_list>
#include <string_view>
#include <utility>

namespace TeskPlus {

namespace {

std::wstring_view LabelOf(int node)
{
    return node >= 0 && node < Engine::NumNodes ? Engine::Tree[node]->Label : L"";
}

} // namespace

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

bool IsLineMethod(int Method)
{
    return LabelOf(Method).ends_with(L"Line");
}

bool MovesProfile(int Method)
{
    for (const wchar_t* ending : {L"Line", L"Row", L"Rows", L"Column", L"Columns"})
        if (LabelOf(Method).ends_with(ending)) return true;
    return false;
}

integerKind IntegerKind(int Method, int Node)
{
    if (MovesProfile(Method)) return LabelOf(Node) == L"Breadth" ? integerKind::ProfileThickness : integerKind::Profile;
    if (LabelOf(Method) == L"Follow" && LabelOf(Node) == L"Threshold") return integerKind::PathThreshold;
    return integerKind::Plain;
}

} // namespace TeskPlus
