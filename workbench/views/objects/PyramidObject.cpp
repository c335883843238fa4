// A pyramid is drawn on its picture, and has a sheet.
#include "workbench/views/objects/ObjectView.h"

#include "engine/TypeNames.h"
#include "image/Pyramid.h"

namespace TeskPlus {

namespace {

/// The levels that stand apart from the base, or with it where there is no picture to stand on.
void Draw(AnyVariable& Object, const IController& Child)
{
    const Pyramid& pyramid = static_cast<Var<Pyramid>&>(Object).Value;
    if (const Image* base = PictureOf(Child.MotherController()))
        pyramid.Draw(*base, true);
    else
        pyramid.Draw(true);
}

constexpr OverlayRow overlay{.Color = Green, .Draw = Draw};
constexpr SheetView sheet{};

} // namespace

extern const ObjectView viewPyramid{.Type = CodeOf(L"Pyramid"), .Overlay = &overlay, .Sheet = &sheet};

} // namespace TeskPlus
