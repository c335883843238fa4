#include "MorphoSupport.h"

#include <algorithm>
#include <utility>

using namespace MorphoSupport;

namespace {

/// The element of index trunc(area * percent) of the sorted values under the box, edge pixels repeated.
Picture SlowRank(int width, int height, double percent, const Picture& s)
{
    return Make(s.width, s.height, [&](int x, int y) {
        std::vector<int> values;
        for (int j = -(height / 2); j <= height / 2; j++)
            for (int i = -(width / 2); i <= width / 2; i++)
                values.push_back(s.Clamped(x + i, y + j));
        const auto place = values.begin() + static_cast<std::ptrdiff_t>(width * height * percent);
        std::nth_element(values.begin(), place, values.end());
        return *place;
    });
}

} // namespace

TEST_F(MorphoTest, RanksEqualSortingAtEverySizeTypeAndLevel)
{
    Image src, dst;
    const std::pair<int, int> boxes[] = {{1, 1}, {3, 3}, {5, 5},  {7, 7},   {9, 9},
                                         {3, 5}, {1, 9}, {13, 1}, {15, 15}, {33, 11}};
    const std::pair<int, int> sizes[] = {{1, 1}, {2, 9}, {17, 4}, {33, 9}, {64, 3}, {67, 8}, {130, 5}};
    for (const auto& [bw, bh] : boxes)
        for (const auto& [w, h] : sizes)
            for (const int range : {256, 12, 65536}) {
                const PixelTypes type = range > 256 ? Gray16 : Gray;
                RandomWindow(src, w, h, type, range, static_cast<std::uint32_t>(w * 31 + bw));
                Morpho morpho;
                morpho.Box(bw, bh);
                for (const double percent : {0.5, 0.0, 0.1, 0.77, 0.999}) {
                    const Picture expected = SlowRank(bw, bh, percent, Picture(src));
                    for (const SIMDLevels level : allLevels) {
                        const AtLevel at(level);
                        percent == 0.5 ? morpho.Median(src, dst) : morpho.Rank(percent, src, dst);
                        ASSERT_EQ(Picture(dst), expected)
                            << bw << ' ' << bh << ": " << w << ' ' << h << ' ' << percent << ' ' << level;
                    }
                }
            }
}

TEST_F(MorphoTest, EveryRankOfSmallSquaresIsExact)
{
    Image src, dst;
    for (const int size : {3, 5})
        for (int rank = 0; rank < size * size; rank++)
            for (const int range : {256, 7, 65536}) {
                RandomWindow(src, 67 + rank, 5, range > 256 ? Gray16 : Gray, range, static_cast<std::uint32_t>(rank));
                Morpho morpho;
                morpho.Square(size);
                const double percent = (rank + 0.5) / (size * size);
                morpho.Rank(percent, src, dst);
                ASSERT_EQ(Picture(dst), SlowRank(size, size, percent, Picture(src))) << size << ' ' << rank;
            }
}

TEST_F(MorphoTest, MediansAreExactAtEveryWidthAndHeight)
{
    Image src, dst;
    for (const int size : {3, 5, 7, 11})
        for (int w = 1; w <= 67; w++)
            for (int h = 1; h <= 9; h++) {
                RandomWindow(src, w, h, Gray, 256, static_cast<std::uint32_t>(100 * w + h));
                Morpho morpho;
                morpho.Square(size);
                morpho.Median(src, dst);
                ASSERT_EQ(Picture(dst), SlowRank(size, size, 0.5, Picture(src))) << size << ": " << w << ' ' << h;
            }
}

TEST_F(MorphoTest, BoxesFarLargerThanTheImageCountTheRepeatedEdges)
{
    Image src, dst;
    RandomWindow(src, 9, 7, Gray, 256, 77);
    Morpho morpho;
    for (const auto& [w, h] : {std::pair{101, 31}, {301, 255}, {31, 401}}) {
        morpho.Box(w, h);
        morpho.Median(src, dst);
        EXPECT_EQ(Picture(dst), SlowRank(w, h, 0.5, Picture(src))) << w;
        morpho.Rank(0.3, src, src);
        EXPECT_EQ(Status::Error().Code, NoError);
    }
    // Beyond all bounds only the corners count: three quarters lie above the smallest of four.
    Load(Make(2, 2, [](int x, int y) { return 10 * (1 + x + 2 * y); }), src);
    morpho.Square(MaxInt);
    morpho.Rank(0.3, src, dst);
    EXPECT_EQ(Picture(dst), Picture(2, 2, 20));
}

TEST_F(MorphoTest, MedianInPlaceEqualsThatOutOfPlace)
{
    for (const PixelTypes type : {Gray, Gray16})
        for (const int size : {3, 5, 9, 21}) {
            Image src, dst;
            RandomWindow(src, 45, 9, type, type == Gray ? 256 : 65536, 6);
            Morpho morpho;
            morpho.Square(size);
            morpho.Median(src, dst);
            morpho.Median(src, src);
            EXPECT_EQ(Picture(src), Picture(dst)) << size;
        }
}

TEST_F(MorphoTest, RankRefusesDiamondsSharesOutOfRangeAndTypes)
{
    Image src, dst, rgb;
    Load(Picture(5, 5, 1), src);
    rgb.Set(3, 3, Rgb);
    Morpho morpho;
    morpho.Diamond(3);
    morpho.Median(src, dst);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_EQ(Message(), L"Diamond and octagon shapes are not supported");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Morpho::Median");
    for (const double percent : {-0.1, 1.0, 1e300, std::numeric_limits<double>::quiet_NaN()}) {
        Morpho().Rank(percent, src, dst);
        EXPECT_EQ(Status::Error().Code, OutOfRange) << percent;
    }
    Morpho().Rank(0.5, rgb, dst);
    EXPECT_EQ(Status::Error().Code, UnsupportedType);
    EXPECT_EQ(Message(), L"The image type (Rgb) is not supported for this operation");
    EXPECT_EQ(dst.Type, Undefined);
}
