// The panel at the right of the main window: the operations in sequence, their variables and properties, as a tree.
#pragma once

#include "workbench/logic/OperationList.h"

#include <set>
#include <utility>

#include <QIcon>
#include <QWidget>

class QTimer;
class QTreeWidget;
class QTreeWidgetItem;

namespace TeskPlus {

class OperationList2 final : public QWidget
{
    Q_OBJECT

public:
    explicit OperationList2(OperationList& list, QWidget* parent = nullptr);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    class NameDelegate;

    void Rebuild();
    void Press(const QTreeWidgetItem& item);
    void ScheduleRebuild();
    void FillItem(QTreeWidgetItem& item, const ListLine& line, const ListPath& path);
    /// The part of `FillItem` that a run may change.
    void FillText(QTreeWidgetItem& item, const ListLine& line, const ListPath& path);
    void RefreshTexts();
    const QIcon& IconOf(lineImage image) const;
    QTreeWidgetItem* ItemAt(const ListPath& path) const;
    static ListPath PathOf(const QTreeWidgetItem* item);
    void ShowContextMenu(const QPoint& place);
    void EndEdit(const std::wstring* text);

    OperationList& list_;
    QTreeWidget* tree_;
    const QIcon canBePinned_, pinned_, current_, none_; ///< made once: a rebuild shows each of them many times
    std::set<int> changedTexts_;                        ///< operations whose lines are to be refreshed
    QTimer* hover_;
    ListPath hovered_;
    std::pair<int, std::size_t> shown_{-1, 0}; ///< the current operation and the number of them when last shown
    bool rebuilding_ = false, rebuildScheduled_ = false, editing_ = false;
};

} // namespace TeskPlus
