// The smallest shapes around a path.
#include "measure/Path.h"

#include "foundation/Angles.h"
#include "measure/fit/PointHull.h"
#include "measure/fit/PointShape.h"
#include "measure/path/PathFrame.h"

#include <algorithm>

namespace Tesk {

using namespace paths;

namespace {

int CheckLength(int length)
{
    return length < 1 ? Status::Format(VoidObject, L"This Path is void") : NoError;
}

} // namespace

std::vector<XY> Path::Hull(bool simple) const
{
    std::vector<XY> corners;
    for (const Site site : hulls::HullOf(View(), simple))
        corners.emplace_back(site.X, site.Y);
    return corners;
}

void Path::Box(int& X, int& Y, int& Width, int& Height) const
{
    const Entry entry("Tesk::Path::Box");
    if (entry.Refuses(CheckSites())) return;
    const std::span<const Site> sites = View();
    int left = sites[0].X, right = left, top = sites[0].Y, bottom = top;
    for (const Site site : sites) {
        left = Min<int>(left, site.X);
        right = Max<int>(right, site.X);
        top = Min<int>(top, site.Y);
        bottom = Max<int>(bottom, site.Y);
    }
    X = left;
    Y = top;
    Width = right - left;
    Height = bottom - top;
}

void Path::Rectangle(double& Xc, double& Yc, double& Width, double& Height, double& Angle, bool Simple) const
{
    const Entry entry("Tesk::Path::Rectangle");
    if (entry.Refuses(CheckLength(Length))) return;
    entry.Refuses(Allocating([&] {
        const shapes::Rectangle found = shapes::SmallestRectangle(Hull(Simple));
        Xc = found.Center.X;
        Yc = found.Center.Y;
        Width = found.Width;
        Height = found.Height;
        Angle = ToDegrees(found.Angle);
    }));
}

void Path::Parallelogram(XY& P, XY& Q, XY& R, bool Simple) const
{
    const Entry entry("Tesk::Path::Parallelogram");
    if (entry.Refuses(CheckLength(Length))) return;
    entry.Refuses(Allocating([&] {
        const shapes::Parallelogram found = shapes::SmallestParallelogram(Hull(Simple));
        P = found.P;
        Q = found.Q;
        R = found.R;
    }));
}

void Path::Circle(double& Xc, double& Yc, double& Radius, bool Simple) const
{
    const Entry entry("Tesk::Path::Circle");
    if (entry.Refuses(CheckLength(Length))) return;
    entry.Refuses(Allocating([&] {
        const shapes::Circle found = shapes::SmallestCircle(Hull(Simple));
        Xc = found.Center.X;
        Yc = found.Center.Y;
        Radius = found.Radius;
    }));
}

void Path::ConvexHull(Path& Dst, bool Simple) const
{
    const Entry entry("Tesk::Path::ConvexHull");
    if (entry.Refuses(CheckSites())) return;
    entry.Refuses(Allocating([&] { Dst.Take(hulls::HullOf(View(), Simple), true, OrgX, OrgY); }));
}

} // namespace Tesk
