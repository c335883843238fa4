#include "read/chars/FontSource.h"

#include "Glyphs.h"
#include "read/chars/Font.h"

#include <gtest/gtest.h>

namespace Tesk {
namespace {

class FontSourceTest : public ::testing::Test
{
protected:
    void Insert(std::initializer_list<int> pixels, int code, int userClass)
    {
        Image sample;
        checks::Fill(sample, size.fontWidth, pixels);
        ASSERT_EQ(font.Insert(sample, static_cast<std::uint16_t>(code), userClass, false, -1, size), 0);
    }

    chars::ThumbnailSize size{3, 2, 3, false};
    chars::Font font;
};

TEST_F(FontSourceTest, ATableOfThumbnails)
{
    Insert({1, 20, 255, 0, 0, 4}, 'A', 7);
    EXPECT_EQ(chars::TableSource(font, 3, 2), "\tconst int FontCharWidth= 3, FontCharHeight= 2;\n"
                                              "\tconst int NumFontChars= 1;\n"
                                              "\tFontChar Thumb[NumFontChars]=\n\t{\n"
                                              "\t\t{\n\t\t\t'A', 6, 280, 314252,\n\t\t\t{\n\t\t\t"
                                              "  1,  20, 255,   0,   0,   4, \n\t\t\t}\n\t\t},\n"
                                              "\t};\n\n");
    EXPECT_EQ(chars::TableSource(chars::Font(), 16, 20), "\tconst int FontCharWidth= 16, FontCharHeight= 20;\n"
                                                         "\tconst int NumFontChars= 0;\n"
                                                         "\tFontChar Thumb[NumFontChars]=\n\t{\n\t};\n\n");
}

TEST_F(FontSourceTest, ATableBreaksItsLinesAfterSixteenPixels)
{
    size = {8, 4, 8, false};
    Insert({1, 1, 1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 2, 2, 2, 3, 3, 3, 3, 3, 3, 3, 3, 4, 4, 4, 4, 4, 4, 4, 4}, 'B', 0);
    const std::string text = chars::TableSource(font, 8, 4);
    const std::string ones = "  1,   1,   1,   1,   1,   1,   1,   1, ",
                      twos = "  2,   2,   2,   2,   2,   2,   2,   2, ",
                      threes = "  3,   3,   3,   3,   3,   3,   3,   3, ",
                      fours = "  4,   4,   4,   4,   4,   4,   4,   4, ";
    EXPECT_NE(text.find("{\n\t\t\t" + ones + twos + "\n\t\t\t" + threes + fours + "\n\t\t\t}\n\t\t},\n"),
              std::string::npos);
}

TEST_F(FontSourceTest, ArraysOfPixelsWithATableOfThem)
{
    Insert({1, 20, 255, 0, 0, 4}, 'A', 7);
    Insert({9, 9, 9, 9, 9, 9}, 'B', -1);
    EXPECT_EQ(chars::ArraysSource(font), "// \"A\" (7)\nstatic byte _CHAR_0[3 * 2]=\n{\n"
                                         "  1,  20, 255, \n  0,   0,   4, \n};\n\n"
                                         "// \"B\" (-1)\nstatic byte _CHAR_1[3 * 2]=\n{\n"
                                         "  9,   9,   9, \n  9,   9,   9, \n};\n\n"
                                         "FontChar Captcha[2]=\n{\n"
                                         "{ 65, 7, 3, 2, 6., 280., 314252., _CHAR_0 },\n"
                                         "{ 66, -1, 3, 2, 6., 54., 0., _CHAR_1 },\n};\n\n");
}

} // namespace
} // namespace Tesk
