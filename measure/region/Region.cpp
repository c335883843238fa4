// The runs of a region: growing, order, sharing, access.
#include "measure/Region.h"

#include "foundation/Entry.h"

#include "measure/region/RunLists.h"

#include <utility>

namespace Tesk {

using namespace regions;

Region::Region(Region&& Other) noexcept
{
    *this = std::move(Other);
}

Region& Region::operator=(Region&& Other) noexcept
{
    if (this == &Other) return *this;
    runs_ = std::move(Other.runs_);
    NumRuns = Other.NumRuns;
    Sorted = Other.Sorted;
    Other.NumRuns = 0;
    Other.Sorted = true;
    return *this;
}

void Region::AddRun(int Start, int End, int Y)
{
    try {
        WriteRuns().push_back(MakeRun(Start, End, Y));
        NumRuns += 1;
    } catch (const std::bad_alloc&) {
        // The run is dropped.
    }
}

void Region::Clear()
{
    Status::Error().Code = NoError;
    if (runs_.IsShared())
        runs_.Reset();
    else if (NumRuns > 0)
        runs_.Write().clear();
    NumRuns = 0;
    Sorted = true;
}

std::vector<LabeledRun>& Region::RewriteRuns()
{
    std::vector<LabeledRun>& runs = runs_.Overwrite();
    runs.clear();
    NumRuns = 0;
    return runs;
}

std::vector<LabeledRun>& Region::RewriteRuns(std::size_t count)
{
    std::vector<LabeledRun>& runs = runs_.Overwrite();
    runs.resize(count);
    CountRuns();
    return runs;
}

void Region::TakeRuns(std::vector<LabeledRun>&& runs, bool sorted)
{
    runs_.Replace(std::move(runs));
    CountRuns();
    Sorted = sorted;
}

void Region::Sort()
{
    if (Sorted) return;
    if (NumRuns > 1) SortRuns(WriteRuns());
    Sorted = true;
}

void Region::Run(int Index, int& Start, int& End, int& Y) const
{
    const Entry entry("Tesk::Region::Run");
    if (entry.Refuses(CheckIndex(Index, NumRuns))) return;
    const LabeledRun& run = Runs()[static_cast<std::size_t>(Index)];
    Start = run.Start;
    End = run.End;
    Y = run.Y;
}

void Region::Run(int Index, LabeledRun& Run) const
{
    const Entry entry("Tesk::Region::Run");
    if (entry.Refuses(CheckIndex(Index, NumRuns))) return;
    Run = Runs()[static_cast<std::size_t>(Index)];
}

void Region::ShallowCopy(const Region& Src, bool)
{
    Status::Error().Code = NoError;
    runs_ = Src.runs_;
    NumRuns = Src.NumRuns;
    Sorted = Src.Sorted;
}

void Region::Detach(bool CopyRuns)
{
    if (!runs_.IsShared()) return;
    try {
        if (CopyRuns) {
            runs_.Write();
        } else {
            RewriteRuns();
            Sorted = true;
        }
    } catch (const std::bad_alloc&) {
        // The runs stay shared.
    }
}

} // namespace Tesk
