// The forms of the maps of a geometry, and their fits.
#pragma once

#include "image/Geometry.h"

#include <cmath>

namespace Tesk::models {

using Coefficients = Geometry::Coefficients;

/// The most terms of a numerator.
inline constexpr int mostTerms = 6;

/// Whether a model is a straight map of x, y and 1, with the coefficients 0 to 5.
inline bool IsAffine(RegistrationModels model)
{
    return model >= Rotation && model <= Affinity;
}

/// Calls `f` with a function from the coordinates of a point to the point that a model gives for it. An unknown model
/// leaves points as they are.
template <typename F>
auto WithMap(RegistrationModels model, const Coefficients& c, F f)
{
    switch (model) {
    case Translation:
        return f([&c](double x, double y) { return XY(x + c[2], y + c[5]); });
    case Rotation:
    case Mirroring:
    case Scaling:
    case Similarity:
    case Reflection:
    case Affinity:
        return f([&c](double x, double y) { return XY(c[0] * x + c[1] * y + c[2], c[3] * x + c[4] * y + c[5]); });
    case Perspective:
        return f([&c](double x, double y) {
            const double d = c[6] * x + c[7] * y + 1;
            return XY((c[0] * x + c[1] * y + c[2]) / d, (c[3] * x + c[4] * y + c[5]) / d);
        });
    case Quadratic:
        return f([&c](double x, double y) {
            const double u = x - c[10], v = y - c[11], r = std::sqrt(u * u + v * v);
            return XY((c[0] * u + c[1] * v) * r + c[2] * u + c[3] * v + c[4],
                      (c[5] * u + c[6] * v) * r + c[7] * u + c[8] * v + c[9]);
        });
    case General:
        return f([&c](double x, double y) {
            const double u = x - c[12], v = y - c[13], r = std::sqrt(u * u + v * v), d = c[10] * u + c[11] * v + 1;
            return XY(((c[0] * u + c[1] * v) * r + c[2] * u + c[3] * v + c[4]) / d,
                      ((c[5] * u + c[6] * v) * r + c[7] * u + c[8] * v + c[9]) / d);
        });
    case Biquadratic:
        return f([&c](double x, double y) {
            return XY((c[0] * x + c[1] * y + c[3]) * x + (c[2] * y + c[4]) * y + c[5],
                      (c[6] * x + c[7] * y + c[9]) * x + (c[8] * y + c[10]) * y + c[11]);
        });
    case Rational:
        return f([&c](double x, double y) {
            const double d = c[12] * x + c[13] * y + 1;
            return XY(((c[0] * x + c[1] * y + c[3]) * x + (c[2] * y + c[4]) * y + c[5]) / d,
                      ((c[6] * x + c[7] * y + c[9]) * x + (c[8] * y + c[10]) * y + c[11]) / d);
        });
    }
    return f([](double x, double y) { return XY(x, y); });
}

inline XY Map(RegistrationModels model, const Coefficients& c, const XY& point)
{
    return WithMap(model, c, [&](auto map) { return map(point.X, point.Y); });
}

/// The coefficients by which a model leaves points as they are.
inline Coefficients Identity(RegistrationModels model)
{
    Coefficients c{};
    if (IsAffine(model) || model == Perspective)
        c[0] = c[4] = 1;
    else if (model == Quadratic || model == General)
        c[2] = c[8] = 1;
    else if (model == Biquadratic || model == Rational)
        c[3] = c[10] = 1;
    return c;
}

/// The affine map c0 x + c1 y + c2, c3 x + c4 y + c5 of least squares from `n` points `from(i)` to `to(i)`; false for
/// points on one line.
template <typename From, typename To>
bool FitAffine(std::size_t n, From from, To to, Coefficients& c)
{
    // Differences from the first point are exact where it matters: for points that coincide or lie along an axis.
    const XY p0 = from(0), q0 = to(0);
    XY p(0, 0), q(0, 0);
    for (std::size_t i = 0; i < n; i++) {
        p.X += from(i).X - p0.X, p.Y += from(i).Y - p0.Y;
        q.X += to(i).X - q0.X, q.Y += to(i).Y - q0.Y;
    }
    const auto count = static_cast<double>(n);
    p = {p.X / count, p.Y / count};
    q = {q.X / count, q.Y / count};
    double xx = 0, xy = 0, yy = 0, xu = 0, yu = 0, xv = 0, yv = 0;
    for (std::size_t i = 0; i < n; i++) {
        const double x = from(i).X - p0.X - p.X, y = from(i).Y - p0.Y - p.Y, u = to(i).X - q0.X - q.X,
                     v = to(i).Y - q0.Y - q.Y;
        xx += x * x, xy += x * y, yy += y * y;
        xu += x * u, yu += y * u, xv += x * v, yv += y * v;
    }
    // Below that the width of the points is 1e-7 of their length.
    constexpr double thinnest = 1e-14;
    const double area = xx * yy - xy * xy;
    if (!(area > thinnest * xx * yy)) return false;
    c[0] = (xu * yy - yu * xy) / area;
    c[1] = (yu * xx - xu * xy) / area;
    c[3] = (xv * yy - yv * xy) / area;
    c[4] = (yv * xx - xv * xy) / area;
    c[2] = q0.X + q.X - c[0] * (p0.X + p.X) - c[1] * (p0.Y + p.Y);
    c[5] = q0.Y + q.Y - c[3] * (p0.X + p.X) - c[4] * (p0.Y + p.Y);
    return true;
}

/// Both maps of a model.
struct Fit
{
    Coefficients forward{}, inverse{};
};

/// Fits a known model both ways, radial ones about a centre in the source. An `ErrorCodes` value; the fit is then as it
/// was.
int FitModel(RegistrationModels model, std::span<const AnchorPair> anchors, const XY& centre, Fit& fit);

/// The name of a known model in messages, and the fewest anchors that it takes.
const wchar_t* ModelName(RegistrationModels model);
int FewestAnchors(RegistrationModels model);

/// Refuses anchors too few for a known model. An `ErrorCodes` value.
int RefuseCount(RegistrationModels model, std::size_t count);

} // namespace Tesk::models
