// The first refusal by an object while the controls' values are taken: the run that follows clears the library's own
// record before anyone could show it. The user interface's thread alone uses it.
#pragma once

#include "foundation/Status.h"

#include <string>
#include <utility>

namespace TeskPlus {

class Refusal
{
public:
    /// Remembers what the library has just refused, if it did, and nothing is remembered yet.
    static void Note()
    {
        if (Tesk::Status::Error().Code != Tesk::NoError && text_.empty()) text_ = Tesk::Status::UnicodeError();
    }
    /// The text, once; empty if nothing was refused.
    static std::wstring Take() { return std::exchange(text_, {}); }

private:
    inline static std::wstring text_;
};

} // namespace TeskPlus
