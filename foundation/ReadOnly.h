// A public field that its owner assigns and all others read.
#pragma once

namespace Tesk {

template <typename T, typename Owner>
class ReadOnly
{
public:
    constexpr ReadOnly() = default;
    constexpr ReadOnly(T Value) : value_(Value) {}
    ReadOnly(const ReadOnly&) = default;

    constexpr operator T() const { return value_; }
    constexpr T operator->() const { return value_; }

private:
    friend Owner;

    ReadOnly& operator=(const ReadOnly&) = default;
    ReadOnly& operator=(T Value)
    {
        value_ = Value;
        return *this;
    }
    ReadOnly& operator+=(T Value)
    {
        value_ += Value;
        return *this;
    }

    T value_{};
};

} // namespace Tesk
