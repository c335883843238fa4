// The grid of a convolution mask's coefficients, and its sheet.
#pragma once

#include "workbench/views/objects/PropertySheetController.h"

#include <QAbstractTableModel>
#include <QPointer>
#include <QTableView>

#include <functional>
#include <vector>

class QDoubleSpinBox;

namespace Tesk {
class Kernel;
}

namespace TeskPlus {

/// The coefficients at full precision, shown with three decimals.
class KernelModel final : public QAbstractTableModel
{
    Q_OBJECT

public:
    /// Called after the user's change of a cell.
    std::function<void()> Edited;

    int Width() const { return width_; }
    int Height() const { return height_; }
    double At(int column, int row) const { return values_[Index(column, row)]; }
    /// True if the size is another one than before.
    bool Fill(int width, int height, const std::vector<double>& values);

    int rowCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : height_; }
    int columnCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : width_; }
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    std::size_t Index(int column, int row) const
    {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(column);
    }

    int width_ = 0, height_ = 0;
    std::vector<double> values_;
};

/// The gain, the button and the grid.
class KernelWidget final : public QWidget
{
    Q_OBJECT

public:
    explicit KernelWidget(KernelModel& model);
    double Gain() const;
    /// The grid takes the size of its cells.
    void FitCells();

    std::function<void()> NormalizeAsked;

private:
    QDoubleSpinBox* gain_;
    QTableView* grid_;
};

class KernelController final : public ControllerBase
{
public:
    explicit KernelController(const ControllerRequest& Request);
    ~KernelController() override;

    /// The cells go to the mask; one of another size is made a mean.
    void UpdateProperty() override;
    void UpdateControl(bool Mode, bool Dragging) override;
    void AddChild(IController&) override {}
    void RemoveChild(IController&) override {}
    ControlHandle Control() const override { return static_cast<QWidget*>(widget_); }

    /// The grid has taken another size.
    std::function<void()> Resized;

private:
    KernelModel model_;
    QPointer<KernelWidget> widget_;
};

class KernelPropertyPageController final : public PropertySheetController
{
public:
    KernelPropertyPageController(const ControllerRequest& Request, ViewContext& Context);

protected:
    void AddExtras(int page) override;
    /// A size that stays leaves the coefficients alone.
    void PullRow(IController& row) override;
};

} // namespace TeskPlus
