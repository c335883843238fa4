// Model files: one routine of a class names its fields in order, and an archive reads or writes them.
#pragma once

#include "foundation/Entry.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace Tesk {

/// A path as the file system takes it, and as messages show it.
struct PathNames
{
    std::string Path;
    std::wstring Name;

    PathNames(const char* PathName);
    PathNames(const wchar_t* PathName);
};

/// What a reader makes of a file that ends before its fields do.
enum class ShortFile
{
    Refused,    ///< it is refused with `CannotRead`
    MayBeEmpty, ///< so too, but an empty file leaves the object as it was and is no failure
    KeepsFields ///< no failure: the fields that it does not reach keep their values
};

/// How a model file begins, and what is said of another one. A text of null stores an empty message.
struct ArchiveFormat
{
    const char* Magic;            ///< four characters
    int Version;                  ///< the version written; a file of a higher one is refused
    const wchar_t* WrongMagic;    ///< with "%ls" for the name: L"File \"%ls\" is not a Profile file"
    const wchar_t* TooHigh;       ///< with "%d": L"The version number \"%d\" of this Profile file is too high"
    int Oldest = -0x7fffffff - 1; ///< a file of a lower version is refused
    const wchar_t* TooOld = L"";  ///< with "%d"
    int WrongMagicCode = UnsupportedFormat, VersionCode = OutOfRange;
};

/// Reads or writes fields, little-endian and unaligned, from or to a file or a block of memory.
///
/// After a failure nothing is transferred any more and values keep what they have, so that a routine tests `Good` only
/// where it would act on what it read. A count that promises more than the bytes that are left is a failure
/// (`CannotRead`) before any memory is asked for.
class Archive
{
public:
    /// Reads from a block of memory, which must outlive the archive.
    static Archive FromMemory(std::span<const std::uint8_t> Bytes, ShortFile Short = ShortFile::Refused);
    /// Writes into a block of memory, at its end.
    static Archive IntoMemory(std::vector<std::uint8_t>& Bytes);
    /// Reads from or writes to a file; without it being open, `Code` is `CannotOpen`. A writer creates the file and
    /// does not cut a longer one.
    static Archive Reader(const PathNames& Names, ShortFile Short = ShortFile::Refused);
    static Archive Writer(const PathNames& Names);

    bool Reading() const { return reading_; }
    bool Good() const { return code_ == NoError; }
    /// The code of the first failure, whose message is stored.
    int Code() const { return code_; }
    /// Whether a file that may be short has ended.
    bool Ended() const { return ended_; }
    std::int64_t BytesLeft() const { return left_; }
    const wchar_t* Name() const { return name_.c_str(); }

    /// Magic and version. The result is the version of what follows.
    int Header(const ArchiveFormat& Format);

    /// Transfers values in the width of their type: an enumeration in 4 bytes, `bool` in one.
    template <typename... Values>
    void operator()(Values&... values)
    {
        (Value(values), ...);
    }

    /// Transfers a value that is stored in another width than it has in memory.
    template <typename Stored, typename T>
    void As(T& value)
    {
        auto stored = static_cast<Stored>(value);
        Value(stored);
        if (reading_ && Good()) value = static_cast<T>(stored);
    }

    /// A 4-byte count of elements of that many bytes each at the least.
    void Count(int& Count, std::int64_t ElementBytes);

    /// Values that stand one after the other, without a count.
    template <typename T>
    void Elements(T* values, std::size_t count)
    {
        if constexpr (std::endian::native == std::endian::little && std::is_arithmetic_v<T> && !std::is_same_v<T, bool>)
            Bytes(values, count * sizeof(T));
        else
            for (std::size_t i = 0; i < count && Good(); i++)
                Value(values[i]);
    }

    /// A count and its elements, each transferred by `element(archive, value)`, of `ElementBytes` at the least.
    template <typename T, typename Element>
    void Array(std::vector<T>& values, std::int64_t ElementBytes, Element element)
    {
        if (!Size(values, ElementBytes)) return;
        for (T& value : values)
            element(*this, value);
    }
    template <typename T>
    requires std::is_arithmetic_v<T>
    void Array(std::vector<T>& values)
    {
        if (Size(values, sizeof(T))) Elements(values.data(), values.size());
    }

    /// A text: the count of its UTF-16 units with the terminating zero, or 0 for an empty text; the units.
    void Text(std::wstring& Text);

    /// Bytes as they stand. A part that is not there stays as it was.
    void Bytes(void* Data, std::size_t Count);

    /// A failure found by the caller; the first one stands.
    template <typename... Values>
    void Refuse(int Code, const wchar_t* Message = L"", Values... values)
    {
        if (Good()) code_ = Status::Format(Code, Message, values...);
    }

    /// Closes a file, at which a write may still fail. The result is `Code`.
    int Close();

private:
    struct Closer
    {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    Archive() = default;

    template <typename T>
    void Value(T& value)
    {
        static_assert(std::is_arithmetic_v<T> || std::is_enum_v<T>, "a record is transferred field by field");
        if constexpr (std::is_same_v<T, bool>) {
            std::uint8_t byte = value ? 1 : 0;
            Scalar(byte);
            if (reading_) value = byte != 0;
        } else if constexpr (std::is_enum_v<T>) {
            auto number = static_cast<std::int32_t>(value);
            Scalar(number);
            if (reading_) value = static_cast<T>(number);
        } else {
            Scalar(value);
        }
    }

    template <typename T>
    void Scalar(T& value)
    {
        std::uint8_t bytes[sizeof(T)];
        std::memcpy(bytes, &value, sizeof(T));
        if constexpr (std::endian::native == std::endian::big) std::reverse(bytes, bytes + sizeof(T));
        Bytes(bytes, sizeof(T));
        if (!reading_) return;
        if constexpr (std::endian::native == std::endian::big) std::reverse(bytes, bytes + sizeof(T));
        std::memcpy(&value, bytes, sizeof(T));
    }

    template <typename T>
    bool Size(std::vector<T>& values, std::int64_t elementBytes)
    {
        int count = static_cast<int>(values.size());
        Count(count, elementBytes);
        if (reading_ && Good()) values.resize(static_cast<std::size_t>(count));
        return Good();
    }

    bool reading_ = true, ended_ = false;
    ShortFile short_ = ShortFile::Refused;
    int code_ = NoError;
    std::int64_t left_ = 0;
    std::wstring name_;
    std::unique_ptr<std::FILE, Closer> file_;
    const std::uint8_t* source_ = nullptr;
    std::vector<std::uint8_t>* sink_ = nullptr;
};

/// Runs `Body` on a file. The code of its first failure, whose message is stored: for methods that report under a name
/// of their own.
[[nodiscard]] int LoadModel(const PathNames& Names, ShortFile Short, const std::function<void(Archive&)>& Body);
[[nodiscard]] int SaveModel(const PathNames& Names, const std::function<void(Archive&)>& Body);

/// Runs `Body` on a file and reports its failures under `Context`; false after one.
bool ReadModel(const char* Context, const PathNames& Names, ShortFile Short, const std::function<void(Archive&)>& Body);
bool WriteModel(const char* Context, const PathNames& Names, const std::function<void(Archive&)>& Body);

/// Reads an object that has a routine `Transfer(Archive&)`. It changes only if all of it could be read.
///
///     void Profile::Read(const char* PathName) { ReadModel("Tesk::Profile::Read", PathName, *this); }
template <typename Object>
bool ReadModel(const char* Context, const PathNames& Names, Object& object, ShortFile Short = ShortFile::Refused)
{
    return ReadModel(Context, Names, Short, [&](Archive& archive) {
        Object read(object);
        read.Transfer(archive);
        if (archive.Good()) object = std::move(read);
    });
}

template <typename Object>
requires(!std::is_invocable_v<const Object&, Archive&>) bool WriteModel(const char* Context, const PathNames& Names,
                                                                        const Object& object)
{
    // A writing archive only looks at what it is given; the routine is not const since a reading one fills it.
    return WriteModel(Context, Names, [&](Archive& archive) { const_cast<Object&>(object).Transfer(archive); });
}

} // namespace Tesk
