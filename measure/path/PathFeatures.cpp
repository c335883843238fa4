// The size of a path, the moments of its inside, and the gray values along it.
#include "measure/Path.h"

#include "foundation/Angles.h"
#include "image/Histogram.h"
#include "image/Image.h"
#include "measure/path/PathMoments.h"

#include <algorithm>
#include <cstdlib>

namespace Tesk {

using namespace paths;

namespace {

/// `f(site, value)` for the sites of a path that lie in the window of a gray image.
template <typename F>
void EachPixel(std::span<const Site> sites, int orgX, int orgY, const Image& src, F f)
{
    const std::int64_t offsetX = std::int64_t{orgX} - src.X, offsetY = std::int64_t{orgY} - src.Y;
    for (const Site site : sites) {
        const std::int64_t x = site.X + offsetX, y = site.Y + offsetY;
        if (x >= 0 && y >= 0 && x < src.Width && y < src.Height) f(site, src.Row(static_cast<int>(y))[x]);
    }
}

} // namespace

int Path::Area() const
{
    const Entry entry("Tesk::Path::Area");
    return entry.Refuses(CheckSites()) ? 0 : Saturated(TwiceArea(View()) >> 1);
}

double Path::Perimeter(bool Euclidean) const
{
    const Entry entry("Tesk::Path::Perimeter");
    if (entry.Refuses(CheckSites())) return 0;
    const std::span<const Site> sites = View();
    if (Euclidean) return static_cast<double>(PerimeterOf(sites));
    std::int64_t sum = 0;
    Site from = sites.back();
    for (const Site to : sites) {
        sum += Max(std::abs(to.X - from.X), std::abs(to.Y - from.Y));
        from = to;
    }
    return static_cast<double>(sum);
}

void Path::Center(double& X, double& Y) const
{
    const Entry entry("Tesk::Path::Center");
    if (entry.Refuses(CheckSites())) return;
    std::int64_t x = 0, y = 0;
    for (const Site site : View()) {
        x += site.X;
        y += site.Y;
    }
    X = static_cast<double>(x) / Length;
    Y = static_cast<double>(y) / Length;
}

bool Path::FilledCenter(int& Area, double& X, double& Y) const
{
    const Entry entry("Tesk::Path::FilledCenter");
    if (entry.Refuses(CheckSites())) return false;
    const PolygonMoments moments = MomentsOf(View());
    Area = Saturated(std::abs(moments.Twice) / 2);
    if (moments.IsFlat()) return false;
    X = moments.Center().X;
    Y = moments.Center().Y;
    return true;
}

bool Path::FilledEllipse(int& Area, double& X, double& Y, double& Width, double& Height, double& Angle,
                         double& Eccentricity) const
{
    const Entry entry("Tesk::Path::FilledEllipse");
    if (entry.Refuses(CheckSites())) return false;
    const PolygonMoments m = MomentsOf(View());
    Area = Saturated(std::abs(m.Twice) / 2);
    if (m.IsFlat()) return false;
    const double n = m.Area();
    const double a = n * m.XX - m.X * m.X, b = n * m.XY_ - m.X * m.Y, c = n * m.YY - m.Y * m.Y;
    const double half = std::hypot(2 * b, a - c);
    // A path that crosses itself may have negative moments.
    const double major = Max(0.0, (a + c + half) / 2), minor = Max(0.0, (a + c - half) / 2);
    X = m.Center().X;
    Y = m.Center().Y;
    Width = 4 * std::sqrt(major) / n;
    Height = 4 * std::sqrt(minor) / n;
    Angle = half > 0 ? 0 - ToDegrees(std::atan2(2 * b, a - c) / 2) : 0;
    Eccentricity = major > 0 ? std::sqrt(1 - Sqr(minor / major)) : 0;
    return true;
}

int Path::Mass(const Image& Src) const
{
    const Entry entry("Tesk::Path::Mass");
    if (entry.Refuses(CheckSites()) || entry.Refuses(CheckImage(Src, Gray))) return 0;
    std::int64_t mass = 0;
    EachPixel(View(), OrgX, OrgY, Src, [&](Site, int value) { mass += value; });
    return Saturated(mass);
}

bool Path::Centroid(const Image& Src, int& Mass, double& X, double& Y) const
{
    const Entry entry("Tesk::Path::Centroid");
    if (entry.Refuses(CheckSites()) || entry.Refuses(CheckImage(Src, Gray))) return false;
    std::int64_t mass = 0, x = 0, y = 0;
    EachPixel(View(), OrgX, OrgY, Src, [&](Site site, int value) {
        mass += value;
        x += std::int64_t{value} * site.X;
        y += std::int64_t{value} * site.Y;
    });
    Mass = Saturated(mass);
    if (mass == 0) return false;
    X = static_cast<double>(x) / static_cast<double>(mass);
    Y = static_cast<double>(y) / static_cast<double>(mass);
    return true;
}

void Path::GrayHistogram(const Image& Src, Histogram& Dst, bool Clear) const
{
    const Entry entry("Tesk::Path::GrayHistogram");
    if (entry.Refuses(CheckSites()) || entry.Refuses(CheckImage(Src, Gray))) return;
    constexpr int levels = 256;
    if (!Dst.SetUp(entry, Gray, levels, Clear)) return;
    std::int32_t* counts = Dst.Samples();
    EachPixel(View(), OrgX, OrgY, Src, [&](Site, int value) {
        if (counts[value] < INT32_MAX) counts[value]++;
    });
}

} // namespace Tesk
