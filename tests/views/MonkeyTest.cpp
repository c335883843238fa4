// The windows are driven at random, as somebody would who tries everything: what a user sees stays in order whatever is
// done, and nothing crashes. The steps depend on the seed alone. TESK_MONKEY_SEED and TESK_MONKEY_STEPS ask for another
// run, TESK_MONKEY_TRACE prints each step before it is done.
#include "tests/views/Workbench.h"

#include "engine/Engine.h"
#include "workbench/logic/ScriptExport.h"
#include "workbench/views/OperationList2.h"
#include "workbench/views/ToolWindow.h"

#include <QComboBox>
#include <QElapsedTimer>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QPointer>
#include <QRadioButton>
#include <QSlider>
#include <QTabBar>
#include <QTableView>

#include <algorithm>
#include <cstdio>
#include <random>
#include <utility>

using namespace TeskPlus;

namespace {

/// A sequence longer than this is cut, and an image of more pixels ends the sequence: steps stay short.
constexpr int mostOperations = 10;
constexpr std::int64_t mostPixels = 1000000;

/// What somebody types who does not read the labels.
const QStringList texts = {"0",   "1",    "2",          "3",           "7",     "-1",       "255",  "256",  "65535",
                           "0.5", "-0.5", "2147483647", "-2147483648", "1e308", "99999999", "nan",  "inf",  "Auto",
                           "Aut", "-",    "",           ".",           "abc",   "12,5",     " 3",   "%s%n", "\"",
                           "\\",  "é",    "999999",     "MaxInt",      "90",    "100",      "1000", "-90",  "45"};
/// For numbers that decide how much is worked out.
const QStringList sizes = {"0", "1", "2", "3", "5", "7", "16", "64", "200", "-1", "-200", "", "abc", "1.5", "0.25"};
const QStringList names = {"a", "Zebra", "Image0", "1a", "", "two words", "int", "Dst"};

class Monkey
{
public:
    explicit Monkey(unsigned seed) : random_(seed)
    {
        MakePictures();
        trace_ = qEnvironmentVariableIsSet("TESK_MONKEY_TRACE");
        // The pointer rests on lines as long as it takes.
        for (auto* timer : bench_.Form().findChild<OperationList2*>()->findChildren<QTimer*>())
            timer->setInterval(0);
        QObject::connect(&answers_, &QTimer::timeout, [this] { Answer(); });
        answers_.start(1);
    }

    /// False once something is out of order; the steps until then are told.
    bool Step()
    {
        QElapsedTimer time;
        time.start();
        step_++;
        said_.clear();
        Act();
        Workbench::Settle();
        for (int i = 0; i < 20 && (QApplication::activePopupWidget() || QApplication::activeModalWidget()); i++) {
            Answer();
            Workbench::Settle();
        }
        FileDialogs::Pending().clear();
        // Where there is no window manager, nobody gives the window back what a box took from it.
        for (int i = 0; i < 20 && !bench_.Form().isActiveWindow(); i++) {
            bench_.Form().activateWindow();
            Workbench::Settle();
        }
        Workbench::Settle();
        log_ << QString("%1: %2").arg(step_).arg(said_.join("; "));
        slowest_ = std::max(slowest_, time.elapsed());
        if (trace_ && time.elapsed() > 500) std::fprintf(stderr, "  took %lld ms\n", time.elapsed());
        Check();
        if (testing::Test::HasFailure()) {
            ADD_FAILURE() << log_.mid(std::max<qsizetype>(0, log_.size() - 25)).join("\n").toStdString();
            return false;
        }
        KeepSmall();
        return true;
    }

    qint64 Slowest() const { return slowest_; }

private:
    int Below(int count) { return count > 0 ? static_cast<int>(random_() % static_cast<unsigned>(count)) : 0; }
    bool Chance(int percent) { return Below(100) < percent; }
    template <typename List>
    auto& Any(List& list)
    {
        return list[static_cast<typename List::size_type>(Below(static_cast<int>(list.size())))];
    }
    void Say(const QString& what)
    {
        said_ << what;
        if (trace_) std::fprintf(stderr, "%d %s\n", step_, qPrintable(what));
    }

    /// The widgets of a kind that a user could reach.
    template <typename Widget>
    QList<Widget*> Reachable()
    {
        QList<Widget*> found;
        for (auto* widget : bench_.Form().centralWidget()->findChildren<Widget*>())
            if (widget->isVisible() && widget->isEnabled()) found << widget;
        return found;
    }
    static QString NameOf(const QWidget* widget)
    {
        QStringList path;
        for (; widget && path.size() < 12; widget = widget->parentWidget()) {
            if (!widget->objectName().isEmpty() && !widget->objectName().startsWith("qt_"))
                path << widget->objectName();
            if (qobject_cast<const QMdiSubWindow*>(widget)) {
                path << widget->windowTitle();
                break;
            }
        }
        return path.join(" of ");
    }

    void MakePictures()
    {
        const auto make = [&](const char* name, int width, int height, PixelTypes type) {
            Image image;
            image.Set(width, height, type);
            for (int y = 0; y < height; y++)
                for (int x = 0; x < RowBytes(width, type); x++)
                    image.Row(y)[x] = static_cast<std::uint8_t>((x * 7 + y * y) % 251);
            paths_ << folder_.filePath(name);
            image.Write(paths_.back().toStdString().c_str());
        };
        make("gray.png", 90, 70, Gray);
        make("color.bmp", 64, 48, Rgb);
        make("deep.png", 33, 21, Gray16);
        make("point.bmp", 1, 1, Gray);
        make("line.png", 100, 1, Gray);
        paths_ << folder_.filePath("missing.png") << folder_.filePath("broken.png") << folder_.path() << "";
        QFile broken(folder_.filePath("broken.png"));
        if (broken.open(QIODevice::WriteOnly)) broken.write("no picture");
    }

    /// What waits for an answer gets one.
    void Answer()
    {
        if (auto* popup = QApplication::activePopupWidget()) {
            auto* menu = qobject_cast<QMenu*>(popup);
            QList<QAction*> entries;
            if (menu)
                for (QAction* action : menu->actions())
                    if (action->isEnabled() && !action->isSeparator()) entries << action;
            if (entries.isEmpty() || Chance(15)) {
                Say("leave " + popup->objectName());
                popup->close();
                return;
            }
            QAction* entry = Any(entries);
            Say("choose " + entry->text());
            if (Chance(80)) FileDialogs::Pending() = QStringList{folder_.filePath("script.txt")};
            menu->setActiveAction(entry);
            QTest::keyClick(menu, Qt::Key_Return);
            return;
        }
        QWidget* modal = QApplication::activeModalWidget();
        if (!modal) return;
        if (auto* dialog = qobject_cast<QFileDialog*>(modal)) {
            Say("cancel the file");
            dialog->reject();
            return;
        }
        const QList<QAbstractButton*> buttons = modal->findChildren<QAbstractButton*>();
        if (buttons.isEmpty() || Chance(10)) {
            Say("escape");
            QTest::keyClick(modal, Qt::Key_Escape);
            return;
        }
        QAbstractButton* button = Any(buttons);
        Say("answer " + button->text());
        QTest::mouseClick(button, Qt::LeftButton);
    }

    void Act()
    {
        using Deed = void (Monkey::*)();
        static constexpr std::pair<int, Deed> deeds[] = {
            {20, &Monkey::Choose},  {14, &Monkey::Press},    {12, &Monkey::Enter},       {8, &Monkey::Slide},
            {8, &Monkey::Select},   {6, &Monkey::ChangeTab}, {10, &Monkey::DragPicture}, {10, &Monkey::ClickList},
            {6, &Monkey::AskMenu},  {5, &Monkey::Glance},    {4, &Monkey::Expand},       {4, &Monkey::Wheel},
            {5, &Monkey::EditName}, {4, &Monkey::EditCell},  {4, &Monkey::TouchWindow},  {3, &Monkey::Configure},
            {2, &Monkey::PressKey}, {1, &Monkey::Drop},      {1, &Monkey::DeleteToEnd},  {1, &Monkey::DropSelection},
        };
        int total = 0;
        for (const auto& [weight, deed] : deeds)
            total += weight;
        int place = Below(total);
        if (bench_.Count() == 0 && Chance(70)) {
            Say("read");
            FileDialogs::Pending() = QStringList{Any(paths_)};
            if (QAction* read = bench_.Entry({"File", "Image", "Image File...", "Read  from File"})) read->trigger();
            return;
        }
        for (const auto& [weight, deed] : deeds) {
            place -= weight;
            if (place < 0) {
                (this->*deed)();
                return;
            }
        }
    }

    void OfferFile(bool toWrite)
    {
        if (Chance(90)) FileDialogs::Pending() = QStringList{toWrite ? folder_.filePath("written.png") : Any(paths_)};
    }

    /// The enabled entries that add an operation.
    QList<QAction*> Entries()
    {
        QList<QAction*> entries;
        std::function<void(const QList<QAction*>&)> visit = [&](const QList<QAction*>& actions) {
            for (QAction* action : actions) {
                if (action->menu())
                    visit(action->menu()->actions());
                else if (action->data().isValid() && action->isEnabled())
                    entries << action;
            }
        };
        visit(bench_.Form().menuBar()->actions());
        return entries;
    }

    void Choose()
    {
        const auto entries = Entries();
        QAction* entry = Any(entries);
        Say("menu " + entry->text());
        OfferFile(entry->text().contains("Write"));
        entry->trigger();
    }

    void Press()
    {
        const auto buttons = Reachable<QAbstractButton>();
        if (buttons.isEmpty()) return;
        QAbstractButton* button = Any(buttons);
        Say("press " + button->text() + " " + NameOf(button));
        OfferFile(button->text().contains("Write"));
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
    }

    static void Type(QWidget* widget, const QString& text)
    {
        const QPointer<QWidget> alive = widget;
        for (const QChar c : text) {
            QKeyEvent press(QEvent::KeyPress, 0, {}, QString(c)), release(QEvent::KeyRelease, 0, {}, QString(c));
            if (alive) QApplication::sendEvent(widget, &press);
            if (alive) QApplication::sendEvent(widget, &release);
        }
    }

    /// Whether a number is of those that decide how much is worked out.
    static bool IsSize(const QWidget* widget)
    {
        const QString name = NameOf(widget);
        for (const char* part : {"idth", "eight", "ize", "cale", "actor", "oom", "N", "Step", "Length", "Count"})
            if (name.contains(part)) return true;
        return false;
    }

    void Enter()
    {
        QList<QLineEdit*> boxes;
        for (QLineEdit* box : Reachable<QLineEdit>())
            if (!box->isReadOnly() && !bench_.List().isAncestorOf(box)) boxes << box;
        if (boxes.isEmpty()) return;
        const QPointer<QLineEdit> box = Any(boxes);
        const QString text = IsSize(box) || Chance(20) ? Any(sizes) : Any(texts);
        Say("type '" + text + "' in " + NameOf(box));
        box->setFocus();
        if (Chance(90)) box->selectAll();
        if (text.isEmpty()) QTest::keyClick(box.data(), Qt::Key_Delete);
        Type(box, text);
        if (box && Chance(60)) QTest::keyClick(box.data(), Chance(70) ? Qt::Key_Return : Qt::Key_Tab);
    }

    void Slide()
    {
        QList<QSlider*> sliders;
        for (QSlider* slider : Reachable<QSlider>())
            sliders << slider;
        if (sliders.isEmpty()) return;
        const QPointer<QSlider> slider = Any(sliders);
        const auto anywhere = [&] { return QPoint(Below(slider->width() + 20) - 10, slider->height() / 2); };
        Say("slide " + NameOf(slider));
        if (IsSize(slider) && slider->maximum() > 1000) {
            slider->setValue(Below(300));
            return;
        }
        QTest::mousePress(slider.data(), Qt::LeftButton, {}, anywhere());
        for (int i = Below(4); i > 0 && slider; i--)
            MoveWithButton(slider, anywhere());
        if (slider) QTest::mouseRelease(slider.data(), Qt::LeftButton, {}, anywhere());
    }

    void Select()
    {
        const auto combos = Reachable<QComboBox>();
        const auto lists = Reachable<QListWidget>();
        if (!combos.isEmpty() && (lists.isEmpty() || Chance(80))) {
            const QPointer<QComboBox> combo = Any(combos);
            const int item = Below(combo->count());
            Say(QString("select %1 in %2").arg(combo->itemText(item), NameOf(combo)));
            if (Chance(30)) QTest::mouseClick(combo.data(), Qt::LeftButton, {}, QPoint(5, 5));
            if (combo) combo->setCurrentIndex(item);
        } else if (!lists.isEmpty()) {
            QListWidget* list = Any(lists);
            Say("select in " + NameOf(list));
            list->setCurrentRow(Below(list->count()));
        }
    }

    void ChangeTab()
    {
        const auto bars = Reachable<QTabBar>();
        if (bars.isEmpty()) return;
        QTabBar* bar = Any(bars);
        const int tab = Below(bar->count());
        if (!bar->isTabEnabled(tab)) return;
        Say("tab " + bar->tabText(tab) + " of " + NameOf(bar));
        OfferFile(bar->tabText(tab).contains("Write"));
        bar->setCurrentIndex(tab);
    }

    /// A mouse reports moves with the button that is down.
    static void MoveWithButton(QWidget* widget, QPoint at)
    {
        QMouseEvent move(QEvent::MouseMove, at, widget->mapToGlobal(at), Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(widget, &move);
    }

    QList<QWidget*> Pictures()
    {
        QList<QWidget*> pictures;
        for (QWidget* widget : Reachable<QWidget>())
            if (widget->objectName() == "panelImage") pictures << widget;
        return pictures;
    }

    void DragPicture()
    {
        const auto pictures = Pictures();
        if (pictures.isEmpty()) return;
        const QPointer<QWidget> picture = Any(pictures);
        const auto anywhere = [&] {
            return QPoint(Below(picture->width() + 40) - 20, Below(picture->height() + 40) - 20);
        };
        // Where the pointer changes there is something to take.
        QPoint from = anywhere();
        for (int i = 0; i < 60; i++) {
            const QPoint at = anywhere();
            QMouseEvent move(QEvent::MouseMove, at, picture->mapToGlobal(at), Qt::NoButton, Qt::NoButton, {});
            QApplication::sendEvent(picture, &move);
            if (picture->cursor().shape() == Qt::ArrowCursor) continue;
            from = at;
            break;
        }
        Say(QString("drag from (%1, %2) on %3").arg(from.x()).arg(from.y()).arg(NameOf(picture)));
        QTest::mousePress(picture.data(), Qt::LeftButton, {}, from);
        for (int i = 1 + Below(3); i > 0 && picture; i--)
            MoveWithButton(picture, anywhere());
        if (picture && Chance(95)) QTest::mouseRelease(picture.data(), Qt::LeftButton, {}, anywhere());
    }

    QTreeWidgetItem* AnyLine()
    {
        QTreeWidget& list = bench_.List();
        QTreeWidgetItem* item = list.topLevelItem(Below(list.topLevelItemCount()));
        while (item && item->childCount() > 0 && item->isExpanded() && Chance(70))
            item = item->child(Below(item->childCount()));
        return item;
    }
    QPoint PlaceOf(QTreeWidgetItem* item)
    {
        bench_.List().scrollToItem(item);
        return bench_.List().visualItemRect(item).center();
    }

    void AskListMenu(QPoint at)
    {
        QTest::mouseClick(bench_.List().viewport(), Qt::RightButton, {}, at);
        emit bench_.List().customContextMenuRequested(at);
    }

    void ClickList()
    {
        QTreeWidgetItem* item = AnyLine();
        if (!item) return;
        Say("click line " + item->text(0));
        const QPoint at = PlaceOf(item);
        if (Chance(10))
            QTest::mouseDClick(bench_.List().viewport(), Qt::LeftButton, {}, at);
        else
            QTest::mouseClick(bench_.List().viewport(), Qt::LeftButton, {}, at);
    }

    void AskMenu()
    {
        if (Chance(60)) {
            QTreeWidgetItem* item = AnyLine();
            Say("menu of line " + (item ? item->text(0) : QString()));
            AskListMenu(item && Chance(90) ? PlaceOf(item) : QPoint(5, bench_.List().viewport()->height() - 5));
            return;
        }
        QList<QWidget*> widgets;
        for (QWidget* widget : Reachable<QWidget>())
            if (widget->objectName() == "panelImage" || widget->contextMenuPolicy() == Qt::CustomContextMenu ||
                widget->objectName() == "Swatch")
                widgets << widget;
        if (widgets.isEmpty()) return;
        QWidget* widget = Any(widgets);
        Say("menu of " + NameOf(widget));
        const QPoint at(Below(widget->width()), Below(widget->height()));
        if (widget->contextMenuPolicy() == Qt::CustomContextMenu)
            emit widget->customContextMenuRequested(at);
        else
            QTest::mouseClick(widget, Qt::RightButton, {}, at);
    }

    void Glance()
    {
        QTreeWidgetItem* item = AnyLine();
        if (!item) return;
        Say("rest on line " + item->text(0));
        QTest::mouseMove(bench_.List().viewport(), PlaceOf(item));
        QMouseEvent move(QEvent::MouseMove, PlaceOf(item), bench_.List().viewport()->mapToGlobal(PlaceOf(item)),
                         Qt::NoButton, Qt::NoButton, {});
        QApplication::sendEvent(bench_.List().viewport(), &move);
        Workbench::Settle();
        if (Chance(50)) return;
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(bench_.List().viewport(), &leave);
    }

    void Expand()
    {
        QTreeWidgetItem* item = AnyLine();
        if (!item) return;
        Say("expand or collapse " + item->text(0));
        item->setExpanded(!item->isExpanded());
    }

    void Wheel()
    {
        auto widgets = Pictures();
        widgets << bench_.List().viewport();
        QWidget* widget = Any(widgets);
        Say("wheel on " + NameOf(widget));
        const QPointF at(Below(widget->width()), Below(widget->height()));
        QWheelEvent turn(at, widget->mapToGlobal(at), {}, {0, Chance(50) ? 120 : -240}, Qt::NoButton,
                         Chance(70) ? Qt::ControlModifier : Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(widget, &turn);
    }

    /// The line whose name is being edited, or one that is to be.
    void EditName()
    {
        if (!bench_.List().findChild<QLineEdit*>()) {
            QTreeWidgetItem* operation = bench_.List().topLevelItem(bench_.Form().Handler().CurrentOperationId());
            if (!operation || operation->childCount() == 0) return;
            QTreeWidgetItem* item = operation->child(Below(operation->childCount()));
            Say("rename " + item->text(0));
            AskListMenu(PlaceOf(item));
            Workbench::Settle();
        }
        const QPointer<QLineEdit> editor = bench_.List().findChild<QLineEdit*>();
        if (!editor || Chance(30)) return;
        const QString name = Any(names);
        Say("name '" + name + "'");
        editor->selectAll();
        if (name.isEmpty()) QTest::keyClick(editor.data(), Qt::Key_Delete);
        Type(editor, name);
        if (editor && Chance(90)) QTest::keyClick(editor.data(), Chance(80) ? Qt::Key_Return : Qt::Key_Escape);
    }

    void EditCell()
    {
        const auto tables = Reachable<QTableView>();
        if (tables.isEmpty()) {
            QAction* entry = nullptr;
            for (QAction* action : Entries())
                if (action->text() == "Convolve") entry = action;
            if (!entry || Chance(50)) return;
            Say("menu Convolve");
            entry->trigger();
            return;
        }
        QTableView* table = Any(tables);
        if (!table->model() || table->model()->rowCount() == 0 || table->model()->columnCount() == 0) return;
        const QModelIndex cell =
            table->model()->index(Below(table->model()->rowCount()), Below(table->model()->columnCount()));
        const QString text = Any(texts);
        Say("cell '" + text + "' of " + NameOf(table));
        table->setFocus();
        table->setCurrentIndex(cell);
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, table->visualRect(cell).center());
        if (!(table->model()->flags(cell) & Qt::ItemIsEditable)) return;
        table->edit(cell);
        const QPointer<QLineEdit> editor = table->viewport()->findChild<QLineEdit*>();
        if (!editor) return;
        editor->selectAll();
        Type(editor, text);
        if (editor && Chance(90)) QTest::keyClick(editor.data(), Chance(80) ? Qt::Key_Return : Qt::Key_Escape);
    }

    void TouchWindow()
    {
        QList<ToolWindow*> windows = Reachable<ToolWindow>();
        if (windows.isEmpty()) return;
        ToolWindow* window = Any(windows);
        const int deed = Below(4);
        Say(QString("window %1 %2").arg(window->windowTitle()).arg(deed));
        auto* area = bench_.Form().findChild<QMdiArea*>();
        if (deed == 0)
            window->move(Below(1200), Below(800));
        else if (deed == 1)
            window->resize(Below(900), Below(700));
        else if (deed == 2)
            area->setActiveSubWindow(window);
        else
            QTest::mouseClick(window->widget(), Qt::LeftButton, {}, QPoint(2, 2));
    }

    void Configure()
    {
        const QList<QStringList> entries = {{"File", "Show Help"},
                                            {"File", "Script", "Copy to Clipboard"},
                                            {"File", "Script", "Export to File"},
                                            {"File", "Script", "Language", "C#"},
                                            {"File", "Script", "Language", "Visual Basic"},
                                            {"File", "Script", "Language", "Native C++"}};
        const QStringList& path = Any(entries);
        Say(path.back());
        if (Chance(90)) FileDialogs::Pending() = QStringList{folder_.filePath("script.txt")};
        if (QAction* entry = bench_.Entry(path)) entry->trigger();
    }

    void PressKey()
    {
        QWidget* widget = QApplication::focusWidget();
        if (!widget) return;
        const QList<Qt::Key> keys = {Qt::Key_Up,    Qt::Key_Down, Qt::Key_PageDown, Qt::Key_Return, Qt::Key_Space,
                                     Qt::Key_Right, Qt::Key_Left, Qt::Key_Tab,      Qt::Key_Escape, Qt::Key_Menu};
        const Qt::Key key = Any(keys);
        Say(QString("key %1 in %2").arg(key, 0, 16).arg(NameOf(widget)));
        QTest::keyClick(widget, key);
    }

    void Drop()
    {
        const QString path = Any(paths_);
        Say("drop " + path);
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(path)});
        QDropEvent drop(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&bench_.Form(), &drop);
    }

    void DeleteToEnd()
    {
        if (bench_.Count() == 0) return;
        const int first = Below(bench_.Count());
        Say(QString("delete from %1 on").arg(first));
        bench_.List().setFocus();
        bench_.Form().Handler().DeleteToEnd(first);
    }

    void DropSelection()
    {
        Say("select none");
        bench_.List().setFocus();
        bench_.Form().Handler().SelectNone();
    }

    void KeepSmall()
    {
        bool large = bench_.Count() > mostOperations;
        for (const AnyVariable* variable : bench_.Engine().GetVariables(-1, 0, true))
            if (const auto* image = dynamic_cast<const Var<Image>*>(variable))
                large = large || std::int64_t{image->Value.StoreWidth} * image->Value.StoreHeight > mostPixels;
        if (!large) return;
        Say("start again");
        bench_.List().setFocus();
        bench_.Form().Handler().DeleteToEnd(bench_.Count() > mostOperations ? 2 : 0);
        Workbench::Settle();
    }

    /// What a user sees is in order.
    void Check()
    {
        OperationHandler& handler = bench_.Form().Handler();
        EXPECT_FALSE(QApplication::activeModalWidget()) << "a box is left";
        EXPECT_FALSE(QApplication::activePopupWidget()) << "a menu is left";
        EXPECT_FALSE(QApplication::overrideCursor()) << "the pointer is not put back";
        EXPECT_FALSE(handler.OperationSelectMode());
        CheckList();
        CheckWindows();
        CheckStatus();
        for (int language = 0; language < LanguageCount; language++) {
            const std::wstring script = ScriptText(bench_.Engine(), language);
            for (const auto& operation : bench_.Engine().Operations)
                EXPECT_NE(script.find(Tesk::Engine::Tree[operation->Node]->Identifier), std::wstring::npos);
        }
        for (const auto& controller : handler.Controllers()) {
            ASSERT_TRUE(controller->CurrentVariable()) << Narrow(controller->VariableIdentifier().c_str());
            EXPECT_EQ(Narrow(controller->CurrentVariable()->NameText.c_str()),
                      Narrow(controller->VariableIdentifier().c_str()));
        }
        for (const ParameterRow& row : handler.Parameters().Rows()) {
            EXPECT_TRUE(row.Controller->CurrentVariable());
            EXPECT_TRUE(IsOperation(row.Owner));
        }
    }

    bool IsOperation(const Operation* sought)
    {
        for (const auto& operation : bench_.Engine().Operations)
            if (operation.get() == sought) return true;
        return false;
    }

    void CheckList()
    {
        QTreeWidget& list = bench_.List();
        ASSERT_EQ(list.topLevelItemCount(), bench_.Count());
        if (list.findChild<QLineEdit*>()) return;
        for (int i = 0; i < bench_.Count(); i++) {
            const Operation& operation = bench_.At(i);
            const QTreeWidgetItem* line = list.topLevelItem(i);
            const auto method = QString::fromWCharArray(Tesk::Engine::Tree[operation.Node]->Identifier);
            EXPECT_TRUE(line->text(0).contains("." + method + ")")) << line->text(0).toStdString();
            EXPECT_EQ(line->icon(0).isNull(), i != bench_.Form().Handler().CurrentOperationId())
                << "the mark stands at the selected operation";
            for (int k = 0; k < line->childCount(); k++) {
                const std::wstring name = line->child(k)->text(0).section(' ', 0, 0).toStdWString();
                EXPECT_TRUE(std::any_of(operation.Args.begin(), operation.Args.end(),
                                        [&](const Arg& a) { return a.Variable && a.Variable->NameText == name; }))
                    << line->text(0).toStdString() << " has no " << Narrow(name.c_str());
            }
        }
    }

    void CheckWindows()
    {
        int shown = 0;
        for (auto* window : bench_.Form().findChildren<OperationForm*>("OperationForm"))
            shown += window->isVisible();
        EXPECT_LE(shown, 1);
        EXPECT_TRUE(shown == 1 || !bench_.Form().Handler().CurrentOperation());
        EXPECT_TRUE(bench_.Count() > 0 || shown == 0);
        for (auto* window : bench_.Form().findChildren<ToolWindow*>()) {
            if (!window->isVisible()) continue;
            if (window->objectName() != "PropertySheetController" && window->objectName() != "ImageForm") continue;
            EXPECT_TRUE(bench_.Form().Handler().GetController(window->windowTitle().toStdWString()))
                << window->windowTitle().toStdString() << " is shown and is no variable";
        }
        for (auto* button : bench_.Form().findChildren<QRadioButton*>())
            EXPECT_FALSE(button->text().isEmpty());
    }

    void CheckStatus()
    {
        const QString status = bench_.StatusText();
        if (status.isEmpty()) return;
        EXPECT_TRUE(status.size() > 8 && status[0].isUpper() && status.contains(' ')) << status.toStdString();
        EXPECT_FALSE(status.endsWith("...")) << status.toStdString();
        for (const QChar c : status)
            EXPECT_TRUE(c.isPrint()) << status.toStdString();
    }

    std::mt19937 random_;
    QTemporaryDir folder_;
    Workbench bench_;
    QTimer answers_;
    QStringList paths_, log_, said_;
    qint64 slowest_ = 0;
    int step_ = 0;
    bool trace_ = false;
};

void Drive(unsigned seed, int steps)
{
    SCOPED_TRACE("seed " + std::to_string(seed));
    Monkey monkey(seed);
    for (int i = 0; i < steps; i++)
        if (!monkey.Step()) return;
    if (qEnvironmentVariableIsSet("TESK_MONKEY_SEED"))
        std::fprintf(stderr, "seed %u: %d steps, the slowest took %lld ms\n", seed, steps, monkey.Slowest());
}

} // namespace

TEST(Monkey, WhateverIsDoneTheWindowsStayInOrder)
{
    bool asked = false;
    const int seed = qEnvironmentVariableIntValue("TESK_MONKEY_SEED", &asked);
    const int steps = qEnvironmentVariableIntValue("TESK_MONKEY_STEPS");
    if (asked)
        Drive(static_cast<unsigned>(seed), steps > 0 ? steps : 300);
    else
        for (const unsigned fixed : {1u, 2u, 3u})
            if (!testing::Test::HasFailure()) Drive(fixed, 100);
}
