// Labelling the runs of rows while they are scanned, a row at a time.
#pragma once

#include "measure/Blobs.h"
#include "measure/region/RunScanner.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace Tesk {

/// Where a segmentation looks for pixels, and what it takes for a blob.
struct Blobs::Scope
{
    const Region* mask; ///< null for the whole window
    bool connexity8;
    int minimumArea, maximumArea;
};

namespace blobs {

/// The label of the set that a label belongs to: the smallest of the set. Labels on the way come nearer to it.
inline std::int32_t RootOf(std::int32_t* parents, std::int32_t label)
{
    while (parents[label] != label) {
        parents[label] = parents[parents[label]];
        label = parents[label];
    }
    return label;
}

/// Unites the sets of two roots. The result is the smaller one, which is the root of both.
inline std::int32_t UniteRoots(std::int32_t* parents, std::int32_t a, std::int32_t b)
{
    const std::int32_t root = Min(a, b), other = Max(a, b);
    parents[other] = root;
    return root;
}

/// A sink of scanned rows: their runs, and the sets that their labels form, which begin empty.
class RunLabeler
{
public:
    /// Runs of a row that do not overlap are labelled faster.
    RunLabeler(std::vector<std::int32_t>& parents, bool connexity8, bool overlap);

    /// May throw `std::bad_alloc`.
    void AddRow(const regions::ScannedRow& row)
    {
        Reserve(row.Runs());
        (this->*label_)(row);
    }

    std::span<LabeledRun> Runs() const { return {runs_.get(), end_}; }
    std::int32_t NumLabels() const { return numLabels_; }

private:
    void Reserve(std::size_t more);
    template <int reach, bool overlap>
    void Label(const regions::ScannedRow& row);

    // The runs are written once, by the row: no container has to set them before.
    std::unique_ptr<LabeledRun[]> runs_;
    std::size_t capacity_ = 0, begin_ = 0, end_ = 0; ///< of the latest row
    std::vector<std::int32_t>& parents_;
    std::int32_t numLabels_ = 0;
    void (RunLabeler::*label_)(const regions::ScannedRow&);
};

} // namespace blobs

} // namespace Tesk
