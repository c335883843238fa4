#include "workbench/views/OperationForm.h"

#include "workbench/views/Text.h"
#include "workbench/views/values/HelpWidget.h"

#include <QButtonGroup>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QTabBar>

namespace TeskPlus {

namespace {

/// Marks the controls that belong to controllers, not to the window that shows them.
constexpr const char* ownedElsewhere = "OwnedElsewhere";
/// Radio buttons stand in columns of this many.
constexpr int buttonsToColumn = 8;

} // namespace

void PutControl(QGridLayout& grid, QWidget* control, int row, int column, int span)
{
    control->setProperty(ownedElsewhere, true);
    grid.addWidget(control, row, column, 1, span);
    control->show();
}

void TakeControlsOut(QWidget& rows)
{
    const QList<QWidget*> children = rows.findChildren<QWidget*>();
    for (QWidget* child : children)
        if (child->property(ownedElsewhere).toBool()) {
            child->hide();
            child->setParent(nullptr);
        }
}

OperationForm::OperationForm(QMdiArea& area, const OperationFormInfo& info)
    : ToolWindow(area, "OperationForm", info.HasBar)
{
    setWindowTitle("Tesk+");
    delete_ = new QPushButton(tr("Delete"));
    delete_->setObjectName("Delete");
    delete_->setToolTip(tr("Remove this operation from the sequence"));
    apply_ = new QPushButton(tr("Apply"));
    apply_->setObjectName("Apply");
    apply_->setToolTip(tr("Run this operation with the parameters as they stand"));
    apply_->hide();
    Bar().addStretch(1);
    Bar().addWidget(delete_);
    Bar().addWidget(apply_);
    connect(delete_, &QPushButton::clicked, this, [this] { cancelOperationDelegate_(); });
    connect(apply_, &QPushButton::clicked, this, [this] { applyOperationDelegate_(); });
    if (info.Tabs.size() > 1) {
        tabItems_ = info.Tabs;
        tabs_ = new QTabBar;
        tabs_->setObjectName("ClassTabs");
        tabs_->setUsesScrollButtons(true);
        tabs_->setElideMode(Qt::ElideNone);
        // The rows decide how wide the window is; arrows lead to the tabs that do not fit.
        tabs_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
        for (std::size_t i = 0; i < tabItems_.size(); i++) {
            const int tab = tabs_->addTab(Qt16(tabItems_[i].Label));
            if (tabItems_[i].IsPending) {
                tabs_->setTabEnabled(tab, false);
                tabs_->setTabToolTip(tab, Qt16(Engine::PendingReason));
            }
        }
        SelectTab(info.CurrentTab);
        connect(tabs_, &QTabBar::currentChanged, this, [this](int tab) {
            if (tab < 0 || tab == currentTab_) return;
            const int former = currentTab_;
            currentTab_ = tab;
            // The change may replace this window: nothing of it is touched after an accepted one.
            const operationItemInfo item = tabItems_[static_cast<std::size_t>(tab)].Item;
            if (!tabDelegate_(item)) SelectTab(former);
        });
        Content().addWidget(tabs_);
    }
    rows_ = new QWidget;
    rows_->setObjectName("Rows");
    Content().addWidget(rows_);
    Content().addStretch(1);
}

OperationForm::~OperationForm()
{
    TakeControlsOut(*rows_);
}

void OperationForm::SelectTab(int tab)
{
    if (!tabs_) return;
    const QSignalBlocker quiet(tabs_);
    currentTab_ = tab;
    tabs_->setCurrentIndex(tab);
}

void OperationForm::ShowRadioGroup(const RadioGroupInfo& group)
{
    delete group_;
    delete buttons_;
    group_ = nullptr;
    buttons_ = nullptr;
    groupItems_ = group.Buttons;
    if (group.Buttons.empty()) return;
    group_ = new QGroupBox(Qt16(group.Caption));
    group_->setObjectName("MethodGroup");
    buttons_ = new QButtonGroup(this);
    auto* grid = new QGridLayout(group_);
    grid->setVerticalSpacing(2);
    for (std::size_t i = 0; i < groupItems_.size(); i++) {
        auto* button = new QRadioButton(Qt16(groupItems_[i].Label));
        if (groupItems_[i].IsPending) {
            button->setEnabled(false);
            button->setToolTip(Qt16(Engine::PendingReason));
        } else
            button->setToolTip(Qt16(Engine::Tree[groupItems_[i].Item.OperationNode]->Documentation));
        button->setChecked(groupItems_[i].Item.OperationNode == group.CheckedMethod);
        const int at = static_cast<int>(i);
        buttons_->addButton(button, at);
        grid->addWidget(button, at % buttonsToColumn, at / buttonsToColumn);
    }
    connect(buttons_, &QButtonGroup::idToggled, this, [this](int id, bool checked) {
        if (checked) radioDelegate_(groupItems_[static_cast<std::size_t>(id)].Item);
    });
    Content().insertWidget(tabs_ ? 1 : 0, group_);
}

void OperationForm::CheckRadioButton(int method)
{
    if (!buttons_) return;
    const QSignalBlocker quiet(buttons_);
    for (std::size_t i = 0; i < groupItems_.size(); i++)
        if (groupItems_[i].Item.OperationNode == method) buttons_->button(static_cast<int>(i))->setChecked(true);
}

void OperationForm::LayOutPanel(CommandPanel& panel)
{
    ClearPanel();
    auto* grid = new QGridLayout(rows_);
    grid->setContentsMargins(0, 0, 0, 0);
    int row = 0;
    const auto addHelp = [&](const std::wstring& text, helpStyle style, int column, int span) {
        auto* help = new HelpWidget(Qt16(text), style);
        grid->addWidget(help, row, column, 1, span);
    };
    if (!panel.Title().empty()) {
        addHelp(panel.Title(), helpStyle::Title, 0, 2);
        row++;
    }
    if (panel.HasResetButton()) {
        auto* reset = new QPushButton(tr("Reset"));
        reset->setObjectName("Reset");
        connect(reset, &QPushButton::clicked, this, [this] { resetDelegate_(); });
        grid->addWidget(reset, row, 0);
        addHelp(panel.ResetHelp(), helpStyle::Row, 1, 1);
        row++;
    }
    for (const LayoutRow& line : panel.BuildCommandPanel()) {
        if (line.Controller && line.Controller->Control())
            PutControl(*grid, static_cast<QWidget*>(line.Controller->Control()), row, 0);
        else if (line.Selector && line.Selector->Control)
            PutControl(*grid, static_cast<QWidget*>(line.Selector->Control), row, 0);
        if (line.Help) addHelp(*line.Help, helpStyle::Row, 1, 1);
        row++;
    }
    for (const ControlHandle external : panel.ExternalControls())
        PutControl(*grid, static_cast<QWidget*>(external), row++, 0, 2);
    grid->setColumnStretch(1, 1);
    FitContent();
}

void OperationForm::ClearPanel()
{
    TakeControlsOut(*rows_);
    qDeleteAll(rows_->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly));
    delete rows_->layout();
}

void OperationForm::EnableDeleteButton(bool enabled)
{
    delete_->setEnabled(enabled);
    delete_->setToolTip(enabled ? tr("Remove this operation from the sequence")
                                : tr("A later operation reads what this one makes; delete that one first"));
}

void OperationForm::ShowApplyButton(bool shown)
{
    apply_->setVisible(shown);
}

} // namespace TeskPlus
