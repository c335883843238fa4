// A window that floats over the work area: a bar with a pin and room for buttons, and a content below it.
#pragma once

#include "workbench/logic/IController.h"
#include "workbench/logic/OperationItemInfo.h"

#include <QMdiSubWindow>

class QHBoxLayout;
class QLabel;
class QMdiArea;
class QVBoxLayout;

namespace TeskPlus {

class ToolWindow : public QMdiSubWindow
{
    Q_OBJECT

public:
    static constexpr int barHeight = 23;

    /// Made hidden. `name` is the object name, by which the order of the windows and the tests know it.
    ToolWindow(QMdiArea& area, const QString& name, bool hasBar = true);

    /// The bar's layout, behind the pin; widgets added here stand from the left.
    QHBoxLayout& Bar() { return *bar_; }
    /// The layout below the bar.
    QVBoxLayout& Content() { return *content_; }
    /// Shows in the bar, and in the order of the windows, whether a controller keeps this one on the screen.
    void SetPinned(bool pinned);
    bool IsPinned() const { return isPinned_; }
    /// Puts the window at a place of the work area, moved so that its bar stays in reach.
    void Place(WindowPoint location);
    /// Takes the size that the content asks for, up to that of the work area; scroll bars show the rest. A window that
    /// grows stays inside.
    void FitContent();
    /// Back into the work area, as far as it has room.
    void StayInside();
    /// Whether what the window shows is out of date: its bar is then hatched.
    void SetStale(bool stale);
    bool IsStale() const { return isStale_; }
    /// Shows the window, and leaves the keyboard where it is.
    void ShowQuietly();
    /// Above all others but the topmost ones.
    void BringToFront();
    /// Such windows stay above the others, the higher above the lower.
    void SetTopmost(int rank) { topmost_ = rank; }
    int Topmost() const { return topmost_; }
    static void RaiseTopmost(const QMdiArea& area);

signals:
    /// The user resized the window, rather than the program.
    void Resized();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    QMdiArea& area_;
    QWidget* frame_;
    QWidget* barWidget_;
    QHBoxLayout* bar_;
    QVBoxLayout* content_;
    QLabel* pin_;
    int topmost_ = 0;
    bool isPinned_ = false, isStale_ = false, fitting_ = false;
};

} // namespace TeskPlus
