// What other programs do to the file: the notice that says so, and what the user
// chooses there. The notice goes when it is no longer true.
#pragma once

#include "veleditor/src/CommandData.h"
#include "veleditor/src/FileWatch.h"

#include <QObject>
#include <QString>

#include <functional>
#include <string>

class QWidget;

namespace velEditor {

class Document;
class NoticeBar;
struct NoticeChoice;
class UndoHistory;
class VELTree;

class FileFeature : public QObject
{
    Q_OBJECT

public:
    /// Belongs to the window. The others (not owned) belong to the window, too. The
    /// document has just been loaded.
    FileFeature(QWidget *window, Document &document, UndoHistory &history, NoticeBar &notice,
                VELTree &tree);

    /// The data becomes that of the file; a notice says why if it is refused.
    void reload();

    /// Merges the file into the data. Asks about conflicts, one by one; nothing
    /// changes if the user cancels.
    void merge();

protected:
    /// Looks at the file when the window becomes active: not every file system reports
    /// what other computers do.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void follow();
    void show(FileWatch::State state);
    void noteKept(bool isUnseen, const Message &fault);
    void showKept();
    [[nodiscard]] Message makeAtOnce(const std::function<Message()> &change);
    void refuse(const std::string &reason);
    void post(const QString &text, const QList<NoticeChoice> &choices);
    [[nodiscard]] QList<NoticeChoice> reloading();
    [[nodiscard]] QList<NoticeChoice> pressing(const QString &label, const char *action) const;
    [[nodiscard]] QString fileName() const;

    QWidget *window_;      ///< not owned
    Document &document_;   ///< not owned
    UndoHistory &history_; ///< not owned
    NoticeBar &notice_;    ///< not owned
    VELTree &tree_;        ///< not owned
    FileWatch watch_;
    QString kept_; ///< to be shown after the save; empty if nothing is
};

} // namespace velEditor
