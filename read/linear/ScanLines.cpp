// Scan lines: parallel ones, and those across groups of bars; each line's edges go to the decoders, and reads to the
// ballot.
#include "foundation/Angles.h"
#include "read/linear/Misfit.h"
#include "read/linear/ScanState.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>

namespace Tesk::linear {

namespace {

constexpr int fewestEdges = 6;
/// What finding an edge takes, in samples; for decoders see `WorkOfEdge`.
constexpr int workOfFinding = 2;
/// Oblique lines do not cut the corners of a picture nearer than this.
constexpr double cornerMargin = 100;
/// In modules. Of the wrong reads of photographs, none was below 0.2.
constexpr double largestMisfit = 0.2;
constexpr int shortestLine = 10;
constexpr int mostDirections = 180;

} // namespace

bool LineReader::Read(Pixel from, Pixel to)
{
    const int steps = std::max(std::abs(to.x - from.x), std::abs(to.y - from.y));
    if (steps == 0) return false;
    if (static_cast<int>(scratch_.line.size()) < steps + 1) return false;
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

/// By the times that the decoders take for pictures without symbols.
int LineReader::WorkOfEdge(const LinearSettings& settings)
{
    int work = workOfFinding;
    const auto add = [&](bool enabled, int decoder) { work += enabled ? decoder : 0; };
    add(settings.detectEAN13 || settings.detectUPCA, 1);
    add(settings.detectEAN8, 1);
    add(settings.detectUPCE, 1);
    add(settings.detectEAN128, 2);
    add(settings.detect2of5 || settings.detectITF14, 4);
    add(settings.detectMatrix2of5, 2);
    add(settings.detectMSI, 2);
    add(settings.detect11, 3);
    add(settings.detectPharmacode, 1);
    add(settings.detectDatabar, 1);
    add(settings.detectDatabarLimited, 1);
    add(settings.detect39 || settings.detect39Extended, 5);
    add(settings.detect93, 2);
    add(settings.detectCodabar, 5);
    return work;
}

/// Symbologies of which a wrong text hardly fits and passes its checks twice.
bool HasManyChecks(Symbologies symbology)
{
    return symbology == CodeEAN13 || symbology == CodeUPCA || symbology == CodeEAN128 || symbology == Code93 ||
           symbology == CodeDatabar || symbology == CodeDatabarLimited;
}

int LineReader::FewestEdges(const LinearSettings& settings)
{
    int fewest = MaxInt;
    const auto add = [&](bool enabled, int edges) {
        if (enabled) fewest = std::min(fewest, edges);
    };
    add(settings.detectEAN13 || settings.detectUPCA, 60);
    add(settings.detectEAN8, 44);
    add(settings.detectUPCE, 34);
    add(settings.detectEAN128, 20);
    add(settings.detect2of5, 18);
    add(settings.detectITF14, 78);
    add(settings.detectMatrix2of5, 18);
    add(settings.detectMSI, 14);
    add(settings.detect11, 18);
    add(settings.detectPharmacode, fewestEdges);
    add(settings.detectDatabar || settings.detectDatabarLimited, 45);
    add(settings.detect39 || settings.detect39Extended, 30);
    add(settings.detect93, 20);
    add(settings.detectCodabar, 24);
    return fewest;
}

void LineReader::Take(const SymbolRead& read)
{
    int weight = 1;
    if (byFit) {
        const auto edges = std::span<const int>(scratch_.edges).first(static_cast<std::size_t>(edgeCount_));
        if (Misfit(edges, read) <= largestMisfit) weight = HasManyChecks(read.symbology) ? wellChecked : goodFit;
    }
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

bool ReadSegment(LineReader& reader, XY from, XY to, int least)
{
    const double length = std::hypot(to.X - from.X, to.Y - from.Y);
    if (!(length >= 1)) return false;
    const XY direction((to.X - from.X) / length, (to.Y - from.Y) / length);
    const int width = reader.Source().Width(), height = reader.Source().Height();
    Clipped part = Clip(from, direction, width, height);
    part.from = std::max(part.from, 0.0);
    part.to = std::min(part.to, length);
    if (part.Empty() || part.to - part.from < least) return false;
    const auto place = [&](double t) {
        return Pixel{std::clamp(static_cast<int>(std::lround(from.X + t * direction.X)), 0, width - 1),
                     std::clamp(static_cast<int>(std::lround(from.Y + t * direction.Y)), 0, height - 1)};
    };
    return reader.Read(place(part.from), place(part.to));
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
        const Clipped part = Clip(origin, direction, width, height);
        if (part.Empty()) continue;
        reader.place.offset = static_cast<int>(std::lround(offset));
        ReadSegment(reader, XY(origin.X + part.from * direction.X, origin.Y + part.from * direction.Y),
                    XY(origin.X + part.to * direction.X, origin.Y + part.to * direction.Y), 0);
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
            const XY across(group.last.X - group.first.X, group.last.Y - group.first.Y);
            const double width = std::hypot(across.X, across.Y);
            if (!(width >= 1)) continue;
            const XY direction(across.X / width, across.Y / width);
            const double beside = groupMargin * width + groupMarginPixels;
            // Lines of ascending offset go down from their normal.
            const double sign = -direction.Y * group.along.X + direction.X * group.along.Y < 0 ? -1 : 1;
            reader.place.direction = direction;
            for (double k = -(group.length - 1) / 2; k <= (group.length - 1) / 2; k += density) {
                const XY shift(sign * k * group.along.X, sign * k * group.along.Y);
                reader.place.offset = static_cast<int>(std::lround(k));
                ReadSegment(
                    reader,
                    XY(group.first.X + shift.X - beside * direction.X, group.first.Y + shift.Y - beside * direction.Y),
                    XY(group.last.X + shift.X + beside * direction.X, group.last.Y + shift.Y + beside * direction.Y),
                    shortestLine);
            }
        }
    }
}

void ScanDirections(LineReader& reader, int directions, bool reverse, int density)
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
