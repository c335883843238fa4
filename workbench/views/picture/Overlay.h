// How an object takes the pointer on the picture on which it lies, and what it draws there.
#pragma once

#include "foundation/Graph.h"
#include "image/Image.h"
#include "workbench/logic/IController.h"

#include <optional>
#include <qnamespace.h>
#include <span>

namespace TeskPlus {

/// What lies under the pointer.
struct OverlayHit
{
    bool IsHit = false;
    std::optional<Qt::CursorShape> Cursor = Qt::ArrowCursor; ///< nothing: the cursor stays as it is
};

/// A part of an overlay that is drawn in a color of its own.
struct OverlayMark
{
    PredefinedColors Color = Current;
    void (*Draw)(AnyVariable& Object, const IController& Child) = nullptr;
    /// Whether there is such a part now; null for always.
    bool (*IsShown)(AnyVariable& Object, const IController& Child) = nullptr;
};

/// The pointer's positions are pixels of the screen; the library turns them into those of the image by `Graph::Zoom`,
/// which is set around each call. A function that an overlay has not is null.
struct OverlayRow
{
    /// What the button, being up, would take hold of. Without it the overlay takes no pointer.
    OverlayHit (*Hit)(IController& Child, int X, int Y) = nullptr;
    /// Moves what `Hit` found last; the picture bounds it where the object asks for that.
    void (*Drag)(IController& Child, const Image& Picture, int X, int Y) = nullptr;
    /// Whether a press would now take hold of something.
    bool (*IsHeld)(const IController& Child) = nullptr;
    /// A press that selects something and runs the sequence at once, with no drag; false if there was nothing.
    bool (*Press)(IController& Child, int X, int Y) = nullptr;
    /// Whose operation a drag runs, where it is not the overlay's own.
    IController* (*Dragged)(IController& Child) = nullptr;
    /// The button coming up chooses the cursor anew.
    bool HitsOnRelease = true;

    /// How a controller without a widget draws its object.
    PredefinedColors Color = Current;
    void (*Draw)(AnyVariable& Object, const IController& Child) = nullptr;
    /// What is drawn on it, in this order.
    std::span<const OverlayMark> Marks = {};
    /// Puts the object to a starting place in the middle of a picture that is new to it, or, with `FollowsWindow`,
    /// whose window has changed.
    void (*Start)(AnyVariable& Object, const Image& Picture) = nullptr;
    bool FollowsWindow = false;
    /// Chooses the window of the picture, before each run, for an object that works on a part of it.
    void (*Frame)(AnyVariable& Object, const IController& Child, Image& Picture) = nullptr;
    /// A mother without a picture starts it, too, with a void one.
    bool StartsWithoutPicture = false;
};

/// A controller that draws on a picture. One that takes the pointer, too, says how.
class IOverlay
{
public:
    virtual ~IOverlay() = default;
    /// Null while there is nothing of it to take hold of.
    virtual const OverlayRow* Overlay() const = 0;
};

/// What a controller is on a picture; null if nothing.
inline const OverlayRow* FindOverlay(const IController& Child)
{
    const auto* overlay = dynamic_cast<const IOverlay*>(&Child);
    return overlay ? overlay->Overlay() : nullptr;
}

/// The library's object behind a controller; null if it shows another type.
template <typename T>
T* ObjectOf(const IController* Controller)
{
    auto* variable = Controller ? dynamic_cast<Var<T>*>(Controller->CurrentVariable()) : nullptr;
    return variable ? &variable->Value : nullptr;
}

/// The picture that a controller shows; null for a controller that shows none.
inline const Image* PictureOf(const IController* Controller)
{
    return ObjectOf<Image>(Controller);
}

/// A point of the window of a picture, where it stands in the whole picture that is shown.
inline XY OnStore(const XY& point, const Image* picture)
{
    return picture ? XY(point.X + picture->X, point.Y + picture->Y) : point;
}

/// For classes whose handle is shared by their objects: whether the last hit took hold of one.
template <typename T>
bool IsHandleSet(const IController&)
{
    return T::Handle != NoHandle;
}

/// Draws lines and points in a color, and leaves the settings as they were.
template <typename Draw>
void DrawIn(PredefinedColors color, Draw draw)
{
    const PredefinedColors line = Graph::LineColor, point = Graph::PointColor;
    Graph::LineColor = color;
    Graph::PointColor = color;
    draw();
    Graph::LineColor = line;
    Graph::PointColor = point;
}

} // namespace TeskPlus
