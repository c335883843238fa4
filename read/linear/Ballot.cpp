// The table of texts: which of them were read, where, and how often.
#include "read/linear/ScanState.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace Tesk::linear {

namespace {

constexpr double directionScale = 4096;
/// A symbol is at least that many pixels wide by the mean of its first and its last line, doubled.
constexpr double leastDiagonals = 5;
/// Its corners are not moved along the sides by more than that multiple of these.
constexpr double farthest = 4;

std::int16_t Held(double v)
{
    return static_cast<std::int16_t>(std::clamp(std::isfinite(v) ? std::floor(v + 0.5) : 0.0, -32768.0, 32767.0));
}

Site SiteAt(XY p)
{
    return {Held(p.X), Held(p.Y)};
}

double Along(Site p, XY direction)
{
    return p.X * direction.X + p.Y * direction.Y;
}

XY Normal(const ScanVote& slot)
{
    return {-slot.direction.Y / directionScale, slot.direction.X / directionScale};
}

/// `place` lies on a line between two symbols' ends, or beside them.
bool IsInside(const ScanVote& slot, XY p)
{
    int left = 0, right = 0;
    for (std::size_t i = 0; i < 4; i++) {
        const Site a = slot.corners[i], b = slot.corners[(i + 1) % 4];
        const double cross = (b.X - a.X) * (p.Y - a.Y) - (b.Y - a.Y) * (p.X - a.X);
        if (cross > 0) left++;
        if (cross < 0) right++;
    }
    return left == 0 || right == 0;
}

XY CenterOf(const ScanVote& slot)
{
    XY sum(0, 0);
    for (const Site p : slot.corners) {
        sum.X += p.X / 4.0;
        sum.Y += p.Y / 4.0;
    }
    return sum;
}

/// Two slots of one symbol, which was found by both passes, or by lines of several directions.
bool IsSame(const ScanVote& a, const ScanVote& b)
{
    return a.symbology == b.symbology && a.Text() == b.Text() && (IsInside(a, CenterOf(b)) || IsInside(b, CenterOf(a)));
}

/// Whether two rows are read in the same way and lie no further apart than they are long.
bool AreStacked(const ScanVote& upper, const ScanVote& lower)
{
    const auto [a, b, c, d] = upper.corners;
    const XY from = CenterOf(upper), to = CenterOf(lower);
    return ((upper.flags ^ lower.flags) & ForwardRead) == 0 &&
           std::hypot(to.X - from.X, to.Y - from.Y) <= std::hypot(b.X - a.X, b.Y - a.Y);
}

/// Moves the end of a line that lies behind the other one, seen from the other line, until both are level.
void Square(Site& first, Site& second, Site firstFar, Site secondFar)
{
    const XY side((firstFar.X - first.X + secondFar.X - second.X) / 2.0,
                  (firstFar.Y - first.Y + secondFar.Y - second.Y) / 2.0);
    const double length = std::hypot(side.X, side.Y);
    if (length < 1) return;
    const XY inward(side.X / length, side.Y / length);
    const double behind = Along(first, inward) - Along(second, inward);
    const auto move = [&](Site& end, Site far, double by) {
        const XY along(far.X - end.X, far.Y - end.Y);
        const double projection = along.X * inward.X + along.Y * inward.Y;
        if (projection < 1) return;
        const double fraction = std::min(by / projection, farthest);
        end = SiteAt(XY(end.X - fraction * along.X, end.Y - fraction * along.Y));
    };
    if (behind > 0)
        move(first, firstFar, behind);
    else
        move(second, secondFar, -behind);
}

/// Refuses what has no width, and squares the figure.
bool CheckQuadrilateral(ScanVote& slot)
{
    auto& [a, b, c, d] = slot.corners;
    const double x = (c.X - a.X) - (d.X - b.X), y = (c.Y - a.Y) - (d.Y - b.Y);
    if (std::max(std::abs(x), std::abs(y)) < leastDiagonals) return false;
    const Site first = a, second = b;
    Square(a, b, d, c);
    Square(d, c, first, second);
    return true;
}

} // namespace

void Ballot::Clear()
{
    for (ScanVote& slot : slots_)
        slot.votes = 0;
}

ScanVote& Ballot::SlotOf(const SymbolRead& read, const LinePlace& place, VoteRule rule)
{
    const auto matches = [&](const ScanVote& slot) {
        if (slot.votes == 0 || slot.symbology != read.symbology || slot.Text() != read.Text()) return false;
        if (rule == VoteRule::AnyWay) return true;
        if (rule == VoteRule::SameWay) return ((slot.flags ^ read.flags) & ForwardRead) == 0;
        const double dot = slot.direction.X * place.direction.X + slot.direction.Y * place.direction.Y;
        const double cross = slot.direction.X * place.direction.Y - slot.direction.Y * place.direction.X;
        return slot.group == place.group && std::abs(dot) / 4 > std::abs(cross);
    };
    const auto match = std::find_if(slots_.begin(), slots_.end(), matches);
    if (match != slots_.end()) return *match;
    ScanVote& slot = *std::min_element(slots_.begin(), slots_.end(),
                                       [](const ScanVote& a, const ScanVote& b) { return a.votes < b.votes; });
    slot.votes = 0;
    return slot;
}

void Ballot::Vote(const SymbolRead& read, const LinePlace& place, VoteRule rule, int weight)
{
    const auto at = [&](int position) {
        return SiteAt(
            XY(place.start.X + position / 256.0 * place.step.X, place.start.Y + position / 256.0 * place.step.Y));
    };
    const Site from = at(read.start), to = at(read.end);
    ScanVote& slot = SlotOf(read, place, rule);
    if (slot.votes == 0) {
        slot.text = read.text;
        slot.textLength = read.textLength;
        slot.flags = read.flags | (place.alongRows ? ScannedAlongRows : 0);
        slot.fnc1Position = read.fnc1Position;
        slot.votes = weight;
        slot.symbology = read.symbology;
        slot.direction = SiteAt(XY(place.direction.X * directionScale, place.direction.Y * directionScale));
        slot.directionIndex = place.directionIndex;
        slot.firstLine = slot.lastLine = place.offset;
        slot.corners = {from, to, to, from};
        slot.group = place.group;
        slot.row = read.row;
        slot.elementCount = 0;
        if (read.modules.size() <= slot.modules.size()) {
            std::copy(read.modules.begin(), read.modules.end(), slot.modules.begin());
            slot.elementCount = static_cast<int>(read.modules.size());
        }
        return;
    }
    slot.votes += weight;
    auto& [a, b, c, d] = slot.corners;
    const XY normal = Normal(slot);
    const double offset = (Along(from, normal) + Along(to, normal)) / 2;
    if (offset < (Along(a, normal) + Along(b, normal)) / 2) {
        a = from;
        b = to;
    }
    if (offset > (Along(c, normal) + Along(d, normal)) / 2) {
        d = from;
        c = to;
    }
    if (slot.directionIndex != place.directionIndex)
        slot.directionIndex = -1;
    else
        slot.lastLine = place.offset;
}

bool Ballot::IsOutvoted(const ScanVote& slot, int outvoting) const
{
    int others = 0;
    for (const ScanVote& other : slots_) {
        const bool isOther = other.symbology != slot.symbology || other.Text() != slot.Text();
        if (other.IsSymbol() && isOther && (IsInside(slot, CenterOf(other)) || IsInside(other, CenterOf(slot))))
            others += other.votes;
    }
    return slot.votes < outvoting * others;
}

void Ballot::JoinRows(int votesNeeded)
{
    const auto isRow = [&](const ScanVote& slot) { return slot.symbology == NoSymbology && slot.votes >= votesNeeded; };
    for (ScanVote& upper : slots_) {
        for (ScanVote& lower : slots_) {
            if (!isRow(upper) || !isRow(lower) || !AreStacked(upper, lower)) continue;
            std::array<char, maximumTextLength + 1> text;
            const std::string_view joined = TextOfDatabarRows(upper.row, lower.row, text);
            if (joined.empty()) continue;
            upper.text = text;
            upper.textLength = static_cast<int>(joined.size());
            upper.symbology = CodeDatabar;
            upper.elementCount = 0;
            upper.votes = std::min(upper.votes, lower.votes);
            const bool downward = Along(lower.corners[0], Normal(upper)) > Along(upper.corners[0], Normal(upper));
            const std::size_t far = downward ? 2 : 0;
            std::copy_n(lower.corners.begin() + far, 2, upper.corners.begin() + far);
            lower.votes = 0;
        }
    }
}

int Ballot::Count(int votesNeeded, int outvoting)
{
    std::array<bool, slotCount> valid{};
    for (std::size_t i = 0; i < slots_.size(); i++)
        valid[i] = slots_[i].IsSymbol() && slots_[i].votes >= votesNeeded && !IsOutvoted(slots_[i], outvoting);
    std::size_t count = 0;
    for (std::size_t i = 0; i < slots_.size(); i++) {
        if (!valid[i] || !CheckQuadrilateral(slots_[i])) continue;
        bool known = false;
        for (std::size_t k = 0; k < count && !known; k++) {
            if (!IsSame(slots_[k], slots_[i])) continue;
            known = true;
            if (slots_[k].votes < slots_[i].votes) std::swap(slots_[k], slots_[i]);
        }
        if (known) continue;
        if (i != count) std::swap(slots_[count], slots_[i]);
        count++;
    }
    return static_cast<int>(count);
}

bool Ballot::HasClearWinner(int votes, int outvoting) const
{
    int first = 0, second = 0;
    for (const ScanVote& slot : slots_) {
        if (!slot.IsSymbol()) continue;
        second = std::max(second, std::min(first, slot.votes));
        first = std::max(first, slot.votes);
    }
    return first >= votes && first >= outvoting * second;
}

int Ballot::Best(int count) const
{
    return static_cast<int>(std::max_element(slots_.begin(), slots_.begin() + count,
                                             [](const ScanVote& a, const ScanVote& b) { return a.votes < b.votes; }) -
                            slots_.begin());
}

void Ballot::Move(int count, int dx, int dy)
{
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); i++)
        for (Site& corner : slots_[i].corners)
            corner = SiteAt(XY(corner.X + dx, corner.Y + dy));
}

} // namespace Tesk::linear
