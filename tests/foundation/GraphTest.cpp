#include "foundation/Graph.h"
#include "foundation/CairoTarget.h"
#include "foundation/RecordingTarget.h"
#include "foundation/Status.h"
#include "image/Operator.h"

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

TEST_F(GraphTest, NarrowTextsAreDecodedAndHaveASizeWhateverTheirColor)
{
    Graph::Text(0, 0, "caf\xc3\xa9");
    EXPECT_EQ(Drawn(), (Calls{"Text 0 0 caf\xc3\xa9"}));
    EXPECT_EQ(Graph::TextSize("caf\xc3\xa9").X, 4 * 7);
    Graph::TextColor = NoColor;
    EXPECT_EQ(Graph::TextSize(L"abc").X, 3 * 7);
    EXPECT_EQ(Graph::TextSize(L"abc").Y, 16);
    Graph::TextColor = Blue;
    target_.Calls.clear();
    Graph::Text(0, 0, L"x");
    EXPECT_EQ(target_.Calls.front(), "SetText 0 0 255 none System 16") << "the color is told again";
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

TEST_F(GraphTest, PolylinesOfThreeAndFourPointsCloseAndBearArrowsByTheirMode)
{
    const struct
    {
        int mode;
        bool closes;
        int arrows;
    } cases[] = {{0, false, 0}, {-1, true, 0}, {1, false, 1}, {2, false, 2}, {-2, true, 1}};
    for (const auto& c : cases) {
        Graph::Polyline3(XY(0, 0), XY(20, 0), XY(20, 20), c.mode);
        Calls expected = {"Move 0 0", "Line 20 0", "Line 20 20"};
        if (c.closes) expected.push_back("Line 0 0");
        if (c.arrows > 0) expected.push_back("Polygon 20 20 23 8 17 8");
        if (c.arrows > 1) expected.push_back("Polygon 0 0 12 3 12 -3");
        EXPECT_EQ(Drawn(), expected) << c.mode;
    }
    // All but three points in doubles are marks: the lower right of their pixels.
    Graph::Zoom = 2;
    Graph::Polyline3(XY(0, 0), XY(4, 0), XY(4, 4), 0);
    EXPECT_EQ(Drawn(), (Calls{"Move 1 1", "Line 9 1", "Line 9 9"}));
    Graph::Polyline3(Site(0, 0), Site(4, 0), Site(4, 4), 0);
    EXPECT_EQ(Drawn(), (Calls{"Move 2 2", "Line 10 2", "Line 10 10"}));
    Graph::Polyline4(XY(0, 0), XY(4, 0), XY(4, 4), XY(0, 4), -1);
    EXPECT_EQ(Drawn(), (Calls{"Move 2 2", "Line 10 2", "Line 10 10", "Line 2 10", "Line 2 2"}));
    const Site corner[] = {{0, 0}, {4, 0}};
    Graph::Polyline(corner, 2, false);
    EXPECT_EQ(Drawn(), (Calls{"Move 1 1", "Line 9 1"}));
}

TEST_F(GraphTest, TurnedFiguresAndArcsReachTheTarget)
{
    Graph::Zoom = 2;
    Graph::Ellipse(10, 20, 5, 3, 30);
    EXPECT_EQ(Drawn(), (Calls{"Rotation 30 21 41", "Ellipse -10 -6 10 6", "NoRotation"}));
    Graph::EllipseArc(10, 20, 5, 3, 0, 0, 90, 2);
    EXPECT_EQ(Drawn(), (Calls{"Rotation 0 21 41", "Arc -10 -6 10 6 0 90", "Move 8 0", "Line 12 0", "Move 0 4",
                              "Line 0 8", "NoRotation"}));
    Graph::Zoom = 1;
    Graph::RotatedRectangleRadians(10, 10, 8, 4, 3.14159265358979 / 2, false);
    const Calls turned = Drawn();
    Graph::RotatedRectangle(10, 10, 8, 4, 90, false);
    EXPECT_EQ(Drawn(), turned);
    EXPECT_EQ(turned, (Calls{"Polygon 12 6 12 14 8 14 8 6"}));
    Graph::Bezier(XY(0, 0), XY(1, 2), XY(3, 4), XY(5, 6));
    EXPECT_EQ(Drawn(), (Calls{"Move 0 0", "Bezier 1 2 3 4 5 6"}));
}

TEST_F(GraphTest, ThreePointsMakeAnArcUnlessTheyAreNearALine)
{
    const struct
    {
        XY p0, p1, p2;
        Calls drawn;
    } cases[] = {{{20, 20}, {30, 30}, {40, 20}, {"Arc 20 10 40 30 180 0"}},
                 {{20, 20}, {30, 10}, {40, 20}, {"Arc 20 10 40 30 180 360"}},
                 {{20, 0}, {0, 0.1}, {0, 0}, {"Move 20 0", "Line 0 0"}},     // the middle point near the chord
                 {{0, 0}, {4, 4}, {9.9, 0}, {"Move 0 0", "Line 10 0"}},      // a short chord
                 {{0, 0}, {100, 0.5}, {200, 0}, {"Move 0 0", "Line 200 0"}}, // half a pixel off the chord
                 {{0, 0}, {200, 9.7}, {400, 0}, {"Move 0 0", "Line 400 0"}}, // a radius of 2066
                 {{0, 0}, {0, 0}, {0, 0}, {"Move 0 0", "Line 0 0"}}};
    for (const auto& c : cases) {
        Graph::ArcThrough(c.p0, c.p1, c.p2, 3);
        EXPECT_EQ(Drawn(), c.drawn);
    }
    EXPECT_EQ(Graph::LineWidth, 1);
}

TEST_F(GraphTest, CurrentKeepsWhatTheTargetHasAndNoColorDrawsNothing)
{
    Graph::LineColor = Red;
    Graph::Line(0, 0, 1, 1);
    target_.Calls.clear();
    Graph::LineColor = Current;
    Graph::Line(0, 0, 20, 0, 1);
    EXPECT_EQ(target_.Calls, (Calls{"Move 0 0", "Line 20 0", "SetFill 255 0 0", "Polygon 20 0 8 -3 8 3"}));
    target_.Calls.clear();
    Graph::LineColor = Graph::PointColor = Graph::TextColor = NoColor;
    Graph::Line(0, 0, 20, 0, 1);
    EXPECT_EQ(target_.Calls,
              (Calls{"SetLine none 1", "SetFill none", "Move 0 0", "Line 20 0", "Polygon 20 0 8 -3 8 3"}));
    target_.Calls.clear();
    Graph::Plot(1, 1, 0);
    Graph::Text(1, 1, L"x");
    Graph::FillRectangle(Limits(0, 0, 5, 5));
    EXPECT_TRUE(target_.Calls.empty());
}

TEST_F(GraphTest, CurrentIsWhatWasDrawnWithLastThoughTheTargetHasForgotten)
{
    Graph::LineColor = Red;
    Graph::FillColor = Yellow;
    Graph::PointColor = Cyan;
    Graph::TextColor = Green;
    Graph::Circle(5, 5, 2);
    Graph::Text(0, 0, L"x");
    Graph::Plot(1, 1, 0);
    Graph::LineColor = Graph::FillColor = Graph::PointColor = Graph::TextColor = Current;
    Graph::DrawTo();
    target_.Calls.clear();
    Graph::Text(1, 2, L"y");
    Graph::Plot(3, 4, 0);
    Graph::FillTargetRectangle(0, 0, 5, 5);
    Graph::Clear(Current);
    Graph::Circle(5, 5, 2);
    EXPECT_EQ(target_.Calls.size(), 8u);
    EXPECT_EQ(Drawn(), (Calls{"Text 1 2 y", "Pixel 3 4 0 255 255", "FillRectangle 0 0 5 5 255 255 0",
                              "FillRectangle 0 0 640 480 255 255 0", "Ellipse 3 3 7 7"}));
}

TEST_F(GraphTest, CrossesAndCrossedBoxesHaveTheirStrokes)
{
    Graph::Zoom = 2;
    Graph::Cross(4, 5, 3);
    EXPECT_EQ(Drawn(), (Calls{"Move 7 12", "Line 13 12", "Move 10 9", "Line 10 15"}));
    Graph::TargetRectangle(1, 2, 9, 6, true);
    EXPECT_EQ(Drawn(), (Calls{"Rectangle 1 2 9 6", "Move 1 2", "Line 9 6", "Move 1 6", "Line 9 2"}));
    Graph::Zoom = 1;
    Graph::RotatedRectangle(10, 10, 8, 4, 90, true);
    EXPECT_EQ(Drawn(), (Calls{"Polygon 12 6 12 14 8 14 8 6", "Move 12 6", "Line 8 14", "Move 12 14", "Line 8 6"}));
    // Each point of a cycle has a color of its own.
    while (Graph::CycleColor() != 2)
        Graph::NextColor();
    Graph::PointColor = Cycle;
    Graph::Plot(0, 0, 0);
    Graph::Plot(1, 0, 0);
    EXPECT_EQ(Drawn(), (Calls{"Pixel 0 0 255 0 0", "Pixel 1 0 0 85 0"}));
}

TEST_F(GraphTest, AZoomIsFittedToWhatThereIs)
{
    Graph::FitZoom(320, 480, false);
    EXPECT_DOUBLE_EQ(Graph::Zoom, 1);
    Graph::FitZoom(64, 48, false);
    EXPECT_DOUBLE_EQ(Graph::Zoom, 10);
    Graph::FitZoom(64, 48, true);
    EXPECT_DOUBLE_EQ(Graph::Zoom, 1);
    CairoTarget none(0, 0);
    Graph::DrawTo(&none);
    Graph::FitZoom(64, 48, false);
    EXPECT_DOUBLE_EQ(Graph::Zoom, 1) << "nothing to fit it to";
    Graph::DrawTo(&target_);
    const std::uint8_t pixel[] = {9};
    Graph::Zoom = std::nan("");
    Graph::DrawImage({Limits(0, 0, 1, 1), pixel, 1, Gray, 1});
    EXPECT_EQ(Drawn(), (Calls{"Blit 1 1 8 0 0 1 1"}));
}

TEST_F(GraphTest, ALookupTableGivesTheColors)
{
    CairoTarget raster(4, 1);
    Graph::DrawTo(&raster);
    const std::uint8_t pixels[] = {0, 1, 2, 255};
    const ImageView view{Limits(0, 0, 4, 1), pixels, 4, Gray, 1};
    std::vector<std::int32_t> grays(256, 300), colors(3 * 256, -7);
    grays[0] = -5, grays[1] = 77;
    colors[3] = 10, colors[4] = 20, colors[5] = 30;
    const LookupTableView gray{Gray, 256, grays.data()}, color{Rgb, 256, colors.data()};
    Graph::DrawImage(view, &gray);
    EXPECT_EQ(raster.PixelAt(0, 0), RgbPixel(0, 0, 0));
    EXPECT_EQ(raster.PixelAt(1, 0), RgbPixel(77, 77, 77));
    EXPECT_EQ(raster.PixelAt(3, 0), RgbPixel(255, 255, 255));
    Graph::DrawImage(view, &color);
    EXPECT_EQ(raster.PixelAt(1, 0), RgbPixel(10, 20, 30));
    EXPECT_EQ(raster.PixelAt(2, 0), RgbPixel(0, 0, 0));
}

TEST_F(GraphTest, AGradientIsShownAsItIsCopied)
{
    const struct
    {
        int gain, strength, gray;
    } cases[] = {{1, 300, 255},  {5, 100, 100}, {35, 100, 100}, {3, 100, 33}, {3, 9, 2},      {3, 900, 255},
                 {4, 1019, 254}, {6, 100, 16},  {8, 100, 12},   {15, 100, 6}, {15, 3825, 254}};
    for (const auto& c : cases) {
        const std::int16_t pixel[] = {static_cast<std::int16_t>(-c.strength), 1};
        Graph::DrawImage({Limits(0, 0, 1, 1), reinterpret_cast<const std::uint8_t*>(pixel), 4, Grad, c.gain});
        EXPECT_EQ(target_.Blitted, std::vector<std::uint8_t>{static_cast<std::uint8_t>(c.gray)}) << c.gain;
        Image grad, gray;
        grad.Set(1, 1, Grad);
        grad.GradGain = c.gain;
        *grad.Row<GradPixel>(0) = {pixel[0], pixel[1]};
        Operator::Copy(grad, gray, Gray);
        EXPECT_EQ(gray.PixelGray(0, 0), c.gray) << c.gain;
    }
}

TEST_F(GraphTest, AFilledBoxCoversItsPixelsAndAClearedTargetAllOfThem)
{
    Graph::FillColor = White;
    Graph::FillRectangle(Limits(3, 4, 10, 1));
    Graph::SetOrigin(-5, 7);
    Graph::Clear(Black);
    EXPECT_EQ(Drawn(),
              (Calls{"FillRectangle 3 4 13 5 255 255 255", "Origin -5 7", "FillRectangle 5 -7 645 473 0 0 0"}));
}

TEST_F(GraphTest, MarksBearTheirValueInTheMiddle)
{
    Graph::TextAlignX = 1;
    Graph::DistanceMark(XY(0, 50), XY(100, 50), 12.345, 20);
    EXPECT_EQ(Drawn(), (Calls{"Move 0 50", "Line 0 30", "Move 100 50", "Line 100 30", "Move 0 30", "Line 100 30",
                              "Polygon 100 30 88 27 88 33", "Polygon 0 30 12 33 12 27", "Text 33 22 12.35"}));
    Graph::AngleMark(XY(50, 50), 20, -90, 90, 180);
    EXPECT_EQ(Drawn(), (Calls{"Rotation 0 50 50", "Arc -20 -20 20 20 -90 90", "NoRotation", "Text 49 42 180.00"}));
    EXPECT_EQ(Graph::TextAlignX, 1);
    EXPECT_EQ(target_.Flushes, 2);
}

TEST_F(GraphTest, EveryPixelTypeHasItsDisplayableForm)
{
    const std::uint16_t wide[] = {0x3ff, 0x200, 0x0ff};
    const std::int32_t wider[] = {-5, 0x7fffffff, 0x100};
    const std::int16_t gradient[] = {-8, 4, 100, -200, 30000, 0};
    const std::uint8_t bits[] = {0x05, 0x80};
    const std::uint8_t colors[] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    const struct
    {
        const void* pixels;
        PixelTypes type;
        int from, gain;
        const char* call;
        std::vector<std::uint8_t> shown;
    } cases[] = {{wide, Gray16, 0, 1, "Blit 3 1 8 0 0 3 1", {255, 128, 63}},
                 {wider, Gray32, 0, 1, "Blit 3 1 8 0 0 3 1", {0, 255, 64}},
                 {gradient, Grad, 0, 4, "Blit 3 1 8 0 0 3 1", {2, 50, 255}},
                 {bits, Gray1, 5, 1, "Blit 3 1 1 0 0 3 1", {0xa0}},
                 {colors, Rgb, 0, 1, "Blit 3 1 24 0 0 3 1", {1, 2, 3, 4, 5, 6, 7, 8, 9}}};
    for (const auto& c : cases) {
        ImageView view{Limits(c.from, 0, 3, 1), static_cast<const std::uint8_t*>(c.pixels), 16, c.type, c.gain};
        view.Depth = 10;
        Graph::DrawImage(view);
        EXPECT_EQ(Drawn(), Calls{c.call});
        EXPECT_EQ(target_.Blitted, c.shown);
    }
    EXPECT_EQ(target_.BlittedDensity, 2834);
}
