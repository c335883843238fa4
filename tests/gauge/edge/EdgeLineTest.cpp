// Line gauges: their probes, fits without outliers and from one side, files, handles.
#include "gauge/EdgeLine.h"

#include "../../Failures.h"
#include "foundation/Angles.h"
#include "foundation/Graph.h"
#include "foundation/RecordingTarget.h"
#include "gauge/edge/Allocations.h"
#include "gauge/edge/Pictures.h"
#include "image/Geometry.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>
#include <utility>

namespace Tesk {
namespace {

using checks::Allocations;
using checks::Message;
using checks::PaintStep;

class EdgeLineTest : public checks::IgnoringFailures
{
protected:
    void TearDown() override
    {
        Geometry::SimpleCalibration(1, 1);
        Graph::Zoom = 1;
        IgnoringFailures::TearDown();
    }
};

/// A picture with an edge along y = 60.25 + slope (x - 80), and a gauge over it.
EdgeLine OverEdge(Image& image, double degrees)
{
    const double c = std::cos(ToRadians(degrees)), s = std::sin(ToRadians(degrees));
    PaintStep(image, 160, 120, 1, [=](int x, int y) { return (y - 60.25) * c - (x - 80) * s; });
    EdgeLine gauge;
    gauge.Locate({80, 60}, 100, 0, 32);
    gauge.Breadth = 3;
    return gauge;
}

TEST_F(EdgeLineTest, LineIsFoundWhereItIs)
{
    Image image;
    EdgeLine gauge = OverEdge(image, 3);
    ASSERT_TRUE(gauge.Detect(image));
    EXPECT_EQ(int(gauge.FitState), 1);
    EXPECT_EQ(int(gauge.NumSamples), 21);
    EXPECT_EQ(int(gauge.NumDetectedPoints), 21);
    EXPECT_NEAR(gauge.FittedAngle, 3, 0.02);
    EXPECT_GT(gauge.SamplePoints[0].X, gauge.SamplePoints[20].X);
    const XY beg = gauge.FittedBeg, end = gauge.FittedEnd;
    EXPECT_NEAR(std::hypot(end.X - beg.X, end.Y - beg.Y), 100, 1e-9);
    EXPECT_NEAR((beg.Y + end.Y) / 2 - ((beg.X + end.X) / 2 - 80) * std::tan(ToRadians(3)), 60.25, 0.02);
    gauge.Density = 7;
    gauge.Detect(image);
    EXPECT_EQ(int(gauge.NumSamples), 16);

    std::swap(gauge.RefBeg, gauge.RefEnd);
    ASSERT_TRUE(gauge.Detect(image));
    EXPECT_NEAR(gauge.FittedAngle, -177, 0.02);
    EXPECT_NEAR(gauge.FittedEnd.operator XY().X, beg.X, 0.1);
    gauge.Oblique = false;
    ASSERT_TRUE(gauge.Detect(image));
    EXPECT_NEAR(gauge.FittedAngle, -177, 0.02);
    EXPECT_EQ(gauge.SamplePoints[3].X, std::round(gauge.SamplePoints[3].X * 1e9) / 1e9);
}

TEST_F(EdgeLineTest, RealignedGaugeLiesOnTheLineInPixels)
{
    Image image;
    EdgeLine gauge = OverEdge(image, 5);
    Geometry::SimpleCalibration(4, 1);
    ASSERT_TRUE(gauge.Detect(image));
    EXPECT_NEAR(gauge.FittedCenter.operator XY().X, 20, 0.01);
    gauge.Realign();
    EXPECT_NEAR((gauge.RefEnd.Y - gauge.RefBeg.Y) / (gauge.RefEnd.X - gauge.RefBeg.X), std::tan(ToRadians(5)), 1e-3);
    EXPECT_NEAR(std::hypot(gauge.RefEnd.X - gauge.RefBeg.X, gauge.RefEnd.Y - gauge.RefBeg.Y), 100, 1e-9);
}

TEST_F(EdgeLineTest, OutliersCountInTheDeviationAlone)
{
    Image image;
    EdgeLine gauge = OverEdge(image, 0);
    gauge.Breadth = 1;
    ASSERT_TRUE(gauge.Detect(image));
    const double clean = gauge.FittedCenter.operator XY().Y;
    EXPECT_EQ(int(gauge.NumFittedPoints), 21);
    EXPECT_NEAR(gauge.Deviation, 0, 1e-9);
    for (int y = 0; y < 120; y++) // four probes in another place
        for (const int x : {30, 45, 50, 110})
            image.Row(y)[x] = static_cast<std::uint8_t>(y < 68 ? 50 : 200);
    ASSERT_TRUE(gauge.Detect(image));
    EXPECT_EQ(int(gauge.NumDetectedPoints), 21);
    EXPECT_EQ(int(gauge.NumFittedPoints), 17);
    EXPECT_NEAR(gauge.FittedCenter.operator XY().Y, clean, 1e-9);
    EXPECT_NEAR(gauge.RobustDeviation, 0, 1e-9);
    EXPECT_GT(gauge.Deviation, 1);
}

TEST_F(EdgeLineTest, DetectionsLikeTheOneBeforeAllocateNothing)
{
    Image image;
    EdgeLine gauge = OverEdge(image, 2);
    gauge.StepModel = true;
    gauge.Smoothing = 3;
    for (const FittingSide side : {FitOver, FitBefore}) {
        gauge.Fitting = side;
        ASSERT_TRUE(gauge.Detect(image));
        const int before = Allocations();
        ASSERT_TRUE(gauge.Detect(image));
        EXPECT_EQ(Allocations(), before);
    }
}

TEST_F(EdgeLineTest, SteppedModelIsNearerThanTheVertexAtEveryPhase)
{
    for (const double blur : {0.7, 1.0, 1.5, 2.0}) {
        double vertex = 0, step = 0;
        for (int phase = 0; phase < 10; phase++) {
            Image image; // slanted a little, so that the rounding of the gray values averages out
            const double y0 = 60 + phase / 10.0;
            PaintStep(image, 160, 120, blur, [=](int x, int y) { return y - y0 - 0.002 * (x - 80); });
            EdgeLine gauge;
            gauge.Locate({80, 60.35}, 100, 0, 32);
            gauge.Breadth = 5;
            for (const bool model : {false, true}) {
                gauge.StepModel = model;
                ASSERT_TRUE(gauge.Detect(image));
                const XY center = gauge.FittedCenter;
                double& worst = model ? step : vertex;
                worst = Max(worst, std::abs(center.Y - y0 - 0.002 * (center.X - 80)));
            }
        }
        EXPECT_LT(step, 0.005) << blur;
        EXPECT_GT(vertex, 2 * step) << blur;
    }
}

TEST_F(EdgeLineTest, FittedLineIsDrawnBetweenTheEndsOfTheSegment)
{
    Image image;
    EdgeLine gauge = OverEdge(image, 0);
    Geometry::SimpleCalibration(8, 1);
    ASSERT_TRUE(gauge.Detect(image));
    RecordingTarget target;
    Graph::DrawTo(&target);
    gauge.SetWindow(1000, 0, 160, 120);
    gauge.Draw(true, true);
    Graph::DrawTo(nullptr);
    const auto has = [&](const char* call) {
        return std::find(target.Calls.begin(), target.Calls.end(), call) != target.Calls.end();
    };
    EXPECT_TRUE(has("Move 1030 60") && has("Line 1130 60"));
    EXPECT_TRUE(has("Move 1127 60") && has("Line 1134 60")); // the cross of the first point
}

TEST_F(EdgeLineTest, LinesFromOneSideTouchThePointsFarthestOut)
{
    Image image;
    PaintStep(image, 160, 120, 0.7, [](int x, int y) {
        return y - (x == 40 || x == 120 ? 66.0 : x == 80 ? 54.0 : 60.0);
    });
    EdgeLine gauge;
    gauge.Locate({80, 60}, 100, 0, 40);
    gauge.Fitting = FitAfter;
    ASSERT_TRUE(gauge.Detect(image));
    EXPECT_EQ(int(gauge.FitState), 2);
    EXPECT_EQ(int(gauge.NumFittedPoints), 2);
    EXPECT_NEAR(gauge.FittedCenter.operator XY().Y, 66, 0.1);
    EXPECT_NEAR(gauge.FittedAngle, 0, 1e-9);
    gauge.Fitting = FitBefore;
    ASSERT_TRUE(gauge.Detect(image));
    EXPECT_NEAR(std::abs(gauge.FittedAngle), ToDegrees(std::atan(6.0 / 50)), 0.1);
    gauge.Realign();
    EXPECT_EQ(gauge.RefBeg.Y, 60);
    const Geometry identity;
    ASSERT_TRUE(gauge.Detect(image, identity));
    EXPECT_EQ(int(gauge.FitState), 1);
}

TEST_F(EdgeLineTest, SingleSampleIsReadAsAPoint)
{
    Image image;
    EdgeLine gauge = OverEdge(image, 0);
    gauge.SampleIndex = 0;
    EXPECT_FALSE(gauge.Detect(image));
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_NEAR(gauge.FittedPoint(BestStep, Both).X, 130, 1e-9);
    EXPECT_NEAR(gauge.FittedPoint(BestStep, Both).Y, 60.25, 0.05);
    gauge.SampleIndex = 21;
    EXPECT_FALSE(gauge.Detect(image));
    EXPECT_EQ(Message(), L"The sample index (21) is out of the allowed range [0..20]");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::EdgeLine::_Detect");
    EXPECT_EQ(int(gauge.NumDetectedPoints), 1);
}

TEST_F(EdgeLineTest, FewAndDegenerateProbesStayFinite)
{
    Image image;
    EdgeLine gauge = OverEdge(image, 2);
    gauge.Density = 100;
    ASSERT_TRUE(gauge.Detect(image)); // two points
    EXPECT_EQ(int(gauge.NumFittedPoints), 2);
    EXPECT_NEAR(gauge.Deviation, 0, 1e-9);
    gauge.Clearance = 50; // a single probe, in the middle
    EXPECT_FALSE(gauge.Detect(image));
    EXPECT_EQ(int(gauge.NumSamples), 1);
    EXPECT_NEAR(gauge.FittedPoint(0, Both).X, 80, 1e-9);
    EXPECT_EQ(int(gauge.FitState), 0);
    const double infinite = std::numeric_limits<double>::infinity(), none = std::numeric_limits<double>::quiet_NaN();
    for (const double extreme : {0.0, -1.0, 1e-300, 1e300, infinite, none}) {
        EdgeLine odd = OverEdge(image, 2);
        odd.Density = extreme;
        odd.Detect(image);
        odd.Clearance = extreme;
        odd.Detect(image);
        odd = OverEdge(image, 2);
        odd.ProbeLength = extreme;
        odd.Detect(image);
        odd.RefBeg.X = extreme;
        odd.Detect(image);
        for (const double result : {double(odd.Deviation), double(odd.FittedAngle), odd.FittedBeg.operator XY().X})
            EXPECT_TRUE(std::isfinite(result)) << extreme;
    }
    EdgeLine point;
    EXPECT_FALSE(point.Detect(image));
}

TEST_F(EdgeLineTest, FirstVersionOfFilesHasNoFitting)
{
    const std::string path = ::testing::TempDir() + "gauge.edl";
    std::remove(path.c_str());
    EdgeLine gauge, read;
    gauge.Locate({10, 20}, 30, 45, 17);
    gauge.Fitting = FitAfter;
    gauge.Breadth = 258;
    gauge.Write(path.c_str());
    read.Read(path.c_str());
    EXPECT_EQ(read.Fitting, FitAfter);
    EXPECT_EQ(read.ProbeLength, 17);
    std::string bytes(200, '\0');
    std::FILE* file = std::fopen(path.c_str(), "rb");
    ASSERT_TRUE(file);
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file));
    std::fclose(file);
    ASSERT_EQ(bytes.size(), 98u);
    EXPECT_EQ(bytes[65], 2);
    EXPECT_EQ(bytes.substr(69, 4), std::string("\2\1\0\0", 4));
    bytes.erase(65, 4);
    bytes[4] = 1;
    file = std::fopen(path.c_str(), "wb");
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
    read.Read(path.c_str());
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(read.Fitting, FitOver);
    EXPECT_EQ(read.Breadth, 258);
    std::remove(path.c_str());
}

TEST_F(EdgeLineTest, HandlesMoveEndsLengthAndBody)
{
    EdgeLine gauge;
    gauge.Locate({100, 100}, 80, 0, 40);
    EXPECT_EQ(gauge.HitHandle(100, 120), LengthHandle);
    EXPECT_EQ(gauge.HandleOctant(), 6);
    gauge.Drag(107, 75);
    EXPECT_EQ(gauge.ProbeLength, 50);
    EXPECT_EQ(gauge.HitHandle(140, 100), ToHandle);
    EXPECT_EQ(gauge.HandleOctant(), 4);
    EXPECT_EQ(gauge.HitHandle(80, 115), AllHandle);
    gauge.Drag(81, 117);
    EXPECT_EQ(gauge.RefBeg.X, 61);
    EXPECT_EQ(gauge.RefEnd.Y, 102);
}

} // namespace
} // namespace Tesk
