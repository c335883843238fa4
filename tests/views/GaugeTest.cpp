// Gauges on their picture: where they start, what a drag does to their results, and the plot of their probe.
#include "tests/views/ObjectTest.h"

#include "gauge/EdgeArc.h"
#include "gauge/EdgeEllipse.h"
#include "gauge/EdgeLine.h"
#include "gauge/EdgeMap.h"
#include "gauge/EdgeRectangle.h"
#include "workbench/views/objects/GenericFeaturesController.h"
#include "workbench/views/objects/GenericPlotController.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace TeskPlus {

namespace {

class GaugeViews : public ObjectTest
{
protected:
    /// Dark on the left of a slanted border, bright on the right: x = 50 + (y - 40) / 4 in a picture of 100 x 80.
    void OpenBorder(int width = 100, int height = 80)
    {
        Image image;
        image.Set(width, height, Gray);
        for (int y = 0; y < height; y++)
            for (int x = 0; x < width; x++) {
                const double inside = x - width / 2 - (y - height / 2) / 4.0 + 0.5;
                const double share = std::min(std::max(inside, 0.0), 1.0);
                image.Row(y)[x] = static_cast<std::uint8_t>(60 + 100 * share);
            }
        Open(image, "border.bmp");
    }

    ToolWindow* PlotWindow(const char* title) { return Window(title, "ImageForm"); }
    GraphWidget& Plot(const char* title) { return *PlotWindow(title)->findChild<GraphWidget*>("Plot"); }
    static double Cell(const FeaturesGrid& table, int row, int column)
    {
        return table.model()->index(row, column).data().toDouble();
    }
    int BluesIn(const QRect& part)
    {
        const QImage image = Picture("Image0")->grab().toImage();
        int blues = 0;
        for (int y = part.top(); y <= part.bottom(); y++)
            for (int x = part.left(); x <= part.right(); x++)
                blues += (image.pixel(x, y) & 0xffffff) == 0x0000ffu;
        return blues;
    }
    /// A press and moves, without letting go; `Each` is called after each move.
    template <typename F>
    static void Hold(QWidget* widget, QPoint from, const std::vector<QPoint>& path, F each)
    {
        QTest::mouseMove(widget, from);
        QTest::mousePress(widget, Qt::LeftButton, {}, from);
        for (const QPoint at : path) {
            QMouseEvent move(QEvent::MouseMove, at, widget->mapToGlobal(at), Qt::NoButton, Qt::LeftButton, {});
            QApplication::sendEvent(widget, &move);
            QApplication::processEvents();
            each(at);
        }
        QTest::mouseRelease(widget, Qt::LeftButton, {}, path.back());
        QApplication::processEvents();
    }
};

void ExpectAt(const XY& place, double x, double y)
{
    EXPECT_NEAR(place.X, x, 1e-9);
    EXPECT_NEAR(place.Y, y, 1e-9);
}

TEST_F(GaugeViews, GaugesStartInTheMiddleOfTheirPicture)
{
    OpenBorder();
    for (const wchar_t* gauge : {L"EdgeLine", L"EdgeArc", L"EdgeEllipse", L"EdgeRectangle", L"EdgePoint"}) {
        ASSERT_TRUE(Add(gauge, L"Detect")) << StatusText().toStdString();
        EXPECT_EQ(StatusText(), "");
    }
    ExpectAt(Value<EdgePoint>(L"EdgePoint0").Beg, 37.5, 40);
    ExpectAt(Value<EdgePoint>(L"EdgePoint0").End, 62.5, 40);
    ExpectAt(Value<EdgeLine>(L"EdgeLine0").RefBeg, 37.5, 40);
    EXPECT_EQ(Value<EdgeLine>(L"EdgeLine0").ProbeLength, 32);
    ExpectAt(Value<EdgeArc>(L"EdgeArc0").Center, 50, 40);
    EXPECT_NEAR(Value<EdgeArc>(L"EdgeArc0").Radius, 12.5, 1e-9);
    ExpectAt(Value<EdgeEllipse>(L"EdgeEllipse0").Center, 50, 40);
    EXPECT_EQ(Value<EdgeEllipse>(L"EdgeEllipse0").SecondAxis, 6.25);
    ExpectAt(Value<EdgeRectangle>(L"EdgeRectangle0").Rectangle.Middle(), 50, 40);
    EXPECT_NEAR(Value<EdgeRectangle>(L"EdgeRectangle0").Rectangle.Width, 25, 1e-9);

    // A window that changes takes them to its own middle, and what is drawn with them.
    Value<EdgePoint>(L"EdgePoint0").Locate({10, 10}, 5, 0);
    Part<QCheckBox>("Image0", "Window")->setChecked(true);
    QApplication::processEvents();
    const EdgePoint& point = Value<EdgePoint>(L"EdgePoint0");
    ExpectAt(point.Beg, 25 - 6.25, 20);
    EXPECT_EQ(point.Window.X, 25);
    EXPECT_EQ(point.Window.Height, 40);
}

TEST_F(GaugeViews, ResultsOfAPointGaugeFollowTheMouse)
{
    OpenBorder();
    ASSERT_TRUE(Add(L"EdgePoint", L"Detect"));
    auto* table = Part<FeaturesGrid>("EdgePoint0", "FeaturesGrid");
    ASSERT_TRUE(table);
    ASSERT_EQ(table->model()->rowCount(), 1);
    const double before = Cell(*table, 0, 0);
    EXPECT_NEAR(before, 50, 1);
    EXPECT_NEAR(Cell(*table, 0, 4), 100, 1) << "its step";
    EXPECT_GT(BluesIn({4 * 36, 4 * 38, 4 * 28, 4 * 5}), 40) << "the probe";
    auto* breadth = SpinBox("EdgePoint0", "Breadth");
    ASSERT_TRUE(breadth);
    const int breadthBefore = breadth->value();
    int moves = 0;
    Hold(Picture("Image0"), AtPoint(45, 40), {AtPoint(45, 44), AtPoint(45, 52), AtPoint(45, 60)}, [&](QPoint at) {
        moves++;
        const double row = at.y() / 4.0 - 1;
        ASSERT_EQ(table->model()->rowCount(), 1);
        EXPECT_NEAR(Cell(*table, 0, 0) - before, (row - 40) / 4, 0.6) << row;
        EXPECT_NEAR(Cell(*table, 0, 1), row, 0.6);
    });
    EXPECT_EQ(moves, 3);
    EXPECT_EQ(breadth->value(), breadthBefore);
    EXPECT_EQ(BluesIn({4 * 36, 4 * 38, 4 * 28, 4 * 5}), 0) << "gone from where it was";
    EXPECT_GT(BluesIn({4 * 36, 4 * 58, 4 * 28, 4 * 5}), 40);
}

TEST_F(GaugeViews, ThresholdsAreDraggedOnThePlot)
{
    OpenBorder();
    ASSERT_TRUE(Add(L"EdgePoint", L"Detect"));
    ASSERT_TRUE(PlotWindow("EdgePoint0"));
    EXPECT_TRUE(PlotWindow("EdgePoint0")->isVisible());
    GraphWidget& plot = Plot("EdgePoint0");
    EdgePoint& gauge = Value<EdgePoint>(L"EdgePoint0");
    auto* table = Part<FeaturesGrid>("EdgePoint0", "FeaturesGrid");
    const double half = plot.Area().height() / 2.0;
    const auto at = [&](double level) {
        return QPoint(plot.Area().center().x() + 60,
                      plot.Area().top() + static_cast<int>(std::lround((1 - level / 255) * (half - 1))));
    };
    ASSERT_EQ(gauge.MinimumStep, 50);
    Drag(&plot, at(152), at(190));
    EXPECT_NEAR(gauge.MinimumStep, 190 - 102, 3);
    EXPECT_EQ(table->model()->rowCount(), 1) << "the edge is stronger still";
    Drag(&plot, at(190), at(230));
    EXPECT_NEAR(gauge.MinimumStep, 230 - 102, 4);
    EXPECT_EQ(table->model()->rowCount(), 0) << "now it is too weak";
    auto* step = PlotWindow("EdgePoint0")->findChild<QCheckBox*>("Step");
    auto* slope = PlotWindow("EdgePoint0")->findChild<QCheckBox*>("Slope");
    const int dragged = gauge.MinimumStep;
    EXPECT_TRUE(step->isChecked());
    EXPECT_FALSE(slope->isChecked()) << "there is none at first";
    step->setChecked(false);
    EXPECT_EQ(gauge.MinimumStep, 0);
    EXPECT_GT(table->model()->rowCount(), 0);
    step->setChecked(true);
    EXPECT_EQ(gauge.MinimumStep, dragged);
    slope->setChecked(true);
    EXPECT_EQ(gauge.MinimumSlope, 1);
    auto* row = SpinBox("EdgePoint0", "MinimumStep");
    ASSERT_TRUE(row);
    EXPECT_EQ(row->value(), dragged) << "the row of the sheet tells the same";

    QTest::mouseMove(&plot, {plot.Area().left(), plot.Area().center().y()});
    EXPECT_TRUE(plot.findChild<QLabel*>("PlotReadOut")->text().startsWith("0: signal 60.0, derivative "));
}

TEST_F(GaugeViews, ARowIsPlottedWhileOneOfItsProbesIsChosen)
{
    OpenBorder();
    ASSERT_TRUE(Add(L"EdgeLine", L"Detect"));
    EdgeLine& gauge = Value<EdgeLine>(L"EdgeLine0");
    gauge.RefBeg = XY(45, 20);
    gauge.RefEnd = XY(55, 60);
    ASSERT_TRUE(PlotWindow("EdgeLine0"));
    EXPECT_FALSE(PlotWindow("EdgeLine0")->isVisible());
    IController& controller = Controller(L"EdgeLine0");
    gauge.SampleIndex = 2;
    controller.UpdateControl(false, false);
    EXPECT_TRUE(PlotWindow("EdgeLine0")->isVisible());
    gauge.SampleIndex = All;
    controller.UpdateControl(false, false);
    EXPECT_FALSE(PlotWindow("EdgeLine0")->isVisible());
    // The points stand on the picture while the box is checked.
    Hold(Picture("Image0"), AtPoint(50, 40), {AtPoint(51, 40), AtPoint(50, 40)}, [](QPoint) {});
    EXPECT_EQ(gauge.FitState, 1);
    EXPECT_NEAR(gauge.FittedAngle, std::atan2(4, 1) * 180 / 3.141592653589793, 0.5);
    auto* points = Part<QCheckBox>("EdgeLine0", "Show Sample Points");
    ASSERT_TRUE(points);
    ASSERT_TRUE(points->isChecked());
    const QImage with = Picture("Image0")->grab().toImage();
    points->setChecked(false);
    EXPECT_NE(Picture("Image0")->grab().toImage(), with);
}

TEST_F(GaugeViews, AnEdgeMapIsDrawnOnItsPicture)
{
    OpenBorder();
    ASSERT_TRUE(Add(L"EdgeMap", L"Vectorize"));
    EXPECT_EQ(StatusText(), "");
    EXPECT_GT(Value<EdgeMap>(L"EdgeMap0").NumPaths, 0);
    const QImage plain = Picture("Image0")->grab().toImage();
    int greens = 0;
    for (int y = 0; y < plain.height(); y++)
        for (int x = 0; x < plain.width(); x++)
            greens += (plain.pixel(x, y) & 0xffffff) == 0x00ff00u;
    EXPECT_GT(greens, 250);
    Part<QCheckBox>("EdgeMap0", "View Vector Endpoints")->setChecked(true);
    EXPECT_NE(Picture("Image0")->grab().toImage(), plain);
}

/// A figure, printed: how fast a gauge can be dragged over a large picture.
TEST_F(GaugeViews, ALineGaugeIsDraggedAcrossALargePicture)
{
    OpenBorder(2000, 1500);
    ASSERT_TRUE(Add(L"EdgeLine", L"Detect"));
    EdgeLine& gauge = Value<EdgeLine>(L"EdgeLine0");
    gauge.Breadth = 5;
    gauge.Locate({1000, 750}, 500, 90, 100);
    Controller(L"EdgeLine0").UpdateControl(false, false);
    std::vector<QPoint> path;
    for (int i = 0; i < 200; i++)
        path.emplace_back(250 + i % 100 - (i % 100 > 50 ? 2 * (i % 100 - 50) : 0), 188 + i % 3);
    int fitted = 0;
    QElapsedTimer clock;
    clock.start();
    Hold(Picture("Image0"), path.front(), path, [&](QPoint) { fitted += gauge.FitState == 1; });
    const double seconds = static_cast<double>(clock.nsecsElapsed()) * 1e-9;
    std::printf("drag of a line gauge of %d probes: %.0f re-measured and redrawn a second\n", int{gauge.NumSamples},
                static_cast<double>(path.size()) / seconds);
    EXPECT_GT(fitted, 20);
    EXPECT_NE(gauge.RefBeg.X, 1000) << "it has moved";
}

} // namespace

} // namespace TeskPlus
