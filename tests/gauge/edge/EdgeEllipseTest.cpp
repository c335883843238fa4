// Ellipse gauges: reference and points, their probes, the fit among outliers, files, handles.
#include "gauge/EdgeEllipse.h"

#include "../../Failures.h"
#include "foundation/Angles.h"
#include "foundation/Graph.h"
#include "gauge/edge/Pictures.h"
#include "image/Geometry.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <string>
#include <system_error>

namespace Tesk {
namespace {

using checks::Message;
using checks::PaintStep;

class EdgeEllipseTest : public checks::IgnoringFailures
{
protected:
    void TearDown() override
    {
        Geometry::SimpleCalibration(1, 1);
        Graph::Zoom = 1;
        IgnoringFailures::TearDown();
    }
};

/// A bright ellipse of half axes 50 and 30 about (81.3, 60.6), turned, and a gauge over it.
EdgeEllipse OverPart(Image& image, double degrees)
{
    const double c = std::cos(ToRadians(degrees)), s = std::sin(ToRadians(degrees));
    PaintStep(image, 160, 120, 1, [=](int x, int y) {
        const double u = (c * (x - 81.3) + s * (y - 60.6)) / 50, v = (c * (y - 60.6) - s * (x - 81.3)) / 30;
        // To first order, which is enough near the edge.
        const double level = std::hypot(u, v), slope = std::hypot(u / 50, v / 30);
        return slope > 0 ? level * (1 - level) / slope : 30;
    });
    EdgeEllipse gauge;
    gauge.Locate({80, 60}, 50, 30, 20, 20);
    gauge.Breadth = 3;
    return gauge;
}

void ExpectEllipse(const EdgeEllipse& gauge, XY center, double first, double second, double degrees, double tolerance)
{
    EXPECT_EQ(int(gauge.FitState), 1);
    EXPECT_NEAR(gauge.FittedCenter.operator XY().X, center.X, tolerance);
    EXPECT_NEAR(gauge.FittedCenter.operator XY().Y, center.Y, tolerance);
    EXPECT_NEAR(gauge.FittedFirstAxis, first, tolerance);
    EXPECT_NEAR(gauge.FittedSecondAxis, second, tolerance);
    EXPECT_NEAR(std::remainder(gauge.FittedAngle - degrees, 180), 0, 0.15);
}

TEST_F(EdgeEllipseTest, EllipsesAreFoundWhereTheyAre)
{
    for (const double degrees : {14.0, 20.0, 27.0}) {
        Image image;
        EdgeEllipse gauge = OverPart(image, degrees);
        ASSERT_TRUE(gauge.Detect(image)) << degrees;
        // The perimeter over the density.
        EXPECT_EQ(int(gauge.NumSamples), 53);
        ExpectEllipse(gauge, {81.3, 60.6}, 50, 30, degrees, 0.05);
        EXPECT_LT(gauge.Deviation, 0.1);
        gauge.Oblique = false;
        ASSERT_TRUE(gauge.Detect(image));
        ExpectEllipse(gauge, {81.3, 60.6}, 50, 30, degrees, 0.1);
        gauge.Oblique = true;
        Geometry::SimpleCalibration(1, 0.1);
        ASSERT_TRUE(gauge.Detect(image));
        ExpectEllipse(gauge, {8.13, 6.06}, 5, 3, degrees, 0.02);
        gauge.Realign();
        EXPECT_NEAR(gauge.Center.X, 81.3, 0.05);
        EXPECT_NEAR(gauge.SecondAxis, 30, 0.05);
        ASSERT_TRUE(gauge.Detect(image));
        ExpectEllipse(gauge, {8.13, 6.06}, 5, 3, degrees, 0.02);
        Geometry::SimpleCalibration(1, 1);
    }
}

TEST_F(EdgeEllipseTest, ArcsAreSampledFromTheirEnd)
{
    Image image;
    EdgeEllipse gauge = OverPart(image, 20);
    gauge.Locate({80, 60}, 50, 30, 20, -30, 150, 20);
    EXPECT_FALSE(gauge.Closed);
    gauge.SampleIndex = 0;
    gauge.Detect(image);
    EXPECT_EQ(gauge.NumDetectedPoints, 1);
    const double t = ToRadians(150), c = std::cos(ToRadians(20)), s = std::sin(ToRadians(20));
    EXPECT_NEAR((gauge.From.X + gauge.To.X) / 2, 80 + c * 50 * std::cos(t) - s * 30 * std::sin(t), 1e-9);
    EXPECT_NEAR((gauge.From.Y + gauge.To.Y) / 2, 60 + s * 50 * std::cos(t) + c * 30 * std::sin(t), 1e-9);
    gauge.SampleIndex = All;
    ASSERT_TRUE(gauge.Detect(image));
    ExpectEllipse(gauge, {81.3, 60.6}, 50, 30, 20, 0.3);

    gauge.Fitting = FitBefore;
    const double before = gauge.FittedFirstAxis;
    EXPECT_FALSE(gauge.Detect(image));
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_EQ(Message(), L"Unsupported Fitting mode");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::EdgeEllipse::Detect");
    EXPECT_EQ(gauge.FittedFirstAxis, before);
    gauge.Fitting = FitOver;
    gauge.SampleIndex = 5000;
    EXPECT_FALSE(gauge.Detect(image));
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::EdgeEllipse::_Detect");
}

TEST_F(EdgeEllipseTest, OutliersDoNotMoveTheFit)
{
    Image image;
    EdgeEllipse gauge = OverPart(image, 20);
    ASSERT_TRUE(gauge.Detect(image));
    const double width = gauge.FittedFirstAxis;
    // A third of the part is cut away.
    for (int y = 0; y < 120; y++)
        std::fill_n(image.Row(y) + 112, 48, std::uint8_t{50});
    ASSERT_TRUE(gauge.Detect(image));
    EXPECT_NEAR(gauge.FittedFirstAxis, width, 0.15);
    EXPECT_LT(gauge.NumFittedPoints, gauge.NumDetectedPoints);
    for (const double bad : {std::numeric_limits<double>::quiet_NaN(), 1e300, 0.0, -3.0}) {
        EdgeEllipse odd = gauge;
        odd.FirstAxis = bad;
        odd.Detect(image);
        EXPECT_TRUE(std::isfinite(odd.FittedAngle) && std::isfinite(odd.FittedFirstAxis));
        odd.Draw(true, true);
    }
}

TEST_F(EdgeEllipseTest, PointsAndEllipseFollowEachOther)
{
    EdgeEllipse gauge;
    gauge.Locate({100, 80}, 60, 40, 0, 20);
    gauge.SetWindow(10, 20, 300, 300);
    Graph::Zoom = 2;
    const auto at = [](double v, double origin) { return static_cast<int>(2 * (v + origin)); };
    // The first point stands on the first axis.
    EXPECT_EQ(gauge.HitHandle(at(160, 10), at(80, 20)), FromHandle);
    gauge.Drag(at(170, 10), at(80, 20));
    EXPECT_EQ(gauge.RefState, 0);
    EXPECT_EQ(gauge.RefPoints[0].X, 170);
    const double first = gauge.FirstAxis;
    EXPECT_GT(first, 60.5);
    // No ellipse goes through the points if one lies amid the others.
    gauge.Drag(at(95, 10), at(80, 20));
    EXPECT_EQ(gauge.RefPoints[0].X, 170);
    EXPECT_EQ(gauge.FirstAxis, first);

    gauge.Locate({100, 80}, 60, 40, 0, 20);
    EXPECT_EQ(gauge.HitHandle(at(100, 10), at(43, 20)), AllHandle);
    gauge.Drag(at(107, 10), at(46, 20));
    EXPECT_NEAR(gauge.Center.X, 107, 1e-9);
    EXPECT_NEAR(gauge.Center.Y, 83, 1e-9);
    EXPECT_NEAR(gauge.RefPoints[0].X, 167, 1e-9);
    const double t = 0.6 * 2 * 3.141592653589793;
    EXPECT_EQ(gauge.HitHandle(at(107 + 70 * std::cos(t), 10), at(83 + 50 * std::sin(t), 20)), LengthHandle);
    gauge.Drag(at(107, 10), at(83, 20));
    EXPECT_NEAR(gauge.ProbeLength, 120, 1e-9);
    EXPECT_EQ(gauge.HitHandle(0, 0), NoHandle);
}

TEST_F(EdgeEllipseTest, FilesKeepTheReference)
{
    const std::string path = ::testing::TempDir() + "gauge.ede";
    std::remove(path.c_str());
    EdgeEllipse gauge;
    gauge.Locate({30, 40}, 20, 10, 30, 10, 200, 7);
    gauge.Density = 3.5;
    gauge.Oblique = false;
    gauge.MinimumSpan = 4;
    gauge.Write(path.c_str());
    std::error_code none;
    EXPECT_EQ(std::filesystem::file_size(path, none), 123u);
    EdgeEllipse read;
    read.Read(path.c_str());
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_FALSE(read.Closed || read.Oblique);
    EXPECT_EQ(read.MinimumSpan, 4);
    EXPECT_EQ(read.Density, 3.5);
    EXPECT_NEAR(read.EndParameter, ToRadians(200), 1e-12);
    EXPECT_EQ(read.RefState, 0);
    EXPECT_NEAR(read.RefPoints[0].X, gauge.RefPoints[0].X, 1e-9);
    std::remove(path.c_str());
}

} // namespace
} // namespace Tesk
