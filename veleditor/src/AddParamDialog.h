// Asks for the name and value of a parameter to be added to an object: by a
// list of the names that the rules allow there, by a free name where they allow
// any, and not at all where they allow none.
//
// The value starts with the default of the named parameter, and is chosen from a
// list where the rules name the allowed values.
#pragma once

#include "veleditor/src/TextEncoding.h"
#include "velparser/api/velparser.h"

#include <QDialog>

#include <string>

class QComboBox;
class QLineEdit;
class QVBoxLayout;

namespace velEditor {

class ValueEntry;

class AddParamDialog : public QDialog
{
    Q_OBJECT

public:
    /// Asks the rules what may be added to the object at `objectPath`; a
    /// failure is shown in a box and counts as nothing. `encoding` is that of the
    /// file.
    AddParamDialog(QWidget *parent, const QString &caption, const std::string &objectPath,
                   TextEncoding encoding);

    /// What was chosen, in bytes; complete once the dialog was accepted. The
    /// value is on one line, without white space at its ends.
    [[nodiscard]] const std::string &paramName() const { return paramName_; }
    [[nodiscard]] std::string value() const;

    /// The name as the database has it: a blank for an underscore and for any
    /// number of blanks.
    [[nodiscard]] std::string storedName() const;

public slots:
    /// Accepts when name and value are such as this command file can hold; else
    /// says why not, goes to the field that is wrong and stays open. Underscores
    /// in the name become blanks.
    void checkOK();
    void saveParamName(const QString &name);

private:
    void addRefusal(QVBoxLayout &layout, const QString &path);
    void addFreeName(QVBoxLayout &layout, const QString &path);
    void addNameList(QVBoxLayout &layout, const QString &path, const velStringList &names);
    void addValueAndButtons(QVBoxLayout &layout);
    void offerValue();

    [[nodiscard]] bool checkNameStart();
    [[nodiscard]] bool checkValueGiven();
    [[nodiscard]] bool checkNameCharacters();
    [[nodiscard]] bool checkValueFits();
    void refuse(QWidget &field, const QString &title, const QString &reason);

    std::string objectPath_;
    TextEncoding encoding_;
    std::string paramName_;
    QLineEdit *nameEntry_ = nullptr;   ///< where any name is allowed, else null
    QWidget *nameField_ = nullptr;     ///< that entry or the list of names
    ValueEntry *valueEntry_ = nullptr; ///< null where nothing can be added
};

} // namespace velEditor
