// The algebra of lists of runs: single merges over two lists in scan order.
#include "measure/region/RunSets.h"

#include "measure/region/RunLists.h"

namespace Tesk::regions {

RunList Inverted(std::int64_t x, std::int64_t y, std::int64_t width, std::int64_t height, RunSpan src)
{
    const auto held = [](std::int64_t v) { return static_cast<int>(Clamp<std::int64_t>(v, INT16_MIN, INT16_MAX)); };
    const int left = held(x), right = held(x + width);
    const auto bottom = static_cast<int>(Clamp<std::int64_t>(y + height, INT16_MIN, INT16_MAX + 1));
    RunList result;
    if (left >= right) return result;
    std::size_t i = 0;
    for (int row = static_cast<int>(Clamp<std::int64_t>(y, INT16_MIN, INT16_MAX + 1)); row < bottom; row++) {
        while (i < src.size() && src[i].Y < row)
            i++;
        int from = left;
        for (; i < src.size() && src[i].Y == row; i++) {
            // A run without a pixel parts nothing.
            if (src[i].Start >= src[i].End) continue;
            if (src[i].Start > from) {
                const int to = Min<int>(src[i].Start, right);
                if (from < to) result.push_back(MakeRun(from, to, row));
            }
            from = Max<int>(from, src[i].End);
        }
        if (from < right) result.push_back(MakeRun(from, right, row));
    }
    return result;
}

RunList United(RunSpan a, RunSpan b)
{
    RunList result(a.size() + b.size());
    std::size_t count = 0, i = 0, j = 0;
    while (i < a.size() || j < b.size()) {
        const bool first = j == b.size() || (i < a.size() && !IsBefore(b[j], a[i]));
        const LabeledRun& run = first ? a[i++] : b[j++];
        if (run.Start >= run.End) continue;
        if (count > 0 && result[count - 1].Y == run.Y && run.Start <= result[count - 1].End)
            result[count - 1].End = Max(result[count - 1].End, run.End);
        else
            result[count++] = MakeRun(run.Start, run.End, run.Y);
    }
    result.resize(count);
    return result;
}

RunList Intersected(RunSpan a, RunSpan b)
{
    RunList result;
    result.reserve(Min(a.size(), b.size()));
    std::size_t i = 0, j = 0;
    while (i < a.size() && j < b.size()) {
        const LabeledRun &p = a[i], &q = b[j];
        if (p.Y != q.Y) {
            (p.Y < q.Y ? i : j)++;
            continue;
        }
        const int start = Max(p.Start, q.Start), end = Min(p.End, q.End);
        if (start < end) result.push_back(MakeRun(start, end, p.Y));
        (p.End < q.End ? i : j)++;
    }
    return result;
}

RunList Subtracted(RunSpan a, RunSpan b)
{
    RunList result;
    result.reserve(a.size());
    bool ordered = true;
    const auto add = [&](int start, int end, int y) {
        const LabeledRun run = MakeRun(start, end, y);
        ordered = ordered && (result.empty() || !IsBefore(run, result.back()));
        result.push_back(run);
    };
    std::size_t j = 0;
    for (const LabeledRun& run : a) {
        while (j < b.size() && (b[j].Y < run.Y || (b[j].Y == run.Y && b[j].End <= run.Start)))
            j++;
        int from = run.Start;
        for (std::size_t k = j; k < b.size() && b[k].Y == run.Y && b[k].Start < run.End; k++) {
            if (b[k].Start >= b[k].End) continue;
            if (b[k].Start > from) add(from, b[k].Start, run.Y);
            from = Max<int>(from, b[k].End);
        }
        if (from < run.End) add(from, run.End, run.Y);
    }
    // The parts of runs that overlap come out mixed.
    if (!ordered) SortRuns(result);
    return result;
}

bool IsSame(RunSpan a, RunSpan b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const LabeledRun& p, const LabeledRun& q) {
        return p.Start == q.Start && p.End == q.End && p.Y == q.Y;
    });
}

RangeMode ContainmentOf(RunSpan a, RunSpan b)
{
    const RunList common = Intersected(a, b);
    return IsSame(common, a) ? Inside : IsSame(common, b) ? Over : common.empty() ? Outside : Onside;
}

} // namespace Tesk::regions
