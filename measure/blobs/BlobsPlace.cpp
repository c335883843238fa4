// Selecting blobs by where they lie: to the border of an image, to a window, to a region.
#include "measure/blobs/BlobsFrame.h"
#include "measure/blobs/BlobsSelection.h"
#include "measure/region/RunLists.h"
#include "measure/region/RunSets.h"

#include <algorithm>
#include <cstring>

namespace Tesk {

using namespace blobs;

namespace {

/// A rectangle without the limits of 16 bits.
struct Window
{
    std::int64_t x, y, width, height;

    std::int64_t Right() const { return x + width; }
    std::int64_t Bottom() const { return y + height; }
};

bool HasRelation(const Window& box, const Window& window, int range)
{
    const bool outside =
        window.Right() < box.x || box.Right() < window.x || window.Bottom() < box.y || box.Bottom() < window.y;
    const auto holds = [](const Window& outer, const Window& inner) {
        return outer.x <= inner.x && inner.Right() <= outer.Right() && outer.y <= inner.y &&
               inner.Bottom() <= outer.Bottom();
    };
    switch (range) {
    case Inside:
        return holds(window, box);
    case Outside:
        return outside;
    case Onside:
        return !outside;
    case Over:
        return holds(box, window);
    default:
        return false;
    }
}

/// How runs lie to a window, a `RangeMode`; 0 where none of them fits.
int RelationOf(std::span<const LabeledRun> runs, const Window& window)
{
    int mask = 0;
    std::int64_t covered = 0;
    for (const LabeledRun& run : runs) {
        const bool beside =
            run.Y < window.y || run.Y >= window.Bottom() || run.End <= window.x || run.Start >= window.Right();
        if (beside)
            mask |= Outside;
        else if (run.Start >= window.x && run.End <= window.Right())
            mask |= Inside;
        else if (run.Start < window.x && run.End > window.Right())
            covered++;
        else
            mask = Onside;
    }
    return covered >= window.height ? int(Over) : mask;
}

/// How a blob lies to a region, both in scan order, in terms of runs; each run of the blob finds its place by
/// bisection, so that many blobs are not each compared with a whole region.
int RelationOf(std::span<const LabeledRun> runs, std::span<const LabeledRun> region)
{
    bool sameAsBlob = true, sameAsRegion = true;
    std::size_t count = 0;
    for (const LabeledRun& run : runs) {
        auto other = std::partition_point(region.begin(), region.end(), [&run](const LabeledRun& r) {
            return r.Y < run.Y || (r.Y == run.Y && r.End <= run.Start);
        });
        for (; other != region.end() && other->Y == run.Y && other->Start < run.End; ++other, ++count) {
            const int start = Max(run.Start, other->Start), end = Min(run.End, other->End);
            const auto isSame = [&](std::span<const LabeledRun> list) {
                return count < list.size() && list[count].Start == start && list[count].End == end &&
                       list[count].Y == run.Y;
            };
            sameAsBlob = sameAsBlob && isSame(runs);
            sameAsRegion = sameAsRegion && isSame(region);
        }
    }
    if (sameAsBlob && count == runs.size()) return Inside;
    if (sameAsRegion && count == region.size()) return Over;
    return count == 0 ? Outside : Onside;
}

std::int32_t WholeAt(const std::uint8_t* cell)
{
    std::int32_t value;
    std::memcpy(&value, cell, sizeof value);
    return value;
}

} // namespace

int Blobs::TryBorderSelect(const Image& Src, int Selection)
{
    if (const int code = CheckImage(Src)) return code;
    if (const int code = CheckSelecting(Selection)) return code;
    if (const int code = TryProvideFor(BlobBox, Src, Selection)) return code;
    return TrySelectWhere(Selection, [&](int row) {
        const auto value = [&](int feature) { return std::int64_t{WholeAt(FeatureCell(row, feature))}; };
        const std::int64_t x = value(BlobBoxX), y = value(BlobBoxY);
        return !(x > Src.X && x + value(BlobBoxWidth) < Src.X + Src.Width && y > Src.Y &&
                 y + value(BlobBoxHeight) < Src.Y + Src.Height);
    });
}

void Blobs::BorderSelect(const Image& Src, enum SelectionMode Selection)
{
    const Entry entry("Tesk::Blobs::BorderSelect");
    entry.Refuses(TryBorderSelect(Src, Selection));
}

void Blobs::BoxInWindowSelect(int X, int Y, int Width, int Height, enum SelectionMode Selection, enum RangeMode Range)
{
    const Entry entry("Tesk::Blobs::BoxInWindowSelect");
    const Image none;
    if (entry.Refuses(CheckSelecting(Selection)) || entry.Refuses(TryProvideFor(BlobBox, none, Selection))) return;
    const Window window = {X, Y, Width, Height};
    entry.Refuses(TrySelectWhere(Selection, [&](int row) {
        const auto value = [&](int feature) { return std::int64_t{WholeAt(FeatureCell(row, feature))}; };
        return HasRelation({value(BlobBoxX), value(BlobBoxY), value(BlobBoxWidth), value(BlobBoxHeight)}, window,
                           Range);
    }));
}

void Blobs::BlobInWindowSelect(int X, int Y, int Width, int Height, enum SelectionMode Selection, enum RangeMode Range)
{
    const Entry entry("Tesk::Blobs::BlobInWindowSelect");
    if (entry.Refuses(CheckSelecting(Selection))) return;
    const Window window = {X, Y, Width, Height};
    entry.Refuses(TrySelectWhere(Selection, [&](int row) { return RelationOf(RunsOfRow(row), window) == Range; }));
}

void Blobs::SelectInRegion(const Entry& entry, std::span<const LabeledRun> region, int selection, int range)
{
    entry.Refuses(TrySelectWhere(selection, [&](int row) { return RelationOf(RunsOfRow(row), region) == range; }));
}

void Blobs::BlobInRegionSelect(const Region& Src, enum SelectionMode Selection, enum RangeMode Range)
{
    const Entry entry("Tesk::Blobs::BlobInRegionSelect");
    if (entry.Refuses(CheckSelecting(Selection))) return;
    std::vector<LabeledRun> sorted;
    const bool ready = entry.Guards(noRuns, [&] {
        if (Src.Sorted) return;
        sorted.assign(Src.Runs().begin(), Src.Runs().end());
        regions::SortRuns(sorted);
    });
    if (ready) SelectInRegion(entry, Src.Sorted ? Src.Runs() : std::span<const LabeledRun>(sorted), Selection, Range);
}

void Blobs::BorderSelect(Region& Src, bool Connexity8, enum SelectionMode Selection)
{
    const Entry entry("Tesk::Blobs::BorderSelect");
    if (entry.Refuses(CheckSelecting(Selection))) return;
    if (Src.NumRuns < 1) {
        entry.Refuse(OutOfRange, L"This region is void");
        return;
    }
    regions::RunList inner;
    const bool ready = entry.Guards(noRuns, [&] {
        std::vector<LabeledRun> sorted(Src.Runs().begin(), Src.Runs().end());
        if (!Src.Sorted) regions::SortRuns(sorted);
        inner = regions::Eroded(sorted, regions::Element(3, 3, Connexity8 ? 3 : 1));
    });
    if (ready) SelectInRegion(entry, inner, Selection, Onside);
}

} // namespace Tesk
