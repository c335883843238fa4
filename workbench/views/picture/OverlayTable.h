// How the overlays on a picture take the pointer and what they draw: one row for each type of object. A class of the
// library that lands adds its row to the table; no view asks for a type.
#pragma once

#include "foundation/Graph.h"
#include "image/Image.h"
#include "workbench/logic/IController.h"

#include <optional>
#include <qnamespace.h>

namespace TeskPlus {

/// What lies under the pointer.
struct OverlayHit
{
    bool IsHit = false;
    std::optional<Qt::CursorShape> Cursor = Qt::ArrowCursor; ///< nothing: the cursor stays as it is
};

/// The pointer's positions are pixels of the screen; the library turns them into those of the image by `Graph::Zoom`,
/// which is set around each call. A function that a row has not is null.
struct OverlayRow
{
    int Type; ///< of the controller
    /// For which of the type's controllers the row stands; null for all.
    bool (*AppliesTo)(const IController& Child) = nullptr;

    /// What the button, being up, would take hold of. Without it the overlay takes no pointer.
    OverlayHit (*Hit)(IController& Child, int X, int Y) = nullptr;
    /// Moves what `Hit` found last; the picture bounds it where the object asks for that.
    void (*Drag)(IController& Child, const Image& Picture, int X, int Y) = nullptr;
    /// Whether a press would now take hold of something.
    bool (*IsHeld)() = nullptr;
    /// A press that selects something and runs the sequence at once, with no drag; false if there was nothing.
    bool (*Press)(IController& Child, int X, int Y) = nullptr;
    /// Whose operation a drag runs, where it is not the overlay's own.
    IController* (*Dragged)(IController& Child) = nullptr;
    /// The button coming up chooses the cursor anew.
    bool HitsOnRelease = true;

    /// How a controller without a widget draws its object.
    PredefinedColors Color = Current;
    void (*Draw)(AnyVariable& Object, const IController& Child) = nullptr;
    /// Puts the object to a starting place in the middle of a picture that is new to it, or, with `FollowsWindow`,
    /// whose window has changed.
    void (*Start)(AnyVariable& Object, const Image& Picture) = nullptr;
    bool FollowsWindow = false;
};

/// The row of a controller; null where its object is no overlay.
const OverlayRow* FindOverlay(const IController& Child);

/// The picture that a controller shows; null for a controller that shows none.
const Image* PictureOf(const IController* Controller);

/// A point of the window of a picture, where it stands in the whole picture that is shown.
inline XY OnStore(const XY& point, const Image* picture)
{
    return picture ? XY(point.X + picture->X, point.Y + picture->Y) : point;
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

/// The library's object behind a controller; null if it shows another type.
template <typename T>
T* ObjectOf(const IController* Controller)
{
    auto* variable = Controller ? dynamic_cast<Var<T>*>(Controller->CurrentVariable()) : nullptr;
    return variable ? &variable->Value : nullptr;
}

} // namespace TeskPlus
