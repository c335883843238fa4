// All drawing goes to every tile, each of which shows its own part.
#include "image/core/TiledTarget.h"

#include <algorithm>

namespace Tesk {

TiledTarget::TiledTarget(int Width, int Height) : width_(Width), height_(Height)
{
    constexpr int side = CairoTarget::LargestSide;
    for (int y = 0; y < Height; y += Min(side, Height - y))
        for (int x = 0; x < Width; x += Min(side, Width - x)) {
            tiles_.push_back({x, y, std::make_unique<CairoTarget>(Min(side, Width - x), Min(side, Height - y))});
            tiles_.back().Surface->SetCorner({x, y});
        }
}

bool TiledTarget::IsWhole() const
{
    return std::all_of(tiles_.begin(), tiles_.end(), [](const Tile& tile) { return tile.Surface->Height() > 0; });
}

void TiledTarget::Each(const std::function<void(CairoTarget&)>& draw)
{
    for (const Tile& tile : tiles_)
        draw(*tile.Surface);
}

void TiledTarget::SetLine(const RgbPixel* Color, int Width)
{
    Each([&](CairoTarget& t) { t.SetLine(Color, Width); });
}

void TiledTarget::SetFill(const RgbPixel* Color)
{
    Each([&](CairoTarget& t) { t.SetFill(Color); });
}

void TiledTarget::SetText(RgbPixel Color, const RgbPixel* Background, const std::wstring& FontName, int FontSize)
{
    Each([&](CairoTarget& t) { t.SetText(Color, Background, FontName, FontSize); });
}

void TiledTarget::MoveTo(TargetPoint Point)
{
    Each([&](CairoTarget& t) { t.MoveTo(Point); });
}

void TiledTarget::LineTo(TargetPoint Point)
{
    Each([&](CairoTarget& t) { t.LineTo(Point); });
}

void TiledTarget::BezierTo(TargetPoint Control0, TargetPoint Control1, TargetPoint End)
{
    Each([&](CairoTarget& t) { t.BezierTo(Control0, Control1, End); });
}

void TiledTarget::Polygon(const std::vector<TargetPoint>& Points)
{
    Each([&](CairoTarget& t) { t.Polygon(Points); });
}

void TiledTarget::Rectangle(int Left, int Top, int Right, int Bottom)
{
    Each([&](CairoTarget& t) { t.Rectangle(Left, Top, Right, Bottom); });
}

void TiledTarget::FillRectangle(int Left, int Top, int Right, int Bottom, RgbPixel Color)
{
    Each([&](CairoTarget& t) { t.FillRectangle(Left, Top, Right, Bottom, Color); });
}

void TiledTarget::Ellipse(int Left, int Top, int Right, int Bottom)
{
    Each([&](CairoTarget& t) { t.Ellipse(Left, Top, Right, Bottom); });
}

void TiledTarget::Arc(int Left, int Top, int Right, int Bottom, double From, double To)
{
    Each([&](CairoTarget& t) { t.Arc(Left, Top, Right, Bottom, From, To); });
}

void TiledTarget::Pixel(TargetPoint Point, RgbPixel Color)
{
    Each([&](CairoTarget& t) { t.Pixel(Point, Color); });
}

void TiledTarget::SetRotation(double Angle, TargetPoint Center)
{
    Each([&](CairoTarget& t) { t.SetRotation(Angle, Center); });
}

void TiledTarget::ResetRotation()
{
    Each([&](CairoTarget& t) { t.ResetRotation(); });
}

void TiledTarget::SetOrigin(TargetPoint Origin)
{
    Each([&](CairoTarget& t) { t.SetOrigin(Origin); });
}

void TiledTarget::Text(TargetPoint Point, const std::wstring& Text)
{
    Each([&](CairoTarget& t) { t.Text(Point, Text); });
}

TargetPoint TiledTarget::TextExtent(const std::wstring& Text)
{
    return tiles_.empty() ? TargetPoint{0, 0} : tiles_.front().Surface->TextExtent(Text);
}

void TiledTarget::Blit(const TargetBitmap& Bitmap, int Left, int Top, int Width, int Height)
{
    Each([&](CairoTarget& t) { t.Blit(Bitmap, Left, Top, Width, Height); });
}

void TiledTarget::BlitRows(const TargetBitmap& Bitmap, const BitmapRows& Rows, int Left, int Top, int Width, int Height)
{
    Each([&](CairoTarget& t) { t.BlitRows(Bitmap, Rows, Left, Top, Width, Height); });
}

TargetPoint TiledTarget::ClientSize()
{
    return {width_, height_};
}

void TiledTarget::Flush()
{
    Each([](CairoTarget& t) { t.Flush(); });
}

} // namespace Tesk
