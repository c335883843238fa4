// The files of a reader's settings, and what a reader draws.
#include "read/Code2DReader.h"

#include "../../Failures.h"
#include "foundation/Archive.h"
#include "foundation/Graph.h"
#include "foundation/RecordingTarget.h"
#include "read/matrix/Rendered.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <set>
#include <string>
#include <unistd.h>
#include <vector>

namespace Tesk {
namespace {

using checks::Message;

class Code2DFileTest : public checks::IgnoringFailures
{
protected:
    void TearDown() override { std::remove(path.c_str()); }

    void Put(const std::vector<std::uint8_t>& bytes)
    {
        std::FILE* file = std::fopen(path.c_str(), "wb");
        ASSERT_NE(file, nullptr);
        if (!bytes.empty()) std::fwrite(bytes.data(), 1, bytes.size(), file);
        std::fclose(file);
    }

    std::string path = ::testing::TempDir() + "code2d-file-test-" + std::to_string(getpid()) + ".c2r";
};

/// All settings other than they are by default.
const std::vector<std::uint8_t> changed = {'T', 'C', '2', 'R', 3,  0, 0, 0, // magic, version
                                           3,   0,   0,   0,                // polarities
                                           2,   0,   0,   0,                // views
                                           5,   0,   0,   0,   29, 0, 0, 0, // sizes
                                           0,   1,   1,   1,   0,           // five flags
                                           200, 0,   0,   0,                // threshold
                                           254, 255, 255, 255,              // start level
                                           1,   7,   0,   0,   0,  1,       // accurate, number, quality
                                           253, 255, 255, 255,              // inking
                                           1,   0};                         // DotCode

void ExpectChanged(const Code2DReader& reader)
{
    EXPECT_EQ(reader.EnabledPolarities, AutoPolarity);
    EXPECT_EQ(reader.EnabledViews, Mirrored);
    EXPECT_EQ(reader.SizeFrom, Size20);
    EXPECT_EQ(reader.SizeTo, Size16x48);
    EXPECT_FALSE(reader.DetectDataMatrix);
    EXPECT_TRUE(reader.DetectQR);
    EXPECT_TRUE(reader.DetectDotCode);
    EXPECT_TRUE(reader.SymbologyIdentifier);
    EXPECT_FALSE(reader.AdaptiveThreshold);
    EXPECT_EQ(reader.Threshold, 200);
    EXPECT_EQ(reader.StartLevel, -2);
    EXPECT_TRUE(reader.AccurateEdges);
    EXPECT_EQ(reader.MaxDecoded, 7);
    EXPECT_TRUE(reader.CheckQuality);
}

TEST_F(Code2DFileTest, FieldsStandWhereTheFormatHasThem)
{
    ASSERT_EQ(changed.size(), 49u);
    Put(changed);
    Code2DReader reader;
    reader.Read(path.c_str());
    ASSERT_EQ(Status::Error().Code, NoError);
    ExpectChanged(reader);
    EXPECT_EQ(reader.InkingCorrection, -3);
    EXPECT_TRUE(reader.ObsoleteDotCode);
    EXPECT_FALSE(reader.ClutteredQuietZone);

    std::vector<std::uint8_t> written;
    Archive archive = Archive::IntoMemory(written);
    reader.Transfer(archive);
    EXPECT_EQ(written, changed);
    reader.Write(std::wstring(path.begin(), path.end()).c_str());
    Code2DReader other;
    other.Read(std::wstring(path.begin(), path.end()).c_str());
    ExpectChanged(other);
}

TEST_F(Code2DFileTest, EarlierVersionsLackTheLastFields)
{
    for (const int version : {1, 2}) {
        std::vector<std::uint8_t> bytes(changed.begin(), changed.begin() + (version == 1 ? 43 : 47));
        bytes[4] = static_cast<std::uint8_t>(version);
        Put(bytes);
        Code2DReader reader;
        reader.InkingCorrection = 9;
        reader.ObsoleteDotCode = true;
        reader.Read(path.c_str());
        ASSERT_EQ(Status::Error().Code, NoError);
        ExpectChanged(reader);
        EXPECT_EQ(reader.InkingCorrection, version == 1 ? 0 : -3);
        EXPECT_FALSE(reader.ObsoleteDotCode);
        EXPECT_FALSE(reader.ClutteredQuietZone);
    }
}

TEST_F(Code2DFileTest, WhatWasReadBeforeAFailureStays)
{
    for (std::size_t length = 0; length < changed.size(); ++length) {
        Put({changed.begin(), changed.begin() + static_cast<std::ptrdiff_t>(length)});
        Code2DReader reader;
        reader.Read(path.c_str());
        EXPECT_EQ(Status::Error().Code, length > 0 && length < 4 ? UnsupportedFormat : CannotRead) << length;
        EXPECT_EQ(reader.EnabledPolarities, length >= 12 ? AutoPolarity : BlackOnWhite) << length;
        EXPECT_EQ(reader.Threshold, length >= 33 ? 200 : Auto) << length;
        EXPECT_EQ(reader.InkingCorrection, length >= 47 ? -3 : 0) << length;
    }
}

TEST_F(Code2DFileTest, OtherFilesAreRefused)
{
    Code2DReader reader;
    reader.Read("/nowhere/at.c2r");
    EXPECT_EQ(Status::Error().Code, CannotOpen);
    auto bytes = changed;
    bytes[3] = 'X';
    Put(bytes);
    reader.Read(path.c_str());
    EXPECT_EQ(Status::Error().Code, UnsupportedFormat);
    EXPECT_EQ(Message(), L"File \"" + std::wstring(path.begin(), path.end()) + L"\" is not a Code2DReader file");
    bytes = changed;
    bytes[4] = 4;
    Put(bytes);
    reader.Read(path.c_str());
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_EQ(Message(), L"The version number \"4\" of this Code2DReader file is too high");
    EXPECT_EQ(reader.EnabledPolarities, BlackOnWhite);
    reader.Write("/nowhere/at.c2r");
    EXPECT_EQ(Status::Error().Code, CannotOpen);
}

TEST_F(Code2DFileTest, DrawsTheChosenSymbolOrAll)
{
    using namespace matrix;
    Image picture;
    Blank(picture, 300, 200);
    Paint(SymbolCells(MadeNamed("digits")), Homography::Turned({20, 30}, 5), picture);
    Paint(SymbolCells(MadeNamed("Text, Structured Append")), Homography::Turned({150, 40}, 6), picture);
    Code2DReader reader;
    reader.MaxDecoded = 2;
    ASSERT_TRUE(reader.Decode(picture));
    ASSERT_EQ(reader.NumDecoded, 2);

    RecordingTarget target;
    const PredefinedColors line = Graph::LineColor;
    const int align = Graph::TextAlignX;
    const auto count = [&](const char* what) {
        int calls = 0;
        for (const std::string& call : target.Calls)
            calls += call.find(what) != std::string::npos;
        return calls;
    };
    const auto draw = [&](bool text, bool name, bool all, bool best) {
        target.Calls.clear();
        Graph::DrawTo(&target);
        reader.Draw(text, name, all, best);
        Graph::DrawTo(nullptr);
    };
    draw(false, false, false, false);
    EXPECT_EQ(count("Move "), 4);
    draw(true, true, true, true);
    EXPECT_EQ(count("Move "), 8);
    EXPECT_EQ(count("123456 (Data Matrix)"), 1);
    EXPECT_EQ(count("part three of seven (Data Matrix)"), 1);
    const auto colors = [&] {
        std::set<std::string> lines;
        for (const std::string& call : target.Calls)
            if (call.starts_with("SetLine")) lines.insert(call);
        return lines.size();
    };
    draw(false, false, true, true);
    EXPECT_EQ(colors(), 2u);
    draw(false, false, true, false);
    EXPECT_EQ(colors(), 1u);
    draw(true, false, false, false);
    EXPECT_EQ(count("123456"), 1);
    EXPECT_EQ(count("Data Matrix"), 0);
    reader.Choose(-1);
    draw(true, true, false, false);
    EXPECT_EQ(count("Move "), 0);
    EXPECT_EQ(Graph::LineColor, line);
    EXPECT_EQ(Graph::TextAlignX, align);
}

} // namespace
} // namespace Tesk
