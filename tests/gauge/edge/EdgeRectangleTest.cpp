// Rectangle gauges: their probes, the joint fit of four sides or two, the smallest rectangle, files, handles.
#include "gauge/EdgeRectangle.h"

#include "../../Failures.h"
#include "foundation/Angles.h"
#include "foundation/Graph.h"
#include "gauge/edge/Pictures.h"
#include "image/Geometry.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

namespace Tesk {
namespace {

using checks::Message;
using checks::PaintStep;

class EdgeRectangleTest : public checks::IgnoringFailures
{
protected:
    void TearDown() override
    {
        Geometry::SimpleCalibration(1, 1);
        Graph::Zoom = 1;
        IgnoringFailures::TearDown();
    }
};

/// A bright rectangle of 90 x 50 about (81.3, 60.6), turned, with a blur, and a gauge of its size over it.
EdgeRectangle OverPart(Image& image, double degrees)
{
    const double c = std::cos(ToRadians(degrees)), s = std::sin(ToRadians(degrees));
    PaintStep(image, 160, 120, 1, [=](int x, int y) {
        const double u = c * (x - 81.3) + s * (y - 60.6), v = c * (y - 60.6) - s * (x - 81.3);
        return std::min(45 - std::abs(u), 25 - std::abs(v));
    });
    EdgeRectangle gauge;
    gauge.Locate({80, 60}, {90, 50}, 0, 16);
    gauge.Breadth = 3;
    gauge.Clearance = 6;
    return gauge;
}

void ExpectRectangle(const EdgeRectangle& gauge, XY middle, XY size, double degrees, double tolerance)
{
    EXPECT_EQ(int(gauge.FitState), 1);
    EXPECT_NEAR(gauge.FittedMiddle.operator XY().X, middle.X, tolerance);
    EXPECT_NEAR(gauge.FittedMiddle.operator XY().Y, middle.Y, tolerance);
    EXPECT_NEAR(gauge.FittedSize.operator XY().X, size.X, tolerance);
    EXPECT_NEAR(gauge.FittedSize.operator XY().Y, size.Y, tolerance);
    EXPECT_NEAR(gauge.FittedAngle, degrees, tolerance);
    const double c = std::cos(ToRadians(degrees)), s = std::sin(ToRadians(degrees));
    EXPECT_NEAR(gauge.FittedCorners[1].X, middle.X + c * size.X / 2 + s * size.Y / 2, 2 * tolerance);
    EXPECT_NEAR(gauge.FittedCorners[1].Y, middle.Y + s * size.X / 2 - c * size.Y / 2, 2 * tolerance);
}

TEST_F(EdgeRectangleTest, RectanglesAreFoundWhereTheyAre)
{
    for (const double degrees : {1.0, 4.0, -7.0}) {
        Image image;
        EdgeRectangle gauge = OverPart(image, degrees);
        ASSERT_TRUE(gauge.Detect(image)) << degrees;
        ExpectRectangle(gauge, {81.3, 60.6}, {90, 50}, degrees, 0.04);
        int fitted = 0;
        for (int side = 0; side < 4; side++)
            fitted += gauge.NumFittedPoints(side);
        EXPECT_EQ(gauge.EdgeRow::NumFittedPoints, fitted);
        // Against the reference a quarter turn round, width and height stay with its sides.
        gauge.Locate({80, 60}, {50, 90}, 90, 16);
        ASSERT_TRUE(gauge.Detect(image));
        ExpectRectangle(gauge, {81.3, 60.6}, {50, 90}, degrees + 90, 0.04);
        gauge.Realign();
        ASSERT_TRUE(gauge.Detect(image));
        ExpectRectangle(gauge, {81.3, 60.6}, {50, 90}, degrees + 90, 0.04);
        EXPECT_NEAR(gauge.AngleDegrees, degrees + 90, 0.04);
        // In millimetres of a tenth of a pixel; the gauge stays on the picture.
        Geometry::SimpleCalibration(1, 0.1);
        ASSERT_TRUE(gauge.Detect(image));
        ExpectRectangle(gauge, {8.13, 6.06}, {5, 9}, degrees + 90, 0.04);
        const double width = gauge.Rectangle.Width;
        gauge.Realign();
        EXPECT_NEAR(gauge.Rectangle.Width, width, 0.1);
        Geometry::SimpleCalibration(1, 1);
    }
}

TEST_F(EdgeRectangleTest, TwoSidesMeasureAThickness)
{
    Image image;
    EdgeRectangle gauge = OverPart(image, 5);
    gauge.Locate({81, 61}, {40, 52}, 3, 16);
    gauge.FourSides = false;
    ASSERT_TRUE(gauge.Detect(image));
    EXPECT_NEAR(gauge.FittedSize.operator XY().X, 40, 1e-9);
    EXPECT_NEAR(gauge.FittedSize.operator XY().Y, 50, 0.03);
    EXPECT_NEAR(gauge.FittedAngle, 5, 0.05);
    EXPECT_EQ(gauge.NumDetectedPoints(1), 0);
    EXPECT_EQ(gauge.NumDetectedPoints(0), gauge.NumDetectedPoints(-2));
}

TEST_F(EdgeRectangleTest, ProbesAreCountedSideAfterSide)
{
    Image image;
    EdgeRectangle gauge = OverPart(image, 0);
    gauge.Clearance = 0;
    gauge.Locate({80, 60}, {100, 50}, 0, 16);
    gauge.Detect(image);
    EXPECT_EQ(int(gauge.NumSamples), 64);
    gauge.FourSides = false;
    gauge.Detect(image);
    EXPECT_EQ(int(gauge.NumSamples), 42);
    gauge.FourSides = true;
    // The first probe of the right side, from the corner downwards.
    gauge.Locate({80, 60}, {90, 50}, 0, 16);
    gauge.SampleIndex = 19 + 2;
    EXPECT_FALSE(gauge.Detect(image));
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(gauge.NumDetectedPoints(1), 1);
    EXPECT_NEAR(gauge.Beg.Y, 35 + 10, 1e-9);
    EXPECT_NEAR((gauge.Beg.X + gauge.End.X) / 2, 125, 1e-9);
    EXPECT_NEAR(gauge.FittedPoint(0, Both).X, 126.3, 0.05);
    gauge.SampleIndex = 60;
    EXPECT_FALSE(gauge.Detect(image));
    EXPECT_EQ(Message(), L"The sample index (60) is out of the allowed range [0..59]");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::EdgeRectangle::_Detect");
}

TEST_F(EdgeRectangleTest, OutliersCountInTheDeviationAlone)
{
    Image image;
    EdgeRectangle gauge = OverPart(image, 1);
    ASSERT_TRUE(gauge.Detect(image));
    const double width = gauge.FittedSize.operator XY().X, deviation = gauge.RobustDeviation;
    // A notch in the right side.
    for (int y = 50; y < 60; y++)
        std::fill_n(image.Row(y) + 121, 12, std::uint8_t{50});
    ASSERT_TRUE(gauge.Detect(image));
    EXPECT_NEAR(gauge.FittedSize.operator XY().X, width, 0.02);
    EXPECT_GT(gauge.Deviation, 4 * gauge.RobustDeviation);
    EXPECT_LT(gauge.RobustDeviation, deviation + 0.05);
    EXPECT_LT(gauge.NumFittedPoints(1), gauge.NumDetectedPoints(1));

    // A side without an edge, and numbers that are none, are no fit.
    for (int y = 0; y < 120; y++)
        std::fill_n(image.Row(y), 60, std::uint8_t{50});
    EXPECT_FALSE(gauge.Detect(image));
    EXPECT_EQ(int(gauge.FitState), 0);
    gauge.Density = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(gauge.Detect(image));
    gauge.Density = 1e-300;
    gauge.Clearance = 1e300;
    EXPECT_FALSE(gauge.Detect(image));
    EXPECT_TRUE(std::isfinite(gauge.FittedAngle));
}

TEST_F(EdgeRectangleTest, SmallestRectangleLiesAsTheReferenceDoes)
{
    for (const FittingSide side : {FitBefore, FitAfter}) {
        Image image;
        EdgeRectangle gauge = OverPart(image, 4);
        gauge.Fitting = side;
        ASSERT_TRUE(gauge.Detect(image));
        ExpectRectangle(gauge, {81.3, 60.6}, {90, 50}, 4, 0.2);
        gauge.Locate({80, 60}, {50, 90}, 90, 16);
        ASSERT_TRUE(gauge.Detect(image));
        EXPECT_NEAR(gauge.FittedSize.operator XY().Y, 90, 0.2);
    }
}

TEST_F(EdgeRectangleTest, FilesOfAllVersionsAreRead)
{
    const std::string path = ::testing::TempDir() + "gauge.edr";
    std::remove(path.c_str());
    EdgeRectangle gauge;
    gauge.Locate({30, 40}, {20, 10}, 30, 7);
    gauge.Density = 3.5;
    gauge.FourSides = false;
    gauge.Fitting = FitAfter;
    gauge.SplitPeaks = true;
    gauge.Write(path.c_str());
    std::ifstream stream(path, std::ios::binary);
    std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
    ASSERT_EQ(bytes.size(), 107u);
    const std::string head(bytes.begin(), bytes.begin() + 4);
    EXPECT_EQ(head, "TEDR");

    // Former versions lack the fields that came later.
    for (int version = 1; version <= 4; version++) {
        std::vector<char> file = bytes;
        file[4] = static_cast<char>(version);
        if (version < 3) file.erase(file.begin() + 74, file.begin() + 78);
        if (version < 2) file.erase(file.begin() + 73);
        std::ofstream(path, std::ios::binary | std::ios::trunc).write(file.data(), static_cast<long>(file.size()));
        EdgeRectangle read;
        read.Fitting = FitBefore;
        read.Read(path.c_str());
        if (version == 4) {
            EXPECT_EQ(Message(), L"The version number \"4\" of this EdgeRectangle file is too high");
            continue;
        }
        EXPECT_EQ(Status::Error().Code, NoError) << version;
        EXPECT_EQ(read.FourSides, version < 2);
        EXPECT_EQ(read.Fitting, version < 3 ? FitOver : FitAfter);
        EXPECT_TRUE(read.SplitPeaks);
        EXPECT_NEAR(read.Rectangle.Middle().X, 30, 1e-9);
        EXPECT_NEAR(read.AngleDegrees, 30, 1e-9);
    }
    std::remove(path.c_str());
}

TEST_F(EdgeRectangleTest, HandlesFollowThePointer)
{
    EdgeRectangle gauge;
    gauge.Locate({50, 40}, {60, 40}, 0, 20);
    gauge.SetWindow(100, 200, 300, 300);
    Graph::Zoom = 2;
    const auto hit = [&](double x, double y) {
        return gauge.HitHandle(static_cast<int>(2 * (x + 100)), static_cast<int>(2 * (y + 200)));
    };
    const auto drag = [&](double x, double y) {
        gauge.Drag(static_cast<int>(2 * (x + 100)), static_cast<int>(2 * (y + 200)));
    };
    EXPECT_EQ(hit(80, 60), SEHandle);
    drag(90, 70);
    EXPECT_NEAR(gauge.Rectangle.Width, 70, 1);
    EXPECT_NEAR(gauge.Rectangle.Corner(0).X, 20, 1e-9);
    EXPECT_EQ(hit(55, 10), LengthHandle);
    drag(55, 5);
    EXPECT_NEAR(gauge.ProbeLength, 30, 1e-9);
    EXPECT_EQ(gauge.HandleOctant() % 4, 2) << "across the first side";
    drag(55, -100);
    EXPECT_NEAR(gauge.ProbeLength, 30, 1e-9) << "longer than the rectangle";
    EXPECT_EQ(hit(50, 50), AllHandle);
    drag(53, 46);
    EXPECT_NEAR(gauge.Rectangle.Corner(0).X, 23, 1e-9);
    EXPECT_NEAR(gauge.Rectangle.Corner(0).Y, 16, 1e-9);
    EXPECT_EQ(hit(200, 250), NoHandle);
}

} // namespace
} // namespace Tesk
