// What the user can do about the upgrade of a file that was opened: look at the changes,
// and undo them.
//
// The upgrade is one step of the undo history. Undo leads back to the data as the file
// has it, which is not marked as modified; redo makes the upgrade again.
#pragma once

#include <QObject>
#include <QString>

#include <cstdint>
#include <string>

class QWidget;

namespace veltext {
class CommandText;
} // namespace veltext

namespace velEditor {

class Document;
class NoticeBar;
class UndoHistory;

/// Shows the changes of an upgrade beside a window, or brings the dialog that shows them
/// to the front.
void showUpgradeMessages(QWidget &window, const std::string &changes);

class UpgradeNotice : public QObject
{
    Q_OBJECT

public:
    /// Waits for the upgrade of the document. Belongs to the window; nothing else is owned.
    UpgradeNotice(Document &document, UndoHistory &history, NoticeBar &notices, QWidget &window);

private:
    void takeUpgrade(const std::string &changes);
    [[nodiscard]] bool makeStep(const veltext::CommandText &former, const QString &name);
    void undo();
    void withdrawIfUndone();

    Document &document_;
    UndoHistory &history_;
    NoticeBar &notices_;
    QWidget &window_;
    std::uint64_t before_ = 0; ///< the state of the document before the upgrade
};

} // namespace velEditor
