// The menus of the main window.
#include "veleditor/src/Editor.h"
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
    return menu;
}

QAction *addEntry(QMenu &menu, const QString &text, const char *name,
                  const QString &shortcut = QString())
{
    QAction *entry = menu.addAction(text);
    entry->setObjectName(QString::fromLatin1(name));
    if (!shortcut.isEmpty())
        entry->setShortcut(QKeySequence(shortcut));
    return entry;
}

} // namespace

void Editor::addMenus()
{
    menuBar_ = new QMenuBar(this);
    menuBar_->setObjectName(QStringLiteral("MenuBar"));
    addFileMenu(*menuBar_);
    addEditMenu(*menuBar_);
    menuBar_->addSeparator();
    addHelpMenu(*menuBar_);
    addHelpKey();
}

void Editor::addFileMenu(QMenuBar &bar)
{
    QMenu *menu = addMenu(bar, tr("&File"), "FileMenu");
    connect(addEntry(*menu, tr("&Save"), "Save", tr("Ctrl+S")), &QAction::triggered, this,
            &Editor::doSave);
    connect(addEntry(*menu, tr("&Validate"), "Validate", tr("Ctrl+V")), &QAction::triggered, this,
            &Editor::validateData);
    connect(addEntry(*menu, tr("&Exit"), "Exit", tr("Ctrl+Q")), &QAction::triggered, qApp,
            &QApplication::closeAllWindows);
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

// A key without a menu entry, as everybody tries it first.
void Editor::addHelpKey()
{
    auto *action = new QAction(tr("Help on Row"), this);
    action->setObjectName(QStringLiteral("HelpOnRow"));
    action->setShortcut(QKeySequence(Qt::Key_F1));
    connect(action, &QAction::triggered, this, &Editor::helpOnRow);
    addAction(action);
}

} // namespace velEditor
