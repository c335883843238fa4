// What a drawing surface must offer for the overlays to be drawn on it. All positions are in pixels of the target.
#pragma once

#include "foundation/Records.h"

#include <string>
#include <vector>

namespace Tesk {

struct TargetPoint
{
    int X, Y;
    bool operator==(const TargetPoint&) const = default;
};

/// Pixels on their way to a target: 8 bits with a palette, 24 or 32 bits a pixel, blue first; top row first.
struct TargetBitmap
{
    int Width = 0, Height = 0, BitCount = 0, Pitch = 0;
    const std::uint8_t* Pixels = nullptr;
    const RgbPixel* Palette = nullptr; ///< 256 colours for 8 bits
    bool Blend = false;                ///< by the opacity of 32-bit pixels, which are premultiplied
};

class GraphTarget
{
public:
    virtual ~GraphTarget() = default;

    virtual void SetLine(RgbPixel Color, int Width) = 0;
    /// Null for hollow shapes.
    virtual void SetFill(const RgbPixel* Color) = 0;
    /// Null background for transparent text.
    virtual void SetText(RgbPixel Color, const RgbPixel* Background, const std::wstring& FontName, int FontSize) = 0;

    virtual void MoveTo(TargetPoint Point) = 0;
    virtual void LineTo(TargetPoint Point) = 0;
    virtual void Polygon(const std::vector<TargetPoint>& Points) = 0;
    virtual void Rectangle(int Left, int Top, int Right, int Bottom) = 0;
    virtual void FillRectangle(int Left, int Top, int Right, int Bottom, RgbPixel Color) = 0;
    virtual void Ellipse(int Left, int Top, int Right, int Bottom) = 0;
    virtual void Pixel(TargetPoint Point, RgbPixel Color) = 0;
    virtual void SetOrigin(TargetPoint Origin) = 0;
    virtual void Text(TargetPoint Point, const std::wstring& Text) = 0;
    virtual TargetPoint TextExtent(const std::wstring& Text) = 0;
    /// Draws a bitmap stretched to a box.
    virtual void Blit(const TargetBitmap& Bitmap, int Left, int Top, int Width, int Height) = 0;
    virtual TargetPoint ClientSize() = 0;
};

} // namespace Tesk
