// A public text that its owner assigns and all others read.
#pragma once

#include <string>
#include <string_view>

namespace Tesk {

/// A copy has characters of its own.
template <typename C, typename Owner>
class ReadOnlyText
{
public:
    operator const C*() const { return text_.c_str(); }

private:
    friend Owner;

    void Assign(std::basic_string_view<C> text) { text_.assign(text); }
    void Clear() { text_.clear(); }
    void Append(C character) { text_ += character; }

    std::basic_string<C> text_;
};

} // namespace Tesk
