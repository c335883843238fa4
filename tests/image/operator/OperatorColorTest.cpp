// Colour components and corrections, and thresholds by colour.
#include "image/operator/OperatorChecks.h"

#include <algorithm>
#include <cmath>
#include <functional>

using namespace Tesk;
using namespace Tesk::checks;

namespace {

/// Colours of every combination of some levels, as one row.
Ints ColorGrid()
{
    Ints values;
    for (int b = 0; b <= 255; b += 15)
        for (int g = 0; g <= 255; g += 17)
            for (int r = 0; r <= 255; r += 15)
                values.insert(values.end(), {b, g, r});
    return values;
}

/// What an operation with a `Gray` result gives for each colour of the grid.
using ColorFormula = std::function<int(int R, int G, int B)>;
void ExpectOnGrid(const std::string& name, const Image& dst, const ColorFormula& formula)
{
    ASSERT_EQ(Status::Error().Code, NoError) << name;
    ASSERT_EQ(dst.Type, Gray) << name;
    const Ints grid = ColorGrid(), got = Values(dst);
    ASSERT_EQ(got.size() * 3, grid.size());
    for (std::size_t i = 0; i < got.size(); i++) {
        const int B = grid[3 * i], G = grid[3 * i + 1], R = grid[3 * i + 2];
        ASSERT_EQ(got[i], formula(R, G, B)) << name << ' ' << R << ' ' << G << ' ' << B;
    }
}

int HueOf(int R, int G, int B)
{
    const int M = std::max({R, G, B}), d = M - std::min({R, G, B});
    if (d == 0) return 0;
    const int hue = R == M   ? (G - B) * 255 / (6 * d)
                    : G == M ? (B - R) * 255 / (6 * d) + 86
                             : (R - G) * 255 / (6 * d) - 85;
    return (hue + 256) % 256;
}

int SaturationHlsOf(int R, int G, int B)
{
    const int M = std::max({R, G, B}), m = std::min({R, G, B});
    return M == m ? 0 : (M - m) * 255 / (M + m < 256 ? M + m : 510 - M - m);
}

int ShareOf(int which, int R, int G, int B)
{
    const int parts[] = {(317 * R + 501 * G + 204 * B) / 1024, (181 * R + 831 * G + 10 * B) / 1024,
                         (10 * G + 1013 * B) / 1024};
    const int sum = 1159 * G + 1229 * R + 682 * B;
    return sum < 1024 ? 0 : Clip(parts[which] * 255 / (sum / 1024));
}

} // namespace

TEST_F(OperatorTest, ColorComponentsOfKnownColors)
{
    Image src, dst;
    Row(src, Rgb, {0, 0, 255, 0, 255, 0, 255, 0, 0, 40, 80, 120}); // red, green, blue, a brown
    const struct
    {
        ColorComponents component;
        Ints values;
    } cases[] = {{Red_RGB, {255, 0, 0, 120}},
                 {Blue_RGB, {0, 0, 255, 40}},
                 {Hue_HLS, {0, 86, 171, 21}},
                 {Lightness_HLS, {127, 127, 127, 80}},
                 {Saturation_HSV, {255, 255, 255, 170}},
                 {Value_HSV, {255, 255, 255, 120}},
                 {Luma_YUV, {76, 149, 29, 87}},
                 {Saturation_HLS, {255, 255, 255, 127}}};
    for (const auto& c : cases) {
        Operator::Convert(src, dst, c.component);
        EXPECT_EQ(Values(dst), c.values) << c.component;
    }
    Operator::Convert(src, dst, Alpha);
    EXPECT_EQ(Message(), L"The Color Component (Alpha) is not supported for a Rgb source image");
    Image gray, rgb;
    Row(gray, Gray, {9});
    Row(rgb, Rgb, {1, 2, 3});
    Operator::Convert(gray, rgb, Blue_RGB);
    EXPECT_EQ(Values(rgb), (Ints{9, 2, 3}));
    Operator::Convert(gray, rgb, Hue_HLS);
    EXPECT_EQ(Message(), L"The Color Component (Hue (HLS)) is not supported for a Gray source image");
    Row(rgb, Rgb, {10, 20, 40});
    Operator::ColorsLighten(rgb, dst, 10);
    EXPECT_EQ(Values(dst), (Ints{63, 127, 255}));
    Operator::ColorsSaturate(rgb, dst, 10);
    EXPECT_EQ(Values(dst), (Ints{0, 13, 40}));
    Operator::ColorsHueSet(0, rgb, dst);
    EXPECT_EQ(Values(dst), (Ints{10, 10, 40}));
    Operator::RedBlueSwap(rgb, rgb);
    EXPECT_EQ(Values(rgb), (Ints{40, 20, 10}));
}

TEST_F(OperatorTest, ColorComponentsFollowTheirFormulas)
{
    const struct
    {
        ColorComponents component;
        ColorFormula formula;
    } cases[] = {{Red_RGB, [](int R, int, int) { return R; }},
                 {Green_RGB, [](int, int G, int) { return G; }},
                 {Blue_RGB, [](int, int, int B) { return B; }},
                 {Hue_HLS, HueOf},
                 {Hue_HSV, HueOf},
                 {Lightness_HLS,
                  [](int R, int G, int B) {
                      return (std::max({R, G, B}) + std::min({R, G, B})) / 2;
                  }},
                 {Saturation_HLS, SaturationHlsOf},
                 {Saturation_HSV,
                  [](int R, int G, int B) {
                      const int M = std::max({R, G, B});
                      return M == 0 ? 0 : (M - std::min({R, G, B})) * 255 / M;
                  }},
                 {Value_HSV,
                  [](int R, int G, int B) {
                      return std::max({R, G, B});
                  }},
                 {Luma_YUV, [](int R, int G, int B) { return (306 * R + 601 * G + 117 * B) / 1024; }},
                 {ChromaU_YUV,
                  [](int R, int G, int B) { return Clip(std::floor((446 * B - 296 * G - 151 * R) / 1024.0) + 128); }},
                 {ChromaV_YUV,
                  [](int R, int G, int B) { return Clip(std::floor((629 * R - 528 * G - 102 * B) / 1024.0) + 128); }},
                 {X_XYZ, [](int R, int G, int B) { return (317 * R + 501 * G + 204 * B) / 1024; }},
                 {Y_XYZ, [](int R, int G, int B) { return (181 * R + 831 * G + 10 * B) / 1024; }},
                 {Z_XYZ, [](int, int G, int B) { return (10 * G + 1013 * B) / 1024; }},
                 {xx_XYZ, [](int R, int G, int B) { return ShareOf(0, R, G, B); }},
                 {yy_XYZ, [](int R, int G, int B) { return ShareOf(1, R, G, B); }},
                 {zz_XYZ, [](int R, int G, int B) { return ShareOf(2, R, G, B); }}};
    Image src, dst;
    Row(src, Rgb, ColorGrid());
    for (const auto& c : cases) {
        Operator::Convert(src, dst, c.component);
        ExpectOnGrid("component " + std::to_string(c.component), dst, c.formula);
    }
}

TEST_F(OperatorTest, ChannelsAreTakenFromRgbaAndPutIntoRgb)
{
    Image src, dst;
    Row(src, Rgba, {1, 2, 3, 4, 10, 20, 30, 40});
    const struct
    {
        ColorComponents component;
        Ints values;
    } cases[] = {{Red_RGB, {3, 30}}, {Green_RGB, {2, 20}}, {Blue_RGB, {1, 10}}, {Alpha, {4, 40}}};
    for (const auto& c : cases) {
        Operator::Convert(src, dst, c.component);
        EXPECT_EQ(Values(dst), c.values) << c.component;
    }
    Operator::Convert(src, dst, Luma_YUV);
    EXPECT_EQ(Message(), L"The Color Component (Luma (YUV)) is not supported for a Rgba source image");
    {
        // Memory that has been used before is likely to come again.
        Image used;
        used.Set(100, 1, Rgb);
        Operator::Copy(255, used);
    }
    Image gray, fresh;
    gray.Set(100, 1, Gray);
    Operator::Copy(9, gray);
    Operator::Convert(gray, fresh, Green_RGB);
    for (int x = 0; x < 100; x++)
        ASSERT_EQ(fresh.PixelRgb(x, 0), RgbPixel(0, 9, 0)) << "a new image begins as black";
    Operator::Copy(7, gray);
    Operator::Convert(gray, fresh, Red_RGB);
    EXPECT_EQ(fresh.PixelRgb(99, 0), RgbPixel(7, 9, 0));
    Operator::Convert(gray, gray, Blue_RGB);
    EXPECT_EQ(gray.PixelRgb(0, 0), RgbPixel(0, 0, 7));
}

TEST_F(OperatorTest, HuesAreSetInSixSectors)
{
    Image src, dst;
    Row(src, Rgb, {10, 20, 40, 200, 200, 200, 0, 255, 0});
    const struct
    {
        int M, m;
    } extremes[] = {{40, 10}, {200, 200}, {255, 0}};
    for (int hue = 0; hue < 256; hue++) {
        Operator::ColorsHueSet(hue, src, dst);
        for (int x = 0; x < 3; x++) {
            const int M = extremes[x].M, m = extremes[x].m, d = (M - m) * (hue * 6 % 256) / 256;
            const RgbPixel sectors[] = {{M, m + d, m}, {M - d, M, m}, {m, M, m + d},
                                        {m, M - d, M}, {m + d, m, M}, {M, m, M - d}};
            ASSERT_EQ(dst.PixelRgb(x, 0), sectors[hue * 6 / 256]) << hue << ' ' << x;
        }
    }
}

TEST_F(OperatorTest, TwoColorsAreTheEndsOfAProjection)
{
    Image src, dst;
    Row(src, Rgb, ColorGrid());
    // A difference of 200 in red alone is weighed as trunc(256 / 200 * 1024) = 1310; one in all channels, by
    // 256 * d / (d . d) * 1024.
    const struct
    {
        RgbPixel back, fore;
        int red, green, blue;
    } cases[] = {{RgbPixel(30, 90, 90), RgbPixel(230, 90, 90), 1310, 0, 0},
                 {RgbPixel(200, 20, 50), RgbPixel(100, 120, 100), -1166, 1165, 582}};
    for (const auto& c : cases)
        for (const bool above : {true, false}) {
            const auto projected = [&](int R, int G, int B) {
                const double dot = c.red * (R - c.back.Red) + c.green * (G - c.back.Green) + c.blue * (B - c.back.Blue);
                return std::floor(dot / 1024);
            };
            Operator::Binarize(c.back, c.fore, src, dst, above);
            ExpectOnGrid("binary", dst,
                         [&](int R, int G, int B) { return (projected(R, G, B) >= 128) == above ? 255 : 0; });
            Operator::Binarize(c.back, c.fore, src, dst, above, Soft);
            ExpectOnGrid("soft", dst, [&](int R, int G, int B) {
                return above ? Clip(projected(R, G, B)) : 255 - Clip(projected(R, G, B));
            });
        }
    for (const Binarization mode : {Means, ToGray1}) {
        Operator::Binarize(RgbPixel(0, 0, 0), RgbPixel(9, 9, 9), src, dst, true, mode);
        EXPECT_EQ(Status::Error().Code, IncompatibleMode);
    }
}

TEST_F(OperatorTest, NearnessToAColorIsByChannelOrIsotropic)
{
    Image src, dst;
    Row(src, Rgb, ColorGrid());
    const int color[] = {105, 136, 90}, tolerance[] = {60, 0, 130};
    const RgbPixel fore(color[0], color[1], color[2]), within(tolerance[0], tolerance[1], tolerance[2]);
    const auto each = [&](int R, int G, int B, auto f) {
        const int channels[] = {R, G, B};
        for (std::size_t c = 0; c < 3; c++)
            f(std::abs(channels[c] - color[c]), tolerance[c], std::max(tolerance[c], 1));
    };
    const ColorFormula box = [&](int R, int G, int B) {
        bool inside = true;
        each(R, G, B, [&](int d, int t, int) { inside = inside && d <= t; });
        return inside ? 255 : 0;
    };
    const ColorFormula ball = [&](int R, int G, int B) {
        double sum = 0;
        each(R, G, B, [&](int d, int, int t) { sum += double(d * d) / (t * t); });
        return sum <= 1 ? 255 : 0;
    };
    const ColorFormula softBox = [&](int R, int G, int B) {
        int largest = 0;
        each(R, G, B, [&](int d, int, int t) { largest = std::max(largest, d * 255 / t); });
        return 255 - std::min(255, largest);
    };
    const ColorFormula softBall = [&](int R, int G, int B) {
        double sum = 0;
        each(R, G, B, [&](int d, int, int t) { sum += double(d * d) * 255 / (t * t); });
        return 255 - Clip(std::sqrt(sum));
    };
    Operator::Binarize(fore, within, src, dst, Binary, false);
    ExpectOnGrid("box", dst, box);
    Operator::Binarize(fore, within, src, dst, Binary, true);
    ExpectOnGrid("ball", dst, ball);
    Operator::Binarize(fore, within, src, dst, Soft, true);
    ExpectOnGrid("soft ball", dst, softBall);
    // A mode alone means this form; nothing or a side, the one of two colours.
    Operator::Binarize(fore, within, src, dst, Soft);
    ExpectOnGrid("soft box", dst, softBox);
    Image twoColors;
    Operator::Binarize(fore, within, src, twoColors, true, Binary);
    Operator::Binarize(fore, within, src, dst);
    EXPECT_EQ(Values(dst), Values(twoColors));
}

TEST_F(OperatorTest, AutomaticColorsAreTheMeansOnEitherSideOfTheirPrincipalAxis)
{
    Image src, dst, expected;
    Row(src, Rgb, {10, 20, 30, 14, 24, 36, 190, 200, 210, 210, 220, 231, 12, 23, 35});
    for (const bool above : {true, false})
        for (const Binarization mode : {Binary, Soft}) {
            Operator::Binarize(RgbPixel(33, 22, 12), RgbPixel(220, 210, 200), src, expected, above, mode);
            EXPECT_EQ(Operator::Binarize(Auto, src, dst, above, mode), 0);
            EXPECT_EQ(Values(dst), Values(expected));
        }
}
