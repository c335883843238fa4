// Blobs as their own convex hulls.
#include "measure/blobs/BlobsFrame.h"
#include "measure/region/RowChains.h"
#include "measure/region/RunLists.h"

#include <algorithm>
#include <cstring>

namespace Tesk {

using namespace blobs;

void Blobs::Convexify(int BlobIndex)
{
    const Entry entry("Tesk::Blobs::Convexify");
    int begin = 0, end = 0;
    if (RefusesIndex(RangeOf(BlobIndex, begin, end))) return;
    entry.Guards(noRuns, [&] {
        // A hull needs more runs than the blob has if some of its rows are empty: then all move apart first.
        std::vector<std::uint8_t> named(static_cast<std::size_t>(int(NumSamples)), 0);
        bool fits = true;
        for (int position = begin; position < end; position++) {
            const std::span<const LabeledRun> runs = RunsOf(position);
            if (runs.size() < 2) continue;
            named[static_cast<std::size_t>(Order[position])] = 1;
            fits = fits && runs.back().Y - runs.front().Y < static_cast<int>(runs.size());
        }
        std::vector<BlobRecord> records(named.size());
        for (std::size_t row = 0; row < records.size(); row++)
            records[row] = RecordOf(static_cast<int>(row));
        std::vector<LabeledRun> apart;
        if (!fits) {
            for (std::size_t row = 0; row < records.size(); row++) {
                const std::span<const LabeledRun> runs = RunsOfRow(static_cast<int>(row));
                records[row].First = static_cast<int>(apart.size());
                apart.insert(apart.end(), runs.begin(), runs.end());
                records[row].Last = static_cast<int>(apart.size());
                if (named[row])
                    apart.resize(
                        std::max(apart.size(), static_cast<std::size_t>(records[row].First) +
                                                   static_cast<std::size_t>(runs.back().Y - runs.front().Y + 1)));
            }
        }
        WriteRows();
        std::vector<LabeledRun>& all = WriteRuns();
        if (!fits) all.swap(apart);
        regions::RowChains chains;
        for (std::size_t row = 0; row < records.size(); row++) {
            BlobRecord& record = records[row];
            if (named[row]) {
                LabeledRun* to = all.data() + record.First;
                const int label = to->Label;
                chains.Assign({to, static_cast<std::size_t>(record.Last - record.First)});
                chains.Convexify();
                // Ranges that a table was given by hand may overlap, and grow here.
                const LabeledRun* const behind = all.data() + all.size();
                chains.EachRow([&](int left, int right, int y) {
                    if (to != behind) *to++ = regions::MakeRun(left, right + 1, y, label);
                });
                record.Last = static_cast<int>(to - all.data());
            }
            SetRecord(static_cast<int>(row), record);
        }
        Sorted = false;
        CountRuns();
    });
}

} // namespace Tesk
