// Measures, hulls and outlines of regions.
#include "image/Image.h"
#include "measure/Path.h"
#include "measure/region/Outline.h"
#include "tests/measure/region/Regions.h"

#include <algorithm>
#include <cmath>

using namespace Tesk;
using namespace Tesk::checks;

namespace {

class RegionShape : public RegionMethods
{};

std::vector<std::pair<int, int>> SitesOf(const Path& path)
{
    std::vector<std::pair<int, int>> sites;
    for (int i = 0; i < path.Length; i++)
        sites.emplace_back(path.Vertex(i).X, path.Vertex(i).Y);
    return sites;
}

TEST_F(RegionShape, FeaturesAreSumsOverTheRuns)
{
    const Region region = RegionOf({{2, 5, 1}, {-4, -3, 1}, {7, 8, 6}});
    int area = 0;
    EXPECT_EQ(region.Area(), 5);
    const XY center = region.Center(area);
    EXPECT_EQ(area, 5);
    EXPECT_DOUBLE_EQ(center.X, (2 + 3 + 4 - 4 + 7) / 5.0);
    EXPECT_DOUBLE_EQ(center.Y, (1 * 4 + 6) / 5.0);
    const Limits box = region.Box(0), wider = region.Box(2), smaller = region.Box(-1);
    EXPECT_EQ(std::tuple(box.X, box.Y, box.Width, box.Height), std::tuple(-4, 1, 12, 6));
    EXPECT_EQ(std::tuple(wider.X, wider.Y, wider.Width, wider.Height), std::tuple(-6, -1, 16, 10));
    EXPECT_EQ(std::tuple(smaller.X, smaller.Y, smaller.Width, smaller.Height), std::tuple(-3, 2, 10, 4));
    // The whole plane has more pixels than a number holds.
    Region plane, nothing;
    plane.Invert(-32768, -32768, 65536, 65536, nothing);
    EXPECT_EQ(plane.Area(), MaxInt);
    EXPECT_DOUBLE_EQ(plane.Center(area).X, -1);
    EXPECT_DOUBLE_EQ(plane.Center(area).Y, -0.5);
}

TEST_F(RegionShape, EmptyRegionsHaveNone)
{
    Region empty;
    int area = 7;
    double a = 1, b = 1, c = 1, d = 1, e = 1;
    Path path;
    Image image;
    image.Set(3, 3, Gray);
    const auto expect = [&](const wchar_t* message, const char* context) {
        EXPECT_EQ(Status::Error().Code, VoidObject);
        EXPECT_EQ(Message(), message);
        EXPECT_STREQ(Status::AsciiFunction(), context);
    };
    EXPECT_EQ(empty.Area(), 0);
    expect(L"The Region is empty", "Tesk::Region::Area");
    EXPECT_EQ(empty.Box(3).Width, 0);
    expect(L"The Region is empty", "Tesk::Region::Box");
    EXPECT_EQ(empty.Center(area).X, 0);
    expect(L"The Region is empty", "Tesk::Region::Center");
    EXPECT_EQ(empty.Mean(image, area), 0);
    expect(L"The Region is empty", "Tesk::Region::Mean");
    empty.Rectangle(a, b, c, d, e);
    expect(L"This Region is void", "Tesk::Region::Rectangle");
    empty.Circle(a, b, c);
    expect(L"This Region is void", "Tesk::Region::Circle");
    empty.ConvexHull(path);
    expect(L"This region is empty", "Tesk::Region::ConvexHull");
    empty.Convexify(image);
    expect(L"This region is empty", "Tesk::Region::Convexify");
    // A run that an erosion has emptied has no hull either.
    Region hollow = RegionOf({{4, 4, 1}});
    hollow.ConvexHull(path);
    expect(L"This region is empty", "Tesk::Region::ConvexHull");
    EXPECT_EQ(a + b + c + d + e + area, 5 + 7);
    path.Append(1, 1);
    hollow.Follow(path);
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(path.Length, 0);
}

TEST_F(RegionShape, HullOfAnyRegionIsThatOfItsPixels)
{
    Noise noise{31};
    for (int turn = 0; turn < 40; turn++) {
        Region region = Shuffled(RandomRegion(noise, turn % 6), noise);
        region.AddRun(0, 1, 0);
        Path pixels, expected, hull;
        for (const auto& [y, x] : PixelsOf(region))
            pixels.Append(x, y);
        pixels.ConvexHull(expected);
        region.ConvexHull(hull);
        auto corners = SitesOf(hull), wanted = SitesOf(expected);
        // The same polygon, in the same sense, from the top left corner instead of the leftmost one.
        const auto [x, y] = *std::min_element(wanted.begin(), wanted.end(), [](const auto& p, const auto& q) {
            return std::pair(p.second, p.first) < std::pair(q.second, q.first);
        });
        std::rotate(wanted.begin(), std::find(wanted.begin(), wanted.end(), std::pair(x, y)), wanted.end());
        EXPECT_EQ(corners, wanted);
        EXPECT_TRUE(hull.Closed);
        double a = 0, b = 0, c = 0, d = 0, e = 0, f = 0, g = 0, h = 0, i = 0, j = 0;
        region.Circle(a, b, c);
        pixels.Circle(f, g, h);
        EXPECT_NEAR(std::hypot(a - f, b - g) + std::abs(c - h), 0, 1e-9);
        region.Rectangle(a, b, c, d, e);
        pixels.Rectangle(f, g, h, i, j);
        EXPECT_NEAR(c * d, h * i, 1e-9);
    }
    Region dot = RegionOf({{3, 4, 5}});
    Path hull;
    dot.ConvexHull(hull);
    EXPECT_EQ(SitesOf(hull), (std::vector<std::pair<int, int>>{{3, 5}}));
}

TEST_F(RegionShape, RectangleAndCircleOfABoxPassThroughItsPixels)
{
    Region box;
    box.BoxAppend(Limits(10, 20, 9, 5));
    double x = 0, y = 0, width = 0, height = 0, angle = -1, radius = 0;
    box.Rectangle(x, y, width, height, angle);
    EXPECT_NEAR(x, 14, 1e-9);
    EXPECT_NEAR(y, 22, 1e-9);
    EXPECT_NEAR(width, 8, 1e-9);
    EXPECT_NEAR(height, 4, 1e-9);
    EXPECT_NEAR(std::abs(std::sin(angle * std::acos(-1) / 180)), 0, 1e-9);
    box.Circle(x, y, radius);
    EXPECT_NEAR(radius, std::sqrt(20), 1e-9);
}

TEST_F(RegionShape, ConvexifyingFillsTheHullRowByRow)
{
    // An L: the hull's slanted side runs from (4, 0) down to (8, 3): columns 4, 5.33, 6.67, 8, cut to whole ones.
    Region corner = RegionOf({{0, 5, 0}, {0, 2, 1}, {0, 1, 2}, {0, 9, 3}});
    corner.Convexify();
    EXPECT_EQ(RunsOf(corner), (RunTuples{{0, 5, 0}, {0, 6, 1}, {0, 7, 2}, {0, 9, 3}}));
    // Rows without pixels are filled, too; a quotient is cut towards the upper corner.
    Region apart = RegionOf({{0, 1, 0}, {-5, -4, 3}, {5, 6, 3}}, false);
    apart.Convexify();
    EXPECT_EQ(RunsOf(apart), (RunTuples{{0, 1, 0}, {-1, 2, 1}, {-3, 4, 2}, {-5, 6, 3}}));
    EXPECT_TRUE(apart.Sorted);
    // On any region it covers all pixels, and ends less than a pixel from the sides of the hull.
    Noise noise{4};
    for (int turn = 0; turn < 10; turn++) {
        const Region region = RandomRegion(noise, 8);
        Region hull(region);
        hull.Convexify();
        const Pixels filled = PixelsOf(hull);
        for (const auto& pixel : PixelsOf(region))
            ASSERT_TRUE(filled.contains(pixel));
        Path path;
        Region(region).ConvexHull(path);
        const auto corners = SitesOf(path);
        for (const auto& [start, end, y] : RunsOf(hull)) {
            double left = 1e9, right = -1e9;
            for (std::size_t i = 0; i < corners.size(); i++) {
                const auto [x0, y0] = corners[i];
                const auto [x1, y1] = corners[(i + 1) % corners.size()];
                if (y < std::min(y0, y1) || y > std::max(y0, y1)) continue;
                const double x = y0 == y1 ? x0 : x0 + double(y - y0) * (x1 - x0) / (y1 - y0);
                left = std::min({left, x, y0 == y1 ? double(x1) : x});
                right = std::max({right, x, y0 == y1 ? double(x1) : x});
            }
            EXPECT_LT(std::abs(start - left), 1) << y;
            EXPECT_LT(std::abs(end - 1 - right), 1) << y;
        }
    }
}

TEST_F(RegionShape, OutlineOfABarRunsOutAndBack)
{
    Path path;
    path.Closed = true;
    RegionOf({{3, 4, 5}}).Follow(path);
    EXPECT_EQ(path.Length, 0);
    EXPECT_FALSE(path.Closed);
    RegionOf({{3, 7, 5}}).Follow(path);
    EXPECT_EQ(SitesOf(path), (std::vector<std::pair<int, int>>{{3, 5}, {4, 5}, {5, 5}, {6, 5}, {5, 5}, {4, 5}}));
    RegionOf({{0, 2, 1}, {0, 2, 0}}, false).Follow(path);
    EXPECT_EQ(SitesOf(path), (std::vector<std::pair<int, int>>{{0, 0}, {1, 0}, {1, 1}, {0, 1}}));
}

/// The pixels of the piece that holds a pixel, with eight or four neighbours, out of `all`.
Pixels PieceOf(std::pair<int, int> seed, const Pixels& all, bool corners)
{
    Pixels piece = {seed};
    std::vector<std::pair<int, int>> waiting = {seed};
    while (!waiting.empty()) {
        const auto [y, x] = waiting.back();
        waiting.pop_back();
        for (int dy = -1; dy <= 1; dy++)
            for (int dx = -1; dx <= 1; dx++)
                if ((corners || dx * dy == 0) && all.contains({y + dy, x + dx}) && piece.emplace(y + dy, x + dx).second)
                    waiting.emplace_back(y + dy, x + dx);
    }
    return piece;
}

/// The pixels of a piece beside the ground that surrounds it.
Pixels RimOf(const Pixels& piece, int reach)
{
    Pixels ground, rim;
    for (int y = -reach; y <= reach; y++)
        for (int x = -reach; x <= reach; x++)
            if (!piece.contains({y, x})) ground.emplace(y, x);
    const Pixels outside = PieceOf({-reach, -reach}, ground, false);
    for (const auto& [y, x] : piece)
        if (outside.contains({y - 1, x}) || outside.contains({y + 1, x}) || outside.contains({y, x - 1}) ||
            outside.contains({y, x + 1}))
            rim.emplace(y, x);
    return rim;
}

TEST_F(RegionShape, OutlineMeetsAllOfTheOuterRimAndNothingElse)
{
    Noise noise{77};
    for (int turn = 0; turn < 60; turn++) {
        // Sparse enough for pieces, holes and bridges of a pixel.
        Region region;
        for (int y = -9; y < 9; y++)
            for (int x = -9; x < 9;) {
                const int end = x + 1 + noise.Byte() % 3;
                region.AddRun(x, end, y);
                x = end + 1 + noise.Byte() % (2 + turn % 4);
            }
        Path path;
        region.Follow(path);
        const LabeledRun first = region.Runs()[0];
        const Pixels piece = PieceOf({first.Y, first.Start}, PixelsOf(region), true);
        Pixels met;
        const auto sites = SitesOf(path);
        for (std::size_t i = 0; i < sites.size(); i++) {
            const auto [x, y] = sites[i];
            const auto [nextX, nextY] = sites[(i + 1) % sites.size()];
            ASSERT_EQ(std::max(std::abs(nextX - x), std::abs(nextY - y)), 1);
            met.emplace(y, x);
        }
        if (piece.size() == 1)
            EXPECT_TRUE(met.empty());
        else
            EXPECT_EQ(met, RimOf(piece, 16)) << turn;
        EXPECT_GE(path.Area(), 0);
    }
}

TEST_F(RegionShape, OutlineServesAPartOfAListAndEndsOnAnyList)
{
    const Region region = RegionOf({{0, 9, 0}, {0, 2, 5}, {1, 3, 6}, {0, 9, 7}});
    std::vector<std::pair<int, int>> sites;
    regions::OutlineWalk walk;
    walk.Follow(region.Runs().subspan(1, 2), [&](int x, int y) { sites.emplace_back(x, y); });
    EXPECT_EQ(sites, (std::vector<std::pair<int, int>>{{0, 5}, {1, 5}, {2, 6}, {1, 6}}));
    // Runs over each other, which no walk can follow.
    Noise noise{6};
    for (int turn = 0; turn < 50; turn++) {
        Region mixed = Shuffled(RandomRegion(noise, 5), noise);
        Path path;
        mixed.Follow(path);
        EXPECT_LE(path.Length, 8 * mixed.Area());
    }
}

} // namespace
