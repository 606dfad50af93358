// Tests the main window: loading, menus, validation, and its look.
#include "veleditor/tests/EditorTest.h"

#include "common/error.h"
#include "veleditor/src/AddParamDialog.h"
#include "veleditor/src/EditParamDialog.h"
#include "veleditor/src/FindDialog.h"
#include "veleditor/src/MessageDialog.h"
#include "veleditor/tests/TreeText.h"

#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMetaMethod>
#include <QTextEdit>
#include <QWindow>

using namespace velEditor;

class EditorWindowTest : public EditorTest
{
    Q_OBJECT

private:
    /// Replaces the body of a Perl routine.
    void replaceRoutine(const QByteArray &name, const QByteArray &body);

private slots:
    void declaresItsSlotsInOrder();
    void showsTheFileInItsTitle();
    void showsSignsOfQtInItsTitle();
    void takesAnyFileName();
    void givesDialogsItsFont();
    void givesMenusItsFont();
    void hasItsFont();
    void hasIcons();
    void doesWithoutItsEnvironment();
    void doesWithoutItsBuildLabel();
    void welcomesTheUser();
    void welcomesUntilAllIsLoaded();
    void goesOnWithoutLibraries();
    void throwsWhenTheFileCannotBeLoaded_data();
    void throwsWhenTheFileCannotBeLoaded();
    void placesMistakesInLibraries();
    void placesASyntaxErrorInALibrary();
    void hintsAtTheSemicolonBetweenLibraries();
    void skipsAByteOrderMark();
    void goesOnWithoutUnitsAndBounds();
    void checksUnitsAndBounds();
    void offersEverythingInItsMenus();
    void isDescribedWithMenusAndKeys();
    void fitsTheTreeIntoTheWindow();
    void saysThatAllIsValid();
    void showsWhatIsNotValid();
    void allowsLittleInSafeMode();
};

namespace {

QString menuText(const QMenu &menu)
{
    QString text;
    for (const QAction *entry : menu.actions()) {
        text += entry->isSeparator() ? QString("--") : entry->text();
        if (!entry->shortcut().isEmpty()) {
            text += "  " + entry->shortcut().toString();
        }
        text += u'\n';
    }
    return text;
}

const QLabel &welcomeLabel()
{
    for (const QWidget *window : QApplication::topLevelWidgets()) {
        const auto *label = qobject_cast<const QLabel *>(window);
        if (label != nullptr && label->objectName() == "Welcome") {
            return *label;
        }
    }
    qFatal("there is no welcome");
}

} // namespace

void EditorWindowTest::replaceRoutine(const QByteArray &name, const QByteArray &body)
{
    runPerl("require VEL::Validate; require API; no warnings;\n*" + name + " = sub {" + body +
            "};\n1;\n");
}

// Callers use the slots by name and number.
void EditorWindowTest::declaresItsSlotsInOrder()
{
    const auto slotsOf = [](const QMetaObject &meta) {
        QStringList names;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
            if (meta.method(i).methodType() == QMetaMethod::Slot) {
                names.append(meta.method(i).methodSignature());
            }
        }
        return names.join(u' ');
    };
    QCOMPARE(slotsOf(Editor::staticMetaObject),
             QString("doSave() validateData() helpOnEditor() helpOnExpertParams() helpMaster() "
                     "helpIndex() helpTutorial() helpSearch() helpOnHelp()"));
    QCOMPARE(slotsOf(VELTree::staticMetaObject),
             QString("buildTree() editParam(velEditor::VELTreeItem*) "
                     "editQListItem(QTreeWidgetItem*) addExpertParamObj() addParameter() "
                     "editCurrParameter() deleteParam() setSorting(int,bool) setSorting(int) "
                     "doFind() doFindNext() openOrClose(QTreeWidgetItem*,QPoint,int)"));
    QCOMPARE(slotsOf(AddParamDialog::staticMetaObject),
             QString("checkOK() saveParamName(QString)"));
    QCOMPARE(slotsOf(EditParamDialog::staticMetaObject), QString("doOk() doComboBox(QString)"));
    QCOMPARE(slotsOf(FindDialog::staticMetaObject), QString("find()"));
    QCOMPARE(slotsOf(MessageDialog::staticMetaObject), QString("writeMessagesToFile()"));
}

void EditorWindowTest::showsTheFileInItsTitle()
{
    const QString file = copyOf("duct.vel");
    QCOMPARE(open(file).windowTitle(), file);
}

void EditorWindowTest::showsSignsOfQtInItsTitle()
{
    const QString file = newFile("case[*].vel", "FLOW: Analysis\n  Title = First run\nEND\n");
    QCOMPARE(open(file).windowHandle()->title().section(u'/', -1), QString("case[*].vel"));
    changeSomething();
    QCOMPARE(editor().windowHandle()->title().section(u'/', -1), QString("case[*].vel - Modified"));
}

void EditorWindowTest::takesAnyFileName()
{
    const QString file = newFile(QString::fromUtf8("Käse \"1\" & <b>.vel"),
                                 "FLOW: Analysis\n  Title = First run\nEND\n");
    QCOMPARE(open(file).windowTitle(), file);
    changeSomething();
    QVERIFY(editor().save(file.toStdString()));
    QCOMPARE(contentOf(file), QByteArray("FLOW: Analysis\n  Title = Second run\nEND\n"));
    QVERIFY(QFile::exists(file + ".bak"));
}

void EditorWindowTest::givesDialogsItsFont()
{
    open(newFile("bad.vel", "FLOW: A\nDOMAIN: D\nEND\nEND\n"));
    press("Ctrl+V");
    press("Ctrl+F");
    for (const QDialog *dialog : editor().findChildren<QDialog *>()) {
        QCOMPARE(dialog->font(), editor().font());
    }
    setBoxAnswers({});
    onDialog<QMessageBox>([&](QMessageBox &box) {
        QCOMPARE(box.font(), editor().font());
        box.reject();
    });
    warn(&tree(), "Title", "Text");
}

void EditorWindowTest::givesMenusItsFont()
{
    QApplication::setFont(QFont("Courier", 8), "QMenu");
    open(copyOf("duct.vel"));
    const QList<QMenu *> menus = editor().findChildren<QMenu *>();
    int found = 0;
    for (const QMenu *menu : menus) {
        if (menu->objectName().isEmpty()) {
            continue;
        }
        ++found;
        QCOMPARE(menu->font(), editor().font());
    }
    QCOMPARE(found, 5); // three of the bar, one of the row, one of the strip
}

void EditorWindowTest::hasItsFont()
{
    open(copyOf("duct.vel"));
    QCOMPARE(editor().font().family(), QString("Helvetica"));
    QCOMPARE(editor().font().pointSize(), 12);
    QCOMPARE(editor().font().weight(), static_cast<int>(QFont::Normal));
    QVERIFY(!editor().font().italic());
}

void EditorWindowTest::hasIcons()
{
    open(copyOf("duct.vel"));
    QCOMPARE(editor().windowIcon().availableSizes(),
             QList<QSize>({QSize(16, 16), QSize(32, 32), QSize(48, 48)}));
}

void EditorWindowTest::doesWithoutItsEnvironment()
{
    qunsetenv("ZOT5ROOT");
    open(copyOf("duct.vel"));
    QVERIFY(editor().windowIcon().isNull());
}

// One of the two is not enough.
void EditorWindowTest::doesWithoutItsBuildLabel()
{
    qunsetenv("ZOTBUILDID");
    open(copyOf("duct.vel"));
    QVERIFY(editor().windowIcon().isNull());
    QCOMPARE(welcomeLabel().windowTitle(), QString("VEL Editor"));
}

void EditorWindowTest::welcomesTheUser()
{
    qputenv("ZOTBUILDID", "7.1");
    open(copyOf("duct.vel"));
    const QLabel &welcome = welcomeLabel();
    QVERIFY(!welcome.isVisible());
    QCOMPARE(welcome.text(),
             QString("Welcome to the Command File Editor.\n\nInitialising database.\n"));
    QCOMPARE(welcome.windowTitle(), QString("ZOT-7.1"));
    QCOMPARE(welcome.margin(), 10);
    QCOMPARE(welcome.pos(), QPoint(300, 300));
    QVERIFY(welcome.windowFlags().testFlag(Qt::MSWindowsFixedSizeDialogHint));
    QCOMPARE(welcome.windowIcon().availableSizes(), editor().windowIcon().availableSizes());
}

void EditorWindowTest::welcomesUntilAllIsLoaded()
{
    qputenv("ZOT5_VEL_LIBS", "absent.vel");
    bool isShown = false;
    setBoxAnswers([&](const MessageBox &) {
        isShown = welcomeLabel().isVisible();
        return 0;
    });
    open(copyOf("duct.vel"));
    QVERIFY(isShown);
    QVERIFY(!welcomeLabel().isVisible());
}

void EditorWindowTest::goesOnWithoutLibraries()
{
    qputenv("ZOT5_VEL_LIBS", "absent.vel");
    answer();
    open(copyOf("duct.vel"));
    QCOMPARE(boxes.size(), 1);
    QVERIFY2(
        boxes.first().startsWith("Warning: Command File Library Errors\nThe following errors were "
                                 "encountered reading \nCommand File Library files:\n\n"
                                 "Error reading library file "),
        qPrintable(boxes.first()));
    QVERIFY(treeText(tree()).contains("Title = First run"));
}

void EditorWindowTest::throwsWhenTheFileCannotBeLoaded_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("place");
    QTest::newRow("syntax") << QByteArray("FLOW: A\nnonsense\nEND\n")
                            << "parseVELLineH: syntax error near \"nonsense\""
                            << "bad.vel:2)";
    QTest::newRow("open block") << QByteArray("# open\nFLOW: A\n")
                                << "1 missing END statement(s) in input"
                                << "bad.vel:2)";
    QTest::newRow("conflict")
        << QByteArray("FLOW: A\nEND\n<<<<<<< ours\n")
        << "parseVELLineH: syntax error near \"<<<<<<< ours\"\n"
        << "bad.vel:3: a conflict marker of a merge; keep one of the two sides "
           "and delete the marker lines";
    QTest::newRow("junk") << QByteArray("\x7f"
                                        "ELF\x02\x01\x01\0\0\xff\xfe",
                                        11)
                          << "parseVELLineH: syntax error near "
                          << "bad.vel:1)";
}

void EditorWindowTest::throwsWhenTheFileCannotBeLoaded()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, message);
    QFETCH(QString, place);
    const QString file = newFile("bad.vel", content);
    QString thrown;
    try {
        open(file);
    } catch (const fileError &failure) {
        thrown = QString::fromStdString(failure.message());
    }
    QVERIFY2(thrown.startsWith(message), qPrintable(thrown));
    QVERIFY2(thrown.endsWith(place), qPrintable(thrown));
}

void EditorWindowTest::placesMistakesInLibraries()
{
    qputenv("ZOT5_VEL_LIBSDIR", folder().toUtf8());
    qputenv("ZOT5_VEL_LIBS", "own.vel");
    const QString library = newFile("own.vel", "RULES:\nOBJECT: FLOW\nTypo = 1\nEND\nEND\n");
    answer();
    open(newFile("flow.vel", "FLOW: A\nEND\n"));
    QCOMPARE(boxes.size(), 1);
    QVERIFY2(boxes.first().contains(library + ":3: /RULES/OBJECT:FLOW/Typo: "),
             qPrintable(boxes.first()));
}

void EditorWindowTest::placesASyntaxErrorInALibrary()
{
    qputenv("ZOT5_VEL_LIBSDIR", folder().toUtf8());
    qputenv("ZOT5_VEL_LIBS", "own.vel");
    const QString library = newFile("own.vel", "RULES:\nEND\nnonsense\n");
    answer();
    open(newFile("flow.vel", "FLOW: A\nEND\n"));
    QCOMPARE(boxes.size(), 1);
    QVERIFY2(boxes.first().contains("Error reading library file " + library +
                                    ": parseVELLineH: syntax error near \"nonsense\" (line 3)"),
             qPrintable(boxes.first()));
}

void EditorWindowTest::hintsAtTheSemicolonBetweenLibraries()
{
    qputenv("ZOT5_VEL_LIBS", "rules.vel:rules.vel");
    answer();
    open(copyOf("duct.vel"));
    QCOMPARE(boxes.size(), 1);
    QVERIFY2(boxes.first().contains("; separate the names in ZOT5_VEL_LIBS by ';', not by ':'"),
             qPrintable(boxes.first()));
}

void EditorWindowTest::skipsAByteOrderMark()
{
    open(newFile("marked.vel", "\xEF\xBB\xBF"
                               "FLOW: A\nEND\n"));
    QVERIFY2(treeText(tree()).contains("FLOW"), qPrintable(treeText(tree())));
    QVERIFY(!treeText(tree()).contains(QChar(0xFEFF)));
}

void EditorWindowTest::goesOnWithoutUnitsAndBounds()
{
    replaceRoutine("VEL::Validate::setUnitsChecking", "return 'no units here'");
    replaceRoutine("VEL::Validate::setBoundsChecking", "return 'no bounds here'");
    answer();
    answer();
    open(copyOf("duct.vel"));
    QCOMPARE(boxes,
             QStringList({"Warning: Units Checking Disabled\nErrors were encountered initialising "
                          "units checking. \nThe program will continue but units checking "
                          "will \nbe disabled.\n\nno units here\n[Ok], Escape",
                          "Warning: Bounds Checking Disabled\nErrors were encountered initialising "
                          "bounds checking. \nThe program will continue but bounds checking "
                          "will \nbe disabled.\n\nno bounds here\n[Ok], Escape"}));
}

void EditorWindowTest::checksUnitsAndBounds()
{
    newFile("own.vel",
            "RULES:\nOBJECT: FLOW\nParents = /\nOptional Parameters = Speed, Length\nEND\n"
            "PARAMETER: Speed\nType = Real\nUnits = m s^-1\n"
            "Lower Bound = 0 [m s^-1]\nEND\n"
            "PARAMETER: Length\nType = Real\nUnits = m\nEND\nEND\n");
    qputenv("ZOT5_VEL_LIBSDIR", folder().toUtf8());
    qputenv("ZOT5_VEL_LIBS", "own.vel");
    open(newFile("slow.vel", "FLOW: A\nSpeed = -1 [m s^-1]\nLength = 3 [kg]\nEND\n"));
    press("Ctrl+V");
    auto &errors = shown<ErrorDialog>();
    const QString text = errors.findChild<QTextEdit *>()->toPlainText();
    QVERIFY2(text.contains("[below-bound]"), qPrintable(text));
    QVERIFY2(text.contains("[wrong-unit]"), qPrintable(text));
}

void EditorWindowTest::offersEverythingInItsMenus()
{
    open(copyOf("duct.vel"));
    auto *bar = editor().findChild<QMenuBar *>();
    QStringList titles;
    QString text;
    for (const QAction *menu : bar->actions()) {
        titles.append(menu->isSeparator() ? QString("--") : menu->text());
        if (menu->menu() != nullptr) {
            text += menuText(*menu->menu()) + u'\n';
        }
    }
    QCOMPARE(titles, QStringList({"&File", "&Edit", "--", "&Help"}));
    QCOMPARE(text, QString("&Save  Ctrl+S\n"
                           "&Validate  Ctrl+V\n"
                           "&Exit  Ctrl+Q\n"
                           "\n"
                           "&Add Parameter  Ctrl+A\n"
                           "&Edit Parameter  Ctrl+E\n"
                           "&Delete Parameter  Ctrl+D\n"
                           "Add Expert &Parameter Section  Ctrl+P\n"
                           "--\n"
                           "&Find  Ctrl+F\n"
                           "Find &Next  Ctrl+N\n"
                           "\n"
                           "On ZOT &Solver File Editor\n"
                           "On &Expert Parameters\n"
                           "--\n"
                           "&Contents\n"
                           "&Tutorials\n"
                           "&Search\n"
                           "--\n"
                           "&Help On Help\n"
                           "\n"));
}

// The tables of menu entries and keys in the document.
void EditorWindowTest::isDescribedWithMenusAndKeys()
{
    open(copyOf("duct.vel"));
    QFile file(qEnvironmentVariable("VEL_SOURCE_DIR") + "/docs/editor.md");
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString page = QString::fromUtf8(file.readAll());
    for (const QAction *menu : editor().findChild<QMenuBar *>()->actions()) {
        if (menu->menu() == nullptr) {
            continue;
        }
        for (const QAction *entry : menu->menu()->actions()) {
            const QString keys = entry->shortcut().toString();
            const QString row = "| " + menu->text() + " | " + entry->text() + " | " + keys +
                                (keys.isEmpty() ? "| " : " | ");
            QVERIFY2(entry->isSeparator() || page.contains(QString(row).remove(u'&')),
                     qPrintable(row));
        }
    }
    const QString keys = page.section("\n## All keys\n", 1).section("\n## ", 0, 0);
    for (const QAction *entry : editor().findChild<QMenu *>("RowMenu")->actions()) {
        const QString key = entry->shortcut().toString();
        // The keys of the menu bar share a row: "Ctrl+ A D E".
        const bool isThere = keys.contains(key) || keys.contains(' ' + key.right(1) + ' ');
        QVERIFY2(isThere, qPrintable(key));
    }
}

void EditorWindowTest::fitsTheTreeIntoTheWindow()
{
    open(copyOf("duct.vel"));
    QCOMPARE(editor().geometry(), QRect(100, 100, 800, 600));
    QCOMPARE(tree().geometry(), QRect(10, 40, 785, 550));
    QCOMPARE(tree().columnWidth(0), 800 - 400 - 15);
    QVERIFY(editor().findChild<QMenuBar *>()->height() <= 40);
    QVERIFY(editor().findChild<QMenuBar *>()->width() >= 800);

    tree().setColumnWidth(1, 100);
    editor().resize(10, 10);
    QCOMPARE(editor().size(), QSize(300, 200));
    QCOMPARE(tree().geometry(), QRect(10, 40, 285, 150));
    QCOMPARE(tree().columnWidth(0), 300 - 100 - 15);

    // There is no room left for the names: the width of their column does not change.
    tree().setColumnWidth(1, 400);
    editor().resize(320, 200);
    QCOMPARE(tree().columnWidth(0), 300 - 100 - 15);
}

void EditorWindowTest::saysThatAllIsValid()
{
    open(copyOf("duct.vel"));
    answer();
    press("Ctrl+V");
    QCOMPARE(boxes, QStringList("Information: Validation Successful\nNo Errors were found during "
                                "validation\n\n[&Ok], Escape"));
}

void EditorWindowTest::showsWhatIsNotValid()
{
    open(newFile("bad.vel", "FLOW: A\nDOMAIN: D\nEND\nEND\n"));
    press("Ctrl+V");
    auto &errors = shown<ErrorDialog>();
    QVERIFY(!errors.isModal());
    QCOMPARE(errors.objectName(), QString("Errors"));
    QVERIFY(errors.findChild<QTextEdit *>()->toPlainText().startsWith(
        "/FLOW:A/DOMAIN:D: required parameter \"Kind\" is missing"));
    pressButton(errors, "Ok");
    QCOMPARE(visible<ErrorDialog>(), nullptr);
}

void EditorWindowTest::allowsLittleInSafeMode()
{
    open(copyOf("duct.vel"), true);
    QCOMPARE(editor().windowTitle(), file() + " - Safe Mode");
    QVERIFY(row("/FLOW:Analysis/Run Mode").isEditable());
    QVERIFY(!row("/FLOW:Analysis/Title").isEditable());
    QCOMPARE(treeText(tree()).count(" *"), 1);
    changeSomething();
    QCOMPARE(editor().windowTitle(), file() + " - Safe Mode - Modified");
}

VEL_EDITOR_TEST(EditorWindowTest)
#include "Editor_test.moc"
