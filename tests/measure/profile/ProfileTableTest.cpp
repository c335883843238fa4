#include "foundation/Graph.h"
#include "foundation/RecordingTarget.h"
#include "foundation/Status.h"
#include "image/Image.h"
#include "image/Operator.h"
#include "measure/Path.h"
#include "measure/Profile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string_view>
#include <unistd.h>
#include <utility>

using namespace Tesk;

namespace {

class ProfileTableTest : public ::testing::Test
{
protected:
    void SetUp() override { Status::ErrorBehavior(IgnoreIt); }
    void TearDown() override
    {
        Operator::GrayDepth = 16;
        Graph::Zoom = 1;
        Graph::DrawTo(nullptr);
        std::filesystem::remove(path_);
    }

    std::string Bytes() const
    {
        std::ifstream file(path_, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void Save(const std::string& bytes) const { std::ofstream(path_, std::ios::binary | std::ios::trunc) << bytes; }

    const std::string path_ = ::testing::TempDir() + "profile_" + std::to_string(getpid()) + ".prf";
};

std::vector<std::string> Drawn(RecordingTarget& target)
{
    std::vector<std::string> drawn;
    for (const auto& call : target.Calls)
        if (call.compare(0, 3, "Set") != 0) drawn.push_back(call);
    target.Calls.clear();
    return drawn;
}

} // namespace

TEST_F(ProfileTableTest, EachDefinerGivesItsValueToEveryIndex)
{
    Operator::GrayDepth = 10;
    struct Case
    {
        const char* what;
        std::function<void(Profile&)> define;
        PixelTypes type;
        std::function<double(int)> value;
    };
    const auto clamped = [](double v, double most) { return v < 0 ? 0 : v > most ? most : std::trunc(v); };
    const Case cases[] = {
        {"gain", [](Profile& p) { p.GainOffset(1.7, -30.5); }, Gray,
         [=](int i) { return clamped(i * 1.7 - 30.5, 255); }},
        {"steep gain", [](Profile& p) { p.GainOffset(100, 1, Gray16); }, Gray16,
         [=](int i) { return clamped(i * 100 + 1, 32767); }},
        {"falling gain of colours", [](Profile& p) { p.GainOffset(-1, 255, Rgb); }, Rgb, [](int i) { return 255 - i; }},
        {"threshold", [](Profile& p) { p.Threshold(100, 3, 200); }, Gray, [](int i) { return i < 100 ? 3 : 200; }},
        {"all ones", [](Profile& p) { p.Threshold(1); }, Gray, [](int i) { return i < 1 ? 0 : -1; }},
        {"two thresholds", [](Profile& p) { p.BiThreshold(10, 5); }, Gray,
         [](int i) { return i < 10   ? 0
                            : i < 15 ? 128
                                     : -1; }},
        {"half the table", [](Profile& p) { p.BiThreshold(MaxInt, 5, 1, MinInt, 3, Gray16); }, Gray16,
         [](int) { return 1; }},
        {"middle of 16 bits", [](Profile& p) { p.BiThreshold(0, MaxInt, 1, MinInt, 3, Gray16); }, Gray16,
         [](int) { return 512; }},
        {"stairs", [](Profile& p) { p.Quantize(100, Gray16); }, Gray16, [](int i) { return i / 100 * 100; }},
        {"logarithm", [](Profile& p) { p.Logarithm(false); }, Gray,
         [](int i) { return i == 0 ? 0 : std::trunc(std::log(i) * 256 / std::log(256.0)); }},
        {"exponential", [](Profile& p) { p.Logarithm(true, Gray16); }, Gray16,
         [](int i) { return i == 0 ? 0 : std::trunc(std::exp(i * std::log(65536.0) / 65536)); }},
        {"gamma", [](Profile& p) { p.Gamma(0.5); }, Gray,
         [](int i) { return i == 0 ? 0 : std::trunc(std::pow(i, 0.5) * std::pow(256.0, 0.5)); }},
    };
    for (const auto& [what, define, type, value] : cases) {
        Profile profile;
        define(profile);
        ASSERT_EQ(Status::Error().Code, NoError) << what << Status::AsciiError();
        ASSERT_EQ(profile.Type, type) << what;
        ASSERT_EQ(profile.Length, type == Gray16 ? 1024 : 256) << what;
        for (int i = 0; i < profile.Length; i++)
            for (int c = 0; c < (type == Rgb ? 3 : 1); c++)
                ASSERT_EQ(profile.Sample(i, c), value(i)) << what << ' ' << i;
    }
}

TEST_F(ProfileTableTest, WithoutATypeTheProfileKeepsItsSize)
{
    Profile profile;
    profile.GainOffset(1, 0, Undefined);
    EXPECT_EQ(Status::Error().Code, VoidObject);
    profile.Gamma(1, Float);
    EXPECT_EQ(Status::Error().Code, UnsupportedType);
    profile.Quantize(0);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_EQ(profile.Length, 0);
    for (int i = 0; i < 300; i++)
        profile.Append(i);
    profile.Window(10, 20);
    profile.GainOffset(2, 0, Undefined);
    EXPECT_EQ(profile.Length, 20);
    EXPECT_EQ(profile.Sample(19), 38);
    profile.Window();
    EXPECT_EQ(profile.Sample(30), 30) << "outside the window nothing is written";
    profile.Gamma(-1e9);
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(profile.Length, 256);

    profile.Set(7, Rgb);
    profile.GainOffset(100, 1, Undefined);
    EXPECT_EQ(profile.Type, Rgb);
    EXPECT_EQ(profile.Length, 7);
    for (int c = 0; c < 3; c++) {
        EXPECT_EQ(profile.Sample(2, c), 201);
        EXPECT_EQ(profile.Sample(3, c), 255) << "held to a byte";
    }
    profile.Set(300, Gray16);
    profile.BiThreshold(0, MaxInt, 1, MinInt, 3, Undefined);
    EXPECT_EQ(profile.Type, Gray16);
    EXPECT_EQ(profile.Sample(299), 150) << "half of the table that there is";
}

TEST_F(ProfileTableTest, DepthsThatNoImageHasCountAsTheNearest)
{
    Profile profile;
    for (const auto& [depth, length] : {std::pair{-3, 512}, {8, 512}, {9, 512}, {16, 65536}, {40, 65536}}) {
        Operator::GrayDepth = depth;
        profile.BiThreshold(0, MaxInt, 1, MinInt, 3, Gray16);
        EXPECT_EQ(profile.Length, length) << depth;
        EXPECT_EQ(profile.Sample(0), length / 2) << depth;
    }
}

TEST_F(ProfileTableTest, PseudoColoursRunFromBlueToRed)
{
    Profile profile, inverse;
    profile.PseudoColor();
    inverse.PseudoColor(true);
    ASSERT_EQ(profile.Type, Rgb);
    ASSERT_EQ(profile.Length, 256);
    const auto color = [](const Profile& p, int i) { return RgbPixel(p.Sample(i, 0), p.Sample(i, 1), p.Sample(i, 2)); };
    EXPECT_EQ(color(profile, 0), RgbPixel(0, 0, 255));
    EXPECT_EQ(color(profile, 255), RgbPixel(255, 0, 0));
    for (int i = 0; i < 256; i++) {
        EXPECT_EQ(color(profile, i), color(inverse, 255 - i));
        if (i % 64 != 0) {
            EXPECT_FALSE(color(profile, i) == color(profile, i - 1)) << i;
        }
    }
}

TEST_F(ProfileTableTest, TextOfTheWindowOrOfOneSample)
{
    Profile gray, color, real;
    gray.ToAsciiString(-1);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_STREQ(Status::UnicodeError(), L"No sample has been appended yet, the profile is empty");
    for (const int v : {7, -8, 9, 10})
        gray.Append(v);
    gray.Window(0, 3);
    EXPECT_STREQ(gray.ToAsciiString(-1), "Gray\n7\n-8\n9\n");
    EXPECT_STREQ(gray.ToAsciiString(1), "Gray\n-8\n");
    EXPECT_STREQ(gray.ToAsciiString(-3), "Gray\n7\n");
    for (const int index : {3, -4}) {
        EXPECT_STREQ(gray.ToAsciiString(index), "");
        EXPECT_EQ(Status::Error().Code, OutOfRange);
    }
    EXPECT_STREQ(Status::UnicodeError(), L"The sample index (-4) must be in range [0..2]");
    color.Append(1, 2, 3);
    EXPECT_STREQ(color.ToAsciiString(0), "Red\tGreen\tBlue\n1\t2\t3\n");
    real.Set(1, Dble);
    *real.Samples<double>() = 2.5;
    EXPECT_STREQ(real.ToAsciiString(-1), "Gray\n2.5\n");
}

TEST_F(ProfileTableTest, FilesHoldTheWholeStore)
{
    Profile gray, back;
    gray.Append(1);
    gray.Append(-2);
    gray.Scale = 7;
    gray.Window(1, 1);
    gray.Write(path_.c_str());
    ASSERT_EQ(Status::Error().Code, NoError) << Status::AsciiError();
    const std::string bytes = Bytes();
    EXPECT_EQ(bytes, std::string("TPRF\1\0\0\0\1\0\0\0\7\0\0\0\2\0\0\0\1\0\0\0\xfe\xff\xff\xff", 28));
    back.Read(Widen(path_.c_str()).c_str());
    ASSERT_EQ(Status::Error().Code, NoError) << Status::AsciiError();
    EXPECT_EQ(back.Length, 2);
    EXPECT_EQ(back.Sample(1), -2);
    EXPECT_EQ(back.Scale, 7);

    Profile color;
    color.Append(1, 2, 3);
    color.Write(path_.c_str());
    EXPECT_EQ(Bytes().size(), 32u) << "a header of 20 bytes and a sample of 12, over a shorter file";
    back.Read(path_.c_str());
    EXPECT_EQ(back.Type, Rgb);
    EXPECT_EQ(back.Sample(0, 2), 3);

    Save(bytes + "tail");
    Profile empty;
    empty.Set(0, Gray32);
    empty.Write(path_.c_str());
    EXPECT_EQ(Bytes().size(), bytes.size() + 4) << "a longer file is not cut";
    back.Read(path_.c_str());
    EXPECT_EQ(back.Length, 0);
    EXPECT_EQ(back.Type, Gray32);

    struct Case
    {
        const char* what;
        std::string content;
        int code;
        const wchar_t* message;
    };
    const auto with = [&](std::size_t at, std::string_view four) {
        std::string content = bytes;
        return content.replace(at, 4, four);
    };
    using namespace std::string_view_literals;
    const Case cases[] = {
        {"magic", with(0, "TPTH"), UnsupportedFormat, nullptr},
        {"version", with(4, "\2\0\0\0"sv), OutOfRange, L"The version number \"2\" of this Profile file is too high"},
        {"type", with(8, "\x09\0\0\0"sv), UnsupportedFormat,
         L"The profile type (Float) is not supported for this operation, use one of Gray, Gray16, Gray32, Rgb"},
        {"no type", with(8, "\xff\xff\xff\xff"sv), UnsupportedFormat, nullptr},
        {"a colour file of gray length", with(8, "\4\0\0\0"sv), CannotRead, nullptr},
        {"huge count", with(16, "\xff\xff\xff\x7f"sv), CannotRead, nullptr},
        {"negative count", with(16, "\xff\xff\xff\xff"sv), CannotRead, nullptr},
        {"cut", bytes.substr(0, 26), CannotRead, nullptr},
        {"cut in the header", bytes.substr(0, 11), CannotRead, nullptr},
    };
    for (const auto& [what, content, code, message] : cases) {
        Save(content);
        Profile kept;
        kept.Append(5);
        kept.Read(path_.c_str());
        EXPECT_EQ(Status::Error().Code, code) << what;
        if (message) {
            EXPECT_STREQ(Status::UnicodeError(), message);
        }
        EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Profile::Read");
        EXPECT_EQ(kept.Length, 1) << what;
        EXPECT_EQ(kept.Sample(0), 5) << what;
    }
    std::filesystem::remove(path_);
    back.Read(path_.c_str());
    EXPECT_EQ(Status::Error().Code, CannotOpen);
    back.Set(2, Dble);
    back.Write(path_.c_str());
    EXPECT_EQ(Status::Error().Code, UnsupportedFormat);
    EXPECT_FALSE(std::filesystem::exists(path_)) << "a refusal leaves no file";
}

TEST_F(ProfileTableTest, TheSamplingIsDrawnWhereTheWindowStands)
{
    using Calls = std::vector<std::string>;
    Image image;
    image.Set(60, 50, Gray);
    image.Window(10, 20, 30, 25);
    Operator::Copy(0, image);
    Profile profile;
    RecordingTarget target;
    Graph::DrawTo(&target);
    Graph::Zoom = 2;
    profile.Draw(false);
    EXPECT_TRUE(Drawn(target).empty()) << "nothing has been sampled";
    profile.RowGet(4, image);
    profile.Draw(false);
    EXPECT_EQ(Drawn(target), (Calls{"Move 21 49", "Line 79 49"}));
    profile.ColumnAdd(3, 5, image);
    profile.Draw(false);
    EXPECT_EQ(Drawn(target), (Calls{"Rectangle 27 41 35 89"}));
    profile.LineGet(XY(1, 2), XY(4, 6), image);
    profile.Draw(true);
    const auto line = Drawn(target);
    ASSERT_EQ(line.size(), 4u) << "a line too short for an arrow head, and two marks";
    EXPECT_EQ(line[1], "Line 29 53");
    EXPECT_EQ(Graph::FillColor, NoColor);
    // The lines of the breadth lie within a rectangle about the middle one, four pixels high.
    profile.LineAdd(XY(2, 8), XY(12, 8), 5, image);
    profile.Draw(false);
    const auto band = Drawn(target);
    ASSERT_GE(band.size(), 3u);
    EXPECT_EQ(band[1], "Line 45 57");
    EXPECT_EQ(band.back(), "Polygon 25 53 45 53 45 61 25 61");
    Path path;
    path.Append(0, 0);
    path.Append(2, 1);
    profile.CurveGet(path, image);
    profile.Draw(false);
    EXPECT_EQ(Drawn(target), (Calls{"Move 21 41", "Line 25 43"}));
}

TEST_F(ProfileTableTest, BandsAndLinesAreDraggedInsideTheWindow)
{
    Image image;
    image.Set(100, 80, Gray);
    Operator::Copy(0, image);
    Profile row;
    row.RowAdd(20, 16, image);
    Graph::Zoom = 2;
    EXPECT_EQ(row.HitHandle(50, 41), NHandle);
    EXPECT_EQ(row.HitHandle(50, 71), SHandle);
    EXPECT_EQ(row.HitHandle(50, 90), NoHandle);
    EXPECT_EQ(row.HitHandle(50, 56), AllHandle);
    row.Drag(50, 66);
    EXPECT_EQ(row.Source.Row, 25);
    row.Drag(50, 1000);
    EXPECT_EQ(row.Source.Row, 64) << "the band stays inside";
    row.HitHandle(50, 2 * 64 + 1);
    row.Drag(50, 2 * 60);
    EXPECT_EQ(row.Source.Row, 60);
    EXPECT_EQ(row.Source.Breadth, 20) << "the far line stays";
    row.HitHandle(50, 2 * 79 + 1);
    row.Drag(50, -5);
    EXPECT_EQ(row.Source.Breadth, 1);

    Profile column;
    column.ColumnGet(50, image);
    EXPECT_EQ(column.HitHandle(101, 30), WHandle);
    column.Drag(5000, 30);
    EXPECT_EQ(column.Source.Column, 99);

    Profile line;
    line.LineGet(XY(10, 10), XY(40, 50), image);
    EXPECT_EQ(line.HitHandle(22, 22), FromHandle);
    EXPECT_EQ(line.HitHandle(82, 102), ToHandle);
    line.Drag(92, 102);
    EXPECT_EQ(line.Source.End.X, 45);
    EXPECT_EQ(line.HitHandle(56, 61), AllHandle);
    line.Drag(-1000, 61);
    EXPECT_EQ(line.Source.Beg.X, 0);
    EXPECT_EQ(line.Source.End.X, 35);
    EXPECT_EQ(line.Source.Beg.Y, 10);
    Profile unset;
    EXPECT_EQ(unset.HitHandle(0, 0), NoHandle);
    unset.Drag(5, 5);
    EXPECT_EQ(unset.Source.Row, 0);
}

TEST_F(ProfileTableTest, ValuesArePlottedFromTheBottomOfTheBox)
{
    using Calls = std::vector<std::string>;
    RecordingTarget target;
    Graph::DrawTo(&target);
    Graph::Zoom = 7;
    Profile profile;
    for (const int v : {0, 10, 5})
        profile.Append(v);
    profile.Plot(10, 20, 101, 51, false, 0, 0, 0, false);
    EXPECT_EQ(Drawn(target), (Calls{"Move 10 70", "Line 60 20", "Line 110 45"}));
    EXPECT_EQ(Graph::Zoom, 7);
    profile.Plot(10, 20, 101, 51, true, 0, 20, 0, false);
    EXPECT_EQ(Drawn(target), (Calls{"Move 10 20", "Line 60 45", "Line 35 70"}));
    Profile color;
    color.Append(0, 5, 10);
    color.Append(10, 5, 0);
    color.Plot(0, 0, 11, 11);
    EXPECT_EQ(Drawn(target), (Calls{"Rectangle 0 0 10 10", "Move 0 10", "Line 10 0", "Move 0 5", "Line 10 5",
                                    "Move 0 0", "Line 10 10"}));
    // Many samples a pixel: as many points as the box is wide, and both extremes seen.
    Profile dense;
    dense.Set(100000, Gray);
    for (int i = 0; i < dense.Length; i++)
        dense.Sample(i) = i == 77777 ? 50 : 0;
    dense.Plot(0, 0, 101, 51, false, 0, 0, 0, false);
    const auto drawn = Drawn(target);
    EXPECT_LT(drawn.size(), 300u);
    EXPECT_EQ(std::count(drawn.begin(), drawn.end(), "Line 77 0"), 1);
}
