// A reader of matrix codes shows the codes that it has read, with their texts, on the picture; its sheet tells of the
// chosen one, and of its quality.
#include "workbench/views/objects/ObjectView.h"

#include "engine/TypeNames.h"
#include "read/Code2DReader.h"

namespace TeskPlus {

namespace {

void Draw(AnyVariable& Object, const IController&)
{
    const GraphSettings settings;
    Graph::AutoColors = true;
    static_cast<Var<Code2DReader>&>(Object).Value.Draw(true, true, true, true);
}

constexpr OverlayRow overlay{.Color = Green, .Draw = Draw};
constexpr SheetView sheet{.Menu = sheetMenu::Tabs};

} // namespace

extern const ObjectView viewCode2DReader{.Type = CodeOf(L"Code2DReader"), .Overlay = &overlay, .Sheet = &sheet};

} // namespace TeskPlus
