// The scale between pixels and true lengths.
#include "image/Geometry.h"

#include "foundation/Entry.h"

#include <cmath>

namespace Tesk {

ReadOnly<double, Geometry> Geometry::ScaleToPixel(1.0);
ReadOnly<double, Geometry> Geometry::ScaleFromPixel(1.0);

void Geometry::SimpleCalibration(double LengthInPixels, double TrueLength)
{
    const Entry entry("Tesk::Geometry::SimpleCalibration");
    if (LengthInPixels == 0 || TrueLength == 0) {
        entry.Refuse(OutOfRange, L"Zero sizes are not allowed");
        return;
    }
    const double toPixel = LengthInPixels / TrueLength, fromPixel = TrueLength / LengthInPixels;
    if (!std::isnormal(toPixel) || !std::isnormal(fromPixel)) {
        entry.Refuse(OutOfRange, L"The sizes (%g, %g) give no usable scale", LengthInPixels, TrueLength);
        return;
    }
    ScaleToPixel = toPixel;
    ScaleFromPixel = fromPixel;
}

void Geometry::ShallowCopy(const Geometry&, bool)
{
    // The class has no state of its own yet.
}

} // namespace Tesk
