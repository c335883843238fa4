// A set of pixels of any shape, in one piece or several, kept as horizontal runs.
#pragma once

#include "foundation/CopyOnWrite.h"
#include "foundation/ReadOnly.h"
#include "foundation/Records.h"

#include <span>
#include <vector>

namespace Tesk {

/// The runs of a region are shared by its shallow copies until one of them is written. Their coordinates are signed
/// 16-bit numbers.
///
///     Region bright;
///     bright.Binarize(Auto, picture);             // the pixels at or above the best threshold
///     bright.Erode(bright, square);               // `square` is a Morpho
///     bright.Fill(255, marked);
///
/// Scan order is by row, then by first column. Runs that were appended may overlap, and count as often as they cover a
/// pixel. What needs scan order sorts a region that is not `Sorted` first.
class Region
{
    template <typename T>
    using Field = ReadOnly<T, Region>;

public:
    Field<int> NumRuns; ///< number of runs
    bool Sorted = true; ///< the runs are known to be in scan order

    Region() = default;
    /// A copy has runs of its own as soon as it or the other one is written.
    Region(const Region& Other) = default;
    Region& operator=(const Region& Other) = default;
    Region(Region&& Other) noexcept;
    Region& operator=(Region&& Other) noexcept;

    /// Appends a run of the columns `Start` to `End - 1`. Without memory the run is dropped.
    virtual void AddRun(int Start, int End, int Y);
    /// Ends a row of pixels that is scanned.
    virtual void EndRow() {}
    virtual ~Region() = default;

    /// Leaves no run; the memory stays for the next ones.
    void Clear();

    /// The runs, `NumRuns` of them.
    std::span<const LabeledRun> Runs() const { return runs_.Read(); }
    /// A run by its index. Refused: an index out of range (`OutOfRange`).
    void Run(int Index, int& Start, int& End, int& Y) const;
    void Run(int Index, LabeledRun& Run) const;

    /// Shares the runs of `Src`. A region has no window, so the second argument changes nothing.
    void ShallowCopy(const Region& Src, bool KeepWindow);
    /// Moves to runs of its own, so that those who share the former ones keep theirs.
    void Detach(bool CopyRuns);

protected:
    /// The runs for writing, shared with nobody any more; `CountRuns` has to follow. May throw `std::bad_alloc`.
    std::vector<LabeledRun>& WriteRuns() { return runs_.Write(); }
    /// The same for a writer that needs none of the runs that stand here: none are left, their memory stays.
    std::vector<LabeledRun>& RewriteRuns();
    /// Makes `NumRuns` what the runs for writing have become.
    void CountRuns() { NumRuns = static_cast<int>(runs_.Read().size()); }
    /// Takes other runs; those who share the former ones keep them.
    void TakeRuns(std::vector<LabeledRun>&& runs, bool sorted);
    /// Brings the runs into scan order if they are not known to be. May throw `std::bad_alloc`.
    void Sort();

private:
    CopyOnWrite<std::vector<LabeledRun>> runs_;
};

} // namespace Tesk
