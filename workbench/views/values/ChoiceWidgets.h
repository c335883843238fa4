// The widgets of an enumeration and of a text.
#pragma once

#include "workbench/views/values/ValueWidgets.h"

#include <vector>

#include <QStringList>

class QButtonGroup;
class QComboBox;
class QGridLayout;
class QListWidget;

namespace TeskPlus {

/// One item of a choice: its text, and the value that it stands for.
struct ChoiceItem
{
    QString Text;
    int Tag;
};

/// A choice among the cases of an enumeration: radio buttons, a combo box, a list, or for an output a label. With
/// `Mixed` a last item "Nth" stands for any number, which a box beside it holds.
class RadioButtonGroupWidget final : public ValueWidget
{
    Q_OBJECT

public:
    static constexpr int buttonsToRow = 5;

    RadioButtonGroupWidget(const QString& label, bool enabled, std::uint32_t flags,
                           const std::vector<ChoiceItem>& items, QWidget* parent = nullptr);

    /// The tag of the chosen item, or the number of the box.
    int Value() const;
    /// Chooses the item of a value; one that no item has goes to the box.
    void SetValue(int value);
    bool IsCustom() const;
    /// The number beside "Nth".
    void SetCustomRange(int minimum, int maximum);
    int CustomValue() const;
    void SetCustomValue(int value);

private:
    int Chosen() const;
    void Choose(int item);
    void ChosenByUser();

    std::vector<ChoiceItem> tags_;
    bool isMixed_;
    int value_ = 0;
    QButtonGroup* radioButtons_ = nullptr;
    QComboBox* combo_ = nullptr;
    QListWidget* list_ = nullptr;
    QSpinBox* numericUpDown = nullptr;
    QLabel* output_ = nullptr;
};

/// A text or a file name: a text box, a list of file names, or for an output a label.
class StringInputWidget final : public ValueWidget
{
    Q_OBJECT

public:
    /// A text longer than this is shown by its two ends.
    static constexpr int longestShown = 64;

    StringInputWidget(const QString& label, bool enabled, std::uint32_t flags, QWidget* parent = nullptr);

    QString Value() const { return value_; }
    void SetValue(const QString& value);
    /// Shows the button that asks for a file; "open" or "save".
    void ShowFileButton(const QString& icon);
    bool HasFileButton() const;
    /// Appends file names to the list and selects the first of them.
    void AppendFiles(const QStringList& paths);
    /// A text that holds one character at most.
    void SetMaximumLength(int length);

    /// The first and the last 32 characters of a long text.
    static QString Shortened(const QString& text);

    /// Pressed: the operation's dialog.
    std::function<void()> FileButtonPressed;

private:
    QString value_;
    QLineEdit* text_ = nullptr;
    QListWidget* list_ = nullptr;
    QToolButton* button_ = nullptr;
    QPushButton* clear_ = nullptr;
    QLabel* output_ = nullptr;
};

} // namespace TeskPlus
