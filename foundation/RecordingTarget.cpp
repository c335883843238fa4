// Each call as a line of text.
#include "foundation/RecordingTarget.h"

#include "foundation/Angles.h"
#include "foundation/Status.h"

#include <cmath>
#include <sstream>

namespace Tesk {

namespace {

template <typename... Values>
std::string Words(const char* name, Values... values)
{
    std::ostringstream text;
    text << name;
    ((text << ' ' << values), ...);
    return text.str();
}

std::string ColorText(const RgbPixel* color)
{
    return color ? Words("", int{color->Red}, int{color->Green}, int{color->Blue}) : " none";
}

/// Rounded so that a quarter turn reads 90.
double Degrees(double radians)
{
    constexpr double steps = 1000;
    return std::round(ToDegrees(radians) * steps) / steps;
}

} // namespace

void RecordingTarget::SetLine(const RgbPixel* Color, int Width)
{
    Add("SetLine" + ColorText(Color) + Words("", Width));
}
void RecordingTarget::SetFill(const RgbPixel* Color)
{
    Add("SetFill" + ColorText(Color));
}
void RecordingTarget::SetText(RgbPixel Color, const RgbPixel* Background, const std::wstring& FontName, int FontSize)
{
    Add("SetText" + ColorText(&Color) + ColorText(Background) + Words("", Narrow(FontName.c_str()), FontSize));
}
void RecordingTarget::MoveTo(TargetPoint Point)
{
    Add(Words("Move", Point.X, Point.Y));
}
void RecordingTarget::LineTo(TargetPoint Point)
{
    Add(Words("Line", Point.X, Point.Y));
}
void RecordingTarget::BezierTo(TargetPoint Control0, TargetPoint Control1, TargetPoint End)
{
    Add(Words("Bezier", Control0.X, Control0.Y, Control1.X, Control1.Y, End.X, End.Y));
}
void RecordingTarget::Polygon(const std::vector<TargetPoint>& Points)
{
    std::string call = "Polygon";
    for (const TargetPoint& point : Points)
        call += Words("", point.X, point.Y);
    Add(call);
}
void RecordingTarget::Rectangle(int Left, int Top, int Right, int Bottom)
{
    Add(Words("Rectangle", Left, Top, Right, Bottom));
}
void RecordingTarget::FillRectangle(int Left, int Top, int Right, int Bottom, RgbPixel Color)
{
    Add(Words("FillRectangle", Left, Top, Right, Bottom) + ColorText(&Color));
}
void RecordingTarget::Ellipse(int Left, int Top, int Right, int Bottom)
{
    Add(Words("Ellipse", Left, Top, Right, Bottom));
}
void RecordingTarget::Arc(int Left, int Top, int Right, int Bottom, double From, double To)
{
    Add(Words("Arc", Left, Top, Right, Bottom, Degrees(From), Degrees(To)));
}
void RecordingTarget::Pixel(TargetPoint Point, RgbPixel Color)
{
    Add(Words("Pixel", Point.X, Point.Y) + ColorText(&Color));
}
void RecordingTarget::SetRotation(double Angle, TargetPoint Center)
{
    Add(Words("Rotation", Degrees(Angle), Center.X, Center.Y));
}
void RecordingTarget::ResetRotation()
{
    Add("NoRotation");
}
void RecordingTarget::SetOrigin(TargetPoint Origin)
{
    Add(Words("Origin", Origin.X, Origin.Y));
}
void RecordingTarget::Text(TargetPoint Point, const std::wstring& Text)
{
    Add(Words("Text", Point.X, Point.Y, Narrow(Text.c_str())));
}
TargetPoint RecordingTarget::TextExtent(const std::wstring& Text)
{
    constexpr int characterWidth = 7, characterHeight = 16;
    return {characterWidth * static_cast<int>(Text.size()), characterHeight};
}
void RecordingTarget::Blit(const TargetBitmap& Bitmap, int Left, int Top, int Width, int Height)
{
    Add(Words("Blit", Bitmap.Width, Bitmap.Height, Bitmap.BitCount, Left, Top, Width, Height) +
        (Bitmap.Blend ? " blend" : ""));
    BlittedDensity = Bitmap.PixelsPerMetre;
    Blitted.clear();
    const std::int64_t rowBytes = (std::int64_t{Bitmap.Width} * Bitmap.BitCount + 7) / 8;
    for (int y = 0; y < Bitmap.Height; y++) {
        const std::uint8_t* row = Bitmap.Pixels + static_cast<std::ptrdiff_t>(Bitmap.Pitch) * y;
        Blitted.insert(Blitted.end(), row, row + rowBytes);
    }
}

} // namespace Tesk
