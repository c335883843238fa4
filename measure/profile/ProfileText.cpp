// Profiles as text, and in ".prf" files.
#include "measure/Profile.h"

#include "foundation/Archive.h"
#include "measure/profile/ProfileFrame.h"

#include <cinttypes>
#include <cstdio>

namespace Tesk {

using namespace profiles;

namespace {

constexpr ArchiveFormat format = {"TPRF", 1, L"File \"%ls\" is not a Profile file",
                                  L"The version number \"%d\" of this Profile file is too high"};

bool IsStored(int type)
{
    return type == Gray || type == Gray16 || type == Gray32 || type == Rgb;
}

constexpr const wchar_t* notStored =
    L"The profile type (%ls) is not supported for this operation, use one of Gray, Gray16, Gray32, Rgb";

const char* Header(PixelTypes type)
{
    return type == Rgb ? "Red\tGreen\tBlue\n" : type == Rgba ? "Red\tGreen\tBlue\tAlpha\n" : "Gray\n";
}

bool HasText(PixelTypes type)
{
    return IsWhole(type) || type == Rgb || type == Rgba || type == Float || type == Dble || type == Bool;
}

void AppendNumber(std::string& text, double value)
{
    char digits[32];
    std::snprintf(digits, sizeof digits, "%g\n", value);
    text += digits;
}

void AppendLine(std::string& text, const Profile& profile, int i)
{
    switch (profile.Type) {
    case Float:
        AppendNumber(text, profile.Samples<float>()[i]);
        return;
    case Dble:
        AppendNumber(text, profile.Samples<double>()[i]);
        return;
    case Bool:
        text += profile.First[i] ? "1\n" : "0\n";
        return;
    default:
        break;
    }
    const int channels = Channels(profile.Type);
    for (int c = 0; c < channels; c++) {
        text += std::to_string(profile.Samples()[static_cast<std::ptrdiff_t>(i) * channels + c]);
        text += c + 1 < channels ? '\t' : '\n';
    }
}

} // namespace

const char* Profile::ToAsciiString(int Index) const
{
    const Entry entry("Tesk::Profile::ToAsciiString");
    if (Length < 1) {
        entry.Refuse(OutOfRange, L"No sample has been appended yet, the profile is empty");
        return "";
    }
    if (!HasText(Type)) {
        entry.Refuses(RefuseType(Type));
        return "";
    }
    const std::int64_t from = Index == -1 ? 0 : Index < 0 ? std::int64_t{Length} + Index : Index;
    if (from < 0 || from >= Length) {
        entry.Refuse(OutOfRange, L"The sample index (%d) must be in range [0..%d]", Index, Length - 1);
        return "";
    }
    const int end = Index == -1 ? int(Length) : static_cast<int>(from) + 1;
    entry.Refuses(Allocating([&] {
        text_ = Header(Type);
        for (int i = static_cast<int>(from); i < end; i++)
            AppendLine(text_, *this, i);
    }));
    return text_.c_str();
}

void Profile::Transfer(Archive& Block)
{
    Block.Header(format);
    auto type = static_cast<std::int32_t>(PixelTypes(Type));
    std::int32_t scale = Scale;
    int length = StoreLength;
    Block(type, scale);
    if (Block.Good() && !IsStored(type)) {
        const bool known = type >= Undefined && type <= Short;
        Block.Refuse(UnsupportedFormat, notStored, PixelTypeName(known ? static_cast<PixelTypes>(type) : Undefined));
        return;
    }
    const int channels = type == Rgb ? 3 : 1;
    Block.Count(length, std::int64_t{channels} * 4);
    if (Block.Reading() && Block.Good()) {
        if (!TrySet(length, static_cast<PixelTypes>(type)))
            Block.Refuse(CannotAllocate, L"Cannot allocate the profile Buffer");
        Scale = scale;
        Source = {};
    }
    if (!Block.Good() || StoreLength == 0) return;
    Block.Elements(reinterpret_cast<std::int32_t*>(block_.Data()),
                   static_cast<std::size_t>(channels) * static_cast<std::size_t>(int(StoreLength)));
}

void Profile::Read(const char* PathName)
{
    ReadModel("Tesk::Profile::Read", PathName, *this);
}

void Profile::Read(const wchar_t* PathName)
{
    ReadModel("Tesk::Profile::Read", PathName, *this);
}

void Profile::Write(const PathNames& names) const
{
    {
        // Before the file is made, so that none is left behind.
        const Entry entry("Tesk::Profile::Write");
        if (!IsStored(Type)) {
            entry.Refuse(UnsupportedFormat, notStored, PixelTypeName(Type));
            return;
        }
    }
    WriteModel("Tesk::Profile::Write", names, *this);
}

void Profile::Write(const char* PathName) const
{
    Write(PathNames(PathName));
}

void Profile::Write(const wchar_t* PathName) const
{
    Write(PathNames(PathName));
}

} // namespace Tesk
