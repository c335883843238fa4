// What the controllers of values share: a widget in a row, and the value behind it: a variable, or a property of the
// variable's object.
#pragma once

#include "engine/Types.h"
#include "image/Image.h"
#include "workbench/logic/ControllerBase.h"
#include "workbench/views/picture/Overlay.h"
#include "workbench/views/values/ValueWidgets.h"

#include <QPointer>

#include <memory>
#include <utility>

namespace TeskPlus {

class ValueController : public ControllerBase
{
public:
    explicit ValueController(const ControllerRequest& Request) : ControllerBase(Request, false) {}
    ~ValueController() override { delete widget_; }

    ControlHandle Control() const override { return static_cast<QWidget*>(widget_.data()); }

protected:
    bool IsIn() const { return argumentAttr_ & attributeValue::In; }
    bool IsOut() const { return argumentAttr_ & attributeValue::Out; }
    /// An editable widget where the node is read and not written, too.
    bool IsInOnly() const { return IsIn() && !IsOut(); }
    template <typename Node>
    const Node& NodeAs() const
    {
        return static_cast<const Node&>(*Engine::VarNode(argumentNode_));
    }

    /// Takes the widget over and connects its changes.
    void SetWidget(ValueWidget* widget);
    /// Whether the user has changed the widget since the last call, rather than a drag on the picture its variable.
    bool TakeUserChange() { return std::exchange(isFromUser_, false); }

    /// The variable that holds the value: the shown one, or for a property a temporary that `Store` passes on. Null
    /// where the object or the type is not there.
    AnyVariable* Fetch();
    void Store();

    template <typename T>
    T Read(T otherwise)
    {
        auto* variable = dynamic_cast<Var<T>*>(Fetch());
        return variable ? variable->Value : otherwise;
    }
    template <typename T>
    void Write(const T& value)
    {
        auto* variable = dynamic_cast<Var<T>*>(Target());
        if (!variable) return;
        variable->Value = value;
        Store();
    }
    int ReadInteger();
    void WriteInteger(int value);

    /// Where a value is written before `Store`.
    AnyVariable* Target();

    /// A property of the object on which the last operation that names this variable is called; 0 for none.
    int RetrievePropertyValueFromNode(int node) const;
    /// The last operation that has an argument of this variable's name; null for none.
    Operation* RetrieveOperation() const;

    QPointer<ValueWidget> widget_;

private:
    std::unique_ptr<AnyVariable> scratch_;
    bool isFromUser_ = false;
};

/// A value that is also a mark on a picture: it joins the overlays of its mother.
class OverlayValueController : public ValueController, public IOverlay
{
public:
    using ValueController::ValueController;

    const OverlayRow* Overlay() const override { return nullptr; }
    void AddChild(IController& Child) override { ControllerBase::AddChild(Child); }
    void ShowCtrl(bool BringToFront) override;
    bool HideCtrl(bool Keep) override;

protected:
    /// The picture on which this one is drawn; null for none.
    const Image* MotherImage() const;
    void RepaintMother() const;
};

} // namespace TeskPlus
