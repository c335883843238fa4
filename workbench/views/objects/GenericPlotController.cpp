#include "workbench/views/objects/GenericPlotController.h"

#include "foundation/Status.h"
#include "workbench/views/Text.h"
#include "workbench/views/picture/CopyText.h"

#include <QHBoxLayout>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

namespace TeskPlus {

std::vector<double> PlotTicks(const PlotScale& Scale, int Most)
{
    if (!std::isfinite(Scale.First) || !std::isfinite(Scale.Last) || Most < 1) return {};
    const double low = std::min(Scale.First, Scale.Last), high = std::max(Scale.First, Scale.Last);
    const double extent = high - low;
    if (!(extent > 0) || !std::isfinite(extent)) return {low};
    const double unit = std::pow(10.0, std::floor(std::log10(extent / Most)));
    double step = unit;
    for (const double factor : {2.0, 5.0, 10.0})
        if (extent / step > Most) step = factor * unit;
    step = std::max(step, 1.0);
    std::vector<double> ticks;
    const double first = std::ceil(low / step);
    for (int i = 0; i <= Most && (first + i) * step <= high; i++)
        ticks.push_back((first + i) * step);
    return ticks;
}

QString TickText(double Value)
{
    const double size = std::abs(Value);
    if (size >= 1e9) return QString::number(Value, 'g', 2);
    if (size >= 1e6) return QString::number(Value / 1e6, 'g', 4) + "M";
    if (size >= 1e4) return QString::number(Value / 1e3, 'g', 4) + "k";
    return QString::number(Value, 'g', 5);
}

namespace {

/// Beside a plot with numbers, for these and for the line of what is under the pointer.
constexpr int numbersWidth = 44, numbersHeight = 20, readOutHeight = 18, rightMargin = 12;
constexpr int tickLength = 4, numberSize = 10;
/// From one number to the next, in pixels.
constexpr int acrossSpacing = 60, upSpacing = 28;

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
    std::function<void()> Left;
    std::function<void(QPoint At)> Pressed, Released;
    std::function<void(int Key)> KeyPressed;

    /// Numbers beside the plot, and a line above it for what is under the pointer.
    void ShowAxes(std::function<std::optional<PlotAxes>()> axes)
    {
        axes_ = std::move(axes);
        SetMargins({numbersWidth, readOutHeight, rightMargin, numbersHeight});
        readOut_ = new QLabel(this);
        readOut_->setObjectName("PlotReadOut");
        readOut_->setAttribute(Qt::WA_TransparentForMouseEvents);
        readOut_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        QPalette black = readOut_->palette();
        black.setColor(QPalette::WindowText, Qt::black);
        readOut_->setPalette(black);
    }
    /// Where the value stands that is told, from the left of the plot; below 0 for nowhere.
    void ShowReadOut(const QString& text, int column)
    {
        if (!readOut_) return;
        if (readOut_->text() != text) readOut_->setText(text);
        if (column_ == column) return;
        column_ = column;
        update();
    }

protected:
    void paintEvent(QPaintEvent* event) override
    {
        GraphWidget::paintEvent(event);
        const auto axes = axes_ ? axes_() : std::nullopt;
        if (!axes) return;
        QPainter painter(this);
        QFont numbers = font();
        numbers.setPixelSize(numberSize);
        painter.setFont(numbers);
        DrawNumbers(painter, *axes);
        if (column_ < 0) return;
        painter.setPen(QPen(Qt::gray, 1, Qt::DotLine));
        painter.drawLine(Area().left() + column_, Area().top(), Area().left() + column_, Area().bottom());
    }
    void resizeEvent(QResizeEvent* event) override
    {
        GraphWidget::resizeEvent(event);
        if (readOut_) readOut_->setGeometry(Area().left(), 0, std::max(Area().width(), 0), readOutHeight);
    }
    void leaveEvent(QEvent* event) override
    {
        GraphWidget::leaveEvent(event);
        if (Left) Left();
    }
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
    QPoint OnSurface(QPointF at) const { return ((at - QPointF(Area().topLeft())) * devicePixelRatioF()).toPoint(); }

    void DrawNumbers(QPainter& painter, const PlotAxes& axes) const
    {
        const QRect area = Area();
        painter.setPen(Qt::darkGray);
        painter.drawRect(area.adjusted(-1, -1, 0, 0));
        const auto place = [](const PlotScale& scale, double value, int extent) {
            const double part = scale.Last != scale.First ? (value - scale.First) / (scale.Last - scale.First) : 0;
            return static_cast<int>(std::lround(part * std::max((scale.To - scale.From) * extent - 1, 0.0)));
        };
        for (const double value : PlotTicks(axes.Across, std::max(area.width() / acrossSpacing, 1))) {
            const int x = area.left() + place(axes.Across, value, area.width());
            painter.drawLine(x, area.bottom() + 1, x, area.bottom() + tickLength);
            painter.drawText(
                QRect(x - acrossSpacing / 2, area.bottom() + tickLength, acrossSpacing, numbersHeight - tickLength),
                Qt::AlignCenter, TickText(value));
        }
        for (const PlotScale& scale : axes.Up) {
            const double extent = (scale.To - scale.From) * area.height();
            const double bottom = area.top() + scale.To * area.height() - 1;
            for (const double value : PlotTicks(scale, std::max(static_cast<int>(extent / upSpacing), 1))) {
                const int y = static_cast<int>(bottom) - place(scale, value, area.height());
                painter.drawLine(area.left() - tickLength, y, area.left() - 1, y);
                painter.drawText(QRect(0, y - upSpacing / 2, numbersWidth - tickLength - 2, upSpacing),
                                 Qt::AlignRight | Qt::AlignVCenter, TickText(value));
            }
        }
    }

    static constexpr QSize smallest{125, 60};
    QSize size_;
    std::function<std::optional<PlotAxes>()> axes_;
    QLabel* readOut_ = nullptr;
    int column_ = -1;
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
    if (row_.Axes) {
        static_cast<PlotWidget&>(*picture_).ShowAxes([this]() -> std::optional<PlotAxes> {
            if (!currentVariable_ || !HasPlot()) return std::nullopt;
            return row_.Axes(*currentVariable_);
        });
    }
    if (handles_ || row_.ReadOut) TakePointer();
    if (handles_) TakeHandles();
    AddBoxes();
    if (Row.CopyText || !Row.Commands.empty())
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
    ShowReadOut();
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
    widget.Moved = [this](QPoint at, bool isPressed) {
        pointer_ = at;
        if (handles_) PointerMoved(at, isPressed);
        ShowReadOut();
    };
    widget.Left = [this] {
        pointer_.reset();
        ShowReadOut();
    };
}

void GenericPlotController::TakeHandles()
{
    auto& widget = static_cast<PlotWidget&>(*picture_);
    widget.setFocusPolicy(Qt::ClickFocus);
    widget.Pressed = [this](QPoint at) { Pressed(at); };
    widget.Released = [this](QPoint at) { Released(at); };
    widget.KeyPressed = [this](int key) { KeyPressed(key); };
}

void GenericPlotController::KeyPressed(int key)
{
    if (!currentVariable_ || !handles_->KeyPressed(*currentVariable_, key)) return;
    Notify(true, false, false);
    picture_->Redraw();
}

void GenericPlotController::ShowReadOut()
{
    auto& widget = static_cast<PlotWidget&>(*picture_);
    const double ratio = widget.devicePixelRatioF();
    const int width = widget.Area().width(), height = widget.Area().height();
    const bool isInside = row_.ReadOut && row_.Axes && currentVariable_ && HasPlot() && pointer_ && width > 1 &&
                          QRect(0, 0, width, height).contains((QPointF(*pointer_) / ratio).toPoint());
    if (!isInside) {
        widget.ShowReadOut({}, -1);
        return;
    }
    const PlotScale across = row_.Axes(*currentVariable_).Across;
    const double column = pointer_->x() / ratio;
    const double value = across.First + column / (width - 1) * (across.Last - across.First);
    widget.ShowReadOut(row_.ReadOut(*currentVariable_, value), static_cast<int>(column));
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
    for (const PlotCommand& command : row_.Commands)
        menu->addAction(Qt16(command.Label), [this, key = command.Key] { KeyPressed(key); });
    if (row_.CopyText)
        menu->addAction(Qt16(row_.CopyLabel), [this] {
            if (currentVariable_) CopyText(Widen(row_.CopyText(*currentVariable_).c_str()));
        });
    menu->popup(picture_->mapToGlobal(at));
}

} // namespace TeskPlus
