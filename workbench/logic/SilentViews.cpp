#include "workbench/logic/SilentViews.h"

#include "foundation/Status.h"
#include "workbench/logic/ControllerBase.h"

#include <cstring>
#include <initializer_list>
#include <utility>

namespace TeskPlus {

namespace {

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
        const bool save = RoleOfMethod(request.Method) == methodRole::Write;
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
    for (const typeKind kind : {typeKind::Enumeration, typeKind::Integer, typeKind::Value})
        Factory.Register(TypesOfKind(kind), MakeValue);
    // No view edits a color with its opacity.
    Factory.Register(CodeOf(L"RgbaPixel"), nullptr);
    Factory.Register(TypesOfKind(typeKind::Object), MakeObject);
    // Points lie on pictures, as objects do.
    Factory.Register({CodeOf(L"Site"), CodeOf(L"XY")}, MakeObject);
    Factory.Register({CodeOf(L"char*"), CodeOf(L"wchar_t*")},
                     [&Views](const ControllerRequest& request) { return MakePath(request, Views); });
}

} // namespace TeskPlus
