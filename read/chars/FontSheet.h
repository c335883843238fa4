// The characters of a font side by side on the screen.
#pragma once

#include <vector>

namespace Tesk::chars {

class Font;

struct SheetCell
{
    int fontChar = 0;
    int x = 0, y = 0, width = 0, height = 0;
};

struct SheetLayout
{
    int x = 0, y = 0, maxX = 0, gapX = 0, gapY = 0;
    bool samples = false, optimalOnly = false;
};

/// From left to right, in rows as high as what stands in them; one that would reach beyond `maxX` begins a new row,
/// unless it is the first there.
std::vector<SheetCell> LayOut(const Font& font, const SheetLayout& layout);

} // namespace Tesk::chars
