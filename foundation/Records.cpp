// What the records do: points are drawn and dragged, rectangles are combined and kept in files.
#include "foundation/Records.h"

#include "foundation/Archive.h"
#include "foundation/Graph.h"
#include "foundation/Handles.h"

namespace Tesk {

ReadOnly<DraggingHandles, XY> XY::Handle(NoHandle);
ReadOnly<DraggingHandles, Site> Site::Handle(NoHandle);

namespace {

/// What stands on a mark's position is drawn on the middle of the pixel.
constexpr double markOffset = -0.5;

void DrawPoint(double x, double y, bool handles)
{
    Graph::Cross(x + markOffset, y + markOffset, handleRadius);
    if (handles) Graph::Marker(x + markOffset, y + markOffset, true, handleRadius);
}

DraggingHandles HitPoint(double pointX, double pointY, int x, int y)
{
    // A pixel that is shown large is hit all over.
    const double reach = Max(handleTolerance, Graph::Zoom / 2 + 1);
    return ScreenPointer(x, y).IsOn(XY(pointX, pointY), reach) ? PointHandle : NoHandle;
}

constexpr ArchiveFormat limitsFormat{"TLIM", 1, L"File \"%ls\" is not an Image Window file",
                                     L"The version number \"%d\" of this Image Window file is too high"};

std::int16_t Short16(int value)
{
    return static_cast<std::int16_t>(Clamp(value, -32768, 32767));
}

} // namespace

void XY::Draw(bool Handles) const
{
    DrawPoint(X, Y, Handles);
}

DraggingHandles XY::HitHandle(int x, int y) const
{
    Handle = HitPoint(X, Y, x, y);
    return Handle;
}

void XY::Drag(int x, int y)
{
    if (Handle == PointHandle) *this = ScreenPointer(x, y).Pixel();
}

void Site::Draw(bool Handles) const
{
    DrawPoint(X, Y, Handles);
}

DraggingHandles Site::HitHandle(int x, int y) const
{
    Handle = HitPoint(X, Y, x, y);
    return Handle;
}

void Site::Drag(int x, int y)
{
    if (Handle != PointHandle) return;
    const XY pixel = ScreenPointer(x, y).Pixel();
    X = Short16(static_cast<int>(pixel.X));
    Y = Short16(static_cast<int>(pixel.Y));
}

void Limits::Unite(const Limits& Other)
{
    const int left = Min(X, Other.X), top = Min(Y, Other.Y);
    const int right = Max(X + Width, Other.X + Other.Width), bottom = Max(Y + Height, Other.Y + Other.Height);
    *this = Limits(left, top, Short16(right - left), Short16(bottom - top));
}

void Limits::Stretch(int x, int y)
{
    const int left = Min<int>(X, x), top = Min<int>(Y, y);
    const int right = Max(X + Width, x + 1), bottom = Max(Y + Height, y + 1);
    *this = Limits(Short16(left), Short16(top), Short16(right - left), Short16(bottom - top));
}

bool Limits::Intersect(const Limits& Other)
{
    const int left = Max(X, Other.X), top = Max(Y, Other.Y);
    const int right = Min(X + Width, Other.X + Other.Width), bottom = Min(Y + Height, Other.Y + Other.Height);
    *this = Limits(left, top, Short16(right - left), Short16(bottom - top));
    return Width >= 1 && Height >= 1;
}

void Limits::Transfer(Archive& Block)
{
    Block.Header(limitsFormat);
    Block(X, Y, Width, Height);
}

void Limits::Read(const char* PathName)
{
    ReadModel("Tesk::Limits::Read", PathName, *this, ShortFile::MayBeEmpty);
}

void Limits::Read(const wchar_t* PathName)
{
    ReadModel("Tesk::Limits::Read", PathName, *this, ShortFile::MayBeEmpty);
}

void Limits::Write(const char* PathName) const
{
    WriteModel("Tesk::Limits::Write", PathName, *this);
}

void Limits::Write(const wchar_t* PathName) const
{
    WriteModel("Tesk::Limits::Write", PathName, *this);
}

} // namespace Tesk
