// The raster target: drawing into 32-bit pixels in memory, which a view can show as they are.
#pragma once

#include "foundation/GraphTarget.h"

#include <memory>

namespace Tesk {

/// Thin lines and outlines are traced pixel by pixel in their exact colour, fills have hard edges, and only text is
/// smoothed. An enlarged bitmap shows its pixels as squares, a reduced one the means of what falls on each pixel.
class CairoTarget final : public GraphTarget
{
public:
    static constexpr int LargestSide = 32767; ///< a larger size is held to this

    /// A black surface.
    explicit CairoTarget(int Width = 0, int Height = 0);
    ~CairoTarget() override;

    /// Another size: all black again; the size it has: nothing.
    void Resize(int Width, int Height);
    int Width() const;
    int Height() const;
    /// The rows of pixels, top first: blue, green, red, 255; null for a surface of no size, or where there is no
    /// memory for it. Good until the next `Resize`.
    std::uint8_t* Pixels();
    int Stride() const; ///< bytes from one row to the next
    RgbPixel PixelAt(int x, int y);
    /// The surface shows the part of a drawing that begins at this point of it.
    void SetCorner(TargetPoint Corner);

    /// Smooths lines, outlines and fills: for print-like pictures, where no colour need be exact.
    bool Smooth = false;

    void SetLine(const RgbPixel* Color, int Width) override;
    void SetFill(const RgbPixel* Color) override;
    void SetText(RgbPixel Color, const RgbPixel* Background, const std::wstring& FontName, int FontSize) override;
    void MoveTo(TargetPoint Point) override;
    void LineTo(TargetPoint Point) override;
    void BezierTo(TargetPoint Control0, TargetPoint Control1, TargetPoint End) override;
    void Polygon(const std::vector<TargetPoint>& Points) override;
    void Rectangle(int Left, int Top, int Right, int Bottom) override;
    void FillRectangle(int Left, int Top, int Right, int Bottom, RgbPixel Color) override;
    void Ellipse(int Left, int Top, int Right, int Bottom) override;
    void Arc(int Left, int Top, int Right, int Bottom, double From, double To) override;
    void Pixel(TargetPoint Point, RgbPixel Color) override;
    void SetRotation(double Angle, TargetPoint Center) override;
    void ResetRotation() override;
    void SetOrigin(TargetPoint Origin) override;
    void Text(TargetPoint Point, const std::wstring& Text) override;
    TargetPoint TextExtent(const std::wstring& Text) override;
    void Blit(const TargetBitmap& Bitmap, int Left, int Top, int Width, int Height) override;
    void BlitRows(const TargetBitmap& Bitmap, const BitmapRows& Rows, int Left, int Top, int Width,
                  int Height) override;
    TargetPoint ClientSize() override;
    void Flush() override;

private:
    struct State;
    struct Position
    {
        double X, Y;
    };

    Position Place(double x, double y) const;
    std::vector<Position> EllipsePoints(int left, int top, int right, int bottom, double from, double to) const;
    void Outline(const std::vector<Position>& points, bool closed);
    void Trace(Position from, Position to);
    void Fill(const std::vector<Position>& points);
    void Figure(const std::vector<Position>& points);
    void Show(const TargetBitmap& bitmap, const BitmapRows* rows, int boxLeft, int boxTop, int boxWidth, int boxHeight);

    std::unique_ptr<State> state_;
};

} // namespace Tesk
