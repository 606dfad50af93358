// What the window does when another program changes, removes or renames the file: the
// notice and its choices, and what is kept by a save over another version.
#include "veleditor/tests/EditorTest.h"

#include "veleditor/src/ConflictDialog.h"
#include "veleditor/src/Document.h"
#include "veleditor/src/NoticeBar.h"
#include "veleditor/src/UndoHistory.h"
#include "veltext/history.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTextEdit>
#include <QToolButton>

using namespace velEditor;

namespace {

/// The longest that the system may take to report a change, in milliseconds.
constexpr int patience = 30'000;

const char title[] = "/FLOW:Analysis/Title";
const QString changedText = "file.vel was changed by another program";

const char start[] = "FLOW: Analysis\n"
                     "  Title = First run\n"
                     "  DOMAIN: Duct\n"
                     "    Kind = Fluid\n"
                     "    Location = B1, B2\n"
                     "  END\n"
                     "END\n";

} // namespace

#define AWAIT_NOTICE(wanted) QTRY_COMPARE_WITH_TIMEOUT(notice(), QString(wanted), patience)

class FileFeatureTest : public EditorTest
{
    Q_OBJECT

public:
    FileFeatureTest() { qputenv("XDG_STATE_HOME", QFile::encodeName(folder() + "/state")); }

private:
    void openStart() { open(newFile("file.vel", start)); }
    /// The file as another program leaves it.
    void write(QByteArray text, const char *from = "", const char *to = "");
    void set(const char *path, const char *value);
    [[nodiscard]] QString notice() { return editor().notice().text(); }
    QStringList choices();
    void choose(const char *name);
    [[nodiscard]] QString value(const char *path);
    [[nodiscard]] QString isModified();

private slots:
    void saysNothingAtFirst();
    void saysThatTheFileWasChanged();
    void saysNothingAboutASave();
    void forgetsAChangeThatWasReverted();
    void looksWhenTheWindowBecomesActive();
    void saysThatTheFileWasRemoved();
    void saysThatTheFileWasRenamed();
    void savesARemovedFile();
    void comparesInTheListOfChanges();

    void reloads();
    void reloadsByKey();
    void keepsOpenBranchesAndTheSelection();
    void keepsTheSelectionWhenAnotherRowGoes();
    void undoesAReload();
    void refusesAFileWithAMistake();

    void merges();
    void asksAboutConflicts();
    void changesNothingIfTheUserCancels();
    void showsWhatWasDeleted();
    void refusesToMergeAFileWithAMistake();

    void saysThatAnUnseenVersionIsKept();
    void saysThatItCouldNotBeKept();
    void undoesAReloadOfManyObjectsAtOnce();
    void watchesNoPipe();
};

void FileFeatureTest::write(QByteArray text, const char *from, const char *to)
{
    if (*from != '\0') {
        text.replace(from, to);
    }
    newFile("file.vel", text);
}

void FileFeatureTest::set(const char *path, const char *value)
{
    QCOMPARE(editor().document().apply(settingValue(path, value)), std::nullopt);
}

QStringList FileFeatureTest::choices()
{
    QStringList names;
    for (const QToolButton *button : editor().notice().findChildren<QToolButton *>()) {
        if (!button->isHidden()) {
            names.append(button->accessibleName());
        }
    }
    return names;
}

void FileFeatureTest::choose(const char *name)
{
    for (QToolButton *button : editor().notice().findChildren<QToolButton *>()) {
        if (!button->isHidden() && button->accessibleName() == QLatin1String(name)) {
            button->click();
            return;
        }
    }
    qFatal("there is no choice %s", name);
}

QString FileFeatureTest::value(const char *path)
{
    return QString::fromStdString(editor().document().data().value(path).value_or("none"));
}

QString FileFeatureTest::isModified()
{
    return editor().windowTitle().endsWith(" - Modified") ? "modified" : "not modified";
}

// --- The notice ---------------------------------------------------------------------

void FileFeatureTest::saysNothingAtFirst()
{
    openStart();
    QVERIFY(!editor().notice().isNeeded());
}

void FileFeatureTest::saysThatTheFileWasChanged()
{
    openStart();
    write(start, "First", "Second");
    AWAIT_NOTICE(changedText);
    QCOMPARE(choices().mid(0, 2), (QStringList{"Reload", "Merge"}));
    QCOMPARE(value(title), QString("First run"));
    QCOMPARE(isModified(), QString("not modified"));
}

void FileFeatureTest::saysNothingAboutASave()
{
    openStart();
    set(title, "Mine");
    QVERIFY(editor().save(file().toStdString()));
    QVERIFY(!editor().notice().isNeeded());
    // The next report is about the next change.
    QSignalSpy posts(&editor().notice(), &NoticeBar::needChanged);
    write(start, "First", "Second");
    AWAIT_NOTICE(changedText);
    QCOMPARE(posts.count(), 1);
}

void FileFeatureTest::forgetsAChangeThatWasReverted()
{
    openStart();
    write(start, "First", "Second");
    AWAIT_NOTICE(changedText);
    write(start);
    AWAIT_NOTICE("");
    QVERIFY(!editor().notice().isNeeded());
}

void FileFeatureTest::looksWhenTheWindowBecomesActive()
{
    openStart();
    write(start, "First", "Second");
    QEvent active(QEvent::WindowActivate);
    QApplication::sendEvent(&editor(), &active);
    QCOMPARE(notice(), changedText);
}

void FileFeatureTest::saysThatTheFileWasRemoved()
{
    openStart();
    QVERIFY(QFile::remove(file()));
    AWAIT_NOTICE("file.vel was removed");
    QCOMPARE(choices(), (QStringList{"Save", "Close"}));
    write(start);
    AWAIT_NOTICE("");
}

void FileFeatureTest::saysThatTheFileWasRenamed()
{
    openStart();
    QVERIFY(QFile::rename(file(), folder() + "/old.vel"));
    AWAIT_NOTICE("file.vel was renamed to old.vel");
    QCOMPARE(choices(), (QStringList{"Save", "Close"}));
}

void FileFeatureTest::savesARemovedFile()
{
    openStart();
    QVERIFY(QFile::remove(file()));
    AWAIT_NOTICE("file.vel was removed");
    choose("Save");
    QCOMPARE(contentOf(file()), QByteArray(start));
    QVERIFY(!editor().notice().isNeeded());
}

void FileFeatureTest::comparesInTheListOfChanges()
{
    openStart();
    if (editor().findChild<QAction *>("Changes") == nullptr) {
        QSKIP("there is no list of changes");
    }
    write(start, "First", "Second");
    AWAIT_NOTICE(changedText);
    QCOMPARE(choices(), (QStringList{"Reload", "Merge", "Compare", "Close"}));
    QSignalSpy shown(editor().findChild<QAction *>("Changes"), &QAction::triggered);
    choose("Compare");
    QCOMPARE(shown.count(), 1);
    QCOMPARE(notice(), changedText);
}

// --- Reload -------------------------------------------------------------------------

void FileFeatureTest::reloads()
{
    openStart();
    set(title, "Mine");
    QCOMPARE(isModified(), QString("modified"));
    write(start, "First", "Second");
    AWAIT_NOTICE(changedText);
    choose("Reload");
    QCOMPARE(value(title), QString("Second run"));
    QCOMPARE(row(title).text(VELTreeItem::Value), QString("Second run"));
    QCOMPARE(isModified(), QString("not modified"));
    QVERIFY(!editor().notice().isNeeded());
    QCOMPARE(editor().history().undoText(), QString("Reload"));
}

void FileFeatureTest::reloadsByKey()
{
    openStart();
    write(start, "First", "Second");
    AWAIT_NOTICE(changedText);
    press("Alt+R");
    QTRY_COMPARE(value(title), QString("Second run"));
}

void FileFeatureTest::keepsOpenBranchesAndTheSelection()
{
    openStart();
    row("/FLOW:Analysis/DOMAIN:Duct").setExpanded(true);
    select("/FLOW:Analysis/DOMAIN:Duct/Location");
    write("FLOW: Analysis\n  DOMAIN: Duct\n    Width = 1 [m]\n    Location = B3\n  END\n"
          "  DOMAIN: Other\n  END\n  Title = First run\nEND\n");
    AWAIT_NOTICE(changedText);
    choose("Reload");
    QVERIFY(row("/FLOW:Analysis/DOMAIN:Duct").isExpanded());
    QVERIFY(!row("/FLOW:Analysis/DOMAIN:Other").isExpanded());
    QVERIFY(tree().selectedItem() != nullptr);
    QCOMPARE(tree().selectedItem()->path(), std::string("/FLOW:Analysis/DOMAIN:Duct/Location"));
}

void FileFeatureTest::keepsTheSelectionWhenAnotherRowGoes()
{
    openStart();
    select(title);
    write(start, "    Location = B1, B2\n", "");
    AWAIT_NOTICE(changedText);
    choose("Reload");
    QVERIFY(tree().selectedItem() != nullptr);
    QCOMPARE(tree().selectedItem()->path(), std::string(title));
}

void FileFeatureTest::undoesAReload()
{
    openStart();
    set(title, "Mine");
    write(start, "First", "Second");
    AWAIT_NOTICE(changedText);
    choose("Reload");
    press("Ctrl+Z");
    QCOMPARE(value(title), QString("Mine"));
    QCOMPARE(isModified(), QString("modified"));
    press("Ctrl+Z");
    QCOMPARE(value(title), QString("First run"));
    QCOMPARE(isModified(), QString("modified"));
    press("Ctrl+Y");
    press("Ctrl+Y");
    QCOMPARE(value(title), QString("Second run"));
    QCOMPARE(isModified(), QString("not modified"));
}

void FileFeatureTest::refusesAFileWithAMistake()
{
    openStart();
    set(title, "Mine");
    write("FLOW: Analysis\n  Title\nEND\n");
    AWAIT_NOTICE(changedText);
    choose("Reload");
    QVERIFY2(notice().startsWith("file.vel:2: "), qPrintable(notice()));
    QCOMPARE(choices(), (QStringList{"Reload", "Close"}));
    QCOMPARE(value(title), QString("Mine"));
    QCOMPARE(isModified(), QString("modified"));
    write(start, "First", "Third");
    AWAIT_NOTICE(changedText);
    choose("Reload");
    QCOMPARE(value(title), QString("Third run"));
    QVERIFY(!editor().notice().isNeeded());
}

// --- Merge --------------------------------------------------------------------------

void FileFeatureTest::merges()
{
    openStart();
    set(title, "Mine");
    write(start, "Fluid", "Solid");
    AWAIT_NOTICE(changedText);
    choose("Merge");
    QCOMPARE(value(title), QString("Mine"));
    QCOMPARE(value("/FLOW:Analysis/DOMAIN:Duct/Kind"), QString("Solid"));
    QCOMPARE(isModified(), QString("modified"));
    QVERIFY(!editor().notice().isNeeded());
    press("Ctrl+Z");
    QCOMPARE(value("/FLOW:Analysis/DOMAIN:Duct/Kind"), QString("Fluid"));
    QCOMPARE(isModified(), QString("modified"));
}

void FileFeatureTest::asksAboutConflicts()
{
    openStart();
    set(title, "Mine");
    set("/FLOW:Analysis/DOMAIN:Duct/Kind", "Gas");
    write(QByteArray(start).replace("First run", "Theirs"), "Fluid", "Solid");
    AWAIT_NOTICE(changedText);
    QStringList seen;
    onDialog<ConflictDialog>([&](ConflictDialog &dialog) {
        for (const char *button : {"KeepMine", "TakeTheirs"}) {
            seen += dialog.findChild<QLabel *>("Number")->text();
            seen += dialog.findChild<QLineEdit *>("Path")->text();
            seen += dialog.findChild<QTextEdit *>("Mine")->toPlainText();
            seen += dialog.findChild<QTextEdit *>("Theirs")->toPlainText();
            pressButton(dialog, button);
        }
    });
    choose("Merge");
    QCOMPARE(seen, (QStringList{"1 of 2", title, "Mine", "Theirs", "2 of 2",
                                "/FLOW:Analysis/DOMAIN:Duct/Kind", "Gas", "Solid"}));
    QCOMPARE(value(title), QString("Mine"));
    QCOMPARE(value("/FLOW:Analysis/DOMAIN:Duct/Kind"), QString("Solid"));
    QCOMPARE(editor().history().undoText(), QString("Merge"));
    QVERIFY(!editor().notice().isNeeded());
}

void FileFeatureTest::changesNothingIfTheUserCancels()
{
    openStart();
    set(title, "Mine");
    set("/FLOW:Analysis/DOMAIN:Duct/Kind", "Gas");
    write(QByteArray(start).replace("First run", "Theirs"), "Fluid", "Solid");
    AWAIT_NOTICE(changedText);
    for (const bool isEscape : {false, true}) {
        onDialog<ConflictDialog>([&](ConflictDialog &dialog) {
            pressButton(dialog, "TakeTheirs");
            if (isEscape) {
                QTest::keyClick(&dialog, Qt::Key_Escape);
            } else {
                pressButton(dialog, "Cancel");
            }
        });
        choose("Merge");
        QCOMPARE(value(title), QString("Mine"));
        QCOMPARE(value("/FLOW:Analysis/DOMAIN:Duct/Kind"), QString("Gas"));
        QCOMPARE(notice(), changedText);
        QVERIFY(editor().history().undoText() != "Merge");
    }
}

void FileFeatureTest::showsWhatWasDeleted()
{
    openStart();
    set("/FLOW:Analysis/DOMAIN:Duct/Kind", "Gas");
    write("FLOW: Analysis\n  Title = First run\nEND\n");
    AWAIT_NOTICE(changedText);
    onDialog<ConflictDialog>([&](ConflictDialog &dialog) {
        QCOMPARE(dialog.findChild<QTextEdit *>("Mine")->toPlainText(),
                 QString("DOMAIN : Duct\nKind = Gas\nLocation = B1, B2\nEND\n"));
        QCOMPARE(dialog.findChild<QTextEdit *>("Theirs")->toPlainText(), QString("(deleted)"));
        QTest::keyClick(&dialog, Qt::Key_Return); // chooses nothing
        pressButton(dialog, "TakeTheirs");
    });
    choose("Merge");
    QVERIFY(!editor().document().data().has("/FLOW:Analysis/DOMAIN:Duct"));
    QCOMPARE(isModified(), QString("not modified"));
}

void FileFeatureTest::refusesToMergeAFileWithAMistake()
{
    openStart();
    write("FLOW: Analysis\n  Title\nEND\n");
    AWAIT_NOTICE(changedText);
    choose("Merge");
    QVERIFY2(notice().startsWith("file.vel:2: "), qPrintable(notice()));
    QCOMPARE(value(title), QString("First run"));
}

// --- Saving over another version ------------------------------------------------------

void FileFeatureTest::saysThatAnUnseenVersionIsKept()
{
    openStart();
    set(title, "Mine");
    write(start, "First", "Theirs");
    QVERIFY(editor().save(file().toStdString()));
    QCOMPARE(notice(), QString("The version of another program is kept; see History..."));
    const veltext::History history(file().toStdString());
    QCOMPARE(history.list().versions.size(), std::size_t(1));
    QVERIFY(history.read(history.list().versions[0]).find("Theirs") != std::string::npos);

    // It is said once, and not about our own version.
    editor().notice().withdraw("file");
    QVERIFY(editor().save(file().toStdString()));
    QVERIFY(!editor().notice().isNeeded());
}

void FileFeatureTest::saysThatItCouldNotBeKept()
{
    openStart();
    QVERIFY(QDir(folder()).mkpath("state/veleditor"));
    newFile("state/veleditor/history", "");
    set(title, "Mine");
    write(start, "First", "Theirs");
    QVERIFY(editor().save(file().toStdString()));
    QVERIFY2(notice().startsWith("The version of another program was replaced, and could not "),
             qPrintable(notice()));
    QVERIFY(contentOf(file() + ".bak").contains("Theirs"));
}

// Following each edit would take minutes.
void FileFeatureTest::undoesAReloadOfManyObjectsAtOnce()
{
    const auto textOf = [](int step) {
        QByteArray text = "FLOW: Analysis\n";
        for (int i = 0; i < 1000; i += step) {
            text += "  DOMAIN: D" + QByteArray::number(i) + "\n    Kind = Fluid\n  END\n";
        }
        return text + "END\n";
    };
    open(newFile("file.vel", textOf(1)));
    select("/FLOW:Analysis/DOMAIN:D500");
    write(textOf(2));
    AWAIT_NOTICE(changedText);
    choose("Reload");
    QCOMPARE(row("/FLOW:Analysis").childCount(), 500);
    QCOMPARE(tree().selectedItem()->path(), std::string("/FLOW:Analysis/DOMAIN:D500"));
    press("Ctrl+Z");
    QCOMPARE(row("/FLOW:Analysis").childCount(), 1000);
    QCOMPARE(tree().selectedItem()->path(), std::string("/FLOW:Analysis/DOMAIN:D1"));
    QCOMPARE(isModified(), QString("modified"));
    press("Ctrl+Y");
    QCOMPARE(row("/FLOW:Analysis").childCount(), 500);
    QCOMPARE(isModified(), QString("not modified"));
}

void FileFeatureTest::watchesNoPipe()
{
    open("/dev/null");
    QEvent active(QEvent::WindowActivate);
    QApplication::sendEvent(&editor(), &active);
    QVERIFY(!editor().notice().isNeeded());
}

VEL_EDITOR_TEST(FileFeatureTest)
#include "FileFeature_test.moc"
