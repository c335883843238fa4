// Locators and shape matchers in the workbench: where they start, what is chosen with the mouse, and what is listed.
#include "tests/views/ObjectTest.h"

#include "match/Locator.h"
#include "match/ShapeMatcher.h"
#include "workbench/views/objects/GenericFeaturesController.h"
#include "workbench/views/objects/GenericPlotController.h"

#include <QHeaderView>

#include <algorithm>

namespace TeskPlus {

namespace {

class FindingViews : public ObjectTest
{
protected:
    /// 100 x 80, dark, with two equal bright marks whose middles are (50, 40) and (20, 20).
    void OpenMarks()
    {
        Image image;
        image.Set(100, 80, Gray);
        for (int y = 0; y < 80; y++)
            for (int x = 0; x < 100; x++)
                image.Row(y)[x] = 40;
        for (const auto& [left, top] : {std::pair(40, 30), std::pair(10, 10)})
            for (int y = 0; y < 20; y++)
                for (int x = 0; x < 20; x++)
                    if (x < 6 || y > 13) image.Row(top + y)[left + x] = 220;
        Open(image, "marks.bmp");
    }
};

constexpr QRgb blue = 0x0000ff, green = 0x00ff00;

TEST_F(FindingViews, APatternStartsInTheMiddleAndIsDraggedAndFoundInTheWholePicture)
{
    OpenMarks();
    ASSERT_TRUE(Add(L"Locator", L"Train on Image")) << StatusText().toStdString();
    EXPECT_EQ(StatusText(), "");
    auto* window = Part<QCheckBox>("Image0", "Window");
    ASSERT_TRUE(window);
    EXPECT_TRUE(window->isChecked());
    EXPECT_EQ(Value<Locator>(L"Locator0").TemplateImage().Width, 50);
    EXPECT_EQ(Value<Locator>(L"Locator0").TemplateImage().Height, 40);
    // The window is dragged by a corner to fit the mark: from (75, 60) to (65, 55).
    Drag(Picture("Image0"), {4 * 75, 4 * 60}, {4 * 65, 4 * 55});
    const int width = Value<Locator>(L"Locator0").TemplateImage().Width;
    EXPECT_NEAR(width, 40, 1) << "it is trained while the mouse moves";

    ASSERT_TRUE(Add(L"Locator", L"Find"));
    EXPECT_EQ(StatusText(), "");
    EXPECT_FALSE(window->isChecked()) << "searched is the whole picture";
    const Locator& locator = Value<Locator>(L"Locator0");
    ASSERT_EQ(locator.NumLocations, 1);
    EXPECT_NEAR(locator.Location(0).X, 25 + (width - 1) / 2.0, 0.01);
    EXPECT_GT(ColorIn({4 * 20, 4 * 15, 4 * 50, 4 * 45}, green), 300) << "its outline";
}

TEST_F(FindingViews, LocationsAreListedAndChosenOnThePictureAndInTheTable)
{
    OpenMarks();
    ASSERT_TRUE(Add(L"Locator", L"Train on Image"));
    Part<QCheckBox>("Image0", "Window")->setChecked(true);
    Value<Image>(L"Image0").Window(38, 28, 25, 25);
    form_.GetEngine().ChangeOperation(1);
    Controller(L"Image0").UpdateControl(false, false);
    form_.Handler().DoRun(nullptr, nullptr, false, true, false, false);
    ASSERT_EQ(Value<Locator>(L"Locator0").TemplateImage().Width, 25);
    ASSERT_TRUE(Add(L"Locator", L"Find"));
    EXPECT_EQ(StatusText(), "");
    auto* table = Part<FeaturesGrid>("Locator0", "FeaturesGrid");
    ASSERT_TRUE(table);
    auto* most = SpinBox("Locator0", "MaxLocations");
    ASSERT_TRUE(most);
    most->setValue(2);
    QApplication::processEvents();
    ASSERT_EQ(table->model()->rowCount(), 2);
    EXPECT_EQ(table->model()->columnCount(), 6);
    const auto cell = [&](int row, int column) { return table->model()->index(row, column).data().toDouble(); };
    EXPECT_NEAR(cell(0, 0) + cell(1, 0), 50 + 20, 0.1);
    EXPECT_NEAR(cell(0, 4), 1, 0.001);
    EXPECT_NEAR(cell(1, 4), 1, 0.001);
    EXPECT_FALSE(table->selectionModel()->hasSelection());
    EXPECT_GE(table->viewport()->width(), table->horizontalHeader()->length()) << "no column is cut off";

    const QRect second(4 * 8, 4 * 8, 4 * 24, 4 * 24);
    EXPECT_EQ(ColorIn(second, blue), 0);
    const QPoint inside = AtPoint(20, 20);
    QTest::mouseMove(Picture("Image0"), inside);
    QTest::mouseClick(Picture("Image0"), Qt::LeftButton, {}, inside);
    QApplication::processEvents();
    EXPECT_GT(ColorIn(second, blue), 100) << "the location that was pressed";
    const int row = cell(0, 0) < 30 ? 0 : 1;
    ASSERT_EQ(table->selectionModel()->selectedRows().size(), 1);
    EXPECT_EQ(table->selectionModel()->selectedRows()[0].row(), row);

    QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                      table->visualRect(table->model()->index(1 - row, 1)).center());
    QApplication::processEvents();
    EXPECT_EQ(Value<Locator>(L"Locator0").HitIndex, 1 - row);
    EXPECT_EQ(ColorIn(second, blue), 0);

    const QImage with = Picture("Image0")->grab().toImage();
    Part<QCheckBox>("Locator0", "View scores")->setChecked(false);
    EXPECT_NE(Picture("Image0")->grab().toImage(), with) << "without the scores";
}

TEST_F(FindingViews, AShapeIsTrainedByApplyShownAndTakenOut)
{
    OpenMarks();
    ASSERT_TRUE(Add(L"Blobs", L"Automatic"));
    ASSERT_TRUE(Add(L"ShapeMatcher", L"Train Blob")) << StatusText().toStdString();
    EXPECT_EQ(Value<ShapeMatcher>(L"ShapeMatcher0").NumTrained, 0) << "it waits for Apply";
    form_.Handler().ApplyOperation();
    QApplication::processEvents();
    EXPECT_EQ(StatusText(), "");
    ASSERT_EQ(Value<ShapeMatcher>(L"ShapeMatcher0").NumTrained, 1);
    ToolWindow* window = Window("ShapeMatcher0", "ImageForm");
    ASSERT_TRUE(window);
    EXPECT_TRUE(window->isVisible());
    auto& plot = *window->findChild<GraphWidget*>("Plot");
    const auto colored = [&](QRgb color) {
        const QImage image = plot.grab().toImage();
        int count = 0;
        for (int y = 0; y < image.height(); y++)
            for (int x = 0; x < image.width(); x++)
                count += (image.pixel(x, y) & 0xffffff) == color;
        return count;
    };
    EXPECT_GT(colored(green), 40);
    // Somewhere on the shape, in the corner of the plot.
    QTest::mouseMove(&plot, {12, 12});
    QTest::mouseClick(&plot, Qt::LeftButton, {}, {12, 12});
    EXPECT_EQ(ShapeMatcher::Selected, 0);
    EXPECT_GT(colored(blue), 40);
    QTest::keyClick(&plot, Qt::Key_Delete);
    EXPECT_EQ(Value<ShapeMatcher>(L"ShapeMatcher0").NumTrained, 0);
    EXPECT_EQ(ShapeMatcher::Selected, -1);
    EXPECT_EQ(colored(green), 0);
}

} // namespace

} // namespace TeskPlus
