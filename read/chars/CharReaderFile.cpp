// The ".fnt" files of a character reader: settings, layout and font.
#include "foundation/Archive.h"
#include "image/core/Refusals.h"
#include "read/CharReader.h"
#include "read/chars/FontSource.h"
#include "read/chars/ReaderState.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace Tesk {

using namespace chars;

namespace {

constexpr ArchiveFormat format = {"TREA",  18,
                                  nullptr, L"The version number (%d) of this CharReader Font is too high",
                                  6,       L"The version number (%d) of this CharReader Font is no more supported "};
constexpr const char* anyFilter = "%*";
constexpr int firstWithLayoutMode = 11;
/// Further sizes are taken for those of a broken file.
constexpr int largestSize = 32767;

/// Fields that came with a version of the format; in an older file they have a value of their own.
struct Fields
{
    Archive& block;
    int version;

    template <typename T, typename Absent>
    void operator()(int since, T& field, Absent absent)
    {
        if (version >= since)
            block(field);
        else
            field = static_cast<T>(absent);
    }
};

/// Up to the filter.
void TransferReading(Archive& block, int version, CharReader& reader)
{
    Fields fields{block, version};
    fields(7, reader.WhiteOnBlack, false);
    fields(7, reader.GuessSize, true);
    fields(7, reader.KeepRatio, false);
    fields(7, reader.RepairBroken, true);
    fields(7, reader.MaxTouching, 5);
    fields(7, reader.JitterX, 0);
    fields(7, reader.JitterY, 0);
    fields(7, reader.MinimumScore, 0.9);
    fields(7, reader.UseSafeScores, false);
    fields(8, reader.DiscardBadScores, false);
    fields(9, reader.GapFraction, 0.1);
    fields(9, reader.DotFraction, 0.5);
    fields(9, reader.InsertNewlines, true);
    fields(9, reader.InsertSpaces, true);
    fields(10, reader.Quadrant, 0);
    fields(10, reader.VariableWidth, false);
}

/// What stands behind the layout mode, up to the size of the font.
void TransferSegmentation(Archive& block, int version, CharReader& reader)
{
    Fields fields{block, version};
    fields(12, reader.AlignChars, false);
    fields(12, reader.EvenlySpaceChars, false);
    fields(13, reader.Dotted, 0);
    fields(14, reader.MinAngle, reader.MinAngle);
    fields(14, reader.MaxAngle, reader.MaxAngle);
    fields(15, reader.Masking, 0);
    fields(15, reader.SplitRows, 0);
    fields(16, reader.Threshold, Auto);
    fields(17, reader.MinimumContrast, 0);
    fields(18, reader.InkingCorrection, 0);
    fields(18, reader.OCVScoring, true);
    auto filter = static_cast<std::uint16_t>(reader.GlobalFilter);
    fields(18, filter, L'*');
    reader.GlobalFilter = static_cast<wchar_t>(filter);
    block(reader.FontWidth, reader.FontHeight);
}

/// Bytes of the above.
std::size_t SegmentationBytes(int version)
{
    std::vector<std::uint8_t> bytes;
    CharReader any;
    Archive block = Archive::IntoMemory(bytes);
    TransferSegmentation(block, version, any);
    return bytes.size();
}

/// A wide filter is kept as far as bytes can hold it.
std::string FilterInForce(const CharReader& reader)
{
    constexpr auto isByte = [](wchar_t c) { return c > 0 && c <= 255; };
    const std::wstring& wide = reader.UnicodeFilter;
    if (reader.AsciiFilter != anyFilter || !std::all_of(wide.begin(), wide.end(), isByte)) return reader.AsciiFilter;
    std::string filter;
    for (const wchar_t c : wide)
        filter += static_cast<char>(c);
    return filter;
}

/// The count with the ending zero, and the bytes.
void TransferFilter(Archive& block, std::string& filter)
{
    std::vector<char> bytes(filter.c_str(), filter.c_str() + filter.size() + 1);
    block.Array(bytes);
    if (!block.Reading() || !block.Good()) return;
    bytes.push_back('\0');
    filter = bytes.data();
}

void TransferLayout(Archive& block, std::vector<CharBox>& layout)
{
    constexpr int boxBytes = 4 * sizeof(std::int16_t);
    block.Array(layout, boxBytes, [](Archive& archive, CharBox& box) {
        for (int* side : {&box.X, &box.Y, &box.Width, &box.Height})
            archive.As<std::int16_t>(*side);
    });
}

bool IsWithin(int value, int largest)
{
    return value >= 1 && value <= largest;
}

/// Whether sizes and angles are ones that a reader can have.
bool IsPlausible(const CharReader& reader)
{
    return IsWithin(reader.CharWidth, largestSize) && IsWithin(reader.CharHeight, largestSize) &&
           IsWithin(reader.FontWidth, largestThumbnail) && IsWithin(reader.FontHeight, largestThumbnail) &&
           reader.LayoutMode >= NoLayout && reader.LayoutMode <= FlexibleLayout && std::isfinite(reader.MinAngle) &&
           std::isfinite(reader.MaxAngle);
}

/// The end of a file of settings, which has no layout mode and no characters, is told from that of a font by the count
/// of 0 where a font has its height. Whether it is one; what follows in a font is its count of characters.
bool ReadSegmentation(Archive& block, int version, CharReader& reader)
{
    std::vector<std::uint8_t> bytes(SegmentationBytes(version) + sizeof(std::int32_t));
    block.Bytes(bytes.data(), bytes.size());
    if (!block.Good()) return false;
    std::int32_t last = 0;
    std::memcpy(&last, bytes.data() + bytes.size() - sizeof last, sizeof last);
    Archive rest = Archive::FromMemory(bytes);
    if (last != 0) rest(reader.LayoutMode);
    TransferSegmentation(rest, version, reader);
    return last == 0;
}

} // namespace

void CharReader::Transfer(Archive& Block)
{
    Transfer(Block, false, false);
}

void CharReader::Transfer(Archive& Block, bool SettingsOnly, bool OptimalOnly)
{
    if (Block.Reading())
        ReadFields(Block, SettingsOnly);
    else
        WriteFields(Block, SettingsOnly, OptimalOnly);
}

void CharReader::WriteFields(Archive& block, bool settingsOnly, bool optimalOnly)
{
    const int version = block.Header(format);
    block(CharWidth, CharHeight);
    TransferReading(block, version, *this);
    std::string filter = settingsOnly ? anyFilter : FilterInForce(*this);
    TransferFilter(block, filter);
    std::vector<CharBox> layout;
    if (!settingsOnly) layout = state_->layout;
    TransferLayout(block, layout);
    block(LocalThreshold);
    if (!settingsOnly) block(LayoutMode);
    TransferSegmentation(block, version, *this);
    if (settingsOnly)
        Font().Transfer(block);
    else
        state_->font.Transfer(block, optimalOnly);
}

void CharReader::ReadFields(Archive& block, bool settingsOnly)
{
    const int version = block.Header(format);
    if (!block.Good()) return;
    block(CharWidth, CharHeight);
    TransferReading(block, version, *this);
    std::string filter = anyFilter;
    std::vector<CharBox> layout;
    if (version >= 7) {
        TransferFilter(block, filter);
        TransferLayout(block, layout);
    }
    const LayoutModes formerMode = LayoutMode;
    if (version >= firstWithLayoutMode) {
        block(LocalThreshold);
        if (ReadSegmentation(block, version, *this)) settingsOnly = true;
    } else {
        LocalThreshold = false;
        LayoutMode = layout.empty() ? NoLayout : FlexibleLayout;
        TransferSegmentation(block, version, *this);
    }
    if (!block.Good()) return;
    if (!IsPlausible(*this)) return block.Refuse(CannotRead, L"Cannot read file \"%ls\"", block.Name());
    if (settingsOnly) {
        LayoutMode = formerMode;
    } else {
        AsciiFilter = filter;
        UnicodeFilter.assign(anyFilter, anyFilter + std::strlen(anyFilter));
        state_->layout = std::move(layout);
        state_->font.Transfer(block);
        if (!block.Good()) return;
    }
    if (const int code = state_->font.Rebuild(ThumbnailSizeOf(*this))) block.Refuse(code, images::noWorkingMemory);
    CountFont();
    CountLayout();
    ClearChars();
}

// A reader takes what a file holds only if all of it could be read.
void CharReader::ReadFile(const PathNames& names, bool settingsOnly)
{
    ReadModel("Tesk::CharReader::Read", names, ShortFile::Refused, [&](Archive& block) {
        CharReader read(*this);
        read.Transfer(block, settingsOnly, false);
        if (block.Good()) *this = read;
    });
}

void CharReader::WriteFile(const PathNames& names, bool settingsOnly, bool optimalOnly) const
{
    // A writing archive only looks at what it is given.
    WriteModel("Tesk::CharReader::Write", names,
               [&](Archive& block) { const_cast<CharReader*>(this)->Transfer(block, settingsOnly, optimalOnly); });
}

void CharReader::Read(const char* PathName, bool SettingsOnly)
{
    ReadFile(PathName, SettingsOnly);
}

void CharReader::Read(const wchar_t* PathName, bool SettingsOnly)
{
    ReadFile(PathName, SettingsOnly);
}

void CharReader::Write(const char* PathName, bool SettingsOnly, bool OptimalOnly) const
{
    WriteFile(PathName, SettingsOnly, OptimalOnly);
}

void CharReader::Write(const wchar_t* PathName, bool SettingsOnly, bool OptimalOnly) const
{
    WriteFile(PathName, SettingsOnly, OptimalOnly);
}

void CharReader::ExportThumbnails() const
{
    const std::string text = TableSource(state_->font, FontWidth, FontHeight);
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void CharReader::ExportArrays() const
{
    const std::string text = ArraysSource(state_->font);
    std::fwrite(text.data(), 1, text.size(), stdout);
}

} // namespace Tesk
