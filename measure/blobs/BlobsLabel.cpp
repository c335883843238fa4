// From runs to blobs: labels by union-find, and the runs of a label side by side.
#include "measure/blobs/BlobsLabel.h"

#include "foundation/Entry.h"
#include "measure/blobs/BlobsFrame.h"
#include "measure/region/RunLists.h"

#include <algorithm>
#include <memory>
#include <new>
#include <numeric>
#include <typeinfo>
#include <utility>

namespace Tesk {

using namespace blobs;

namespace blobs {

using regions::ScannedRow;

RunLabeler::RunLabeler(std::vector<std::int32_t>& parents, bool connexity8, bool overlap) : parents_(parents)
{
    if (overlap)
        label_ = connexity8 ? &RunLabeler::Label<1, true> : &RunLabeler::Label<0, true>;
    else
        label_ = connexity8 ? &RunLabeler::Label<1, false> : &RunLabeler::Label<0, false>;
}

void RunLabeler::Reserve(std::size_t more)
{
    constexpr std::size_t fewest = 1024;
    const std::size_t runs = end_ + more, labels = static_cast<std::size_t>(numLabels_) + more;
    if (runs > static_cast<std::size_t>(MaxInt)) throw std::bad_alloc();
    if (runs > capacity_) {
        const std::size_t capacity = Max(Max(runs, 2 * capacity_), fewest);
        auto grown = std::make_unique_for_overwrite<LabeledRun[]>(capacity);
        std::copy_n(runs_.get(), end_, grown.get());
        runs_ = std::move(grown);
        capacity_ = capacity;
    }
    if (labels > parents_.size()) parents_.resize(Max(Max(labels, 2 * parents_.size()), fewest));
}

/// `reach` is how many columns beside a run one of the row before may lie that meets it at a corner.
template <int reach, bool overlap>
void RunLabeler::Label(const ScannedRow& row)
{
    std::int32_t* const parents = parents_.data();
    const LabeledRun *above = runs_.get() + begin_, *const end = runs_.get() + end_;
    LabeledRun* run = runs_.get() + end_;
    std::int32_t next = numLabels_;
    const std::size_t count = row.Runs();
    for (std::size_t i = 0; i < count; i++) {
        const int start = row.Start(i), stop = row.End(i);
        while (above != end && above->End + reach <= start)
            above++;
        std::int32_t label = next;
        if (above != end && above->Start < stop + reach) {
            const LabeledRun* met = above;
            label = RootOf(parents, met->Label);
            for (met++; met != end && met->Start < stop + reach; met++) {
                const std::int32_t other = RootOf(parents, met->Label);
                if (other != label) label = UniteRoots(parents, label, other);
            }
            // A run behind this one meets the last of these at most.
            if constexpr (!overlap) above = met - 1;
        } else {
            parents[next] = next;
            next++;
        }
        *run++ = regions::MakeRun(start, stop, row.y, label);
    }
    begin_ = end_;
    end_ += count;
    numLabels_ = next;
}

} // namespace blobs

namespace {

/// What is known of the runs of a label: how many they are, then where they go, and how many pixels they hold.
struct Group
{
    std::int32_t runs = 0;
    std::int64_t area = 0;
};

/// Gives each run the root of its label. Whether the runs of each label are side by side, in the order of the labels.
bool CollectGroups(std::span<LabeledRun> scanned, const std::vector<std::int32_t>& roots, std::vector<Group>& groups)
{
    bool grouped = true;
    std::int32_t latest = 0;
    for (LabeledRun& run : scanned) {
        const std::int32_t label = roots[static_cast<std::size_t>(run.Label)];
        run.Label = label;
        Group& group = groups[static_cast<std::size_t>(label)];
        group.runs++;
        group.area += run.End - run.Start;
        grouped = grouped && label >= latest;
        latest = label;
    }
    return grouped;
}

} // namespace

void Blobs::AddRun(int Start, int End, int Y)
{
    try {
        std::vector<LabeledRun>& runs = WriteRuns();
        const auto count = static_cast<std::int32_t>(runs.size());
        // Methods of the region side may have replaced the runs since.
        if (prevEnd_ > count) prevBegin_ = prevEnd_ = 0;
        runs.reserve(runs.size() == runs.capacity() ? 2 * runs.size() + 1 : runs.capacity());
        std::vector<std::int32_t>&parents = parents_.Write(), &classes = classes_.Write();
        const auto labels = static_cast<std::size_t>(numLabels_);
        if (parents.size() <= labels) parents.resize(2 * labels + 1);
        if (classes.size() <= labels) classes.resize(2 * labels + 1);

        const int reach = Connexity8 ? 1 : 0;
        const auto at = [&](std::int32_t run) -> const LabeledRun& { return runs[static_cast<std::size_t>(run)]; };
        while (prevBegin_ < prevEnd_ && at(prevBegin_).End + reach <= Start)
            prevBegin_++;
        std::int32_t label = MinInt;
        for (std::int32_t met = prevBegin_; met < prevEnd_ && at(met).Start - reach < End; met++) {
            const std::int32_t other = at(met).Label;
            if (other < 0 || other >= numLabels_ || classes[static_cast<std::size_t>(other)] != DefaultClass) continue;
            const std::int32_t root = RootOf(parents.data(), other);
            label = label == MinInt || label == root ? root : UniteRoots(parents.data(), label, root);
        }
        if (label == MinInt) {
            label = numLabels_++;
            parents[labels] = label;
            classes[labels] = DefaultClass;
        }
        runs.push_back(regions::MakeRun(Start, End, Y, label));
        CountRuns();
    } catch (const std::bad_alloc&) {
        // The run is dropped.
    }
}

void Blobs::EndRow()
{
    const int count = Region::NumRuns;
    prevBegin_ = Min<std::int32_t>(prevEnd_, count);
    prevEnd_ = count;
}

int Blobs::TryTakeLabeled(std::span<LabeledRun> Runs, int NumLabels, bool Connexity8)
{
    const int code = WithMemory(noRuns, [&] {
        std::vector<std::int32_t>& parents = parents_.Overwrite();
        parents.resize(static_cast<std::size_t>(NumLabels));
        std::iota(parents.begin(), parents.end(), 0);
        numLabels_ = NumLabels;
    });
    return code ? code : TryFinish(Runs, {nullptr, Connexity8, 0, MaxInt}, 0);
}

/// Regroups the runs by their labels, by counting, and makes a record of each group within the bounds. Without memory
/// no blob is left.
int Blobs::TryFinish(std::span<LabeledRun> scanned, const Scope& scope, int threshold)
{
    const auto labels = static_cast<std::size_t>(numLabels_);
    const int code = WithMemory(noRuns, [&]() -> int {
        std::vector<std::int32_t>& roots = parents_.Write();
        for (std::size_t label = 0; label < labels; label++)
            roots[label] = roots[static_cast<std::size_t>(roots[label])];
        if (typeid(*this) == typeid(Blobs) || classes_.Read().size() < labels)
            classes_.Overwrite().assign(labels, DefaultClass);
        std::vector<Group> groups(labels);
        const bool grouped = CollectGroups(scanned, roots, groups);

        std::vector<BlobRecord> records;
        const std::vector<std::int32_t>& classes = classes_.Read();
        std::int32_t first = 0;
        for (std::size_t label = 0; label < labels; label++) {
            Group& group = groups[label];
            const std::int32_t runs = group.runs;
            if (runs > 0 && group.area >= scope.minimumArea && group.area <= scope.maximumArea)
                records.push_back(
                    {first, first + runs, classes[label], static_cast<int>(Min<std::int64_t>(group.area, MaxInt))});
            group.runs = first;
            first += runs;
        }
        std::vector<LabeledRun>& runs = RewriteRuns(scanned.size());
        if (grouped)
            std::copy(scanned.begin(), scanned.end(), runs.begin());
        else
            for (const LabeledRun& run : scanned)
                runs[static_cast<std::size_t>(groups[static_cast<std::size_t>(run.Label)].runs++)] = run;
        Sorted = grouped;
        if (const int failure = ResetTable()) return failure;
        return AddBlobs(records);
    });
    if (code) {
        DropSamples();
        Region::Clear();
    }
    HitBlobIndex = MinInt;
    Connexity8 = scope.connexity8;
    Threshold = threshold;
    prevBegin_ = prevEnd_ = Region::NumRuns;
    return code;
}

} // namespace Tesk
