// What a controller is: the binding of one variable of the engine to what the user sees of it.
#pragma once

#include "engine/Engine.h"

#include <functional>
#include <string>
#include <vector>

namespace TeskPlus {

using namespace Tesk;

/// A widget, as far as the logic knows it: a `QWidget*` converted to `void*` in the views, null where there is no
/// screen.
using ControlHandle = void*;

/// Whether a controller is on the screen, and why.
enum class controllerState
{
    NeverShown = 0,    ///< a window keeps its place on the spiral free until then
    Hidden = 1,        ///<
    Glanced = 2,       ///< shown while the pointer rests on the variable's line in the list
    Shown = 3,         ///< shown by the current operation; values in rows start here
    Pinned = 4,        ///< shown whatever operation is selected
    PinnedAndShown = 5 ///< pinned, and used by the current operation
};

inline bool IsPinned(controllerState State)
{
    return State > controllerState::Shown;
}

/// What a controller calls after a change: the six arguments of `OperationHandler::DoRun`, in its order: operation,
/// variable, properties taken, mothers, dragging, from the parameters panel.
using ControllerEventDelegate = std::function<void(Operation*, AnyVariable*, bool, bool, bool, bool)>;

/// The interface of every controller. The workbench keeps one for each distinct variable name. A controller never owns
/// its variable, its operation, its mother or its children; one that is destroyed takes itself off its mother.
class IController
{
public:
    virtual ~IController() = default;

    /// Pull: what the control shows goes into the variable, or through `Engine::SetProperty` for a property.
    virtual void UpdateProperty() = 0;
    /// Push: the control shows the variable. A mother takes `Mode` true from a child, false from the panel.
    virtual void UpdateControl(bool Mode, bool Dragging) = 0;
    /// Draws itself as an overlay on the mother's picture.
    virtual void UpdateChildControl() = 0;
    /// Keep the list of overlays, without duplicates.
    virtual void AddChild(IController& Child) = 0;
    virtual void RemoveChild(IController& Child) = 0;
    /// On which picture this one draws; null for none.
    virtual void SetMotherController(IController* Mother) = 0;
    virtual void ShowCtrl(bool BringToFront) = 0;
    /// Hides if the state allows it; true when it is hidden.
    virtual bool HideCtrl(bool Keep) = 0;
    /// Whether the image view may offer its "Window" box.
    virtual void SetWindowPossiblity(bool Possible) = 0;
    /// True for a copy in the parameters panel.
    virtual bool IsExternalWidget() const = 0;
    virtual void SetIsExternalWidget(bool External) = 0;
    /// True if it reads and writes through the property keys.
    virtual bool IsProperty() const = 0;
    /// The operation that owns the shown argument.
    virtual Operation* CurrentOperation() const = 0;
    virtual void SetCurrentOperation(Operation* Current) = 0;
    virtual AnyVariable* CurrentVariable() const = 0;
    virtual void SetCurrentVariable(AnyVariable* Variable) = 0;
    /// The variable's `Name`.
    virtual const std::wstring& VariableIdentifier() const = 0;
    virtual void SetVariableIdentifier(const std::wstring& Name) = 0;
    /// The object that this value drives: a `Profile`, a `Site`.
    virtual IController* Manipulator() const = 0;
    virtual void SetManipulator(IController* Object) = 0;
    virtual IController* MotherController() const = 0;
    /// The index of the `ArgumentNode`.
    virtual int ControllerNode() const = 0;
    /// The list that holds this one, in a `MultiController` or a sheet; null for none.
    virtual const std::vector<IController*>* ControllerContainer() const = 0;
    virtual void SetControllerContainer(const std::vector<IController*>* Container) = 0;
    /// The node's `Label`.
    virtual const std::wstring& ControllerName() const = 0;
    virtual void SetControllerName(const std::wstring& Name) = 0;
    /// The node's `Flags`, of `attributeValue`.
    virtual std::uint32_t ControllerAttributes() const = 0;
    /// The node's `Type`, a `parameterType` code.
    virtual int ControllerType() const = 0;
    virtual controllerState ControllerState() const = 0;
    virtual void SetControllerState(controllerState State) = 0;
    /// What the panel puts in a row, or the window.
    virtual ControlHandle Control() const = 0;
    /// True for an object that lives in windows of its own, false for a value in a row.
    virtual bool IsStructure() const = 0;
};

/// What a property sheet offers beside the interface of controllers. A sheet is found in a controller, or in a member
/// of a `MultiController`, by a cast to this.
class IPropertySheet
{
public:
    virtual ~IPropertySheet() = default;
    /// The `PageNode`s that the sheet shows, in order.
    virtual const std::vector<int>& PageNodes() const = 0;
};

/// A window of its own, which takes the next place of the spiral when it is first shown. A controller that is one
/// derives from this too.
class IPlacedWindow
{
public:
    virtual ~IPlacedWindow() = default;
};

/// An anchor on a picture, which goes back to its place when the size of the picture is reset. A controller that is one
/// derives from this too.
class IAnchor
{
public:
    virtual ~IAnchor() = default;
    virtual void ResetAnchor(int Width, int Height) = 0;
};

} // namespace TeskPlus
