#include "image/Kernel.h"
#include "image/Operator.h"

#include "image/filter/FilterChecks.h"

#include <cstring>
#include <utility>

using namespace Tesk;
using namespace Tesk::checks;

namespace {

class DeBayerTest : public IgnoringFailures
{};

/// 0 red, 1 green, 2 blue: the colour of a sample, from the first two colours of each of the first two rows.
int ColorOf(BayerAlignments alignment, int x, int y)
{
    static constexpr int colors[4][2][2] = {{{0, 1}, {1, 2}}, {{1, 0}, {2, 1}}, {{1, 2}, {0, 1}}, {{2, 1}, {1, 0}}};
    return colors[alignment][y & 1][x & 1];
}

/// The truncated mean of the samples of a colour among the nearest ones that there are, at a place away from the edge
/// or with the mosaic mirrored about the edge pixels.
int InterpolatedAt(const Pixels& p, BayerAlignments alignment, int x, int y, int color)
{
    const auto mirrored = [](int at, int count) { return at < 0 ? -at : at >= count ? 2 * count - 2 - at : at; };
    if (ColorOf(alignment, x, y) == color) return p(x, y);
    for (const bool diagonal : {false, true}) {
        int sum = 0, count = 0;
        for (int j = -1; j <= 1; j++)
            for (int i = -1; i <= 1; i++)
                if ((i != 0 && j != 0) == diagonal && (i != 0 || j != 0) &&
                    ColorOf(alignment, x + i + 2, y + j + 2) == color) {
                    sum += p(mirrored(x + i, p.Width()), mirrored(y + j, p.Height()));
                    count++;
                }
        if (count > 0) return sum / count;
    }
    return -1;
}

constexpr BayerAlignments alignments[] = {RedGreen, GreenRed, GreenBlue, BlueGreen};

RgbPixel At(const Image& image, int x, int y)
{
    return image.Row<RgbPixel>(y)[x];
}

} // namespace

TEST_F(DeBayerTest, FastIsBilinearWithTheOtherSideAtTheEdges)
{
    for (const BayerAlignments alignment : alignments)
        for (int width = 2; width <= 9; width++)
            for (const int height : {2, 3, 6}) {
                Image src, dst;
                Fill(src, Gray, width, height, 3);
                // The phase goes by the window's place in the store, which is odd both ways here.
                const auto inWindow = static_cast<BayerAlignments>(alignment ^ 3);
                Operator::DeBayer(src, dst, alignment, FastRgb);
                ASSERT_EQ(Status::Error().Code, NoError);
                ASSERT_EQ(dst.Type, Rgb);
                const Pixels p(src);
                for (int y = 0; y < height; y++)
                    for (int x = 0; x < width; x++) {
                        const RgbPixel got = At(dst, x, y);
                        ASSERT_EQ(got.Red, InterpolatedAt(p, inWindow, x, y, 0)) << x << ' ' << y;
                        ASSERT_EQ(got.Green, InterpolatedAt(p, inWindow, x, y, 1)) << x << ' ' << y;
                        ASSERT_EQ(got.Blue, InterpolatedAt(p, inWindow, x, y, 2)) << x << ' ' << y;
                    }
            }
}

TEST_F(DeBayerTest, WindowsKeepThePhaseOfTheWholeMosaic)
{
    Image whole, colors, part;
    Fill(whole, Gray, 20, 14, 3);
    whole.Window();
    for (const BayerAlignments alignment : alignments)
        for (const BayerQualities quality : {FastRgb, SmoothRgb, SharpRgb, SmoothGray, SharpGray}) {
            whole.Window();
            Operator::DeBayer(whole, colors, alignment, quality);
            for (const auto& [x, y] : {std::pair{3, 2}, {2, 3}, {5, 5}}) {
                whole.Window(x, y, 13, 10);
                Operator::DeBayer(whole, part, alignment, quality);
                // The neighbourhoods of the qualities reach up to three pixels far.
                for (int v = 4; v < 6; v++)
                    for (int u = 4; u < 9; u++)
                        if (colors.Type == Rgb)
                            ASSERT_EQ(At(part, u, v), At(colors, u + x, v + y)) << int{quality};
                        else
                            ASSERT_EQ(part.Row(v)[u], colors.Row(v + y)[u + x]) << int{quality};
            }
        }
}

TEST_F(DeBayerTest, GraysAreTheSmoothedAndSharpenedMosaic)
{
    Image src, dst, wanted;
    Fill(src, Gray, 11, 5, 3);
    Operator::DeBayer(src, dst, RedGreen, SmoothGray);
    Kernel::Binomial(src, wanted);
    EXPECT_EQ(Store(dst), Store(wanted));
    Operator::DeBayer(src, dst, RedGreen, SharpGray);
    Kernel::Sharpen4(wanted, wanted);
    EXPECT_EQ(Store(dst), Store(wanted));
    Operator::DeBayer(src, src, RedGreen, SharpGray);
    for (int y = 0; y < 5; y++)
        EXPECT_EQ(std::memcmp(src.Row(y), wanted.Row(y), 11), 0);
}

TEST_F(DeBayerTest, RatiosGiveTheColorTimesTheBrightness)
{
    // On a mosaic that alternates between 200 at red and 100 elsewhere, every neighbourhood of 3 x 3 binomial weights
    // holds a quarter of red: a brightness of 125, ratios of 524 * 200 >> 10 = 102 and 524 * 100 >> 10 = 51.
    Image src, dst;
    src.Set(16, 16, Gray);
    for (int y = 0; y < 16; y++)
        for (int x = 0; x < 16; x++)
            src.Row(y)[x] = x % 2 == 0 && y % 2 == 0 ? 200 : 100;
    for (const BayerQualities quality : {SmoothRgb, SharpRgb}) {
        Operator::DeBayer(src, dst, RedGreen, quality);
        for (int y = 4; y < 12; y++)
            for (int x = 4; x < 12; x++)
                EXPECT_EQ(At(dst, x, y), RgbPixel((102 * 125) >> 6, (51 * 125) >> 6, (51 * 125) >> 6));
    }
    // On a flat mosaic the ratios are all 64, and the brightness comes back.
    for (int y = 0; y < 16; y++)
        std::fill_n(src.Row(y), 16, std::uint8_t{1});
    Operator::DeBayer(src, dst, RedGreen, SharpRgb);
    EXPECT_EQ(At(dst, 2, 2), RgbPixel(1, 1, 1));
}

TEST_F(DeBayerTest, RatiosFollowTheirFormulaOnAnyMosaicUpToTheEdges)
{
    for (const auto& [width, height] : {std::pair{2, 2}, {5, 4}, {17, 9}, {34, 12}})
        for (const BayerAlignments alignment : alignments)
            for (const bool sharp : {false, true}) {
                Image src, dst, brightness, ratios;
                Fill(src, Gray, width, height, 3);
                const auto inWindow = static_cast<BayerAlignments>(alignment ^ 3);
                Operator::DeBayer(src, dst, alignment, sharp ? SharpRgb : SmoothRgb);
                Kernel::Binomial(src, brightness);
                ratios.Set(brightness);
                for (int y = 0; y < height; y++)
                    for (int x = 0; x < width; x++) {
                        const int l = brightness.Row(y)[x];
                        ratios.Row(y)[x] =
                            static_cast<std::uint8_t>(l == 0 ? 0 : std::min(65536 / l * src.Row(y)[x] / 1024, 255));
                    }
                const Pixels p(ratios), light(brightness);
                for (int y = 0; y < height; y++)
                    for (int x = 0; x < width; x++) {
                        const auto channel = [&](int color) {
                            int sum = 0;
                            for (int j = -1; j <= 1; j++)
                                for (int i = -1; i <= 1; i++)
                                    sum += (2 - std::abs(i)) * (2 - std::abs(j)) *
                                           InterpolatedAt(p, inWindow, std::clamp(x + i, 0, width - 1),
                                                          std::clamp(y + j, 0, height - 1), color);
                            int l = light(x, y);
                            if (sharp)
                                l = Byte(5 * l - light(x - 1, y) - light(x + 1, y) - light(x, y - 1) - light(x, y + 1));
                            return std::min(255, sum / 16 * l / 64);
                        };
                        ASSERT_EQ(At(dst, x, y), RgbPixel(channel(0), channel(1), channel(2)))
                            << width << ' ' << x << ' ' << y << ' ' << sharp;
                    }
            }
}

TEST_F(DeBayerTest, SmallMosaicsAndBadOnes)
{
    Image src, dst;
    for (const BayerQualities quality : {FastRgb, SmoothRgb, SharpRgb, SmoothGray, SharpGray})
        for (const auto& [w, h] : {std::pair{1, 1}, {1, 4}, {4, 1}, {2, 2}}) {
            Fill(src, Gray, w, h, 3);
            Operator::DeBayer(src, dst, BlueGreen, quality);
            EXPECT_EQ(Status::Error().Code, NoError);
            EXPECT_EQ(dst.Width, w);
            EXPECT_EQ(dst.Height, h);
        }
    // A source that is its own destination becomes a colour image.
    Image same, wanted;
    Fill(same, Gray, 7, 7, 3);
    Operator::DeBayer(same, wanted);
    Operator::DeBayer(same, same);
    EXPECT_EQ(same.Type, Rgb);
    EXPECT_EQ(Store(same), Store(wanted));

    Image nothing, gray16;
    gray16.Set(4, 4, Gray16);
    Operator::DeBayer(nothing, dst);
    EXPECT_EQ(Status::Error().Code, VoidObject);
    Operator::DeBayer(gray16, dst);
    EXPECT_EQ(Status::Error().Code, UnsupportedType);
    EXPECT_EQ(std::wstring(Status::UnicodeError()),
              L"The source image type (Gray16) is not supported for this operation, use Gray");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Operator::DeBayer");
    Operator::DeBayer(src, dst, RedGreen, static_cast<BayerQualities>(7));
    EXPECT_EQ(Status::Error().Code, OutOfRange);
}
