// Fields in files and in memory, and the frame of reading and writing a model.
#include "foundation/Archive.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <new>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace Tesk {

namespace {

constexpr std::size_t magicSize = 4;

int RefuseOpen(const std::wstring& name, int error)
{
    return Status::Format(CannotOpen, L"Cannot open file \"%ls\" (%ls)", name.c_str(),
                          Widen(std::strerror(error)).c_str());
}

/// What a body does not catch itself: a file that asks for more memory than there is.
void Run(const std::function<void(Archive&)>& body, Archive& archive)
{
    try {
        body(archive);
    } catch (const std::bad_alloc&) {
        archive.Refuse(CannotAllocate, L"Cannot allocate memory for file \"%ls\"", archive.Name());
    } catch (const std::length_error&) {
        archive.Refuse(CannotAllocate, L"Cannot allocate memory for file \"%ls\"", archive.Name());
    }
}

} // namespace

PathNames::PathNames(const char* PathName) : Path(PathName ? PathName : ""), Name(WidenPath(PathName)) {}

PathNames::PathNames(const wchar_t* PathName) : Path(Narrow(PathName)), Name(PathName ? PathName : L"") {}

Archive Archive::FromMemory(std::span<const std::uint8_t> Bytes, ShortFile Short)
{
    Archive archive;
    archive.short_ = Short;
    archive.left_ = static_cast<std::int64_t>(Bytes.size());
    archive.source_ = Bytes.data();
    return archive;
}

Archive Archive::IntoMemory(std::vector<std::uint8_t>& Bytes)
{
    Archive archive;
    archive.reading_ = false;
    archive.sink_ = &Bytes;
    return archive;
}

Archive Archive::Reader(const PathNames& Names, ShortFile Short)
{
    Archive archive;
    archive.short_ = Short;
    archive.name_ = Names.Name;
    archive.file_.reset(std::fopen(Names.Path.c_str(), "rb"));
    int error = errno;
    struct stat about = {};
    if (archive.file_ && fstat(fileno(archive.file_.get()), &about) == 0) {
        archive.left_ = about.st_size;
        if (!S_ISDIR(about.st_mode)) return archive;
        error = EISDIR;
    }
    archive.code_ = RefuseOpen(Names.Name, error);
    return archive;
}

Archive Archive::Writer(const PathNames& Names)
{
    Archive archive;
    archive.reading_ = false;
    archive.name_ = Names.Name;
    const int descriptor = ::open(Names.Path.c_str(), O_WRONLY | O_CREAT, 0666);
    if (descriptor >= 0) archive.file_.reset(::fdopen(descriptor, "wb"));
    if (!archive.file_) archive.code_ = RefuseOpen(Names.Name, errno);
    return archive;
}

void Archive::Bytes(void* Data, std::size_t Count)
{
    if (!Good() || ended_ || Count == 0) return;
    if (!reading_) {
        const auto* bytes = static_cast<const std::uint8_t*>(Data);
        if (sink_)
            sink_->insert(sink_->end(), bytes, bytes + Count);
        else if (std::fwrite(bytes, 1, Count, file_.get()) != Count)
            Refuse(CannotWrite);
        return;
    }
    if (Count > static_cast<std::uint64_t>(left_)) {
        if (short_ == ShortFile::KeepsFields)
            ended_ = true;
        else
            Refuse(CannotRead);
        return;
    }
    if (source_) {
        std::memcpy(Data, source_, Count);
        source_ += Count;
    } else if (std::fread(Data, 1, Count, file_.get()) != Count) {
        Refuse(CannotRead);
    }
    left_ -= static_cast<std::int64_t>(Count);
}

int Archive::Header(const ArchiveFormat& Format)
{
    std::array<char, magicSize> magic{};
    std::memcpy(magic.data(), Format.Magic, magicSize);
    std::int32_t version = Format.Version;
    if (reading_ && Good() && left_ == 0 && short_ != ShortFile::Refused) ended_ = true;
    if (reading_ && Good() && left_ > 0 && left_ < static_cast<std::int64_t>(magicSize))
        magic.fill(0); // what is too short to hold a magic is a file of another kind
    else
        Bytes(magic.data(), magicSize);
    if (reading_ && Good() && std::memcmp(magic.data(), Format.Magic, magicSize) != 0)
        Refuse(Format.WrongMagicCode, Format.WrongMagic ? Format.WrongMagic : L"", Name());
    (*this)(version);
    if (version > Format.Version) Refuse(Format.VersionCode, Format.TooHigh ? Format.TooHigh : L"", version);
    if (version < Format.Oldest) Refuse(Format.VersionCode, Format.TooOld ? Format.TooOld : L"", version);
    return version;
}

void Archive::Count(int& Count, std::int64_t ElementBytes)
{
    std::int32_t count = Count;
    Value(count);
    if (!reading_ || !Good() || ended_) return;
    if (count < 0 || (count > 0 && std::max<std::int64_t>(ElementBytes, 1) > left_ / count))
        Refuse(CannotRead);
    else
        Count = count;
}

void Archive::Text(std::wstring& Text)
{
    constexpr std::uint32_t firstSupplementary = 0x10000, highSurrogate = 0xd800, lowSurrogate = 0xdc00;
    std::vector<std::uint16_t> units;
    for (const wchar_t c : Text) {
        const auto code = static_cast<std::uint32_t>(c);
        if (code >= firstSupplementary) {
            units.push_back(static_cast<std::uint16_t>(highSurrogate + ((code - firstSupplementary) >> 10)));
            units.push_back(static_cast<std::uint16_t>(lowSurrogate + ((code - firstSupplementary) & 0x3ff)));
        } else {
            units.push_back(static_cast<std::uint16_t>(code));
        }
    }
    if (!units.empty()) units.push_back(0);
    Array(units);
    if (!reading_ || !Good() || ended_) return;
    Text.clear();
    for (std::size_t i = 0; i < units.size() && units[i] != 0; i++) {
        const bool pair =
            units[i] >> 10 == highSurrogate >> 10 && i + 1 < units.size() && units[i + 1] >> 10 == lowSurrogate >> 10;
        if (pair) {
            Text.push_back(
                static_cast<wchar_t>(firstSupplementary + ((units[i] & 0x3ffu) << 10) + (units[i + 1] & 0x3ffu)));
            i++;
        } else {
            Text.push_back(static_cast<wchar_t>(units[i]));
        }
    }
}

int Archive::Close()
{
    if (!file_) return code_;
    // What the buffer held may fail only here.
    if (std::fclose(file_.release()) != 0 && !reading_) Refuse(CannotWrite);
    return code_;
}

int LoadModel(const PathNames& Names, ShortFile Short, const std::function<void(Archive&)>& Body)
{
    Archive archive = Archive::Reader(Names, Short);
    if (archive.Good()) Run(Body, archive);
    return archive.Close();
}

int SaveModel(const PathNames& Names, const std::function<void(Archive&)>& Body)
{
    Archive archive = Archive::Writer(Names);
    if (archive.Good()) Run(Body, archive);
    return archive.Close();
}

bool ReadModel(const char* Context, const PathNames& Names, ShortFile Short, const std::function<void(Archive&)>& Body)
{
    const Entry entry(Context);
    const int code = LoadModel(Names, Short, Body);
    Status::Error().Code = NoError; // whatever the body called and took care of itself
    return !entry.Refuses(code);
}

bool WriteModel(const char* Context, const PathNames& Names, const std::function<void(Archive&)>& Body)
{
    const Entry entry(Context);
    const int code = SaveModel(Names, Body);
    Status::Error().Code = NoError; // whatever the body called and took care of itself
    return !entry.Refuses(code);
}

} // namespace Tesk
