// Operations, variables and names of a sequence, and how a new operation is bound.
#include "engine/Engine.h"

#include "engine/Types.h"
#include "engine/dispatch/Dispatch.h"
#include "foundation/Status.h"

#include <algorithm>
#include <cmath>
#include <cwchar>
#include <set>
#include <utility>

namespace Tesk {

using namespace attributeValue;

std::FILE* Engine::Trace = stdout;
const wchar_t* const Engine::PendingReason = L"This method is not available in this version.";

namespace {

/// Names are built in a buffer of 80 characters, its end included.
constexpr std::size_t longestName = 79;

bool IsArgument(int node)
{
    return node >= 0 && node < Engine::NumNodes && Engine::Tree[node]->Kind() == ArgumentKind;
}

template <typename... Values>
void TraceLine(const char* format, Values... values)
{
    if (!Engine::Trace) return;
    if constexpr (sizeof...(values) == 0)
        std::fputs(format, Engine::Trace);
    else
        std::fprintf(Engine::Trace, format, values...);
}

std::string NameOf(const AnyVariable* variable)
{
    return variable && variable->Name ? Narrow(variable->Name) : "noname";
}

/// A walk over the variable names of a sequence, traced under the name of its step.
void TraceNames(const char* step, const Operation& operation)
{
    if (!Engine::Trace) return;
    TraceLine("%s", step);
    for (const Arg& argument : operation.Args)
        TraceLine(" %s", NameOf(argument.Variable).c_str());
    TraceLine("\n");
}

template <typename Node>
bool SameRange(const ArgumentNode& a, const ArgumentNode& b)
{
    const auto *first = dynamic_cast<const Node*>(&a), *second = dynamic_cast<const Node*>(&b);
    return first && second && first->Minimum == second->Minimum && first->Maximum == second->Maximum;
}

/// Null stands for any text.
bool Matches(const wchar_t* wanted, const wchar_t* text)
{
    return !wanted || std::wcscmp(wanted, text) == 0;
}

} // namespace

int Engine::FindMethod(const wchar_t* Class, const wchar_t* Identifier, const wchar_t* Label)
{
    bool inClass = !Class;
    for (int i = 0; i < NumNodes; i++) {
        const TreeNode& node = *Tree[i];
        if (node.Kind() == ClassKind) inClass = Matches(Class, node.Identifier);
        if (inClass && node.Kind() == MethodKind && Matches(Identifier, node.Identifier) && Matches(Label, node.Label))
            return i;
    }
    return -1;
}

template <typename Visit>
void Engine::ForArguments(int last, bool withHeld, Visit visit) const
{
    const int end = last < 0 ? NumOperations() : Min(last + 1, NumOperations());
    for (int i = 0; i < end; i++) {
        const Operation& operation = *Operations[static_cast<std::size_t>(i)];
        for (const Arg& argument : operation.Args)
            visit(argument);
        if (!withHeld) continue;
        for (const Arg& argument : operation.Held)
            visit(argument);
    }
}

Operation& Engine::InsertOperation(std::unique_ptr<Operation> New, int Position)
{
    const int at = Position < 0 || Position > NumOperations() ? NumOperations() : Position;
    New->Dirty = true;
    return **Operations.insert(Operations.begin() + at, std::move(New));
}

bool Engine::RemoveOperation(int Index, int& Argument, int& Consumer, bool Test)
{
    Argument = -1;
    if (Index < 0 || Index >= NumOperations()) return false;
    const Operation& operation = *Operations[static_cast<std::size_t>(Index)];
    for (int k = 0; k < operation.NumArgs(); k++) {
        const Arg& output = operation.Args[static_cast<std::size_t>(k)];
        if (!output.Variable || !(VarNode(output.Node)->Flags & Out)) continue;
        for (int later = Index + 1; later < NumOperations(); later++)
            for (const Arg& input : Operations[static_cast<std::size_t>(later)]->Args)
                if (input.Variable && (VarNode(input.Node)->Flags & In) &&
                    std::wcscmp(input.Variable->Name, output.Variable->Name) == 0) {
                    Argument = k;
                    Consumer = later;
                    return false;
                }
    }
    if (Test) return true;
    // What read through a shadow of this operation reads through the shadow's own source from now on.
    for (const Arg& gone : operation.Args) {
        if (!gone.Variable || !gone.Variable->Source) continue;
        for (const auto& variable : variables_)
            if (variable->Source == gone.Variable) variable->Source = gone.Variable->Source;
    }
    Operations.erase(Operations.begin() + Index);
    return true;
}

std::vector<const Arg*> Engine::GetArguments(int Last, int Type, bool WithHeld) const
{
    std::vector<const Arg*> found;
    ForArguments(Last, WithHeld, [&](const Arg& argument) {
        if (!argument.Variable || !TypeServes(Type, VarNode(argument.Node)->Type)) return;
        for (const Arg*& entry : found)
            if (std::wcscmp(entry->Variable->Name, argument.Variable->Name) == 0) {
                entry = &argument;
                return;
            }
        found.push_back(&argument);
    });
    return found;
}

std::vector<AnyVariable*> Engine::GetVariables(int Last, int Type, bool WithHeld) const
{
    std::vector<AnyVariable*> variables;
    for (const Arg* argument : GetArguments(Last, Type, WithHeld))
        variables.push_back(argument->Variable);
    return variables;
}

std::wstring Engine::UniqueName(const wchar_t* Stem, int& Counter) const
{
    const auto taken = GetVariables(-1, 0, true);
    for (;; Counter++) {
        std::wstring name = Counter < 0 ? Stem : Stem + std::to_wstring(Counter);
        if (name.size() > longestName) {
            // The number stays at the end of a stem that is cut, so that names still differ.
            const std::wstring number = Counter < 0 ? L"" : std::to_wstring(Counter);
            name = std::wstring(Stem).substr(0, longestName - number.size()) + number;
        }
        const bool used = std::any_of(taken.begin(), taken.end(), [&](const AnyVariable* variable) {
            return name == variable->Name.operator const wchar_t*();
        });
        if (!used) return name;
    }
}

void Engine::SetName(AnyVariable& variable, std::wstring name)
{
    variable.NameText = std::move(name);
    variable.Name = variable.NameText.c_str();
}

bool Engine::RenameVariable(AnyVariable* Variable, const wchar_t* NewName, bool Test)
{
    int counter = -1;
    const std::wstring wanted = UniqueName(NewName, counter);
    const bool free = counter < 0;
    if (Test) return free;
    const std::wstring old = Variable->NameText;
    for (const auto& operation : Operations)
        for (auto* arguments : {&operation->Args, &operation->Held})
            for (const Arg& argument : *arguments)
                if (argument.Variable && argument.Variable->NameText == old) {
                    SetName(*argument.Variable, wanted);
                    argument.Variable->AutoNamed = false;
                }
    return free;
}

void Engine::UnreserveVariables()
{
    for (const auto& variable : variables_)
        variable->Reserved = false;
}

int Engine::ReclaimVariables()
{
    std::size_t freed = 0, more = 0;
    do {
        std::set<const AnyVariable*> read;
        for (const auto& variable : variables_)
            read.insert(variable->Source);
        more = std::erase_if(
            variables_, [&](const auto& variable) { return variable->Uses <= 0 && read.count(variable.get()) == 0; });
        freed += more;
    } while (more > 0);
    // A place that is gone must not be mistaken for a variable that is made there later.
    for (const auto& variable : variables_)
        if (freed > 0 && variable->Read != variable->Source) variable->Read = nullptr;
    return static_cast<int>(freed);
}

AnyVariable* Engine::CreateVariable(int Node, int)
{
    if (!IsArgument(Node)) return nullptr;
    const ArgumentNode& node = *VarNode(Node);
    const TypeRow* type = FindType(node.Type);
    if (!type) return nullptr;
    auto variable = type->Make();
    variable->TypeCode = node.Type;
    int counter = 0;
    SetName(*variable, UniqueName(node.Alias ? node.Alias : node.Identifier, counter));
    if (type->SetDefault) type->SetDefault(*variable, node);
    variable->AutoNamed = true;
    TraceLine(" (created %s)\n", NameOf(variable.get()).c_str());
    variables_.push_back(std::move(variable));
    return variables_.back().get();
}

AnyVariable* Engine::MakeShadow(int type, AnyVariable* source)
{
    const TypeRow* row = FindType(type);
    if (!row || !row->ShallowCopy || !TypeServes(type, source->TypeCode)) return nullptr;
    auto shadow = row->Make();
    shadow->TypeCode = type;
    SetName(*shadow, source->NameText);
    row->ShallowCopy(*shadow, *source, true);
    shadow->Source = source;
    shadow->Uses = 1;
    variables_.push_back(std::move(shadow));
    return variables_.back().get();
}

int Engine::FillOperation(int Index)
{
    if (Index < 0 || Index >= NumOperations()) return -1;
    const int node = Operations[static_cast<std::size_t>(Index)]->Node;
    if (node < 0 || node >= NumNodes || Tree[node]->Kind() != MethodKind) return -1;
    const int missing = HonorArguments(Index);
    CreateArguments(Index);
    return missing;
}

int Engine::HonorArguments(int Index)
{
    Operation& operation = *Operations[static_cast<std::size_t>(Index)];
    TraceNames("Tesk::Engine::HonorArguments", operation);
    for (Arg& argument : operation.Args) {
        const ArgumentNode& node = *VarNode(argument.Node);
        if (argument.Variable || (node.Flags & (Value | Fresh))) continue;
        if (!(node.Flags & In)) {
            TraceLine(" (no need to honor, Out)");
            continue;
        }
        const auto candidates = Index > 0 ? GetVariables(Index - 1, node.Type, false) : std::vector<AnyVariable*>();
        for (const AnyVariable* candidate : candidates)
            TraceLine("%s%s, ", candidate->Reserved ? "reserved " : "", NameOf(candidate).c_str());
        const auto newest = std::find_if(candidates.rbegin(), candidates.rend(),
                                         [](const AnyVariable* candidate) { return !candidate->Reserved; });
        AnyVariable* shadow = newest == candidates.rend() ? nullptr : MakeShadow(node.Type, *newest);
        if (!shadow) {
            if (node.Flags & Out) {
                TraceLine(" (could not honor, In/Out)");
                continue;
            }
            TraceLine(" %s (could not honor, failure)\n", Narrow(node.Identifier).c_str());
            return argument.Node;
        }
        argument.Variable = shadow;
        (*newest)->Reserved = true;
        TraceLine(" (honored as %s)", NameOf(shadow).c_str());
    }
    return -1;
}

void Engine::CreateArguments(int Index)
{
    Operation& operation = *Operations[static_cast<std::size_t>(Index)];
    TraceNames("Tesk::Engine::CreateArguments", operation);
    for (Arg& argument : operation.Args) {
        const ArgumentNode& node = *VarNode(argument.Node);
        if (argument.Variable || !(node.Flags & (Out | Value))) continue;
        TraceLine("\tCreateArguments %s %s", Narrow(typeString[node.Type]).c_str(), Narrow(node.Identifier).c_str());
        argument.Variable = CreateVariable(argument.Node, Index);
        if (argument.Variable) argument.Variable->Uses++;
    }
}

bool Engine::ReplaceOperationArgument(int Operation, int Argument, AnyVariable* Variable)
{
    if (Operation < 0 || Operation >= NumOperations() || !Variable) return false;
    auto& arguments = Operations[static_cast<std::size_t>(Operation)]->Args;
    if (Argument < 0 || Argument >= static_cast<int>(arguments.size())) return false;
    Arg& argument = arguments[static_cast<std::size_t>(Argument)];
    AnyVariable* shadow = MakeShadow(VarNode(argument.Node)->Type, Variable);
    if (!shadow) return false;
    if (argument.Variable) {
        argument.Variable->Uses--;
        argument.Variable->Reserved = false;
    }
    argument.Variable = shadow;
    return true;
}

bool Engine::Compatible(int A, int B) const
{
    if (!IsArgument(A) || !IsArgument(B)) return false;
    const ArgumentNode &a = *VarNode(A), &b = *VarNode(B);
    bool compatible = a.Type == b.Type && ((a.Flags & Instance) || std::wcscmp(a.Identifier, b.Identifier) == 0);
    if (compatible && KindOf(a.Type) == typeKind::Enumeration) {
        const auto *first = dynamic_cast<const EnumArgumentNode*>(&a),
                   *second = dynamic_cast<const EnumArgumentNode*>(&b);
        compatible = first && second && first->Cases == second->Cases;
    } else if (compatible && a.Type == CodeOf(L"double")) {
        compatible = SameRange<DbleArgumentNode>(a, b);
    } else if (compatible && a.Type == CodeOf(L"float")) {
        compatible = SameRange<FloatArgumentNode>(a, b);
    } else if (compatible && a.Type == CodeOf(L"int")) {
        compatible = SameRange<IntArgumentNode>(a, b);
    }
    TraceLine("%s", compatible ? "yes" : "no");
    return compatible;
}

bool Engine::GetProperty(AnyVariable* Out, int Node, AnyVariable* Object)
{
    if (!IsArgument(Node) || !Out) return false;
    // A setting of the whole process is nobody's: whatever stands for its object is not read.
    if (!Object && (VarNode(Node)->Flags & attributeValue::Static)) Object = Out;
    return Object && GetPropertyValue(VarNode(Node)->PropertyId, *Out, *Object);
}

bool Engine::SetProperty(AnyVariable* In, int Node, AnyVariable* Object)
{
    if (!IsArgument(Node) || !In) return false;
    if (!Object && (VarNode(Node)->Flags & attributeValue::Static)) Object = In;
    return Object && SetPropertyValue(VarNode(Node)->PropertyId, *In, *Object);
}

} // namespace Tesk
