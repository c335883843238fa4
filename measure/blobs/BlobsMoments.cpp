// The centers of a blob and its ellipses of inertia, of its pixels and of its gray values.
#include "measure/blobs/BlobMeasures.h"

#include <cmath>
#include <numbers>

namespace Tesk::blobs {

namespace {

struct Moments
{
    double A = 0, X = 0, Y = 0, XX = 0, XY = 0, YY = 0;
};

/// The ellipse with these moments: its axes, the angle of the longer one, against the sense from x to y, and its
/// eccentricity.
void EllipseOf(const Moments& m, double scale, double* values)
{
    const double xx = m.A * m.XX - m.X * m.X, xy = m.A * m.XY - m.X * m.Y, yy = m.A * m.YY - m.Y * m.Y;
    const double d = xx - yy, r = std::sqrt(4 * xy * xy + d * d);
    const double l1 = (xx + yy + r) / 2, l2 = Max((xx + yy - r) / 2, 0.0);
    const double ratio = l1 > 0 ? l2 / l1 : 1;
    values[0] = 4 * std::sqrt(Max(l1, 0.0)) / m.A * scale;
    values[1] = 4 * std::sqrt(l2) / m.A * scale;
    values[2] = std::atan2(2 * xy, d) * -0.5 * 180 / std::numbers::pi;
    values[3] = std::sqrt(Max(1 - ratio * ratio, 0.0));
}

/// A pixel is a square, not a point: its own moment is that of a side of 1.
constexpr double momentOfPixel = 12;

/// With `second` also the second moments.
Moments GrayMoments(const Subject& blob, const Image& src, bool second)
{
    Moments m;
    EachRow<std::uint8_t>(blob.runs, src, [&](const std::uint8_t* pixels, int n, int x, int y) {
        std::int64_t mass = 0, sx = 0, sxx = 0;
        for (std::int64_t i = 0; i < n; i++) {
            const std::int64_t v = pixels[i], vx = v * (x + i);
            mass += v;
            sx += vx;
            sxx += vx * (x + i);
        }
        m.A += static_cast<double>(mass);
        m.X += static_cast<double>(sx);
        m.Y += static_cast<double>(mass * y);
        if (!second) return;
        m.XX += static_cast<double>(sxx);
        m.XY += static_cast<double>(sx * y);
        m.YY += static_cast<double>(mass * y * y);
    });
    m.XX += m.A / momentOfPixel;
    m.YY += m.A / momentOfPixel;
    return m;
}

} // namespace

bool Center(Workplace& work, const Subject& blob, double* values)
{
    if (blob.area == 0) return false;
    std::int64_t twiceX = 0, y = 0;
    for (const LabeledRun& run : blob.runs) {
        const std::int64_t n = run.End - run.Start;
        twiceX += (run.Start + run.End - 1) * n;
        y += run.Y * n;
    }
    values[0] = static_cast<double>(twiceX) / 2 / blob.area * work.scale;
    values[1] = static_cast<double>(y) / blob.area * work.scale;
    return true;
}

bool Ellipse(Workplace& work, const Subject& blob, double* values)
{
    std::int64_t area = 0, x = 0, y = 0, xx = 0, xy = 0, yy = 0;
    const auto sixfold = [](std::int64_t end) { return (end - 1) * end * (2 * end - 1); };
    for (const LabeledRun& run : blob.runs) {
        const std::int64_t n = run.End - run.Start, t = (run.Start + run.End - 1) * n / 2;
        area += n;
        x += t;
        y += run.Y * n;
        xx += sixfold(run.End) - sixfold(run.Start);
        xy += run.Y * t;
        yy += std::int64_t{run.Y} * run.Y * n;
    }
    if (area <= 0) return false;
    const auto a = static_cast<double>(area);
    EllipseOf({a, static_cast<double>(x), static_cast<double>(y), static_cast<double>(xx) / 6 + a / momentOfPixel,
               static_cast<double>(xy), static_cast<double>(yy) + a / momentOfPixel},
              work.scale, values);
    return true;
}

bool Centroid(Workplace& work, const Subject& blob, double* values)
{
    const Moments m = GrayMoments(blob, *work.src, false);
    if (m.A == 0) return false;
    values[0] = m.X / m.A * work.scale;
    values[1] = m.Y / m.A * work.scale;
    values[2] = m.A;
    return true;
}

bool Ellipsoid(Workplace& work, const Subject& blob, double* values)
{
    const Moments m = GrayMoments(blob, *work.src, true);
    if (m.A == 0) return false;
    EllipseOf(m, work.scale, values);
    values[4] = m.X / m.A * work.scale;
    values[5] = m.Y / m.A * work.scale;
    values[6] = m.A;
    return true;
}

} // namespace Tesk::blobs
