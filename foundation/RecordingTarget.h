// A target that writes each call down, for tests of what is drawn.
#pragma once

#include "foundation/GraphTarget.h"

namespace Tesk {

class RecordingTarget final : public GraphTarget
{
public:
    std::vector<std::string> Calls; ///< "Line 1 1", "Rectangle 0 0 5 5", in the order of drawing
    TargetPoint Client{640, 480};
    std::vector<std::uint8_t> Blitted; ///< the pixels of the last bitmap

    void SetLine(RgbPixel Color, int Width) override;
    void SetFill(const RgbPixel* Color) override;
    void SetText(RgbPixel Color, const RgbPixel* Background, const std::wstring& FontName, int FontSize) override;
    void MoveTo(TargetPoint Point) override;
    void LineTo(TargetPoint Point) override;
    void Polygon(const std::vector<TargetPoint>& Points) override;
    void Rectangle(int Left, int Top, int Right, int Bottom) override;
    void FillRectangle(int Left, int Top, int Right, int Bottom, RgbPixel Color) override;
    void Ellipse(int Left, int Top, int Right, int Bottom) override;
    void Pixel(TargetPoint Point, RgbPixel Color) override;
    void SetOrigin(TargetPoint Origin) override;
    void Text(TargetPoint Point, const std::wstring& Text) override;
    TargetPoint TextExtent(const std::wstring& Text) override;
    void Blit(const TargetBitmap& Bitmap, int Left, int Top, int Width, int Height) override;
    TargetPoint ClientSize() override { return Client; }

private:
    void Add(const std::string& call) { Calls.push_back(call); }
};

} // namespace Tesk
