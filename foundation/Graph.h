// The overlay drawing layer: global settings, and free operations on one current target in image coordinates.
#pragma once

#include "foundation/GraphTarget.h"

namespace Tesk {

class Image;

/// A rectangle of an image's store, which may be larger than `Limits` can tell.
struct SourceRectangle
{
    int X = 0, Y = 0, Width = 0, Height = 0;

    SourceRectangle() = default;
    SourceRectangle(int x, int y, int width, int height) : X(x), Y(y), Width(width), Height(height) {}
    SourceRectangle(const Limits& Box) : X(Box.X), Y(Box.Y), Width(Box.Width), Height(Box.Height) {}
};

/// Pixels as `DrawImage` takes them: a rectangle of a store.
struct ImageView
{
    SourceRectangle Source;
    const std::uint8_t* Pixels = nullptr; ///< the store's first pixel
    int Pitch = 0;
    PixelTypes Type = Undefined;
    int Gain = 1;   ///< of `Grad` pixels
    int Depth = 16; ///< significant bits of 16-bit and 32-bit pixels
};

/// A lookup table for gray images: one 32-bit sample an entry for `Gray`, red, green, blue for `Rgb`.
struct LookupTableView
{
    PixelTypes Type = Undefined;
    int Entries = 0;
    const std::int32_t* Samples = nullptr;
};

/// A point is turned into target pixels by trunc((v + 0.5) * Zoom); marks that are centred on a pixel by
/// trunc((v + 1) * Zoom). Without a target all drawing is ignored. For one thread at a time.
///
///     CairoTarget target(640, 480);
///     Graph::DrawTo(&target);
///     Graph::LineColor = Green;
///     Graph::Line(10, 20, 200, 120, 1); // with an arrow at its end
///     Graph::Text(10, 5, "25.4 mm");
///     Graph::DrawTo(nullptr);
class Graph
{
public:
    static double Zoom; ///< target pixels per image pixel
    static PredefinedColors LineColor, FillColor, PointColor, TextColor;
    static bool AutoColors;
    static int LineWidth;
    static int TextAlignX, TextAlignY; ///< -1 left or top, 0 centre, 1 right or bottom
    static std::wstring FontName;
    static int FontSize;
    static bool SmoothReduction;
    static double Resolution;
    static AlphaModes AlphaMode;

    /// Makes a target current, or none; all cached colours are forgotten.
    static void DrawTo(GraphTarget* Target);
    /// The current target; reading it forgets all cached colours.
    static GraphTarget* DrawTo();

    /// Steps the counter from which `Cycle` takes its colour.
    static void NextColor();
    static int CycleColor();

    /// A point in `PointColor`: for `r` 0 one pixel of the image, else a circle of `r` target pixels filled with
    /// `FillColor`.
    static void Plot(double x, double y, int r);
    /// Two strokes in `PointColor` with arms of `r` target pixels.
    static void Cross(double x, double y, int r);
    /// A circle or square, `r` target pixels around the point.
    static void Marker(double x, double y, bool round, int r);
    /// `arrows`: 0 none, 1 at the end, 2 at both ends.
    static void Line(double x0, double y0, double x1, double y1, int arrows = 0);
    /// Strokes through three or four points, which are marks on pixels, but for three points in doubles. A `mode` below
    /// 0 closes the figure; other than 0 and -1 it sets an arrow at the last point, above 1 at the first as well.
    static void Polyline3(Site p0, Site p1, Site p2, int mode);
    static void Polyline3(XY p0, XY p1, XY p2, int mode);
    static void Polyline4(Site p0, Site p1, Site p2, Site p3, int mode);
    static void Polyline4(XY p0, XY p1, XY p2, XY p3, int mode);
    static void Polyline(const XY* points, int count, bool closed);
    static void Polyline(const Site* points, int count, bool closed);
    static void Polyline(const std::vector<XY>& points, bool closed);
    static void Rectangle(double x, double y, double w, double h);
    static void FillRectangle(const Limits& Box);
    /// In target pixels.
    static void TargetRectangle(int left, int top, int right, int bottom, bool cross);
    /// Filled with `FillColor`, in target pixels, without the column `right` and the row `bottom`.
    static void FillTargetRectangle(int left, int top, int right, int bottom);
    static void RotatedRectangle(double cx, double cy, double w, double h, double degrees, bool cross);
    static void RotatedRectangleRadians(double cx, double cy, double w, double h, double radians, bool cross);
    static void Circle(double x, double y, double r);
    /// Half axes `a` and `b`, the first turned by the angle from x to y.
    static void Ellipse(double cx, double cy, double a, double b, double degrees);
    static void EllipseRadians(double cx, double cy, double a, double b, double radians);
    /// The hollow part of that ellipse between two of its parameters. With `marks`, strokes of that many target pixels
    /// to each side stand across its ends.
    static void EllipseArc(double cx, double cy, double a, double b, double degrees, double from, double to,
                           int marks = 0);
    static void EllipseArcRadians(double cx, double cy, double a, double b, double radians, double from, double to,
                                  int marks = 0);
    /// The circle through three points, from the first to the last, drawn `thickness` target pixels wide. Points near
    /// each other or near one line, or on a circle of more than 2048, give a line.
    static void ArcThrough(XY p0, XY p1, XY p2, int thickness);
    /// A cubic segment, from the current position in the first form.
    static void Bezier(XY p1, XY p2, XY p3);
    static void Bezier(XY p0, XY p1, XY p2, XY p3);
    /// A measured distance: a line with arrows at both ends, displaced to its left by `offset` image pixels and then
    /// tied to the points by thin strokes, with the value ("%.2f") at its middle.
    static void DistanceMark(XY p0, XY p1, double value, double offset = 0);
    /// A measured angle in degrees, or whatever `value` says: the arc from one direction to another, with the value at
    /// its middle.
    static void AngleMark(XY center, double r, double fromDegrees, double toDegrees, double value);

    /// The box of a text stands at the point by `TextAlignX` and `TextAlignY`. Narrow texts are UTF-8.
    static void Text(double x, double y, const wchar_t* string);
    static void Text(double x, double y, const char* string);
    /// In target pixels, whatever the colour; 0, 0 without a target.
    static TargetPoint TextSize(const wchar_t* string);
    static TargetPoint TextSize(const char* string);
    static void SetOrigin(double x, double y);
    static void ResetOrigin();
    static void MoveTo(Site point);
    static void MoveTo(double x, double y);
    static void MoveTo(TargetPoint point);
    static void LineTo(Site point);
    static void LineTo(double x, double y);
    static void LineTo(TargetPoint point);
    static void FitZoom(int Width, int Height, bool noMagnify);
    static void Clear(PredefinedColors Color);
    /// Refused (context `Tesk::Graph::_Image`): a table on another type than `Gray` (`UnsupportedType`), a table that
    /// is neither `Gray` nor `Rgb` (`IncompatibleType`) or has not 256 entries (`IncompatibleSize`); no memory
    /// (`CannotAllocate`).
    static void DrawImage(const ImageView& View, const LookupTableView* Table = nullptr);

    /// Makes the window of an image the current target, of the types `Gray`, `Rgb`, `Rgba` and `Gray1`: its corner is
    /// at 0, 0, and `Zoom` applies. For another image nothing is drawn until the end, nor for one that there is no
    /// memory to draw on (`CannotAllocate`).
    static void BeginImageTarget(Image& Target);
    /// Copies the drawing back into the image and returns to the target before. Pixels that were not drawn on keep
    /// their values; colours become gray by their largest component, and white in a `Gray1` image from 128 on; opacity
    /// stays.
    static void EndImageTarget(Image& Target);

    static int ToTarget(double v);
    static int ToTargetMark(double v);

private:
    /// Tells the target pen and fill of these palette indexes, below 0 for none; false without a target.
    static bool Prepare(int line, int fill);
    static bool Prepare();
    /// The current target, told pen and fill; null if there is none.
    static GraphTarget* Prepared();
    /// Tells the target font and colours of texts; false without a target, or where a text would not be seen.
    static bool PrepareText(bool toDraw);
    static void Render(const ImageView& View, const LookupTableView* Table);
    static int PointIndex();
    static void ArrowHead(TargetPoint from, TargetPoint tip);
    static void Strokes(const TargetPoint* points, int count, int mode);
    static void Label(double x, double y, double value);
};

/// Holds zoom, colours, pen, alignment and font size, and puts them back at the end of its block.
class GraphSettings
{
public:
    GraphSettings() = default;
    /// With another zoom for the time of the block.
    explicit GraphSettings(double zoom) { Graph::Zoom = zoom; }
    ~GraphSettings();
    GraphSettings(const GraphSettings&) = delete;
    GraphSettings& operator=(const GraphSettings&) = delete;

private:
    double zoom_ = Graph::Zoom;
    PredefinedColors line_ = Graph::LineColor, fill_ = Graph::FillColor, point_ = Graph::PointColor,
                     text_ = Graph::TextColor;
    int width_ = Graph::LineWidth, alignX_ = Graph::TextAlignX, alignY_ = Graph::TextAlignY,
        fontSize_ = Graph::FontSize;
};

} // namespace Tesk
