#include "workbench/views/values/ChoiceWidgets.h"

#include "engine/TreeNode.h"

#include <algorithm>
#include <vector>

#include <QButtonGroup>
#include <QClipboard>
#include <QComboBox>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QToolButton>

namespace TeskPlus {

using namespace Tesk;

namespace {

constexpr int outputWidth = 205, labelWidth = 110, listHeight = 64;

QLabel* SunkenOutput()
{
    auto* label = new QLabel;
    label->setObjectName("Output");
    label->setFrameStyle(QFrame::Panel | QFrame::Sunken);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    QFont face = label->font();
    face.setBold(true);
    label->setFont(face);
    return label;
}

} // namespace

RadioButtonGroupWidget::RadioButtonGroupWidget(const QString& label, bool enabled, std::uint32_t flags,
                                               const std::vector<ChoiceItem>& items, QWidget* parent)
    : ValueWidget(parent), tags_(items), isMixed_(enabled && flags & attributeValue::Mixed)
{
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(2, 2, 2, 2);
    const bool radio = enabled && !(flags & (attributeValue::TextOnly | attributeValue::SpinBox));
    if (!radio) {
        auto* caption = new QLabel(label);
        caption->setMinimumWidth(labelWidth);
        row->addWidget(caption);
    }
    if (!enabled) {
        output_ = SunkenOutput();
        setMinimumWidth(outputWidth);
        row->addWidget(output_);
        row->addStretch(1);
        return;
    }
    QStringList texts;
    for (const ChoiceItem& item : tags_)
        texts << item.Text;
    if (isMixed_) {
        texts << tr("Nth");
        numericUpDown = new QSpinBox;
        numericUpDown->setObjectName("Nth");
        numericUpDown->setEnabled(false);
        numericUpDown->setKeyboardTracking(false);
        numericUpDown->setMinimumWidth(64);
        connect(numericUpDown, &QSpinBox::valueChanged, this, [this] { Notify(false); });
    }
    if (radio) {
        auto* group = new QGroupBox(label);
        auto* grid = new QGridLayout(group);
        grid->setVerticalSpacing(2);
        radioButtons_ = new QButtonGroup(this);
        for (int i = 0; i < texts.size(); i++) {
            auto* button = new QRadioButton(texts[i]);
            radioButtons_->addButton(button, i);
            grid->addWidget(button, i / buttonsToRow, i % buttonsToRow);
        }
        if (numericUpDown)
            grid->addWidget(numericUpDown, static_cast<int>(texts.size()) / buttonsToRow,
                            static_cast<int>(texts.size()) % buttonsToRow);
        connect(radioButtons_, &QButtonGroup::idToggled, this, [this](int, bool checked) {
            if (checked) ChosenByUser();
        });
        row->addWidget(group);
        row->addStretch(1);
        return;
    }
    if (flags & attributeValue::TextOnly) {
        list_ = new QListWidget;
        list_->setObjectName("List");
        list_->addItems(texts);
        list_->setFixedHeight(listHeight);
        list_->setMinimumWidth(110);
        row->addWidget(list_);
        connect(list_, &QListWidget::currentRowChanged, this, [this](int at) {
            if (at >= 0) ChosenByUser();
        });
    } else {
        combo_ = new QComboBox;
        combo_->setObjectName("Combo");
        combo_->addItems(texts);
        row->addWidget(combo_);
        connect(combo_, &QComboBox::currentIndexChanged, this, [this](int at) {
            if (at >= 0) ChosenByUser();
        });
    }
    if (numericUpDown) row->addWidget(numericUpDown);
    row->addStretch(1);
}

int RadioButtonGroupWidget::Chosen() const
{
    return radioButtons_ ? radioButtons_->checkedId()
           : list_       ? list_->currentRow()
           : combo_      ? combo_->currentIndex()
                         : -1;
}

void RadioButtonGroupWidget::Choose(int item)
{
    if (radioButtons_) {
        const QSignalBlocker quiet(radioButtons_);
        if (auto* button = radioButtons_->button(item)) button->setChecked(true);
    } else if (list_) {
        const QSignalBlocker quiet(list_);
        list_->setCurrentRow(item);
    } else if (combo_) {
        const QSignalBlocker quiet(combo_);
        combo_->setCurrentIndex(item);
    }
    if (numericUpDown) numericUpDown->setEnabled(IsCustom());
}

void RadioButtonGroupWidget::ChosenByUser()
{
    if (numericUpDown) numericUpDown->setEnabled(IsCustom());
    Notify(false);
}

bool RadioButtonGroupWidget::IsCustom() const
{
    return isMixed_ && Chosen() == static_cast<int>(tags_.size());
}

int RadioButtonGroupWidget::Value() const
{
    if (output_) return value_;
    if (IsCustom()) return numericUpDown->value();
    const int chosen = Chosen();
    return chosen >= 0 && chosen < static_cast<int>(tags_.size()) ? tags_[static_cast<std::size_t>(chosen)].Tag
                                                                  : value_;
}

void RadioButtonGroupWidget::SetValue(int value)
{
    value_ = value;
    for (std::size_t i = 0; i < tags_.size(); i++)
        if (tags_[i].Tag == value) {
            if (output_)
                output_->setText(tags_[i].Text);
            else
                Choose(static_cast<int>(i));
            return;
        }
    if (output_)
        output_->setText(QString::number(value));
    else if (isMixed_) {
        SetCustomValue(value);
        Choose(static_cast<int>(tags_.size()));
    } else {
        // No case stands for it: none is chosen, and the value stays.
        Choose(-1);
    }
}

void RadioButtonGroupWidget::SetCustomRange(int minimum, int maximum)
{
    if (!numericUpDown) return;
    const QSignalBlocker quiet(numericUpDown);
    numericUpDown->setRange(minimum, std::max(minimum, maximum));
}

int RadioButtonGroupWidget::CustomValue() const
{
    return numericUpDown ? numericUpDown->value() : 0;
}

void RadioButtonGroupWidget::SetCustomValue(int value)
{
    if (!numericUpDown) return;
    const QSignalBlocker quiet(numericUpDown);
    // A value that came with the variable is shown, whatever the range said.
    numericUpDown->setRange(std::min(value, numericUpDown->minimum()), std::max(value, numericUpDown->maximum()));
    numericUpDown->setValue(value);
}

StringInputWidget::StringInputWidget(const QString& label, bool enabled, std::uint32_t flags, QWidget* parent)
    : ValueWidget(parent)
{
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(2, 2, 2, 2);
    auto* caption = new QLabel(label);
    caption->setMinimumWidth(labelWidth);
    row->addWidget(caption);
    if (!enabled) {
        output_ = SunkenOutput();
        output_->setMinimumWidth(120);
        row->addWidget(output_);
        row->addStretch(1);
        return;
    }
    if (flags & attributeValue::Slider) {
        list_ = new QListWidget;
        list_->setObjectName("List");
        list_->setMinimumWidth(240);
        list_->setFixedHeight(listHeight);
        list_->setTextElideMode(Qt::ElideMiddle);
        list_->setContextMenuPolicy(Qt::CustomContextMenu);
        row->addWidget(list_, 1);
        connect(list_, &QListWidget::currentItemChanged, this, [this](const QListWidgetItem* item) {
            if (!item) return;
            value_ = item->data(Qt::UserRole).toString();
            Notify(false);
        });
        connect(list_, &QListWidget::customContextMenuRequested, this, [this](const QPoint& place) {
            const QListWidgetItem* item = list_->itemAt(place);
            if (!item) return;
            QMenu menu(this);
            menu.setObjectName("ListMenu");
            const QAction* copy = menu.addAction(tr("Copy File Name to Clipboard"));
            if (menu.exec(list_->viewport()->mapToGlobal(place)) == copy)
                QGuiApplication::clipboard()->setText(item->data(Qt::UserRole).toString());
        });
    } else {
        text_ = new QLineEdit;
        text_->setObjectName("Text");
        text_->setMinimumWidth(180);
        caption->setBuddy(text_);
        row->addWidget(text_, 1);
        connect(text_, &QLineEdit::textEdited, this, [this](const QString& text) {
            // A box that shows the file's name alone keeps the folder, unless another one is typed.
            const bool isName = HasFileButton() && !value_.isEmpty() && !text.contains('/');
            value_ = isName ? QFileInfo(value_).path() + '/' + text : text;
            Notify(false);
        });
    }
    button_ = new QToolButton;
    button_->setObjectName("Open");
    button_->setToolTip(tr("Choose a file"));
    button_->hide();
    row->addWidget(button_);
    connect(button_, &QToolButton::clicked, this, [this] {
        if (FileButtonPressed) FileButtonPressed();
    });
    if (list_) {
        clear_ = new QPushButton(tr("Clear"));
        clear_->setObjectName("Clear");
        clear_->hide();
        row->addWidget(clear_);
        connect(clear_, &QPushButton::clicked, this, [this] {
            const QSignalBlocker quiet(list_);
            list_->clear();
        });
    }
}

QString StringInputWidget::Shortened(const QString& text)
{
    return text.size() > longestShown ? text.left(longestShown / 2) + "..." + text.right(longestShown / 2) : text;
}

bool StringInputWidget::HasFileButton() const
{
    return button_ && !button_->isHidden();
}

void StringInputWidget::SetValue(const QString& value)
{
    value_ = value;
    if (output_) {
        output_->setText(Shortened(value));
        output_->setToolTip(value);
    } else if (text_) {
        const QString shown = HasFileButton() ? QFileInfo(value).fileName() : value;
        if (!text_->hasFocus() && text_->text() != shown) text_->setText(shown);
        text_->setToolTip(value);
    } else {
        // The file is listed once, and selected.
        const QSignalBlocker quiet(list_);
        for (int i = 0; i < list_->count(); i++)
            if (list_->item(i)->data(Qt::UserRole).toString() == value) {
                list_->setCurrentRow(i);
                return;
            }
        if (!value.isEmpty()) AppendFiles({value});
    }
}

void StringInputWidget::AppendFiles(const QStringList& paths)
{
    if (!list_ || paths.isEmpty()) return;
    const QSignalBlocker quiet(list_);
    const int first = list_->count();
    for (const QString& path : paths) {
        auto* item = new QListWidgetItem(QFileInfo(path).fileName(), list_);
        item->setData(Qt::UserRole, path);
        item->setToolTip(path);
    }
    list_->setCurrentRow(first);
    value_ = paths.front();
}

void StringInputWidget::ShowFileButton(const QString& icon)
{
    if (!button_) return;
    button_->setIcon(QIcon(":/" + icon + ".png"));
    button_->show();
    if (clear_ && icon == "open") clear_->show();
}

void StringInputWidget::SetMaximumLength(int length)
{
    if (text_) text_->setMaxLength(length);
}

} // namespace TeskPlus
