#include "workbench/views/values/PointControllers.h"

#include "workbench/views/Text.h"
#include "workbench/views/picture/Overlay.h"

namespace TeskPlus {

namespace {

/// Integer halves and quarters, added up as the anchors are told.
int Quarters(int extent, int quarters)
{
    return quarters == 3 ? extent / 4 + extent / 2 : quarters == 1 ? extent / 2 - extent / 4 : extent / 2;
}

OverlayHit HitSite(IController& Child, int X, int Y)
{
    const Site* site = ObjectOf<Site>(&Child);
    if (!site || site->HitHandle(X, Y) == NoHandle) return {};
    return {true, Qt::SizeAllCursor};
}

void DragSite(IController& Child, const Image& Picture, int X, int Y)
{
    Site* site = ObjectOf<Site>(&Child);
    if (!site) return;
    site->Drag(X, Y);
    *site = Site(Clamp<int>(site->X, 0, Max(0, Picture.StoreWidth - 1)),
                 Clamp<int>(site->Y, 0, Max(0, Picture.StoreHeight - 1)));
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

constexpr OverlayRow siteOverlay{.Hit = HitSite, .Drag = DragSite, .IsHeld = IsHandleSet<Site>};

} // namespace

const OverlayRow xyOverlay{.Hit = HitXY, .Drag = DragXY, .IsHeld = IsHandleSet<XY>};

const OverlayRow* SiteController::Overlay() const
{
    return &siteOverlay;
}

XYController::XYController(const ControllerRequest& Request) : OverlayValueController(Request)
{
    auto* widget = new XYWidget(Qt16(argumentName_), IsInOnly(), argumentAttr_);
    SetWidget(widget);
    widget->SetValue(Read<XY>({0, 0}));
}

void XYController::UpdateProperty()
{
    const bool fromUser = TakeUserChange();
    if (!IsInOnly()) return;
    const Image* mother = Picture();
    if (!mother) {
        // A point without a picture is what the user typed.
        if (fromUser) Write<XY>(Widget().Value());
        return;
    }
    const double maximumX = mother->Width - 1, maximumY = mother->Height - 1;
    Widget().SetRange(0, maximumX, 0, maximumY);
    if (!fromUser) {
        Widget().SetValue(Read<XY>({0, 0}));
        return;
    }
    const XY point = Widget().Value();
    Write<XY>({Clamp(point.X, 0.0, maximumX), Clamp(point.Y, 0.0, maximumY)});
}

void XYController::UpdateControl(bool, bool)
{
    if (const Image* mother = Picture()) Widget().SetRange(0, mother->Width - 1, 0, mother->Height - 1);
    Widget().SetValue(Read<XY>({0, 0}));
    RepaintMother();
}

void XYController::UpdateChildControl()
{
    if (!motherController_) return;
    const XY point = Read<XY>({0, 0});
    DrawIn(Green, [&] { OnStore(point, MotherImage()).Draw(false); });
}

void XYController::ResetAnchor(int Width, int Height)
{
    if (IsInOnly()) ResetLocation(Width, Height);
}

const Image* XYController::Picture() const
{
    const Image* mother = MotherImage();
    return mother && mother->Width > 0 && mother->Height > 0 ? mother : nullptr;
}

void XYController::ResetLocation(int Width, int Height)
{
    const argumentRole role = NodeAs<ArgumentNode>().Role;
    if (role < argumentRole::MiddleAnchor) return;
    const int x = Quarters(Width, role == argumentRole::RightAnchor ? 3 : 2);
    const int y = Quarters(Height, role == argumentRole::TopAnchor ? 1 : 2);
    Write<XY>({double(x), double(y)});
    Widget().SetValue(Read<XY>({0, 0}));
}

void XYController::SetMotherController(IController* Mother)
{
    const bool isNew = Mother != motherController_;
    if (isNew && motherController_) motherController_->RemoveChild(*this);
    OverlayValueController::SetMotherController(Mother);
    // The anchors of a picture that only the run makes stand where the panel put them.
    const Image* mother = Picture();
    if (isNew && mother) ResetAnchor(mother->Width, mother->Height);
}

SiteController::SiteController(const ControllerRequest& Request) : OverlayValueController(Request)
{
    auto* widget = new XYWidget(Qt16(argumentName_), IsInOnly(), argumentAttr_);
    SetWidget(widget);
    widget->SetNumberOfDecimals(0);
    ShowSite();
}

void SiteController::ShowSite()
{
    const Site site = Read<Site>({0, 0});
    Widget().SetValue({double(site.X), double(site.Y)});
}

void SiteController::FollowWindow()
{
    const Image* mother = MotherImage();
    if (!mother || !IsInOnly()) return;
    if (mother->X == windowX_ && mother->Y == windowY_ && mother->Width == windowWidth_ &&
        mother->Height == windowHeight_)
        return;
    windowX_ = mother->X;
    windowY_ = mother->Y;
    windowWidth_ = mother->Width;
    windowHeight_ = mother->Height;
    Write<Site>({windowX_ + windowWidth_ / 2, windowY_ + windowHeight_ / 2});
    // A pixel counts from the corner of the whole picture, and stays in its window.
    Widget().SetRange(windowX_, windowX_ + Max(0, windowWidth_ - 1), windowY_, windowY_ + Max(0, windowHeight_ - 1));
    ShowSite();
}

void SiteController::UpdateProperty()
{
    const bool fromUser = TakeUserChange();
    if (!IsInOnly()) return;
    FollowWindow();
    const Image* mother = MotherImage();
    if (!fromUser) {
        ShowSite();
        return;
    }
    const double left = mother ? int{mother->X} : 0, right = mother ? left + Max(0, mother->Width - 1) : 32767;
    const double top = mother ? int{mother->Y} : 0, bottom = mother ? top + Max(0, mother->Height - 1) : 32767;
    const XY point = Widget().Value();
    Write<Site>({static_cast<int>(Clamp(point.X, left, right)), static_cast<int>(Clamp(point.Y, top, bottom))});
}

void SiteController::UpdateControl(bool, bool)
{
    ShowSite();
    RepaintMother();
}

void SiteController::UpdateChildControl()
{
    if (!motherController_) return;
    const Site site = Read<Site>({0, 0});
    DrawIn(Green, [&] { site.Draw(true); });
}

void SiteController::SetMotherController(IController* Mother)
{
    if (Mother != motherController_ && motherController_) motherController_->RemoveChild(*this);
    OverlayValueController::SetMotherController(Mother);
    FollowWindow();
}

} // namespace TeskPlus
