// The search for Data Matrix symbols: from dark regions to outlines, from outlines to symbols.
#include "read/matrix/DataMatrixSearch.h"

#include "foundation/Angles.h"
#include "gauge/EdgeLine.h"
#include "image/Geometry.h"
#include "measure/fit/PointHull.h"
#include "read/matrix/Grading.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace Tesk::matrix {

namespace {

constexpr int leastArea = 50, spareAttempts = 5;
constexpr double leastAspect = 0.25;
/// The work on a pixel of an image, in steps along outlines.
constexpr std::int64_t workOfPixel = 4;
/// Of a look at the borders in all sizes.
constexpr std::int64_t workOfBorders = 20000;
/// The share of wrong cells in the borders of a symbol that a closer look believes.
constexpr double mostWrongBorder = 0.2;

SizeRange RangeOf(const SearchSettings& settings)
{
    return {std::clamp<int>(settings.sizeFrom, Size10, Size16x48), std::clamp<int>(settings.sizeTo, Size10, Size16x48)};
}

} // namespace

bool DataMatrixSearch::Search(const SearchedImage& image, SymbolSearch& search)
{
    components_.Find(image.joined ? *image.joined : image.work, image.threshold, leastArea);
    work_ += workOfPixel * image.work.Width * image.work.Height;
    int attempts = 0;
    bool read = false;
    for (const DarkComponent& component : components_.All()) {
        if (search.IsFull() || attempts >= search.settings.maxDecoded + spareAttempts) break;
        const ComponentShape shape = components_.ShapeOf(component);
        if (shape.atFarEdges || !shape.dense || search.IsRead(shape.centroid, image.rung.scale) ||
            shape.aspect < leastAspect)
            continue;
        ++attempts;
        if (!TryComponent(image, component, search)) continue;
        read = true;
        attempts = 0;
    }
    return read;
}

bool DataMatrixSearch::TryComponent(const SearchedImage& image, const DarkComponent& component, SymbolSearch& search)
{
    components_.ExtentsOf(component, rows_);
    HullOfRows(rows_, hull_);
    if (hull_.size() < 4) return false;
    CompleteHull(hull_);
    MergeRuns(image.work.Height);
    HullOfRows(merged_, hull_);
    return hull_.size() >= 4 && ReadOutline(image, hull_, search);
}

/// Takes the rows of all runs that reach into the hull.
void DataMatrixSearch::MergeRuns(int height)
{
    RowsOfPolygon(hull_, height, rows_);
    merged_.clear();
    for (const RowExtent& row : rows_) {
        const std::span<const DarkRun> runs = components_.RunsOfRow(row.y);
        const auto first =
            std::partition_point(runs.begin(), runs.end(), [&](const DarkRun& run) { return run.Last() < row.first; });
        const auto behind =
            std::partition_point(first, runs.end(), [&](const DarkRun& run) { return run.first <= row.last; });
        if (first != behind) merged_.push_back({row.y, first->first, behind[-1].Last()});
    }
}

bool DataMatrixSearch::ReadOutline(const SearchedImage& image, std::span<const Site> hull, SymbolSearch& search)
{
    const EdgeCosts costs(image.rung.image, image.polarity);
    const Quadrilateral outline = ReduceHull(hull, costs);
    std::array<std::int64_t, 4> squared;
    for (std::size_t i = 0; i < 4; ++i)
        squared[i] = SquaredLength(outline[i], outline[(i + 1) % 4]);
    const auto [least, most] = std::minmax_element(squared.begin(), squared.end());
    const int steepest = RangeOf(search.settings).to >= Size8x18 ? 20 : 4;
    if (*most >= steepest * *least) {
        search.failure.Set(2, L"No well shaped symbol candidate was found in the image");
        return false;
    }
    const bool squareLike = *most <= 4 * *least;

    Outcome outcome = Read(image, outline, squareLike, search);
    const bool wasRead = outcome == Outcome::Read;
    // Cells that were corrected are right, whatever their text: other sides would not help.
    if (outcome == Outcome::NoText) return false;
    Quadrilateral refined = outline;
    if (!wasRead || search.settings.checkQuality) refined = RefineSides(outline, costs);
    work_ += costs.Steps();
    if (!wasRead) {
        outcome = Read(image, refined, squareLike, search);
        if (outcome == Outcome::NoText) return false;
        if (outcome != Outcome::Read) {
            search.failure.Set(2, L"No candidate could be decoded");
            return false;
        }
    } else {
        // The layout's corners are those of the outline, turned.
        const auto first = std::find_if(outline.begin(), outline.end(),
                                        [&](Site corner) { return hulls::Same(corner, layout_.corners[0]); });
        std::rotate(refined.begin(), refined.begin() + (first - outline.begin()) % 4, refined.end());
        layout_.corners = refined;
    }
    std::array<XY, 4> corners = Scaled(layout_.corners, image.rung.scale);
    if (search.settings.accurateEdges) {
        const auto [width, height] = SidesOf(corners, layout_.rows, layout_.columns);
        corners = FitSides(*search.source, corners, image.polarity, std::trunc(width + height));
    }
    Keep(image, corners, search);
    return true;
}

DataMatrixSearch::Outcome DataMatrixSearch::Read(const SearchedImage& image, const Quadrilateral& outline,
                                                 bool squareLike, SymbolSearch& search)
{
    Outcome outcome = Outcome::NoSize;
    if (FindLayout(image.work, outline, squareLike, RangeOf(search.settings), layout_)) {
        places_.Spread(layout_.rows, layout_.columns);
        outcome = Correct(image, CellVote::FivePixels, search);
        if (outcome == Outcome::Errors && tracks_.Find(image.work, layout_, places_))
            outcome = Correct(image, CellVote::OnePixel, search);
    }
    if (outcome == Outcome::Errors && image.joined) outcome = ReadByBorders(image, outline, squareLike, search);
    if (outcome == Outcome::Errors && search.failure.state < codewords::DataMatrixErrors)
        search.failure.Set(codewords::DataMatrixErrors, L"Too many errors were detected in the symbol candidate");
    return outcome;
}

/// In perspective, by the size that the outermost cells show.
DataMatrixSearch::Outcome DataMatrixSearch::ReadByBorders(const SearchedImage& image, const Quadrilateral& outline,
                                                          bool squareLike, SymbolSearch& search)
{
    work_ += workOfBorders;
    if (!FindLayoutByBorders(image.work, image.threshold, outline, squareLike, RangeOf(search.settings), layout_))
        return Outcome::Errors;
    places_.Spread(layout_.rows, layout_.columns);
    places_.inPerspective = true;
    const Outcome outcome = Correct(image, CellVote::FivePixels, search);
    return outcome == Outcome::Errors ? Correct(image, CellVote::OnePixel, search) : outcome;
}

DataMatrixSearch::Outcome DataMatrixSearch::Correct(const SearchedImage& image, CellVote vote, SymbolSearch& search)
{
    SampleCells(image.work, image.threshold, layout_, places_, vote, cells_, light_, dark_);
    int views = search.settings.views;
    // The sides of a rectangle tell from which side it is seen.
    if (layout_.rows != layout_.columns) views &= layout_.exchanged ? Mirrored : Straight;
    const codewords::ReadState state =
        search.reader.ReadDataMatrix(cells_, layout_.size, views, search.settings.identifier);
    if (image.joined && state != codewords::DataMatrixErrors && !HasBorders()) return Outcome::Errors;
    if (state == codewords::SymbolRead) return Outcome::Read;
    if (state != codewords::DataMatrixNoText) return Outcome::Errors;
    const codewords::SymbolText& text = search.reader.Text();
    search.failure.Set(state, text.message ? text.message : search.failure.message, text.messageValue);
    return Outcome::NoText;
}

/// Whether the outermost cells are what they should be: a closer look tries so much that chance could read something.
bool DataMatrixSearch::HasBorders() const
{
    const int rows = layout_.rows, columns = layout_.columns;
    int wrong = 0;
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; column += row == 0 || row == rows - 1 ? 1 : columns - 1)
            wrong += (cells_.At(row, column) & codewords::WrongCell) != 0;
    return wrong <= mostWrongBorder * 2 * (rows + columns - 2);
}

void DataMatrixSearch::Keep(const SearchedImage& image, const std::array<XY, 4>& corners, SymbolSearch& search)
{
    const auto [width, height] = SidesOf(corners, layout_.rows, layout_.columns);
    SymbolRecord symbol;
    symbol.Take(search.reader.Text());
    symbol.symbology = CodeDataMatrix;
    symbol.size = layout_.size;
    symbol.cellSize = static_cast<float>(std::sqrt(width * height));
    symbol.polarity = image.polarity;
    symbol.view = search.reader.View();
    symbol.x = corners[3].X;
    symbol.y = corners[3].Y;
    symbol.width = std::round(Distance(corners[3], corners[2]));
    symbol.height = std::round(Distance(corners[3], corners[0]));
    symbol.angle = ToDegrees(std::atan2(corners[2].Y - corners[3].Y, corners[2].X - corners[3].X));
    symbol.corners = {corners[0], corners[3], corners[2], corners[1]};
    search.Add(std::move(symbol));
    if (!search.settings.checkQuality) return;
    KeepSample(corners);
    Grade(image.polarity, search);
}

void DataMatrixSearch::KeepSample(const std::array<XY, 4>& corners)
{
    sampled_.rows = layout_.rows;
    sampled_.columns = layout_.columns;
    sampled_.lightCells = light_;
    sampled_.darkCells = dark_;
    sampled_.nodes.clear();
    sampled_.centers.clear();
    const CellPlane plane(corners, places_);
    for (const double down : places_.nodesDown)
        for (const double across : places_.nodesAcross)
            sampled_.nodes.push_back(plane(down, across));
    for (std::size_t row = 1; row + 1 < places_.centersDown.size(); ++row)
        for (std::size_t column = 1; column + 1 < places_.centersAcross.size(); ++column)
            sampled_.centers.push_back(plane(places_.centersDown[row], places_.centersAcross[column]));
}

/// Each symbol has its grades. A rectangle has none, which the decoding reports.
void DataMatrixSearch::Grade(CodePolarities polarity, SymbolSearch& search)
{
    const bool isSquare = layout_.rows == layout_.columns;
    search.grades.push_back(isSquare ? GradeDataMatrix({*search.source, sampled_, polarity, search.reader})
                                     : QualityGrades{});
    if (!isSquare) search.rectangleUngraded = true;
}

std::array<XY, 4> FitSides(const Image& source, const std::array<XY, 4>& corners, CodePolarities polarity,
                           double probeLength)
{
    std::array<std::array<XY, 2>, 4> sides;
    EdgeLine gauge;
    gauge.ProbeLength = probeLength;
    gauge.Polarity = polarity == WhiteOnBlack ? Falling : Raising;
    for (std::size_t i = 0; i < 4; ++i) {
        sides[i] = {corners[i], corners[(i + 1) % 4]};
        gauge.RefBeg = sides[i][0];
        gauge.RefEnd = sides[i][1];
        // Probes run from the inside to the outside of what stands counterclockwise on the screen.
        if (!gauge.Detect(source, BestStep)) continue;
        const double scale = 1 / Geometry::ScaleFromPixel;
        sides[i] = {scale * gauge.FittedBeg, scale * gauge.FittedEnd};
    }
    std::array<XY, 4> fitted = corners;
    for (std::size_t i = 0; i < 4; ++i) {
        const auto &before = sides[(i + 3) % 4], &behind = sides[i];
        XY meet;
        if (Intersect(before[0], before[1], behind[0], behind[1], meet)) fitted[i] = meet;
    }
    return fitted;
}

} // namespace Tesk::matrix
