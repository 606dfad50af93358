// Asks about the conflicts of a merge, one after the other: the path, and what it is in
// the window and on the disk.
#pragma once

#include "veltext/dataMerge.h"

#include <QDialog>

#include <optional>
#include <vector>

class QLabel;
class QLineEdit;
class QTextEdit;

namespace velEditor {

class ConflictDialog : public QDialog
{
    Q_OBJECT

public:
    /// Shows the first of the conflicts, of which there is one at least. They (not
    /// owned) must outlive the dialog.
    ConflictDialog(QWidget *parent, const std::vector<veltext::DataMergeStep> &conflicts);

    /// For each conflict whether the user took what is on the disk. Complete if the
    /// dialog was accepted.
    [[nodiscard]] const std::vector<bool> &takesTheirs() const { return takesTheirs_; }

private:
    void showNext();
    void answer(bool takesTheirs);

    const std::vector<veltext::DataMergeStep> &conflicts_; ///< not owned
    std::vector<bool> takesTheirs_;
    QLabel *number_;
    QLineEdit *path_;
    QTextEdit *mine_;
    QTextEdit *theirs_;
};

/// For each conflict whether to take what is on the disk; nothing if the user cancels.
/// Asks nothing without conflicts.
[[nodiscard]] std::optional<std::vector<bool>>
askAboutConflicts(QWidget *parent, const std::vector<veltext::DataMergeStep> &conflicts);

} // namespace velEditor
