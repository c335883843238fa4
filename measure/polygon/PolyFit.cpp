// Lines, circles and ellipses fitted to polygons, and how far the vertices lie from ideal shapes.
#include "measure/Poly.h"

#include "measure/fit/PointMeasure.h"
#include "measure/polygon/PolyFrame.h"

namespace Tesk {

using polygons::asPath;

bool Poly::LineFit(XY& Center, double& Angle, FittingModes Mode) const
{
    const Entry entry("Tesk::Poly::LineFit");
    return !RefuseVoid(entry, asPath) && fits::LineFit(View(), Mode, Center, Angle);
}

bool Poly::CircleFit(XY& Center, double& Radius, FittingModes Mode) const
{
    const Entry entry("Tesk::Poly::CircleFit");
    return !RefuseVoid(entry, asPath) && fits::CircleFit(View(), Mode, Center, Radius);
}

bool Poly::EllipseFit(XY& Center, XY& Axis, double& Angle, FittingModes Mode) const
{
    const Entry entry("Tesk::Poly::EllipseFit");
    return !RefuseVoid(entry, asPath) && fits::EllipseFit(View(), Mode, Center, Axis, Angle);
}

double Poly::LineDeviation(XY Center, double Angle, bool RMS) const
{
    const Entry entry("Tesk::Poly::LineDeviation");
    return Refuses(entry, asPath) ? 0 : fits::LineDeviation(View(), Center, Angle, RMS);
}

double Poly::CircleDeviation(XY Center, double Radius, bool RMS) const
{
    const Entry entry("Tesk::Poly::CircleDeviation");
    return Refuses(entry, asPath) ? 0 : fits::CircleDeviation(View(), Center, Radius, RMS);
}

double Poly::RectangleDeviation(XY Center, XY Sides, double Angle, bool RMS) const
{
    const Entry entry("Tesk::Poly::RectangleDeviation");
    return Refuses(entry, asPath) ? 0 : fits::RectangleDeviation(View(), Center, Sides, Angle, RMS);
}

double Poly::EllipseDeviation(XY Center, XY Axis, double Angle, bool RMS, int NumIterations) const
{
    const Entry entry("Tesk::Poly::EllipseDeviation");
    return Refuses(entry, asPath) ? 0 : fits::EllipseDeviation(View(), Center, Axis, Angle, RMS, NumIterations);
}

} // namespace Tesk
