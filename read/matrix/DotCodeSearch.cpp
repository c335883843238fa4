// Finds and reads DotCode symbols: dots, the lattice they stand on, the sides that it may have, and its text.
#include "read/matrix/DotCodeSearch.h"

#include "foundation/Angles.h"
#include "read/matrix/Grading.h"
#include "read/matrix/PlaneVectors.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace Tesk::matrix {

namespace {

constexpr int noDots = 100, noLattice = 101;
/// Clutter may widen a lattice by so many lines, each with few dots.
constexpr int deepestTrim = 3;
constexpr int fullLineShare = 9;
/// Older symbols may have empty lines where they are shorter than this.
constexpr int longestEmptyLine = 15;
constexpr std::size_t mostExtents = 15;
/// A dot is no seed any more after so many lattices that were not read.
constexpr int mostFailures = 3;
/// Uneven and tiny dots; faint ones; those that join unless only their middles are taken.
constexpr DotRules closerRules[] = {
    {.leastArea = 3, .smallestShare = 0.3, .largestShare = 2.5},
    {.leastContrast = 7, .leastArea = 3, .smallestShare = 0.4, .largestShare = 2.5},
    {.leastContrast = 30, .leastArea = 2, .smallestShare = 0.3, .largestShare = 3},
    {.boxSize = 9, .leastContrast = 10, .leastArea = 2, .smallestShare = 0.3, .largestShare = 3},
    {.boxSize = 71, .leastContrast = 50, .leastArea = 3, .smallestShare = 0.3, .largestShare = 2.5},
};

/// Offsets inward at which a side may stand.
struct SideOffsets
{
    std::array<int, deepestTrim + 2> offsets{};
    std::size_t count = 0;

    void Add(int offset) { offsets[count++] = offset; }
};

/// `dotsAt(offset)` counts the dots of a line of so many cells.
template <typename DotsAt>
SideOffsets OffsetsOf(int length, const SearchSettings& settings, DotsAt dotsAt)
{
    SideOffsets side;
    const bool takesEmpty = settings.obsoleteDotCode && length <= longestEmptyLine;
    if (takesEmpty) side.Add(-1);
    for (int offset = 0; offset <= (settings.clutteredQuietZone ? deepestTrim : 0); ++offset) {
        const int dots = dotsAt(offset);
        if (dots > 0 || takesEmpty) side.Add(offset);
        if (fullLineShare * dots > length) break;
    }
    return side;
}

} // namespace

struct DotCodeSearch::Task
{
    const Rung& rung;
    SymbolSearch& search;
    CodePolarities polarity;
};

void DotCodeSearch::Correct(double lengthX, double angleX, double lengthY, double angleY)
{
    deformation_.Set(XY(lengthX * std::cos(angleX), lengthX * std::sin(angleX)),
                     XY(lengthY * std::cos(angleY), lengthY * std::sin(angleY)));
}

bool DotCodeSearch::Search(const Rung& rung, CodePolarities polarity, SymbolSearch& search)
{
    search.failure.Raise(noDots);
    Task task{rung, search, polarity};
    bool any = false;
    if (effort_ == 0)
        any = SearchDots(task, DotRules());
    else
        for (const DotRules& rules : closerRules)
            if (!search.IsFull()) any = SearchDots(task, rules) || any;
    if (any) search.failure.state = codewords::SymbolRead;
    return any;
}

bool DotCodeSearch::SearchDots(Task& task, const DotRules& rules)
{
    SymbolSearch& search = task.search;
    if (!field_.Find(task.rung.image, task.polarity, deformation_, rules)) return false;
    bool any = false;
    auto& dots = field_.Dots();
    for (int seed = static_cast<int>(dots.size()) - 1; seed >= 0 && !search.IsFull(); --seed) {
        const Dot& dot = field_[seed];
        if (dot.used || dot.failures >= mostFailures) continue;
        const bool grown = lattice_.Grow(field_, seed);
        if (!grown) search.failure.Raise(noLattice);
        const bool read = grown && ReadLattice(task);
        lattice_.EachDot([&](int i) {
            Dot& taken = dots[static_cast<std::size_t>(i)];
            taken.used = taken.used || read;
            ++taken.failures;
        });
        any = any || read;
    }
    return any;
}

bool DotCodeSearch::ReadLattice(Task& task)
{
    SearchFailure& failure = task.search.failure;
    if (!lattice_.Fit(field_)) {
        failure.Raise(noLattice);
        return false;
    }
    const CellExtent& all = lattice_.Extent();
    const XY middle = 0.25 * (lattice_.Place(all.left, all.top) + lattice_.Place(all.right, all.top) +
                              lattice_.Place(all.right, all.bottom) + lattice_.Place(all.left, all.bottom));
    if (task.search.IsRead(deformation_.Apply(middle), task.rung.scale)) return false;
    ListExtents(task.search.settings);
    if (extents_.empty()) failure.Raise(codewords::NoSymbolCells);
    const std::size_t count = std::min(mostExtents, extents_.size());
    for (std::size_t i = 0; i < count; ++i)
        for (const CodeViews view : {Straight, Mirrored})
            if ((task.search.settings.views & view) != 0 && ReadExtent(task, extents_[extents_.size() - 1 - i], view))
                return true;
    return false;
}

void DotCodeSearch::ListExtents(const SearchSettings& settings)
{
    extents_.clear();
    const CellExtent& all = lattice_.Extent();
    const auto ofColumn = [&](int column) {
        int dots = 0;
        for (int row = all.top; row <= all.bottom; ++row)
            dots += lattice_.HasDot(column, row);
        return dots;
    };
    const auto ofRow = [&](int row) {
        int dots = 0;
        for (int column = all.left; column <= all.right; ++column)
            dots += lattice_.HasDot(column, row);
        return dots;
    };
    const SideOffsets lefts = OffsetsOf(all.Height(), settings, [&](int i) { return ofColumn(all.left + i); });
    const SideOffsets rights = OffsetsOf(all.Height(), settings, [&](int i) { return ofColumn(all.right - i); });
    const SideOffsets tops = OffsetsOf(all.Width(), settings, [&](int i) { return ofRow(all.top + i); });
    const SideOffsets bottoms = OffsetsOf(all.Width(), settings, [&](int i) { return ofRow(all.bottom - i); });
    const auto each = [](const SideOffsets& side, auto f) {
        for (std::size_t i = 0; i < side.count; ++i)
            f(side.offsets[i]);
    };
    each(lefts, [&](int left) {
        each(rights, [&](int right) {
            each(tops, [&](int top) {
                each(bottoms, [&](int bottom) {
                    const CellExtent extent{all.left + left, all.right - right, all.top + top, all.bottom - bottom};
                    const bool fits = extent.Width() > 0 && extent.Height() > 0;
                    if (fits && (extent.Width() + extent.Height()) % 2 != 0) extents_.push_back(extent);
                });
            });
        });
    });
}

/// A mirrored lattice is turned over the middle of its odd side, which leaves the parity of its cells.
bool DotCodeSearch::ReadExtent(Task& task, const CellExtent& extent, CodeViews view)
{
    const int width = extent.Width(), height = extent.Height();
    const bool flipsColumns = view == Mirrored && width % 2 != 0, flipsRows = view == Mirrored && width % 2 == 0;
    const auto hasDot = [&](int row, int column) {
        return lattice_.HasDot(extent.left + (flipsColumns ? width - 1 - column : column),
                               extent.top + (flipsRows ? height - 1 - row : row));
    };
    const bool firstCell = (extent.left + extent.top) % 2 == 0;
    const auto state =
        task.search.reader.ReadDotCode(width, height, firstCell, hasDot, task.search.settings.identifier);
    if (state != codewords::SymbolRead) {
        task.search.failure.Raise(state);
        return false;
    }
    firstCell_ = firstCell;
    Keep(task, extent, view);
    return true;
}

void DotCodeSearch::Keep(Task& task, const CellExtent& extent, CodeViews view)
{
    SymbolRecord record;
    record.Take(task.search.reader.Text());
    record.symbology = CodeDotCode;
    record.size = DotCode;
    record.polarity = task.polarity;
    record.view = view;
    const double left = extent.left - 0.5, right = extent.right + 0.5;
    const double top = extent.top - 0.5, bottom = extent.bottom + 0.5;
    record.corners = {lattice_.Place(left, top), lattice_.Place(right, top), lattice_.Place(right, bottom),
                      lattice_.Place(left, bottom)};
    for (XY& corner : record.corners)
        corner = task.rung.scale * deformation_.Apply(corner);
    std::size_t first = 0;
    for (std::size_t i = 1; i < record.corners.size(); ++i)
        if (record.corners[i].X + record.corners[i].Y < record.corners[first].X + record.corners[first].Y) first = i;
    const XY origin = record.corners[first];
    const XY along = record.corners[(first + 1) % 4] - origin, down = record.corners[(first + 3) % 4] - origin;
    record.x = origin.X;
    record.y = origin.Y;
    record.width = std::round(Length(along));
    record.height = std::round(Length(down));
    record.angle = ToDegrees(std::atan2(along.Y, along.X));
    record.cellSize = static_cast<float>(std::sqrt(record.width * record.height / (extent.Width() * extent.Height())));
    task.search.Add(std::move(record));
    if (!task.search.settings.checkQuality) return;
    Describe(task, extent);
    task.search.grades.push_back(
        GradeDotCode({*task.search.source, sampled_, task.polarity, task.search.reader}, view));
}

void DotCodeSearch::Describe(const Task& task, const CellExtent& extent)
{
    sampled_.Take(
        extent.Height(), extent.Width(),
        [&](double column, double row) {
            return task.rung.scale * deformation_.Apply(lattice_.Place(extent.left + column, extent.top + row));
        },
        [&](int row, int column) { return lattice_.HasDot(extent.left + column, extent.top + row); });
}

} // namespace Tesk::matrix
