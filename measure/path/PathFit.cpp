// Lines, circles and ellipses fitted to paths, and how far the sites lie from ideal shapes.
#include "measure/Path.h"

#include "measure/fit/PointMeasure.h"
#include "measure/path/PathFrame.h"

namespace Tesk {

bool Path::LineFit(XY& Center, double& Angle, FittingModes Mode) const
{
    const Entry entry("Tesk::Path::LineFit");
    return !entry.Refuses(CheckSites()) && fits::LineFit(View(), Mode, Center, Angle);
}

bool Path::CircleFit(XY& Center, double& Radius, FittingModes Mode) const
{
    const Entry entry("Tesk::Path::CircleFit");
    return !entry.Refuses(CheckSites()) && fits::CircleFit(View(), Mode, Center, Radius);
}

bool Path::EllipseFit(XY& Center, XY& Axis, double& Angle, FittingModes Mode) const
{
    const Entry entry("Tesk::Path::EllipseFit");
    return !entry.Refuses(CheckSites()) && fits::EllipseFit(View(), Mode, Center, Axis, Angle);
}

double Path::LineDeviation(XY Center, double Angle, bool RMS) const
{
    const Entry entry("Tesk::Path::LineDeviation");
    return entry.Refuses(CheckSites()) ? 0 : fits::LineDeviation(View(), Center, Angle, RMS);
}

double Path::CircleDeviation(XY Center, double Radius, bool RMS) const
{
    const Entry entry("Tesk::Path::CircleDeviation");
    return entry.Refuses(CheckSites()) ? 0 : fits::CircleDeviation(View(), Center, Radius, RMS);
}

double Path::RectangleDeviation(XY Center, XY Sides, double Angle, bool RMS) const
{
    const Entry entry("Tesk::Path::RectangleDeviation");
    return entry.Refuses(CheckSites()) ? 0 : fits::RectangleDeviation(View(), Center, Sides, Angle, RMS);
}

double Path::EllipseDeviation(XY Center, XY Axis, double Angle, bool RMS, int NumIterations) const
{
    const Entry entry("Tesk::Path::EllipseDeviation");
    return entry.Refuses(CheckSites()) ? 0 : fits::EllipseDeviation(View(), Center, Axis, Angle, RMS, NumIterations);
}

} // namespace Tesk
