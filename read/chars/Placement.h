// Where a layout lies among the characters that were found.
#pragma once

#include "foundation/Records.h"
#include "read/chars/Strings.h"

#include <span>
#include <vector>

namespace Tesk::chars {

/// A rotation about the origin, from x to y, then a shift.
struct Placement
{
    double angle = 0; ///< in radians
    XY shift{0, 0};

    XY operator()(XY point) const;
};

inline XY CenterOf(const CharBox& box)
{
    return {box.X + box.Width / 2.0, box.Y + box.Height / 2.0};
}

/// The interquartile mean of the centres, on each coordinate. There must be one.
XY MiddleOf(std::span<const CharBox> boxes);

/// What one layout box is matched with.
struct Pairing
{
    std::vector<int> found; ///< for each box of the layout the index of its partner, or -1
    int pairs = 0;
    double residual = 0; ///< the mean distance of partners
};

struct LayoutSearch
{
    int charWidth = 32, charHeight = 40;
    double minAngle = 0, maxAngle = 0; ///< in radians

    /// The placement that brings most boxes of a layout over boxes found: from several starts, by rounds of pairing
    /// and rigid least-squares fits (Arun, Huang and Blostein 1987). There must be boxes of both.
    Placement Find(std::span<const CharBox> layout, std::span<const CharBox> found) const;

    /// The shift of one middle to the other, unless a search without starting angles brings more boxes over each other:
    /// missing characters move the middle.
    Placement Shift(std::span<const CharBox> layout, std::span<const CharBox> found) const;
};

/// Pairs each box of a placed layout with the nearest one that was found, where it is the nearest to that one, too;
/// with `overlapping`, only boxes that overlap.
Pairing Pair(std::span<const CharBox> layout, const Placement& placement, std::span<const CharBox> found,
             bool overlapping);

/// A box of the layout, moved.
CharBox Placed(const CharBox& box, const Placement& placement);

} // namespace Tesk::chars
