// A value that several objects share until one of them writes it: copy-on-write storage.
#pragma once

#include <memory>
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

    /// Lets go of the value.
    void Reset() noexcept { value_.reset(); }

    bool IsShared() const noexcept { return value_.use_count() > 1; }
    bool SharesWith(const CopyOnWrite& other) const noexcept { return value_ && value_ == other.value_; }

private:
    std::shared_ptr<T> value_;
};

} // namespace Tesk
