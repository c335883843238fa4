// The area and the box of a blob in world units: by the plain scale, or by a calibrator.
#include "image/Geometry.h"
#include "measure/blobs/BlobMeasures.h"

#include <algorithm>
#include <cmath>

namespace Tesk::blobs {

namespace {

/// By how much a calibrator makes an area larger around a point: the determinant of its derivatives, which are taken
/// over one pixel and are exact for the models without curvature.
double AreaFactor(const Geometry& calibrator, const XY& at)
{
    const auto across = [&](double dx, double dy) {
        const XY a = calibrator.MapPoint({at.X + dx, at.Y + dy}), b = calibrator.MapPoint({at.X - dx, at.Y - dy});
        return XY(a.X - b.X, a.Y - b.Y);
    };
    const XY x = across(0.5, 0), y = across(0, 0.5);
    return std::abs(x.X * y.Y - x.Y * y.X);
}

/// The mapped ends of the runs; false where the calibrator has no finite place for them.
bool MappedBox(const Geometry& calibrator, std::span<const LabeledRun> runs, double* values)
{
    XY low(HUGE_VAL, HUGE_VAL), high(-HUGE_VAL, -HUGE_VAL);
    bool finite = true;
    for (const LabeledRun& run : runs)
        for (const int x : {int{run.Start}, run.End - 1}) {
            const XY p = calibrator.MapPoint(XY(x, run.Y));
            finite = finite && std::isfinite(p.X) && std::isfinite(p.Y);
            low = XY(std::min(low.X, p.X), std::min(low.Y, p.Y));
            high = XY(std::max(high.X, p.X), std::max(high.Y, p.Y));
        }
    if (!finite) return false;
    values[0] = low.X;
    values[1] = low.Y;
    values[2] = high.X - low.X;
    values[3] = high.Y - low.Y;
    return true;
}

} // namespace

bool WorldArea(Workplace& work, const Subject& blob, double* values)
{
    if (!work.calibrator) {
        values[0] = blob.area * work.scale * work.scale;
        return true;
    }
    double center[2];
    work.scale = 1;
    if (!Center(work, blob, center)) return false;
    values[0] = blob.area * AreaFactor(*work.calibrator, XY(center[0], center[1]));
    return std::isfinite(values[0]);
}

bool WorldBox(Workplace& work, const Subject& blob, double* values)
{
    if (!Box(work, blob, values)) return false;
    if (!work.calibrator) {
        for (int i = 0; i < 4; i++)
            values[i] *= work.scale;
        return true;
    }
    const Geometry::Coefficients& c = work.calibrator->Forward();
    const bool shift = work.calibrator->Model == Translation;
    if (!shift && work.calibrator->Model != Scaling) return MappedBox(*work.calibrator, blob.runs, values);
    const double x = shift ? 1 : c[0], y = shift ? 1 : c[4];
    values[0] = values[0] * x + c[2];
    values[1] = values[1] * y + c[5];
    values[2] *= x;
    values[3] *= y;
    return true;
}

} // namespace Tesk::blobs
