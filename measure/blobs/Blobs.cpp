// Blobs: their records, their construction by hand, and access to their runs.
#include "measure/Blobs.h"

#include "measure/blobs/BlobsFrame.h"
#include "measure/region/RunLists.h"
#include "measure/region/RunPixels.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace Tesk {

using namespace blobs;

namespace {

int AreaOf(std::span<const LabeledRun> runs)
{
    std::int64_t area = 0;
    for (const LabeledRun& run : runs)
        area += run.End - run.Start;
    return static_cast<int>(Min<std::int64_t>(area, MaxInt));
}

std::wstring UserFeatureName(int number)
{
    return L"User Feature " + std::to_wstring(number);
}

int Saturated(std::int64_t value)
{
    return static_cast<int>(Clamp<std::int64_t>(value, MinInt, MaxInt));
}

} // namespace

int Blobs::HitBlobIndex = MinInt;

Blobs::Blobs()
{
    featureColumn_.fill(MinInt);
    HitBlobIndex = MinInt;
}

void Blobs::ShallowCopy(const Blobs& Src, bool)
{
    *this = Src;
}

void Blobs::CountsChanged()
{
    NumBlobs = NumSamples;
    NumSelectedBlobs = NumSelected;
}

void Blobs::SamplesReplaced()
{
    FeatureTable::SamplesReplaced();
    // A file may have brought other columns.
    const auto find = [this](const wchar_t* name, auto fits) {
        for (int column = 0; column < NumFeatures; column++)
            if (fits(Record(column).Type) && Record(column).Name == name) return column;
        return MinInt;
    };
    for (int feature = 0; feature < NumPredefinedFeatures; feature++)
        featureColumn_[static_cast<std::size_t>(feature)] =
            find(FeatureName(feature), [feature](int type) { return type == FeatureType(feature); });
    numUserFeatures_ = 0;
    while (numUserFeatures_ < MostUserFeatures) {
        const int column =
            find(UserFeatureName(numUserFeatures_).c_str(), [](int type) { return type == Int || type == Float; });
        if (column == MinInt) break;
        featureColumn_[static_cast<std::size_t>(NumPredefinedFeatures + numUserFeatures_++)] = column;
    }
}

bool Blobs::HasRecords() const
{
    constexpr int last = NumRecordColumns - 1;
    return NumFeatures > last && Record(0).Offset == 0 && Record(last).Type == Int &&
           Record(last).Offset == offsetof(BlobRecord, Area);
}

Blobs::BlobRecord Blobs::RecordOf(int row) const
{
    BlobRecord record{};
    if (!HasRecords()) return record;
    std::memcpy(&record, Cell(0, row), sizeof record);
    // Methods of the region side may have taken the runs away, and those of the table side have written anything.
    const int count = Region::NumRuns;
    record.First = Clamp<std::int32_t>(record.First, 0, count);
    record.Last = Clamp<std::int32_t>(record.Last, record.First, count);
    return record;
}

void Blobs::SetRecord(int row, const BlobRecord& record)
{
    if (HasRecords()) std::memcpy(WriteCell(0, row), &record, sizeof record);
}

int Blobs::CheckBlob(int blobIndex) const
{
    if (NumBlobs < 1) return Status::Format(OutOfRange, L"No blob is available");
    if (blobIndex >= 0 && blobIndex < NumBlobs) return NoError;
    return Status::Format(OutOfRange, L"The blob index (%d) must be in range [0..%d]", blobIndex, NumBlobs - 1);
}

int Blobs::RangeOf(int BlobIndex, int& Begin, int& End) const
{
    if (BlobIndex == All || BlobIndex == AllSelected || BlobIndex == AllDeselected) {
        Begin = BlobIndex == AllDeselected ? int(NumSelected) : 0;
        End = BlobIndex == AllSelected ? int(NumSelected) : int(NumSamples);
        return NoError;
    }
    if (const int code = CheckBlob(BlobIndex)) return code;
    Begin = BlobIndex;
    End = BlobIndex + 1;
    return NoError;
}

std::span<const LabeledRun> Blobs::RunsOf(int Position) const
{
    return RunsOfRow(Order[Position]);
}

std::span<const LabeledRun> Blobs::RunsOfRow(int row) const
{
    const BlobRecord record = RecordOf(row);
    return Runs().subspan(static_cast<std::size_t>(record.First), static_cast<std::size_t>(record.Last - record.First));
}

int Blobs::ResetTable()
{
    return WithMemory(noTable, [&]() -> int {
        DropFeatures();
        featureColumn_.fill(MinInt);
        numUserFeatures_ = 0;
        outlines_.Overwrite().clear();
        vectors_.Overwrite().clear();
        for (const wchar_t* name : {L"First Run", L"Last Run", FeatureName(BlobClass), FeatureName(BlobArea)})
            if (const int code = TryAppendFeature(Int, name, true)) return code;
        featureColumn_[BlobClass] = offsetof(BlobRecord, Class) / sizeof(std::int32_t);
        featureColumn_[BlobArea] = offsetof(BlobRecord, Area) / sizeof(std::int32_t);
        return NoError;
    });
}

int Blobs::AddBlobs(std::span<const BlobRecord> records)
{
    const int before = NumSamples;
    if (const int code = TryAppendSamples(static_cast<int>(records.size()))) return code;
    std::uint8_t* row = WriteRows() + static_cast<std::size_t>(before) * static_cast<std::size_t>(int(RowPitch));
    for (const BlobRecord& record : records) {
        std::memcpy(row, &record, sizeof record);
        constexpr int cellSize = sizeof notComputed;
        for (int offset = sizeof record; offset + cellSize <= RowSize; offset += cellSize)
            std::memcpy(row + offset, &notComputed, sizeof notComputed);
        row += static_cast<std::size_t>(int(RowPitch));
    }
    return NoError;
}

int Blobs::AppendColumn(int feature, int type, const wchar_t* name)
{
    if (NumSamples < 1 && !HasRecords())
        if (const int code = ResetTable()) return code;
    if (const int code = TryAppendFeature(type, name, true)) return code;
    return WithMemory(noTable, [&] {
        // A table without rows may have no memory to point into.
        if (NumSamples > 0) {
            std::uint8_t* cell = WriteRows() + Record(NumFeatures - 1).Offset;
            for (int row = 0; row < NumSamples; row++, cell += RowPitch)
                std::memcpy(cell, &notComputed, sizeof notComputed);
        }
        featureColumn_[static_cast<std::size_t>(feature)] = NumFeatures - 1;
    });
}

int Blobs::ProvideColumn(int Feature)
{
    return ColumnOf(Feature) != MinInt ? int(NoError)
                                       : AppendColumn(Feature, FeatureType(Feature), FeatureName(Feature));
}

void Blobs::ForgetFeatures(int row)
{
    for (int feature = BlobArea + 1; feature < NumPredefinedFeatures; feature++)
        if (HasColumn(feature)) std::memcpy(WriteCell(ColumnOf(feature), row), &notComputed, sizeof notComputed);
}

/// Without an `area` it is that of all runs of the blob.
int Blobs::TryAppend(std::span<const LabeledRun> runs, int blobClass, bool merge, std::optional<int> area)
{
    if (merge && (NumBlobs < 1 || !HasRecords()))
        return Status::Format(VoidObject, L"No blob is available to merge to");
    if (!merge && !HasRecords())
        if (const int code = ResetTable()) return code;
    const int row = merge ? NumSamples - 1 : int(NumSamples);
    const auto end = Region::Runs().size();
    BlobRecord record = {static_cast<int>(end), static_cast<int>(end), blobClass, 0};
    if (merge) record = RecordOf(row);
    const bool wasSorted = Sorted;
    if (const int code = WithMemory(noRuns, [&]() -> int {
            if (runs.size() > static_cast<std::size_t>(MaxInt) - end) return Status::Format(CannotAllocate, noRuns);
            InsertRuns(runs, record, row);
            return NoError;
        }))
        return code;
    record.Last += static_cast<int>(runs.size());
    record.Class = blobClass;
    record.Area = area ? Saturated(std::int64_t{record.Area} + *area)
                       : AreaOf(Region::Runs().subspan(static_cast<std::size_t>(record.First),
                                                       static_cast<std::size_t>(record.Last - record.First)));
    if (!merge) {
        const int code = AddBlobs({&record, 1});
        if (code) {
            WriteRuns().resize(end);
            CountRuns();
            Sorted = wasSorted;
        }
        return code;
    }
    return WithMemory(noTable, [&] {
        SetRecord(row, record);
        ForgetFeatures(row);
    });
}

void Blobs::InsertRuns(std::span<const LabeledRun> runs, const BlobRecord& record, int label)
{
    std::vector<LabeledRun>& all = WriteRuns();
    // Behind the last blob there may be runs of what was found and rejected, but none of another blob.
    const auto at = all.insert(all.begin() + record.Last, runs.begin(), runs.end());
    const auto begin = all.begin() + record.First, end = at + static_cast<std::ptrdiff_t>(runs.size());
    for (auto run = at; run != end; ++run)
        run->Label = label;
    if (!std::is_sorted(begin, end, regions::IsBefore)) std::stable_sort(begin, end, regions::IsBefore);
    const bool follows = begin == all.begin() || !regions::IsBefore(*begin, begin[-1]);
    const bool leads = end == all.end() || !regions::IsBefore(*end, end[-1]);
    Sorted = Sorted && follows && leads;
    CountRuns();
}

void Blobs::AppendBlob(const Blobs& Src, int BlobIndex, bool Merge)
{
    const Entry entry("Tesk::Blobs::AppendBlob");
    if (Src.NumBlobs < 1) {
        entry.Refuse(OutOfRange, L"No source blob is available");
    } else if (BlobIndex < 0 || BlobIndex >= Src.NumBlobs) {
        entry.Refuse(OutOfRange, L"The source blob index (%d) must be in range [0..%d]", BlobIndex, Src.NumBlobs - 1);
    } else {
        const BlobRecord record = Src.RecordOf(Src.Order[BlobIndex]);
        const Blobs held(Src); // the source may be this object
        entry.Refuses(TryAppend(held.RunsOf(BlobIndex), record.Class, Merge, record.Area));
    }
}

void Blobs::AppendBlob(const Region& Src, bool Merge)
{
    const Entry entry("Tesk::Blobs::AppendBlob");
    const Region held(Src);
    if (held.NumRuns < 1)
        entry.Refuse(VoidObject, L"The source Region is empty");
    else
        entry.Refuses(TryAppend(held.Runs(), DefaultClass, Merge, std::nullopt));
}

int Blobs::AppendFeature(int Type)
{
    const Entry entry("Tesk::Blobs::AppendFeature");
    const int feature = NumPredefinedFeatures + numUserFeatures_;
    return entry.Refuses(TryAppendUserFeature(Type)) ? int(NumPredefinedFeatures) : feature;
}

int Blobs::TryAppendUserFeature(int type)
{
    if (type != Int && type != Float) {
        const bool known = type >= Undefined && type <= Short;
        return Status::Format(UnsupportedType, L"The feature type (%ls) is not supported, use one of Int, Float",
                              PixelTypeName(known ? static_cast<PixelTypes>(type) : Undefined));
    }
    if (numUserFeatures_ >= MostUserFeatures)
        return Status::Format(OutOfRange, L"The maximum number of user features (%d) has been reached",
                              MostUserFeatures);
    const std::wstring name = UserFeatureName(numUserFeatures_);
    if (const int code = AppendColumn(NumPredefinedFeatures + numUserFeatures_, type, name.c_str())) return code;
    numUserFeatures_++;
    return NoError;
}

void Blobs::Clear()
{
    const Entry entry("Tesk::Blobs::Clear");
    entry.Guards(noTable, [&] {
        DropSamples();
        outlines_.Overwrite().clear();
        vectors_.Overwrite().clear();
        Region::Clear();
    });
}

int Blobs::NumRuns(int BlobIndex) const
{
    const Entry entry("");
    return RefusesIndex(CheckBlob(BlobIndex)) ? 0 : static_cast<int>(RunsOf(BlobIndex).size());
}

void Blobs::Run(int BlobIndex, int RunIndex, int& Start, int& End, int& Y) const
{
    const Entry entry("Tesk::Blobs::Run");
    if (RefusesIndex(CheckBlob(BlobIndex))) return;
    const std::span<const LabeledRun> runs = RunsOf(BlobIndex);
    const int count = static_cast<int>(runs.size());
    if (count < 1) {
        entry.Refuse(OutOfRange, L"No run is available in this blob");
        return;
    }
    if (RunIndex < 0 || RunIndex >= count) {
        entry.Refuse(OutOfRange, L"The run index (%d) must be in range [0..%d]", RunIndex, count - 1);
        return;
    }
    const LabeledRun& run = runs[static_cast<std::size_t>(RunIndex)];
    Start = run.Start;
    End = run.End;
    Y = run.Y;
}

Site Blobs::FirstPixel(int BlobIndex) const
{
    const Entry entry("");
    if (RefusesIndex(CheckBlob(BlobIndex)) || RunsOf(BlobIndex).empty()) return {0, 0};
    const LabeledRun& run = RunsOf(BlobIndex)[0];
    return {run.Start, run.Y};
}

void Blobs::ToImage(int BlobIndex, int Value, Image& Dst) const
{
    const Entry entry("Tesk::Blobs::ToImage");
    int begin = 0, end = 0;
    if (entry.Refuses(CheckImage(Dst)) || RefusesIndex(RangeOf(BlobIndex, begin, end))) return;
    int code = NoError;
    entry.Guards(noRuns, [&] {
        std::vector<LabeledRun> runs;
        for (int i = begin; i < end && code == NoError; i++) {
            runs.clear();
            for (const LabeledRun& run : RunsOf(i)) {
                const int y = run.Y - Dst.Y, from = Max(run.Start - Dst.X, 0),
                          to = Min(run.End - Dst.X, int(Dst.Width));
                if (y >= 0 && y < Dst.Height && from < to) runs.push_back(regions::MakeRun(from, to, y));
            }
            code = regions::PutRuns(runs, Value, Dst);
        }
    });
    entry.Refuses(code);
}

} // namespace Tesk
