// Regions by thresholds, and the scanner under them at each SIMD level.
#include "image/Histogram.h"
#include "image/Image.h"
#include "measure/region/RunScanner.h"
#include "tests/image/Levels.h"
#include "tests/measure/region/Regions.h"

#include <numeric>

using namespace Tesk;
using namespace Tesk::checks;

namespace {

class RegionScan : public RegionMethods
{};
class RunScanner : public AtEachLevel
{};
INSTANTIATE_TEST_SUITE_P(Levels, RunScanner, ::testing::ValuesIn(allLevels));

/// Rows of noise, of long stretches and of a single value.
std::vector<std::uint8_t> RowOf(Noise& noise, std::size_t n, int kind)
{
    std::vector<std::uint8_t> row(n);
    std::uint8_t value = noise.Byte();
    for (std::uint8_t& pixel : row) {
        if (kind == 0 || (kind == 1 && noise.Byte() < 6)) value = noise.Byte();
        pixel = value;
    }
    return row;
}

TEST_P(RunScanner, EdgesAreThoseFoundPixelByPixel)
{
    Noise noise{11};
    std::vector<std::size_t> sizes(140);
    std::iota(sizes.begin(), sizes.end(), 0);
    for (const std::size_t size : {191, 192, 193, 4095, 4096, 4097, 9000})
        sizes.push_back(size);
    const kernels::Band bands[] = {kernels::Band::Above(128, true),   kernels::Band::Above(128, false),
                                   kernels::Band::Above(0, true),     kernels::Band::Above(255, true),
                                   kernels::Band::Above(256, true),   kernels::Band::Above(-5, false),
                                   kernels::Band::Between(85, 170),   kernels::Band::Between(170, 85),
                                   kernels::Band::Between(300, 1000), kernels::Band::Between(255, 0)};
    for (const std::size_t n : sizes)
        for (const int kind : {0, 1, 2}) {
            const auto row = RowOf(noise, n, kind);
            const auto expectEdges = [&](std::size_t count, const std::vector<std::int32_t>& edges, auto active) {
                std::vector<std::int32_t> expected;
                for (std::size_t x = 0; x <= n; x++)
                    if ((x > 0 && active(x - 1)) != (x < n && active(x))) expected.push_back(static_cast<int>(x));
                ASSERT_EQ(std::vector(edges.begin(), edges.begin() + static_cast<int>(count)), expected) << n;
            };
            std::vector<std::int32_t> edges(n + 1 + kernels::edgeSlack);
            for (const kernels::Band band : bands)
                expectEdges(kernels::BandEdges(row.data(), n, band, edges.data()), edges,
                            [&](std::size_t x) { return band.Has(row[x]); });
            // Limits that are crossed here and there, and some that leave nothing between them.
            const auto low = RowOf(noise, n, 0), high = RowOf(noise, n, kind);
            expectEdges(kernels::LimitEdges(row.data(), low.data(), high.data(), n, edges.data()), edges,
                        [&](std::size_t x) { return row[x] < low[x] || row[x] > high[x]; });
            if (n <= 8 * row.size() && n > 0)
                expectEdges(kernels::BitEdges(row.data(), n, edges.data()), edges,
                            [&](std::size_t x) { return (row[x / 8] >> (7 - x % 8) & 1) != 0; });
        }
}

TEST_P(RunScanner, BandsHoldWhatTheirThresholdsSay)
{
    for (int t = -2; t < 259; t++)
        for (int v = 0; v < 256; v++) {
            const auto value = static_cast<std::uint8_t>(v);
            ASSERT_EQ(kernels::Band::Above(t, true).Has(value), v >= t);
            ASSERT_EQ(kernels::Band::Above(t, false).Has(value), v < t);
            ASSERT_EQ(kernels::Band::Between(t, 300 - t).Has(value),
                      t < 300 - t ? v >= t && v <= 300 - t : v < 300 - t || v > t);
        }
}

TEST_P(RunScanner, UnderAMaskRunsEndWithThoseOfTheMask)
{
    Image image;
    image.Set(12, 6, Gray);
    for (int y = 0; y < 6; y++)
        for (int x = 0; x < 12; x++)
            image.PixelGray(x, y) = x == 4 ? 0 : 200;
    image.Window(2, 1, 8, 5); // the dark column is the third of the window
    const Region mask =
        RegionOf({{0, 9, -1}, {-5, 4, 0}, {4, 90, 0}, {2, 3, 2}, {5, 5, 3}, {0, 2, 4}, {90, 99, 4}, {0, 5, 5}});
    std::vector<RunTuples> rows;
    regions::ScanMasked(image, mask.Runs(), regions::BandScanner{image, regions::Band::Above(100, true)},
                        [&](const regions::ScannedRow& row) {
                            rows.emplace_back();
                            for (std::size_t i = 0; i < row.Runs(); i++)
                                rows.back().emplace_back(row.Start(i), row.End(i), row.y);
                        });
    // Window row 2 has mask pixels, and none of them is active.
    EXPECT_EQ(rows, (std::vector<RunTuples>{{{2, 4, 1}, {5, 6, 1}, {6, 10, 1}}, {}, {{2, 4, 5}}}));
}

TEST_F(RegionScan, TakesThePixelsOfTheWindowInCoordinatesOfThePicture)
{
    Image image;
    image.Set(7, 4, Gray);
    for (int y = 0; y < 4; y++)
        for (int x = 0; x < 7; x++)
            image.PixelGray(x, y) = static_cast<GrayPixel>(10 * x);
    image.Window(1, 2, 6, 2);
    Region region = RegionOf({{1, 2, 3}}, false);
    EXPECT_EQ(region.Binarize(30, image), 30);
    EXPECT_EQ(RunsOf(region), (RunTuples{{3, 7, 2}, {3, 7, 3}}));
    EXPECT_TRUE(region.Sorted);
    EXPECT_EQ(region.NumRuns, 2);
    region.Binarize(30, image, false);
    EXPECT_EQ(RunsOf(region), (RunTuples{{1, 3, 2}, {1, 3, 3}}));
    region.Binarize(GrayPixel{21}, GrayPixel{60}, image);
    EXPECT_EQ(RunsOf(region), (RunTuples{{4, 7, 2}, {4, 7, 3}}));
    EXPECT_EQ(region.Binarize(0, image), 0);
    EXPECT_EQ(region.Area(), 12);
    region.Binarize(0, image, false);
    EXPECT_EQ(region.NumRuns, 0);
    image.Window(5, 1, 1, 3);
    region.Binarize(50, image);
    EXPECT_EQ(RunsOf(region), (RunTuples{{5, 6, 1}, {5, 6, 2}, {5, 6, 3}}));
}

TEST_F(RegionScan, FindsTheBestThresholdByItself)
{
    Image image;
    image.Set(40, 30, Gray);
    Noise noise{2};
    for (int y = 0; y < 30; y++)
        for (int x = 0; x < 40; x++)
            image.PixelGray(x, y) = static_cast<GrayPixel>((x > 17 ? 160 : 60) + noise.Byte() % 20);
    const int best = Histogram::BestThreshold(image);
    Region byNumber, automatic, dark;
    byNumber.Binarize(best, image);
    EXPECT_EQ(automatic.Binarize(Auto, image), best);
    EXPECT_EQ(RunsOf(automatic), RunsOf(byNumber));
    EXPECT_EQ(dark.Binarize(image, false), best);
    EXPECT_EQ(byNumber.Area(), 22 * 30);
    EXPECT_EQ(dark.Area(), 18 * 30);
}

TEST_F(RegionScan, TakesTheSetBitsOfPackedPixels)
{
    Image bits;
    bits.Set(19, 2, Gray1);
    for (int y = 0; y < 2; y++)
        for (int x = 0; x < 19; x++)
            bits.PixelGray1(x, y, x % 9 == 0 || (y == 1 && x > 5));
    for (const bool above : {true, false}) {
        Region region;
        EXPECT_EQ(region.Binarize(bits, above), 0);
        EXPECT_EQ(RunsOf(region), (RunTuples{{0, 1, 0}, {9, 10, 0}, {18, 19, 0}, {0, 1, 1}, {6, 19, 1}}));
    }
}

/// A class that takes runs in a way of its own.
struct Counting : Region
{
    int added = 0, rows = 0;

    void AddRun(int, int, int) override { added++; }
    void EndRow() override { rows++; }
};

TEST_F(RegionScan, FeedsDerivedClassesRowByRow)
{
    Image image;
    image.Set(9, 5, Gray);
    for (int y = 0; y < 5; y++)
        for (int x = 0; x < 9; x++)
            image.PixelGray(x, y) = static_cast<GrayPixel>(y == 3 ? 0 : x % 2 * 255);
    Counting counting;
    counting.Binarize(100, image);
    EXPECT_EQ(counting.added, 16);
    EXPECT_EQ(counting.rows, 5);
}

TEST_F(RegionScan, OtherImagesAreRefusedAndLeaveTheRegion)
{
    Region region = RegionOf({{1, 2, 3}});
    Image image, wide;
    region.Binarize(9, image);
    EXPECT_EQ(Status::Error().Code, VoidObject);
    for (const PixelTypes type : {Rgb, Gray16, Gray1}) {
        image.Set(4, 4, type);
        EXPECT_EQ(region.Binarize(9, image), 0);
        EXPECT_EQ(Status::Error().Code, UnsupportedType);
        EXPECT_EQ(Message(), std::wstring(L"The image type (") + PixelTypeName(type) +
                                 L") is not supported for this operation, use Gray");
        EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Region::Binarize");
    }
    wide.Set(40000, 1, Gray);
    region.Binarize(9, wide);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_EQ(RunsOf(region), (RunTuples{{1, 2, 3}}));
}

TEST_F(RegionScan, HistogramsCountThePixelsUnderTheRuns)
{
    Noise noise{21};
    Region mask = RandomRegion(noise, 9);
    mask.RegionAppend(RegionOf({{0, 5, 1}}));
    for (const PixelTypes type : {Gray, Gray16, Rgb}) {
        Image image;
        image.Set(20, 18, type);
        for (int y = 0; y < 18; y++)
            for (int i = 0; i < RowBytes(20, type); i++)
                image.Row(y)[i] = noise.Byte() % 40;
        image.Window(4, 5, 7, 6);
        const int channels = type == Rgb ? 3 : 1;
        std::vector<int> expected(static_cast<std::size_t>((type == Gray16 ? 65536 : 256) * channels));
        for (const LabeledRun& run : mask.Runs())
            for (int x = run.Start; x < run.End; x++) {
                if (x < 0 || x >= 7 || run.Y < 0 || run.Y >= 6) continue;
                if (type == Gray) expected[image.PixelGray(x + 4, run.Y + 5)]++;
                if (type == Gray16) expected[image.PixelGray16(x + 4, run.Y + 5)]++;
                if (type == Rgb) {
                    const RgbPixel pixel = image.PixelRgb(x + 4, run.Y + 5);
                    expected[3u * pixel.Red]++;
                    expected[3u * pixel.Green + 1]++;
                    expected[3u * pixel.Blue + 2]++;
                }
            }
        Histogram histogram;
        histogram.Compute(image, mask);
        ASSERT_EQ(Status::Error().Code, NoError);
        const auto counted = [&] {
            return std::vector<int>(histogram.Samples(), histogram.Samples() + histogram.Length * channels);
        };
        expected.resize(counted().size());
        EXPECT_EQ(counted(), expected);
        histogram.Compute(image, mask, false);
        for (int& count : expected)
            count *= 2;
        EXPECT_EQ(counted(), expected);
    }
    Image bits;
    bits.Set(3, 3, Gray1);
    Histogram histogram;
    histogram.Compute(bits, mask);
    EXPECT_EQ(Status::Error().Code, UnsupportedType);
}

} // namespace
