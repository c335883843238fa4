// The window of one operation: tabs of its class, radio group of its sisters, rows of its arguments, Delete and Apply.
#pragma once

#include "workbench/logic/IOperationViews.h"
#include "workbench/views/ToolWindow.h"

#include <functional>

class QButtonGroup;
class QGridLayout;
class QGroupBox;
class QPushButton;
class QTabBar;

namespace TeskPlus {

class OperationForm final : public ToolWindow
{
    Q_OBJECT

public:
    OperationForm(QMdiArea& area, const OperationFormInfo& info);
    ~OperationForm() override;

    // What the buttons, the tabs and the radio group call.
    std::function<void()> cancelOperationDelegate_, applyOperationDelegate_, resetDelegate_;
    /// False if the user stays on the former tab.
    std::function<bool(const operationItemInfo&)> tabDelegate_;
    std::function<void(const operationItemInfo&)> radioDelegate_;

    void SelectTab(int tab);
    void ShowRadioGroup(const RadioGroupInfo& group);
    void CheckRadioButton(int method);
    /// Fills the grid: one row for each argument, controls in the first column and help in the second.
    void LayOutPanel(CommandPanel& panel);
    /// Takes the controls out and leaves them alive.
    void ClearPanel();
    void EnableDeleteButton(bool enabled);
    void ShowApplyButton(bool shown);

private:
    QTabBar* tabs_ = nullptr;
    std::vector<LabeledItem> tabItems_;
    QGroupBox* group_ = nullptr;
    QButtonGroup* buttons_ = nullptr;
    std::vector<LabeledItem> groupItems_;
    QWidget* rows_ = nullptr;
    QPushButton *delete_, *apply_;
    int currentTab_ = -1;
};

/// Puts a control, which its controller owns, into a cell; and takes all such controls out of a widget again.
void PutControl(QGridLayout& grid, QWidget* control, int row, int column, int span = 1);
void TakeControlsOut(QWidget& rows);

} // namespace TeskPlus
