#include "workbench/logic/PanelBuilder.h"

#include "engine/TypeNames.h"
#include "image/Image.h"

#include <algorithm>
#include <cwchar>

namespace TeskPlus {

using namespace attributeValue;

namespace {

/// The size of an image where there is none to go by.
constexpr int standardSize = 512;

bool Is(const Arg& argument, argumentRole role)
{
    return Engine::VarNode(argument.Node)->Role == role;
}

Image& ImageOf(const Arg& argument)
{
    return static_cast<Var<Image>*>(argument.Variable)->Value;
}

bool NeedsResetButton(const Operation& operation, int classNode)
{
    if (classNode < 0 || std::wcscmp(Engine::Tree[classNode]->Identifier, L"Geometry") != 0) return false;
    const auto has = [&](argumentRole role) {
        return std::any_of(operation.Args.begin(), operation.Args.end(),
                           [&](const Arg& argument) { return Is(argument, role); });
    };
    return has(argumentRole::Width) && has(argumentRole::Height);
}

} // namespace

std::unique_ptr<IController> PanelBuilder::MakeController(Operation& Owner, int Id, int Row, bool FromDefault) const
{
    const Arg& argument = Owner.Args[static_cast<std::size_t>(Row)];
    ControllerRequest request{engine_, changed_};
    request.Method = Owner.Node;
    request.Variable = argument.Variable;
    request.Node = argument.Node;
    request.Index = Row;
    request.OperationId = Id;
    request.FromDefault = FromDefault;
    request.Parent = views_.ParentWindow();
    request.CurrentOperation = &Owner;
    return factory_.CreateController(request);
}

void PanelBuilder::AddSelector(CommandPanel& panel, const PanelRequest& request, int row, AnyVariable* variable)
{
    const int node = request.Shown.Args[static_cast<std::size_t>(row)].Node;
    panel.InsertSelector(row, std::make_unique<VariableSelector>(engine_, variable, node, row, request.Id, chosen_));
}

PanelOutcome::outcome PanelBuilder::AddRow(CommandPanel& panel, const PanelRequest& request, int row,
                                           ControllerList& created)
{
    Operation& operation = request.Shown;
    Arg& argument = operation.Args[static_cast<std::size_t>(row)];
    const ArgumentNode& node = *Engine::VarNode(argument.Node);
    if (!argument.Variable) {
        AddSelector(panel, request, row, nullptr);
    } else {
        IController* controller = keeper_.Find(argument.Variable->NameText, created);
        if (!controller) {
            argument.Visible = true;
            auto made = MakeController(operation, request.Id, row, request.Reason != operationType::Select);
            if (!made) return IsPathType(node.Type) ? PanelOutcome::DialogCancelled : PanelOutcome::NoController;
            controller = made.get();
            controller->SetCurrentOperation(&operation);
            created.push_back(std::move(made));
        } else if (!IsPinned(controller->ControllerState())) {
            ControllerKeeper::TakeOver(*controller, operation, argument);
        } else {
            argument.Visible = controller->CurrentOperation() == &operation;
        }
        panel.InsertController(row, controller);
        if (controller->IsStructure()) AddSelector(panel, request, row, argument.Variable);
    }
    if (node.Type != CodeOf(L"XY") && node.Type != CodeOf(L"Site")) panel.InsertHelpWidget(row, node.Documentation);
    return PanelOutcome::Built;
}

PanelOutcome PanelBuilder::Build(CommandPanel& Panel, const PanelRequest& Request, ControllerList& Created)
{
    Panel.InsertTitle(Engine::OpNode(Request.Shown.Node)->Documentation);
    if (NeedsResetButton(Request.Shown, Request.ClassNode))
        Panel.InsertResetButton(L"Reset the size of the destination image and the existing anchors");
    PanelOutcome outcome;
    for (int row = 0; row < Request.Shown.NumArgs(); row++) {
        const auto result = AddRow(Panel, Request, row, Created);
        if (result != PanelOutcome::Built) outcome.Outcome = result;
        if (result == PanelOutcome::DialogCancelled) return outcome;
        const Arg& argument = Request.Shown.Args[static_cast<std::size_t>(row)];
        if (argument.Variable) continue;
        if (outcome.Missing++ == 0) outcome.MissingType = Engine::VarNode(argument.Node)->Type;
    }
    if (outcome.Outcome == PanelOutcome::Built) views_.LayOutPanel(Panel);
    return outcome;
}

AnyVariable* PanelBuilder::ResetSizes(const CommandPanel& Panel) const
{
    const Operation& operation = Panel.PanelOperation();
    const Arg* source = nullptr;
    for (const Arg& argument : operation.Args) {
        const ArgumentNode& node = *Engine::VarNode(argument.Node);
        if (!source && argument.Variable && node.Type == CodeOf(L"Image") && (node.Flags & In)) source = &argument;
    }
    const int width = source ? int{ImageOf(*source).Width} : standardSize;
    const int height = source ? int{ImageOf(*source).Height} : standardSize;
    for (int row = 0; row < operation.NumArgs(); row++) {
        const Arg& argument = operation.Args[static_cast<std::size_t>(row)];
        const ArgumentNode& node = *Engine::VarNode(argument.Node);
        if (!argument.Variable) continue;
        IController* controller = Panel.Rows()[static_cast<std::size_t>(row)].Controller;
        if (node.Type == CodeOf(L"Image") && !(node.Flags & In)) {
            Image& image = ImageOf(argument);
            // An image without a type has no pixels to make room for: the operation will type it.
            if (image.Type != Undefined) image.Set(width, height, image.Type);
        } else if (node.Type == CodeOf(L"int") &&
                   (Is(argument, argumentRole::Width) || Is(argument, argumentRole::Height))) {
            static_cast<Var<int>*>(argument.Variable)->Value = Is(argument, argumentRole::Width) ? width : height;
            if (controller) controller->UpdateControl(false, false);
        } else if (auto* anchor = dynamic_cast<IAnchor*>(controller)) {
            anchor->ResetAnchor(width, height);
        }
    }
    if (source) return source->Variable;
    return operation.Args.empty() ? nullptr : operation.Args.front().Variable;
}

} // namespace TeskPlus
