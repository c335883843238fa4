// Curves that a calibration bends, as strokes.
#pragma once

#include "gauge/edge/GaugeMarks.h"

namespace Tesk::edges {

/// Draws the curve of `pointAt(t)`, which gives a point of the frame or false, by halving its stretches until the curve
/// departs from the chords by less than a quarter of a pixel of the screen.
template <typename PointAt>
void DrawCurve(PointAt pointAt, double from, XY fromPoint, double to, XY toPoint, int depth)
{
    constexpr double sagitta = 0.25;
    const double middle = (from + to) / 2;
    XY at;
    if (!pointAt(middle, at)) return;
    const double x = at.X - (fromPoint.X + toPoint.X) / 2, y = at.Y - (fromPoint.Y + toPoint.Y) / 2;
    if (depth <= 0 || !(std::hypot(x, y) * Graph::Zoom > sagitta)) {
        DrawStroke(fromPoint, at);
        DrawStroke(at, toPoint);
        return;
    }
    DrawCurve(pointAt, from, fromPoint, middle, at, depth - 1);
    DrawCurve(pointAt, middle, at, to, toPoint, depth - 1);
}

template <typename PointAt>
void DrawCurve(PointAt pointAt, double from, double to)
{
    // A whole turn begins in pieces, since its ends coincide.
    constexpr int pieces = 8, deepest = 8;
    for (int i = 0; i < pieces; i++) {
        const double a = from + (to - from) * i / pieces, b = from + (to - from) * (i + 1) / pieces;
        XY p, q;
        if (pointAt(a, p) && pointAt(b, q)) DrawCurve(pointAt, a, p, b, q, deepest);
    }
}

} // namespace Tesk::edges
