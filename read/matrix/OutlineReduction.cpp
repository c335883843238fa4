// A hull reduced to the quadrilateral of a symbol, and its sides moved to where the border is strongest.
#include "measure/fit/PointHull.h"
#include "read/matrix/Outline.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace Tesk::matrix {

namespace {

constexpr int slideFraction = 18;

XY At(Site site)
{
    return XY(site.X, site.Y);
}

Site Rounded(XY place)
{
    return Site(static_cast<int>(std::lround(place.X)), static_cast<int>(std::lround(place.Y)));
}

/// A vertex of the hull, with what the moves that begin at it would change.
struct Vertex
{
    Site site;
    int cost = 0;            ///< of the edge that leaves it
    int drop = 0;            ///< the change of the total cost if the next vertex is dropped
    int replace = INT32_MAX; ///< if an intersection replaces the next two
    Site meet{0, 0};
    bool known = false;
};

class HullReduction
{
public:
    HullReduction(std::span<const Site> hull, const EdgeCosts& costs) : costs_(costs)
    {
        for (const Site site : hull)
            vertices_.push_back({site});
        for (std::size_t i = 0; i < vertices_.size(); ++i)
            vertices_[i].cost = costs.Along(At(i), At(i + 1));
    }

    Quadrilateral Reduce()
    {
        while (vertices_.size() > 4)
            Step();
        return {At(0), At(1), At(2), At(3)};
    }

private:
    Vertex& V(std::size_t i) { return vertices_[i % vertices_.size()]; }
    Site At(std::size_t i) const { return vertices_[i % vertices_.size()].site; }

    void Step()
    {
        std::size_t best = 0;
        int least = INT32_MAX;
        bool replaces = false;
        for (std::size_t i = 0; i < vertices_.size(); ++i) {
            if (!hulls::IsCorner(At(i), At(i + 1), At(i + 2))) {
                Drop(i);
                return;
            }
            if (!V(i).known) Weigh(i);
            for (const bool second : {false, true})
                if (const int change = second ? V(i).replace : V(i).drop; change < least) {
                    least = change;
                    best = i;
                    replaces = second;
                }
        }
        if (replaces) {
            const Site meet = V(best).meet;
            V(best + 1).site = meet;
            V(best + 1).cost = costs_.Along(meet, At(best + 3));
            V(best).cost = costs_.Along(At(best), meet);
            Erase(best + 2);
        } else {
            Drop(best);
        }
    }

    void Weigh(std::size_t i)
    {
        Vertex& vertex = V(i);
        const Site a = At(i), b = At(i + 1), c = At(i + 2), d = At(i + 3);
        const int ab = vertex.cost, bc = V(i + 1).cost, cd = V(i + 2).cost;
        vertex.drop = costs_.Along(a, c) - ab - bc;
        vertex.replace = INT32_MAX;
        vertex.known = true;
        XY meet;
        if (!Intersect(matrix::At(a), matrix::At(b), matrix::At(c), matrix::At(d), meet) || !costs_.Holds(meet)) return;
        vertex.meet = Rounded(meet);
        const int apart = SquaredLength(b, c);
        if (SquaredLength(vertex.meet, b) >= apart || SquaredLength(vertex.meet, c) >= apart) return;
        vertex.replace = costs_.Along(a, vertex.meet) + costs_.Along(vertex.meet, d) - ab - bc - cd;
    }

    void Drop(std::size_t i)
    {
        V(i).cost = costs_.Along(At(i), At(i + 2));
        Erase(i + 1);
    }

    void Erase(std::size_t i)
    {
        const std::size_t n = vertices_.size();
        for (std::size_t k = n - 4; k < n + 2; ++k)
            V(i + k).known = false;
        vertices_.erase(vertices_.begin() + static_cast<std::ptrdiff_t>(i % n));
    }

    const EdgeCosts& costs_;
    std::vector<Vertex> vertices_;
};

/// The places to which the end of a side may slide along its neighbour, which comes from `other`.
void Slides(Site other, Site end, const EdgeCosts& costs, std::vector<Site>& places)
{
    places.clear();
    const XY along = At(end) - At(other);
    const double longest = std::max(std::abs(along.X), std::abs(along.Y));
    const int reach = static_cast<int>(longest) / slideFraction;
    for (int k = -reach; k <= reach; ++k) {
        const XY place = At(end) + (longest > 0 ? k / longest : 0.0) * along;
        if (costs.Holds(place)) places.push_back(Rounded(place));
    }
}

} // namespace

Quadrilateral ReduceHull(std::span<const Site> hull, const EdgeCosts& costs)
{
    return HullReduction(hull, costs).Reduce();
}

Quadrilateral RefineSides(const Quadrilateral& outline, const EdgeCosts& costs)
{
    std::array<std::array<Site, 2>, 4> sides;
    std::vector<Site> begins, ends;
    for (std::size_t i = 0; i < 4; ++i) {
        const Site from = outline[i], to = outline[(i + 1) % 4];
        Slides(outline[(i + 3) % 4], from, costs, begins);
        Slides(outline[(i + 2) % 4], to, costs, ends);
        sides[i] = {from, to};
        int least = INT32_MAX;
        for (const Site begin : begins)
            for (const Site end : ends)
                if (const int cost = costs.Of(begin, end); cost < least) {
                    least = cost;
                    sides[i] = {begin, end};
                }
    }
    Quadrilateral refined = outline;
    for (std::size_t i = 0; i < 4; ++i) {
        const auto& [a, b] = sides[(i + 3) % 4];
        const auto& [c, d] = sides[i];
        XY meet;
        if (!Intersect(At(a), At(b), At(c), At(d), meet)) continue;
        refined[i] = Rounded(
            {std::clamp(meet.X, 0.0, costs.Gray().Width - 1.0), std::clamp(meet.Y, 0.0, costs.Gray().Height - 1.0)});
    }
    return refined;
}

} // namespace Tesk::matrix
