// The main window: has the document loaded, shows it as a tree, has it saved and
// validated, asks before changes are lost, and has help shown.
//
// One window edits one command file for the life of the process. Everything
// happens on the GUI thread.
#pragma once

#include "help/JavaHelpServer.h"

#include <QLabel>
#include <QWidget>

#include <memory>
#include <string>

class QAction;
class QMenu;
class QMenuBar;

namespace velEditor {

class Document;
class UndoHistory;
class VELTree;
struct SaveResult;

class Editor : public QWidget
{
    Q_OBJECT

public:
    /// Reads the rule libraries, loads `fileName` and builds the tree, while a
    /// welcome label is on screen. `name` (may be null) is the object's name.
    /// Throws `fileError` with the loader's text when the file cannot be
    /// loaded, and `error` when the tree cannot be built.
    Editor(QWidget *parent, const char *name, std::string fileName, bool safeMode);
    ~Editor() override;

    [[nodiscard]] Document &document() { return *document_; }
    [[nodiscard]] VELTree &tree() { return *tree_; }

    /// Validates and writes the document to `target`, the loaded file having
    /// become `target`.bak; see CommandFile.h. False when the user declines to save
    /// with errors, or when not everything could be written, after a box that
    /// says so. True also when `target` could not be opened, after its box.
    bool save(const std::string &target);

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
    void undo();
    void redo();
    void showSteps();

    static QString whatWasKept(const SaveResult &result);
    [[nodiscard]] bool confirmErrors();
    [[nodiscard]] bool mayClose();

    Document *document_;      ///< a child; its file is what a plain save overwrites
    UndoHistory *history_;    ///< a child; what was done to the document
    QAction *undo_ = nullptr; ///< a child; null until the menus are made
    QAction *redo_ = nullptr; ///< the same
    VELTree *tree_ = nullptr; ///< a child widget; null until it is built
    std::unique_ptr<JavaHelpServer> helpServer_;
    QMenuBar *menuBar_ = nullptr;
    QString buildLabel_;
    std::unique_ptr<QLabel> welcome_; ///< a window of its own; hidden once the tree stands
};

} // namespace velEditor
