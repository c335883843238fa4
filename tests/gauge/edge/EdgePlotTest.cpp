// Plots of probes: what is drawn, hit and dragged.
#include "gauge/EdgePlot.h"

#include "../../Failures.h"
#include "foundation/Graph.h"
#include "foundation/RecordingTarget.h"
#include "gauge/EdgePoint.h"
#include "gauge/edge/Pictures.h"

#include <algorithm>
#include <string>

namespace Tesk {
namespace {

class EdgePlotTest : public checks::IgnoringFailures
{
protected:
    void SetUp() override
    {
        IgnoringFailures::SetUp();
        checks::PaintStep(image_, 64, 20, 1, [](int x, int) { return x - 32.0; });
        gauge_.Locate({32, 10}, 40, 0);
        gauge_.Detect(image_);
        plot_.SetFrame(0, 0, 401, 512); // 10 columns a sample, a level a row
    }

    Image image_;
    EdgePoint gauge_;
    EdgePlot plot_;
};

TEST_F(EdgePlotTest, LinesOfTheStepChangeItFromOneSide)
{
    ASSERT_EQ(plot_.HitHandle(50, 255 - 152, gauge_), HighMinimumStepHandle);
    plot_.Drag(50, 255 - 182, gauge_);
    EXPECT_EQ(gauge_.MinimumStep, 80);
    EXPECT_EQ(double(plot_.StepCenter), 142);
    ASSERT_EQ(plot_.HitHandle(50, 255 - 102, gauge_), LowMinimumStepHandle);
    plot_.Drag(50, 20, gauge_); // beyond the upper line
    EXPECT_EQ(gauge_.MinimumStep, 1);
}

TEST_F(EdgePlotTest, LinesOfTheSlopeAreThereForTheirPolarity)
{
    gauge_.MinimumSlope = 40;
    const int high = 256 + 88, low = 256 + 168; // a level a row, but for one row in all
    EXPECT_EQ(plot_.HitHandle(50, high, gauge_), HighMinimumSlopeHandle);
    plot_.Drag(50, high - 20, gauge_);
    EXPECT_NEAR(gauge_.MinimumSlope, 60, 1);
    plot_.Drag(50, 500, gauge_);
    EXPECT_EQ(gauge_.MinimumSlope, 0);
    plot_.Drag(50, 0, gauge_);
    EXPECT_EQ(gauge_.MinimumSlope, 128);
    gauge_.MinimumSlope = 40;
    gauge_.Polarity = Raising;
    EXPECT_EQ(plot_.HitHandle(50, low, gauge_), NoHandle);
    gauge_.Polarity = Falling;
    EXPECT_EQ(plot_.HitHandle(50, low, gauge_), LowMinimumSlopeHandle);
}

TEST_F(EdgePlotTest, MarkOfAnEdgeTellsItsIndex)
{
    EXPECT_EQ(plot_.HitHandle(202, 300, gauge_), PointHandle);
    EXPECT_EQ(int(plot_.PointIndex), 0);
    EXPECT_EQ(plot_.HitHandle(250, 300, gauge_), NoHandle);
    EXPECT_EQ(int(plot_.PointIndex), -1);
    RecordingTarget target;
    Graph::DrawTo(&target);
    plot_.Draw(gauge_);
    plot_.Draw(EdgePoint()); // without a signal
    Graph::DrawTo(nullptr);
    const std::string stroke = "Line " + std::to_string(Graph::ToTarget(10 * gauge_.Edges[0].Position)) + " 511";
    EXPECT_EQ(std::count(target.Calls.begin(), target.Calls.end(), stroke), 1);
}

} // namespace
} // namespace Tesk
