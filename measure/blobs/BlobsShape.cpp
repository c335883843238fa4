// The size, the contour and the box of a blob.
#include "measure/Path.h"
#include "measure/blobs/BlobMeasures.h"

#include <cstdlib>
#include <numeric>

namespace Tesk::blobs {

namespace {

using Runs = std::span<const LabeledRun>;

bool Touch(const LabeledRun& above, const LabeledRun& run)
{
    return above.End >= run.Start && run.End >= above.Start;
}

/// Links runs to the runs of the row above that they touch, also at a corner. `cursor` moves along that row, which ends
/// before `end`.
void LinkRun(Runs runs, std::vector<ContourLinks>& links, int r, int& cursor, int end)
{
    const auto at = [](int i) { return static_cast<std::size_t>(i); };
    const LabeledRun& run = runs[at(r)];
    while (cursor < end && runs[at(cursor)].End < run.Start)
        cursor++;
    if (cursor >= end || !Touch(runs[at(cursor)], run)) return;
    int p = cursor;
    if (links[at(p)].downLeft == p) links[at(p)].downLeft = r;
    const auto joinRightOf = [&](int above) {
        // Another run hangs on the right end of the run above: the contour comes from there.
        const int t = links[at(above)].downRight;
        if (t != above) links[at(t)].upRight = r;
    };
    while (p + 1 < end && Touch(runs[at(p + 1)], run)) {
        const int q = p + 1;
        joinRightOf(p);
        links[at(r)].upRight = p;
        links[at(p)].downRight = q;
        links[at(q)].downLeft = p;
        p = q;
    }
    joinRightOf(p);
    links[at(p)].downRight = r;
    links[at(r)].upRight = p;
    cursor = p;
}

/// Links the runs of a blob into its contours, row by row.
void LinkRuns(Runs runs, std::vector<ContourLinks>& links)
{
    const int count = static_cast<int>(runs.size());
    links.resize(runs.size());
    for (int above = 0, begin = 0, end = 0; begin < count; above = begin, begin = end) {
        int cursor = above;
        for (; end < count && runs[static_cast<std::size_t>(end)].Y == runs[static_cast<std::size_t>(begin)].Y; end++) {
            links[static_cast<std::size_t>(end)] = {end, end, end};
            if (begin > 0) LinkRun(runs, links, end, cursor, begin);
        }
    }
}

} // namespace

bool Perimeter(Workplace& work, const Subject& blob, double* values)
{
    values[0] = 0;
    if (blob.runs.empty()) return true;
    LinkRuns(blob.runs, work.links);
    std::int64_t length = 0;
    int r = 0;
    bool left = true;
    // The walk meets each end of a run once, if runs do not overlap; those that do may lead it astray.
    std::size_t steps = 2 * blob.runs.size();
    do {
        const ContourLinks& links = work.links[static_cast<std::size_t>(r)];
        const int next = left ? links.downLeft : links.upRight;
        const LabeledRun &run = blob.runs[static_cast<std::size_t>(r)], &to = blob.runs[static_cast<std::size_t>(next)];
        if (to.Y == run.Y) {
            const int gap = std::abs((left ? run.Start : run.End) - (left ? to.End : to.Start));
            length += next == r ? gap - 1 : gap + 1;
            left = !left;
        } else {
            length += Max(std::abs((left ? run.Start : run.End) - (left ? to.Start : to.End)), 1);
        }
        r = next;
    } while ((r != 0 || !left) && --steps > 0);
    values[0] = static_cast<double>(length);
    return true;
}

bool FullPerimeter(Workplace&, const Subject& blob, double* values)
{
    // An inner pixel is one within three runs, of its own row and of the rows beside it, that are each a pixel shorter
    // at both ends.
    const Runs runs = blob.runs;
    std::int64_t inner = 0;
    std::size_t above = 0, below = 0;
    for (std::size_t i = 0; i < runs.size(); i++) {
        const auto before = [&](std::size_t k, int y) {
            return k < runs.size() && (runs[k].Y < y || (runs[k].Y == y && runs[k].End - 1 <= runs[i].Start + 1));
        };
        while (before(above, runs[i].Y - 1))
            above++;
        while (before(below, runs[i].Y + 1))
            below++;
        for (std::size_t a = above; a < runs.size() && runs[a].Y == runs[i].Y - 1 && runs[a].Start < runs[i].End; a++)
            for (std::size_t b = below; b < runs.size() && runs[b].Y == runs[i].Y + 1; b++) {
                const int start = Max(Max(runs[i].Start, runs[a].Start), runs[b].Start) + 1;
                const int end = Min(Min(runs[i].End, runs[a].End), runs[b].End) - 1;
                if (start < end) inner += end - start;
                if (runs[b].Start >= Min(runs[i].End, runs[a].End)) break;
            }
    }
    values[0] = static_cast<double>(blob.area - inner);
    return true;
}

bool PerimetricRatio(Workplace&, const Subject& blob, double* values)
{
    constexpr float fourPi = 12.566371f;
    const auto perimeter = static_cast<float>(blob.needed[0]);
    values[0] = perimeter == 0 ? 1 : fourPi * static_cast<float>(blob.area) / (perimeter * perimeter);
    return true;
}

bool FilledArea(Workplace& work, const Subject& blob, double* values)
{
    std::int64_t sum = 0;
    bool any = false;
    int firstX = 0, firstY = 0, x = 0, y = 0;
    const auto step = [&](int toX, int toY) {
        sum += std::int64_t{toY - y} * (toX + x);
        x = toX;
        y = toY;
    };
    work.walk.Follow(blob.runs, [&](int toX, int toY) {
        if (any) {
            step(toX, toY);
            return;
        }
        any = true;
        firstX = x = toX;
        firstY = y = toY;
    });
    step(firstX, firstY);
    values[0] = static_cast<double>(sum >> 1);
    return true;
}

bool RatioToArea(Workplace&, const Subject& blob, double* values)
{
    values[0] = blob.area == 0 ? 0 : static_cast<float>(blob.needed[0]) / static_cast<float>(blob.area);
    return true;
}

bool Box(Workplace&, const Subject& blob, double* values)
{
    if (blob.runs.empty()) return false;
    int left = MaxInt, right = MinInt, top = MaxInt, bottom = MinInt;
    for (const LabeledRun& run : blob.runs) {
        left = Min<int>(left, run.Start);
        right = Max<int>(right, run.End);
        top = Min<int>(top, run.Y);
        bottom = Max<int>(bottom, run.Y);
    }
    const double width = right - left, height = bottom - top + 1;
    values[0] = left;
    values[1] = top;
    values[2] = width;
    values[3] = height;
    values[4] = width == 0 ? 0 : height / width;
    return true;
}

bool Outline(Workplace& work, const Subject& blob, double* values)
{
    values[0] = static_cast<double>(work.outlines->size());
    work.walk.Follow(blob.runs, [&](int x, int y) { work.outlines->emplace_back(x, y); });
    values[1] = static_cast<double>(work.outlines->size());
    return true;
}

bool Vector(Workplace& work, const Subject& blob, double* values)
{
    constexpr double deviation = 1;
    Path outline, polygon;
    work.walk.Follow(blob.runs, [&](int x, int y) { outline.Append(x, y); });
    if (outline.Length > 0) outline.Vectorize(polygon, deviation);
    values[0] = static_cast<double>(work.vectors->size());
    work.vectors->insert(work.vectors->end(), polygon.Sites(), polygon.Sites() + polygon.Length);
    values[1] = static_cast<double>(work.vectors->size());
    return true;
}

} // namespace Tesk::blobs
