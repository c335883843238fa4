// Snake gauges: their axis, inspections of edges and ribbons, anomalies, files, handles.
#include "gauge/SnakeGauge.h"

#include "../../Failures.h"
#include "foundation/Archive.h"
#include "foundation/CairoTarget.h"
#include "foundation/Graph.h"
#include "gauge/edge/Pictures.h"
#include "measure/Profile.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <numbers>
#include <string>
#include <vector>

namespace Tesk {
namespace {

using checks::Message;
using checks::PaintStep;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

class SnakeGaugeTest : public checks::IgnoringFailures
{
protected:
    void TearDown() override
    {
        Graph::Zoom = 1;
        IgnoringFailures::TearDown();
    }
};

SnakeGauge Segment(XY from, XY to, double breadth = 10)
{
    SnakeGauge gauge;
    gauge.Append(from, HCorner);
    gauge.Append(to, HCorner);
    gauge.Breadth = breadth;
    return gauge;
}

void Block(Image& image, int x, int y, int width, int height, int value)
{
    for (int j = y; j < y + height; j++)
        std::fill_n(image.Row(j) + x, width, static_cast<std::uint8_t>(value));
}

/// Dark above a horizontal edge in the middle of row `y`, bright from it down.
void PaintHorizon(Image& image, int y)
{
    image.Set(120, 80, Gray);
    Block(image, 0, 0, 120, y, 50);
    Block(image, 0, y, 120, 80 - y, 200);
}

struct Anomalies
{
    int intrusions = -1, protrusions = -1, missing = -1;

    explicit Anomalies(const SnakeGauge& gauge, int least = 1)
    {
        gauge.NumAnomalies(least, intrusions, protrusions, missing);
    }
    std::vector<int> All() const { return {intrusions, protrusions, missing}; }
};

TEST_F(SnakeGaugeTest, NodesFollowWhatTheyMay)
{
    SnakeGauge gauge;
    gauge.Append({0, 0}, Circular);
    EXPECT_EQ(Message(), L"A Circular node must follow a HCorner/SCorner node");
    EXPECT_EQ(int(Status::Error().Code), IncompatibleType);
    gauge.Append({0, 0}, SCorner);
    gauge.Append({10, 5}, Circular);
    gauge.Append({20, 0}, Spline);
    EXPECT_EQ(Message(), L"A Spline node must follow a HCorner/SCorner or a Spline node");
    gauge.Append({notANumber, 0}, HCorner);
    EXPECT_EQ(int(Status::Error().Code), OutOfRange);
    gauge.Append({20, 0}, static_cast<SectionType>(Corner));
    EXPECT_EQ(int(Status::Error().Code), IncompatibleType);
    EXPECT_EQ(int(gauge.Length), 2);
    gauge.Append({20, 0}, HCorner);
    Graph::Zoom = 2;
    gauge.Append({80, 40}, Spline);
    EXPECT_EQ(gauge.Nodes[3].Position.X, 40);
    Graph::Zoom = 1;
    gauge.Close();
    gauge.Append({7, 30}, HCorner);
    ASSERT_EQ(int(gauge.Length), 6);
    EXPECT_EQ(gauge.Nodes[4].Position.X, 7);
    EXPECT_EQ(gauge.Nodes[5].Position.X, 0);
    gauge.RectangleAppend({50, 50}, {20, 20});
    EXPECT_EQ(Message(), L"A Rectangle may only be Appended to an empty Snake");
    gauge.CircleAppend({50, 50}, 10);
    EXPECT_EQ(Message(), L"A full Circle may only be Appended to an empty Snake");
    EXPECT_EQ(int(Status::Error().Code), IncompatibleSize);

    SnakeGauge one;
    Image image;
    PaintHorizon(image, 40);
    one.Append({5, 5}, HCorner);
    one.Closed = true;
    one.InspectEdge(image);
    EXPECT_EQ(Message(), L"No shape has been defined");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::SnakeGauge::InspectEdge");
    one.Append({9, 5}, HCorner);
    EXPECT_EQ(int(one.Length), 3); // the first one again behind it
}

/// Each sample about a pixel from the last, with its tangent along the way.
void ExpectEven(const Snake& snake, double furthest = 1.5)
{
    for (std::size_t i = 1; i < snake.Samples.size(); i++) {
        const AxisSample &a = snake.Samples[i - 1], &b = snake.Samples[i];
        const double dx = b.X - a.X, dy = b.Y - a.Y, way = std::hypot(dx, dy);
        ASSERT_GT(way, 0.5) << i;
        ASSERT_LT(way, furthest) << i;
        ASSERT_NEAR(std::hypot(a.TangentX, a.TangentY), 1, 1e-12);
        ASSERT_GT((dx * a.TangentX + dy * a.TangentY) / way, 0.7) << i;
    }
}

TEST_F(SnakeGaugeTest, AxisIsSampledPixelByPixel)
{
    Image image;
    PaintHorizon(image, 40);
    SnakeGauge line = Segment({10, 40}, {90, 40});
    EXPECT_EQ(int(line.NumAxisSamples), -1);
    line.InspectEdge(image);
    ASSERT_EQ(int(line.NumAxisSamples), 81);
    EXPECT_EQ(line.Samples[80].X, 90);
    EXPECT_EQ(line.Nodes[1].Sample, 80);
    ASSERT_EQ(line.Sections.size(), 2u);
    EXPECT_EQ(line.Sections[1].Type, Corner);
    EXPECT_EQ(line.Sections[1].FirstSample, 81);

    SnakeGauge circle;
    circle.CircleAppend({60, 40}, 20);
    circle.InspectEdge(image);
    EXPECT_EQ(int(circle.NumSections), 1);
    EXPECT_EQ(int(circle.NumAxisSamples), 126); // 2 pi 20 = 125.66
    for (const AxisSample& sample : circle.Samples)
        ASSERT_NEAR(std::hypot(sample.X - 60, sample.Y - 40), 20, 1e-9);
    EXPECT_EQ(circle.Nodes[1].Sample, 63);
    ExpectEven(circle);

    SnakeGauge ellipse;
    ellipse.EllipseAppend({60, 40}, 30, 15, 20);
    ellipse.InspectEdge(image);
    const double c = std::cos(20 * std::numbers::pi / 180), s = std::sin(20 * std::numbers::pi / 180);
    for (const AxisSample& sample : ellipse.Samples) {
        const double x = sample.X - 60, y = sample.Y - 40;
        ASSERT_NEAR(std::hypot((c * x + s * y) / 30, (c * y - s * x) / 15), 1, 1e-9);
    }
    ExpectEven(ellipse, 1.1);

    // A spline passes its nodes, leaves a smooth corner the way that a line reaches it, and bends evenly.
    SnakeGauge mixed;
    mixed.Append({10, 60}, HCorner);
    mixed.Append({30, 60}, SCorner);
    mixed.Append({50, 40}, Spline);
    mixed.Append({75, 55}, Spline);
    mixed.Append({90, 20}, HCorner);
    mixed.Append({60, 5}, Circular);
    mixed.Append({40, 10}, HCorner);
    mixed.InspectEdge(image);
    ASSERT_EQ(int(mixed.NumSections), 3);
    EXPECT_EQ(mixed.Sections[1].Type, Spline);
    EXPECT_EQ(mixed.Sections[1].NumNodes, 4);
    EXPECT_EQ(mixed.Sections[2].FirstSample, mixed.Sections[1].FirstSample + mixed.Sections[1].NumSamples);
    EXPECT_NEAR(mixed.Nodes[1].Out.X, 1, 1e-12);
    EXPECT_NEAR(mixed.Nodes[2].In.X, mixed.Nodes[2].Out.X, 1e-9);
    for (const SnakeNode& node : mixed.Nodes) {
        const AxisSample& sample = mixed.Samples[static_cast<std::size_t>(node.Sample)];
        EXPECT_NEAR(std::hypot(sample.X - node.Position.X, sample.Y - node.Position.Y), 0, 0.6);
    }
    // Nodes on a line give a line.
    SnakeGauge straight = Segment({10, 10}, {40, 10});
    straight.Append({55, 10}, Spline);
    straight.Append({100, 10}, SCorner);
    straight.InspectEdge(image);
    ASSERT_EQ(int(straight.NumAxisSamples), 91);
    for (std::size_t i = 0; i < 91; i++)
        EXPECT_NEAR(straight.Samples[i].X, 10 + static_cast<double>(i), 1e-9);
}

TEST_F(SnakeGaugeTest, ProbesAreThoseOfProfiles)
{
    Image image;
    PaintStep(image, 120, 80, 1.3, [](int x, int y) { return y - 39.3 - 0.1 * x; });
    for (const int thickness : {1, 4}) {
        SnakeGauge gauge = Segment({20, 40}, {90, 47}, 12.5);
        gauge.Thickness = thickness;
        gauge.Density = 7;
        gauge.MaxDeviation = 1e9;
        gauge.InspectEdge(image, false);
        for (int i = 0; i < gauge.NumAxisSamples; i += 7) {
            const AxisSample sample = gauge.EdgePoint(i);
            const XY n(-sample.TangentY, sample.TangentX);
            const XY beg(sample.X - 12.5 * n.X, sample.Y - 12.5 * n.Y),
                end(sample.X + 12.5 * n.X, sample.Y + 12.5 * n.Y);
            Profile profile;
            if (thickness == 1)
                profile.LineGet(beg, end, image);
            else
                profile.LineAdd(beg, end, thickness, image);
            double x = 0;
            ASSERT_TRUE(profile.EdgeDetect(32, 10, Both, BestStep, x));
            EXPECT_EQ(sample.State, 1);
            EXPECT_EQ(sample.Deviation, x - 12.5);
            EXPECT_EQ(sample.EdgeX, sample.X + sample.Deviation * n.X);
        }
        EXPECT_EQ(gauge.EdgePoint(1).State, 0); // between probes
        gauge.MaximumSpan = 1;
        gauge.InspectEdge(image);
        EXPECT_EQ(gauge.Sections[0].NumPoints, 0);
        gauge.MaximumSpan = 32;
        gauge.MinimumSlope = 100;
        gauge.InspectEdge(image);
        EXPECT_EQ(gauge.Sections[0].NumPoints, 0);
    }
}

TEST_F(SnakeGaugeTest, SectionsAreFittedAndWhatIsOffIsFound)
{
    Image image;
    PaintHorizon(image, 40);
    Block(image, 50, 30, 12, 10, 200); // towards the dark side
    Block(image, 80, 20, 9, 60, 50);   // nothing to find
    SnakeGauge gauge = Segment({10, 38}, {109, 38}, 15);
    gauge.Density = 1;
    gauge.InspectEdge(image);
    // The middle level lies between rows 39 and 40.
    EXPECT_EQ(gauge.Sections[0].NumPoints, 100 - 9);
    EXPECT_EQ(gauge.Sections[0].NumIntrusions, 12);
    EXPECT_NEAR(gauge.Sections[0].MinDeviation, -10, 1e-9);
    EXPECT_EQ(gauge.Sections[0].MaxDeviation, 0);
    EXPECT_NEAR(gauge.Sections[0].Deviation, 120, 1e-6);
    XY beg, end;
    gauge.SectionSegment(0, beg, end);
    EXPECT_NEAR(beg.X, 10, 1e-9);
    EXPECT_NEAR(beg.Y, 39.5, 1e-9);
    EXPECT_NEAR(end.X, 109, 1e-9);
    EXPECT_EQ(Anomalies(gauge).All(), (std::vector{1, 0, 1}));
    EXPECT_EQ(Anomalies(gauge, 10).All(), (std::vector{1, 0, 0}));
    gauge.Density = 4;
    gauge.RMS = true;
    gauge.InspectEdge(image, false);
    EXPECT_NEAR(gauge.Sections[0].Deviation, 3 * 8.5 * 8.5 + (25 - 3 - 2) * 1.5 * 1.5, 1e-6);
    EXPECT_EQ(Anomalies(gauge, 12).All(), (std::vector{1, 0, 0}));
    EXPECT_EQ(Anomalies(gauge, 13).All(), (std::vector{0, 0, 0}));
    gauge.Density = 1; // runs are measured as they were probed
    EXPECT_EQ(Anomalies(gauge, 12).All(), (std::vector{1, 0, 0}));
    // Seen from the other end sides change.
    gauge = Segment({109, 38}, {10, 38}, 15);
    gauge.InspectEdge(image);
    EXPECT_EQ(Anomalies(gauge).All(), (std::vector{0, 1, 1}));
    gauge.SectionArc(0, beg, end, beg, gauge.Breadth);
    EXPECT_EQ(Message(), L"This is not a circular arc section");
    gauge.SectionSegment(1, beg, end);
    EXPECT_EQ(Message(), L"The Section Index (1) must be in range [0..0]");
    gauge.EdgePoint(-1);
    EXPECT_EQ(Message(), L"The location index (-1) is out of the range [0..99]");
    gauge.RibbonPoint(0);
    EXPECT_EQ(Message(), L"No edge point is available, perform inspection");
    gauge.Append({30, 70}, HCorner);
    EXPECT_EQ(Anomalies(gauge).All(), (std::vector{-1, -1, -1}));
    gauge.SectionSegment(0, beg, end);
    EXPECT_EQ(Message(), L"No Section has been created yet");
}

TEST_F(SnakeGaugeTest, ArcsAndSplinesAreFittedToo)
{
    Image image;
    PaintStep(image, 200, 200, 1, [](int x, int y) { return std::hypot(x - 101.4, y - 98.7) - 60.25; });
    Block(image, 155, 90, 22, 18, 50); // a bulge of the dark disc
    SnakeGauge circle;
    circle.CircleAppend({100, 100}, 58);
    circle.MaximumSpan = 64; // a span counts from the extremes, flat stretches included
    circle.InspectEdge(image);
    XY beg, end, center;
    double radius = 0;
    circle.SectionArc(0, beg, end, center, radius);
    EXPECT_NEAR(center.X, 101.4, 0.05);
    EXPECT_NEAR(center.Y, 98.7, 0.05);
    EXPECT_NEAR(radius, 60.25, 0.05);
    EXPECT_NEAR(beg.Y, 100, 1e-9);
    EXPECT_NEAR(beg.X, 101.4 + std::sqrt(60.25 * 60.25 - 1.3 * 1.3), 0.05);
    // The normals lead inwards; the bulge over the beginning of the closed axis is one.
    circle.MaxDeviation = 2;
    circle.InspectEdge(image);
    EXPECT_EQ(Anomalies(circle).All(), (std::vector{1, 0, 0}));
    circle.InspectEdge(image, false);
    circle.SectionArc(0, beg, end, center, radius);
    EXPECT_EQ(radius, 58);

    SnakeGauge arc;
    arc.Append({60, 142}, HCorner); // from y to x, so that the normals lead outwards
    arc.Append({100, 158}, Circular);
    arc.Append({140, 142}, HCorner);
    arc.MaximumSpan = 64;
    arc.InspectEdge(image);
    arc.SectionArc(0, beg, end, center, radius);
    EXPECT_NEAR(radius, 60.25, 0.3);
    EXPECT_NEAR(std::hypot(beg.X - center.X, beg.Y - center.Y), radius, 1e-9);
    EXPECT_LT(std::hypot(end.X - 140, end.Y - 142), 4);

    // A spline that drifts off a straight edge is no anomaly with its trend taken off.
    PaintHorizon(image, 40);
    SnakeGauge spline;
    spline.Breadth = 15;
    spline.Append({10, 31}, HCorner);
    spline.Append({50, 39}, Spline);
    spline.Append({109, 50.8}, HCorner);
    spline.InspectEdge(image, false);
    EXPECT_EQ(Anomalies(spline).All(), (std::vector{1, 1, 0}));
    spline.InspectEdge(image);
    EXPECT_EQ(Anomalies(spline).All(), (std::vector{0, 0, 0}));
    EXPECT_NEAR(spline.EdgePoint(60).Deviation, 0, 0.1);
}

TEST_F(SnakeGaugeTest, RibbonsKeepTheirWidth)
{
    Image image;
    PaintHorizon(image, 80);
    Block(image, 0, 35, 120, 10, 180);
    Block(image, 30, 35, 9, 4, 50);
    Block(image, 60, 45, 9, 6, 180);
    Block(image, 90, 35, 9, 10, 50);
    SnakeGauge gauge = Segment({10, 42}, {109, 42}, 20);
    gauge.Density = 1;
    gauge.NominalWidth = 10;
    gauge.MaxDeviation = 3;
    gauge.Polarity = Raising;
    gauge.Polarity2 = Falling;
    gauge.InspectRibbon(image);
    EXPECT_EQ(gauge.Sections[0].NumPoints, 91);
    EXPECT_EQ(Anomalies(gauge).All(), (std::vector{1, 1, 1}));
    EXPECT_NEAR(gauge.Sections[0].MinDeviation, -4, 1e-9);
    EXPECT_NEAR(gauge.Sections[0].MaxDeviation, 6, 1e-9);
    EXPECT_NEAR(gauge.Sections[0].Deviation, 9 * 4 + 9 * 6, 1e-6);
    const AxisSample sample = gauge.RibbonPoint(5);
    EXPECT_NEAR(sample.EdgeY, 34.5, 1e-9);
    EXPECT_NEAR(sample.Edge2Y, 44.5, 1e-9);
    XY beg, end;
    gauge.SectionSegment(0, beg, end);
    EXPECT_NEAR(beg.Y, 39.5, 0.7); // the middle
    gauge.MinimumStep2 = 131;
    gauge.InspectRibbon(image);
    EXPECT_EQ(gauge.Sections[0].NumPoints, 0);
    gauge.MinimumStep2 = Auto;
    gauge.MinimumStep = 131;
    gauge.InspectRibbon(image);
    EXPECT_EQ(gauge.Sections[0].NumPoints, 0);
}

TEST_F(SnakeGaugeTest, TypicalEdgesAreAssessed)
{
    // Edges of steps 50, 51, ... along the axis; the first part falls.
    Image image;
    image.Set(120, 80, Gray);
    for (int x = 0; x < 120; x++)
        for (int y = 0; y < 80; y++)
            image.Row(y)[x] = static_cast<std::uint8_t>((y < 40) == (x < 50) ? 40 + x : 0);
    const SnakeGauge gauge = Segment({10, 40}, {109, 40});
    int step = -1, slope = -1, span = -1, rising = -1, falling = -1;
    const auto assess = [&](double fraction) {
        return gauge.AssessEdge(image, fraction, step, slope, span, rising, falling, BestStep);
    };
    ASSERT_TRUE(assess(1)); // probes at 10, 13, ... 109
    EXPECT_EQ(step, 149);
    EXPECT_EQ(slope, 14);
    EXPECT_EQ(span, 10); // from the first sample of the flat part on
    EXPECT_EQ(falling, 14);
    EXPECT_EQ(rising, 20);
    EXPECT_TRUE(assess(0.1)); // the fourth of 34
    EXPECT_EQ(step, 50 + 3 * 3);
    EXPECT_TRUE(assess(notANumber));
    EXPECT_EQ(step, 50);
    EXPECT_EQ(int(gauge.NumAxisSamples), -1) << "the gauge stays as it is";
    Block(image, 0, 0, 120, 80, 9);
    EXPECT_FALSE(assess(0.5));
    EXPECT_EQ(rising + falling, 0);
    EXPECT_EQ(step, 50);
    EXPECT_EQ(Status::Error().Code, NoError);
}

TEST_F(SnakeGaugeTest, StripeIsStraightened)
{
    Image image, window, stripe;
    image.Set(90, 60, Rgb);
    for (int y = 0; y < 60; y++)
        for (int x = 0; x < 90; x++)
            image.Row<RgbPixel>(y)[x] = RgbPixel(2 * x, 4 * y, x + y);
    window.ShallowCopy(image, true);
    window.Window(10, 5, 70, 50);
    const SnakeGauge gauge = Segment({10, 20}, {50, 20}, 7.5);
    gauge.Sample(window, stripe, true);
    ASSERT_EQ(int(stripe.Type), Rgb);
    ASSERT_EQ(int(stripe.Width), 41);
    ASSERT_EQ(int(stripe.Height), 16);
    const RgbPixel pixel = stripe.Row<RgbPixel>(10)[3]; // x 13 + 10, y 12.5 + 10 + 5
    EXPECT_EQ(pixel, RgbPixel(46, 110, 50));
    gauge.Sample(window, window, false);
    EXPECT_EQ(window.Row<RgbPixel>(10)[3], RgbPixel(46, 112, 51));
    gauge.Sample(Image(), stripe);
    EXPECT_EQ(int(Status::Error().Code), VoidObject);
    SnakeGauge().Sample(image, stripe);
    EXPECT_EQ(Message(), L"No shape has been defined");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::SnakeGauge::Sample");
    EXPECT_EQ(int(stripe.Width), 41);
}

TEST_F(SnakeGaugeTest, ExtremesAreBorne)
{
    Image image;
    const int lowest = std::numeric_limits<int>::min(), highest = MaxInt;
    for (const int size : {1, 2, 60}) {
        PaintStep(image, size, size, 1, [](int x, int y) { return x + y - 60.0; });
        for (const int density : {0, -5, lowest, highest})
            for (const int noise : {0, lowest, highest})
                for (const double breadth : {0.0, -3.0, notANumber, 0.4, 300.0}) {
                    SnakeGauge gauge;
                    gauge.EllipseAppend({30, 30}, 20, 10, 1e6);
                    gauge.Density = density;
                    gauge.Noise = gauge.MinimumSlope = gauge.MaximumSpan2 = noise;
                    gauge.MinimumStep = ~noise;
                    gauge.Breadth = breadth;
                    gauge.MaxDeviation = breadth;
                    gauge.InspectEdge(image);
                    EXPECT_EQ(Status::Error().Code, NoError);
                    gauge.InspectRibbon(image);
                    Anomalies counted(gauge);
                    EXPECT_GE(counted.missing, 0);
                }
    }
    for (const double far : {1e7, 1e200, 1e308}) {
        SnakeGauge gauge = Segment({-far, 0}, {far, 5});
        gauge.InspectEdge(image);
        EXPECT_EQ(int(Status::Error().Code), OutOfRange);
        gauge.Draw(true, true, true);
        EXPECT_EQ(int(gauge.NumAxisSamples), -1);
    }
    SnakeGauge point = Segment({5, 5}, {5, 5});
    point.InspectEdge(image);
    EXPECT_EQ(int(point.NumAxisSamples), 1);
    point.Close();
    point.InspectEdge(image);
    EXPECT_EQ(int(point.NumAxisSamples), 1);
    SnakeGauge far = Segment({1, 1}, {3, 3}, 1e300);
    far.InspectEdge(image);
    EXPECT_EQ(Status::Error().Code, NoError);
    SnakeGauge big = Segment({0, 0}, {1000000, 0}, 4000);
    big.InspectEdge(image);
    EXPECT_EQ(Message(), L"The probes of this snake take too many pixels");
    image.Set(5, 5, Rgb);
    big.InspectEdge(image);
    EXPECT_EQ(int(Status::Error().Code), UnsupportedType);
}

/// A file as it was written by a version, of one node, with parameters that tell their places.
std::vector<std::uint8_t> FileOf(int version)
{
    std::vector<std::uint8_t> bytes;
    Archive archive = Archive::IntoMemory(bytes);
    std::uint8_t closed = 1;
    int length = 1, type = SCorner, sample = 77, magic = 0x474e5354;
    double place[] = {3.5, 4.5, 1, 0, 0, 1};
    archive(closed, length, type, sample, place[0], place[1], place[2], place[3], place[4], place[5], magic, version);
    for (int i = 0; i < (version == 1 ? 15 : 14); i++)
        archive(i);
    double breadth = 20, width = 30, deviation = 6;
    archive(breadth);
    if (version >= 3) archive(width);
    std::uint8_t rms = 1;
    archive(deviation, rms);
    return bytes;
}

TEST_F(SnakeGaugeTest, FilesOfAllVersionsAreRead)
{
    for (const int version : {1, 2, 3}) {
        const std::vector<std::uint8_t> bytes = FileOf(version);
        SnakeGauge gauge;
        Archive archive = Archive::FromMemory(bytes);
        gauge.Transfer(archive);
        ASSERT_EQ(archive.Code(), NoError) << version;
        EXPECT_EQ(archive.BytesLeft(), 0);
        const int shift = version == 1 ? 1 : 0;
        EXPECT_EQ(gauge.MinimumSlope, 1);
        EXPECT_EQ(gauge.MaximumSpan, 2 + shift);
        EXPECT_EQ(gauge.Density, 13 + shift);
        EXPECT_EQ(gauge.Selection2, 12 + shift);
        EXPECT_EQ(gauge.NominalWidth, version < 3 ? 10 : 30);
        EXPECT_EQ(gauge.MaxDeviation, 6);
        EXPECT_TRUE(gauge.RMS && gauge.Closed && gauge.Nodes[0].Type == SCorner && gauge.NumAxisSamples == -1);
        EXPECT_EQ(gauge.Nodes[0].Out.Y, 1);
        if (version < 3) continue;
        std::vector<std::uint8_t> written;
        Archive out = Archive::IntoMemory(written);
        gauge.Transfer(out);
        EXPECT_EQ(written, bytes);
    }
    for (const auto& [version, code] : {std::pair{4, OutOfRange}, {0, OutOfRange}}) {
        const std::vector<std::uint8_t> bytes = FileOf(version);
        Archive archive = Archive::FromMemory(bytes);
        SnakeGauge().Transfer(archive);
        EXPECT_EQ(archive.Code(), code);
    }
    std::vector<std::uint8_t> hostile = FileOf(3);
    hostile[4] = 0x7f; // of the count
    Archive archive = Archive::FromMemory(hostile);
    SnakeGauge().Transfer(archive);
    EXPECT_EQ(archive.Code(), CannotRead);

    const std::string name = ::testing::TempDir() + "snake.sng";
    SnakeGauge gauge, read;
    gauge.CircleAppend({40, 30}, 12);
    gauge.Breadth = 9;
    gauge.Write(name.c_str());
    read.Read(name.c_str());
    EXPECT_EQ(read.Breadth, 9);
    EXPECT_EQ(int(read.Length), 3);
    EXPECT_TRUE(read.Closed);
    std::remove(name.c_str());
    read.Read(name.c_str());
    EXPECT_EQ(int(Status::Error().Code), CannotOpen);

    std::vector<std::uint8_t> block;
    Archive out = Archive::IntoMemory(block), in = Archive::FromMemory(block);
    gauge.Snake::Transfer(out);
    EXPECT_EQ(std::string(block.begin(), block.begin() + 4), "TSNK");
    in = Archive::FromMemory(block);
    Snake snake;
    snake.Transfer(in);
    EXPECT_EQ(int(snake.Length), 3);
}

TEST_F(SnakeGaugeTest, NodesAreDraggedAndTheWholeByItsAxis)
{
    SnakeGauge gauge;
    EXPECT_EQ(gauge.ClosestTo({5, 5}), -1);
    gauge.Drag({50, 50});
    gauge.RectangleAppend({50, 50}, {40, 20});
    EXPECT_EQ(gauge.ClosestTo({31, 42}), 0);
    gauge.Drag({34, 46}); // by 3, 4
    EXPECT_EQ(gauge.Nodes[0].Position.X, 33);
    EXPECT_EQ(gauge.Nodes[4].Position.Y, 44);
    EXPECT_EQ(gauge.Nodes[1].Position.X, 70);
    gauge.ClosestTo({70, 50});
    EXPECT_EQ(int(gauge.Handle), AllHandle);
    gauge.Drag({75, 45});
    EXPECT_EQ(gauge.Nodes[0].Position.X, 38);
    EXPECT_EQ(gauge.Nodes[2].Position.Y, 55);
    gauge.Clear();
    gauge.EllipseAppend({50, 50}, 30, 20);
    EXPECT_EQ(gauge.ClosestTo({50, 70}), 1);
    gauge.Drag({50, 75});
    EXPECT_EQ(gauge.Nodes[3].Position.Y, 25);
    // What was inspected is out of date after a drag, however the axis was sampled again.
    Image image;
    PaintHorizon(image, 40);
    gauge.InspectEdge(image);
    gauge.Drag({50, 80});
    gauge.ClosestTo({50, 50});
    EXPECT_EQ(Anomalies(gauge).missing, -1);

    CairoTarget target(120, 80);
    Graph::DrawTo(&target);
    gauge.InspectRibbon(image);
    gauge.Draw(true, true, true);
    gauge.DrawEdge(true, true);
    SnakeGauge().Draw(true, true, true);
    Graph::DrawTo(nullptr);
    EXPECT_EQ(Status::Error().Code, NoError);
}

} // namespace
} // namespace Tesk
