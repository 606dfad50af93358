// What is not saved yet: the marks at the rows that differ from the disk, and the entry
// "Changes…" of the window.
#pragma once

#include "veleditor/src/BaseDifferences.h"

#include <QObject>
#include <QPointer>

namespace velEditor {

class ChangesDialog;
class Document;
class UndoHistory;
class VELTree;

class ChangesFeature : public QObject
{
    Q_OBJECT

public:
    /// Belongs to the window, and adds its action there. The others (not owned) belong
    /// to the window, too. The document has just been loaded.
    ChangesFeature(QWidget *window, Document &document, UndoHistory &history, VELTree &tree);

    /// The differences from what was loaded or saved last.
    [[nodiscard]] const BaseDifferences &differences() const { return differences_; }

    /// Shows the dialog, or brings it to the front.
    void show();

private:
    void catchUp();
    void takeBase();

    QWidget *window_;      ///< not owned
    Document &document_;   ///< not owned
    UndoHistory &history_; ///< not owned
    BaseDifferences differences_;
    QPointer<ChangesDialog> dialog_;
};

} // namespace velEditor
