#include "tests/views/ObjectTest.h"

#include "image/Source.h"
#include "measure/Path.h"
#include "measure/Profile.h"
#include "workbench/views/objects/ImagePropertyPageController.h"
#include "workbench/views/picture/GenericChildController.h"
#include "workbench/views/picture/ImageController.h"
#include "workbench/views/values/ValueWidgets.h"

#include <QAbstractButton>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QSlider>

namespace TeskPlus {

namespace {

constexpr QRgb blue = 0x0000ff, green = 0x00ff00;

QRgb GrayColor(int value)
{
    return static_cast<QRgb>(value << 16 | value << 8 | value);
}

TEST(StartingZoom, IsTheLargestPowerOfTwoThatFits)
{
    const struct
    {
        int width, height, exponent;
    } cases[] = {{2000, 1000, -2}, {100, 100, 2}, {768, 576, 0}, {769, 576, -1}, {768, 577, -1},
                 {384, 288, 1},    {1, 1, 3},     {96, 72, 3},   {97, 72, 2},    {30000, 10, -3}};
    for (const auto& c : cases)
        EXPECT_EQ(StartingZoom(c.width, c.height), c.exponent) << c.width << " x " << c.height;
}

TEST(PixelText, GoesByTheTypeOfThePixels)
{
    const auto text = [](PixelTypes type, auto set) {
        Image image;
        image.Set(4, 4, type);
        set(image);
        // The pointer goes beyond the window.
        image.Window(0, 0, 1, 1);
        return PixelText(image, 2, 1);
    };
    EXPECT_EQ(text(Gray, [](Image& i) { i.PixelGray(2, 1) = 7; }), L"Gray 007");
    EXPECT_EQ(text(Gray16, [](Image& i) { i.PixelGray16(2, 1) = 1234; }), L"Gray 01234");
    EXPECT_EQ(text(Grad, [](Image& i) { i.PixelGrad(2, 1) = {-5, 300}; }), L"Grad -5,300");
    EXPECT_EQ(text(Rgb, [](Image& i) { i.PixelRgb(2, 1) = RgbPixel(1, 20, 255); }), L"RGB 001:020:255");
    EXPECT_EQ(text(Rgba, [](Image& i) { i.PixelRgba(2, 1) = RgbaPixel(1, 2, 3, 44); }), L"RGB 001:002:003:044");
    EXPECT_EQ(text(Gray1, [](Image& i) { i.PixelGray1(2, 1, true); }), L"Binary 1");
    EXPECT_EQ(text(Gray1, [](Image& i) { i.PixelGray1(2, 1, false); }), L"Binary 0");
    EXPECT_EQ(text(Gray32, [](Image&) {}), L"");
    Image image;
    image.Set(4, 4, Gray);
    EXPECT_EQ(PixelText(image, 4, 0), L"");
    EXPECT_EQ(PixelText(image, -1, 0), L"");
}

TEST_F(ObjectTest, ThePictureShowsThePixelsAtItsZoom)
{
    Open(100, 100);
    QWidget* picture = Picture("Image0");
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->size(), QSize(400, 400));
    EXPECT_EQ(Part<QLabel>("Image0", "label2")->text(), "4:1");
    EXPECT_EQ(PixelOf(picture, {4 * 30, 4 * 20}), GrayColor(30 + 2 * 20));
    EXPECT_EQ(PixelOf(picture, {4 * 30 + 3, 4 * 20 + 3}), GrayColor(30 + 2 * 20));
    EXPECT_EQ(PixelOf(picture, {4 * 31, 4 * 20}), GrayColor(31 + 2 * 20));

    auto* zoom = Part<QSpinBox>("Image0", "numericUpDown1");
    zoom->setValue(0);
    EXPECT_EQ(Part<QLabel>("Image0", "label2")->text(), "1:1");
    EXPECT_EQ(picture->size(), QSize(100, 100));
    EXPECT_EQ(PixelOf(picture, {30, 20}), GrayColor(30 + 2 * 20));
    zoom->setValue(-1);
    EXPECT_EQ(Part<QLabel>("Image0", "label2")->text(), "1:2");
    EXPECT_EQ(picture->size(), QSize(50, 50));
    // The mean of 30, 31, 32, 33 and 40 more, cut.
    EXPECT_EQ(PixelOf(picture, {15, 10}), GrayColor(30 + 2 * 20 + 1));
}

TEST_F(ObjectTest, ALargePictureScrollsAndDrawsThePartInSight)
{
    Open(250, 100);
    Part<QSpinBox>("Image0", "numericUpDown1")->setValue(3);
    QWidget* picture = Picture("Image0");
    EXPECT_EQ(picture->size(), QSize(2000, 800));
    auto* panel = Part<QScrollArea>("Image0", "panel2");
    QApplication::processEvents();
    panel->horizontalScrollBar()->setValue(900);
    panel->verticalScrollBar()->setValue(100);
    ASSERT_EQ(picture->mapTo(panel->viewport(), QPoint(0, 0)), QPoint(-900, -100));
    const QImage shown = panel->viewport()->grab().toImage();
    for (const QPoint at : {QPoint(4, 4), QPoint(300, 200), QPoint(500, 400)})
        EXPECT_EQ(shown.pixel(at) & 0xffffff, GrayColor(((at.x() + 900) / 8 + 2 * ((at.y() + 100) / 8)) & 255));
}

TEST_F(ObjectTest, TheWheelZoomsAboutThePointer)
{
    Open(250, 100);
    Part<QSpinBox>("Image0", "numericUpDown1")->setValue(2);
    QApplication::processEvents();
    QWidget* picture = Picture("Image0");
    auto* panel = Part<QScrollArea>("Image0", "panel2");
    panel->horizontalScrollBar()->setValue(panel->horizontalScrollBar()->maximum());
    const QPoint at(820, 300), before = picture->mapTo(panel->viewport(), at);
    QWheelEvent wheel(at, picture->mapToGlobal(at), {}, {0, 120}, Qt::NoButton, Qt::ControlModifier, Qt::NoScrollPhase,
                      false);
    QApplication::sendEvent(picture, &wheel);
    EXPECT_EQ(picture->size(), QSize(2000, 800));
    EXPECT_EQ(picture->mapTo(panel->viewport(), 2 * at).x(), before.x());
}

TEST_F(ObjectTest, TheLabelTellsThePixelUnderThePointer)
{
    Open(100, 100);
    QTest::mouseMove(Picture("Image0"), {4 * 12 + 3, 4 * 7});
    EXPECT_EQ(Part<QLabel>("Image0", "cursorLabel")->text(), "Gray 026 @ (12,7)");
}

TEST_F(ObjectTest, TheWindowBoxSetsAndShowsTheWindow)
{
    Open(100, 80);
    ASSERT_TRUE(Add(L"Operator", L"Invert"));
    auto* box = Part<QCheckBox>("Image0", "Window");
    ASSERT_TRUE(box);
    EXPECT_TRUE(box->isVisibleTo(Window("Image0")));
    EXPECT_FALSE(box->isChecked());
    box->setChecked(true);
    const Image& source = Value<Image>(L"Image0");
    EXPECT_EQ(source.X, 25);
    EXPECT_EQ(source.Y, 20);
    EXPECT_EQ(source.Width, 50);
    EXPECT_EQ(source.Height, 40);
    EXPECT_EQ(Value<Image>(L"Inverted0").StoreWidth, 50) << "the sequence has run";
    // Its outline, at the middle of the left side: (25 + 0.5) * 4.
    EXPECT_EQ(PixelOf(Picture("Image0"), {102, 160}), blue);
    box->setChecked(false);
    EXPECT_EQ(Value<Image>(L"Inverted0").StoreWidth, 100);
    // A window that was set elsewhere shows as well.
    Value<Image>(L"Image0").Window(1, 2, 3, 4);
    Controller(L"Image0").UpdateControl(false, false);
    EXPECT_TRUE(box->isChecked());

    const auto* result = Part<QCheckBox>("Inverted0", "Window");
    ASSERT_TRUE(result);
    EXPECT_FALSE(result->isVisibleTo(Window("Inverted0"))) << "a result has no window to set";
}

TEST_F(ObjectTest, DraggingTheWindowRunsTheSequenceOnEachMove)
{
    Open(100, 80);
    ASSERT_TRUE(Add(L"Operator", L"Invert"));
    Part<QCheckBox>("Image0", "Window")->setChecked(true);
    QWidget* picture = Picture("Image0");
    int runs = 0;
    form_.GetEngine().BeforeRun = [&](const Operation&) { runs++; };
    // The near corner at (25, 20), drawn half a pixel further, goes to (10, 5).
    Drag(picture, {102, 82}, {42, 22});
    EXPECT_GE(runs, 3);
    const Image& source = Value<Image>(L"Image0");
    EXPECT_EQ(source.X, 10);
    EXPECT_EQ(source.Y, 5);
    EXPECT_EQ(source.Width, 65);
    EXPECT_EQ(source.Height, 55);
    EXPECT_EQ(Value<Image>(L"Inverted0").StoreWidth, 65);
    // With the button up nothing moves.
    QTest::mouseMove(picture, {200, 200});
    EXPECT_EQ(source.X, 10);
    EXPECT_EQ(picture->cursor().shape(), Qt::SizeAllCursor);
}

TEST_F(ObjectTest, TheUsersZoomStaysUntilTheImageTakesAnotherSize)
{
    Open(100, 100);
    auto* zoom = Part<QSpinBox>("Image0", "numericUpDown1");
    zoom->setValue(1);
    Image& image = Value<Image>(L"Image0");
    image.Set(100, 100, Rgb);
    Controller(L"Image0").UpdateControl(false, false);
    EXPECT_EQ(zoom->value(), 1);
    image.Set(2000, 1000, Gray);
    Controller(L"Image0").UpdateControl(false, false);
    EXPECT_EQ(zoom->value(), -2);
    EXPECT_EQ(Picture("Image0")->size(), QSize(500, 250));
    // A void image leaves all as it is.
    Image none;
    image.ShallowCopy(none, true);
    Controller(L"Image0").UpdateControl(false, false);
    EXPECT_EQ(Picture("Image0")->size(), QSize(500, 250));
    Picture("Image0")->grab();
}

TEST_F(ObjectTest, TheWindowFollowsThePictureUntilTheUserResizesIt)
{
    Open(200, 100);
    ToolWindow* window = Window("Image0");
    auto* zoom = Part<QSpinBox>("Image0", "numericUpDown1");
    auto* panel = Part<QScrollArea>("Image0", "panel2");
    zoom->setValue(1);
    QApplication::processEvents();
    const QSize fitting = window->size();
    EXPECT_EQ(panel->height(), 200);
    window->resize(fitting + QSize(120, 90));
    QApplication::processEvents();
    Controller(L"Image0").UpdateControl(false, false);
    QApplication::processEvents();
    EXPECT_EQ(window->size(), fitting + QSize(120, 90));
    zoom->setValue(2);
    QApplication::processEvents();
    EXPECT_EQ(panel->height(), 400);
    zoom->setValue(1);
    QApplication::processEvents();
    EXPECT_EQ(window->size(), fitting);
}

TEST_F(ObjectTest, TheMenuCopiesPicturePixelAndPlace)
{
    Open(100, 80);
    QWidget* picture = Picture("Image0");
    const auto choose = [&](int entry) {
        QTest::mousePress(picture, Qt::RightButton, {}, {4 * 5, 4 * 6});
        QMenu* menu = OpenMenu("PictureMenu");
        ASSERT_TRUE(menu);
        ASSERT_EQ(menu->actions().size(), 4);
        menu->actions()[entry]->trigger();
        menu->close();
        QApplication::processEvents();
    };
    choose(2);
    EXPECT_EQ(QApplication::clipboard()->text(), "Gray 017");
    choose(3);
    EXPECT_EQ(QApplication::clipboard()->text(), "(5, 6)");
    choose(0);
    Image pasted;
    Source::PasteFromClipboard(pasted);
    ASSERT_EQ(pasted.Width, 100);
    EXPECT_EQ(pasted.PixelGray(9, 70), 9 + 2 * 70);
    choose(1);
    // What is on the screen, at its zoom.
    EXPECT_EQ(QApplication::clipboard()->image().size(), Part<QScrollArea>("Image0", "panel2")->viewport()->size());
}

TEST_F(ObjectTest, OpacitySurvivesTheClipboardOfTheDesktop)
{
    Image image, pasted;
    image.Set(5, 3, Rgba);
    for (int y = 0; y < 3; y++)
        for (int x = 0; x < 5; x++)
            image.PixelRgba(x, y) = RgbaPixel(200, 10 * x, 20 * y, 7);
    Source::CopyToClipboard(image);
    Source::PasteFromClipboard(pasted);
    ASSERT_EQ(PixelTypes(pasted.Type), Rgba);
    for (int y = 0; y < 3; y++)
        for (int x = 0; x < 5; x++)
            EXPECT_EQ(pasted.PixelRgba(x, y), image.PixelRgba(x, y)) << x << ' ' << y;
    // Other programs see the colours.
    EXPECT_EQ(QApplication::clipboard()->image().pixel(4, 2) & 0xffffff, 0xc82828u);
    // And what they put there replaces it.
    QImage other(2, 2, QImage::Format_RGB32);
    other.fill(0x010203);
    QApplication::clipboard()->setImage(other);
    Source::PasteFromClipboard(pasted);
    ASSERT_EQ(PixelTypes(pasted.Type), Rgb);
    EXPECT_EQ(pasted.PixelRgb(1, 1), RgbPixel(1, 2, 3));
}

TEST_F(ObjectTest, ARowOfAProfileIsDraggedOnThePicture)
{
    Open(100, 80);
    ASSERT_TRUE(Add(L"Profile", L"Get Row"));
    QWidget* picture = Picture("Image0");
    // The row starts in the middle and is drawn through the middles of its pixels: (40 + 0.5) * 4.
    EXPECT_EQ(Value<int>(L"Y0"), 40);
    EXPECT_EQ(PixelOf(picture, {200, 162}), green);
    QTest::mouseMove(picture, {200, 162});
    EXPECT_EQ(picture->cursor().shape(), Qt::SizeVerCursor);
    Drag(picture, {200, 162}, {200, 62});
    EXPECT_EQ(Value<int>(L"Y0"), 15);
    EXPECT_EQ(PixelOf(picture, {200, 62}), green);
    const Profile& profile = Value<Profile>(L"Profile0");
    ASSERT_EQ(profile.Length, 100);
    EXPECT_EQ(profile.Sample(3), 3 + 2 * 15) << "the result follows the drag";
}

TEST_F(ObjectTest, APointIsDraggedOnThePicture)
{
    Open(100, 80);
    ASSERT_TRUE(Add(L"Geometry", L"Rotate by Two Points"));
    QWidget* picture = Picture("Image0");
    // The first anchor of the source starts in the middle, marked on the middle of its pixel.
    const QPoint start(4 * 50 + 2, 4 * 40 + 2);
    EXPECT_EQ(PixelOf(picture, start), green);
    Drag(picture, start, start + QPoint(-80, 40));
    EXPECT_EQ(PixelOf(picture, start + QPoint(-80, 40)), green);
    EXPECT_NE(PixelOf(picture, start), green);
}

TEST_F(ObjectTest, AnchorsStartAtTheirPlacesAndComeBackWithReset)
{
    Open(100, 80);
    ASSERT_TRUE(Add(L"Geometry", L"Skew by Three Points"));
    EXPECT_EQ(StatusText(), "");
    const auto expect = [&](const wchar_t* name, double x, double y) {
        const XY& anchor = Value<XY>(name);
        EXPECT_EQ(anchor.X, x) << QString::fromWCharArray(name).toStdString();
        EXPECT_EQ(anchor.Y, y) << QString::fromWCharArray(name).toStdString();
    };
    const auto expectAll = [&] {
        for (const wchar_t* kind : {L"Src", L"Dst"}) {
            const std::wstring start = std::wstring(kind) + L"Anchor";
            expect((start + L"00").c_str(), 50, 40);
            expect((start + L"10").c_str(), 75, 40);
            expect((start + L"20").c_str(), 50, 20);
        }
    };
    expectAll();
    const auto* row = form_.findChild<OperationForm*>("OperationForm")->findChild<XYWidget*>("DstAnchor1");
    ASSERT_TRUE(row);
    EXPECT_EQ(row->Value().X, 75) << "shown, too";
    const Image& result = Value<Image>(L"Skewed0");
    EXPECT_EQ(result.Width, 100);
    EXPECT_EQ(result.PixelGray(50, 40), 50 + 2 * 40) << "anchors at the same places move nothing";

    QWidget* picture = Picture("Skewed0");
    Drag(picture, AtPoint(50, 40), AtPoint(30, 30));
    EXPECT_NE(Value<XY>(L"DstAnchor00").X, 50);
    QTest::mouseClick(form_.findChild<QAbstractButton*>("Reset"), Qt::LeftButton);
    QApplication::processEvents();
    expectAll();
    EXPECT_EQ(StatusText(), "");
}

TEST_F(ObjectTest, AContourFollowsItsSeedAndTakesTheThresholdFromIt)
{
    Open(100, 80);
    ASSERT_TRUE(Add(L"Path", L"Follow"));
    EXPECT_EQ(StatusText(), "");
    const Path& path = Value<Path>(L"Path0");
    // The pixels of x + 2 y at or above that of the seed: their contour runs down the slope and round the border.
    const auto expectContour = [&](int x, int y) {
        EXPECT_EQ(Value<Site>(L"Seed0").X, x);
        EXPECT_EQ(Value<Site>(L"Seed0").Y, y);
        EXPECT_EQ(Value<int>(L"Threshold0"), x + 2 * y);
        ASSERT_GT(path.Length, 100);
        EXPECT_TRUE(path.Closed);
        EXPECT_EQ(path.Vertex(0).X, x);
        EXPECT_EQ(path.Vertex(0).Y, y);
        for (int i = 0; i < path.Length; i++)
            ASSERT_GE(path.Vertex(i).X + 2 * path.Vertex(i).Y, x + 2 * y);
    };
    expectContour(50, 40);
    QWidget* picture = Picture("Image0");
    constexpr QRgb red = 0xff0000;
    // The corner of the image at (99, 79), through the middle of its pixel.
    EXPECT_EQ(PixelOf(picture, {4 * 99 + 2, 4 * 60 + 2}), red);
    Drag(picture, {4 * 50 + 2, 4 * 40 + 2}, {4 * 30 + 2, 4 * 20 + 2});
    expectContour(30, 20);
    EXPECT_EQ(StatusText(), "");

    auto* panel = form_.findChild<OperationForm*>("OperationForm");
    // Below the threshold instead; the gray value moves up by one to keep the seed inside.
    panel->findChild<QWidget*>("Above")->findChild<QAbstractButton*>()->click();
    QApplication::processEvents();
    EXPECT_FALSE(Value<bool>(L"Above0"));
    EXPECT_EQ(Value<int>(L"Threshold0"), 30 + 2 * 20 + 1);
    ASSERT_GT(path.Length, 50);
    for (int i = 0; i < path.Length; i++)
        ASSERT_LE(path.Vertex(i).X + 2 * path.Vertex(i).Y, 30 + 2 * 20);
    // A threshold of one's own stays until the seed moves.
    auto* text = panel->findChild<QWidget*>("Threshold")->findChild<QLineEdit*>("Text");
    ASSERT_TRUE(text);
    text->setFocus();
    text->selectAll();
    QTest::keyClicks(text, "60");
    QApplication::processEvents();
    EXPECT_EQ(Value<int>(L"Threshold0"), 60);
    EXPECT_EQ(path.Length, 0) << "the seed is outside";
    EXPECT_EQ(StatusText(), "");
}

TEST_F(ObjectTest, ASeedStaysInTheWindowOfThePicture)
{
    Open(100, 80);
    ASSERT_TRUE(Add(L"Path", L"Follow"));
    Part<QCheckBox>("Image0", "Window")->setChecked(true);
    ASSERT_EQ(Value<Image>(L"Image0").X, 25);
    const Site& seed = Value<Site>(L"Seed0");
    EXPECT_EQ(seed.X, 50);
    EXPECT_EQ(seed.Y, 40);
    auto* row = form_.findChild<OperationForm*>("OperationForm")->findChild<XYWidget*>("Seed");
    ASSERT_TRUE(row);
    const auto type = [&](double x, double y) {
        row->SetValue({x, y});
        row->Changed(false);
        QApplication::processEvents();
    };
    // Beyond the width of the window, and yet in it.
    type(70, 55);
    EXPECT_EQ(seed.X, 70);
    EXPECT_EQ(seed.Y, 55);
    EXPECT_GT(Value<Path>(L"Path0").Length, 10);
    type(5, 79);
    EXPECT_EQ(seed.X, 25);
    EXPECT_EQ(seed.Y, 59);
    EXPECT_EQ(StatusText(), "");
}

TEST_F(ObjectTest, APathIsFittedAndReducedFromTheMenus)
{
    Open(100, 80);
    ASSERT_TRUE(Add(L"Path", L"Follow"));
    for (const wchar_t* label : {L"Smooth", L"Convex Hull", L"Line Fit", L"Circle Fit", L"Ellipse Fit", L"Rectangle",
                                 L"Parallelogram", L"Filled Ellipse", L"Ellipse Deviation", L"Gray Histogram"}) {
        ASSERT_TRUE(Add(L"Path", label)) << QString::fromWCharArray(label).toStdString();
        EXPECT_EQ(StatusText(), "") << QString::fromWCharArray(label).toStdString();
    }
    EXPECT_GT(Value<Path>(L"Smoothed0").Length, 2);
    EXPECT_LT(Value<Path>(L"Smoothed0").Length, Value<Path>(L"Path0").Length);
    EXPECT_GT(Value<Path>(L"ConvexHulled0").Length, 2);
    EXPECT_TRUE(Value<bool>(L"Fitted0"));
}

TEST_F(ObjectTest, TheEndsOfALineAreDraggedApart)
{
    Open(100, 80);
    ASSERT_TRUE(Add(L"Profile", L"Get Line"));
    QWidget* picture = Picture("Image0");
    EXPECT_EQ(Value<XY>(L"Beg0").X, 25);
    EXPECT_EQ(Value<XY>(L"End0").X, 75);
    Drag(picture, AtPoint(25, 40), AtPoint(25, 10));
    EXPECT_NEAR(Value<XY>(L"Beg0").Y, 10, 1.5);
    EXPECT_EQ(Value<XY>(L"End0").Y, 40) << "the other end stays";
    EXPECT_NEAR(Value<Profile>(L"Profile0").Sample(0), 25 + 2 * Value<XY>(L"Beg0").Y, 2) << "the result follows";
    Drag(picture, AtPoint(75, 40), AtPoint(90, 70));
    EXPECT_NEAR(Value<XY>(L"End0").X, 90, 1.5);
    EXPECT_NEAR(Value<XY>(L"Beg0").Y, 10, 1.5);
}

TEST_F(ObjectTest, ABandOfRowsGivesWayToItsBreadthAndFollowsTheWindow)
{
    Open(100, 80);
    ASSERT_TRUE(Add(L"Profile", L"Cumulate across Rows"));
    EXPECT_EQ(StatusText(), "");
    EXPECT_EQ(Value<int>(L"Y0"), 40);
    EXPECT_EQ(Value<int>(L"Breadth0"), 16);
    auto* panel = form_.findChild<OperationForm*>("OperationForm");
    panel->findChild<QWidget*>("Y")->findChild<QSlider*>("Slider")->setValue(79);
    EXPECT_EQ(Value<int>(L"Y0"), 64) << "the band ends with the picture";
    auto* text = panel->findChild<QWidget*>("Breadth")->findChild<QLineEdit*>("Text");
    text->setFocus();
    text->selectAll();
    QTest::keyClicks(text, "30");
    QApplication::processEvents();
    EXPECT_EQ(Value<int>(L"Breadth0"), 30);
    EXPECT_EQ(Value<int>(L"Y0"), 50) << "the row gives way at once";
    EXPECT_EQ(StatusText(), "");
    // The mean of x + 2 y over the rows 50 to 79.
    EXPECT_EQ(Value<Profile>(L"Profile0").Sample(3), 3 + 50 + 79);

    // The far line of the band, (79 + 0.5) * 4, goes up by 10 rows.
    Drag(Picture("Image0"), {200, 4 * 79 + 2}, {200, 4 * 69 + 2});
    EXPECT_EQ(Value<int>(L"Breadth0"), 20);
    EXPECT_EQ(Value<int>(L"Y0"), 50);

    Part<QCheckBox>("Image0", "Window")->setChecked(true);
    EXPECT_EQ(Value<int>(L"Breadth0"), 16);
    EXPECT_EQ(Value<int>(L"Y0"), 20) << "the middle of the window";
    EXPECT_EQ(StatusText(), "");
}

/// An object that stands for the overlays of later classes.
class Marker final : public GenericChildController
{
public:
    using GenericChildController::GenericChildController;
    void SetState(controllerState state) { SetControllerState(state); }
};

int starts = 0;
const OverlayRow markerRow{
    .Color = Green,
    .Draw = [](AnyVariable& object, const IController&) { static_cast<Var<XY>&>(object).Value.Draw(false); },
    .Start =
        [](AnyVariable& object, const Image& picture) {
            starts++;
            static_cast<Var<XY>&>(object).Value = XY(picture.Width / 2, picture.Height / 2);
        },
    .FollowsWindow = true};

TEST_F(ObjectTest, AnOverlayShowsItsMotherAndLeavesWithHer)
{
    Open(100, 80);
    IController& mother = Controller(L"Image0");
    Var<XY> point;
    ControllerRequest request{form_.GetEngine(), {}};
    for (int node = 0; node < Engine::NumNodes && request.Node < 0; node++)
        if (Engine::Tree[node]->Kind() == ArgumentKind && Engine::VarNode(node)->Type == CodeOf(L"XY"))
            request.Node = node;
    request.Variable = &point;
    Marker marker(request, &markerRow);
    starts = 0;
    marker.SetMotherController(&mother);
    EXPECT_EQ(starts, 1);
    EXPECT_EQ(point.Value.X, 50);
    marker.UpdateProperty();
    EXPECT_EQ(starts, 1) << "the picture has not changed";
    Value<Image>(L"Image0").Window(10, 10, 20, 20);
    marker.UpdateProperty();
    EXPECT_EQ(starts, 2);
    EXPECT_EQ(point.Value.X, 10);
    Value<Image>(L"Image0").Window();

    // Glanced at, it brings its hidden mother with it.
    mother.SetControllerState(controllerState::Hidden);
    EXPECT_TRUE(mother.HideCtrl(false));
    EXPECT_FALSE(Window("Image0")->isVisible());
    marker.SetState(controllerState::Glanced);
    marker.ShowCtrl(false);
    EXPECT_TRUE(Window("Image0")->isVisible());
    EXPECT_EQ(PixelOf(Picture("Image0"), {4 * 10 + 2, 4 * 10 + 2}), green);
    EXPECT_TRUE(marker.HideCtrl(false));
    EXPECT_FALSE(Window("Image0")->isVisible());

    // Pinned, it keeps her, and the window shows the pin.
    marker.SetState(controllerState::Pinned);
    marker.ShowCtrl(true);
    EXPECT_TRUE(Window("Image0")->IsPinned());
    EXPECT_FALSE(marker.HideCtrl(false));
    EXPECT_FALSE(mother.HideCtrl(false));
    EXPECT_TRUE(Window("Image0")->isVisible());

    // Unpinned, it goes when she goes.
    marker.SetState(controllerState::Shown);
    marker.ShowCtrl(false);
    EXPECT_FALSE(Window("Image0")->IsPinned());
    EXPECT_TRUE(mother.HideCtrl(false));
    EXPECT_EQ(marker.ControllerState(), controllerState::Hidden);
    EXPECT_FALSE(Window("Image0")->isVisible());
}

} // namespace

} // namespace TeskPlus
