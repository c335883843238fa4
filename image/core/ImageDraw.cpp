// Drawing an image and its window, and dragging the window by its handles.
#include "image/Image.h"

#include "foundation/Entry.h"
#include "foundation/Graph.h"
#include "foundation/Handles.h"
#include "image/Operator.h"
#include "measure/Profile.h"

#include <algorithm>
#include <array>

namespace Tesk {

namespace {

/// Where a drag of the whole window took hold of it.
Grab grab;

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

ImageView Image::View(bool windowOnly) const
{
    ImageView view;
    view.Source = windowOnly ? SourceRectangle(X, Y, Width, Height) : SourceRectangle(0, 0, StoreWidth, StoreHeight);
    view.Pixels = Buffer + AlignOffset;
    view.Pitch = Pitch;
    view.Type = Type;
    view.Gain = GradGain;
    view.Depth = Operator::GrayDepth;
    return view;
}

void Image::Draw(bool WindowOnly) const
{
    Status::Error().Code = NoError;
    if (Type != Undefined) Graph::DrawImage(View(WindowOnly));
}

void Image::Draw(const Profile& LookupTable, bool WindowOnly) const
{
    const Entry entry("Tesk::Image::Draw");
    constexpr int entries = 256;
    if (Type == Undefined) return;
    if (Type != Gray)
        entry.Refuse(UnsupportedType, L"Only Gray images can be rendered through a lookup-table, this one is %ls",
                     PixelTypeName(Type));
    else if (LookupTable.Type != Gray && LookupTable.Type != Rgb)
        entry.Refuse(IncompatibleType,
                     L"Gray images can be rendered through a Gray or Rgb lookup-table, this one is %ls",
                     PixelTypeName(LookupTable.Type));
    else if (LookupTable.Length != entries)
        entry.Refuse(IncompatibleSize,
                     L"The lookup-table for Gray image rendering must have 256 entries, this one has %d",
                     int(LookupTable.Length));
    else {
        // An entry is cut to its low byte, as where pixels are sent through a table.
        std::array<std::int32_t, 3 * entries> samples;
        const std::size_t numbers = LookupTable.Type == Rgb ? samples.size() : entries;
        std::transform(LookupTable.Samples(), LookupTable.Samples() + numbers, samples.begin(),
                       [](std::int32_t sample) { return sample & 255; });
        const LookupTableView table{LookupTable.Type, entries, samples.data()};
        Graph::DrawImage(View(WindowOnly), &table);
    }
}

void Image::DrawWindow(bool Handles, PredefinedColors Color, bool Cross) const
{
    const GraphSettings kept;
    Graph::LineColor = Color;
    DrawWindow(Handles, Cross);
}

void Image::DrawWindow(bool Handles, bool Cross) const
{
    Status::Error().Code = NoError;
    GraphTarget* target = Graph::DrawTo();
    if (Type == Undefined || !target) return;
    const int left = Graph::ToTarget(X), right = Graph::ToTarget(X + Width);
    const int top = Graph::ToTarget(Y), bottom = Graph::ToTarget(Y + Height);
    const PredefinedColors line = Graph::LineColor, fill = Graph::FillColor;
    Graph::FillColor = NoColor;
    Graph::TargetRectangle(left, top, right, bottom, Cross);
    if (Handles) {
        Graph::FillColor = White;
        // Setting a colour goes through the next drawing call, which is a marker of the right size about each corner.
        const double zoom = Graph::Zoom;
        for (const auto& corner :
             {TargetPoint{right, bottom}, TargetPoint{left, bottom}, TargetPoint{right, top}, TargetPoint{left, top}})
            Graph::Marker(corner.X / zoom - 1 + 0.5 / zoom, corner.Y / zoom - 1 + 0.5 / zoom, true, handleRadius);
    }
    Graph::FillColor = fill;
    Graph::LineColor = line;
}

DraggingHandles Image::HitHandle(int X, int Y) const
{
    Status::Error().Code = NoError;
    const int left = Graph::ToTarget(this->X), top = Graph::ToTarget(this->Y);
    const auto far = [](std::int64_t near, int extent) {
        return static_cast<int>(Min<std::int64_t>(near + extent, MaxInt));
    };
    const int right = far(left, Graph::ToTarget(Width)), bottom = far(top, Graph::ToTarget(Height));
    const bool inX = left <= X && X <= right, inY = top <= Y && Y <= bottom;
    const auto hit = [&] {
        if (Type == Undefined) return NoHandle;
        if (IsNear(X, left) && IsNear(Y, top)) return NWHandle;
        if (IsNear(X, right) && IsNear(Y, top)) return NEHandle;
        if (IsNear(X, left) && IsNear(Y, bottom)) return SWHandle;
        if (IsNear(X, right) && IsNear(Y, bottom)) return SEHandle;
        if (IsNear(Y, top) && inX) return NHandle;
        if (IsNear(X, left) && inY) return WHandle;
        if (IsNear(X, right) && inY) return EHandle;
        if (IsNear(Y, bottom) && inX) return SHandle;
        return inX && inY ? AllHandle : NoHandle;
    };
    const DraggingHandles handle = hit();
    if (handle == AllHandle) grab.Take(ScreenPointer(X, Y).Pixel(), XY(this->X, this->Y));
    Handle = handle;
    return handle;
}

void Image::Drag(int X, int Y)
{
    Status::Error().Code = NoError;
    if (Type == Undefined) return;
    const XY pixel = ScreenPointer(X, Y).Pixel(), moved = grab.Moved(pixel);
    const int x = static_cast<int>(pixel.X), y = static_cast<int>(pixel.Y);
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
        left = static_cast<int>(Clamp<double>(moved.X, 0, StoreWidth - Width));
        top = static_cast<int>(Clamp<double>(moved.Y, 0, StoreHeight - Height));
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
