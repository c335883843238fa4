// The sequence without a screen: read an image, invert, binarize, write, export the program.
#include "engine/Engine.h"
#include "foundation/Status.h"

#include <cstdio>
#include <cwchar>
#include <filesystem>
#include <memory>
#include <string>

namespace {

using namespace Tesk;

/// The first method of the tree with a class, an identifier and a label.
int FindMethod(const wchar_t* className, const wchar_t* identifier, const wchar_t* label)
{
    const TreeNode* owner = nullptr;
    for (int i = 0; i < Engine::NumNodes; i++) {
        const TreeNode* node = Engine::Tree[i];
        if (node->Kind() == ClassKind) owner = node;
        if (node->Kind() == MethodKind && owner && !std::wcscmp(owner->Identifier, className) &&
            !std::wcscmp(node->Identifier, identifier) && !std::wcscmp(node->Label, label))
            return i;
    }
    return -1;
}

/// Appends an operation and binds it; null, with a message, where an input is missing.
Operation* Append(Engine& engine, int method)
{
    auto made = std::make_unique<Operation>();
    engine.UnreserveVariables();
    made->Set(engine, method, false);
    Operation& operation = engine.InsertOperation(std::move(made));
    const int missing = engine.FillOperation(engine.NumOperations() - 1);
    if (missing < 0) return &operation;
    std::fprintf(stderr, "%s finds no %s\n", Narrow(Engine::OpNode(method)->Label).c_str(),
                 Narrow(Engine::VarNode(missing)->Label).c_str());
    return nullptr;
}

void SetPath(Operation& operation, const std::string& path)
{
    for (const Arg& argument : operation.Args)
        if (Engine::VarNode(argument.Node)->Type == 92)
            SetText(static_cast<Var<const char*>&>(*argument.Variable), path);
}

int Run(const std::string& image, const std::filesystem::path& folder)
{
    Engine engine;
    const int read = FindMethod(L"Image", L"Read", L"Read  from File");
    const int write = FindMethod(L"Image", L"Write", L"Write  to File");
    const std::string inverted = (folder / "inverted.png").string(), binarized = (folder / "binarized.png").string();
    const struct
    {
        int method;
        std::string path;
    } steps[] = {{read, image},
                 {FindMethod(L"Operator", L"Invert", L"Invert"), ""},
                 {write, inverted},
                 {FindMethod(L"Operator", L"Binarize", L"Threshold"), ""},
                 {write, binarized}};
    for (const auto& step : steps) {
        Operation* operation = Append(engine, step.method);
        if (!operation) return 1;
        if (!step.path.empty()) SetPath(*operation, step.path);
    }
    engine.Execute();
    const int code = Status::Error().Code;
    const std::string message = Narrow(Status::UnicodeError());
    for (const auto& operation : engine.Operations)
        std::printf("%-20s %8d us\n", Narrow(Engine::OpNode(operation->Node)->Label).c_str(), operation->Duration);
    if (code != NoError) {
        std::fprintf(stderr, "%s\n", message.c_str());
        return 1;
    }
    const std::string program = (folder / "program.cpp").string();
    std::FILE* file = std::fopen(program.c_str(), "w");
    if (!file) {
        std::fprintf(stderr, "Cannot open file \"%s\"\n", program.c_str());
        return 1;
    }
    engine.Write(file, 0);
    std::fclose(file);
    std::printf("wrote %s\nwrote %s\nwrote %s\n", inverted.c_str(), binarized.c_str(), program.c_str());
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    const char* const usage = "usage: tesk-headless IMAGE FOLDER [--trace]\n";
    if (argc < 3) {
        std::fputs(usage, stderr);
        return 2;
    }
    if (argc < 4 || std::string(argv[3]) != "--trace") Engine::Trace = nullptr;
    Status::ErrorBehavior(IgnoreIt);
    std::error_code ignored;
    std::filesystem::create_directories(argv[2], ignored);
    return Run(argv[1], argv[2]);
}
