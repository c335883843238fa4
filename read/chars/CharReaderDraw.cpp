// What a character reader shows: its characters, its layout, its font and its settings.
#include "foundation/Entry.h"
#include "foundation/Graph.h"
#include "foundation/Handles.h"
#include "image/core/Refusals.h"
#include "read/CharReader.h"
#include "read/chars/FontSheet.h"
#include "read/chars/ReaderState.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

namespace Tesk {

using namespace chars;

namespace chars {

std::vector<SheetCell> LayOut(const Font& font, const SheetLayout& layout)
{
    std::vector<SheetCell> cells;
    const std::vector<int>& optimal = font.Optimal();
    const int count = layout.optimalOnly ? static_cast<int>(optimal.size()) : font.Count();
    std::int64_t x = layout.x, y = layout.y;
    int highest = 0;
    for (int i = 0; i < count; i++) {
        const int index = layout.optimalOnly ? optimal[static_cast<std::size_t>(i)] : i;
        const Image& image = layout.samples ? font[index].Sample : font[index].Thumbnail;
        if (x + image.Width > layout.maxX && x > layout.x) {
            x = layout.x;
            y += std::int64_t{highest} + layout.gapY;
            highest = 0;
        }
        if (x > mostPixels || y > mostPixels) break;
        cells.push_back({index, static_cast<int>(x), static_cast<int>(y), image.Width, image.Height});
        x += std::int64_t{image.Width} + layout.gapX;
        highest = std::max(highest, int(image.Height));
    }
    return cells;
}

} // namespace chars

namespace {

/// Draws the pixels of a character at a place.
void DrawAt(const Image& image, int x, int y)
{
    Graph::SetOrigin(x, y);
    image.Draw(true);
    Graph::ResetOrigin();
}

std::wstring OneChar(wchar_t c)
{
    return std::wstring(1, c);
}

void DrawFrame(const SourceRectangle& place)
{
    Graph::Rectangle(place.X, place.Y, place.Width, place.Height);
}

bool Contains(const SourceRectangle& box, XY point)
{
    return point.X >= box.X && point.X < box.X + box.Width && point.Y >= box.Y && point.Y < box.Y + box.Height;
}

} // namespace

void CharReader::Draw(bool ViewChars) const
{
    const Entry entry("Tesk::CharReader::Draw");
    const GraphSettings settings;
    const ReaderState& state = *state_;
    Graph::TextAlignX = Graph::TextAlignY = 0;
    for (int i = 0; i < NumChars; i++) {
        const CharBox box = state.BoxAt(i);
        if (box.IsEmpty()) continue;
        const SourceRectangle place = state.InPicture(box);
        Graph::LineColor = Green;
        DrawFrame(place);
        if (!ViewChars || state.shown.empty()) continue;
        const auto at = static_cast<std::size_t>(i);
        const DecodedChar& read = state.read[at];
        const bool isSafe = UseSafeScores && read.fontChar >= 0 && read.fontChar < state.font.Count();
        const double threshold = isSafe ? state.font[read.fontChar].SafeScore : MinimumScore;
        Graph::TextColor = read.score >= threshold ? Green : Red;
        Graph::Text(place.X, place.Y, OneChar(state.shown[at]).c_str());
    }
}

void CharReader::DrawChar(int Index) const
{
    const Entry entry("Tesk::CharReader::DrawChar");
    if (entry.Refuses(CheckChar(Index))) return;
    const CharBox box = state_->BoxAt(Index);
    if (!box.IsEmpty()) DrawFrame(state_->InPicture(box));
}

void CharReader::DrawLayout() const
{
    const Entry entry("Tesk::CharReader::DrawLayout");
    const GraphSettings settings;
    const ReaderState& state = *state_;
    Graph::LineColor = Magenta;
    for (const CharBox& box : state.layout) {
        XY corners[4];
        for (int k = 0; k < 4; k++) {
            const double x = box.X + (k == 1 || k == 2 ? box.Width : 0), y = box.Y + (k >= 2 ? box.Height : 0);
            corners[k] = state.InPicture(state.placement(XY(x, y)));
        }
        Graph::Polyline(corners, 4, true);
    }
}

void CharReader::HitChar(int X, int Y)
{
    const Entry entry("Tesk::CharReader::HitChar");
    const XY point = ScreenPointer(X, Y).Position();
    Handle = NoHandle;
    HitIndex = -1;
    for (int i = 0; i < NumChars; i++) {
        if (!Contains(state_->InPicture(state_->BoxAt(i)), point)) continue;
        Handle = AllHandle;
        HitIndex = i;
        return;
    }
}

void CharReader::DrawFontChars(int X, int Y, int MaxX, int HGap, int VGap, bool Samples, bool Codes,
                               bool OptimalOnly) const
{
    const Entry entry("Tesk::CharReader::DrawFontChars");
    const GraphSettings settings;
    Graph::TextAlignX = 0;
    Graph::TextAlignY = -1;
    entry.Guards(images::noWorkingMemory, [&] {
        for (const SheetCell& cell : LayOut(state_->font, {X, Y, MaxX, HGap, VGap, Samples, OptimalOnly})) {
            const FontChar& character = state_->font[cell.fontChar];
            DrawAt(Samples ? character.Sample : character.Thumbnail, cell.x, cell.y);
            const bool isHit = Handle == AllHandle && HitFontIndex == cell.fontChar;
            Graph::LineColor = Graph::TextColor = isHit ? Red : Green;
            Graph::Rectangle(cell.x, cell.y, cell.width, cell.height);
            if (Codes)
                Graph::Text(cell.x + cell.width / 2.0, cell.y + cell.height,
                            OneChar(static_cast<wchar_t>(character.Code)).c_str());
        }
    });
}

void CharReader::HitFontChar(int PointX, int PointY, int X, int Y, int MaxX, int HGap, int VGap, bool Samples, bool,
                             bool OptimalOnly)
{
    const Entry entry("Tesk::CharReader::HitFontChar");
    Handle = NoHandle;
    HitFontIndex = -1;
    const XY point = ScreenPointer(PointX, PointY).Position();
    entry.Guards(images::noWorkingMemory, [&] {
        for (const SheetCell& cell : LayOut(state_->font, {X, Y, MaxX, HGap, VGap, Samples, OptimalOnly}))
            if (Contains({cell.x, cell.y, cell.width, cell.height}, point)) {
                Handle = AllHandle;
                HitFontIndex = cell.fontChar;
                return;
            }
    });
}

} // namespace Tesk
