// A target that writes each call down, for tests of what is drawn.
#pragma once

#include "foundation/GraphTarget.h"

namespace Tesk {

class RecordingTarget final : public GraphTarget
{
public:
    std::vector<std::string> Calls; ///< "Line 1 1", "Rectangle 0 0 5 5", in the order of drawing
    TargetPoint Client{640, 480};
    std::vector<std::uint8_t> Blitted; ///< the rows of the last bitmap, without fill
    int BlittedDensity = 0;            ///< and its pixels per metre
    int Flushes = 0;

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
    void Arc(int Left, int Top, int Right, int Bottom, double From, double To) override; ///< angles in degrees
    void Pixel(TargetPoint Point, RgbPixel Color) override;
    void SetRotation(double Angle, TargetPoint Center) override; ///< in degrees
    void ResetRotation() override;
    void SetOrigin(TargetPoint Origin) override;
    void Text(TargetPoint Point, const std::wstring& Text) override;
    TargetPoint TextExtent(const std::wstring& Text) override;
    void Blit(const TargetBitmap& Bitmap, int Left, int Top, int Width, int Height) override;
    TargetPoint ClientSize() override { return Client; }
    void Flush() override { Flushes++; }

private:
    void Add(const std::string& call) { Calls.push_back(call); }
};

} // namespace Tesk
