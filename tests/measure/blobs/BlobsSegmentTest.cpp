// Segmentations against a slow flood fill, their bounds, masks, colours and refusals.
#include "image/Image.h"
#include "image/Morpho.h"
#include "image/Operator.h"
#include "measure/Blobs.h"
#include "tests/measure/region/Regions.h"

#include <algorithm>
#include <functional>
#include <map>
#include <string>

using namespace Tesk;
using namespace Tesk::checks;

namespace {

class BlobsSegment : public RegionMethods
{};

using Pieces = std::vector<Pixels>;
using Active = std::function<bool(int x, int y)>;

/// The pieces of the active pixels of a window, in the order of their first pixels.
Pieces Flooded(int width, int height, const Active& active, bool connexity8, int dx = 0, int dy = 0)
{
    Pieces pieces;
    Pixels seen;
    const auto isNew = [&](int x, int y) {
        return x >= 0 && x < width && y >= 0 && y < height && active(x, y) && seen.emplace(y, x).second;
    };
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++) {
            if (!isNew(x, y)) continue;
            std::vector<std::pair<int, int>> reached{{x, y}};
            Pixels piece;
            while (!reached.empty()) {
                const auto [px, py] = reached.back();
                reached.pop_back();
                piece.emplace(py + dy, px + dx);
                for (int k = -1; k <= 1; k++)
                    for (int j = -1; j <= 1; j++)
                        if ((connexity8 || k == 0 || j == 0) && isNew(px + j, py + k))
                            reached.emplace_back(px + j, py + k);
            }
            pieces.push_back(piece);
        }
    return pieces;
}

/// The blobs, after a look at the order of their runs.
Pieces PiecesOf(const Blobs& blobs)
{
    Pieces pieces;
    EXPECT_EQ(int(blobs.NumSelectedBlobs), int(blobs.NumBlobs));
    for (int i = 0; i < blobs.NumBlobs; i++) {
        Pixels piece;
        std::pair<int, int> latest{-1, -1};
        for (const LabeledRun& run : blobs.RunsOf(i)) {
            EXPECT_LT(latest, std::pair(int(run.Y), int(run.Start)));
            EXPECT_EQ(run.Label, blobs.RunsOf(i)[0].Label);
            latest = {run.Y, run.Start};
            for (int x = run.Start; x < run.End; x++)
                piece.emplace(run.Y, x);
        }
        EXPECT_EQ(blobs.IntFeature(i, BlobArea), static_cast<int>(piece.size()));
        pieces.push_back(piece);
    }
    return pieces;
}

/// Column and row of the first pixel of a blob.
std::pair<int, int> FirstOf(const Blobs& blobs, int blob)
{
    const Site first = blobs.FirstPixel(blob);
    return {first.X, first.Y};
}

/// A `Gray` image of rows of text, 200 where there is an '#' and 40 elsewhere.
void Draw(Image& image, const std::vector<std::string>& rows)
{
    image.Set(static_cast<int>(rows[0].size()), static_cast<int>(rows.size()), Gray);
    for (int y = 0; y < image.Height; y++)
        for (int x = 0; x < image.Width; x++)
            image.Row(y)[x] = rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] == '#' ? 200 : 40;
}

void FillNoise(Image& image, int width, int height, PixelTypes type, Noise& noise)
{
    image.Set(width, height, type);
    for (int y = 0; y < height; y++)
        for (int i = 0; i < RowBytes(width, type); i++)
            image.Row(y)[i] = noise.Byte();
}

/// Feeds runs one by one, through the methods that other classes may replace.
class FedByRuns : public Blobs
{
public:
    int rows = 0;
    void AddRun(int Start, int End, int Y) override { Blobs::AddRun(Start, End, Y); }
    void EndRow() override
    {
        rows++;
        Blobs::EndRow();
    }
};

TEST_F(BlobsSegment, BlobsAreThePiecesThatAFloodFinds)
{
    Noise noise{5};
    Image image;
    Blobs used;
    for (const int width : {1, 2, 17, 70})
        for (const int threshold : {20, 100, 128, 160, 250})
            for (const bool connexity8 : {true, false})
                for (const bool above : {true, false}) {
                    FillNoise(image, width + 3, 33, Gray, noise);
                    image.Window(3, 2, width, 31);
                    const Pieces expected = Flooded(
                        width, 31, [&](int x, int y) { return (image.Row(y)[x] >= threshold) == above; }, connexity8, 3,
                        2);
                    Blobs blobs;
                    FedByRuns fed;
                    ASSERT_EQ(blobs.Segment(threshold, image, above, connexity8, 0), threshold);
                    ASSERT_EQ(PiecesOf(blobs), expected);
                    used.Segment(threshold, image, above, connexity8, 0);
                    ASSERT_EQ(PiecesOf(used), expected);
                    fed.Segment(threshold, image, above, connexity8, 0);
                    ASSERT_EQ(PiecesOf(fed), expected);
                    EXPECT_EQ(fed.rows, 32);
                    EXPECT_EQ(blobs.Connexity8, connexity8);
                    EXPECT_EQ(blobs.Threshold, threshold);
                }
}

TEST_F(BlobsSegment, ArmsThatMeetAreOneBlobUnderTheFirstLabel)
{
    struct
    {
        std::vector<std::string> rows;
        int with8, with4;
    } cases[] = {
        {{"#..#", "#..#", "####"}, 1, 1},
        {{"#.", ".#"}, 1, 2},
        {{".#", "#."}, 1, 2},
        {{"#", "#", "#"}, 1, 1},
        {{"#.#.#.#", ".#.#.#.", "#.#.#.#"}, 1, 11},
        {{"#########", "#.......#", "#.#####.#", "#.#...#.#", "#.#.#.#.#", "#.#.###.#", "#.#.....#", "#.#######"},
         1,
         1},
        {{"...#...", ".#.#.#.", "##.#.##", "#######"}, 1, 1},
        {{"....", "...."}, 0, 0}};
    for (const auto& [rows, with8, with4] : cases) {
        Image image;
        Draw(image, rows);
        Blobs blobs;
        blobs.Segment(100, image, true, true, 1);
        EXPECT_EQ(blobs.NumBlobs, with8) << rows[0];
        for (const LabeledRun& run : blobs.Runs())
            EXPECT_EQ(run.Label, 0);
        blobs.Segment(100, image, true, false, 1);
        EXPECT_EQ(blobs.NumBlobs, with4) << rows[0];
        EXPECT_EQ(Status::Error().Code, NoError);
    }
    // Two arms, and between them a blob that begins later than the first and ends before they meet.
    Image image;
    Draw(image, {"#...#", "#.#.#", "#...#", "#####"});
    Blobs blobs;
    blobs.Segment(100, image, true, true, 1);
    ASSERT_EQ(blobs.NumBlobs, 2);
    EXPECT_EQ(FirstOf(blobs, 0), std::pair(0, 0));
    EXPECT_EQ(FirstOf(blobs, 1), std::pair(2, 1));
    EXPECT_EQ(blobs.NumRuns(0), 7);
}

TEST_F(BlobsSegment, OnlyAreasWithinTheBoundsAreBlobs)
{
    Image image;
    Draw(image, {"####.#####.######", ".................", "#.##............."});
    Blobs blobs;
    blobs.DefaultClass = 7;
    Blobs::HitBlobIndex = 3;
    blobs.Segment(100, image);
    EXPECT_EQ(Blobs::HitBlobIndex, MinInt);
    ASSERT_EQ(blobs.NumBlobs, 2);
    EXPECT_EQ(blobs.IntFeature(0, BlobArea), 5);
    EXPECT_EQ(blobs.IntFeature(1, BlobArea), 6);
    EXPECT_EQ(blobs.IntFeature(1, BlobClass), 7);
    EXPECT_EQ(blobs.Area(), 18) << "the region side keeps the runs of what was rejected";
    blobs.Segment(100, image, true, true, 2, 4);
    ASSERT_EQ(blobs.NumBlobs, 2);
    EXPECT_EQ(FirstOf(blobs, 1), std::pair(2, 2));
    blobs.Segment(100, image, true, true, MaxInt);
    EXPECT_EQ(blobs.NumBlobs, 0);
    blobs.Segment(100, image, true, true, MinInt, 1);
    EXPECT_EQ(blobs.NumBlobs, 1);
    // A copy keeps what the other one replaces.
    const Blobs copy(blobs);
    blobs.Segment(100, image, false);
    EXPECT_EQ(FirstOf(copy, 0), std::pair(0, 2));
    EXPECT_EQ(blobs.NumBlobs, 1);
}

TEST_F(BlobsSegment, TypesAndThresholdsDecideWhichPixelsAreActive)
{
    Noise noise{8};
    Image gray, words, colors, bits;
    FillNoise(gray, 40, 20, Gray, noise);
    FillNoise(words, 40, 20, Gray16, noise);
    FillNoise(colors, 40, 20, Rgb, noise);
    FillNoise(bits, 40, 20, Gray1, noise);
    Blobs blobs;
    const auto expect = [&](const Active& active, const char* what) {
        EXPECT_EQ(Status::Error().Code, NoError);
        EXPECT_EQ(PiecesOf(blobs), Flooded(40, 20, active, true)) << what;
    };
    const int equal = words.Row<Gray16Pixel>(3)[3];
    for (const bool above : {true, false}) {
        blobs.Segment(equal, words, above, true, 1);
        expect([&](int x, int y) { return (words.Row<Gray16Pixel>(y)[x] >= equal) == above; }, "words");
        Region best;
        const int threshold = best.Binarize(Auto, gray);
        EXPECT_EQ(best.Binarize(MinInt, gray), threshold);
        for (const int automatic : {Auto, MinInt})
            EXPECT_EQ(blobs.Segment(automatic, gray, above, true, 1), threshold);
        EXPECT_EQ(blobs.Segment(gray, above, true, 1), threshold);
        EXPECT_EQ(blobs.Threshold, threshold);
        expect([&](int x, int y) { return (gray.Row(y)[x] >= threshold) == above; }, "best threshold");
        EXPECT_EQ(blobs.Segment(bits, above, true, 1), 0);
        expect([&](int x, int y) { return bits.PixelGray1(x, y); }, "bits");
        Image adaptive;
        for (const Image* src : {&gray, &words}) {
            Operator::Binarize(5, 9, *src, adaptive);
            blobs.Segment(5, 9, *src, above, true, 1);
            expect([&](int x, int y) { return (adaptive.Row(y)[x] == 255) == above; }, "adaptive");
            EXPECT_EQ(blobs.Threshold, 0);
        }
        // 256 / 42900 times the differences 190, 80 and 20 of the channels, in 1024ths, and the place half way.
        blobs.Segment(RgbPixel(10, 20, 30), RgbPixel(200, 100, 50), colors, above, true, 1);
        expect(
            [&](int x, int y) {
                const RgbPixel p = colors.Row<RgbPixel>(y)[x];
                return (1161 * p.Red + 488 * p.Green + 122 * p.Blue >= 156125) == above;
            },
            "colors");
    }
    blobs.Segment(gray, 60, 90, true, 1);
    expect([&](int x, int y) { return gray.Row(y)[x] >= 60 && gray.Row(y)[x] <= 90; }, "between");
    blobs.Segment(gray, 90, 60, true, 1);
    expect([&](int x, int y) { return gray.Row(y)[x] < 60 || gray.Row(y)[x] > 90; }, "outside");
    Image low, high;
    FillNoise(low, 40, 20, Gray, noise);
    FillNoise(high, 40, 20, Gray, noise);
    blobs._Segment(gray, low, high, 1, MaxInt);
    expect([&](int x, int y) { return gray.Row(y)[x] < low.Row(y)[x] || gray.Row(y)[x] > high.Row(y)[x]; },
           "tolerances");
}

TEST_F(BlobsSegment, DominantColorsPartTheTwoClouds)
{
    Noise noise{3};
    Image image;
    image.Set(30, 30, Rgb);
    const auto isDisc = [](int x, int y) { return (x - 14) * (x - 14) + (y - 15) * (y - 15) < 60; };
    for (int y = 0; y < 30; y++)
        for (int x = 0; x < 30; x++) {
            const int v = noise.Byte() % 20;
            image.Row<RgbPixel>(y)[x] = isDisc(x, y) ? RgbPixel(200 + v, 90, 120 + v) : RgbPixel(90 + v, 80 + v, 60);
        }
    Blobs blobs;
    for (const bool above : {true, false}) {
        EXPECT_EQ(blobs.Segment(image, above), 0);
        EXPECT_EQ(PiecesOf(blobs), Flooded(
                                       30, 30, [&](int x, int y) { return isDisc(x, y) == above; }, true));
    }
    // Of one colour, nothing lies below the mean: black is what the colour is compared with.
    for (int y = 0; y < 30; y++)
        std::fill_n(image.Row<RgbPixel>(y), 30, RgbPixel(50, 60, 70));
    blobs.Segment(image);
    EXPECT_EQ(blobs.NumBlobs, 1);
    blobs.Segment(RgbPixel(9, 9, 9), RgbPixel(9, 9, 9), image);
    EXPECT_EQ(blobs.NumBlobs, 0);
}

TEST_F(BlobsSegment, UnderAMaskTheRowBeforeIsTheLastOneWithPixels)
{
    Image image;
    Draw(image, {"####", "....", "####", "####"});
    const Region mask =
        RegionOf({{0, 2, -1}, {-3, 2, 0}, {3, 9, 0}, {50, 60, 0}, {1, 3, 2}, {7, 9, 3}, {0, 1, 3}, {0, 4, 9}}, false);
    Blobs blobs;
    const auto runs = [&](int blob) {
        RunTuples list;
        for (const LabeledRun& run : blobs.RunsOf(blob))
            list.emplace_back(run.Start, run.End, run.Y);
        return list;
    };
    blobs.Segment(100, mask, image, true, true, 1);
    ASSERT_EQ(blobs.NumBlobs, 1);
    EXPECT_EQ(runs(0), (RunTuples{{0, 2, 0}, {3, 4, 0}, {1, 3, 2}, {0, 1, 3}}));
    blobs.Segment(100, mask, image, true, false, 1);
    ASSERT_EQ(blobs.NumBlobs, 3);
    EXPECT_EQ(runs(0), (RunTuples{{0, 2, 0}, {1, 3, 2}}));
    // A row of the mask without an active pixel parts what lies above and below it.
    blobs.Segment(100, RegionOf({{0, 4, 0}, {0, 1, 1}, {0, 4, 2}}), image, true, true, 1);
    EXPECT_EQ(blobs.NumBlobs, 2);
    // Runs that overlap are labelled, and counted, each by itself.
    blobs.Segment(100, RegionOf({{0, 1, 2}, {3, 4, 2}, {0, 4, 3}, {0, 1, 3}}), image, true, false, 1);
    ASSERT_EQ(blobs.NumBlobs, 1);
    EXPECT_EQ(blobs.IntFeature(0, BlobArea), 7);
    blobs.Segment(100, blobs, image, true, false, 1);
    EXPECT_EQ(blobs.Area(), 7) << "the blobs may be the mask themselves";
    blobs.Segment(Region(), image);
    EXPECT_EQ(blobs.NumBlobs, 0);
}

TEST_F(BlobsSegment, AllFormsUnderAMaskTakeItsPixelsOnly)
{
    Noise noise{21};
    Image gray, colors;
    FillNoise(gray, 40, 20, Gray, noise);
    FillNoise(colors, 40, 20, Rgb, noise);
    Region box;
    box.BoxAppend({5, 3, 20, 12});
    Image window, colorWindow;
    window.ShallowCopy(gray, true);
    window.Window(5, 3, 20, 12);
    colorWindow.ShallowCopy(colors, true);
    colorWindow.Window(5, 3, 20, 12);
    Blobs masked, plain;
    const auto expectSame = [&](const char* what) {
        EXPECT_EQ(Status::Error().Code, NoError);
        EXPECT_EQ(PiecesOf(masked), PiecesOf(plain)) << what;
    };
    const int ofMask = plain.Segment(Auto, window);
    EXPECT_EQ(masked.Segment(Auto, box, gray), ofMask);
    expectSame("best of the mask");
    EXPECT_EQ(masked.Segment(box, gray), Blobs().Segment(gray));
    plain.Segment(90, window);
    masked.Segment(GrayPixel(61), GrayPixel(120), box, gray);
    expectSame("middle");
    EXPECT_EQ(masked.Threshold, 90);
    plain.Segment(window, 30, 200);
    masked.Segment(box, gray, 30, 200);
    expectSame("band");
    plain.Segment(RgbPixel(0, 9, 0), RgbPixel(100, 255, 70), colorWindow, false);
    masked.Segment(RgbPixel(0, 9, 0), RgbPixel(100, 255, 70), box, colors, false);
    expectSame("colors");
    masked.Segment(box, colors);
    EXPECT_EQ(Status::Error().Code, NoError);
    Image adaptive;
    Operator::Binarize(3, 0, gray, adaptive);
    masked.Segment(3, 0, box, gray, true, true, 1);
    EXPECT_EQ(PiecesOf(masked), Flooded(
                                    20, 12, [&](int x, int y) { return adaptive.Row(y + 3)[x + 5] != 0; }, true, 5, 3));
    masked._Segment(box, gray, adaptive, adaptive, 1, MaxInt);
    EXPECT_EQ(
        PiecesOf(masked),
        Flooded(
            20, 12, [&](int x, int y) { return gray.Row(y + 3)[x + 5] != adaptive.Row(y + 3)[x + 5]; }, true, 5, 3));
}

TEST_F(BlobsSegment, RefusalsLeaveTheBlobsThatStand)
{
    Image gray, words, colors, bits, nothing, wide, small;
    Draw(gray, {"#####"});
    words.Set(5, 1, Gray16);
    colors.Set(5, 1, Rgb);
    bits.Set(5, 1, Gray1);
    wide.Set(32768, 1, Gray);
    small.Set(4, 1, Gray);
    const Region mask = RegionOf({{0, 5, 0}});
    Blobs blobs;
    blobs.Segment(100, gray);
    const auto expect = [&](int code, const wchar_t* message, const std::string& function = "Tesk::Blobs::Segment") {
        EXPECT_EQ(Status::Error().Code, code);
        EXPECT_EQ(Message(), message);
        EXPECT_EQ(std::string(Status::AsciiFunction()), function);
        EXPECT_EQ(blobs.NumBlobs, 1);
    };
    const RgbPixel black(0, 0, 0), white(255, 255, 255);
    EXPECT_EQ(blobs.Segment(9, colors), 0);
    expect(UnsupportedType, L"The image type (Rgb) is not supported for this operation, use one of Gray, Gray16");
    blobs.Segment(9, mask, colors);
    expect(UnsupportedType,
           L"The source image type (Rgb) is not supported for this operation, use one of Gray, Gray16");
    blobs.Segment(GrayPixel(0), GrayPixel(9), mask, bits);
    expect(UnsupportedType,
           L"The source image type (Gray1) is not supported for this operation, use one of Gray, Gray16");
    blobs.Segment(words);
    expect(UnsupportedType, L"The image type (Gray16) is not supported for this operation, use Gray or Rgb");
    blobs.Segment(mask, bits);
    expect(UnsupportedType, L"The image type (Gray1) is not supported for this operation, use Gray or Rgb");
    blobs.Segment(9, 0, colors);
    expect(UnsupportedType, L"The image type (Rgb) is not supported for this operation, use Gray");
    blobs.Segment(9, 0, mask, words);
    expect(UnsupportedType, L"The image type (Gray16) is not supported for this operation, use Gray");
    blobs.Segment(black, white, gray);
    expect(UnsupportedType, L"The image type (Gray) is not supported for this operation, use Rgb");
    blobs.Segment(black, white, mask, gray);
    expect(UnsupportedType, L"The image type (Gray) is not supported for this operation, use Rgb");
    blobs.Segment(words, 1, 2);
    expect(UnsupportedType, L"The image type (Gray16) is not supported for this operation, use Gray");
    blobs._Segment(words, words, words, 0, 9);
    expect(UnsupportedType, L"The source image type (Gray16) is not supported for this operation, use Gray",
           "Tesk::Blobs::_Segment");
    for (const int automatic : {Auto, MinInt}) {
        blobs.Segment(automatic, words);
        expect(UnsupportedType, L"Image pixel Type (Gray16) not supported for this operation");
    }
    blobs.Segment(9, wide);
    expect(OutOfRange, L"The image size (32768, 1) is larger than the coordinates of a region reach (32767)");
    const auto codes = [&](int code, auto call) {
        call();
        EXPECT_EQ(Status::Error().Code, code);
        EXPECT_EQ(blobs.NumBlobs, 1);
    };
    codes(VoidObject, [&] { blobs.Segment(9, nothing); });
    codes(OutOfRange, [&] { blobs.Segment(8, 0, gray); });
    codes(IncompatibleSize, [&] { blobs._Segment(gray, gray, small, 0, 9); });
    codes(IncompatibleType, [&] { blobs._Segment(gray, words, gray, 0, 9); });
    std::fill_n(wide.Row(0), 32768, 0);
    wide.Window(1, 0, 32766, 1);
    blobs.Segment(0, wide);
    EXPECT_EQ(Status::Error().Code, NoError);
}

TEST_F(BlobsSegment, ManyBlobsAndWideImages)
{
    Image image;
    image.Set(2000, 2000, Gray);
    for (int y = 0; y < 2000; y++)
        for (int x = 0; x < 2000; x++)
            image.Row(y)[x] = x % 2 == 0 && y % 2 == 0 ? 255 : 0;
    Blobs blobs;
    blobs.Segment(128, image, true, true, 1);
    ASSERT_EQ(blobs.NumBlobs, 1000000);
    EXPECT_EQ(FirstOf(blobs, 999999), std::pair(1998, 1998));
    blobs.Evaluate(BlobFeretBox, image);
    blobs.ByFeatureSort(BlobBoxX, image, false);
    EXPECT_EQ(FirstOf(blobs, 0).first, 1998);
    blobs.ByFeatureSelect(BlobBoxY, image, 0, 99, Remove);
    EXPECT_EQ(blobs.NumSelectedBlobs, 1000000 - 50 * 1000);
    image.Set(32767, 2, Gray);
    for (int y = 0; y < 2; y++)
        std::fill_n(image.Row(y), 32767, y == 0 ? 0 : 255);
    image.Row(0)[32766] = 255;
    blobs.Segment(128, image, true, false);
    ASSERT_EQ(blobs.NumBlobs, 1);
    EXPECT_EQ(blobs.IntFeature(0, BlobArea), 32768);
}

TEST_F(BlobsSegment, RunsAddedByHandAreLabelledByTheRowBefore)
{
    Image image;
    Draw(image, {"#.#.#", "....."});
    Blobs blobs;
    blobs.Segment(100, image);
    // The region side replaces the runs under the labels.
    blobs.Region::Clear();
    const int rows[][3] = {{0, 2, 0}, {4, 6, 0}, {2, 4, 1}, {8, 9, 1}};
    for (const auto& [start, end, y] : rows) {
        if (y == 1 && start == 2) blobs.EndRow();
        blobs.AddRun(start, end, y);
    }
    const auto runs = blobs.Runs();
    ASSERT_EQ(runs.size(), 4u);
    EXPECT_EQ(runs[2].Label, Min(runs[0].Label, runs[1].Label)) << "two labels meet at corners";
    EXPECT_NE(runs[3].Label, runs[2].Label);
}

TEST_F(BlobsSegment, RegionsTakeTheRunsOfBlobs)
{
    Image image;
    Draw(image, {"##.##", ".....", "#####"});
    Blobs blobs;
    blobs.Segment(100, image, true, true, 1);
    Region region;
    region.BlobAppend(blobs, 2);
    EXPECT_EQ(RunsOf(region), (RunTuples{{0, 5, 2}}));
    EXPECT_TRUE(region.Sorted);
    EXPECT_EQ(region.Runs()[0].Label, blobs.RunsOf(2)[0].Label);
    blobs.SampleSelect(1, Remove);
    region.BlobAppend(blobs, AllDeselected);
    EXPECT_FALSE(region.Sorted);
    region.BlobAppend(blobs);
    EXPECT_EQ(region.NumRuns, 5);
    region.BlobAppend(blobs, 3);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_EQ(Message(), L"The blob index (3) must be in range [0..2]");
    EXPECT_EQ(std::string(Status::AsciiFunction()), "Tesk::Region::BlobAppend");
    region.BlobAppend(Blobs(), 0);
    EXPECT_EQ(Message(), L"No blob is available");
    EXPECT_EQ(region.NumRuns, 5);
}

TEST_F(BlobsSegment, EachBasinOfAWatershedIsABlob)
{
    Noise noise{4};
    Image image, map;
    FillNoise(image, 30, 22, Gray, noise);
    image.Window(4, 2, 25, 20);
    for (const bool connexity8 : {true, false}) {
        Blobs blobs;
        ASSERT_EQ(Morpho::_WatershedMap(connexity8, image, map, 60), 60);
        ASSERT_EQ(Morpho::Watershed(connexity8, image, blobs, 60), 60);
        std::map<int, Pixels> basins;
        for (int y = 0; y < 20; y++)
            for (int x = 0; x < 25; x++)
                if (map.Row<Gray32Pixel>(y)[x] > 2) basins[map.Row<Gray32Pixel>(y)[x]].emplace(y + 2, x + 4);
        Pieces expected;
        for (const auto& [label, pixels] : basins)
            expected.push_back(pixels);
        std::sort(expected.begin(), expected.end(),
                  [](const Pixels& a, const Pixels& b) { return *a.begin() < *b.begin(); });
        EXPECT_GT(expected.size(), 1u);
        EXPECT_EQ(PiecesOf(blobs), expected);
    }
    Image rgb;
    rgb.Set(3, 3, Rgb);
    Blobs blobs;
    EXPECT_EQ(Morpho::Watershed(true, rgb, blobs), 0);
    EXPECT_EQ(Message(), L"The image type (Rgb) is not supported for this operation, Gray or Grad required");
}

} // namespace
