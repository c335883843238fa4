// A region is painted on its picture, and has a sheet.
#include "workbench/views/objects/ObjectView.h"

#include "engine/TypeNames.h"
#include "measure/Region.h"

#include <iterator>

namespace TeskPlus {

namespace {

/// Regions tell themselves apart by the order in which they are drawn: they take these colors in turn.
void Draw(AnyVariable& Object, const IController&)
{
    static constexpr PredefinedColors colors[] = {Red, Green, Blue, Cyan, Magenta, Yellow};
    static std::size_t next = 0;
    // What is drawn on a region is not filled for that.
    const GraphSettings settings;
    Graph::FillColor = colors[next];
    next = (next + 1) % std::size(colors);
    static_cast<Var<Region>&>(Object).Value.Draw();
}

constexpr OverlayRow overlay{.Draw = Draw};
constexpr SheetView sheet{};

} // namespace

extern const ObjectView viewRegion{.Type = CodeOf(L"Region"), .Overlay = &overlay, .Sheet = &sheet};

} // namespace TeskPlus
