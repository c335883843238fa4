// A public array that its owner fills and all others read.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace Tesk {

template <typename T, typename Owner>
class ReadOnlyArray
{
public:
    const T& operator[](std::size_t Index) const { return values_[Index]; }
    const T* begin() const { return values_.data(); }
    const T* end() const { return values_.data() + values_.size(); }
    const T* data() const { return values_.data(); }
    std::size_t size() const { return values_.size(); }
    bool empty() const { return values_.empty(); }
    operator std::span<const T>() const { return values_; }

private:
    friend Owner;

    std::vector<T> values_;
};

} // namespace Tesk
