// Erosion and dilation of lists of runs, a row of the structuring element at a time.
#include "measure/region/BitRows.h"
#include "measure/region/RunLists.h"
#include "measure/region/RunSets.h"

namespace Tesk::regions {

namespace {

bool IsRow(int y)
{
    return y >= INT16_MIN && y <= INT16_MAX;
}

int Column(int x)
{
    return Clamp<int>(x, INT16_MIN, INT16_MAX);
}

/// The runs that are long enough, `shrink` shorter at either end, `down` rows further down.
void Shrink(RunSpan src, int shrink, int down, RunList& result)
{
    result.clear();
    for (const LabeledRun& run : src)
        if (run.End - run.Start >= 2 * std::int64_t{shrink} && IsRow(run.Y + down))
            result.push_back(MakeRun(Column(run.Start + shrink), Column(run.End - shrink), run.Y + down, run.Label));
}

/// The runs `grow` longer at either end, `down` rows further down; those with a gap of at most `bridged` between them
/// become one first.
void Grow(RunSpan src, int grow, int bridged, int down, RunList& result)
{
    result.clear();
    for (std::size_t i = 0; i < src.size();) {
        const LabeledRun& first = src[i];
        int end = first.End;
        for (i++; i < src.size() && src[i].Y == first.Y && src[i].Start - end <= bridged; i++)
            end = Max<int>(end, src[i].End);
        const int left = Column(first.Start - grow), right = Column(end + grow);
        if (left < right && IsRow(first.Y + down)) result.push_back(MakeRun(left, right, first.Y + down, first.Label));
    }
}

/// What no run can be longer than, so that sums stay in range.
int Held(int extent)
{
    return Min(extent, 1 << 17);
}

} // namespace

RunList Eroded(RunSpan src, const Element& element)
{
    if (SuitsBits(src, element)) return ErodedBits(src, element);
    RunList result, moved;
    Shrink(src, Held(element.halfWidth), 0, result);
    const auto cut = [&](int shrink, int rows) {
        for (const int down : {-rows, rows}) {
            Shrink(src, shrink, down, moved);
            result = Intersected(result, moved);
        }
    };
    for (int k = 1; k <= element.diagonal && !result.empty(); k++)
        cut(Held(element.halfWidth) - k, k);
    for (int k = 1; k <= element.box && !result.empty(); k++)
        cut(Held(element.halfWidth), k);
    return result;
}

RunList Dilated(RunSpan src, const Element& element)
{
    if (SuitsBits(src, element)) return DilatedBits(src, element);
    RunList result, moved;
    const int half = Held(element.halfWidth);
    Grow(src, half, 2 * half, 0, result);
    const auto add = [&](int grow, int rows) {
        for (const int down : {-rows, rows}) {
            Grow(src, grow, 2 * grow - 1, down, moved);
            result = United(result, moved);
        }
    };
    const int rows = 1 << 16;
    for (int k = 1; k <= Min(element.diagonal, rows); k++)
        add(half - k, k);
    for (int k = 1; k <= Min(element.box, rows); k++)
        add(half, k);
    return result;
}

} // namespace Tesk::regions
