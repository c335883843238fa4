#include "foundation/Entry.h"
#include "foundation/Services.h"

#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <iterator>
#include <limits>
#include <new>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace Tesk;

namespace {

class StatusTest : public ::testing::Test
{
protected:
    void SetUp() override { Status::ErrorBehavior(IgnoreIt); }
    void TearDown() override { Status::ErrorBehavior(IgnoreIt); }
};

} // namespace

TEST_F(StatusTest, AFailureKeepsCodeMessageAndContextUntilTheNextEntry)
{
    const Entry entry("Tesk::Test::Method");
    EXPECT_TRUE(entry.Refuse(OutOfRange, L"Value %d of %ls", 5, L"Gray"));
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_STREQ(Status::UnicodeError(), L"Value 5 of Gray");
    EXPECT_STREQ(Status::AsciiError(), "Value 5 of Gray");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Test::Method");
    EXPECT_STREQ(Status::UnicodeFunction(), L"Tesk::Test::Method");
    EXPECT_FALSE(Status::Raise(NoError, "Tesk::Other"));
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Test::Method");
    EXPECT_TRUE(Status::Raise(CannotRead, nullptr));
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Test::Method");
    const Entry next("Tesk::Test::Next");
    EXPECT_EQ(Status::Error().Code, NoError);
}

TEST_F(StatusTest, LackOfMemoryIsRefusedAsAsked)
{
    const Entry entry("Tesk::Test::Method");
    bool ran = false;
    EXPECT_TRUE(entry.Guards(L"No room", [&] { ran = true; }));
    EXPECT_TRUE(ran);
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_FALSE(entry.Guards(L"No room", [] { throw std::bad_alloc(); }));
    EXPECT_EQ(Status::Error().Code, CannotAllocate);
    EXPECT_STREQ(Status::UnicodeError(), L"No room");
    Status::Error().Code = NoError;
    std::vector<int> endless;
    EXPECT_FALSE(entry.Guards(L"Beyond any", [&] { endless.resize(endless.max_size() + 1); }));
    EXPECT_STREQ(Status::UnicodeError(), L"Beyond any");
    Status::ErrorBehavior(ThrowIt);
    EXPECT_THROW(entry.Guards(L"No room", [] { throw std::bad_alloc(); }), Status);
    // A refusal inside is not taken for a lack of memory.
    Status::ErrorBehavior(IgnoreIt);
    EXPECT_TRUE(entry.Guards(L"No room", [&] { entry.Refuse(OutOfRange, L"Inside"); }));
    EXPECT_STREQ(Status::UnicodeError(), L"Inside");
}

TEST_F(StatusTest, LongMessagesAreCutAt255Characters)
{
    const std::wstring path(100000, L'p');
    Status::Raise(Status::Format(CannotOpen, L"Cannot open file \"%ls\"", path.c_str()), "Tesk::Test");
    EXPECT_EQ(std::wstring(Status::UnicodeError()).size(), 255u);
    EXPECT_EQ(std::wstring(Status::UnicodeError()).substr(0, 20), L"Cannot open file \"pp");
}

TEST_F(StatusTest, ThrowItThrowsTheRecordAndUnknownBehavioursChangeNothing)
{
    Status::ErrorBehavior(ThrowIt);
    EXPECT_THROW(Status::ErrorBehavior(5), Status);
    try {
        Status::Raise(Status::Format(VoidObject, L"Void"), "Tesk::Thrower");
        FAIL();
    } catch (const Status& thrown) {
        EXPECT_EQ(thrown.Code, VoidObject);
        EXPECT_STREQ(thrown.Message(), L"Void");
        EXPECT_STREQ(thrown.Function(), "Tesk::Thrower");
    }
    Status::ErrorBehavior(IgnoreIt);
    Status::ErrorBehavior(-1);
    EXPECT_STREQ(Status::UnicodeError(), L"The Callback argument value (-1) is not in the enum range");
    EXPECT_EQ(Status::Error().Code, OutOfRange);
}

TEST_F(StatusTest, ThreadsHaveTheirOwnRecords)
{
    Status::Raise(Status::Format(VoidObject, L"Here"), "Tesk::Here");
    int other = -1;
    std::thread([&] {
        Status::AttachThread();
        other = Status::Error().Code;
    }).join();
    EXPECT_EQ(other, NoError);
    EXPECT_EQ(Status::Error().Code, VoidObject);
}

TEST_F(StatusTest, StopwatchesAccumulateFromOneStartAndRefuseBadClocks)
{
    Status::StartWatch(3, false);
    EXPECT_EQ(Status::ReadWatch(3, false), 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    const int first = Status::ReadWatch(3, true);
    EXPECT_GE(first, 2000);
    // The start does not move, so a second update counts the first part again.
    EXPECT_GE(Status::ReadWatch(3, true), 2 * first);
    Status::StartWatch(10, false);
    EXPECT_STREQ(Status::UnicodeError(), L"Invalid clock index (10), must be in range [0..9]");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Status::StartWatch");
    EXPECT_EQ(Status::ReadWatch(-1, true), 0);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_FALSE(Status::Expired(10));
    Status::Timeout(4, 0);
    EXPECT_TRUE(Status::Expired(4));
    Status::Timeout(4, 10000000);
    EXPECT_FALSE(Status::Expired(4));
}

TEST_F(StatusTest, TheDetectorStopsAt128BitsAndACallRaisesTheLevel)
{
    const SIMDLevels detected = Status::SIMDLevel(), best = Status::BestSIMDLevel();
    EXPECT_EQ(Status::SIMDLevel(), detected) << "asking changes nothing";
    EXPECT_LE(detected, std::min(best, SIMDSSE4));
    Status::SIMDLevel(SIMDAVX512);
    EXPECT_EQ(Status::SIMDLevel(), best);
    Status::SIMDLevel(NoSIMD);
    EXPECT_EQ(Status::SIMDLevel(), NoSIMD);
    Status::SIMDLevel(static_cast<SIMDLevels>(11));
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_EQ(Status::SIMDLevel(), NoSIMD);
    Status::SIMDLevel(SIMDNEONv8);
    EXPECT_EQ(Status::SIMDLevel(), detected) << "another kind of processor";
    for (const SIMDLevels level : {SIMDAVX512, SIMDAVX2, SIMDSSE4, NoSIMD}) {
        Status::SIMDLevel(level);
        EXPECT_LE(Status::SIMDLevel(), level);
        const std::int64_t targets = hwy::SupportedTargets();
        if (level < SIMDAVX512) {
            EXPECT_EQ(targets & (HWY_AVX3 | HWY_AVX3_DL), 0) << level;
        }
        if (level < SIMDAVX2) {
            EXPECT_EQ(targets & HWY_AVX2, 0) << level;
        }
        if (level < SIMDSSE4) {
            EXPECT_EQ(targets & HWY_SSE4, 0) << level;
        } else if (detected == SIMDSSE4) {
            EXPECT_NE(targets & (2 * HWY_SSE4 - 1), 0) << level;
        }
    }
    Status::SIMDLevel(detected);
    EXPECT_STREQ(Status::SIMDLevelName(SIMDAVX2), L"AVX2");
}

TEST_F(StatusTest, AFailureIsShownOrPrintedWhereThatIsAskedFor)
{
    struct Box final : IMessageBox
    {
        void Show(const wchar_t* title, const wchar_t* text) override { shown = std::wstring(title) + L": " + text; }
        std::wstring shown;
    } box;
    Services::Install(&box);
    Status::ErrorBehavior(ShowIt);
    Status::Raise(Status::Format(CannotRead, L"No line %d", 7), "Tesk::Test::Read");
    EXPECT_EQ(box.shown, L"Tesk::Test::Read: No line 7");
    Services::Install(static_cast<IMessageBox*>(nullptr));
    Status::ErrorBehavior(PrintIt);
    ::testing::internal::CaptureStderr();
    Status::Raise(Status::Format(CannotRead, L"No \u00e9 %d", 7), "Tesk::Test::Read");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Error calling Tesk::Test::Read() - No \xc3\xa9 7\n");
}

TEST_F(StatusTest, PathsAreDecodedWhereTheyCanBe)
{
    const struct
    {
        const char* narrow;
        std::wstring wide;
    } cases[] = {{"/a/b.png", L"/a/b.png"},
                 {"\xc3\xa9\xe4\xb8\xad\xf0\x9f\x98\x80", L"\u00e9\u4e2d\U0001f600"},
                 {"caf\xe9.png", L"caf\u00e9.png"}, // Latin, no UTF-8
                 {"\xc0\x80", L"\xc0\x80"},         // longer than need be
                 {"\xed\xa0\x80", L"\xed\xa0\x80"}, // half a pair
                 {"\xc3", L"\xc3"}};                // cut short
    for (const auto& c : cases)
        EXPECT_EQ(WidenPath(c.narrow), c.wide);
    EXPECT_EQ(WidenPath(nullptr), L"");
    const wchar_t broken[] = {L'a', static_cast<wchar_t>(0xd800), static_cast<wchar_t>(0x110000), L'b', 0};
    EXPECT_EQ(Narrow(broken), "a\xef\xbf\xbd\xef\xbf\xbd"
                              "b");
}

TEST_F(StatusTest, AFailureIsPrintedAlsoWhereTheErrorStreamTookWideText)
{
    const auto print = [](PredefinedBehaviors behavior) {
        // A stream of its own has no orientation from what other tests printed.
        stderr = fdopen(STDERR_FILENO, "a");
        if (!stderr || std::fputws(L"wide\n", stderr) < 0) std::_Exit(1);
        Status::ErrorBehavior(behavior);
        Status::Raise(Status::Format(CannotRead, L"No line"), "Tesk::Test::Read");
        std::fputws(L"wide again\n", stderr);
        std::fflush(stderr);
        std::_Exit(0);
    };
    EXPECT_EXIT(print(PrintIt), ::testing::ExitedWithCode(0),
                "wide\nError calling Tesk::Test::Read\\(\\) - No line\nwide again");
    EXPECT_EXIT(print(ShowIt), ::testing::ExitedWithCode(0), "wide\nTesk::Test::Read: No line\nwide again");
}

TEST_F(StatusTest, WhatStandsInTheRecordCanBeHandedInAgain)
{
    Status::Raise(Status::Format(CannotRead, L"No line"), "Tesk::Test::Read");
    Status::Raise(Status::Format(CannotWrite, Status::UnicodeError()), Status::AsciiFunction());
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Test::Read");
    EXPECT_STREQ(Status::UnicodeError(), L"No line");
    Status::Raise(Status::Format(CannotWrite, L"%ls, again", Status::UnicodeError()), Status::AsciiFunction() + 6);
    EXPECT_STREQ(Status::AsciiFunction(), "Test::Read");
    EXPECT_STREQ(Status::UnicodeError(), L"No line, again");
}

TEST_F(StatusTest, NarrowTextInAMessageIsDecoded)
{
    for (const char* path : {"caf\xc3\xa9", "caf\xe9"}) {
        Status::Format(CannotOpen, L"File \"%hs\" (%d)", path, 5);
        EXPECT_STREQ(Status::UnicodeError(), L"File \"caf\u00e9\" (5)");
    }
    Status::Format(CannotOpen, L"[%6.3s|%-6hs|%ls|%.2ls]", "caf\xc3\xa9", "\xc3\xa9", L"\u4e2d", L"\u4e2d\u4e2dx");
    EXPECT_STREQ(Status::UnicodeError(), L"[   caf|\u00e9     |\u4e2d|\u4e2d\u4e2d]");
    const char* none = nullptr;
    Status::Format(CannotOpen, L"%hs%c%lc", none, 'a', static_cast<wint_t>(L'\u4e2d'));
    EXPECT_STREQ(Status::UnicodeError(), L"(null)a\u4e2d");
}

TEST_F(StatusTest, NumbersAreFormattedAsTheStandardLibraryDoes)
{
    wchar_t text[400], expected[400];
    const auto compare = [&](const wchar_t* format, auto... values) {
        const int length = std::swprintf(expected, std::size(expected), format, values...);
        EXPECT_EQ(FormatText(text, std::size(text), format, values...), length) << Narrow(format);
        EXPECT_STREQ(text, expected);
    };
    compare(L"%d%%|%5i|%-5d|%05d|%+d|% d|%.3d", -7, 42, 42, 42, 42, 42, 5);
    compare(L"%u|%x|%#X|%o", 4000000000u, 0xfeu, 0xfeu, 8u);
    compare(L"%ld|%lld|%zu|%hhd|%hd", -5000000000L, INT64_MIN, SIZE_MAX, 300, 70000);
    compare(L"%f|%.2f|%8.3e|%g|%-10.1f|%.*f|%*d", 1.5, -2.345, 12345.678, 1e-5, 3.14, 3, 2.0, -6, 9);
    compare(L"%.3f|%f|%f", 1e300, std::numeric_limits<double>::infinity(), std::nan(""));
    compare(L"%Lf|%p", 2.5L, static_cast<void*>(text));
    EXPECT_LT(FormatText(text, 5, L"%d", 123456), 0);
    EXPECT_STREQ(text, L"1234") << "cut";
}
