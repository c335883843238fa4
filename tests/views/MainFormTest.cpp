#include "tests/views/Workbench.h"

#include "foundation/Services.h"
#include "workbench/views/values/HelpWidget.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFile>
#include <QFileDialog>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QSpinBox>

#include <algorithm>
#include <fstream>
#include <iterator>

using namespace TeskPlus;

namespace {

int Mean(const Image& image)
{
    long sum = 0;
    for (int y = 0; y < image.Height; y++)
        for (int x = 0; x < image.Width; x++)
            sum += image.Row(y)[x];
    return static_cast<int>(sum / (static_cast<long>(image.Width) * image.Height));
}

/// Chooses an entry of the context menu that is about to open.
void ChooseFromMenu(const QString& text)
{
    QTimer::singleShot(50, [text] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_TRUE(menu);
        for (QAction* action : menu->actions())
            if (action->text() == text) menu->setActiveAction(action);
        QTest::keyClick(menu, Qt::Key_Return);
    });
}

} // namespace

TEST(MainForm, FirstStartHasHelpOnAndNativeCpp)
{
    Workbench bench;
    EXPECT_TRUE(bench.Entry({"File", "Show Help"})->isChecked());
    EXPECT_TRUE(bench.Entry({"File", "Script", "Language", "Native C++"})->isChecked());
    EXPECT_FALSE(bench.Entry({"File", "Script", "Language", "C#"})->isChecked());
    auto* help = bench.Form().findChild<QWidget*>("OperationContextualHelpForm");
    ASSERT_TRUE(help);
    EXPECT_TRUE(help->isVisible());
    EXPECT_EQ(help->findChild<HelpWidget*>()->text(), "Getting Started");
    EXPECT_TRUE(bench.Form().windowTitle().startsWith("Tesk+ for Tesk "));
}

TEST(MainForm, SettingsOutliveTheProgram)
{
    Workbench bench;
    bench.Menu({"File", "Script", "Language", "Visual Basic"});
    bench.Menu({"File", "Show Help"});
    bench.Restart();
    EXPECT_TRUE(bench.Entry({"File", "Script", "Language", "Visual Basic"})->isChecked());
    EXPECT_FALSE(bench.Entry({"File", "Show Help"})->isChecked());
    EXPECT_FALSE(bench.Form().findChild<QWidget*>("OperationContextualHelpForm"));
    bench.Menu({"File", "Script", "Language", "Native C++"});
    bench.Menu({"File", "Show Help"});
    EXPECT_TRUE(MainForm::IsHelp());
}

TEST(MainForm, MenusAreTheTree)
{
    Workbench bench;
    QStringList groups;
    for (const QAction* action : bench.Form().menuBar()->actions())
        groups << action->text();
    EXPECT_EQ(groups, (QStringList{"File", "Process", "Analyze", "Align", "Identify", "Inspect"}));
    int entries = 0, bullets = 0, pending = 0;
    std::function<void(const QList<QAction*>&)> visit = [&](const QList<QAction*>& actions) {
        for (const QAction* action : actions) {
            if (action->menu()) visit(action->menu()->actions());
            if (action->menu() || !action->data().isValid()) continue;
            entries++;
            bullets += !action->icon().isNull();
            if (!action->isEnabled()) {
                pending++;
                EXPECT_EQ(action->toolTip(), QString::fromWCharArray(Engine::PendingReason));
            }
        }
    };
    visit(bench.Form().menuBar()->actions());
    int methods = 0, starts = 0, notYet = 0;
    for (int i = 0; i < Engine::NumNodes; i++)
        if (Engine::Tree[i]->Kind() == MethodKind) {
            methods++;
            starts += (Engine::Tree[i]->Flags & EntryMethod) != 0;
            notYet += Engine::IsPending(i);
        }
    EXPECT_EQ(entries, methods);
    EXPECT_EQ(bullets, starts);
    EXPECT_EQ(pending, notYet);
}

TEST(MainForm, AClickOnAMenuEntryRunsTheOperationAndShowsItInTheList)
{
    Workbench bench;
    bench.ReadImage();
    ASSERT_EQ(bench.Count(), 1);
    EXPECT_EQ(bench.Value<Image>(0, L"Image").Width, 200);
    bench.Invert();
    ASSERT_EQ(bench.Count(), 2);
    EXPECT_EQ(bench.Value<Image>(1, L"Dst").Row(3)[7], 255 - 7);
    EXPECT_EQ(bench.StatusText(), "");
    ASSERT_EQ(bench.List().topLevelItemCount(), 2);
    EXPECT_TRUE(bench.List().topLevelItem(0)->text(0).startsWith("Read  from File (Image.Read) | "));
    EXPECT_TRUE(bench.List().topLevelItem(1)->text(0).contains("(Operator.Invert) | "));
    EXPECT_TRUE(bench.List().topLevelItem(1)->text(0).endsWith(" ms"));
    EXPECT_TRUE(bench.Line(1, "Inverted0 (Image)"));
}

TEST(MainForm, ACancelledFileDialogLeavesNoOperation)
{
    Workbench bench;
    bench.WhenModal([](QWidget* dialog) {
        EXPECT_TRUE(qobject_cast<QFileDialog*>(dialog));
        static_cast<QDialog*>(dialog)->reject();
    });
    bench.Menu({"File", "Image", "Image File...", "Read  from File"});
    EXPECT_EQ(bench.Count(), 0);
    EXPECT_EQ(bench.List().topLevelItemCount(), 0);
    EXPECT_FALSE(bench.OperationWindow());
}

TEST(MainForm, AnOperationWithoutItsInputIsRefusedWithAMessage)
{
    Workbench bench;
    bench.Answer("OK", "Cannot find a suitable Image input variable, please create it");
    bench.Invert();
    EXPECT_EQ(bench.Count(), 0);
}

TEST(MainForm, ABrokenFileTellsWhyInTheStatusLineAndTheNextFileMendsIt)
{
    Workbench bench;
    QTemporaryDir folder;
    const QString broken = folder.filePath("broken.png");
    std::ofstream(broken.toStdString()) << "no picture";
    bench.ReadImage(broken);
    EXPECT_NE(bench.StatusText(), "");
    ASSERT_EQ(bench.Count(), 1);
    bench.ClickLine(0);
    FileDialogs::Pending() = QStringList{Workbench::Picture()};
    auto* button = bench.Row<QAbstractButton>("PathName", "Open");
    ASSERT_TRUE(button);
    QTest::mouseClick(button, Qt::LeftButton);
    Workbench::Settle();
    EXPECT_EQ(bench.StatusText(), "");
    EXPECT_EQ(bench.Value<Image>(0, L"Image").Width, 200);
}

TEST(MainForm, TypingAThresholdAndDraggingItsSliderChangeTheResult)
{
    Workbench bench;
    bench.ReadImage();
    bench.Menu({"Process", "Point to point", "Binarization...", "Threshold"});
    ASSERT_EQ(bench.Count(), 2);
    auto* text = bench.Row<QLineEdit>("Threshold", "Text");
    auto* slider = bench.Row<QSlider>("Threshold", "Slider");
    ASSERT_TRUE(text && slider);
    EXPECT_EQ(text->text(), "Auto");
    const auto white = [&] {
        const Image& result = bench.Value<Image>(1, L"Dst");
        return std::count(result.Row(5), result.Row(5) + 200, 255);
    };
    text->setFocus();
    text->selectAll();
    QTest::keyClicks(text, "150");
    Workbench::Settle();
    EXPECT_EQ(bench.Value<int>(1, L"Threshold"), 150);
    const auto atTyped = white();
    EXPECT_NEAR(static_cast<double>(atTyped), 50, 1);
    QTest::keyClick(text, Qt::Key_Return);
    EXPECT_EQ(slider->value(), 150);

    // A drag by the mouse: the picture follows on each move, and the value stays after the release.
    const auto at = [&](int x) { return QPoint(x, slider->height() / 2); };
    const double perStep = (slider->width() - 12) / 255.0;
    const int from = static_cast<int>(6 + 150 * perStep);
    QTest::mousePress(slider, Qt::LeftButton, {}, at(from));
    QTest::mouseMove(slider, at(from - 20));
    Workbench::Settle();
    const int during = bench.Value<int>(1, L"Threshold");
    EXPECT_LT(during, 150);
    EXPECT_GT(white(), atTyped);
    QTest::mouseMove(slider, at(from - 40));
    QTest::mouseRelease(slider, Qt::LeftButton, {}, at(from - 40));
    Workbench::Settle();
    EXPECT_LT(bench.Value<int>(1, L"Threshold"), during);
    EXPECT_EQ(text->text(), QString::number(bench.Value<int>(1, L"Threshold")));
}

TEST(MainForm, FlippingTheRadioGroupSwapsTheMethodAndKeepsWhatFits)
{
    Workbench bench;
    bench.ReadImage();
    bench.Menu({"Process", "Point to point", "Image Arithmetic...", "Const + Image"});
    ASSERT_EQ(bench.Count(), 2);
    auto* group = bench.OperationWindow()->findChild<QGroupBox*>("MethodGroup");
    ASSERT_TRUE(group);
    QRadioButton* subtract = nullptr;
    for (auto* button : group->findChildren<QRadioButton*>())
        if (button->text() == "Image - Const") subtract = button;
    ASSERT_TRUE(subtract);
    bench.Value<int>(1, L"Const") = 40;
    subtract->click();
    Workbench::Settle();
    ASSERT_EQ(bench.Count(), 2);
    EXPECT_STREQ(Engine::Tree[bench.At(1).Node]->Identifier, L"Subtract");
    EXPECT_TRUE(bench.List().topLevelItem(1)->text(0).contains("(Operator.Subtract)"));
    EXPECT_TRUE(bench.Line(1, "Subtracted0")) << "the output is named after the method";
    const int constant = bench.Value<int>(1, L"Const");
    EXPECT_EQ(bench.Value<Image>(1, L"Dst").Row(0)[199], 199 - constant);

    // Two images are needed: the swap is taken back.
    QRadioButton* both = nullptr;
    for (auto* button : bench.OperationWindow()->findChild<QGroupBox*>("MethodGroup")->findChildren<QRadioButton*>())
        if (button->text() == "Image - Image") both = button;
    ASSERT_TRUE(both);
    bench.Answer("OK", "Cannot find a suitable Image input variable, please create it");
    both->click();
    Workbench::Settle();
    EXPECT_EQ(bench.Count(), 2);
}

TEST(MainForm, AFlipFromReadToWriteAsksForAnotherFile)
{
    Workbench bench;
    QTemporaryDir folder;
    const QString picture = folder.filePath("picture.bmp");
    ASSERT_TRUE(QFile::copy(Workbench::Picture(), picture));
    const auto bytes = [&](const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    const QByteArray before = bytes(picture);
    bench.ReadImage();
    bench.ReadImage(picture);
    const auto flip = [&] {
        for (auto* button :
             bench.OperationWindow()->findChild<QGroupBox*>("MethodGroup")->findChildren<QRadioButton*>())
            if (button->text().startsWith("Write")) QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, 8));
        Workbench::Settle();
    };
    bench.WhenModal([](QWidget* dialog) { static_cast<QDialog*>(dialog)->reject(); });
    flip();
    EXPECT_EQ(Engine::Tree[bench.At(1).Node]->Identifier, std::wstring(L"Read")) << "a cancel goes back";
    EXPECT_EQ(bytes(picture), before);
    const QString written = folder.filePath("written.bmp");
    FileDialogs::Pending() = QStringList{written};
    flip();
    EXPECT_EQ(bench.StatusText(), "");
    EXPECT_EQ(Engine::Tree[bench.At(1).Node]->Identifier, std::wstring(L"Write"));
    EXPECT_FALSE(bytes(written).isEmpty());
    EXPECT_EQ(bytes(picture), before) << "what was read is not written over";
}

TEST(MainForm, TheListMarksTheNewOperationAndIsWalkedByKeys)
{
    Workbench bench;
    bench.ReadImage();
    bench.Invert();
    EXPECT_EQ(bench.List().currentItem(), bench.List().topLevelItem(1));
    bench.List().setFocus();
    bench.List().setCurrentItem(bench.List().topLevelItem(0));
    QTest::keyClick(&bench.List(), Qt::Key_Return);
    Workbench::Settle();
    EXPECT_EQ(bench.Form().Handler().CurrentOperationId(), 0);
    EXPECT_TRUE(bench.List().hasFocus()) << "windows that come up leave the keyboard to the list";
    EXPECT_EQ(bench.List().currentItem(), bench.List().topLevelItem(0));
}

TEST(MainForm, HelpAndParametersStayAboveTheWindowThatIsActivated)
{
    Workbench bench;
    bench.ReadImage();
    bench.Invert();
    auto* area = bench.Form().findChild<QMdiArea*>();
    for (auto* window : bench.Form().findChildren<ToolWindow*>("PropertySheetController")) {
        area->setActiveSubWindow(window);
        Workbench::Settle();
        const auto order = area->subWindowList(QMdiArea::StackingOrder);
        EXPECT_EQ(order.back()->objectName(), "OperationContextualHelpForm");
        EXPECT_EQ(order[order.size() - 2], window);
    }
}

TEST(MainForm, APinnedValueStaysAdjustableWithAnotherOperationSelected)
{
    Workbench bench;
    bench.ReadImage();
    bench.Menu({"Process", "Point to point", "Binarization...", "Threshold"});
    bench.ClickLine(1, "Threshold");
    auto* parameters = bench.Form().findChild<QWidget*>("ParametersForm");
    ASSERT_TRUE(parameters);
    EXPECT_TRUE(parameters->isVisible());
    bench.ClickLine(0);
    EXPECT_TRUE(parameters->isVisible());
    auto* text = parameters->findChild<QLineEdit*>("Text");
    ASSERT_TRUE(text);
    text->selectAll();
    QTest::keyClicks(text, "90");
    Workbench::Settle();
    EXPECT_EQ(bench.Value<int>(1, L"Threshold"), 90);
    // The result is brought up to date when it is looked at.
    bench.ClickLine(1);
    EXPECT_NEAR(Mean(bench.Value<Image>(1, L"Dst")), 255 * 109 / 200, 2);
    bench.ClickLine(1, "Threshold");
    EXPECT_FALSE(parameters->isVisible());
}

TEST(MainForm, ClosingWithAPinnedValueSelectsNothing)
{
    Workbench bench;
    bench.ReadImage();
    bench.Menu({"Process", "Point to point", "Binarization...", "Threshold"});
    bench.ClickLine(1, "Threshold");
    bench.ClickLine(0);
    bench.ClickLine(1);
    // The window of the result is active: when it goes, the parameters are next.
    for (auto* window : bench.Form().findChildren<ToolWindow*>("PropertySheetController"))
        if (window->windowTitle() == "Binarized0") bench.Form().findChild<QMdiArea*>()->setActiveSubWindow(window);
    Workbench::Settle();
    int selections = 0;
    bench.Form().Handler().operationListSelectDelegate_ = [&](int, int, bool) { selections++; };
    bench.Restart();
    EXPECT_EQ(selections, 0);
}

TEST(MainForm, RenamingToATakenNameOffersASuffix)
{
    Workbench bench;
    bench.ReadImage();
    bench.Invert();
    const auto rename = [&](const QString& name) {
        QTreeWidgetItem* line = bench.Line(1, "Inverted0");
        ASSERT_TRUE(line);
        ChooseFromMenu("&Rename");
        emit bench.List().customContextMenuRequested(bench.List().visualItemRect(line).center());
        Workbench::Settle();
        auto* editor = bench.List().findChild<QLineEdit*>();
        ASSERT_TRUE(editor);
        EXPECT_EQ(editor->text(), "Inverted0");
        editor->setText(name);
        bench.Answer("Auto", "This variable name is already in use.");
        QTest::keyClick(editor, Qt::Key_Return);
        QTest::qWait(60);
    };
    rename("Image0");
    EXPECT_TRUE(bench.Line(1, "Image00 (Image)") || bench.Line(1, "Image01 (Image)"));
    EXPECT_EQ(bench.Value<Image>(1, L"Dst").Width, 200);
}

TEST(MainForm, ANameThatIsRefusedBehindAQuestionIsGivenUp)
{
    Workbench bench;
    bench.ReadImage();
    bench.Invert();
    bench.ClickLine(0);
    ChooseFromMenu("&Rename");
    emit bench.List().customContextMenuRequested(bench.List().visualItemRect(bench.Line(0, "Image0")).center());
    Workbench::Settle();
    auto* editor = bench.List().findChild<QLineEdit*>();
    ASSERT_TRUE(editor && editor->hasFocus());
    editor->setText("1a");
    // A menu leaves the editor open. The question where to insert takes the keyboard from it: the name is refused.
    QTimer answers;
    int asked = 0;
    QObject::connect(&answers, &QTimer::timeout, [&] {
        if (QWidget* box = QApplication::activeModalWidget()) {
            asked++;
            box->close();
        }
    });
    answers.start(50);
    bench.Invert();
    Workbench::Settle();
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(bench.Count(), 3);
    EXPECT_EQ(bench.List().topLevelItemCount(), 3);
    bench.ClickLine(0);
    EXPECT_EQ(bench.Form().Handler().CurrentOperationId(), 0) << "the list answers to clicks";
}

TEST(MainForm, DeletingToTheEndAsksAndEmptiesTheRest)
{
    Workbench bench;
    bench.ReadImage();
    bench.Invert();
    bench.Invert();
    ASSERT_EQ(bench.Count(), 3);
    bench.ClickLine(1);
    bench.Answer("Yes", "Do you want to delete this operation and the following one(s)?");
    ChooseFromMenu("&Delete to End");
    emit bench.List().customContextMenuRequested(bench.List().visualItemRect(bench.List().topLevelItem(1)).center());
    Workbench::Settle();
    EXPECT_EQ(bench.Count(), 1);
    EXPECT_EQ(bench.List().topLevelItemCount(), 1);
}

TEST(MainForm, TheOperationWindowDeletesANewOperationWithoutAsking)
{
    Workbench bench;
    bench.ReadImage();
    bench.Invert();
    auto* button = bench.OperationWindow()->findChild<QPushButton*>("Delete");
    QTest::mouseClick(button, Qt::LeftButton);
    Workbench::Settle();
    EXPECT_EQ(bench.Count(), 1);
    bench.ClickLine(0);
    // What a later operation reads cannot go.
    bench.Invert();
    bench.ClickLine(0);
    EXPECT_FALSE(bench.OperationWindow()->findChild<QPushButton*>("Delete")->isEnabled());
}

TEST(MainForm, TheScriptGoesToTheClipboardInTheLanguageChosen)
{
    Workbench bench;
    bench.ReadImage();
    bench.Invert();
    bench.Menu({"File", "Script", "Copy to Clipboard"});
    EXPECT_TRUE(QApplication::clipboard()->text().contains("Operator::Invert("));
    bench.Menu({"File", "Script", "Language", "C#"});
    bench.Menu({"File", "Script", "Copy to Clipboard"});
    EXPECT_TRUE(QApplication::clipboard()->text().contains("Operator.Invert("));
    QTemporaryDir folder;
    const QString path = folder.filePath("sequence.cs");
    FileDialogs::Pending() = QStringList{path};
    bench.Menu({"File", "Script", "Export to File"});
    std::ifstream file(path.toStdString());
    const std::string text((std::istreambuf_iterator<char>(file)), {});
    EXPECT_NE(text.find("Operator.Invert("), std::string::npos);
    bench.Menu({"File", "Script", "Language", "Native C++"});
}

TEST(MainForm, HidingTheHelpNarrowsTheWindowsAndEscapeClosesDialogs)
{
    Workbench bench;
    bench.ReadImage();
    bench.Menu({"Process", "Point to point", "Binarization...", "Threshold"});
    const int wide = bench.OperationWindow()->width();
    bench.Menu({"File", "Show Help"});
    EXPECT_LT(bench.OperationWindow()->width(), wide);
    for (auto* help : bench.OperationWindow()->findChildren<HelpWidget*>())
        EXPECT_FALSE(help->isVisible());
    bench.Menu({"File", "Show Help"});
    EXPECT_EQ(bench.OperationWindow()->width(), wide);
    // A sheet gives the room of its help back, a picture keeps its size.
    bench.Menu({"Process", "Morphology", "Basic Morphology...", "Dilate"});
    const auto widthOf = [&](const char* title) {
        for (auto* window : bench.Form().findChildren<ToolWindow*>("PropertySheetController"))
            if (window->windowTitle() == title) return window->width();
        return 0;
    };
    const int sheet = widthOf("Morpho0"), picture = widthOf("Image0");
    bench.Menu({"File", "Show Help"});
    EXPECT_LT(widthOf("Morpho0"), sheet);
    EXPECT_EQ(widthOf("Image0"), picture);
    bench.Menu({"File", "Show Help"});
    bench.ClickLine(1);
    bench.WhenModal([](QWidget* box) { QTest::keyClick(box, Qt::Key_Escape); });
    bench.ClickLine(1);
    QTest::mouseClick(bench.OperationWindow()->findChild<QPushButton*>("Delete"), Qt::LeftButton);
    Workbench::Settle();
}

TEST(MainForm, ALongRunShowsThatItIsAtWork)
{
    Workbench bench;
    bench.ReadImage();
    bench.Invert();
    int busy = 0;
    QString status;
    const auto former = bench.Engine().BeforeRun;
    bench.Engine().BeforeRun = [&](const Operation& operation) {
        former(operation);
        const QCursor* cursor = QApplication::overrideCursor();
        busy += cursor && cursor->shape() == Qt::BusyCursor;
        status = bench.StatusText();
    };
    const auto run = [&](int id) {
        bench.Engine().ChangeOperation(id);
        bench.Form().Handler().DoRun(nullptr, nullptr, false, false, false, false);
    };
    run(1);
    EXPECT_EQ(busy, 0);
    // It is known to be long now.
    bench.At(1).Duration = 600000;
    run(1);
    EXPECT_EQ(busy, 1);
    EXPECT_EQ(status, "Invert ...");
    EXPECT_EQ(bench.StatusText(), "");
    EXPECT_FALSE(QApplication::overrideCursor());
}

TEST(MainForm, ADroppedFileIsRead)
{
    Workbench bench;
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(Workbench::Picture())});
    QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&bench.Form(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&bench.Form(), &drop);
    Workbench::Settle();
    ASSERT_EQ(bench.Count(), 1);
    EXPECT_EQ(bench.Value<Image>(0, L"Image").Height, 120);
}
