// How the library reports failure, lets its caller choose what a failure does, measures time, and knows the vector
// instructions in force.
#pragma once

#include "foundation/Enumerations.h"

#include <cstdarg>
#include <cstddef>
#include <string>

namespace Tesk {

/// The record of one thread's latest failure, and the services that are process-wide.
///
/// Every public method of the library clears the calling thread's `Code` on entry, validates, and on a refusal stores
/// a message, a context and a code here and runs the chosen behaviour. An object of this type is what `ThrowIt` throws.
///
///     Status::ErrorBehavior(IgnoreIt); // or ThrowIt, ShowIt, PrintIt
///     image.Read("part.png");
///     if (Status::Error().Code != NoError)
///         std::fprintf(stderr, "%s: %s\n", Status::AsciiFunction(), Status::AsciiError());
class Status
{
public:
    /// The `ErrorCodes` value of the latest failure of this thread; 0 for none.
    int Code = NoError;

    /// The calling thread's record.
    static Status& Error() noexcept;

    /// The message of the calling thread's latest failure, at most 255 characters.
    static const wchar_t* UnicodeError();
    /// The message narrowed by taking the low byte of each character.
    static const char* AsciiError();
    /// The qualified name of the public method that failed.
    static const char* AsciiFunction();
    static const wchar_t* UnicodeFunction();

    /// Completes a failure whose message is stored: keeps `Code` and, unless null, `Context`, and runs the behaviour.
    /// Code 0 does nothing and returns false; otherwise the result is true.
    static bool Raise(int Code, const char* Context);

    /// Selects what a failure does, a `PredefinedBehaviors` value; `ShowIt` at start. Process-wide.
    /// Refused with `OutOfRange` outside the enumeration.
    static void ErrorBehavior(int Behavior);

    /// A thread's first call into the library; creates its record.
    static void AttachThread();

    /// Starts a stopwatch, `Clock` 0 to 9; without `Keep` its accumulated time becomes 0.
    static void StartWatch(int Clock, bool Keep);
    /// The accumulated microseconds; with `Update` the time since the start is added first. 0 for a bad clock.
    static int ReadWatch(int Clock, bool Update);
    /// Sets a deadline that many microseconds from now on the clock.
    static void Timeout(int Clock, int Microseconds);
    /// Whether the clock's deadline has come.
    static bool Expired(int Clock);

    /// The SIMD level in force: what was detected (128-bit levels at most), or what was chosen.
    static SIMDLevels SIMDLevel() noexcept;
    /// Raises or lowers the level in force. A level that this processor lacks is lowered to one that it has.
    static void SIMDLevel(SIMDLevels Level);
    /// The best level that this processor has, which `SIMDLevel` does not choose by itself. A program that wants the
    /// library at its fastest begins with
    ///
    ///     Status::SIMDLevel(Status::BestSIMDLevel());
    static SIMDLevels BestSIMDLevel() noexcept;
    /// The short name of a level for display: "Scalar", "SSE4", "AVX2".
    static const wchar_t* SIMDLevelName(SIMDLevels Level);

    /// Formats a message (printf-style, wide, cut at 255 characters) into the calling thread's record and returns
    /// `Code`, for a check to hand to `Raise`.
    static int Format(int Code, const wchar_t* Message, ...);

    /// Whether containers share storage copy-on-write: a destination is detached before it is written.
    static bool Shallow;

    static const char AsciiVersion[];
    static const wchar_t UnicodeVersion[];

    /// The message and the context of a thrown record.
    const wchar_t* Message() const { return message_; }
    const char* Function() const { return function_; }

private:
    static constexpr int textSize = 256;

    char narrowMessage_[textSize] = {};
    wchar_t message_[textSize] = {};
    char function_[textSize] = {};
    wchar_t wideFunction_[textSize] = {};
};

/// Formats wide text (printf-style) with a decimal point, whatever the locale: a program that sets one for its
/// interface must not change what messages and exported programs say. "%s" and "%hs" take UTF-8. The length, or below 0
/// if the text does not fit and is cut.
int FormatText(wchar_t* Text, std::size_t Size, const wchar_t* Format, ...);
int FormatArguments(wchar_t* Text, std::size_t Size, const wchar_t* Format, va_list Arguments);
std::wstring FormattedText(const wchar_t* Format, va_list Arguments);
/// Narrow text widened without regard to the locale: decoded where it is UTF-8, else byte by byte, so that any path can
/// stand in a message.
std::wstring Widen(const char* Text);
inline std::wstring WidenPath(const char* Path)
{
    return Widen(Path);
}
/// Wide text narrowed for the file system (UTF-8 where a character is above 127; U+FFFD for what is no character).
std::string Narrow(const wchar_t* Text);

} // namespace Tesk
