// Fits of the maps between two frames to pairs of points.
#include "foundation/Entry.h"
#include "image/geometry/GeometryModel.h"

#include <Eigen/QR>

#include <algorithm>

namespace Tesk::models {

namespace {

/// One direction of a fit.
struct Way
{
    XY AnchorPair::*from;
    XY AnchorPair::*to;
};
constexpr Way forward{&AnchorPair::Src, &AnchorPair::Dst}, back{&AnchorPair::Dst, &AnchorPair::Src};

struct Traits
{
    const wchar_t* name;
    int fewest;
};
constexpr Traits traits[] = {{L"Translation", 1}, {L"Rotation", 2},   {L"Mirroring", 2},   {L"Scaling", 2},
                             {L"Similarity", 2},  {L"Reflection", 2}, {L"Affinity", 3},    {L"Perspective", 4},
                             {L"Quadratic", 6},   {L"General", 6},    {L"Biquadratic", 6}, {L"Rational", 7}};

/// A linear least-squares problem whose equations come one by one. They are reflected into a triangle a batch at a
/// time: memory does not grow with them, and the condition is not squared as by normal equations.
class Equations
{
public:
    static constexpr int mostColumns = 2 * mostTerms + 3;

    /// With one or two right-hand sides.
    Equations(int unknowns, int sides) : unknowns_(unknowns), columns_(unknowns + sides), used_(columns_)
    {
        rows_.setZero(columns_ + batch, columns_);
    }

    /// An equation: the factors of the unknowns, then the right-hand sides.
    void Add(const std::array<double, mostColumns>& equation)
    {
        for (int i = 0; i < columns_; i++)
            rows_(used_, i) = equation[static_cast<std::size_t>(i)];
        if (++used_ == rows_.rows()) Reduce();
    }

    /// The unknowns, those for the second side behind those for the first; false if the equations do not determine
    /// them.
    bool Solve(double* unknowns)
    {
        Reduce();
        Rows triangle = rows_.topLeftCorner(unknowns_, unknowns_);
        // Unknowns of very different size are brought to one scale, which leaves the minimum where it is.
        const Column scale = triangle.colwise().norm().transpose();
        if (!(scale.minCoeff() > 0) || !scale.allFinite()) return false;
        triangle.array().rowwise() /= scale.transpose().array();
        Eigen::ColPivHouseholderQR<Rows> qr(triangle);
        // Equations that depend on each other leave about 1e-16; a target far from the origin 1e-9 or so.
        constexpr double dependent = 1e-13;
        qr.setThreshold(dependent);
        if (qr.rank() < unknowns_) return false;
        for (int side = 0; side < columns_ - unknowns_; side++) {
            const Column right = rows_.col(unknowns_ + side).head(unknowns_), found = qr.solve(right);
            for (int i = 0; i < unknowns_; i++)
                unknowns[side * unknowns_ + i] = found(i) / scale(i);
        }
        return true;
    }

private:
    static constexpr int batch = 48;
    using Rows =
        Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::ColMajor, mostColumns + batch, mostColumns>;
    using Column = Eigen::Matrix<double, Eigen::Dynamic, 1, Eigen::ColMajor, mostColumns, 1>;

    void Reduce()
    {
        const Eigen::HouseholderQR<Rows> qr(rows_);
        rows_.setZero();
        rows_.topRows(columns_).triangularView<Eigen::Upper>() = qr.matrixQR().topRows(columns_);
        used_ = columns_;
    }

    int unknowns_, columns_, used_;
    Rows rows_;
};

/// The terms of a numerator at a point, and the two of a denominator. In the coefficients those of x' come first, then
/// those of y', of the denominator, and the centre.
struct Terms
{
    std::array<double, mostTerms> numerator{};
    int count = 0;
    double x, y;
};

Terms TermsAt(RegistrationModels model, const XY& centre, double x, double y)
{
    if (model == Perspective) return {{x, y, 1}, 3, x, y};
    if (model == Biquadratic || model == Rational) return {{x * x, x * y, y * y, x, y, 1}, 6, x, y};
    const double u = x - centre.X, v = y - centre.Y, r = std::sqrt(u * u + v * v);
    return {{u * r, v * r, u, v, 1}, 5, u, v};
}

/// Two systems, one for each coordinate.
bool FitLinear(RegistrationModels model, std::span<const AnchorPair> anchors, Way way, const XY& centre,
               Coefficients& c)
{
    const int n = TermsAt(model, centre, 0, 0).count;
    Equations equations(n, 2);
    for (const AnchorPair& pair : anchors) {
        const XY from = pair.*way.from, to = pair.*way.to;
        std::array<double, Equations::mostColumns> row{};
        const Terms terms = TermsAt(model, centre, from.X, from.Y);
        std::copy_n(terms.numerator.begin(), n, row.begin());
        row[static_cast<std::size_t>(n)] = to.X;
        row[static_cast<std::size_t>(n) + 1] = to.Y;
        equations.Add(row);
    }
    return equations.Solve(c.data());
}

/// One system for both coordinates, of the equations multiplied out by their common denominator.
bool FitQuotient(RegistrationModels model, std::span<const AnchorPair> anchors, Way way, const XY& centre,
                 Coefficients& c)
{
    const int n = TermsAt(model, centre, 0, 0).count, unknowns = 2 * n + 2;
    Equations equations(unknowns, 1);
    for (const AnchorPair& pair : anchors) {
        const XY from = pair.*way.from, to = pair.*way.to;
        const Terms terms = TermsAt(model, centre, from.X, from.Y);
        for (int side = 0; side < 2; side++) {
            const double value = side ? to.Y : to.X;
            std::array<double, Equations::mostColumns> row{};
            std::copy_n(terms.numerator.begin(), n, row.begin() + side * n);
            row[static_cast<std::size_t>(unknowns) - 2] = -value * terms.x;
            row[static_cast<std::size_t>(unknowns) - 1] = -value * terms.y;
            row[static_cast<std::size_t>(unknowns)] = value;
            equations.Add(row);
        }
    }
    return equations.Solve(c.data());
}

/// Whether a map meets all destinations but for rounding.
bool Meets(RegistrationModels model, std::span<const AnchorPair> anchors, Way way, const Coefficients& c)
{
    constexpr double rounding = 1e-10;
    double farthest = 0, size = 0;
    for (const AnchorPair& pair : anchors) {
        const XY to = pair.*way.to, reached = Map(model, c, pair.*way.from);
        farthest = Max(farthest, std::hypot(reached.X - to.X, reached.Y - to.Y));
        size = Max(size, std::hypot(to.X, to.Y));
    }
    return farthest <= rounding * size;
}

/// Quotients of quadratic polynomials are not determined by points that a map without denominator meets: if the
/// quotient is (c x + 1) times a straight map over (c x + 1), any c will do. Then there is no denominator.
bool FitRational(std::span<const AnchorPair> anchors, Way way, Coefficients& c)
{
    if (FitQuotient(Rational, anchors, way, {0, 0}, c)) return true;
    c = {};
    return FitLinear(Biquadratic, anchors, way, {0, 0}, c) && Meets(Biquadratic, anchors, way, c);
}

XY Mean(std::span<const AnchorPair> anchors, XY AnchorPair::*side)
{
    // By differences from the first point, so that the mean of equal points is that point.
    const XY first = anchors[0].*side;
    XY sum(0, 0);
    for (const AnchorPair& pair : anchors)
        sum.X += (pair.*side).X - first.X, sum.Y += (pair.*side).Y - first.Y;
    const auto n = static_cast<double>(anchors.size());
    return {first.X + sum.X / n, first.Y + sum.Y / n};
}

/// Maps of one angle and one scale, mirrored or not: the closed solutions.
bool FitConformal(RegistrationModels model, std::span<const AnchorPair> anchors, Way way, Coefficients& c)
{
    const XY p = Mean(anchors, way.from), q = Mean(anchors, way.to);
    const bool mirrored = model == Mirroring || model == Reflection;
    const double sign = mirrored ? -1 : 1;
    double cosine = 0, sine = 0, from = 0, to = 0;
    for (const AnchorPair& pair : anchors) {
        const XY a((pair.*way.from).X - p.X, (pair.*way.from).Y - p.Y),
            b((pair.*way.to).X - q.X, (pair.*way.to).Y - q.Y);
        cosine += a.X * b.X + sign * a.Y * b.Y;
        sine += a.X * b.Y - sign * a.Y * b.X;
        from += a.X * a.X + a.Y * a.Y;
        to += b.X * b.X + b.Y * b.Y;
    }
    const double length = std::hypot(cosine, sine);
    double divisor = from;
    if (model == Rotation || model == Mirroring) {
        // Below that only rounding chooses the angle.
        constexpr double noise = 1e-14;
        if (!(length > noise * std::sqrt(from) * std::sqrt(to))) return false;
        divisor = length;
    }
    const double k = cosine / divisor, s = model == Scaling ? 0 : sine / divisor;
    c[0] = k;
    c[1] = -sign * s;
    c[3] = s;
    c[4] = sign * k;
    c[2] = q.X - c[0] * p.X - c[1] * p.Y;
    c[5] = q.Y - c[3] * p.X - c[4] * p.Y;
    return true;
}

bool FitOneWay(RegistrationModels model, std::span<const AnchorPair> anchors, Way way, const XY& centre,
               Coefficients& c)
{
    c = {};
    bool found = false;
    switch (model) {
    case Translation: {
        const XY p = Mean(anchors, way.from), q = Mean(anchors, way.to);
        c[2] = q.X - p.X;
        c[5] = q.Y - p.Y;
        found = true;
        break;
    }
    case Affinity:
        found = FitAffine(
            anchors.size(), [&](std::size_t i) { return anchors[i].*way.from; },
            [&](std::size_t i) { return anchors[i].*way.to; }, c);
        break;
    case Perspective:
        found = FitQuotient(model, anchors, way, centre, c);
        break;
    case Quadratic:
        found = FitLinear(model, anchors, way, centre, c);
        c[10] = centre.X, c[11] = centre.Y;
        break;
    case General:
        found = FitQuotient(model, anchors, way, centre, c);
        c[12] = centre.X, c[13] = centre.Y;
        break;
    case Biquadratic:
        found = FitLinear(model, anchors, way, centre, c);
        break;
    case Rational:
        found = FitRational(anchors, way, c);
        break;
    default:
        found = FitConformal(model, anchors, way, c);
    }
    return found && std::all_of(c.begin(), c.end(), [](double v) { return std::isfinite(v); });
}

/// Whether the points of a side are finite, and but for one point alone `apart`.
bool AreUsable(std::span<const AnchorPair> anchors, XY AnchorPair::*side, bool apart)
{
    constexpr double rounding = 1e-13;
    const XY first = anchors[0].*side;
    double extent = 0, size = 0;
    for (const AnchorPair& pair : anchors) {
        const XY p = pair.*side;
        if (!std::isfinite(p.X) || !std::isfinite(p.Y)) return false;
        extent = Max(extent, Max(std::abs(p.X - first.X), std::abs(p.Y - first.Y)));
        size = Max(size, Max(std::abs(p.X), std::abs(p.Y)));
    }
    return !apart || extent > rounding * size;
}

} // namespace

const wchar_t* ModelName(RegistrationModels model)
{
    return traits[model].name;
}

int FewestAnchors(RegistrationModels model)
{
    return traits[model].fewest;
}

int RefuseCount(RegistrationModels model, std::size_t count)
{
    if (count == 0) return Status::Format(OutOfRange, L"No anchor points were provided");
    const auto [name, fewest] = traits[model];
    if (count >= static_cast<std::size_t>(fewest)) return NoError;
    return Status::Format(OutOfRange, L"The %ls model requires at least %d anchor points and %d were provided", name,
                          fewest, static_cast<int>(count));
}

int FitModel(RegistrationModels model, std::span<const AnchorPair> anchors, const XY& centre, Fit& fit)
{
    constexpr const wchar_t* source = L"The source anchor points are forming a degenerate configuration";
    constexpr const wchar_t* destination = L"The destination anchor points are forming a degenerate configuration";
    const bool apart = model != Translation;
    if (!AreUsable(anchors, &AnchorPair::Src, apart)) return Status::Format(OutOfRange, source);
    if (!AreUsable(anchors, &AnchorPair::Dst, apart)) return Status::Format(OutOfRange, destination);
    Fit found;
    if (!FitOneWay(model, anchors, forward, centre, found.forward)) return Status::Format(OutOfRange, source);
    if (model == Translation) {
        found.inverse[2] = -found.forward[2];
        found.inverse[5] = -found.forward[5];
    } else if (!FitOneWay(model, anchors, back, Map(model, found.forward, centre), found.inverse)) {
        return Status::Format(OutOfRange, destination);
    }
    fit = found;
    return NoError;
}

} // namespace Tesk::models
