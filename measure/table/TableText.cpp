// Tables as text, and on the clipboard: a line of names, then a line for each row.
#include "measure/TableStore.h"

#include "foundation/Entry.h"
#include "foundation/Services.h"
#include "measure/table/ClipboardText.h"
#include "measure/table/TableFrame.h"
#include "measure/table/TextFields.h"

#include <cstring>

namespace Tesk {

using namespace tables;

namespace {

template <typename T>
T At(const std::uint8_t* cell)
{
    T value;
    std::memcpy(&value, cell, sizeof value);
    return value;
}

void AppendCell(std::string& text, int type, const std::uint8_t* cell)
{
    switch (type) {
    case Gray:
        AppendWhole(text, *cell);
        break;
    case Gray16:
        AppendWhole(text, At<std::uint16_t>(cell));
        break;
    case Rgb:
        for (const int channel : {2, 1, 0}) {
            AppendWhole(text, cell[channel]);
            if (channel > 0) text += ',';
        }
        break;
    case Int:
        AppendWhole(text, At<std::int32_t>(cell));
        break;
    case Float:
        AppendFixed(text, At<float>(cell));
        break;
    case Dble:
        AppendGeneral(text, At<double>(cell));
        break;
    case Bool:
        text += *cell ? "true" : "false";
        break;
    default:
        break;
    }
}

template <typename T>
void Store(std::uint8_t* cell, std::string_view field)
{
    T value;
    if (ParseNumber(field, value)) std::memcpy(cell, &value, sizeof value);
}

void StoreColor(std::uint8_t* cell, std::string_view field)
{
    std::uint8_t channels[3];
    for (int i = 0; i < 3; i++)
        if (!ParseNumber(NextField(field, ','), channels[i])) return;
    for (int i = 0; i < 3; i++)
        cell[2 - i] = channels[i];
}

void ParseCell(std::uint8_t* cell, int type, std::string_view field)
{
    switch (type) {
    case Gray:
        Store<std::uint8_t>(cell, field);
        break;
    case Gray16:
        Store<std::uint16_t>(cell, field);
        break;
    case Rgb:
        StoreColor(cell, field);
        break;
    case Int:
        Store<std::int32_t>(cell, field);
        break;
    case Float:
        Store<float>(cell, field);
        break;
    case Dble:
        Store<double>(cell, field);
        break;
    case Bool:
        *cell = Trimmed(field) == "true" || Trimmed(field) == "1";
        break;
    default:
        break;
    }
}

constexpr const wchar_t *noFeature = L"No feature has been appended yet, the table is empty",
                        *noSample = L"No sample has been appended yet, the table is empty";

} // namespace

int TableStore::TryPrint(int feature, int sample, std::string& text) const
{
    const int first = -FirstFeature, columns = NumFeatures + FirstFeature, samples = NumSamples;
    if (columns < 1) return Status::Format(OutOfRange, noFeature);
    if (samples < 1) return Status::Format(OutOfRange, noSample);
    if (feature != -1)
        if (const int code = CheckFeature(feature)) return code;
    if (sample < -samples || sample >= samples)
        return Status::Format(OutOfRange, L"The sample index (%d) must be in range [%d..%d]", sample, -samples,
                              samples - 1);
    const int from = feature == -1 ? first : feature, to = feature == -1 ? int(NumFeatures) : feature + 1;
    const int begin = sample == -1 ? 0 : sample < 0 ? samples + sample : sample;
    const int end = sample == -1 ? samples : begin + 1;
    return WithMemory(noMemory, [&] {
        std::string made;
        for (int i = from; i < to; i++)
            (made += Narrow(Record(i).Name.c_str())) += i + 1 < to ? '\t' : '\n';
        for (int row = begin; row < end; row++)
            for (int i = from; i < to; i++) {
                AppendCell(made, Record(i).Type, Cell(i, row));
                made += i + 1 < to ? '\t' : '\n';
            }
        text = std::move(made);
    });
}

int TableStore::TryParse(std::string_view text)
{
    if (features_.Read().empty()) return Status::Format(OutOfRange, noFeature);
    return WithMemory(noMemory, [&]() -> int {
        std::vector<std::string_view> names;
        for (std::string_view line = NextLine(text); names.empty() || !line.empty();)
            names.push_back(NextField(line, '\t'));
        const std::vector<FeatureRecord> records = features_.Read();
        std::vector<int> fieldOf(records.size(), -1);
        for (std::size_t column = 0; column < records.size(); column++) {
            const std::string name = Narrow(records[column].Name.c_str());
            for (std::size_t field = 0; field < names.size() && fieldOf[column] < 0; field++)
                if (names[field] == name) fieldOf[column] = static_cast<int>(field);
        }
        const int before = NumSamples, added = CountLines(text);
        if (added < 1) return NoError;
        if (const int code = TryAppendSamples(added)) return code;
        std::vector<std::string_view> fields(names.size());
        std::uint8_t* cells = WriteRows();
        for (int row = before; row < NumSamples; row++) {
            std::string_view line = NextLine(text);
            for (std::string_view& field : fields)
                field = NextField(line, '\t');
            std::uint8_t* cell = cells + static_cast<std::size_t>(row) * static_cast<std::size_t>(int(RowPitch));
            for (std::size_t column = 0; column < records.size(); column++)
                if (fieldOf[column] >= 0)
                    ParseCell(cell + records[column].Offset, records[column].Type,
                              fields[static_cast<std::size_t>(fieldOf[column])]);
        }
        return NoError;
    });
}

const char* TableStore::ToAsciiString(int Feature, int Sample) const
{
    const Entry entry("Tesk::TableStore::ToAsciiString");
    return entry.Refuses(TryPrint(Feature, Sample, text_)) ? "" : text_.c_str();
}

const wchar_t* TableStore::ToUnicodeString(int Feature, int Sample) const
{
    const Entry entry("Tesk::TableStore::ToUnicodeString");
    std::string text;
    if (entry.Refuses(TryPrint(Feature, Sample, text))) return L"";
    return entry.Guards(noMemory, [&] { wideText_ = WidenPath(text.c_str()); }) ? wideText_.c_str() : L"";
}

void TableStore::FromAsciiString(const char* Text)
{
    const Entry entry("Tesk::TableStore::FromAsciiString");
    entry.Refuses(TryParse(Text ? Text : ""));
}

void TableStore::FromUnicodeString(const wchar_t* Text)
{
    const Entry entry("Tesk::TableStore::FromUnicodeString");
    std::string text;
    if (entry.Guards(noMemory, [&] { text = Text ? Narrow(Text) : ""; })) entry.Refuses(TryParse(text));
}

void TableStore::CopyToClipboard(int Feature, int Sample) const
{
    const Entry entry("Tesk::TableStore::CopyToClipboard");
    std::string text;
    if (entry.Refuses(TryPrint(Feature, Sample, text))) return;
    entry.Guards(noMemory, [&] { PutClipboardText(WidenPath(text.c_str())); });
}

void TableStore::PasteFromClipboard()
{
    const Entry entry("Tesk::TableStore::PasteFromClipboard");
    std::string text;
    bool found = false;
    if (!entry.Guards(noMemory, [&] {
            std::wstring wide;
            found = GetClipboardText(wide);
            text = Narrow(wide.c_str());
        }))
        return;
    if (!found)
        entry.Refuse(CannotRead, L"There is no suitable text data in the clipboard");
    else
        entry.Refuses(TryParse(text));
}

} // namespace Tesk
