// Asks for the new value of one parameter: by a list where the rules name the
// allowed values, else by a text field.
//
// The dialog may run more than once: it then comes back as the user left it.
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
    /// Asks the rules for the allowed values; a failure is shown in a box and
    /// leaves the text field.
    /// What is typed is stored in the encoding of the value, as far as it shows
    /// one, else in that of the file.
    EditParamDialog(QWidget *parent, const QString &caption, const VELTreeItem &item,
                    TextEncoding fileEncoding);

    /// The value chosen so far, at first the current one; in bytes, on one line.
    [[nodiscard]] const std::string &value() const { return value_; }

public slots:
    /// Takes the text of the field, where there is one, without white space at
    /// its ends, and accepts. A text that a command file cannot hold is refused
    /// with a box, and stays in the field.
    void doOk();

    /// An entry of the list was chosen.
    void doComboBox(const QString &text);

private:
    void addList(QVBoxLayout &layout, const QString &name);
    void addTextField(QVBoxLayout &layout, const QString &name, const QString &text);

    [[nodiscard]] bool takeText();

    TextEncoding encoding_;
    std::string former_; ///< the value of the parameter when the dialog was made
    std::string value_;
    velStringList allowed_;
    QComboBox *list_ = nullptr;      ///< null where any text is allowed
    QTextEdit *textField_ = nullptr; ///< null where a list is shown
};

} // namespace velEditor
