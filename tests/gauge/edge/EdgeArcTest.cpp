// Arc gauges: their probes, circles without outliers and around the points, edges along the arc, files, handles.
#include "gauge/EdgeArc.h"

#include "../../Failures.h"
#include "foundation/Angles.h"
#include "gauge/edge/Pictures.h"
#include "image/Geometry.h"

#include <cmath>
#include <cstdio>
#include <limits>
#include <string>
#include <utility>

namespace Tesk {
namespace {

using checks::Message;
using checks::PaintStep;

class EdgeArcTest : public checks::IgnoringFailures
{
protected:
    void TearDown() override
    {
        Geometry::SimpleCalibration(1, 1);
        IgnoringFailures::TearDown();
    }
};

/// A disc of radius 70.3 about (128.2, 120.6).
void PaintDisc(Image& image)
{
    PaintStep(image, 256, 240, 1, [](int x, int y) { return 70.3 - std::hypot(x - 128.2, y - 120.6); });
}

void ExpectNear(XY p, double x, double y, double tolerance)
{
    EXPECT_NEAR(p.X, x, tolerance);
    EXPECT_NEAR(p.Y, y, tolerance);
}

TEST_F(EdgeArcTest, CircleIsFoundAndTheGaugeMovesOntoIt)
{
    Image image;
    PaintDisc(image);
    EdgeArc gauge;
    gauge.Locate({125, 123}, 72, 32.9);
    EXPECT_EQ(gauge.ProbeLength, 32);
    gauge.Breadth = 3;
    ASSERT_TRUE(gauge.Detect(image));
    EXPECT_EQ(int(gauge.NumSamples), static_cast<int>(std::ceil(2 * 72 * 3.141592653589793 / 5)) + 1);
    const XY first = gauge.SamplePoints[0], last = gauge.SamplePoints[gauge.SamplePoints.size() - 1];
    ExpectNear(first, last.X, last.Y, 1e-6);
    ExpectNear(gauge.FittedCenter, 128.2, 120.6, 0.02);
    EXPECT_NEAR(gauge.FittedRadius, 70.3, 0.02);
    Geometry::SimpleCalibration(10, 1);
    ASSERT_TRUE(gauge.Detect(image));
    EXPECT_NEAR(gauge.FittedRadius, 7.03, 0.002);
    gauge.Realign();
    ExpectNear(gauge.Center, 128.2, 120.6, 0.02);
    EXPECT_NEAR(gauge.Radius, 70.3, 0.02);
    gauge.Oblique = false;
    ASSERT_TRUE(gauge.Detect(image));
    EXPECT_NEAR(gauge.FittedRadius, 7.03, 0.003);
}

TEST_F(EdgeArcTest, ArcsRunThroughTheirMiddleFromTheEndBack)
{
    Image image;
    PaintDisc(image);
    EdgeArc gauge;
    gauge.Locate({128, 121}, 70, 200, 340, 30); // the upper side
    EXPECT_NEAR(ToDegrees(gauge.EndAngle - gauge.StartAngle), 140, 1e-9);
    EXPECT_LT(gauge.ArcMid.Y, 60);
    gauge.Clearance = 8;
    ASSERT_TRUE(gauge.Detect(image));
    EXPECT_GT(gauge.SamplePoints[0].X, 180);
    for (const XY point : gauge.SamplePoints)
        EXPECT_LT(point.Y, 110);
    ExpectNear(gauge.FittedCenter, 128.2, 120.6, 0.1);
    std::swap(gauge.ArcBeg, gauge.ArcEnd);
    ASSERT_TRUE(gauge.Detect(image));
    EXPECT_LT(gauge.ArcMid.Y, 60);
    EXPECT_NEAR(ToDegrees(gauge.EndAngle - gauge.StartAngle), 140, 1e-9);
}

TEST_F(EdgeArcTest, SideFitsHoldAllPointsInTheirCircle)
{
    Image image;
    PaintStep(image, 256, 240, 1, [](int x, int y) {
        const double angle = std::atan2(y - 120.0, x - 128.0);
        return 70 + 4 * std::cos(3 * angle) - std::hypot(x - 128.0, y - 120.0);
    });
    EdgeArc gauge;
    gauge.Locate({128, 120}, 70, 40);
    gauge.Fitting = FitBefore;
    ASSERT_TRUE(gauge.Detect(image));
    EXPECT_NEAR(gauge.FittedRadius, 74, 0.1);
    EXPECT_EQ(int(gauge.NumFittedPoints), 0);
    EXPECT_EQ(int(gauge.FitState), 1);
    ASSERT_TRUE(gauge.Detect(image, Geometry()));
    EXPECT_NEAR(gauge.FittedRadius, 70, 0.3);
    EXPECT_GT(int(gauge.NumFittedPoints), 40);
}

TEST_F(EdgeArcTest, EdgesAlongTheCircleAreFoundByTheirAngles)
{
    Image image; // bright where the angle is between 20 and 110 degrees
    PaintStep(image, 256, 240, 1, [](int x, int y) {
        const double angle = ToDegrees(std::atan2(y - 120.0, x - 128.0));
        return ToRadians(Min(angle - 20, 110 - angle)) * std::hypot(x - 128.0, y - 120.0);
    });
    EdgeArc gauge;
    gauge.Locate({128, 120}, 80, 10);
    gauge.DetectAlong(image);
    ASSERT_EQ(Status::Error().Code, NoError);
    ASSERT_EQ(gauge.NumPoints(Both), 2);
    EXPECT_EQ(gauge.Breadth, 10);
    EXPECT_EQ(int(gauge.FitState), 2);
    EXPECT_NEAR(gauge.FittedEdge(0, Raising).Position, 20, 0.1);
    EXPECT_NEAR(gauge.FittedEdge(0, Falling).Position, 110, 0.1);
    ExpectNear(gauge.FittedPoint(0, Falling), 128 + 80 * std::cos(ToRadians(110)), 120 + 80 * std::sin(ToRadians(110)),
               0.15);
    Image color;
    color.Set(20, 20, Rgb);
    gauge.DetectAlong(color);
    EXPECT_EQ(Status::Error().Code, UnsupportedType);
    EXPECT_EQ(gauge.NumPoints(Both), 2);
}

TEST_F(EdgeArcTest, DegenerateArcsStayFinite)
{
    Image image;
    PaintDisc(image);
    const double infinite = std::numeric_limits<double>::infinity(), none = std::numeric_limits<double>::quiet_NaN();
    for (const double extreme : {0.0, -5.0, 1e-300, 1e9, 1e300, infinite, none}) {
        EdgeArc gauge;
        gauge.Locate({128, 120}, extreme, 32);
        gauge.Detect(image);
        gauge.DetectAlong(image);
        gauge.Locate({128, 120}, 60, extreme, 90, 32);
        gauge.Detect(image);
        gauge.Locate({128, 120}, 60, extreme);
        gauge.Detect(image);
        gauge.DetectAlong(image);
        gauge.Density = gauge.Clearance = extreme;
        gauge.Detect(image);
        for (const double result : {double(gauge.Radius), double(gauge.FittedRadius), double(gauge.StartAngle)})
            EXPECT_TRUE(std::isfinite(result)) << extreme;
    }
    EdgeArc few;
    few.Locate({128, 120}, 70, 0, 10, 32);
    few.Density = 32;
    EXPECT_FALSE(few.Detect(image)); // two probes
    few.SampleIndex = 2;
    few.Detect(image);
    EXPECT_EQ(Message(), L"The sample index (2) is out of the allowed range [0..1]");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::EdgeArc::_Detect");
}

TEST_F(EdgeArcTest, FilesOfAllVersionsAreRead)
{
    const std::string path = ::testing::TempDir() + "gauge.eda";
    const auto put = [&](const std::string& bytes) {
        std::FILE* file = std::fopen(path.c_str(), "wb");
        std::fwrite(bytes.data(), 1, bytes.size(), file);
        std::fclose(file);
    };
    std::remove(path.c_str());
    EdgeArc gauge, read;
    gauge.Locate({10, 20}, 30, 40, 100, 17.5);
    gauge.Fitting = FitAfter;
    gauge.Breadth = 9;
    gauge.Write(path.c_str());
    read.Read(path.c_str());
    ExpectNear(read.ArcMid, gauge.ArcMid.X, gauge.ArcMid.Y, 1e-9);
    EXPECT_EQ(read.Fitting, FitAfter);
    EXPECT_EQ(read.Breadth, 9);
    std::string bytes(200, '\0');
    std::FILE* file = std::fopen(path.c_str(), "rb");
    ASSERT_TRUE(file);
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file));
    std::fclose(file);
    ASSERT_EQ(bytes.size(), 107u);
    bytes[4] = 2;
    put(bytes.substr(0, 74) + bytes.substr(78));
    read.Read(path.c_str());
    EXPECT_EQ(read.Fitting, FitOver);
    EXPECT_EQ(read.Breadth, 9);
    bytes[4] = 1;
    put(bytes.substr(0, 8) + bytes.substr(17, 57) + bytes.substr(78));
    read.Read(path.c_str());
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_NEAR(read.Radius, 32, 1e-9);
    ExpectNear(read.Center, 10, 20, 1e-9);
    EXPECT_EQ(read.Breadth, 9);
    std::remove(path.c_str());
}

TEST_F(EdgeArcTest, DragsChangeTheCircleThroughThePoints)
{
    EdgeArc gauge;
    gauge.Locate({100, 100}, 50, 20);
    EXPECT_EQ(gauge.HitHandle(100, 150), MiddleHandle);
    EXPECT_EQ(gauge.HandleOctant(), 2);
    EXPECT_EQ(gauge.HitHandle(100, 160), LengthHandle);
    EXPECT_EQ(gauge.HandleOctant(), 4);
    gauge.Drag(100, 165);
    EXPECT_EQ(gauge.ProbeLength, 30);
    EXPECT_EQ(gauge.HitHandle(152, 100), AllHandle);
    gauge.Drag(162, 103);
    ExpectNear(gauge.Center, 110, 103, 1e-9);
    EXPECT_EQ(double(gauge.StartAngle), 0);
    EXPECT_EQ(gauge.HitHandle(110, 103), NoHandle);
}

} // namespace
} // namespace Tesk
