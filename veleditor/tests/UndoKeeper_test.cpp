// Undo and redo after the file was closed and opened again: the steps, the rows that
// they select, the title, and when nothing is kept.
#include "veleditor/tests/EditorTest.h"

#include "veleditor/src/DataChange.h"
#include "veleditor/src/Document.h"
#include "veleditor/src/FileVersion.h"
#include "veleditor/src/NoticeBar.h"
#include "veleditor/src/UndoFile.h"
#include "veleditor/src/UndoHistory.h"
#include "veleditor/src/UndoKeeper.h"
#include "veleditor/tests/DataText.h"
#include "veleditor/tests/TreeText.h"

#include <QAction>
#include <QDir>
#include <QFile>

using namespace velEditor;

namespace {

const char title[] = "/FLOW:Analysis/Title";
const char duct[] = "/FLOW:Analysis/DOMAIN:Duct";
const char inletKind[] = "/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in/Kind";

} // namespace

class UndoKeeperTest : public EditorTest
{
    Q_OBJECT

private:
    [[nodiscard]] Document &document() { return editor().document(); }
    [[nodiscard]] UndoHistory &history() { return editor().history(); }
    void apply(const Edit &edit) { QCOMPARE(document().apply(edit), std::nullopt); }
    void save() { QVERIFY(editor().save(document().file())); }
    /// Closes the window, with an answer if it asks, and opens its file again.
    void reopen(bool safeMode = false);
    void discardAndReopen();
    /// The names of the next steps: of undo, then of redo.
    QString steps();
    [[nodiscard]] QString keptFile();
    [[nodiscard]] QString windowMark()
    {
        return editor().windowTitle().endsWith(" - Modified") ? "modified" : "clean";
    }

private slots:
    void initTestCase();

    void undoesWhatWasSavedBefore();
    void redoesWhatWasUndone();
    void selectsTheRowAndMarksTheTitle();
    void keepsGroupsAndTheirNames();
    void redoesWhatWasNotSaved();
    void keepsTheLastSaveWhenItsStateIsGone();
    void goesOnOverManySessions();
    void putsItemsBackInTheirOrder();
    void undoesAReload();
    void undoesAnUpgradeAndWhatWasBefore();
    void forgetsWhatBelongsToAnotherText();
    void forgetsStepsBeforeAnUnknownUpgrade();
    void keepsNothingInSafeMode();
    void keepsNothingOfAnEmergencyCopy();
    void leavesTheStepsOfAnotherWindow();
    void usesWhatIsIntact();
    void saysOnceThatItCannotKeep();
    void startsWithAnUnreadableFile();
};

void UndoKeeperTest::initTestCase()
{
    qputenv("XDG_STATE_HOME", (folder() + "/state").toUtf8());
}

void UndoKeeperTest::reopen(bool safeMode)
{
    QVERIFY(editor().close());
    forgetData();
    open(file(), safeMode);
}

void UndoKeeperTest::discardAndReopen()
{
    answer(1);
    reopen();
}

QString UndoKeeperTest::steps()
{
    return history().undoText() + QLatin1String(" | ") + history().redoText();
}

QString UndoKeeperTest::keptFile()
{
    return QString::fromStdString(UndoFile(document().file()).name());
}

// --- What comes back --------------------------------------------------------------------

void UndoKeeperTest::undoesWhatWasSavedBefore()
{
    open(copyOf("duct.vel"));
    const QString before = treeText(tree());
    apply(settingValue(title, "Second run"));
    apply(deletingParameter(std::string(duct) + "/Location"));
    apply(addingParameter(std::string(duct) + "/Reviewer", "x"));
    save();
    reopen();
    QCOMPARE(steps(), QString("Add Reviewer = x | "));
    press("Ctrl+Z");
    press("Ctrl+Z");
    press("Ctrl+Z");
    QCOMPARE(treeText(tree()), before);
    QCOMPARE(steps(), QString(" | Title = Second run"));
    QCOMPARE(windowMark(), QString("modified"));
}

void UndoKeeperTest::redoesWhatWasUndone()
{
    open(copyOf("duct.vel"));
    apply(settingValue(title, "a"));
    apply(settingValue(title, "b"));
    press("Ctrl+Z");
    press("Ctrl+Z"); // as it is on the disk
    reopen();
    QCOMPARE(steps(), QString(" | Title = a"));
    press("Ctrl+Y");
    press("Ctrl+Y");
    QCOMPARE(document().data().value(title), "b");
    press("Ctrl+Z");
    press("Ctrl+Z");
    QCOMPARE(windowMark(), QString("clean"));
}

void UndoKeeperTest::selectsTheRowAndMarksTheTitle()
{
    open(copyOf("duct.vel"));
    apply(settingValue(inletKind, "Wall"));
    save();
    reopen();
    QCOMPARE(windowMark(), QString("clean"));
    QCOMPARE(editor().findChild<QAction *>("Undo")->toolTip(), QString("Undo: Kind = Wall"));
    press("Ctrl+Z");
    QCOMPARE(row(inletKind).value(), QString("Inlet"));
    QCOMPARE(tree().selectedItem(), &row(inletKind));
    QCOMPARE(windowMark(), QString("modified"));
    press("Ctrl+Y");
    QCOMPARE(row(inletKind).value(), QString("Wall"));
    QCOMPARE(windowMark(), QString("clean"));
    QVERIFY(editor().close()); // without a question
}

void UndoKeeperTest::keepsGroupsAndTheirNames()
{
    open(copyOf("duct.vel"));
    const QString before = treeText(tree());
    {
        const UndoGroup group(history(), QStringLiteral("Größe ändern"));
        apply(settingValue(title, "a"));
        apply(deletingObject(duct));
    }
    save();
    reopen();
    QCOMPARE(steps(), QString("Größe ändern | "));
    press("Ctrl+Z");
    QCOMPARE(treeText(tree()), before);
    QCOMPARE(steps(), QString(" | Größe ändern"));
}

// A user who quits without saving by mistake gets the changes with redo.
void UndoKeeperTest::redoesWhatWasNotSaved()
{
    open(copyOf("duct.vel"));
    apply(settingValue(title, "a"));
    save();
    apply(settingValue(title, "b"));
    discardAndReopen();
    QCOMPARE(document().data().value(title), "a");
    QCOMPARE(steps(), QString("Title = a | Title = b"));
}

void UndoKeeperTest::keepsTheLastSaveWhenItsStateIsGone()
{
    open(copyOf("duct.vel"));
    apply(settingValue(title, "a"));
    apply(settingValue(title, "b"));
    save();
    press("Ctrl+Z");
    apply(settingValue(title, "c"));
    discardAndReopen();
    QCOMPARE(document().data().value(title), "b");
    QCOMPARE(steps(), QString("Title = b | "));
}

void UndoKeeperTest::goesOnOverManySessions()
{
    open(copyOf("duct.vel"));
    for (const char *value : {"a", "b", "c", "d"}) {
        apply(settingValue(title, value));
        save();
        reopen();
    }
    for (const char *value : {"c", "b", "a", "First run"}) {
        press("Ctrl+Z");
        QCOMPARE(row(title).value(), QString(value));
        save();
        reopen();
        QCOMPARE(windowMark(), QString("clean"));
    }
    QCOMPARE(steps(), QString(" | Title = a"));
    for (const char *value : {"a", "b", "c", "d"}) {
        press("Ctrl+Y");
        QCOMPARE(row(title).value(), QString(value));
    }
}

// A saved file has its parameters before its objects.
void UndoKeeperTest::putsItemsBackInTheirOrder()
{
    open(newFile("mixed.vel", "NOTES: n\n  DOMAIN: D\n  END\n  a = 1\n  b = 2\n  c = 3\nEND\n"));
    const std::vector<std::string> lines = writtenLines();
    apply(deletingParameter("/NOTES:n/b"));
    apply(deletingParameter("/NOTES:n/a"));
    onDialog<QDialog>([](QDialog &dialog) { dialog.accept(); });
    save();
    reopen();
    press("Ctrl+Z");
    press("Ctrl+Z");
    QCOMPARE(writtenLines(), lines);
}

void UndoKeeperTest::undoesAReload()
{
    open(copyOf("duct.vel"));
    apply(settingValue(title, "a"));
    const QByteArray other = contentOf(file()).replace("First run", "From outside");
    newFile("duct.vel", other);
    QCOMPARE(changeTo(document(), history(), other.toStdString(), QStringLiteral("Reload")),
             std::nullopt);
    document().takeOver(FileVersion::read(document().file()), true);
    reopen();
    QCOMPARE(steps(), QString("Reload | "));
    QCOMPARE(windowMark(), QString("clean"));
    press("Ctrl+Z");
    QCOMPARE(row(title).value(), QString("a"));
    press("Ctrl+Z");
    QCOMPARE(row(title).value(), QString("First run"));
}

// The file was saved with the language of then. The upgrade at the next start is a
// step after those that were kept.
void UndoKeeperTest::undoesAnUpgradeAndWhatWasBefore()
{
    const char mode[] = "/FLOW:Analysis/Mode";
    open(copyOf("old.vel"));
    const std::string before = dump(asSaved(storedData()));
    apply(settingValue(mode, "Transient"));
    onDialog<QDialog>([](QDialog &dialog) { dialog.accept(); }); // findings
    save();
    reopen();
    const Message changes = document().upgrade();
    QVERIFY(changes.has_value());
    tree().setModified();
    tree().buildTree();
    document().announceUpgrade(*changes);
    QVERIFY2(history().undoText().startsWith("Upgrade"), qPrintable(history().undoText()));
    const std::string upgraded = dump(asSaved(storedData()));
    apply(settingValue("/FLOW:Analysis/Run Mode", "Steady"));
    save();
    reopen();

    press("Ctrl+Z");
    QCOMPARE(dump(asSaved(storedData())), upgraded);
    press("Ctrl+Z");
    QCOMPARE(document().data().value(mode), "Transient");
    press("Ctrl+Z");
    QCOMPARE(dump(asSaved(storedData())), before);
    press("Ctrl+Y");
    press("Ctrl+Y");
    QCOMPARE(dump(asSaved(storedData())), upgraded);
}

// --- What does not ------------------------------------------------------------------------

void UndoKeeperTest::forgetsWhatBelongsToAnotherText()
{
    open(copyOf("duct.vel"));
    apply(settingValue(title, "a"));
    save();
    QVERIFY(editor().close());
    const QByteArray saved = contentOf(file());
    newFile("duct.vel", saved + "\n");
    forgetData();
    open(file());
    QCOMPARE(steps(), QString(" | "));
    QCOMPARE(editor().notice().text(), QString());
    QVERIFY(editor().close());
    newFile("duct.vel", saved); // as it was
    forgetData();
    open(file());
    QCOMPARE(steps(), QString("Title = a | "));
}

// An upgrade of objects that nest very deeply is not a step.
void UndoKeeperTest::forgetsStepsBeforeAnUnknownUpgrade()
{
    open(copyOf("duct.vel"));
    apply(settingValue(title, "a"));
    save();
    QVERIFY(editor().close());
    forgetData();
    Document other(document().file());
    UndoHistory otherHistory(other);
    QCOMPARE(other.load(), std::nullopt);
    QWidget window;
    NoticeBar notice(&window);
    const UndoKeeper keeper(other, otherHistory, notice, &window);
    QCOMPARE(otherHistory.undoText(), QString("Title = a"));
    other.setModified();
    other.announceUpgrade("/FLOW:Analysis/Mode is gone\n");
    QVERIFY(!otherHistory.canUndo());
}

void UndoKeeperTest::keepsNothingInSafeMode()
{
    open(copyOf("duct.vel"));
    apply(settingValue(title, "a"));
    save();
    reopen(true);
    QCOMPARE(steps(), QString(" | "));
    apply(settingValue(title, "b"));
    save();
    reopen(true);
    QCOMPARE(steps(), QString(" | "));
    reopen();
    QCOMPARE(steps(), QString(" | "));
}

void UndoKeeperTest::keepsNothingOfAnEmergencyCopy()
{
    open(copyOf("duct.vel"));
    apply(settingValue(title, "a"));
    QVERIFY(editor().save((file() + ".emergency").toStdString()));
    QVERIFY(!QFile::exists(keptFile()));
}

void UndoKeeperTest::leavesTheStepsOfAnotherWindow()
{
    open(copyOf("duct.vel"));
    apply(settingValue(title, "a"));
    save();
    const QByteArray other = contentOf(keptFile()) + "of another window";
    QFile kept(keptFile());
    QVERIFY(kept.open(QIODevice::WriteOnly) && kept.write(other) > 0);
    kept.close();
    newFile("duct.vel", contentOf(file()) + "\n"); // it has saved
    apply(settingValue(title, "b"));
    const QString name = keptFile();
    answer(1);
    QVERIFY(editor().close());
    QCOMPARE(contentOf(name), other);
}

// --- Damage and full disks -----------------------------------------------------------------

void UndoKeeperTest::usesWhatIsIntact()
{
    open(copyOf("duct.vel"));
    for (const char *value : {"a", "b", "c"}) {
        apply(settingValue(title, value));
    }
    save();
    QVERIFY(editor().close());
    const QByteArray bytes = contentOf(keptFile());
    QFile kept(keptFile());
    QVERIFY(kept.open(QIODevice::WriteOnly) && kept.write(bytes.left(bytes.size() - 60)) > 0);
    kept.close();
    forgetData();
    open(file());
    QCOMPARE(steps(), QString("Title = c | "));
    QVERIFY2(editor().notice().text().startsWith("Not every earlier change can be undone: "),
             qPrintable(editor().notice().text()));
    press("Ctrl+Z");
    QCOMPARE(row(title).value(), QString("b"));
    save();
    reopen(); // it is whole again
    QCOMPARE(editor().notice().text(), QString());
}

void UndoKeeperTest::saysOnceThatItCannotKeep()
{
    newFile("state", "not a folder");
    open(copyOf("duct.vel"));
    QCOMPARE(editor().notice().text(), QString());
    apply(settingValue(title, "a"));
    save();
    QVERIFY(!document().isModified());
    QVERIFY2(editor().notice().text().startsWith(
                 "These changes cannot be undone after the file is closed: "),
             qPrintable(editor().notice().text()));
    editor().notice().withdraw(QStringLiteral("state"));
    apply(settingValue(title, "b"));
    save();
    QCOMPARE(editor().notice().text(), QString());
    QVERIFY(editor().close());
}

void UndoKeeperTest::startsWithAnUnreadableFile()
{
    open(copyOf("duct.vel"));
    QVERIFY(QDir().mkpath(keptFile())); // a folder has its name
    reopen();
    QVERIFY(editor().notice().text().startsWith("Not every earlier change can be undone: "));
    apply(settingValue(title, "a"));
    save();
    QVERIFY(!document().isModified());
}

VEL_EDITOR_TEST(UndoKeeperTest)
#include "UndoKeeper_test.moc"
