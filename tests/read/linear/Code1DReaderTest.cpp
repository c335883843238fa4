// The reader of linear symbols: directions, votes, places, failures, and pictures that try it.
#include "read/Code1DReader.h"

#include "../../Failures.h"
#include "read/linear/Symbols.h"

#include <cmath>
#include <string>
#include <tuple>

namespace Tesk {
namespace {

using namespace checks;

const std::string text = "4006381333931", other = "9780441014989";

class Code1DReaderTest : public IgnoringFailures
{
protected:
    /// What the reader reads; a failure must be told of.
    std::string Text(Image& picture)
    {
        const bool decoded = reader.Decode(picture);
        EXPECT_EQ(Status::Error().Code, decoded ? NoError : CannotRead);
        EXPECT_EQ(int(reader.NumDecoded) > 0, decoded);
        return static_cast<const char*>(reader.AsciiString);
    }

    Code1DReader reader;
    Image image;
};

TEST_F(Code1DReaderTest, SymbolIsFoundInAnyOrientationWithItsBox)
{
    reader.LookCloser = false;
    for (int angle = 0; angle < 360; angle += 15) {
        Print print;
        print.angle = angle;
        Picture(image, 300, 300, EAN13Modules(text), print);
        ASSERT_EQ(Text(image), text) << angle;
        EXPECT_EQ(int(reader.NumDecoded), 1) << angle;
        EXPECT_EQ(Symbologies(reader.Symbology), CodeEAN13);
        EXPECT_NEAR(std::remainder(reader.Angle - angle, 360), 0, 2);
        EXPECT_NEAR(reader.Width, 190, 4) << angle;
        EXPECT_NEAR(reader.Height, 60, 10) << angle;
        // The corner where the text begins: of what is read, whose height may be less than that of the bars.
        const double c = std::cos(ToRadians(angle)), s = std::sin(ToRadians(angle));
        EXPECT_NEAR(c * (reader.X - 149.5) + s * (reader.Y - 149.5), -95, 4) << angle;
        EXPECT_NEAR(-s * (reader.X - 149.5) + c * (reader.Y - 149.5), -30, 8) << angle;
    }
}

TEST_F(Code1DReaderTest, DirectionsAreThoseOfTheSetting)
{
    reader.LookCloser = false;
    // The setting, the angle of the symbol, whether lines across it run.
    const std::tuple<int, int, bool> cases[] = {{0, 0, false},  {0, 90, true},   {1, 0, true},     {1, 90, false},
                                                {2, 0, true},   {2, 90, true},   {2, 45, false},   {4, 45, true},
                                                {4, 135, true}, {-45, 45, true}, {-45, 90, false}, {200, 33, true}};
    for (const auto& [directions, angle, read] : cases) {
        Print print;
        print.angle = angle;
        Picture(image, 260, 260, EAN13Modules(text), print);
        reader.NumDirections = directions;
        EXPECT_EQ(Text(image), read ? text : "") << directions << " " << angle;
    }
    // With `Reverse` the middle of the angles, the vertical lines, comes in.
    Print print;
    print.angle = 90;
    Picture(image, 260, 260, EAN13Modules(text), print);
    reader.NumDirections = -45;
    reader.Reverse = true;
    EXPECT_EQ(Text(image), text);
}

TEST_F(Code1DReaderTest, ThreeLinesMakeASymbolAndTwoDoNot)
{
    reader.LookCloser = false;
    reader.NumDirections = 1;
    Print print;
    print.height = 12; // rows 44 to 55
    Picture(image, 260, 100, EAN13Modules(text), print);
    reader.Density = 5; // rows 45, 50 and 55
    EXPECT_EQ(Text(image), text);
    reader.Density = 6; // rows 48 and 54
    EXPECT_EQ(Text(image), "");
    EXPECT_EQ(Message(), L"No symbol candidate was found in the image");
    reader.Density = 70;
    EXPECT_EQ(Text(image), "");
}

TEST_F(Code1DReaderTest, InvertedAndPlainSymbolsReadAlike)
{
    for (const bool inverted : {false, true}) {
        Print print;
        print.dark = inverted ? 220 : 30;
        print.bright = inverted ? 30 : 220;
        Picture(image, 260, 100, EAN13Modules(text), print);
        EXPECT_EQ(Text(image), text);
    }
}

TEST_F(Code1DReaderTest, TwoSymbolsInARowAreTwoEvenWithOneText)
{
    Blank(image, 520, 160);
    Print print;
    print.y = 80;
    for (const double x : {130.0, 370.0}) {
        print.x = x;
        Paint<GrayPixel>(image, EAN13Modules(text), print);
    }
    EXPECT_EQ(Text(image), text);
    EXPECT_EQ(int(reader.NumDecoded), 2);
    Blank(image, 520, 160);
    print.x = 130;
    Paint<GrayPixel>(image, EAN13Modules(text), print);
    print.x = 370;
    print.height = 110;
    Paint<GrayPixel>(image, EAN13Modules(other), print);
    // The one that more lines read is chosen.
    EXPECT_EQ(Text(image), other);
    ASSERT_EQ(int(reader.NumDecoded), 2);
    std::string both;
    for (int i = 0; i < 2; i++) {
        reader.Choose(i);
        both += static_cast<const char*>(reader.AsciiString);
    }
    EXPECT_TRUE(both == text + other || both == other + text);
}

TEST_F(Code1DReaderTest, ChoiceFillsOrClearsTheResults)
{
    reader.Choose(0);
    EXPECT_EQ(Message(), L"No symbol has been decoded");
    Picture(image, 260, 100, EAN13Modules(text), Print());
    ASSERT_EQ(Text(image), text);
    EXPECT_EQ(std::wstring(static_cast<const wchar_t*>(reader.UnicodeString)), std::wstring(text.begin(), text.end()));
    EXPECT_TRUE(reader.ValidCRC);
    reader.Choose(1);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_EQ(Message(), L"The symbol index (1) must be in range [0..0]");
    EXPECT_STREQ(reader.AsciiString, text.c_str());
    reader.Choose(-1);
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_STREQ(reader.AsciiString, "");
    EXPECT_EQ(int(reader.Width), 0);
    EXPECT_EQ(int(reader.NumDecoded), 1);
    reader.CheckQuality = true;
    reader.Choose(0);
    EXPECT_EQ(Status::Error().Code, UnsupportedType);
    EXPECT_EQ(Message(), L"The Quality Indicators require the Src argument; use the other overload");
    const Code1DReader copy(reader);
    reader.CheckQuality = false;
    reader.Choose(0);
    EXPECT_STREQ(copy.AsciiString, "");
    EXPECT_STREQ(Code1DReader(reader).AsciiString, text.c_str());
}

TEST_F(Code1DReaderTest, WindowsAreReadInPlaceAndTellStoreCoordinates)
{
    Blank(image, 400, 300);
    Print print;
    print.x = 220;
    print.y = 150;
    Paint<GrayPixel>(image, EAN13Modules(text), print);
    reader.NumDirections = 1;
    ASSERT_EQ(Text(image), text);
    const int x = reader.X, y = reader.Y;
    image.Window(100, 100, 240, 100);
    ASSERT_EQ(Text(image), text);
    EXPECT_EQ(int(reader.X), x);
    EXPECT_NEAR(reader.Y, y, 5);
    image.Window(0, 0, 200, 90);
    EXPECT_EQ(Text(image), "");
}

TEST_F(Code1DReaderTest, CloserLookReadsWhatIsFaintBlurredOrSmall)
{
    Print faint, blurred, small, short_;
    faint.dark = 200;
    faint.noise = 2;
    blurred.blur = 1;
    small.module = 1.6;
    small.height = 25;
    small.angle = 4;
    short_.height = 9;
    int more = 0;
    for (const Print& print : {faint, blurred, small, short_}) {
        Picture(image, 260, 120, EAN13Modules(text), print);
        reader.LookCloser = true;
        EXPECT_EQ(Text(image), text) << print.dark << " " << print.module << " " << print.height;
        reader.LookCloser = false;
        more += Text(image).empty();
    }
    EXPECT_GE(more, 2);
}

TEST_F(Code1DReaderTest, ACloserLookJoinsTheRowsOfAStackedDatabar)
{
    const std::string upper = "01010100100000000100111111100001011100101101111010";
    const std::string lower = "10111001010110000101111111000111001100111101110101";
    const auto picture = [&](const std::string& above, const std::string& below, double angle) {
        Blank(image, 240, 160);
        Print print;
        print.angle = angle;
        print.height = 20;
        for (const double row : {-0.5, 0.5}) {
            print.x = 120 - row * print.height * std::sin(ToRadians(angle));
            print.y = 80 + row * print.height * std::cos(ToRadians(angle));
            Paint<GrayPixel>(image, row < 0 ? above : below, print);
        }
    };
    for (const double angle : {0.0, 3.0, 180.0}) {
        picture(upper, lower, angle);
        EXPECT_EQ(Text(image), "(01)00012345678905") << angle;
        EXPECT_EQ(reader.Symbology, CodeDatabar);
        EXPECT_NEAR(reader.Width, 98, 4);
        EXPECT_NEAR(reader.Height, 36, 8);
    }
    // Half a symbol is none, nor are halves that do not belong together.
    picture(upper, upper, 0);
    EXPECT_EQ(Text(image), "");
    picture(upper, "10110100011001100101111111110001011011000111000101", 0);
    EXPECT_EQ(Text(image), "");
    reader.LookCloser = false;
    picture(upper, lower, 0);
    EXPECT_EQ(Text(image), "");
}

TEST_F(Code1DReaderTest, NothingIsReadInNoise)
{
    reader.DetectITF14 = reader.DetectMatrix2of5 = reader.DetectMSI = reader.Detect11 = true;
    Blank(image, 200, 200, 128);
    BlurAndNoise(image, 0, 100);
    EXPECT_EQ(Text(image), "");
    BlurAndNoise(image, 1, 0);
    EXPECT_EQ(Text(image), "");
}

TEST_F(Code1DReaderTest, AnyPixelTypeOfGrayOrColor)
{
    const std::string modules = EAN13Modules(text);
    Print print;
    print.x = 130;
    print.y = 50;
    const auto fill = [&]<typename T>(PixelTypes type, T white) {
        image.Set(260, 100, type);
        for (int y = 0; y < 100; y++)
            std::fill(image.Row<T>(y), image.Row<T>(y) + 260, white);
    };
    fill(Gray16, Gray16Pixel{60000});
    print.dark = 1000;
    print.bright = 60000;
    Paint<Gray16Pixel>(image, modules, print);
    EXPECT_EQ(Text(image), text);
    // The largest component counts: bars of any colour are as dark as it.
    fill(Rgba, RgbaPixel{10, 250, 40, 0});
    for (int y = 20; y < 80; y++)
        for (std::size_t k = 0; k < modules.size(); k++)
            if (modules[k] == '1')
                image.Row<RgbaPixel>(y)[35 + 2 * k] = image.Row<RgbaPixel>(y)[36 + 2 * k] = {90, 60, 100, 0};
    EXPECT_EQ(Text(image), text);
    for (const PixelTypes type : {Gray32, Grad, Gray1}) {
        image.Set(60, 60, type);
        EXPECT_FALSE(reader.Decode(image));
        EXPECT_EQ(Status::Error().Code, UnsupportedType);
        EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Code1DReader::Decode");
        EXPECT_EQ(int(reader.NumDecoded), 0);
    }
    Image none;
    EXPECT_FALSE(reader.Decode(none));
    EXPECT_EQ(Status::Error().Code, VoidObject);
}

TEST_F(Code1DReaderTest, SettingsOfAnyValueAndSmallPicturesAreTaken)
{
    for (const auto& [width, height] : {std::pair(1, 1), std::pair(1, 90), std::pair(90, 1), std::pair(7, 5)}) {
        Blank(image, width, height);
        BlurAndNoise(image, 0, 100);
        for (const int directions : {static_cast<int>(Auto), 0, 1, 2, 3, MaxInt, MinInt, -90, -1}) {
            reader.NumDirections = directions;
            EXPECT_EQ(Text(image), "");
        }
    }
    Picture(image, 230, 80, EAN13Modules(text), Print());
    for (const int directions : {static_cast<int>(Auto), 1})
        for (int Code1DReader::*setting : {&Code1DReader::Density, &Code1DReader::Noise, &Code1DReader::Step})
            for (const int extreme : {MinInt, -1, 0, MaxInt}) {
                reader = Code1DReader();
                reader.NumDirections = directions;
                reader.*setting = extreme;
                Text(image);
                reader.LookCloser = false;
                EXPECT_EQ(Text(image), extreme == MaxInt ? "" : text);
            }
}

TEST_F(Code1DReaderTest, AnyPictureIsTakenWithAnySettings)
{
    checks::Noise random{11};
    for (int round = 0; round < 150; round++) {
        const PixelTypes types[] = {Gray, Gray16, Rgb, Rgba};
        image.Set(static_cast<int>(random() >> 8) % 150 + 1, static_cast<int>(random() >> 8) % 90 + 1,
                  types[random() >> 30]);
        const int bytes = RowBytes(image.Width, image.Type);
        for (int y = 0; y < image.Height; y++) // bars of noise, which some rows break
            for (int x = 0; x < bytes; x++)
                image.Row(y)[x] = y == 0 || random() >> 28 == 0 ? random.Byte() : image.Row(y - 1)[x];
        if (round % 3 == 0) image.Window(image.Width / 3, image.Height / 4, image.Width, image.Height);
        reader.NumDirections = round % 2 == 0 ? static_cast<int>(Auto) : static_cast<int>(random() >> 28) - 6;
        reader.Density = static_cast<int>(random() >> 29);
        reader.Noise = static_cast<int>(random() >> 26);
        reader.Step = static_cast<int>(random() >> 25);
        reader.CheckQuietZone = random() >> 31 != 0;
        reader.CheckQuality = true;
        reader.DetectPharmacode = reader.DetectMSI = reader.DetectMatrix2of5 = reader.Detect11 = round % 5 == 0;
        const bool decoded = reader.Decode(image);
        EXPECT_EQ(decoded, reader.NumDecoded > 0);
        for (int i = 0; i < reader.NumDecoded; i++) {
            reader.Choose(i, image);
            EXPECT_EQ(Status::Error().Code, NoError);
            EXPECT_NE(char(reader.AsciiGrade), 0);
            reader.Draw(true, true, true, true);
        }
    }
}

} // namespace
} // namespace Tesk
