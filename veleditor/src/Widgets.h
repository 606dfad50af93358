// Makes the labels, buttons and fields of the dialogs with common settings: texts are
// plain text, never markup; every control has a name for tests and screen readers; the
// tab key leaves a field.
//
// Each widget belongs to the given parent.
#pragma once

#include <QString>

class QComboBox;
class QDialog;
class QLabel;
class QPushButton;
class QTextEdit;
class QVBoxLayout;
class QWidget;

namespace velEditor {

/// A label that wraps its text, inside a word if needed: the path of an object may be
/// wider than the screen.
[[nodiscard]] QLabel *makeLabel(const QString &text, QWidget *parent);

/// A push button; `name` is its object name.
[[nodiscard]] QPushButton *makeButton(const QString &text, const char *name, QWidget *parent);

/// Lets Ctrl+Return press this button anywhere in the dialog, because Return alone
/// types a line break in a text field.
void pressOnCtrlReturn(QPushButton &button, QDialog &dialog);

/// Adds a row with "&Ok" and "&Cancel". Ctrl+Return presses "&Ok", which is returned
/// to be connected; "&Cancel" rejects the dialog.
[[nodiscard]] QPushButton *addOkAndCancel(QVBoxLayout &layout, QDialog &dialog);

/// A list to choose from, never wider than the screen; `accessibleName` says what its
/// entries are.
[[nodiscard]] QComboBox *makeList(const char *name, const QString &accessibleName, QWidget *parent);

/// A field of several lines; `accessibleName` says what to enter.
[[nodiscard]] QTextEdit *makeTextField(const char *name, const QString &accessibleName,
                                       QWidget *parent);

/// Sets the name and title of a dialog, and the font of its parent window, which
/// windows do not inherit by default.
void setUpDialog(QDialog &dialog, const QString &name, const QString &title);

/// Leaves only the close button in the title bar. A small dialog need not fill the
/// screen, and it must not be minimized while it blocks the other windows.
void makeSmallDialog(QDialog &dialog);

} // namespace velEditor
