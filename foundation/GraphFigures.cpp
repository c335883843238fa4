// Turned and curved figures, and the marks of measured distances and angles.
#include "foundation/Angles.h"
#include "foundation/Graph.h"
#include "foundation/Status.h"

#include <cmath>
#include <iterator>
#include <numbers>

namespace Tesk {

namespace {

/// Three points make an arc if their chord is at least this long, the middle one stands off it by more than this, and
/// the circle is no larger than this; all in image pixels.
constexpr double smallestChord = 10, smallestSagitta = 0.5, largestRadius = 2048;

/// Truncates within what a target can hold.
int Length(double v)
{
    return static_cast<int>(Clamp(v == v ? v : 0.0, 0.0, 1e9));
}

TargetPoint OnTarget(XY point)
{
    return {Graph::ToTarget(point.X), Graph::ToTarget(point.Y)};
}

} // namespace

void Graph::RotatedRectangle(double cx, double cy, double w, double h, double degrees, bool cross)
{
    RotatedRectangleRadians(cx, cy, w, h, ToRadians(degrees), cross);
}

void Graph::RotatedRectangleRadians(double cx, double cy, double w, double h, double radians, bool cross)
{
    GraphTarget* target = Prepared();
    if (!target) return;
    const double c = std::cos(radians), s = std::sin(radians);
    const auto corner = [&](double sx, double sy) {
        return OnTarget(XY(cx + (sx * w * c - sy * h * s) / 2, cy + (sx * w * s + sy * h * c) / 2));
    };
    const std::vector<TargetPoint> corners = {corner(-1, -1), corner(1, -1), corner(1, 1), corner(-1, 1)};
    target->Polygon(corners);
    for (std::size_t i = 0; cross && i < 2; i++) {
        target->MoveTo(corners[i]);
        target->LineTo(corners[i + 2]);
    }
}

void Graph::Circle(double x, double y, double r)
{
    if (GraphTarget* target = Prepared())
        target->Ellipse(ToTarget(x - r), ToTarget(y - r), ToTarget(x + r), ToTarget(y + r));
}

void Graph::Ellipse(double cx, double cy, double a, double b, double degrees)
{
    EllipseRadians(cx, cy, a, b, ToRadians(degrees));
}

void Graph::EllipseRadians(double cx, double cy, double a, double b, double radians)
{
    GraphTarget* target = Prepared();
    if (!target) return;
    const int halfA = Length(a * Zoom), halfB = Length(b * Zoom);
    target->SetRotation(radians, OnTarget(XY(cx, cy)));
    target->Ellipse(-halfA, -halfB, halfA, halfB);
    target->ResetRotation();
}

void Graph::EllipseArc(double cx, double cy, double a, double b, double degrees, double from, double to, int marks)
{
    EllipseArcRadians(cx, cy, a, b, ToRadians(degrees), ToRadians(from), ToRadians(to), marks);
}

void Graph::EllipseArcRadians(double cx, double cy, double a, double b, double radians, double from, double to,
                              int marks)
{
    GraphTarget* target = Prepared();
    if (!target) return;
    const int halfA = Length(a * Zoom), halfB = Length(b * Zoom);
    target->SetRotation(radians, OnTarget(XY(cx, cy)));
    target->Arc(-halfA, -halfB, halfA, halfB, from, to);
    for (const double end : {from, to}) {
        if (marks <= 0) break;
        // Along the normal of the ellipse at its parameter.
        const double nx = halfB * std::cos(end), ny = halfA * std::sin(end), n = Max(std::hypot(nx, ny), 1e-9);
        const auto along = [&](double by) {
            return TargetPoint{static_cast<int>(std::lround(halfA * std::cos(end) + by * nx / n)),
                               static_cast<int>(std::lround(halfB * std::sin(end) + by * ny / n))};
        };
        target->MoveTo(along(-marks));
        target->LineTo(along(marks));
    }
    target->ResetRotation();
}

void Graph::ArcThrough(XY p0, XY p1, XY p2, int thickness)
{
    const GraphSettings kept;
    LineWidth = thickness;
    const double cx = p2.X - p0.X, cy = p2.Y - p0.Y, mx = p1.X - p0.X, my = p1.Y - p0.Y;
    const double chord = cx * cx + cy * cy, cross = cx * my - cy * mx, middle = mx * mx + my * my;
    const bool flat =
        !(chord >= smallestChord * smallestChord) || chord >= cross * cross / (smallestSagitta * smallestSagitta);
    // The circumcentre, from the first point.
    const double ux = flat ? 0 : (my * chord - cy * middle) / (2 * cross);
    const double uy = flat ? 0 : (cx * middle - mx * chord) / (2 * cross);
    const double r = std::hypot(ux, uy);
    if (flat || r > largestRadius) {
        Line(p0.X, p0.Y, p2.X, p2.Y);
        return;
    }
    GraphTarget* target = Prepared();
    if (!target) return;
    const double x = p0.X + ux, y = p0.Y + uy;
    const double from = std::atan2(p0.Y - y, p0.X - x);
    double to = std::atan2(p2.Y - y, p2.X - x);
    // Of the two sweeps, the one on which the middle point lies.
    if (cross < 0 && to < from) to += 2 * std::numbers::pi;
    if (cross > 0 && to > from) to -= 2 * std::numbers::pi;
    target->Arc(ToTarget(x - r), ToTarget(y - r), ToTarget(x + r), ToTarget(y + r), from, to);
}

void Graph::Bezier(XY p1, XY p2, XY p3)
{
    if (GraphTarget* target = Prepared()) target->BezierTo(OnTarget(p1), OnTarget(p2), OnTarget(p3));
}

void Graph::Bezier(XY p0, XY p1, XY p2, XY p3)
{
    MoveTo(p0.X, p0.Y);
    Bezier(p1, p2, p3);
}

void Graph::Label(double x, double y, double value)
{
    const GraphSettings kept;
    TextAlignX = TextAlignY = 0;
    wchar_t text[400];
    FormatText(text, std::size(text), L"%.2f", value);
    Text(x, y, text);
}

void Graph::DistanceMark(XY p0, XY p1, double value, double offset)
{
    const double dx = p1.X - p0.X, dy = p1.Y - p0.Y, length = std::hypot(dx, dy);
    const double sx = length > 0 ? offset * dy / length : 0, sy = length > 0 ? -offset * dx / length : 0;
    if (offset != 0) {
        Line(p0.X, p0.Y, p0.X + sx, p0.Y + sy);
        Line(p1.X, p1.Y, p1.X + sx, p1.Y + sy);
    }
    Line(p0.X + sx, p0.Y + sy, p1.X + sx, p1.Y + sy, 2);
    Label((p0.X + p1.X) / 2 + sx, (p0.Y + p1.Y) / 2 + sy, value);
}

void Graph::AngleMark(XY center, double r, double fromDegrees, double toDegrees, double value)
{
    EllipseArc(center.X, center.Y, r, r, 0, fromDegrees, toDegrees);
    const double middle = ToRadians((fromDegrees + toDegrees) / 2);
    Label(center.X + r * std::cos(middle), center.Y + r * std::sin(middle), value);
}

} // namespace Tesk
