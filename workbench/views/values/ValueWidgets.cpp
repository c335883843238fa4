#include "workbench/views/values/ValueWidgets.h"

#include "engine/TreeNode.h"

#include <QCheckBox>
#include <QClipboard>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QMouseEvent>
#include <QRegularExpression>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <QToolButton>

#include <algorithm>
#include <cmath>

namespace TeskPlus {

using namespace Tesk;

namespace {

/// The least sizes of the shapes, in pixels.
constexpr int textOnlyWidth = 220, spinWidth = 245, sliderWidth = 360, rowHeight = 30;
constexpr int labelWidth = 110, textWidth = 64, resultWidth = 104;

QLabel* Caption(const QString& text)
{
    auto* label = new QLabel(text);
    label->setObjectName("Label");
    label->setMinimumWidth(labelWidth);
    return label;
}

/// A value that can be read only.
QLabel* Output()
{
    auto* label = new QLabel;
    label->setObjectName("Output");
    label->setFrameStyle(QFrame::Panel | QFrame::Sunken);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    label->setMinimumWidth(textWidth);
    QFont face = label->font();
    face.setBold(true);
    label->setFont(face);
    return label;
}

QHBoxLayout* Row(QWidget& widget)
{
    auto* row = new QHBoxLayout(&widget);
    row->setContentsMargins(2, 2, 2, 2);
    return row;
}

} // namespace

NumberWidget::NumberWidget(const QString& label, QWidget* parent) : ValueWidget(parent)
{
    row_ = Row(*this);
    label_ = Caption(label);
    text_ = new QLineEdit;
    text_->setObjectName("Text");
    text_->setFixedWidth(textWidth + 16);
    slider_ = new QSlider(Qt::Horizontal);
    slider_->setObjectName("Slider");
    slider_->setMinimumWidth(130);
    auto_ = new QToolButton;
    auto_->setObjectName("Auto");
    auto_->setText(tr("Auto"));
    auto_->setToolTip(tr("Let the operation work this value out"));
    auto_->hide();
    label_->setBuddy(text_);
    row_->addWidget(label_);
    row_->addWidget(text_);
    row_->addWidget(slider_, 1);
    row_->addWidget(auto_);
    setMinimumHeight(rowHeight);
    connect(text_, &QLineEdit::textEdited, this, [this] {
        isTyping_ = true;
        TextEdited();
        isTyping_ = false;
    });
    connect(slider_, &QSlider::valueChanged, this, [this](int position) { SliderMoved(position); });
    connect(slider_, &QSlider::sliderPressed, this, [this] { isButtonLeftDown_ = true; });
    connect(slider_, &QSlider::sliderReleased, this, [this] {
        isButtonLeftDown_ = false;
        Notify(false);
    });
}

void NumberWidget::SetState(bool enabled, std::uint32_t flags)
{
    const bool spin = enabled && flags & attributeValue::SpinBox;
    const bool slider = enabled && !(flags & (attributeValue::SpinBox | attributeValue::TextOnly));
    text_->setVisible(!spin);
    text_->setReadOnly(!enabled);
    if (!enabled) {
        QPalette colors = text_->palette();
        colors.setBrush(QPalette::Base, colors.brush(QPalette::Window));
        text_->setPalette(colors);
        QFont face = text_->font();
        face.setBold(true);
        text_->setFont(face);
        text_->setFixedWidth(resultWidth);
        text_->installEventFilter(this);
    }
    slider_->setVisible(slider);
    SpinBox()->setVisible(spin);
    label_->setBuddy(spin ? SpinBox() : text_);
    m_DynamicRange = flags & attributeValue::DynamicRange;
    setMinimumWidth(slider ? sliderWidth : spin ? spinWidth : textOnlyWidth);
    if (!slider) row_->addStretch(1);
}

void NumberWidget::ShowExact(const QString& text)
{
    if (!text_->isReadOnly() || text == exact_) return;
    exact_ = text;
    text_->setToolTip(text);
}

/// The part that is selected, as it stands there; the whole with all its digits.
void NumberWidget::CopyResult() const
{
    const bool isPart = text_->hasSelectedText() && text_->selectedText() != text_->text();
    QGuiApplication::clipboard()->setText(isPart ? text_->selectedText() : exact_);
}

void NumberWidget::ShowResultMenu(QPoint at)
{
    auto* menu = new QMenu(text_);
    menu->setObjectName("ResultMenu");
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(tr("&Copy"), this, [this] { CopyResult(); });
    menu->addAction(tr("Select &All"), text_, &QLineEdit::selectAll);
    menu->popup(at);
}

bool NumberWidget::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != text_ || !text_->isReadOnly()) return ValueWidget::eventFilter(watched, event);
    if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->matches(QKeySequence::Copy)) {
        CopyResult();
        return true;
    }
    if (event->type() == QEvent::ContextMenu) {
        ShowResultMenu(static_cast<QContextMenuEvent*>(event)->globalPos());
        return true;
    }
    return ValueWidget::eventFilter(watched, event);
}

void NumberWidget::ShowText(const QString& text)
{
    // What is being typed is not taken out of the user's hands; it is put right when the box is left.
    if (isTyping_ || (text_->hasFocus() && text_->isModified())) return;
    if (text_->text() == text) return;
    text_->setText(text);
    text_->setCursorPosition(static_cast<int>(text.size()));
}

void NumberWidget::SetSliderRange(double last)
{
    const QSignalBlocker quiet(slider_);
    const int range = last >= 1 ? static_cast<int>(std::min(last, 2147483647.0)) : 0;
    slider_->setRange(0, range);
    slider_->setPageStep(std::max(1, range / 10));
}

void NumberWidget::MoveSlider(double position)
{
    if (slider_->isHidden() || isButtonLeftDown_) return;
    const QSignalBlocker quiet(slider_);
    if (position >= 0 && position <= slider_->maximum())
        slider_->setValue(static_cast<int>(position));
    else if (m_DynamicRange && position > 0) {
        slider_->setRange(0, static_cast<int>(std::min(2 * position, 2147483647.0)));
        slider_->setValue(static_cast<int>(std::min(position, 2147483647.0)));
    }
}

/// Shows the special values as words.
class IntWidget::Spin final : public QSpinBox
{
public:
    using QSpinBox::QSpinBox;

protected:
    QString textFromValue(int value) const override { return TextOf(value); }
    int valueFromText(const QString& text) const override
    {
        return text == "Auto" ? Auto : text == "MaxInt" ? MaxInt : QSpinBox::valueFromText(text);
    }
    QValidator::State validate(QString& text, int& place) const override
    {
        if (QString("Auto").startsWith(text) || QString("MaxInt").startsWith(text))
            return text == "Auto" || text == "MaxInt" ? QValidator::Acceptable : QValidator::Intermediate;
        return QSpinBox::validate(text, place);
    }
};

IntWidget::IntWidget(const QString& label, QWidget* parent) : NumberWidget(label, parent), spin_(new Spin)
{
    spin_->setObjectName("Spin");
    spin_->setMinimumWidth(textWidth + 26);
    spin_->setKeyboardTracking(false);
    row_->insertWidget(1, spin_);
    connect(spin_, &QSpinBox::valueChanged, this, [this](int value) {
        m_Value = value;
        Notify(false);
    });
    connect(auto_, &QToolButton::clicked, this, [this] {
        text_->setModified(false);
        SetValue(Auto);
        Notify(false);
    });
    connect(text_, &QLineEdit::editingFinished, this, [this] {
        if (!text_->isModified()) return;
        text_->setModified(false);
        ShowText(TextOf(m_Value));
    });
}

QWidget* IntWidget::SpinBox()
{
    return spin_;
}

QString IntWidget::TextOf(int value)
{
    return value == Auto ? QString("Auto") : value == MaxInt ? QString("MaxInt") : QString::number(value);
}

void IntWidget::SetRange(int minimum, int maximum, int increment)
{
    m_Minimum = minimum;
    m_Maximum = std::max(minimum, maximum);
    m_Increment = std::max(1, increment);
    SetSliderRange((static_cast<double>(m_Maximum) - m_Minimum) / m_Increment);
    const QSignalBlocker quiet(spin_);
    // The special values lie outside every range, and must still be shown.
    spin_->setRange(m_Value == Auto ? Auto : m_Minimum, m_DynamicRange || m_Value == MaxInt ? MaxInt : m_Maximum);
    spin_->setSingleStep(m_Increment);
}

void IntWidget::SetState(bool enabled, std::uint32_t flags)
{
    NumberWidget::SetState(enabled, flags);
    auto_->setVisible(enabled && flags & attributeValue::Mixed);
    SetRange(m_Minimum, m_Maximum, m_Increment);
}

void IntWidget::SetValue(int value)
{
    m_Value = value;
    {
        const QSignalBlocker quiet(spin_);
        if (value == Auto)
            spin_->setMinimum(Auto);
        else if (value == MaxInt)
            spin_->setMaximum(MaxInt);
        else
            spin_->setRange(m_Minimum, m_DynamicRange ? MaxInt : m_Maximum);
        spin_->setValue(value);
    }
    ShowText(TextOf(value));
    ShowExact(TextOf(value));
    if (value != Auto && value != MaxInt) MoveSlider((static_cast<double>(value) - m_Minimum) / m_Increment);
}

int IntWidget::Parsed(const QString& text) const
{
    if (text == "Auto") return Auto;
    if (text == "MaxInt") return MaxInt;
    bool isNumber = false;
    const qlonglong value = text.trimmed().toLongLong(&isNumber);
    if (!isNumber) return m_Minimum;
    if (m_DynamicRange) return static_cast<int>(std::clamp<qlonglong>(value, MinInt, MaxInt));
    return static_cast<int>(std::clamp<qlonglong>(value, m_Minimum, m_Maximum));
}

void IntWidget::TextEdited()
{
    SetValue(Parsed(text_->text()));
    Notify(false);
}

void IntWidget::SliderMoved(int position)
{
    text_->setModified(false);
    SetValue(static_cast<int>(
        std::min<qint64>(m_Minimum + qint64{position} * m_Increment, m_DynamicRange ? MaxInt : m_Maximum)));
    Notify(isButtonLeftDown_);
}

FloatWidget::FloatWidget(const QString& label, QWidget* parent) : NumberWidget(label, parent), spin_(new QDoubleSpinBox)
{
    spin_->setObjectName("Spin");
    spin_->setMinimumWidth(textWidth + 26);
    spin_->setDecimals(3);
    spin_->setKeyboardTracking(false);
    row_->insertWidget(1, spin_);
    connect(spin_, &QDoubleSpinBox::valueChanged, this, [this](double value) {
        m_Value = value;
        Notify(false);
    });
    connect(text_, &QLineEdit::editingFinished, this, [this] {
        if (!text_->isModified()) return;
        text_->setModified(false);
        ShowText(TextOf(m_Value));
    });
    /// Drops the keys that cannot stand in a number.
    class Filter final : public QValidator
    {
    public:
        using QValidator::QValidator;
        State validate(QString& text, int&) const override
        {
            return MayBeTyped(text) || QString("Auto").startsWith(text) ? Acceptable : Invalid;
        }
    };
    text_->setValidator(new Filter(text_));
}

QWidget* FloatWidget::SpinBox()
{
    return spin_;
}

QString FloatWidget::TextOf(double value)
{
    if (value == static_cast<double>(Auto)) return "Auto";
    QString text = QString::number(value, 'f', 3);
    while (text.endsWith('0'))
        text.chop(1);
    if (text.endsWith('.')) text.chop(1);
    return text == "-0" ? QString("0") : text;
}

QString FloatWidget::ExactText(double value)
{
    if (value == static_cast<double>(Auto)) return "Auto";
    return QLocale::c().toString(value, 'g', QLocale::FloatingPointShortest);
}

bool FloatWidget::MayBeTyped(const QString& text)
{
    static const QRegularExpression number("^-?[0-9]*\\.?[0-9]*$");
    return number.match(text).hasMatch();
}

void FloatWidget::SetRange(double minimum, double maximum, double increment)
{
    m_Minimum = minimum;
    m_Maximum = std::max(minimum, maximum);
    m_Increment = increment > 0 ? increment : 0.01;
    SetSliderRange((m_Maximum - m_Minimum) / m_Increment);
    const QSignalBlocker quiet(spin_);
    spin_->setRange(m_Minimum, m_DynamicRange ? 2147483647.0 : m_Maximum);
    spin_->setSingleStep(m_Increment);
}

void FloatWidget::SetState(bool enabled, std::uint32_t flags)
{
    NumberWidget::SetState(enabled, flags);
    SetRange(m_Minimum, m_Maximum, m_Increment);
}

void FloatWidget::SetValue(double value)
{
    m_Value = value;
    {
        const QSignalBlocker quiet(spin_);
        spin_->setValue(value);
    }
    ShowText(TextOf(value));
    ShowExact(ExactText(value));
    if (value != static_cast<double>(Auto)) MoveSlider((value - m_Minimum) / m_Increment);
}

void FloatWidget::TextEdited()
{
    const QString text = text_->text();
    bool isNumber = false;
    double value = text.toDouble(&isNumber);
    if (text == "Auto")
        value = static_cast<double>(Auto);
    else if (!isNumber)
        value = m_Minimum;
    else if (!m_DynamicRange)
        value = std::clamp(value, m_Minimum, m_Maximum);
    SetValue(value);
    Notify(false);
}

void FloatWidget::SliderMoved(int position)
{
    text_->setModified(false);
    const double value = m_Minimum + position * m_Increment;
    SetValue(m_DynamicRange ? value : std::min(value, m_Maximum));
    Notify(isButtonLeftDown_);
}

BoolWidget::BoolWidget(const QString& label, bool enabled, QWidget* parent) : ValueWidget(parent)
{
    auto* row = Row(*this);
    if (enabled) {
        box_ = new QCheckBox(label);
        box_->setObjectName("Check");
        row->addWidget(box_);
        row->addStretch(1);
        connect(box_, &QCheckBox::toggled, this, [this] { Notify(false); });
        return;
    }
    row->addWidget(Caption(label));
    text_ = Output();
    row->addWidget(text_);
    row->addStretch(1);
    setMinimumWidth(200);
    SetValue(false);
}

bool BoolWidget::Value() const
{
    return box_ ? box_->isChecked() : value_;
}

void BoolWidget::SetValue(bool value)
{
    value_ = value;
    if (box_) {
        const QSignalBlocker quiet(box_);
        box_->setChecked(value);
    } else
        text_->setText(value ? "True" : "False");
}

RgbWidget::RgbWidget(const QString& label, bool enabled, std::uint32_t flags, QWidget* parent) : ValueWidget(parent)
{
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(2, 2, 2, 2);
    grid->addWidget(Caption(label), 0, 0);
    static constexpr const char* names[3] = {"Red", "Green", "Blue"};
    const bool spin = flags & attributeValue::SpinBox,
               slider = !(flags & (attributeValue::SpinBox | attributeValue::TextOnly));
    for (int c = 0; c < 3; c++) {
        auto* name = new QLabel(tr(names[c]));
        grid->addWidget(name, c, 1);
        if (!enabled) {
            outputs_[c] = Output();
            grid->addWidget(outputs_[c], c, 2);
            continue;
        }
        if (spin) {
            spins_[c] = new QSpinBox;
            spins_[c]->setObjectName(QString("Spin") + names[c]);
            spins_[c]->setRange(0, 255);
            spins_[c]->setKeyboardTracking(false);
            grid->addWidget(spins_[c], c, 2);
            connect(spins_[c], &QSpinBox::valueChanged, this, [this, c](int v) { SetComponent(c, v, false); });
            continue;
        }
        texts_[c] = new QLineEdit;
        texts_[c]->setObjectName(QString("Text") + names[c]);
        texts_[c]->setFixedWidth(textWidth);
        grid->addWidget(texts_[c], c, 2);
        connect(texts_[c], &QLineEdit::textEdited, this,
                [this, c](const QString& text) { SetComponent(c, text.toInt(), false); });
        // What cannot be read is put right when the box is left.
        connect(texts_[c], &QLineEdit::editingFinished, this,
                [this, c] { texts_[c]->setText(QString::number(Component(c))); });
        if (!slider) continue;
        sliders_[c] = new QSlider(Qt::Horizontal);
        sliders_[c]->setObjectName(QString("Slider") + names[c]);
        sliders_[c]->setRange(0, 255);
        sliders_[c]->setMinimumWidth(110);
        grid->addWidget(sliders_[c], c, 3);
        connect(sliders_[c], &QSlider::valueChanged, this,
                [this, c](int v) { SetComponent(c, v, sliders_[c]->isSliderDown()); });
        connect(sliders_[c], &QSlider::sliderReleased, this, [this] { Notify(false); });
    }
    if (enabled) {
        swatch_ = new QLabel;
        swatch_->setObjectName("Swatch");
        swatch_->setFrameStyle(QFrame::Panel | QFrame::Sunken);
        swatch_->setFixedSize(36, 36);
        swatch_->setAutoFillBackground(true);
        swatch_->setToolTip(tr("Press to paste a color that was copied from a picture"));
        swatch_->installEventFilter(this);
        grid->addWidget(swatch_, 0, 4, 3, 1, Qt::AlignCenter);
    }
    grid->setColumnStretch(5, 1);
    Show();
}

int RgbWidget::Component(int component) const
{
    return component == 0 ? m_Value.Red : component == 1 ? m_Value.Green : m_Value.Blue;
}

void RgbWidget::SetComponent(int component, int value, bool dragging)
{
    int parts[3] = {m_Value.Red, m_Value.Green, m_Value.Blue};
    parts[component] = std::clamp(value, 0, 255);
    m_Value = RgbPixel(parts[0], parts[1], parts[2]);
    Show();
    Notify(dragging);
}

void RgbWidget::SetValue(RgbPixel value)
{
    m_Value = value;
    Show();
}

void RgbWidget::Show()
{
    for (int c = 0; c < 3; c++) {
        const QString text = QString::number(Component(c));
        if (outputs_[c]) outputs_[c]->setText(text);
        if (texts_[c] && !texts_[c]->hasFocus() && texts_[c]->text() != text) texts_[c]->setText(text);
        if (spins_[c]) {
            const QSignalBlocker quiet(spins_[c]);
            spins_[c]->setValue(Component(c));
        }
        if (sliders_[c] && !sliders_[c]->isSliderDown()) {
            const QSignalBlocker quiet(sliders_[c]);
            sliders_[c]->setValue(Component(c));
        }
    }
    if (!swatch_) return;
    QPalette colors = swatch_->palette();
    colors.setColor(QPalette::Window, QColor(m_Value.Red, m_Value.Green, m_Value.Blue));
    swatch_->setPalette(colors);
}

bool RgbWidget::Paste(const QString& text)
{
    const QStringList parts = text.split(QRegularExpression("[ :]"), Qt::SkipEmptyParts);
    const bool isColor = parts.size() >= 4 && (parts[0] == "RGB" || parts[0] == "RGBA");
    const bool isGray = parts.size() == 2 && parts[0] == "Gray";
    if (!isColor && !isGray) return false;
    int values[3];
    for (int c = 0; c < 3; c++) {
        bool isNumber = false;
        values[c] = parts[isGray ? 1 : c + 1].toInt(&isNumber);
        if (!isNumber || values[c] < 0 || values[c] > 255) return false;
    }
    SetValue(RgbPixel(values[0], values[1], values[2]));
    Notify(false);
    return true;
}

bool RgbWidget::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == swatch_ && event->type() == QEvent::MouseButtonPress) {
        QMenu menu(this);
        menu.setObjectName("SwatchMenu");
        const QAction* paste = menu.addAction(tr("Paste Color"));
        if (menu.exec(static_cast<QMouseEvent*>(event)->globalPosition().toPoint()) == paste)
            Paste(QGuiApplication::clipboard()->text());
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

XYWidget::XYWidget(const QString& label, bool enabled, std::uint32_t flags, QWidget* parent) : ValueWidget(parent)
{
    auto* row = Row(*this);
    row->addWidget(Caption(label));
    static constexpr const char* names[2] = {"X", "Y"};
    for (int i = 0; i < 2; i++) {
        row->addWidget(new QLabel(names[i]));
        if (!enabled) {
            outputs_[i] = Output();
            row->addWidget(outputs_[i]);
        } else if (flags & attributeValue::SpinBox) {
            spins_[i] = new QDoubleSpinBox;
            spins_[i]->setObjectName(QString("Spin") + names[i]);
            spins_[i]->setDecimals(2);
            spins_[i]->setRange(-farthest, farthest);
            spins_[i]->setSingleStep(0.1);
            spins_[i]->setKeyboardTracking(false);
            row->addWidget(spins_[i]);
            connect(spins_[i], &QDoubleSpinBox::valueChanged, this, [this] { Edited(); });
        } else {
            texts_[i] = new QLineEdit;
            texts_[i]->setObjectName(QString("Text") + names[i]);
            texts_[i]->setFixedWidth(textWidth + 16);
            row->addWidget(texts_[i]);
            connect(texts_[i], &QLineEdit::textEdited, this, [this] { Edited(); });
            connect(texts_[i], &QLineEdit::editingFinished, this,
                    [this, i] { texts_[i]->setText(FloatWidget::TextOf(i == 0 ? m_Value.X : m_Value.Y)); });
        }
    }
    row->addStretch(1);
}

void XYWidget::SetRange(double minimumX, double maximumX, double minimumY, double maximumY)
{
    m_MinimumX = minimumX;
    m_MaximumX = maximumX;
    m_MinimumY = minimumY;
    m_MaximumY = maximumY;
    if (!spins_[0]) return;
    const QSignalBlocker quietX(spins_[0]), quietY(spins_[1]);
    spins_[0]->setRange(minimumX, maximumX);
    spins_[1]->setRange(minimumY, maximumY);
}

void XYWidget::Edited()
{
    if (spins_[0])
        m_Value = XY(spins_[0]->value(), spins_[1]->value());
    else {
        bool isX = false, isY = false;
        const double x = texts_[0]->text().toDouble(&isX), y = texts_[1]->text().toDouble(&isY);
        m_Value = isX && isY ? XY(x, y) : XY(m_MinimumX, m_MinimumY);
    }
    Notify(false);
}

void XYWidget::SetValue(const XY& value)
{
    m_Value = value;
    const double parts[2] = {value.X, value.Y};
    for (int i = 0; i < 2; i++) {
        if (outputs_[i]) {
            outputs_[i]->setText(QString::number(parts[i], 'f', numberOfDecimal_));
            outputs_[i]->setToolTip(FloatWidget::ExactText(parts[i]));
        }
        if (texts_[i] && !texts_[i]->hasFocus()) {
            const QString text = FloatWidget::TextOf(parts[i]);
            if (texts_[i]->text() != text) texts_[i]->setText(text);
        }
        if (spins_[i]) {
            const QSignalBlocker quiet(spins_[i]);
            spins_[i]->setValue(parts[i]);
        }
    }
}

} // namespace TeskPlus
