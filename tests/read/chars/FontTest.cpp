#include "read/chars/Font.h"

#include "Failures.h"
#include "Glyphs.h"

#include <gtest/gtest.h>

#include <string>

namespace Tesk {
namespace {

class FontTest : public checks::IgnoringFailures
{
protected:
    void Insert(char code, std::uint32_t seed, int index = -1, bool whiteOnBlack = false)
    {
        Image sample;
        checks::Fill(sample, 32, 40, seed);
        ASSERT_EQ(
            font.Insert(sample, static_cast<std::uint16_t>(code), static_cast<int>(seed), whiteOnBlack, index, size),
            NoError);
    }
    /// The same sample as another seed gives, with one pixel brighter.
    void InsertNearCopy(char code, std::uint32_t seed, int at)
    {
        Image sample;
        checks::Fill(sample, 32, 40, seed);
        sample.Row(at)[at] = static_cast<std::uint8_t>(sample.Row(at)[at] ^ 16);
        ASSERT_EQ(font.Insert(sample, static_cast<std::uint16_t>(code), 0, false, -1, size), NoError);
    }
    std::string Codes() const
    {
        std::string codes;
        for (int i = 0; i < font.Count(); i++)
            codes += static_cast<char>(font[i].Code);
        return codes;
    }

    chars::Font font;
    chars::ThumbnailSize size;
};

TEST_F(FontTest, KeepsCodesInOrderAndEqualOnesInThatOfTraining)
{
    const char* order = "CABAC";
    for (std::uint32_t i = 0; i < 5; i++)
        Insert(order[i], i + 1);
    EXPECT_EQ(Codes(), "AABCC");
    EXPECT_EQ(font[0].Class, 2);
    EXPECT_EQ(font[1].Class, 4);
    EXPECT_EQ(font[4].Class, 5);
    Insert('Z', 6, 1);
    EXPECT_EQ(Codes(), "AZABCC");
    Insert('Y', 7, 99);
    EXPECT_EQ(Codes(), "AZABCCY");
}

TEST_F(FontTest, StatisticsAreThoseOfTheThumbnail)
{
    Image sample;
    checks::Fill(sample, 2, {0, 10, 20, 30, 40, 50});
    size = {1, 3, 2, false};
    ASSERT_EQ(font.Insert(sample, 'A', 3, true, -1, size), NoError);
    const FontChar& trained = font[0];
    // Pixels 5, 25, 45: 3 * (25 + 625 + 2025) - 75 * 75
    EXPECT_EQ(trained.SampleCount, 3);
    EXPECT_EQ(trained.Sum, 75);
    EXPECT_EQ(trained.Spread, 2400);
    EXPECT_EQ(trained.InverseNorm, 1 / std::sqrt(2400.0));
    EXPECT_TRUE(trained.WhiteOnBlack);
    EXPECT_EQ(+trained.Sample.Width, 2);
    EXPECT_EQ(+trained.Thumbnail.Height, 3);
    EXPECT_EQ(trained.Thumbnail.Row(2)[0], 45);
    checks::Fill(sample, 4, 4, 1, 1);
    ASSERT_EQ(font.Insert(sample, 'B', 0, false, -1, size), NoError);
    EXPECT_EQ(font[1].InverseNorm, 0);
}

TEST_F(FontTest, WindowsAreTrainedAlone)
{
    Image image;
    checks::Fill(image, 40, 40, 2);
    image.Window(5, 6, 8, 10);
    ASSERT_EQ(font.Insert(image, 'A', 0, false, -1, size), NoError);
    EXPECT_EQ(+font[0].Sample.StoreWidth, 8);
    EXPECT_EQ(font[0].Sample.Row(9)[7], image.Row(9)[7]);
    image.Row(9)[7] ^= 1;
    EXPECT_NE(font[0].Sample.Row(9)[7], image.Row(9)[7]);
}

TEST_F(FontTest, VariableWidthFollowsTheSample)
{
    size.variableWidth = true;
    Image sample;
    checks::Fill(sample, 21, 40, 2);
    ASSERT_EQ(font.Insert(sample, 'i', 0, false, -1, size), NoError);
    EXPECT_EQ(+font[0].Thumbnail.Width, 11);
    size.variableWidth = false;
    ASSERT_EQ(font.Rebuild(size), NoError);
    EXPECT_EQ(+font[0].Thumbnail.Width, 16);
    EXPECT_EQ(font[0].SampleCount, 320);
}

TEST_F(FontTest, RefusesIndicesBeyondTheFont)
{
    EXPECT_EQ(font.Delete(0), OutOfRange);
    EXPECT_EQ(checks::Message(), L"No character is available");
    EXPECT_EQ(font.Delete(-1), NoError);
    Insert('A', 1);
    Insert('B', 2);
    for (const int index : {2, -2}) {
        EXPECT_EQ(font.Delete(index), OutOfRange);
        EXPECT_EQ(checks::Message(), L"The character index (" + std::to_wstring(index) + L") must be in range [0..1]");
    }
    EXPECT_EQ(font.Delete(0), NoError);
    EXPECT_EQ(Codes(), "B");
    EXPECT_EQ(font.Delete(-1), NoError);
    EXPECT_TRUE(font.IsVoid());
}

TEST_F(FontTest, RefusesSamplesThatAreNoGrayImages)
{
    Image image;
    EXPECT_EQ(font.Insert(image, 'A', 0, false, -1, size), VoidObject);
    image.Set(4, 4, Rgb);
    EXPECT_NE(font.Insert(image, 'A', 0, false, -1, size), NoError);
    EXPECT_TRUE(font.IsVoid());
}

TEST_F(FontTest, CopiesDoNotFollowEachOther)
{
    Insert('A', 1);
    Insert('B', 2);
    chars::Font copy(font);
    ASSERT_EQ(copy.FindSafeScores(), NoError);
    EXPECT_GT(copy[0].SafeScore, -1);
    EXPECT_EQ(font[0].SafeScore, -1);
    ASSERT_EQ(copy.Delete(0), NoError);
    EXPECT_EQ(font.Count(), 2);
}

TEST_F(FontTest, SafeScoresAreTheBestAgainstOtherCodes)
{
    const char* codes = "AABCD";
    for (std::uint32_t i = 0; i < 5; i++)
        Insert(codes[i], i + 1);
    Image flat;
    checks::Fill(flat, 32, 40, 1, 1);
    ASSERT_EQ(font.Insert(flat, 'E', 0, false, -1, size), NoError);
    EXPECT_FALSE(font.HasSafeScores());
    ASSERT_EQ(font.FindSafeScores(), NoError);
    EXPECT_TRUE(font.HasSafeScores());
    for (int i = 0; i < font.Count(); i++) {
        double best = -1;
        for (int j = 0; j < font.Count(); j++)
            if (font[j].Code != font[i].Code)
                best = std::max(best, checks::SlowScore(font[j].Thumbnail, font[i].Thumbnail));
        EXPECT_NEAR(font[i].SafeScore, best, 1e-9) << i;
    }
    EXPECT_EQ(font[5].SafeScore, -1); // flat itself; to the others it scores 0
    Insert('F', 9);
    EXPECT_FALSE(font.HasSafeScores());
}

TEST_F(FontTest, OptimizeKeepsOneOfNearCopies)
{
    for (const char code : {'A', 'B', 'C'})
        for (int copy = 0; copy < 5; copy++)
            InsertNearCopy(code, static_cast<std::uint32_t>(code), 3 * copy);
    ASSERT_EQ(font.Optimize(true, L'*', false), NoError);
    EXPECT_EQ(font.Optimal(), (std::vector<int>{0, 5, 10}));
    ASSERT_EQ(font.Optimize(false, L'*', false), NoError);
    EXPECT_TRUE(font.Optimal().empty());
}

TEST_F(FontTest, OptimizeChoosesWhatReadsAllOthers)
{
    // Noise of each code about its own glyph, so much that one sample does not read all others.
    checks::Noise noise{77};
    for (int i = 0; i < 60; i++) {
        Image sample;
        const char code = static_cast<char>('0' + i % 10);
        checks::Fill(sample, 32, 40, 500 + static_cast<std::uint32_t>(code), 60);
        for (int y = 0; y < 40; y++)
            for (int x = 0; x < 32; x++)
                sample.Row(y)[x] = static_cast<std::uint8_t>(sample.Row(y)[x] + noise.Byte() * 190 / 256);
        ASSERT_EQ(font.Insert(sample, static_cast<std::uint16_t>(code), 0, false, -1, size), NoError);
    }
    ASSERT_EQ(font.Optimize(true, L'9', false), NoError);
    const std::vector<int>& chosen = font.Optimal();
    EXPECT_GT(chosen.size(), 10u);
    EXPECT_LT(chosen.size(), 60u);
    EXPECT_TRUE(std::is_sorted(chosen.begin(), chosen.end()));
    for (int i = 0; i < font.Count(); i++) {
        int nearest = -1;
        double best = -1;
        for (const int index : chosen) {
            const double score = checks::SlowScore(font[index].Thumbnail, font[i].Thumbnail);
            if (score > best) {
                best = score;
                nearest = index;
            }
        }
        ASSERT_GE(nearest, 0);
        EXPECT_EQ(font[nearest].Code, font[i].Code) << i;
    }
}

TEST_F(FontTest, OptimizeTakesTheClassAloneAndIsDroppedByChanges)
{
    EXPECT_EQ(font.Optimize(true, L'*', false), OutOfRange);
    EXPECT_EQ(checks::Message(), L"The font is void");
    Insert('1', 1);
    Insert('A', 2);
    ASSERT_EQ(font.Optimize(true, L'a', false), NoError);
    EXPECT_EQ(font.Optimal(), std::vector<int>{1});
    Insert('B', 3);
    EXPECT_TRUE(font.Optimal().empty());
    ASSERT_EQ(font.Optimize(true, L'l', false), NoError);
    EXPECT_TRUE(font.Optimal().empty());
}

} // namespace
} // namespace Tesk
