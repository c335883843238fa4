// Cubic splines through points, by the length of their chords.
#pragma once

#include "foundation/Records.h"

#include <vector>

namespace Tesk::snakes {

/// What a spline does at an end: it goes in a direction of length 1, or ends without curvature where that is zero.
struct SplineEnds
{
    XY first{0, 0}, last{0, 0};
};

/// Two continuous derivatives by the cumulative length of the chords; points that coincide are joined by nothing.
class CubicSpline
{
public:
    CubicSpline(const std::vector<XY>& points, const SplineEnds& ends);

    /// A piece is between two points that follow each other; `t` runs from 0 to 1 in it.
    int Pieces() const { return static_cast<int>(points_.size()) - 1; }
    double Chord(int piece) const { return chords_[static_cast<std::size_t>(piece)]; }
    XY At(int piece, double t) const;
    /// By the length of the chord.
    XY Derivative(int piece, double t) const;

private:
    void Solve(const SplineEnds& ends);

    std::vector<XY> points_;
    std::vector<double> chords_;
    std::vector<XY> second_; ///< second derivatives at the points
};

} // namespace Tesk::snakes
