// What a drawing surface must offer for the overlays to be drawn on it. All positions are in pixels of the target.
#pragma once

#include "foundation/Records.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Tesk {

struct TargetPoint
{
    int X, Y;
    bool operator==(const TargetPoint&) const = default;
};

/// Pixels on their way to a target: 1 or 8 bits with a palette (the leftmost pixel in the highest bit), 24 or 32 bits a
/// pixel, blue first; top row first.
struct TargetBitmap
{
    int Width = 0, Height = 0, BitCount = 0, Pitch = 0;
    const std::uint8_t* Pixels = nullptr;
    const RgbPixel* Palette = nullptr; ///< 2 colours for 1 bit, 256 for 8 bits
    bool Blend = false;                ///< by the opacity of 32-bit pixels, which are premultiplied
    int PixelsPerMetre = 0;            ///< the density that the picture carries
};

/// The rows of a bitmap that are made when a target asks for them.
class BitmapRows
{
public:
    virtual ~BitmapRows() = default;
    /// Pixels `from` up to but not including `to` of row `y`, packed from `dst` on; at 1 bit a pixel `from` is a
    /// multiple of 8.
    virtual void Get(int y, int from, int to, std::uint8_t* dst) const = 0;
};

/// A surface. Lines, outlines and boxes include their last row and column of pixels, unless told otherwise.
class GraphTarget
{
public:
    virtual ~GraphTarget() = default;

    /// The pen of lines and outlines; null for none. A width under 2 is a thin line of one pixel.
    virtual void SetLine(const RgbPixel* Color, int Width) = 0;
    /// Null for hollow shapes.
    virtual void SetFill(const RgbPixel* Color) = 0;
    /// Null background for transparent text. `FontSize` is the height of a line of text.
    virtual void SetText(RgbPixel Color, const RgbPixel* Background, const std::wstring& FontName, int FontSize) = 0;
    virtual void MoveTo(TargetPoint Point) = 0;
    virtual void LineTo(TargetPoint Point) = 0;
    /// A cubic segment from the current position, which it moves to its end.
    virtual void BezierTo(TargetPoint Control0, TargetPoint Control1, TargetPoint End) = 0;
    virtual void Polygon(const std::vector<TargetPoint>& Points) = 0;
    virtual void Rectangle(int Left, int Top, int Right, int Bottom) = 0;
    /// Without outline, and without the column `Right` and the row `Bottom`.
    virtual void FillRectangle(int Left, int Top, int Right, int Bottom, RgbPixel Color) = 0;
    virtual void Ellipse(int Left, int Top, int Right, int Bottom) = 0;
    /// A hollow part of the ellipse in the box, between two of its parameters in radians: 0 is at the right, pi / 2 at
    /// the bottom.
    virtual void Arc(int Left, int Top, int Right, int Bottom, double From, double To) = 0;
    virtual void Pixel(TargetPoint Point, RgbPixel Color) = 0;
    /// From here on positions are relative to a point, and turned about it by an angle in radians from x to y.
    virtual void SetRotation(double Angle, TargetPoint Center) = 0;
    virtual void ResetRotation() = 0;
    virtual void SetOrigin(TargetPoint Origin) = 0;
    virtual void Text(TargetPoint Point, const std::wstring& Text) = 0;
    virtual TargetPoint TextExtent(const std::wstring& Text) = 0;
    /// Draws a bitmap stretched to a box.
    virtual void Blit(const TargetBitmap& Bitmap, int Left, int Top, int Width, int Height) = 0;
    /// The same for a bitmap that has no pixels yet: a target that shows a part of it makes that part alone.
    virtual void BlitRows(const TargetBitmap& Bitmap, const BitmapRows& Rows, int Left, int Top, int Width, int Height);
    virtual TargetPoint ClientSize() = 0;
    /// Completes what was drawn so far.
    virtual void Flush() {}
};

} // namespace Tesk
