// Profiles on the screen: where their samples came from, drawn and dragged; their values as a curve.
#include "measure/Profile.h"

#include "foundation/Angles.h"
#include "foundation/Graph.h"
#include "foundation/Handles.h"
#include "measure/profile/ProfileFrame.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace Tesk {

using namespace profiles;

namespace {

/// The widest band that a drag makes.
constexpr int largestBreadth = 256;

/// Where a drag of the whole took hold of its column and row, or of its begin and end.
Grab grabBand, grabBeg, grabEnd;

/// What is drawn: the way of the latest sampling, or before the first one that in which the profile is dragged.
ProfileSource::Kinds KindOf(const ProfileSource& source)
{
    if (source.Kind != ProfileSource::None) return source.Kind;
    switch (source.Direction) {
    case NHandle:
    case SHandle:
        return ProfileSource::OfRow;
    case WHandle:
    case EHandle:
        return ProfileSource::OfColumn;
    case AllHandle:
        return ProfileSource::OfLine;
    default:
        return ProfileSource::None;
    }
}

int BreadthOf(const ProfileSource& source)
{
    return Max(source.Breadth, 1);
}

/// A row or a column, or the outline of several.
void DrawBand(int x, int y, int width, int height, bool handles)
{
    const int right = x + width - 1, bottom = y + height - 1;
    if (width > 1 && height > 1)
        Graph::Rectangle(x, y, width, height);
    else
        Graph::Line(x, y, right, bottom);
    if (!handles) return;
    DrawHandle(XY(x, y));
    DrawHandle(XY(right, bottom));
}

void DrawLine(const ProfileSource& source, bool handles)
{
    const XY beg(source.Beg.X + source.X, source.Beg.Y + source.Y),
        end(source.End.X + source.X, source.End.Y + source.Y);
    Graph::Line(beg.X, beg.Y, end.X, end.Y, 1);
    if (source.Breadth > 1)
        Graph::RotatedRectangle((beg.X + end.X) / 2, (beg.Y + end.Y) / 2, std::hypot(end.X - beg.X, end.Y - beg.Y),
                                source.Breadth - 1, ToDegrees(std::atan2(end.Y - beg.Y, end.X - beg.X)), false);
    if (!handles) return;
    DrawHandle(beg);
    DrawHandle(end);
}

void DrawCurve(const ProfileSource& source, bool handles)
{
    if (!source.Curve) return;
    std::vector<XY> points;
    points.reserve(source.Curve->size());
    for (const Site& site : *source.Curve)
        points.emplace_back(site.X + source.X, site.Y + source.Y);
    Graph::Polyline(points, false);
    if (handles)
        for (const XY& point : points)
            DrawHandle(point);
}

/// The handle of a band whose near and far lines lie at these places of the screen.
DraggingHandles HitBand(int at, int near, int far, bool single, DraggingHandles nearHandle, DraggingHandles farHandle)
{
    const bool isNear = IsNear(at, near), isFar = !single && IsNear(at, far);
    // On both it is the nearer one.
    if (isNear && isFar) return std::int64_t{2} * at <= std::int64_t{near} + far ? nearHandle : farHandle;
    if (isNear || isFar || single) return isNear ? nearHandle : isFar ? farHandle : NoHandle;
    return near < at && at < far ? AllHandle : NoHandle;
}

DraggingHandles HitLine(const ProfileSource& source, const ScreenPointer& pointer)
{
    if (pointer.IsOnMark(source.Beg)) return FromHandle;
    if (pointer.IsOnMark(source.End)) return ToHandle;
    return pointer.IsNearSegment(source.Beg, source.End, source.Breadth) ? AllHandle : NoHandle;
}

/// Moves the near line of a band, its far one, or all of it, inside `extent`.
void DragBand(DraggingHandles handle, DraggingHandles nearHandle, DraggingHandles farHandle, double pointer,
              double moved, int extent, int& from, int& breadth)
{
    const int to = Truncated(pointer), width = Max(breadth, 1);
    if (width == 1 && handle == nearHandle) {
        from = Clamp(to, 0, extent - 1);
    } else if (handle == nearHandle) {
        const int end = from + width;
        from = Clamp(to, Max(0, end - largestBreadth), end - 1);
        breadth = end - from;
    } else if (handle == farHandle) {
        breadth = Clamp(to - from + 1, 1, Min(largestBreadth, extent - from));
    } else if (handle == AllHandle) {
        from = Truncated(Clamp<double>(moved, 0, Max(extent - width, 0)));
    }
}

double Kept(double v, int extent)
{
    return Clamp(v, 0.0, static_cast<double>(Max(extent - 1, 0)));
}

struct Curve
{
    const Profile& profile;
    int channel, channels;

    double At(int i) const
    {
        switch (profile.Type) {
        case Float:
            return profile.Samples<float>()[i];
        case Dble:
            return profile.Samples<double>()[i];
        case Bool:
            return profile.First[i];
        default:
            return profile.Samples()[static_cast<std::ptrdiff_t>(i) * channels + channel];
        }
    }
};

/// The least and the greatest value of some channels; zero is always in sight.
void ValueRange(const Profile& profile, int curves, double& low, double& high)
{
    low = high = 0;
    for (int c = 0; c < curves; c++)
        for (int i = 0; i < profile.Length; i++) {
            const double value = Curve{profile, c, Channels(profile.Type)}.At(i);
            low = value < low ? value : low;
            high = value > high ? value : high;
        }
    if (low == high) high = low + 1;
}

/// The points of a curve over an axis of that many pixels, as `place(along, value)` puts them.
template <typename F>
std::vector<XY> PointsOf(const Curve& curve, double across, F place)
{
    const int length = curve.profile.Length;
    const double step = length > 1 ? across / (length - 1) : 0;
    std::vector<XY> points;
    // Where several samples share a pixel, their extremes stand for them.
    const int share = Max(1, static_cast<int>(length / (across + 1)));
    for (int i = 0; i < length; i += share) {
        double least = curve.At(i), most = least;
        const int end = static_cast<int>(Min<std::int64_t>(std::int64_t{i} + share, length));
        for (int k = i + 1; k < end; k++) {
            least = Min(least, curve.At(k));
            most = Max(most, curve.At(k));
        }
        points.push_back(place(i * step, least));
        if (most != least) points.push_back(place(i * step, most));
        if (length - i <= share) break;
    }
    if (points.size() == 1) points.push_back(place(across, curve.At(0)));
    return points;
}

bool IsPlotted(PixelTypes type)
{
    return IsWhole(type) || type == Rgb || type == Rgba || type == Float || type == Dble || type == Bool;
}

} // namespace

void Profile::SetWindow(const Image& Mother)
{
    SetWindow(Mother.X, Mother.Y, Mother.Width, Mother.Height);
}

void Profile::SetWindow(int X, int Y, int Width, int Height)
{
    Status::Error().Code = NoError;
    Source.X = X;
    Source.Y = Y;
    Source.Width = Width;
    Source.Height = Height;
}

void Profile::Draw(bool Handles) const
{
    Status::Error().Code = NoError;
    const GraphSettings kept;
    Graph::FillColor = NoColor;
    switch (KindOf(Source)) {
    case ProfileSource::OfRow:
        DrawBand(Source.X, Source.Y + Source.Row, Source.Width, BreadthOf(Source), Handles);
        break;
    case ProfileSource::OfColumn:
        DrawBand(Source.X + Source.Column, Source.Y, BreadthOf(Source), Source.Height, Handles);
        break;
    case ProfileSource::OfLine:
        DrawLine(Source, Handles);
        break;
    case ProfileSource::OfCurve:
        DrawCurve(Source, Handles);
        break;
    default:
        break;
    }
}

DraggingHandles Profile::HitHandle(int X, int Y) const
{
    Status::Error().Code = NoError;
    const ScreenPointer pointer(X, Y, XY(Source.X, Source.Y));
    const bool single = BreadthOf(Source) == 1;
    const auto inside = [](int at, int from, int extent) {
        return IsNear(at, Graph::ToTarget(from), Graph::ToTarget(from + extent - 1));
    };
    DraggingHandles handle = NoHandle;
    switch (KindOf(Source)) {
    case ProfileSource::OfRow: {
        const int top = Source.Y + Source.Row;
        if (inside(X, Source.X, Source.Width))
            handle = HitBand(Y, Graph::ToTarget(top), Graph::ToTarget(top + BreadthOf(Source) - 1), single, NHandle,
                             SHandle);
        break;
    }
    case ProfileSource::OfColumn: {
        const int left = Source.X + Source.Column;
        if (inside(Y, Source.Y, Source.Height))
            handle = HitBand(X, Graph::ToTarget(left), Graph::ToTarget(left + BreadthOf(Source) - 1), single, WHandle,
                             EHandle);
        break;
    }
    case ProfileSource::OfLine:
        handle = HitLine(Source, pointer);
        break;
    default:
        break;
    }
    if (handle == AllHandle) {
        grabBand.Take(pointer.Pixel(), XY(Source.Column, Source.Row));
        grabBeg.Take(pointer.Position(), Source.Beg);
        grabEnd.Take(pointer.Position(), Source.End);
    }
    Handle = handle;
    return handle;
}

void Profile::Drag(int X, int Y)
{
    Status::Error().Code = NoError;
    if (Source.Width < 1 || Source.Height < 1 || Handle == NoHandle) return;
    const ScreenPointer pointer(X, Y, XY(Source.X, Source.Y));
    const XY position = pointer.Position(), pixel = pointer.Pixel(), moved = grabBand.Moved(pixel);
    const DraggingHandles handle = Handle;
    switch (KindOf(Source)) {
    case ProfileSource::OfRow:
        DragBand(handle, NHandle, SHandle, pixel.Y, moved.Y, Source.Height, Source.Row, Source.Breadth);
        break;
    case ProfileSource::OfColumn:
        DragBand(handle, WHandle, EHandle, pixel.X, moved.X, Source.Width, Source.Column, Source.Breadth);
        break;
    case ProfileSource::OfLine:
        if (handle == FromHandle) {
            Source.Beg = XY(Kept(position.X - 1, Source.Width), Kept(position.Y - 1, Source.Height));
        } else if (handle == ToHandle) {
            Source.End = XY(Kept(position.X - 1, Source.Width), Kept(position.Y - 1, Source.Height));
        } else if (handle == AllHandle) {
            // The ends stop at the border together, so that the line keeps its length and direction.
            const XY beg = grabBeg.Moved(position), end = grabEnd.Moved(position);
            const auto shift = [](double a, double b, int extent) {
                const double low = Min(a, b), high = Max(a, b);
                return low < 0 ? -low : high > extent - 1 ? Max(extent - 1 - high, -low) : 0.0;
            };
            const double dx = shift(beg.X, end.X, Source.Width), dy = shift(beg.Y, end.Y, Source.Height);
            Source.Beg = XY(beg.X + dx, beg.Y + dy);
            Source.End = XY(end.X + dx, end.Y + dy);
        }
        break;
    default:
        break;
    }
}

void Profile::Plot(int X, int Y, int Width, int Height, bool Vertical, int Minimum, int Maximum, int Grid,
                   bool Frame) const
{
    const Entry entry("Tesk::Profile::Plot");
    const GraphSettings kept(1);
    Graph::FillColor = NoColor;
    if (Width < 2 || Height < 2) return;
    const double across = (Vertical ? Height : Width) - 1, up = (Vertical ? Width : Height) - 1;
    const auto place = [&](double along, double height) {
        return Vertical ? XY(X + height, Y + along) : XY(X + along, Y + up - height);
    };
    if (Frame) Graph::Rectangle(X, Y, Width, Height);
    if (Length < 1) return;
    if (!IsPlotted(Type)) {
        entry.Refuses(RefuseType(Type));
        return;
    }
    const double step = Length > 1 ? across / (Length - 1) : 0;
    for (std::int64_t i = Grid; Grid > 0 && i < Length && step * Grid >= 2; i += Grid) {
        const XY from = place(static_cast<double>(i) * step, 0), to = place(static_cast<double>(i) * step, up);
        Graph::Line(from.X, from.Y, to.X, to.Y);
    }
    const int channels = Channels(Type), curves = Min(channels, 3);
    double low = Minimum, high = Maximum;
    if (Minimum == Maximum) ValueRange(*this, curves, low, high);
    entry.Refuses(Allocating([&] {
        constexpr PredefinedColors colors[] = {Red, Green, Blue};
        for (int c = 0; c < curves; c++) {
            const auto points = PointsOf(Curve{*this, c, channels}, across, [&](double along, double value) {
                const double part = (value - low) / (high - low);
                return place(along, part > 0 ? Min(part, 1.0) * up : 0.0);
            });
            if (curves > 1 && Graph::AutoColors) Graph::LineColor = colors[c];
            Graph::Polyline(points, false);
        }
    }));
}

} // namespace Tesk
