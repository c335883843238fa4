// Snake gauges and code readers in the workbench.
#include "tests/views/ObjectTest.h"

#include "gauge/SnakeGauge.h"
#include "read/Code1DReader.h"

#include <QLineEdit>
#include <QPushButton>

#include <string>

namespace TeskPlus {

namespace {

class InspectingViews : public ObjectTest
{
protected:
    template <typename F>
    void OpenPainted(int width, int height, F pixel)
    {
        Image image;
        image.Set(width, height, Gray);
        for (int y = 0; y < height; y++)
            for (int x = 0; x < width; x++)
                image.Row(y)[x] = pixel(x, y);
        Open(image, "painted.bmp");
    }
};

constexpr QRgb blue = 0x0000ff, green = 0x00ff00, red = 0xff0000;

TEST_F(InspectingViews, ASnakeStartsInTheMiddleAndItsNodesAreDragged)
{
    // A bright box from (50, 40) to (150, 120) in a picture of 200 x 160, around which the first curve lies.
    OpenPainted(200, 160, [](int x, int y) {
        return static_cast<std::uint8_t>(x >= 50 && x < 150 && y >= 40 && y < 120 ? 200 : 30);
    });
    ASSERT_TRUE(Add(L"SnakeGauge", L"Inspect Edge")) << StatusText().toStdString();
    EXPECT_EQ(StatusText(), "");
    const SnakeGauge& gauge = Value<SnakeGauge>(L"SnakeGauge0");
    ASSERT_EQ(gauge.Length, 5);
    EXPECT_TRUE(gauge.Closed);
    EXPECT_NEAR(gauge.Nodes[0].Position.X + gauge.Nodes[2].Position.X, 200, 1e-9);
    EXPECT_NEAR(gauge.Nodes[0].Position.Y + gauge.Nodes[2].Position.Y, 160, 1e-9);
    // Short probes: a flat stretch before an edge counts to its span.
    Value<SnakeGauge>(L"SnakeGauge0").Breadth = 12;
    form_.Handler().DoRun(nullptr, nullptr, true, false, false, false);
    int intrusions = -1, protrusions = -1, missing = -1;
    gauge.NumAnomalies(9, intrusions, protrusions, missing);
    EXPECT_EQ(intrusions + protrusions + missing, 0) << "the edge keeps to the curve";
    EXPECT_GT(ColorOf(green), 200) << "edges";
    EXPECT_GT(ColorOf(blue), 100) << "axis";
    const int points = ColorOf(green) + ColorOf(red);
    Part<QCheckBox>("SnakeGauge0", "Show Edge Points")->setChecked(false);
    EXPECT_LT(ColorOf(green) + ColorOf(red), points);

    const XY corner = gauge.Nodes[0].Position;
    const int zoom = Picture("Image0")->width() / 200;
    const QPoint at(static_cast<int>(corner.X * zoom), static_cast<int>(corner.Y * zoom));
    Drag(Picture("Image0"), at, at + QPoint(-20 * zoom, -10 * zoom));
    EXPECT_NEAR(gauge.Nodes[0].Position.X, corner.X - 20, 1);
    EXPECT_NEAR(gauge.Nodes[0].Position.Y, corner.Y - 10, 1);
    EXPECT_EQ(gauge.Nodes[4].Position.X, gauge.Nodes[0].Position.X) << "closed still";
    EXPECT_NEAR(gauge.Nodes[2].Position.X, 200 - corner.X, 1e-9);

    auto* circle = Part<QPushButton>("SnakeGauge0", "New Circle");
    ASSERT_TRUE(circle);
    circle->click();
    QApplication::processEvents();
    EXPECT_EQ(gauge.Length, 3);
    EXPECT_NEAR(gauge.Nodes[0].Position.X, 140, 1e-9);
    Part<QPushButton>("SnakeGauge0", "New Spline")->click();
    EXPECT_EQ(gauge.Length, 9);
    EXPECT_EQ(StatusText(), "");
}

TEST_F(InspectingViews, ACodeIsOutlinedWithItsTextAndToldOnTheSheet)
{
    // EAN-8 "96385074" in bars of 3 pixels.
    static const std::string bars = "1010001011010111101111010110111"
                                    "010101001110111001010001001011100101";
    OpenPainted(300, 80, [](int x, int y) {
        const int bar = (x - 45) / 3;
        const bool isDark = x >= 45 && bar < static_cast<int>(bars.size()) && y >= 10 && y < 70 &&
                            bars[static_cast<std::size_t>(bar)] == '1';
        return static_cast<std::uint8_t>(isDark ? 0 : 255);
    });
    const int before = ColorOf(green);
    ASSERT_TRUE(Add(L"Code1DReader", L"Decode")) << StatusText().toStdString();
    EXPECT_EQ(StatusText(), "");
    EXPECT_STREQ(Value<Code1DReader>(L"Code1DReader0").AsciiString, "96385074");
    EXPECT_GT(ColorOf(green), before + 400) << "outline and text";
    auto* row = Part<QWidget>("Code1DReader0", "AsciiString");
    ASSERT_TRUE(row);
    bool isTold = false;
    for (const auto* label : row->findChildren<QLabel*>())
        isTold = isTold || label->text().contains("96385074");
    for (const auto* line : row->findChildren<QLineEdit*>())
        isTold = isTold || line->text().contains("96385074");
    EXPECT_TRUE(isTold);

    // With the other symbologies alone the code is not read.
    auto* toggle = Part<QPushButton>("Code1DReader0", "Toggle Symbologies");
    ASSERT_TRUE(toggle);
    toggle->click();
    QApplication::processEvents();
    EXPECT_FALSE(Value<Code1DReader>(L"Code1DReader0").DetectEAN8);
    EXPECT_TRUE(Value<Code1DReader>(L"Code1DReader0").DetectMSI);
    EXPECT_EQ(ColorOf(green), before);
    toggle->click();
    QApplication::processEvents();
    EXPECT_TRUE(Value<Code1DReader>(L"Code1DReader0").DetectEAN8);
    EXPECT_EQ(StatusText(), "");
}

} // namespace

} // namespace TeskPlus
