// Where the cells of a QR symbol lie in an image: the alignment patterns one after the other, and a perspective map for
// each four of them.
#include "read/matrix/QRLattice.h"

#include "read/matrix/PlaneVectors.h"

#include <algorithm>
#include <cmath>

namespace Tesk::matrix {

namespace {

constexpr double finderMiddle = 3; ///< the cell of the middle of a finder pattern, from the symbol's edge
constexpr double windowModules = 5;
constexpr double leastWindow = 10; ///< in pixels
/// An alignment pattern's light ring is 3 modules wide; seen turned, and of few pixels, it may look so much wider.
constexpr double largestRing = 6, smallestRing = 1.5;
/// Cells of a pattern that have to be right. Single dark modules in the data have four fewer, as a rule.
constexpr int fewestAlike = 20;
constexpr double farthestPlace = 1e5;
constexpr int margin = 4;
/// The distance of the fourth corner from the eye over that of the first.
constexpr double leastFourth = 0.3;

} // namespace

bool QRLattice::SetByFinders(const FinderTriple& finders, int side, bool perspective)
{
    side_ = side;
    patchCount_ = 0;
    const double first = finderMiddle, last = side - 1 - finderMiddle;
    const XY a = finders[0].center, b = finders[1].center, c = finders[2].center;
    XY fourth = b + c - a;
    if (perspective) {
        // A module along a line is as long as the square of its distance from the eye is short.
        const double far1 = std::sqrt(Length(finders[0].along) / Length(finders[1].along));
        const double far2 = std::sqrt(Length(finders[0].down) / Length(finders[2].down)), far3 = far1 + far2 - 1;
        if (!(far3 > leastFourth)) return false;
        fourth = 1 / far3 * (far1 * b + far2 * c - a);
    }
    return plain_.Set({XY(first, first), XY(last, first), XY(last, last), XY(first, last)}, {a, b, fourth, c});
}

XY QRLattice::PlainNode(std::size_t row, std::size_t column) const
{
    return PlainPlace(lines_.centres[column], lines_.centres[row]);
}

/// How far the neighbours that are known lie off the plain map tells how far this one does: the last of the row or
/// column and its end, or the three of a patch.
XY QRLattice::Predict(std::size_t row, std::size_t column)
{
    const auto last = static_cast<std::size_t>(lines_.count - 1);
    const auto share = [&](std::size_t i) {
        return static_cast<double>(lines_.centres[i] - lines_.centres[i - 1]) /
               (lines_.centres[last] - lines_.centres[i - 1]);
    };
    const auto off = [&](std::size_t r, std::size_t c) { return Node(r, c) - PlainNode(r, c); };
    const XY plain = PlainNode(row, column);
    if (lines_.count == 2) return plain;
    if (row == 0) return plain + off(0, column - 1) + share(column) * (off(0, last) - off(0, column - 1));
    if (column == 0) return plain + off(row - 1, 0) + share(row) * (off(last, 0) - off(row - 1, 0));
    return plain + off(row - 1, column) + (off(row, column - 1) - off(row - 1, column - 1));
}

/// How many of the 5 x 5 cells about a place are as those of an alignment pattern.
int QRLattice::CellsAlike(const BinaryImage& image, XY center) const
{
    int alike = 0;
    for (int row = -2; row <= 2; ++row)
        for (int column = -2; column <= 2; ++column) {
            const XY at = center + static_cast<double>(column) * along_ + static_cast<double>(row) * down_;
            alike += image.IsDark(at) == (std::max(std::abs(row), std::abs(column)) != 1);
        }
    return alike;
}

/// Moves a predicted place to the pattern nearest to it.
bool QRLattice::FindPattern(const BinaryImage& image, FinderPatterns& patterns, XY& place) const
{
    const double module = (Length(along_) + Length(down_)) / 2;
    const double half = std::max(windowModules * module, leastWindow) / 2;
    // The rows of the window cut through the middle; the pattern around must be in the area.
    const double around = half + 2.5 * module;
    const SearchArea area{static_cast<int>(std::floor(place.X - around)), static_cast<int>(std::floor(place.Y - half)),
                          static_cast<int>(std::ceil(place.X + around)) + 1,
                          static_cast<int>(std::ceil(place.Y + half)) + 1};
    FinderRecord found;
    const auto fits = [&](const FinderRecord& record) {
        return record.size >= smallestRing * module && record.size <= largestRing * module &&
               CellsAlike(image, record.center) >= fewestAlike;
    };
    if (!patterns.FindAlignment(image, area, place, fits, found)) return false;
    place = found.center;
    return true;
}

bool QRLattice::SetByAlignment(const FinderTriple& finders, int version, const BinaryImage& image,
                               FinderPatterns& patterns)
{
    lines_ = codewords::AlignmentOfQR(version);
    const auto lines = static_cast<std::size_t>(lines_.count);
    if (lines < 2) return true;
    Node(0, 0) = finders.InnerCell(0);
    Node(0, lines - 1) = finders.InnerCell(1);
    Node(lines - 1, 0) = finders.InnerCell(2);
    for (std::size_t row = 0; row < lines; ++row)
        for (std::size_t column = 0; column < lines; ++column) {
            if (!lines_.Has(static_cast<int>(row), static_cast<int>(column))) continue;
            XY& place = Node(row, column);
            place = Predict(row, column);
            if (!(std::abs(place.X) < farthestPlace && std::abs(place.Y) < farthestPlace)) return false;
            const double x = lines_.centres[column], y = lines_.centres[row];
            along_ = PlainPlace(x + 0.5, y) - PlainPlace(x - 0.5, y);
            down_ = PlainPlace(x, y + 0.5) - PlainPlace(x, y - 0.5);
            FindPattern(image, patterns, place);
        }
    if (lines > 2) return SetPatches();
    const double first = finderMiddle, last = side_ - 1 - finderMiddle, inner = lines_.centres[1];
    patchCount_ = 1;
    return patches_[0].Set({XY(first, first), XY(last, first), XY(inner, inner), XY(first, last)},
                           {finders[0].center, finders[1].center, Node(1, 1), finders[2].center});
}

bool QRLattice::SetPatches()
{
    patchCount_ = static_cast<std::size_t>(lines_.count - 1);
    for (std::size_t row = 0; row < patchCount_; ++row)
        for (std::size_t column = 0; column < patchCount_; ++column) {
            const double left = lines_.centres[column], right = lines_.centres[column + 1];
            const double top = lines_.centres[row], bottom = lines_.centres[row + 1];
            if (!patches_[row * patchCount_ + column].Set(
                    {XY(left, top), XY(right, top), XY(right, bottom), XY(left, bottom)},
                    {Node(row, column), Node(row, column + 1), Node(row + 1, column + 1), Node(row + 1, column)}))
                return false;
        }
    return true;
}

std::size_t QRLattice::PatchOf(double at) const
{
    std::size_t patch = 0;
    while (patch + 1 < patchCount_ && at > lines_.centres[patch + 1])
        ++patch;
    return patch;
}

XY QRLattice::Place(double column, double row) const
{
    if (patchCount_ == 0) return PlainPlace(column, row);
    return patches_[PatchOf(row) * patchCount_ + PatchOf(column)]({column, row});
}

void QRLattice::Sample(const BinaryImage& image, codewords::QRGrid& cells) const
{
    const auto clamped = [](double at, int size) {
        // Nothing that is not a number passes.
        return at > 0 ? static_cast<int>(std::min(at + 0.5, size - 1.0)) : 0;
    };
    for (int row = -margin; row < side_ + margin; ++row)
        for (int column = -margin; column < side_ + margin; ++column) {
            const XY place = Place(column, row);
            const bool dark = image.IsDark(clamped(place.X, image.Width()), clamped(place.Y, image.Height()));
            cells.At(row, column) = dark ? 0 : codewords::LightCell;
        }
}

void QRLattice::Describe(const codewords::QRGrid& cells, double scale, SampledSymbol& sampled) const
{
    sampled.Take(
        side_, side_, [&](double column, double row) { return scale * Place(column, row); },
        [&](int row, int column) { return cells.IsDark(row, column); });
}

} // namespace Tesk::matrix
