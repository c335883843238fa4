// Lines, figures and text on the raster target; bitmaps are in CairoBlit.cpp.
#include "foundation/CairoTarget.h"

#include "foundation/Status.h"
#include "foundation/cairo/CairoState.h"

#include <algorithm>
#include <numbers>

namespace Tesk {

namespace {

/// Cairo keeps positions in 24 bits; what lies further out is off every surface.
constexpr double farthest = 4e6;
/// Chords of a flattened curve stay this near to it, in pixels.
constexpr double flatness = 0.05;
constexpr int fewestChords = 16, mostChords = 4096;
constexpr double pi = std::numbers::pi;

std::uint32_t Word(RgbPixel color)
{
    return 0xff000000u | static_cast<std::uint32_t>(color.Red << 16 | color.Green << 8 | color.Blue);
}

/// The pixels [first, last] of a line that can be on the surface, in the direction of its longer extent.
bool Span(double from, double to, int size, int& first, int& last)
{
    const double low = std::floor(Min(from, to) + 0.5), high = std::floor(Max(from, to) + 0.5);
    if (!(high >= 0) || !(low < size)) return false;
    first = static_cast<int>(Max(low, 0.0));
    last = static_cast<int>(Min(high, size - 1.0));
    return true;
}

} // namespace

CairoTarget::CairoTarget(int Width, int Height) : state_(std::make_unique<State>())
{
    Resize(Width, Height);
}

CairoTarget::~CairoTarget() = default;

void CairoTarget::Resize(int Width, int Height)
{
    Width = Clamp(Width, 0, LargestSide);
    Height = Clamp(Height, 0, LargestSide);
    if (state_->surface && Width == state_->width && Height == state_->height) return;
    state_->Make(Width, Height);
}

int CairoTarget::Width() const
{
    return state_->width;
}

int CairoTarget::Height() const
{
    return state_->height;
}

std::uint8_t* CairoTarget::Pixels()
{
    Flush();
    return state_->pixels;
}

int CairoTarget::Stride() const
{
    return state_->stride;
}

RgbPixel CairoTarget::PixelAt(int x, int y)
{
    if (x < 0 || y < 0 || x >= state_->width || y >= state_->height) return RgbPixel(0, 0, 0);
    const std::uint32_t word = state_->Row(y)[x];
    return RgbPixel(word >> 16 & 255, word >> 8 & 255, word & 255);
}

TargetPoint CairoTarget::ClientSize()
{
    return {state_->width, state_->height};
}

void CairoTarget::Flush()
{
    if (state_->surface) cairo_surface_flush(state_->surface.get());
}

void CairoTarget::SetLine(const RgbPixel* Color, int Width)
{
    state_->hasLine = Color != nullptr;
    if (Color) state_->line = *Color;
    state_->lineWidth = Width;
}

void CairoTarget::SetFill(const RgbPixel* Color)
{
    state_->hasFill = Color != nullptr;
    if (Color) state_->fill = *Color;
}

void CairoTarget::SetCorner(TargetPoint Corner)
{
    state_->corner = Corner;
    SetOrigin({0, 0});
}

void CairoTarget::SetOrigin(TargetPoint Origin)
{
    state_->origin = {Origin.X - state_->corner.X, Origin.Y - state_->corner.Y};
}

void CairoTarget::SetRotation(double Angle, TargetPoint Center)
{
    state_->cosine = std::cos(Angle);
    state_->sine = std::sin(Angle);
    state_->center = Center;
}

void CairoTarget::ResetRotation()
{
    SetRotation(0, {0, 0});
}

CairoTarget::Position CairoTarget::Place(double x, double y) const
{
    const State& s = *state_;
    return {s.cosine * x - s.sine * y + s.center.X + s.origin.X, s.sine * x + s.cosine * y + s.center.Y + s.origin.Y};
}

void CairoTarget::Trace(Position from, Position to)
{
    State& s = *state_;
    const std::uint32_t word = Word(s.line);
    const double dx = to.X - from.X, dy = to.Y - from.Y;
    int first = 0, last = -1;
    const auto near = [](double v) { return std::floor(v + 0.5); };
    if (std::abs(dx) >= std::abs(dy)) {
        if (!Span(from.X, to.X, s.width, first, last)) return;
        const double slope = dx == 0 ? 0 : dy / dx;
        for (int x = first; x <= last; x++)
            if (const double y = near(from.Y + (x - from.X) * slope); y >= 0 && y < s.height)
                s.Row(static_cast<int>(y))[x] = word;
    } else {
        if (!Span(from.Y, to.Y, s.height, first, last)) return;
        const double slope = dx / dy;
        for (int y = first; y <= last; y++)
            if (const double x = near(from.X + (y - from.Y) * slope); x >= 0 && x < s.width)
                s.Row(y)[static_cast<int>(x)] = word;
    }
}

void CairoTarget::Outline(const std::vector<Position>& points, bool closed)
{
    State& s = *state_;
    if (!s.hasLine || !s.pixels || points.empty()) return;
    if (s.lineWidth < 2 && !Smooth) {
        Flush();
        for (std::size_t i = 1; i < points.size(); i++)
            Trace(points[i - 1], points[i]);
        if (closed || points.size() == 1) Trace(points.back(), points.front());
        cairo_surface_mark_dirty(s.surface.get());
        return;
    }
    s.Path(points, closed, farthest);
    s.Color(s.line);
    cairo_set_antialias(s.context.get(), Smooth ? CAIRO_ANTIALIAS_DEFAULT : CAIRO_ANTIALIAS_NONE);
    cairo_set_line_width(s.context.get(), Max(s.lineWidth, 1));
    cairo_stroke(s.context.get());
}

void CairoTarget::Fill(const std::vector<Position>& points)
{
    State& s = *state_;
    if (!s.hasFill || !s.pixels || points.size() < 3) return;
    s.Path(points, true, farthest);
    s.Color(s.fill);
    cairo_set_antialias(s.context.get(), Smooth ? CAIRO_ANTIALIAS_DEFAULT : CAIRO_ANTIALIAS_NONE);
    cairo_fill(s.context.get());
}

void CairoTarget::Figure(const std::vector<Position>& points)
{
    Fill(points);
    Outline(points, true);
}

void CairoTarget::MoveTo(TargetPoint Point)
{
    state_->position = Point;
}

void CairoTarget::LineTo(TargetPoint Point)
{
    const TargetPoint from = state_->position;
    Outline({Place(from.X, from.Y), Place(Point.X, Point.Y)}, false);
    state_->position = Point;
}

void CairoTarget::BezierTo(TargetPoint Control0, TargetPoint Control1, TargetPoint End)
{
    const TargetPoint p[] = {state_->position, Control0, Control1, End};
    double length = 0;
    for (int i = 0; i < 3; i++)
        length += std::hypot(double{1} * p[i + 1].X - p[i].X, double{1} * p[i + 1].Y - p[i].Y);
    const int chords = static_cast<int>(Clamp(length / 4, double{fewestChords}, double{mostChords}));
    std::vector<Position> points;
    for (int i = 0; i <= chords; i++) {
        const double t = static_cast<double>(i) / chords, u = 1 - t;
        const double weights[] = {u * u * u, 3 * u * u * t, 3 * u * t * t, t * t * t};
        double x = 0, y = 0;
        for (int k = 0; k < 4; k++) {
            x += weights[k] * p[k].X;
            y += weights[k] * p[k].Y;
        }
        points.push_back(Place(x, y));
    }
    Outline(points, false);
    state_->position = End;
}

void CairoTarget::Polygon(const std::vector<TargetPoint>& Points)
{
    std::vector<Position> points;
    for (const TargetPoint& point : Points)
        points.push_back(Place(point.X, point.Y));
    Figure(points);
}

void CairoTarget::Rectangle(int Left, int Top, int Right, int Bottom)
{
    Polygon({{Left, Top}, {Right, Top}, {Right, Bottom}, {Left, Bottom}});
}

std::vector<CairoTarget::Position> CairoTarget::EllipsePoints(int left, int top, int right, int bottom, double from,
                                                              double to) const
{
    const double cx = (double{1} * left + right) / 2, cy = (double{1} * top + bottom) / 2;
    const double rx = (double{1} * right - left) / 2, ry = (double{1} * bottom - top) / 2;
    const double sweep = Clamp(to - from, -2 * pi, 2 * pi), r = Max(std::abs(rx), std::abs(ry));
    // A chord of an angle a stays within r * a * a / 8 of its arc.
    const double chords = std::ceil(std::abs(sweep) / std::sqrt(8 * flatness / Max(r, 1.0)));
    const int count = static_cast<int>(Clamp(chords, double{fewestChords}, double{mostChords}));
    std::vector<Position> points;
    for (int i = 0; i <= count; i++) {
        const double t = from + sweep * i / count;
        points.push_back(Place(cx + rx * std::cos(t), cy + ry * std::sin(t)));
    }
    return points;
}

void CairoTarget::Ellipse(int Left, int Top, int Right, int Bottom)
{
    Figure(EllipsePoints(Left, Top, Right, Bottom, 0, 2 * pi));
}

void CairoTarget::Arc(int Left, int Top, int Right, int Bottom, double From, double To)
{
    if (std::isfinite(From) && std::isfinite(To)) Outline(EllipsePoints(Left, Top, Right, Bottom, From, To), false);
}

void CairoTarget::Pixel(TargetPoint Point, RgbPixel Color)
{
    FillRectangle(Point.X, Point.Y, Point.X + 1, Point.Y + 1, Color);
}

void CairoTarget::FillRectangle(int Left, int Top, int Right, int Bottom, RgbPixel Color)
{
    State& s = *state_;
    const auto within = [](int v, int origin, int size) {
        return static_cast<int>(Clamp<std::int64_t>(std::int64_t{v} + origin, 0, size));
    };
    const int left = within(Left, s.origin.X, s.width), right = within(Right, s.origin.X, s.width);
    const int top = within(Top, s.origin.Y, s.height), bottom = within(Bottom, s.origin.Y, s.height);
    if (!s.pixels || left >= right) return;
    Flush();
    for (int y = top; y < bottom; y++)
        std::fill(s.Row(y) + left, s.Row(y) + right, Word(Color));
    cairo_surface_mark_dirty(s.surface.get());
}

void CairoTarget::SetText(RgbPixel Color, const RgbPixel* Background, const std::wstring& FontName, int FontSize)
{
    State& s = *state_;
    s.text = Color;
    s.hasBackground = Background != nullptr;
    if (Background) s.background = *Background;
    s.Font(Narrow(FontName.c_str()), FontSize);
}

TargetPoint CairoTarget::TextExtent(const std::wstring& Text)
{
    State& s = *state_;
    s.ChooseFont();
    cairo_text_extents_t extents;
    cairo_text_extents(s.context.get(), Narrow(Text.c_str()).c_str(), &extents);
    s.RenewIfBroken();
    s.ChooseFont();
    return {static_cast<int>(std::ceil(extents.x_advance)), s.FontHeight()};
}

void CairoTarget::Text(TargetPoint Point, const std::wstring& Text)
{
    State& s = *state_;
    if (!s.pixels) return;
    s.ChooseFont();
    if (s.hasBackground) {
        const TargetPoint size = TextExtent(Text);
        FillRectangle(Point.X, Point.Y, Point.X + size.X, Point.Y + size.Y, s.background);
    }
    const Position at = Place(Point.X, Point.Y);
    if (std::abs(at.X) > farthest || std::abs(at.Y) > farthest) return;
    s.Color(s.text);
    cairo_move_to(s.context.get(), at.X, at.Y + s.FontAscent());
    cairo_show_text(s.context.get(), Narrow(Text.c_str()).c_str());
    cairo_new_path(s.context.get());
    s.RenewIfBroken();
}

} // namespace Tesk
