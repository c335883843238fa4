// The drawing operations: positions and colours turned into calls of the current target.
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
/// The palette index that no target was told yet; those below 0 are no colour.
constexpr int unknown = std::numeric_limits<int>::min();

GraphTarget* target = nullptr;
TargetPoint origin{0, 0};
int cycle = startCycleColor;

/// What the target was told last, as palette indexes; a difference is told again.
struct Told
{
    int line = unknown, width = 0, fill = unknown, text = unknown, background = unknown, fontSize = 0;
    std::wstring font;
} told;

/// What was drawn with last, on whatever target: what `Current` stands for.
struct Last
{
    int line = Blue, fill = NoColor, point = Blue, text = Blue, background = NoColor;
} last;

int IndexOf(PredefinedColors color, int current)
{
    return color == Cycle ? cycle : color == Current ? current : static_cast<int>(color);
}

/// Truncates, with what no target can hold held at the ends; a position that is no number is 0.
int Truncated(double v)
{
    constexpr double limit = 1 << 30;
    return v > -limit && v < limit ? static_cast<int>(v) : v >= limit ? 1 << 30 : v <= -limit ? -(1 << 30) : 0;
}

TargetPoint OnTarget(XY point)
{
    return {Graph::ToTarget(point.X), Graph::ToTarget(point.Y)};
}

TargetPoint OnTarget(Site point)
{
    return {Graph::ToTarget(point.X), Graph::ToTarget(point.Y)};
}

TargetPoint MarkOnTarget(double x, double y)
{
    return {Graph::ToTargetMark(x), Graph::ToTargetMark(y)};
}

/// Far positions stay in the range of `int` however far a size takes them.
int Beyond(int position, std::int64_t by)
{
    return static_cast<int>(Clamp<std::int64_t>(position + by, -(1 << 30), 1 << 30));
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
    origin = {0, 0};
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

bool Graph::Prepare(int line, int fill)
{
    if (!target) return false;
    last.line = line;
    last.fill = fill;
    if (line != told.line || LineWidth != told.width) {
        const RgbPixel color = PaletteColor(line);
        target->SetLine(line < 0 ? nullptr : &color, Max(LineWidth, 1));
        told.line = line;
        told.width = LineWidth;
    }
    if (fill != told.fill) {
        const RgbPixel color = PaletteColor(fill);
        target->SetFill(fill < 0 ? nullptr : &color);
        told.fill = fill;
    }
    return true;
}

bool Graph::Prepare()
{
    return Prepare(IndexOf(LineColor, last.line), IndexOf(FillColor, last.fill));
}

GraphTarget* Graph::Prepared()
{
    return Prepare() ? target : nullptr;
}

bool Graph::PrepareText(bool toDraw)
{
    if (!target) return false;
    const int text = IndexOf(TextColor, last.text), background = IndexOf(FillColor, last.background);
    last.text = text;
    last.background = background;
    if (toDraw && text < 0) return false;
    if (text == told.text && background == told.background && FontSize == told.fontSize && FontName == told.font)
        return true;
    const RgbPixel color = PaletteColor(background);
    target->SetText(PaletteColor(text), background < 0 ? nullptr : &color, FontName, FontSize);
    told.text = text;
    told.background = background;
    told.fontSize = FontSize;
    told.font = FontName;
    return true;
}

int Graph::PointIndex()
{
    if (PointColor == Cycle) NextColor();
    return last.point = IndexOf(PointColor, last.point);
}

void Graph::Plot(double x, double y, int r)
{
    if (!target) return;
    const int color = PointIndex();
    const int px = ToTarget(x), py = ToTarget(y);
    if (r != 0) {
        Prepare(color, IndexOf(FillColor, last.fill));
        target->Ellipse(Beyond(px, -std::int64_t{r}), Beyond(py, -std::int64_t{r}), Beyond(px, r), Beyond(py, r));
    } else if (color >= 0 && Zoom <= 1) {
        target->Pixel({px, py}, PaletteColor(color));
    } else if (color >= 0) {
        const int left = Truncated(x * Zoom), top = Truncated(y * Zoom), side = Truncated(Zoom);
        target->FillRectangle(left, top, Beyond(left, side), Beyond(top, side), PaletteColor(color));
    }
}

void Graph::Cross(double x, double y, int r)
{
    if (!target) return;
    Prepare(PointIndex(), IndexOf(FillColor, last.fill));
    const TargetPoint p = MarkOnTarget(x, y);
    target->MoveTo({Beyond(p.X, -std::int64_t{r}), p.Y});
    target->LineTo({Beyond(p.X, r), p.Y});
    target->MoveTo({p.X, Beyond(p.Y, -std::int64_t{r})});
    target->LineTo({p.X, Beyond(p.Y, r)});
}

void Graph::Marker(double x, double y, bool round, int r)
{
    if (!Prepare()) return;
    const TargetPoint p = MarkOnTarget(x, y);
    const int left = Beyond(p.X, -std::int64_t{r}), top = Beyond(p.Y, -std::int64_t{r}), right = Beyond(p.X, r),
              bottom = Beyond(p.Y, r);
    if (round)
        target->Ellipse(left, top, right, bottom);
    else
        target->Rectangle(left, top, right, bottom);
}

void Graph::ArrowHead(TargetPoint from, TargetPoint tip)
{
    const double dx = double{1} * tip.X - from.X, dy = double{1} * tip.Y - from.Y, length = std::hypot(dx, dy);
    if (!(length > arrowLength)) return;
    const int line = IndexOf(LineColor, last.line);
    if (!Prepare(line, line)) return;
    const double along = arrowLength / length, across = arrowHalfWidth / length;
    const auto corner = [&](double side) {
        return TargetPoint{Truncated(tip.X - (along * dx - side * across * dy)),
                           Truncated(tip.Y - (along * dy + side * across * dx))};
    };
    target->Polygon({tip, corner(1), corner(-1)});
}

void Graph::Line(double x0, double y0, double x1, double y1, int arrows)
{
    if (!Prepare()) return;
    const TargetPoint from = OnTarget(XY(x0, y0)), to = OnTarget(XY(x1, y1));
    target->MoveTo(from);
    target->LineTo(to);
    if (arrows >= 1) ArrowHead(from, to);
    if (arrows >= 2) ArrowHead(to, from);
}

void Graph::Strokes(const TargetPoint* points, int count, int mode)
{
    if (!Prepare()) return;
    target->MoveTo(points[0]);
    for (int i = 1; i < count; i++)
        target->LineTo(points[i]);
    if (mode < 0) target->LineTo(points[0]);
    if (mode != 0 && mode != -1) ArrowHead(points[count - 2], points[count - 1]);
    if (mode > 1) ArrowHead(points[1], points[0]);
}

void Graph::Polyline3(Site p0, Site p1, Site p2, int mode)
{
    const TargetPoint points[] = {MarkOnTarget(p0.X, p0.Y), MarkOnTarget(p1.X, p1.Y), MarkOnTarget(p2.X, p2.Y)};
    Strokes(points, 3, mode);
}

void Graph::Polyline3(XY p0, XY p1, XY p2, int mode)
{
    const TargetPoint points[] = {OnTarget(p0), OnTarget(p1), OnTarget(p2)};
    Strokes(points, 3, mode);
}

void Graph::Polyline4(Site p0, Site p1, Site p2, Site p3, int mode)
{
    Polyline4(XY(p0.X, p0.Y), XY(p1.X, p1.Y), XY(p2.X, p2.Y), XY(p3.X, p3.Y), mode);
}

void Graph::Polyline4(XY p0, XY p1, XY p2, XY p3, int mode)
{
    const TargetPoint points[] = {MarkOnTarget(p0.X, p0.Y), MarkOnTarget(p1.X, p1.Y), MarkOnTarget(p2.X, p2.Y),
                                  MarkOnTarget(p3.X, p3.Y)};
    Strokes(points, 4, mode);
}

namespace {

template <typename Point>
void DrawPolyline(const Point* points, int count, bool closed)
{
    std::vector<TargetPoint> shown;
    shown.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; i++)
        shown.push_back(OnTarget(points[i]));
    if (closed && Graph::FillColor != NoColor) {
        target->Polygon(shown);
        return;
    }
    target->MoveTo(closed ? shown.back() : shown.front());
    for (std::size_t i = closed ? 0 : 1; i < shown.size(); i++)
        target->LineTo(shown[i]);
}

} // namespace

void Graph::Polyline(const XY* points, int count, bool closed)
{
    if (count > 0 && Prepare()) DrawPolyline(points, count, closed);
}

void Graph::Polyline(const Site* points, int count, bool closed)
{
    if (count > 0 && Prepare()) DrawPolyline(points, count, closed);
}

void Graph::Polyline(const std::vector<XY>& points, bool closed)
{
    Polyline(points.data(), static_cast<int>(points.size()), closed);
}

void Graph::Rectangle(double x, double y, double w, double h)
{
    if (Prepare()) target->Rectangle(ToTarget(x), ToTarget(y), ToTarget(x + w - 1), ToTarget(y + h - 1));
}

void Graph::FillRectangle(const Limits& Box)
{
    FillTargetRectangle(ToTarget(Box.X), ToTarget(Box.Y), Beyond(ToTarget(Box.X + Box.Width - 1), 1),
                        Beyond(ToTarget(Box.Y + Box.Height - 1), 1));
}

void Graph::FillTargetRectangle(int left, int top, int right, int bottom)
{
    const int fill = last.fill = IndexOf(FillColor, last.fill);
    if (target && fill >= 0) target->FillRectangle(left, top, right, bottom, PaletteColor(fill));
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

void Graph::Text(double x, double y, const wchar_t* string)
{
    if (!string || !PrepareText(true)) return;
    const TargetPoint size = target->TextExtent(string);
    const auto shift = [](int align, int extent) { return (Clamp(align, -1, 1) + 1) * extent / 2; };
    target->Text({ToTarget(x) - shift(TextAlignX, size.X), ToTarget(y) - shift(TextAlignY, size.Y)}, string);
    target->Flush();
}

void Graph::Text(double x, double y, const char* string)
{
    Text(x, y, Widen(string).c_str());
}

TargetPoint Graph::TextSize(const wchar_t* string)
{
    if (!string || !PrepareText(false)) return {0, 0};
    return target->TextExtent(string);
}

TargetPoint Graph::TextSize(const char* string)
{
    return TextSize(Widen(string).c_str());
}

void Graph::SetOrigin(double x, double y)
{
    if (!target) return;
    origin = {Truncated(x * Zoom), Truncated(y * Zoom)};
    target->SetOrigin(origin);
}

void Graph::ResetOrigin()
{
    SetOrigin(0, 0);
}

void Graph::MoveTo(TargetPoint point)
{
    if (Prepare()) target->MoveTo(point);
}

void Graph::MoveTo(double x, double y)
{
    MoveTo(OnTarget(XY(x, y)));
}

void Graph::MoveTo(Site point)
{
    MoveTo(OnTarget(point));
}

void Graph::LineTo(TargetPoint point)
{
    if (Prepare()) target->LineTo(point);
}

void Graph::LineTo(double x, double y)
{
    LineTo(OnTarget(XY(x, y)));
}

void Graph::LineTo(Site point)
{
    LineTo(OnTarget(point));
}

void Graph::FitZoom(int Width, int Height, bool noMagnify)
{
    if (!target || Width < 1 || Height < 1) return;
    const TargetPoint client = target->ClientSize();
    // A window that is not laid out yet has no size to fit.
    if (client.X < 1 || client.Y < 1) return;
    Zoom = Min(static_cast<double>(client.X) / Width, static_cast<double>(client.Y) / Height);
    if (noMagnify) Zoom = Min(Zoom, 1.0);
}

void Graph::Clear(PredefinedColors Color)
{
    const int color = IndexOf(Color, last.fill);
    if (!target || color < 0) return;
    const TargetPoint client = target->ClientSize();
    target->FillRectangle(-origin.X, -origin.Y, client.X - origin.X, client.Y - origin.Y, PaletteColor(color));
}

GraphSettings::~GraphSettings()
{
    Graph::Zoom = zoom_;
    Graph::LineColor = line_;
    Graph::FillColor = fill_;
    Graph::PointColor = point_;
    Graph::TextColor = text_;
    Graph::LineWidth = width_;
    Graph::TextAlignX = alignX_;
    Graph::TextAlignY = alignY_;
    Graph::FontSize = fontSize_;
}

} // namespace Tesk
