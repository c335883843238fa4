// Scan lines: parallel ones, and those across groups of bars; each line's edges go to the decoders, and reads to the
// ballot.
#include "foundation/Angles.h"
#include "read/linear/Misfit.h"
#include "read/linear/ScanState.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <numbers>

namespace Tesk::linear {

namespace {

constexpr int fewestEdges = 6;
/// What finding an edge takes, in samples.
constexpr int workOfFinding = 2;
/// Oblique lines do not cut the corners of a picture nearer than this.
constexpr double cornerMargin = 100;
/// In modules. Of the wrong reads of photographs, none was below 0.2.
constexpr double largestMisfit = 0.2;
constexpr int shortestLine = 10;
constexpr int mostDirections = 180;

/// A decoder, or several that share their work.
struct Decoder
{
    bool enabled;
    int work;  ///< for each edge, by the times that they take for pictures without symbols
    int edges; ///< what their smallest symbol has
};

std::array<Decoder, 15> DecodersOf(const LinearSettings& settings)
{
    return {{
        {settings.detectEAN13 || settings.detectUPCA, 1, 60},
        {settings.detectEAN8, 1, 44},
        {settings.detectUPCE, 1, 34},
        {settings.detectEAN128, 2, 20},
        {settings.detect2of5 || settings.detectITF14, 4, settings.detect2of5 ? 18 : 78},
        {settings.detectMatrix2of5, 2, 18},
        {settings.detectMSI, 2, 14},
        {settings.detect11, 3, 18},
        {settings.detectPharmacode, 1, fewestEdges},
        {settings.detectDatabar, 1, 45},
        {settings.detectDatabarRows, 1, 24},
        {settings.detectDatabarLimited, 1, 45},
        {settings.detect39 || settings.detect39Extended, 5, 30},
        {settings.detect93, 2, 20},
        {settings.detectCodabar, 5, 24},
    }};
}

/// Symbologies of which a wrong text hardly fits and passes its checks twice.
bool HasManyChecks(Symbologies symbology)
{
    return symbology == CodeEAN13 || symbology == CodeUPCA || symbology == CodeEAN128 || symbology == Code93 ||
           symbology == CodeDatabar || symbology == CodeDatabarLimited;
}

} // namespace

LineReader::LineReader(const Raster& raster, const LinearSettings& settings, ScanScratch& scratch)
    : raster_(raster), settings_(settings), scratch_(scratch), workOfEdge_(workOfFinding), fewestEdges_(MaxInt)
{
    for (const Decoder& decoder : DecodersOf(settings)) {
        if (!decoder.enabled) continue;
        workOfEdge_ += decoder.work;
        fewestEdges_ = std::min(fewestEdges_, decoder.edges);
    }
}

bool LineReader::Read(Pixel from, Pixel to)
{
    const int steps = std::max(std::abs(to.x - from.x), std::abs(to.y - from.y));
    if (steps == 0) return false;
    if (static_cast<int>(scratch_.line.size()) < steps + 1) scratch_.line.resize(static_cast<std::size_t>(steps) + 1);
    place.start = XY(from.x, from.y);
    place.step = XY(static_cast<double>(to.x - from.x) / steps, static_cast<double>(to.y - from.y) / steps);
    const int count = raster_.Walk(from, to, scratch_.line.data());
    return Read(std::span<const int>(scratch_.line).first(static_cast<std::size_t>(count)));
}

bool LineReader::Read(std::span<const int> line)
{
    FindTurns(line);
    return ReadTurns(line, rule.step);
}

void LineReader::FindTurns(std::span<const int> line)
{
    if (scratch_.turns.size() < line.size() + 2) scratch_.turns.resize(line.size() + 2);
    turnCount_ = linear::FindTurns(line, rule.noise, scratch_.turns.data());
    work_ += static_cast<std::int64_t>(line.size());
}

bool LineReader::ReadTurns(std::span<const int> line, int step)
{
    const auto turns = std::span<const Turn>(scratch_.turns).first(static_cast<std::size_t>(turnCount_));
    if (scratch_.edges.size() < turns.size()) scratch_.edges.resize(turns.size());
    if (scratch_.reversed.size() < turns.size()) scratch_.reversed.resize(turns.size());
    EdgeList list;
    edgeCount_ = EdgesBetween(line, turns, step, scratch_.edges.data(), list.rising);
    work_ += turnCount_ + std::int64_t{workOfEdge_} * edgeCount_;
    if (edgeCount_ < fewestEdges) return false;
    list.positions = std::span<const int>(scratch_.edges).first(static_cast<std::size_t>(edgeCount_));
    list.length = static_cast<int>(line.size() - 1) * 256;
    return DecodeLine(list, scratch_.reversed, settings_, *this);
}

void VotingReader::Take(const SymbolRead& read)
{
    int weight = 1;
    if (byFit && Misfit(Edges(), read) <= largestMisfit) weight = HasManyChecks(read.symbology) ? wellChecked : goodFit;
    ballot_.Vote(read, place, votes, weight);
}

Clipped Clip(XY origin, XY direction, int width, int height)
{
    Clipped part{-1e9, 1e9};
    const auto cut = [&](double at, double step, double last) {
        if (std::abs(step) < 1e-9) {
            if (!(at >= -0.5 && at <= last + 0.5)) part.to = part.from - 1;
            return;
        }
        const double a = -at / step, b = (last - at) / step;
        part.from = std::max(part.from, std::min(a, b));
        part.to = std::min(part.to, std::max(a, b));
    };
    cut(origin.X, direction.X, width - 1);
    cut(origin.Y, direction.Y, height - 1);
    return part;
}

bool ReadSegment(LineReader& reader, XY origin, XY direction, double least, double most, double shortest)
{
    const int width = reader.Source().Width(), height = reader.Source().Height();
    const Clipped part = Clip(origin, direction, width, height);
    const double from = std::max(part.from, least), to = std::min(part.to, most);
    if (!(to - from >= shortest)) return false;
    const auto place = [&](double t) {
        const XY at = origin + t * direction;
        return Pixel{std::clamp(static_cast<int>(std::lround(at.X)), 0, width - 1),
                     std::clamp(static_cast<int>(std::lround(at.Y)), 0, height - 1)};
    };
    return reader.Read(place(from), place(to));
}

GroupFrame::GroupFrame(const BarGroup& group)
    : width(std::hypot(group.last.X - group.first.X, group.last.Y - group.first.Y)), direction(0, 0), down(0, 0),
      beside(groupMargin * width + groupMarginPixels)
{
    if (!(width >= 1)) return;
    direction = XY((group.last.X - group.first.X) / width, (group.last.Y - group.first.Y) / width);
    const bool turned = -direction.Y * group.along.X + direction.X * group.along.Y < 0;
    down = (turned ? -1.0 : 1.0) * group.along;
}

void ScanParallel(LineReader& reader, XY direction, int density)
{
    const int width = reader.Source().Width(), height = reader.Source().Height();
    const XY normal(-direction.Y, direction.X);
    double least = 0, most = 0;
    for (const XY corner : {XY(width - 1, 0), XY(0, height - 1), XY(width - 1, height - 1)}) {
        const double offset = corner.X * normal.X + corner.Y * normal.Y;
        least = std::min(least, offset);
        most = std::max(most, offset);
    }
    const double margin = std::min(cornerMargin * std::abs(direction.X * direction.Y), (most - least) / 4);
    reader.place.direction = direction;
    for (double offset = least + margin; offset <= most - margin + 1e-6; offset += density) {
        const XY origin(offset * normal.X, offset * normal.Y);
        reader.place.offset = static_cast<int>(std::lround(offset));
        ReadSegment(reader, origin, direction, MinFloat, MaxFloat, 1);
    }
}

void ScanGroups(LineReader& reader, int density)
{
    constexpr int groupsOfPass = 1 << 24;
    for (const bool alongRows : {false, true}) {
        BarFinder& bars = reader.Scratch().bars;
        const auto groups = bars.Find(reader.Source(), alongRows, density, reader.rule);
        reader.Charge(bars.Work());
        (alongRows ? reader.Scratch().rowEdges : reader.Scratch().columnEdges) = bars.EdgesFound();
        if (!alongRows) reader.Scratch().groups.clear();
        reader.Scratch().groups.insert(reader.Scratch().groups.end(), groups.begin(), groups.end());
        reader.place.alongRows = alongRows;
        reader.place.group = alongRows ? groupsOfPass : 0;
        for (const BarGroup& group : groups) {
            reader.place.group++;
            const GroupFrame frame(group);
            if (!(frame.width >= 1)) continue;
            reader.place.direction = frame.direction;
            for (double k = -(group.length - 1) / 2; k <= (group.length - 1) / 2; k += density) {
                reader.place.offset = static_cast<int>(std::lround(k));
                ReadSegment(reader, group.first + k * frame.down, frame.direction, -frame.beside,
                            frame.width + frame.beside, shortestLine);
            }
        }
    }
}

void ScanDirections(VotingReader& reader, int directions, bool reverse, int density)
{
    if (directions == Auto) {
        reader.votes = VoteRule::SameGroup;
        ScanGroups(reader, density);
        return;
    }
    if (directions >= 0) {
        reader.votes = VoteRule::SameWay;
        const int count = std::clamp(directions, 1, mostDirections);
        for (int i = 0; i < count; i++) {
            const double angle = i * std::numbers::pi / count;
            reader.place.directionIndex = i;
            const bool vertical = directions == 0 || 2 * i == count;
            ScanParallel(reader,
                         vertical ? XY(0, 1)
                         : i == 0 ? XY(1, 0)
                                  : XY(std::cos(angle), std::sin(angle)),
                         density);
        }
        return;
    }
    reader.votes = VoteRule::AnyWay;
    const double widest = -static_cast<double>(directions), step = reverse ? widest : 2 * widest;
    reader.place.directionIndex = 0;
    for (double angle = -widest; angle <= widest; angle += step, reader.place.directionIndex++)
        ScanParallel(reader, XY(-std::sin(ToRadians(angle)), std::cos(ToRadians(angle))), density);
}

} // namespace Tesk::linear
