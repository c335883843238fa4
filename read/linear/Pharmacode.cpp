// Binary Pharmacode: narrow and wide bars at equal distances tell a number. It has no frame and no check, and reads in
// both directions: which one is right must be known.
#include "read/linear/LinearFrame.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>

namespace Tesk::linear {

namespace {

constexpr int mostBars = 16;

/// The bars from one on, as far as they may belong together.
struct Run
{
    int bars = 0;
    std::array<bool, mostBars> wide;
};

bool IsWide(std::int64_t bar, std::int64_t space)
{
    return 17 * space <= 20 * bar;
}

/// Whether a bar may stand beside a space.
bool Fits(std::int64_t bar, std::int64_t space)
{
    if (IsWide(bar, space)) return 12 * space <= 26 * bar && 8 * bar <= 26 * space;
    return 3 * space <= 26 * bar && bar <= space;
}

/// What the bars and spaces of a code must have in common, which is more than the bounds beside each space ask: spaces
/// are alike, narrow bars are alike, and so are wide ones.
bool AreAlike(const Line& line, int first, const Run& run)
{
    ElementSpread spread;
    std::int64_t least = INT64_MAX, most = 0;
    for (int i = 0; i < run.bars; ++i) {
        spread.Add(line, first + 2 * i, run.wide[static_cast<std::size_t>(i)] ? 1 : 0, 1);
        if (i + 1 == run.bars) break;
        least = std::min(least, line.Width(first + 2 * i + 1));
        most = std::max(most, line.Width(first + 2 * i + 1));
    }
    return 2 * most <= 3 * least && spread.IsUniform();
}

/// A bar is as wide beside the space before it as beside the one behind it.
Run FindRun(const Line& line, int first)
{
    Run run;
    for (int element = first; element + 3 < line.Edges() && run.bars < mostBars; element += 2) {
        const std::int64_t bar = line.Width(element), space = line.Width(element + 1), next = line.Width(element + 2);
        if (!Fits(bar, space) || !Fits(next, space)) break;
        const bool isWide = IsWide(bar, space);
        if (run.bars == 0)
            run.wide[static_cast<std::size_t>(run.bars++)] = isWide;
        else if (run.wide[static_cast<std::size_t>(run.bars - 1)] != isWide)
            break;
        run.wide[static_cast<std::size_t>(run.bars++)] = IsWide(next, space);
    }
    return run;
}

/// Whether the gap between a bar at an end and its neighbour is wide enough: there is none at an end of the line.
bool IsQuiet(std::int64_t bar, std::int64_t gap, bool wide)
{
    return 40 * bar < (wide ? 26 : 8) * gap;
}

int Report(const Line& line, int first, const Run& run)
{
    const bool mirrored = line.settings.reverse == line.IsForward();
    Symbol symbol(CodePharmacode);
    int value = 0;
    for (int i = 0; i < run.bars; ++i) {
        const bool isWide = run.wide[static_cast<std::size_t>(mirrored ? run.bars - 1 - i : i)];
        // The last bar weighs 1, the one before it 2, and so on.
        value = 2 * value + (isWide ? 2 : 1);
        if (i > 0) symbol.AddPattern(2);
        symbol.AddPattern(isWide ? 3 : 1);
    }
    std::array<char, 12> text;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    symbol.Add({text.data(), static_cast<std::size_t>(end - text.data())});
    return line.Report(symbol, first, mirrored);
}

/// Reads the longest run from the edge `first` on that has its quiet zones.
int ReadSymbol(const Line& line, int first)
{
    if (!line.DarkAfter(first)) return -1;
    Run run = FindRun(line, first);
    const bool checks = line.settings.checkQuietZone;
    if (run.bars == 0) return -1;
    if (checks && first > 0 && !IsQuiet(line.Width(first), line.Width(first - 1), run.wide[0])) return -1;
    for (; run.bars >= std::max(line.settings.minimumBars, 2); --run.bars) {
        const int last = first + 2 * run.bars - 1;
        const auto end = run.wide.begin() + run.bars;
        if (checks && last + 1 < line.Edges() && !IsQuiet(line.Width(last - 1), line.Width(last), end[-1])) continue;
        const auto wide = std::count(run.wide.begin(), end, true);
        if (wide == 0 || wide == run.bars) return -1;
        return AreAlike(line, first, run) ? Report(line, first, run) : -1;
    }
    return -1;
}

} // namespace

bool DecodePharmacode(const Line& line)
{
    return ReadFromEachEdge(
        line, 4, [&](int first) { return ReadSymbol(line, first); }, false);
}

} // namespace Tesk::linear
