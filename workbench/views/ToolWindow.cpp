#include "workbench/views/ToolWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMdiArea>
#include <QPainter>
#include <QPointer>
#include <QScrollArea>
#include <QStyle>
#include <QVBoxLayout>

#include <algorithm>
#include <vector>

namespace TeskPlus {

namespace {

/// Widgets that have just been put into a window on the screen are shown only with the next events, and a layout does
/// not count what is not shown.
void ShowNewWidgets(QLayout& layout)
{
    for (int i = 0; i < layout.count(); i++) {
        QLayoutItem* item = layout.itemAt(i);
        if (QLayout* inner = item->layout()) ShowNewWidgets(*inner);
        QWidget* widget = item->widget();
        if (widget && widget->isHidden() && !widget->testAttribute(Qt::WA_WState_ExplicitShowHide)) widget->show();
    }
}

/// The background of a bar whose window is out of date.
QBrush Hatching(const QPalette& palette)
{
    constexpr int side = 12;
    QPixmap tile(side, side);
    tile.fill(palette.color(QPalette::Midlight));
    QPainter painter(&tile);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(236, 170, 110), 3));
    for (const int shift : {-side, 0, side})
        painter.drawLine(shift, side, shift + side, 0);
    return QBrush(tile);
}

/// Brings what the layouts know of their widgets' sizes up to date, from the innermost outwards. Otherwise that takes a
/// round of events for each level, and happens not at all in a window that is hidden.
void RefreshLayouts(QWidget& widget)
{
    if (widget.layout()) ShowNewWidgets(*widget.layout());
    for (QWidget* child : widget.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
        if (!child->isWindow()) RefreshLayouts(*child);
    if (!widget.layout()) return;
    widget.layout()->invalidate();
    widget.layout()->activate();
}

} // namespace

ToolWindow::ToolWindow(QMdiArea& area, const QString& name, bool hasBar)
    : QMdiSubWindow(nullptr, Qt::SubWindow | Qt::CustomizeWindowHint | Qt::WindowTitleHint), area_(area)
{
    setObjectName(name);
    auto* scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    frame_ = new QWidget;
    auto* column = new QVBoxLayout(frame_);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    barWidget_ = new QWidget(frame_);
    barWidget_->setObjectName("Bar");
    barWidget_->setAutoFillBackground(true);
    barWidget_->setBackgroundRole(QPalette::Midlight);
    bar_ = new QHBoxLayout(barWidget_);
    bar_->setContentsMargins(2, 0, 4, 0);
    bar_->setSpacing(6);
    pin_ = new QLabel(barWidget_);
    pin_->setObjectName("Pin");
    pin_->setFixedSize(21, 21);
    pin_->setScaledContents(true);
    bar_->addWidget(pin_, 0, Qt::AlignLeft);
    barWidget_->setMinimumHeight(barHeight);
    barWidget_->setVisible(hasBar);
    column->addWidget(barWidget_);
    content_ = new QVBoxLayout;
    content_->setContentsMargins(4, 4, 4, 4);
    column->addLayout(content_, 1);
    scroll->setWidget(frame_);
    setWidget(scroll);
    area_.addSubWindow(this, windowFlags());
    hide();
    SetPinned(false);
}

void ToolWindow::SetPinned(bool pinned)
{
    isPinned_ = pinned;
    pin_->setPixmap(QPixmap(pinned ? ":/OkOk32.bmp" : ":/Ok32.bmp"));
    pin_->setToolTip(pinned ? tr("Pinned: stays visible whichever operation is selected")
                            : tr("Click the variable in the list of operations to keep this window visible"));
    setProperty("Tag", pinned ? "Pined" : "UnPined");
}

void ToolWindow::Place(WindowPoint location)
{
    const QSize room = area_.viewport()->size();
    const int x = std::clamp(location.X, 0, std::max(0, room.width() - 60));
    const int y = std::clamp(location.Y, 0, std::max(0, room.height() - 2 * barHeight));
    move(x, y);
}

void ToolWindow::StayInside()
{
    const QSize room = area_.viewport()->size();
    move(std::clamp(x(), 0, std::max(0, room.width() - width())),
         std::clamp(y(), 0, std::max(0, room.height() - height())));
}

void ToolWindow::SetStale(bool stale)
{
    if (stale == isStale_) return;
    isStale_ = stale;
    QPalette colors = palette();
    if (stale) colors.setBrush(QPalette::Midlight, Hatching(colors));
    barWidget_->setPalette(colors);
    barWidget_->setToolTip(stale ? tr("Out of date: an operation before it has failed, see the list") : QString());
}

void ToolWindow::FitContent()
{
    fitting_ = true;
    const QSize former = size();
    RefreshLayouts(*frame_);
    QSize wanted = frame_->sizeHint().expandedTo(frame_->minimumSizeHint());
    // Texts that wrap need the height for the width that they get.
    if (frame_->layout()->hasHeightForWidth())
        wanted.setHeight(std::max(wanted.height(), frame_->layout()->totalHeightForWidth(wanted.width())));
    const QMargins frame = contentsMargins();
    const int title = height() > 0 ? std::max(0, height() - contentsRect().height() - frame.top() - frame.bottom()) : 0;
    QSize outer = wanted + QSize(frame.left() + frame.right(), frame.top() + frame.bottom() + title);
    const QSize room = area_.viewport()->size();
    // A scroll bar at one side takes room from the other.
    const int scrollBar = style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    if (outer.height() > room.height()) outer.rwidth() += scrollBar;
    if (outer.width() > room.width()) outer.rheight() += scrollBar;
    resize(outer.boundedTo(room));
    fitting_ = false;
    if (width() > former.width() || height() > former.height()) StayInside();
}

void ToolWindow::ShowQuietly()
{
    const QPointer<QWidget> focus = QApplication::focusWidget();
    show();
    if (focus) focus->setFocus();
}

void ToolWindow::BringToFront()
{
    raise();
    RaiseTopmost(area_);
}

void ToolWindow::RaiseTopmost(const QMdiArea& area)
{
    std::vector<ToolWindow*> topmost;
    for (QMdiSubWindow* sub : area.subWindowList(QMdiArea::StackingOrder))
        if (auto* window = qobject_cast<ToolWindow*>(sub); window && window->topmost_ > 0) topmost.push_back(window);
    std::stable_sort(topmost.begin(), topmost.end(),
                     [](const ToolWindow* a, const ToolWindow* b) { return a->topmost_ < b->topmost_; });
    for (ToolWindow* window : topmost)
        window->raise();
}

void ToolWindow::resizeEvent(QResizeEvent* event)
{
    QMdiSubWindow::resizeEvent(event);
    if (!fitting_ && isVisible() && event->oldSize().isValid()) emit Resized();
}

void ToolWindow::closeEvent(QCloseEvent* event)
{
    // There is no close box; a shortcut of the work area must not take a controller's window away.
    event->ignore();
}

} // namespace TeskPlus
