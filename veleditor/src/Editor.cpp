// The main window: start, load, check, save, close.
#include "veleditor/src/Editor.h"

#include "common/error.h"
#include "velapilt/src/velComponentText.h"
#include "veleditor/src/Boxes.h"
#include "veleditor/src/Document.h"
#include "veleditor/src/Environment.h"
#include "veleditor/src/MessageDialog.h"
#include "veleditor/src/NoticeBar.h"
#include "veleditor/src/RowHelp.h"
#include "veleditor/src/Strip.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/UndoHistory.h"
#include "veleditor/src/VELTree.h"
#include "veleditor/src/WaitCursor.h"

#include <QApplication>
#include <QCloseEvent>
#include <QIcon>
#include <QMenuBar>

#include <algorithm>
#include <utility>

namespace velEditor {

namespace {

// The place of the tree in the window.
constexpr QPoint treeTopLeft(10, 40);
constexpr int treeRightGap = 6;
constexpr int treeBottomGap = 11;
/// Between the notice and the tree.
constexpr int noticeGap = 4;
/// At least this much is between the menus and the strip.
constexpr int stripGap = 40;
/// The part of the window's width that the two columns do not use, in pixels.
constexpr int columnsGap = 15;

QIcon iconBelow(const char *root)
{
    const QString folder = fromBytes(root) + QLatin1String("/etc/icons/");
    QIcon icon;
    for (const char *file : {"ZOT.png", "ZOT32x32.png", "ZOT48x48.png"}) {
        icon.addFile(folder + QLatin1String(file), QSize(), QIcon::Normal);
    }
    return icon;
}

/// Qt replaces "[*]" in a title with its own mark unless it is doubled.
QString asTitle(const std::string &fileName)
{
    const QString mark = QStringLiteral("[*]");
    return fromBytes(fileName).replace(mark, mark + mark);
}

} // namespace

Editor::Editor(QWidget *parent, const char *name, std::string fileName, bool safeMode)
    : QWidget(parent), document_(new Document(std::move(fileName), this)),
      history_(new UndoHistory(*document_, this)), notice_(new NoticeBar(this))
{
    setObjectName(QString::fromUtf8(name));
    setIconAndLabel();
    makeHelpServer();
    setFont(QFont(QStringLiteral("Helvetica"), 12));
    setWindowTitle(asTitle(document_->file()) + (safeMode ? tr(" - Safe Mode") : QString()));
    showWelcome();
    loadCommandData(safeMode);
    tree_ = new VELTree(this, QStringLiteral("Tree"), document_);
    switchChecksOn();
    addUndo();
    addMenus();
    addFeatures();
    addStrip();
    connect(notice_, &NoticeBar::needChanged, this, &Editor::placeTree);
    setMinimumSize(300, 200);
    welcome_->hide();
}

Editor::~Editor() = default;

void Editor::setIconAndLabel()
{
    const char *root = environment::rootFolder();
    const char *build = environment::buildName();
    buildLabel_ = build != nullptr ? QLatin1String("ZOT-") + fromBytes(build) : tr("VEL Editor");
    if (root != nullptr && build != nullptr) {
        setWindowIcon(iconBelow(root));
    }
}

void Editor::makeHelpServer()
{
    helpServer_ = std::make_unique<JavaHelpServer>("DEFEditor");
    helpServer_->setWarning([](const std::string &title, const std::string &text) {
        warn(nullptr, fromBytes(title), fromBytes(text));
    });
}

void Editor::showWelcome()
{
    welcome_ = std::make_unique<QLabel>(
        tr("Welcome to the Command File Editor.\n\nInitialising database.\n"), nullptr,
        Qt::MSWindowsFixedSizeDialogHint);
    welcome_->setObjectName(QStringLiteral("Welcome"));
    welcome_->setTextFormat(Qt::PlainText);
    welcome_->setMargin(10);
    welcome_->setWindowTitle(buildLabel_);
    welcome_->setWindowIcon(windowIcon());
    welcome_->move(300, 300);
    welcome_->show();
    welcome_->repaint();
    QApplication::processEvents();
}

void Editor::loadCommandData(bool safeMode)
{
    if (const Message errors = document_->readLibraries()) {
        warn(this, tr("Command File Library Errors"),
             tr("The following errors were encountered reading \nCommand File Library "
                "files:\n\n") +
                 fromBytes(*errors));
    }
    if (const Message failure = document_->load()) {
        throw fileError(*failure);
    }
    if (safeMode) {
        document_->setSafeMode();
    }
}

void Editor::switchChecksOn()
{
    if (const Message errors = document_->switchUnitsChecksOn()) {
        warn(this, tr("Units Checking Disabled"),
             tr("Errors were encountered initialising units checking. \nThe program will "
                "continue but units checking will \nbe disabled.\n\n") +
                 fromBytes(*errors));
    }
    if (const Message errors = document_->switchBoundsChecksOn()) {
        warn(this, tr("Bounds Checking Disabled"),
             tr("Errors were encountered initialising bounds checking. \nThe program will "
                "continue but bounds checking will \nbe disabled.\n\n") +
                 fromBytes(*errors));
    }
}

void Editor::doSave()
{
    save(document_->file());
}

void Editor::validateData()
{
    if (const Message errors = callWaiting([this] { return document_->validate(); })) {
        auto *dialog = new ErrorDialog(this, QStringLiteral("Errors"), *errors, false);
        dialog->show();
        return;
    }
    MessageBox box;
    box.icon = QMessageBox::Information;
    box.title = tr("Validation Successful");
    box.text = tr("No Errors were found during validation\n");
    box.buttons = QStringList{tr("&Ok")};
    box.canEscape = true;
    static_cast<void>(ask(this, box));
}

void Editor::showHelp(const char *topic)
{
    helpServer_->showHelp(topic, "", JavaHelpServer::RegularHelp);
}

/// Shows the topic that the row's rule names. If the rule names none, the topic of an
/// object is its type, the text before the colon of its label; a parameter is a
/// section in the topic of its object.
void Editor::helpOnRow()
{
    const VELTreeItem *row = tree_->selectedItem();
    const bool isParameter = row != nullptr && row->hasValue();
    const auto *object = isParameter ? VELTreeItem::from(row->parent()) : row;
    if (object == nullptr || object->path() == "/") {
        helpOnEditor();
        return;
    }
    const QString topic = rowHelpTopic(*row);
    if (!topic.isEmpty()) {
        helpServer_->showHelp(toBytes(topic), "", JavaHelpServer::RegularHelp);
        return;
    }
    const QString type = fromBytes(velSplitComponent(object->component()).type);
    helpServer_->showHelp(toBytes(type), isParameter ? toBytes(row->label()) : std::string(),
                          JavaHelpServer::RegularHelp);
}

void Editor::helpOnEditor()
{
    showHelp("Def File Editor");
}

void Editor::helpOnExpertParams()
{
    showHelp("Expert Parameters");
}

void Editor::helpMaster()
{
    showHelp("Master Contents");
}

void Editor::helpIndex()
{
    showHelp("Master Index");
}

void Editor::helpTutorial()
{
    showHelp("Tutorials");
}

void Editor::helpSearch()
{
    showHelp("Search");
}

void Editor::helpOnHelp()
{
    showHelp("Help On Help");
}

/// Validates; true if the data may be written.
bool Editor::confirmErrors()
{
    const Message errors = callWaiting([this] { return document_->validate(); });
    if (!errors) {
        return true;
    }
    ErrorDialog dialog(this, QStringLiteral("Errors"), *errors, true);
    return run(dialog) == QDialog::Accepted;
}

/// The details in a box about a failed save: which files have the former and the new
/// data.
QString Editor::whatWasKept(const SaveResult &result)
{
    QStringList kept;
    if (!result.backup.empty()) {
        kept += tr("The previous version is kept in\n  ") + fromBytes(result.backup);
    } else if (result.outcome == SaveOutcome::Unchanged) {
        kept += tr("The file itself has not changed.");
    }
    if (!result.newData.empty()) {
        kept += tr("Your modifications are kept in\n  ") + fromBytes(result.newData);
    }
    return kept.join(u'\n');
}

bool Editor::save(const std::string &target)
{
    return confirmErrors() && isWell(document_->save(target), target);
}

bool Editor::saveAgain()
{
    return confirmErrors() && isWell(document_->saveAgain(), document_->file());
}

/// The result of `save`, after a box about what failed.
bool Editor::isWell(const SaveResult &result, const std::string &target)
{
    if (result.outcome == SaveOutcome::Written) {
        return true;
    }

    const QString kept = whatWasKept(result);
    const QString text = tr("Unable to save your modifications to\n  ") + fromBytes(target);
    if (result.outcome == SaveOutcome::NotOpened) {
        reportFailure(this, tr("Error Saving File"),
                      text + tr("\nThis may be due to the OMBRA ZOT-Solver run having "
                                "completed."),
                      kept);
        return true;
    }
    reportFailure(this, tr("Error Saving File"),
                  text + u'\n' + fromBytes(result.reason) +
                      tr("\nYour modifications are still in the editor."),
                  kept);
    return false;
}

bool Editor::mayClose()
{
    if (!document_->isModified()) {
        return true;
    }
    MessageBox box;
    box.icon = QMessageBox::Warning;
    box.title = tr("Unsaved Changes");
    box.text = tr("You have made changes that have not been saved.\n") + tr("Would you like to:");
    box.buttons =
        QStringList{tr("&Save and Quit"), tr("&Quit Without Saving"), tr("&Continue Working")};
    switch (ask(this, box)) {
    case 0:
        return save(document_->file());
    case 1:
        return true;
    default:
        return false;
    }
}

// Leaves the loop directly; asking the application to quit would ask this window a
// second time.
void Editor::closeEvent(QCloseEvent *event)
{
    if (!mayClose()) {
        event->ignore();
        return;
    }
    document_->close();
    helpServer_->disconnect();
    event->accept();
    QCoreApplication::exit(0);
}

// Between the last menu and the tree's right edge.
void Editor::placeStrip()
{
    const int left = menuBar_->actionGeometry(menuBar_->actions().constLast()).right() + stripGap;
    const int height = menuBar_->height() > 0 ? menuBar_->height() : strip_->sizeHint().height();
    const int bottom = std::min(height, treeTopLeft.y()) - 1;
    strip_->fit(QRect(QPoint(left, 0), QPoint(width() - treeRightGap, bottom)));
}

// The notice takes its height from the tree, but always leaves half of it.
void Editor::placeTree()
{
    QRect room(treeTopLeft, QPoint(width() - treeRightGap, height() - treeBottomGap));
    if (notice_->isNeeded()) {
        const int needed = notice_->heightForWidth(room.width());
        notice_->setGeometry(room.left(), room.top(), room.width(),
                             std::min(needed, room.height() / 2));
        room.setTop(notice_->geometry().bottom() + 1 + noticeGap);
    }
    tree_->setGeometry(room);
}

void Editor::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (menuBar_ != nullptr) {
        menuBar_->setGeometry(0, 0, width(), menuBar_->heightForWidth(width()));
    }
    if (strip_ != nullptr) {
        placeStrip();
    }
    if (tree_ == nullptr) {
        return;
    }
    placeTree();
    const int nameWidth = width() - tree_->columnWidth(VELTreeItem::Value) - columnsGap;
    if (nameWidth >= 0) {
        tree_->setColumnWidth(VELTreeItem::Name, nameWidth);
    }
    tree_->update();
}

} // namespace velEditor
