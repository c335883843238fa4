#include "workbench/views/values/ProfileControllers.h"

#include "measure/Profile.h"
#include "workbench/views/Text.h"
#include "workbench/views/values/PointControllers.h"

#include <optional>

namespace TeskPlus {

namespace {

/// The breadth after the picture's window has changed.
constexpr int usualBreadth = 16;

DraggingHandles DirectionOf(const ControllerRequest& request)
{
    const methodRole role = RoleOfMethod(request.Method);
    return role == methodRole::Row ? NHandle : role == methodRole::Column ? WHandle : AllHandle;
}

OverlayHit HitProfile(IController& Child, int X, int Y)
{
    const Profile* profile = ManipulatedProfile(Child);
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
    if (Profile* profile = ManipulatedProfile(Child)) profile->Drag(X, Y);
}

/// A number that moves a profile is dragged by the profile's band.
constexpr OverlayRow bandOverlay{.Hit = HitProfile,
                                 .Drag = DragProfile,
                                 .IsHeld = IsHandleSet<Profile>,
                                 .Dragged = [](IController& Child) { return Child.Manipulator(); }};

/// What the values that move a profile share.
class ProfileValueController : public OverlayValueController
{
public:
    ProfileValueController(const ControllerRequest& request, DraggingHandles direction)
        : OverlayValueController(request), direction_(direction)
    {}

    void SetMotherController(IController* Mother) override
    {
        const bool isNew = Mother != motherController_;
        if (isNew && motherController_) motherController_->RemoveChild(*this);
        OverlayValueController::SetMotherController(Mother);
        if (isNew && ManipulatedProfile(*this) && MotherImage() && !FitsWindow()) ResetProfilePosition();
    }

    void UpdateChildControl() override
    {
        const Profile* profile = ManipulatedProfile(*this);
        if (!motherController_ || !profile) return;
        DrawIn(Green, [&] { profile->Draw(true); });
    }

protected:
    bool FitsWindow() const
    {
        const ProfileSource& source = ManipulatedProfile(*this)->Source;
        const Image& image = *MotherImage();
        return source.X == image.X && source.Y == image.Y && source.Width == image.Width &&
               source.Height == image.Height;
    }

    /// Puts the profile into the middle of the picture's window.
    void ResetProfilePosition()
    {
        Profile& profile = *ManipulatedProfile(*this);
        const Image& image = *MotherImage();
        profile.SetWindow(image);
        ProfileSource& source = profile.Source;
        source.Row = image.Height / 2;
        source.Column = image.Width / 2;
        source.Beg = {double(image.Width / 4), double(image.Height / 2)};
        source.End = {double(3 * image.Width / 4), double(image.Height / 2)};
        source.Direction = direction_;
        TakeFromProfile();
    }

    /// Shows and stores what the profile has.
    virtual void TakeFromProfile() = 0;

    /// True if profile and picture are known; a picture with another window has put the profile back.
    virtual bool Ready()
    {
        if (!ManipulatedProfile(*this) || !MotherImage()) return false;
        if (!FitsWindow()) {
            ResetProfilePosition();
            ManipulatedProfile(*this)->Source.Breadth = usualBreadth;
        }
        return true;
    }

    DraggingHandles direction_;
};

/// A whole number that moves a profile.
class ProfileIntController : public ProfileValueController
{
public:
    ProfileIntController(const ControllerRequest& request, DraggingHandles direction)
        : ProfileValueController(request, direction)
    {
        auto* widget = new IntWidget(Qt16(argumentName_));
        SetWidget(widget);
        const auto& node = NodeAs<IntArgumentNode>();
        widget->SetRange(node.Minimum, node.Maximum, node.Step);
        widget->SetState(IsInOnly(), argumentAttr_);
        widget->SetValue(request.FromDefault && IsInOnly() ? node.Default : ReadInteger());
    }

    const OverlayRow* Overlay() const override { return ManipulatedProfile(*this) ? &bandOverlay : nullptr; }

    void UpdateProperty() override
    {
        if (!IsInOnly()) return;
        if (!Ready()) {
            WriteInteger(Widget().Value());
            return;
        }
        const int maximum = Max(Widget().Minimum(), Maximum());
        Widget().SetMaximum(maximum);
        int& place = Place();
        // A profile that something else has moved, such as a drag on the picture, leads; else the control does.
        const bool moved = place != written_ && place >= Widget().Minimum();
        const int value = Clamp(moved ? place : Widget().Value(), Widget().Minimum(), maximum);
        if (Widget().Value() != value) Widget().SetValue(value);
        place = value;
        written_ = value;
        WriteInteger(value);
    }

    void UpdateControl(bool, bool) override
    {
        const int value = ReadInteger();
        Widget().SetValue(value);
        if (ManipulatedProfile(*this)) {
            Place() = value;
            written_ = value;
        }
        RepaintMother();
    }

protected:
    IntWidget& Widget() const { return *static_cast<IntWidget*>(widget_.data()); }
    bool IsRow() const { return direction_ == NHandle; }
    /// Of the window in which the profile lies.
    int Extent() const
    {
        const ProfileSource& source = ManipulatedProfile(*this)->Source;
        return IsRow() ? source.Height : source.Width;
    }
    /// The field of the profile that this value stands for.
    virtual int& Place() = 0;
    virtual int Maximum() const = 0;

    void TakeFromProfile() override
    {
        Widget().SetMaximum(Max(Widget().Minimum(), Maximum()));
        Widget().SetValue(Place());
        written_ = Place();
        WriteInteger(Place());
    }

    int written_ = MinInt;
};

class IntProfilController final : public ProfileIntController
{
public:
    explicit IntProfilController(const ControllerRequest& request) : ProfileIntController(request, DirectionOf(request))
    {}

private:
    int& Place() override
    {
        ProfileSource& source = ManipulatedProfile(*this)->Source;
        return IsRow() ? source.Row : source.Column;
    }
    int Maximum() const override
    {
        const int breadth = ManipulatedProfile(*this)->Source.Breadth;
        return breadth > 0 ? Extent() - breadth : Extent() - 1;
    }
};

class IntThicknessProfilController final : public ProfileIntController
{
public:
    explicit IntThicknessProfilController(const ControllerRequest& request)
        : ProfileIntController(request, DirectionOf(request))
    {
        // Before the row or column of the band is taken, so that it gives way at once.
        Widget().Changed = [this](bool dragging) {
            if (Profile* profile = ManipulatedProfile(*this)) profile->Source.Breadth = written_ = Widget().Value();
            Notify(false, false, dragging);
        };
    }

private:
    /// The breadth draws nothing of its own: the profile tells the window.
    bool Ready() override
    {
        const Profile* profile = ManipulatedProfile(*this);
        return profile && profile->Source.Width > 0;
    }

    int& Place() override { return ManipulatedProfile(*this)->Source.Breadth; }
    /// As much as the window holds: the row or column gives way.
    int Maximum() const override
    {
        const int most = NodeAs<IntArgumentNode>().Maximum;
        return direction_ == AllHandle ? most : Min(most, Extent());
    }
};

/// An end of a line.
class XYProfilController final : public ProfileValueController
{
public:
    explicit XYProfilController(const ControllerRequest& request)
        : ProfileValueController(request, IsBeginning(request.Node) ? NHandle : WHandle),
          isBeginning_(IsBeginning(request.Node))
    {
        auto* widget = new XYWidget(Qt16(argumentName_), IsInOnly(), argumentAttr_);
        SetWidget(widget);
        widget->SetValue(Read<XY>({0, 0}));
    }

    const OverlayRow* Overlay() const override { return &xyOverlay; }

    void UpdateProperty() override
    {
        const bool fromUser = TakeUserChange();
        if (!IsInOnly()) return;
        if (!Ready()) {
            Write<XY>(Widget().Value());
            return;
        }
        const Image& image = *MotherImage();
        const int breadth = Max(1, ManipulatedProfile(*this)->Source.Breadth);
        const double maximumX = Max(0, image.Width - breadth), maximumY = Max(0, image.Height - breadth);
        Widget().SetRange(0, maximumX, 0, maximumY);
        XY& place = Place();
        const bool moved = place.X != anchorX_ || place.Y != anchorY_;
        // The line leads if it was moved as a whole; else what the user set here, or a drag of the end itself.
        const XY wanted = moved ? place : fromUser ? Widget().Value() : Read<XY>({0, 0});
        const XY point(Clamp(wanted.X, 0.0, maximumX), Clamp(wanted.Y, 0.0, maximumY));
        if (moved || !fromUser) Widget().SetValue(point);
        Take(point);
        Write<XY>(point);
    }

    void UpdateControl(bool, bool) override
    {
        const XY point = Read<XY>({0, 0});
        Widget().SetValue(point);
        if (ManipulatedProfile(*this)) Take(point);
        RepaintMother();
    }

    void UpdateChildControl() override
    {
        ProfileValueController::UpdateChildControl();
        if (motherController_) DrawIn(Green, [&] { OnStore(Read<XY>({0, 0}), MotherImage()).Draw(false); });
    }

private:
    static bool IsBeginning(int node) { return Engine::VarNode(node)->Role == argumentRole::Beginning; }
    XYWidget& Widget() const { return *static_cast<XYWidget*>(widget_.data()); }
    XY& Place()
    {
        ProfileSource& source = ManipulatedProfile(*this)->Source;
        return isBeginning_ ? source.Beg : source.End;
    }
    void Take(const XY& point)
    {
        Place() = point;
        anchorX_ = point.X;
        anchorY_ = point.Y;
    }
    void TakeFromProfile() override
    {
        Widget().SetValue(Place());
        Take(Place());
        Write<XY>(Place());
    }

    bool isBeginning_;
    double anchorX_ = -1, anchorY_ = -1;
};

/// The threshold of a followed outline: the gray value at the place from which it starts.
class IntPathController final : public OverlayValueController
{
public:
    explicit IntPathController(const ControllerRequest& request) : OverlayValueController(request)
    {
        auto* widget = new IntWidget(Qt16(argumentName_));
        SetWidget(widget);
        const auto& node = NodeAs<IntArgumentNode>();
        widget->SetRange(node.Minimum, node.Maximum, node.Step);
        widget->SetState(IsInOnly(), argumentAttr_);
        widget->SetValue(request.FromDefault && IsInOnly() ? node.Default : ReadInteger());
    }

    void SetMotherController(IController* Mother) override
    {
        const bool isNew = Mother != motherController_;
        OverlayValueController::SetMotherController(Mother);
        if (!isNew) return;
        if (const std::optional<int> gray = GrayAtSite()) {
            Widget().SetValue(*gray);
            WriteInteger(*gray);
        }
        siteX_ = siteY_ = MinInt;
    }

    void UpdateProperty() override
    {
        const std::optional<int> gray = GrayAtSite();
        const bool above = Above();
        const Site* site = ManipulatedSite();
        if (!gray || !site || (site->X == siteX_ && site->Y == siteY_ && above == above_)) {
            WriteInteger(Widget().Value());
            return;
        }
        const int threshold = above || *gray >= 255 ? *gray : *gray + 1;
        Widget().SetValue(threshold);
        WriteInteger(threshold);
        siteX_ = site->X;
        siteY_ = site->Y;
        above_ = above;
    }

    void UpdateControl(bool, bool) override { Widget().SetValue(ReadInteger()); }
    // It is no mark on the picture.
    void ShowCtrl(bool) override {}
    bool HideCtrl(bool Keep) override { return ControllerBase::HideCtrl(Keep); }

private:
    IntWidget& Widget() const { return *static_cast<IntWidget*>(widget_.data()); }

    const Site* ManipulatedSite() const
    {
        const auto* variable = manipulator_ ? dynamic_cast<const Var<Site>*>(manipulator_->CurrentVariable()) : nullptr;
        return variable ? &variable->Value : nullptr;
    }

    std::optional<int> GrayAtSite() const
    {
        const Image* image = MotherImage();
        const Site* site = ManipulatedSite();
        if (!image || !site || image->Type != Gray || site->X < 0 || site->Y < 0 || site->X >= image->StoreWidth ||
            site->Y >= image->StoreHeight)
            return std::nullopt;
        const std::uint8_t* store = image->Buffer + image->AlignOffset;
        return store[static_cast<std::ptrdiff_t>(image->Pitch) * site->Y + site->X];
    }

    /// Whether the outline keeps the brighter side; true if the operation has no such argument.
    bool Above() const
    {
        if (currentOperation_)
            for (const Arg& argument : currentOperation_->Args)
                if (argument.Variable && Engine::VarNode(argument.Node)->Role == argumentRole::Above)
                    if (const auto* variable = dynamic_cast<const Var<bool>*>(argument.Variable))
                        return variable->Value;
        return true;
    }

    int siteX_ = MinInt, siteY_ = MinInt;
    bool above_ = true;
};

} // namespace

Profile* ManipulatedProfile(const IController& controller)
{
    const IController* manipulator = controller.Manipulator();
    auto* variable = manipulator ? dynamic_cast<Var<Profile>*>(manipulator->CurrentVariable()) : nullptr;
    return variable ? &variable->Value : nullptr;
}

std::unique_ptr<IController> MakeProfilePosition(const ControllerRequest& request)
{
    return std::make_unique<IntProfilController>(request);
}

std::unique_ptr<IController> MakeProfileBreadth(const ControllerRequest& request)
{
    return std::make_unique<IntThicknessProfilController>(request);
}

std::unique_ptr<IController> MakeProfileEnd(const ControllerRequest& request)
{
    return std::make_unique<XYProfilController>(request);
}

std::unique_ptr<IController> MakePathThreshold(const ControllerRequest& request)
{
    return std::make_unique<IntPathController>(request);
}

} // namespace TeskPlus
