// Asks for the new value of one parameter: with a list if the rules name the allowed
// values, otherwise with a text field.
//
// The dialog may run more than once; it then opens as the user left it.
#pragma once

#include "veleditor/src/TextEncoding.h"
#include "velparser/api/velparser.h"

#include <QDialog>

#include <string>

class QComboBox;
class QTextEdit;
class QVBoxLayout;

namespace velEditor {

class VELTreeItem;

class EditParamDialog : public QDialog
{
    Q_OBJECT

public:
    /// Asks the rules for the allowed values. After a failure, shown in a box, the
    /// dialog has a text field.
    /// What is typed is stored in the encoding of the value, as far as it shows
    /// one, otherwise in that of the file.
    EditParamDialog(QWidget *parent, const QString &caption, const VELTreeItem &item,
                    TextEncoding fileEncoding);

    /// The value chosen so far, at first the current one, as one line of bytes.
    [[nodiscard]] const std::string &value() const { return value_; }

public slots:
    /// Accepts with the text of the field, if there is one, without white space at
    /// its ends. A text that a command file cannot contain is refused with a box and
    /// stays in the field.
    void doOk();

    /// The user has chosen an entry of the list.
    void doComboBox(const QString &text);

private:
    void addList(QVBoxLayout &layout, const QString &name);
    void addTextField(QVBoxLayout &layout, const QString &name, const QString &text);

    [[nodiscard]] bool takeText();

    TextEncoding encoding_;
    std::string former_; ///< the parameter's value when the dialog was made
    std::string value_;
    velStringList allowed_;
    QComboBox *list_ = nullptr;      ///< null if any text is allowed
    QTextEdit *textField_ = nullptr; ///< null if there is a list
};

} // namespace velEditor
