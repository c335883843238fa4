// The second look at a picture in which the first found nothing: lines nearer to each other and averaged along the
// bars, weaker bars, blur undone. What it reads must agree on several lines.
#include "read/linear/ScanState.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace Tesk::linear {

namespace {

/// The whole of the second look takes no more than that many times the work of the first.
constexpr int workFactor = 3;
/// The part of it that sweeps may take where groups of bars are looked for as well.
constexpr double sweepPart = 0.6;
/// Lines beside each other that are added to one: noise goes, and bars stay.
constexpr int breadth = 3;
/// Of the range of gray values on a line: what is no bar.
constexpr int noisePart = 40, leastRange = 8;
/// A line is looked at in these ways, one after the other until it is read: sharpened by its second difference so many
/// halves, with bars of at least that part of its range, in percent. Weak bars are those of faint or blurred print; the
/// strong ones leave out the halo of a sharpened picture, which would stand in the quiet zones.
struct Way
{
    int halves, distance;
    bool doubled;
};
constexpr std::array<Way, 3> ways = {{{0, 1, false}, {1, 1, true}, {2, 1, true}}};
constexpr std::array<int, 2> stepParts = {12, 28};
/// Where rows or columns have that many times the edges of the others, they are swept first.
constexpr double clearlyMore = 1.3;
/// Lines of a sweep lie this far apart, in pixels; the next sweep takes those between.
constexpr int sweepSpacing = 8;
constexpr std::array<int, 4> sweeps = {2, 6, 4, 0};
/// A text counts with as many votes as three lines give where its elements fit, and ends the search with those of four.
/// All other texts in its place must have no more than that part of its votes.
constexpr int enoughVotes = leastVotes * goodFit, clearVotes = 4 * goodFit, outvoting = 3;
/// The sides of bars that are looked at once more.
constexpr int weakNoise = 5, weakStep = 12, leastReach = 3;
/// Across groups of bars, in pixels.
constexpr double leastSlant = 0.1;
constexpr double sampleStep = 0.8, groupSpacing = 2, mostGroupLines = 16;

/// Adds the second differences over a distance, taken `halves` / 2 times: the inverse of a slight blur.
std::span<const int> Sharpened(std::span<const int> line, int halves, int distance, std::vector<int>& out)
{
    if (halves == 0) return line;
    const std::size_t n = line.size(), d = static_cast<std::size_t>(distance);
    if (n < 2 * d + 1) return line;
    if (out.size() < n) out.resize(n);
    for (std::size_t i = 0; i < d; i++) {
        out[i] = line[i];
        out[n - 1 - i] = line[n - 1 - i];
    }
    for (std::size_t i = d; i + d < n; i++)
        out[i] = line[i] + halves * (2 * line[i] - line[i - d] - line[i + d]) / 2;
    return std::span<const int>(out).first(n);
}

/// Twice as many samples, those between others by the cubic through four of them: extremes of narrow bars that lie
/// between pixels come out.
std::span<const int> Doubled(std::span<const int> line, std::vector<int>& out)
{
    const std::size_t n = line.size();
    if (n < 4) return line;
    if (out.size() < 2 * n) out.resize(2 * n);
    for (std::size_t i = 0; i + 1 < n; i++) {
        const int before = line[i > 0 ? i - 1 : 0], behind = line[std::min(i + 2, n - 1)];
        out[2 * i] = line[i];
        out[2 * i + 1] = (9 * (line[i] + line[i + 1]) - before - behind) / 16;
    }
    out[2 * n - 2] = line[n - 1];
    return std::span<const int>(out).first(2 * n - 1);
}

class CloserScan
{
public:
    explicit CloserScan(LineReader& reader) : reader_(reader), begin_(reader.Work()) {}

    /// Sweeps rows and columns, then looks for weaker groups of bars, where these are asked for.
    void Run(bool rows, bool columns, bool groups, int density)
    {
        limit_ = begin_ + begin_ * workFactor * (groups ? sweepPart : 1.0);
        const ScanScratch& scratch = reader_.Scratch();
        const int onRows = scratch.rowEdges, onColumns = scratch.columnEdges;
        if (groups && rows && columns && onRows > clearlyMore * onColumns)
            SweepAll(true, false), rows = false;
        else if (groups && rows && columns && onColumns > clearlyMore * onRows)
            SweepAll(false, true), columns = false;
        if (IsClear()) return;
        SweepAll(rows, columns);
        if (IsClear()) return;
        limit_ = begin_ + begin_ * workFactor;
        if (groups) ScanFormerGroups();
        if (groups && !IsClear()) ScanBars(density);
    }

private:
    bool Spent() const { return static_cast<double>(reader_.Work()) >= limit_; }
    bool IsClear() const { return reader_.Votes().HasClearWinner(clearVotes, outvoting); }

    /// Until it is clear what is there, or all is swept, which is the result.
    void SweepAll(bool rows, bool columns)
    {
        for (const int sweep : sweeps) {
            if (rows) Sweep(sweep, true);
            if (columns) Sweep(sweep, false);
            if (IsClear()) return;
        }
    }

    void Sweep(int first, bool alongRows)
    {
        const Raster& raster = reader_.Source();
        const int length = alongRows ? raster.Width() : raster.Height();
        const int across = alongRows ? raster.Height() : raster.Width();
        reader_.place.alongRows = alongRows;
        reader_.place.direction = alongRows ? XY(1, 0) : XY(0, 1);
        reader_.place.directionIndex = alongRows ? 0 : 1;
        // Between lines of the first sweep that have too few edges for a symbol, there is none.
        std::vector<std::uint8_t>& promising = alongRows ? reader_.Scratch().rows : reader_.Scratch().columns;
        const bool isFirst = first == sweeps[0];
        if (isFirst) promising.assign(static_cast<std::size_t>(across / sweepSpacing) + 2, 1);
        for (int v = first; v < across && !Spent(); v += sweepSpacing) {
            const auto block = static_cast<std::size_t>(v / sweepSpacing);
            const std::size_t other = first > sweeps[0] ? block + 1 : block > 0 ? block - 1 : block;
            if (!isFirst && !promising[block] && !promising[other]) continue;
            reader_.place.offset = v;
            ReadClosely(alongRows ? Pixel{0, v} : Pixel{v, 0}, alongRows ? Pixel{length - 1, v} : Pixel{v, length - 1},
                        alongRows ? XY(0, 1) : XY(1, 0));
            if (isFirst) promising[block] = reader_.EdgeCount() >= reader_.FewestEdges() ? 1 : 0;
        }
    }

    /// The groups of the first look, closer: those that rows and columns do not cross well.
    void ScanFormerGroups()
    {
        for (const BarGroup& group : reader_.Scratch().groups) {
            if (Spent()) return;
            const double x = std::abs(group.along.X), y = std::abs(group.along.Y);
            if (std::min(x, y) < leastSlant * std::max(x, y)) continue;
            const bool alongRows = y > x;
            reader_.place.alongRows = alongRows;
            reader_.place.directionIndex = alongRows ? 2 : 3;
            ScanGroup(group);
        }
    }

    /// Lines across groups of bars, averaged along these: weak bars and short ones, too.
    void ScanBars(int density)
    {
        const bool rowsFirst = reader_.Scratch().rowEdges >= reader_.Scratch().columnEdges;
        for (const bool alongRows : {rowsFirst, !rowsFirst}) {
            if (Spent()) return;
            BarFinder& bars = reader_.Scratch().bars;
            const auto groups =
                bars.Find(reader_.Source(), alongRows, density, EdgeRule::Of(weakNoise, weakStep), leastReach);
            reader_.Charge(bars.Work());
            reader_.place.alongRows = alongRows;
            for (const BarGroup& group : groups) {
                if (Spent() || IsClear()) return;
                reader_.place.directionIndex = alongRows ? 2 : 3;
                ScanGroup(group);
            }
        }
    }

    void ScanGroup(const BarGroup& group)
    {
        const XY across(group.last.X - group.first.X, group.last.Y - group.first.Y);
        const double width = std::hypot(across.X, across.Y);
        if (!(width >= 1)) return;
        const XY direction(across.X / width, across.Y / width);
        const double beside = groupMargin * width + groupMarginPixels;
        const XY from(group.first.X - beside * direction.X, group.first.Y - beside * direction.Y);
        const Clipped part = Clip(from, direction, reader_.Source().Width(), reader_.Source().Height());
        const double first = std::max(0.0, part.from), last = std::min(width + 2 * beside, part.to);
        const int count = static_cast<int>((last - first) / sampleStep) + 1;
        if (part.Empty() || count < 16) return;
        ScanScratch& scratch = reader_.Scratch();
        if (static_cast<int>(scratch.fine.size()) < count) scratch.fine.resize(static_cast<std::size_t>(count));
        const double sign = -direction.Y * group.along.X + direction.X * group.along.Y < 0 ? -1 : 1;
        const double spacing = std::max(groupSpacing, group.length / mostGroupLines);
        reader_.place.direction = direction;
        reader_.place.step = XY(direction.X * sampleStep, direction.Y * sampleStep);
        // From the middle to both ends.
        const int lines = std::max(1, static_cast<int>((group.length - 1) / spacing) + 1);
        for (int i = 0; i < lines && !Spent(); i++) {
            const double k = (i % 2 == 0 ? 1 : -1) * ((i + 1) / 2) * spacing;
            reader_.place.offset = static_cast<int>(std::lround(k));
            reader_.place.start = XY(from.X + first * direction.X + sign * k * group.along.X,
                                     from.Y + first * direction.Y + sign * k * group.along.Y);
            reader_.Source().SampleAdded(reader_.place.start, reader_.place.step, count, breadth, group.along,
                                         scratch.fine.data());
            reader_.Charge(count * breadth);
            ReadLine(std::span<const int>(scratch.fine).first(static_cast<std::size_t>(count)));
        }
    }

    /// Reads the line that is the sum of some beside each other, `shift` from one to the next.
    void ReadClosely(Pixel from, Pixel to, XY shift)
    {
        ScanScratch& scratch = reader_.Scratch();
        const int steps = std::max(std::abs(to.x - from.x), std::abs(to.y - from.y));
        if (steps < 1) return;
        reader_.place.start = XY(from.x, from.y);
        reader_.place.step = XY(static_cast<double>(to.x - from.x) / steps, static_cast<double>(to.y - from.y) / steps);
        const int count = reader_.Source().WalkAdded(from, to, breadth, shift.X, shift.Y, scratch.line.data());
        reader_.Charge(count * breadth / 2);
        ReadLine(std::span<const int>(scratch.line).first(static_cast<std::size_t>(count)));
    }

    void ReadLine(std::span<const int> line)
    {
        const auto [least, most] = std::minmax_element(line.begin(), line.end());
        const int range = *most - *least;
        if (range < leastRange * breadth) return;
        reader_.rule = EdgeRule::Of(range / noisePart, 0);
        const XY step = reader_.place.step;
        for (const Way way : ways) {
            ScanScratch& scratch = reader_.Scratch();
            auto samples = Sharpened(line, way.halves, way.distance, scratch.filtered);
            if (way.doubled) {
                samples = Doubled(samples, scratch.doubled);
                reader_.place.step = XY(step.X / 2, step.Y / 2);
            }
            reader_.FindTurns(samples);
            bool read = false;
            for (const int part : stepParts) {
                read = reader_.ReadTurns(samples, static_cast<int>(std::int64_t{range} * part / 100));
                if (read || reader_.EdgeCount() < reader_.FewestEdges() / 2) break;
            }
            reader_.place.step = step;
            if (read || reader_.EdgeCount() < reader_.FewestEdges() / 2) return;
        }
    }

    LineReader& reader_;
    std::int64_t begin_;
    double limit_ = 0;
};

} // namespace

int LookCloser(LineReader& reader, int directions, int density)
{
    reader.Votes().Clear();
    reader.votes = VoteRule::AnyWay;
    reader.place.group = 0;
    reader.byFit = true;
    CloserScan scan(reader);
    scan.Run(directions != 0, directions != 1, directions == Auto, density);
    return reader.Votes().Count(enoughVotes, outvoting);
}

} // namespace Tesk::linear
