// The steps of grading by slow formulas and at their edges.
#include "read/matrix/CellReflectance.h"
#include "read/matrix/Contrast.h"
#include "read/matrix/FixedPatterns.h"
#include "read/matrix/ReflectanceGrades.h"

#include "read/matrix/Rendered.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <limits>
#include <vector>

namespace Tesk::matrix {

namespace {

/// Levels without a pattern.
void Noise(Image& image, int width, int height)
{
    Blank(image, width, height, 128);
    AddNoise(image, 60);
}

TEST(Contrast, CountsThePixelsWithinTheOutline)
{
    Image image;
    Noise(image, 60, 50);
    const std::vector<std::vector<XY>> polygons = {
        {{10, 5}, {40, 12}, {35, 44}, {4, 30}},
        {{10, 10}, {20, 10}, {20, 20}, {10, 20}},                                         // on whole pixels
        {{-20, -10}, {90, 3}, {30, 200}},                                                 // out of the image
        {{5, 5}, {50, 5}, {50, 40}, {30.5, 40}, {30.5, 10}, {20, 10}, {20, 40}, {5, 40}}, // bent inward
        {{3, 3}, {3, 3}, {3, 3}},
        {}};
    for (const auto& polygon : polygons) {
        GrayCounts expected{};
        for (int y = 0; y < 50; ++y)
            for (int x = 0; x < 60; ++x) {
                bool inside = false;
                for (std::size_t i = 0; i < polygon.size(); ++i) {
                    const XY a = polygon[i], b = polygon[(i + 1) % polygon.size()];
                    if ((a.Y <= y) != (b.Y <= y) && x >= a.X + (y - a.Y) * (b.X - a.X) / (b.Y - a.Y)) inside = !inside;
                }
                if (inside) ++expected[image.Row(y)[x]];
            }
        EXPECT_EQ(CountInside(image, polygon), expected) << polygon.size();
    }
    const double nan = std::numeric_limits<double>::quiet_NaN();
    CountInside(image, std::vector<XY>{{0, 0}, {nan, 10}, {1e300, 1e300}, {10, -1e300}});
}

TEST(Contrast, PartsThePixelsWhereTheVarianceIsLeast)
{
    GrayCounts counts{};
    counts[20] = 100;
    counts[40] = 50;
    counts[200] = 30;
    counts[230] = 10;
    double best = 0;
    int first = -1, last = -1;
    for (int t = 1; t < 256; ++t) {
        double n[2]{}, sum[2]{};
        for (int v = 0; v < 256; ++v) {
            n[v >= t] += static_cast<double>(counts[static_cast<std::size_t>(v)]);
            sum[v >= t] += v * static_cast<double>(counts[static_cast<std::size_t>(v)]);
        }
        if (n[0] == 0 || n[1] == 0) continue;
        const double criterion = -(sum[0] * sum[0] / n[0] + sum[1] * sum[1] / n[1]);
        if (first < 0 || criterion < best) {
            best = criterion;
            first = t;
        }
        if (criterion == best) last = t;
    }
    ASSERT_EQ(first, 41);
    ASSERT_EQ(last, 200);
    const ContrastMeasure measure = MeasureContrast(counts);
    EXPECT_EQ(measure.threshold, 120);
    EXPECT_DOUBLE_EQ(measure.dark, 4000 / 150.0);
    EXPECT_DOUBLE_EQ(measure.light, 8300 / 40.0);
    EXPECT_EQ(measure.darkPixels, 150);
    EXPECT_EQ(measure.lightPixels, 40);

    SampledSymbol symbol;
    symbol.darkCells = 2;
    symbol.lightCells = 3;
    const double ink = std::sqrt(150 / 2.0), rest = std::sqrt(40 / 3.0);
    EXPECT_NEAR(PrintGrowth(measure, symbol, BlackOnWhite), (rest / (rest + ink) - 0.5) / 0.15, 1e-12);
    const double lightInk = std::sqrt(40 / 2.0), darkRest = std::sqrt(150 / 3.0);
    EXPECT_NEAR(PrintGrowth(measure, symbol, WhiteOnBlack), (darkRest / (darkRest + lightInk) - 0.5) / 0.15, 1e-12);

    // One level, or none, has no contrast, and no growth.
    for (const int pixels : {0, 7}) {
        counts = {};
        counts[90] = pixels;
        EXPECT_EQ(MeasureContrast(counts).Span(), 0);
        EXPECT_EQ(PrintGrowth(MeasureContrast(counts), symbol, BlackOnWhite), 0);
    }
}

TEST(CellReflectance, IsTheMeanOfADiscAlsoAcrossTheBorder)
{
    Image image;
    Noise(image, 40, 30);
    for (const auto& [diameter, radius] : {std::array{0.0, 1.0},
                                           {1.0, 1.0},
                                           {2.9, 1.0},
                                           {3.0, 2.0},
                                           {8.0, 4.0},
                                           {9.5, 5.0},
                                           {127.0, 64.0},
                                           {1e9, 64.0}}) {
        const ReflectanceDisc disc(diameter);
        const int r = disc.Radius();
        EXPECT_EQ(r, radius) << diameter;
        for (const XY place : {XY(20, 15), XY(0, 0), XY(39.4, 29.4), XY(-5, 12.5), XY(17.5, 100)}) {
            const int cx = std::clamp(static_cast<int>(std::lround(place.X)), 0, 39);
            const int cy = std::clamp(static_cast<int>(std::lround(place.Y)), 0, 29);
            double sum = 0;
            int count = 0;
            for (int y = -r; y <= r; ++y)
                for (int x = -r; x <= r; ++x)
                    if (x * x + y * y <= r * r) {
                        sum += image.Row(std::clamp(cy + y, 0, 29))[std::clamp(cx + x, 0, 39)];
                        ++count;
                    }
            EXPECT_EQ(disc.Mean(image, place), static_cast<int>(std::floor(sum / count + 0.5))) << diameter;
        }
    }
}

TEST(CellReflectance, LevelsHaveTheirEdges)
{
    const ToneScale scale{100, 200};
    const std::array<int, 10> distances{0, 19, 20, 29, 30, 39, 40, 49, 50, 100}, levels{0, 0, 1, 1, 2, 2, 3, 3, 4, 4};
    for (std::size_t i = 0; i < distances.size(); ++i) {
        EXPECT_EQ(scale.LevelOf(100 + distances[i]), levels[i]) << distances[i];
        EXPECT_EQ(scale.LevelOf(100 - distances[i]), levels[i]) << distances[i];
        EXPECT_DOUBLE_EQ(scale.Modulation(100 + distances[i]), distances[i] / 100.0);
    }
    EXPECT_EQ(scale.LevelOf(180, true), 0);
    EXPECT_EQ(scale.LevelOf(180, false), 4);
    EXPECT_EQ(scale.LevelOf(99, true), 0);
    EXPECT_EQ(scale.LevelOf(20, true), 4);
    EXPECT_EQ((ToneScale{100, 0}.LevelOf(255)), 0);
    EXPECT_EQ((ToneScale{100, 0}.Modulation(255)), 0);
}

LevelHistogram Levels(std::initializer_list<int> counts) // of the levels from 0 on
{
    LevelHistogram histogram;
    int level = 0;
    for (const int count : counts) {
        for (int i = 0; i < count; ++i)
            histogram.Add(level);
        ++level;
    }
    return histogram;
}

TEST(ReflectanceGrades, ABlockIsAsGoodAsTheBestOfItsLevels)
{
    EXPECT_EQ(GradeOfBlock(Levels({0, 0, 0, 0, 30}), 10), 4);
    EXPECT_EQ(GradeOfBlock(Levels({0, 0, 0, 30, 0}), 10), 3); // all words at one level have that
    EXPECT_EQ(GradeOfBlock(Levels({0, 0, 30, 0, 0}), 10), 2);
    EXPECT_EQ(GradeOfBlock(Levels({0, 30, 0, 0, 0}), 10), 1);
    EXPECT_EQ(GradeOfBlock(Levels({30, 0, 0, 0, 0}), 10), 0);
    // Words at 0 are as if they were wrong: 0.7, 0.6, 0.5, 0.4, 0.3 and 0.2 of the correction are left.
    const std::array<int, 6> grades{4, 3, 3, 2, 1, 0};
    for (int wrong = 3; wrong <= 8; ++wrong)
        EXPECT_EQ(GradeOfBlock(Levels({wrong, 0, 0, 0, 20}), 10), grades[static_cast<std::size_t>(wrong - 3)]) << wrong;
    // Five words at 2: at level 4 and 3 half is left, which is B.
    EXPECT_EQ(GradeOfBlock(Levels({0, 0, 5, 0, 20}), 10), 3);
    EXPECT_EQ(GradeOfBlock(Levels({0, 0, 9, 0, 20}), 10), 2);
    EXPECT_EQ(GradeOfBlock(Levels({0, 0, 0, 0, 3}), 0), 4); // nothing to correct with, and nothing to correct
    EXPECT_EQ(GradeOfBlock(Levels({1, 0, 0, 0, 3}), 0), 0);
}

TEST(ReflectanceGrades, TheWorstBlockCounts)
{
    const ToneScale scale{100, 200};
    WordLevels words(6, scale);
    for (int word = 0; word < 6; ++word) {
        words.Add(word, 0, true);
        words.Add(word, word == 3 ? 145 : 200, word != 5); // word 3 is weak, word 5 right; all others have a wrong cell
    }
    EXPECT_DOUBLE_EQ(words.LeastModulation(), 0.45);
    const auto grades = words.OfBlocks(
        2, [](int word) { return word == 5 ? -1 : word % 2; }, [](int) { return 2; });
    EXPECT_EQ(grades.modulation, 3); // half of the correction of the second block
    EXPECT_EQ(grades.margin, 0);
    EXPECT_EQ(WordLevels(3, scale).LeastModulation(), 0);
}

TEST(FixedPatterns, DamagedSharesHaveTheirEdges)
{
    const auto damaged = [](int count) { return GradeOfCells(Levels({count, 0, 0, 0, 100 - count})); };
    EXPECT_EQ(damaged(0), 4);
    EXPECT_EQ(damaged(1), 3);
    EXPECT_EQ(damaged(9), 3);
    EXPECT_EQ(damaged(10), 2);
    EXPECT_EQ(damaged(13), 2);
    EXPECT_EQ(damaged(14), 1);
    EXPECT_EQ(damaged(17), 1);
    EXPECT_EQ(damaged(18), 0);
    EXPECT_EQ(GradeOfCells(Levels({0, 0, 0, 50, 50})), 3); // weak cells are no damage at their level
    EXPECT_EQ(GradeOfCells(Levels({5, 0, 50, 0, 45})), 2);
}

TEST(FixedPatterns, GapsOfASideBreakIt)
{
    const auto side = [](std::initializer_list<int> gaps) {
        std::vector<int> levels(100, 4);
        for (const int gap : gaps)
            levels[static_cast<std::size_t>(gap)] = 0;
        return GradeOfSide(levels);
    };
    EXPECT_EQ(side({}), 4);
    EXPECT_EQ(side({0, 1, 2}), 3);
    EXPECT_EQ(side({0, 1, 2, 3}), 0);
    EXPECT_EQ(side({97, 98, 99}), 3);
    EXPECT_EQ(side({96, 97, 98, 99}), 0);
    EXPECT_EQ(side({50, 55}), 3);
    EXPECT_EQ(side({50, 54}), 0);
    EXPECT_EQ(side({50, 52}), 0);
    EXPECT_EQ(side({2, 99}), 3);
}

TEST(FixedPatterns, ATrackIsGradedByTheShareOfItsWrongCells)
{
    const auto track = [](std::size_t length, std::initializer_list<std::size_t> places) {
        std::vector<bool> wrong(length);
        for (const std::size_t place : places)
            wrong[place] = true;
        return GradeOfTrack(std::vector<int>(length, 4), wrong); // the levels leave it to the count
    };
    EXPECT_EQ(track(20, {}), 4);
    EXPECT_EQ(track(20, {3}), 4); // 5 - 1
    EXPECT_EQ(track(19, {3}), 3); // a little less than 4
    EXPECT_EQ(track(20, {3, 8}), 3);
    EXPECT_EQ(track(20, {3, 8, 13}), 2);
    EXPECT_EQ(track(20, {3, 8, 13, 18}), 1);
    EXPECT_EQ(track(8, {3, 4}), 0);     // 5 - 5
    EXPECT_EQ(track(40, {3, 5, 7}), 0); // in a window of five
    EXPECT_EQ(track(40, {3, 5, 8}), 3); // not in one: 5 - 1.5
    EXPECT_EQ(track(0, {}), 4);
}

} // namespace

} // namespace Tesk::matrix
