#include "foundation/Status.h"

#include "foundation/Services.h"

#include <hwy/targets.h>
#include <locale.h>

#include <array>
#include <cassert>
#include <chrono>
#include <cpuid.h>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <new>
#include <vector>

namespace Tesk {

bool Status::Shallow = false;
const char Status::AsciiVersion[] = "6.1.1";
const wchar_t Status::UnicodeVersion[] = L"6.1.1";

namespace {

constexpr int numClocks = 10;

/// A stopwatch; as a timer, `start` holds the deadline.
struct Stopwatch
{
    std::int64_t start = 0;
    std::int32_t accumulated = 0;
};

std::array<Stopwatch, numClocks> clocks;

using Ticks = std::chrono::steady_clock;
constexpr std::int64_t frequency = Ticks::period::den / Ticks::period::num;

std::int64_t Now()
{
    return Ticks::now().time_since_epoch().count();
}

SIMDLevels DetectLevel()
{
    unsigned int eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0) return NoSIMD;
    if (ecx & (1u << 19)) return SIMDSSE4;
    if (ecx & 1u) return SIMDSSE3;
    if (edx & (1u << 26)) return SIMDSSE2;
    if (edx & (1u << 25)) return SIMDSSE;
    if (edx & (1u << 23)) return SIMDMMX;
    return NoSIMD;
}

/// The one place where a level is turned into the targets that the row kernels are dispatched to.
SIMDLevels ApplyLevel(SIMDLevels level)
{
    // The better a target, the lower its bit: what lies below one is all that is better, whatever its name.
    std::int64_t disabled = 0;
    if (level < SIMDAVX512) disabled |= HWY_AVX2 - 1;
    if (level < SIMDAVX2) disabled |= HWY_SSE4 - 1;
    if (level < SIMDSSE4) disabled |= HWY_SSE4;
    hwy::DisableTargets(disabled);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    return level;
}

SIMDLevels& LevelInForce()
{
    static SIMDLevels level = ApplyLevel(DetectLevel());
    return level;
}

void Ignore(const Status&) {}

void Throw(const Status& Record)
{
    throw Status(Record);
}

void Show(const Status&)
{
    Services::MessageBox().Show(Status::UnicodeFunction(), Status::UnicodeError());
}

void Print(const Status& Record)
{
    // The stream may be narrow-oriented already, so the line is converted here rather than by a wide print.
    std::fprintf(stderr, "Error calling %s() - %s\n", Record.Function(), Narrow(Record.Message()).c_str());
}

void Assert(const Status&)
{
    assert(!"an operation of the library has failed");
}

using BehaviorFunction = void (*)(const Status&);
constexpr std::array<BehaviorFunction, 5> behaviors = {Ignore, Throw, Show, Print, Assert};
BehaviorFunction behavior = Show;

bool RefusesClock(int Clock, const char* Context)
{
    // A good clock leaves the code alone: the engine reads a watch between a call and the look at its code.
    if (static_cast<unsigned>(Clock) < numClocks) return false;
    return Status::Raise(
        Status::Format(OutOfRange, L"Invalid clock index (%d), must be in range [0..%d]", Clock, numClocks - 1),
        Context);
}

} // namespace

Status& Status::Error() noexcept
{
    thread_local Status record;
    return record;
}

void Status::AttachThread()
{
    Error().Code = NoError;
}

const wchar_t* Status::UnicodeError()
{
    return Error().message_;
}

const char* Status::AsciiError()
{
    Status& record = Error();
    int i = 0;
    for (; i < textSize - 1 && record.message_[i]; i++)
        record.narrowMessage_[i] = static_cast<char>(record.message_[i] & 0xff);
    record.narrowMessage_[i] = 0;
    return record.narrowMessage_;
}

const char* Status::AsciiFunction()
{
    return Error().function_;
}

const wchar_t* Status::UnicodeFunction()
{
    Status& record = Error();
    int i = 0;
    for (; i < textSize - 1 && record.function_[i]; i++)
        record.wideFunction_[i] = static_cast<unsigned char>(record.function_[i]);
    record.wideFunction_[i] = 0;
    return record.wideFunction_;
}

int Status::Format(int Code, const wchar_t* Message, ...)
{
    // An overflow is reported without a promise of what was written, so a message that the stack cannot take is made in
    // a larger buffer first, and then cut.
    const auto keep = [&](const wchar_t* text) {
        Status& record = Error();
        std::wcsncpy(record.message_, text, textSize - 1);
        record.message_[textSize - 1] = 0;
        return Code;
    };
    const auto make = [&](wchar_t* text, std::size_t size, va_list arguments) {
        const bool made = FormatArguments(text, size, Message, arguments) >= 0;
        if (made) keep(text);
        return made;
    };
    constexpr std::size_t usual = 1024, longest = 1u << 20;
    wchar_t text[usual];
    va_list arguments;
    va_start(arguments, Message);
    bool made = make(text, usual, arguments);
    va_end(arguments);
    try {
        for (std::size_t size = 4 * usual; !made && size <= longest; size *= 4) {
            std::vector<wchar_t> large(size);
            va_start(arguments, Message);
            made = make(large.data(), size, arguments);
            va_end(arguments);
        }
    } catch (const std::bad_alloc&) {
        // The format itself is all that can be told.
    }
    return made ? Code : keep(Message);
}

bool Status::Raise(int Code, const char* Context)
{
    if (Code == NoError) return false;
    Status& record = Error();
    if (Context) {
        std::strncpy(record.function_, Context, textSize - 1);
        record.function_[textSize - 1] = 0;
    }
    record.Code = Code;
    behavior(record);
    return true;
}

void Status::ErrorBehavior(int Behavior)
{
    Error().Code = NoError;
    if (Behavior < 0 || Behavior >= static_cast<int>(behaviors.size())) {
        Raise(Format(OutOfRange, L"The Callback argument value (%d) is not in the enum range", Behavior),
              "Tesk::Status::ErrorBehavior");
        return;
    }
    behavior = behaviors[static_cast<std::size_t>(Behavior)];
}

void Status::StartWatch(int Clock, bool Keep)
{
    if (RefusesClock(Clock, "Tesk::Status::StartWatch")) return;
    Stopwatch& watch = clocks[static_cast<std::size_t>(Clock)];
    if (!Keep) watch.accumulated = 0;
    watch.start = Now();
}

int Status::ReadWatch(int Clock, bool Update)
{
    if (RefusesClock(Clock, "Tesk::Status::ReadWatch")) return 0;
    Stopwatch& watch = clocks[static_cast<std::size_t>(Clock)];
    if (Update) {
        const double microseconds = static_cast<double>(Now() - watch.start) / static_cast<double>(frequency) * 1e6;
        // 32 bits of microseconds wrap after 35 minutes, as an unsigned addition so that it stays defined.
        watch.accumulated =
            static_cast<std::int32_t>(static_cast<std::uint32_t>(watch.accumulated) +
                                      static_cast<std::uint32_t>(static_cast<std::int64_t>(microseconds)));
    }
    return watch.accumulated;
}

void Status::Timeout(int Clock, int Microseconds)
{
    if (RefusesClock(Clock, "Tesk::Status::Timeout")) return;
    clocks[static_cast<std::size_t>(Clock)].start = Now() + std::int64_t{Microseconds} * frequency / 1000000;
}

bool Status::Expired(int Clock)
{
    if (RefusesClock(Clock, "Tesk::Status::Expired")) return false;
    return Now() >= clocks[static_cast<std::size_t>(Clock)].start;
}

SIMDLevels Status::SIMDLevel() noexcept
{
    return LevelInForce();
}

void Status::SIMDLevel(SIMDLevels Level)
{
    Error().Code = NoError;
    if (Level < NoSIMD || Level > SIMDNEONv8) {
        Raise(Format(OutOfRange, L"The SIMD level (%d) is not in the enum range", static_cast<int>(Level)),
              "Tesk::Status::SIMDLevel");
        return;
    }
    const SIMDLevels best = BestSIMDLevel();
    if (Level > SIMDAVX512) Level = DetectLevel(); // another kind of processor
    if (Level == SIMDAVX512 && best < SIMDAVX512) Level = SIMDAVX2;
    if (Level >= SIMDAVX && best < SIMDAVX2) Level = DetectLevel();
    if (Level <= SIMDSSE4 && Level > DetectLevel()) Level = DetectLevel();
    LevelInForce() = ApplyLevel(Level);
}

SIMDLevels Status::BestSIMDLevel() noexcept
{
    static const SIMDLevels best = [] {
        const SIMDLevels inForce = LevelInForce();
        hwy::DisableTargets(0);
        const std::int64_t targets = hwy::SupportedTargets();
        ApplyLevel(inForce);
        if (targets & (HWY_AVX2 - 1)) return SIMDAVX512;
        return targets & HWY_AVX2 ? SIMDAVX2 : DetectLevel();
    }();
    return best;
}

const wchar_t* Status::SIMDLevelName(SIMDLevels Level)
{
    static constexpr const wchar_t* names[] = {L"Scalar", L"MMX",  L"SSE",    L"SSE2",   L"SSE3",  L"SSE4",
                                               L"AVX",    L"AVX2", L"AVX512", L"NEONv7", L"NEONv8"};
    return Level >= NoSIMD && Level <= SIMDNEONv8 ? names[Level] : L"";
}

int FormatArguments(wchar_t* Text, std::size_t Size, const wchar_t* Format, va_list Arguments)
{
    static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
    const locale_t former = plain ? uselocale(plain) : nullptr;
    const int length = std::vswprintf(Text, Size, Format, Arguments);
    if (plain) uselocale(former);
    return length;
}

int FormatText(wchar_t* Text, std::size_t Size, const wchar_t* Format, ...)
{
    va_list arguments;
    va_start(arguments, Format);
    const int length = FormatArguments(Text, Size, Format, arguments);
    va_end(arguments);
    return length;
}

std::wstring Widen(const char* Text)
{
    std::wstring wide;
    for (const char* c = Text; c && *c; c++)
        wide.push_back(static_cast<unsigned char>(*c));
    return wide;
}

std::wstring WidenPath(const char* Path)
{
    std::wstring wide;
    for (const auto* c = reinterpret_cast<const unsigned char*>(Path); c && *c;) {
        const int more = *c < 0x80 ? 0 : *c < 0xc2 ? -1 : *c < 0xe0 ? 1 : *c < 0xf0 ? 2 : *c < 0xf5 ? 3 : -1;
        if (more < 0) return Widen(Path);
        std::uint32_t code = more == 0 ? *c : *c & (0x3fu >> more);
        c++;
        for (int i = 0; i < more; i++, c++) {
            if ((*c & 0xc0) != 0x80) return Widen(Path);
            code = code << 6 | (*c & 0x3fu);
        }
        constexpr std::uint32_t smallest[] = {0, 0x80, 0x800, 0x10000};
        if (code < smallest[more] || (code >= 0xd800 && code < 0xe000) || code > 0x10ffff) return Widen(Path);
        wide.push_back(static_cast<wchar_t>(code));
    }
    return wide;
}

std::string Narrow(const wchar_t* Text)
{
    std::string narrow;
    for (const wchar_t* c = Text; c && *c; c++) {
        auto code = static_cast<std::uint32_t>(*c);
        // What no encoding may hold is shown as such.
        if ((code >= 0xd800 && code < 0xe000) || code > 0x10ffff) code = 0xfffd;
        if (code < 0x80) {
            narrow.push_back(static_cast<char>(code));
        } else if (code < 0x800) {
            narrow.push_back(static_cast<char>(0xc0 | code >> 6));
            narrow.push_back(static_cast<char>(0x80 | (code & 0x3f)));
        } else if (code < 0x10000) {
            narrow.push_back(static_cast<char>(0xe0 | code >> 12));
            narrow.push_back(static_cast<char>(0x80 | (code >> 6 & 0x3f)));
            narrow.push_back(static_cast<char>(0x80 | (code & 0x3f)));
        } else {
            narrow.push_back(static_cast<char>(0xf0 | (code >> 18 & 0x07)));
            narrow.push_back(static_cast<char>(0x80 | (code >> 12 & 0x3f)));
            narrow.push_back(static_cast<char>(0x80 | (code >> 6 & 0x3f)));
            narrow.push_back(static_cast<char>(0x80 | (code & 0x3f)));
        }
    }
    return narrow;
}

} // namespace Tesk
