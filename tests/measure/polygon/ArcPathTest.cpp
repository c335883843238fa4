// Paths of lines and arcs: vertices, contours reduced to them, handles, printing.
#include "measure/ArcPath.h"

#include "../path/PathShapes.h"
#include "foundation/Graph.h"
#include "image/Image.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace Tesk {
namespace {

using ArcPathTest = PathMethods;

/// The largest distance of a site from the nearest of many points of the arcs.
double LargestDistance(const Path& path, const ArcPath& arcs)
{
    std::vector<XY> points;
    const int segments = arcs.Length - (arcs.Closed ? 0 : 1);
    for (int i = 0; i < segments; i++) {
        const ArcSite& from = arcs.Vertex(i);
        const ArcSite& to = arcs.Vertex((i + 1) % arcs.Length);
        const double dx = to.X - from.X, dy = to.Y - from.Y, chord = std::hypot(dx, dy);
        const double half = from.Bulge == 0 ? 0 : std::asin(std::clamp(from.Bulge * chord / 2, -1.0, 1.0));
        for (int k = 0; k <= 400; k++) {
            const double share = k / 400.0, angle = half * (2 * share - 1);
            const double along = half == 0 ? share * chord : chord / 2 + std::sin(angle) / from.Bulge;
            const double aside = half == 0 ? 0 : (std::cos(angle) - std::cos(half)) / from.Bulge;
            points.emplace_back(from.X + (along * dx + aside * dy) / chord, from.Y + (along * dy - aside * dx) / chord);
        }
    }
    double largest = 0;
    for (const auto& [x, y] : SitesOf(path)) {
        double nearest = 1e9;
        for (const XY& p : points)
            nearest = std::min(nearest, std::hypot(p.X - x, p.Y - y));
        largest = std::max(largest, nearest);
    }
    return largest;
}

TEST_F(ArcPathTest, ACircleBecomesAFewArcsOfItsCurvature)
{
    for (const bool clockwise : {true, false}) {
        const Path circle = EllipsePath({100, 100}, {80, 80}, 0, 640, clockwise ? 0 : 360, clockwise ? 360 : 0);
        ArcPath arcs;
        circle.Vectorize(arcs, 1);
        EXPECT_TRUE(arcs.Closed);
        EXPECT_GE(int(arcs.Length), 3);
        EXPECT_LE(int(arcs.Length), 8);
        EXPECT_LE(LargestDistance(circle, arcs), 1.1);
        int curved = 0;
        for (int i = 0; i < arcs.Length; i++)
            curved += std::abs(arcs.Vertex(i).Bulge * 80 - (clockwise ? 1 : -1)) < 0.2;
        EXPECT_GE(curved, 2);
    }
}

TEST_F(ArcPathTest, ARectangleBecomesLinesAndNothingIsFarFromTheContour)
{
    Path square;
    PathOf({{0, 0}, {60, 0}, {60, 40}, {0, 40}}).PolygonToRaster(square);
    ArcPath arcs;
    square.Vectorize(arcs, 0.6);
    EXPECT_LE(int(arcs.Length), 9);
    EXPECT_LE(LargestDistance(square, arcs), 0.7);
    std::mt19937 random(5);
    for (int round = 0; round < 30; round++) {
        const Path path = EllipsePath({0, 0}, {20.0 + round, 10}, 3.0 * round, 200);
        path.Vectorize(arcs, 0.75);
        EXPECT_LE(LargestDistance(path, arcs), 0.9) << round;
        RandomPath(random, 1 + round, 5).Vectorize(arcs, round % 3 ? 1 : std::nan(""));
        EXPECT_EQ(arcs.Length == 0, round < 3) << round;
    }
}

TEST_F(ArcPathTest, AnOpenPathKeepsItsEnds)
{
    Path path = EllipsePath({0, 0}, {50, 50}, 0, 100, 0, 90);
    path.Closed = false;
    ArcPath arcs;
    path.Vectorize(arcs, 1);
    EXPECT_FALSE(arcs.Closed);
    EXPECT_EQ(arcs.Vertex(0).X, 50);
    EXPECT_EQ(arcs.Vertex(arcs.Length - 1).X, path.Vertex(99).X);
    EXPECT_EQ(arcs.Vertex(arcs.Length - 1).Bulge, 0);
}

TEST_F(ArcPathTest, TheMiddleOfAnArcIsOnItsCircle)
{
    ArcPath arcs;
    // A quarter of a circle about the origin, clockwise on the screen.
    arcs.Append(10, 0, 0.1);
    arcs.Append(0, 10, -0.1);
    arcs.Append(10, 0, 5);
    const XY right = arcs.ArcMiddle(0), left = arcs.ArcMiddle(1);
    EXPECT_NEAR(right.X, 10 * std::sqrt(0.5), 1e-9);
    EXPECT_NEAR(right.Y, 10 * std::sqrt(0.5), 1e-9);
    EXPECT_NEAR(left.X, right.X, 1e-9);
    arcs.Vertex(3);
    ExpectRefusal(OutOfRange, L"The element index (3) is out of the path range [0..2]", "Tesk::ArcPath::Vertex");
    arcs.Clear();
    arcs.Vertex(0);
    EXPECT_EQ(Status::Error().Code, VoidObject);
}

TEST_F(ArcPathTest, DragsMoveTheVertexThatWasHit)
{
    Graph::Zoom = 2;
    ArcPath arcs;
    arcs.Append(10, 10);
    arcs.Append(13, 10);
    arcs.Append(40, 40);
    EXPECT_EQ(arcs.HitHandle(28, 21), AllHandle);
    EXPECT_EQ(arcs.HitIndex, 1);
    // The first one near, though another is nearer.
    EXPECT_EQ(arcs.HitHandle(25, 21, false), AllHandle);
    EXPECT_EQ(arcs.HitIndex, 0);
    arcs.Drag(60, 41);
    EXPECT_EQ(arcs.Vertex(0).X, 30);
    EXPECT_EQ(arcs.Vertex(0).Y, 20);
    EXPECT_EQ(arcs.HitHandle(500, 500, false), NoHandle);
    EXPECT_EQ(arcs.HitIndex, -1);
    arcs.Drag(0, 0);
    EXPECT_EQ(arcs.Vertex(0).X, 30);
    Graph::Zoom = 1;
}

TEST_F(ArcPathTest, PrintsItsEndsAndWhatIsBetweenAsDots)
{
    ArcPath arcs;
    for (int i = 0; i < 6; i++)
        arcs.Append(i, 2 * i);
    std::FILE* kept = TextOutput();
    std::FILE* file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    TextOutput() = file;
    arcs.Print(3);
    arcs.Closed = true;
    arcs.Print(6);
    TextOutput() = kept;
    std::rewind(file);
    char text[300] = {};
    const std::size_t length = std::fread(text, 1, sizeof text - 1, file);
    std::fclose(file);
    EXPECT_EQ(std::string(text, length), "Length 6 (open)\n(0, 0) (1, 2) ... (5, 10) \n"
                                         "Length 6 (closed)\n(0, 0) (1, 2) (2, 4) (3, 6) (4, 8) (5, 10) \n");
}

} // namespace
} // namespace Tesk
