#include "foundation/Graph.h"
#include "foundation/RecordingTarget.h"
#include "foundation/Status.h"

#include <gtest/gtest.h>

using namespace Tesk;

namespace {

using Calls = std::vector<std::string>;

class GraphTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        Status::ErrorBehavior(IgnoreIt);
        Graph::Zoom = 1;
        Graph::LineColor = Graph::PointColor = Graph::TextColor = Blue;
        Graph::FillColor = NoColor;
        Graph::TextAlignX = Graph::TextAlignY = -1;
        Graph::AlphaMode = Opaque;
        Graph::DrawTo(&target_);
    }
    void TearDown() override
    {
        Graph::Zoom = 1;
        Graph::PointColor = Blue;
        Graph::FillColor = NoColor;
        Graph::DrawTo(nullptr);
    }

    /// What has been drawn since the last look, without the colour settings.
    Calls Drawn()
    {
        Calls drawn;
        for (const auto& call : target_.Calls)
            if (call.compare(0, 3, "Set") != 0) drawn.push_back(call);
        target_.Calls.clear();
        return drawn;
    }

    RecordingTarget target_;
};

} // namespace

TEST_F(GraphTest, LinesGoThroughPixelCentresAtAnyZoom)
{
    Graph::Zoom = 2;
    Graph::Line(0, 0, 1, 0);
    EXPECT_EQ(Drawn(), (Calls{"Move 1 1", "Line 3 1"}));
    Graph::Zoom = 0.5;
    Graph::Rectangle(10, 20, 9, 5);
    EXPECT_EQ(Drawn(), (Calls{"Rectangle 5 10 9 12"}));
    Graph::Line(std::nan(""), 1e300, 0, 0);
    EXPECT_EQ(Drawn().front(), "Move 0 1073741824");
}

TEST_F(GraphTest, OnlyLinesOfMoreThanTwelvePixelsHaveHeads)
{
    Graph::Line(0, 0, 12, 0, 1);
    EXPECT_EQ(Drawn().size(), 2u);
    Graph::Line(0, 0, 20, 0, 2);
    EXPECT_EQ(Drawn(), (Calls{"Move 0 0", "Line 20 0", "Polygon 20 0 8 -3 8 3", "Polygon 0 0 12 3 12 -3"}));
    EXPECT_EQ(Graph::FillColor, NoColor);
}

TEST_F(GraphTest, ColorsAreToldOnceAndForgottenWhenTheTargetIsRead)
{
    Graph::Circle(5, 5, 2);
    Graph::Circle(5, 5, 3);
    EXPECT_EQ(target_.Calls, (Calls{"SetLine 0 0 255 1", "SetFill none", "Ellipse 3 3 7 7", "Ellipse 2 2 8 8"}));
    target_.Calls.clear();
    Graph::DrawTo();
    Graph::FillColor = Yellow;
    Graph::Circle(5, 5, 2);
    EXPECT_EQ(target_.Calls, (Calls{"SetLine 0 0 255 1", "SetFill 255 255 0", "Ellipse 3 3 7 7"}));
}

TEST_F(GraphTest, TheCycleStepsThroughTheColorsBetweenTheGrays)
{
    while (Graph::CycleColor() != 62)
        Graph::NextColor();
    std::vector<int> seen;
    for (int i = 0; i < 61; i++) {
        Graph::NextColor();
        seen.push_back(Graph::CycleColor());
    }
    std::vector<int> expected;
    for (int c = 1; c <= 62; c++)
        if (c != 21 && c != 42) expected.push_back(c);
    expected.push_back(1);
    EXPECT_EQ(seen, expected);
}

TEST_F(GraphTest, PointsGrowWithTheZoomAndTextIsAligned)
{
    Graph::Plot(3, 4, 0);
    Graph::Zoom = 4;
    Graph::Plot(3, 4, 0);
    EXPECT_EQ(Drawn(), (Calls{"Pixel 3 4 0 0 255", "FillRectangle 12 16 16 20 0 0 255"}));
    Graph::Zoom = 1;
    Graph::TextAlignX = 0;
    Graph::TextAlignY = 1;
    Graph::Text(50, 40, "abcd");
    EXPECT_EQ(Drawn(), (Calls{"Text 36 24 abcd"}));
}

TEST_F(GraphTest, FiguresCloseOrStayOpen)
{
    const std::vector<XY> corner = {{0, 0}, {4, 0}, {4, 4}};
    Graph::Polyline(corner, false);
    EXPECT_EQ(Drawn(), (Calls{"Move 0 0", "Line 4 0", "Line 4 4"}));
    Graph::Polyline(corner, true);
    EXPECT_EQ(Drawn(), (Calls{"Move 4 4", "Line 0 0", "Line 4 0", "Line 4 4"}));
    Graph::FillColor = Red;
    Graph::Polyline(corner, true);
    EXPECT_EQ(Drawn(), (Calls{"Polygon 0 0 4 0 4 4"}));
    Graph::FitZoom(1280, 480, false);
    EXPECT_DOUBLE_EQ(Graph::Zoom, 0.5);
}

TEST_F(GraphTest, ImagesAreReducedStretchedAndLookedUp)
{
    const std::uint8_t pixels[] = {0, 10, 20, 30, 40, 50, 60, 70};
    ImageView view{Limits(0, 0, 4, 2), pixels, 4, Gray, 1};
    Graph::Zoom = 0.5;
    Graph::DrawImage(view);
    EXPECT_EQ(Drawn(), (Calls{"Blit 2 1 8 0 0 2 1"}));
    EXPECT_EQ(target_.Blitted, (std::vector<std::uint8_t>{(0 + 10 + 40 + 50) / 4, (20 + 30 + 60 + 70) / 4}));
    Graph::Zoom = 3;
    view.Source = Limits(1, 1, 2, 1);
    Graph::DrawImage(view);
    EXPECT_EQ(Drawn(), (Calls{"Blit 2 1 8 0 0 6 3"}));
    EXPECT_EQ(target_.Blitted, (std::vector<std::uint8_t>{50, 60}));

    std::vector<std::int32_t> samples(255);
    LookupTableView table{Gray, 255, samples.data()};
    Graph::DrawImage(view, &table);
    EXPECT_EQ(Status::Error().Code, IncompatibleSize);
    EXPECT_STREQ(Status::UnicodeError(),
                 L"The lookup-table for Gray image rendering must have 256 entries, this one has 255");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Graph::_Image");
    table.Type = Dble;
    Graph::DrawImage(view, &table);
    EXPECT_EQ(Status::Error().Code, IncompatibleType);
    view.Type = Rgb;
    Graph::DrawImage(view, &table);
    EXPECT_EQ(Status::Error().Code, UnsupportedType);
}

TEST_F(GraphTest, OpacityMultipliesTheColorsInPremultipliedModeOnly)
{
    const std::uint8_t pixel[] = {100, 200, 254, 127};
    const ImageView view{Limits(0, 0, 1, 1), pixel, 4, Rgba, 1};
    Graph::DrawImage(view);
    EXPECT_EQ(Drawn(), (Calls{"Blit 1 1 32 0 0 1 1"}));
    Graph::AlphaMode = Premultiplied;
    Graph::DrawImage(view);
    EXPECT_EQ(Drawn(), (Calls{"Blit 1 1 32 0 0 1 1 blend"}));
    EXPECT_EQ(target_.Blitted, (std::vector<std::uint8_t>{49, 99, 126, 127}));
}
