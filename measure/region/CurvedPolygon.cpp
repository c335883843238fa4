// Polygons with straight sides and circular arcs, and their inside as runs.
#include "measure/region/CurvedPolygon.h"

#include "measure/Quad.h"
#include "measure/region/RunLists.h"

#include <cmath>
#include <numbers>
#include <utility>

namespace Tesk::regions {

namespace {

constexpr double quarter = std::numbers::pi / 2, turn = 2 * std::numbers::pi;

/// Quarter turns at which arcs from a full turn below 0 to two above it are cut, so that each has one crossing a row.
constexpr int firstCut = -7, lastCut = 9;

/// A part of an arc between two cuts.
struct Interval
{
    double from, to;

    Interval(double lower, double upper, int cut) : from(Max(lower, (cut - 2) * quarter)), to(Min(upper, cut * quarter))
    {}
    bool IsEmpty() const { return from >= to; }
};

std::vector<CurvedVertex> OutlineOfSector(const Quad& quad)
{
    const double x = quad.X, y = quad.Y, outer = std::abs(quad.Width), inner = std::abs(quad.Width - quad.Height);
    double start = quad.Angle + (quad.Bend > 0 ? -quarter : quarter);
    if (start < -turn) start += turn;
    if (start > turn) start -= turn;
    const double lower = Min(start, start + quad.Bend), upper = Max(start, start + quad.Bend);
    std::vector<CurvedVertex> vertices;
    const auto add = [&](double angle, double radius, double bend) {
        vertices.push_back({x + radius * std::cos(angle), y + radius * std::sin(angle), bend});
    };
    for (int cut = firstCut; cut <= lastCut; cut += 2) {
        const Interval part(lower, upper, cut);
        if (part.IsEmpty()) continue;
        if (vertices.empty()) add(part.from, outer, 0);
        add(part.to, outer, outer);
    }
    if (inner < 1) {
        vertices.push_back({x, y});
        return vertices;
    }
    bool first = true;
    for (int cut = lastCut; cut >= firstCut; cut -= 2) {
        const Interval part(lower, upper, cut);
        if (part.IsEmpty()) continue;
        if (first) add(part.to, inner, 0);
        first = false;
        add(part.from, inner, -inner);
    }
    return vertices;
}

/// A side, or an arc that goes down the one half of its circle.
class Edge
{
public:
    Edge(const CurvedVertex& before, const CurvedVertex& vertex) : upper_(before), lower_(vertex)
    {
        const double dx = before.x - vertex.x, dy = before.y - vertex.y, squared = dx * dx + dy * dy;
        const bool isDown = !(before.y > vertex.y);
        if (!isDown) std::swap(upper_, lower_);
        if (vertex.radius == 0 || squared == 0) return;
        const double h =
            std::copysign(std::sqrt(Max(0.0, vertex.radius * vertex.radius / squared - 0.25)), vertex.radius);
        centerX_ = (before.x + vertex.x) / 2 + h * dy;
        centerY_ = (before.y + vertex.y) / 2 - h * dx;
        radius_ = isDown ? -vertex.radius : vertex.radius;
    }

    double Top() const { return upper_.y; }
    double Bottom() const { return lower_.y; }

    /// The column at which a row between its ends is crossed.
    double At(double y) const
    {
        if (radius_ == 0) return upper_.x + (y - upper_.y) * (lower_.x - upper_.x) / (lower_.y - upper_.y);
        const double dy = centerY_ - y;
        return centerX_ - std::copysign(std::sqrt(std::abs(radius_ * radius_ - dy * dy)), radius_);
    }

private:
    CurvedVertex upper_, lower_;
    double centerX_ = 0, centerY_ = 0, radius_ = 0;
};

/// Joins the crossings of a row in pairs.
void AddRow(std::span<const double> columns, int y, int label, RunList& runs)
{
    const auto held = [](double v) { return static_cast<int>(Clamp<double>(std::floor(v), INT16_MIN, INT16_MAX)); };
    bool open = false;
    for (std::size_t i = 0; i + 1 < columns.size(); i += 2) {
        const int start = held(columns[i]), end = held(std::floor(columns[i + 1]) + 1);
        if (end <= start) continue;
        if (open && start <= runs.back().End)
            runs.back().End = static_cast<std::int16_t>(Max<int>(runs.back().End, end));
        else
            runs.push_back(MakeRun(start, end, y, label));
        open = true;
    }
}

} // namespace

std::vector<CurvedVertex> OutlineOf(const Quad& quad)
{
    if (quad.Bend != 0) return OutlineOfSector(quad);
    const double x = quad.X, y = quad.Y, cosine = std::cos(quad.Angle), sine = std::sin(quad.Angle),
                 alongX = quad.Width * cosine, alongY = quad.Width * sine, acrossX = -quad.Height * sine,
                 acrossY = quad.Height * cosine;
    return {{x, y}, {x + alongX, y + alongY}, {x + alongX + acrossX, y + alongY + acrossY}, {x + acrossX, y + acrossY}};
}

void AppendCurved(std::span<const CurvedVertex> vertices, int label, RunList& runs)
{
    if (vertices.empty()) return;
    std::vector<Edge> edges;
    double top = vertices[0].y, bottom = top;
    for (std::size_t i = 0; i < vertices.size(); i++) {
        edges.emplace_back(vertices[i > 0 ? i - 1 : vertices.size() - 1], vertices[i]);
        top = Min(top, vertices[i].y);
        bottom = Max(bottom, vertices[i].y);
    }
    std::stable_sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) { return a.Top() < b.Top(); });
    const auto held = [](double v) { return static_cast<int>(Clamp<double>(v, INT16_MIN, INT16_MAX + 1)); };
    std::vector<const Edge*> active;
    std::vector<double> columns;
    std::size_t next = 0;
    for (int y = held(std::ceil(top)); y < held(std::floor(bottom)); y++) {
        for (; next < edges.size() && edges[next].Top() <= y; next++)
            active.push_back(&edges[next]);
        std::erase_if(active, [y](const Edge* edge) { return edge->Bottom() <= y; });
        columns.clear();
        for (const Edge* edge : active)
            columns.push_back(edge->At(y));
        std::sort(columns.begin(), columns.end());
        AddRow(columns, y, label, runs);
    }
}

} // namespace Tesk::regions
