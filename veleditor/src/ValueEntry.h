// Asks for the value of a new parameter: a list if the rules name the allowed values,
// else a text field. Both start with the rule's default.
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
    /// An empty text field. `accessibleName` says what to enter; typed text is
    /// encoded in `encoding`.
    ValueEntry(const QString &accessibleName, TextEncoding encoding, QWidget *parent);

    /// Offers the allowed values and the default of the parameter at this path; an
    /// empty path means a parameter without a rule. Typed text stays. Without a
    /// default no entry of the list is chosen.
    void offer(const std::string &path);

    /// The value as one line of bytes without white space at its ends; empty if
    /// nothing was chosen or typed.
    [[nodiscard]] EncodedText value() const;

private:
    void offerList(const QString &proposal);
    void offerText(const QString &proposal);

    TextEncoding encoding_;
    QComboBox *list_;
    QTextEdit *field_;
    std::string path_;      ///< of the offered parameter
    velStringList allowed_; ///< the entries of the list; none if the field is shown
    QString proposal_;      ///< the last default put into the field
};

} // namespace velEditor
