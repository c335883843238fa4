#include "read/chars/Compare.h"

#include "Glyphs.h"
#include "foundation/Status.h"

#include <gtest/gtest.h>

#include <vector>

namespace Tesk {
namespace {

using chars::Match;

Match Compared(const Image& font, const Image& image)
{
    chars::Packed packed;
    packed.Take(font);
    chars::Probe probe;
    probe.Begin(image.Width, image.Height, 1);
    probe.Put(0, image.Row(0), image.Pitch);
    return chars::Compare(packed, probe);
}

TEST(CompareTest, EqualsTheCorrelationOfTheCommonMiddle)
{
    const int sizes[][4] = {{16, 20, 16, 20},     {16, 20, 11, 20},     {11, 20, 16, 20}, {17, 20, 40, 20},
                            {33, 20, 16, 20},     {16, 20, 16, 24},     {16, 24, 15, 20}, {1, 2, 3, 2},
                            {256, 256, 256, 256}, {1024, 256, 300, 255}};
    std::uint32_t seed = 1;
    for (const auto& [fw, fh, iw, ih] : sizes) {
        Image font, image;
        checks::Fill(font, fw, fh, seed++);
        checks::Fill(image, iw, ih, seed++, 100);
        double contrast = 0;
        const double score = checks::SlowScore(font, image, &contrast);
        const Match match = Compared(font, image);
        EXPECT_NEAR(match.score, score, 1e-9) << fw << " " << iw;
        EXPECT_NEAR(match.contrast, contrast, 1e-9) << fw << " " << iw;
    }
}

TEST(CompareTest, ALinearFitScoresExactlyOneWhateverBrightnessAndGain)
{
    Image font, image;
    checks::Fill(font, 16, 20, 3, 100);
    image = font;
    EXPECT_EQ(Compared(font, image).score, 1);
    EXPECT_EQ(Compared(font, image).contrast, 1);
    for (int y = 0; y < image.Height; y++)
        for (int x = 0; x < image.Width; x++)
            image.Row(y)[x] = static_cast<std::uint8_t>(2 * font.Row(y)[x] + 41);
    EXPECT_EQ(Compared(font, image).score, 1);
    EXPECT_EQ(Compared(font, image).contrast, 0.5);
    EXPECT_EQ(Compared(image, font).contrast, 2);
    for (int y = 0; y < image.Height; y++)
        for (int x = 0; x < image.Width; x++)
            image.Row(y)[x] = static_cast<std::uint8_t>(255 - font.Row(y)[x]);
    EXPECT_EQ(Compared(font, image).score, -1);
    EXPECT_EQ(Compared(font, image).contrast, -1);
}

TEST(CompareTest, FlatThumbnailsHaveNoFit)
{
    Image flat, image;
    checks::Fill(flat, 4, 3, 1, 1);
    checks::Fill(image, 4, 3, 2);
    EXPECT_EQ(Compared(image, flat).score, -1);
    EXPECT_EQ(Compared(image, flat).contrast, 0);
    EXPECT_EQ(Compared(flat, image).score, 0);
    EXPECT_EQ(Compared(flat, image).contrast, 0);
    EXPECT_EQ(Compared(flat, flat).score, -1);
}

TEST(CompareTest, HeightsMayDifferByFour)
{
    Image font, image;
    checks::Fill(font, 8, 10, 1);
    checks::Crop(font, 0, 0, 8, 6, image);
    EXPECT_EQ(Compared(font, image).score, 1); // of the upper rows
    checks::Crop(font, 0, 0, 8, 5, image);
    EXPECT_EQ(Compared(font, image).score, -1);
    EXPECT_EQ(Compared(image, font).score, -1);
}

class BestMatchTest : public ::testing::Test
{
protected:
    void Look(const Image& font, bool opposite, bool variableWidth = false)
    {
        chars::Packed packed;
        packed.Take(font);
        probe.Begin(image.Width, image.Height, 1);
        probe.Put(0, image.Row(0), image.Pitch);
        best.Try(packed, opposite, variableWidth, next++, 0, probe);
    }

    Image image;
    chars::Probe probe;
    chars::BestMatch best;
    int next = 0;
};

TEST_F(BestMatchTest, TheOppositePolarityScoresByTheReverseImage)
{
    Image reverse;
    checks::Fill(image, 8, 8, 4);
    reverse = image;
    for (int y = 0; y < 8; y++)
        for (int x = 0; x < 8; x++)
            reverse.Row(y)[x] = static_cast<std::uint8_t>(255 - image.Row(y)[x]);
    Look(image, true);
    EXPECT_EQ(best.fontChar, -1);
    Look(reverse, true);
    EXPECT_EQ(best.fontChar, 1);
    EXPECT_EQ(best.score, 1);
    EXPECT_EQ(best.contrast, 1);
}

TEST_F(BestMatchTest, OnlyAGreaterScoreTakesOver)
{
    checks::Fill(image, 8, 8, 4);
    Image other;
    checks::Fill(other, 8, 8, 5);
    Look(other, false);
    Look(image, false);
    Look(image, false);
    Look(other, false);
    EXPECT_EQ(best.fontChar, 1);
}

TEST_F(BestMatchTest, VariableWidthLeavesOutWhatIsOverTwiceOrUnderHalfAsWide)
{
    Image font;
    checks::Fill(image, 8, 4, 4);
    for (const int width : {3, 17}) {
        checks::Fill(font, width, 4, 6);
        Look(font, false, true);
        EXPECT_EQ(best.fontChar, -1) << width;
    }
    for (const int width : {4, 16}) {
        checks::Fill(font, width, 4, 6);
        best = {};
        Look(font, checks::SlowScore(font, image) < 0, true);
        EXPECT_GE(best.fontChar, 0) << width;
    }
}

TEST(CompareKernelsTest, SumsAreEqualAtEachLevel)
{
    const SIMDLevels before = Status::SIMDLevel();
    checks::Noise noise{8};
    for (const std::size_t width : {16, 32, 48})
        for (std::size_t count = 1; count <= 9; count++) {
            const std::size_t rows = 7, stride = width + (count % 2) * 16, step = rows * stride;
            std::vector<std::int16_t> font(step + 16), images(step * count + 16);
            for (std::int16_t& pixel : font)
                pixel = noise.Byte();
            for (std::int16_t& pixel : images)
                pixel = noise.Byte();
            const kernels::ThumbnailRows some{images.data(), stride, step, count, width, rows};
            std::vector<std::int64_t> plain(count);
            kernels::SumProductsPlain(font.data(), stride, some, plain.data());
            for (const SIMDLevels level : {NoSIMD, SIMDSSE2, SIMDSSE4, SIMDAVX2, SIMDAVX512}) {
                Status::SIMDLevel(level);
                std::vector<std::int64_t> sums(count, -1);
                kernels::SumProducts(font.data(), stride, some, sums.data());
                EXPECT_EQ(sums, plain) << level << " " << width << " " << count;
            }
        }
    Status::SIMDLevel(before);
}

TEST(CompareKernelsTest, TheLargestSumsAreExact)
{
    const SIMDLevels before = Status::SIMDLevel();
    constexpr std::size_t width = 256, rows = 512, all = width * rows;
    const std::vector<std::int16_t> white(all + 16, 255);
    for (const SIMDLevels level : {NoSIMD, SIMDSSE4, SIMDAVX2}) {
        Status::SIMDLevel(level);
        for (const std::size_t some : {rows, rows / 2, rows / 2 + 1}) {
            std::int64_t sum = 0;
            kernels::SumProducts(white.data(), width, {white.data(), width, all, 1, width, some}, &sum);
            EXPECT_EQ(sum, static_cast<std::int64_t>(width * some) * 255 * 255) << level;
        }
    }
    Status::SIMDLevel(before);
}

} // namespace
} // namespace Tesk
