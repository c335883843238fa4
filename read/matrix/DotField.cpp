// The dots of an image: spots against their surroundings, those of the usual size, their pitch, and a hash table.
#include "read/matrix/DotField.h"

#include "image/filter/LocalMeans.h"
#include "read/matrix/PlaneVectors.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

namespace Tesk::matrix {

namespace {

constexpr double areaWindow = 2, pitchWindow = 1.41;
/// A dot's neighbour lies within so many of its widths.
constexpr double nearestReach = 4;
constexpr std::size_t bucketCount = 16384;

/// The value about which most of the sorted values lie, within a window of that ratio; the first of equals.
std::size_t Densest(const std::vector<double>& sorted, double ratio)
{
    const double root = std::sqrt(ratio);
    std::size_t best = 0, most = 0, from = 0, to = 0;
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        while (sorted[from] * root < sorted[i])
            ++from;
        while (to < sorted.size() && sorted[to] <= sorted[i] * root)
            ++to;
        if (to - from <= most) continue;
        most = to - from;
        best = i;
    }
    return best;
}

} // namespace

void Deformation::Set(XY x, XY y)
{
    x_ = x;
    y_ = y;
    if (!(std::abs(Determinant()) > 1e-12 && std::isfinite(Determinant()))) {
        x_ = XY(1, 0);
        y_ = XY(0, 1);
    }
}

bool DotField::Find(const Image& gray, CodePolarities polarity, const Deformation& deformation, const DotRules& rules)
{
    rules_ = rules;
    return FindSpots(gray, polarity, deformation) && KeepTypical() && FindPitch();
}

bool DotField::FindSpots(const Image& gray, CodePolarities polarity, const Deformation& deformation)
{
    const int width = gray.Width, height = gray.Height;
    if (means_.Fit(width, height, Gray) != NoError) throw std::bad_alloc();
    filters::BoxMeans(gray, rules_.boxSize, rules_.boxSize, means_);
    const int leastContrast = rules_.leastContrast;
    dark_.resize(static_cast<std::size_t>(width) + 1);
    labels_.Clear();
    spots_.clear();
    above_.clear();
    for (int y = 0; y < height; ++y) {
        const std::uint8_t *s = gray.Row(y), *mean = means_.Row(y);
        for (int x = 0; x < width; ++x)
            dark_[static_cast<std::size_t>(x)] =
                polarity == WhiteOnBlack ? s[x] >= mean[x] + leastContrast : s[x] + leastContrast < mean[x];
        dark_.back() = 0;
        LabelRow(dark_.data(), width, y);
    }
    return TakeSpots(width, height, deformation);
}

/// Gives each run of a row the label of the runs above that it touches, and adds it to the spot.
void DotField::LabelRow(const std::uint8_t* dark, int width, int y)
{
    row_.clear();
    std::size_t above = 0;
    for (int x = 0; x < width; ++x) {
        if (dark[x] == 0) continue;
        Run run{x, x, -1};
        while (dark[x] != 0)
            ++x;
        run.end = x;
        while (above < above_.size() && above_[above].end <= run.first)
            ++above;
        for (std::size_t i = above; i < above_.size() && above_[i].first < run.end; ++i)
            if (run.label < 0)
                run.label = labels_.Root(above_[i].label);
            else
                Join(run.label, above_[i].label);
        if (run.label < 0) {
            run.label = labels_.Add();
            spots_.push_back({.left = run.first, .right = run.end, .top = y, .bottom = y + 1});
        }
        run.label = labels_.Root(run.label);
        Spot& spot = spots_[static_cast<std::size_t>(run.label)];
        const int count = run.end - run.first;
        spot.area += count;
        spot.sumX += std::int64_t{count} * (run.first + run.end - 1); // twice
        spot.sumY += std::int64_t{count} * y;
        spot.left = std::min(spot.left, run.first);
        spot.right = std::max(spot.right, run.end);
        spot.bottom = y + 1;
        row_.push_back(run);
    }
    above_.swap(row_);
}

void DotField::Join(int a, int b)
{
    a = labels_.Root(a);
    b = labels_.Root(b);
    if (a == b) return;
    const int kept = labels_.Unite(a, b), gone = std::max(a, b);
    Spot& spot = spots_[static_cast<std::size_t>(kept)];
    Spot& other = spots_[static_cast<std::size_t>(gone)];
    spot.area += other.area;
    spot.sumX += other.sumX;
    spot.sumY += other.sumY;
    spot.left = std::min(spot.left, other.left);
    spot.right = std::max(spot.right, other.right);
    spot.top = std::min(spot.top, other.top);
    spot.bottom = std::max(spot.bottom, other.bottom);
    other.area = 0;
}

bool DotField::TakeSpots(int width, int height, const Deformation& deformation)
{
    dots_.clear();
    for (const Spot& spot : spots_) {
        if (spot.area < rules_.leastArea) continue;
        if (spot.left == 0 || spot.top == 0 || spot.right == width || spot.bottom == height) continue;
        const int w = spot.right - spot.left, h = spot.bottom - spot.top;
        if (w > 2 * h || h > 2 * w || std::int64_t{w} * h > 2 * std::int64_t{spot.area}) continue;
        if (dots_.size() == mostDots) return false;
        Dot dot;
        dot.area = spot.area;
        dot.boxWidth = w;
        dot.boxHeight = h;
        const double area = spot.area;
        dot.center =
            deformation.Undo(XY(static_cast<double>(spot.sumX) / (2 * area), static_cast<double>(spot.sumY) / area));
        dots_.push_back(dot);
    }
    return dots_.size() >= fewestDots;
}

bool DotField::IsUsual(double value, double usual) const
{
    return value >= rules_.smallestShare * usual && value <= rules_.largestShare * usual;
}

bool DotField::KeepTypical()
{
    std::sort(dots_.begin(), dots_.end(), [](const Dot& a, const Dot& b) { return a.area < b.area; });
    sorted_.clear();
    for (const Dot& dot : dots_)
        sorted_.push_back(dot.area);
    const Dot typical = dots_[Densest(sorted_, areaWindow)];
    std::erase_if(
        dots_, [&](const Dot& dot) { return !IsUsual(dot.area, typical.area) || !IsUsual(dot.Box(), typical.Box()); });
    return dots_.size() >= fewestDots;
}

bool DotField::FindPitch()
{
    double box = 0;
    for (const Dot& dot : dots_)
        box = std::max(box, static_cast<double>(dot.Box()));
    const double reach = nearestReach * std::sqrt(box);
    Hash(reach);
    sorted_.clear();
    for (std::size_t i = 0; i < dots_.size(); ++i) {
        Dot& dot = dots_[i];
        dot.nearest = std::numeric_limits<double>::max();
        EachNear(dot.center, reach * reach, [&](int other, double squared) {
            if (other != static_cast<int>(i)) dot.nearest = std::min(dot.nearest, squared);
        });
        if (dot.nearest <= reach * reach && dot.nearest > 0) sorted_.push_back(dot.nearest);
    }
    if (sorted_.size() < fewestDots) return false;
    std::sort(sorted_.begin(), sorted_.end());
    squaredPitch_ = sorted_[Densest(sorted_, pitchWindow)];
    Hash(std::ceil(std::sqrt(squaredPitch_)));
    return true;
}

std::size_t DotField::Bucket(std::int64_t column, std::int64_t row) const
{
    const auto mixed = static_cast<std::uint64_t>(column) * 0x9E3779B1u + static_cast<std::uint64_t>(row) * 0x85EBCA77u;
    return static_cast<std::size_t>(mixed >> 7) % bucketCount;
}

void DotField::Hash(double cell)
{
    cell_ = cell;
    buckets_.assign(bucketCount, -1);
    for (std::size_t i = 0; i < dots_.size(); ++i) {
        Dot& dot = dots_[i];
        int& first = buckets_[Bucket(std::llround(std::floor(dot.center.X / cell_)),
                                     std::llround(std::floor(dot.center.Y / cell_)))];
        dot.next = first;
        first = static_cast<int>(i);
    }
}

/// Calls `f(dot, squared distance)` for the free dots within reach.
template <typename F>
void DotField::EachNear(XY place, double squaredReach, F f) const
{
    const double reach = std::sqrt(squaredReach);
    const auto cellOf = [&](double at) { return std::llround(std::floor(at / cell_)); };
    const auto left = cellOf(place.X - reach), right = cellOf(place.X + reach);
    const auto top = cellOf(place.Y - reach), bottom = cellOf(place.Y + reach);
    for (auto row = top; row <= bottom; ++row)
        for (auto column = left; column <= right; ++column)
            for (int i = buckets_[Bucket(column, row)]; i >= 0; i = (*this)[i].next) {
                const Dot& dot = (*this)[i];
                const bool isHere = cellOf(dot.center.X) == column && cellOf(dot.center.Y) == row;
                const double squared = SquaredLength(dot.center - place);
                if (isHere && !dot.used && squared <= squaredReach) f(i, squared);
            }
}

int DotField::Nearest(XY place, double squaredReach) const
{
    int nearest = -1;
    double least = squaredReach;
    EachNear(place, squaredReach, [&](int i, double squared) {
        if (nearest >= 0 && squared >= least) return;
        nearest = i;
        least = squared;
    });
    return nearest;
}

std::size_t DotField::Around(XY place, double squaredReach, std::span<int> found) const
{
    std::size_t count = 0;
    EachNear(place, squaredReach, [&](int i, double) {
        if (count < found.size()) found[count++] = i;
    });
    return count;
}

} // namespace Tesk::matrix
