// A code reader shows the codes that it has read, with their texts, on the picture; its sheet tells of the chosen one.
#include "workbench/views/objects/ObjectView.h"

#include "engine/Engine.h"
#include "engine/TypeNames.h"
#include "read/Code1DReader.h"

namespace TeskPlus {

namespace {

void Draw(AnyVariable& Object, const IController&)
{
    static_cast<Var<Code1DReader>&>(Object).Value.Draw(true, true, true, true);
}

/// Switches each setting of a page that is a box.
void Toggle(AnyVariable& Object, int PageNode)
{
    Engine engine;
    for (int node = Engine::Tree[PageNode]->FirstChild; node >= 0; node = Engine::Tree[node]->NextSibling) {
        const ArgumentNode& argument = *Engine::VarNode(node);
        Var<bool> box;
        if (argument.Type != CodeOf(L"bool") || !(argument.Flags & attributeValue::In)) continue;
        if (!engine.GetProperty(&box, node, &Object)) continue;
        box.Value = !box.Value;
        engine.SetProperty(&box, node, &Object);
    }
}

constexpr OverlayRow overlay{.Color = Green, .Draw = Draw};
constexpr SheetButton buttons[] = {{L"Toggle Symbologies", Toggle}};
constexpr SheetView sheet{.Menu = sheetMenu::Tabs, .Buttons = buttons};

} // namespace

extern const ObjectView viewCode1DReader{.Type = CodeOf(L"Code1DReader"), .Overlay = &overlay, .Sheet = &sheet};

} // namespace TeskPlus
