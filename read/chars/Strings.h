// The boxes of characters, the runs that they make, and the rules by which these begin and end.
#pragma once

#include <span>
#include <vector>

namespace Tesk::chars {

/// In pixels of the turned window. One without width or height stands for a character that is missing.
struct CharBox
{
    int X = 0, Y = 0, Width = 0, Height = 0;

    bool IsEmpty() const { return Width <= 0 || Height <= 0; }
};

inline constexpr int gapSeparator = 32, lineSeparator = 10;

/// The characters from `First` up to `Last`, and what follows them: a gap, a line jump, or 0 behind the last one.
struct CharString
{
    int First = 0, Last = 0, Separator = 0;
};

/// A new string begins where a box stands lower by more than half the height of a character, or where the distance of
/// two centres exceeds 1.75 widths. A line jump goes before a gap.
std::vector<CharString> FindStrings(std::span<const CharBox> boxes, int charWidth, int charHeight);

/// Gives all boxes of a line the median top of its boxes.
void AlignLines(std::span<CharBox> boxes, std::span<const CharString> strings);

} // namespace Tesk::chars
