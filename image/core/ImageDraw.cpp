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
    if (Type != Undefined) DrawBox(SourceRectangle(X, Y, Width, Height), Handles, Cross);
}

DraggingHandles Image::HitHandle(int X, int Y) const
{
    Status::Error().Code = NoError;
    const SourceRectangle window(this->X, this->Y, Width, Height);
    const DraggingHandles handle = Type == Undefined ? NoHandle : HitBox(window, X, Y);
    if (handle == AllHandle) grab.Take(ScreenPointer(X, Y).Pixel(), XY(this->X, this->Y));
    Handle = handle;
    return handle;
}

void Image::Drag(int X, int Y)
{
    Status::Error().Code = NoError;
    if (Type == Undefined) return;
    const SourceRectangle window = DragBox(SourceRectangle(this->X, this->Y, Width, Height), Handle,
                                           ScreenPointer(X, Y).Pixel(), grab, StoreWidth, StoreHeight);
    this->X = window.X;
    this->Y = window.Y;
    Width = window.Width;
    Height = window.Height;
    PlaceFirstPixel();
}

} // namespace Tesk
