#include "workbench/views/objects/GenericFeaturesController.h"

#include "workbench/views/Text.h"
#include "workbench/views/picture/CopyText.h"
#include "workbench/views/values/ValueWidgets.h"

#include <QHeaderView>
#include <QMenu>
#include <QScrollBar>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace TeskPlus {

void FeaturesModel::Fill(std::vector<QString> columns, std::vector<std::vector<std::optional<double>>> lines)
{
    beginResetModel();
    columns_ = std::move(columns);
    lines_ = std::move(lines);
    Arrange();
    endResetModel();
}

void FeaturesModel::Arrange()
{
    order_.resize(lines_.size());
    std::iota(order_.begin(), order_.end(), 0);
    if (sortColumn_ < 0 || sortColumn_ >= columnCount()) return;
    const auto value = [&](int line) {
        return lines_[static_cast<std::size_t>(line)][static_cast<std::size_t>(sortColumn_)];
    };
    // An empty cell is less than any number.
    std::stable_sort(order_.begin(), order_.end(), [&](int a, int b) {
        return sortOrder_ == Qt::AscendingOrder ? value(a) < value(b) : value(b) < value(a);
    });
}

int FeaturesModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(lines_.size());
}

int FeaturesModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

const std::optional<double>& FeaturesModel::ValueAt(int place, int column) const
{
    return lines_[static_cast<std::size_t>(LineAt(place))][static_cast<std::size_t>(column)];
}

QVariant FeaturesModel::data(const QModelIndex& index, int role) const
{
    if (role == Qt::TextAlignmentRole) return QVariant(Qt::AlignRight | Qt::AlignVCenter);
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole) return {};
    const std::optional<double>& value = ValueAt(index.row(), index.column());
    if (!value) return {};
    if (index.column() == characterColumn_) return QString(QChar(static_cast<ushort>(*value)));
    if (role == Qt::ToolTipRole) return FloatWidget::ExactText(*value);
    const double scale = std::pow(10.0, numberOfDecimal_);
    return std::isfinite(*value) ? std::round(*value * scale) / scale : *value;
}

QVariant FeaturesModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
    return columns_[static_cast<std::size_t>(section)];
}

void FeaturesModel::sort(int column, Qt::SortOrder order)
{
    emit layoutAboutToBeChanged();
    const std::vector<int> former = order_;
    sortColumn_ = column;
    sortOrder_ = order;
    Arrange();
    // What is selected stays selected, wherever it stands now.
    const QModelIndexList held = persistentIndexList();
    QModelIndexList moved;
    for (const QModelIndex& cell : held)
        moved.push_back(index(PlaceOf(former[static_cast<std::size_t>(cell.row())]), cell.column()));
    changePersistentIndexList(held, moved);
    emit layoutChanged();
}

int FeaturesModel::PlaceOf(int line) const
{
    const auto place = std::find(order_.begin(), order_.end(), line);
    return place == order_.end() ? -1 : static_cast<int>(place - order_.begin());
}

QString FeaturesModel::Text() const
{
    QString text;
    for (int column = 0; column < columnCount(); column++)
        text += (column ? "\t" : "") + columns_[static_cast<std::size_t>(column)];
    for (int place = 0; place < rowCount(); place++)
        for (int column = 0; column < columnCount(); column++)
            text += (column ? "\t" : "\r\n") + data(index(place, column), Qt::DisplayRole).toString();
    return text + "\r\n";
}

FeaturesGrid::FeaturesGrid(const FeaturesRow& row) : wanted_(row.MinimumWidth, row.MinimumWidth)
{
    setObjectName("FeaturesGrid");
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    setSortingEnabled(row.IsSorted);
    if (row.IsSorted) {
        horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
        // A third press on a head brings back the order of the object.
        horizontalHeader()->setSortIndicatorClearable(true);
    }
    // Where the size is given, all columns share it.
    if (!row.FixedSize.isEmpty() || row.LeastColumnWidth > 0) {
        horizontalHeader()->setMinimumSectionSize(std::max(row.LeastColumnWidth, 1));
        horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    }
    if (row.SelectsRows) {
        setSelectionBehavior(QAbstractItemView::SelectRows);
        setSelectionMode(QAbstractItemView::SingleSelection);
    }
    setContextMenuPolicy(Qt::CustomContextMenu);
    setMinimumHeight(80);
}

void FeaturesGrid::SetWanted(QSize size)
{
    if (size == wanted_) return;
    wanted_ = size;
    updateGeometry();
}

GenericFeaturesController::GenericFeaturesController(const ControllerRequest& Request, const FeaturesRow& Row)
    : ControllerBase(Request, true), row_(Row), model_(Row.CharacterColumn)
{
    grid_ = new FeaturesGrid(Row);
    grid_->setModel(&model_);
    if (Row.Select)
        QObject::connect(grid_, &QAbstractItemView::clicked, grid_, [this](const QModelIndex& cell) {
            chosenLine_ = model_.LineAt(cell.row());
            Notify(true, false, false);
        });
    if (Row.CopyLabel)
        QObject::connect(grid_, &QWidget::customContextMenuRequested, grid_, [this](QPoint at) { MenuAsked(at); });
    UpdateControl(false, false);
}

GenericFeaturesController::~GenericFeaturesController()
{
    delete grid_;
}

void GenericFeaturesController::UpdateControl(bool, bool Dragging)
{
    if (!currentVariable_ || (Dragging && row_.RestsWhileDragging)) return;
    if (const int line = std::exchange(chosenLine_, -1); line >= 0) {
        row_.Select(*currentVariable_, line);
        ShowSelected();
        return;
    }
    std::vector<std::vector<std::optional<double>>> lines;
    const int count = row_.Count(*currentVariable_);
    lines.reserve(static_cast<std::size_t>(std::max(count, 0)));
    std::vector<QString> columns = row_.Columns(*currentVariable_);
    for (int line = 0; line < count; line++) {
        lines.push_back(row_.Values(*currentVariable_, line));
        lines.back().resize(columns.size());
    }
    model_.Fill(std::move(columns), std::move(lines));
    AutomaticResizeForm();
    ShowSelected();
}

void GenericFeaturesController::ShowSelected()
{
    if (!row_.Selected) return;
    const int place = model_.PlaceOf(row_.Selected(*currentVariable_));
    if (place < 0) {
        grid_->clearSelection();
        return;
    }
    grid_->selectRow(place);
    grid_->scrollTo(model_.index(place, 0));
}

void GenericFeaturesController::AutomaticResizeForm()
{
    if (!row_.FixedSize.isEmpty()) {
        grid_->SetWanted(row_.FixedSize);
        return;
    }
    const int lines = model_.rowCount(), frame = 2 * grid_->frameWidth();
    int width = frame + (lines > 0 ? grid_->horizontalHeader()->length() : row_.MinimumWidth - frame);
    int height = frame + grid_->horizontalHeader()->sizeHint().height() + (lines > 0 ? lines * grid_->rowHeight(0) : 0);
    const int bar = grid_->verticalScrollBar()->sizeHint().width();
    if (height > maxDataGridViewHeight_) width += bar;
    if (width > maxDataGridViewWidth_) height += bar;
    grid_->SetWanted({std::min(width, maxDataGridViewWidth_), std::min(height, maxDataGridViewHeight_)});
}

void GenericFeaturesController::MenuAsked(QPoint at)
{
    auto* menu = new QMenu(grid_);
    menu->setObjectName("FeaturesMenu");
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(Qt16(row_.CopyLabel), [this] { CopyText(model_.Text().toStdWString()); });
    menu->popup(grid_->viewport()->mapToGlobal(at));
}

} // namespace TeskPlus
