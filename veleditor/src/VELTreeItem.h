// One row of the command tree: an object, a singleton or a parameter.
//
// A row knows the last component of its database path, what it shows and
// whether it may be changed. It keeps these in members of its own instead of
// the base class's table of roles, and works its full path out from its
// ancestors, since there may be hundreds of thousands of rows.
//
// Rows belong to their parent row, the topmost one to the tree.
#pragma once

#include <QString>
#include <QTreeWidgetItem>

#include <optional>
#include <string>

namespace velEditor {

class VELTreeItem : public QTreeWidgetItem
{
public:
    static constexpr int ItemType = UserType + 1;

    /// The columns.
    enum Column { Name = 0, Value = 1 };

    /// Places the new row under `parent` (null for a topmost row) behind
    /// `after` (null: before all others). A row without a value has none, which
    /// is not the same as an empty one. `component` is what the database path
    /// has behind the parent's.
    VELTreeItem(VELTreeItem *parent, const QTreeWidgetItem *after, QString label,
                std::optional<QString> value, std::string component);

    /// The row as one of this class; null for null and for rows of any other.
    [[nodiscard]] static VELTreeItem *from(QTreeWidgetItem *item);

    /// "/" for a topmost row.
    [[nodiscard]] std::string path() const;
    [[nodiscard]] const QString &label() const { return label_; }

    /// The label in the bytes of the command file.
    [[nodiscard]] std::string labelBytes() const;
    [[nodiscard]] const QString &value() const { return value_; }
    void setValue(const QString &value);

    /// Made with a value: the row shows a parameter.
    [[nodiscard]] bool hasValue() const { return hasValue_; }

    /// The database allows the parameter to be changed.
    [[nodiscard]] bool isEditable() const { return editable_; }
    void setEditable(bool editable) { editable_ = editable; }

    /// The row is the expert section or lies below it. New rows take it from
    /// their parent.
    [[nodiscard]] bool isInExpertSection() const { return inExpertSection_; }
    void setInExpertSection(bool inside) { inExpertSection_ = inside; }

    [[nodiscard]] QVariant data(int column, int role) const override;
    void setData(int column, int role, const QVariant &value) override;

private:
    /// Whether and how the parameter can be changed: what its colour says, for
    /// those who do not see it.
    [[nodiscard]] QString state() const;
    [[nodiscard]] QString fullText(int column) const;

    std::string component_;
    QString label_;
    QString value_;
    bool editable_ = false;
    bool hasValue_ = false;
    bool inExpertSection_ = false;
};

} // namespace velEditor
