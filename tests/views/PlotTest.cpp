// The numbers beside plots, and what is told of the place under the pointer.
#include "tests/views/ObjectTest.h"

#include "image/Histogram.h"
#include "workbench/views/objects/GenericPlotController.h"

#include <cmath>
#include <limits>

namespace TeskPlus {

namespace {

class Plots : public ObjectTest
{
protected:
    static int InkIn(const QImage& image, const QRect& part)
    {
        int ink = 0;
        for (int y = part.top(); y <= part.bottom(); y++)
            for (int x = part.left(); x <= part.right(); x++)
                ink += (image.pixel(x, y) & 0xffffff) != 0xffffffu;
        return ink;
    }

    /// What is told at a part of the way across a plot.
    static QString ReadAt(GraphWidget& plot, double part)
    {
        const QRect area = plot.Area();
        const int x = area.left() + static_cast<int>(std::lround(part * (area.width() - 1)));
        QTest::mouseMove(&plot, {x, area.center().y()});
        QApplication::processEvents();
        return plot.findChild<QLabel*>("PlotReadOut")->text();
    }
};

TEST_F(Plots, NumbersAreRoundAndWithinTheScale)
{
    EXPECT_EQ(PlotTicks({0, 255}, 8), (std::vector<double>{0, 50, 100, 150, 200, 250}));
    EXPECT_EQ(PlotTicks({128, -128}, 4), (std::vector<double>{-100, 0, 100}));
    EXPECT_EQ(PlotTicks({7, 9}, 100), (std::vector<double>{7, 8, 9})) << "no parts of a sample";
    EXPECT_EQ(PlotTicks({5, 5}, 8), (std::vector<double>{5}));
    EXPECT_TRUE(PlotTicks({0, std::nan("")}, 8).empty());
    EXPECT_TRUE(PlotTicks({0, std::numeric_limits<double>::infinity()}, 8).empty());
    for (const double last : {1.0, 3.0, 99.0, 1234567.0, 2147483647.0, 1e300})
        for (int most = 1; most < 12; most++) {
            const auto ticks = PlotTicks({0, last}, most);
            ASSERT_FALSE(ticks.empty()) << last;
            EXPECT_LE(ticks.size(), most + 1u) << last;
            EXPECT_LE(ticks.back(), last);
        }
    for (const double value : {0.0, -128.0, 65535.0, 2147483647.0, -1e300})
        EXPECT_LE(TickText(value).size(), 7) << value;
    EXPECT_EQ(TickText(20000), "20k");
    EXPECT_EQ(TickText(1500000), "1.5M");
}

TEST_F(Plots, AHistogramTellsTheCountUnderThePointer)
{
    Open(100, 80);
    ASSERT_TRUE(Add(L"Histogram", L"Compute from Image"));
    auto& plot = *Window("Histogram0", "ImageForm")->findChild<GraphWidget*>("Plot");
    const QRect area = plot.Area();
    const QImage image = plot.grab().toImage();
    EXPECT_GT(InkIn(image, {0, area.top(), area.left() - 6, area.height()}), 30) << "numbers of pixels";
    EXPECT_GT(InkIn(image, {area.left(), area.bottom() + 6, area.width(), 10}), 60) << "numbers of levels";
    const Histogram& histogram = Value<Histogram>(L"Histogram0");
    for (const int level : {0, 51, 102, 255})
        EXPECT_EQ(ReadAt(plot, level / 255.0), QString("%1: %2").arg(level).arg(histogram.Bin(level)));
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(&plot, &leave);
    EXPECT_EQ(plot.findChild<QLabel*>("PlotReadOut")->text(), "");
}

TEST_F(Plots, AProfileTellsItsSamplesByTheirPlaceInTheStore)
{
    Open(100, 80);
    ASSERT_TRUE(Add(L"Profile", L"Get Row"));
    auto* plot = Part<GraphWidget>("Profile0", "Plot");
    ASSERT_TRUE(plot);
    Profile& profile = Value<Profile>(L"Profile0");
    const int first = profile.Sample(0);
    EXPECT_EQ(ReadAt(*plot, 0), QString("0: %1").arg(first));
    EXPECT_EQ(ReadAt(*plot, 1), QString("99: %1").arg(first + 99));
    profile.Window(20, 11);
    EXPECT_EQ(ReadAt(*plot, 0.5), QString("25: %1").arg(first + 25));
    profile.PseudoColor();
    EXPECT_EQ(ReadAt(*plot, 0).count(' '), 3) << "red, green and blue";
    profile.Clear();
    EXPECT_EQ(ReadAt(*plot, 0.4), "");
}

} // namespace

} // namespace TeskPlus
