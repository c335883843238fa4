// Quads: where they lie, what is sampled through them, how they are dragged.
#include "measure/Quad.h"

#include "../../Failures.h"
#include "foundation/Angles.h"
#include "foundation/Graph.h"
#include "image/Geometry.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>

namespace Tesk {
namespace {

using checks::Message;
constexpr double pi = std::numbers::pi;

class QuadTest : public checks::IgnoringFailures
{
protected:
    void TearDown() override
    {
        Graph::Zoom = 1;
        IgnoringFailures::TearDown();
    }
};

void ExpectNear(XY p, double x, double y, double tolerance = 1e-9)
{
    EXPECT_NEAR(p.X, x, tolerance);
    EXPECT_NEAR(p.Y, y, tolerance);
}

template <typename T>
void Fill(Image& image, int width, int height, PixelTypes type)
{
    image.Set(width, height, type);
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width * int(ElementSize(type) / sizeof(T)); x++)
            image.Row<T>(y)[x] = static_cast<T>(x * x * 3 + y * 31 + x * y * 5);
}

void ExpectSamePixels(const Image& a, const Image& b)
{
    ASSERT_EQ(int(a.Width), int(b.Width));
    ASSERT_EQ(int(a.Height), int(b.Height));
    ASSERT_EQ(PixelTypes(a.Type), PixelTypes(b.Type));
    const auto bytes = static_cast<std::size_t>(a.Width * ElementSize(a.Type));
    for (int y = 0; y < a.Height; y++)
        EXPECT_EQ(std::memcmp(a.Row(y), b.Row(y), bytes), 0) << "row " << y;
}

TEST_F(QuadTest, IntegersMakeAnAlignedBoxAndNothingElseDoes)
{
    Quad quad;
    quad.Set(3, 4, 10, 6);
    EXPECT_TRUE(quad.Aligned);
    EXPECT_FALSE(quad.Bent);
    EXPECT_EQ(quad.Angle, 0);
    EXPECT_EQ(quad.Bend, 0);
    ExpectNear(quad.Corner(2), 13, 10);
    quad.SetCenter(8, 7, 10, 6, 0, 0);
    EXPECT_FALSE(quad.Aligned);
    EXPECT_FALSE(quad.Bent);
    ExpectNear(quad.Corner(0), 3, 4);
    quad.SetCircle(8, 7, 5, 0);
    EXPECT_TRUE(quad.Bent);
    EXPECT_EQ(quad.Width, 5);
    EXPECT_EQ(quad.Height, 5);
    EXPECT_DOUBLE_EQ(quad.Bend, 2 * pi);
    quad.Set(0, 0, 1, 1);
    EXPECT_FALSE(quad.Bent);
}

TEST_F(QuadTest, AnglesStayInTheirRange)
{
    struct
    {
        double from, to, angle, bend;
    } const cases[] = {{370, 400, 10, 30},   {-30, 60, 330, 90},    {360, 720, 0, 360}, {0, 450, 0, 90},
                       {10, -350, 10, -360}, {-720, -1500, 0, -60}, {0, 1080, 0, 360},  {5, 5, 5, 0}};
    for (const auto& c : cases) {
        Quad quad;
        quad.SetArc(1, 2, 30, 50, c.from, c.to);
        EXPECT_NEAR(quad.Angle, ToRadians(c.angle), 1e-12) << c.from;
        EXPECT_NEAR(quad.Bend, ToRadians(c.bend), 1e-12) << c.to;
        EXPECT_TRUE(quad.Bent);
        EXPECT_EQ(quad.Width, 50);
        EXPECT_EQ(quad.Height, 20);
    }
}

TEST_F(QuadTest, AStraightQuadHasItsMiddleOrItsCornerWhereItWasSet)
{
    Quad quad;
    quad.SetCenter(40, 50, 90, 12, 70, 0);
    ExpectNear(quad.Middle(), 40, 50);
    quad.SetCorner(40, 50, 90, 12, 70, 0);
    ExpectNear(quad.Corner(0), 40, 50);
}

TEST_F(QuadTest, TheCircleOfABentQuadLiesBehindTheGivenPoint)
{
    // A quarter turn of a middle line of radius 20, either way.
    const double h = 20 * std::sqrt(0.5);
    struct
    {
        bool middle;
        double angle, bend, x, y, outer;
    } const cases[] = {{true, 0, 90, 40 - h, 50 - h, 26},
                       {true, 90, 90, 40 + h, 50 - h, 26},
                       {true, 0, -90, 40 + h, 50 - h, -14},
                       {false, 0, 90, 40 - 26, 50, 26},
                       {false, 90, -90, 40, 50 + 14, -14}};
    for (const auto& k : cases) {
        Quad quad;
        if (k.middle)
            quad.SetCenter(40, 50, 10 * pi, 12, k.angle, k.bend);
        else
            quad.SetCorner(40, 50, 10 * pi, 12, k.angle, k.bend);
        ExpectNear({quad.X, quad.Y}, k.x, k.y);
        EXPECT_NEAR(quad.Width, k.outer, 1e-9);
        EXPECT_EQ(quad.Height, 12);
        EXPECT_NEAR(quad.Angle, ToRadians(k.angle), 1e-12);
        EXPECT_TRUE(quad.Bent);
        // The corners lie on the circles of both radii, whatever their sign.
        EXPECT_NEAR(std::hypot(quad.Corner(0).X - k.x, quad.Corner(0).Y - k.y), std::abs(k.outer), 1e-9);
        EXPECT_NEAR(std::hypot(quad.Corner(3).X - k.x, quad.Corner(3).Y - k.y), std::abs(k.outer - 12), 1e-9);
    }
}

TEST_F(QuadTest, AnArcFitsItsThreePoints)
{
    struct
    {
        double from, through, to;
        bool fits;
    } const cases[] = {{10, 60, 130, true},   {130, 60, 10, true},  {350, 30, 100, true},
                       {0, 100, 239.9, true}, {0, 100, 241, false}, {10, 200, 125, false}};
    for (const auto& c : cases) {
        const auto at = [](double degrees) {
            return XY(50 + 30 * std::cos(ToRadians(degrees)), 60 + 30 * std::sin(ToRadians(degrees)));
        };
        Quad quad;
        quad.Set(1, 2, 3, 4);
        EXPECT_EQ(quad.FitArc(at(c.from), at(c.through), at(c.to), 8), c.fits) << c.to;
        if (!quad.Bent) {
            EXPECT_EQ(quad.Width, 3);
            continue;
        }
        EXPECT_NEAR(quad.X, 50, 1e-9);
        EXPECT_NEAR(quad.Y, 60, 1e-9);
        EXPECT_NEAR(quad.Width, 34, 1e-9);
        const auto share = [&](double part) {
            const double angle = quad.StartAngle() + part * quad.Bend;
            return XY(50 + 30 * std::cos(angle), 60 + 30 * std::sin(angle));
        };
        ExpectNear(share(1.0 / 6), at(c.from).X, at(c.from).Y);
        ExpectNear(share(5.0 / 6), at(c.to).X, at(c.to).Y);
    }
    Quad quad;
    EXPECT_FALSE(quad.FitArc({0, 0}, {5, 5}, {10, 10}));
    EXPECT_FALSE(quad.FitArc({0, 0}, {std::nan(""), 5}, {10, 10}));
}

TEST_F(QuadTest, BoundsHoldTheCornersAndTheArcs)
{
    int left = 0, top = 0, right = 0, bottom = 0;
    Quad quad;
    quad.SetCorner(10.7, -0.6, 20, 10, 90, 0);
    quad.Bounds(left, top, right, bottom);
    EXPECT_EQ(left, 0);
    EXPECT_EQ(top, 0);
    EXPECT_EQ(right, 10);
    EXPECT_EQ(bottom, 19);
    quad.SetCircle(100, 90, 20.5, 33);
    quad.Bounds(left, top, right, bottom);
    EXPECT_EQ(left, 79);
    EXPECT_EQ(right, 120);
    EXPECT_EQ(top, 69);
    EXPECT_EQ(bottom, 110);
    // From the top round the right to the bottom.
    quad.SetArc(100, 90, 10, 20.5, 0, 180);
    quad.Bounds(left, top, right, bottom);
    EXPECT_EQ(left, 100);
    EXPECT_EQ(right, 120);
    EXPECT_EQ(top, 69);
    EXPECT_EQ(bottom, 110);
    quad.SetCenter(1e9, -1e9, 1e9, 1e9, 45, 300);
    quad.Bounds(left, top, right, bottom);
    EXPECT_LE(left, right);
}

TEST_F(QuadTest, AnUprightSampleIsACrop)
{
    Image gray, gray16, gray32, rgb;
    Fill<std::uint8_t>(gray, 20, 15, Gray);
    Fill<std::uint16_t>(gray16, 20, 15, Gray16);
    Fill<std::int32_t>(gray32, 20, 15, Gray32);
    Fill<std::uint8_t>(rgb, 20, 15, Rgb);
    for (Image* src : {&gray, &gray16, &gray32, &rgb})
        for (const bool bilinear : {false, true}) {
            Quad quad;
            quad.Set(4, 3, 9, 7);
            Image dst, crop;
            quad.Sample(*src, dst, bilinear);
            crop.ShallowCopy(*src, true);
            crop.Window(4, 3, 9, 7);
            ExpectSamePixels(dst, crop);
            // Into the source itself.
            Image copy;
            copy.Set(20, 15, src->Type);
            for (int y = 0; y < 15; y++)
                std::memcpy(copy.Row(y), src->Row(y), static_cast<std::size_t>(20 * ElementSize(src->Type)));
            quad.Sample(copy, copy, bilinear);
            ExpectSamePixels(copy, crop);
        }
}

TEST_F(QuadTest, AQuarterTurnedSampleIsATurnedCrop)
{
    Image src, turned, dst;
    Fill<std::uint16_t>(src, 12, 9, Gray16);
    Quad quad;
    // From the upper right corner downwards.
    quad.SetCorner(11, 0, 9, 12, 90, 0);
    quad.Sample(src, dst, false);
    Geometry::Turn(3, src, turned);
    ExpectSamePixels(dst, turned);
}

TEST_F(QuadTest, WideSamplesAreMixedWithoutLossOfRange)
{
    Image src, dst;
    src.Set(2, 2, Gray32);
    src.Row<std::int32_t>(0)[0] = std::numeric_limits<std::int32_t>::max();
    src.Row<std::int32_t>(0)[1] = std::numeric_limits<std::int32_t>::min();
    src.Row<std::int32_t>(1)[0] = src.Row<std::int32_t>(1)[1] = 1000;
    Quad quad;
    quad.SetCorner(0.25, 0.5, 1, 1, 0, 0);
    quad.Sample(src, dst, true);
    // (0.75 max + 0.25 min + 1000) / 2
    EXPECT_NEAR(dst.Row<std::int32_t>(0)[0], (0.5 * 2147483647.0 + 1000) / 2, 1);
}

TEST_F(QuadTest, ABentSampleUnwindsTheRing)
{
    Image src, dst, unwound;
    Fill<std::uint8_t>(src, 100, 100, Gray);
    for (const double to : {150.0, -150.0}) {
        Quad quad;
        quad.SetArc(50, 48, 20, 40.5, 30, to);
        quad.Sample(src, dst, true);
        const double bend = to - 30, start = to > 0 ? 30 - 90 : 30;
        unwound.Set(static_cast<int>(30.25 * std::abs(ToRadians(bend))), 20, Gray);
        XY center(50, 48);
        Geometry::Unwind(center, start, start + bend, 20, 40.5, src, unwound, true);
        ExpectSamePixels(dst, unwound);
    }
    // Bent counterclockwise about a pixel that alone is set, it is in the middle of what is read.
    src.Set(100, 100, Gray);
    for (int y = 0; y < 100; y++)
        std::memset(src.Row(y), 0, 100);
    src.PixelGray(52, 45) = 200;
    Quad quad;
    quad.SetCenter(52, 45, 41.5, 11, 25, -80);
    quad.Sample(src, dst, false);
    ASSERT_EQ(dst.Width, 41);
    ASSERT_EQ(dst.Height, 11);
    EXPECT_EQ(dst.PixelGray(20, 5), 200);
}

TEST_F(QuadTest, WhatCannotBeSampledIsRefused)
{
    Image none, rgba, gray, dst;
    rgba.Set(4, 4, Rgba);
    Fill<std::uint8_t>(gray, 4, 4, Gray);
    dst.Set(3, 2, Gray);
    Quad quad;
    quad.Set(0, 0, 2, 2);
    quad.Sample(none, dst, true);
    EXPECT_EQ(Status::Error().Code, VoidObject);
    quad.Sample(rgba, dst, true);
    EXPECT_EQ(Status::Error().Code, UnsupportedType);
    EXPECT_EQ(Message(), L"The image type (Rgba) is not supported for this operation");
    for (const int width : {0, -3, std::numeric_limits<int>::max()}) {
        quad.Set(0, 0, width, 1000000);
        quad.Sample(gray, dst, true);
        EXPECT_EQ(Status::Error().Code, CannotAllocate) << width;
    }
    EXPECT_EQ(dst.Width, 3);
    for (const double bad : {std::nan(""), std::numeric_limits<double>::infinity(), 1e10}) {
        quad.SetCenter(5, 5, 10, 10, 20, 0);
        quad.SetCenter(bad, 5, 10, 10, 20, 0);
        EXPECT_EQ(Status::Error().Code, OutOfRange);
        quad.SetArc(5, 5, 1, bad, 0, 90);
        EXPECT_EQ(Status::Error().Code, OutOfRange);
        EXPECT_EQ(quad.Width, 10);
    }
    quad.SetCorner(5, 5, 10, 10, std::nan(""), 0);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    quad.SetCorner(5, 5, 10, 10, 0, std::nan(""));
    EXPECT_EQ(Status::Error().Code, OutOfRange);
}

TEST_F(QuadTest, EveryHandleIsHitWhereItStands)
{
    Graph::Zoom = 2;
    Quad quad;
    quad.SetCenter(100, 80, 60, 40, 30, 0);
    const double c = std::cos(ToRadians(30)), s = std::sin(ToRadians(30));
    struct
    {
        double along, across;
        DraggingHandles handle;
    } const cases[] = {{-30, -20, NWHandle}, {0, -20, NHandle}, {30, -20, NEHandle}, {30, 0, EHandle},
                       {30, 20, SEHandle},   {0, 20, SHandle},  {-30, 20, SWHandle}, {-30, 0, WHandle},
                       {10, 5, AllHandle},   {36, 0, NoHandle}};
    for (const auto& k : cases) {
        const double x = 100 + k.along * c - k.across * s, y = 80 + k.along * s + k.across * c;
        EXPECT_EQ(quad.HitHandle(Graph::ToTarget(x), Graph::ToTarget(y)), k.handle) << k.handle;
        EXPECT_EQ(Quad::Handle, k.handle);
    }
}

TEST_F(QuadTest, DragsMoveWhatTheyHoldAndNothingElse)
{
    Quad quad;
    quad.Set(10, 20, 30, 40);
    quad.HitHandle(40, 60);
    quad.Drag(50, 75);
    EXPECT_EQ(quad.X, 10);
    EXPECT_EQ(quad.Width, 40);
    EXPECT_EQ(quad.Height, 55);
    // Over the opposite side it stops.
    quad.Drag(-100, -100);
    EXPECT_EQ(quad.Width, 1);
    EXPECT_EQ(quad.Height, 1);
    EXPECT_EQ(quad.X, 10);
    quad.Set(10, 20, 30, 40);
    quad.HitHandle(10, 40);
    quad.Drag(4, 70);
    EXPECT_EQ(quad.X, 4);
    EXPECT_EQ(quad.Width, 36);
    EXPECT_EQ(quad.Height, 40);
    quad.Centered = true;
    quad.HitHandle(4, 40);
    quad.Drag(6, 0);
    EXPECT_EQ(quad.X, 6);
    EXPECT_EQ(quad.Width, 32);
    quad.HitHandle(15, 30);
    quad.Drag(18, 29);
    EXPECT_EQ(quad.X, 9);
    EXPECT_EQ(quad.Y, 19);
    EXPECT_EQ(quad.Width, 32);
    quad.HitHandle(500, 500);
    quad.Drag(0, 0);
    EXPECT_EQ(quad.X, 9);
}

TEST_F(QuadTest, ADraggedCornerOfATurnedQuadLeavesTheOppositeOne)
{
    Quad quad;
    quad.SetCenter(100, 80, 60, 40, 35, 0);
    const XY kept = quad.Corner(2), held = quad.Corner(0);
    ASSERT_EQ(quad.HitHandle(Graph::ToTarget(held.X), Graph::ToTarget(held.Y)), NWHandle);
    quad.Drag(60, 45);
    ExpectNear(quad.Corner(2), kept.X, kept.Y);
    ExpectNear(quad.Corner(0), 60, 45);
    EXPECT_NEAR(quad.Angle, ToRadians(35), 1e-12);
}

TEST_F(QuadTest, ABentQuadIsDraggedByRadiiAndDirections)
{
    for (const double sense : {1.0, -1.0}) {
        Quad quad;
        quad.SetArc(100, 100, 40, 60, 0, sense * 90);
        const XY outer(100 + 60 * std::cos(quad.StartAngle() + quad.Bend / 2),
                       100 + 60 * std::sin(quad.StartAngle() + quad.Bend / 2));
        ASSERT_EQ(quad.HitHandle(Graph::ToTarget(outer.X), Graph::ToTarget(outer.Y)), NHandle);
        quad.Drag(100, 30);
        EXPECT_NEAR(quad.Width, 70, 1e-9);
        EXPECT_NEAR(quad.Height, 30, 1e-9);
        // The middle of the end, half way between the radii, goes on by a quarter.
        const XY end((quad.Corner(1).X + quad.Corner(2).X) / 2, (quad.Corner(1).Y + quad.Corner(2).Y) / 2);
        ASSERT_EQ(quad.HitHandle(Graph::ToTarget(end.X), Graph::ToTarget(end.Y)), EHandle);
        const double next = quad.StartAngle() + quad.Bend + sense * pi / 2;
        quad.Drag(Graph::ToTarget(100 + 1e4 * std::cos(next)), Graph::ToTarget(100 + 1e4 * std::sin(next)));
        EXPECT_NEAR(quad.Bend, sense * pi, 1e-4);
        EXPECT_NEAR(quad.Angle, 0, 1e-9);
        // The start moves, and the end stays.
        const double last = quad.StartAngle() + quad.Bend;
        const XY start((quad.Corner(0).X + quad.Corner(3).X) / 2, (quad.Corner(0).Y + quad.Corner(3).Y) / 2);
        ASSERT_EQ(quad.HitHandle(Graph::ToTarget(start.X), Graph::ToTarget(start.Y)), WHandle);
        const double first = quad.StartAngle() + sense * 0.5;
        quad.Drag(Graph::ToTarget(100 + 1e4 * std::cos(first)), Graph::ToTarget(100 + 1e4 * std::sin(first)));
        EXPECT_NEAR(std::remainder(quad.StartAngle() + quad.Bend - last, 2 * pi), 0, 1e-9);
        EXPECT_NEAR(quad.Bend, sense * (pi - 0.5), 1e-3);
    }
    // With radii below 0 the first side is the inner one, and no drag takes it across the centre.
    Quad quad;
    quad.SetCenter(100, 100, 40 * pi, 20, 0, -90);
    const XY center(quad.X, quad.Y), first(center.X + 70 * std::cos(pi / 4), center.Y + 70 * std::sin(pi / 4));
    ASSERT_EQ(quad.HitHandle(Graph::ToTarget(first.X), Graph::ToTarget(first.Y)), NHandle);
    quad.Drag(Graph::ToTarget(center.X + 60), Graph::ToTarget(center.Y));
    EXPECT_NEAR(quad.Width, -60, 1);
    EXPECT_NEAR(quad.Width - quad.Height, -90, 1e-9);
    quad.Drag(Graph::ToTarget(center.X + 300), Graph::ToTarget(center.Y));
    EXPECT_NEAR(quad.Height, 1, 1e-9);
}

} // namespace
} // namespace Tesk
