// The parts of the search for matrix symbols against values worked out by hand.
#include "image/Image.h"
#include "read/matrix/CellSampling.h"
#include "read/matrix/DarkComponents.h"
#include "read/matrix/DataMatrixSearch.h"
#include "read/matrix/Outline.h"
#include "read/matrix/Rendered.h"
#include "read/matrix/ScaleLadder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <memory>
#include <string_view>
#include <vector>

namespace Tesk::matrix {
namespace {

void Fill(Image& image, int width, const std::vector<int>& values)
{
    image.Set(width, static_cast<int>(values.size()) / width, Gray);
    for (std::size_t i = 0; i < values.size(); ++i)
        image.Row(static_cast<int>(i) / width)[static_cast<int>(i) % width] = static_cast<std::uint8_t>(values[i]);
}

std::vector<int> RowOf(const Image& image, int y)
{
    return {image.Row(y), image.Row(y) + image.Width};
}

/// '#' is dark.
void Draw(Image& image, std::initializer_list<std::string_view> rows)
{
    image.Set(static_cast<int>(rows.begin()->size()), static_cast<int>(rows.size()), Gray);
    int y = 0;
    for (const std::string_view row : rows) {
        for (std::size_t x = 0; x < row.size(); ++x)
            image.Row(y)[x] = row[x] == '#' ? 0 : 255;
        ++y;
    }
}

TEST(ScaleLadder, DoublingLiesAQuarterFromEachPixel)
{
    Image src, dst;
    Fill(src, 3, {0, 100, 40, 80, 20, 255});
    Double(src, dst);
    ASSERT_EQ(dst.Width, 6);
    ASSERT_EQ(dst.Height, 4);
    EXPECT_EQ(RowOf(dst, 0), (std::vector{0, 25, 75, 85, 55, 40}));
    // Of the rows 0 25 75 85 55 40 and 80 65 35 78 196 255.
    EXPECT_EQ(RowOf(dst, 1), (std::vector{20, 35, 65, 83, 90, 93}));
    EXPECT_EQ(RowOf(dst, 2), (std::vector{60, 55, 45, 79, 160, 201}));
    EXPECT_EQ(RowOf(dst, 3), (std::vector{80, 65, 35, 78, 196, 255}));
}

TEST(ScaleLadder, ShrinkingWeighsCornersFour)
{
    Image src, dst;
    Fill(src, 4, {9, 18, 27, 1, 36, 45, 54, 1, 63, 72, 90, 1, 5, 5, 5, 5});
    ShrinkByThird(src, dst);
    ASSERT_EQ(dst.Width, 2);
    ASSERT_EQ(dst.Height, 2);
    EXPECT_EQ(RowOf(dst, 0), (std::vector{(36 + 36 + 72 + 45) / 9, (108 + 36 + 108 + 45) / 9}));
    EXPECT_EQ(RowOf(dst, 1), (std::vector{(252 + 72 + 144 + 45) / 9, (360 + 108 + 144 + 45) / 9}));
}

TEST(ScaleLadder, ScalesAndSizes)
{
    Image src;
    Blank(src, 100, 82, 7);
    ScaleLadder ladder;
    struct
    {
        int width, height;
        double scale;
    } const rungs[] = {{400, 328, 0.25}, {200, 164, 0.5}, {100, 82, 1}, {66, 54, 1.5}, {44, 36, 2.25}, {28, 24, 3.375}};
    ladder.Start(src, -2);
    for (const auto& rung : rungs) {
        EXPECT_EQ(ladder.Current().Width, rung.width);
        EXPECT_EQ(ladder.Current().Height, rung.height);
        EXPECT_EQ(ladder.Scale(), rung.scale);
        EXPECT_EQ(ladder.Stands(), rung.scale < 3);
        EXPECT_EQ(RowOf(ladder.Current(), 5), std::vector<int>(static_cast<std::size_t>(rung.width), 7));
        ladder.Descend();
    }
}

TEST(DarkComponents, JoinsDiagonalsAndOrdersByArea)
{
    Image image;
    Draw(image,
         {"#....##....", ".#..#......", "..##....##.", "........##.", "........#..", "...........", "..........."});
    DarkComponents components;
    components.Find(image, 128, 5);
    ASSERT_EQ(components.All().size(), 2u);
    EXPECT_EQ(components.All()[0].area, 7); // the V, whose arms meet late
    EXPECT_EQ(components.All()[1].area, 5);
    const ComponentShape square = components.ShapeOf(components.All()[1]);
    EXPECT_DOUBLE_EQ(square.centroid.X, (4 * 8.5 + 8) / 5);
    EXPECT_DOUBLE_EQ(square.centroid.Y, (2 * 2 + 2 * 3 + 4) / 5.0);
    EXPECT_TRUE(square.dense);
    EXPECT_TRUE(square.atFarEdges); // column 9 of 11
    EXPECT_FALSE(components.ShapeOf(components.All()[0]).atFarEdges);
    std::vector<RowExtent> extents;
    components.ExtentsOf(components.All()[0], extents);
    ASSERT_EQ(extents.size(), 3u);
    EXPECT_EQ(extents[0].first, 0);
    EXPECT_EQ(extents[0].last, 6);
}

TEST(DarkComponents, AspectIsThatOfARectangleOfUnitSquares)
{
    Image image;
    Blank(image, 60, 40, 255);
    for (int y = 5; y < 11; ++y)
        std::fill(image.Row(y) + 10, image.Row(y) + 34, std::uint8_t{0});
    DarkComponents components;
    components.Find(image, 128, 1);
    ASSERT_EQ(components.All().size(), 1u);
    EXPECT_NEAR(components.ShapeOf(components.All()[0]).aspect, 6.0 / 24, 1e-12);
}

TEST(Outline, ACompletedHullIsSymmetricAboutItsLongestChord)
{
    // The solid sides of a symbol: its far corner is the reflection of the near one.
    std::vector<Site> hull = {Site(0, 0), Site(0, 100), Site(100, 100), Site(90, 80)};
    CompleteHull(hull);
    ASSERT_EQ(hull.size(), 4u);
    for (const Site corner : {Site(0, 0), Site(0, 100), Site(100, 100), Site(100, 0)})
        EXPECT_TRUE(
            std::any_of(hull.begin(), hull.end(), [&](Site site) { return site.X == corner.X && site.Y == corner.Y; }));
    std::vector<RowExtent> rows;
    RowsOfPolygon(hull, 50, rows);
    ASSERT_EQ(rows.size(), 50u);
    EXPECT_EQ(rows[20].first, 0);
    EXPECT_EQ(rows[20].last, 100);
}

TEST(Outline, HullsAreReducedToTheSidesOfASquareAndRefined)
{
    Image image;
    Blank(image, 100, 100, 200);
    for (int y = 20; y < 70; ++y)
        std::fill(image.Row(y) + 30, image.Row(y) + 80, std::uint8_t{20});
    const EdgeCosts costs(image, BlackOnWhite);
    EXPECT_EQ(costs.Of(Site(30, 20), Site(30, 69)), -180);
    EXPECT_EQ(EdgeCosts(image, WhiteOnBlack).Of(Site(30, 20), Site(30, 69)), 180);
    const std::vector<Site> hull = {Site(30, 24), Site(30, 45), Site(30, 69), Site(79, 69),
                                    Site(79, 40), Site(79, 20), Site(34, 20)};
    const Quadrilateral reduced = ReduceHull(hull, costs);
    for (const Site corner : {Site(30, 20), Site(30, 69), Site(79, 69), Site(79, 20)})
        EXPECT_TRUE(std::any_of(reduced.begin(), reduced.end(),
                                [&](Site site) { return site.X == corner.X && site.Y == corner.Y; }));
    // Corners that are off by less than an eighteenth come back to the border.
    const Quadrilateral refined = RefineSides({Site(32, 18), Site(28, 71), Site(78, 68), Site(81, 22)}, costs);
    const Site expected[] = {Site(30, 20), Site(30, 69), Site(79, 69), Site(79, 20)};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR(refined[i].X, expected[i].X, 1);
        EXPECT_NEAR(refined[i].Y, expected[i].Y, 1);
    }
}

TEST(CellSampling, ClockTracksFindCellsOfUnequalWidth)
{
    // Columns 6 pixels wide in the left half and 10 in the right one.
    Image image;
    Blank(image, 120, 100, 220);
    const SymbolCells cells(MadeNamed("digits"));
    for (int y = 10; y < 90; ++y)
        for (int x = 10; x < 90; ++x) {
            const int column = x < 40 ? (x - 10) / 6 : 5 + (x - 40) / 10;
            if (cells((y - 10) / 8, column)) image.Row(y)[x] = 30;
        }
    SymbolLayout layout;
    const Quadrilateral outline = {Site(10, 10), Site(10, 89), Site(89, 89), Site(89, 10)};
    ASSERT_TRUE(FindLayout(image, outline, true, {Size10, Size10}, layout));
    EXPECT_EQ(layout.corners[0].X, 10);
    EXPECT_EQ(layout.corners[0].Y, 89);
    CellPlaces places;
    ClockTracks tracks;
    ASSERT_TRUE(tracks.Find(image, layout, places));
    ASSERT_EQ(places.nodesAcross.size(), 11u);
    for (std::size_t i = 1; i < 10; ++i) {
        const double border = i <= 5 ? 10 + 6.0 * static_cast<double>(i) : 10.0 * static_cast<double>(i) - 10;
        EXPECT_NEAR(places.nodesAcross[i] * 79 + 10, border - 0.5, 0.6) << i;
        EXPECT_NEAR(places.nodesDown[i] * 79 + 10, 10 + 8.0 * static_cast<double>(i) - 0.5, 0.6) << i;
    }
    codewords::DataMatrixGrid grid;
    int light = 0, dark = 0;
    SampleCells(image, 128, layout, places, CellVote::OnePixel, grid, light, dark);
    EXPECT_EQ(light + dark, 100);
    for (int row = 0; row < 10; ++row)
        for (int column = 0; column < 10; ++column)
            EXPECT_EQ(grid.IsDark(row, column), cells(row, column)) << row << ", " << column;
}

TEST(DataMatrixSearch, KeepsTheGridWhereQualityIsAskedFor)
{
    const SymbolCells cells(MadeNamed("Text, Structured Append"));
    const std::array<XY, 4> corners = {XY(30, 40), XY(180, 52), XY(172, 200), XY(22, 188)};
    const Homography place = Homography::Between(corners, 22, 22);
    Image image;
    Blank(image, 210, 230);
    Paint(cells, place, image);
    const auto search = std::make_unique<SymbolSearch>();
    const auto finder = std::make_unique<DataMatrixSearch>();
    search->settings.checkQuality = true;
    search->source = &image;
    ASSERT_TRUE(finder->Search({{image, 0, 1}, image, 128, BlackOnWhite}, *search));
    ASSERT_EQ(search->symbols.size(), 1u);
    EXPECT_EQ(search->grades.size(), 1u);
    EXPECT_EQ(search->failure.state, 1);
    const SampledSymbol& sampled = finder->Sampled();
    ASSERT_EQ(sampled.rows, 22);
    ASSERT_EQ(sampled.columns, 22);
    for (int row = 0; row <= 22; row += 11)
        for (int column = 0; column <= 22; column += 11) {
            const XY cell = place(sampled.Node(row, column));
            EXPECT_NEAR(cell.X, column, 0.25);
            EXPECT_NEAR(cell.Y, row, 0.25);
        }
    const XY first = place(sampled.Center(0, 0)), last = place(sampled.Center(21, 21));
    EXPECT_NEAR(first.X, 0.5, 0.25);
    EXPECT_NEAR(last.Y, 21.5, 0.25);
    EXPECT_EQ(sampled.darkCells, std::count(cells.dark.begin(), cells.dark.end(), true));
    EXPECT_EQ(sampled.lightCells + sampled.darkCells, 22 * 22);
    for (int row = 0; row < 22; ++row)
        for (int column = 0; column < 22; ++column)
            EXPECT_EQ(finder->Cells().IsDark(row, column), cells(row, column));

    // A component inside a symbol that was read is passed over: the same symbol is not read again.
    search->settings.maxDecoded = 2;
    EXPECT_FALSE(finder->Search({{image, 0, 1}, image, 128, BlackOnWhite}, *search));
    EXPECT_EQ(search->symbols.size(), 1u);
}

} // namespace
} // namespace Tesk::matrix
