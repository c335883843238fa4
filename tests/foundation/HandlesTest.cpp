#include "foundation/Handles.h"
#include "foundation/Graph.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <numbers>
#include <tuple>
#include <vector>

using namespace Tesk;

namespace {

class Handles : public ::testing::Test
{
protected:
    GraphSettings kept_{1};
};

} // namespace

TEST_F(Handles, PointsAreHitWithinSixPixelsOfTheScreenOnEachCoordinate)
{
    Graph::Zoom = 4;
    const XY point(10.5, 20), corner(100, 50);
    for (const auto& [dx, dy, hit] :
         {std::tuple{0, 0, true}, {5, -5, true}, {-5, 5, true}, {6, 0, false}, {0, -6, false}}) {
        EXPECT_EQ(ScreenPointer(44 + dx, 82 + dy).IsOn(point), hit) << dx << ' ' << dy;
        EXPECT_EQ(ScreenPointer(444 + dx, 282 + dy, corner).IsOn(point), hit) << dx << ' ' << dy;
        EXPECT_EQ(ScreenPointer(46 + dx, 84 + dy).IsOnMark(point), hit) << dx << ' ' << dy;
    }
    EXPECT_TRUE(ScreenPointer(44 + 6, 82).IsOn(point, 7));
    EXPECT_TRUE(IsNear(15, 10) && !IsNear(16, 10) && IsNear(30, 10, 50) && IsNear(5, 10, 50) && !IsNear(56, 10, 50));
    EXPECT_FALSE(IsNear(INT_MIN, INT_MAX));
}

TEST_F(Handles, BodiesAreHitBesideTheirSegmentOnlyAndWithinTheirBreadth)
{
    const struct
    {
        double zoom, breadth;
        XY to;
        int x, y;
        bool body, near;
    } cases[] = {
        {2, 0, {100, 0}, 51, 6, true, true},     {2, 0, {100, 0}, 51, 7, false, false},
        {2, 10, {100, 0}, 51, 10, true, true}, // ten pixels of the screen to each side
        {2, 10, {100, 0}, 51, 11, false, false}, {2, 10, {100, 0}, 0, 1, false, true}, // before the segment
        {2, 10, {100, 0}, 202, 1, false, true},  {2, 10, {100, 0}, 211, 1, false, false},
        {1, 0, {30, 40}, 11, 23, true, true}, // 5 from the middle, across
        {1, 0, {30, 40}, 7, 26, false, false},   {1, 21, {30, 40}, 7, 26, true, true},
        {1, 0, {0, 0}, 3, 4, true, true}, // a segment without length
        {1, 0, {0, 0}, 4, 5, false, false},
    };
    for (const auto& c : cases) {
        Graph::Zoom = c.zoom;
        EXPECT_EQ(ScreenPointer(c.x, c.y).IsOnBody(XY(0, 0), c.to, c.breadth), c.body) << c.x << ' ' << c.y;
        EXPECT_EQ(ScreenPointer(c.x, c.y).IsNearSegment(XY(0, 0), c.to, c.breadth), c.near) << c.x << ' ' << c.y;
    }
}

TEST_F(Handles, RingsAreHitInsideTheirBreadthAndSweep)
{
    constexpr double pi = std::numbers::pi;
    const XY center(50, 50);
    EXPECT_TRUE(ScreenPointer(80 + 4, 50).IsOnRing(center, 30, 8));
    EXPECT_FALSE(ScreenPointer(80 + 5, 50).IsOnRing(center, 30, 8));
    EXPECT_TRUE(ScreenPointer(50, 50 - 26).IsOnRing(center, 30, 8));
    EXPECT_FALSE(ScreenPointer(50, 50).IsOnRing(center, 30, 8));
    const struct
    {
        double from, sweep;
        bool right, below, left, above; // 0, 90, 180 and 270 degrees
    } cases[] = {{-0.1, pi / 2, true, false, false, false},  {-0.1, -pi, false, false, true, true},
                 {3, 3.5, true, false, true, true},          {0.1, -3.5, true, false, true, true},
                 {7 * pi - 1, 2, false, false, true, false}, {1, 2 * pi, true, true, true, true}};
    for (const auto& c : cases) {
        const auto hits = [&](int x, int y) { return ScreenPointer(x, y).IsOnRing(center, 30, 8, c.from, c.sweep); };
        EXPECT_EQ(hits(80, 50), c.right) << c.from << ' ' << c.sweep;
        EXPECT_EQ(hits(50, 80), c.below) << c.from << ' ' << c.sweep;
        EXPECT_EQ(hits(20, 50), c.left) << c.from << ' ' << c.sweep;
        EXPECT_EQ(hits(50, 20), c.above) << c.from << ' ' << c.sweep;
    }
}

TEST_F(Handles, OfSeveralPointsTheNearestOrTheFirstInReachIsFound)
{
    const std::vector<XY> points{XY(10, 10), XY(14, 10), XY(40, 40), XY(14, 10), XY(-1e30, 1e30)};
    const auto at = [&](int i) { return points[static_cast<std::size_t>(i)]; };
    EXPECT_EQ(ScreenPointer(13, 10).Nearest(5, at), 1) << "the first of equals";
    EXPECT_EQ(ScreenPointer(13, 10).FirstOn(5, at), 0);
    EXPECT_EQ(ScreenPointer(1000, 900).Nearest(5, at), 2) << "however far";
    EXPECT_EQ(ScreenPointer(1000, 900).FirstOn(5, at), -1);
    EXPECT_EQ(ScreenPointer(0, 0).Nearest(0, at), -1);
    EXPECT_EQ(ScreenPointer(INT_MAX, INT_MIN).Nearest(5, at), 0);
}

TEST_F(Handles, ThePointerStandsInImagePixelsFromTheOrigin)
{
    Graph::Zoom = 4;
    const ScreenPointer pointer(103, -7, XY(10, 20));
    EXPECT_EQ(pointer.Position().X, 15.75);
    EXPECT_EQ(pointer.Position().Y, -21.75);
    EXPECT_EQ(pointer.Pixel().X, 15);
    EXPECT_EQ(pointer.Pixel().Y, -21) << "cut towards the image's corner";
    for (double zoom : {0.25, 1.0, 3.0, 8.0}) {
        Graph::Zoom = zoom;
        const XY point = ScreenPointer(345, 77).Point();
        EXPECT_EQ(Graph::ToTarget(point.X), 345) << zoom;
        EXPECT_EQ(Graph::ToTarget(point.Y), 77) << zoom;
    }
    Graph::Zoom = 1e-9;
    EXPECT_EQ(ScreenPointer(30, -30).Pixel().X, 1e9);
    Graph::Zoom = std::nan("");
    EXPECT_EQ(ScreenPointer(30, -30).Position().X, 0);
    EXPECT_EQ(ScreenPointer(30, -30).Point().Y, -0.5);
}

TEST_F(Handles, WhatIsGrabbedMovesByAsMuchAsThePointer)
{
    Graph::Zoom = 2;
    Grab grab;
    grab.Take(ScreenPointer(31, 41).Pixel(), XY(12.25, 20));
    const XY moved = grab.Moved(ScreenPointer(41, 31).Pixel());
    EXPECT_EQ(moved.X, 17.25);
    EXPECT_EQ(moved.Y, 15);
    EXPECT_EQ(grab.Moved(ScreenPointer(30, 40).Pixel()).X, 12.25) << "the same pixel of the image";
}

TEST_F(Handles, FramesTurnFromXToY)
{
    const XY in = ToFrame(XY(10, 25), XY(10, 20), std::numbers::pi / 2);
    EXPECT_NEAR(in.X, 5, 1e-12);
    EXPECT_NEAR(in.Y, 0, 1e-12);
    const XY back = FromFrame(ToFrame(XY(3, 4), XY(1, -7), 0.7), XY(1, -7), 0.7);
    EXPECT_NEAR(back.X, 3, 1e-12);
    EXPECT_NEAR(back.Y, 4, 1e-12);
}

TEST_F(Handles, DirectionsFallIntoEighthsOfATurn)
{
    const struct
    {
        double dx, dy;
        int octant;
    } cases[] = {{10, 0, 4},     {-10, 0, 0},  {0, 10, 2},     {0, -10, 6},         {10, 10, 1},
                 {-10, -10, 1},  {-10, 10, 3}, {10, -10, 7},   {100, 41, 4},        {100, 43, 5},
                 {0.9, -0.9, 0}, {0, 0, 0},    {1e300, -1, 4}, {std::nan(""), 5, 2}};
    for (const auto& c : cases)
        EXPECT_EQ(Octant(c.dx, c.dy), c.octant) << c.dx << ' ' << c.dy;
}
