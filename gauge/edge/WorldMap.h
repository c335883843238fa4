// From pixels to the units of a result: by the scale of the process, or by a calibration.
#pragma once

#include "image/Geometry.h"
#include "image/geometry/GeometryModel.h"

#include <cmath>

namespace Tesk::edges {

class WorldMap
{
public:
    /// The scale of `Geometry::SimpleCalibration`.
    WorldMap() = default;
    explicit WorldMap(const Geometry& calibrator) : calibrator_(&calibrator) {}

    bool HasCalibrator() const { return calibrator_ != nullptr; }
    /// That of the process; not for calibrators.
    double Scale() const { return scale_; }

    /// Maps a point; false, and the point as it was, if it lies at the horizon of a view.
    bool Apply(XY& point) const
    {
        const XY mapped = calibrator_ ? models::Map(calibrator_->Model, calibrator_->Forward(), point)
                                      : XY(point.X * scale_, point.Y * scale_);
        return Take(mapped, point);
    }

    /// Maps a point back to pixels.
    bool Reverse(XY& point) const
    {
        const XY mapped = calibrator_ ? models::Map(calibrator_->Model, calibrator_->Inverse(), point)
                                      : XY(point.X / scale_, point.Y / scale_);
        return Take(mapped, point);
    }

private:
    static bool Take(XY mapped, XY& point)
    {
        if (!std::isfinite(mapped.X) || !std::isfinite(mapped.Y)) return false;
        point = mapped;
        return true;
    }

    const Geometry* calibrator_ = nullptr;
    double scale_ = Geometry::ScaleFromPixel;
};

} // namespace Tesk::edges
