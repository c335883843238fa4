// The lattice of a calibration target: one cross of dots is found, and grows from dot to dot, so that it follows a
// distortion.
#include "image/geometry/GeometryTarget.h"

#include "foundation/Status.h"
#include "image/geometry/GeometryModel.h"

#include <algorithm>
#include <array>
#include <utility>

namespace Tesk::targets {

namespace {

/// The places of a cross in lattice numbers: the dot itself, then its neighbours.
constexpr int places = 5;
constexpr std::array<std::array<int, 2>, places> offsets = {{{0, 0}, {1, 0}, {0, 1}, {-1, 0}, {0, -1}}};

/// Indices of dots at the places of a cross.
using Cross = std::array<int, places>;

/// A straight map from the image to lattice numbers.
using Map = models::Coefficients;

XY Apply(const Map& map, const XY& p)
{
    return models::Map(Affinity, map, p);
}

/// The dots in square cells, each of which holds one or so.
class DotGrid
{
public:
    explicit DotGrid(std::span<const XY> dots) : dots_(dots)
    {
        XY last = corner_ = dots[0];
        for (const XY& p : dots) {
            corner_ = {Min(corner_.X, p.X), Min(corner_.Y, p.Y)};
            last = {Max(last.X, p.X), Max(last.Y, p.Y)};
        }
        const double w = last.X - corner_.X, h = last.Y - corner_.Y, n = static_cast<double>(dots.size());
        cell_ = Max(std::sqrt(w * h / n), Max(w, h) / n);
        if (!(cell_ > 0)) cell_ = 1;
        columns_ = static_cast<int>(w / cell_) + 1;
        rows_ = static_cast<int>(h / cell_) + 1;
        Sort();
    }

    /// Calls `f` with the index of each dot in the cells that meet a box.
    template <typename F>
    void Visit(XY low, XY high, F f) const
    {
        const int top = Row(low.Y), bottom = Row(high.Y), left = Column(low.X), right = Column(high.X);
        for (int r = top; r <= bottom; r++)
            VisitCells(r, left, right, f);
    }

    /// The four dots nearest to one, nearest first; false if there are no four.
    bool Nearest(int dot, std::array<int, 4>& nearest) const
    {
        const XY p = At(dot);
        const int column = Column(p.X), row = Row(p.Y), rings = Max(columns_, rows_);
        std::vector<std::pair<double, int>> found;
        const auto take = [&](int other) {
            const double dx = At(other).X - p.X, dy = At(other).Y - p.Y;
            if (other != dot) found.emplace_back(dx * dx + dy * dy, other);
        };
        for (int ring = 0; ring < rings; ring++) {
            for (int r = row - ring; r <= row + ring; r++) {
                const int step = r == row - ring || r == row + ring ? 1 : 2 * ring;
                for (int c = column - ring; c <= column + ring; c += step)
                    if (r >= 0 && r < rows_ && c >= 0 && c < columns_) VisitCells(r, c, c, take);
            }
            // Dots of the next ring are at least so far away.
            const double far = ring * cell_;
            if (found.size() < nearest.size()) continue;
            std::partial_sort(found.begin(), found.begin() + 4, found.end());
            if (found[3].first < far * far) break;
        }
        if (found.size() < nearest.size()) return false;
        for (std::size_t i = 0; i < nearest.size(); i++)
            nearest[i] = found[i].second;
        return true;
    }

    const XY& At(int dot) const { return dots_[static_cast<std::size_t>(dot)]; }

private:
    int Column(double x) const { return Index(x - corner_.X, columns_); }
    int Row(double y) const { return Index(y - corner_.Y, rows_); }

    int Index(double distance, int count) const
    {
        // What is no number lies in the last cell.
        const double index = distance / cell_;
        return index < count ? static_cast<int>(Max(index, 0.0)) : count - 1;
    }

    std::size_t Cell(int row, int column) const
    {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_) + static_cast<std::size_t>(column);
    }

    template <typename F>
    void VisitCells(int row, int left, int right, F f) const
    {
        for (std::size_t i = first_[Cell(row, left)]; i < first_[Cell(row, right) + 1]; i++)
            f(sorted_[i]);
    }

    /// The dots in the order of their cells.
    void Sort()
    {
        first_.assign(Cell(rows_, 0) + 2, 0);
        for (const XY& p : dots_)
            first_[Cell(Row(p.Y), Column(p.X)) + 2]++;
        for (std::size_t i = 1; i < first_.size(); i++)
            first_[i] += first_[i - 1];
        sorted_.resize(dots_.size());
        for (std::size_t i = 0; i < dots_.size(); i++)
            sorted_[first_[Cell(Row(dots_[i].Y), Column(dots_[i].X)) + 1]++] = static_cast<int>(i);
    }

    std::span<const XY> dots_;
    XY corner_;
    double cell_ = 1;
    int columns_ = 1, rows_ = 1;
    std::vector<std::size_t> first_;
    std::vector<int> sorted_;
};

/// The straight map that brings a cross to its places; false if it is none.
bool FitCross(const DotGrid& grid, const Cross& cross, Map& map)
{
    const auto from = [&](std::size_t i) { return grid.At(cross[i]); };
    const auto to = [](std::size_t i) { return XY(offsets[i][0], offsets[i][1]); };
    if (!models::FitAffine(places, from, to, map)) return false;
    constexpr double loosest = 0.1;
    double sum = 0;
    for (std::size_t i = 0; i < places; i++) {
        const XY p = Apply(map, from(i)), q = to(i);
        sum += (p.X - q.X) * (p.X - q.X) + (p.Y - q.Y) * (p.Y - q.Y);
    }
    return sum < loosest;
}

/// Brings the four neighbours of a dot into the order of a cross: the farthest first, the others by the side of it on
/// which they lie.
Cross Arranged(const DotGrid& grid, int dot, const std::array<int, 4>& nearest)
{
    const XY p0 = grid.At(dot), p1 = grid.At(nearest[3]);
    const auto side = [&](int other) {
        const XY q = grid.At(other);
        return (p1.Y - q.Y) * (p0.X - p1.X) - (p0.Y - p1.Y) * (p1.X - q.X);
    };
    std::array<int, 3> others = {nearest[0], nearest[1], nearest[2]};
    std::sort(others.begin(), others.end(), [&](int a, int b) { return side(a) > side(b); });
    return {dot, nearest[3], others[0], others[1], others[2]};
}

/// The lattice as it grows: each dot may get two numbers.
class Lattice
{
public:
    explicit Lattice(const DotGrid& grid, std::size_t dots) : grid_(grid), numbers_(dots) {}

    struct Numbers
    {
        bool set = false;
        int u = 0, v = 0;
    };
    const std::vector<Numbers>& All() const { return numbers_; }

    /// Numbers what can be reached from a cross, depth first: the map of a dot serves its neighbours.
    void Grow(const Cross& seed, const Map& map)
    {
        for (std::size_t i = 0; i < places; i++)
            Of(seed[i]) = {true, offsets[i][0], offsets[i][1]};
        for (std::size_t i = 1; i < places; i++)
            Follow(seed[i], map);
    }

private:
    struct Visit
    {
        Cross cross{};
        Map map{};
        std::size_t next = 1;
    };

    Numbers& Of(int dot) { return numbers_[static_cast<std::size_t>(dot)]; }

    void Follow(int dot, const Map& map)
    {
        std::vector<Visit> path;
        Enter(path, dot, map);
        while (!path.empty()) {
            Visit& visit = path.back();
            if (visit.next == places) {
                path.pop_back();
                continue;
            }
            const std::size_t place = visit.next++;
            const int neighbour = visit.cross[place];
            if (Of(neighbour).set) continue;
            const Numbers middle = Of(visit.cross[0]);
            Of(neighbour) = {true, middle.u + offsets[place][0], middle.v + offsets[place][1]};
            const Map own = visit.map; // entering may move what stands on the path
            Enter(path, neighbour, own);
        }
    }

    /// Stands at a dot whose neighbours are to be numbered, unless its cross is not complete.
    void Enter(std::vector<Visit>& path, int dot, const Map& map)
    {
        Visit visit;
        const Numbers at = Of(dot);
        if (!Around(at, dot, map, visit.cross) || !FitCross(grid_, visit.cross, visit.map)) return;
        visit.cross[0] = dot;
        visit.map[2] += at.u;
        visit.map[5] += at.v;
        path.push_back(visit);
    }

    /// The dots at the places around a dot by a map; false if one is missing.
    bool Around(const Numbers& at, int dot, const Map& map, Cross& cross) const
    {
        cross.fill(-1);
        std::array<double, places> distances{};
        const XY reach = Reach(map), p = grid_.At(dot);
        grid_.Visit({p.X - reach.X, p.Y - reach.Y}, {p.X + reach.X, p.Y + reach.Y}, [&](int other) {
            const XY q = Apply(map, grid_.At(other));
            const double du = q.X - at.u, dv = q.Y - at.v;
            const auto rounded = [](double v) { return std::trunc(v + 65536.5) - 65536; };
            for (std::size_t i = 0; i < places; i++) {
                const double cu = offsets[i][0], cv = offsets[i][1];
                if (rounded(du) != cu || rounded(dv) != cv) continue;
                const double distance = (du - cu) * (du - cu) + (dv - cv) * (dv - cv);
                if (cross[i] >= 0 && distances[i] <= distance) continue;
                cross[i] = other;
                distances[i] = distance;
            }
        });
        return std::find(cross.begin(), cross.end(), -1) == cross.end();
    }

    /// How far from a dot, along x and y, the places around it may lie: two steps of the lattice, as the map of a
    /// neighbour is off by some.
    static XY Reach(const Map& map)
    {
        constexpr double steps = 2;
        const double area = std::abs(map[0] * map[4] - map[1] * map[3]);
        return {steps * (std::abs(map[4]) + std::abs(map[1])) / area,
                steps * (std::abs(map[3]) + std::abs(map[0])) / area};
    }

    const DotGrid& grid_;
    std::vector<Numbers> numbers_;
};

/// One of the two directions of the lattice: its number as a sum of both, and how that changes along image x and y.
struct Direction
{
    int u, v;
    double alongX, alongY;

    Direction(int wu, int wv, const Map& map)
        : u(wu), v(wv), alongX(wu * map[0] + wv * map[3]), alongY(wu * map[1] + wv * map[4])
    {}

    int Of(const Lattice::Numbers& n) const { return u * n.u + v * n.v; }
};

/// Sets one number of all dots, rising from 1 in the wanted sense.
void SetNumbers(const Lattice& lattice, const Direction& direction, bool rising, std::vector<Dot>& dots,
                int Dot::*number)
{
    std::vector<int> values;
    for (const Lattice::Numbers& n : lattice.All())
        if (n.set) values.push_back(direction.Of(n));
    const auto [smallest, largest] = std::minmax_element(values.begin(), values.end());
    for (std::size_t i = 0; i < values.size(); i++)
        dots[i].*number = 1 + (rising ? values[i] - *smallest : *largest - values[i]);
}

} // namespace

AreaRange CommonAreas(std::vector<int> areas)
{
    std::sort(areas.begin(), areas.end());
    std::size_t best = 0, longest = 0, end = 0;
    for (std::size_t begin = 0; begin < areas.size(); begin++) {
        const auto limit = static_cast<std::int64_t>(2.5 * areas[begin]);
        end = Max(end, begin);
        while (end < areas.size() && areas[end] < limit)
            end++;
        if (end - begin <= longest) continue;
        longest = end - begin;
        best = begin;
    }
    if (longest == 0) return {};
    return {areas[best], areas[best + longest - 1]};
}

int NumberDots(std::span<const XY> centres, bool chessboard, std::vector<Dot>& dots)
{
    if (centres.empty()) return Status::Format(OutOfRange, L"Cannot detect a grid pattern");
    const DotGrid grid(centres);
    Cross cross{};
    Map map{};
    const auto stands = [&](int dot) {
        std::array<int, 4> nearest;
        if (!grid.Nearest(dot, nearest)) return false;
        cross = Arranged(grid, dot, nearest);
        return FitCross(grid, cross, map);
    };
    const int count = static_cast<int>(centres.size());
    int seed = 0;
    while (seed < count && !stands(seed))
        seed++;
    if (seed == count) return Status::Format(OutOfRange, L"Cannot detect a grid pattern");

    Lattice lattice(grid, centres.size());
    lattice.Grow(cross, map);
    std::vector<Dot> numbered;
    for (std::size_t i = 0; i < centres.size(); i++)
        if (lattice.All()[i].set) numbered.push_back({centres[i], 0, 0});

    // The second direction of these two is the columns' where both change alike along x.
    Direction row(1, 0, map), column(0, 1, map);
    if (chessboard) {
        row = Direction(-1, 1, map);
        column = Direction(1, 1, map);
    }
    if (std::abs(row.alongX) > std::abs(column.alongX)) std::swap(row, column);
    SetNumbers(lattice, column, !(column.alongX < 0), numbered, &Dot::column);
    SetNumbers(lattice, row, !(row.alongY < 0), numbered, &Dot::row);
    dots = std::move(numbered);
    return NoError;
}

int Calibrate(std::span<const XY> centres, const Target& target, RegistrationModels model, int width, int height,
              Calibration& calibration)
{
    std::vector<Dot> dots;
    if (const int code = NumberDots(centres, target.chessboard, dots)) return code;
    Calibration found;
    for (const Dot& dot : dots)
        found.anchors.push_back({dot.centre, XY((dot.column - target.origin.X - 1) * target.gridStep,
                                                (dot.row - target.origin.Y - 1) * target.gridStep)});
    if (model >= Translation && model <= Rational) {
        int code = models::RefuseCount(model, found.anchors.size());
        const bool enough = code == NoError;
        if (enough) code = models::FitModel(model, found.anchors, {(width - 1) * 0.5, (height - 1) * 0.5}, found.fit);
        if (code) {
            calibration.anchors = std::move(found.anchors);
            calibration.refusedBy = enough ? "Tesk::Geometry::ModelFit" : "Tesk::Failure";
            return code;
        }
    }
    const auto across = [&](double dx, double dy) {
        const XY a = models::Map(model, found.fit.forward, {width * 0.5 + dx, height * 0.5 + dy}),
                 b = models::Map(model, found.fit.forward, {width * 0.5 - dx, height * 0.5 - dy});
        return XY(a.X - b.X, a.Y - b.Y);
    };
    const XY p = across(lengthInPixels / 2, 0), q = across(0, lengthInPixels / 2);
    found.trueLength = std::sqrt(std::abs(q.X * p.Y - q.Y * p.X));
    calibration = std::move(found);
    return NoError;
}

} // namespace Tesk::targets
