// Walks through the rows and compares their texts.
#include "veleditor/src/TreeSearch.h"

#include "veleditor/src/VELTreeItem.h"

#include <vector>

namespace velEditor {

namespace {

// Walks through the rows and remembers its place in each parent, because a row
// must search for its place among its siblings.
class Walk
{
public:
    explicit Walk(VELTreeItem &start) : row_(&start)
    {
        for (QTreeWidgetItem *child = &start; child->parent() != nullptr; child = child->parent()) {
            places_.insert(places_.begin(), child->parent()->indexOfChild(child));
        }
    }

    [[nodiscard]] VELTreeItem *row() const { return VELTreeItem::from(row_); }

    void step()
    {
        if (row_->childCount() > 0) {
            places_.push_back(0);
            row_ = row_->child(0);
            return;
        }
        while (!places_.empty()) {
            QTreeWidgetItem *parent = row_->parent();
            if (++places_.back() < parent->childCount()) {
                row_ = parent->child(places_.back());
                return;
            }
            places_.pop_back();
            row_ = parent;
        }
        row_ = nullptr;
    }

private:
    QTreeWidgetItem *row_;
    std::vector<int> places_;
};

} // namespace

bool textMatches(QStringView text, QStringView pattern)
{
    if (pattern.size() < 2) {
        return false;
    }
    qsizetype matched = 0;
    for (const QChar c : text) {
        if (c.toUpper() != pattern[matched].toUpper()) {
            matched = 0;
        } else if (++matched == pattern.size()) {
            return true;
        }
    }
    return false;
}

VELTreeItem *rowAfter(VELTreeItem &item)
{
    Walk walk(item);
    walk.step();
    return walk.row();
}

VELTreeItem *findRow(VELTreeItem *start, const QString &pattern)
{
    if (start == nullptr) {
        return nullptr;
    }
    for (Walk walk(*start); walk.row() != nullptr; walk.step()) {
        VELTreeItem *row = walk.row();
        if (textMatches(row->label(), pattern) || textMatches(row->value(), pattern)) {
            return row;
        }
    }
    return nullptr;
}

} // namespace velEditor
