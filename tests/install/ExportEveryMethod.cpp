// Writes one source file that holds a program for each method that is there, as it is exported: the method, whatever
// has to run before it, and every setting of its objects that a program prints.
#include "engine/Engine.h"
#include "engine/TypeNames.h"
#include "engine/Types.h"
#include "foundation/Status.h"
#include "image/Image.h"
#include "image/Morpho.h"
#include "measure/Profile.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <utility>

using namespace Tesk;

namespace {

bool IsLiveMethod(int node)
{
    return Engine::Tree[node]->Kind() == MethodKind && !Engine::IsPending(node);
}

/// Calls a function with the node of each child.
template <typename F>
void ForChildren(int node, F visit)
{
    for (int child = Engine::Tree[node]->FirstChild; child >= 0; child = Engine::Tree[child]->NextSibling)
        visit(child);
}

/// A method whose result is a variable of a type, and that needs as few variables as any such method; -1 for none.
int ProducerOf(int type)
{
    int best = -1, fewest = 0;
    for (int node = 0; node < Engine::NumNodes; node++) {
        if (!IsLiveMethod(node)) continue;
        bool makes = false, takes = false;
        int needs = 0;
        ForChildren(node, [&](int child) {
            const ArgumentNode& argument = *Engine::VarNode(child);
            const bool input = (argument.Flags & attributeValue::In) != 0;
            if (argument.Type == type) makes = makes || !input, takes = takes || input;
            if (input && !(argument.Flags & attributeValue::Value)) needs++;
        });
        if (makes && !takes && (best < 0 || needs < fewest)) {
            best = node;
            fewest = needs;
        }
    }
    return best;
}

/// Appends a method, and what makes its variables before it; false if something cannot be bound.
bool Append(Engine& engine, int node, int depth = 0)
{
    for (int tries = 0; tries < 8; tries++) {
        auto made = std::make_unique<Operation>();
        engine.UnreserveVariables();
        made->Set(engine, node, false);
        engine.InsertOperation(std::move(made));
        const int missing = engine.FillOperation(engine.NumOperations() - 1);
        if (missing < 0) return true;
        int argument = 0, consumer = 0;
        if (!engine.RemoveOperation(engine.NumOperations() - 1, argument, consumer, false)) return false;
        const int producer = ProducerOf(Engine::VarNode(missing)->Type);
        if (producer < 0 || depth > 6 || !Append(engine, producer, depth + 1)) return false;
    }
    return false;
}

/// Makes the value of a property another one.
void Change(AnyVariable& variable, const ArgumentNode& node)
{
    const auto step = [&](auto by) {
        if (auto* typed = dynamic_cast<Var<decltype(by)>*>(&variable)) typed->Value += by;
    };
    step(1);
    step(0.25);
    step(0.25F);
    step(L'\1');
    if (auto* flag = dynamic_cast<Var<bool>*>(&variable)) flag->Value = !flag->Value;
    if (auto* point = dynamic_cast<Var<XY>*>(&variable)) point->Value.X += 1;
    const TypeRow* type = FindType(node.Type);
    if (const auto* cases = dynamic_cast<const EnumArgumentNode*>(&node); cases && type && type->ReadInteger) {
        const int former = type->ReadInteger(variable);
        ForChildren(cases->EnumIndex, [&](int child) {
            const int value = static_cast<const EnumCaseNode*>(Engine::Tree[child])->Value;
            if (type->ReadInteger(variable) == former) type->WriteInteger(variable, value);
        });
    }
}

/// Gives an object another value of each of its settings, and a window.
void ChangeSettings(Engine& engine, AnyVariable& object, int type)
{
    if (auto* image = dynamic_cast<Var<Image>*>(&object)) {
        image->Value.Set(8, 8, Gray);
        image->Value.Window(1, 2, 3, 4);
    } else if (auto* profile = dynamic_cast<Var<Profile>*>(&object)) {
        for (int i = 0; i < 4; i++)
            profile->Value.Append(i);
        profile->Value.Window(1, 2);
    } else if (auto* element = dynamic_cast<Var<Morpho>*>(&object)) {
        element->Value.Set(7, 5, 3);
    }
    for (int node = 0; node < Engine::NumNodes; node++) {
        const auto* owner = dynamic_cast<const ClassNode*>(Engine::Tree[node]);
        if (!owner || owner->Type != type) continue;
        ForChildren(node, [&](int page) {
            if (Engine::Tree[page]->Kind() != PageKind) return;
            ForChildren(page, [&](int property) {
                const ArgumentNode& argument = *Engine::VarNode(property);
                if (!(argument.Flags & attributeValue::In) || Engine::IsPending(property)) return;
                AnyVariable* value = engine.CreateVariable(property, 0);
                if (!value || !engine.GetProperty(value, property, &object)) return;
                Change(*value, argument);
                engine.SetProperty(value, property, &object);
            });
        });
    }
}

/// Whether an operation has a value that no literal is known for, in whose place a question mark stands.
bool IsUnfinished(const Operation& operation)
{
    for (const Arg& argument : operation.Args) {
        const ArgumentNode& node = *Engine::VarNode(argument.Node);
        const bool literal = (node.Flags & (attributeValue::Value | attributeValue::Out)) == attributeValue::Value;
        for (const wchar_t* type : {L"GrayPixel", L"Limits", L"XY*"})
            if (literal && std::wcscmp(typeString[node.Type], type) == 0) return true;
    }
    return false;
}

/// A program without the lines that wait for the reader to complete them: those that only name a variable, and the
/// calls with question marks.
std::string Finished(const std::string& text, bool hasUnfinishedCalls)
{
    static const std::regex named("\\t\\w+\\."), questioned("\\t.*[( ]\\?[,)].*;");
    std::istringstream lines(text);
    std::string finished;
    for (std::string line; std::getline(lines, line);) {
        const bool waits = std::regex_match(line, named) || (hasUnfinishedCalls && std::regex_match(line, questioned));
        if (!waits) finished += line + '\n';
    }
    return finished;
}

} // namespace

int main(int count, char** arguments)
{
    std::FILE* file = count == 2 ? std::fopen(arguments[1], "w") : nullptr;
    if (!file) {
        std::fputs("usage: export_every_method file\n", stderr);
        return EXIT_FAILURE;
    }
    Status::ErrorBehavior(IgnoreIt);
    Engine::Trace = nullptr;
    std::fputs("#include \"Tesk.h\"\n", file);
    int result = EXIT_SUCCESS;
    for (int node = 0; node < Engine::NumNodes; node++) {
        if (!IsLiveMethod(node)) continue;
        Engine engine;
        if (!Append(engine, node)) {
            std::fprintf(stderr, "node %d (%ls) cannot be bound\n", node, Engine::Tree[node]->Label);
            result = EXIT_FAILURE;
            continue;
        }
        for (const Arg& argument : engine.Operations.back()->Args)
            if (Engine::VarNode(argument.Node)->Flags & attributeValue::In)
                ChangeSettings(engine, *argument.Variable, Engine::VarNode(argument.Node)->Type);
        const bool hasUnfinishedCalls = std::any_of(engine.Operations.begin(), engine.Operations.end(),
                                                    [](const auto& operation) { return IsUnfinished(*operation); });
        const std::string text = Finished(Narrow(ScriptText(engine, 0).c_str()), hasUnfinishedCalls);
        std::fprintf(file, "\nnamespace Method%d {\n%s}\n", node, text.c_str());
    }
    std::fclose(file);
    return result;
}
