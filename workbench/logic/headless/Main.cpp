// The sequence without a screen: read an image, invert, binarize, write, export the program.
#include "foundation/Status.h"
#include "workbench/logic/ScriptExport.h"
#include "workbench/logic/SilentViews.h"

#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

namespace {

using namespace TeskPlus;

int Run(const std::string& image, const std::filesystem::path& folder)
{
    Engine engine;
    SilentViews views;
    ControllerFactory factory;
    RegisterSilentControllers(factory, views);
    OperationHandler handler(engine, views, factory);

    const int write = Engine::FindMethod(L"Image", L"Write", L"Write  to File");
    const std::string inverted = (folder / "inverted.png").string(), binarized = (folder / "binarized.png").string();
    const struct
    {
        int method;
        std::string path;
    } steps[] = {{Engine::FindMethod(L"Image", L"Read", L"Read  from File"), image},
                 {Engine::FindMethod(L"Operator", L"Invert", L"Invert"), ""},
                 {write, inverted},
                 {Engine::FindMethod(L"Operator", L"Binarize", L"Threshold"), ""},
                 {write, binarized}};
    for (const auto& step : steps) {
        if (!step.path.empty()) views.Paths.push_back(step.path);
        if (!handler.MenuItemClicked(ItemOfMethod(step.method))) {
            std::fprintf(stderr, "%s\n", Narrow(views.LastMessage.c_str()).c_str());
            return 1;
        }
        if (!views.StatusText.empty()) {
            std::fprintf(stderr, "%s\n", Narrow(views.StatusText.c_str()).c_str());
            return 1;
        }
    }
    for (const auto& operation : engine.Operations)
        std::printf("%-20s %8d us\n", Narrow(Engine::OpNode(operation->Node)->Label).c_str(), operation->Duration);
    const std::string program = (folder / "program.cpp").string();
    views.Paths.push_back(program);
    if (!ExportToFile(engine, views, 0)) {
        std::fprintf(stderr, "Cannot open file \"%s\"\n", program.c_str());
        return 1;
    }
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
    Status::SIMDLevel(Status::BestSIMDLevel());
    // A destination that others share gets pixels of its own before it is written.
    Status::Shallow = true;
    std::error_code ignored;
    std::filesystem::create_directories(argv[2], ignored);
    return Run(argv[1], argv[2]);
}
