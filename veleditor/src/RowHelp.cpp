// Texts about a row, from the fields of its rule.
#include "veleditor/src/RowHelp.h"

#include "veleditor/src/RuleFields.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/VELTreeItem.h"

#include <QStringList>
#include <QTextDocument>

namespace velEditor {

namespace {

const QLatin1String descriptionField("Description");
const QLatin1String topicField("Help Topic");

QString wrapped(const QStringList &lines)
{
    return Qt::convertFromPlainText(lines.join(u'\n'), Qt::WhiteSpaceNormal);
}

/// The first lines of every text about a row.
QStringList heading(const VELTreeItem &row, const QString &text)
{
    QStringList lines{shortened(text)};
    if (const QString state = row.state(); !state.isEmpty()) {
        lines.append(u'(' + state + u')');
    }
    return lines;
}

} // namespace

QString rowToolTip(const VELTreeItem &row, int column)
{
    QStringList lines =
        heading(row, column == VELTreeItem::Name || !row.hasValue() ? row.label() : row.value());
    for (const RuleField &field : ruleFields(row.path())) {
        if (field.name == descriptionField) {
            lines.append(field.text);
        } else if (field.inTip) {
            lines.append(field.name + QLatin1String(": ") + field.text);
        }
    }
    return wrapped(lines);
}

QString rowWhatsThis(const VELTreeItem &row)
{
    QStringList lines = heading(row, row.label());
    for (const RuleField &field : ruleFields(row.path())) {
        if (field.name == descriptionField) {
            lines.append(field.text);
        } else if (field.name != topicField) {
            lines.append(field.name + QLatin1String(": ") + field.text);
        }
    }
    return wrapped(lines);
}

QString rowHelpTopic(const VELTreeItem &row)
{
    return ruleField(row.path(), topicField);
}

} // namespace velEditor
