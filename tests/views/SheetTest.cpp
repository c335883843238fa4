#include "tests/views/ObjectTest.h"

#include "image/Kernel.h"
#include "image/Morpho.h"
#include "measure/Profile.h"
#include "workbench/logic/MultiController.h"
#include "workbench/views/objects/GenericFeaturesController.h"
#include "workbench/views/objects/MorphoPropertyPageController.h"
#include "workbench/views/objects/ObjectView.h"
#include "workbench/views/picture/GraphSurface.h"

#include <QClipboard>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QMdiArea>
#include <QPushButton>
#include <QTableView>

#include <cstdlib>

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
const FeaturesRow resultRow{.MinimumWidth = 240,
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
        if (Engine::Tree[node]->Kind() == ArgumentKind && Engine::VarNode(node)->Type == CodeOf(L"Profile"))
            request.Node = node;
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

/// A class that stands for those to come: it has a mark, a sheet with all that a sheet may have, a plot and a table.
int level = 40, draws = 0;
class LevelLine final : public PlotHandles
{
public:
    void Draw(AnyVariable&, int, int) override {}
    std::optional<Qt::CursorShape> Hit(AnyVariable&, int, int Y) override
    {
        if (std::abs(Y - level) > 3) return {};
        return Qt::SizeVerCursor;
    }
    bool Drag(AnyVariable&, int, int Y) override
    {
        level = Y;
        return true;
    }
    bool KeyPressed(AnyVariable& object, int key) override
    {
        if (key != Qt::Key_Delete) return false;
        ProfileOf(object) = Profile();
        return true;
    }
};
constexpr OverlayMark markerMarks[] = {
    {Red, [](AnyVariable&, const IController&) { draws++; },
     [](AnyVariable&, const IController& child) { return OptionOf(child, 1, false); }},
    {Green, [](AnyVariable&, const IController&) { draws += 10; }}};
constexpr OverlayRow wholeOverlay{.Marks = markerMarks};
constexpr PlotBox wholeBoxes[] = {
    {L"Step", [](const AnyVariable&) { return level; }, [](AnyVariable&, int value) { level = value; }}};
constexpr PlotRow wholePlot{
    .Width = 200,
    .Height = 100,
    .Color = Blue,
    .Plot = nullptr,
    .MakeHandles = [] { return std::unique_ptr<PlotHandles>(new LevelLine); },
    .Boxes = wholeBoxes,
    .IsShown = [](const AnyVariable& object) { return static_cast<const Var<Profile>&>(object).Value.Length > 0; }};
constexpr SheetOption wholeOptions[] = {{L"View all", true}, {L"View ends", false}};
constexpr SheetButton wholeButtons[] = {{L"Grow", [](AnyVariable& object, int) { ProfileOf(object).Append(5); }}};
constexpr SheetView wholeSheet{.Options = wholeOptions, .Buttons = wholeButtons};
const ObjectView wholeView{.Type = CodeOf(L"Profile"),
                           .Overlay = &wholeOverlay,
                           .Sheet = &wholeSheet,
                           .Plot = &wholePlot,
                           .Features = &resultRow};

TEST_F(Sheets, ADescriptionIsAllThatAClassNeeds)
{
    Open(100, 80);
    Var<Profile> object;
    object.Value.Append(7);
    ViewContext context{&form_.GetEngine(), &form_.Handler(), nullptr, form_.findChild<QMdiArea*>()};
    int runs = 0;
    bool dragged = false;
    ControllerRequest request{form_.GetEngine(), [&](Operation*, AnyVariable*, bool taken, bool, bool dragging, bool) {
                                  runs++;
                                  dragged = taken && dragging;
                              }};
    for (int node = 0; node < Engine::NumNodes && request.Node < 0; node++)
        if (Engine::Tree[node]->Kind() == ArgumentKind && Engine::VarNode(node)->Type == CodeOf(L"Profile"))
            request.Node = node;
    request.Variable = &object;
    level = 40;
    chosen = -1;
    const auto made = MakeObject(wholeView, request, context);
    const auto& members = dynamic_cast<MultiController&>(*made).Members();
    ASSERT_EQ(members.size(), 3u);
    auto* plotWindow = static_cast<QWidget*>(members[1]->Control());
    auto* sheetWindow = static_cast<QWidget*>(members[2]->Control());

    // The marks of the overlay ask the boxes of the sheet.
    made->SetMotherController(&Controller(L"Image0"));
    draws = 0;
    members[0]->UpdateChildControl();
    EXPECT_EQ(draws, 10);
    EXPECT_TRUE(OptionOf(*members[0], 0, false));
    sheetWindow->findChild<QCheckBox*>("View ends")->setChecked(true);
    draws = 0;
    members[0]->UpdateChildControl();
    EXPECT_EQ(draws, 11);

    // A button changes the object, and what shows it.
    auto* grid = sheetWindow->findChild<QTableView*>("FeaturesGrid");
    ASSERT_TRUE(grid);
    EXPECT_EQ(grid->model()->rowCount(), 1);
    sheetWindow->findChild<QPushButton*>("Grow")->click();
    EXPECT_EQ(grid->model()->rowCount(), 2);
    EXPECT_EQ(runs, 1);

    // A line of the plot is dragged, and its box switches it off and on again.
    made->SetControllerState(controllerState::Shown);
    made->ShowCtrl(false);
    QApplication::processEvents();
    EXPECT_TRUE(plotWindow->isVisible());
    auto* plot = plotWindow->findChild<QWidget*>("Plot");
    Drag(plot, {60, 80}, {60, 90});
    EXPECT_EQ(level, 40) << "nothing was there to be held";
    Drag(plot, {60, 41}, {60, 61});
    EXPECT_EQ(level, 61);
    EXPECT_TRUE(dragged);
    auto* box = plotWindow->findChild<QCheckBox*>("Step");
    box->setChecked(false);
    EXPECT_EQ(level, 0);
    box->setChecked(true);
    EXPECT_EQ(level, 61);
    Drag(plot, {60, 61}, {60, 0});
    EXPECT_FALSE(box->isChecked()) << "dragged to nothing";
    box->setChecked(true);
    EXPECT_GT(level, 0) << "the last setting that was one";

    // Without anything to plot the window goes, and comes back with it.
    QTest::keyClick(plot, Qt::Key_Delete);
    made->UpdateControl(false, false);
    EXPECT_FALSE(plotWindow->isVisible());
    object.Value.Append(1);
    made->UpdateControl(false, false);
    EXPECT_TRUE(plotWindow->isVisible());
    made->SetMotherController(nullptr);
}

TEST_F(Sheets, AWholeNumberWithNamesIsChosenByThem)
{
    Var<int> variable;
    ControllerRequest request{form_.GetEngine(), {}};
    for (int node = 0; node < Engine::NumNodes && request.Node < 0; node++)
        if (Engine::Tree[node]->Kind() == ArgumentKind && Engine::VarNode(node)->NamesNode >= 0) request.Node = node;
    ASSERT_GE(request.Node, 0);
    request.Variable = &variable;
    request.FromDefault = true;
    const auto controller = form_.Handler().Factory().CreateController(request);
    auto* box = static_cast<QWidget*>(controller->Control())->findChild<QComboBox*>();
    ASSERT_TRUE(box);
    EXPECT_EQ(box->count(), 3);
    controller->UpdateProperty();
    EXPECT_EQ(variable.Value, AllSelected);
    variable.Value = AllDeselected;
    controller->UpdateControl(false, false);
    EXPECT_EQ(box->currentIndex(), 2);
    box->setCurrentIndex(0);
    controller->UpdateProperty();
    EXPECT_EQ(variable.Value, All);
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
