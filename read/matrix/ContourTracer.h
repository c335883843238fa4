// Walks along the boundary of dark pixels.
#pragma once

#include "foundation/Records.h"
#include "read/matrix/BinaryImage.h"

#include <array>

namespace Tesk::matrix {

/// A step to one of the eight neighbours, clockwise on the screen from the right one on.
struct Step
{
    int x, y;
};
constexpr std::array<Step, 8> stepsAround{{{1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}, {-1, -1}, {0, -1}, {1, -1}}};

/// A walk over dark pixels that keeps the light ones at its left: clockwise around a dark figure, anticlockwise around
/// a light hole. Neighbours are the eight around a pixel, so a light gap between two dark ones at a corner is closed.
class ContourTracer
{
public:
    explicit ContourTracer(const BinaryImage& image) : image_(image) {}

    /// Whether a walk from a dark pixel, with the light pixel in direction `toLight`, arrives at `to` or beside it
    /// within so many steps.
    bool Arrives(Site from, int toLight, Site to, int mostSteps) const;
    /// The middle of the area within a walk back to `from`; false if it does not come back, or holds nothing.
    bool Middle(Site from, int toLight, int mostSteps, XY& middle) const;

private:
    /// Moves on to the next dark pixel, and turns to the light one that was passed; false at a single pixel.
    bool Move(Site& at, int& toLight) const;

    const BinaryImage& image_;
};

} // namespace Tesk::matrix
