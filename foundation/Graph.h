// The overlay drawing layer: global settings, and free operations on one current target in image coordinates.
#pragma once

#include "foundation/GraphTarget.h"

namespace Tesk {

/// Pixels as `DrawImage` takes them: a rectangle of a store.
struct ImageView
{
    Limits Source{0, 0, 0, 0};
    const std::uint8_t* Pixels = nullptr; ///< the store's first pixel
    int Pitch = 0;
    PixelTypes Type = Undefined;
    int Gain = 1;
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

    static void Plot(double x, double y, int r);
    static void Cross(double x, double y, int r);
    static void Marker(double x, double y, bool round, int r);
    static void Line(double x0, double y0, double x1, double y1, int arrows = 0);
    static void Polyline(const std::vector<XY>& Points, bool closed);
    static void Rectangle(double x, double y, double w, double h);
    static void FillRectangle(const Limits& Box);
    static void TargetRectangle(int left, int top, int right, int bottom, bool cross);
    static void RotatedRectangle(double cx, double cy, double w, double h, double degrees, bool cross);
    static void Circle(double x, double y, double r);
    static void Text(double x, double y, const wchar_t* string);
    static void Text(double x, double y, const char* string);
    static TargetPoint TextSize(const wchar_t* string);
    static void SetOrigin(double x, double y);
    static void ResetOrigin();
    static void MoveTo(double x, double y);
    static void LineTo(double x, double y);
    static void FitZoom(int Width, int Height, bool noMagnify);
    static void Clear(PredefinedColors Color);
    /// Refused (context `Tesk::Graph::_Image`): a table on another type than `Gray` (`UnsupportedType`), a table that
    /// is neither `Gray` nor `Rgb` (`IncompatibleType`) or has not 256 entries (`IncompatibleSize`).
    static void DrawImage(const ImageView& View, const LookupTableView* Table = nullptr);

    static int ToTarget(double v);
    static int ToTargetMark(double v);

private:
    static bool Prepare();
    static void PrepareText();
    static RgbPixel ColorOf(PredefinedColors color);
    static void ArrowHead(double fromX, double fromY, double toX, double toY);
};

} // namespace Tesk
