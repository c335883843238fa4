// Tables of results.
#pragma once

#include "workbench/logic/ControllerBase.h"

#include <QAbstractTableModel>
#include <QPointer>
#include <QTableView>

#include <functional>
#include <optional>

namespace TeskPlus {

/// What the table of a class's results shows.
struct FeaturesRow
{
    int MinimumWidth; ///< before it has been shown once, with no rows
    std::vector<QString> (*Columns)(AnyVariable& Object);
    int (*Count)(AnyVariable& Object);
    /// The values of one line, a column each; nothing leaves a cell empty.
    std::vector<std::optional<double>> (*Values)(AnyVariable& Object, int Line);
    /// The column whose values are the codes of characters, which are shown; -1 for none.
    int CharacterColumn = -1;
    /// Whether it is left as it stands while the user drags something.
    bool RestsWhileDragging = false;
    bool SelectsRows = false, IsSorted = true;
    int LeastColumnWidth = 0; ///< columns share the width that there is, down to this; 0 for columns of the usual width
    QSize FixedSize = {};     ///< empty: the size follows the content
    /// The line that is marked; -1 for none. Null for a table without a selection of the library's.
    int (*Selected)(AnyVariable& Object) = nullptr;
    void (*Select)(AnyVariable& Object, int Line) = nullptr;
    const wchar_t* CopyLabel = nullptr; ///< null for no menu
};

/// Reads the values of an object once for each push.
class FeaturesModel final : public QAbstractTableModel
{
    Q_OBJECT

public:
    static constexpr int numberOfDecimal_ = 3;

    explicit FeaturesModel(int characterColumn = -1) : characterColumn_(characterColumn) {}

    void Fill(std::vector<QString> columns, std::vector<std::vector<std::optional<double>>> lines);
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    void sort(int column, Qt::SortOrder order) override;
    /// The whole table, with its headers: columns parted by tabulators.
    QString Text() const;
    /// Where a line of the object stands, and the other way round.
    int PlaceOf(int line) const;
    int LineAt(int place) const { return order_[static_cast<std::size_t>(place)]; }

private:
    const std::optional<double>& ValueAt(int place, int column) const;
    void Arrange();

    std::vector<QString> columns_;
    std::vector<std::vector<std::optional<double>>> lines_;
    std::vector<int> order_;
    int characterColumn_;
    int sortColumn_ = -1;
    Qt::SortOrder sortOrder_ = Qt::AscendingOrder;
};

/// A read-only grid.
class FeaturesGrid final : public QTableView
{
    Q_OBJECT

public:
    explicit FeaturesGrid(const FeaturesRow& row);
    QSize sizeHint() const override { return wanted_; }
    void SetWanted(QSize size);

private:
    QSize wanted_;
};

class GenericFeaturesController : public ControllerBase
{
public:
    static constexpr int maxDataGridViewWidth_ = 600, maxDataGridViewHeight_ = 350;

    GenericFeaturesController(const ControllerRequest& Request, const FeaturesRow& Row);
    ~GenericFeaturesController() override;

    /// Rebuilds the table, but for the push that follows the user's choice of a line.
    void UpdateControl(bool Mode, bool Dragging) override;
    void AddChild(IController&) override {}
    void RemoveChild(IController&) override {}
    ControlHandle Control() const override { return static_cast<QWidget*>(grid_); }
    FeaturesGrid* Grid() const { return grid_; }

private:
    void AutomaticResizeForm();
    void ShowSelected();
    void MenuAsked(QPoint at);

    const FeaturesRow& row_;
    FeaturesModel model_;
    QPointer<FeaturesGrid> grid_;
    int chosenLine_ = -1; ///< the user's choice, until the push that follows it
};

} // namespace TeskPlus
