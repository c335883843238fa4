#include "tests/views/ObjectTest.h"

#include "image/Kernel.h"
#include "image/Morpho.h"
#include "measure/Profile.h"
#include "workbench/views/objects/GenericFeaturesController.h"
#include "workbench/views/objects/MorphoPropertyPageController.h"
#include "workbench/views/picture/GraphSurface.h"

#include <QClipboard>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>

namespace TeskPlus {

namespace {

TEST(MorphoSheet, OpensOnThePageOfTheShape)
{
    const struct
    {
        int width, height, diagonal;
        const wchar_t* page;
    } cases[] = {{5, 5, 5, L"Diamond"}, {8, 8, 4, L"Octagon"}, {7, 7, 5, L"Octagon"},  {7, 7, 3, L"General"},
                 {3, 3, 1, L"Square"},  {1, 1, 1, L"Square"},  {1, 9, 1, L"Vertical"}, {9, 1, 1, L"Horizontal"},
                 {5, 3, 1, L"Box"},     {5, 3, 3, nullptr}};
    for (const auto& c : cases) {
        const wchar_t* page = MorphoPropertyPageController::PageOf(c.width, c.height, c.diagonal);
        EXPECT_EQ(std::wstring(page ? page : L"none"), std::wstring(c.page ? c.page : L"none"))
            << c.width << " " << c.height << " " << c.diagonal;
    }
}

class Sheets : public ObjectTest
{
protected:
    QRadioButton* RadioButton(const char* title, const char* text)
    {
        for (QRadioButton* button : Window(title)->findChildren<QRadioButton*>())
            if (button->text() == text) return button;
        return nullptr;
    }

    void Type(const char* title, const char* row, const char* text)
    {
        QWidget* widget = Part<QWidget>(title, row);
        ASSERT_TRUE(widget) << row;
        if (auto* spin = widget->findChild<QSpinBox*>(); spin && spin->isVisibleTo(widget)) {
            spin->setValue(QString(text).toInt());
            return;
        }
        auto* line = widget->findChild<QLineEdit*>();
        ASSERT_TRUE(line) << row;
        line->setText(text);
        emit line->textEdited(text);
    }
};

TEST_F(Sheets, AMorphologicalElementIsEditedByItsShape)
{
    Open(60, 40);
    ASSERT_TRUE(Add(L"Morpho", L"Dilate"));
    const Morpho& element = Value<Morpho>(L"Morpho0");
    ASSERT_TRUE(Window("Morpho0"));
    EXPECT_TRUE(RadioButton("Morpho0", "Square")->isChecked());
    Type("Morpho0", "Size", "7");
    EXPECT_EQ(element.Width, 7);
    EXPECT_EQ(element.Height, 7);
    EXPECT_EQ(element.Diagonal, 1);

    RadioButton("Morpho0", "Diamond")->setChecked(true);
    EXPECT_EQ(element.Diagonal, 7);
    auto* picture = Part<QWidget>("Morpho0", "MorphoPicture");
    // Cells of 14 pixels from 2 on: the diamond reaches the middle of the sides, and not the corners.
    EXPECT_EQ(PixelOf(picture, {50, 6}), 0u);
    EXPECT_EQ(PixelOf(picture, {6, 6}), 0xffffffu);

    RadioButton("Morpho0", "Vertical")->setChecked(true);
    EXPECT_EQ(element.Width, 1);
    EXPECT_EQ(element.Height, 7);
    // A line hands its length on.
    RadioButton("Morpho0", "Horizontal")->setChecked(true);
    EXPECT_EQ(element.Width, 7);
    EXPECT_EQ(element.Height, 1);
    RadioButton("Morpho0", "Octagon")->setChecked(true);
    EXPECT_EQ(element.Width, 7);
    EXPECT_EQ(element.Height, 7);
    EXPECT_EQ(element.Diagonal, 5);
}

TEST_F(Sheets, AnEvenSizeLeavesTheElement)
{
    Open(60, 40);
    ASSERT_TRUE(Add(L"Morpho", L"Dilate"));
    Type("Morpho0", "Size", "6");
    const Morpho& element = Value<Morpho>(L"Morpho0");
    EXPECT_EQ(element.Width, 3);
    EXPECT_EQ(element.Height, 3);
    EXPECT_TRUE(StatusText().contains("odd")) << StatusText().toStdString();
    Type("Morpho0", "Size", "5");
    EXPECT_EQ(element.Width, 5);
    EXPECT_EQ(StatusText(), "");
}

TEST_F(Sheets, AKernelOfAnotherSizeBecomesAMean)
{
    Open(60, 40);
    ASSERT_TRUE(Add(L"Kernel", L"Convolve"));
    Kernel& kernel = Value<Kernel>(L"Kernel0");
    auto* grid = Part<QTableView>("Kernel0", "Coefficients");
    ASSERT_TRUE(grid);
    EXPECT_EQ(grid->model()->columnCount(), 3);
    EXPECT_EQ(kernel.Coefficient(1, 2), 1.0 / 9) << "a new one, too";
    Type("Kernel0", "Width", "5");
    ASSERT_EQ(kernel.Width, 5);
    ASSERT_EQ(kernel.Height, 3);
    EXPECT_EQ(grid->model()->columnCount(), 5);
    EXPECT_EQ(grid->model()->rowCount(), 3);
    for (int y = 0; y < 3; y++)
        for (int x = 0; x < 5; x++)
            EXPECT_EQ(kernel.Coefficient(x, y), 1.0 / 15);
    EXPECT_EQ(grid->model()->index(2, 4).data(), "0.067");

    EXPECT_TRUE(grid->model()->setData(grid->model()->index(1, 4), "1.5", Qt::EditRole));
    EXPECT_EQ(kernel.Coefficient(4, 1), 1.5);
    EXPECT_EQ(kernel.Coefficient(0, 0), 1.0 / 15) << "what was not edited keeps its digits";
    EXPECT_FALSE(grid->model()->setData(grid->model()->index(1, 4), "much", Qt::EditRole));
    EXPECT_EQ(kernel.Coefficient(4, 1), 1.5);

    Part<QDoubleSpinBox>("Kernel0", "Gain")->setValue(2.0);
    Part<QPushButton>("Kernel0", "Normalize")->click();
    double sum = 0;
    for (int y = 0; y < 3; y++)
        for (int x = 0; x < 5; x++)
            sum += kernel.Coefficient(x, y);
    EXPECT_NEAR(sum, 2.0, 1e-12);
}

TEST_F(Sheets, APageThatWasLeftComesBackUnharmed)
{
    Open(60, 40);
    auto* tabs = Part<QTabBar>("Image0", "PageTabs");
    ASSERT_TRUE(tabs);
    ASSERT_EQ(tabs->count(), 2);
    EXPECT_EQ(tabs->tabText(tabs->currentIndex()), "Bitmap");
    EXPECT_FALSE(Part<QWidget>("Image0", "StoreWidth"));
    QPointer<QWidget> picture = Picture("Image0");
    tabs->setCurrentIndex(0);
    EXPECT_TRUE(Part<QWidget>("Image0", "StoreWidth"));
    ASSERT_TRUE(picture);
    EXPECT_FALSE(Picture("Image0"));
    tabs->setCurrentIndex(1);
    EXPECT_EQ(Picture("Image0"), picture);
    EXPECT_TRUE(picture->isVisible());
}

TEST_F(Sheets, TheTitleFollowsTheName)
{
    Open(60, 40);
    Engine& engine = form_.GetEngine();
    ASSERT_TRUE(engine.RenameVariable(engine.Operations[0]->Args[0].Variable, L"Board", false));
    form_.Handler().Controllers().front()->SetVariableIdentifier(L"Board");
    EXPECT_TRUE(Window("Board"));
}

TEST_F(Sheets, AProfileIsPlottedAndCopied)
{
    Open(100, 80);
    ASSERT_TRUE(Add(L"Profile", L"Get Row"));
    auto* plot = Part<GraphWidget>("Profile0", "Plot");
    ASSERT_TRUE(plot);
    const QImage image = plot->grab().toImage();
    int blues = 0;
    for (int y = 0; y < image.height(); y++)
        for (int x = 0; x < image.width(); x++)
            blues += (image.pixel(x, y) & 0xffffff) == 0x0000ff;
    EXPECT_GT(blues, image.width() / 2);
    EXPECT_EQ(image.pixel(image.width() / 2, 3) & 0xffffff, 0xffffffu);
    emit plot->customContextMenuRequested({5, 5});
    QMenu* menu = OpenMenu("PlotMenu");
    ASSERT_TRUE(menu);
    menu->actions().front()->trigger();
    menu->close();
    const Profile& profile = Value<Profile>(L"Profile0");
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), std::string(profile.ToAsciiString(-1)));
}

TEST_F(Sheets, AHistogramHasAWindowOfItsOwn)
{
    Open(100, 80);
    ASSERT_TRUE(Add(L"Histogram", L"Compute from Image"));
    ToolWindow* window = Window("Histogram0", "ImageForm");
    ASSERT_TRUE(window);
    EXPECT_TRUE(window->isVisible());
    auto* plot = window->findChild<GraphWidget*>("Plot");
    EXPECT_EQ(plot->size(), QSize(512, 256));
    const QImage image = plot->grab().toImage();
    bool isGreen = false;
    for (int y = 0; y < image.height() && !isGreen; y++)
        for (int x = 0; x < image.width() && !isGreen; x++)
            isGreen = (image.pixel(x, y) & 0xffffff) == 0x00ff00;
    EXPECT_TRUE(isGreen);
}

/// Results that stand for those of later classes: the samples of a profile, numbered.
int chosen = -1, countings = 0;
Profile& ProfileOf(AnyVariable& object)
{
    return static_cast<Var<Profile>&>(object).Value;
}
const FeaturesRow resultRow{.Type = 62,
                            .MinimumWidth = 240,
                            .Columns =
                                [](AnyVariable&) {
                                    return std::vector<QString>{"Index", "Third"};
                                },
                            .Count =
                                [](AnyVariable& object) {
                                    countings++;
                                    return int{ProfileOf(object).Length};
                                },
                            .Values =
                                [](AnyVariable& object, int line) {
                                    const int sample = ProfileOf(object).Sample(line);
                                    return std::vector<std::optional<double>>{
                                        line, sample ? std::optional<double>(sample / 3.0) : std::nullopt};
                                },
                            .RestsWhileDragging = true,
                            .SelectsRows = true,
                            .IsSorted = false,
                            .Selected = [](AnyVariable&) { return chosen; },
                            .Select = [](AnyVariable&, int line) { chosen = line; },
                            .CopyLabel = L"&Copy to Clipboard"};

TEST_F(Sheets, ATableShowsResultsAndKeepsTheUsersChoice)
{
    Var<Profile> object;
    ControllerRequest request{form_.GetEngine(), {}};
    for (int node = 0; node < Engine::NumNodes && request.Node < 0; node++)
        if (Engine::Tree[node]->Kind() == ArgumentKind && Engine::VarNode(node)->Type == 62) request.Node = node;
    request.Variable = &object;
    GenericFeaturesController* told = nullptr;
    bool taken = false;
    request.Delegate = [&](Operation*, AnyVariable*, bool isTaken, bool, bool, bool) {
        taken = isTaken;
        told->UpdateControl(false, false);
    };
    chosen = -1;
    countings = 0;
    GenericFeaturesController table(request, resultRow);
    told = &table;
    FeaturesGrid& grid = *table.Grid();
    EXPECT_EQ(grid.sizeHint().width(), 240) << "headers and no rows";
    EXPECT_EQ(grid.model()->columnCount(), 2);
    EXPECT_EQ(grid.model()->rowCount(), 0);

    for (const int sample : {2, 0, 9})
        object.Value.Append(sample);
    table.UpdateControl(false, true);
    EXPECT_EQ(grid.model()->rowCount(), 0) << "it rests while something is dragged";
    table.UpdateControl(false, false);
    ASSERT_EQ(grid.model()->rowCount(), 3);
    EXPECT_EQ(grid.model()->index(0, 1).data().toDouble(), 0.667);
    EXPECT_TRUE(grid.model()->index(1, 1).data().isNull()) << "an empty cell";

    const int before = countings;
    emit grid.clicked(grid.model()->index(2, 0));
    EXPECT_TRUE(taken);
    EXPECT_EQ(chosen, 2);
    EXPECT_EQ(countings, before) << "a choice does not rebuild the table";
    ASSERT_EQ(grid.selectionModel()->selectedRows().size(), 1);
    EXPECT_EQ(grid.selectionModel()->selectedRows().front().row(), 2);
    table.UpdateControl(false, false);
    EXPECT_GT(countings, before);
    EXPECT_EQ(grid.selectionModel()->selectedRows().front().row(), 2);

    emit grid.customContextMenuRequested({5, 5});
    QMenu* menu = OpenMenu("FeaturesMenu");
    ASSERT_TRUE(menu);
    menu->actions().front()->trigger();
    menu->close();
    EXPECT_EQ(QApplication::clipboard()->text(), "Index\tThird\r\n0\t0.667\r\n1\t\r\n2\t3\r\n");

    for (int i = 0; i < 500; i++)
        object.Value.Append(i & 127);
    table.UpdateControl(false, false);
    EXPECT_LE(grid.sizeHint().height(), GenericFeaturesController::maxDataGridViewHeight_);
}

TEST(FeaturesModel, SortsByAColumnAndBack)
{
    FeaturesModel model;
    model.Fill({"A"}, {{2.0}, {std::nullopt}, {1.0}});
    model.sort(0, Qt::AscendingOrder);
    EXPECT_EQ(model.LineAt(0), 1);
    EXPECT_EQ(model.LineAt(1), 2);
    EXPECT_EQ(model.PlaceOf(0), 2);
    model.sort(0, Qt::DescendingOrder);
    EXPECT_EQ(model.PlaceOf(0), 0);
    model.sort(-1, Qt::AscendingOrder);
    EXPECT_EQ(model.PlaceOf(1), 1);
}

} // namespace

} // namespace TeskPlus
