#include "workbench/views/OperationList2.h"

#include "workbench/views/Text.h"

#include <QApplication>
#include <QFontMetrics>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMouseEvent>
#include <QSignalBlocker>
#include <QStyledItemDelegate>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <optional>
#include <utility>

namespace TeskPlus {

namespace {

constexpr int captionHeight = 23;
/// How long the pointer must rest on a line, in ms, until its window is shown for the moment.
constexpr int restTime = 400;

constexpr int iconSide = 16;
/// Above and below a line's text.
constexpr int linePadding = 2;
/// Where an item keeps which image it shows.
constexpr int imageRole = Qt::UserRole;

} // namespace

/// Makes all lines as high as the highest, and edits the name of a variable, which is the part of a line's text before
/// the type.
class OperationList2::NameDelegate final : public QStyledItemDelegate
{
public:
    explicit NameDelegate(OperationList2& owner) : QStyledItemDelegate(&owner), owner_(owner)
    {
        connect(this, &QAbstractItemDelegate::closeEditor, this, [this] {
            const std::optional<std::wstring> text = std::exchange(text_, std::nullopt);
            // The answer may open a message, which must not stand inside the editor's closing.
            QTimer::singleShot(0, &owner_, [this, text] { owner_.EndEdit(text ? &*text : nullptr); });
        });
    }

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        QFont face = option.font;
        face.setBold(true);
        QSize size = QStyledItemDelegate::sizeHint(option, index);
        size.setHeight(std::max(iconSide, QFontMetrics(face).height()) + 2 * linePadding);
        return size;
    }

    void setEditorData(QWidget* editor, const QModelIndex&) const override
    {
        if (auto* line = qobject_cast<QLineEdit*>(editor)) line->setText(Qt16(owner_.list_.RenamedName()));
    }
    void setModelData(QWidget* editor, QAbstractItemModel*, const QModelIndex&) const override
    {
        // A name that nobody touched is no new one.
        auto* line = qobject_cast<QLineEdit*>(editor);
        if (line && (line->isModified() || line->text() != Qt16(owner_.list_.RenamedName())))
            text_ = line->text().toStdWString();
    }

private:
    OperationList2& owner_;
    mutable std::optional<std::wstring> text_;
};

OperationList2::OperationList2(OperationList& list, QWidget* parent)
    : QWidget(parent), list_(list), canBePinned_(":/Ok16_White.bmp"), pinned_(":/OkOk16.bmp"), current_(":/Current.bmp")
{
    setObjectName("OperationList2");
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    auto* caption = new QLabel(tr("Operations"));
    caption->setObjectName("Caption");
    caption->setMinimumHeight(captionHeight);
    caption->setContentsMargins(6, 0, 6, 0);
    caption->setAutoFillBackground(true);
    caption->setBackgroundRole(QPalette::Midlight);
    column->addWidget(caption);
    tree_ = new QTreeWidget;
    tree_->setObjectName("Operations");
    tree_->setHeaderHidden(true);
    tree_->setRootIsDecorated(true);
    tree_->setUniformRowHeights(true);
    tree_->setIconSize({iconSide, iconSide});
    tree_->setSelectionMode(QAbstractItemView::SingleSelection);
    tree_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    tree_->setExpandsOnDoubleClick(false);
    tree_->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    tree_->header()->setStretchLastSection(false);
    // Sized by whoever changes a line: by itself it would measure all lines for each change of one.
    tree_->header()->setSectionResizeMode(QHeaderView::Fixed);
    tree_->setContextMenuPolicy(Qt::CustomContextMenu);
    tree_->setMouseTracking(true);
    tree_->setItemDelegate(new NameDelegate(*this));
    tree_->installEventFilter(this);
    tree_->viewport()->installEventFilter(this);
    column->addWidget(tree_, 1);

    hover_ = new QTimer(this);
    hover_->setSingleShot(true);
    hover_->setInterval(restTime);
    connect(hover_, &QTimer::timeout, this, [this] { list_.NodeMouseHover(hovered_); });
    connect(tree_, &QTreeWidget::itemClicked, this, [this](QTreeWidgetItem* item) {
        if (!rebuilding_) Press(*item);
    });
    connect(tree_, &QTreeWidget::itemExpanded, this, [this](QTreeWidgetItem* item) {
        if (rebuilding_) return;
        list_.BeforeExpand(PathOf(item));
        ScheduleRebuild();
    });
    connect(tree_, &QTreeWidget::itemCollapsed, this, [this](QTreeWidgetItem* item) {
        if (rebuilding_) return;
        list_.BeforeCollapse(PathOf(item));
        ScheduleRebuild();
    });
    connect(tree_, &QTreeWidget::customContextMenuRequested, this, &OperationList2::ShowContextMenu);
    list_.Changed = [this] { ScheduleRebuild(); };
    list_.TextsChanged = [this](const std::vector<int>& ids) {
        if (changedTexts_.empty()) QTimer::singleShot(0, this, [this] { RefreshTexts(); });
        changedTexts_.insert(ids.begin(), ids.end());
    };
    list_.StartLabelEdit = [this](const ListPath& path) {
        Rebuild();
        QTreeWidgetItem* item = ItemAt(path);
        // Behind a box that waits for an answer nobody can type.
        if (!item || QApplication::activeModalWidget()) {
            list_.AfterLabelEdit(nullptr);
            return;
        }
        item->setFlags(item->flags() | Qt::ItemIsEditable);
        editing_ = true;
        tree_->editItem(item);
    };
    Rebuild();
}

/// A left click on a line. Windows that come up leave the keyboard to the list.
void OperationList2::Press(const QTreeWidgetItem& item)
{
    list_.NodeMouseClick(PathOf(&item));
    tree_->setFocus();
}

ListPath OperationList2::PathOf(const QTreeWidgetItem* item)
{
    ListPath path;
    std::vector<int> places;
    for (; item; item = item->parent()) {
        const QTreeWidgetItem* above = item->parent();
        places.insert(places.begin(),
                      above ? above->indexOfChild(const_cast<QTreeWidgetItem*>(item))
                            : item->treeWidget()->indexOfTopLevelItem(const_cast<QTreeWidgetItem*>(item)));
    }
    if (!places.empty()) path.Operation = places[0];
    if (places.size() > 1) path.Variable = places[1];
    if (places.size() > 2) path.Property = places[2];
    return path;
}

QTreeWidgetItem* OperationList2::ItemAt(const ListPath& path) const
{
    QTreeWidgetItem* item = path.Operation >= 0 ? tree_->topLevelItem(path.Operation) : nullptr;
    if (item && path.Variable >= 0) item = item->child(path.Variable);
    if (item && path.Property >= 0) item = item->child(path.Property);
    return item;
}

const QIcon& OperationList2::IconOf(lineImage image) const
{
    switch (image) {
    case lineImage::CanBePinned:
        return canBePinned_;
    case lineImage::Pinned:
        return pinned_;
    case lineImage::CurrentOperation:
        return current_;
    default:
        return none_;
    }
}

void OperationList2::FillText(QTreeWidgetItem& item, const ListLine& line, const ListPath& path)
{
    item.setText(0, Qt16(line.Text));
    const int node = path.Level() == 0 ? line.Item.OperationNode : line.Variable.VariableNode;
    if (!line.Failure.empty()) {
        item.setToolTip(0, tr("Failed: %1").arg(Qt16(line.Failure)));
        // A red that is readable on a light and on a dark list.
        item.setForeground(0, tree_->palette().color(QPalette::Base).lightness() < 128 ? QColor(0xff, 0x6b, 0x6b)
                                                                                       : QColor(0xc0, 0, 0));
    } else {
        item.setToolTip(0, node >= 0 ? Qt16(Engine::Tree[node]->Documentation) : QString());
        item.setData(0, Qt::ForegroundRole, QVariant());
    }
}

void OperationList2::FillItem(QTreeWidgetItem& item, const ListLine& line, const ListPath& path)
{
    FillText(item, line, path);
    const QVariant image(static_cast<int>(line.ImageIndex));
    if (item.data(0, imageRole) != image) {
        item.setData(0, imageRole, image);
        item.setIcon(0, IconOf(line.ImageIndex));
    }
    QFont face = tree_->font();
    face.setBold(path.Level() == 0);
    item.setFont(0, face);
    while (item.childCount() > static_cast<int>(line.Lines.size()))
        delete item.takeChild(item.childCount() - 1);
    for (std::size_t i = 0; i < line.Lines.size(); i++) {
        if (item.childCount() <= static_cast<int>(i)) item.addChild(new QTreeWidgetItem);
        ListPath below = path;
        (path.Level() == 0 ? below.Variable : below.Property) = static_cast<int>(i);
        FillItem(*item.child(static_cast<int>(i)), line.Lines[i], below);
    }
    item.setChildIndicatorPolicy(QTreeWidgetItem::DontShowIndicatorWhenChildless);
    item.setExpanded(line.IsExpanded);
}

void OperationList2::ScheduleRebuild()
{
    if (rebuildScheduled_) return;
    rebuildScheduled_ = true;
    // One time for all changes of an event, and never inside a signal of the tree.
    QTimer::singleShot(0, this, [this] { Rebuild(); });
}

void OperationList2::RefreshTexts()
{
    // A rebuild that waits, or that an edit holds back, fills the texts as well.
    if (!editing_ && !rebuildScheduled_) {
        const QSignalBlocker quiet(tree_);
        for (const int id : changedTexts_) {
            const ListLine* line = list_.LineAt({id});
            QTreeWidgetItem* item = tree_->topLevelItem(id);
            if (!line || !item) continue;
            FillText(*item, *line, {id});
            const int wanted = tree_->indentation() + tree_->sizeHintForIndex(tree_->indexFromItem(item)).width();
            if (wanted > tree_->columnWidth(0)) tree_->setColumnWidth(0, wanted);
        }
    }
    changedTexts_.clear();
}

void OperationList2::Rebuild()
{
    rebuildScheduled_ = false;
    if (editing_) return;
    rebuilding_ = true;
    const QSignalBlocker quiet(tree_);
    const std::vector<ListLine>& lines = list_.Lines();
    int current = -1;
    while (tree_->topLevelItemCount() > static_cast<int>(lines.size()))
        delete tree_->takeTopLevelItem(tree_->topLevelItemCount() - 1);
    for (std::size_t i = 0; i < lines.size(); i++) {
        if (tree_->topLevelItemCount() <= static_cast<int>(i)) tree_->addTopLevelItem(new QTreeWidgetItem);
        FillItem(*tree_->topLevelItem(static_cast<int>(i)), lines[i], {static_cast<int>(i), -1, -1});
        if (lines[i].ImageIndex == lineImage::CurrentOperation) current = static_cast<int>(i);
    }
    tree_->resizeColumnToContents(0);
    // The selection moves and is scrolled to once; after that the list stays where the user scrolls it.
    const std::pair selection(current, lines.size());
    if (selection != shown_ && current >= 0) {
        tree_->setCurrentItem(tree_->topLevelItem(current));
        tree_->scrollToItem(tree_->topLevelItem(current));
    }
    shown_ = selection;
    rebuilding_ = false;
}

void OperationList2::EndEdit(const std::wstring* text)
{
    editing_ = false;
    if (!list_.IsRenaming()) return;
    list_.AfterLabelEdit(text);
    if (!editing_) Rebuild();
}

bool OperationList2::eventFilter(QObject* watched, QEvent* event)
{
    // Enter and Space do what a click does, so that the list can be walked from the keyboard.
    if (watched == tree_ && event->type() == QEvent::KeyPress && !list_.IsRenaming() && tree_->currentItem()) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space) {
            Press(*tree_->currentItem());
            return true;
        }
    }
    if (watched == tree_->viewport() && !list_.IsRenaming()) {
        if (event->type() == QEvent::MouseMove) {
            const QTreeWidgetItem* item = tree_->itemAt(static_cast<QMouseEvent*>(event)->pos());
            const ListPath path = item ? PathOf(item) : ListPath();
            if (!(path == hovered_)) {
                hovered_ = path;
                hover_->start();
            }
        } else if (event->type() == QEvent::Leave) {
            hovered_ = {};
            hover_->stop();
            list_.NodeMouseHover({});
        }
    }
    return QWidget::eventFilter(watched, event);
}

void OperationList2::ShowContextMenu(const QPoint& place)
{
    const QTreeWidgetItem* item = tree_->itemAt(place);
    const ListPath path = item ? PathOf(item) : ListPath();
    const std::vector<ListMenuEntry> entries = list_.ContextMenu(path);
    if (entries.empty()) return;
    QMenu menu(this);
    menu.setObjectName("ListMenu");
    std::vector<QAction*> actions;
    for (const ListMenuEntry& entry : entries) {
        actions.push_back(menu.addAction(Qt16(entry.Text)));
        actions.back()->setEnabled(entry.Enabled);
    }
    const QAction* chosen = menu.exec(tree_->viewport()->mapToGlobal(place));
    for (std::size_t i = 0; i < actions.size(); i++)
        if (chosen && actions[i] == chosen) list_.Run(entries[i].Action, path);
}

} // namespace TeskPlus
