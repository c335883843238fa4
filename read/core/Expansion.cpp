// Splits the texts of codes for goods into fields. GS1 General Specifications, section 7.8; ISO/IEC 15434;
// MIL-STD-130N.
#include "read/core/Expansion.h"

#include "read/core/GS1Fields.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <string_view>

namespace Tesk {

namespace {

constexpr char groupSeparator = 29, recordSeparator = 30, endOfTransmission = 4;

/// Writes as far as there is room, and counts all.
class Output
{
public:
    Output(char* out, int length) : out_(out), room_(out != nullptr && length > 0 ? length : 0) {}

    void Put(std::string_view text)
    {
        for (const char character : text) {
            if (count_ + 1 < room_) out_[count_] = character;
            if (count_ < INT_MAX - 1) ++count_;
        }
    }
    void PutHead(std::string_view key, std::string_view name, bool verbose)
    {
        if (verbose) {
            Put(name);
            Put(" ");
        }
        Put("(");
        Put(key);
        Put(verbose ? "): " : ")");
    }
    /// Ends the text. Its length with the ending zero.
    int End()
    {
        if (room_ > 0) out_[std::min(count_, room_ - 1)] = 0;
        return count_ + 1;
    }

private:
    char* out_;
    int room_, count_ = 0;
};

/// Takes the first bytes off a text.
std::string_view TakeOff(std::string_view& text, std::size_t count)
{
    const std::string_view taken = text.substr(0, count);
    text.remove_prefix(taken.size());
    return taken;
}

bool IsSeparator(char character)
{
    return character == groupSeparator || character == recordSeparator;
}

void PutGS1Fields(std::string_view rest, Output& output, bool verbose)
{
    if (!rest.empty() && rest.front() == ']') TakeOff(rest, 3);
    while (const GS1Field* field = rest.empty() ? nullptr : FindGS1Field(rest)) {
        TakeOff(rest, static_cast<std::size_t>(field->keyLength));
        output.PutHead(field->Key(), field->name, verbose);
        std::size_t length = std::min(rest.size(), static_cast<std::size_t>(field->minimum));
        const std::size_t most = std::min(rest.size(), static_cast<std::size_t>(field->maximum));
        while (length < most && !IsSeparator(rest[length]))
            ++length;
        output.Put(TakeOff(rest, length));
        if (!rest.empty() && IsSeparator(rest.front())) TakeOff(rest, 1);
        if (verbose) output.Put("\n");
    }
}

struct Identifier
{
    std::string_view key, name;
};

/// Data identifiers and text element identifiers of property. MIL-STD-130N, tables II and III.
constexpr Identifier identifiers[] = {
    {"12V", "DUNS"},          {"17V", "CAGE"},       {"18S", "UII"},
    {"18V", "ENTERPRISE ID"}, {"1P", "PART NO."},    {"1T", "LOT NO."},
    {"22S", "CELLULAR ID"},   {"25S", "UII"},        {"30P", "CURRENT PART"},
    {"30T", "LOT NO."},       {"3V", "GS1 PREFIX"},  {"7L", "DODAAC"},
    {"BII", "BATCH"},         {"CAG", "CAGE"},       {"DUN", "DUNS"},
    {"EUC", "GS1 PREFIX"},    {"LOT", "LOT NO."},    {"LTN", "LOT NO."},
    {"MFR", "MANUFACTURER"},  {"PNO", "PART NO."},   {"PNR", "CURRENT PART"},
    {"S", "SERIAL NO."},      {"SEQ", "SERIAL NO."}, {"SER", "SERIAL NO."},
    {"SPL", "SUPPLIER"},      {"T", "LOT NO."},      {"UCN", "UNIQUE COMPONENT"},
    {"UID", "UII"},           {"USN", "SERIAL NO."}, {"UST", "SERIAL NO."},
};

std::string_view NameOf(std::string_view key)
{
    for (const Identifier& identifier : identifiers)
        if (identifier.key == key) return identifier.name;
    return "";
}

/// The length of a data identifier, up to three digits and a letter, or of three letters or digits and a blank; 0 if
/// the field begins with neither.
std::size_t IdentifierLength(std::string_view field, bool textElements)
{
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    const auto isLetter = [](char c) { return c >= 'A' && c <= 'Z'; };
    if (textElements) {
        const bool fits = field.size() >= 3 && std::all_of(field.begin(), field.begin() + 3,
                                                           [&](char c) { return isDigit(c) || isLetter(c); });
        return fits ? 3 : 0;
    }
    std::size_t digits = 0;
    while (digits < field.size() && digits < 3 && isDigit(field[digits]))
        ++digits;
    return digits < field.size() && isLetter(field[digits]) ? digits + 1 : 0;
}

void PutFields(std::string_view rest, bool textElements, Output& output, bool verbose)
{
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(groupSeparator), rest.size());
        std::string_view field = TakeOff(rest, end);
        TakeOff(rest, 1);
        if (field.empty()) continue;
        const std::size_t length = IdentifierLength(field, textElements);
        if (length == 0) return;
        const std::string_view key = TakeOff(field, length);
        if (textElements && !field.empty() && field.front() == ' ') TakeOff(field, 1);
        output.PutHead(key, NameOf(key), verbose);
        output.Put(field);
        if (verbose) output.Put("\n");
    }
}

} // namespace

int ExpandGS1(const char in[], char out[], int outLength, bool verbose)
{
    Output output(out, outLength);
    if (in != nullptr) PutGS1Fields(in, output, verbose);
    return output.End();
}

int ExpandMIL(const char in[], char out[], int outLength, bool verbose)
{
    Output output(out, outLength);
    std::string_view rest = in != nullptr ? in : "";
    constexpr std::string_view envelope = "[)>\x1e";
    const auto takeRecord = [&] {
        const std::size_t end = rest.find_first_of("\x1e\x04");
        const std::string_view record = TakeOff(rest, end);
        TakeOff(rest, 1);
        return record;
    };
    if (!rest.starts_with(envelope)) {
        PutFields(takeRecord(), false, output, verbose);
        return output.End();
    }
    TakeOff(rest, envelope.size());
    while (!rest.empty() && rest.front() != endOfTransmission) {
        std::string_view record = takeRecord();
        const std::string_view format = TakeOff(record, 2);
        if (!record.empty() && record.front() == groupSeparator) TakeOff(record, 1);
        if (format == "05")
            PutGS1Fields(record, output, verbose);
        else if (format == "06" || format == "12" || format == "DD")
            PutFields(record, format != "06", output, verbose);
    }
    return output.End();
}

} // namespace Tesk
