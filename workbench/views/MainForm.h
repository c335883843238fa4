// The program's one top-level window: menus made from the tree, the work area, the list of operations, two settings.
#pragma once

#include "workbench/views/OperationViews.h"
#include "workbench/views/QtServices.h"

#include <QMainWindow>

#include <memory>

class QLabel;
class QMdiArea;
class QMenu;
class QTimer;

namespace TeskPlus {

class OperationList;
class OperationList2;

class MainForm final : public QMainWindow
{
    Q_OBJECT

public:
    /// `withSplash`: shows the splash for three seconds.
    explicit MainForm(bool withSplash = true);
    ~MainForm() override;

    static bool IsHelp();
    /// Sets and stores "Show Help".
    void SetIsHelp(bool shown);
    int Language() const { return language_; }
    void SetLanguage(int language);

    /// Reads an image file by the road of File > Image > Read.
    void OpenImage(const QString& path);
    /// Reads image files as soon as the window has taken its size on the screen, by which theirs take their places.
    void OpenWhenSettled(const QStringList& paths);

    Tesk::Engine& GetEngine() { return *engine_; }
    OperationHandler& Handler() { return *operationHandler_; }

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void CreateMenu();
    void CreateMenuItems(QMenu& menu, int node);
    void AddFileItems(QMenu& menu);
    void MenuItemClicked(const operationItemInfo& item);
    void ShowGettingStarted();
    void ShowSplash();
    void ExportToFile();

    QtServices services_;
    std::unique_ptr<Tesk::Engine> engine_;
    ControllerFactory factory_;
    ViewContext context_;
    QMdiArea* workArea_ = nullptr;
    QLabel* status_ = nullptr;
    std::unique_ptr<OperationViews> views_;
    std::unique_ptr<OperationHandler> operationHandler_;
    std::unique_ptr<OperationList> operationList_;
    OperationList2* listView_ = nullptr;
    QAction *showHelp_ = nullptr, *languageActions_[4] = {};
    int currentClassNode_ = -1, currentChoiceNode_ = -1, language_ = 0;
    bool withSplash_;
    QTimer* settled_ = nullptr; ///< runs while the window may still change its size
    QStringList waiting_;       ///< for that to be over
};

} // namespace TeskPlus
