// The lattice of a DotCode symbol: two vectors at a seed, a walk that fits the cells around each step, and a grid of
// places at the end.
#include "read/matrix/DotLattice.h"

#include "read/matrix/PlaneVectors.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

namespace Tesk::matrix {

namespace {

constexpr std::size_t mostNeighbours = 50;
constexpr int windowReach = 4; ///< cells to each side of a node of the walk
constexpr int stride = 2;
constexpr double leastSquare = 0.85; ///< of the squared area of a cell over that of a square of its sides

/// The affine map by least squares from cells to places.
class CellFit
{
public:
    void Add(double column, double row, XY place)
    {
        ++count_;
        c_ += column;
        r_ += row;
        cc_ += column * column;
        cr_ += column * row;
        rr_ += row * row;
        p_ = p_ + place;
        cp_ = cp_ + column * place;
        rp_ = rp_ + row * place;
    }
    int Count() const { return count_; }
    /// False if the cells are on a line.
    bool Solve(CellMap& map) const
    {
        if (count_ < 3) return false;
        const double n = count_, cc = cc_ - c_ * c_ / n, cr = cr_ - c_ * r_ / n, rr = rr_ - r_ * r_ / n;
        const double determinant = cc * rr - cr * cr;
        if (!(determinant > 1e-6)) return false;
        const XY cp = cp_ - c_ / n * p_, rp = rp_ - r_ / n * p_;
        map.along = 1 / determinant * (rr * cp - cr * rp);
        map.down = 1 / determinant * (cc * rp - cr * cp);
        map.origin = Middle() - (c_ / n * map.along + r_ / n * map.down);
        return true;
    }
    XY Middle() const { return 1.0 / count_ * p_; }
    double Column() const { return c_ / count_; }
    double Row() const { return r_ / count_; }

private:
    int count_ = 0;
    double c_ = 0, r_ = 0, cc_ = 0, cr_ = 0, rr_ = 0;
    XY p_{0, 0}, cp_{0, 0}, rp_{0, 0};
};

bool HasLengths(const CellMap& map, double squaredPitch, double least, double most)
{
    for (const XY v : {map.along, map.down}) {
        const double squared = SquaredLength(v);
        if (!(squared >= least * squaredPitch && squared <= most * squaredPitch)) return false;
    }
    return true;
}

bool IsEven(int column, int row)
{
    return (column + row) % 2 == 0;
}

} // namespace

/// The vectors of a cell, from the neighbours of a dot along the diagonals.
bool DotLattice::FindVectors(const DotField& field, int seed, CellMap& map)
{
    const double pitch = field.SquaredPitch();
    const XY center = field[seed].center;
    std::array<int, mostNeighbours> near;
    const std::size_t found = field.Around(center, 2 * pitch, near);
    std::array<XY, mostNeighbours> vectors;
    std::size_t count = 0;
    for (const int i : std::span(near).first(found)) {
        const XY v = field[i].center - center;
        if (SquaredLength(v) >= pitch / 3) vectors[count++] = v;
    }
    if (count < 3) return false;
    std::sort(vectors.begin(), vectors.begin() + static_cast<std::ptrdiff_t>(count),
              [](XY a, XY b) { return SquaredLength(a) < SquaredLength(b); });
    count = std::min<std::size_t>(count, 4);
    double mean = 0;
    for (std::size_t i = 0; i < count; ++i)
        mean += SquaredLength(vectors[i]) / static_cast<double>(count);
    if (SquaredLength(vectors[0]) < 5 * mean / 6 || SquaredLength(vectors[count - 1]) > 6 * mean / 5) return false;
    XY first = vectors[0], second = vectors[1];
    const auto obliqueness = [&](XY v) { return Cross(first, v) * Cross(first, v) / SquaredLength(v); };
    for (std::size_t i = 2; i < count; ++i)
        if (obliqueness(vectors[i]) > obliqueness(second)) second = vectors[i];
    if (Cross(first, second) > 0) std::swap(first, second);
    map = {center, 0.5 * (first + second), 0.5 * (first - second)};
    return Cross(map.along, map.down) > 0;
}

bool DotLattice::FitAround(const DotField& field, int seed, CellMap& map)
{
    const double pitch = field.SquaredPitch();
    std::array<int, mostNeighbours> near;
    const std::size_t found = field.Around(field[seed].center, 12 * pitch, near);
    for (const int radius : {2, 3}) {
        CellFit fit;
        int odd = 0;
        const double determinant = Cross(map.along, map.down);
        if (!(determinant > 0)) return false;
        for (const int i : std::span(near).first(found)) {
            const XY to = field[i].center - map.origin;
            const auto column = static_cast<int>(std::lround(Cross(to, map.down) / determinant));
            const auto row = static_cast<int>(std::lround(Cross(map.along, to) / determinant));
            if (std::abs(column) > radius || std::abs(row) > radius) continue;
            if (IsEven(column, row))
                fit.Add(column, row, field[i].center);
            else
                ++odd;
        }
        if (fit.Count() < odd || !fit.Solve(map) || !HasLengths(map, pitch, 0.3, 2)) return false;
    }
    return true;
}

bool DotLattice::Grow(const DotField& field, int seed)
{
    CellMap map;
    if (!FindVectors(field, seed, map) || !FitAround(field, seed, map)) {
        // Most seeds of a texture end here: an empty table would cost more than the test.
        isEmpty_ = true;
        return false;
    }
    isEmpty_ = false;
    table_.fill(unseen);
    return Walk(field, map) && extent_.Width() * extent_.Height() >= fewestCells;
}

bool DotLattice::Walk(const DotField& field, const CellMap& map)
{
    tries_.fill(0);
    extent_ = CellExtent();
    walkers_.assign(1, Walker{0, 0, map});
    for (std::size_t i = 0; i < walkers_.size(); ++i) {
        const Walker walker = walkers_[i];
        std::uint8_t& tries = tries_[Index(walker.column, walker.row)];
        if (tries == mostTries) continue;
        CellMap local;
        if (!Visit(field, walker, local)) {
            ++tries;
            continue;
        }
        tries = mostTries;
        Spread(walker, local);
        if (extent_.Width() > longestSide || extent_.Height() > longestSide) return false;
    }
    return true;
}

/// Enters the dots of the window about a node, and fits their map.
bool DotLattice::Visit(const DotField& field, const Walker& walker, CellMap& map)
{
    const double pitch = field.SquaredPitch();
    CellFit fit;
    for (int row = walker.row - windowReach; row <= walker.row + windowReach; ++row)
        for (int column = walker.column - windowReach; column <= walker.column + windowReach; ++column) {
            if (!IsEven(column, row)) continue;
            std::int16_t& entry = table_[Index(column, row)];
            if (entry == unseen) entry = static_cast<std::int16_t>(field.Nearest(walker.map(column, row), pitch / 5));
            if (entry >= 0) fit.Add(column, row, field[entry].center);
        }
    if (!fit.Solve(map) || !HasLengths(map, pitch, 0.2, 2)) return false;
    const double area = Cross(map.along, map.down);
    return leastSquare * SquaredLength(map.along) * SquaredLength(map.down) <= area * area;
}

/// Sends walkers to the neighbours on whose side of the window there are dots.
void DotLattice::Spread(const Walker& walker, const CellMap& map)
{
    bool left = false, right = false, up = false, down = false;
    for (int row = walker.row - windowReach; row <= walker.row + windowReach; ++row)
        for (int column = walker.column - windowReach; column <= walker.column + windowReach; ++column) {
            if (!IsEven(column, row) || !HasDot(column, row)) continue;
            left = left || column < walker.column;
            right = right || column > walker.column;
            up = up || row < walker.row;
            down = down || row > walker.row;
            extent_.left = std::min(extent_.left, column);
            extent_.right = std::max(extent_.right, column);
            extent_.top = std::min(extent_.top, row);
            extent_.bottom = std::max(extent_.bottom, row);
        }
    const auto send = [&](bool wanted, int column, int row) {
        if (wanted && tries_[Index(column, row)] < mostTries) walkers_.push_back({column, row, map});
    };
    send(left, walker.column - stride, walker.row);
    send(right, walker.column + stride, walker.row);
    send(up, walker.column, walker.row - stride);
    send(down, walker.column, walker.row + stride);
}

bool DotLattice::FitNode(const DotField& field, int column, int row, XY& place) const
{
    CellFit fit;
    for (int r = row - windowReach; r <= row + windowReach; ++r)
        for (int c = column - windowReach; c <= column + windowReach; ++c)
            if (IsEven(c, r) && HasDot(c, r)) fit.Add(c - column, r - row, field[At(c, r)].center);
    CellMap map;
    if (fit.Solve(map)) {
        place = map.origin;
        return true;
    }
    if (fit.Count() < 2) return false;
    // Too few to tell directions: those of the pitch would do no better than the middle of the dots.
    place = fit.Middle();
    return true;
}

bool DotLattice::Fit(const DotField& field)
{
    const auto spread = [](int from, int to, std::vector<int>& at) {
        at.clear();
        for (int i = from; i < to; i += nodeDistance)
            at.push_back(i);
        at.push_back(to);
    };
    spread(extent_.left, extent_.right, nodeColumns_);
    spread(extent_.top, extent_.bottom, nodeRows_);
    const std::size_t columns = nodeColumns_.size(), rows = nodeRows_.size();
    nodes_.assign(columns * rows, XY(0, 0));
    fitted_.assign(columns * rows, false);
    for (std::size_t row = 0; row < rows; ++row)
        for (std::size_t column = 0; column < columns; ++column)
            fitted_[row * columns + column] =
                FitNode(field, nodeColumns_[column], nodeRows_[row], nodes_[row * columns + column]);
    for (const std::size_t corner : {std::size_t{0}, columns - 1, (rows - 1) * columns, rows * columns - 1})
        if (!fitted_[corner]) return false;
    FillNodes(fitted_);
    return true;
}

/// Nodes without dots lie between the corners.
void DotLattice::FillNodes(const std::vector<bool>& fitted)
{
    const std::size_t columns = nodeColumns_.size(), rows = nodeRows_.size();
    const XY a = nodes_[0], b = nodes_[columns - 1], c = nodes_[rows * columns - 1], d = nodes_[(rows - 1) * columns];
    for (std::size_t row = 0; row < rows; ++row)
        for (std::size_t column = 0; column < columns; ++column) {
            if (fitted[row * columns + column]) continue;
            const double x = static_cast<double>(nodeColumns_[column] - extent_.left) / (extent_.Width() - 1);
            const double y = static_cast<double>(nodeRows_[row] - extent_.top) / (extent_.Height() - 1);
            nodes_[row * columns + column] = (1 - y) * ((1 - x) * a + x * b) + y * ((1 - x) * d + x * c);
        }
}

XY DotLattice::Place(double column, double row) const
{
    const auto find = [](const std::vector<int>& at, double value, double& share) {
        std::size_t i = 0;
        while (i + 2 < at.size() && value > at[i + 1])
            ++i;
        share = i + 1 < at.size() ? (value - at[i]) / (at[i + 1] - at[i]) : 0;
        return i;
    };
    double x = 0, y = 0;
    const std::size_t columns = nodeColumns_.size();
    const std::size_t i = find(nodeRows_, row, y) * columns + find(nodeColumns_, column, x);
    const XY top = (1 - x) * nodes_[i] + x * nodes_[i + 1];
    const XY bottom = (1 - x) * nodes_[i + columns] + x * nodes_[i + columns + 1];
    return (1 - y) * top + y * bottom;
}

} // namespace Tesk::matrix
