// Orders the dots of a DotCode: AIM DotCode, placement of the dots. Columns are read from the left, each downward; the
// six dots nearest to the corners, which get lost most easily, come last.
#include "read/codewords/DotCodeCells.h"

#include <algorithm>
#include <iterator>

namespace Tesk::codewords {

bool DotCodeCells::Prepare(int width, int height, bool firstCell)
{
    constexpr int smallest = 5;
    if (width < smallest || height < smallest || width > maximumDotCodeSide || height > maximumDotCodeSide)
        return false;
    if ((width + height) % 2 == 0) return false;
    if (width == width_ && height == height_ && firstCell == firstCell_) return true;
    width_ = width;
    height_ = height;
    firstCell_ = firstCell;
    count_ = 0;
    const bool upright = width % 2 != 0;
    const int rows = upright ? height : width, columns = upright ? width : height; // of the upright symbol
    const DotPlace corners[] = {{static_cast<std::uint8_t>(rows - 2), static_cast<std::uint8_t>(columns - 1)},
                                {static_cast<std::uint8_t>(rows - 2), 0},
                                {static_cast<std::uint8_t>(rows - 1), static_cast<std::uint8_t>(columns - 2)},
                                {static_cast<std::uint8_t>(rows - 1), 1},
                                {0, static_cast<std::uint8_t>(columns - 1)},
                                {0, 0}};
    for (int column = 0; column < columns; ++column)
        for (int row = column % 2; row < rows; row += 2) {
            const bool corner = std::any_of(std::begin(corners), std::end(corners), [&](const DotPlace& place) {
                return place.row == row && place.column == column;
            });
            if (!corner) Add(row, column);
        }
    for (const DotPlace& place : corners)
        Add(place.row, place.column);
    return true;
}

/// A dot of the upright symbol, turned as the symbol at hand is.
void DotCodeCells::Add(int row, int column)
{
    int y = row, x = column;
    if (width_ % 2 != 0) {
        if (!firstCell_) {
            y = height_ - 1 - row;
            x = width_ - 1 - column;
        }
    } else {
        y = firstCell_ ? height_ - 1 - column : column;
        x = firstCell_ ? row : width_ - 1 - row;
    }
    places_[static_cast<std::size_t>(count_++)] = {static_cast<std::uint8_t>(y), static_cast<std::uint8_t>(x)};
}

int DotCodeCells::PatternOf(int word, std::uint16_t value)
{
    if (word == 0) return value & 3;
    return value < dotCodeValues ? dotCodePatterns[value] : 0;
}

} // namespace Tesk::codewords
