// The record of failures and what they do, the stopwatches, and the level of vector instructions.
#include "foundation/Status.h"

#include "foundation/Services.h"
#include "foundation/text/ErrorStream.h"

#include <hwy/targets.h>

#include <array>
#include <cassert>
#include <chrono>
#include <cpuid.h>
#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <exception>
#include <string>

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
    ToErrorStream("Error calling " + std::string(Record.Function()) + "() - " + Narrow(Record.Message()) + '\n');
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
    Status& record = Error();
    va_list arguments;
    va_start(arguments, Message);
    try {
        const std::wstring text = FormattedText(Message, arguments);
        record.message_[text.copy(record.message_, textSize - 1)] = 0;
    } catch (const std::exception&) {
        // Without memory the format itself is all that can be told. It may be the message that stands.
        const std::size_t length = wcsnlen(Message, textSize - 1);
        std::wmemmove(record.message_, Message, length);
        record.message_[length] = 0;
    }
    va_end(arguments);
    return Code;
}

bool Status::Raise(int Code, const char* Context)
{
    if (Code == NoError) return false;
    Status& record = Error();
    if (Context) {
        // The context that stands may be handed in again.
        const std::size_t length = strnlen(Context, textSize - 1);
        std::memmove(record.function_, Context, length);
        record.function_[length] = 0;
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

} // namespace Tesk
