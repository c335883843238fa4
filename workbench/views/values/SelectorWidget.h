// The box in which the user chooses the variable of an argument.
#pragma once

#include "workbench/logic/VariableSelector.h"

#include <QWidget>

class QComboBox;
class QLabel;

namespace TeskPlus {

class SelectorWidget final : public QWidget
{
    Q_OBJECT

public:
    explicit SelectorWidget(VariableSelector& selector);
    ~SelectorWidget() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Refill();

    VariableSelector* selector_;
    QComboBox* box_;
};

} // namespace TeskPlus
