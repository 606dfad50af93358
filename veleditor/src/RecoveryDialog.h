// Lists what a journal would change, or what could not be restored from it.
//
// The dialog is modeless and deletes itself when it closes.
#pragma once

#include "veltext/commandText.h"

#include <QDialog>

#include <vector>

namespace velEditor {

class RecoveryDialog : public QDialog
{
    Q_OBJECT

public:
    /// The differences from the data in the window to those in the journal, after a text
    /// that says what they are.
    RecoveryDialog(QWidget *parent, const QString &text, std::vector<veltext::Change> differences);
};

} // namespace velEditor
