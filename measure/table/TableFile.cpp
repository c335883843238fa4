// Table files: the columns, and then the cells, column by column.
#include "measure/TableStore.h"

#include "foundation/Archive.h"
#include "measure/table/TableFrame.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace Tesk {

using namespace tables;

namespace {

constexpr ArchiveFormat format = {"TTBL", 1, L"File \"%ls\" is not a TableStore table",
                                  L"The version number (%d) of this TableStore table is too high"};

/// Bytes of a column's description at the least: its type, and the length of its name.
constexpr int columnBytes = 8;

/// Most memory that a file may ask for without bytes of its own behind it: for raw cells, and for rows without any
/// cell.
constexpr std::int64_t mostUnbacked = 1 << 26;

/// Bytes of a column's cells in a file.
int StoredSize(const FeatureRecord& record)
{
    return record.Type > 0 ? record.Size : 0;
}

} // namespace

void TableStore::TransferColumns(Archive& block, int total)
{
    std::vector<FeatureRecord> read;
    if (block.Reading()) read.resize(static_cast<std::size_t>(total));
    // A writing archive only looks at what it is given.
    auto& records = block.Reading() ? read : const_cast<std::vector<FeatureRecord>&>(features_.Read());
    for (FeatureRecord& record : records) {
        block(record.Type);
        block.Text(record.Name);
        if (!block.Good()) return;
    }
    if (!block.Reading()) return;
    for (const FeatureRecord& record : read)
        if (const int code = TryAppendFeature(record.Type, record.Name.c_str(), true)) {
            block.Refuse(code, noMemory);
            return;
        }
    RowPitch = RowSize;
}

void TableStore::TransferCells(Archive& block)
{
    const auto rows = static_cast<std::size_t>(int(NumSamples)), pitch = static_cast<std::size_t>(int(RowPitch));
    std::vector<std::uint8_t> column;
    std::uint8_t* cells = block.Reading() ? WriteRows() : const_cast<std::uint8_t*>(Rows());
    const auto reorder = [](std::uint8_t* cell, int type, std::size_t size) {
        if (std::endian::native == std::endian::big && type != Rgb) std::reverse(cell, cell + size);
    };
    for (const FeatureRecord& record : features_.Read()) {
        const auto size = static_cast<std::size_t>(StoredSize(record));
        if (size == 0) continue;
        column.resize(rows * size);
        if (block.Reading()) block.Bytes(column.data(), column.size());
        if (!block.Good()) return;
        for (std::size_t row = 0; row < rows; row++) {
            std::uint8_t *cell = cells + row * pitch + record.Offset, *stored = column.data() + row * size;
            if (block.Reading()) {
                reorder(stored, record.Type, size);
                std::memcpy(cell, stored, size);
            } else {
                std::memcpy(stored, cell, size);
                reorder(stored, record.Type, size);
            }
        }
        if (!block.Reading()) block.Bytes(column.data(), column.size());
    }
}

void TableStore::Transfer(Archive& Block)
{
    Block.Header(format);
    std::int32_t fromZero = NumFeatures, samples = NumSamples;
    int total = NumFeatures + FirstFeature;
    Block(fromZero);
    Block.Count(total, columnBytes);
    Block(samples);
    if (!Block.Good()) return;
    if (!Block.Reading()) {
        TransferColumns(Block, total);
        TransferCells(Block);
        return;
    }
    TableStore read;
    if (fromZero < 0 || fromZero > total || samples < 0) Block.Refuse(CannotRead);
    if (Block.Good()) read.TransferColumns(Block, total);
    if (!Block.Good()) return;
    std::int64_t stored = 0;
    for (const FeatureRecord& record : read.features_.Read())
        stored += StoredSize(record);
    // A row costs some bytes even if it has no cell.
    const std::int64_t unbacked = read.RowSize - stored + (stored > 0 ? 0 : std::int64_t{sizeof(int)});
    if (stored > 0 && samples > Block.BytesLeft() / stored) Block.Refuse(CannotRead);
    if (unbacked > 0 && samples > mostUnbacked / unbacked) Block.Refuse(CannotAllocate, noMemory);
    if (!Block.Good()) return;
    read.cells_.Write().reserve((static_cast<std::size_t>(samples) + 1) * static_cast<std::size_t>(int(read.RowPitch)));
    if (const int code = read.TryAppendSamples(samples)) Block.Refuse(code, noMemory);
    if (Block.Good()) read.TransferCells(Block);
    if (!Block.Good()) return;
    const TableStore former(*this);
    TableStore::operator=(read);
    try {
        SamplesReplaced();
    } catch (...) {
        TableStore::operator=(former);
        throw;
    }
}

void TableStore::ReadFrom(const PathNames& names)
{
    ReadModel("Tesk::TableStore::Read", names, ShortFile::Refused, [this](Archive& archive) { Transfer(archive); });
}

void TableStore::Read(const char* PathName)
{
    ReadFrom(PathName);
}

void TableStore::Read(const wchar_t* PathName)
{
    ReadFrom(PathName);
}

void TableStore::Write(const char* PathName) const
{
    WriteModel("Tesk::TableStore::Write", PathName, *this);
}

void TableStore::Write(const wchar_t* PathName) const
{
    WriteModel("Tesk::TableStore::Write", PathName, *this);
}

} // namespace Tesk
