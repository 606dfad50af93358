// Asks for the name and value of a parameter to add to an object. If the rules name
// the allowed parameters, the user chooses from a list; if they allow any name, the
// user types it; if they allow none, the dialog only says so.
//
// The value starts with the default of the parameter. If the rules name the allowed
// values, the user chooses from a list.
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
    /// Asks the rules which parameters may be added to the object at `objectPath`;
    /// a failure is shown in a box and counts as none. `encoding` is the encoding
    /// of the file.
    AddParamDialog(QWidget *parent, const QString &caption, const std::string &objectPath,
                   TextEncoding encoding);

    /// The chosen name and value, in bytes; complete when the dialog was accepted.
    /// The value is one line without white space at its ends.
    [[nodiscard]] const std::string &paramName() const { return paramName_; }
    [[nodiscard]] std::string value() const;

    /// The name as the database stores it: one blank for each underscore and for
    /// each run of blanks.
    [[nodiscard]] std::string storedName() const;

public slots:
    /// Accepts if this command file can contain the name and the value. Otherwise
    /// says why not, moves the focus to the wrong field and stays open. Replaces
    /// underscores in the name with blanks.
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
    QLineEdit *nameEntry_ = nullptr;   ///< null unless any name is allowed
    QWidget *nameField_ = nullptr;     ///< the entry or the list of names
    ValueEntry *valueEntry_ = nullptr; ///< null if nothing can be added
};

} // namespace velEditor
