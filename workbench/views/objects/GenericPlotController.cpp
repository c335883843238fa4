#include "workbench/views/objects/GenericPlotController.h"

#include "foundation/Status.h"
#include "workbench/views/Text.h"
#include "workbench/views/picture/CopyText.h"

#include <QHBoxLayout>
#include <QMenu>
#include <QMouseEvent>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <functional>
#include <utility>

namespace TeskPlus {

namespace {

/// The picture asks for the size of its row, and takes what it is given.
class PlotWidget final : public GraphWidget
{
public:
    PlotWidget(int width, int height) : size_(width, height)
    {
        setMinimumSize(smallest);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
        setContextMenuPolicy(Qt::CustomContextMenu);
    }
    QSize sizeHint() const override { return size_; }

    /// Positions are pixels of the surface.
    std::function<void(QPoint At, bool IsPressed)> Moved;
    std::function<void(QPoint At)> Pressed, Released;
    std::function<void(int Key)> KeyPressed;

protected:
    void mouseMoveEvent(QMouseEvent* event) override
    {
        if (Moved) Moved(OnSurface(event->position()), event->buttons() & Qt::LeftButton);
    }
    void mousePressEvent(QMouseEvent* event) override
    {
        if (Pressed && event->button() == Qt::LeftButton) Pressed(OnSurface(event->position()));
    }
    void mouseReleaseEvent(QMouseEvent* event) override
    {
        if (Released && event->button() == Qt::LeftButton) Released(OnSurface(event->position()));
    }
    void keyPressEvent(QKeyEvent* event) override
    {
        if (KeyPressed)
            KeyPressed(event->key());
        else
            GraphWidget::keyPressEvent(event);
    }

private:
    QPoint OnSurface(QPointF at) const { return (at * devicePixelRatioF()).toPoint(); }

    static constexpr QSize smallest{125, 60};
    QSize size_;
};

} // namespace

GenericPlotController::GenericPlotController(const ControllerRequest& Request, const PlotRow& Row,
                                             ViewContext* OwnWindow)
    : ControllerBase(Request, true), row_(Row)
{
    if (Row.MakeHandles) handles_ = Row.MakeHandles();
    picture_ = new PlotWidget(Row.Width, Row.Height);
    picture_->setObjectName("Plot");
    picture_->Draw = [this](int width, int height) {
        Graph::LineColor = Graph::PointColor = row_.Color;
        if (currentVariable_ && handles_)
            handles_->Draw(*currentVariable_, width, height);
        else if (currentVariable_)
            row_.Plot(*currentVariable_, width, height);
    };
    if (handles_) TakePointer();
    AddBoxes();
    if (Row.CopyText)
        QObject::connect(picture_, &QWidget::customContextMenuRequested, picture_,
                         [this](QPoint at) { MenuAsked(at); });
    if (!OwnWindow) return;
    window_ = new ToolWindow(*OwnWindow->workArea, "ImageForm");
    window_->setWindowTitle(Qt16(variableIdentifier_));
    window_->Content().addWidget(picture_);
    for (const auto& box : boxes_)
        window_->Bar().addWidget(box);
    window_->Bar().addStretch(1);
    window_->FitContent();
}

GenericPlotController::~GenericPlotController()
{
    for (const auto& box : boxes_)
        delete box;
    delete picture_;
    delete window_;
}

ControlHandle GenericPlotController::Control() const
{
    return window_ ? static_cast<QWidget*>(window_) : static_cast<QWidget*>(picture_);
}

void GenericPlotController::UpdateControl(bool, bool)
{
    picture_->Redraw();
    if (!window_ || !row_.IsShown) return;
    if (!HasPlot())
        window_->hide();
    else if (argumentState_ > controllerState::Hidden && !window_->isVisible())
        window_->ShowQuietly();
}

bool GenericPlotController::HasPlot() const
{
    return !row_.IsShown || (currentVariable_ && row_.IsShown(*currentVariable_));
}

void GenericPlotController::ShowCtrl(bool BringToFront)
{
    picture_->Redraw();
    if (!window_) return;
    window_->SetPinned(IsPinned(argumentState_));
    if (!HasPlot()) return;
    if (!window_->isVisible()) window_->ShowQuietly();
    if (BringToFront) window_->BringToFront();
}

bool GenericPlotController::HideCtrl(bool)
{
    const bool hides = argumentState_ < controllerState::Shown;
    if (window_) {
        window_->SetPinned(IsPinned(argumentState_));
        if (hides) window_->hide();
    }
    return hides;
}

void GenericPlotController::SetVariableIdentifier(const std::wstring& Name)
{
    ControllerBase::SetVariableIdentifier(Name);
    if (window_) window_->setWindowTitle(Qt16(Name));
}

void GenericPlotController::TakePointer()
{
    auto& widget = static_cast<PlotWidget&>(*picture_);
    widget.setMouseTracking(true);
    widget.setFocusPolicy(Qt::ClickFocus);
    widget.Moved = [this](QPoint at, bool isPressed) { PointerMoved(at, isPressed); };
    widget.Pressed = [this](QPoint at) { Pressed(at); };
    widget.Released = [this](QPoint at) { Released(at); };
    widget.KeyPressed = [this](int key) {
        if (!currentVariable_ || !handles_->KeyPressed(*currentVariable_, key)) return;
        Notify(true, false, false);
        picture_->Redraw();
    };
}

void GenericPlotController::PointerMoved(QPoint at, bool isPressed)
{
    if (!currentVariable_) return;
    if (!isPressed) {
        picture_->setCursor(handles_->Hit(*currentVariable_, at.x(), at.y()).value_or(Qt::ArrowCursor));
    } else if (isHeld_ && handles_->Drag(*currentVariable_, at.x(), at.y())) {
        Notify(true, false, true);
        picture_->Redraw();
    }
}

void GenericPlotController::Pressed(QPoint at)
{
    // A press without a move before it, as on a touch screen, finds what is there.
    isHeld_ = currentVariable_ && handles_->Hit(*currentVariable_, at.x(), at.y());
    if (!isHeld_) return;
    picture_->setCursor(Qt::CrossCursor);
    handles_->Press(*currentVariable_);
    picture_->Redraw();
}

void GenericPlotController::Released(QPoint at)
{
    const bool wasHeld = std::exchange(isHeld_, false);
    PointerMoved(at, false);
    if (!wasHeld || !currentVariable_) return;
    for (std::size_t i = 0; i < boxes_.size(); i++) {
        if (!row_.Boxes[i].Get) continue;
        const int value = row_.Boxes[i].Get(*currentVariable_);
        if (value != 0) remembered_[i] = value;
        const QSignalBlocker quiet(boxes_[i]);
        boxes_[i]->setChecked(value != 0);
    }
}

void GenericPlotController::AddBoxes()
{
    for (const PlotBox& box : row_.Boxes) {
        const std::size_t which = boxes_.size();
        const int value = box.Get && currentVariable_ ? box.Get(*currentVariable_) : 1;
        auto* widget = new QCheckBox(Qt16(box.Label));
        widget->setObjectName(Qt16(box.Label));
        widget->setChecked(value != 0);
        QObject::connect(widget, &QCheckBox::toggled, picture_,
                         [this, which](bool isChecked) { Switched(which, isChecked); });
        boxes_.emplace_back(widget);
        remembered_.push_back(value);
    }
}

void GenericPlotController::Switched(std::size_t box, bool isChecked)
{
    if (!currentVariable_) return;
    if (row_.Boxes[box].Set) {
        const int before = row_.Boxes[box].Get(*currentVariable_);
        if (!isChecked && before != 0) remembered_[box] = before;
        row_.Boxes[box].Set(*currentVariable_, !isChecked ? 0 : remembered_[box] ? remembered_[box] : 1);
        Notify(true, false, false);
    } else if (handles_) {
        handles_->Switch(box, isChecked);
    }
    picture_->Redraw();
}

void GenericPlotController::MenuAsked(QPoint at)
{
    auto* menu = new QMenu(picture_);
    menu->setObjectName("PlotMenu");
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(Qt16(row_.CopyLabel), [this] {
        if (currentVariable_) CopyText(Widen(row_.CopyText(*currentVariable_).c_str()));
    });
    menu->popup(picture_->mapToGlobal(at));
}

} // namespace TeskPlus
