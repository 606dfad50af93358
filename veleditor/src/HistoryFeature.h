// The history of the file in the window: the entry "History…", and the notice when a
// version could not be kept.
#pragma once

#include "veleditor/src/CommandData.h"

#include <QObject>
#include <QPointer>

namespace velEditor {

class Document;
class HistoryDialog;
class NoticeBar;
class UndoHistory;

class HistoryFeature : public QObject
{
    Q_OBJECT

public:
    /// Belongs to the window, and adds its action there. The others (not owned) belong
    /// to the window, too.
    HistoryFeature(QWidget *window, Document &document, UndoHistory &history, NoticeBar &notice);

    /// Shows the dialog, or brings it to the front.
    void show();

private:
    void reportFault(bool isUnseen, const Message &fault);

    QWidget *window_;      ///< not owned
    Document &document_;   ///< not owned
    UndoHistory &history_; ///< not owned
    NoticeBar &notice_;    ///< not owned
    QPointer<HistoryDialog> dialog_;
    bool hasReported_ = false; ///< the user knows that the history cannot be used
};

} // namespace velEditor
