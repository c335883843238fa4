// Polygons: vertices, fits against ideal shapes, bounding shapes against slow formulas, files.
#include "measure/Poly.h"

#include "../../Failures.h"
#include "foundation/Archive.h"
#include "measure/Path.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace Tesk {
namespace {

using checks::Message;
using PolyTest = checks::IgnoringFailures;
constexpr double pi = std::numbers::pi;

Poly Ellipse(XY center, XY axis, double radians, int count)
{
    Poly poly;
    for (int i = 0; i < count; i++) {
        const double t = 2 * pi * i / count, u = axis.X * std::cos(t), v = axis.Y * std::sin(t);
        poly.Append(center.X + u * std::cos(radians) - v * std::sin(radians),
                    center.Y + u * std::sin(radians) + v * std::cos(radians));
    }
    poly.Closed = true;
    return poly;
}

Poly Random(std::mt19937& random, int count)
{
    std::uniform_real_distribution<double> coordinate(-40, 60);
    Poly poly;
    for (int i = 0; i < count; i++)
        poly.Append(coordinate(random), coordinate(random));
    return poly;
}

TEST_F(PolyTest, FitsFindIdealShapesToRounding)
{
    const Poly ellipse = Ellipse({10.25, -3.5}, {7.5, 2.25}, 0.4, 24);
    XY center(0, 0), axis(0, 0);
    double value = 0;
    for (const FittingModes mode : {FastFit, AccurateFit, RobustFit}) {
        ASSERT_TRUE(ellipse.EllipseFit(center, axis, value, mode)) << mode;
        EXPECT_NEAR(center.X, 10.25, 1e-8);
        EXPECT_NEAR(axis.X, 7.5, 1e-8);
        EXPECT_NEAR(axis.Y, 2.25, 1e-8);
        EXPECT_NEAR(value, 0.4 * 180 / pi, 1e-7);
        EXPECT_NEAR(ellipse.EllipseDeviation(center, axis, value, true, 3), 0, 1e-6);
    }
    const Poly circle = Ellipse({1e5 + 0.125, 0.5}, {3.25, 3.25}, 0, 1000);
    for (const FittingModes mode : {AverageFit, FastFit, AccurateFit, RobustFit}) {
        ASSERT_TRUE(circle.CircleFit(center, value, mode)) << mode;
        EXPECT_NEAR(center.X, 1e5 + 0.125, 1e-6);
        EXPECT_NEAR(value, 3.25, mode == AverageFit ? 1e-4 : 1e-6);
    }
    EXPECT_NEAR(circle.CircleDeviation({1e5 + 0.125, 0.5}, 3, false), 0.25, 1e-9);
    Poly line;
    for (int i = 0; i < 9; i++)
        line.Append(0.5 * i, 1 + 0.25 * i);
    ASSERT_TRUE(line.LineFit(center, value));
    EXPECT_NEAR(value, std::atan2(0.25, 0.5) * 180 / pi, 1e-9);
    EXPECT_NEAR(line.LineDeviation(center, value), 0, 1e-12);
}

TEST_F(PolyTest, AnEllipsesCentreIsItsShortHalfAxisAway)
{
    Poly poly;
    poly.Append(5, 5);
    EXPECT_NEAR(poly.EllipseDeviation({5, 5}, {8, 4}, 30), 4, 1e-12);
    EXPECT_NEAR(poly.RectangleDeviation({5, 5}, {8, 4}, 30), 2, 1e-12);
    // Three steps are better than none, by the nearest of many points of the ellipse.
    poly.Vertex(0) = XY(7, 3);
    double nearest = 1e9;
    for (int i = 0; i < 200000; i++) {
        const double t = 2 * pi * i / 200000;
        nearest = std::min(nearest, std::hypot(7 - 10 * std::cos(t), 3 - 4 * std::sin(t)));
    }
    EXPECT_NEAR(poly.EllipseDeviation({0, 0}, {10, 4}, 0, true, 3), nearest, 1e-4);
    EXPECT_GE(poly.EllipseDeviation({0, 0}, {10, 4}, 0, true, 0), nearest - 1e-9);
}

TEST_F(PolyTest, PerimeterAndCentreDoNotTruncate)
{
    Poly poly;
    poly.Append(0, 0);
    poly.Append(1.5, 2);
    poly.Append(1.5, 0);
    EXPECT_DOUBLE_EQ(poly.Perimeter(), 2.5 + 2 + 1.5);
    EXPECT_DOUBLE_EQ(poly.Perimeter(false), 2 + 2 + 1.5);
    double x = 0, y = 0, width = 0, height = 0;
    poly.Center(x, y);
    EXPECT_DOUBLE_EQ(x, 1);
    EXPECT_DOUBLE_EQ(y, 2.0 / 3);
    poly.Box(x, y, width, height);
    EXPECT_EQ(width, 1.5);
    EXPECT_EQ(height, 2);
}

TEST_F(PolyTest, HullsHoldAllVerticesAndAreTheSameBothWays)
{
    std::mt19937 random(7);
    for (int round = 0; round < 60; round++) {
        const Poly poly = Random(random, 1 + round);
        Poly hull, simple;
        poly.ConvexHull(hull, false);
        poly.ConvexHull(simple, true);
        ASSERT_EQ(int(hull.Length), int(simple.Length)) << round;
        EXPECT_TRUE(hull.Closed);
        for (int i = 0; i < hull.Length; i++) {
            const XY a = hull.Vertex(i), b = hull.Vertex((i + 1) % hull.Length);
            EXPECT_EQ(a.X, simple.Vertex(i).X);
            for (int k = 0; k < poly.Length; k++) {
                const XY p = poly.Vertex(k);
                EXPECT_LE((b.X - a.X) * (p.Y - a.Y) - (b.Y - a.Y) * (p.X - a.X), 1e-9);
            }
        }
    }
}

TEST_F(PolyTest, TheSmallestRectangleIsThatOfATurnedOne)
{
    for (const double degrees : {0.0, 17.0, 90.0, 133.0}) {
        const double c = std::cos(degrees * pi / 180), s = std::sin(degrees * pi / 180);
        Poly poly;
        for (const XY& p : {XY(-5, -2), XY(5, -2), XY(1, 0.5), XY(5, 2), XY(-5, 2)})
            poly.Append(20.5 + p.X * c - p.Y * s, 8 + p.X * s + p.Y * c);
        double x = 0, y = 0, width = 0, height = 0, angle = 0, radius = 0;
        poly.Rectangle(x, y, width, height, angle);
        EXPECT_NEAR(x, 20.5, 1e-9);
        EXPECT_NEAR(width, 10, 1e-9);
        EXPECT_NEAR(height, 4, 1e-9);
        EXPECT_NEAR(std::remainder(angle - degrees, 180), 0, 1e-7);
        poly.Circle(x, y, radius);
        EXPECT_NEAR(radius, std::sqrt(29.0), 1e-9);
    }
}

TEST_F(PolyTest, DegenerateVerticesEndNowhere)
{
    const double nan = std::nan(""), infinity = std::numeric_limits<double>::infinity();
    const std::vector<std::vector<XY>> cases = {
        {{1, 2}},
        {{1, 2}, {1, 2}, {1, 2}, {1, 2}, {1, 2}, {1, 2}},
        {{0, 0}, {1, 1}, {2, 2}, {3, 3}, {-4, -4}, {5, 5}},
        {{1e150, -1e150}, {-1e150, 1e150}, {1e150, 1e150}, {0, 0}, {1, 0}, {0, 1}},
        {{1e-300, 0}, {0, 1e-300}, {0, 0}, {1e-300, 1e-300}, {0, 1}, {1, 0}},
        {{0, 0}, {nan, 1}, {3, 1}, {4, 5}, {6, 7}, {8, 1}},
        {{0, 0}, {1, infinity}, {3, 1}, {4, 5}, {6, 7}, {8, 1}}};
    for (std::size_t k = 0; k < cases.size(); k++) {
        Poly poly, hull;
        for (const XY& p : cases[k])
            poly.Append(p);
        const bool refused = k >= 5;
        double x = -7, y = 0, width = 0, height = 0, angle = 0;
        XY center(0, 0), axis(0, 0);
        for (const bool simple : {false, true}) {
            poly.Rectangle(x, y, width, height, angle, simple);
            EXPECT_EQ(Status::Error().Code, refused ? OutOfRange : NoError) << k;
            poly.Circle(x, y, width, simple);
            poly.ConvexHull(hull, simple);
        }
        EXPECT_EQ(x == -7, refused);
        for (const FittingModes mode : {AverageFit, FastFit, AccurateFit, RobustFit}) {
            EXPECT_TRUE(!poly.LineFit(center, angle, mode) || std::isfinite(center.X + center.Y + angle)) << k;
            EXPECT_TRUE(!poly.CircleFit(center, angle, mode) || std::isfinite(center.X + center.Y + angle)) << k;
            EXPECT_TRUE(!poly.EllipseFit(center, axis, angle, mode) || std::isfinite(axis.X + axis.Y + angle)) << k;
        }
        EXPECT_FALSE(k == 2 && poly.CircleFit(center, angle));
    }
}

TEST_F(PolyTest, VoidPolygonsAndBadIndexesAreRefused)
{
    Poly poly;
    double x = 5, y = 0, width = 0, height = 0;
    poly.Box(x, y, width, height);
    EXPECT_EQ(Status::Error().Code, VoidObject);
    EXPECT_EQ(Message(), L"This polygon is void");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Poly::Box");
    EXPECT_EQ(x, 5);
    EXPECT_EQ(poly.Perimeter(), 0);
    EXPECT_EQ(Message(), L"This path is void");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Poly::Perimeter");
    poly.Append(1, 2);
    Poly copy = poly;
    copy.Vertex(0).X = 9;
    EXPECT_EQ(poly.Vertex(0).X, 1) << "a copy writes its own";
    poly.Vertex(1);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_EQ(Message(), L"The element index (1) is out of the polyline range [0..0]");
    poly.Append(0.1, -1e20);
    EXPECT_STREQ(poly.ToAsciiString(-1), "X\tY\n1\t2\n0.1\t-1e+20\n");
    EXPECT_STREQ(poly.ToAsciiString(-2), "X\tY\n1\t2\n");
}

TEST_F(PolyTest, FilesHoldEveryBitAndBrokenOnesChangeNothing)
{
    Poly poly, read;
    poly.Append(0.1, -2.5e-300);
    poly.Append(1e300, 3);
    poly.Closed = true;
    std::vector<std::uint8_t> bytes;
    Archive writer = Archive::IntoMemory(bytes);
    poly.Transfer(writer);
    ASSERT_EQ(bytes.size(), 13u + 32u);
    EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 4), "TPOL");
    Archive reader = Archive::FromMemory(bytes);
    read.Transfer(reader);
    ASSERT_TRUE(reader.Good());
    EXPECT_TRUE(read.Closed);
    ASSERT_EQ(int(read.Length), 2);
    EXPECT_EQ(read.Vertex(0).Y, -2.5e-300);
    for (std::size_t cut = 0; cut < bytes.size(); cut++) {
        Archive shorter = Archive::FromMemory(std::span(bytes).first(cut));
        read.Transfer(shorter);
        EXPECT_FALSE(shorter.Good());
        EXPECT_EQ(int(read.Length), 2);
    }
    bytes[4] = 2;
    Archive newer = Archive::FromMemory(bytes);
    read.Transfer(newer);
    EXPECT_EQ(newer.Code(), OutOfRange);
    read.Read("no such polygon");
    EXPECT_EQ(Status::Error().Code, CannotOpen);
}

} // namespace
} // namespace Tesk
