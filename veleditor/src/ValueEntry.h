// Where the user gives the value of a new parameter: a list where the rules name
// the allowed values, else a text field. Both start with the rule's default.
#pragma once

#include "veleditor/src/TextEncoding.h"
#include "velparser/api/velparser.h"

#include <QWidget>

#include <string>

class QComboBox;
class QTextEdit;

namespace velEditor {

class ValueEntry : public QWidget
{
    Q_OBJECT

public:
    /// An empty text field. `accessibleName` says what to enter; what is typed is
    /// stored in `encoding`.
    ValueEntry(const QString &accessibleName, TextEncoding encoding, QWidget *parent);

    /// Offers what the rules say of the parameter at this path; an empty path
    /// stands for a parameter without a rule. A text that the user has typed
    /// stays. Nothing is chosen in a list whose parameter has no default.
    void offer(const std::string &path);

    /// In bytes, on one line, without white space at its ends; empty where
    /// nothing was chosen or typed.
    [[nodiscard]] EncodedText value() const;

private:
    void offerList(const QString &proposal);
    void offerText(const QString &proposal);

    TextEncoding encoding_;
    QComboBox *list_;
    QTextEdit *field_;
    std::string path_;      ///< of the parameter that is offered
    velStringList allowed_; ///< the entries of the list; none while the field is shown
    QString proposal_;      ///< the default that the field was last given
};

} // namespace velEditor
