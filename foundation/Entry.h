// The frame of a public method: clear the thread's code, hold the context, refuse.
#pragma once

#include "foundation/Status.h"

#include <new>
#include <utility>

namespace Tesk {

/// Stands at the top of every public method. Its construction clears the calling thread's code.
class Entry
{
public:
    explicit Entry(const char* Context) noexcept : context_(Context) { Status::Error().Code = NoError; }

    /// Reports a check's code under this method's name; true if there was a failure.
    bool Refuses(int Code) const { return Status::Raise(Code, context_); }

    /// Formats and reports a failure; always true.
    template <typename... Values>
    bool Refuse(int Code, const wchar_t* Message, Values... values) const
    {
        return Status::Raise(Status::Format(Code, Message, values...), context_);
    }

    const char* Context() const { return context_; }

private:
    const char* context_;
};

} // namespace Tesk
