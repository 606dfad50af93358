// The rows of the list, their buttons, keys and copies.
#include "veleditor/src/DifferenceList.h"

#include "veleditor/src/Text.h"

#include <QAbstractTableModel>
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QTextDocument>

#include <algorithm>
#include <array>
#include <set>
#include <utility>

namespace velEditor {

namespace {

/// At first, no column is wider than this, in pixels.
constexpr std::array<int, DifferenceList::Action + 1> widest{120, 330, 180, 180, 120};

/// Around the text of a button, in pixels.
constexpr QSize buttonMargin(18, 6);

/// Draws the cells of the last column as buttons.
class ButtonDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override
    {
        QStyleOptionViewItem background = option;
        initStyleOption(&background, index);
        const QStyle *style = option.widget->style();
        style->drawPrimitive(QStyle::PE_PanelItemViewItem, &background, painter, option.widget);

        QStyleOptionButton button;
        button.rect = option.rect.adjusted(1, 1, -1, -1);
        button.text = background.text;
        button.palette = option.palette;
        button.fontMetrics = option.fontMetrics;
        button.state = (option.state &
                        (QStyle::State_Enabled | QStyle::State_MouseOver | QStyle::State_Active)) |
                       QStyle::State_Raised;
        style->drawControl(QStyle::CE_PushButton, &button, painter, option.widget);
    }

    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem &option,
                                 const QModelIndex &index) const override
    {
        const QFontMetrics &metrics = option.fontMetrics;
        return QSize(metrics.horizontalAdvance(index.data().toString()), metrics.height()) +
               buttonMargin;
    }
};

QString valueText(const std::optional<std::string> &value)
{
    return value ? fromBytes(*value) : QString();
}

} // namespace

/// A row for each difference, a column for each part of it.
class DifferenceModel : public QAbstractTableModel
{
public:
    using QAbstractTableModel::QAbstractTableModel;

    void setDifferences(std::vector<veltext::Change> differences)
    {
        beginResetModel();
        differences_ = std::move(differences);
        endResetModel();
    }
    [[nodiscard]] const std::vector<veltext::Change> &differences() const { return differences_; }

    void setHeading(int column, const QString &heading)
    {
        headings_[column] = heading;
        emit headerDataChanged(Qt::Horizontal, column, column);
    }

    void setAction(const QString &text)
    {
        beginResetModel();
        action_ = text;
        endResetModel();
    }
    [[nodiscard]] bool hasAction() const { return !action_.isEmpty(); }

    /// The whole text of a cell.
    [[nodiscard]] QString text(const QModelIndex &place) const
    {
        const veltext::Change &difference = differences_[static_cast<std::size_t>(place.row())];
        switch (place.column()) {
        case DifferenceList::Kind:
            return DifferenceList::kindText(difference.kind);
        case DifferenceList::Path:
            return fromBytes(difference.path);
        case DifferenceList::Before:
            return valueText(difference.oldValue);
        case DifferenceList::After:
            return valueText(difference.newValue);
        default:
            return action_;
        }
    }

    [[nodiscard]] int rowCount(const QModelIndex &parent) const override
    {
        return parent.isValid() ? 0 : static_cast<int>(differences_.size());
    }
    [[nodiscard]] int columnCount(const QModelIndex &parent) const override
    {
        return parent.isValid() ? 0 : DifferenceList::Action + (hasAction() ? 1 : 0);
    }

    [[nodiscard]] QVariant data(const QModelIndex &place, int role) const override
    {
        if (role == Qt::DisplayRole) {
            return shortened(text(place));
        }
        if (role == Qt::ToolTipRole) {
            return Qt::convertFromPlainText(shortened(text(place)), Qt::WhiteSpaceNormal);
        }
        return {};
    }

    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override
    {
        const bool isHeading = orientation == Qt::Horizontal && role == Qt::DisplayRole;
        return isHeading ? QVariant(headings_[section]) : QVariant();
    }

private:
    std::vector<veltext::Change> differences_;
    std::array<QString, DifferenceList::Action + 1> headings_;
    QString action_;
};

DifferenceList::DifferenceList(const char *name, const QString &accessibleName, QWidget *parent)
    : QTreeView(parent), model_(new DifferenceModel(this))
{
    setObjectName(QString::fromLatin1(name));
    setAccessibleName(accessibleName);
    model_->setHeading(Kind, tr("Difference"));
    model_->setHeading(Path, tr("Path"));
    setValueHeadings(tr("Before"), tr("After"));
    setModel(model_);
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setSelectionMode(ExtendedSelection);
    setEditTriggers(NoEditTriggers);
    setTextElideMode(Qt::ElideMiddle);
    header()->setSectionsMovable(false);
    connect(header(), &QHeaderView::sectionResized, this,
            [this] { hasUserWidths_ |= QApplication::mouseButtons() != Qt::NoButton; });

    auto *copy = new QAction(tr("&Copy"), this);
    copy->setObjectName(QStringLiteral("CopyDifferences"));
    copy->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_C));
    copy->setShortcutContext(Qt::WidgetShortcut);
    connect(copy, &QAction::triggered, this, &DifferenceList::copySelected);
    addAction(copy);
    setContextMenuPolicy(Qt::ActionsContextMenu);

    connect(this, &QTreeView::clicked, this, [this](const QModelIndex &place) {
        if (place.column() == Action) {
            act(place);
        }
    });
}

QString DifferenceList::kindText(veltext::DifferenceKind kind)
{
    switch (kind) {
    case veltext::DifferenceKind::Added:
        return tr("added");
    case veltext::DifferenceKind::Removed:
        return tr("removed");
    case veltext::DifferenceKind::Changed:
        break;
    }
    return tr("changed");
}

void DifferenceList::setValueHeadings(const QString &before, const QString &after)
{
    model_->setHeading(Before, before);
    model_->setHeading(After, after);
}

void DifferenceList::setAction(const QString &text)
{
    model_->setAction(text);
    model_->setHeading(Action, QString());
    setItemDelegateForColumn(Action, new ButtonDelegate(this));
}

void DifferenceList::setEmptyText(const QString &text)
{
    emptyText_ = text;
    setAccessibleDescription(differences().empty() ? text : QString());
    viewport()->update();
}

const std::vector<veltext::Change> &DifferenceList::differences() const
{
    return model_->differences();
}

void DifferenceList::setDifferences(std::vector<veltext::Change> differences)
{
    const std::vector<veltext::Change> selected = selectedDifferences();
    const int current = currentIndex().isValid() ? currentIndex().row() : -1;
    const std::string currentPath =
        current >= 0 ? this->differences()[static_cast<std::size_t>(current)].path : "";
    const int scrolled = verticalScrollBar()->value();

    model_->setDifferences(std::move(differences));
    setAccessibleDescription(this->differences().empty() ? emptyText_ : QString());
    fitColumns();
    restore(selected, currentPath, current);
    verticalScrollBar()->setValue(scrolled);
    emit selectionMoved();
}

/// If the current row is gone, the one that has its place is the current one.
void DifferenceList::restore(const std::vector<veltext::Change> &selected,
                             const std::string &currentPath, int current)
{
    std::set<std::string> paths;
    for (const veltext::Change &difference : selected) {
        paths.insert(difference.path);
    }
    QItemSelection again;
    int row = 0;
    int stays = -1;
    for (const veltext::Change &difference : differences()) {
        if (current >= 0 && difference.path == currentPath) {
            stays = row;
        }
        if (paths.contains(difference.path)) {
            again.select(model_->index(row, 0), model_->index(row, 0));
        }
        ++row;
    }
    if (row > 0) {
        const int next = stays >= 0 ? stays : std::clamp(current, 0, row - 1);
        selectionModel()->setCurrentIndex(model_->index(next, 0), QItemSelectionModel::NoUpdate);
    }
    selectionModel()->select(again,
                             QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

/// Makes columns wider for new rows, unless the user has chosen the widths.
void DifferenceList::fitColumns()
{
    if (hasUserWidths_ || differences().empty()) {
        return;
    }
    header()->setStretchLastSection(!model_->hasAction());
    for (int column = 0; column < model_->columnCount({}); ++column) {
        const int former = hasFitted_ ? columnWidth(column) : 0;
        resizeColumnToContents(column);
        setColumnWidth(column, std::max(former, std::min(columnWidth(column), widest[column])));
    }
    if (model_->hasAction()) {
        header()->setSectionResizeMode(After, QHeaderView::Stretch);
    }
    hasFitted_ = true;
}

std::vector<veltext::Change> DifferenceList::selectedDifferences() const
{
    std::vector<int> rows;
    for (const QModelIndex &place : selectionModel()->selectedRows()) {
        rows.push_back(place.row());
    }
    std::sort(rows.begin(), rows.end());
    std::vector<veltext::Change> selected;
    for (const int row : rows) {
        selected.push_back(differences()[static_cast<std::size_t>(row)]);
    }
    return selected;
}

void DifferenceList::copySelected() const
{
    QModelIndexList places = selectionModel()->selectedRows();
    if (places.isEmpty()) {
        return;
    }
    std::sort(places.begin(), places.end());
    QStringList lines;
    for (const QModelIndex &place : std::as_const(places)) {
        QStringList cells;
        for (const int column : {Kind, Path, Before, After}) {
            cells.append(model_->text(place.siblingAtColumn(column)));
        }
        lines.append(cells.join(u'\t'));
    }
    QApplication::clipboard()->setText(lines.join(u'\n'));
}

// --- Actions ----------------------------------------------------------------------

// The receiver may show other rows, so it gets a copy.
void DifferenceList::act(const QModelIndex &place)
{
    const veltext::Change difference = differences()[static_cast<std::size_t>(place.row())];
    emit acted(difference);
}

void DifferenceList::keyPressEvent(QKeyEvent *event)
{
    const bool isPress = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter ||
                         event->key() == Qt::Key_Space;
    if (isPress && event->modifiers() == Qt::NoModifier && model_->hasAction() &&
        currentIndex().isValid()) {
        act(currentIndex());
        event->accept();
        return;
    }
    QTreeView::keyPressEvent(event);
}

void DifferenceList::selectionChanged(const QItemSelection &selected,
                                      const QItemSelection &deselected)
{
    QTreeView::selectionChanged(selected, deselected);
    emit selectionMoved();
}

void DifferenceList::paintEvent(QPaintEvent *event)
{
    QTreeView::paintEvent(event);
    if (!differences().empty() || emptyText_.isEmpty()) {
        return;
    }
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap, emptyText_);
}

} // namespace velEditor
