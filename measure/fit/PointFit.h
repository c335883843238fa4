// Lines, circles and ellipses fitted to points: `Site` for paths, `XY` for what is measured to parts of a pixel.
//
// Nothing is allocated, whatever the number of points. A fit that the points do not determine returns false and leaves
// its result as it was.
#pragma once

#include "foundation/Records.h"

#include <span>

namespace Tesk::fits {

struct Line
{
    XY Center{0, 0};
    XY Direction{1, 0}; ///< of length 1
};

struct Circle
{
    XY Center{0, 0};
    double Radius = 0;
};

/// A x^2 + B x y + C y^2 + D x + E y + F = 0.
struct Conic
{
    double A = 0, B = 0, C = 0, D = 0, E = 0, F = 0;

    double At(XY p) const { return (A * p.X + B * p.Y + D) * p.X + (C * p.Y + E) * p.Y + F; }
};

struct Ellipse
{
    XY Center{0, 0};
    double FirstAxis = 0, SecondAxis = 0; ///< half axes
    double Angle = 0;                     ///< of the first one, in radians, above -pi/2 to pi/2
};

/// How well the winner of a consensus search agrees with the points.
struct Agreement
{
    int Count = 0;    ///< points within the tolerance
    double Inner = 0; ///< their mean residual
    double Whole = 0; ///< that of all points
};

/// The full length of the longer axis of the points' ellipse of inertia, each of them a square of one pixel.
template <typename P>
double Spread(std::span<const P> points);

/// The line of least perpendicular distances. Its centre is the mean.
template <typename P>
bool FitLine(std::span<const P> points, Line& line);
/// The same of the points within `tolerance` of the best line through two of at most 9 points. `Agreement` is of
/// distances.
template <typename P>
bool FitLineRobust(std::span<const P> points, double tolerance, Line& line, Agreement* agreement = nullptr);

bool CircleThrough(XY p, XY q, XY r, Circle& circle);
/// The algebraic fit of Kasa (1976): fast, and too small for short arcs with noise.
template <typename P>
bool FitCircleKasa(std::span<const P> points, Circle& circle);
/// The algebraic fit of Taubin (1991), nearly without bias.
template <typename P>
bool FitCircleTaubin(std::span<const P> points, Circle& circle);
/// The fit of Taubin to the points within `tolerance` of the best circle through three of at most 7 points; at least 4
/// must be. `Agreement` is of distances.
template <typename P>
bool FitCircleRobust(std::span<const P> points, double tolerance, Circle& circle, Agreement* agreement = nullptr);

/// The conic through five points, from the pencil of two pairs of lines through four of them.
bool ConicThrough(std::span<const XY, 5> points, Conic& conic);
/// The ellipse that a conic is. The first axis is the longer one, but the one along x where the axes are upright.
bool EllipseOf(const Conic& conic, Ellipse& ellipse);
/// The ellipse through five points.
template <typename P>
bool EllipseThrough(std::span<const P, 5> points, Ellipse& ellipse);
/// The direct least-squares fit of Fitzgibbon, Pilu and Fisher (1999), computed as by Halir and Flusser (1998).
template <typename P>
bool FitEllipse(std::span<const P> points, Ellipse& ellipse);
/// The direct fit to the points that are near the best ellipse through five of at most 8 points; at least 5 must be.
/// A point is near where the conic's value f and half its gradient g fulfil f^2 < tolerance g^2. `Agreement` is of
/// sum(f^2) / sum(g^2).
template <typename P>
bool FitEllipseRobust(std::span<const P> points, double tolerance, Ellipse& ellipse, Agreement* agreement = nullptr);

} // namespace Tesk::fits
