#include "image/Histogram.h"
#include "image/Image.h"
#include "tests/measure/path/PathShapes.h"

#include <algorithm>
#include <climits>
#include <functional>
#include <set>

using namespace Tesk;

namespace {

using PathShape = PathMethods;
using Sites = std::vector<std::pair<int, int>>;

std::int64_t Turn(const std::pair<int, int>& a, const std::pair<int, int>& b, const std::pair<int, int>& c)
{
    return std::int64_t{b.first - a.first} * (c.second - a.second) -
           std::int64_t{b.second - a.second} * (c.first - a.first);
}

/// The corners of the hull: the sites that lie between no others. A site is a corner if all others lie within less than
/// half a turn as seen from it.
std::set<std::pair<int, int>> HullByBruteForce(const Sites& sites)
{
    const std::set<std::pair<int, int>> distinct(sites.begin(), sites.end());
    std::set<std::pair<int, int>> corners;
    for (const auto& p : distinct) {
        bool isCorner = distinct.size() == 1;
        // A line through a corner and another site has all on one side, and on the line none on the other side of it.
        for (const auto& q : distinct) {
            if (q == p) continue;
            bool oneSided = true;
            for (const auto& r : distinct) {
                const std::int64_t turn = Turn(p, q, r);
                const bool behind = turn == 0 && std::int64_t{q.first - p.first} * (r.first - p.first) +
                                                         std::int64_t{q.second - p.second} * (r.second - p.second) <
                                                     0;
                oneSided = oneSided && turn >= 0 && !behind;
            }
            isCorner = isCorner || oneSided;
        }
        if (isCorner) corners.insert(p);
    }
    return corners;
}

void ExpectHull(const Path& hull, const Sites& sites)
{
    const Sites corners = SitesOf(hull);
    ASSERT_EQ(std::set(corners.begin(), corners.end()), HullByBruteForce(sites));
    ASSERT_EQ(std::set(corners.begin(), corners.end()).size(), corners.size());
    EXPECT_TRUE(hull.Closed);
    const std::size_t n = corners.size();
    for (std::size_t i = 0; n > 2 && i < n; i++) {
        const auto &a = corners[i], &b = corners[(i + 1) % n], &c = corners[(i + 2) % n];
        ASSERT_LT(std::int64_t{a.first - b.first} * (b.second - c.second),
                  std::int64_t{a.second - b.second} * (b.first - c.first));
    }
    EXPECT_EQ(corners.front(), *std::min_element(sites.begin(), sites.end()));
}

/// A polygon that does not cross itself: the directions of its sites from (0, 0) turn clockwise.
Path StarPath(std::mt19937& random, int count)
{
    Path path;
    std::uniform_real_distribution<double> radius(3, 40);
    for (int i = 0; i < count; i++) {
        const double r = radius(random), t = i * 2 * std::numbers::pi / count;
        path.Append(static_cast<int>(std::lround(r * std::cos(t))), static_cast<int>(std::lround(r * std::sin(t))));
    }
    path.Closed = true;
    return path;
}

TEST_F(PathShape, TheHullOfAnySitesHasTheirCorners)
{
    std::mt19937 random(1);
    for (int round = 0; round < 400; round++) {
        const Path path = RandomPath(random, 1 + round % 30, round % 3 == 0 ? 2 : round % 3 == 1 ? 10 : 32767);
        Path hull;
        path.ConvexHull(hull);
        ExpectHull(hull, SitesOf(path));
    }
}

TEST_F(PathShape, TheHullOfASimplePolygonIsTheSame)
{
    std::mt19937 random(7);
    for (int round = 0; round < 400; round++) {
        Path path = StarPath(random, 3 + round % 60), hull;
        path.ConvexHull(hull, true);
        ExpectHull(hull, SitesOf(path));
        // Counterclockwise as well.
        std::reverse(path.Sites(), path.Sites() + path.Length);
        path.ConvexHull(hull, true);
        ExpectHull(hull, SitesOf(path));
    }
    // Contours, which may touch themselves.
    for (int round = 0; round < 60; round++) {
        Image image;
        image.Set(14, 12, Gray);
        std::bernoulli_distribution filled(0.7);
        for (int y = 0; y < 12; y++)
            for (int x = 0; x < 14; x++)
                image.Row(y)[x] = filled(random) ? 255 : 0;
        Path path, hull;
        for (int y = 0; y < 12; y++) {
            Site seed(0, y);
            path.Follow(seed, 100, image, true, round % 2 == 0);
            if (path.Length == 0) continue;
            path.ConvexHull(hull, true);
            ExpectHull(hull, SitesOf(path));
        }
    }
}

TEST_F(PathShape, TheHullOfCollinearSitesHasTheTwoEnds)
{
    for (const bool simple : {false, true}) {
        Path path = PathOf({{5, 5}, {1, 1}, {3, 3}}), hull;
        path.OrgX = 7;
        path.ConvexHull(hull, simple);
        EXPECT_EQ(SitesOf(hull), (Sites{{1, 1}, {5, 5}}));
        EXPECT_EQ(hull.OrgX, 7);
        PathOf({{2, 2}, {2, 2}}).ConvexHull(hull, simple);
        EXPECT_EQ(SitesOf(hull), (Sites{{2, 2}}));
        // In place.
        path.ConvexHull(path, simple);
        EXPECT_EQ(path.Length, 2);
    }
}

TEST_F(PathShape, BoxHasTheLeastAndTheLargestCoordinates)
{
    int x = 0, y = 0, width = 0, height = 0;
    PathOf({{5, -7}, {-3, 9}, {1, 1}}).Box(x, y, width, height);
    EXPECT_EQ(x, -3);
    EXPECT_EQ(y, -7);
    EXPECT_EQ(width, 8);
    EXPECT_EQ(height, 16);
    PathOf({{-32768, -32768}, {32767, 32767}}).Box(x, y, width, height);
    EXPECT_EQ(width, 65535);
}

TEST_F(PathShape, ARotatedRectangleIsFound)
{
    // Sides (120, 50) and (-25, 60): 130 by 65 at atan2(50, 120).
    for (const bool simple : {true, false}) {
        double xc = 0, yc = 0, width = 0, height = 0, angle = 0;
        PathOf({{10, 20}, {130, 70}, {105, 130}, {-15, 80}}).Rectangle(xc, yc, width, height, angle, simple);
        EXPECT_NEAR(xc, 57.5, 1e-9);
        EXPECT_NEAR(yc, 75, 1e-9);
        EXPECT_NEAR(width, 130, 1e-9);
        EXPECT_NEAR(height, 65, 1e-9);
        EXPECT_NEAR(angle, std::atan2(50, 120) / radian, 1e-9);
        // The long side along y.
        PathOf({{0, 0}, {10, 0}, {10, 30}, {0, 30}}).Rectangle(xc, yc, width, height, angle, simple);
        EXPECT_NEAR(width, 30, 1e-9);
        EXPECT_NEAR(height, 10, 1e-9);
        EXPECT_NEAR(angle, 90, 1e-9);
        // Flat ones.
        PathOf({{9, 0}, {3, 6}, {6, 3}}).Rectangle(xc, yc, width, height, angle, simple);
        EXPECT_NEAR(width, 6 * std::sqrt(2), 1e-9);
        EXPECT_EQ(height, 0);
        EXPECT_NEAR(angle, 135, 1e-9);
        PathOf({{4, 5}}).Rectangle(xc, yc, width, height, angle, simple);
        EXPECT_EQ(xc, 4);
        EXPECT_EQ(width, 0);
        EXPECT_EQ(angle, 0);
    }
}

/// The extent of sites along a direction.
double Extent(const Sites& sites, double x, double y)
{
    double least = 1e18, largest = -1e18;
    for (const auto& p : sites) {
        const double along = p.first * x + p.second * y;
        least = std::min(least, along);
        largest = std::max(largest, along);
    }
    return largest - least;
}

TEST_F(PathShape, RectangleAndParallelogramAreTheLeastOfAllSideDirections)
{
    std::mt19937 random(9);
    for (int round = 0; round < 200; round++) {
        const Path path = RandomPath(random, 3 + round % 25, round % 2 ? 12 : 3000);
        const Sites sites = SitesOf(path);
        double leastRectangle = 1e18, leastParallelogram = 1e18;
        std::vector<XY> directions;
        for (const auto& a : sites)
            for (const auto& b : sites) {
                const double dx = b.first - a.first, dy = b.second - a.second, length = std::hypot(dx, dy);
                if (length > 0) directions.emplace_back(dx / length, dy / length);
            }
        for (const XY u : directions)
            leastRectangle = std::min(leastRectangle, Extent(sites, u.X, u.Y) * Extent(sites, -u.Y, u.X));
        if (sites.size() < 12)
            for (const XY u : directions)
                for (const XY v : directions)
                    if (const double sine = std::abs(u.X * v.Y - u.Y * v.X); sine > 1e-9)
                        leastParallelogram =
                            std::min(leastParallelogram, Extent(sites, -u.Y, u.X) * Extent(sites, -v.Y, v.X) / sine);
        double xc = 0, yc = 0, width = 0, height = 0, angle = 0;
        path.Rectangle(xc, yc, width, height, angle, false);
        if (leastRectangle > 1e17) leastRectangle = 0;
        EXPECT_NEAR(width * height, leastRectangle, 1e-6 * (1 + leastRectangle)) << round;
        EXPECT_GE(width, height);
        EXPECT_TRUE(angle >= 0 && angle < 180);
        const double c = std::cos(angle * radian), s = std::sin(angle * radian);
        for (const auto& p : sites) {
            EXPECT_LE(std::abs((p.first - xc) * c + (p.second - yc) * s), width / 2 + 1e-6);
            EXPECT_LE(std::abs((p.second - yc) * c - (p.first - xc) * s), height / 2 + 1e-6);
        }

        XY p(0, 0), q(0, 0), r(0, 0);
        path.Parallelogram(p, q, r, false);
        const XY one(p.X - q.X, p.Y - q.Y), two(r.X - q.X, r.Y - q.Y);
        const double area = std::abs(one.X * two.Y - one.Y * two.X);
        if (leastParallelogram < 1e17) {
            EXPECT_NEAR(area, leastParallelogram, 1e-6 * (1 + area)) << round;
        }
        EXPECT_LE(area, width * height * (1 + 1e-9));
        if (area < 1e-6) continue;
        for (const auto& site : sites) {
            const XY d(site.first - q.X, site.second - q.Y);
            const double u = (d.X * two.Y - d.Y * two.X) / (one.X * two.Y - one.Y * two.X);
            const double v = (one.X * d.Y - one.Y * d.X) / (one.X * two.Y - one.Y * two.X);
            EXPECT_TRUE(u > -1e-6 && u < 1 + 1e-6 && v > -1e-6 && v < 1 + 1e-6) << round;
        }
    }
}

TEST_F(PathShape, TheCircleIsTheLeastThroughTwoOrThreeSites)
{
    std::mt19937 random(6);
    for (int round = 0; round < 150; round++) {
        const Path path = round % 10 == 0 ? EllipsePath({0, 0}, {50, 50}, 0, 18)
                                          : RandomPath(random, 1 + round % 18, round % 2 ? 5 : 30000);
        const Sites sites = SitesOf(path);
        double x = 0, y = 0, radius = -1;
        path.Circle(x, y, radius, false);
        for (const auto& p : sites)
            ASSERT_LE(std::hypot(p.first - x, p.second - y), radius * (1 + 1e-9) + 1e-9);
        double least = sites.size() == 1 ? 0 : 1e18;
        const auto consider = [&](double cx, double cy) {
            double largest = 0;
            for (const auto& p : sites)
                largest = std::max(largest, std::hypot(p.first - cx, p.second - cy));
            least = std::min(least, largest);
        };
        for (const auto& a : sites)
            for (const auto& b : sites) {
                consider((a.first + b.first) / 2.0, (a.second + b.second) / 2.0);
                for (const auto& c : sites) {
                    const double d = 2.0 * static_cast<double>(Turn(a, b, c));
                    if (d == 0) continue;
                    const double bx = b.first - a.first, by = b.second - a.second, cx = c.first - a.first,
                                 cy = c.second - a.second;
                    consider(a.first + (cy * (bx * bx + by * by) - by * (cx * cx + cy * cy)) / d,
                             a.second + (bx * (cx * cx + cy * cy) - cx * (bx * bx + by * by)) / d);
                }
            }
        EXPECT_NEAR(radius, least, 1e-7 * (1 + least)) << round;
    }
}

TEST_F(PathShape, AreaAndPerimeterOfASquareUnderTheAxesOfTheScreen)
{
    Path square = PathOf({{0, 0}, {10, 0}, {10, 10}, {0, 10}});
    EXPECT_EQ(square.Area(), 100);
    EXPECT_EQ(square.Perimeter(false), 40);
    EXPECT_EQ(square.Perimeter(true), 40);
    std::reverse(square.Sites(), square.Sites() + 4);
    EXPECT_EQ(square.Area(), -100);
    // Half pixels are rounded down; lengths of segments are cut: 1.4, 2.2 and 5.
    EXPECT_EQ(PathOf({{0, 0}, {1, 0}, {0, 1}}).Area(), 0);
    EXPECT_EQ(PathOf({{0, 0}, {0, 1}, {1, 0}}).Area(), -1);
    EXPECT_EQ(PathOf({{0, 0}, {1, 1}, {3, 2}}, false).Perimeter(), 1 + 2 + 3);
    EXPECT_EQ(PathOf({{0, 0}, {1, 1}, {3, 2}}, false).Perimeter(false), 1 + 2 + 3);
    // The largest polygon is beyond what the result holds.
    EXPECT_EQ(PathOf({{-32768, -32768}, {32767, -32768}, {32767, 32767}, {-32768, 32767}}).Area(), INT_MAX);
    EXPECT_EQ(PathOf({{4, 4}}).Area(), 0);
    EXPECT_EQ(PathOf({{4, 4}}).Perimeter(), 0);
}

TEST_F(PathShape, CentersAreOfTheVerticesOrOfTheInside)
{
    // An L of 10 x 10 without a quarter: 75 about (25/6, 25/6).
    const Path path = PathOf({{100, 200}, {110, 200}, {110, 205}, {105, 205}, {105, 210}, {100, 210}});
    double x = 0, y = 0;
    path.Center(x, y);
    EXPECT_DOUBLE_EQ(x, 105);
    EXPECT_DOUBLE_EQ(y, 205);
    int area = 0;
    ASSERT_TRUE(path.FilledCenter(area, x, y));
    EXPECT_EQ(area, 75);
    EXPECT_NEAR(x, 100 + 25 / 6.0, 1e-9);
    EXPECT_NEAR(y, 200 + 25 / 6.0, 1e-9);
    Path reversed = path;
    std::reverse(reversed.Sites(), reversed.Sites() + reversed.Length);
    ASSERT_TRUE(reversed.FilledCenter(area, x, y));
    EXPECT_EQ(area, 75) << "without a sign";
    EXPECT_NEAR(x, 100 + 25 / 6.0, 1e-9);
    area = 5;
    EXPECT_FALSE(PathOf({{0, 0}, {5, 5}, {9, 9}}).FilledCenter(area, x, y));
    EXPECT_EQ(area, 0);
    EXPECT_EQ(Status::Error().Code, NoError);
}

TEST_F(PathShape, TheEllipseOfInertiaOfAnEllipseIsItself)
{
    for (double turn = -80; turn <= 90; turn += 17) {
        int area = 0;
        double x = 0, y = 0, width = 0, height = 0, angle = 0, eccentricity = 0;
        ASSERT_TRUE(EllipsePath({-5000, 9000}, {1000, 500}, turn, 2000)
                        .FilledEllipse(area, x, y, width, height, angle, eccentricity));
        EXPECT_NEAR(area, std::numbers::pi * 500000, 300);
        EXPECT_NEAR(x, -5000, 0.1);
        EXPECT_NEAR(y, 9000, 0.1);
        EXPECT_NEAR(width, 2000, 1);
        EXPECT_NEAR(height, 1000, 1);
        EXPECT_NEAR(std::remainder(angle + turn, 180.0), 0, 0.1) << "against the y axis";
        // The moments are as the squares of the axes.
        EXPECT_NEAR(eccentricity, std::sqrt(1 - 1 / 16.0), 1e-3);
    }
    int area = 0;
    double x = 0, y = 0, width = 0, height = 0, angle = 7, eccentricity = 7;
    // A rectangle's is 4 / sqrt(12) of its sides.
    ASSERT_TRUE(
        PathOf({{0, 0}, {0, 6}, {12, 6}, {12, 0}}).FilledEllipse(area, x, y, width, height, angle, eccentricity));
    EXPECT_EQ(area, 72);
    EXPECT_NEAR(width, 48 / std::sqrt(12), 1e-9);
    EXPECT_NEAR(height, 24 / std::sqrt(12), 1e-9);
    EXPECT_FALSE(std::signbit(angle));
    ASSERT_TRUE(PathOf({{0, 0}, {6, 0}, {6, 6}, {0, 6}}).FilledEllipse(area, x, y, width, height, angle, eccentricity));
    EXPECT_NEAR(eccentricity, 0, 1e-6);
    EXPECT_FALSE(PathOf({{0, 0}, {6, 0}}).FilledEllipse(area, x, y, width, height, angle, eccentricity));
    // Paths that cross themselves stay within numbers.
    std::mt19937 random(3);
    for (int round = 0; round < 300; round++)
        if (RandomPath(random, 5, 32767).FilledEllipse(area, x, y, width, height, angle, eccentricity)) {
            EXPECT_TRUE(std::isfinite(x + y + width + height + angle + eccentricity));
            EXPECT_TRUE(eccentricity >= 0 && eccentricity <= 1);
        }
}

TEST_F(PathShape, GrayValuesAreThoseOnWhichThePathIsDrawn)
{
    Image image;
    image.Set(6, 5, Gray);
    for (int y = 0; y < 5; y++)
        for (int x = 0; x < 6; x++)
            image.Row(y)[x] = static_cast<std::uint8_t>(10 * y + x);
    Path path = PathOf({{1, 1}, {4, 3}, {4, 3}, {6, 0}, {-1, 2}});
    EXPECT_EQ(path.Mass(image), 11 + 34 + 34) << "a site outside does not count, one twice does";
    int mass = 0;
    double x = 0, y = 0;
    ASSERT_TRUE(path.Centroid(image, mass, x, y));
    EXPECT_EQ(mass, 79);
    EXPECT_NEAR(x, (11 * 1 + 68 * 4) / 79.0, 1e-12);
    EXPECT_NEAR(y, (11 * 1 + 68 * 3) / 79.0, 1e-12);
    // A window hides what is outside it, and moves nothing.
    image.Window(2, 2, 4, 3);
    EXPECT_EQ(path.Mass(image), 34 + 34);
    // A path from a window stands on the same pixels in the whole image.
    Site seed(2, 3);
    Path contour;
    contour.Follow(seed, 0, image);
    const int inWindow = contour.Mass(image);
    image.Window();
    EXPECT_EQ(contour.Mass(image), inWindow);
    EXPECT_EQ(contour.OrgX, 2);

    Histogram histogram;
    path.GrayHistogram(image, histogram);
    EXPECT_EQ(histogram.Length, 256);
    EXPECT_EQ(histogram.Bin(34), 2);
    EXPECT_EQ(histogram.Bin(11), 1);
    path.GrayHistogram(image, histogram, false);
    EXPECT_EQ(histogram.Bin(34), 4);
    path.GrayHistogram(image, histogram, true);
    EXPECT_EQ(histogram.Bin(34), 2);

    mass = 5;
    image.Row(0)[0] = 0;
    EXPECT_FALSE(PathOf({{0, 0}}).Centroid(image, mass, x, y));
    EXPECT_EQ(mass, 0);
    image.Set(6, 5, Rgb);
    mass = 5;
    EXPECT_EQ(path.Mass(image), 0);
    EXPECT_EQ(Status::Error().Code, IncompatibleType);
    EXPECT_FALSE(path.Centroid(image, mass, x, y));
    EXPECT_EQ(mass, 5);
    path.GrayHistogram(image, histogram);
    EXPECT_EQ(histogram.Bin(34), 2);
}

TEST_F(PathShape, AnEmptyPathIsRefusedInTheNameOfTheMethod)
{
    const Path path;
    Path dst = PathOf({{1, 1}});
    Image image;
    image.Set(3, 3, Gray);
    Histogram histogram;
    int i = 7;
    double d = 7;
    XY p(7, 7);
    const struct
    {
        const char* name;
        std::function<void()> call;
        const wchar_t* message;
    } calls[] = {
        {"Box", [&] { path.Box(i, i, i, i); }, L"This path is void"},
        {"Rectangle", [&] { path.Rectangle(d, d, d, d, d); }, L"This Path is void"},
        {"Parallelogram", [&] { path.Parallelogram(p, p, p); }, L"This Path is void"},
        {"Circle", [&] { path.Circle(d, d, d); }, L"This Path is void"},
        {"ConvexHull", [&] { path.ConvexHull(dst); }, L"This path is void"},
        {"Area", [&] { EXPECT_EQ(path.Area(), 0); }, L"This path is void"},
        {"Perimeter", [&] { EXPECT_EQ(path.Perimeter(), 0); }, L"This path is void"},
        {"Center", [&] { path.Center(d, d); }, L"This path is void"},
        {"FilledCenter", [&] { EXPECT_FALSE(path.FilledCenter(i, d, d)); }, L"This path is void"},
        {"FilledEllipse", [&] { EXPECT_FALSE(path.FilledEllipse(i, d, d, d, d, d, d)); }, L"This path is void"},
        {"Mass", [&] { EXPECT_EQ(path.Mass(image), 0); }, L"This path is void"},
        {"Centroid", [&] { EXPECT_FALSE(path.Centroid(image, i, d, d)); }, L"This path is void"},
        {"GrayHistogram", [&] { path.GrayHistogram(image, histogram); }, L"This path is void"},
        {"PolygonToRaster", [&] { path.PolygonToRaster(dst); }, L"The source path is void"},
        {"Smooth", [&] { path.Smooth(dst); }, L"This path is void"},
        {"Vectorize", [&] { path.Vectorize(dst, 1); }, L"This path is void"},
    };
    for (const auto& each : calls) {
        each.call();
        ExpectRefusal(VoidObject, each.message, std::string("Tesk::Path::") + each.name);
    }
    EXPECT_EQ(i, 7);
    EXPECT_EQ(d, 7);
    EXPECT_EQ(p.X, 7);
    EXPECT_EQ(dst.Length, 1);
    path.Vertex(0);
    ExpectRefusal(VoidObject, L"This path is void", "Tesk::Path::Vertex");
    dst.Vertex(-1);
    ExpectRefusal(OutOfRange, L"The element index (-1) is out of the path range [0..0]", "Tesk::Path::Vertex");
}

} // namespace
