// Drawing an image and its window, and dragging the window by its handles.
#include "image/Image.h"

#include "foundation/Entry.h"
#include "foundation/Graph.h"
#include "image/Operator.h"

#include <cmath>

namespace Tesk {

namespace {

/// A point within this many screen pixels of an edge is on it.
constexpr double handleTolerance = 6.0;
constexpr int discRadius = 5;

/// Where a drag of the whole window took hold, from the window's corner.
int dragOffsetX = 0, dragOffsetY = 0;

int Scaled(double v)
{
    return static_cast<int>(v * Graph::Zoom);
}

bool Near(int a, int b)
{
    return handleTolerance > std::abs(static_cast<double>(a) - b);
}

/// Moves the near edge of an extent; the far one stays.
void DragNear(int& from, int& extent, int to)
{
    const int end = from + extent;
    from = Clamp(to, 0, end - 1);
    extent = end - from;
}

/// Moves the far edge; the near one stays.
void DragFar(int from, int& extent, int store, int to)
{
    extent = Clamp(to - from, 0, store - from - 1) + 1;
}

} // namespace

void Image::Draw(bool WindowOnly) const
{
    Status::Error().Code = NoError;
    if (Type == Undefined) return;
    ImageView view;
    view.Source = WindowOnly ? Limits(X, Y, Width, Height) : Limits(0, 0, StoreWidth, StoreHeight);
    view.Pixels = Buffer + AlignOffset;
    view.Pitch = Pitch;
    view.Type = Type;
    view.Gain = GradGain;
    view.Depth = Operator::GrayDepth;
    Graph::DrawImage(view);
}

void Image::DrawWindow(bool Handles, bool Cross) const
{
    Status::Error().Code = NoError;
    GraphTarget* target = Graph::DrawTo();
    if (Type == Undefined || !target) return;
    const int left = Scaled(X + 0.5), right = Scaled(X + Width + 0.5);
    const int top = Scaled(Y + 0.5), bottom = Scaled(Y + Height + 0.5);
    const PredefinedColors line = Graph::LineColor, fill = Graph::FillColor;
    Graph::FillColor = NoColor;
    Graph::TargetRectangle(left, top, right, bottom, Cross);
    if (Handles) {
        Graph::FillColor = White;
        // Setting a colour goes through the next drawing call, which is a marker of the right size about each corner.
        const double zoom = Graph::Zoom;
        for (const auto& corner :
             {TargetPoint{right, bottom}, TargetPoint{left, bottom}, TargetPoint{right, top}, TargetPoint{left, top}})
            Graph::Marker(corner.X / zoom - 1 + 0.5 / zoom, corner.Y / zoom - 1 + 0.5 / zoom, true, discRadius);
    }
    Graph::FillColor = fill;
    Graph::LineColor = line;
}

DraggingHandles Image::HitHandle(int X, int Y) const
{
    Status::Error().Code = NoError;
    const int left = Scaled(this->X + 0.5), top = Scaled(this->Y + 0.5);
    const int right = left + Scaled(Width + 0.5), bottom = top + Scaled(Height + 0.5);
    const bool inX = left <= X && X <= right, inY = top <= Y && Y <= bottom;
    const auto hit = [&] {
        if (Type == Undefined) return NoHandle;
        if (Near(X, left) && Near(Y, top)) return NWHandle;
        if (Near(X, right) && Near(Y, top)) return NEHandle;
        if (Near(X, left) && Near(Y, bottom)) return SWHandle;
        if (Near(X, right) && Near(Y, bottom)) return SEHandle;
        if (Near(Y, top) && inX) return NHandle;
        if (Near(X, left) && inY) return WHandle;
        if (Near(X, right) && inY) return EHandle;
        if (Near(Y, bottom) && inX) return SHandle;
        return inX && inY ? AllHandle : NoHandle;
    };
    const DraggingHandles handle = hit();
    if (handle == AllHandle) {
        dragOffsetX = this->X - static_cast<int>(X / Graph::Zoom);
        dragOffsetY = this->Y - static_cast<int>(Y / Graph::Zoom);
    }
    Handle = handle;
    return handle;
}

void Image::Drag(int X, int Y)
{
    Status::Error().Code = NoError;
    if (Type == Undefined) return;
    const int x = static_cast<int>(X / Graph::Zoom), y = static_cast<int>(Y / Graph::Zoom);
    int left = this->X, top = this->Y, width = Width, height = Height;
    switch (Handle) {
    case NWHandle:
        DragNear(left, width, x);
        DragNear(top, height, y);
        break;
    case WHandle:
        DragNear(left, width, x);
        break;
    case SWHandle:
        DragNear(left, width, x);
        DragFar(top, height, StoreHeight, y);
        break;
    case NEHandle:
        DragFar(left, width, StoreWidth, x);
        DragNear(top, height, y);
        break;
    case EHandle:
        DragFar(left, width, StoreWidth, x);
        break;
    case SEHandle:
        DragFar(left, width, StoreWidth, x);
        DragFar(top, height, StoreHeight, y);
        break;
    case NHandle:
        DragNear(top, height, y);
        break;
    case SHandle:
        DragFar(top, height, StoreHeight, y);
        break;
    case AllHandle:
        left = Clamp(x + dragOffsetX, 0, StoreWidth - Width);
        top = Clamp(y + dragOffsetY, 0, StoreHeight - Height);
        break;
    default:
        return;
    }
    this->X = left;
    this->Y = top;
    Width = width;
    Height = height;
    PlaceFirstPixel();
}

} // namespace Tesk
