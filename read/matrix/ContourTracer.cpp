// Walks along the boundary of dark pixels (Moore neighbourhood).
#include "read/matrix/ContourTracer.h"

#include <cstdint>
#include <cstdlib>

namespace Tesk::matrix {

bool ContourTracer::Move(Site& at, int& toLight) const
{
    for (int turn = 1; turn < 8; ++turn) {
        const int direction = (toLight + turn) % 8;
        const Step step = stepsAround[static_cast<std::size_t>(direction)];
        const int x = at.X + step.x, y = at.Y + step.y;
        if (!image_.Holds(x, y) || !image_.IsDark(x, y)) continue;
        at = Site(x, y);
        // Where the neighbour before this one lies, seen from here.
        toLight = (direction + (direction % 2 == 0 ? 6 : 5)) % 8;
        return true;
    }
    return false;
}

bool ContourTracer::Arrives(Site from, int toLight, Site to, int mostSteps) const
{
    const auto isThere = [&] { return std::abs(from.X - to.X) <= 1 && std::abs(from.Y - to.Y) <= 1; };
    for (int steps = 0; !isThere(); ++steps)
        if (steps >= mostSteps || !Move(from, toLight)) return false;
    return true;
}

bool ContourTracer::Middle(Site from, int toLight, int mostSteps, XY& middle) const
{
    // Twice the area, and six times the moments, relative to the start.
    std::int64_t area = 0, momentX = 0, momentY = 0;
    Site at = from, next = from;
    int steps = 0;
    do {
        if (steps++ >= mostSteps || !Move(next, toLight)) return false;
        const std::int64_t ax = at.X - from.X, ay = at.Y - from.Y, bx = next.X - from.X, by = next.Y - from.Y;
        const std::int64_t cross = ax * by - bx * ay;
        area += cross;
        momentX += cross * (ax + bx);
        momentY += cross * (ay + by);
        at = next;
    } while (at.X != from.X || at.Y != from.Y);
    if (area == 0) return false;
    const double scale = 1 / (3 * static_cast<double>(area));
    middle = XY(from.X + scale * static_cast<double>(momentX), from.Y + scale * static_cast<double>(momentY));
    return true;
}

} // namespace Tesk::matrix
