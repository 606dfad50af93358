// Writes the rows of the command tree as text.
#include "veleditor/tests/TreeText.h"

#include "veleditor/src/VELTree.h"

namespace velEditor {

namespace {

void addRows(QString &text, const VELTreeItem &row, int level)
{
    text += QString(2 * level, u' ') + row.text(VELTreeItem::Name);
    if (row.hasValue()) {
        text += QLatin1String(" = ") + row.text(VELTreeItem::Value);
    }
    if (row.isEditable()) {
        text += QLatin1String(" *");
    }
    if (row.isInExpertSection()) {
        text += QLatin1String(" !");
    }
    text += u'\n';
    for (int i = 0; i < row.childCount(); ++i) {
        addRows(text, *VELTreeItem::from(row.child(i)), level + 1);
    }
}

} // namespace

QString treeText(const VELTree &tree)
{
    QString text;
    for (int i = 0; i < tree.topLevelItemCount(); ++i) {
        addRows(text, *VELTreeItem::from(tree.topLevelItem(i)), 0);
    }
    return text;
}

} // namespace velEditor
