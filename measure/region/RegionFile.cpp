// Regions in ".rgn" files.
#include "foundation/Archive.h"
#include "measure/Region.h"
#include "measure/region/RegionFrame.h"

#include <array>

namespace Tesk {

using namespace regions;

namespace {

constexpr ArchiveFormat format = {"TRGN", 2, L"File \"%ls\" is not a Region file",
                                  L"The version number \"%d\" of this Region is too high"};

/// Files of the first version end with words that mean nothing any more.
constexpr int firstWithoutWords = 2;

/// A run in a file: its coordinates, a gap, and its label as two halves, the lower one first.
constexpr std::size_t halves = 6;
constexpr int runBytes = 12;
using StoredRun = std::array<std::int16_t, halves>;

StoredRun Stored(const LabeledRun& run)
{
    return {
        run.Start, run.End, run.Y, 0, static_cast<std::int16_t>(run.Label), static_cast<std::int16_t>(run.Label >> 16)};
}

LabeledRun Restored(const StoredRun& run)
{
    const auto low = static_cast<std::uint16_t>(run[4]), high = static_cast<std::uint16_t>(run[5]);
    return MakeRun(run[0], run[1], run[2], static_cast<std::int32_t>(std::uint32_t{high} << 16 | low));
}

} // namespace

void Region::Transfer(Archive& Block)
{
    const int version = Block.Header(format);
    int count = NumRuns;
    Block.Count(count, runBytes);
    if (!Block.Good()) return;
    std::vector<std::int16_t> stored(static_cast<std::size_t>(count) * halves);
    if (!Block.Reading())
        for (std::size_t i = 0; i < Runs().size(); i++) {
            const StoredRun run = Stored(Runs()[i]);
            std::copy(run.begin(), run.end(), stored.begin() + static_cast<std::ptrdiff_t>(i * halves));
        }
    Block.Elements(stored.data(), stored.size());
    bool sorted = Sorted;
    Block(sorted);
    std::int32_t word = 0;
    if (Block.Reading() && version < firstWithoutWords) Block(word, word);
    if (!Block.Reading() || !Block.Good()) return;
    RunList runs(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < runs.size(); i++) {
        StoredRun run;
        std::copy_n(stored.begin() + static_cast<std::ptrdiff_t>(i * halves), halves, run.begin());
        runs[i] = Restored(run);
    }
    TakeRuns(std::move(runs), sorted);
}

void Region::Read(const char* PathName)
{
    ReadModel("Tesk::Region::Read", PathName, *this);
}

void Region::Read(const wchar_t* PathName)
{
    ReadModel("Tesk::Region::Read", PathName, *this);
}

void Region::Write(const char* PathName) const
{
    WriteModel("Tesk::Region::Write", PathName, *this);
}

void Region::Write(const wchar_t* PathName) const
{
    WriteModel("Tesk::Region::Write", PathName, *this);
}

} // namespace Tesk
