// The frame of a public method: clear the thread's code, hold the context, refuse.
//
// What other methods of the library need too stands in an inner form, a function that returns an `ErrorCodes` value: it
// formats the message of a failure (`Status::Format`) and neither clears, reports nor reads the thread's record. The
// public method is the shell around it, which reports under its own name: `entry.Refuses(Inner(...))`.
#pragma once

#include "foundation/Status.h"

#include <new>
#include <stdexcept>
#include <type_traits>

namespace Tesk {

/// Runs `work`, which returns nothing or the code of an inner form; `CannotAllocate` with `Message` if its containers do
/// not get their memory. For inner forms.
template <typename F>
[[nodiscard]] int WithMemory(const wchar_t* Message, F work)
{
    try {
        if constexpr (std::is_void_v<std::invoke_result_t<F>>) {
            work();
            return NoError;
        } else {
            return work();
        }
    } catch (const std::bad_alloc&) {
    } catch (const std::length_error&) {
    }
    return Status::Format(CannotAllocate, Message);
}

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
        // The report stands outside of the guard, as the chosen behaviour may throw in its turn.
        return !Refuses(WithMemory(Message, [&] { work(); }));
    }

private:
    const char* context_;
};

} // namespace Tesk
