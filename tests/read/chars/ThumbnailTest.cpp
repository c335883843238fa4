#include "read/chars/Thumbnail.h"

#include "Glyphs.h"

#include <gtest/gtest.h>

#include <vector>

namespace Tesk {
namespace {

std::vector<int> Resampled(const Image& src, int width, int height)
{
    Image dst;
    dst.Set(width, height, Gray);
    chars::Resampler resampler;
    chars::MakeThumbnail(src, dst, resampler);
    std::vector<int> pixels;
    for (int y = 0; y < height; y++)
        pixels.insert(pixels.end(), dst.Row(y), dst.Row(y) + width);
    return pixels;
}

using Pixels = std::vector<int>;

TEST(ThumbnailTest, ReducesByExactFractionsOfWhatASampleCovers)
{
    Image image;
    // (2 * 10 + 20) / 3, (20 + 2 * 40) / 3
    checks::Fill(image, 3, {10, 20, 40});
    EXPECT_EQ(Resampled(image, 2, 1), (Pixels{13, 33}));
    checks::Fill(image, 1, {10, 20, 40});
    EXPECT_EQ(Resampled(image, 1, 2), (Pixels{13, 33}));
    // (3 * 1 + 2 * 2) / 5, (2 + 3 * 3 + 4) / 5 of the middle, (2 * 4 + 3 * 5) / 5: in thirds of a pixel
    checks::Fill(image, 5, {1, 2, 3, 4, 5});
    EXPECT_EQ(Resampled(image, 3, 1), (Pixels{(3 * 1 + 2 * 2) / 5, (1 * 2 + 3 * 3 + 1 * 4) / 5, (2 * 4 + 3 * 5) / 5}));
}

TEST(ThumbnailTest, EnlargesLinearlyBetweenTheCentresOfPixels)
{
    Image image;
    checks::Fill(image, 2, {0, 100});
    EXPECT_EQ(Resampled(image, 4, 1), (Pixels{0, 25, 75, 100}));
    checks::Fill(image, 1, {200, 101});
    // The centre of the middle one of three lies halfway: (200 + 101) / 2, truncated.
    EXPECT_EQ(Resampled(image, 1, 3), (Pixels{200, 150, 101}));
    checks::Fill(image, 1, {7});
    EXPECT_EQ(Resampled(image, 3, 2), (Pixels(6, 7)));
}

TEST(ThumbnailTest, ColumnsComeBeforeRows)
{
    Image image;
    // Columns first: 3 / 2 = 1 and 1 / 2 = 0, then 1 / 2 = 0. Rows first would give 1 and 1, then 1.
    checks::Fill(image, 2, {1, 1, 2, 0});
    EXPECT_EQ(Resampled(image, 1, 1), (Pixels{0}));
}

TEST(ThumbnailTest, KeepsEqualSizesAndFlatPictures)
{
    Image image;
    checks::Fill(image, 16, 20, 5);
    Pixels same;
    for (int y = 0; y < 20; y++)
        same.insert(same.end(), image.Row(y), image.Row(y) + 16);
    EXPECT_EQ(Resampled(image, 16, 20), same);
    // 255 stays 255 however long the window, as division is exact.
    for (const int length : {2, 3, 31, 257, 4099, 65535}) {
        checks::Fill(image, length, 1, 1);
        std::fill(image.Row(0), image.Row(0) + length, 255);
        for (const int width : {1, 2, 16, 1024})
            EXPECT_EQ(Resampled(image, width, 1), Pixels(static_cast<std::size_t>(width), 255)) << length << width;
    }
}

TEST(ThumbnailTest, PlacesOfABandAreTheirWindows)
{
    Image image, window, alone;
    checks::Fill(image, 40, 33, 9);
    image.Window(3, 2, 36, 30);
    chars::Resampler resampler;
    resampler.Prepare(32, 30, 16, 20);
    resampler.Columns(image.Row(0), image.Pitch, 36);
    for (int column = 0; column <= 4; column++) {
        std::vector<std::uint8_t> band(16 * 20);
        resampler.Rows(column, band.data(), 16);
        checks::Crop(image, column, 0, 32, 30, window);
        EXPECT_EQ(Resampled(window, 16, 20), Pixels(band.begin(), band.end())) << column;
    }
}

TEST(ThumbnailTest, VariableWidthIsThatOfTheWindowRounded)
{
    chars::ThumbnailSize size{16, 20, 32, false};
    EXPECT_EQ(size.WidthOf(7), 16);
    size.variableWidth = true;
    EXPECT_EQ(size.WidthOf(32), 16);
    EXPECT_EQ(size.WidthOf(33), 17); // 528 + 16 over 32
    EXPECT_EQ(size.WidthOf(21), 11);
    EXPECT_EQ(chars::ThumbnailSize({1, 20, 256, true}).WidthOf(1), 1);
    EXPECT_EQ(chars::ThumbnailSize({256, 20, 1, true}).WidthOf(65535), chars::widestThumbnail);
}

} // namespace
} // namespace Tesk
