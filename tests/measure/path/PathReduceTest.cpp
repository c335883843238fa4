#include "tests/measure/path/PathShapes.h"

#include <algorithm>
#include <set>

using namespace Tesk;

namespace {

using PathReduce = PathMethods;
using Sites = std::vector<std::pair<int, int>>;

Path Raster(const Sites& corners)
{
    Path path;
    PathOf(corners).PolygonToRaster(path);
    return path;
}

/// The largest distance of a site from the lines through the kept sites around it; -1 where the kept ones are not sites
/// in their order.
double LargestDeviation(const Path& path, const Path& reduced)
{
    const Sites all = SitesOf(path), kept = SitesOf(reduced);
    const std::size_t n = all.size();
    std::size_t at = static_cast<std::size_t>(std::find(all.begin(), all.end(), kept[0]) - all.begin());
    double largest = 0;
    const std::size_t sides = path.Closed ? kept.size() : kept.size() - 1;
    for (std::size_t k = 0; k < sides; k++) {
        const auto &a = kept[k], &b = kept[(k + 1) % kept.size()];
        const double dx = b.first - a.first, dy = b.second - a.second, length = std::hypot(dx, dy);
        std::size_t steps = 0;
        do {
            if (++steps > n) return -1;
            at = (at + 1) % n;
            const double cross = dx * (all[at].second - a.second) - dy * (all[at].first - a.first);
            largest = std::max(largest, length > 0 ? std::abs(cross) / length : 0);
        } while (all[at] != b);
    }
    return largest;
}

TEST_F(PathReduce, SmoothingASquareKeepsItsCornersWhereverItStarts)
{
    Path square = Raster({{0, 0}, {30, 0}, {30, 20}, {0, 20}});
    ASSERT_EQ(square.Length, 100);
    for (int start = 0; start < 100; start += 7) {
        Path path = square, smooth;
        std::rotate(path.Sites(), path.Sites() + start, path.Sites() + 100);
        path.OrgX = 5;
        path.Smooth(smooth, 0.5);
        const Sites kept = SitesOf(smooth);
        EXPECT_EQ(std::set(kept.begin(), kept.end()),
                  (std::set<std::pair<int, int>>{{0, 0}, {30, 0}, {30, 20}, {0, 20}}))
            << start;
        EXPECT_EQ(smooth.Length, 4) << start;
        EXPECT_TRUE(smooth.Closed);
        EXPECT_EQ(smooth.OrgX, 5);
    }
}

TEST_F(PathReduce, SmoothingStaysWithinTheDeviationAndKeepsTheEndsOfAnOpenPath)
{
    std::mt19937 random(12);
    for (int round = 0; round < 120; round++) {
        // A walk that only goes right has sites of one kind each.
        Path path, smooth;
        int y = 0;
        std::uniform_int_distribution<int> step(-2, 2);
        for (int x = 0; x < 3 + 2 * round; x++)
            path.Append(x, y += step(random));
        const double deviation = 0.1 + round % 7;
        path.Smooth(smooth, deviation);
        const Sites all = SitesOf(path), kept = SitesOf(smooth);
        EXPECT_EQ(kept.front(), all.front());
        EXPECT_EQ(kept.back(), all.back());
        EXPECT_FALSE(smooth.Closed);
        const double largest = LargestDeviation(path, smooth);
        EXPECT_GE(largest, 0);
        EXPECT_LE(largest, deviation + 1e-6) << round;
    }
    // A straight stretch is two sites, and a path that comes back on itself keeps its tip.
    Path line, smooth;
    for (int x = 0; x < 50; x++)
        line.Append(2 * x, x);
    line.Smooth(smooth);
    EXPECT_EQ(SitesOf(smooth), (Sites{{0, 0}, {98, 49}}));
    const Path folded = PathOf({{0, 0}, {1, 0}, {2, 0}, {3, 0}, {2, 0}, {1, 0}});
    folded.Smooth(smooth);
    EXPECT_EQ(SitesOf(smooth), (Sites{{0, 0}, {3, 0}}));
}

TEST_F(PathReduce, SmoothingAConvexContourLeavesTheCornersOfItsHull)
{
    const Path circle = EllipsePath({0, 0}, {100, 100}, 0, 560);
    Path smooth, hull;
    circle.ConvexHull(hull);
    circle.Smooth(smooth, 2);
    const Sites kept = SitesOf(smooth), corners = SitesOf(hull);
    EXPECT_EQ(std::set(kept.begin(), kept.end()), std::set(corners.begin(), corners.end()));
    EXPECT_EQ(kept.size(), corners.size());
    // A notch as deep as the deviation goes, a deeper one stays.
    const Path notched = Raster({{0, 0}, {40, 0}, {40, 30}, {22, 30}, {20, 26}, {18, 30}, {0, 30}});
    notched.Smooth(smooth, 4.1);
    EXPECT_EQ(smooth.Length, 4);
    notched.Smooth(smooth, 3.5);
    EXPECT_GT(smooth.Length, 4);
    EXPECT_LE(LargestDeviation(notched, smooth), 3.5);
}

TEST_F(PathReduce, VectorizingAPolygonFindsItsSides)
{
    Path polygon;
    Raster({{0, 0}, {40, 0}, {40, 25}, {0, 25}}).Vectorize(polygon, 0.5);
    EXPECT_TRUE(polygon.Closed);
    // Near each corner a vertex; the middle of a chord round a corner leaves it late.
    EXPECT_GE(polygon.Length, 4);
    EXPECT_LE(polygon.Length, 6);
    for (const auto& [x, y] : Sites{{0, 0}, {40, 0}, {40, 25}, {0, 25}}) {
        double nearest = 1e9;
        for (const auto& [u, v] : SitesOf(polygon))
            nearest = std::min(nearest, std::hypot(u - x, v - y));
        EXPECT_LE(nearest, 2);
    }
    const Path circle = EllipsePath({0, 0}, {60, 60}, 0, 340);
    circle.Vectorize(polygon, 0.5);
    EXPECT_LT(polygon.Length, 70);
    EXPECT_NEAR(polygon.Area(), circle.Area(), 2 * std::numbers::pi * 60 * 0.7);
    const double largest = LargestDeviation(circle, polygon);
    EXPECT_GE(largest, 0);
    EXPECT_LE(largest, 1.5);
}

TEST_F(PathReduce, VectorizingWhatHasNoInsideKeepsItsEnds)
{
    Path polygon;
    PathOf({{4, 4}}).Vectorize(polygon, 0.5);
    EXPECT_EQ(SitesOf(polygon), (Sites{{4, 4}}));
    PathOf({{4, 4}, {5, 4}}).Vectorize(polygon, 0.5);
    EXPECT_EQ(polygon.Length, 2);
    Raster({{0, 0}, {9, 0}}).Vectorize(polygon, 0.5);
    const Sites ends = SitesOf(polygon);
    EXPECT_EQ(std::set(ends.begin(), ends.end()), (std::set<std::pair<int, int>>{{0, 0}, {9, 0}}));
    // Without a tolerance every site off a line stays, and nothing hangs.
    std::mt19937 random(2);
    for (int round = 0; round < 50; round++) {
        RandomPath(random, 1 + round, 3).Vectorize(polygon, round % 2 ? 0 : std::nan(""));
        EXPECT_GE(polygon.Length, 1);
        EXPECT_LE(polygon.Length, 1 + round);
        RandomPath(random, 1 + round, 3).Smooth(polygon, round % 2 ? 0 : std::nan(""));
        EXPECT_LE(polygon.Length, 1 + round);
    }
}

TEST_F(PathReduce, APolygonBecomesAnEightConnectedChainNearItsSides)
{
    EXPECT_EQ(SitesOf(Raster({{0, 0}, {4, 2}})),
              (Sites{{0, 0}, {1, 0}, {2, 1}, {3, 1}, {4, 2}, {3, 2}, {2, 1}, {1, 1}}));
    EXPECT_EQ(SitesOf(Raster({{3, 3}, {3, 3}})), (Sites{{3, 3}}));
    std::mt19937 random(21);
    for (int round = 0; round < 100; round++) {
        const Path polygon = RandomPath(random, 2 + round % 6, 50);
        Path chain;
        polygon.PolygonToRaster(chain);
        const Sites pixels = SitesOf(chain), corners = SitesOf(polygon);
        EXPECT_TRUE(chain.Closed);
        EXPECT_EQ(chain.Length, static_cast<int>(std::lround(polygon.Perimeter(false))));
        std::size_t at = 0;
        for (std::size_t k = 0; k < corners.size(); k++) {
            const auto a = corners[k], b = corners[(k + 1) % corners.size()];
            const int major = std::max(std::abs(b.first - a.first), std::abs(b.second - a.second));
            for (int i = 0; i < major; i++, at++) {
                // Half a pixel across at the most, and along exactly.
                const double x = a.first + double(b.first - a.first) * i / major;
                const double y = a.second + double(b.second - a.second) * i / major;
                ASSERT_LE(std::abs(pixels[at].first - x), 0.5);
                ASSERT_LE(std::abs(pixels[at].second - y), 0.5);
                const auto& next = pixels[(at + 1) % pixels.size()];
                ASSERT_EQ(std::max(std::abs(next.first - pixels[at].first), std::abs(next.second - pixels[at].second)),
                          1);
            }
        }
    }
}

TEST_F(PathReduce, InPlaceGivesTheSameAndSharersKeepTheirs)
{
    const Path source = EllipsePath({0, 0}, {40, 25}, 20, 150);
    const auto check = [&](auto reduce) {
        Path expected, path = source, sharer;
        reduce(source, expected);
        sharer.ShallowCopy(path, true);
        reduce(path, path);
        EXPECT_EQ(SitesOf(path), SitesOf(expected));
        EXPECT_EQ(SitesOf(sharer), SitesOf(source));
    };
    check([](const Path& src, Path& dst) { src.Smooth(dst, 1); });
    check([](const Path& src, Path& dst) { src.Vectorize(dst, 1); });
    check([](const Path& src, Path& dst) { src.PolygonToRaster(dst); });
    check([](const Path& src, Path& dst) { src.ConvexHull(dst, true); });
}

TEST_F(PathReduce, SmoothingThinBarsKeepsTheirLength)
{
    for (const int thickness : {2, 3, 4})
        for (const double deviation : {0.5, 3.0, 16.0})
            for (int start = 0; start < 400; start += 37) {
                Path bar = Raster({{0, 0}, {200, 0}, {200, thickness - 1}, {0, thickness - 1}}), smooth;
                std::rotate(bar.Sites(), bar.Sites() + start, bar.Sites() + bar.Length);
                bar.Smooth(smooth, deviation);
                // No site is farther than the deviation from what remains.
                const Sites kept = SitesOf(smooth);
                double largest = 0;
                for (const auto& [x, y] : SitesOf(bar)) {
                    double nearest = 1e9;
                    for (std::size_t k = 0; k < kept.size(); k++) {
                        const auto &a = kept[k], &b = kept[(k + 1) % kept.size()];
                        const double dx = b.first - a.first, dy = b.second - a.second, squared = dx * dx + dy * dy;
                        const double along = (x - a.first) * dx + (y - a.second) * dy;
                        const double share = squared > 0 ? std::clamp(along / squared, 0.0, 1.0) : 0;
                        nearest = std::min(nearest, std::hypot(x - a.first - share * dx, y - a.second - share * dy));
                    }
                    largest = std::max(largest, nearest);
                }
                EXPECT_LE(largest, deviation + 1e-6) << thickness << ' ' << start;
                EXPECT_LE(smooth.Length, 8) << thickness << ' ' << start;
            }
}

TEST_F(PathReduce, SmoothingALongStraightStretchTakesTimeByItsLength)
{
    // Quadratic time would be minutes.
    Path line, smooth;
    for (int i = 0; i < 300000; i++)
        line.Append(i / 10, (i / 10) / 3);
    line.Smooth(smooth, 2);
    EXPECT_EQ(smooth.Length, 2);
}

} // namespace
