// One row of the command tree: an object, a singleton or a parameter.
//
// A row has the last component of its database path, its texts, and whether it can be
// changed. There may be hundreds of thousands of rows. So a row keeps these in members
// instead of the base class's table of roles, and computes its path from its ancestors
// and its label, nearly always, from the component.
//
// Rows belong to their parent row, the topmost row to the tree.
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

    /// Places the new row under `parent` (null for a topmost row) and after the row
    /// `after` (null: before all others). A row without a value differs from one with
    /// an empty value. `component` is the part of the database path after the path
    /// of the parent.
    VELTreeItem(VELTreeItem *parent, const QTreeWidgetItem *after, const QString &label,
                std::optional<QString> value, std::string component);

    /// The row as a VELTreeItem; null for null and for rows of another class.
    [[nodiscard]] static VELTreeItem *from(QTreeWidgetItem *item);

    /// The part of the path after the path of the parent; empty for a topmost row.
    [[nodiscard]] const std::string &component() const { return component_; }

    /// "/" for a topmost row.
    [[nodiscard]] std::string path() const;
    [[nodiscard]] QString label() const;

    /// The label in the bytes of the command file.
    [[nodiscard]] std::string labelBytes() const;
    [[nodiscard]] const QString &value() const { return value_; }
    void setValue(const QString &value);

    /// Whether the row has a value and so shows a parameter.
    [[nodiscard]] bool hasValue() const { return hasValue_; }

    /// Whether the database allows changes of the parameter.
    [[nodiscard]] bool isEditable() const { return editable_; }
    void setEditable(bool editable) { editable_ = editable; }

    /// Whether the row is the expert section or below it. New rows inherit this from
    /// their parent.
    [[nodiscard]] bool isInExpertSection() const { return inExpertSection_; }
    void setInExpertSection(bool inside) { inExpertSection_ = inside; }

    /// The shown texts; also the rule's texts for the tool tip and "What's this?",
    /// and the state as the description for a screen reader.
    [[nodiscard]] QVariant data(int column, int role) const override;
    void setData(int column, int role, const QVariant &value) override;

    /// Says in words what the colour and the mark show: whether the parameter can be
    /// changed, and whether the row differs from the disk. Empty if there is nothing
    /// to say.
    [[nodiscard]] QString state() const;

private:
    /// How the label is made from the component.
    enum class LabelForm : unsigned char {
        Parameter, ///< the component itself
        Object,    ///< `labelOf` the component
        Own,       ///< not from the component: it is in `ownLabel_`
    };

    [[nodiscard]] QString permission() const;
    [[nodiscard]] QString difference() const;
    [[nodiscard]] std::string formedLabel(LabelForm form) const;
    void setLabel(const QString &label);

    std::string component_;
    QString ownLabel_; ///< null unless the form is `Own`
    QString value_;
    LabelForm labelForm_ = LabelForm::Own;
    bool editable_ = false;
    bool hasValue_ = false;
    bool inExpertSection_ = false;
};

} // namespace velEditor
