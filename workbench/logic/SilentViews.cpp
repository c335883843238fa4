#include "workbench/logic/SilentViews.h"

#include "foundation/Status.h"
#include "workbench/logic/ControllerBase.h"

#include <cstring>
#include <cwchar>
#include <initializer_list>
#include <utility>

namespace TeskPlus {

namespace {

constexpr std::initializer_list<int> objectTypes = {8,  10, 12, 13, 17, 22, 23, 24, 25, 26, 27, 35, 43, 44,
                                                    45, 50, 52, 54, 62, 63, 64, 67, 74, 75, 79, 80, 85};
constexpr std::initializer_list<int> plainTypes = {69, 87, 91, 94, 96, 104};

std::unique_ptr<IController> MakeValue(const ControllerRequest& request)
{
    return std::make_unique<ControllerBase>(request, false);
}

std::unique_ptr<IController> MakeObject(const ControllerRequest& request)
{
    return std::make_unique<ControllerBase>(request, true);
}

/// A path is asked for when its operation is created: its default is the filter of the dialog.
std::unique_ptr<IController> MakePath(const ControllerRequest& request, IOperationViews& views)
{
    const auto* node = dynamic_cast<const StringArgumentNode*>(Engine::Tree[request.Node]);
    if (node && request.FromDefault && std::strchr(node->Default, '|')) {
        const bool save = request.Method >= 0 && !std::wcscmp(Engine::Tree[request.Method]->Identifier, L"Write");
        const auto path = views.ChooseFile({Widen(node->Default), save});
        if (!path) return nullptr;
        SetText(static_cast<Var<const char*>&>(*request.Variable), *path);
    }
    return MakeValue(request);
}

} // namespace

int SilentViews::ShowMessage(const MessageInfo& Message)
{
    LastMessage = Message.Text;
    int answer = static_cast<int>(Message.Buttons.size()) - 1;
    if (!Answers.empty()) {
        answer = Answers.front();
        Answers.pop_front();
    }
    return answer;
}

std::optional<std::string> SilentViews::ChooseFile(const FileDialogInfo&)
{
    if (Paths.empty()) return std::nullopt;
    std::string path = std::move(Paths.front());
    Paths.pop_front();
    return path;
}

void RegisterSilentControllers(ControllerFactory& Factory, IOperationViews& Views)
{
    Factory.Register(EnumerationTypes, MakeValue);
    Factory.Register(IntegerTypes, MakeValue);
    Factory.Register(plainTypes, MakeValue);
    Factory.Register(objectTypes, MakeObject);
    Factory.Register({92, 105}, [&Views](const ControllerRequest& request) { return MakePath(request, Views); });
}

} // namespace TeskPlus
