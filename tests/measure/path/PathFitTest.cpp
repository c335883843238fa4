#include "tests/measure/path/PathShapes.h"

#include <algorithm>

using namespace Tesk;

namespace {

using PathFit = PathMethods;

constexpr FittingModes modes[] = {AverageFit, FastFit, AccurateFit, RobustFit};

/// The difference of two directions of lines, in degrees.
double Apart(double a, double b)
{
    const double d = std::abs(std::remainder(a - b, 180.0));
    return d;
}

Path LinePath(XY from, double angle, int count, double step = 1)
{
    Path path;
    for (int i = 0; i < count; i++)
        path.Append(static_cast<int>(std::lround(from.X + i * step * std::cos(angle * radian))),
                    static_cast<int>(std::lround(from.Y + i * step * std::sin(angle * radian))));
    return path;
}

TEST_F(PathFit, LineThroughTwoSitesKeepsTheirSense)
{
    XY center(7, 7);
    double angle = 7;
    for (const FittingModes mode : modes) {
        EXPECT_TRUE(PathOf({{10, 4}, {4, 4}}).LineFit(center, angle, mode));
        EXPECT_EQ(center.X, 7);
        EXPECT_EQ(center.Y, 4);
        EXPECT_EQ(angle, 180);
        EXPECT_TRUE(PathOf({{1, 1}, {3, 3}}).LineFit(center, angle, mode));
        EXPECT_DOUBLE_EQ(angle, 45);
    }
}

TEST_F(PathFit, ALineIsDegenerateWhereNoDirectionIsBest)
{
    for (const FittingModes mode : modes) {
        XY center(7, 8);
        double angle = 9;
        EXPECT_FALSE(PathOf({{3, 3}}).LineFit(center, angle, mode));
        EXPECT_FALSE(PathOf({{3, 3}, {3, 3}}).LineFit(center, angle, mode));
        EXPECT_FALSE(PathOf({{3, 3}, {3, 3}, {3, 3}}).LineFit(center, angle, mode));
        if (mode != RobustFit) {
            // Far from the origin, the sums must still tell that no direction is better.
            EXPECT_FALSE(PathOf({{30000, -30001}, {30010, -30001}, {30010, -29991}, {30000, -29991}})
                             .LineFit(center, angle, mode));
        }
        EXPECT_EQ(Status::Error().Code, NoError);
        EXPECT_EQ(center.X, 7);
        EXPECT_EQ(angle, 9);
    }
}

TEST_F(PathFit, TheLineHasTheLeastPerpendicularDistances)
{
    std::mt19937 random(1);
    for (int round = 0; round < 30; round++) {
        Path path = RandomPath(random, 12, 40);
        XY center(0, 0);
        double angle = 0;
        ASSERT_TRUE(path.LineFit(center, angle));
        const double best = path.LineDeviation(center, angle);
        for (double d = -90; d <= 90; d += 7)
            EXPECT_GE(path.LineDeviation(center, angle + d) + 1e-9, best);
        for (double shift : {-0.5, 0.5})
            EXPECT_GE(path.LineDeviation({center.X + shift, center.Y + 0.3}, angle) + 1e-9, best);
    }
    // In every octant, and through any place.
    for (double turn = 0; turn < 360; turn += 15) {
        XY center(0, 0);
        double angle = 0;
        ASSERT_TRUE(LinePath({1000, -2000}, turn, 200).LineFit(center, angle));
        EXPECT_LT(Apart(angle, turn), 0.2) << turn;
    }
}

TEST_F(PathFit, RobustLinesBearThreeOutliersInTen)
{
    for (double turn = 5; turn < 180; turn += 30) {
        Path path = LinePath({500, 300}, turn, 200);
        // Sites 1, 4, 7 ... of ten make three.
        for (int i = 0; i < path.Length; i++)
            if (i % 10 == 1 || i % 10 == 4 || i % 10 == 7) path.Vertex(i) = Site(500 + 2 * i % 90, 700 - i % 77);
        XY center(0, 0);
        double angle = 0, plain = 0;
        ASSERT_TRUE(path.LineFit(center, angle, RobustFit));
        EXPECT_LT(Apart(angle, turn), 0.5) << turn;
        const double distance = (center.X - 500) * std::sin(turn * radian) - (center.Y - 300) * std::cos(turn * radian);
        EXPECT_LT(std::abs(distance), 0.7) << turn;
        ASSERT_TRUE(path.LineFit(center, plain, AccurateFit));
        EXPECT_GT(Apart(plain, turn), 3) << "the outliers are such that a plain fit fails";
    }
}

TEST_F(PathFit, CirclesOfExactSitesAreExact)
{
    // All sites of integer coordinates at a distance of 65 from (100, -50).
    Path path;
    for (int x = -65; x <= 65; x++)
        for (int y = -65; y <= 65; y++)
            if (x * x + y * y == 65 * 65) path.Append(100 + x, -50 + y);
    ASSERT_EQ(path.Length, 36);
    for (const FittingModes mode : {FastFit, AccurateFit, RobustFit}) {
        XY center(0, 0);
        double radius = 0;
        ASSERT_TRUE(path.CircleFit(center, radius, mode));
        EXPECT_NEAR(center.X, 100, 1e-9) << mode;
        EXPECT_NEAR(center.Y, -50, 1e-9) << mode;
        EXPECT_NEAR(radius, 65, 1e-9) << mode;
        // And of three of them, far from the origin.
        ASSERT_TRUE(PathOf({{30000 + 65, 20000}, {30000 + 16, 20063}, {30000 - 33, 20000 - 56}})
                        .CircleFit(center, radius, mode));
        EXPECT_NEAR(center.X, 30000, 1e-7);
        EXPECT_NEAR(center.Y, 20000, 1e-7);
        EXPECT_NEAR(radius, 65, 1e-7);
    }
}

TEST_F(PathFit, CirclesAndArcsOfPixelsAreFittedToAPartOfAPixel)
{
    for (const double radius : {12.0, 80.0, 3000.0})
        for (const FittingModes mode : modes) {
            XY center(0, 0);
            double fitted = 0;
            ASSERT_TRUE(EllipsePath({50.3, 60.7}, {radius, radius}, 0, 300).CircleFit(center, fitted, mode));
            EXPECT_NEAR(center.X, 50.3, 0.15) << radius << ' ' << mode;
            EXPECT_NEAR(center.Y, 60.7, 0.15);
            EXPECT_NEAR(fitted, radius, 0.2);
        }
    const Path arc = EllipsePath({50, 60}, {200, 200}, 0, 200, 20, 110);
    for (const FittingModes mode : {FastFit, AccurateFit, RobustFit}) {
        XY center(0, 0);
        double fitted = 0;
        ASSERT_TRUE(arc.CircleFit(center, fitted, mode));
        EXPECT_NEAR(center.X, 50, 0.5);
        EXPECT_NEAR(center.Y, 60, 0.5);
        EXPECT_NEAR(fitted, 200, 0.5);
    }
    // The average takes the area between the arc and its chord for a full circle.
    XY center(0, 0);
    double fitted = 0, x = 0, y = 0;
    int area = 0;
    ASSERT_TRUE(arc.CircleFit(center, fitted, AverageFit));
    ASSERT_TRUE(arc.FilledCenter(area, x, y));
    EXPECT_EQ(center.X, x);
    EXPECT_NEAR(fitted, std::sqrt(std::abs(area) / std::numbers::pi), 0.01);
}

TEST_F(PathFit, TaubinIsNotTooSmallOnShortNoisyArcs)
{
    // Noise of up to 2 pixels on an arc of 30 degrees: Kasa's circle shrinks, Taubin's hardly.
    std::mt19937 random(4);
    std::uniform_int_distribution<int> noise(-2, 2);
    double kasa = 0, taubin = 0;
    constexpr int rounds = 50;
    for (int round = 0; round < rounds; round++) {
        Path arc = EllipsePath({0, 0}, {200, 200}, 0, 100, 0, 30);
        for (int i = 0; i < arc.Length; i++)
            arc.Vertex(i) = Site(arc.Vertex(i).X + noise(random), arc.Vertex(i).Y + noise(random));
        XY center(0, 0);
        double radius = 0;
        ASSERT_TRUE(arc.CircleFit(center, radius, FastFit));
        kasa += radius / rounds;
        ASSERT_TRUE(arc.CircleFit(center, radius, AccurateFit));
        taubin += radius / rounds;
    }
    EXPECT_LT(kasa, 192);
    EXPECT_NEAR(taubin, 200, 4);
}

TEST_F(PathFit, RobustCirclesBearThreeOutliersInTen)
{
    Path path = EllipsePath({150, 120}, {60, 60}, 0, 210);
    for (int i = 0; i < path.Length; i++)
        if (i % 10 == 1 || i % 10 == 4 || i % 10 == 7) path.Vertex(i) = Site(150 + 37 * i % 300, 120 + 53 * i % 200);
    XY center(0, 0);
    double radius = 0;
    ASSERT_TRUE(path.CircleFit(center, radius, RobustFit));
    // Outliers within the tolerance, 3 % of the spread of all sites, are none.
    EXPECT_NEAR(center.X, 150, 1.5);
    EXPECT_NEAR(center.Y, 120, 1.5);
    EXPECT_NEAR(radius, 60, 1.5);
    const double robust = radius;
    ASSERT_TRUE(path.CircleFit(center, radius, AccurateFit));
    EXPECT_GT(std::abs(radius - 60), 5 * std::abs(robust - 60)) << "a plain fit does not bear them";
}

TEST_F(PathFit, ACircleIsDegenerateOnALineAndOfTooFewSites)
{
    for (const FittingModes mode : modes) {
        XY center(7, 8);
        double radius = 9;
        EXPECT_FALSE(PathOf({{3, 3}}).CircleFit(center, radius, mode));
        EXPECT_FALSE(PathOf({{3, 3}, {4, 7}}).CircleFit(center, radius, mode));
        EXPECT_FALSE(PathOf({{3, 3}, {4, 4}, {9, 9}}).CircleFit(center, radius, mode));
        EXPECT_FALSE(PathOf({{5, 5}, {5, 5}, {5, 5}, {5, 5}, {5, 5}, {5, 5}}).CircleFit(center, radius, mode));
        Path line;
        for (int i = 0; i < 1000; i++)
            line.Append(-32000 + 21 * i, 31000 - 17 * i);
        EXPECT_FALSE(line.CircleFit(center, radius, mode)) << mode;
        XY axis(1, 2);
        EXPECT_FALSE(line.EllipseFit(center, axis, radius, mode)) << mode;
        EXPECT_EQ(Status::Error().Code, NoError);
        EXPECT_EQ(center.X, 7);
        EXPECT_EQ(radius, 9);
        EXPECT_EQ(axis.X, 1);
    }
}

TEST_F(PathFit, EllipsesOfPixelsAreFittedAtEveryAngle)
{
    for (double turn = -75; turn <= 90; turn += 15)
        for (const FittingModes mode : {AccurateFit, RobustFit}) {
            const Path path = EllipsePath({210.5, 190.2}, {120, 70}, turn, 400);
            XY center(0, 0), axis(0, 0);
            double angle = 0;
            ASSERT_TRUE(path.EllipseFit(center, axis, angle, mode)) << turn;
            EXPECT_NEAR(center.X, 210.5, 0.15) << turn << ' ' << mode;
            EXPECT_NEAR(center.Y, 190.2, 0.15);
            EXPECT_NEAR(axis.X, 120, 0.3);
            EXPECT_NEAR(axis.Y, 70, 0.3);
            EXPECT_LT(Apart(angle, turn), 0.3) << turn << ' ' << angle;
            EXPECT_GT(angle, -90.5);
            EXPECT_LE(angle, 90);
        }
}

TEST_F(PathFit, FiveSitesOfAnEllipseGiveIt)
{
    // (x / 25)^2 + (y / 50)^2 = 1 has these, about (1000, -300).
    const int u[] = {15, -15, 7, -20, 25}, v[] = {40, 40, -48, -30, 0};
    Path path;
    for (int i = 0; i < 5; i++)
        path.Append(1000 + u[i], -300 + v[i]);
    for (const FittingModes mode : modes) {
        XY center(0, 0), axis(0, 0);
        double angle = 0;
        ASSERT_TRUE(path.EllipseFit(center, axis, angle, mode));
        EXPECT_NEAR(center.X, 1000, 1e-6);
        EXPECT_NEAR(center.Y, -300, 1e-6);
        EXPECT_NEAR(axis.X, 50, 1e-6) << "the long axis is first";
        EXPECT_NEAR(axis.Y, 25, 1e-6);
        EXPECT_LT(Apart(angle, 90), 1e-6);
    }
    // Of more sites the fast fits take those at the fifths.
    Path longer;
    for (int i = 0; i < 5; i++) {
        longer.Append(1000 + u[i], -300 + v[i]);
        longer.Append(7 * i, 3);
    }
    XY center(0, 0), axis(0, 0);
    double angle = 0;
    ASSERT_TRUE(longer.EllipseFit(center, axis, angle, FastFit));
    EXPECT_NEAR(axis.X, 50, 1e-6);
    // Sites of a hyperbola give none, nor do four.
    EXPECT_FALSE(PathOf({{1, 60}, {2, 30}, {3, 20}, {4, 15}, {-1, -60}}).EllipseFit(center, axis, angle));
    EXPECT_FALSE(PathOf({{0, 10}, {10, 0}, {0, -10}, {-10, 0}}).EllipseFit(center, axis, angle));
}

TEST_F(PathFit, RobustEllipsesBearThreeOutliersInTenAtAnyPlace)
{
    for (const double offset : {0.0, 2000.0, -20000.0}) {
        Path path = EllipsePath({offset + 200, offset + 150}, {90, 50}, 25, 300);
        for (int i = 0; i < path.Length; i++)
            if (i % 10 == 1 || i % 10 == 4 || i % 10 == 8) {
                Site& site = path.Vertex(i);
                site = Site(site.X + 30 + 17 * i % 40, site.Y - 25 - 13 * i % 50);
            }
        XY center(0, 0), axis(0, 0);
        double angle = 0;
        ASSERT_TRUE(path.EllipseFit(center, axis, angle, RobustFit)) << offset;
        EXPECT_NEAR(center.X, offset + 200, 0.7);
        EXPECT_NEAR(center.Y, offset + 150, 0.7);
        EXPECT_NEAR(axis.X, 90, 0.7);
        EXPECT_NEAR(axis.Y, 50, 0.7);
        EXPECT_LT(Apart(angle, 25), 1);
        ASSERT_TRUE(path.EllipseFit(center, axis, angle, AccurateFit));
        EXPECT_GT(std::abs(center.X - offset - 200), 3) << "a plain fit does not bear them";
    }
}

TEST_F(PathFit, FitsOfRandomSitesAreFiniteAndAlike)
{
    std::mt19937 random(8);
    for (int round = 0; round < 400; round++) {
        const int extent = round % 4 == 0 ? 2 : round % 4 == 1 ? 20 : 32767;
        const Path path = RandomPath(random, 1 + round % 40, extent);
        for (const FittingModes mode : modes) {
            XY center(0, 0), axis(0, 0), again(0, 0);
            double value = 0, same = 0;
            if (path.LineFit(center, value, mode)) {
                ASSERT_TRUE(std::isfinite(center.X + center.Y + value));
                ASSERT_TRUE(path.LineFit(again, same, mode));
                ASSERT_EQ(value, same);
            }
            if (path.CircleFit(center, value, mode)) {
                ASSERT_TRUE(std::isfinite(center.X + center.Y + value) && value > 0);
            }
            if (path.EllipseFit(center, axis, value, mode)) {
                ASSERT_TRUE(std::isfinite(center.X + center.Y + axis.X + axis.Y + value));
                ASSERT_GE(axis.X, axis.Y);
            }
        }
    }
}

TEST_F(PathFit, DeviationsAreMeansOfDistances)
{
    const Path path = PathOf({{0, 3}, {10, -4}, {20, 0}});
    EXPECT_DOUBLE_EQ(path.LineDeviation({5, 0}, 0, false), 7 / 3.0);
    EXPECT_DOUBLE_EQ(path.LineDeviation({5, 0}, 180, true), std::sqrt(25 / 3.0));
    EXPECT_NEAR(path.LineDeviation({0, 0}, 45, false), (3 + 14 + 20) / std::sqrt(2) / 3, 1e-12);
    // Distances 3, 5 and 8 from (0, 0).
    const Path around = PathOf({{0, 3}, {3, -4}, {-8, 0}});
    EXPECT_DOUBLE_EQ(around.CircleDeviation({0, 0}, 5, false), (2 + 0 + 3) / 3.0);
    EXPECT_DOUBLE_EQ(around.CircleDeviation({0, 0}, 5, true), std::sqrt(13 / 3.0));
}

/// The distance from a point to a segment.
double ToSegment(XY p, XY a, XY b)
{
    const XY d(b.X - a.X, b.Y - a.Y);
    const double length = d.X * d.X + d.Y * d.Y;
    const double t = length > 0 ? std::clamp(((p.X - a.X) * d.X + (p.Y - a.Y) * d.Y) / length, 0.0, 1.0) : 0;
    return std::hypot(p.X - a.X - t * d.X, p.Y - a.Y - t * d.Y);
}

TEST_F(PathFit, RectangleDeviationIsTheDistanceToTheNearestSide)
{
    std::mt19937 random(2);
    for (int round = 0; round < 60; round++) {
        const Path path = RandomPath(random, 9, 60);
        const XY center(3.5, -2), sides(round % 5 == 0 ? 0 : 60, 31);
        const double angle = 17.0 * round, c = std::cos(angle * radian), s = std::sin(angle * radian);
        XY corners[4];
        for (int k = 0; k < 4; k++) {
            const double u = (k == 1 || k == 2 ? 1 : -1) * sides.X / 2, v = (k >= 2 ? 1 : -1) * sides.Y / 2;
            corners[k] = XY(center.X + c * u - s * v, center.Y + s * u + c * v);
        }
        double sum = 0;
        for (const auto& [x, y] : SitesOf(path)) {
            double least = 1e9;
            for (int k = 0; k < 4; k++)
                least = std::min(least, ToSegment(XY(x, y), corners[k], corners[(k + 1) % 4]));
            sum += least;
        }
        EXPECT_NEAR(path.RectangleDeviation(center, sides, angle, false), sum / path.Length, 1e-9) << round;
    }
}

/// The distance to the nearest of many points of an ellipse about the origin.
double ToEllipse(XY p, XY axis)
{
    double least = 1e9;
    constexpr int steps = 20000;
    for (int i = 0; i < steps; i++) {
        const double t = i * 2 * std::numbers::pi / steps;
        least = std::min(least, std::hypot(p.X - axis.X * std::cos(t), p.Y - axis.Y * std::sin(t)));
    }
    return least;
}

TEST_F(PathFit, EllipseDeviationConvergesToTheDistance)
{
    for (const XY axis : {XY(60, 30), XY(30, 60), XY(50, 50), XY(80, 10)})
        for (int x = -100; x <= 100; x += 25)
            for (int y = -100; y <= 100; y += 20) {
                const Path path = PathOf({{x, y}});
                const double distance = ToEllipse(XY(x, y), axis);
                const double first = path.EllipseDeviation({0, 0}, axis, 0, true, 0);
                const double last = path.EllipseDeviation({0, 0}, axis, 0, true, 3);
                // A foot point is on the ellipse: no distance to it is too short.
                EXPECT_GE(first, distance - 0.01);
                EXPECT_GE(last, distance - 0.01);
                const double outside = Sqr(x / axis.X) + Sqr(y / axis.Y);
                if (outside >= 0.8) {
                    EXPECT_LE(last, distance + 0.02 + 0.001 * distance) << axis.X << ' ' << x << ' ' << y;
                    EXPECT_LE(first, distance * 1.3 + 0.3) << axis.X << ' ' << x << ' ' << y;
                }
            }
    // The centre is as far as the short axis.
    for (const int iterations : {0, 3, -5, 1000}) {
        EXPECT_NEAR(PathOf({{4, 5}}).EllipseDeviation({4, 5}, {20, 10}, 30, true, iterations), 10, 1e-9);
        EXPECT_NEAR(PathOf({{4, 5}}).EllipseDeviation({4, 5}, {10, 20}, 30, true, iterations), 10, 1e-9);
        EXPECT_NEAR(PathOf({{4, 5}}).EllipseDeviation({4, 5}, {10, 10}, 30, true, iterations), 10, 1e-9);
        // An ellipse without width is a segment.
        EXPECT_NEAR(PathOf({{4, 5}}).EllipseDeviation({4, 2}, {10, 0}, 0, true, iterations), 3, 1e-9);
        EXPECT_NEAR(PathOf({{4, 5}}).EllipseDeviation({4, 2}, {0, 0}, 0, true, iterations), 3, 1e-9);
    }
    // Turned and moved: 13 from the centre along the long axis of 10.
    EXPECT_NEAR(PathOf({{8, 14}}).EllipseDeviation({3, 2}, {10, 4}, std::atan2(12, 5) / radian, false), 3, 1e-9);
}

TEST_F(PathFit, AnEmptyPathIsRefusedInTheNameOfTheMethod)
{
    const Path path;
    XY a(1, 1), b(2, 2);
    double value = 3;
    const std::wstring message = L"This path is void";
    EXPECT_FALSE(path.LineFit(a, value));
    ExpectRefusal(VoidObject, message, "Tesk::Path::LineFit");
    EXPECT_FALSE(path.CircleFit(a, value));
    ExpectRefusal(VoidObject, message, "Tesk::Path::CircleFit");
    EXPECT_FALSE(path.EllipseFit(a, b, value));
    ExpectRefusal(VoidObject, message, "Tesk::Path::EllipseFit");
    EXPECT_EQ(path.LineDeviation(a, 0), 0);
    ExpectRefusal(VoidObject, message, "Tesk::Path::LineDeviation");
    EXPECT_EQ(path.CircleDeviation(a, 1), 0);
    ExpectRefusal(VoidObject, message, "Tesk::Path::CircleDeviation");
    EXPECT_EQ(path.RectangleDeviation(a, b, 1), 0);
    ExpectRefusal(VoidObject, message, "Tesk::Path::RectangleDeviation");
    EXPECT_EQ(path.EllipseDeviation(a, b, 1), 0);
    ExpectRefusal(VoidObject, message, "Tesk::Path::EllipseDeviation");
    EXPECT_EQ(a.X, 1);
    EXPECT_EQ(value, 3);
}

} // namespace
