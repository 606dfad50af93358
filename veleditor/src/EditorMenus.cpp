// The menus and the tool strip of the main window.
#include "veleditor/src/Application.h"
#include "veleditor/src/Editor.h"
#include "veleditor/src/Strip.h"
#include "veleditor/src/VELTree.h"

#include <QAction>
#include <QApplication>
#include <QKeySequence>
#include <QMenuBar>

namespace velEditor {

namespace {

QMenu *addMenu(QMenuBar &bar, const QString &title, const char *name)
{
    QMenu *menu = bar.addMenu(title);
    menu->setObjectName(QString::fromLatin1(name));
    menu->setAccessibleName(menu->title().remove(u'&'));
    menu->setFont(bar.font()); // a menu is a window and would use the desktop's font
    return menu;
}

QAction *addEntry(QMenu &menu, const QString &text, const char *name,
                  const QString &shortcut = QString())
{
    QAction *entry = menu.addAction(text);
    entry->setObjectName(QString::fromLatin1(name));
    if (!shortcut.isEmpty()) {
        entry->setShortcut(QKeySequence(shortcut));
    }
    return entry;
}

} // namespace

void Editor::addMenus()
{
    menuBar_ = new QMenuBar(this);
    menuBar_->setObjectName(QStringLiteral("MenuBar"));
    menuBar_->setAccessibleName(tr("Menu bar"));
    addFileMenu(*menuBar_);
    addEditMenu(*menuBar_);
    menuBar_->addSeparator();
    addHelpMenu(*menuBar_);
    addRowMenu();
}

void Editor::addFileMenu(QMenuBar &bar)
{
    QMenu *menu = addMenu(bar, tr("&File"), "FileMenu");
    connect(addEntry(*menu, tr("&Save"), "Save", tr("Ctrl+S")), &QAction::triggered, this,
            &Editor::doSave);
    connect(addEntry(*menu, tr("&Validate"), "Validate", tr("Ctrl+V")), &QAction::triggered, this,
            &Editor::validateData);
    connect(addEntry(*menu, tr("&Exit"), "Exit", tr("Ctrl+Q")), &QAction::triggered, qApp,
            &Application::closeAllWindows);
}

void Editor::addEditMenu(QMenuBar &bar)
{
    QMenu *menu = addMenu(bar, tr("&Edit"), "EditMenu");
    const auto addTreeEntry = [&](const QString &text, const char *name, const QString &shortcut,
                                  void (VELTree::*slot)()) {
        connect(addEntry(*menu, text, name, shortcut), &QAction::triggered, tree_, slot);
    };
    addTreeEntry(tr("&Add Parameter"), "AddParameter", tr("Ctrl+A"), &VELTree::addParameter);
    addTreeEntry(tr("&Edit Parameter"), "EditParameter", tr("Ctrl+E"), &VELTree::editCurrParameter);
    addTreeEntry(tr("&Delete Parameter"), "DeleteParameter", tr("Ctrl+D"), &VELTree::deleteParam);
    addTreeEntry(tr("Add Expert &Parameter Section"), "AddExpertSection", tr("Ctrl+P"),
                 &VELTree::addExpertParamObj);
    menu->addSeparator();
    addTreeEntry(tr("&Find"), "Find", tr("Ctrl+F"), &VELTree::doFind);
    addTreeEntry(tr("Find &Next"), "FindNext", tr("Ctrl+N"), &VELTree::doFindNext);
}

void Editor::addHelpMenu(QMenuBar &bar)
{
    QMenu *menu = addMenu(bar, tr("&Help"), "HelpMenu");
    const auto addHelpEntry = [&](const QString &text, const char *name, void (Editor::*slot)()) {
        connect(addEntry(*menu, text, name), &QAction::triggered, this, slot);
    };
    addHelpEntry(tr("On ZOT &Solver File Editor"), "HelpOnEditor", &Editor::helpOnEditor);
    addHelpEntry(tr("On &Expert Parameters"), "HelpOnExpertParams", &Editor::helpOnExpertParams);
    menu->addSeparator();
    addHelpEntry(tr("&Contents"), "HelpContents", &Editor::helpMaster);
    addHelpEntry(tr("&Tutorials"), "HelpTutorials", &Editor::helpTutorial);
    addHelpEntry(tr("&Search"), "HelpSearch", &Editor::helpSearch);
    menu->addSeparator();
    addHelpEntry(tr("&Help On Help"), "HelpOnHelp", &Editor::helpOnHelp);
}

// The menu that the Menu key and Shift+F10 open at the selected row. Its shortcuts
// also work without it. They are not in the menu bar, whose entries are fixed.
void Editor::addRowMenu()
{
    auto *menu = new QMenu(tr("Row"), tree_);
    menu->setObjectName(QStringLiteral("RowMenu"));
    menu->setAccessibleName(tr("Selected row"));
    menu->setFont(font());
    for (QAction *entry : findChild<QMenu *>(QStringLiteral("EditMenu"))->actions()) {
        menu->addAction(entry);
    }
    menu->addSeparator();

    const auto addRowEntry = [&](const QString &text, const char *name, const QString &shortcut,
                                 auto *receiver, auto slot) {
        QAction *entry = addEntry(*menu, text, name, shortcut);
        connect(entry, &QAction::triggered, receiver, slot);
        addAction(entry); // for its shortcut
        return entry;
    };
    QAction *copyPath =
        addRowEntry(tr("&Copy Path"), "CopyPath", tr("Ctrl+Shift+C"), tree_, &VELTree::copyPath);
    QAction *copyValue =
        addRowEntry(tr("Copy &Value"), "CopyValue", tr("Ctrl+C"), tree_, &VELTree::copyValue);
    menu->addSeparator();
    addRowEntry(tr("E&xpand All"), "ExpandAll", tr("Ctrl++"), tree_, &VELTree::openAll);
    addRowEntry(tr("C&ollapse All"), "CollapseAll", tr("Ctrl+-"), tree_, &VELTree::closeAll);
    menu->addSeparator();
    QAction *explain =
        addRowEntry(tr("&What's This?"), "WhatsThis", tr("Shift+F1"), tree_, &VELTree::explainRow);
    addRowEntry(tr("&Help on Row"), "HelpOnRow", tr("F1"), this, &Editor::helpOnRow);

    const auto enable = [this, copyPath, copyValue, explain] {
        const VELTreeItem *row = tree_->selectedItem();
        copyPath->setEnabled(row != nullptr);
        copyValue->setEnabled(row != nullptr && row->hasValue());
        explain->setEnabled(row != nullptr);
    };
    enable();
    connect(tree_, &VELTree::itemSelectionChanged, this, enable);

    const auto open = [menu](QPoint place) { menu->popup(place); };
    connect(tree_, &VELTree::menuRequested, this, open);
    auto *key = new QAction(tr("&Menu of Row"), this);
    key->setObjectName(QStringLiteral("OpenRowMenu"));
    key->setShortcut(QKeySequence(Qt::SHIFT | Qt::Key_F10));
    connect(key, &QAction::triggered, this, [this, open] { open(tree_->placeBesideRow()); });
    addAction(key);
}

// What belongs to the window itself has no entry in its menus.
void Editor::addStrip()
{
    strip_ = new Strip(this);
    strip_->addButton(*undo_, "Undo");
    strip_->addButton(*redo_, "Redo");
    for (QAction *action : actions()) {
        strip_->menu().addAction(action);
        if (action == redo_) {
            strip_->menu().addSeparator();
        }
    }
}

} // namespace velEditor
