// One row of the command tree: an object, a singleton or a parameter.
//
// A row knows the last component of its database path, what it shows and
// whether it may be changed. There may be hundreds of thousands of rows: it
// keeps these in members of its own instead of the base class's table of roles,
// and works its full path out from its ancestors and its label from the
// component, from which nearly every label follows.
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
    VELTreeItem(VELTreeItem *parent, const QTreeWidgetItem *after, const QString &label,
                std::optional<QString> value, std::string component);

    /// The row as one of this class; null for null and for rows of any other.
    [[nodiscard]] static VELTreeItem *from(QTreeWidgetItem *item);

    /// What the path has after the parent's; empty for a topmost row.
    [[nodiscard]] const std::string &component() const { return component_; }

    /// "/" for a topmost row.
    [[nodiscard]] std::string path() const;
    [[nodiscard]] QString label() const;

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

    /// Besides the texts shown: what the rules say, as tool tip and "What's
    /// this?", and the state as description for a screen reader.
    [[nodiscard]] QVariant data(int column, int role) const override;
    void setData(int column, int role, const QVariant &value) override;

    /// Whether and how the parameter can be changed: what its colour says, for
    /// those who do not see it. Empty for an object.
    [[nodiscard]] QString state() const;

private:
    /// How the label follows from the component.
    enum class LabelForm : unsigned char {
        Parameter, ///< the component itself
        Object,    ///< "TYPE : Name" for "TYPE:Name"
        Singleton, ///< "TYPE :" for "TYPE"
        Own,       ///< not at all: it is kept in `ownLabel_`
    };

    [[nodiscard]] std::string formedLabel(LabelForm form) const;
    void setLabel(const QString &label);

    std::string component_;
    QString ownLabel_; ///< null for all forms but `Own`
    QString value_;
    LabelForm labelForm_ = LabelForm::Own;
    bool editable_ = false;
    bool hasValue_ = false;
    bool inExpertSection_ = false;
};

} // namespace velEditor
