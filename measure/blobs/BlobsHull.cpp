// The convex hull of a blob, and the boxes that its edges span.
#include "measure/blobs/BlobMeasures.h"

#include <cmath>
#include <cstdlib>
#include <numbers>

namespace Tesk::blobs {

namespace {

constexpr double pi = std::numbers::pi;

/// An edge of a hull and the corner farthest from it.
struct Caliper
{
    std::size_t from = 0, to = 0, far = 0;
    double width = 0;
};

/// The first edge across which the hull is smallest, or largest; false if the hull is a single corner.
bool FindCaliper(const std::vector<Site>& hull, bool largest, Caliper& best)
{
    const std::size_t n = hull.size();
    std::size_t far = 0;
    bool found = false;
    for (std::size_t q = 0, p = n - 1; q < n; p = q++) {
        const std::int64_t dx = hull[q].X - hull[p].X, dy = hull[q].Y - hull[p].Y;
        if (dx == 0 && dy == 0) return false;
        const auto distance = [&](std::size_t k) {
            return (hull[k].X - hull[p].X) * dy - (hull[k].Y - hull[p].Y) * dx;
        };
        std::int64_t f = distance(far);
        for (std::size_t steps = 0; steps < n; steps++) {
            const std::size_t next = far + 1 < n ? far + 1 : 0;
            const std::int64_t further = distance(next);
            if (further <= f) break;
            far = next;
            f = further;
        }
        const double width = static_cast<double>(f) / std::sqrt(static_cast<double>(dx * dx + dy * dy));
        if (found && !(largest ? width > best.width : width < best.width)) continue;
        found = true;
        best = {p, q, far, width};
    }
    return true;
}

/// The corners of smallest and largest projection on an edge.
void FindEnds(const std::vector<Site>& hull, Site p, Site q, std::size_t& least, std::size_t& most)
{
    least = most = 0;
    std::int64_t low = INT64_MAX, high = INT64_MIN;
    for (std::size_t k = 0; k < hull.size(); k++) {
        const std::int64_t along =
            std::int64_t{hull[k].X - p.X} * (q.X - p.X) + std::int64_t{hull[k].Y - p.Y} * (q.Y - p.Y);
        if (along < low) {
            low = along;
            least = k;
        }
        if (along > high) {
            high = along;
            most = k;
        }
    }
}

/// The box on the edge across which the hull is smallest, or largest: its center, its longer and its shorter side, the
/// angle of the longer one, and the ratio of the two.
bool CaliperBox(Workplace& work, const Subject& blob, bool largest, double* values)
{
    FindHull(work, blob.runs);
    const std::vector<Site>& hull = work.hull;
    if (hull.empty()) return false;
    Caliper caliper;
    if (!FindCaliper(hull, largest, caliper)) {
        const Site corner = largest ? hull.front() : hull.back();
        values[0] = corner.X * work.scale;
        values[1] = corner.Y * work.scale;
        values[2] = values[3] = values[4] = values[5] = 0;
        return true;
    }
    const Site p = hull[caliper.from], q = hull[caliper.to];
    std::size_t least = 0, most = 0;
    FindEnds(hull, p, q, least, most);
    double a = std::atan2(q.X - p.X, q.Y - p.Y);
    if (a < 0) a += pi;
    const double c = std::cos(a), n = std::sin(a);
    const auto u = [c, n](Site s) { return s.X * c - s.Y * n; };
    const auto v = [c, n](Site s) { return s.Y * c + s.X * n; };
    const Site far = hull[caliper.far];
    double width = std::abs(u(far) - u(q)), height = std::abs(v(hull[most]) - v(hull[least]));
    const double mu = (u(far) + u(q)) / 2, mv = (v(hull[most]) + v(hull[least])) / 2;
    if (height > width) {
        std::swap(width, height);
        a = a > pi / 2 ? a - pi / 2 : a + pi / 2;
    }
    values[0] = (mu * c + mv * n) * work.scale;
    values[1] = (-mu * n + mv * c) * work.scale;
    values[2] = width * work.scale;
    values[3] = height * work.scale;
    values[4] = a * 180 / pi;
    values[5] = width == 0 ? 0 : height / width;
    return true;
}

} // namespace

void FindHull(Workplace& work, std::span<const LabeledRun> runs)
{
    work.chains.Assign(runs);
    work.chains.Convexify();
    work.chains.Hull(work.hull);
}

bool ConvexArea(Workplace& work, const Subject& blob, double* values)
{
    FindHull(work, blob.runs);
    const std::vector<Site>& hull = work.hull;
    std::int64_t twice = 0;
    for (std::size_t i = 0, before = hull.size() - 1; i < hull.size(); before = i++)
        twice += std::int64_t{hull[before].X} * hull[i].Y - std::int64_t{hull[before].Y} * hull[i].X;
    values[0] = static_cast<double>(std::abs(twice >> 1));
    return true;
}

bool ConvexPerimeter(Workplace& work, const Subject& blob, double* values)
{
    FindHull(work, blob.runs);
    const std::vector<Site>& hull = work.hull;
    double length = 0;
    for (std::size_t i = 0, before = hull.size() - 1; i < hull.size(); before = i++) {
        const double dx = hull[i].X - hull[before].X, dy = hull[i].Y - hull[before].Y;
        length += std::trunc(std::sqrt(dx * dx + dy * dy));
    }
    values[0] = length;
    return true;
}

bool ConvexPerimeterRatio(Workplace&, const Subject& blob, double* values)
{
    const auto perimeter = static_cast<float>(blob.needed[0]);
    values[0] = perimeter == 0 ? 0 : static_cast<float>(blob.needed[1]) / perimeter;
    return true;
}

bool FeretBox(Workplace& work, const Subject& blob, double* values)
{
    return CaliperBox(work, blob, false, values);
}

bool DiametralBox(Workplace& work, const Subject& blob, double* values)
{
    return CaliperBox(work, blob, true, values);
}

} // namespace Tesk::blobs
