// Conics through points, and ellipses fitted to them.
#include "measure/fit/PointFitFrame.h"

#include <Eigen/Dense>

#include <numbers>

namespace Tesk::fits {

namespace {

/// Points that the final ellipse must have near it.
constexpr int leastOnEllipse = 5;
/// Below this share of the product of the squared terms the mixed term is rounding, and the axes are upright.
constexpr double negligible = 1e-20;

struct LineEquation
{
    double a, b, c;
};

LineEquation Through(XY p, XY q)
{
    return {p.Y - q.Y, q.X - p.X, p.X * q.Y - p.Y * q.X};
}

Conic Product(LineEquation k, LineEquation l)
{
    return {k.a * l.a, k.a * l.b + k.b * l.a, k.b * l.b, k.a * l.c + k.c * l.a, k.b * l.c + k.c * l.b, k.c * l.c};
}

/// Squares of a conic's value and of half its gradient.
struct Algebraic
{
    double value, gradient;
};

Algebraic AlgebraicOf(const Conic& conic, XY p)
{
    const double f = conic.At(p);
    const double gx = conic.A * p.X + (conic.B * p.Y + conic.D) / 2, gy = conic.C * p.Y + (conic.B * p.X + conic.E) / 2;
    return {f * f, gx * gx + gy * gy};
}

template <typename P, typename Keep>
bool DirectFit(std::span<const P> points, Keep keep, Ellipse& ellipse)
{
    const Sums s = SumsOf(points, keep);
    if (s.N < leastOnEllipse) return false;
    const XY mean = s.Mean();
    const double sumX = s.X / s.N, sumY = s.Y / s.N;
    const double xx = s.XX / s.N - sumX * sumX, yy = s.YY / s.N - sumY * sumY, xy = s.XY_ / s.N - sumX * sumY;
    if (!(xx * yy - xy * xy > collinear * (xx + yy) * (xx + yy))) return false;
    // In units of the extent the scatter matrices are well conditioned; the fit itself does not depend on the unit.
    const double unit = std::sqrt(xx + yy);
    Eigen::Matrix3d squares = Eigen::Matrix3d::Zero(), mixed = squares, linear = squares;
    for (const P& point : points) {
        if (!keep(Real(point))) continue;
        const double x = (static_cast<double>(point.X) - mean.X) / unit;
        const double y = (static_cast<double>(point.Y) - mean.Y) / unit;
        const Eigen::Vector3d second(x * x, x * y, y * y), first(x, y, 1);
        squares += second * second.transpose();
        mixed += second * first.transpose();
        linear += first * first.transpose();
    }
    // The linear part of the conic that is best for a given quadratic one.
    const Eigen::Matrix3d toLinear = -linear.inverse() * mixed.transpose();
    const Eigen::Matrix3d reduced = squares + mixed * toLinear;
    // The inverse of the matrix of the constraint 4 A C - B^2 = 1.
    Eigen::Matrix3d system;
    system << reduced.row(2) / 2, -reduced.row(1), reduced.row(0) / 2;
    if (!system.allFinite()) return false;
    const Eigen::EigenSolver<Eigen::Matrix3d> solver(system);
    if (solver.info() != Eigen::Success) return false;
    std::array<int, 3> order = {0, 1, 2};
    std::sort(order.begin(), order.end(),
              [&](int i, int j) { return solver.eigenvalues()[i].real() < solver.eigenvalues()[j].real(); });
    for (const int i : order) {
        const Eigen::Vector3d q = solver.eigenvectors().col(i).real();
        if (q[1] * q[1] > 4 * q[0] * q[2]) continue;
        const Eigen::Vector3d l = toLinear * q;
        Ellipse found;
        if (!EllipseOf({q[0], q[1], q[2], l[0], l[1], l[2]}, found)) return false;
        ellipse = {{mean.X + unit * found.Center.X, mean.Y + unit * found.Center.Y},
                   unit * found.FirstAxis,
                   unit * found.SecondAxis,
                   found.Angle};
        return std::isfinite(ellipse.FirstAxis) && std::isfinite(ellipse.SecondAxis);
    }
    return false;
}

} // namespace

bool ConicThrough(std::span<const XY, 5> points, Conic& conic)
{
    const Conic one = Product(Through(points[0], points[1]), Through(points[2], points[3]));
    const Conic two = Product(Through(points[0], points[2]), Through(points[1], points[3]));
    double first = two.At(points[4]), second = -one.At(points[4]);
    const double larger = std::abs(first) > std::abs(second) ? first : second;
    if (larger == 0 || !std::isfinite(larger)) return false;
    first /= larger;
    second /= larger;
    conic = {first * one.A + second * two.A, first * one.B + second * two.B, first * one.C + second * two.C,
             first * one.D + second * two.D, first * one.E + second * two.E, first * one.F + second * two.F};
    return true;
}

bool EllipseOf(const Conic& conic, Ellipse& ellipse)
{
    const double h = conic.B / 2, determinant = conic.A * conic.C - h * h;
    if (!(determinant > 0)) return false;
    const XY center((h * conic.E / 2 - conic.C * conic.D / 2) / determinant,
                    (h * conic.D / 2 - conic.A * conic.E / 2) / determinant);
    const double k = -conic.At(center);
    double first = conic.A, second = conic.C, angle = 0;
    if (std::abs(conic.A * conic.C) * negligible < h * h) {
        const double middle = (conic.A + conic.C) / 2, half = std::hypot((conic.A - conic.C) / 2, h);
        // Their signs are the same; the smaller one follows from the product, which does not cancel.
        second = middle > 0 ? middle + half : middle - half;
        first = determinant / second;
        const XY one(h, first - conic.A), two(first - conic.C, h);
        const XY direction = std::abs(one.Y) > std::abs(two.X) ? one : two;
        angle = std::atan2(direction.Y, direction.X);
        if (angle > std::numbers::pi / 2) angle -= std::numbers::pi;
        if (angle <= -std::numbers::pi / 2) angle += std::numbers::pi;
    }
    if (!(k / first > 0) || !(k / second > 0)) return false;
    const double firstAxis = std::sqrt(k / first), secondAxis = std::sqrt(k / second);
    if (!std::isfinite(firstAxis) || !std::isfinite(secondAxis) || !std::isfinite(center.X) || !std::isfinite(center.Y))
        return false;
    ellipse = {center, firstAxis, secondAxis, angle};
    return true;
}

template <typename P>
bool EllipseThrough(std::span<const P, 5> points, Ellipse& ellipse)
{
    // About the first point, since the terms of a conic far from the origin cancel.
    const XY origin = Real(points[0]);
    std::array<XY, 5> near;
    for (std::size_t i = 0; i < near.size(); i++)
        near[i] = Real(points[i]) - origin;
    Conic conic;
    if (!ConicThrough(near, conic) || !EllipseOf(conic, ellipse)) return false;
    ellipse.Center = {ellipse.Center.X + origin.X, ellipse.Center.Y + origin.Y};
    return true;
}

template <typename P>
bool FitEllipse(std::span<const P> points, Ellipse& ellipse)
{
    return DirectFit(points, all, ellipse);
}

template <typename P>
bool FitEllipseRobust(std::span<const P> points, double tolerance, Ellipse& ellipse, Agreement* agreement)
{
    constexpr int seeds = 8;
    double count = 0;
    const XY origin = MeanOf(points, all, count);
    const auto isNear = [=](const Algebraic& at) { return at.value < tolerance * at.gradient; };
    Conic best;
    const Agreement found = Consensus<seeds, 5>(
        points, best,
        [&](std::array<XY, 5> chosen, Conic& made) {
            for (XY& p : chosen)
                p = p - origin;
            Ellipse candidate;
            return ConicThrough(chosen, made) && EllipseOf(made, candidate);
        },
        [&](const Conic& made, XY p) {
            const Algebraic at = AlgebraicOf(made, p - origin);
            return Residual{at.value, at.gradient, isNear(at)};
        });
    if (agreement) *agreement = found;
    return found.Count >= leastOnEllipse &&
           DirectFit(
               points, [&](XY p) { return isNear(AlgebraicOf(best, p - origin)); }, ellipse);
}

#define TESK_FITS(P)                                                                                                   \
    template bool EllipseThrough(std::span<const P, 5>, Ellipse&);                                                     \
    template bool FitEllipse(std::span<const P>, Ellipse&);                                                            \
    template bool FitEllipseRobust(std::span<const P>, double, Ellipse&, Agreement*)
TESK_FITS(Site);
TESK_FITS(XY);

} // namespace Tesk::fits
