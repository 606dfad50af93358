// Keep Comments and Layout: whether a save changes only the lines of what was edited, or
// writes the formatted text.
//
// The user sets it in the menu More, for all files. If a save cannot keep the layout, or
// drops comments because the user has not asked for it, a notice says so. Keep Them in
// the notice brings the comments back: this class still has the text that had them.
#pragma once

#include "veleditor/src/Settings.h"

#include <QObject>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

class QAction;
class QWidget;

namespace velEditor {

class Document;
class FileVersion;
class NoticeBar;

class KeepLayout : public QObject
{
    Q_OBJECT

public:
    /// Saves the document once more without a new backup, with the window's questions
    /// and boxes; false if it was not saved.
    using SaveAgain = std::function<bool()>;

    /// Adds the action to the window, to which the object belongs. The document and the
    /// notices are not owned.
    KeepLayout(Document &document, NoticeBar &notices, QWidget &window, SaveAgain saveAgain);

private:
    void addAction(QWidget &window);
    void set(bool keeps);
    [[nodiscard]] std::optional<std::string> textToSave();
    void noteSave(const std::string &target);
    void postDropped(std::size_t comments);
    void keepThem();
    void noteUpgrade();
    void followUpgrade();

    Document &document_;
    NoticeBar &notices_;
    SaveAgain saveAgain_;
    Settings settings_;
    QAction *action_ = nullptr; ///< a child of the window

    /// What the file had before the last save that dropped comments; null if none did.
    std::shared_ptr<FileVersion> former_;
    std::size_t droppedComments_ = 0; ///< in `former_`
    bool isRestoring_ = false;        ///< the next text is made from `former_`

    // Of the save that is being made.
    std::shared_ptr<FileVersion> replaced_; ///< null for a pipe or device
    bool isFormatted_ = false;
    std::string fault_; ///< why the layout cannot be kept

    // An upgrade of the text that the file still has: while it is not undone, items with
    // new names keep their lines.
    std::shared_ptr<FileVersion> upgraded_;
    std::uint64_t beforeUpgrade_ = 0;  ///< the state of the document
    std::uint64_t afterFirstEdit_ = 0; ///< the state after the first edit of the upgrade
    bool isUpgraded_ = false;
};

} // namespace velEditor
