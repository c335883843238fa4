// Deciding what must run, and running it.
#include "engine/Engine.h"

#include "engine/Generated.h"
#include "engine/Types.h"
#include "foundation/Status.h"

namespace Tesk {

using namespace attributeValue;

namespace {

constexpr int engineClock = 0;

/// What the arguments of one operation say: the newest input, the oldest output.
struct Ages
{
    std::int32_t maxIn = 0, minOut = MaxInt;
    int numOut = 0;

    void AddOut(std::int32_t stamp)
    {
        numOut++;
        minOut = Min(minOut, stamp);
    }
};

} // namespace

void Engine::Refresh(AnyVariable& shadow, int type)
{
    const TypeRow* row = FindType(type);
    if (row && row->ShallowCopy) row->ShallowCopy(shadow, *shadow.Source, false);
    shadow.Stamp = Max(shadow.Stamp, shadow.Source->Stamp);
    shadow.Changed = true;
}

void Engine::Dispatch(Operation& operation)
{
    Status::StartWatch(engineClock, false);
    if (operation.Node >= 0 && Tree[operation.Node]->Kind() == MethodKind)
        DispatchMethod(OpNode(operation.Node)->MethodId, operation.Args.data());
    operation.Duration = Status::ReadWatch(engineClock, true);
}

bool Engine::WillShow(std::size_t from)
{
    for (std::size_t k = from; k < Operations.size(); k++)
        for (const Arg& argument : Operations[k]->Args)
            if (argument.Variable) argument.Variable->Scratch = argument.Variable->Stamp;
    for (std::size_t k = from; k < Operations.size(); k++) {
        Ages ages;
        for (const Arg& argument : Operations[k]->Args) {
            if (!argument.Variable) continue;
            AnyVariable& variable = *argument.Variable;
            const std::uint32_t flags = VarNode(argument.Node)->Flags;
            if (flags & In) {
                // A source before `from` has no scratch copy of this walk: what stands in it is its stamp.
                if (variable.Source && variable.Scratch <= variable.Source->Scratch) {
                    if (argument.Visible) return true;
                    variable.Scratch = variable.Source->Scratch;
                }
                ages.maxIn = Max(ages.maxIn, variable.Scratch);
            }
            if (flags & Out) ages.AddOut(variable.Scratch);
        }
        if (ages.numOut == 0) return true;
        if (ages.maxIn < ages.minOut) continue;
        for (const Arg& argument : Operations[k]->Args) {
            if (!argument.Variable || !(VarNode(argument.Node)->Flags & Out)) continue;
            if (argument.Visible) return true;
            argument.Variable->Scratch = ages.maxIn + 1;
        }
    }
    return false;
}

void Engine::Execute()
{
    for (const auto& operation : Operations)
        for (const Arg& argument : operation->Args)
            if (argument.Variable) argument.Variable->Changed = false;
    // The look-ahead meets sources that no operation holds any more.
    for (const auto& variable : variables_)
        variable->Scratch = variable->Stamp;
    Status::Error().Code = NoError;
    for (std::size_t i = 0; i < Operations.size(); i++) {
        Operation& operation = *Operations[i];
        Ages ages;
        for (const Arg& argument : operation.Args) {
            if (!argument.Variable) continue;
            AnyVariable& variable = *argument.Variable;
            const ArgumentNode& node = *VarNode(argument.Node);
            if (node.Flags & In) {
                if (variable.Source) Refresh(variable, node.Type);
                ages.maxIn = Max(ages.maxIn, variable.Stamp);
            }
            if (node.Flags & Out) ages.AddOut(variable.Stamp);
        }
        if (!operation.Dirty) {
            if (!WillShow(i)) continue;
            if (ages.maxIn < ages.minOut && ages.numOut != 0) continue;
        }
        Status::Error().Code = NoError;
        if (BeforeRun) BeforeRun(operation);
        Dispatch(operation);
        const int code = Status::Error().Code;
        operation.Dirty = false;
        const std::int32_t now = ages.maxIn + 1;
        for (const Arg& argument : operation.Args)
            if (argument.Variable && (VarNode(argument.Node)->Flags & Out)) {
                argument.Variable->Stamp = now;
                argument.Variable->Scratch = now;
                argument.Variable->Changed = true;
            }
        Clock = Max(Clock, now);
        if (code != NoError) {
            // The failure is to be tried again when the sequence next runs.
            operation.Dirty = true;
            break;
        }
    }
    Clock++;
    if (Trace) {
        const int code = Status::Error().Code;
        Write(Trace, 1);
        Status::Error().Code = code;
    }
}

} // namespace Tesk
