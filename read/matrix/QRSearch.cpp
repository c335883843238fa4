// Finds and reads QR symbols: finder patterns, three of them at a corner, the cells between, and their text.
#include "read/matrix/QRSearch.h"

#include "foundation/Angles.h"
#include "read/codewords/QRCells.h"
#include "read/matrix/Grading.h"
#include "read/matrix/PlaneVectors.h"

#include <algorithm>
#include <cmath>

namespace Tesk::matrix {

namespace {

constexpr int boxSize = 51, boxOffset = 10;
/// A texture may make a triple of any three of its patterns: so many are looked at.
constexpr int mostTriples = 2000;
constexpr int noFinders = 100, noGeometry = 101, noFormat = 102;

} // namespace

struct QRSearch::Task
{
    const Rung& rung;
    SymbolSearch& search;
    CodePolarities polarity;
    int triplesLeft = mostTriples;
};

void QRSearch::Preset(const std::array<Site, 3>& finders, int size)
{
    preset_ = finders;
    presetSize_ = size;
    isPreset_ = true;
}

void QRSearch::EndPreset()
{
    isPreset_ = false;
}

bool QRSearch::Search(const Rung& rung, SymbolSearch& search)
{
    search.failure.Raise(noFinders);
    const SearchSettings& settings = search.settings;
    if (settings.adaptiveThreshold)
        image_.BinarizeByMean(rung.image, boxSize, boxOffset);
    else
        image_.BinarizeBelow(rung.image, ThresholdOf(rung.image, settings.threshold));
    bool any = false;
    for (const CodePolarities polarity : {BlackOnWhite, WhiteOnBlack}) {
        if ((settings.polarities & polarity) == 0 || search.IsFull()) continue;
        if (polarity == WhiteOnBlack) image_.Invert();
        Task task{rung, search, polarity};
        ListFinders(rung);
        any = SearchTriples(task) || any;
    }
    if (any) search.failure.state = codewords::SymbolRead;
    return any;
}

void QRSearch::ListFinders(const Rung& rung)
{
    if (!isPreset_) return patterns_.Search(image_);
    patterns_.List().clear();
    for (const Site& place : preset_) {
        FinderRecord record;
        record.center = XY(place.X / rung.scale, place.Y / rung.scale);
        record.size = presetSize_ / rung.scale;
        record.isFree = true;
        patterns_.List().push_back(record);
    }
}

void QRSearch::FindPairs()
{
    const auto& list = patterns_.List();
    pairs_.assign(list.size() * list.size(), false);
    for (std::size_t i = 0; i < list.size(); ++i)
        for (std::size_t j = i + 1; j < list.size(); ++j)
            pairs_[i * list.size() + j] = ArePaired(image_, list[i], list[j]);
}

bool QRSearch::SearchTriples(Task& task)
{
    auto& list = patterns_.List();
    FindPairs();
    const std::size_t found = list.size();
    bool any = false;
    for (std::size_t i = 0; i < found; ++i)
        for (std::size_t j = i + 1; j < found && !task.search.IsFull(); ++j) {
            if (!pairs_[i * found + j] || !list[i].isFree || !list[j].isFree) continue;
            AppendGuesses(i, j);
            any = SearchThirds(task, i, j, found) || any;
            list.resize(found);
        }
    return any;
}

/// The third pattern where it would be if two of them are the ends of the diagonal, or of a side.
void QRSearch::AppendGuesses(std::size_t i, std::size_t j)
{
    auto& list = patterns_.List();
    const XY d = list[j].center - list[i].center;
    const auto append = [&](std::size_t from, XY move) {
        FinderRecord guess = list[from];
        guess.center = guess.center + move;
        if (list.size() >= FinderPatterns::mostFinders) return;
        if (!image_.Holds(static_cast<int>(std::floor(guess.center.X)), static_cast<int>(std::floor(guess.center.Y))))
            return;
        for (XY& point : guess.ring)
            point = point + move;
        list.push_back(guess);
    };
    append(i, XY((d.X + d.Y) / 2, (d.Y - d.X) / 2));
    append(i, XY((d.X - d.Y) / 2, (d.X + d.Y) / 2));
    append(i, XY(-d.Y, d.X));
    append(i, XY(d.Y, -d.X));
    append(j, XY(-d.Y, d.X));
    append(j, XY(d.Y, -d.X));
}

/// Patterns beyond those found are guesses.
bool QRSearch::SearchThirds(Task& task, std::size_t i, std::size_t j, std::size_t found)
{
    auto& list = patterns_.List();
    FinderRecord &a = list[i], &b = list[j];
    const auto pairs = [&](std::size_t first, std::size_t k) {
        return k < found ? pairs_[first * found + k] : ArePaired(image_, list[first], list[k]);
    };
    for (std::size_t k = j + 1; k < list.size() && task.triplesLeft > 0; ++k) {
        FinderRecord& c = list[k];
        if (!c.isFree || !pairs(i, k) || !pairs(j, k)) continue;
        if (task.search.IsRead(1.0 / 3 * (a.center + b.center + c.center), task.rung.scale)) continue;
        if (!ReadTriple(task, a, b, c)) continue;
        a.isFree = b.isFree = c.isFree = false;
        return true;
    }
    return false;
}

bool QRSearch::ReadTriple(Task& task, const FinderRecord& a, const FinderRecord& b, const FinderRecord& c)
{
    SearchFailure& failure = task.search.failure;
    if (!triple_.Order(a, b, c)) {
        failure.Raise(noGeometry);
        return false;
    }
    --task.triplesLeft;
    int tried = 0;
    for (const std::size_t line : {std::size_t{1}, std::size_t{2}}) {
        const int side = triple_.SideByTiming(image_, line);
        if (side == 0) failure.Raise(noGeometry);
        if (side == 0 || side == tried) continue;
        if (ReadViews(task, side)) return true;
        tried = side;
    }
    return false;
}

bool QRSearch::ReadViews(Task& task, int side)
{
    for (const CodeViews view : {Straight, Mirrored}) {
        if ((task.search.settings.views & view) == 0) continue;
        FinderTriple finders = triple_;
        if (view == Mirrored) finders.Mirror();
        // What lies flat before the camera is read at once.
        for (const bool perspective : {false, true})
            if (ReadSymbol(task, finders, perspective, view, side)) return true;
    }
    return false;
}

bool QRSearch::ReadSymbol(Task& task, const FinderTriple& finders, bool perspective, CodeViews view, int side)
{
    const auto isDark = [&](int row, int column) {
        return image_.IsDark(perspective ? finders.PlaceBeside(side, column, row) : lattice_.PlainPlace(column, row));
    };
    SearchFailure& failure = task.search.failure;
    if (!lattice_.SetByFinders(finders, side, perspective) || !codewords::ReadQRFormat(side, isDark, format_) ||
        !codewords::ReadQRVersion(side, isDark, version_)) {
        failure.Raise(noFormat);
        return false;
    }
    if (!lattice_.SetByAlignment(finders, version_, image_, alignment_)) {
        failure.Raise(noGeometry);
        return false;
    }
    lattice_.Sample(image_, cells_);
    codewords::SymbolReader& reader = task.search.reader;
    const auto state = reader.ReadQR(cells_, version_, format_, task.search.settings.identifier);
    if (state != codewords::SymbolRead) {
        failure.Raise(state);
        return false;
    }
    Keep(task, view);
    return true;
}

void QRSearch::Keep(Task& task, CodeViews view)
{
    const int side = codewords::QRSide(version_);
    SymbolRecord record;
    record.Take(task.search.reader.Text());
    record.symbology = CodeQR;
    record.size = static_cast<Sizes>(Version1 + version_ - 1);
    record.polarity = task.polarity;
    record.view = view;
    const double first = -0.5, last = side - 0.5;
    record.corners = {lattice_.Place(first, first), lattice_.Place(last, first), lattice_.Place(last, last),
                      lattice_.Place(first, last)};
    for (XY& corner : record.corners)
        corner = task.rung.scale * corner;
    const XY width = record.corners[3] - record.corners[0], height = record.corners[1] - record.corners[0];
    record.x = record.corners[0].X;
    record.y = record.corners[0].Y;
    record.width = std::round(Length(width));
    record.height = std::round(Length(height));
    record.angle = ToDegrees(std::atan2(-width.X, width.Y));
    record.cellSize = static_cast<float>(std::sqrt(record.width * record.height) / side);
    task.search.Add(std::move(record));
    if (!task.search.settings.checkQuality) return;
    lattice_.Describe(cells_, task.rung.scale, sampled_);
    task.search.grades.push_back(GradeQR({*task.search.source, sampled_, task.polarity, task.search.reader}, format_));
}

} // namespace Tesk::matrix
