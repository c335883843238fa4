// The inside of polygons and ellipses as runs.
#include "measure/region/PolygonRuns.h"

#include "measure/region/RunLists.h"

#include <cmath>

namespace Tesk::regions {

namespace {

/// Where a side crosses a row, as one number that sorts by row, then by column.
class Crossing
{
public:
    Crossing(int x, int y)
        : key_(static_cast<std::uint32_t>(y - INT16_MIN) << 16 | (static_cast<std::uint32_t>(x - INT16_MIN) & 0xffff))
    {}

    int X() const { return static_cast<int>(key_ & 0xffff) + INT16_MIN; }
    int Y() const { return static_cast<int>(key_ >> 16) + INT16_MIN; }
    bool operator<(const Crossing& other) const { return key_ < other.key_; }

private:
    std::uint32_t key_;
};

/// The column for a quotient: rounded down, but for negative numerators, where the steps lie one pixel further right.
int Column(std::int64_t numerator, std::int64_t divisor)
{
    return static_cast<int>(numerator >= 0 ? numerator / divisor : (numerator - 1) / divisor + 1);
}

void AddCrossings(Site p, Site c, std::vector<Crossing>& crossings)
{
    const std::int64_t dy = p.Y - c.Y;
    if (dy == 1) crossings.emplace_back(c.X, c.Y);
    if (dy == -1) crossings.emplace_back(p.X, p.Y);
    const std::int64_t slope = p.X - c.X, offset = std::int64_t{p.Y} * c.X - std::int64_t{p.X} * c.Y;
    if (dy > 1)
        for (int y = c.Y; y < p.Y; y++)
            crossings.emplace_back(Column(y * slope + offset, dy), y);
    if (dy < -1)
        for (int y = c.Y - 1; y >= p.Y; y--)
            crossings.emplace_back(Column(-(y * slope + offset), -dy), y);
}

} // namespace

void AppendPolygon(std::span<const Site> vertices, int label, RunList& runs)
{
    std::size_t most = 0;
    const auto eachSide = [&](auto f) {
        for (std::size_t i = 0; i < vertices.size(); i++)
            f(vertices[i > 0 ? i - 1 : vertices.size() - 1], vertices[i]);
    };
    eachSide([&](Site p, Site c) { most += static_cast<std::size_t>(std::abs(p.Y - c.Y)); });
    std::vector<Crossing> crossings;
    crossings.reserve(most);
    eachSide([&](Site p, Site c) { AddCrossings(p, c, crossings); });
    std::sort(crossings.begin(), crossings.end());
    for (std::size_t i = 0; i + 1 < crossings.size(); i += 2)
        runs.push_back(MakeRun(crossings[i].X(), crossings[i + 1].X(), crossings[i].Y(), label));
}

void AppendEllipse(XY center, XY axis, double angle, RunList& runs)
{
    const double a = axis.X, b = axis.Y, cosine = std::cos(angle), sine = std::sin(angle);
    const double d = Sqr(b * cosine) + Sqr(a * sine), h = std::floor(std::sqrt(d));
    if (!(d > 0)) return;
    double y = std::floor(center.Y - h);
    for (double i = -h; i <= h; i++) {
        const double p = i * (b * b - a * a) * sine * cosine / d;
        const double q = (i * i * (Sqr(b * sine) + Sqr(a * cosine)) - a * a * b * b) / d + 1;
        const double discriminant = p * p - q;
        if (!(discriminant >= 0)) continue;
        // The larger root first: the smaller one would be a difference of almost equal numbers.
        const double large = -p - (p < 0 ? -1 : 1) * std::sqrt(discriminant), other = large == 0 ? 0 : q / large;
        y++;
        if (y < INT16_MIN || y > INT16_MAX) continue;
        const double start = Max<double>(std::floor(center.X + Min(large, other) + 0.5), INT16_MIN),
                     end = Min<double>(std::floor(center.X + Max(large, other) + 0.5) + 1, INT16_MAX);
        if (start < end) runs.push_back(MakeRun(static_cast<int>(start), static_cast<int>(end), static_cast<int>(y)));
    }
}

} // namespace Tesk::regions
