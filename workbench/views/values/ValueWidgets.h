// The widgets of values in rows: each shows one value in the shape that the flags of its node ask for, and calls
// `Changed` after a change by the user. A change made by the program calls nothing.
#pragma once

#include "foundation/Records.h"

#include <QWidget>

#include <functional>
#include <limits>

class QAbstractSlider;
class QCheckBox;
class QDoubleSpinBox;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QSlider;
class QSpinBox;
class QToolButton;

namespace TeskPlus {

/// What all of them share.
class ValueWidget : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

    /// Called with true while the mouse button holds a slider.
    std::function<void(bool dragging)> Changed;

protected:
    void Notify(bool dragging) const
    {
        if (Changed) Changed(dragging);
    }
};

/// A number as a text box alone, a spin box alone, or a text box with a slider. `Number` is `int` or `double`.
class NumberWidget : public ValueWidget
{
    Q_OBJECT

public:
    NumberWidget(const QString& label, QWidget* parent);

    /// A number that is not enabled is a result: it can be selected, copied and, under the pointer, read with all its
    /// digits.
    void SetState(bool enabled, std::uint32_t flags);
    bool IsDragging() const { return isButtonLeftDown_; }

protected:
    /// The text box, or the spin box, in a form common to both kinds of number.
    virtual void TextEdited() = 0;
    virtual void SliderMoved(int position) = 0;
    virtual QWidget* SpinBox() = 0;
    /// Shows a text, unless it stands there already; the caret goes behind its end.
    void ShowText(const QString& text);
    /// All digits of a result.
    void ShowExact(const QString& text);
    bool eventFilter(QObject* watched, QEvent* event) override;
    /// Moves the slider without an event.
    void MoveSlider(double position);
    void SetSliderRange(double last);

    QLabel* label_;
    QLineEdit* text_;
    QSlider* slider_;
    QToolButton* auto_;
    QHBoxLayout* row_;
    bool m_DynamicRange = false, isButtonLeftDown_ = false, isTyping_ = false;

private:
    void CopyResult() const;
    void ShowResultMenu(QPoint at);

    QString exact_;
};

/// A whole number; the words "Auto" and "MaxInt" stand for the library's special values.
class IntWidget final : public NumberWidget
{
    Q_OBJECT

public:
    explicit IntWidget(const QString& label, QWidget* parent = nullptr);

    /// A position of the slider stands for `minimum + position * increment`.
    void SetRange(int minimum, int maximum, int increment);
    void SetState(bool enabled, std::uint32_t flags);
    void SetMaximum(int maximum) { SetRange(m_Minimum, maximum, m_Increment); }
    int Minimum() const { return m_Minimum; }
    int Maximum() const { return m_Maximum; }
    int Value() const { return m_Value; }
    void SetValue(int value);

    static QString TextOf(int value);

private:
    class Spin;
    void TextEdited() override;
    void SliderMoved(int position) override;
    QWidget* SpinBox() override;
    int Parsed(const QString& text) const;

    int m_Value = 0, m_Minimum = 0, m_Maximum = 255, m_Increment = 1;
    Spin* spin_;
};

/// A number with decimals; "Auto" stands for the library's special value.
class FloatWidget final : public NumberWidget
{
    Q_OBJECT

public:
    explicit FloatWidget(const QString& label, QWidget* parent = nullptr);

    void SetRange(double minimum, double maximum, double increment);
    void SetState(bool enabled, std::uint32_t flags);
    double Value() const { return m_Value; }
    void SetValue(double value);

    /// The format "0.###".
    static QString TextOf(double value);
    /// All digits that tell the number from others.
    static QString ExactText(double value);
    /// Whether a text may stand in the box while it is typed: digits, one "-" at the start, one ".".
    static bool MayBeTyped(const QString& text);

private:
    void TextEdited() override;
    void SliderMoved(int position) override;
    QWidget* SpinBox() override;

    double m_Value = 0, m_Minimum = 0, m_Maximum = 1, m_Increment = 0.01;
    QDoubleSpinBox* spin_;
};

/// A truth value: a check box, or for an output two labels.
class BoolWidget final : public ValueWidget
{
    Q_OBJECT

public:
    BoolWidget(const QString& label, bool enabled, QWidget* parent = nullptr);

    bool Value() const;
    void SetValue(bool value);

private:
    QCheckBox* box_ = nullptr;
    QLabel* text_ = nullptr;
    bool value_ = false;
};

/// A color: three numbers and a swatch.
class RgbWidget final : public ValueWidget
{
    Q_OBJECT

public:
    RgbWidget(const QString& label, bool enabled, std::uint32_t flags, QWidget* parent = nullptr);

    Tesk::RgbPixel Value() const { return m_Value; }
    void SetValue(Tesk::RgbPixel value);
    /// Takes the color of a text as a picture's "Copy Pixel" gives it; false for any other text.
    bool Paste(const QString& text);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void SetComponent(int component, int value, bool dragging);
    int Component(int component) const;
    void Show();

    Tesk::RgbPixel m_Value{0, 0, 0};
    QLineEdit* texts_[3] = {};
    QSpinBox* spins_[3] = {};
    QSlider* sliders_[3] = {};
    QLabel *outputs_[3] = {}, *swatch_ = nullptr;
};

/// A point: two text boxes, two spin boxes, or for an output two labels.
class XYWidget final : public ValueWidget
{
    Q_OBJECT

public:
    static constexpr double farthest = 999999.0;

    XYWidget(const QString& label, bool enabled, std::uint32_t flags, QWidget* parent = nullptr);

    Tesk::XY Value() const { return m_Value; }
    void SetValue(const Tesk::XY& value);
    /// Decimals shown of an output.
    void SetNumberOfDecimals(int decimals) { numberOfDecimal_ = decimals; }
    /// A text that cannot be read gives the minima.
    void SetRange(double minimumX, double maximumX, double minimumY, double maximumY);

private:
    void Edited();

    Tesk::XY m_Value{0, 0};
    double m_MinimumX = -farthest, m_MaximumX = farthest, m_MinimumY = -farthest, m_MaximumY = farthest;
    int numberOfDecimal_ = 1;
    QLineEdit* texts_[2] = {};
    QDoubleSpinBox* spins_[2] = {};
    QLabel* outputs_[2] = {};
};

} // namespace TeskPlus
