#include "workbench/views/MainForm.h"

#include "foundation/Status.h"
#include "workbench/logic/OperationList.h"
#include "workbench/logic/ScriptExport.h"
#include "workbench/views/FileDialogs.h"
#include "workbench/views/OperationList2.h"
#include "workbench/views/Splash.h"
#include "workbench/views/Text.h"
#include "workbench/views/values/HelpWidget.h"

#include <QActionGroup>
#include <QApplication>
#include <QDragEnterEvent>
#include <QLabel>
#include <QMdiArea>
#include <QMenuBar>
#include <QMimeData>
#include <QScreen>
#include <QSplitter>
#include <QStatusBar>
#include <QTimer>

#include <algorithm>
#include <cwchar>
#include <utility>

namespace TeskPlus {

namespace {

constexpr int splashTime = 3000;
/// A window manager sets the size of a new window some time after the first showing: it is final when it has stayed for
/// so long, in ms.
constexpr int settlingTime = 150;
/// Width of the list of operations at the start, in pixels.
constexpr int listWidth = 340;

int ReadSetting(const wchar_t* name, int otherwise)
{
    const std::wstring text = Services::Settings().Read(name, std::to_wstring(otherwise));
    wchar_t* end = nullptr;
    const long value = std::wcstol(text.c_str(), &end, 10);
    return end == text.c_str() ? otherwise : static_cast<int>(std::clamp(value, -1000L, 1000L));
}

/// The menu entry of a label: a lone "&" is no shortcut.
QString MenuText(const wchar_t* label)
{
    return Qt16(label).replace("&", "&&");
}

} // namespace

MainForm::MainForm(bool withSplash) : engine_(std::make_unique<Engine>()), withSplash_(withSplash)
{
    setObjectName("MainForm");
    setWindowTitle(QString("Tesk+ for Tesk %1").arg(Qt16(Status::UnicodeVersion)));
    setAcceptDrops(true);

    auto* splitter = new QSplitter(Qt::Horizontal);
    splitter->setObjectName("splitContainer1");
    workArea_ = new QMdiArea;
    workArea_->setObjectName("WorkArea");
    workArea_->setBackground(palette().brush(QPalette::Dark));
    workArea_->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    workArea_->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    workArea_->setOption(QMdiArea::DontMaximizeSubWindowOnActivation);
    workArea_->viewport()->setAcceptDrops(true);
    workArea_->viewport()->installEventFilter(this);
    workArea_->installEventFilter(this);
    settled_ = new QTimer(this);
    settled_->setSingleShot(true);
    settled_->setInterval(settlingTime);
    connect(settled_, &QTimer::timeout, this, [this] {
        for (const QString& path : std::exchange(waiting_, {}))
            OpenImage(path);
    });
    splitter->addWidget(workArea_);
    setCentralWidget(splitter);

    status_ = new QLabel;
    status_->setObjectName("toolStripStatusLabel1");
    status_->setTextFormat(Qt::PlainText);
    QFont face = status_->font();
    face.setBold(true);
    status_->setFont(face);
    // A red that is readable on a light and on a dark window.
    status_->setStyleSheet(palette().color(QPalette::Window).lightness() < 128 ? "color: #ff6b6b" : "color: #c00000");
    statusBar()->addWidget(status_, 1);

    // Known before the first window asks for a place.
    HelpWidget::SetIsHelp(ReadSetting(L"help", 1) > 0);
    views_ = std::make_unique<OperationViews>(*this, *workArea_, *status_);
    operationHandler_ = std::make_unique<OperationHandler>(*engine_, *views_, factory_);
    views_->SetHandler(*operationHandler_);
    context_ = {engine_.get(), operationHandler_.get(), views_.get(), workArea_};
    RegisterValueControllers(factory_, context_);
    RegisterObjectControllers(factory_, context_);

    operationList_ = std::make_unique<OperationList>(*operationHandler_);
    operationList_->CopyScript = [this](int which) { CopyToClipboard(*engine_, language_, which); };
    operationList_->ExportScript = [this] { ExportToFile(); };
    listView_ = new OperationList2(*operationList_);
    splitter->addWidget(listView_);
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 0);
    splitter->setSizes({1280 - listWidth, listWidth});
    resize(QSize(1280, 860).boundedTo(screen()->availableSize()));

    // Shadows share their pixels: a destination gets a buffer of its own before it is written.
    Status::Shallow = true;
    language_ = std::clamp(ReadSetting(L"Language", 0), 0, LanguageCount - 1);
    CreateMenu();
}

MainForm::~MainForm()
{
    // Views go before what they show, and the controllers' windows before the work area that they stand in.
    delete listView_;
    // A window that goes has the work area activate another, which is nobody's wish.
    disconnect(workArea_, nullptr, views_.get(), nullptr);
    operationList_.reset();
    operationHandler_.reset();
    views_.reset();
}

bool MainForm::IsHelp()
{
    return HelpWidget::IsHelp();
}

void MainForm::SetIsHelp(bool shown)
{
    HelpWidget::SetIsHelp(shown);
    Services::Settings().Write(L"help", shown ? L"1" : L"0");
    showHelp_->setChecked(shown);
    views_->ToggleHelp();
    operationHandler_->UpdateContextualHelpForm();
}

void MainForm::SetLanguage(int language)
{
    language_ = language;
    Services::Settings().Write(L"Language", std::to_wstring(language));
    languageActions_[language]->setChecked(true);
}

void MainForm::CreateMenu()
{
    menuBar()->setObjectName("menuStrip_");
    for (int group = Engine::Tree[0]->FirstChild; group != -1; group = Engine::Tree[group]->NextSibling) {
        auto* menu = menuBar()->addMenu(MenuText(Engine::Tree[group]->Label));
        menu->setToolTipsVisible(true);
        menu->menuAction()->setData(group);
        CreateMenuItems(*menu, group);
        if (group == Engine::Tree[0]->FirstChild) AddFileItems(*menu);
    }
}

void MainForm::CreateMenuItems(QMenu& menu, int node)
{
    for (int child = Engine::Tree[node]->FirstChild; child != -1; child = Engine::Tree[child]->NextSibling) {
        const TreeNode* entry = Engine::Tree[child];
        switch (entry->Kind()) {
        case MethodKind: {
            QAction* action = menu.addAction(MenuText(entry->Label));
            if (entry->Flags & EntryMethod) action->setIcon(QIcon(":/point.png"));
            const operationItemInfo item{child, currentClassNode_, currentChoiceNode_, false};
            action->setData(child);
            const bool pending = Engine::IsPending(child);
            action->setEnabled(!pending);
            action->setToolTip(Qt16(pending ? Engine::PendingReason : entry->Documentation));
            connect(action, &QAction::triggered, this, [this, item] { MenuItemClicked(item); });
            break;
        }
        case ClassKind:
        case ChoiceKind: {
            if (entry->Kind() == ClassKind)
                currentClassNode_ = child;
            else
                currentChoiceNode_ = entry->Flags & GroupFlag ? child : -1;
            auto* below = menu.addMenu(MenuText(entry->Label));
            below->setToolTipsVisible(true);
            below->menuAction()->setData(child);
            below->menuAction()->setToolTip(Qt16(entry->Documentation));
            CreateMenuItems(*below, child);
            break;
        }
        default:
            // Enumerations have no entries, and pages are found by their sheets.
            break;
        }
    }
    currentChoiceNode_ = -1;
}

void MainForm::AddFileItems(QMenu& menu)
{
    menu.addSeparator();
    auto* script = menu.addMenu(tr("Script"));
    auto* language = script->addMenu(tr("Language"));
    auto* group = new QActionGroup(this);
    for (int i = 0; i < LanguageCount; i++) {
        languageActions_[i] = language->addAction(Qt16(LanguageNames[i]));
        languageActions_[i]->setCheckable(true);
        languageActions_[i]->setChecked(i == language_);
        group->addAction(languageActions_[i]);
        connect(languageActions_[i], &QAction::triggered, this, [this, i] { SetLanguage(i); });
    }
    connect(script->addAction(tr("Export to File")), &QAction::triggered, this, &MainForm::ExportToFile);
    connect(script->addAction(tr("Copy to Clipboard")), &QAction::triggered, this,
            [this] { CopyToClipboard(*engine_, language_, Auto); });
    showHelp_ = menu.addAction(tr("Show Help"));
    showHelp_->setCheckable(true);
    showHelp_->setChecked(IsHelp());
    showHelp_->setShortcut(QKeySequence::HelpContents);
    connect(showHelp_, &QAction::triggered, this, [this](bool shown) { SetIsHelp(shown); });
    QAction* exit = menu.addAction(tr("Exit"));
    exit->setShortcut(QKeySequence::Quit);
    connect(exit, &QAction::triggered, this, [] { QApplication::quit(); });
}

void MainForm::MenuItemClicked(const operationItemInfo& item)
{
    operationHandler_->MenuItemClicked(item);
    FileDialogs::Pending().clear();
}

void MainForm::ExportToFile()
{
    TeskPlus::ExportToFile(*engine_, *views_, language_);
}

void MainForm::OpenImage(const QString& path)
{
    // The first method of the tree reads an image from a file.
    constexpr int readImage = 87;
    FileDialogs::Pending() = QStringList{path};
    MenuItemClicked(ItemOfMethod(readImage));
}

void MainForm::OpenWhenSettled(const QStringList& paths)
{
    waiting_ += paths;
    settled_->start();
}

void MainForm::ShowGettingStarted()
{
    if (!IsHelp()) return;
    views_->ShowContextualHelp({{L"Getting Started", true},
                                {L"Start by loading an image (File > Image > Read from File).", false},
                                {L"Try the available operations in the menus.", false},
                                {L"Click on an existing operation to rework it.", false},
                                {L"Click on an existing variable to keep it visible.", false}});
}

void MainForm::ShowSplash()
{
    auto* splash = new Splash(this);
    splash->move(frameGeometry().center() - splash->rect().center());
    splash->show();
    QTimer::singleShot(splashTime, splash, &QWidget::close);
}

void MainForm::showEvent(QShowEvent* event)
{
    QMainWindow::showEvent(event);
    static constexpr const char* startedProperty = "Started";
    if (property(startedProperty).toBool()) return;
    setProperty(startedProperty, true);
    // The work area has its size only when the window is on the screen.
    QTimer::singleShot(0, this, [this] {
        if (engine_->NumOperations() == 0) ShowGettingStarted();
        if (withSplash_) ShowSplash();
    });
}

void MainForm::dragEnterEvent(QDragEnterEvent* event)
{
    if (event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void MainForm::dropEvent(QDropEvent* event)
{
    const QList<QUrl> urls = event->mimeData()->urls();
    event->acceptProposedAction();
    for (const QUrl& url : urls)
        if (url.isLocalFile()) OpenImage(url.toLocalFile());
}

bool MainForm::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == workArea_) {
        const bool isSettling = event->type() == QEvent::Resize || event->type() == QEvent::Show;
        if (isSettling && !waiting_.isEmpty()) settled_->start();
        // Behind the event, when its viewport has the size, too. The viewport alone changes with its scroll bars, while
        // the user moves a window to an edge.
        if (event->type() == QEvent::Resize)
            QTimer::singleShot(0, views_.get(), [this] { views_->KeepWindowsInside(); });
        return false;
    }
    // The work area takes drops for the window, whose child it is.
    if (event->type() == QEvent::DragEnter) {
        dragEnterEvent(static_cast<QDragEnterEvent*>(event));
        return event->isAccepted();
    }
    if (event->type() == QEvent::Drop) {
        dropEvent(static_cast<QDropEvent*>(event));
        return true;
    }
    return QMainWindow::eventFilter(watched, event);
}

} // namespace TeskPlus
