// A shape matcher has a sheet, and a window that shows its shapes: a press selects one, the Delete key takes it out.
#include "workbench/views/objects/ObjectView.h"

#include "engine/TypeNames.h"
#include "match/ShapeMatcher.h"

namespace TeskPlus {

namespace {

ShapeMatcher& MatcherOf(AnyVariable& object)
{
    return static_cast<Var<ShapeMatcher>&>(object).Value;
}

class ShapeHandles final : public PlotHandles
{
public:
    void Draw(AnyVariable& Object, int Width, int Height) override
    {
        area_ = Limits(0, 0, Width, Height);
        const GraphSettings settings;
        Graph::AutoColors = true;
        MatcherOf(Object).DrawTrained(area_, -1, true, true);
    }
    std::optional<Qt::CursorShape> Hit(AnyVariable& Object, int X, int Y) override
    {
        // Hovering selects nothing.
        const int former = ShapeMatcher::Selected;
        hit_ = MatcherOf(Object).HitShape(area_, X, Y, true);
        ShapeMatcher::Selected = former;
        return hit_ >= 0 ? std::optional(Qt::CrossCursor) : std::nullopt;
    }
    void Press(AnyVariable&) override { ShapeMatcher::Selected = ShapeMatcher::Selected == hit_ ? -1 : hit_; }
    bool KeyPressed(AnyVariable& Object, int Key) override
    {
        ShapeMatcher& matcher = MatcherOf(Object);
        if (Key != Qt::Key_Delete || ShapeMatcher::Selected < 0 || ShapeMatcher::Selected >= matcher.NumTrained)
            return false;
        matcher.DeleteSelected();
        return true;
    }

private:
    Limits area_{0, 0, 0, 0};
    int hit_ = -1;
};

constexpr SheetView sheet{};
constexpr PlotRow plot{
    .Width = 512, .Height = 256, .Color = Green, .MakeHandles = []() -> std::unique_ptr<PlotHandles> {
        return std::make_unique<ShapeHandles>();
    }};

} // namespace

extern const ObjectView viewShapeMatcher{.Type = CodeOf(L"ShapeMatcher"), .Sheet = &sheet, .Plot = &plot};

} // namespace TeskPlus
