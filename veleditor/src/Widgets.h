// The labels, buttons and fields that the dialogs are made of, each with the
// settings that all of them share: texts are shown as they stand, never as
// markup; a test and a screen reader find every control by its name; a tab
// leaves a field.
//
// What is made belongs to the given parent.
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

/// The path of an object may be longer than the screen is wide: such a text is
/// wrapped, inside a word where it has no blanks.
[[nodiscard]] QLabel *makeLabel(const QString &text, QWidget *parent);

/// `name` is the object's.
[[nodiscard]] QPushButton *makeButton(const QString &text, const char *name, QWidget *parent);

/// Ctrl+Return presses this button from anywhere in the dialog: in a text field,
/// Return alone types a line break.
void pressOnCtrlReturn(QPushButton &button, QDialog &dialog);

/// Adds a row with "&Ok", which is given back to be connected and which
/// Ctrl+Return presses, and "&Cancel", which rejects the dialog.
[[nodiscard]] QPushButton *addOkAndCancel(QVBoxLayout &layout, QDialog &dialog);

/// A list to choose from, not wider than the screen whatever its entries are;
/// `accessibleName` says what they are.
[[nodiscard]] QComboBox *makeList(const char *name, const QString &accessibleName, QWidget *parent);

/// A field of several lines; `accessibleName` says what belongs into it.
[[nodiscard]] QTextEdit *makeTextField(const char *name, const QString &accessibleName,
                                       QWidget *parent);

/// Gives a dialog its name and title, and the font of the window it belongs to,
/// which windows do not inherit by themselves.
void setUpDialog(QDialog &dialog, const QString &name, const QString &title);

/// Leaves only the close button in the title bar: there is nothing to see in a
/// small dialog that fills the screen, or in one that is an icon while it blocks
/// the other windows.
void makeSmallDialog(QDialog &dialog);

} // namespace velEditor
