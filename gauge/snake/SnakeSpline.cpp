// Cubic splines: the second derivatives at their points, and what lies between.
#include "gauge/snake/SnakeSpline.h"

#include <cmath>
#include <cstddef>

namespace Tesk::snakes {

CubicSpline::CubicSpline(const std::vector<XY>& points, const SplineEnds& ends) : points_(points)
{
    for (std::size_t i = 1; i < points.size(); i++) {
        const XY d = points[i] - points[i - 1];
        chords_.push_back(std::hypot(d.X, d.Y));
    }
    Solve(ends);
}

/// The tridiagonal equations for the second derivatives, without rows for chords of no length.
void CubicSpline::Solve(const SplineEnds& ends)
{
    second_.assign(points_.size(), XY(0, 0));
    std::vector<std::size_t> used; // chords
    for (std::size_t i = 0; i < chords_.size(); i++)
        if (chords_[i] > 0) used.push_back(i);
    const std::size_t n = used.size();
    if (n == 0) return;
    const auto slope = [&](std::size_t k) {
        return (1 / chords_[used[k]]) * (points_[used[k] + 1] - points_[used[k]]);
    };
    const auto isGiven = [](XY direction) { return direction.X != 0 || direction.Y != 0; };
    std::vector<double> upper(n + 1);
    std::vector<XY> m(n + 1, XY(0, 0));
    for (std::size_t k = 0; k <= n; k++) {
        const double before = k > 0 ? chords_[used[k - 1]] : 0, after = k < n ? chords_[used[k]] : 0;
        double diagonal = 2 * (before + after), above = after, below = before;
        XY right(0, 0);
        if (k > 0 && k < n)
            right = 6 * (slope(k) - slope(k - 1));
        else if (k == 0 && isGiven(ends.first))
            right = 6 * (slope(0) - ends.first);
        else if (k == n && isGiven(ends.last))
            right = 6 * (ends.last - slope(n - 1));
        else
            above = below = 0;
        if (k > 0) {
            diagonal -= below * upper[k - 1];
            right = right - below * m[k - 1];
        }
        upper[k] = above / diagonal;
        m[k] = (1 / diagonal) * right;
    }
    for (std::size_t k = n; k-- > 0;)
        m[k] = m[k] - upper[k] * m[k + 1];
    // A point that is passed more than once has one second derivative.
    for (std::size_t i = 0, k = 0; i < points_.size(); i++) {
        second_[i] = m[k];
        if (k < n && used[k] == i) k++;
    }
}

XY CubicSpline::At(int piece, double t) const
{
    const auto i = static_cast<std::size_t>(piece);
    const double s = 1 - t, h = chords_[i] * chords_[i] / 6;
    return s * points_[i] + t * points_[i + 1] + (h * (s * s * s - s)) * second_[i] +
           (h * (t * t * t - t)) * second_[i + 1];
}

XY CubicSpline::Derivative(int piece, double t) const
{
    const auto i = static_cast<std::size_t>(piece);
    const double s = 1 - t, h = chords_[i] / 6;
    if (!(chords_[i] > 0)) return {0, 0};
    return (1 / chords_[i]) * (points_[i + 1] - points_[i]) + (-h * (3 * s * s - 1)) * second_[i] +
           (h * (3 * t * t - 1)) * second_[i + 1];
}

} // namespace Tesk::snakes
