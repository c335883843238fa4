// The frame of a public method: clear the thread's code, hold the context, refuse.
#pragma once

#include "foundation/Status.h"

#include <new>
#include <stdexcept>

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

    /// Runs `work`, and refuses with `Message` if its containers do not get their memory (`CannotAllocate`). Whether it
    /// ran to its end.
    template <typename F>
    bool Guards(const wchar_t* Message, F work) const
    {
        try {
            work();
            return true;
        } catch (const std::bad_alloc&) {
        } catch (const std::length_error&) {
        }
        // Behind the handlers, as the chosen behaviour may throw in its turn.
        Refuse(CannotAllocate, Message);
        return false;
    }

private:
    const char* context_;
};

} // namespace Tesk
