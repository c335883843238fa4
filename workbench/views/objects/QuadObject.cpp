// A quad has no window: it is outlined on its picture, or on that of the object to which it belongs.
#include "workbench/views/objects/ObjectView.h"

#include "engine/TypeNames.h"
#include "measure/Quad.h"

namespace TeskPlus {

namespace {

/// The size of a picture where there is none to go by.
constexpr int standardSize = 512;

void Draw(AnyVariable& Object, const IController&)
{
    static_cast<Var<Quad>&>(Object).Value.Draw(false, false);
}

void Start(AnyVariable& Object, const Image& Picture)
{
    const bool isVoid = Picture.Type == Undefined || Picture.Width < 1;
    const int width = isVoid ? standardSize : int{Picture.Width};
    const int height = isVoid ? standardSize : int{Picture.Height};
    static_cast<Var<Quad>&>(Object).Value.Set(width / 4, height / 4, width / 2, height / 2);
}

constexpr OverlayRow overlay{.Color = Green, .Draw = Draw, .Start = Start, .StartsWithoutPicture = true};

} // namespace

extern const ObjectView viewQuad{.Type = CodeOf(L"Quad"), .Overlay = &overlay};

} // namespace TeskPlus
