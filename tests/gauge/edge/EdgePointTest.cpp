// Probes: exact signals, lobes, selections, files, handles.
#include "gauge/EdgePoint.h"

#include "../../Failures.h"
#include "foundation/Graph.h"
#include "image/Geometry.h"

#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace Tesk {
namespace {

using checks::Message;

class EdgePointTest : public checks::IgnoringFailures
{
protected:
    void TearDown() override
    {
        Geometry::SimpleCalibration(1, 1);
        Status::SIMDLevel(Status::BestSIMDLevel());
        Graph::Zoom = 1;
        IgnoringFailures::TearDown();
    }
};

/// A picture whose channels all have the value of a function of the column and the row.
void Paint(Image& image, int width, int height, PixelTypes type, const std::function<int(int, int)>& value)
{
    image.Set(width, height, type);
    const int channels = ElementSize(type);
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width * channels; x++)
            image.Row(y)[x] = static_cast<std::uint8_t>(value(x / channels, y));
}

int Noisy(int x, int y)
{
    const unsigned mixed = (static_cast<unsigned>(x) * 73856093u ^ static_cast<unsigned>(y) * 19349663u) * 2654435761u;
    return static_cast<int>(mixed >> 24);
}

/// A horizontal probe over the columns of a picture one row of which is told.
EdgePoint OverRow(Image& image, const std::vector<int>& row)
{
    const int last = static_cast<int>(row.size()) - 1;
    Paint(image, last + 9, 9, Gray, [&](int x, int) { return row[static_cast<std::size_t>(Clamp(x - 4, 0, last))]; });
    EdgePoint gauge;
    gauge.Beg = {4, 4};
    gauge.End = {4.0 + last, 4};
    return gauge;
}

TEST_F(EdgePointTest, SharpStepLiesMidwayBetweenItsPixels)
{
    Image image;
    EdgePoint gauge = OverRow(image, {10, 10, 10, 10, 210, 210, 210, 210});
    ASSERT_TRUE(gauge.Detect(image));
    ASSERT_EQ(int(gauge.SignalLength), 8);
    EXPECT_EQ(gauge.Signal[4], 210);
    EXPECT_EQ(gauge.Derivative[3], 200);
    EXPECT_EQ(gauge.Derivative[4], 200);
    const Edge edge = gauge.FittedEdge(0, Both);
    EXPECT_EQ(edge.Slope, 200);
    EXPECT_EQ(edge.Step, 200);
    EXPECT_EQ(edge.Start, 3);
    EXPECT_EQ(edge.Span, 1);
    EXPECT_EQ(edge.Position, 3.5);
    EXPECT_EQ(edge.X, 7.5);
    EXPECT_EQ(edge.Y, 4);
}

TEST_F(EdgePointTest, VertexOfTheParabolaIsThePlace)
{
    Image image;
    EdgePoint gauge = OverRow(image, {10, 10, 10, 40, 160, 200, 200, 200}); // derivative 0 0 30 150 160 40 0 0
    gauge.Smoothing = 2;
    ASSERT_TRUE(gauge.Detect(image));
    EXPECT_EQ(gauge.Smoothing, 3);
    EXPECT_EQ(int(gauge.Scale), 3);
    gauge.Smoothing = 1;
    ASSERT_TRUE(gauge.Detect(image));
    EXPECT_DOUBLE_EQ(gauge.FittedEdge(BestStep, Raising).Position, 4 - 0.5 * (40 - 150) / (40 - 2 * 160 + 150));
}

TEST_F(EdgePointTest, EdgeNeedsASampleOnEachSide)
{
    Image image;
    EXPECT_FALSE(OverRow(image, {10, 200, 200, 200}).Detect(image));
    EXPECT_FALSE(OverRow(image, {10, 10, 10, 200}).Detect(image));
    EXPECT_EQ(Status::Error().Code, NoError);
}

TEST_F(EdgePointTest, TouchingEdgesOfOnePolarityArePartedOnRequest)
{
    Image image;
    EdgePoint gauge =
        OverRow(image, {0, 0, 0, 60, 100, 110, 120, 160, 220, 220, 220}); // ... 60 100 50 20 50 100 60 ...
    ASSERT_TRUE(gauge.Detect(image));
    EXPECT_EQ(gauge.NumPoints(Raising), 1);
    gauge.SplitPeaks = true;
    ASSERT_TRUE(gauge.Detect(image));
    ASSERT_EQ(gauge.NumPoints(Raising), 2);
    EXPECT_EQ(gauge.FittedEdge(0, Raising).Position, 3 + 0.5 * (50 - 60) / -(50 - 200 + 60.0));
    EXPECT_EQ(gauge.Edges[0].Start + gauge.Edges[0].Span + 1, gauge.Edges[1].Start);
    gauge.Polarity = Falling;
    EXPECT_FALSE(gauge.Detect(image));
}

TEST_F(EdgePointTest, SelectionsTakeTheFirstOfEquals)
{
    Image image;
    EdgePoint gauge = OverRow(image, {0, 0, 0, 100, 100, 100, 0, 0, 0, 50, 100, 100, 100});
    ASSERT_TRUE(gauge.Detect(image));
    ASSERT_EQ(gauge.NumPoints(Both), 3);
    EXPECT_EQ(gauge.NumPoints(Falling), 1);
    EXPECT_EQ(gauge.FittedEdge(BestStep, Both).Position, 2.5);
    EXPECT_EQ(gauge.FittedEdge(BestSpan, Raising).Position, 9);
    EXPECT_EQ(gauge.FittedEdge(-1, Falling).Position, 5.5);
    EXPECT_EQ(gauge.FittedEdge(1, Raising).Position, 9);
    EXPECT_EQ(gauge.FittedEdge(-4, Both).Step, 0);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_EQ(Message(), L"The element index (-4) is out of the edge points range [-3..2]");
    for (const int none : {int(OverCenter), int(AsFirst), 3, MaxInt}) {
        EXPECT_EQ(gauge.FittedPoint(none, Both).X, 0);
        EXPECT_EQ(Status::Error().Code, OutOfRange);
    }
    gauge.FittedEdge(0, static_cast<Polarities>(0));
    EXPECT_EQ(Message(), L"No edge points were detected");
}

/// A sample of a `Gray` picture in the middle of it, by the products of the four weights.
double Interpolated(const Image& image, double x, double y)
{
    const int i = static_cast<int>(std::floor(x)), j = static_cast<int>(std::floor(y));
    const double fx = x - i, fy = y - j;
    return (1 - fy) * ((1 - fx) * image.Row(j)[i] + fx * image.Row(j)[i + 1]) +
           fy * ((1 - fx) * image.Row(j + 1)[i] + fx * image.Row(j + 1)[i + 1]);
}

TEST_F(EdgePointTest, SignalIsTheSumOfBilinearSamplesAtEveryLevel)
{
    Image image;
    Paint(image, 97, 83, Gray, Noisy);
    for (int k = 0; k < 60; k++) {
        EdgePoint gauge;
        gauge.Locate({44 + 0.37 * (k % 7), 40 + 0.21 * (k % 5)}, 9 + 0.77 * (k % 19), 7.3 * k);
        gauge.Breadth = 1 + k % 8;
        gauge.Smoothing = 1 + 2 * (k % 4);
        Status::SIMDLevel(NoSIMD);
        gauge.Detect(image);
        const std::vector<std::int32_t> plain(gauge.Signal.begin(), gauge.Signal.end());
        for (const SIMDLevels level : {SIMDSSE4, Status::BestSIMDLevel()}) {
            Status::SIMDLevel(level);
            gauge.Detect(image);
            ASSERT_EQ(std::vector<std::int32_t>(gauge.Signal.begin(), gauge.Signal.end()), plain);
        }
        const double dx = gauge.End.X - gauge.Beg.X, dy = gauge.End.Y - gauge.Beg.Y, length = std::hypot(dx, dy);
        ASSERT_EQ(int(gauge.SignalLength), static_cast<int>(std::ceil(length)) + 1);
        for (int i = 0; i < gauge.SignalLength; i++) {
            double sum = 0;
            for (int s = 0; s < gauge.Smoothing; s++)
                for (int j = 0; j < gauge.Breadth; j++) {
                    const double along = i + s - (gauge.Smoothing - 1) / 2, across = j - (gauge.Breadth - 1) / 2.0;
                    sum += Interpolated(image, gauge.Beg.X + (along * dx - across * dy) / length,
                                        gauge.Beg.Y + (along * dy + across * dx) / length);
                }
            EXPECT_NEAR(gauge.Signal[static_cast<std::size_t>(i)], sum, gauge.Smoothing) << k;
        }
    }
}

TEST_F(EdgePointTest, HalfALevelIsAddedButToSinglePixelsAwayFromTheBorder)
{
    Image image;
    Paint(image, 40, 40, Gray, [](int x, int) { return 100 + x % 2; });
    EdgePoint gauge;
    gauge.Beg = {10.5, 20};
    gauge.End = {20.5, 20};
    gauge.Detect(image);
    EXPECT_EQ(gauge.Signal[0], 100);
    gauge.Beg = {0.5, 20}; // within the margin
    gauge.Detect(image);
    EXPECT_EQ(gauge.Signal[9], 101);
    gauge.Beg = {10.5, 20};
    gauge.Breadth = 3; // 301.5
    gauge.Detect(image);
    EXPECT_EQ(gauge.Signal[0], 302);
}

TEST_F(EdgePointTest, GrayProbesMayLeaveThePictureAndColoredOnesMayNot)
{
    const auto step = [](int x, int) { return x < 20 ? 30 : 230; };
    Image gray, color;
    Paint(gray, 40, 30, Gray, step);
    Paint(color, 40, 30, Rgb, step);
    EdgePoint gauge;
    gauge.Beg = {5, 15};
    gauge.End = {60, 15};
    gauge.Breadth = 5;
    gauge.Smoothing = 3;
    ASSERT_TRUE(gauge.Detect(gray));
    EXPECT_EQ(gauge.NumPoints(Both), 1);
    EXPECT_EQ(gauge.FittedPoint(0, Both).X, 19.5);
    EXPECT_FALSE(gauge.Detect(color));
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(int(gauge.SignalLength), 0);
    gauge.End = {35, 15};
    ASSERT_TRUE(gauge.Detect(color));
    EXPECT_EQ(int(gauge.Scale), 45);
    EXPECT_EQ(gauge.Signal[0], 30 * 45);
    EXPECT_EQ(gauge.FittedPoint(0, Both).X, 19.5);
    gauge.End = {35.5, 16.25}; // turned, it is interpolated
    ASSERT_TRUE(gauge.Detect(color));
    EXPECT_NEAR(gauge.FittedPoint(0, Both).X, 19.5, 0.05);
}

TEST_F(EdgePointTest, HopelessProbesFindNothingAndOtherPicturesAreRefused)
{
    Image image, deep;
    Paint(image, 40, 30, Gray, Noisy);
    const double infinite = std::numeric_limits<double>::infinity(), none = std::numeric_limits<double>::quiet_NaN();
    EdgePoint gauge;
    gauge.MinimumStep = 0;
    for (const XY end : {XY(0, 0), XY(1, 0), XY(none, 3), XY(3, none), XY(infinite, 0), XY(1e300, 1e300), XY(1e7, 0)}) {
        gauge.End = end;
        EXPECT_FALSE(gauge.Detect(image));
        EXPECT_EQ(Status::Error().Code, NoError);
    }
    gauge.Beg = {1e15, -1e15};
    gauge.End = {1e15 + 100, -1e15};
    for (const int extreme : {MaxInt, Auto, 0}) {
        gauge.Breadth = gauge.Smoothing = gauge.Noise = gauge.MinimumSpan = extreme;
        EXPECT_FALSE(gauge.Detect(image));
    }
    for (const auto& [width, height] : {std::pair{1, 1}, std::pair{1, 30}, std::pair{2, 2}, std::pair{3, 1}}) {
        Paint(image, width, height, Gray, Noisy);
        EdgePoint over;
        over.Locate({0.5, 0.5}, 80, 17);
        over.Breadth = 9;
        over.Detect(image);
        EXPECT_EQ(int(over.SignalLength), 81);
    }
    deep.Set(40, 30, Gray16);
    EdgePoint probe;
    probe.End = {20, 10};
    EXPECT_FALSE(probe.Detect(deep));
    EXPECT_EQ(Status::Error().Code, UnsupportedType);
    EXPECT_EQ(Message(), L"The image type (Gray16) is not supported for this operation, use Gray or Rgb");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::EdgePoint::_Detect");
    EXPECT_FALSE(probe.Detect(Image()));
    EXPECT_EQ(Status::Error().Code, VoidObject);
}

TEST_F(EdgePointTest, PlacesComeInTheUnitsOfTheDetection)
{
    Image image;
    EdgePoint gauge = OverRow(image, {10, 10, 10, 10, 210, 210, 210, 210});
    Geometry::SimpleCalibration(2, 1);
    ASSERT_TRUE(gauge.Detect(image));
    EXPECT_EQ(gauge.FittedEdge(0, Both).X, 3.75);
    Geometry shift;
    shift.PureScaling(1, 3);
    ASSERT_TRUE(gauge.Detect(image, shift));
    EXPECT_NEAR(gauge.FittedEdge(0, Both).X, 22.5, 1e-12);
}

TEST_F(EdgePointTest, FilesHoldPlaceAndParameters)
{
    const std::string path = ::testing::TempDir() + "gauge.edp";
    EdgePoint gauge;
    gauge.Locate({10, 20}, 8, 90);
    gauge.MinimumSpan = 7;
    gauge.Polarity = Falling;
    gauge.SplitPeaks = true;
    std::remove(path.c_str());
    gauge.Write(path.c_str());
    std::FILE* file = std::fopen(path.c_str(), "r+b");
    ASSERT_TRUE(file);
    char bytes[80];
    ASSERT_EQ(std::fread(bytes, 1, sizeof bytes, file), 69u);
    EXPECT_EQ(std::string(bytes, 4), "TEDP");
    EXPECT_EQ(bytes[60], 7);
    EXPECT_EQ(bytes[64], 2);
    EXPECT_EQ(bytes[68], 1);
    EdgePoint read;
    read.Read(path.c_str());
    EXPECT_EQ(read.End.Y, 24);
    EXPECT_EQ(read.MinimumSpan, 7);
    EXPECT_TRUE(read.SplitPeaks);
    bytes[4] = 2;
    std::rewind(file);
    std::fwrite(bytes, 1, 30, file);
    std::fclose(file);
    read.Read(path.c_str());
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_EQ(Message(), L"The version number \"2\" of this EdgePoint file is too high");
    std::remove(path.c_str());
    read.Read(path.c_str());
    EXPECT_EQ(Status::Error().Code, CannotOpen);
}

TEST_F(EdgePointTest, DragsMoveAnEndOrTheWholeByWholePixels)
{
    Graph::Zoom = 2;
    EdgePoint gauge;
    gauge.SetWindow(100, 50, 200, 200);
    gauge.Locate({40, 30}, 20, 0);
    EXPECT_EQ(gauge.HitHandle(2 * 130 + 3, 2 * 80), FromHandle);
    gauge.Drag(2 * 125 + 1, 2 * 90);
    EXPECT_EQ(gauge.Beg.X, 25);
    EXPECT_EQ(gauge.Beg.Y, 40);
    gauge.Locate({40, 30}, 20, 90);
    EXPECT_EQ(gauge.HandleOctant(), 2);
    EXPECT_EQ(gauge.HitHandle(2 * 140, 2 * 80), AllHandle);
    gauge.Drag(2 * 143, 2 * 80);
    EXPECT_EQ(gauge.Beg.X, 43);
    EXPECT_EQ(gauge.End.Y, 40);
    EXPECT_EQ(gauge.HitHandle(0, 0), NoHandle);
}

} // namespace
} // namespace Tesk
