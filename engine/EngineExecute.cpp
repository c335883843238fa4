// Deciding what must run, and running it.
#include "engine/Engine.h"

#include "engine/Types.h"
#include "engine/dispatch/Dispatch.h"
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

/// Reports a method that was not called: an argument has no variable, or there is nothing to call yet.
void RefuseToRun(const Operation& operation)
{
    constexpr const char* context = "Tesk::Engine::Execute";
    const wchar_t* name = Engine::OpNode(operation.Node)->Identifier;
    for (const Arg& argument : operation.Args)
        if (!argument.Variable && !Engine::IsPending(operation.Node)) {
            Status::Raise(Status::Format(CannotPerform, L"The operation (%ls) has no variable for its argument (%ls)",
                                         name, Engine::VarNode(argument.Node)->Identifier),
                          context);
            return;
        }
    Status::Raise(Status::Format(NotImplemented, L"The operation (%ls) is not available in this version", name),
                  context);
}

} // namespace

void Engine::MarkBound() const
{
    for (const auto& variable : variables_)
        variable->Bound = false;
    for (const auto& operation : Operations)
        for (const Arg& argument : operation->Args)
            if (argument.Variable) argument.Variable->Bound = true;
}

AnyVariable* Engine::SourceOf(const AnyVariable& Shadow)
{
    // A swap or a rebinding takes a variable out of its operation, where nothing refreshes it any more.
    AnyVariable* source = Shadow.Source;
    while (source && !source->Bound && source->Source)
        source = source->Source;
    return source;
}

void Engine::Refresh(AnyVariable& shadow, int type)
{
    AnyVariable* source = SourceOf(shadow);
    const TypeRow* row = FindType(type);
    if (row && row->ShallowCopy) row->ShallowCopy(shadow, *source, false);
    // What is read from elsewhere than before is new, however old it is there.
    if (shadow.Read && shadow.Read != source) shadow.Stamp = Max(shadow.Stamp, Clock);
    shadow.Read = source;
    shadow.Stamp = Max(shadow.Stamp, source->Stamp);
    shadow.Changed = true;
}

void Engine::Dispatch(Operation& operation)
{
    Status::StartWatch(engineClock, false);
    if (operation.Node >= 0 && Tree[operation.Node]->Kind() == MethodKind &&
        !DispatchMethod(OpNode(operation.Node)->MethodId, operation.Args.data()))
        RefuseToRun(operation);
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
                const AnyVariable* source = SourceOf(variable);
                if (source && variable.Scratch <= source->Scratch) {
                    if (argument.Visible) return true;
                    variable.Scratch = source->Scratch;
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

/// Whether it trains or inserts, and runs only when it is told to.
bool Engine::IsDeferred(const Operation& operation)
{
    return operation.Node >= 0 && (Tree[operation.Node]->Flags & DeferredMethod) != 0;
}

/// What an operation takes and changes, and that without being told, is newer after every run.
bool Engine::IsAlwaysNew(const AnyVariable& variable) const
{
    for (const auto& operation : Operations)
        for (const Arg& argument : operation->Args)
            if (argument.Variable == &variable) {
                const std::uint32_t flags = VarNode(argument.Node)->Flags;
                return (flags & In) && (flags & Out) && !IsDeferred(*operation);
            }
    return false;
}

/// Whether it waits to be told: what the stamps say is no reason to train or to insert a second time.
bool Engine::IsAtRest(const Operation& operation) const
{
    if (operation.Dirty || !IsDeferred(operation)) return false;
    // Only where the object that it adds to has changed is there something to add to again.
    for (const Arg& argument : operation.Args) {
        const AnyVariable* variable = argument.Variable;
        const AnyVariable* source = variable ? SourceOf(*variable) : nullptr;
        if (source && (VarNode(argument.Node)->Flags & Out) && source->Stamp > variable->Stamp && !IsAlwaysNew(*source))
            return false;
    }
    return true;
}

void Engine::Execute()
{
    for (const auto& operation : Operations)
        for (const Arg& argument : operation->Args)
            if (argument.Variable) argument.Variable->Changed = false;
    MarkBound();
    // The look-ahead meets sources that no operation holds any more.
    for (const auto& variable : variables_)
        variable->Scratch = variable->Stamp;
    Status::Error().Code = NoError;
    for (std::size_t i = 0; i < Operations.size(); i++) {
        Operation& operation = *Operations[i];
        const bool isAtRest = IsAtRest(operation);
        Ages ages;
        for (const Arg& argument : operation.Args) {
            if (!argument.Variable) continue;
            AnyVariable& variable = *argument.Variable;
            const ArgumentNode& node = *VarNode(argument.Node);
            if (node.Flags & In) {
                if (variable.Source && !(isAtRest && (node.Flags & Out))) Refresh(variable, node.Type);
                ages.maxIn = Max(ages.maxIn, variable.Stamp);
            }
            if (node.Flags & Out) ages.AddOut(variable.Stamp);
        }
        if (isAtRest) continue;
        if (!operation.Dirty && !IsDeferred(operation)) {
            if (!WillShow(i)) continue;
            if (ages.maxIn < ages.minOut && ages.numOut != 0) continue;
        }
        Status::Error().Code = NoError;
        if (BeforeRun) BeforeRun(operation);
        Dispatch(operation);
        const int code = Status::Error().Code;
        // What runs because it was told to has another method or another choice: its results are new to all readers.
        const bool isForced = operation.Dirty && ages.numOut > 0;
        operation.Dirty = false;
        const std::int32_t now = (isForced ? Max(ages.maxIn, Clock) : ages.maxIn) + 1;
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
