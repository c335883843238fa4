// What a reader of linear symbols keeps from one scan to the next: votes, trained colours, and memory.
#pragma once

#include "foundation/Records.h"
#include "read/linear/BarGroups.h"
#include "read/linear/LineWalk.h"
#include "read/linear/LinearCode.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace Tesk::linear {

/// A line across a group goes on beside it by this part of its length, and pixels: outer bars that were not found, and
/// quiet zones.
constexpr double groupMargin = 0.2, groupMarginPixels = 12;
/// Room before and behind the pixels of a line.
constexpr int lineBorder = 4;
constexpr int slotCount = 32, leastVotes = 3, goodFit = 3, wellChecked = 5, mostColorBars = 16;

/// A text, and where it was read how often.
struct ScanVote
{
    int votes = 0;
    Symbologies symbology = NoSymbology;
    std::array<char, maximumTextLength + 1> text{};
    int textLength = 0;
    int firstLine = 0, lastLine = 0; ///< offsets of these scan lines
    /// Where the text begins and ends on the first line, where it ends and begins on the last: around the symbol.
    std::array<Site, 4> corners{};
    Site direction{0, 0}; ///< of the first read, of length 4096
    int directionIndex = 0;
    int flags = 0; ///< `ReadFlags`
    int fnc1Position = 0;
    int group = 0;
    int elementCount = 0;
    std::array<std::uint8_t, maximumElements> modules{};
    DatabarRow row{}; ///< where the symbology is `NoSymbology`

    bool IsSymbol() const { return votes > 0 && symbology != NoSymbology; }
    std::string_view Text() const { return {text.data(), static_cast<std::size_t>(textLength)}; }
};

/// A scan line as votes see it.
struct LinePlace
{
    XY start{0, 0};
    XY step{1, 0};      ///< from one sample to the next
    XY direction{1, 0}; ///< of length 1
    int offset = 0, directionIndex = 0, group = 0;
    bool alongRows = false;
};

/// Which reads go to one slot.
enum class VoteRule
{
    SameWay,   ///< those that run in the same way along the scan lines
    SameGroup, ///< those of one group of bars, along nearly the same direction
    AnyWay
};

/// The table of texts.
class Ballot
{
public:
    void Clear();
    void Vote(const SymbolRead& read, const LinePlace& place, VoteRule rule, int weight = 1);
    /// Makes symbols of the rows of stacked ones, of those that were read as often and lie below each other. Their
    /// elements are not kept.
    void JoinRows(int votesNeeded);
    /// Moves what was read often enough, and is a symbol by its corners, to the front. With `outvoting` it must have
    /// that multiple of the votes of all other texts in its place. How many symbols there are.
    int Count(int votesNeeded, int outvoting = 0);
    const ScanVote& operator[](int index) const { return slots_[static_cast<std::size_t>(index)]; }
    /// Whether a text has as many votes, and that multiple of those of any other one.
    bool HasClearWinner(int votes, int outvoting) const;
    /// The symbol read most often of the first `count`.
    int Best(int count) const;
    void Move(int count, int dx, int dy);

private:
    ScanVote& SlotOf(const SymbolRead& read, const LinePlace& place, VoteRule rule);
    bool IsOutvoted(const ScanVote& slot, int outvoting) const;

    std::array<ScanVote, slotCount> slots_{};
};

/// A bar whose colour is looked at.
struct ColorBar
{
    std::array<XY, 4> corners{}; ///< around it, in pixels of the window
    RgbPixel color{0, 0, 0};
    bool passed = false;
};

/// The bars of a Pharmacode, in the order of the scan line.
struct ColorBars
{
    int count = 0;
    std::array<ColorBar, mostColorBars> bars{};
};

/// Memory that scans use again and again.
struct ScanScratch
{
    std::vector<int> line, edges, reversed, fine, filtered, doubled;
    std::vector<Turn> turns;
    std::vector<std::uint8_t> rows, columns; ///< of the closer look: where a symbol may be
    BarFinder bars;
    std::vector<BarGroup> groups;      ///< of both passes of the first look
    int rowEdges = 0, columnEdges = 0; ///< that were found on rows and on columns
};

struct ScanState
{
    Ballot ballot;
    ColorBars trained, inspected; ///< those of the sample, and those of the last decoding
    std::array<char, maximumTextLength + 1> trainedText{};
    ScanScratch scratch;
};

/// Reads lines of an image.
class LineReader : public ReadSink
{
public:
    LineReader(const Raster& raster, const LinearSettings& settings, ScanScratch& scratch);
    virtual ~LineReader() = default;

    /// The next lines.
    LinePlace place;
    EdgeRule rule{10, 32};

    /// Reads the pixels from one to another.
    bool Read(Pixel from, Pixel to);
    /// Reads a line of samples, of which `place` tells start and step.
    bool Read(std::span<const int> line);
    /// The two halves of that, of which the second may be taken with several steps.
    void FindTurns(std::span<const int> line);
    bool ReadTurns(std::span<const int> line, int step);

    const Raster& Source() const { return raster_; }
    ScanScratch& Scratch() const { return scratch_; }
    /// A measure of the work so far: samples, and edges by what decoders take for each.
    std::int64_t Work() const { return work_; }
    int EdgeCount() const { return edgeCount_; } ///< of the last line
    /// What the smallest symbol that is looked for has.
    int FewestEdges() const { return fewestEdges_; }
    void Charge(std::int64_t work) { work_ += work; }

protected:
    /// Of the last line, in the direction of the scan.
    std::span<const int> Edges() const
    {
        return std::span<const int>(scratch_.edges).first(static_cast<std::size_t>(edgeCount_));
    }

private:
    const Raster& raster_;
    const LinearSettings& settings_;
    ScanScratch& scratch_;
    int workOfEdge_, fewestEdges_;
    std::int64_t work_ = 0;
    int turnCount_ = 0, edgeCount_ = 0;
};

/// Votes for what it reads.
class VotingReader final : public LineReader
{
public:
    VotingReader(const Raster& raster, const LinearSettings& settings, Ballot& ballot, ScanScratch& scratch)
        : LineReader(raster, settings, scratch), ballot_(ballot)
    {}

    VoteRule votes = VoteRule::SameWay;
    bool byFit = false; ///< reads whose elements fit have more votes than others: `goodFit` of them, not one

    void Take(const SymbolRead& read) override;
    Ballot& Votes() const { return ballot_; }

private:
    Ballot& ballot_;
};

/// The grades of ten profiles across a symbol.
struct PrintQuality
{
    static constexpr int profiles = 10, indicators = 10;
    std::array<std::array<int, indicators>, profiles> values{}; ///< 4 for A to 0 for F, in the order of the report
    int Grade(std::size_t profile) const;                       ///< the lowest of its indicators
    double Mean() const;                                        ///< of the grades
};
/// Grades a symbol on a picture of which a corner lies at `origin` of the coordinates of the symbol.
PrintQuality GradePrint(const Raster& raster, const ScanVote& symbol, XY origin, std::vector<int>& line);

/// The bars of a Pharmacode and their colours, found on its first and its last scan line; `parallel` tells that these
/// were those of `ScanParallel`. False if the two lines do not show the same bars.
bool FindColorBars(const Image& src, const LinearSettings& settings, EdgeRule rule, const ScanVote& symbol,
                   bool parallel, ScanScratch& scratch, ColorBars& bars);

/// The part of a line that lies on a picture.
struct Clipped
{
    double from = 0, to = -1; ///< in units of the direction
    bool Empty() const { return !(from <= to); }
};
Clipped Clip(XY origin, XY direction, int width, int height);

/// A line through a place in a direction of length 1, between two distances from that place, cut to the picture. False
/// where fewer than `shortest` pixels of it are left.
bool ReadSegment(LineReader& reader, XY origin, XY direction, double least, double most, double shortest);

/// How lines across a group of bars run.
struct GroupFrame
{
    explicit GroupFrame(const BarGroup& group);

    double width;  ///< of the group
    XY direction;  ///< of length 1, across the bars; none where the width is below 1
    XY down;       ///< along the bars; lines of ascending offset go down from their normal
    double beside; ///< a line goes on before and behind the group by so many pixels
};

/// Scan lines of one direction, `density` pixels from one to the next.
void ScanParallel(LineReader& reader, XY direction, int density);
/// Scan lines across groups of bars.
void ScanGroups(LineReader& reader, int density);
/// Scans in the directions that a setting of `NumDirections` stands for.
void ScanDirections(VotingReader& reader, int directions, bool reverse, int density);
/// The second look, where the first one found nothing: at no more than three times its work. How many symbols there
/// are.
int LookCloser(VotingReader& reader, int directions, int density);

} // namespace Tesk::linear
