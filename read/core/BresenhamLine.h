// The pixels of a straight line.
#pragma once

#include <algorithm>
#include <cstdlib>

namespace Tesk {

/// Steps from pixel to pixel along a line of Bresenham (1965).
class BresenhamLine
{
public:
    BresenhamLine(int fromX, int fromY, int toX, int toY)
        : dx_(std::abs(toX - fromX)), dy_(std::abs(toY - fromY)), stepX_(toX < fromX ? -1 : 1),
          stepY_(toY < fromY ? -1 : 1), x_(fromX), y_(fromY)
    {}

    int Steps() const { return std::max(dx_, dy_); } ///< one less than there are pixels

    /// Calls `visit(x, y)` for the first `count` pixels, at most `Steps() + 1`.
    template <typename F>
    void Visit(int count, F visit) const
    {
        int x = x_, y = y_, rest = (dx_ > dy_ ? dx_ : -dy_) / 2;
        for (int i = 0; i < count; i++) {
            visit(x, y);
            const int before = rest;
            if (before > -dx_) {
                rest -= dy_;
                x += stepX_;
            }
            if (before < dy_) {
                rest += dx_;
                y += stepY_;
            }
        }
    }
    /// For all pixels, both ends included.
    template <typename F>
    void Visit(F visit) const
    {
        Visit(Steps() + 1, visit);
    }

private:
    int dx_, dy_, stepX_, stepY_, x_, y_;
};

} // namespace Tesk
