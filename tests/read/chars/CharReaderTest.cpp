// The reader as a whole: text drawn, trained and read, what is refused, and what copies hold.
#include "read/CharReader.h"
#include "Failures.h"
#include "foundation/Graph.h"
#include "image/Operator.h"
#include "read/chars/Boxes.h"

#include <cstdio>
#include <string>

using namespace Tesk;
using namespace Tesk::checks;

namespace {

using CharReaderTest = IgnoringFailures;

std::string TextOf(const CharReader& reader)
{
    return static_cast<const char*>(reader.AsciiString);
}

TEST_F(CharReaderTest, ReadsWhatItWasTrainedOn)
{
    Image image;
    DrawText(image, 500, 100, "0123456789");
    CharReader reader;
    reader.CharsSegment(image);
    ASSERT_EQ(reader.NumChars, 10);
    reader.FontStringInsert(image, "0123456789");
    EXPECT_EQ(reader.NumFontChars, 10);
    reader.CharsDecode(image);
    EXPECT_EQ(TextOf(reader), "0123456789");
    EXPECT_NEAR(reader.AverageScore, 1, 1e-6);
    EXPECT_NEAR(reader.AverageContrast, 1, 1e-6);

    DrawText(image, 500, 100, "2024 7531");
    reader.CharsRead(image);
    EXPECT_EQ(TextOf(reader), "2024 7531");
    EXPECT_EQ(std::wstring(reader.UnicodeString), L"2024 7531");
    EXPECT_GT(reader.AverageScore, 0.9);
    for (int i = 0; i < reader.NumChars; i++) {
        EXPECT_GT(reader.CharScore(i), 0.8) << i;
        EXPECT_FLOAT_EQ(reader.FloatFeature(i, 61), static_cast<float>(reader.CharScore(i)));
        EXPECT_EQ(reader.IntFeature(i, 60), reader.MatchingFontChar(i));
    }
    EXPECT_EQ(reader.FontCharAt(reader.MatchingFontChar(0)).Code, '2');

    // fixed characters are taken as they are
    reader.AsciiFilter = "X%9%-%9";
    reader.CharsDecode(image);
    EXPECT_EQ(TextOf(reader), "X04 7531");
    EXPECT_EQ(reader.MatchingFontChar(0), -2);
    EXPECT_EQ(reader.CharScore(0), 1.0);

    // a font of the other polarity scores by the reverse
    reader.AsciiFilter = "%*";
    reader.WhiteOnBlack = true;
    reader.CharsDecode(image);
    EXPECT_LT(reader.CharScore(0), 0.8);
    Operator::Invert(image, image);
    reader.CharsRead(image);
    EXPECT_EQ(TextOf(reader), "2024 7531");
}

TEST_F(CharReaderTest, RefusesWhatItCannotRead)
{
    CharReader reader;
    Image image, none, gradient;
    Blocks(image, 100, 100, {});
    const auto refused = [&](const wchar_t* message, int code) {
        EXPECT_EQ(Status::Error().Code, code);
        EXPECT_EQ(Message(), message);
    };
    reader.CharsRead(image);
    refused(L"The font is void", OutOfRange);
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::CharReader::CharsRead");
    reader.CharsDecode(image);
    refused(L"The font is void", OutOfRange);
    reader.Optimize(true);
    refused(L"The font is void", OutOfRange);
    reader.CharsSegment(image);
    refused(L"No character was found in the inspected area", OutOfRange);
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::CharReader::CharsSegment");
    EXPECT_EQ(reader.NumChars, 0);
    reader.CharsSegment(none);
    EXPECT_EQ(Status::Error().Code, VoidObject);
    gradient.Set(20, 20, Grad);
    reader.CharsSegment(gradient);
    refused(L"The image type (Gradient) is not supported for this operation", UnsupportedType);

    reader.FontCharInsert(image, 'x');
    EXPECT_EQ(reader.NumFontChars, 1);
    reader.AsciiFilter = "";
    Blocks(image, 100, 100, {{30, 30, 24, 40}});
    reader.CharsRead(image);
    refused(L"Void filter string", OutOfRange);
    reader.CharsDecode(image);
    refused(L"Void filter string", OutOfRange);
    reader.CharsSegment(image);
    ASSERT_EQ(reader.NumChars, 1);
    reader.FontStringInsert(image, "ab");
    refused(L"The string length (2) differs from the number of segmented characters (1)", OutOfRange);
}

TEST_F(CharReaderTest, RefusesIndicesOfNoCharacter)
{
    CharReader reader;
    Image image, dst;
    Blocks(image, 200, 100, {{30, 30, 24, 40}, {70, 30, 24, 40}});
    reader.CharsSegment(image);
    ASSERT_EQ(reader.NumChars, 2);
    const wchar_t* const message = L"The character index (2) is out of the available range [0..1]";
    EXPECT_EQ(reader.MatchingFontChar(2), -2);
    EXPECT_EQ(Message(), message);
    reader.CharScore(2);
    EXPECT_EQ(Message(), message);
    reader.CharContrast(2);
    EXPECT_EQ(Message(), message);
    reader.CharTrueWidth(2);
    EXPECT_EQ(Message(), message);
    EXPECT_EQ(reader.Separator(-1), 0);
    EXPECT_EQ(Message(), L"The character index (-1) is out of the available range [0..1]");
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    reader.CharThumbnail(image, 2, dst, true);
    EXPECT_EQ(Message(), L"The character index (2) must be in range [0..1]");
    EXPECT_EQ(dst.Type, Undefined);
    reader.FontCharDelete(0);
    EXPECT_EQ(Message(), L"No character is available");
    reader.FontStringInsert(image, L"ab");
    reader.FontCharDelete(2);
    EXPECT_EQ(Message(), L"The character index (2) must be in range [0..1]");
    EXPECT_EQ(reader.FontCharAt(2).Sample.Type, Undefined);
    EXPECT_EQ(reader.FontCharAt(1).Code, 'b');
    reader.FontCharDelete(-1);
    EXPECT_EQ(reader.NumFontChars, 0);
}

TEST_F(CharReaderTest, ThumbnailsAreWindowsOfTheBoxes)
{
    CharReader reader;
    FixSize(reader);
    Image image, dst;
    Blocks(image, 200, 100, {{30, 30, 24, 40}});
    reader.CharsSegment(image);
    reader.CharThumbnail(image, 0, dst, false);
    ASSERT_EQ(dst.Width, 32);
    ASSERT_EQ(dst.Height, 40);
    EXPECT_EQ(dst.Row(0)[3], 255);
    EXPECT_EQ(dst.Row(0)[4], 0);
    EXPECT_EQ(dst.Row(39)[27], 0);
    EXPECT_EQ(dst.Row(39)[28], 255);
    reader.CharThumbnail(image, 0, dst, true);
    EXPECT_EQ(dst.Width, 16);
    EXPECT_EQ(dst.Height, 20);
    EXPECT_EQ(dst.Row(10)[1], 255);
    EXPECT_EQ(dst.Row(10)[2], 0);
}

TEST_F(CharReaderTest, CopiesHaveTheirOwnFontAndCharacters)
{
    CharReader reader;
    Image image;
    Blocks(image, 200, 100, {{30, 30, 24, 40}, {70, 30, 24, 40}});
    reader.CharsSegment(image);
    reader.FontStringInsert(image, "ab");
    CharReader copy = reader;
    reader.FontCharDelete(-1);
    reader.PresetBoxes(0);
    EXPECT_EQ(copy.NumFontChars, 2);
    EXPECT_EQ(copy.NumChars, 2);
    copy.CharsDecode(image);
    EXPECT_EQ(TextOf(copy).size(), 2u);
    EXPECT_EQ(copy.FontCharAt(1).Code, 'b');
}

TEST_F(CharReaderTest, SharingKeepsTheSettingsThatWereChanged)
{
    CharReader source, shadow;
    Image image;
    Blocks(image, 200, 100, {{30, 30, 20, 30}, {70, 30, 20, 30}});
    source.MinimumScore = 0.5;
    shadow.ShallowCopy(source, true);
    EXPECT_EQ(shadow.MinimumScore, 0.5);
    shadow.AsciiFilter = "%9";
    source.CharsSegment(image);
    source.FontStringInsert(image, "ab");
    source.MinimumScore = 0.6;
    source.AsciiFilter = "%a";
    shadow.ShallowCopy(source, false);
    EXPECT_EQ(shadow.NumFontChars, 2);
    EXPECT_EQ(shadow.NumChars, 2);
    EXPECT_EQ(shadow.MinimumScore, 0.6) << "it follows";
    EXPECT_EQ(shadow.AsciiFilter, "%9") << "it was changed here";
    EXPECT_EQ(shadow.CharHeight, 30) << "as it was guessed there";

    // what is guessed here is no choice that stays
    Blocks(image, 200, 100, {{30, 30, 30, 45}, {80, 30, 30, 45}});
    shadow.CharsSegment(image);
    ASSERT_EQ(shadow.CharHeight, 45);
    shadow.ShallowCopy(source, false);
    EXPECT_EQ(shadow.CharHeight, 30);
    shadow.ShallowCopy(source, true);
    EXPECT_EQ(shadow.AsciiFilter, "%a");
    shadow.ShallowCopy(shadow, false);
    EXPECT_EQ(shadow.NumFontChars, 2);
}

TEST_F(CharReaderTest, TellsWhatWasReadWhateverItsScore)
{
    CharReader reader;
    Image image;
    DrawText(image, 500, 100, "48");
    reader.CharsSegment(image);
    ASSERT_EQ(reader.NumChars, 2);
    EXPECT_EQ(reader.CharCode(0), 0) << "nothing is read yet";
    reader.FontStringInsert(image, "48");
    reader.MinimumScore = 1.1;
    reader.DiscardBadScores = true;
    reader.CharsDecode(image);
    EXPECT_EQ(TextOf(reader), "??");
    EXPECT_EQ(reader.CharCode(0), L'4');
    EXPECT_EQ(reader.CharCode(1), L'8');
    EXPECT_EQ(reader.CharCode(2), 0);
    EXPECT_EQ(Message(), L"The character index (2) is out of the available range [0..1]");
    reader.DrawChar(-1);
    EXPECT_EQ(Message(), L"The character index (-1) is out of the available range [0..1]");
}

TEST_F(CharReaderTest, HitFontCharMeetsWhatIsDrawn)
{
    CharReader reader;
    Image image;
    Blocks(image, 24, 40, {{4, 4, 10, 30}});
    for (const char c : {'c', 'a', 'b'})
        reader.FontCharInsert(image, c);
    // thumbnails are 16 by 20; the third begins a new row
    const auto hit = [&](int x, int y) {
        reader.HitFontChar(x, y, 10, 10, 50, 5, 7, false, true, false);
        return int(reader.HitFontIndex);
    };
    EXPECT_EQ(hit(10, 10), 0);
    EXPECT_EQ(reader.Handle, AllHandle);
    EXPECT_EQ(hit(25, 29), 0);
    EXPECT_EQ(hit(26, 29), -1);
    EXPECT_EQ(reader.Handle, NoHandle);
    EXPECT_EQ(hit(31, 10), 1);
    EXPECT_EQ(hit(10, 36), -1);
    EXPECT_EQ(hit(10, 37), 2);
    reader.ChooseFontChar(1);
    EXPECT_EQ(reader.HitFontIndex, 1);
    EXPECT_EQ(reader.Handle, AllHandle);
    reader.ChooseFontChar(3);
    EXPECT_EQ(Message(), L"The character index (3) must be in range [0..2]");
    EXPECT_EQ(reader.HitFontIndex, 1);
    reader.ChooseFontChar(-1);
    EXPECT_EQ(reader.HitFontIndex, -1);
    EXPECT_EQ(reader.Handle, NoHandle);
}

/// The pixel that drawing leaves at a place of a black picture.
template <typename F>
RgbPixel Drawn(int x, int y, F draw)
{
    Image picture;
    picture.Set(300, 200, Rgb);
    Operator::Copy(0, picture);
    const GraphSettings settings(1.0);
    Graph::BeginImageTarget(picture);
    draw();
    Graph::EndImageTarget(picture);
    return picture.PixelRgb(x, y);
}

bool Is(RgbPixel pixel, int red, int green, int blue)
{
    return pixel.Red == red && pixel.Green == green && pixel.Blue == blue;
}

TEST_F(CharReaderTest, DrawsBoxesLayoutsAndFonts)
{
    CharReader reader;
    FixSize(reader);
    Image image;
    Blocks(image, 300, 200, {{130, 90, 24, 40}});
    image.Window(100, 50, 150, 120);
    reader.CharsSegment(image);
    ASSERT_EQ(reader.NumChars, 1);
    const auto boxes = [&] { reader.Draw(false); };
    EXPECT_TRUE(Is(Drawn(126, 110, boxes), 0, 255, 0)); // the window's corner counts
    EXPECT_TRUE(Is(Drawn(140, 90, boxes), 0, 255, 0));
    EXPECT_TRUE(Is(Drawn(140, 110, boxes), 0, 0, 0));

    const auto one = [&] {
        Graph::LineColor = Blue;
        reader.DrawChar(0);
    };
    EXPECT_TRUE(Is(Drawn(126, 110, one), 0, 0, 255));

    reader.TakeLayout();
    reader.LayoutMode = RigidLayout;
    Blocks(image, 300, 200, {{135, 97, 24, 40}});
    image.Window(100, 50, 150, 120);
    reader.CharsSegment(image);
    const auto layout = [&] { reader.DrawLayout(); };
    EXPECT_TRUE(Is(Drawn(131, 110, layout), 255, 0, 255));
    EXPECT_TRUE(Is(Drawn(140, 97, layout), 255, 0, 255));

    reader.FontStringInsert(image, "x");
    const auto font = [&] { reader.DrawFontChars(50, 60, 200, 5, 5, true, false, false); };
    EXPECT_TRUE(Is(Drawn(50, 70, font), 0, 255, 0));
    EXPECT_TRUE(Is(Drawn(53, 70, font), 255, 255, 255)) << "the sample's background";
    EXPECT_TRUE(Is(Drawn(60, 70, font), 0, 0, 0));
    reader.HitFontChar(60, 70, 50, 60, 200, 5, 5, true, false, false);
    EXPECT_TRUE(Is(Drawn(50, 70, font), 255, 0, 0));
    EXPECT_TRUE(Is(Drawn(50, 70, [&] { reader.DrawFontChars(50, 60, 200, 5, 5, true, false, true); }), 0, 0, 0))
        << "no subset was chosen";
}

TEST_F(CharReaderTest, PrintsItsSettingsOneALine)
{
    CharReader reader;
    reader.CharWidth = 17;
    reader.OCVScoring = true;
    std::FILE* const former = TextOutput();
    std::FILE* const file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    TextOutput() = file;
    reader.Print("of labels");
    TextOutput() = former;
    std::rewind(file);
    std::string text;
    for (int c = std::fgetc(file); c != EOF; c = std::fgetc(file))
        text += static_cast<char>(c);
    std::fclose(file);
    EXPECT_EQ(text.rfind("CharReader of labels\n", 0), 0u);
    for (const char* line : {"\nCharWidth= 17\n", "\nOCVScoring= true\n", "\nThreshold= Auto\n", "\nAverageScore= -1\n",
                             "\nAsciiFilter= %*\n", "\nGlobalFilter= *\n"})
        EXPECT_NE(text.find(line), std::string::npos) << line;
}

} // namespace
