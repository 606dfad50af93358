// The main window: loads, shows, validates and saves the document, asks before
// changes are lost, and shows help.
//
// One window edits one command file for the life of the process. GUI thread only.
#pragma once

#include "help/JavaHelpServer.h"
#include "veleditor/src/CommandData.h"

#include <QLabel>
#include <QWidget>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

class QAction;
class QMenu;
class QMenuBar;

namespace velEditor {

class Document;
class NoticeBar;
class Strip;
class UndoHistory;
class VELTree;
struct SaveResult;

class Editor : public QWidget
{
    Q_OBJECT

public:
    /// Reads the rule libraries, loads `fileName` and builds the tree, while a
    /// welcome label is shown. `name` is the object name, or null. Throws
    /// `fileError` with the loader's text if the file cannot be loaded, and `error`
    /// if the tree cannot be built.
    Editor(QWidget *parent, const char *name, std::string fileName, bool safeMode);
    ~Editor() override;

    [[nodiscard]] Document &document() { return *document_; }
    [[nodiscard]] UndoHistory &history() { return *history_; }
    [[nodiscard]] VELTree &tree() { return *tree_; }

    /// The bar above the tree, for what the user should know but need not answer.
    [[nodiscard]] NoticeBar &notice() { return *notice_; }

    /// Validates the document, moves the loaded file to `target`.bak and writes
    /// `target`; see CommandFile.h. False if the user does not want to save with
    /// errors, or if not everything could be written, after a box that says so. True
    /// also if `target` could not be opened, after its box.
    bool save(const std::string &target);

    /// The same to the loaded file, with Document::saveAgain.
    bool saveAgain();

    // Callers know these by name and number. What a new menu entry does is private.
public slots:
    void doSave();
    void validateData();
    void helpOnEditor();
    void helpOnExpertParams();
    void helpMaster();
    void helpIndex(); ///< no menu entry reaches it
    void helpTutorial();
    void helpSearch();
    void helpOnHelp();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void setIconAndLabel();
    void makeHelpServer();
    void showHelp(const char *topic);
    void helpOnRow();
    void showWelcome();
    void loadCommandData(bool safeMode);
    void switchChecksOn();
    void addMenus();
    void addFileMenu(QMenuBar &bar);
    void addEditMenu(QMenuBar &bar);
    void addHelpMenu(QMenuBar &bar);
    void addRowMenu();
    void addUndo();
    void addFeatures();
    void addRecovery();
    void addStrip();
    void placeStrip();
    void placeTree();
    [[nodiscard]] Message moveAlong(std::size_t edits, const std::function<Message()> &move);
    void undo();
    void redo();
    void showSteps();

    static QString whatWasKept(const SaveResult &result);
    [[nodiscard]] bool isWell(const SaveResult &result, const std::string &target);
    [[nodiscard]] bool confirmErrors();
    [[nodiscard]] bool mayClose();

    Document *document_;      ///< a child; Save writes to its file
    UndoHistory *history_;    ///< a child; the edits that can be undone
    QAction *undo_ = nullptr; ///< a child; null until the menus are made
    QAction *redo_ = nullptr; ///< the same
    NoticeBar *notice_;       ///< a child widget
    VELTree *tree_ = nullptr; ///< a child widget; null until it is built
    std::unique_ptr<JavaHelpServer> helpServer_;
    QMenuBar *menuBar_ = nullptr;
    Strip *strip_ = nullptr; ///< a child; null until the menus are made
    QString buildLabel_;
    std::unique_ptr<QLabel> welcome_; ///< a separate window; hidden when the tree is built
};

} // namespace velEditor
