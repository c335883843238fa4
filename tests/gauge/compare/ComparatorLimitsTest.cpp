// The limits of pixels and what is out of them: against plain computations, and by hand.
#include "gauge/Comparator.h"

#include "../../Failures.h"
#include "../../Noise.h"
#include "gauge/compare/ComparedPictures.h"
#include "image/Histogram.h"
#include "measure/Blobs.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace Tesk {
namespace {

using checks::areaHeight;
using checks::areaWidth;
using checks::areaX;
using checks::areaY;
using checks::Message;
using checks::Paint;

class ComparatorLimitsTest : public checks::IgnoringFailures
{
protected:
    /// Ready for samples of the size of the working area.
    void Start(bool statistical, PixelTypes type = Gray)
    {
        checks::Teach(comparator, type);
        Paint(image, 0, 0, 0, type);
        comparator.Align(image, sample);
        comparator.StartTolerancing(statistical);
    }

    int Low(int x, int y) const { return comparator.LowerLimit.Row(areaY + y)[areaX + x]; }
    int High(int x, int y) const { return comparator.UpperLimit.Row(areaY + y)[areaX + x]; }

    Comparator comparator;
    Image image, sample;
};

TEST_F(ComparatorLimitsTest, StraightLimitsAreExtremesAboutThePixelLessAndPlusTheTolerance)
{
    for (const PixelTypes type : {Gray, Rgb})
        for (const int radius : {-3, 0, 1, 2, 5}) {
            checks::Teach(comparator, type);
            comparator.StraightTolerancing(40, radius);
            ASSERT_EQ(comparator.Mode, Trained);
            const Image& r = comparator.Reference;
            const int channels = type == Rgb ? 3 : 1, reach = std::max(radius, 0);
            for (int y = 0; y < r.Height; y += 3)
                for (int x = 0; x < r.Width; x++) {
                    int low = 255, high = 0;
                    for (int v = std::max(y - reach, 0); v <= std::min(y + reach, r.Height - 1); v++)
                        for (int u = std::max(x - reach, 0); u <= std::min(x + reach, r.Width - 1); u++) {
                            low = std::min<int>(low, r.Row(v)[channels * u]);
                            high = std::max<int>(high, r.Row(v)[channels * u]);
                        }
                    for (int c = 0; c < channels; c++) {
                        ASSERT_EQ(comparator.LowerLimit.Row(y)[channels * x + c], std::max(low - 40, 0));
                        ASSERT_EQ(comparator.UpperLimit.Row(y)[channels * x + c], std::min(high + 40, 255));
                    }
                }
        }
    comparator.StraightTolerancing(MaxInt, MaxInt);
    EXPECT_EQ(Low(5, 5), 0);
    EXPECT_EQ(High(5, 5), 255);
}

TEST_F(ComparatorLimitsTest, EnvelopesWidenAboutTheirMiddle)
{
    const int values[3][4] = {{100, 50, 255, 7}, {110, 50, 255, 9}, {104, 51, 255, 3}};
    for (const double factor : {1.0, 2.0, 0.0}) {
        Start(false);
        for (const auto& row : values) {
            for (int i = 0; i < 4; i++)
                sample.Row(2)[10 + i] = static_cast<std::uint8_t>(row[i]);
            comparator.NextTolerancing(sample);
        }
        EXPECT_EQ(int(comparator.NumSamples), 3);
        comparator.EndTolerancing(factor);
        EXPECT_EQ(comparator.Mode, Trained);
        const auto expect = [&](int i, int low, int high) {
            EXPECT_EQ(Low(10 + i, 2), low) << factor;
            EXPECT_EQ(High(10 + i, 2), high) << factor;
        };
        if (factor == 1) {
            expect(0, 100, 110);
            expect(1, 50, 51);
            expect(2, 254, 254);
            expect(3, 3, 9);
        } else if (factor == 2) {
            expect(0, 95, 115);
            expect(1, 49, 51); // 49.5 and 51.5
            expect(2, 254, 254);
            expect(3, 0, 12);
        } else {
            expect(0, 105, 105);
            expect(1, 50, 50);
        }
        EXPECT_EQ(comparator.LowerLimit.Row(0)[0], 0) << "outside of the working area";
        EXPECT_EQ(comparator.UpperLimit.Row(0)[0], 255);
    }
    comparator.EndTolerancing(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(Status::Error().Code, OutOfRange);
}

TEST_F(ComparatorLimitsTest, PixelsSeenOnceNeverFail)
{
    Start(false);
    comparator.EndTolerancing(1);
    EXPECT_EQ(comparator.Mode, Aligned) << "nothing without samples";
    comparator.NextTolerancing(sample);
    // The second sample shows one row of it only.
    comparator.Clip().Clear();
    comparator.Clip().AddRun(5, 9, 4);
    sample.Row(4)[5] = 1;
    comparator.NextTolerancing(sample);
    comparator.EndTolerancing(1);
    EXPECT_EQ(Low(4, 4), 0);
    EXPECT_EQ(High(4, 4), 255);
    EXPECT_EQ(Low(5, 4), 1);
    EXPECT_EQ(High(5, 4), comparator.Reference.Row(areaY + 4)[areaX + 5]);
    EXPECT_EQ(Low(8, 4), High(8, 4));
    EXPECT_EQ(High(9, 4), 255);
}

TEST_F(ComparatorLimitsTest, StatisticsAreThoseOfAPlainComputation)
{
    checks::Noise noise{3};
    for (const PixelTypes type : {Gray, Rgb}) {
        Start(true, type);
        EXPECT_TRUE(comparator.Statistical);
        const int channels = type == Rgb ? 3 : 1, count = 9;
        std::vector<std::vector<int>> seen(static_cast<std::size_t>(areaWidth * channels));
        for (int i = 0; i < count; i++) {
            for (int x = 0; x < areaWidth * channels; x++) {
                sample.Row(7)[x] = x < 8 ? std::uint8_t{77} : noise.Byte();
                seen[static_cast<std::size_t>(x)].push_back(sample.Row(7)[x]);
            }
            comparator.NextTolerancing(sample);
        }
        comparator.EndTolerancing(1.25);
        for (int x = 0; x < areaWidth * channels; x++) {
            double mean = 0, variance = 0;
            for (const int v : seen[static_cast<std::size_t>(x)])
                mean += v / double(count);
            for (const int v : seen[static_cast<std::size_t>(x)])
                variance += (v - mean) * (v - mean) / count;
            const double low = mean - 1.25 * std::sqrt(variance), high = mean + 1.25 * std::sqrt(variance);
            const std::uint8_t* lower = comparator.LowerLimit.Row(areaY + 7) + areaX * channels;
            const std::uint8_t* upper = comparator.UpperLimit.Row(areaY + 7) + areaX * channels;
            // Where the sum is a hair from a whole number, either is right.
            ASSERT_GE(lower[x], std::floor(std::max(low - 1e-6, 0.0)));
            ASSERT_LE(lower[x], std::floor(std::max(low + 1e-6, 0.0)));
            ASSERT_GE(upper[x], std::floor(std::min(high - 1e-6, 255.0)));
            ASSERT_LE(upper[x], std::floor(std::min(high + 1e-6, 255.0)));
        }
    }
}

TEST_F(ComparatorLimitsTest, SamplesAreRefusedByTypeAndSize)
{
    Start(false);
    Image other;
    other.Set(10, 10, Gray);
    comparator.NextTolerancing(other);
    EXPECT_EQ(Status::Error().Code, IncompatibleSize);
    EXPECT_NE(Message().find(L"Incompatible source and reference image sizes, (10, 10) vs. (200, 160)"),
              std::wstring::npos);
    other.Set(areaWidth, areaHeight, Rgb);
    comparator.NextTolerancing(other);
    EXPECT_EQ(Status::Error().Code, IncompatibleType);
    // An image of the whole reference serves by its working area.
    comparator.NextTolerancing(image);
    comparator.NextTolerancing(image);
    comparator.EndTolerancing(1);
    EXPECT_EQ(Low(9, 9), comparator.Reference.Row(areaY + 9)[areaX + 9]);
}

TEST_F(ComparatorLimitsTest, PaintedHistogramsAndBlobsTellTheSameOfGrayPixels)
{
    checks::Noise noise{5};
    Start(false);
    comparator.StraightTolerancing(20, 0);
    comparator.Align(image, sample);
    for (int k = 0; k < 600; k++)
        sample.Row(noise.Byte() % areaHeight)[noise.Byte() % areaWidth] = noise.Byte();
    Image painted;
    Histogram dark, light, both;
    Blobs blobs;
    comparator.Differences(sample, painted);
    comparator.Differences(sample, dark, light);
    comparator.Differences(sample, both, both);
    comparator.Differences(sample, blobs, 1);
    ASSERT_EQ(comparator.Mode, Inspected);
    ASSERT_EQ(PixelTypes(painted.Type), Rgb);
    int pixels = 0;
    std::vector<int> counts(512);
    for (int y = 0; y < areaHeight; y++)
        for (int x = 0; x < areaWidth; x++) {
            const int v = sample.Row(y)[x], low = Low(x, y), high = High(x, y);
            const RgbPixel wanted = v < low    ? Comparator::TooDarkColor
                                    : v > high ? Comparator::TooLightColor
                                               : RgbPixel(v, v, v);
            ASSERT_EQ(painted.Row<RgbPixel>(y)[x], wanted);
            if (v < low) counts[static_cast<std::size_t>(low - v)]++;
            if (v > high) counts[static_cast<std::size_t>(256 + v - high)]++;
            pixels += v < low || v > high;
        }
    EXPECT_GT(pixels, 100);
    EXPECT_EQ(blobs.Area(), pixels);
    ASSERT_EQ(int(dark.Length), 256);
    for (int i = 0; i < 256; i++) {
        const int d = counts[static_cast<std::size_t>(i)], l = counts[static_cast<std::size_t>(256 + i)];
        ASSERT_EQ(dark.Bin(i), d);
        ASSERT_EQ(light.Bin(i), l);
        ASSERT_EQ(both.Bin(i), d + l);
    }
    // Painted over itself, a gray image becomes one in colours.
    const RgbPixel corner = painted.Row<RgbPixel>(0)[0];
    comparator.Differences(sample, sample);
    EXPECT_EQ(PixelTypes(sample.Type), Rgb);
    EXPECT_EQ(sample.Row<RgbPixel>(0)[0], corner);
    comparator.Differences(sample, painted);
    EXPECT_EQ(Status::Error().Code, IncompatibleType);
}

TEST_F(ComparatorLimitsTest, AnRgbPixelIsDarkIfAChannelIs)
{
    Start(false, Rgb);
    comparator.StraightTolerancing(10, 0);
    comparator.Align(image, sample);
    auto* row = sample.Row<RgbPixel>(40);
    const auto shift = [](std::uint8_t& v, int by) { v = static_cast<std::uint8_t>(v + by); };
    shift(row[20].Red, 15), shift(row[20].Green, -13);
    shift(row[21].Red, 15), shift(row[21].Blue, 10);
    shift(row[22].Blue, -11);
    shift(row[23].Green, 10);
    Image painted;
    Histogram dark, light;
    Blobs blobs;
    comparator.Differences(sample, painted);
    EXPECT_EQ(painted.Row<RgbPixel>(40)[20], Comparator::TooDarkColor);
    EXPECT_EQ(painted.Row<RgbPixel>(40)[21], Comparator::TooLightColor);
    EXPECT_EQ(painted.Row<RgbPixel>(40)[22], Comparator::TooDarkColor);
    EXPECT_EQ(painted.Row<RgbPixel>(40)[23], row[23]);
    comparator.Differences(sample, dark, light);
    // Red first: one green excess of 3, one blue of 1; two red ones of 5.
    EXPECT_EQ(dark.Samples()[3 * 3 + 1], 1);
    EXPECT_EQ(dark.Samples()[1 * 3 + 2], 1);
    EXPECT_EQ(light.Samples()[5 * 3 + 0], 2);
    EXPECT_EQ(light.Samples()[0], 0);
    comparator.Differences(sample, blobs, 3);
    ASSERT_EQ(int(blobs.NumBlobs), 1);
    EXPECT_EQ(blobs.FirstPixel(0).X, 20);
    EXPECT_EQ(blobs.FirstPixel(0).Y, 40);
    comparator.Differences(sample, blobs, 4);
    EXPECT_EQ(int(blobs.NumBlobs), 0);
    comparator.Differences(sample, blobs, 1, 2);
    EXPECT_EQ(int(blobs.NumBlobs), 0);
    // In place.
    comparator.Differences(sample, sample);
    EXPECT_EQ(sample.Row<RgbPixel>(40)[21], Comparator::TooLightColor);
    EXPECT_EQ(sample.Row<RgbPixel>(40)[22], Comparator::TooDarkColor);
}

TEST_F(ComparatorLimitsTest, CopiesKeepWhatTheyHadWhenTheOtherLearns)
{
    Start(false);
    comparator.NextTolerancing(sample);
    comparator.NextTolerancing(sample);
    const Comparator copy(comparator);
    Comparator other;
    other.ShallowCopy(comparator, true);
    comparator.StraightTolerancing(100, 0);
    EXPECT_EQ(PixelTypes(copy.LowerLimit.Type), Undefined);
    sample.Row(3)[3] = 0;
    comparator.NextTolerancing(sample);
    other.EndTolerancing(1);
    EXPECT_EQ(other.LowerLimit.Row(areaY + 3)[areaX + 3], comparator.Reference.Row(areaY + 3)[areaX + 3]);
    EXPECT_EQ(copy.Mode, Aligned);
    comparator.Differences(sample, image);
    EXPECT_EQ(Status::Error().Code, CannotPerform) << "trained anew, it is not aligned";
}

TEST_F(ComparatorLimitsTest, WithoutLimitsNothingIsCompared)
{
    Start(false);
    comparator.Differences(sample, image);
    EXPECT_EQ(Status::Error().Code, VoidObject);
    comparator.StraightTolerancing(5, 0);
    Paint(image);
    comparator.Align(image, sample);
    Image small;
    small.Set(30, 30, Gray);
    comparator.Differences(small, image);
    EXPECT_EQ(Status::Error().Code, IncompatibleSize);
}

} // namespace
} // namespace Tesk
