#include "workbench/views/values/SelectorWidget.h"

#include "workbench/views/Text.h"

#include <QComboBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QSignalBlocker>
#include <QStyle>
#include <QStyleOptionComboBox>

namespace TeskPlus {

SelectorWidget::SelectorWidget(VariableSelector& selector) : selector_(&selector)
{
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    auto* label = new QLabel(Qt16(Engine::Tree[selector.Node()]->Label));
    box_ = new QComboBox;
    box_->setObjectName("Selector");
    box_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    box_->setMinimumWidth(110);
    label->setBuddy(box_);
    row->addWidget(label);
    row->addWidget(box_);
    row->addStretch(1);
    box_->installEventFilter(this);
    selector.Refilled = [this] { Refill(); };
    selector.Released = [this] {
        // The selector may go in the middle of an event of this box.
        selector_ = nullptr;
        hide();
        setParent(nullptr);
        deleteLater();
    };
    connect(box_, &QComboBox::currentIndexChanged, this, [this](int item) {
        if (selector_ && item >= 0) selector_->Choose(item);
    });
    Refill();
}

SelectorWidget::~SelectorWidget()
{
    if (!selector_) return;
    selector_->Refilled = nullptr;
    selector_->Released = nullptr;
    selector_->Control = nullptr;
}

void SelectorWidget::Refill()
{
    const QSignalBlocker quiet(box_);
    box_->clear();
    for (const AnyVariable* variable : selector_->Items())
        box_->addItem(Qt16(variable->Name));
    box_->setCurrentIndex(selector_->SelectedIndex());
    box_->setToolTip(selector_->IsMissing() ? tr("There is no such variable yet: create one first") : QString());
    box_->setStyleSheet(selector_->IsMissing() ? "QComboBox { background: #d04040; }" : QString());
}

bool SelectorWidget::eventFilter(QObject* watched, QEvent* event)
{
    // A press that does not open the list brings the chosen variable's window to the front.
    if (watched == box_ && event->type() == QEvent::MouseButtonPress && box_->count() > 0) {
        const auto* press = static_cast<QMouseEvent*>(event);
        QStyleOptionComboBox option;
        option.initFrom(box_);
        option.subControls = QStyle::SC_All;
        const QRect arrow = box_->style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxArrow, box_);
        if (selector_ && press->button() == Qt::LeftButton && !arrow.contains(press->pos())) selector_->Click();
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace TeskPlus
