#include "workbench/views/picture/CustomImageForm.h"

#include "workbench/views/picture/GraphSurface.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QSpinBox>

#include <algorithm>
#include <cmath>

namespace TeskPlus {

namespace {

/// The largest room that a picture asks for by itself.
constexpr QSize largestPanel(800, 600);
/// What fits behind the boxes of the bar of a picture as wide as the smallest that start at their zoom.
constexpr const char* shortCursorText = "Gray 000 @ (0000,0000)";

/// Asks for little room, so that no picture's window is wider than its picture for the sake of a long text; the pixel's
/// place is at the end of the text, and stays in sight.
class CursorLabel final : public QLabel
{
public:
    CursorLabel() { setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred); }
    QSize sizeHint() const override
    {
        return {fontMetrics().horizontalAdvance(shortCursorText), QLabel::sizeHint().height()};
    }
    QSize minimumSizeHint() const override { return {0, QLabel::minimumSizeHint().height()}; }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter(this).drawText(rect(), Qt::AlignLeft | Qt::AlignVCenter,
                                fontMetrics().elidedText(text(), Qt::ElideLeft, width()));
    }
};

/// A notch of the wheel.
constexpr int wheelStep = 120;

} // namespace

PictureWidget::PictureWidget(IPictureOwner& owner) : owner_(owner)
{
    setObjectName("panelImage");
    setMouseTracking(true);
    setFocusPolicy(Qt::ClickFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void PictureWidget::paintEvent(QPaintEvent* event)
{
    const QRect part = event->region().boundingRect();
    const double ratio = devicePixelRatioF();
    const int left = static_cast<int>(std::floor(part.left() * ratio));
    const int top = static_cast<int>(std::floor(part.top() * ratio));
    const int width = static_cast<int>(std::ceil((part.left() + part.width()) * ratio)) - left;
    const int height = static_cast<int>(std::ceil((part.top() + part.height()) * ratio)) - top;
    // A strip that scrolling uncovers leaves the surface as large as it is.
    surface_.Resize(std::max(width, surface_.Width()), std::max(height, surface_.Height()));
    owner_.DrawPicture(surface_, {left, top}, ratio);
    QImage shown = ShownPixels(surface_);
    if (shown.isNull()) return;
    shown.setDevicePixelRatio(ratio);
    QPainter(this).drawImage(QPointF(left / ratio, top / ratio), shown, QRectF(0, 0, width, height));
}

void PictureWidget::mouseMoveEvent(QMouseEvent* event)
{
    owner_.PointerMoved(event->pos());
}

void PictureWidget::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        owner_.LeftPressed(event->pos());
    else if (event->button() == Qt::RightButton)
        owner_.MenuAsked(event->pos());
}

void PictureWidget::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) owner_.LeftReleased(event->pos());
}

void PictureWidget::leaveEvent(QEvent*)
{
    owner_.PointerLeft();
}

void PictureWidget::contextMenuEvent(QContextMenuEvent* event)
{
    // The mouse asks by its press.
    if (event->reason() == QContextMenuEvent::Keyboard) owner_.MenuAsked(event->pos());
    event->accept();
}

void PictureWidget::wheelEvent(QWheelEvent* event)
{
    if (!(event->modifiers() & Qt::ControlModifier)) {
        event->ignore();
        return;
    }
    wheel_ += event->angleDelta().y();
    const int steps = wheel_ / wheelStep;
    wheel_ -= steps * wheelStep;
    if (steps && ZoomAsked) ZoomAsked(steps, event->position().toPoint());
    event->accept();
}

PicturePanel::PicturePanel(QWidget* picture) : wanted_(CustomImageForm::minImageWidth_, CustomImageForm::minImageWidth_)
{
    setObjectName("panel2");
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(false);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setWidget(picture);
}

void PicturePanel::SetWanted(QSize size)
{
    wanted_ = size;
    updateGeometry();
}

CustomImageForm::CustomImageForm(IPictureOwner& owner)
{
    panelImage_ = new PictureWidget(owner);
    panelImage_->ZoomAsked = [this](int steps, QPoint at) { ZoomAbout(steps, at); };
    panelImage_->resize(1, 1);
    panel2_ = new PicturePanel(panelImage_);

    panel3_ = new QWidget;
    panel3_->setObjectName("panel3");
    auto* row = new QHBoxLayout(panel3_);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(4);
    auto* zoom = new QLabel(QObject::tr("&Zoom"));
    numericUpDown1_ = new QSpinBox;
    numericUpDown1_->setObjectName("numericUpDown1");
    numericUpDown1_->setRange(smallestZoom, largestZoom);
    numericUpDown1_->setToolTip(QObject::tr("Powers of two; Ctrl and the wheel zoom about the pointer"));
    zoom->setBuddy(numericUpDown1_);
    label2_ = new QLabel;
    label2_->setObjectName("label2");
    label2_->setMinimumWidth(label2_->fontMetrics().horizontalAdvance("8:8 "));
    window_ = new QCheckBox(QObject::tr("&Window"));
    window_->setObjectName("Window");
    window_->setToolTip(QObject::tr("Restricts the operations to a part of the image; drag its sides and corners"));
    window_->hide();
    cursorLabel_ = new CursorLabel;
    cursorLabel_->setObjectName("cursorLabel");
    cursorLabel_->setTextFormat(Qt::PlainText);
    row->addWidget(zoom);
    row->addWidget(numericUpDown1_);
    row->addWidget(label2_);
    row->addWidget(window_);
    row->addWidget(cursorLabel_, 1);
    ShowRatio();

    QObject::connect(numericUpDown1_, &QSpinBox::valueChanged, panel3_, [this](int exponent) {
        ShowRatio();
        if (ZoomChanged) ZoomChanged(exponent);
    });
    QObject::connect(window_, &QCheckBox::toggled, panel3_, [this](bool checked) {
        if (WindowChanged) WindowChanged(checked);
    });
}

CustomImageForm::~CustomImageForm()
{
    delete panel3_;
    delete panel2_;
}

int CustomImageForm::Zoom() const
{
    return numericUpDown1_->value();
}

void CustomImageForm::SetZoom(int exponent)
{
    const QSignalBlocker quiet(numericUpDown1_);
    numericUpDown1_->setValue(exponent);
    ShowRatio();
}

void CustomImageForm::ShowRatio()
{
    const int exponent = numericUpDown1_->value();
    label2_->setText(exponent < 0 ? QString("1:%1").arg(1 << -exponent) : QString("%1:1").arg(1 << exponent));
}

void CustomImageForm::SetSize(int width, int height, bool automatic)
{
    const int newWidth = std::max(width, minImageWidth_), newHeight = std::max(height, 1);
    const QSize picture(std::max(width, 1), newHeight), wanted = QSize(newWidth, newHeight).boundedTo(largestPanel);
    panelImage_->resize(picture);
    const bool changed = newWidth != currentWidth_ || newHeight != currentHeight_ || wanted != panel2_->sizeHint();
    currentWidth_ = newWidth;
    currentHeight_ = newHeight;
    if (!automatic || !changed) return;
    panel2_->SetWanted(wanted);
    if (SizeChanged) SizeChanged();
}

void CustomImageForm::ZoomAbout(int steps, QPoint at)
{
    const int former = Zoom();
    const QPoint inPanel = panelImage_->mapTo(panel2_->viewport(), at);
    numericUpDown1_->setValue(former + steps);
    const double factor = std::exp2(Zoom() - former);
    panel2_->horizontalScrollBar()->setValue(static_cast<int>(at.x() * factor) - inPanel.x());
    panel2_->verticalScrollBar()->setValue(static_cast<int>(at.y() * factor) - inPanel.y());
}

void CustomImageForm::SetWindowBox(bool possible, bool checked)
{
    const QSignalBlocker quiet(window_);
    window_->setChecked(checked);
    window_->setEnabled(possible);
    if (window_->isHidden() != possible) return;
    window_->setVisible(possible);
    // The bar may now need another width.
    if (SizeChanged) SizeChanged();
}

void CustomImageForm::SetCursorText(const QString& text)
{
    cursorLabel_->setText(text);
}

void CustomImageForm::SetCursor(Qt::CursorShape shape)
{
    if (panelImage_->cursor().shape() != shape) panelImage_->setCursor(shape);
}

void CustomImageForm::Refresh()
{
    panelImage_->update();
}

} // namespace TeskPlus
