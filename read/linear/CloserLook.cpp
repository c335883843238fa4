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
/// Bright pixels that are put at both ends of a row or column.
constexpr int border = lineBorder;
/// Of the range of gray values on a line: what is no bar.
constexpr int noisePart = 40, leastRange = 8;
/// A line is looked at in these ways, one after the other until it is read: sharpened by its second difference so many
/// halves, with bars of at least that part of its range, in percent. Weak bars are those of faint or blurred print; the
/// strong ones leave out the halo of a sharpened picture, which would stand in the quiet zones.
struct Way
{
    int halves;
    bool doubled;
    std::array<int, 2> steps;
};
constexpr std::array<Way, 3> ways = {{{0, false, {15, 28}}, {1, false, {8, 25}}, {2, false, {15, 30}}}};
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

/// Adds the second differences, taken `halves` / 2 times: the inverse of a slight blur.
std::span<const int> Sharpened(std::span<const int> line, int halves, std::vector<int>& out)
{
    if (halves == 0) return line;
    const std::size_t n = line.size();
    if (out.size() < n) out.resize(n);
    out[0] = line[0];
    out[n - 1] = line[n - 1];
    for (std::size_t i = 1; i + 1 < n; i++)
        out[i] = line[i] + halves * (2 * line[i] - line[i - 1] - line[i + 1]) / 2;
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
    explicit CloserScan(VotingReader& reader)
        : reader_(reader), begin_(reader.Work()), rows_{reader.Scratch().rows}, columns_{reader.Scratch().columns}
    {
        rows_.promising.clear();
        columns_.promising.clear();
    }

    /// Sweeps rows and columns, and looks for weaker groups of bars in between, where these are asked for.
    void Run(bool rows, bool columns, bool groups, int density)
    {
        const ScanScratch& scratch = reader_.Scratch();
        const double onRows = scratch.rowEdges, onColumns = scratch.columnEdges;
        const bool rowsFirst = groups && onRows > clearlyMore * onColumns;
        const bool columnsFirst = groups && onColumns > clearlyMore * onRows;
        rows_.left = rows ? static_cast<int>(sweeps.size()) : 0;
        columns_.left = columns ? static_cast<int>(sweeps.size()) : 0;
        limit_ = begin_ + begin_ * workFactor * (groups ? sweepPart : 1.0);
        SweepAll(!columnsFirst, !rowsFirst);
        SweepAll(true, true);
        limit_ = begin_ + begin_ * workFactor;
        if (groups && !IsClear()) ScanFormerGroups();
        if (groups && !IsClear()) ScanBars(density);
        SweepAll(true, true);
    }

private:
    /// How far rows or columns are swept.
    struct Progress
    {
        std::vector<std::uint8_t>& promising; ///< of the lines of the first sweep, those that may cross a symbol
        int left = 0, next = 0;               ///< sweeps, and the line that comes next in the present one
    };

    bool Spent() const { return static_cast<double>(reader_.Work()) >= limit_; }
    bool IsClear() const { return reader_.Votes().HasClearWinner(clearVotes, outvoting); }

    /// Until it is clear what is there, the work is spent, or all is swept.
    void SweepAll(bool rows, bool columns)
    {
        while ((rows && rows_.left > 0) || (columns && columns_.left > 0)) {
            if (rows && rows_.left > 0) Sweep(rows_, true);
            if (columns && columns_.left > 0) Sweep(columns_, false);
            if (Spent() || IsClear()) return;
        }
    }

    /// Goes on with a sweep. Beside a line that is read, the next ones that share no pixel with it are looked at, too.
    void Sweep(Progress& progress, bool alongRows)
    {
        const std::size_t index = sweeps.size() - static_cast<std::size_t>(progress.left);
        const int across = alongRows ? reader_.Source().Height() : reader_.Source().Width();
        reader_.place.alongRows = alongRows;
        reader_.place.direction = alongRows ? XY(1, 0) : XY(0, 1);
        for (; progress.next * sweepSpacing + sweeps[index] < across; progress.next++) {
            if (Spent()) return;
            const int v = progress.next * sweepSpacing + sweeps[index];
            if (index > 0 && !IsPromising(progress, v)) continue;
            const bool read = ReadRowOrColumn(v, alongRows);
            if (index == 0) progress.promising.push_back(read || reader_.EdgeCount() >= reader_.FewestEdges() ? 1 : 0);
            // The last sweeps have these for their own.
            if (!read || index >= 2) continue;
            if (v >= breadth) ReadRowOrColumn(v - breadth, alongRows);
            if (v + breadth < across) ReadRowOrColumn(v + breadth, alongRows);
        }
        progress.next = 0;
        progress.left--;
    }

    /// Between lines of the first sweep that have too few edges for a symbol, there is none.
    static bool IsPromising(const Progress& progress, int v)
    {
        const auto at = [&](int line) {
            return line >= 0 && line < static_cast<int>(progress.promising.size()) &&
                   progress.promising[static_cast<std::size_t>(line)] != 0;
        };
        const int before = v >= sweeps[0] ? (v - sweeps[0]) / sweepSpacing : -1;
        return at(before) || at(before + 1);
    }

    bool ReadRowOrColumn(int v, bool alongRows)
    {
        const int last = (alongRows ? reader_.Source().Width() : reader_.Source().Height()) - 1;
        reader_.place.offset = v;
        return ReadClosely(alongRows ? Pixel{0, v} : Pixel{v, 0}, alongRows ? Pixel{last, v} : Pixel{v, last},
                           alongRows ? XY(0, 1) : XY(1, 0));
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
                ScanGroup(group);
            }
        }
    }

    void ScanGroup(const BarGroup& group)
    {
        const GroupFrame frame(group);
        if (!(frame.width >= 1)) return;
        const XY from = group.first - frame.beside * frame.direction;
        const Clipped part = Clip(from, frame.direction, reader_.Source().Width(), reader_.Source().Height());
        const double first = std::max(0.0, part.from), last = std::min(frame.width + 2 * frame.beside, part.to);
        const int count = static_cast<int>((last - first) / sampleStep) + 1;
        if (part.Empty() || count < 16) return;
        ScanScratch& scratch = reader_.Scratch();
        if (static_cast<int>(scratch.fine.size()) < count) scratch.fine.resize(static_cast<std::size_t>(count));
        const double spacing = std::max(groupSpacing, group.length / mostGroupLines);
        reader_.place.direction = frame.direction;
        reader_.place.step = sampleStep * frame.direction;
        // From the middle to both ends.
        const int lines = std::max(1, static_cast<int>((group.length - 1) / spacing) + 1);
        for (int i = 0; i < lines && !Spent(); i++) {
            const double k = (i % 2 == 0 ? 1 : -1) * ((i + 1) / 2) * spacing;
            reader_.place.offset = static_cast<int>(std::lround(k));
            reader_.place.start = from + first * frame.direction + k * frame.down;
            reader_.Source().SampleAdded(reader_.place.start, reader_.place.step, count, breadth, group.along,
                                         scratch.fine.data());
            reader_.Charge(count * breadth);
            ReadLine(std::span<const int>(scratch.fine).first(static_cast<std::size_t>(count)));
        }
    }

    /// Reads the line that is the sum of some beside each other, `shift` from one to the next.
    bool ReadClosely(Pixel from, Pixel to, XY shift)
    {
        ScanScratch& scratch = reader_.Scratch();
        const int steps = std::max(std::abs(to.x - from.x), std::abs(to.y - from.y));
        if (steps < 1) return false;
        const XY step(static_cast<double>(to.x - from.x) / steps, static_cast<double>(to.y - from.y) / steps);
        reader_.place.start = XY(from.x - border * step.X, from.y - border * step.Y);
        reader_.place.step = step;
        int* pixels = scratch.line.data() + border;
        const int count = reader_.Source().WalkAdded(from, to, breadth, shift.X, shift.Y, pixels);
        reader_.Charge(count / 2);
        // A bar that the picture cuts off ends there.
        const int bright = *std::max_element(pixels, pixels + count);
        std::fill_n(scratch.line.data(), border, bright);
        std::fill_n(pixels + count, border, bright);
        return ReadLine(std::span<const int>(scratch.line).first(static_cast<std::size_t>(count + 2 * border)));
    }

    bool ReadLine(std::span<const int> line)
    {
        const auto [least, most] = std::minmax_element(line.begin(), line.end());
        const int range = *most - *least;
        if (range < leastRange * breadth) return false;
        reader_.rule = EdgeRule::Of(range / noisePart, 0);
        const XY step = reader_.place.step;
        for (const Way way : ways) {
            ScanScratch& scratch = reader_.Scratch();
            auto samples = Sharpened(line, way.halves, scratch.filtered);
            if (way.doubled) {
                samples = Doubled(samples, scratch.doubled);
                reader_.place.step = XY(step.X / 2, step.Y / 2);
            }
            reader_.FindTurns(samples);
            bool read = false;
            for (const int part : way.steps) {
                read = reader_.ReadTurns(samples, static_cast<int>(std::int64_t{range} * part / 100));
                if (read || reader_.EdgeCount() < reader_.FewestEdges() / 2) break;
            }
            reader_.place.step = step;
            if (read) return true;
            if (reader_.EdgeCount() < reader_.FewestEdges() / 2) return false;
        }
        return false;
    }

    VotingReader& reader_;
    std::int64_t begin_;
    double limit_ = 0;
    Progress rows_, columns_;
};

} // namespace

int LookCloser(VotingReader& reader, int directions, int density)
{
    reader.Votes().Clear();
    reader.votes = VoteRule::AnyWay;
    reader.place.group = 0;
    reader.place.directionIndex = -1;
    reader.byFit = true;
    CloserScan scan(reader);
    scan.Run(directions != 0, directions != 1, directions == Auto, density);
    reader.Votes().JoinRows(enoughVotes);
    return reader.Votes().Count(enoughVotes, outvoting);
}

} // namespace Tesk::linear
