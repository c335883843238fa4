// The size of a polygon, and the smallest shapes around it.
#include "measure/Poly.h"

#include "foundation/Angles.h"
#include "measure/fit/PointHull.h"
#include "measure/fit/PointShape.h"
#include "measure/polygon/PolyFrame.h"

#include <cmath>

namespace Tesk {

using namespace polygons;

void Poly::Box(double& X, double& Y, double& Width, double& Height) const
{
    const Entry entry("Tesk::Poly::Box");
    if (Refuses(entry, asPolygon)) return;
    XY low = View()[0], high = low;
    for (const XY& p : View()) {
        low = {Min(low.X, p.X), Min(low.Y, p.Y)};
        high = {Max(high.X, p.X), Max(high.Y, p.Y)};
    }
    X = low.X;
    Y = low.Y;
    Width = high.X - low.X;
    Height = high.Y - low.Y;
}

void Poly::Rectangle(double& Xc, double& Yc, double& Width, double& Height, double& Angle, bool Simple) const
{
    const Entry entry("Tesk::Poly::Rectangle");
    if (Refuses(entry, asPolygon)) return;
    entry.Guards(noMemory, [&] {
        const shapes::Rectangle found = shapes::SmallestRectangle(hulls::HullOf(View(), Simple));
        Xc = found.Center.X;
        Yc = found.Center.Y;
        Width = found.Width;
        Height = found.Height;
        Angle = ToDegrees(found.Angle);
    });
}

void Poly::Circle(double& Xc, double& Yc, double& Radius, bool Simple) const
{
    const Entry entry("Tesk::Poly::Circle");
    if (Refuses(entry, asPolygon)) return;
    entry.Guards(noMemory, [&] {
        const shapes::Circle found = shapes::SmallestCircle(hulls::HullOf(View(), Simple));
        Xc = found.Center.X;
        Yc = found.Center.Y;
        Radius = found.Radius;
    });
}

void Poly::ConvexHull(Poly& Dst, bool Simple) const
{
    const Entry entry("Tesk::Poly::ConvexHull");
    if (Refuses(entry, asPolygon)) return;
    entry.Guards(noMemory, [&] { Dst.Take(hulls::HullOf(View(), Simple), true); });
}

double Poly::Perimeter(bool Euclidean) const
{
    const Entry entry("Tesk::Poly::Perimeter");
    if (Refuses(entry, asPath)) return 0;
    double sum = 0;
    XY from = View().back();
    for (const XY& to : View()) {
        const double dx = std::abs(to.X - from.X), dy = std::abs(to.Y - from.Y);
        sum += Euclidean ? std::hypot(dx, dy) : Max(dx, dy);
        from = to;
    }
    return sum;
}

void Poly::Center(double& X, double& Y) const
{
    const Entry entry("Tesk::Poly::Center");
    if (Refuses(entry, asPolygon)) return;
    double x = 0, y = 0;
    for (const XY& p : View()) {
        x += p.X;
        y += p.Y;
    }
    X = x / Length;
    Y = y / Length;
}

} // namespace Tesk
