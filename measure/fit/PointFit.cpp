// Lines and circles fitted to points.
#include "measure/fit/PointFitFrame.h"

#include <numbers>

namespace Tesk::fits {

namespace {

/// Points that a final circle must have within the tolerance.
constexpr int leastOnCircle = 4;
/// The second moment of a pixel about its middle.
constexpr double pixelMoment = 1.0 / 12;

template <typename P, typename Keep>
bool LineOf(std::span<const P> points, Keep keep, Line& line)
{
    const Sums s = SumsOf(points, keep);
    if (s.N < 2) return false;
    const double a = s.N * (s.XX - s.YY) - (s.X * s.X - s.Y * s.Y), b = s.N * s.XY_ - s.X * s.Y;
    if (a == 0 && b == 0) return false;
    const double r = std::hypot(a, 2 * b);
    XY direction = a >= 0 ? XY(r + a, 2 * b) : b >= 0 ? XY(2 * b, r - a) : XY(-2 * b, a - r);
    const double length = std::hypot(direction.X, direction.Y);
    if (!(length > 0) || !std::isfinite(length)) return false;
    line = {s.Mean(), {direction.X / length, direction.Y / length}};
    return true;
}

double Distance(const Line& line, XY p)
{
    return std::abs(Cross(line.Direction, p - line.Center));
}

double Distance(const Circle& circle, XY p)
{
    return std::abs(std::hypot(p.X - circle.Center.X, p.Y - circle.Center.Y) - circle.Radius);
}

/// Means of products of the coordinates about their mean, z being x^2 + y^2.
struct CircleMoments
{
    XY Mean{0, 0};
    double N = 0, XX = 0, XY_ = 0, YY = 0, XZ = 0, YZ = 0, ZZ = 0;

    double Z() const { return XX + YY; }
    double Determinant() const { return XX * YY - XY_ * XY_; }
    bool AreCollinear() const { return !(Determinant() > collinear * Z() * Z()); }
};

template <typename P, typename Keep>
CircleMoments CircleMomentsOf(std::span<const P> points, Keep keep)
{
    CircleMoments m;
    const Sums s = SumsOf(points, keep);
    m.N = s.N;
    if (m.N < 1) return m;
    m.Mean = s.Mean();
    for (const P& point : points) {
        if (!keep(Real(point))) continue;
        const XY p = Real(point) - m.Mean;
        const double z = p.X * p.X + p.Y * p.Y;
        m.XX += p.X * p.X;
        m.XY_ += p.X * p.Y;
        m.YY += p.Y * p.Y;
        m.XZ += p.X * z;
        m.YZ += p.Y * z;
        m.ZZ += z * z;
    }
    for (double* sum : {&m.XX, &m.XY_, &m.YY, &m.XZ, &m.YZ, &m.ZZ})
        *sum /= m.N;
    return m;
}

/// The circle whose centre, about the mean, solves the normal equations with `x` taken from their diagonal.
bool Solve(const CircleMoments& m, double x, Circle& circle)
{
    const double d = 2 * (x * x - x * m.Z() + m.Determinant());
    const XY c((m.XZ * (m.YY - x) - m.YZ * m.XY_) / d, (m.YZ * (m.XX - x) - m.XZ * m.XY_) / d);
    const double radius = std::sqrt(c.X * c.X + c.Y * c.Y + m.Z());
    if (!std::isfinite(radius)) return false;
    circle = {{m.Mean.X + c.X, m.Mean.Y + c.Y}, radius};
    return true;
}

/// The least root of a cubic with three real roots, the highest coefficient not being 0.
double LeastRoot(double a3, double a2, double a1, double a0)
{
    const double shift = a2 / (3 * a3);
    const double p = a1 / a3 - 3 * shift * shift, q = 2 * shift * shift * shift - shift * a1 / a3 + a0 / a3;
    const double amplitude = std::sqrt(Max(0.0, -p / 3));
    double root = -shift;
    if (amplitude > 0) {
        const double cosine = Clamp(-q / (2 * amplitude * amplitude * amplitude), -1.0, 1.0);
        // The three are a third of a turn apart; the angle is within 0 to pi / 3, and its cosine gives the largest.
        root = 2 * amplitude * std::cos((std::acos(cosine) + 2 * std::numbers::pi) / 3) - shift;
    }
    // The closed form cancels where the root is small beside the others.
    const double slope = (3 * a3 * root + 2 * a2) * root + a1;
    const double step = (((a3 * root + a2) * root + a1) * root + a0) / slope;
    return std::isfinite(step) ? root - step : root;
}

template <typename P, typename Keep>
bool TaubinOf(std::span<const P> points, Keep keep, Circle& circle)
{
    CircleMoments m = CircleMomentsOf(points, keep);
    if (m.N < 3 || m.AreCollinear()) return false;
    // In units of the extent, so that the powers of coordinates stay in range.
    const double unit = std::sqrt(m.Z());
    const XY mean = m.Mean;
    for (double* moment : {&m.XX, &m.XY_, &m.YY})
        *moment /= unit * unit;
    for (double* moment : {&m.XZ, &m.YZ})
        *moment /= unit * unit * unit;
    m.ZZ /= unit * unit * unit * unit;
    m.Mean = {0, 0};
    const double z = m.Z(), determinant = m.Determinant(), variance = m.ZZ - z * z;
    const double a3 = 4 * z, a2 = -3 * z * z - m.ZZ;
    const double a1 = variance * z + 4 * determinant * z - m.XZ * m.XZ - m.YZ * m.YZ;
    const double a0 =
        m.XZ * (m.XZ * m.YY - m.YZ * m.XY_) + m.YZ * (m.YZ * m.XX - m.XZ * m.XY_) - variance * determinant;
    Circle found;
    if (!Solve(m, LeastRoot(a3, a2, a1, a0), found)) return false;
    circle = {{mean.X + unit * found.Center.X, mean.Y + unit * found.Center.Y}, unit * found.Radius};
    return true;
}

} // namespace

template <typename P>
double Spread(std::span<const P> points)
{
    const Sums s = SumsOf(points, all);
    if (s.N == 0) return 0;
    const double a = s.N * (s.XX + s.N * pixelMoment) - s.X * s.X, b = s.N * s.XY_ - s.X * s.Y;
    const double c = s.N * (s.YY + s.N * pixelMoment) - s.Y * s.Y;
    return 4 * std::sqrt((a + c + std::hypot(a - c, 2 * b)) / 2) / s.N;
}

template <typename P>
bool FitLine(std::span<const P> points, Line& line)
{
    return LineOf(points, all, line);
}

template <typename P>
bool FitLineRobust(std::span<const P> points, double tolerance, Line& line, Agreement* agreement)
{
    constexpr int seeds = 9;
    Line best;
    const Agreement found = Consensus<seeds, 2>(
        points, best,
        [](const std::array<XY, 2>& chosen, Line& made) {
            const XY d = chosen[1] - chosen[0];
            const double length = std::hypot(d.X, d.Y);
            made = {chosen[0], {d.X / length, d.Y / length}};
            return length > 0;
        },
        [=](const Line& made, XY p) {
            const double distance = Distance(made, p);
            return Residual{distance, 1, distance <= tolerance};
        });
    if (agreement) *agreement = found;
    return found.Count >= 2 && LineOf(
                                   points, [&](XY p) { return Distance(best, p) <= tolerance; }, line);
}

bool CircleThrough(XY p, XY q, XY r, Circle& circle)
{
    const XY a = q - p, b = r - p;
    const double d = 2 * Cross(a, b), aa = a.X * a.X + a.Y * a.Y, bb = b.X * b.X + b.Y * b.Y;
    const double extent = Max(aa, bb);
    if (!(std::abs(d) > collinear * extent)) return false;
    const XY c((b.Y * aa - a.Y * bb) / d, (a.X * bb - b.X * aa) / d);
    circle = {{p.X + c.X, p.Y + c.Y}, std::hypot(c.X, c.Y)};
    return std::isfinite(circle.Radius);
}

template <typename P>
bool FitCircleKasa(std::span<const P> points, Circle& circle)
{
    const CircleMoments m = CircleMomentsOf(points, all);
    return m.N >= 3 && !m.AreCollinear() && Solve(m, 0, circle);
}

template <typename P>
bool FitCircleTaubin(std::span<const P> points, Circle& circle)
{
    return TaubinOf(points, all, circle);
}

template <typename P>
bool FitCircleRobust(std::span<const P> points, double tolerance, Circle& circle, Agreement* agreement)
{
    constexpr int seeds = 7;
    Circle best;
    const Agreement found = Consensus<seeds, 3>(
        points, best,
        [](const std::array<XY, 3>& chosen, Circle& made) {
            return CircleThrough(chosen[0], chosen[1], chosen[2], made);
        },
        [=](const Circle& made, XY p) {
            const double distance = Distance(made, p);
            return Residual{distance, 1, distance <= tolerance};
        });
    if (agreement) *agreement = found;
    return found.Count >= leastOnCircle && TaubinOf(
                                               points, [&](XY p) { return Distance(best, p) <= tolerance; }, circle);
}

#define TESK_FITS(P)                                                                                                   \
    template double Spread(std::span<const P>);                                                                        \
    template bool FitLine(std::span<const P>, Line&);                                                                  \
    template bool FitLineRobust(std::span<const P>, double, Line&, Agreement*);                                        \
    template bool FitCircleKasa(std::span<const P>, Circle&);                                                          \
    template bool FitCircleTaubin(std::span<const P>, Circle&);                                                        \
    template bool FitCircleRobust(std::span<const P>, double, Circle&, Agreement*)
TESK_FITS(Site);
TESK_FITS(XY);

} // namespace Tesk::fits
