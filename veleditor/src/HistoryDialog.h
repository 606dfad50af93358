// Lists the versions of the file that saves have replaced, shows how the data of the
// window differs from one of them, and restores it.
//
// The lists follow the changes of the window, and saves. Restoring is one step that can
// be undone; the file changes with the next save. Modeless; belongs to its parent and
// deletes itself when it closes.
#pragma once

#include "veleditor/src/BaseDifferences.h"
#include "veltext/history.h"

#include <QDialog>
#include <QTimer>

#include <optional>
#include <string>
#include <vector>

class QLabel;
class QPushButton;
class QTreeWidget;
class QVBoxLayout;

namespace velEditor {

class DifferenceList;
class Document;
class UndoHistory;
class VersionCounts;

class HistoryDialog : public QDialog
{
    Q_OBJECT

public:
    /// Both (not owned) outlive the dialog.
    HistoryDialog(QWidget *parent, Document &document, UndoHistory &history);

private:
    /// The columns of the list of versions.
    enum Column { Time, Size, Program, Changes };

    void makeVersionList();
    void addButtons(QVBoxLayout &layout);
    void readVersions();
    void fillVersions();
    void count();
    void showCount(int version, std::optional<std::size_t> changes);
    void showVersion();
    void refresh();
    void restore();
    [[nodiscard]] int selected() const;
    [[nodiscard]] std::string read(const veltext::Version &version);

    Document &document_;       ///< not owned
    UndoHistory &undoHistory_; ///< not owned
    veltext::History history_;
    std::vector<veltext::Version> versions_; ///< newest first
    BaseDifferences differences_;            ///< from the selected version
    std::optional<std::string> text_;        ///< of the selected version, if it is VEL
    VersionCounts *counts_ = nullptr;        ///< a child; null if there is nothing to count
    QTimer soon_;                            ///< refreshes once for many edits
    QLabel *faults_;
    QTreeWidget *list_;
    DifferenceList *shown_;
    QPushButton *restore_ = nullptr;
};

} // namespace velEditor
