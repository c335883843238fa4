#include "foundation/Graph.h"

#include "foundation/Status.h"

#include <cmath>
#include <limits>

namespace Tesk {

double Graph::Zoom = 1.0;
PredefinedColors Graph::LineColor = Blue, Graph::FillColor = NoColor, Graph::PointColor = Blue, Graph::TextColor = Blue;
bool Graph::AutoColors = true;
int Graph::LineWidth = 1;
int Graph::TextAlignX = -1, Graph::TextAlignY = -1;
std::wstring Graph::FontName = L"System";
int Graph::FontSize = 16;
bool Graph::SmoothReduction = true;
double Graph::Resolution = 72;
AlphaModes Graph::AlphaMode = Opaque;

namespace {

constexpr int firstCycleColor = 1, lastCycleColor = 62, startCycleColor = 48;
/// An arrow is drawn on lines longer than this, in target pixels; its head is as long, and half as wide.
constexpr double arrowLength = 12, arrowHalfWidth = 3;

GraphTarget* target = nullptr;
int cycle = startCycleColor;

/// What the target was told last; a difference is told again.
struct Told
{
    int line = std::numeric_limits<int>::min(), width = 0, fill = std::numeric_limits<int>::min();
    int text = std::numeric_limits<int>::min(), background = 0, fontSize = 0;
    std::wstring font;
} told;

int IndexOf(PredefinedColors color)
{
    return color == Cycle ? cycle : static_cast<int>(color);
}

/// Truncates, with what no target can hold held at the ends; a position that is no number is 0.
int Truncated(double v)
{
    constexpr double limit = 1 << 30;
    return v > -limit && v < limit ? static_cast<int>(v) : v >= limit ? 1 << 30 : v <= -limit ? -(1 << 30) : 0;
}

} // namespace

int Graph::ToTarget(double v)
{
    return Truncated((v + 0.5) * Zoom);
}

int Graph::ToTargetMark(double v)
{
    return Truncated((v + 1) * Zoom);
}

void Graph::DrawTo(GraphTarget* Target)
{
    target = Target;
    told = Told();
}

GraphTarget* Graph::DrawTo()
{
    told = Told();
    return target;
}

void Graph::NextColor()
{
    constexpr int grays[] = {21, 42};
    do {
        cycle = cycle >= lastCycleColor ? firstCycleColor : cycle + 1;
    } while (cycle == grays[0] || cycle == grays[1]);
}

int Graph::CycleColor()
{
    return cycle;
}

RgbPixel Graph::ColorOf(PredefinedColors color)
{
    return PaletteColor(IndexOf(color) & 63);
}

bool Graph::Prepare()
{
    if (!target) return false;
    const int line = IndexOf(LineColor), fill = FillColor == NoColor ? -1 : IndexOf(FillColor);
    if (LineColor != Current && (line != told.line || LineWidth != told.width)) {
        target->SetLine(ColorOf(LineColor), Max(LineWidth, 1));
        told.line = line;
        told.width = LineWidth;
    }
    if (FillColor != Current && fill != told.fill) {
        const RgbPixel color = ColorOf(FillColor);
        target->SetFill(fill < 0 ? nullptr : &color);
        told.fill = fill;
    }
    return true;
}

void Graph::PrepareText()
{
    const int text = IndexOf(TextColor), background = FillColor == NoColor ? -1 : IndexOf(FillColor);
    if (text == told.text && background == told.background && FontSize == told.fontSize && FontName == told.font)
        return;
    const RgbPixel color = ColorOf(FillColor);
    target->SetText(ColorOf(TextColor), background < 0 ? nullptr : &color, FontName, FontSize);
    told.text = text;
    told.background = background;
    told.fontSize = FontSize;
    told.font = FontName;
}

void Graph::Plot(double x, double y, int r)
{
    if (!target) return;
    if (PointColor == Cycle) NextColor();
    const RgbPixel color = ColorOf(PointColor);
    const int px = ToTarget(x), py = ToTarget(y);
    if (r == 0) {
        if (Zoom <= 1) {
            target->Pixel({px, py}, color);
            return;
        }
        const int left = Truncated(x * Zoom), top = Truncated(y * Zoom), side = Truncated(Zoom);
        target->FillRectangle(left, top, left + side, top + side, color);
        return;
    }
    const PredefinedColors line = LineColor;
    LineColor = PointColor;
    Prepare();
    target->Ellipse(px - r, py - r, px + r, py + r);
    LineColor = line;
}

void Graph::Cross(double x, double y, int r)
{
    const PredefinedColors line = LineColor;
    if (PointColor == Cycle) NextColor();
    LineColor = PointColor;
    if (Prepare()) {
        const int px = ToTargetMark(x), py = ToTargetMark(y);
        target->MoveTo({px - r, py});
        target->LineTo({px + r + 1, py});
        target->MoveTo({px, py - r});
        target->LineTo({px, py + r + 1});
    }
    LineColor = line;
}

void Graph::Marker(double x, double y, bool round, int r)
{
    if (!Prepare()) return;
    const int px = ToTargetMark(x), py = ToTargetMark(y);
    if (round)
        target->Ellipse(px - r, py - r, px + r, py + r);
    else
        target->Rectangle(px - r, py - r, px + r, py + r);
}

void Graph::ArrowHead(double fromX, double fromY, double toX, double toY)
{
    const double dx = toX - fromX, dy = toY - fromY, length = std::hypot(dx, dy);
    if (!(length > arrowLength)) return;
    const PredefinedColors fill = FillColor;
    FillColor = LineColor;
    if (Prepare()) {
        const double along = arrowLength / length, across = arrowHalfWidth / length;
        const auto corner = [&](double side) {
            return TargetPoint{Truncated(toX - (along * dx - side * across * dy)),
                               Truncated(toY - (along * dy + side * across * dx))};
        };
        target->Polygon({{Truncated(toX), Truncated(toY)}, corner(1), corner(-1)});
    }
    FillColor = fill;
}

void Graph::Line(double x0, double y0, double x1, double y1, int arrows)
{
    if (!Prepare()) return;
    const TargetPoint from{ToTarget(x0), ToTarget(y0)}, to{ToTarget(x1), ToTarget(y1)};
    target->MoveTo(from);
    target->LineTo(to);
    if (arrows >= 1) ArrowHead(from.X, from.Y, to.X, to.Y);
    if (arrows >= 2) ArrowHead(to.X, to.Y, from.X, from.Y);
}

void Graph::Polyline(const std::vector<XY>& Points, bool closed)
{
    if (Points.empty() || !Prepare()) return;
    std::vector<TargetPoint> points;
    points.reserve(Points.size());
    for (const XY& point : Points)
        points.push_back({ToTarget(point.X), ToTarget(point.Y)});
    if (closed && FillColor != NoColor) {
        target->Polygon(points);
        return;
    }
    target->MoveTo(closed ? points.back() : points.front());
    for (std::size_t i = closed ? 0 : 1; i < points.size(); i++)
        target->LineTo(points[i]);
}

void Graph::Rectangle(double x, double y, double w, double h)
{
    if (Prepare()) target->Rectangle(ToTarget(x), ToTarget(y), ToTarget(x + w - 1), ToTarget(y + h - 1));
}

void Graph::FillRectangle(const Limits& Box)
{
    if (!target || FillColor == NoColor) return;
    target->FillRectangle(ToTarget(Box.X), ToTarget(Box.Y), ToTarget(Box.X + Box.Width - 1),
                          ToTarget(Box.Y + Box.Height - 1), ColorOf(FillColor));
}

void Graph::TargetRectangle(int left, int top, int right, int bottom, bool cross)
{
    if (!Prepare()) return;
    target->Rectangle(left, top, right, bottom);
    if (!cross) return;
    target->MoveTo({left, top});
    target->LineTo({right, bottom});
    target->MoveTo({left, bottom});
    target->LineTo({right, top});
}

void Graph::RotatedRectangle(double cx, double cy, double w, double h, double degrees, bool cross)
{
    if (!Prepare()) return;
    const double angle = degrees * 3.14159265358979323846 / 180, c = std::cos(angle), s = std::sin(angle);
    const auto corner = [&](double sx, double sy) {
        return TargetPoint{ToTarget(cx + (sx * w * c - sy * h * s) / 2), ToTarget(cy + (sx * w * s + sy * h * c) / 2)};
    };
    const std::vector<TargetPoint> corners = {corner(-1, -1), corner(1, -1), corner(1, 1), corner(-1, 1)};
    target->Polygon(corners);
    if (!cross) return;
    for (std::size_t i = 0; i < 2; i++) {
        target->MoveTo(corners[i]);
        target->LineTo(corners[i + 2]);
    }
}

void Graph::Circle(double x, double y, double r)
{
    if (Prepare()) target->Ellipse(ToTarget(x - r), ToTarget(y - r), ToTarget(x + r), ToTarget(y + r));
}

void Graph::Text(double x, double y, const wchar_t* string)
{
    if (!target || !string) return;
    PrepareText();
    const TargetPoint size = target->TextExtent(string);
    target->Text({ToTarget(x) - (TextAlignX + 1) * size.X / 2, ToTarget(y) - (TextAlignY + 1) * size.Y / 2}, string);
}

void Graph::Text(double x, double y, const char* string)
{
    Text(x, y, Widen(string).c_str());
}

TargetPoint Graph::TextSize(const wchar_t* string)
{
    if (!target || !string) return {0, 0};
    PrepareText();
    return target->TextExtent(string);
}

void Graph::SetOrigin(double x, double y)
{
    if (target) target->SetOrigin({Truncated(x * Zoom), Truncated(y * Zoom)});
}

void Graph::ResetOrigin()
{
    if (target) target->SetOrigin({0, 0});
}

void Graph::MoveTo(double x, double y)
{
    if (Prepare()) target->MoveTo({ToTarget(x), ToTarget(y)});
}

void Graph::LineTo(double x, double y)
{
    if (Prepare()) target->LineTo({ToTarget(x), ToTarget(y)});
}

void Graph::FitZoom(int Width, int Height, bool noMagnify)
{
    if (!target || Width < 1 || Height < 1) return;
    const TargetPoint client = target->ClientSize();
    Zoom = Min(static_cast<double>(client.X) / Width, static_cast<double>(client.Y) / Height);
    if (noMagnify) Zoom = Min(Zoom, 1.0);
}

void Graph::Clear(PredefinedColors Color)
{
    if (!target) return;
    const TargetPoint client = target->ClientSize();
    target->FillRectangle(0, 0, client.X, client.Y, ColorOf(Color));
}

} // namespace Tesk
