// Tables: columns, rows and cells.
#include "measure/TableStore.h"

#include "foundation/Entry.h"
#include "image/Image.h"
#include "measure/table/TableFrame.h"

#include <climits>
#include <cstring>

namespace Tesk {

using namespace tables;

namespace {

/// Bytes of a cell; below 0 for what no row can hold.
int SizeOf(int type)
{
    if (type < 0) return type == INT_MIN ? -1 : -type;
    return HasCells(type) ? ElementSize(static_cast<PixelTypes>(type)) : 0;
}

/// What every method of the two classes says of a column or a row that there is not.
int CheckIndex(int index, int first, int count, const wchar_t* none, const wchar_t* range)
{
    if (index >= -first && index < count) return NoError;
    return count + first < 1 ? Status::Format(OutOfRange, none) : Status::Format(OutOfRange, range, index, count - 1);
}

} // namespace

namespace tables {

const wchar_t* TypeName(int type)
{
    return type < 0 ? L"Raw" : PixelTypeName(static_cast<PixelTypes>(type));
}

} // namespace tables

int TableStore::CheckFeature(int feature) const
{
    return CheckIndex(feature, FirstFeature, NumFeatures, L"No feature is available",
                      L"The feature index (%d) must be in range [0..%d]");
}

int TableStore::CheckSample(int sample) const
{
    return CheckIndex(sample, 0, NumSamples, L"No sample is available",
                      L"The sample index (%d) must be in range [0..%d]");
}

int TableStore::RefuseType(int feature, int wanted) const
{
    const FeatureRecord& record = Record(feature);
    return Status::Format(IncompatibleType, L"The feature named %ls is not of type %ls, but %ls", record.Name.c_str(),
                          TypeName(wanted), TypeName(record.Type));
}

int TableStore::CheckType(int feature, int type) const
{
    return Record(feature).Type == type ? int(NoError) : RefuseType(feature, type);
}

int TableStore::CheckCell(int feature, int sample, int type) const
{
    if (const int code = CheckFeature(feature)) return code;
    if (const int code = CheckSample(sample)) return code;
    return CheckType(feature, type);
}

int TableStore::TryAppendFeature(int type, const wchar_t* name, bool after)
{
    constexpr int doubling = 2;
    return WithMemory(noMemory, [&]() -> int {
        const int size = SizeOf(type);
        if (size < 0 || size > INT_MAX - RowSize) return Status::Format(CannotAllocate, noMemory);
        const int rowSize = RowSize + size;
        int pitch = RowPitch;
        std::vector<std::uint8_t> wider;
        if (rowSize > pitch) {
            pitch = rowSize > INT_MAX / doubling ? rowSize : Max(rowSize, doubling * pitch);
            const auto to = static_cast<std::size_t>(pitch), from = static_cast<std::size_t>(int(RowPitch)),
                       used = static_cast<std::size_t>(int(RowSize)), rows = static_cast<std::size_t>(int(NumSamples));
            if (rows > SIZE_MAX / to) return Status::Format(CannotAllocate, noMemory);
            wider.resize(rows * to);
            const std::uint8_t* cells = Rows();
            for (std::size_t row = 0; row < rows && used > 0; row++)
                std::memcpy(wider.data() + row * to, cells + row * from, used);
        }
        std::vector<FeatureRecord>& features = features_.Write();
        features.insert(after ? features.end() : features.begin(), {type, name ? name : L"", size, RowSize});
        if (pitch != RowPitch) cells_.Replace(std::move(wider));
        RowPitch = pitch;
        RowSize = rowSize;
        if (after)
            NumFeatures += 1;
        else
            FirstFeature += 1;
        return NoError;
    });
}

int TableStore::TryAppendSamples(int count)
{
    const int samples = NumSamples;
    return WithMemory(noMemory, [&]() -> int {
        if (count > INT_MAX - samples) return Status::Format(CannotAllocate, noMemory);
        std::vector<std::uint8_t>& cells = cells_.Write();
        const auto pitch = static_cast<std::size_t>(int(RowPitch));
        cells.resize(static_cast<std::size_t>(samples + count) * pitch);
        NumSamples = samples + count;
        try {
            SamplesAdded();
        } catch (...) {
            NumSamples = samples;
            cells.resize(static_cast<std::size_t>(samples) * pitch);
            throw;
        }
        return NoError;
    });
}

void TableStore::_AppendFeature(int Type, const wchar_t* Name, bool After)
{
    const Entry entry("Tesk::TableStore::_AppendFeature");
    entry.Refuses(TryAppendFeature(Type, Name, After));
}

void TableStore::AppendSample()
{
    const Entry entry("Tesk::TableStore::AppendSample");
    entry.Refuses(TryAppendSamples(1));
}

void TableStore::DropSamples()
{
    cells_.Overwrite().clear();
    NumSamples = 0;
    SamplesReplaced();
}

void TableStore::DropFeatures()
{
    features_.Overwrite().clear();
    NumFeatures = FirstFeature = RowSize = RowPitch = 0;
    DropSamples();
}

std::uint8_t* TableStore::WriteCell(int feature, int sample)
{
    cells_.Write();
    return const_cast<std::uint8_t*>(Cell(feature, sample));
}

template <typename T>
T TableStore::ReadCell(const char* context, int type, int feature, int sample) const
{
    const Entry entry(context);
    T value{};
    if (!entry.Refuses(CheckCell(feature, sample, type))) std::memcpy(&value, Cell(feature, sample), sizeof value);
    return value;
}

template <typename T>
void TableStore::StoreCell(const char* context, int type, int feature, int sample, const T& value)
{
    const Entry entry(context);
    if (entry.Refuses(CheckCell(feature, sample, type))) return;
    entry.Guards(noMemory, [&] { std::memcpy(WriteCell(feature, sample), &value, sizeof value); });
}

int TableStore::IntValue(int Feature, int Sample) const
{
    return ReadCell<std::int32_t>("Tesk::TableStore::IntValue", Int, Feature, Sample);
}

float TableStore::FloatValue(int Feature, int Sample) const
{
    return ReadCell<float>("Tesk::TableStore::FloatValue", Float, Feature, Sample);
}

double TableStore::DbleValue(int Feature, int Sample) const
{
    return ReadCell<double>("Tesk::TableStore::DbleValue", Dble, Feature, Sample);
}

bool TableStore::BoolValue(int Feature, int Sample) const
{
    // A file may hold any byte.
    return ReadCell<std::uint8_t>("Tesk::TableStore::BoolValue", Bool, Feature, Sample) != 0;
}

GrayPixel TableStore::GrayValue(int Feature, int Sample) const
{
    return ReadCell<GrayPixel>("Tesk::TableStore::GrayValue", Gray, Feature, Sample);
}

Gray16Pixel TableStore::Gray16Value(int Feature, int Sample) const
{
    return ReadCell<Gray16Pixel>("Tesk::TableStore::Gray16Value", Gray16, Feature, Sample);
}

RgbPixel TableStore::RgbValue(int Feature, int Sample) const
{
    return ReadCell<RgbPixel>("Tesk::TableStore::RgbValue", Rgb, Feature, Sample);
}

void TableStore::IntValue(int Feature, int Sample, int Value)
{
    StoreCell<std::int32_t>("Tesk::TableStore::IntValue", Int, Feature, Sample, Value);
}

void TableStore::FloatValue(int Feature, int Sample, float Value)
{
    StoreCell("Tesk::TableStore::FloatValue", Float, Feature, Sample, Value);
}

void TableStore::DbleValue(int Feature, int Sample, double Value)
{
    StoreCell("Tesk::TableStore::DbleValue", Dble, Feature, Sample, Value);
}

void TableStore::BoolValue(int Feature, int Sample, bool Value)
{
    StoreCell("Tesk::TableStore::BoolValue", Bool, Feature, Sample, static_cast<std::uint8_t>(Value ? 1 : 0));
}

void TableStore::GrayValue(int Feature, int Sample, GrayPixel Value)
{
    StoreCell("Tesk::TableStore::GrayValue", Gray, Feature, Sample, Value);
}

void TableStore::Gray16Value(int Feature, int Sample, Gray16Pixel Value)
{
    StoreCell("Tesk::TableStore::Gray16Value", Gray16, Feature, Sample, Value);
}

void TableStore::RgbValue(int Feature, int Sample, RgbPixel Value)
{
    StoreCell("Tesk::TableStore::RgbValue", Rgb, Feature, Sample, Value);
}

const wchar_t* TableStore::Name(int Feature) const
{
    const Entry entry("Tesk::TableStore::Name");
    return entry.Refuses(CheckFeature(Feature)) ? L"" : Record(Feature).Name.c_str();
}

int TableStore::Type(int Feature) const
{
    const Entry entry("Tesk::TableStore::Type");
    return entry.Refuses(CheckFeature(Feature)) ? int(Undefined) : Record(Feature).Type;
}

} // namespace Tesk
