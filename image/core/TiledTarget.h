// A surface of any size, put together of raster targets side by side.
#pragma once

#include "foundation/CairoTarget.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Tesk {

/// Each tile gets all that is drawn and keeps what lies on it.
class TiledTarget final : public GraphTarget
{
public:
    struct Tile
    {
        int X, Y;
        std::unique_ptr<CairoTarget> Surface;
    };

    TiledTarget(int Width, int Height);
    int Width() const { return width_; }
    int Height() const { return height_; }
    /// Whether there was memory for all tiles.
    bool IsWhole() const;
    const std::vector<Tile>& Tiles() const { return tiles_; }

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
    void Each(const std::function<void(CairoTarget&)>& draw);

    int width_, height_;
    std::vector<Tile> tiles_;
};

} // namespace Tesk
