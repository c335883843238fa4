// What is drawn of blobs, and blobs at the limits of what there can be.
#include "foundation/Graph.h"
#include "foundation/RecordingTarget.h"
#include "image/Geometry.h"
#include "image/Image.h"
#include "measure/Blobs.h"
#include "measure/Path.h"
#include "tests/Failures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <numbers>
#include <string>
#include <vector>

using namespace Tesk;
using checks::Message;

namespace {

class BlobsDraw : public checks::IgnoringFailures
{
protected:
    using Calls = std::vector<std::string>;

    void SetUp() override
    {
        IgnoringFailures::SetUp();
        Geometry::SimpleCalibration(2, 1);
        image_.Set(60, 60, Gray);
        for (int y = 0; y < 60; y++)
            for (int x = 0; x < 60; x++)
                image_.Row(y)[x] = static_cast<std::uint8_t>(1 + x * y);
        // A bar down to the right, one down to the left, a single pixel.
        Region down, up, pixel;
        for (int i = 0; i < 12; i++) {
            down.AddRun(3 + 2 * i, 7 + 2 * i, 4 + i);
            up.AddRun(50 - i, 53 - i, 20 + 2 * i);
        }
        pixel.AddRun(9, 10, 40);
        for (const Region& region : {down, up, pixel})
            blobs_.AppendBlob(region, false);
        blobs_.ByFeatureSelect(BlobArea, image_, 2, MaxInt, Select);
        Blobs::HitBlobIndex = 1;
        Graph::AutoColors = true;
        Graph::Zoom = 2.5;
    }
    void TearDown() override
    {
        Geometry::SimpleCalibration(1, 1);
        Blobs::HitBlobIndex = MinInt;
        Graph::AutoColors = autoColors_;
        Graph::DrawTo(nullptr);
        IgnoringFailures::TearDown();
    }

    Calls Drawn(const std::function<void()>& draw)
    {
        target_.Calls.clear();
        Graph::DrawTo(&target_);
        draw();
        EXPECT_EQ(Status::Error().Code, NoError) << Status::AsciiError();
        return target_.Calls;
    }
    /// Whether what is drawn of a blob, which may have to be measured first, is what is told, in the blob's colours.
    void Expect(int position, const std::function<void()>& draw, const std::function<void()>& told)
    {
        const Calls drawn = Drawn(draw);
        const GraphSettings settings;
        Graph::LineColor = Graph::PointColor = Graph::TextColor = static_cast<PredefinedColors>(position == 1   ? 48
                                                                                                : position == 0 ? 12
                                                                                                                : 3);
        EXPECT_EQ(drawn, Drawn(told)) << position;
    }
    double Value(int position, int feature) const { return blobs_.FloatFeature(position, feature); }

    Image image_;
    Blobs blobs_;
    RecordingTarget target_;
    GraphSettings kept_;
    bool autoColors_ = Graph::AutoColors;
};

TEST_F(BlobsDraw, EachInItsColourUnderTheZoom)
{
    for (int i = 0; i < 3; i++) {
        Region region;
        region.BlobAppend(blobs_, i);
        Path outline, hull;
        blobs_.Outline(i, image_, outline);
        blobs_.ConvexHull(i, image_, hull);
        const LabeledRun first = region.Runs()[0];
        const auto number = [&] { Graph::Text(first.Start, first.Y, std::to_string(i).c_str()); };
        Expect(
            i, [&] { blobs_.DrawBlob(i, true, false); },
            [&] {
                Graph::FillColor = Graph::LineColor;
                region.Draw();
                number();
            });
        EXPECT_NE(Drawn([&] { blobs_.DrawBlob(i, false, true); }), Drawn([&] { blobs_.DrawBlob(i, false, false); }));
        Expect(
            i, [&] { blobs_.DrawOutline(i, true); },
            [&] {
                if (outline.Length > 0)
                    Graph::Polyline(outline.Sites(), outline.Length, true);
                else
                    Graph::Plot(first.Start, first.Y, 0);
                number();
            });
        Expect(
            i, [&] { blobs_.DrawHull(i); },
            [&] {
                if (hull.Length > 1)
                    Graph::Polyline(hull.Sites(), hull.Length, true);
                else
                    Graph::Plot(first.Start, first.Y, 0);
            });
        Expect(
            i, [&] { blobs_.DrawBox(i, true); },
            [&] {
                const double x = blobs_.IntFeature(i, BlobBoxX), y = blobs_.IntFeature(i, BlobBoxY),
                             w = blobs_.IntFeature(i, BlobBoxWidth), h = blobs_.IntFeature(i, BlobBoxHeight);
                Graph::Rectangle(x - 0.5, y - 0.5, w + 0.5, h + 0.5);
                Graph::Cross(x + (w - 1) / 2, y + (h - 1) / 2, 3);
            });
        // Features are in world units, half a pixel each.
        const auto cross = [&](int x) { Graph::Cross(2 * Value(i, x), 2 * Value(i, x + 1), 3); };
        Expect(
            i, [&] { blobs_.DrawCenter(i); }, [&] { cross(BlobCenterX); });
        EXPECT_TRUE(Drawn([&] { blobs_.DrawCentroid(i); }).empty()) << "not worked out yet";
        Expect(
            i, [&] { blobs_.DrawCentroid(image_, i); }, [&] { cross(BlobCentroidX); });
        Expect(
            i, [&] { blobs_.DrawCentroid(i); }, [&] { cross(BlobCentroidX); });
        const auto ellipse = [&](int center, int f) {
            Graph::Ellipse(2 * Value(i, center), 2 * Value(i, center + 1), Value(i, f), Value(i, f + 1),
                           -Value(i, f + 2));
            cross(center);
        };
        Expect(
            i, [&] { blobs_.DrawEllipse(i, true); }, [&] { ellipse(BlobCenterX, BlobEllipse); });
        Expect(
            i, [&] { blobs_.DrawEllipsoid(image_, i, true); }, [&] { ellipse(BlobCentroidX, BlobEllipsoid); });
        const auto box = [&](int f) {
            const double x = 2 * Value(i, f), y = 2 * Value(i, f + 1), w = 2 * Value(i, f + 2), h = 2 * Value(i, f + 3),
                         a = -Value(i, f + 4) * std::numbers::pi / 180;
            Graph::RotatedRectangle(x, y, w, h, -Value(i, f + 4), false);
            cross(f);
            for (int k = 0; k < hull.Length; k++) {
                const double dx = hull.Vertex(k).X - x, dy = hull.Vertex(k).Y - y;
                EXPECT_LE(std::abs(dx * std::cos(a) + dy * std::sin(a)), w / 2 + 1e-4) << "the box holds the blob";
                EXPECT_LE(std::abs(dy * std::cos(a) - dx * std::sin(a)), h / 2 + 1e-4);
            }
        };
        Expect(
            i, [&] { blobs_.DrawFeretBox(i, true); }, [&] { box(BlobFeretBox); });
        Expect(
            i, [&] { blobs_.DrawDiametralBox(i, true); }, [&] { box(BlobDiametralBox); });
    }
    EXPECT_LT(Value(0, BlobEllipseAngle), -20);
    EXPECT_GT(Value(1, BlobEllipseAngle), 20);
}

TEST_F(BlobsDraw, InTheFillingColourWithoutColoursOfTheirOwn)
{
    Graph::AutoColors = false;
    Graph::FillColor = Green;
    const Calls all = Drawn([&] { blobs_.DrawBlob(); });
    EXPECT_EQ(all.size(), 12u + 12 + 1);
    EXPECT_EQ(Drawn([&] { blobs_.DrawBlob(AllSelected); }).size(), 24u);
    EXPECT_EQ(Drawn([&] { blobs_.DrawBlob(AllDeselected); }).size(), 1u);
    Graph::FillColor = NoColor;
    target_.Calls.clear();
    blobs_.DrawBlob();
    EXPECT_EQ(Message(), L"Can't draw the Blob, the filling color is set to NoColor while AutoColor is disabled");
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    blobs_.DrawHull(3);
    EXPECT_EQ(Message(), L"The blob index (3) must be in range [0..2]");
    EXPECT_TRUE(target_.Calls.empty());
}

TEST_F(BlobsDraw, BlobsAtTheLimitsHaveAllFeatures)
{
    Region empty, ends, hollow;
    for (const int y : {-32768, -32767, 32766, 32767})
        ends.AddRun(-32768, 32767, y);
    hollow.AddRun(5, 5, 5);
    Blobs blobs;
    for (const Region& region : {empty, ends, hollow})
        blobs.AppendBlob(region, false);
    for (int feature = 0; feature < BlobMatchingScore; feature++) {
        blobs.Evaluate(static_cast<Features>(feature), image_, All);
        EXPECT_EQ(Status::Error().Code, NoError) << feature;
        for (int i = 0; i < blobs.NumBlobs; i++)
            EXPECT_TRUE(!blobs.IsComputed(i, feature) || blobs.Type(feature) != Float ||
                        std::isfinite(blobs.FloatFeature(i, feature)))
                << feature << " of " << i;
    }
    blobs.Evaluate(BlobOutline, image_, All);
    blobs.Evaluate(BlobVector, image_, All);
    const auto atEnds = [&](int feature) {
        for (int i = 0; i < blobs.NumBlobs; i++)
            if (blobs.NumRuns(i) == 4) return blobs.IntFeature(i, feature);
        return 0;
    };
    EXPECT_EQ(atEnds(BlobArea), 4 * 65535);
    EXPECT_EQ(atEnds(BlobFullPerimeter), 4 * 65535);
    EXPECT_EQ(atEnds(BlobBoxX), -32768);
    EXPECT_EQ(atEnds(BlobBoxWidth), 65535);
    EXPECT_EQ(atEnds(BlobBoxHeight), 65536);
    EXPECT_EQ(atEnds(BlobFilledArea), 65534);
    const Calls calls = Drawn([&] {
        blobs.DrawOutline();
        blobs.DrawHull();
        blobs.DrawBox();
        blobs.DrawEllipse();
        blobs.DrawFeretBox();
    });
    EXPECT_FALSE(calls.empty());
}

} // namespace
