#include "workbench/views/OverlayTable.h"

#include "measure/Profile.h"

namespace TeskPlus {

namespace {

constexpr int profileType = 62, siteType = 75, xyType = 85, intType = 97;

/// Points and pixels: any handle moves the whole of them.
template <typename T>
OverlayHit HitPoint(IController& Child, int X, int Y)
{
    const T* point = ObjectOf<T>(&Child);
    if (!point || point->HitHandle(X, Y) == NoHandle) return {};
    return {true, Qt::SizeAllCursor};
}

template <typename T>
bool IsHandleSet()
{
    return T::Handle != NoHandle;
}

void DragXY(IController& Child, const Image&, int X, int Y)
{
    if (XY* point = ObjectOf<XY>(&Child)) point->Drag(X, Y);
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

constexpr OverlayRow rows[] = {
    {.Type = siteType, .Hit = HitPoint<Site>, .Drag = DragSite, .IsHeld = IsHandleSet<Site>},
    {.Type = xyType, .Hit = HitPoint<XY>, .Drag = DragXY, .IsHeld = IsHandleSet<XY>},
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
