// The view: its columns, its construction, and the right button.
#include "veleditor/src/VELTree.h"

#include "veleditor/src/Document.h"
#include "veleditor/src/EditParamDialog.h"
#include "veleditor/src/FindDialog.h"
#include "veleditor/src/RowDelegate.h"
#include "veleditor/src/TreeBuilder.h"

#include <QHeaderView>
#include <QMouseEvent>
#include <QScrollBar>
#include <QStyle>
#include <QStyleFactory>

#include <utility>
#include <vector>

namespace velEditor {

namespace {

constexpr int indentationPixels = 40;
constexpr int valueColumnPixels = 400;

} // namespace

VELTree::VELTree(QWidget *parent, const QString &name, Document *document)
    : QTreeWidget(parent),
      document_(document != nullptr ? document : new Document(std::string(), this))
{
    setObjectName(name);
    setAccessibleName(tr("Command data"));
    followDocument();
    clearModified();

    setHeaderLabels({tr("Name"), tr("Value")});
    setSorting(-1);
    setIndentation(indentationPixels);
    setRootIsDecorated(false);
    setEditTriggers(NoEditTriggers);
    setUniformRowHeights(true);
    setFrameShape(NoFrame); // so that the columns use the whole width
    header()->setSectionResizeMode(QHeaderView::Interactive);
    header()->setStretchLastSection(false);
    setColumnWidth(VELTreeItem::Value, valueColumnPixels);
    setItemDelegate(new RowDelegate(this));
    if (QStyle *windows = QStyleFactory::create(QStringLiteral("Windows"))) {
        windows->setParent(this);
        setStyle(windows);
    }

    connect(this, &QTreeWidget::itemDoubleClicked, this, &VELTree::editQListItem);
    connect(this, &VELTree::rightButtonClicked, this, &VELTree::openOrClose);
    connect(horizontalScrollBar(), &QScrollBar::rangeChanged, this,
            &VELTree::keepFromMovingSideways);
    buildTree();
}

VELTree::~VELTree() = default;

void VELTree::buildTree()
{
    refused_ = {};
    flowItem_ = nullptr;
    lastFlowChild_ = nullptr;
    expertItem_ = nullptr;
    lastAddedItem_ = nullptr;
    if (findDialog_ != nullptr) {
        findDialog_->setNextItem(nullptr);
    }
    clear();

    BuiltTree built = TreeBuilder().build();
    flowItem_ = built.flowItem;
    lastFlowChild_ = built.lastFlowChild;
    expertItem_ = built.expertItem;
    addTopLevelItem(built.root.release());
    topLevelItem(0)->setExpanded(true);
}

VELTreeItem *VELTree::selectedItem() const
{
    const QList<QTreeWidgetItem *> selected = selectedItems();
    return selected.isEmpty() ? nullptr : VELTreeItem::from(selected.first());
}

void VELTree::setSorting(int column, bool ascending)
{
    if (column < 0) {
        setSortingEnabled(false);
        return;
    }
    header()->setSortIndicator(column, ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
    setSortingEnabled(true);
}

void VELTree::setSorting(int column)
{
    setSorting(column, true);
}

bool VELTree::columnsFit() const
{
    return header()->length() <= maximumViewportSize().width();
}

// The columns use the whole width of the view, and the vertical scroll bar covers the
// end of the second one. That must not make the horizontal bar appear.
void VELTree::updateGeometries()
{
    setHorizontalScrollBarPolicy(columnsFit() ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded);
    QTreeWidget::updateGeometries();
}

// Nor must the view move sideways. The toolkit sets the range again before it scrolls
// to a row.
void VELTree::keepFromMovingSideways()
{
    if (columnsFit()) {
        horizontalScrollBar()->setRange(0, 0);
    }
}

void VELTree::contextMenuEvent(QContextMenuEvent *event)
{
    if (event->reason() == QContextMenuEvent::Keyboard) {
        emit menuRequested(placeBesideRow());
    }
}

// The toolkit starts editing after a double click of any button. The second release of
// the right button must not count as another click, because two clicks would undo each
// other.
void VELTree::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton) {
        QTreeWidget::mouseDoubleClickEvent(event);
    } else if (event->button() == Qt::RightButton) {
        isRightDoubleClick_ = true;
    }
}

void VELTree::mouseReleaseEvent(QMouseEvent *event)
{
    QTreeWidget::mouseReleaseEvent(event);
    if (event->button() != Qt::RightButton || std::exchange(isRightDoubleClick_, false)) {
        return;
    }
    const QPoint point = event->position().toPoint();
    emit rightButtonClicked(itemAt(point), event->globalPosition().toPoint(), columnAt(point.x()));
}

void VELTree::openOrClose(QTreeWidgetItem *, QPoint point, int)
{
    if (QTreeWidgetItem *item = itemAt(viewport()->mapFromGlobal(point))) {
        setOpen(item, !item->isExpanded());
    }
}

// With a pending layout, the view only notes each change and is laid out once.
void VELTree::setOpen(QTreeWidgetItem *item, bool open)
{
    scheduleDelayedItemsLayout();
    std::vector<QTreeWidgetItem *> rows{item};
    while (!rows.empty()) {
        QTreeWidgetItem *row = rows.back();
        rows.pop_back();
        if (row->childCount() > 0) {
            row->setExpanded(open);
        }
        for (int i = 0; i < row->childCount(); ++i) {
            rows.push_back(row->child(i));
        }
    }
}

} // namespace velEditor
