// Paths as text, and in ".pth" files.
#include "measure/Path.h"

#include "foundation/Archive.h"
#include "measure/path/PathFrame.h"

#include <utility>

namespace Tesk {

using namespace paths;

namespace {

constexpr ArchiveFormat format = {"TPTH", 1, L"File \"%ls\" is not a Path file",
                                  L"The version number \"%d\" of this Path file is too high"};

/// Bytes of a site in a file, and of the word behind the sites that is reserved for it.
constexpr int siteBytes = 4, reservedBytes = 4;

} // namespace

const char* Path::ToAsciiString(int Index) const
{
    const Entry entry("Tesk::Path::ToAsciiString");
    if (Length < 1) {
        entry.Refuse(OutOfRange, L"No sample has been appended yet, the profile is empty");
        return "";
    }
    const std::int64_t from = Index == -1 ? 0 : Index < 0 ? std::int64_t{Length} + Index : Index;
    if (from < 0 || from >= Length) {
        entry.Refuse(OutOfRange, L"The vertex index (%d) must be in range [0..%d]", Index, Length - 1);
        return "";
    }
    const std::size_t count = Index == -1 ? static_cast<std::size_t>(int(Length)) : 1;
    const bool made = !entry.Refuses(Allocating([&] {
        text_ = "X\tY\n";
        for (const Site site : View().subspan(static_cast<std::size_t>(from), count))
            text_ += std::to_string(site.X) + '\t' + std::to_string(site.Y) + '\n';
    }));
    return made ? text_.c_str() : "";
}

void Path::Transfer(Archive& Block)
{
    Block.Header(format);
    bool closed = Closed;
    int length = Length;
    Block(closed);
    Block.Count(length, siteBytes + reservedBytes);
    if (!Block.Good()) return;
    std::vector<Site> read;
    if (Block.Reading()) read.resize(static_cast<std::size_t>(length));
    for (Site& site : Block.Reading() ? std::span<Site>(read) : std::span<Site>(Sites(), View().size()))
        Block(site.X, site.Y);
    std::int32_t reserved = 0;
    for (int i = 0; i < length && Block.Good(); i++)
        Block(reserved);
    if (Block.Reading() && Block.Good()) Take(std::move(read), closed, 0, 0);
}

void Path::Read(const char* PathName)
{
    ReadModel("Tesk::Path::Read", PathName, *this);
}

void Path::Read(const wchar_t* PathName)
{
    ReadModel("Tesk::Path::Read", PathName, *this);
}

void Path::Write(const char* PathName) const
{
    WriteModel("Tesk::Path::Write", PathName, *this);
}

void Path::Write(const wchar_t* PathName) const
{
    WriteModel("Tesk::Path::Write", PathName, *this);
}

} // namespace Tesk
