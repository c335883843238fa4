// Whole symbols in rendered pictures: found, read and placed, however they lie.
#include "read/Code2DReader.h"

#include "../../Failures.h"
#include "image/Geometry.h"
#include "read/codewords/DataMatrixSizes.h"
#include "read/matrix/Rendered.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <string>
#include <vector>

namespace Tesk {
namespace {

using namespace matrix;
using checks::Message;

const SymbolCells digits(MadeNamed("digits")), rectangle(MadeNamed("C40, rectangle")),
    large(MadeNamed("two blocks, four regions")), appended(MadeNamed("Text, Structured Append"));

std::string TextOf(const Code2DReader& reader)
{
    return {static_cast<const char*>(reader.AsciiString), static_cast<std::size_t>(int(reader.StringLength))};
}

class Code2DReaderTest : public checks::IgnoringFailures
{
protected:
    Code2DReaderTest()
    {
        reader.SymbologyIdentifier = true;
        reader.LookCloser = false;
    }

    /// What is read; nothing without its failure being told.
    std::string Text()
    {
        const bool read = reader.Decode(picture);
        EXPECT_EQ(read, reader.NumDecoded > 0);
        EXPECT_EQ(read, Status::Error().Code == NoError) << std::string(Message().begin(), Message().end());
        return read ? TextOf(reader) : std::string();
    }
    void ExpectRefused(int code, const std::wstring& message)
    {
        EXPECT_FALSE(reader.Decode(picture));
        EXPECT_EQ(Status::Error().Code, code);
        EXPECT_EQ(Message(), message);
        EXPECT_EQ(reader.NumDecoded, 0);
    }

    Code2DReader reader;
    Image picture;
};

TEST_F(Code2DReaderTest, ReadsEverySymbolAtEveryAngle)
{
    for (const codewords::MadeSymbol& made : codewords::madeSymbols) {
        if (made.family != codewords::MadeFamily::DataMatrix) continue;
        const SymbolCells cells(made);
        reader.SizeTo = Size16x48;
        for (const double degrees : {0.0, 7.0, 45.0, 90.0, 123.0, 180.0, 261.0}) {
            SCOPED_TRACE(std::string(made.name) + " at " + std::to_string(degrees));
            const XY middle(170, 170);
            const double angle = degrees * std::numbers::pi / 180, cell = 4;
            const XY right(std::cos(angle), std::sin(angle)), down(-right.Y, right.X);
            const XY corner = middle - cell * (0.5 * made.columns) * right - cell * (0.5 * made.rows) * down;
            Blank(picture, 341, 341);
            Paint(cells, Homography::Turned(corner, cell, degrees), picture);
            ASSERT_EQ(Text(), made.text);
            EXPECT_EQ(codewords::DataMatrixSizes()[reader.Size].rows, made.rows);
            EXPECT_EQ(codewords::DataMatrixSizes()[reader.Size].columns, made.columns);
            EXPECT_EQ(reader.Symbology, CodeDataMatrix);
            EXPECT_NEAR(reader.CellSize, cell, 0.25);
            EXPECT_NEAR(reader.Corner(1).X, corner.X, 3);
            EXPECT_NEAR(reader.Corner(1).Y, corner.Y, 3);
            const double turn = std::remainder(reader.Angle - degrees, 360);
            EXPECT_NEAR(turn, 0, 3);
        }
    }
}

TEST_F(Code2DReaderTest, PlacesCountFromTheWholeImage)
{
    Blank(picture, 200, 160);
    Paint(digits, Homography::Turned({79.5, 59.5}, 5), picture); // pixels 80 to 129, 60 to 109
    picture.Window(40, 30, 140, 120);
    ASSERT_EQ(Text(), MadeNamed("digits").text);
    // Corners lie on the outermost dark pixels.
    EXPECT_EQ(reader.X, 80);
    EXPECT_EQ(reader.Y, 60);
    EXPECT_NEAR(reader.Width, 49, 1);
    EXPECT_NEAR(reader.Height, 49, 1);
    EXPECT_NEAR(reader.Angle, 0, 1.2);
    const XY expected[] = {{80, 109}, {80, 60}, {129, 60}, {129, 109}};
    for (int i = 0; i < 4; ++i) {
        EXPECT_NEAR(reader.Corner(i).X, expected[i].X, 1);
        EXPECT_NEAR(reader.Corner(i).Y, expected[i].Y, 1);
    }
}

TEST_F(Code2DReaderTest, ReadsPerspectiveBlurAndNoise)
{
    Blank(picture, 220, 220);
    Paint(appended, Homography::Between({XY(40, 42), XY(186, 30), XY(190, 182), XY(34, 178)}, 22, 22), picture);
    Blur(picture, 3);
    AddNoise(picture, 6);
    ASSERT_EQ(Text(), MadeNamed("Text, Structured Append").text);
    EXPECT_GT(reader.SymbolTotal, 0);
    EXPECT_EQ(reader.View, Straight);
}

TEST_F(Code2DReaderTest, ACloserLookReadsStrongPerspective)
{
    reader.LookCloser = true;
    Blank(picture, 220, 220);
    Paint(appended, Homography::Between({XY(60, 42), XY(150, 60), XY(190, 200), XY(20, 170)}, 22, 22), picture);
    EXPECT_EQ(Text(), MadeNamed("Text, Structured Append").text);
    EXPECT_NEAR(reader.Corner(1).X, 60, 3);
    EXPECT_NEAR(reader.Corner(1).Y, 42, 3);
}

TEST_F(Code2DReaderTest, ACloserLookNeedsNoPaperAround)
{
    picture.Set(20, 20, Gray);
    Paint(digits, Homography::Turned({-0.5, -0.5}, 2), picture, {}, 10);
    EXPECT_EQ(Text(), "");
    reader.LookCloser = true;
    EXPECT_EQ(Text(), MadeNamed("digits").text);
    EXPECT_NEAR(reader.X, 0, 1);
    EXPECT_NEAR(reader.Y, 0, 1);
    reader.SizeFrom = Size12; // nothing beyond what is enabled
    EXPECT_EQ(Text(), "");
    reader.SizeFrom = Size10;
    reader.EnabledPolarities = WhiteOnBlack;
    EXPECT_EQ(Text(), "");
}

TEST_F(Code2DReaderTest, ACloserLookJoinsDots)
{
    for (const double dot : {0.9, 0.75, 0.6}) {
        SCOPED_TRACE(dot);
        reader.LookCloser = true;
        Blank(picture, 180, 180);
        Paint(digits, Homography::Turned({40, 30}, 9, 12), picture, {60, 200, dot});
        AddNoise(picture, 5);
        EXPECT_EQ(Text(), MadeNamed("digits").text);
    }
}

TEST_F(Code2DReaderTest, NothingIsReadInNoise)
{
    reader.LookCloser = true;
    reader.EnabledPolarities = AutoPolarity;
    reader.EnabledViews = AutoView;
    reader.SizeTo = Size16x48;
    for (unsigned seed = 1; seed <= 4; ++seed) {
        Blank(picture, 200, 200, 128);
        AddNoise(picture, 60, seed);
        Blur(picture, static_cast<int>(seed));
        EXPECT_EQ(Text(), "");
    }
}

TEST_F(Code2DReaderTest, ReadsWhatIsSeenFromBehindIfThatIsEnabled)
{
    reader.SizeTo = Size16x48;
    for (const char* name : {"digits", "C40, rectangle", "bytes, two regions"}) {
        SCOPED_TRACE(name);
        Blank(picture, 260, 160);
        Paint(SymbolCells(MadeNamed(name)).Mirrored(), Homography::Turned({30, 40}, 4, 5), picture);
        reader.EnabledViews = Straight;
        EXPECT_EQ(Text(), "");
        reader.EnabledViews = AutoView;
        EXPECT_EQ(Text(), MadeNamed(name).text);
        EXPECT_EQ(reader.View, Mirrored);
        reader.EnabledViews = Mirrored;
        EXPECT_EQ(Text(), MadeNamed(name).text);
        Blank(picture, 260, 160);
        Paint(SymbolCells(MadeNamed(name)), Homography::Turned({30, 40}, 4, 5), picture);
        EXPECT_EQ(Text(), "");
    }
}

TEST_F(Code2DReaderTest, ReadsLightSymbolsIfTheyAreEnabled)
{
    for (const bool adaptive : {true, false}) {
        reader.AdaptiveThreshold = adaptive;
        Blank(picture, 160, 160, 40);
        Paint(digits, Homography::Turned({50, 40}, 5, 20), picture, {200, 40});
        reader.EnabledPolarities = BlackOnWhite;
        EXPECT_EQ(Text(), "");
        for (const CodePolarities enabled : {WhiteOnBlack, AutoPolarity}) {
            reader.EnabledPolarities = enabled;
            EXPECT_EQ(Text(), MadeNamed("digits").text);
            EXPECT_EQ(reader.Polarity, WhiteOnBlack);
        }
        Blank(picture, 160, 160);
        Paint(digits, Homography::Turned({50, 40}, 5, 20), picture);
        EXPECT_EQ(Text(), MadeNamed("digits").text);
        EXPECT_EQ(reader.Polarity, BlackOnWhite);
        reader.EnabledPolarities = WhiteOnBlack;
        EXPECT_EQ(Text(), "");
    }
}

TEST_F(Code2DReaderTest, ReadsSeveralSymbolsAndChooses)
{
    Blank(picture, 320, 200);
    Paint(digits, Homography::Turned({20, 30}, 5), picture);
    Paint(appended, Homography::Turned({150, 40}, 6), picture);
    reader.MaxDecoded = 1;
    ASSERT_TRUE(reader.Decode(picture));
    EXPECT_EQ(reader.NumDecoded, 1);
    EXPECT_EQ(TextOf(reader), MadeNamed("Text, Structured Append").text); // the larger one
    reader.MaxDecoded = 5;
    ASSERT_TRUE(reader.Decode(picture));
    ASSERT_EQ(reader.NumDecoded, 2);
    EXPECT_EQ(TextOf(reader), MadeNamed("digits").text); // the last one
    EXPECT_EQ(reader.SymbolTotal, 0);
    reader.Choose(0, picture);
    EXPECT_EQ(TextOf(reader), MadeNamed("Text, Structured Append").text);
    EXPECT_NEAR(reader.Corner(1).X, 150, 2);
    EXPECT_GT(reader.SymbolTotal, 0);
    reader.Choose(1);
    EXPECT_EQ(TextOf(reader), MadeNamed("digits").text);
    EXPECT_NEAR(reader.Corner(1).X, 20, 2);
    const Code2DReader copy(reader);
    EXPECT_NEAR(copy.Corner(1).X, 20, 2);
    reader.Choose(2);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_EQ(Message(), L"The symbol index (2) must be in range [0..1]");
    reader.Choose(-1, picture);
    EXPECT_EQ(Message(), L"The symbol index (-1) must be in range [0..1]");
    EXPECT_EQ(TextOf(reader), MadeNamed("digits").text);
    reader.Choose(-1);
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(TextOf(reader), "");
    EXPECT_EQ(reader.Symbology, NoSymbology);
    EXPECT_EQ(reader.NumDecoded, 2);
    reader.CheckQuality = true;
    reader.Choose(0);
    EXPECT_EQ(Status::Error().Code, UnsupportedType);
    EXPECT_EQ(Message(), L"The Quality Indicators require the Src argument; use the other overload");
    reader.Choose(0, picture);
    EXPECT_EQ(Status::Error().Code, NoError);
    reader.Corner(4);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_EQ(Message(), L"The corner index (4) must be in range [0..3]");
}

TEST_F(Code2DReaderTest, SizesOutsideTheRangeAreNotRead)
{
    Blank(picture, 160, 160);
    Paint(digits, Homography::Turned({50, 40}, 6), picture);
    reader.SizeFrom = Size12;
    EXPECT_EQ(Text(), "");
    reader.SizeFrom = Size10;
    reader.SizeTo = Size10;
    EXPECT_EQ(Text(), MadeNamed("digits").text);
    reader.SizeFrom = Size8x18;
    ExpectRefused(OutOfRange, L"The selected range of Data Matrix sizes (Size8x18..Size10) is void");
    reader.DetectDataMatrix = false;
    ExpectRefused(CannotRead, L"No symbol candidate was found in the image");
}

TEST_F(Code2DReaderTest, ARectangleIsReadOnlyIfItsSizesAreEnabled)
{
    Blank(picture, 220, 120);
    Paint(rectangle, Homography::Turned({30, 40}, 5, 3), picture);
    ExpectRefused(CannotRead, L"No well shaped symbol candidate was found in the image");
    reader.SizeTo = Size16x48;
    EXPECT_EQ(Text(), MadeNamed("C40, rectangle").text);
    EXPECT_EQ(reader.Size, Size8x32);
    EXPECT_EQ(reader.Symbology, CodeDataMatrix);
    reader.CheckQuality = true;
    EXPECT_TRUE(reader.Decode(picture));
    EXPECT_EQ(Status::Error().Code, UnsupportedType);
    EXPECT_EQ(Message(), L"Quality Check of rectangular codes is not supported yet - Contact the Technical Support");
    EXPECT_EQ(TextOf(reader), MadeNamed("C40, rectangle").text);
}

TEST_F(Code2DReaderTest, TellsWhyNothingWasRead)
{
    ExpectRefused(VoidObject, L"Void source or destination image");
    picture.Set(100, 100, Gray16);
    ExpectRefused(UnsupportedType, L"The image type (Gray16) is not supported for this operation");
    Blank(picture, 100, 100);
    ExpectRefused(CannotRead, L"No symbol candidate was found in the image");
    EXPECT_STREQ(reader.AsciiGrades, "F");
    reader.Choose(0);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_EQ(Message(), L"No symbol has been decoded");
    reader.Choose(-1);
    EXPECT_EQ(Status::Error().Code, NoError);

    Blank(picture, 160, 160);
    SymbolCells hurt = digits;
    for (int row = 1; row < 9; ++row)
        for (int column = 1; column < 9; ++column)
            if ((row + column) % 2 == 0) hurt.Flip(row, column);
    Paint(hurt, Homography::Turned({50, 40}, 6), picture);
    ExpectRefused(CannotRead, L"No candidate could be decoded");
}

TEST_F(Code2DReaderTest, SmallImagesAreSearchedOnlyWhereTheyAreEnlarged)
{
    Blank(picture, 34, 34);
    Paint(digits, Homography::Turned({3.5, 3.5}, 2), picture, {30, 220}, 10);
    ExpectRefused(CannotRead, L"No symbol candidate was found in the image");
    reader.StartLevel = -1;
    EXPECT_EQ(Text(), MadeNamed("digits").text);
    EXPECT_NEAR(reader.CellSize, 2, 0.15);
    EXPECT_NEAR(reader.Corner(1).X, 4, 1);
    reader.StartLevel = -2;
    EXPECT_EQ(Text(), MadeNamed("digits").text);
    EXPECT_NEAR(reader.CellSize, 2, 0.15);
    EXPECT_NEAR(reader.Corner(1).X, 4, 1);
}

TEST_F(Code2DReaderTest, RungsAheadOfTheFirstAreNotSearched)
{
    Blank(picture, 200, 200);
    Paint(digits, Homography::Turned({39.5, 39.5}, 12), picture);
    reader.StartLevel = 2;
    ASSERT_EQ(Text(), MadeNamed("digits").text);
    // Corners are whole pixels of the rung of 9/4.
    const double place = reader.Corner(1).X / 2.25;
    EXPECT_NEAR(place, std::round(place), 1e-9);
    EXPECT_NEAR(reader.Corner(1).X, 40, 3);
    reader.StartLevel = 8; // 200 pixels shrink to less than 36 before
    ExpectRefused(CannotRead, L"No symbol candidate was found in the image");
}

TEST_F(Code2DReaderTest, SymbolsThatReachTheFarEdgesAreNoCandidates)
{
    // At the left and upper edges a symbol can be read, at the right and lower ones only with two free pixels.
    const auto readAt = [&](double x, double y) {
        Blank(picture, 60, 60);
        Paint(digits, Homography::Turned({x - 0.5, y - 0.5}, 5), picture);
        return Text();
    };
    EXPECT_EQ(readAt(0, 0), MadeNamed("digits").text);
    EXPECT_EQ(readAt(8, 8), MadeNamed("digits").text); // pixels 8 to 57
    EXPECT_EQ(readAt(9, 4), "");
    EXPECT_EQ(readAt(4, 9), "");
}

TEST_F(Code2DReaderTest, InkingCorrectionMovesTheSides)
{
    const auto widthWith = [&](int correction) {
        reader.InkingCorrection = correction;
        EXPECT_EQ(Text(), MadeNamed("digits").text);
        return int(reader.Width);
    };
    Blank(picture, 160, 160);
    Paint(digits, Homography::Turned({29.5, 29.5}, 7), picture); // pixels 30 to 99
    EXPECT_EQ(widthWith(0), 69);
    EXPECT_EQ(widthWith(1), 71);
    EXPECT_EQ(widthWith(-1), 67);
}

TEST_F(Code2DReaderTest, AccurateEdgesPlaceTheSides)
{
    const double scale = Geometry::ScaleFromPixel;
    const std::array<XY, 4> corners = {XY(40.3, 50.7), XY(190.6, 61.2), XY(181.4, 205.9), XY(30.2, 196.1)};
    for (const CodePolarities polarity : {BlackOnWhite, WhiteOnBlack}) {
        const Print print = polarity == BlackOnWhite ? Print{30, 220} : Print{220, 30};
        Blank(picture, 230, 240, print.paper);
        Paint(appended, Homography::Between(corners, 22, 22), picture, print);
        reader.EnabledPolarities = polarity;
        reader.AccurateEdges = true;
        ASSERT_EQ(Text(), MadeNamed("Text, Structured Append").text);
        const int order[] = {3, 0, 1, 2};
        for (int i = 0; i < 4; ++i) {
            EXPECT_NEAR(reader.Corner(i).X, corners[static_cast<std::size_t>(order[i])].X, 0.25) << i;
            EXPECT_NEAR(reader.Corner(i).Y, corners[static_cast<std::size_t>(order[i])].Y, 0.25) << i;
        }
        EXPECT_EQ(scale, Geometry::ScaleFromPixel);
    }
}

TEST_F(Code2DReaderTest, FamiliesAreReadWhereTheyAreEnabled)
{
    Blank(picture, 560, 240);
    Paint(digits, Homography::Turned({20, 30}, 6), picture);
    Paint(SymbolCells(MadeNamed("numeric and alphanumeric")), Homography::Turned({130, 40}, 6), picture, {}, 4);
    Paint(SymbolCells(MadeNamed("lying, bytes")), Homography::Turned({300, 20}, 6), picture, {30, 220, 0.9}, 3);
    struct
    {
        bool dataMatrix, qr, dotCode;
        const char* name;
        Symbologies symbology;
        int size;
    } const cases[] = {{true, false, false, "digits", CodeDataMatrix, Size10},
                       {false, true, false, "numeric and alphanumeric", CodeQR, Version1},
                       {false, false, true, "lying, bytes", CodeDotCode, DotCode}};
    for (const auto& one : cases) {
        SCOPED_TRACE(one.name);
        reader.DetectDataMatrix = one.dataMatrix;
        reader.DetectQR = one.qr;
        reader.DetectDotCode = one.dotCode;
        EXPECT_EQ(Text(), MadeNamed(one.name).text);
        EXPECT_EQ(reader.Symbology, one.symbology);
        EXPECT_EQ(reader.Size, one.size);
    }
    reader.DetectDataMatrix = reader.DetectQR = true;
    reader.MaxDecoded = 3;
    ASSERT_TRUE(reader.Decode(picture));
    ASSERT_EQ(reader.NumDecoded, 3);
    EXPECT_EQ(reader.Symbology, CodeDotCode); // the last one
    reader.Choose(0);
    EXPECT_EQ(reader.Symbology, CodeDataMatrix);
}

TEST_F(Code2DReaderTest, ColorsAreReadAsGray)
{
    Image gray;
    Blank(gray, 120, 120);
    Paint(digits, Homography::Turned({30, 30}, 5), gray);
    for (const PixelTypes type : {Rgb, Rgba}) {
        picture.Set(120, 120, type);
        Operator::Copy(gray, picture, type);
        EXPECT_EQ(Text(), MadeNamed("digits").text);
    }
}

TEST_F(Code2DReaderTest, AFixedThresholdIsTaken)
{
    Blank(picture, 120, 120);
    Paint(digits, Homography::Turned({30, 30}, 5), picture, {130, 220});
    reader.AdaptiveThreshold = false;
    reader.Threshold = 100;
    ExpectRefused(CannotRead, L"No symbol candidate was found in the image");
    reader.Threshold = 180;
    EXPECT_EQ(Text(), MadeNamed("digits").text);
    reader.Threshold = Auto;
    EXPECT_EQ(Text(), MadeNamed("digits").text);
}

} // namespace
} // namespace Tesk
