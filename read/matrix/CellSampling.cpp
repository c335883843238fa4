// Size and orientation by the lines inside the four sides, and the sampling of cells.
#include "read/matrix/CellSampling.h"

#include "read/codewords/DataMatrixSizes.h"
#include "read/core/BresenhamLine.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace Tesk::matrix {

namespace {

/// What lies along a line half a cell inside a side.
struct BorderLine
{
    std::int64_t total = 0;     ///< of all pixels
    std::int64_t alternate = 0; ///< of the pixels of every second cell, the first one among them
    int length = 1;
};

/// The nearest pixel of `last` + 1, or the one behind an end; not a number counts as the first.
int Pixel(double v, int last)
{
    return v > -1 ? static_cast<int>(std::lround(std::min(v, last + 1.0))) : -1;
}

/// The end of such a line: on the way from a corner to the next one behind it, by half of one of `n` cells.
Site Inside(Site near, Site far, int n)
{
    return {((2 * n - 1) * near.X + far.X + n) / (2 * n), ((2 * n - 1) * near.Y + far.Y + n) / (2 * n)};
}

BresenhamLine LineInside(const Quadrilateral& q, std::size_t side, int n)
{
    const Site from = Inside(q[side], q[(side + 3) % 4], n), to = Inside(q[(side + 1) % 4], q[(side + 2) % 4], n);
    return {from.X, from.Y, to.X, to.Y};
}

BorderLine WalkInside(const Image& work, const Quadrilateral& q, std::size_t side, int inset, int cells)
{
    const BresenhamLine line = LineInside(q, side, inset);
    BorderLine sums;
    sums.length = line.Steps() + 1;
    int counter = 0;
    bool counted = true;
    line.Visit([&](int x, int y) {
        const int value = work.Row(y)[x];
        sums.total += value;
        if (counted) sums.alternate += value;
        counter += cells;
        if (counter >= sums.length) {
            counter -= sums.length;
            counted = !counted;
        }
    });
    return sums;
}

/// A symbol of a size of which corner `first` of an outline is the lower left one.
SymbolLayout Turned(const Quadrilateral& q, std::size_t first, int size, bool longFirst)
{
    const codewords::DataMatrixSize& cells = codewords::DataMatrixSizes()[static_cast<std::size_t>(size)];
    SymbolLayout layout;
    for (std::size_t i = 0; i < 4; ++i)
        layout.corners[i] = q[(first + i) % 4];
    layout.size = static_cast<Sizes>(size);
    layout.exchanged = cells.rows != cells.columns && (first % 2 == 0) != longFirst;
    layout.rows = layout.exchanged ? cells.columns : cells.rows;
    layout.columns = layout.exchanged ? cells.rows : cells.columns;
    return layout;
}

/// The better of the layouts of one size.
void TrySize(const Image& work, const Quadrilateral& q, int size, bool longFirst, SymbolLayout& best)
{
    const codewords::DataMatrixSize& cells = codewords::DataMatrixSizes()[static_cast<std::size_t>(size)];
    const bool square = cells.rows == cells.columns;
    std::array<BorderLine, 4> lines;
    for (std::size_t i = 0; i < 4; ++i) {
        const bool alongShort = !square && (i % 2 == 0) != longFirst;
        lines[i] = alongShort ? WalkInside(work, q, i, cells.columns, cells.rows)
                              : WalkInside(work, q, i, cells.rows, cells.columns);
    }
    std::size_t solid = 0;
    for (std::size_t k = 1; k < 4; ++k)
        if (lines[k].total + lines[(k + 1) % 4].total < lines[solid].total + lines[(solid + 1) % 4].total) solid = k;
    const BorderLine &up = lines[(solid + 2) % 4], &back = lines[(solid + 3) % 4];
    const auto dark = static_cast<double>(up.alternate + back.total - back.alternate);
    const double score = dark / (lines[solid].length + lines[(solid + 1) % 4].length);
    if (score > best.score) return;
    best = Turned(q, solid + 1, size, longFirst);
    best.score = score;
}

bool IsLongFirst(const Quadrilateral& q)
{
    return std::int64_t{SquaredLength(q[0], q[1])} + SquaredLength(q[2], q[3]) >=
           std::int64_t{SquaredLength(q[1], q[2])} + SquaredLength(q[3], q[0]);
}

int LongestSquared(const Quadrilateral& q)
{
    int longest = 0;
    for (std::size_t i = 0; i < 4; ++i)
        longest = std::max(longest, SquaredLength(q[i], q[(i + 1) % 4]));
    return longest;
}

/// Whether the cells of a size have at least 2 pixels on the longest side of an outline.
bool Fits(int size, int longestSquared)
{
    const codewords::DataMatrixSize& cells = codewords::DataMatrixSizes()[static_cast<std::size_t>(size)];
    const int most = 2 * std::max(cells.rows, cells.columns);
    return most * most <= longestSquared;
}

int FirstSize(SizeRange range, bool squareLike)
{
    return squareLike ? range.from : std::max<int>(range.from, Size8x18);
}

} // namespace

bool FindLayout(const Image& work, const Quadrilateral& outline, bool squareLike, SizeRange range, SymbolLayout& layout)
{
    const int longest = LongestSquared(outline);
    const bool longFirst = IsLongFirst(outline);
    layout.score = std::numeric_limits<double>::infinity();
    for (int size = FirstSize(range, squareLike); size <= range.to; ++size)
        if (Fits(size, longest)) TrySize(work, outline, size, longFirst, layout);
    return std::isfinite(layout.score);
}

namespace {

constexpr double mostWrongBorder = 0.2;

/// The share of the outermost cells that are not what they should be.
double WrongBorder(const Image& work, int threshold, const SymbolLayout& layout)
{
    CellPlaces flat;
    flat.inPerspective = true;
    const CellPlane plane(Scaled(layout.corners, 1), flat);
    const int rows = layout.rows, columns = layout.columns;
    int wrong = 0;
    const auto look = [&](int row, int column, bool dark) {
        const XY place = plane((row + 0.5) / rows, (column + 0.5) / columns);
        const int x = Pixel(place.X, work.Width - 1), y = Pixel(place.Y, work.Height - 1);
        const bool isInside = x >= 0 && y >= 0 && x < work.Width && y < work.Height;
        wrong += !isInside || (work.Row(y)[x] < threshold) != dark;
    };
    for (int row = 0; row < rows; ++row) {
        look(row, 0, true);
        look(row, columns - 1, (rows - 1 - row) % 2 == 0);
    }
    for (int column = 1; column + 1 < columns; ++column) {
        look(rows - 1, column, true);
        look(0, column, column % 2 == 0);
    }
    return wrong / (2.0 * (rows + columns - 2));
}

} // namespace

bool FindLayoutByBorders(const Image& work, int threshold, const Quadrilateral& outline, bool squareLike,
                         SizeRange range, SymbolLayout& layout)
{
    const int longest = LongestSquared(outline);
    const bool longFirst = IsLongFirst(outline);
    layout.score = mostWrongBorder;
    bool found = false;
    for (int size = FirstSize(range, squareLike); size <= range.to; ++size) {
        for (std::size_t k = 0; k < 4 && Fits(size, longest); ++k) {
            SymbolLayout turned = Turned(outline, k, size, longFirst);
            turned.score = WrongBorder(work, threshold, turned);
            if (turned.score > layout.score) continue;
            layout = turned;
            found = true;
        }
    }
    return found;
}

void CellPlaces::Spread(int rows, int columns)
{
    inPerspective = false;
    const auto spread = [](int n, std::vector<double>& nodes, std::vector<double>& centers) {
        nodes.clear();
        centers.clear();
        for (int i = 0; i <= n; ++i)
            nodes.push_back(static_cast<double>(i) / n);
        for (int i = -1; i <= n; ++i)
            centers.push_back((2 * i + 1) / (2.0 * n));
    };
    spread(rows, nodesDown, centersDown);
    spread(columns, nodesAcross, centersAcross);
}

void CellPlaces::Follow(const std::vector<double>& down, const std::vector<double>& across)
{
    const auto follow = [](const std::vector<double>& borders, std::vector<double>& nodes,
                           std::vector<double>& centers) {
        nodes = borders;
        centers.clear();
        const std::size_t n = borders.size() - 1;
        centers.push_back(borders[0] - (borders[1] - borders[0]) / 2);
        for (std::size_t i = 0; i < n; ++i)
            centers.push_back((borders[i] + borders[i + 1]) / 2);
        centers.push_back(borders[n] + (borders[n] - borders[n - 1]) / 2);
    };
    follow(down, nodesDown, centersDown);
    follow(across, nodesAcross, centersAcross);
}

std::array<XY, 4> Scaled(const Quadrilateral& corners, double scale)
{
    std::array<XY, 4> places;
    for (std::size_t i = 0; i < 4; ++i)
        places[i] = {scale * corners[i].X, scale * corners[i].Y};
    return places;
}

void SampleCells(const Image& work, int threshold, const SymbolLayout& layout, const CellPlaces& places, CellVote vote,
                 codewords::DataMatrixGrid& grid, int& light, int& dark)
{
    const CellPlane plane(Scaled(layout.corners, 1), places);
    const int lastX = work.Width - 1, lastY = work.Height - 1;
    const auto isLight = [&](int x, int y) {
        return work.Row(std::clamp(y, 0, lastY))[std::clamp(x, 0, lastX)] >= threshold;
    };
    light = 0;
    for (int row = -1; row <= layout.rows; ++row)
        for (int column = -1; column <= layout.columns; ++column) {
            const XY place = plane(places.centersDown[static_cast<std::size_t>(row + 1)],
                                   places.centersAcross[static_cast<std::size_t>(column + 1)]);
            const int x = Pixel(place.X, lastX), y = Pixel(place.Y, lastY);
            bool isCellLight = isLight(x, y);
            if (vote == CellVote::FivePixels)
                isCellLight =
                    isCellLight + isLight(x - 1, y) + isLight(x + 1, y) + isLight(x, y - 1) + isLight(x, y + 1) >= 3;
            grid.At(row, column) = isCellLight ? codewords::LightCell : 0;
            const bool inside = row >= 0 && column >= 0 && row < layout.rows && column < layout.columns;
            light += inside && isCellLight;
        }
    dark = layout.rows * layout.columns - light;
}

// Clock tracks.

namespace {

constexpr int hysteresis = 5, leastSwing = 30; // of a sum of three pixels

} // namespace

bool ClockTracks::Find(const Image& work, const SymbolLayout& layout, CellPlaces& places)
{
    if (!Borders(work, layout, 1, layout.columns, layout.rows, down_) ||
        !Borders(work, layout, 2, layout.rows, layout.columns, across_))
        return false;
    places.Follow(down_, across_);
    return true;
}

/// The borders along a side as fractions from its end on: both tracks run against the order of rows and columns.
bool ClockTracks::Borders(const Image& work, const SymbolLayout& layout, std::size_t side, int inset, int cells,
                          std::vector<double>& borders)
{
    const BresenhamLine line = LineInside(layout.corners, side, inset);
    if (line.Steps() < cells) return false;
    line_.clear();
    line.Visit([&](int x, int y) { line_.push_back(work.Row(y)[x]); });
    const std::size_t n = line_.size();
    smooth_.resize(n);
    smooth_[0] = 2 * line_[0] + line_[1];
    for (std::size_t i = 1; i + 1 < n; ++i)
        smooth_[i] = line_[i - 1] + line_[i] + line_[i + 1];
    smooth_[n - 1] = line_[n - 2] + 2 * line_[n - 1];
    FindTransitions(2 * cells);
    if (!Mend(cells)) return false;
    borders.assign(1, 0);
    for (auto place = transitions_.rbegin(); place != transitions_.rend(); ++place)
        borders.push_back(1 - *place / static_cast<double>(n - 1));
    borders.push_back(1);
    return true;
}

/// Walks from one extreme to the next of the other kind, which stands once the line has turned back by the hysteresis.
void ClockTracks::FindTransitions(int most)
{
    transitions_.clear();
    std::size_t from = 0, low = 0, high = 0;
    int direction = 0;
    const auto accept = [&](std::size_t to) {
        const int first = smooth_[from], last = smooth_[to];
        if (std::abs(last - first) >= leastSwing && static_cast<int>(transitions_.size()) < most) {
            const double middle = (first + last) / 2.0;
            std::size_t i = from;
            while (i + 1 < to && (smooth_[i + 1] < middle) == (first < middle))
                ++i;
            const double a = smooth_[i], b = smooth_[i + 1];
            transitions_.push_back(static_cast<double>(i) + (a == b ? 0.5 : (middle - a) / (b - a)));
        }
        from = to;
    };
    for (std::size_t i = 1; i < smooth_.size(); ++i) {
        const int value = smooth_[i];
        if (value > smooth_[high]) high = i;
        if (value < smooth_[low]) low = i;
        if (direction >= 0 && value <= smooth_[high] - hysteresis) {
            if (direction > 0)
                accept(high);
            else
                from = high;
            direction = -1;
            low = i;
        } else if (direction <= 0 && value >= smooth_[low] + hysteresis) {
            if (direction < 0)
                accept(low);
            else
                from = low;
            direction = 1;
            high = i;
        }
    }
    if (direction > 0) accept(high);
    if (direction < 0) accept(low);
}

bool ClockTracks::Mend(int cells)
{
    const auto wanted = static_cast<std::size_t>(cells) - 1;
    if (transitions_.size() == wanted) return true;
    if (transitions_.size() < 2) return false;
    const double spacing = (transitions_.back() - transitions_.front()) / (cells - 2);
    if (!(spacing > 0)) return false;
    mended_.assign(1, transitions_.front());
    for (std::size_t i = 1; i < transitions_.size(); ++i) {
        const double from = mended_.back(), gap = transitions_[i] - from;
        const int parts = static_cast<int>(std::lround(gap / spacing));
        for (int k = 1; k <= parts; ++k)
            mended_.push_back(from + gap * k / parts);
    }
    transitions_.swap(mended_);
    return transitions_.size() == wanted;
}

} // namespace Tesk::matrix
