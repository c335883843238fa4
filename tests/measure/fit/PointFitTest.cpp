#include "measure/fit/PointFit.h"
#include "measure/fit/PointShape.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>
#include <random>
#include <vector>

using namespace Tesk;
using namespace Tesk::fits;

namespace {

using Points = std::vector<XY>;

std::span<const XY> View(const Points& points)
{
    return points;
}

/// Exact points of an ellipse, between two parameters in radians.
Points OnEllipse(XY center, XY axis, double angle, int count, double from = 0, double to = 2 * std::numbers::pi)
{
    Points points;
    for (int i = 0; i < count; i++) {
        const double t = from + (to - from) * i / count, u = axis.X * std::cos(t), v = axis.Y * std::sin(t);
        points.emplace_back(center.X + std::cos(angle) * u - std::sin(angle) * v,
                            center.Y + std::sin(angle) * u + std::cos(angle) * v);
    }
    return points;
}

TEST(PointFit, ExactPointsOfAnyPlaceAndSizeGiveTheShapeBack)
{
    // From calibrated units far below a pixel to coordinates far from the origin.
    for (const double size : {1e-3, 1.0, 1e4})
        for (const double offset : {0.0, 1.0, 1e3}) {
            const XY center(offset * size + size, -2 * offset * size);
            const double tolerance = 1e-7 * size * (1 + offset);
            for (const double sweep : {2 * std::numbers::pi, 2.0}) {
                const Points round = OnEllipse(center, {size, size}, 0, 40, 0.3, 0.3 + sweep);
                Circle circle;
                for (const auto fit : {FitCircleKasa<XY>, FitCircleTaubin<XY>}) {
                    ASSERT_TRUE(fit(round, circle));
                    EXPECT_NEAR(circle.Center.X, center.X, tolerance);
                    EXPECT_NEAR(circle.Center.Y, center.Y, tolerance);
                    EXPECT_NEAR(circle.Radius, size, tolerance);
                }
                for (const double angle : {-1.5, -0.4, 0.0, 0.7, std::numbers::pi / 2}) {
                    const Points oval = OnEllipse(center, {size, 0.4 * size}, angle, 60, 0.3, 0.3 + sweep);
                    Ellipse ellipse;
                    Agreement agreement;
                    ASSERT_TRUE(FitEllipse(View(oval), ellipse)) << angle << ' ' << size << ' ' << offset;
                    EXPECT_NEAR(ellipse.Center.X, center.X, 10 * tolerance);
                    EXPECT_NEAR(ellipse.FirstAxis + ellipse.SecondAxis, 1.4 * size, 10 * tolerance);
                    ASSERT_TRUE(FitEllipseRobust(View(oval), 1e-3 * size * size, ellipse, &agreement));
                    EXPECT_NEAR(ellipse.Center.Y, center.Y, 10 * tolerance);
                    EXPECT_NEAR(std::abs(ellipse.FirstAxis - ellipse.SecondAxis), 0.6 * size, 10 * tolerance);
                    EXPECT_EQ(agreement.Count, 60);
                    EXPECT_LT(std::sqrt(agreement.Whole), tolerance);
                }
            }
        }
}

TEST(PointFit, TheFirstAxisIsTheLongerOneButAlongXWhereUpright)
{
    Ellipse ellipse;
    // x^2 / 4 + y^2 / 25 = 1, about (3, 4), in either sign.
    for (const double sign : {1.0, -1.0}) {
        const double a = sign / 4, c = sign / 25;
        ASSERT_TRUE(EllipseOf({a, 0, c, -6 * a, -8 * c, 9 * a + 16 * c - sign}, ellipse));
        EXPECT_NEAR(ellipse.Center.X, 3, 1e-12);
        EXPECT_NEAR(ellipse.Center.Y, 4, 1e-12);
        EXPECT_NEAR(ellipse.FirstAxis, 2, 1e-12);
        EXPECT_NEAR(ellipse.SecondAxis, 5, 1e-12);
        EXPECT_EQ(ellipse.Angle, 0);
    }
    // Turned by half a right angle: (x + y)^2 / 18 + (x - y)^2 / 8 = 1 has half axes of 3 and 2.
    ASSERT_TRUE(EllipseOf({1 / 18.0 + 1 / 8.0, 1 / 9.0 - 1 / 4.0, 1 / 18.0 + 1 / 8.0, 0, 0, -1}, ellipse));
    EXPECT_NEAR(ellipse.FirstAxis, 3, 1e-12);
    EXPECT_NEAR(ellipse.SecondAxis, 2, 1e-12);
    EXPECT_NEAR(ellipse.Angle, std::numbers::pi / 4, 1e-12);
    // A hyperbola, a parabola, an ellipse without points and a single point are none.
    const Ellipse before = ellipse;
    for (const Conic& conic : {Conic{1, 0, -1, 0, 0, -1}, Conic{1, 0, 0, 0, -1, 0}, Conic{1, 0, 1, 0, 0, 1},
                               Conic{1, 0, 1, 0, 0, 0}, Conic{0, 0, 0, 0, 0, 0}})
        EXPECT_FALSE(EllipseOf(conic, ellipse));
    EXPECT_EQ(ellipse.FirstAxis, before.FirstAxis);
}

TEST(PointFit, TheConicThroughFivePointsVanishesOnThem)
{
    std::mt19937 random(3);
    std::uniform_real_distribution<double> coordinate(-10, 10);
    for (int round = 0; round < 200; round++) {
        std::array<XY, 5> points;
        for (XY& p : points)
            p = {coordinate(random), coordinate(random)};
        Conic conic;
        ASSERT_TRUE(ConicThrough(points, conic));
        const double scale = std::abs(conic.At({11, 12})) + std::abs(conic.At({-13, 7}));
        for (const XY& p : points)
            EXPECT_LT(std::abs(conic.At(p)), 1e-9 * scale);
    }
    // Points on which no single conic is determined.
    Conic conic;
    const XY same(1, 2);
    EXPECT_FALSE(ConicThrough(std::array<XY, 5>{same, same, same, same, same}, conic));
}

TEST(PointFit, AgreementCountsThePointsWithinTheTolerance)
{
    Points points;
    for (int i = 0; i < 18; i++)
        points.emplace_back(i, 0.1 * (i % 2));
    points[4] = {4, 50};
    points[13] = {13, -70};
    Line line;
    Agreement agreement;
    ASSERT_TRUE(FitLineRobust(View(points), 0.5, line, &agreement));
    EXPECT_EQ(agreement.Count, 16);
    EXPECT_LE(agreement.Inner, 0.1);
    EXPECT_NEAR(agreement.Whole, (50 + 70 + 16 * agreement.Inner) / 18, 0.5);
    EXPECT_NEAR(line.Direction.Y, 0, 0.01);
    EXPECT_NEAR(std::hypot(line.Direction.X, line.Direction.Y), 1, 1e-15);
    // Of points on no circle each triple has its own alone, which is too few for a final fit.
    const Points scattered = {{0, 0}, {5, 1}, {9, 8}, {3, 12}, {-6, 4}, {20, -3}, {11, 30}};
    Circle circle;
    EXPECT_FALSE(FitCircleRobust(View(scattered), 1e-9, circle, &agreement));
    EXPECT_EQ(agreement.Count, 3);
    EXPECT_FALSE(FitLine(View({}), line));
    EXPECT_FALSE(FitLineRobust(View({}), 1, line));
    Ellipse ellipse;
    EXPECT_FALSE(FitEllipse(View({}), ellipse));
    EXPECT_EQ(Spread(View({})), 0);
}

TEST(PointFit, SpreadIsTheLengthOfARow)
{
    // The ellipse of inertia of a bar of n pixels is 4 n / sqrt(12) long.
    for (const int n : {1, 2, 10, 500}) {
        std::vector<Site> row;
        for (int i = 0; i < n; i++)
            row.emplace_back(-7, 30000 + i);
        EXPECT_NEAR(Spread(std::span<const Site>(row)), 4 * n / std::sqrt(12), 1e-6 * n) << n;
    }
}

} // namespace
