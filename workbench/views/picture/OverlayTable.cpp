#include "workbench/views/picture/OverlayTable.h"

#include "image/Pyramid.h"
#include "measure/Path.h"
#include "measure/Profile.h"
#include "workbench/logic/TypeCodes.h"

namespace TeskPlus {

namespace {

/// Points and pixels: any handle moves the whole of them.
OverlayHit HitSite(IController& Child, int X, int Y)
{
    const Site* site = ObjectOf<Site>(&Child);
    if (!site || site->HitHandle(X, Y) == NoHandle) return {};
    return {true, Qt::SizeAllCursor};
}

template <typename T>
bool IsHandleSet()
{
    return T::Handle != NoHandle;
}

OverlayHit HitXY(IController& Child, int X, int Y)
{
    const XY* point = ObjectOf<XY>(&Child);
    if (!point || OnStore(*point, PictureOf(Child.MotherController())).HitHandle(X, Y) == NoHandle) return {};
    return {true, Qt::SizeAllCursor};
}

void DragXY(IController& Child, const Image& Picture, int X, int Y)
{
    XY* point = ObjectOf<XY>(&Child);
    if (!point) return;
    XY place = OnStore(*point, &Picture);
    place.Drag(X, Y);
    *point = XY(place.X - Picture.X, place.Y - Picture.Y);
}

void DragSite(IController& Child, const Image& Picture, int X, int Y)
{
    Site* site = ObjectOf<Site>(&Child);
    if (!site) return;
    site->Drag(X, Y);
    *site = Site(Clamp<int>(site->X, 0, Max(0, Picture.StoreWidth - 1)),
                 Clamp<int>(site->Y, 0, Max(0, Picture.StoreHeight - 1)));
}

/// A number that moves a profile is dragged by the profile's band.
bool MovesProfileOverlay(const IController& Child)
{
    return Child.Manipulator() && Child.Manipulator()->ControllerType() == profileType;
}

OverlayHit HitProfile(IController& Child, int X, int Y)
{
    const Profile* profile = ObjectOf<Profile>(Child.Manipulator());
    if (!profile) return {};
    switch (profile->HitHandle(X, Y)) {
    case NHandle:
    case SHandle:
        return {true, Qt::SizeVerCursor};
    case WHandle:
    case EHandle:
        return {true, Qt::SizeHorCursor};
    case AllHandle:
        return {true, Qt::SizeAllCursor};
    default:
        return {};
    }
}

void DragProfile(IController& Child, const Image&, int X, int Y)
{
    if (Profile* profile = ObjectOf<Profile>(Child.Manipulator())) profile->Drag(X, Y);
}

IController* ManipulatorOf(IController& Child)
{
    return Child.Manipulator();
}

/// The levels that stand apart from the base, or with it where there is no picture to stand on.
void DrawPyramid(AnyVariable& Object, const IController& Child)
{
    const Pyramid& pyramid = static_cast<Var<Pyramid>&>(Object).Value;
    if (const Image* base = PictureOf(Child.MotherController()))
        pyramid.Draw(*base, true);
    else
        pyramid.Draw(true);
}

/// Extrema are single places, other paths outlines; an outline of the user's own stands out from those of methods.
void DrawPath(AnyVariable& Object, const IController& Child)
{
    const std::wstring& name = Child.VariableIdentifier();
    const bool isRegional = name.starts_with(L"Regional");
    DrawIn(name.starts_with(L"Path") ? Red : Blue,
           [&] { static_cast<Var<Path>&>(Object).Value.Draw(isRegional, !isRegional); });
}

constexpr OverlayRow rows[] = {
    {.Type = pathType, .Draw = DrawPath},
    {.Type = pyramidType, .Color = Green, .Draw = DrawPyramid},
    {.Type = siteType, .Hit = HitSite, .Drag = DragSite, .IsHeld = IsHandleSet<Site>},
    {.Type = xyType, .Hit = HitXY, .Drag = DragXY, .IsHeld = IsHandleSet<XY>},
    {.Type = intType,
     .AppliesTo = MovesProfileOverlay,
     .Hit = HitProfile,
     .Drag = DragProfile,
     .IsHeld = IsHandleSet<Profile>,
     .Dragged = ManipulatorOf},
};

} // namespace

const OverlayRow* FindOverlay(const IController& Child)
{
    for (const OverlayRow& row : rows)
        if (row.Type == Child.ControllerType() && (!row.AppliesTo || row.AppliesTo(Child))) return &row;
    return nullptr;
}

const Image* PictureOf(const IController* Controller)
{
    return ObjectOf<Image>(Controller);
}

} // namespace TeskPlus
