// The settings' files, the colours of Pharmacode bars, and what is drawn.
#include "read/Code1DReader.h"

#include "../../Failures.h"
#include "foundation/Archive.h"
#include "foundation/Graph.h"
#include "foundation/RecordingTarget.h"
#include "read/linear/Symbols.h"

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace Tesk {
namespace {

using namespace checks;

class Code1DFileTest : public IgnoringFailures
{
protected:
    ~Code1DFileTest() override { std::remove(path.c_str()); }
    void Save(const std::vector<std::uint8_t>& bytes)
    {
        std::remove(path.c_str());
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }

    const std::string path = ::testing::TempDir() + "reader_" + std::to_string(getpid()) + ".c1r";
    Code1DReader reader;
};

TEST_F(Code1DFileTest, EveryVersionIsReadAndTheOthersAreRefused)
{
    reader.DetectEAN13 = false;
    reader.DetectPharmacode = reader.Detect11 = true;
    reader.NumDirections = -30;
    reader.Step = 77;
    reader.MinimumBars = 5;
    reader.CheckQuality = true;
    reader.SymbologyIdentifier = false;
    std::vector<std::uint8_t> bytes;
    Archive out = Archive::IntoMemory(bytes);
    reader.Transfer(out);
    // Magic and version, 18 flags of symbologies, four numbers, two flags, a number, two flags.
    ASSERT_EQ(bytes.size(), 8u + 18 + 16 + 2 + 4 + 2);
    EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 4), "TC1R");
    for (int version = 4; version >= 1; version--) {
        bytes[4] = static_cast<std::uint8_t>(version);
        if (version == 3) bytes.erase(bytes.begin() + 22, bytes.begin() + 26);
        if (version == 2) bytes.erase(bytes.begin() + 21);
        if (version == 1) bytes.pop_back();
        Save(bytes);
        Code1DReader read;
        read.DetectITF14 = true;
        read.Read(path.c_str());
        EXPECT_EQ(Status::Error().Code, NoError) << version;
        EXPECT_FALSE(read.DetectEAN13);
        EXPECT_TRUE(read.DetectPharmacode);
        EXPECT_FALSE(read.DetectITF14);
        EXPECT_EQ(read.Detect11, version == 4);
        EXPECT_EQ(read.NumDirections, -30);
        EXPECT_EQ(read.Step, 77);
        EXPECT_EQ(read.MinimumBars, 5);
        EXPECT_TRUE(read.CheckQuality);
        EXPECT_EQ(read.SymbologyIdentifier, version == 1);
    }
    bytes.resize(20);
    Save(bytes);
    Code1DReader untouched;
    untouched.Read(path.c_str());
    EXPECT_EQ(Status::Error().Code, CannotRead);
    EXPECT_TRUE(untouched.DetectEAN13);
    bytes[4] = 5;
    Save(bytes);
    untouched.Read(path.c_str());
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_EQ(Message(), L"The version number \"5\" of this Code1DReader file is too high");
    bytes[0] = 'X';
    Save(bytes);
    untouched.Read(path.c_str());
    EXPECT_EQ(Status::Error().Code, UnsupportedFormat);
    reader.Write(path.c_str());
    untouched.Read(std::wstring(path.begin(), path.end()).c_str());
    EXPECT_EQ(untouched.Step, 77);
    untouched.Read("/nowhere/x.c1r");
    EXPECT_EQ(Status::Error().Code, CannotOpen);
}

class Code1DColorsTest : public IgnoringFailures
{
protected:
    Code1DColorsTest()
    {
        reader.DetectEAN128 = reader.DetectEAN13 = reader.DetectEAN8 = reader.DetectUPCA = reader.DetectUPCE = false;
        reader.Detect2of5 = reader.Detect39 = reader.Detect39Extended = reader.Detect93 = reader.DetectCodabar = false;
        reader.DetectDatabar = reader.DetectDatabarLimited = false;
        reader.DetectPharmacode = true;
        reader.NumDirections = 1;
    }

    /// Bars of 4 and 12 pixels, with gaps of 8.
    void Bars(const std::string& widths, const std::vector<RgbPixel>& colors)
    {
        image.Set(240, 80, Rgb);
        for (int y = 0; y < 80; y++)
            std::fill(image.Row<RgbPixel>(y), image.Row<RgbPixel>(y) + 240, RgbPixel(250, 250, 250));
        int x = 60;
        for (std::size_t i = 0; i < widths.size(); i++) {
            const int width = widths[i] == 'W' ? 12 : 4;
            for (int y = 10; y < 70; y++)
                std::fill(image.Row<RgbPixel>(y) + x, image.Row<RgbPixel>(y) + x + width, colors[i]);
            x += width + 8;
        }
    }

    Code1DReader reader;
    Image image;
    const RgbPixel red{120, 10, 20}, green{10, 110, 20}, blue{30, 20, 130};
};

TEST_F(Code1DColorsTest, BarsAreComparedWithTheTrainedOnes)
{
    Bars("WNWNN", {red, green, blue, red, green});
    ASSERT_TRUE(reader.Decode(image));
    EXPECT_EQ(Symbologies(reader.Symbology), CodePharmacode);
    EXPECT_FALSE(reader.ValidColors);
    reader.ColorTrain(image);
    ASSERT_EQ(Status::Error().Code, NoError);
    ASSERT_EQ(int(reader.NumColorBars), 5);
    EXPECT_EQ(reader.BarColor(0), red);
    EXPECT_EQ(reader.BarColor(2), blue);
    EXPECT_EQ(reader.BarColor(5), RgbPixel(0, 0, 0));
    EXPECT_EQ(Message(), L"The bar index (5) is out of the available range [0..4]");

    Bars("WNWNN", {red, green, blue, red, {10, 125, 20}});
    EXPECT_TRUE(reader.Decode(image));
    EXPECT_TRUE(reader.ValidColors);
    reader.RgbTolerance = 14;
    EXPECT_TRUE(reader.Decode(image));
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_FALSE(reader.ValidColors);

    RecordingTarget target;
    Graph::DrawTo(&target);
    reader.Draw(true, true, true, true);
    Graph::DrawTo(nullptr);
    std::string drawn;
    for (const auto& call : target.Calls)
        drawn += call + "\n";
    EXPECT_NE(drawn.find("(Pharmacode)"), std::string::npos) << drawn;

    Bars("WWWNN", {red, green, blue, red, green});
    EXPECT_TRUE(reader.Decode(image));
    EXPECT_EQ(Status::Error().Code, UnsupportedFormat);
    EXPECT_EQ(Message(), L"Unexpected decoded value, cannot check the bar colors");
}

TEST_F(Code1DColorsTest, WhatHasNoColorsIsRefused)
{
    Bars("WNWNN", {red, red, red, red, red});
    reader.ColorTrain(image);
    EXPECT_EQ(Status::Error().Code, UnsupportedType);
    EXPECT_EQ(Message(), L"Color inspection applies to Pharmacodes only - this is a Unknown Symbol");
    ASSERT_TRUE(reader.Decode(image));
    reader.NumDirections = 3;
    reader.ColorTrain(image);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_EQ(Message(), L"Color inspection does not support more than two directions (NumDirections == 3)");
    Image gray;
    gray.Set(20, 20, Gray);
    reader.ColorTrain(gray);
    EXPECT_EQ(Message(), L"The image type (Gray) is not supported for this operation - must be a color image");
    gray.Set(240, 80, Rgb);
    std::fill(gray.Row(0), gray.Row(79) + 240 * 3, std::uint8_t{9});
    reader.NumDirections = 1;
    reader.ColorTrain(gray);
    EXPECT_EQ(Message(), L"Anomaly while processing the bars, cannot proceed");
    EXPECT_EQ(int(reader.NumColorBars), 0);
}

} // namespace
} // namespace Tesk
