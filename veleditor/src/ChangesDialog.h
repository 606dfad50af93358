// Lists how the data of the window differs from the file on the disk, and reverts
// differences.
//
// The list follows the changes while it is open: those of the window, and those of
// other programs on the disk. If the file cannot be read, or is not VEL, the data is
// compared with what was loaded or saved last. Modeless; belongs to its parent and
// deletes itself when it closes.
#pragma once

#include "veleditor/src/BaseDifferences.h"
#include "veleditor/src/FileWatch.h"

#include <QDialog>
#include <QTimer>

#include <vector>

class QLabel;
class QPushButton;
class QVBoxLayout;

namespace velEditor {

class DifferenceList;
class Document;
class UndoHistory;

class ChangesDialog : public QDialog
{
    Q_OBJECT

public:
    /// `known` has the differences from what was loaded or saved last. All three (not
    /// owned) outlive the dialog.
    ChangesDialog(QWidget *parent, Document &document, UndoHistory &history,
                  const BaseDifferences &known);

protected:
    void changeEvent(QEvent *event) override;

private:
    void addButtons(QVBoxLayout &layout);
    void readDisk();
    void refresh();
    [[nodiscard]] const BaseDifferences &shown() const;
    void revertThese(const std::vector<veltext::Change> &chosen);
    void revertEverything();
    void report(const Message &failure);

    Document &document_;           ///< not owned
    UndoHistory &history_;         ///< not owned
    const BaseDifferences &known_; ///< not owned
    BaseDifferences fromDisk_;
    bool isDiskReadable_ = false; ///< `fromDisk_` is about what the file has
    FileWatch watch_;
    QTimer soon_; ///< refreshes once for many edits
    QLabel *heading_;
    DifferenceList *list_;
    QPushButton *revert_ = nullptr;
    QPushButton *revertAll_ = nullptr;
};

} // namespace velEditor
