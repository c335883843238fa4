// A table of typed columns, one row a sample: what blobs are measured into and classifiers learn from.
#pragma once

#include "foundation/CopyOnWrite.h"
#include "foundation/ReadOnly.h"
#include "foundation/Records.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Tesk {

class Archive;
struct PathNames;

/// One column of a table.
struct FeatureRecord
{
    int Type = Undefined; ///< a `PixelTypes` value; below 0 a raw field of that many bytes
    std::wstring Name;
    int Size = 0;   ///< bytes in a row; 0 for a type that tables hold no cells of
    int Offset = 0; ///< place in a row
};

/// The columns, called features, have cells of type `Gray`, `Gray16`, `Rgb`, `Int`, `Float`, `Dble` or `Bool`, or of
/// raw bytes. All cells stand in one buffer, row after row, that copies of a table share until one of them is written.
///
///     TableStore table;
///     table._AppendFeature(Int, L"Class", true);
///     table._AppendFeature(Float, L"Width", true);
///     table.AppendSample();
///     table.FloatValue(1, 0, 2.5f);
///     table.Write("parts.tbl");
///
/// Columns appended in front have indexes from -1 downwards. Refused by all that take one: a column or a row that there
/// is not (`OutOfRange`), a column of another type (`IncompatibleType`); the result is then 0.
class TableStore
{
    template <typename T>
    using Field = ReadOnly<T, TableStore>;

public:
    Field<int> NumFeatures;  ///< columns from index 0 on
    Field<int> NumSamples;   ///< rows
    Field<int> FirstFeature; ///< columns in front of column 0
    Field<int> RowSize;      ///< used bytes of a row
    Field<int> RowPitch;     ///< allocated bytes of a row

    TableStore() = default;
    TableStore(const TableStore& Other) = default;
    TableStore& operator=(const TableStore& Other) = default;
    virtual ~TableStore() = default;

    /// Adds a column at the end, or in front of all others unless `After`; its cells are 0. Refused: `CannotAllocate`.
    void _AppendFeature(int Type, const wchar_t* Name, bool After = true);
    /// Adds a row of zeros. Refused: `CannotAllocate`.
    void AppendSample();

    /// \name Cells
    /// By column and row. The forms with a value store it.
    /// @{
    int IntValue(int Feature, int Sample) const;
    float FloatValue(int Feature, int Sample) const;
    double DbleValue(int Feature, int Sample) const;
    bool BoolValue(int Feature, int Sample) const;
    GrayPixel GrayValue(int Feature, int Sample) const;
    Gray16Pixel Gray16Value(int Feature, int Sample) const;
    RgbPixel RgbValue(int Feature, int Sample) const;
    void IntValue(int Feature, int Sample, int Value);
    void FloatValue(int Feature, int Sample, float Value);
    void DbleValue(int Feature, int Sample, double Value);
    void BoolValue(int Feature, int Sample, bool Value);
    void GrayValue(int Feature, int Sample, GrayPixel Value);
    void Gray16Value(int Feature, int Sample, Gray16Pixel Value);
    void RgbValue(int Feature, int Sample, RgbPixel Value);
    /// @}

    const wchar_t* Name(int Feature) const;
    int Type(int Feature) const;

    /// The names of the columns, and the values of each row in a line, separated by tabs; or those of one column or
    /// row. `Feature` -1 stands for all columns, `Sample` -1 for all rows, and other negative samples count from the
    /// end. The text stands until the next call. Refused, too: a table without columns or rows (`OutOfRange`); it is
    /// then empty.
    const char* ToAsciiString(int Feature = -1, int Sample = -1) const;
    const wchar_t* ToUnicodeString(int Feature = -1, int Sample = -1) const;
    /// Adds a row for each line of a text behind the first, which names the columns in any order: a column that is not
    /// named, and a value that cannot be read as one of the column's type, give 0; other names are skipped. Refused: a
    /// table without columns (`OutOfRange`), `CannotAllocate`; no row is then added.
    void FromAsciiString(const char* Text);
    void FromUnicodeString(const wchar_t* Text);
    /// The same text by way of the clipboard. Refused, too: a clipboard without text (`CannotRead`).
    void CopyToClipboard(int Feature = -1, int Sample = -1) const;
    void PasteFromClipboard();

    /// Table files. Reading counts all columns from 0. Raw cells are not stored, and read as 0. Refused: `CannotOpen`,
    /// `CannotRead` (a file that promises more than it holds), `CannotWrite`, `UnsupportedFormat` (another file),
    /// `OutOfRange` (a newer version). A longer existing file is not cut.
    void Read(const char* PathName);
    void Read(const wchar_t* PathName);
    void Write(const char* PathName) const;
    void Write(const wchar_t* PathName) const;
    /// The content of such a file, as a block of other model files.
    void Transfer(Archive& Block);

protected:
    const FeatureRecord& Record(int feature) const
    {
        return features_.Read()[static_cast<std::size_t>(feature + FirstFeature)];
    }
    int CheckFeature(int feature) const;
    int CheckSample(int sample) const;
    int CheckType(int feature, int type) const;
    /// The type report, for a column that should be of type `wanted`.
    int RefuseType(int feature, int wanted) const;
    int CheckCell(int feature, int sample, int type) const;

    const std::uint8_t* Cell(int feature, int sample) const
    {
        return cells_.Read().data() + static_cast<std::size_t>(sample) * static_cast<std::size_t>(int(RowPitch)) +
               Record(feature).Offset;
    }
    /// For writing, shared with nobody any more. May throw `std::bad_alloc`.
    std::uint8_t* WriteCell(int feature, int sample);
    /// The first bytes of all rows, `RowPitch` apart. The second form may throw `std::bad_alloc`.
    const std::uint8_t* Rows() const { return cells_.Read().data(); }
    std::uint8_t* WriteRows() { return cells_.Write().data(); }

    /// Inner forms.
    int TryAppendFeature(int type, const wchar_t* name, bool after);
    int TryAppendSamples(int count);
    /// The text of `ToAsciiString`, as UTF-8.
    int TryPrint(int feature, int sample, std::string& text) const;
    int TryParse(std::string_view text);

    /// Drops all rows, or the columns as well.
    void DropSamples();
    void DropFeatures();

    /// After rows were added behind the others, or all were replaced.
    virtual void SamplesAdded() {}
    virtual void SamplesReplaced() {}

private:
    template <typename T>
    T ReadCell(const char* context, int type, int feature, int sample) const;
    template <typename T>
    void StoreCell(const char* context, int type, int feature, int sample, const T& value);
    void TransferColumns(Archive& block, int total);
    void TransferCells(Archive& block);
    void ReadFrom(const PathNames& names);

    CopyOnWrite<std::vector<FeatureRecord>> features_;
    CopyOnWrite<std::vector<std::uint8_t>> cells_;
    mutable std::string text_; ///< what `ToAsciiString` gave last
    mutable std::wstring wideText_;
};

} // namespace Tesk
