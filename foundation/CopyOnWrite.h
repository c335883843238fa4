// A value that several objects share until one of them writes it: copy-on-write storage.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>

namespace Tesk {

/// Holds a `T` that copies of this holder share. Reading never copies; a holder that writes takes a value of its own
/// first, so that the others keep theirs. What it allocates may throw `std::bad_alloc`, after which all is as before.
///
///     CopyOnWrite<std::vector<Site>> sites;
///     sites.Write().push_back(site);               // moves away from what others share
///     for (const Site& site : sites.Read()) ...
template <typename T>
class CopyOnWrite
{
public:
    /// The value; an empty one if nothing was written yet.
    const T& Read() const noexcept
    {
        static const T none{};
        return value_ ? *value_ : none;
    }

    /// The value for writing, shared with nobody any more.
    T& Write()
    {
        if (!value_)
            value_ = std::make_shared<T>();
        else if (IsShared())
            value_ = std::make_shared<T>(*value_);
        return *value_;
    }

    /// For a writer that needs nothing of what stands here: a value shared with nobody, which is the former one, as it
    /// is, if nobody else holds it, and an empty one otherwise.
    T& Overwrite()
    {
        if (!value_ || IsShared()) value_ = std::make_shared<T>();
        return *value_;
    }

    /// Takes another value; those who share the former one keep it.
    void Replace(T value) { value_ = std::make_shared<T>(std::move(value)); }

    /// The value as it is, null before the first write: what is written through it all see who share it.
    T* Get() const noexcept { return value_.get(); }

    /// Lets go of the value.
    void Reset() noexcept { value_.reset(); }

    bool IsShared() const noexcept { return value_.use_count() > 1; }
    bool SharesWith(const CopyOnWrite& other) const noexcept { return value_ && value_ == other.value_; }

private:
    std::shared_ptr<T> value_;
};

/// Bytes that several objects share in the same way, for stores of pixels and samples: what they hold at first is not
/// set, and a lack of memory is told by the result.
///
///     SharedBytes bytes;
///     if (bytes.Size() < needed || bytes.IsShared())
///         if (!bytes.Allocate(needed)) return false; // those who share the former bytes keep them
///     std::memcpy(bytes.Data(), source, needed);
class SharedBytes
{
public:
    SharedBytes() = default;
    SharedBytes(const SharedBytes&) = default;
    SharedBytes& operator=(const SharedBytes&) = default;
    SharedBytes(SharedBytes&& other) noexcept : bytes_(std::move(other.bytes_)), size_(std::exchange(other.size_, 0)) {}
    SharedBytes& operator=(SharedBytes&& other) noexcept
    {
        bytes_ = std::move(other.bytes_);
        size_ = std::exchange(other.size_, 0);
        return *this;
    }
    ~SharedBytes() = default;

    /// Takes new bytes; false, and all as before, without memory. `before` and `behind` more are allocated around them.
    [[nodiscard]] bool Allocate(std::size_t size, std::size_t before = 0, std::size_t behind = 0) noexcept
    {
        auto* block = static_cast<std::uint8_t*>(::operator new(before + size + behind, std::nothrow));
        if (!block) return false;
        try {
            bytes_ = {block + before, [block](std::uint8_t*) { ::operator delete(block); }};
        } catch (const std::bad_alloc&) {
            return false; // no room for the count of its holders: the block is gone again
        }
        size_ = size;
        return true;
    }

    /// Lets go of the bytes.
    void Reset() noexcept
    {
        bytes_.reset();
        size_ = 0;
    }

    /// The bytes; null while there are none.
    std::uint8_t* Data() const noexcept { return bytes_.get(); }
    std::size_t Size() const noexcept { return size_; }

    bool IsShared() const noexcept { return bytes_.use_count() > 1; }
    /// Whether there are bytes, and nobody else holds them.
    bool IsSole() const noexcept { return bytes_.use_count() == 1; }
    bool SharesWith(const SharedBytes& other) const noexcept { return bytes_ && bytes_ == other.bytes_; }

private:
    std::shared_ptr<std::uint8_t> bytes_;
    std::size_t size_ = 0;
};

} // namespace Tesk
