// The windows in the work area: each as large as its content, inside the area, and where it covers no other.
#include "tests/views/Workbench.h"

#include "workbench/views/values/HelpWidget.h"
#include "workbench/views/values/ValueWidgets.h"

#include <QCheckBox>
#include <QClipboard>
#include <QGroupBox>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>
#include <QTabBar>

#include <algorithm>
#include <fstream>
#include <set>

using namespace TeskPlus;

namespace {

/// With the help on, whatever the tests before have left it.
class HelpfulWorkbench : public Workbench
{
public:
    HelpfulWorkbench() { Form().SetIsHelp(true); }
};

ToolWindow* Find(Workbench& bench, const QString& title)
{
    for (auto* window : bench.Form().findChildren<ToolWindow*>())
        if (window->windowTitle() == title) return window;
    return nullptr;
}

ToolWindow* Named(Workbench& bench, const QString& name)
{
    for (auto* window : bench.Form().findChildren<ToolWindow*>(name))
        if (window->isVisible()) return window;
    return nullptr;
}

/// Whether a window shows less than its content.
bool Scrolls(const ToolWindow& window)
{
    const auto* scroll = qobject_cast<QScrollArea*>(window.widget());
    return scroll->horizontalScrollBar()->maximum() > 0 || scroll->verticalScrollBar()->maximum() > 0;
}

QRect WorkArea(Workbench& bench)
{
    return bench.Form().findChild<QMdiArea*>()->viewport()->rect();
}

void FlipTo(Workbench& bench, const QString& label)
{
    for (auto* button : bench.OperationWindow()->findChild<QGroupBox*>("MethodGroup")->findChildren<QRadioButton*>())
        if (button->text() == label) button->click();
    Workbench::Settle();
}

/// A gray picture of a size.
QString WritePicture(const QTemporaryDir& folder, int width, int height)
{
    Image image;
    image.Set(width, height, Gray);
    const QString path = folder.filePath(QString("%1x%2.bmp").arg(width).arg(height));
    image.Write(path.toStdString().c_str());
    return path;
}

QString WriteBroken(const QTemporaryDir& folder)
{
    const QString path = folder.filePath("broken.png");
    std::ofstream(path.toStdString()) << "no picture";
    return path;
}

void ReadAnother(Workbench& bench, const QString& path)
{
    FileDialogs::Pending() = QStringList{path};
    QTest::mouseClick(bench.Row<QAbstractButton>("PathName", "Open"), Qt::LeftButton);
    Workbench::Settle();
}

} // namespace

TEST(Windows, TheParametersGrowWithTheirRowsAndStayInTheWorkArea)
{
    HelpfulWorkbench bench;
    bench.ReadImage();
    bench.Menu({"Process", "Point to point", "Binarization...", "Threshold"});
    bench.ClickLine(1, "Threshold");
    ToolWindow* parameters = Named(bench, "ParametersForm");
    ASSERT_TRUE(parameters);
    int height = parameters->height();
    QTreeWidgetItem* image = bench.Line(1, "Image0");
    ASSERT_TRUE(image && image->childCount() >= 4);
    image->setExpanded(true);
    Workbench::Settle();
    for (int i = 0; i < 4; i++) {
        QTreeWidgetItem* property = bench.Line(1, "Image0")->child(i);
        bench.List().scrollToItem(property);
        QTest::mouseClick(bench.List().viewport(), Qt::LeftButton, {}, bench.List().visualItemRect(property).center());
        Workbench::Settle();
        EXPECT_GT(parameters->height(), height) << "row " << i;
        EXPECT_FALSE(Scrolls(*parameters)) << "row " << i;
        EXPECT_TRUE(WorkArea(bench).contains(parameters->geometry())) << "row " << i;
        EXPECT_FALSE(parameters->geometry().intersects(bench.OperationWindow()->geometry())) << "row " << i;
        height = parameters->height();
    }
}

TEST(Windows, ASwapAndAnotherTabLeaveTheOperationsWindowLargeEnough)
{
    HelpfulWorkbench bench;
    bench.ReadImage();
    bench.Menu({"Process", "Point to point", "Image Arithmetic...", "Const + Image"});
    ASSERT_TRUE(bench.OperationWindow());
    EXPECT_FALSE(Scrolls(*bench.OperationWindow()));
    for (const char* label : {"Image - Const", "Const - Image", "Const + Image"}) {
        FlipTo(bench, label);
        EXPECT_FALSE(Scrolls(*bench.OperationWindow())) << label;
    }
    const QSize size = bench.OperationWindow()->size();
    auto* tabs = bench.OperationWindow()->findChild<QTabBar*>("ClassTabs");
    ASSERT_TRUE(tabs);
    const int home = tabs->currentIndex();
    int other = home;
    for (int i = 0; i < tabs->count() && other == home; i++)
        if (i != home && tabs->isTabEnabled(i)) other = i;
    ASSERT_NE(other, home);
    bench.Answer("Keep", "Press Keep to retain");
    tabs->setCurrentIndex(other);
    Workbench::Settle();
    ASSERT_EQ(bench.Count(), 3);
    EXPECT_FALSE(Scrolls(*bench.OperationWindow()));
    EXPECT_GT(bench.OperationWindow()->width(), size.width() / 2);
    EXPECT_TRUE(WorkArea(bench).contains(bench.OperationWindow()->geometry()));
}

TEST(Windows, APictureIsShownWholeInAWindowOfItsOwnWidth)
{
    const QTemporaryDir folder;
    // Shown at 384 x 576 and at 400 x 400.
    for (const QSize image : {QSize(96, 144), QSize(100, 100)}) {
        HelpfulWorkbench bench;
        bench.ReadImage(WritePicture(folder, image.width(), image.height()));
        ToolWindow* window = Find(bench, "Image0");
        ASSERT_TRUE(window);
        auto* panel = window->findChild<QScrollArea*>("panel2");
        bench.Invert();
        ASSERT_TRUE(window->findChild<QCheckBox*>("Window")->isVisible());
        EXPECT_EQ(panel->viewport()->size(), 4 * image) << "the box takes nothing from the picture";
        EXPECT_FALSE(Scrolls(*window));
        const QSize fitting = window->size();
        auto* zoom = window->findChild<QSpinBox*>("numericUpDown1");
        zoom->setValue(3);
        Workbench::Settle();
        EXPECT_TRUE(WorkArea(bench).contains(window->geometry()));
        zoom->setValue(2);
        Workbench::Settle();
        EXPECT_EQ(window->size(), fitting) << "zoomed in and back";
        // The rows of the properties take what they need, and give it back.
        auto* tabs = window->findChild<QTabBar*>("PageTabs");
        tabs->setCurrentIndex(0);
        Workbench::Settle();
        EXPECT_FALSE(Scrolls(*window)) << "properties";
        for (const auto* help : window->findChildren<HelpWidget*>())
            EXPECT_GE(help->height(), help->heightForWidth(help->width())) << help->text().toStdString();
        tabs->setCurrentIndex(tabs->count() - 1);
        Workbench::Settle();
        EXPECT_EQ(window->size(), fitting) << "from the properties and back";
        // A size that the user has chosen stays that of the picture.
        const QSize chosen = fitting + QSize(40, -60);
        window->resize(chosen);
        tabs->setCurrentIndex(0);
        Workbench::Settle();
        tabs->setCurrentIndex(tabs->count() - 1);
        Workbench::Settle();
        EXPECT_EQ(window->size(), chosen);
    }
}

TEST(Windows, ALongPixelTextIsCutAtItsBeginning)
{
    HelpfulWorkbench bench;
    bench.ReadImage();
    ToolWindow* window = Find(bench, "Image0");
    const QSize before = window->size();
    auto* label = window->findChild<QLabel*>("cursorLabel");
    const auto ink = [&](const QString& text) {
        label->setText(text);
        Workbench::Settle();
        const QImage shown = label->grab().toImage();
        // Where the text's last letters stand.
        return shown.copy(shown.width() - 40, 0, 40, shown.height());
    };
    label->setFixedWidth(120);
    EXPECT_NE(ink("RGB 255:255:255:255 @ (1111,1111)"), ink("RGB 255:255:255:255 @ (1111,7777)"));
    EXPECT_EQ(ink("RGB 255:255:255:255 @ (1111,1111)"), ink("RGB 055:255:255:255 @ (1111,1111)"));
    EXPECT_EQ(window->size(), before) << "no text makes the window wider";
}

TEST(Windows, WhatGrowsAtAnEdgeMovesBackInside)
{
    HelpfulWorkbench bench;
    bench.ReadImage();
    ToolWindow* window = Find(bench, "Image0");
    const QRect area = WorkArea(bench);
    window->move(area.width() - window->width(), area.height() - window->height());
    auto* picture = window->findChild<QWidget*>("panelImage");
    const QPoint at(200, 120);
    QWheelEvent wheel(at, picture->mapToGlobal(at), {}, {0, 120}, Qt::NoButton, Qt::ControlModifier, Qt::NoScrollPhase,
                      false);
    const int width = window->width();
    QApplication::sendEvent(picture, &wheel);
    Workbench::Settle();
    EXPECT_GT(window->width(), width);
    EXPECT_TRUE(WorkArea(bench).contains(window->geometry()));
    // A smaller work area takes its windows along.
    bench.Form().resize(1280, 720);
    Workbench::Settle();
    EXPECT_LT(WorkArea(bench).height(), area.height());
    EXPECT_TRUE(WorkArea(bench).contains(window->geometry()));
    EXPECT_TRUE(WorkArea(bench).contains(bench.OperationWindow()->geometry()));
}

TEST(Windows, AFirstPictureWaitsUntilTheMainWindowHasItsSize)
{
    HelpfulWorkbench bench;
    bench.Form().OpenWhenSettled({Workbench::Picture()});
    for (int width : {1000, 1100, 1200}) {
        QTest::qWait(80);
        bench.Form().resize(width, 700);
    }
    EXPECT_EQ(bench.Count(), 0) << "as long as it changes";
    QTest::qWait(300);
    ASSERT_EQ(bench.Count(), 1);
    EXPECT_TRUE(WorkArea(bench).contains(Find(bench, "Image0")->geometry()));
}

TEST(Windows, NewOnesCoverNeitherSourceNorPanelNorHelp)
{
    // A small picture leaves room for all of them on either screen.
    const QTemporaryDir folder;
    for (const QSize screen : {QSize(1600, 1000), QSize(1280, 720)}) {
        HelpfulWorkbench bench;
        bench.Form().resize(screen);
        Workbench::Settle();
        bench.ReadImage(WritePicture(folder, 24, 24));
        bench.Invert();
        const ToolWindow* const windows[] = {Find(bench, "Image0"), Find(bench, "Inverted0"), bench.OperationWindow(),
                                             Named(bench, "OperationContextualHelpForm")};
        for (const ToolWindow* window : windows)
            ASSERT_TRUE(window && window->isVisible());
        for (const ToolWindow* window : windows) {
            EXPECT_TRUE(WorkArea(bench).contains(window->geometry()));
            for (const ToolWindow* other : windows)
                EXPECT_TRUE(window == other || !window->geometry().intersects(other->geometry()))
                    << screen.width() << ": " << window->windowTitle().toStdString() << ", "
                    << other->windowTitle().toStdString();
        }
    }
}

TEST(Windows, TheHelpYieldsToTheControlsOfTheOperation)
{
    HelpfulWorkbench bench;
    bench.Form().resize(1280, 720);
    Workbench::Settle();
    bench.ReadImage();
    bench.Menu({"Process", "Point to point", "Binarization...", "Threshold"});
    // The user puts the operation's window where the help stands; it is there again when it is selected again.
    bench.OperationWindow()->move(15, 15);
    bench.ClickLine(0);
    bench.ClickLine(1);
    ToolWindow* help = Named(bench, "OperationContextualHelpForm");
    ASSERT_TRUE(help);
    EXPECT_EQ(bench.OperationWindow()->pos(), QPoint(15, 15));
    EXPECT_FALSE(help->geometry().intersects(bench.OperationWindow()->geometry()));
    // With that gone it is back in its corner.
    bench.OperationWindow()->move(15, 300);
    bench.ClickLine(0);
    bench.OperationWindow()->move(15, 300);
    bench.ClickLine(1);
    EXPECT_EQ(Named(bench, "OperationContextualHelpForm")->pos(), QPoint(15, 15));
}

TEST(Failures, TheListSaysWhichOperationFailedAndWhatIsOutOfDate)
{
    const QTemporaryDir folder;
    HelpfulWorkbench bench;
    bench.ReadImage();
    bench.Invert();
    bench.ClickLine(0);
    ReadAnother(bench, WriteBroken(folder));
    const QString own = bench.StatusText();
    EXPECT_NE(own, "");
    const auto isMarked = [&](int id) { return bench.List().topLevelItem(id)->data(0, Qt::ForegroundRole).isValid(); };
    EXPECT_TRUE(isMarked(0));
    EXPECT_FALSE(isMarked(1));
    EXPECT_TRUE(bench.List().topLevelItem(0)->toolTip(0).contains(own));
    bench.ClickLine(1);
    EXPECT_TRUE(bench.StatusText().startsWith("Read")) << "under another selection the message says whose it is";
    EXPECT_TRUE(bench.StatusText().endsWith(own));
    EXPECT_TRUE(Find(bench, "Inverted0")->IsStale());
    EXPECT_TRUE(Find(bench, "Image0")->IsStale());
    bench.ClickLine(0);
    EXPECT_EQ(bench.StatusText(), own);
    ReadAnother(bench, Workbench::Picture());
    bench.ClickLine(1);
    EXPECT_EQ(bench.StatusText(), "");
    EXPECT_FALSE(isMarked(0));
    EXPECT_FALSE(Find(bench, "Inverted0")->IsStale());
    EXPECT_FALSE(Find(bench, "Image0")->IsStale());
}

TEST(Failures, WhatIsBeforeOrApartFromTheFailureIsNotOutOfDate)
{
    const QTemporaryDir folder;
    HelpfulWorkbench bench;
    bench.ReadImage();
    bench.Invert();
    bench.ReadImage(WriteBroken(folder));
    EXPECT_FALSE(Find(bench, "Inverted0")->IsStale());
    EXPECT_TRUE(Find(bench, "Image1")->IsStale());
}

TEST(Failures, TheMessageGoesWithItsOperation)
{
    const QTemporaryDir folder;
    HelpfulWorkbench bench;
    bench.ReadImage(WriteBroken(folder));
    EXPECT_NE(bench.StatusText(), "");
    QTest::mouseClick(bench.OperationWindow()->findChild<QPushButton*>("Delete"), Qt::LeftButton);
    Workbench::Settle();
    EXPECT_EQ(bench.Count(), 0);
    EXPECT_EQ(bench.StatusText(), "");
}

TEST(List, AStepTouchesTheLinesOfWhatHasRun)
{
    HelpfulWorkbench bench;
    bench.ReadImage();
    for (int i = 0; i < 4; i++)
        bench.Invert();
    bench.Menu({"Process", "Point to point", "Binarization...", "Threshold"});
    Workbench::Settle();
    std::set<int> touched;
    QObject::connect(bench.List().model(), &QAbstractItemModel::dataChanged, &bench.List(),
                     [&](const QModelIndex& first) { touched.insert(first.parent().isValid() ? -1 : first.row()); });
    for (int value = 20; value < 24; value++) {
        bench.Row<QSlider>("Threshold", "Slider")->setValue(value);
        Workbench::Settle();
    }
    EXPECT_TRUE(touched.empty() || touched == std::set<int>{5});
    EXPECT_TRUE(bench.List().topLevelItem(5)->text(0).endsWith(" ms"));
}

TEST(List, LinesAreOfOneHeightWhateverIsTheFirst)
{
    HelpfulWorkbench bench;
    bench.ReadImage();
    bench.Invert();
    const auto height = [&](int id) { return bench.List().visualItemRect(bench.List().topLevelItem(id)).height(); };
    const int with = height(0);
    bench.ClickLine(0);
    EXPECT_EQ(height(0), with) << "now with the mark of the current one";
    EXPECT_EQ(height(1), with);
    // The longest line fits.
    EXPECT_GE(bench.List().columnWidth(0),
              bench.List().indentation() +
                  bench.List().sizeHintForIndex(bench.List().indexFromItem(bench.List().topLevelItem(1))).width());
}

TEST(Results, ANumberIsReadSelectedAndCopiedWithAllItsDigits)
{
    FloatWidget number("Area");
    number.SetState(false, attributeValue::Out);
    number.show();
    number.SetValue(1234.56789012345);
    auto* text = number.findChild<QLineEdit*>("Text");
    EXPECT_TRUE(text->isEnabled());
    EXPECT_TRUE(text->isReadOnly());
    EXPECT_EQ(text->text(), "1234.568");
    EXPECT_EQ(text->toolTip(), "1234.56789012345");
    text->setFocus();
    text->selectAll();
    QTest::keyClick(text, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), "1234.56789012345");
    text->setSelection(0, 4);
    QTest::keyClick(text, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), "1234") << "a part is copied as it stands";
    QTest::keyClicks(text, "9");
    EXPECT_EQ(number.Value(), 1234.56789012345);
    text->deselect();
    QContextMenuEvent ask(QContextMenuEvent::Mouse, {5, 5}, text->mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(text, &ask);
    auto* menu = number.findChild<QMenu*>("ResultMenu");
    ASSERT_TRUE(menu);
    menu->actions().front()->trigger();
    menu->close();
    EXPECT_EQ(QApplication::clipboard()->text(), "1234.56789012345");
    // What can be entered looks and copies as before.
    FloatWidget entered("Gain");
    entered.SetState(true, attributeValue::In);
    entered.SetValue(0.123456);
    EXPECT_EQ(entered.findChild<QLineEdit*>("Text")->toolTip(), "");
    EXPECT_FALSE(entered.findChild<QLineEdit*>("Text")->isReadOnly());
}
