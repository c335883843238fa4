// The features of blobs as text, and on the clipboard.
#include "measure/blobs/BlobsFrame.h"
#include "measure/table/ClipboardText.h"
#include "measure/table/TextFields.h"

#include <cstring>

namespace Tesk {

using namespace blobs;

int Blobs::TryPrint(int feature, int blobIndex, std::wstring& text) const
{
    constexpr int firstColumn = BlobClass + 2;
    if (NumFeatures <= firstColumn)
        return Status::Format(OutOfRange, L"No feature has been appended yet, the table is empty");
    if (NumSamples < 1) return Status::Format(OutOfRange, L"No sample has been appended yet, the table is empty");
    if (feature != -1 && !IsFeature(feature))
        return Status::Format(OutOfRange, L"The feature index (%d) must be in range [0..%d]", feature,
                              NumPredefinedFeatures + numUserFeatures_ - 1);
    if (feature != -1 && !HasColumn(feature))
        return Status::Format(OutOfRange, L"This feature (%ls) has not been computed", UnicodeName(feature));
    int begin = 0, end = 0;
    if (blobIndex < AllDeselected || blobIndex >= NumSamples)
        return Status::Format(OutOfRange, L"The sample index (%d) must be in range [0..%d]", blobIndex, NumSamples - 1);
    if (const int code = RangeOf(blobIndex, begin, end)) return code;
    return WithMemory(noTable, [&] {
        const int from = feature == -1 ? firstColumn : ColumnOf(feature);
        const int to = feature == -1 ? int(NumFeatures) : from + 1;
        std::wstring made;
        for (int column = from; column < to; column++)
            (made += Record(column).Name) += column + 1 < to ? L'\t' : L'\n';
        std::string digits;
        for (int position = begin; position < end; position++)
            for (int column = from; column < to; column++) {
                const std::uint8_t* cell = Cell(column, Order[position]);
                const int type = Record(column).Type;
                digits.clear();
                if ((type == Int || type == Float) && std::memcmp(cell, &notComputed, sizeof notComputed) != 0) {
                    std::int32_t whole;
                    float real;
                    std::memcpy(&whole, cell, sizeof whole);
                    std::memcpy(&real, cell, sizeof real);
                    if (type == Float)
                        tables::AppendFixed(digits, real);
                    else
                        tables::AppendWhole(digits, whole);
                }
                made.append(digits.begin(), digits.end());
                made += column + 1 < to ? L'\t' : L'\n';
            }
        text = std::move(made);
    });
}

const wchar_t* Blobs::ToUnicodeString(int Feature, int BlobIndex) const
{
    const Entry entry("Tesk::Blobs::ToUnicodeString");
    return entry.Refuses(TryPrint(Feature, BlobIndex, text_)) ? L"" : text_.c_str();
}

void Blobs::CopyToClipboard(int Feature, int BlobIndex) const
{
    const Entry entry("Tesk::Blobs::CopyToClipboard");
    std::wstring text;
    if (entry.Refuses(TryPrint(Feature, BlobIndex, text))) return;
    entry.Guards(noTable, [&] { tables::PutClipboardText(text); });
}

} // namespace Tesk
