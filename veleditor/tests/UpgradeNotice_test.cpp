// The notice about an upgrade: its words, Show, and Undo, which leads back to the data as
// the file has it.
#include "veleditor/tests/EditorTest.h"

#include "veleditor/src/Document.h"
#include "veleditor/src/MessageDialog.h"
#include "veleditor/src/NoticeBar.h"
#include "veleditor/src/UndoHistory.h"
#include "veleditor/src/UpgradeNotice.h"
#include "veleditor/tests/DataText.h"
#include "veleditor/tests/TreeText.h"

#include <QAction>
#include <QSignalSpy>
#include <QTextEdit>

using namespace velEditor;

class UpgradeNoticeTest : public EditorTest
{
    Q_OBJECT

private:
    /// Opens a file and does what the start does when the file is old.
    void openOld(const QByteArray &content);

private slots:
    void saysWhatWasUpgraded();
    void saysItWithoutVersions();
    void countsOneChange();
    void showsTheChanges();
    void isOneStep();
    void undoesTheUpgrade();
    void undoesWhatCameAfterTheUpgrade();
    void goesWhenTheUpgradeIsUndone();
    void bringsBackTheOrderOfTheFile();
    void canBeUndoneAfterASave();
    void replacesManyObjectsTogether();
};

namespace {

const char old[] = "LANGUAGE:\n  Version = 2.0\nEND\n"
                   "FLOW: A\n  Mode = Steady\n  Title = x\nEND\n"
                   "FLOW: B\n  Mode = Steady\n  DOMAIN: D\n    Kind = Fluid\n  END\n"
                   "  Title = y\nEND\n";

} // namespace

void UpgradeNoticeTest::openOld(const QByteArray &content)
{
    open(newFile("old.vel", content));
    const Message changes = editor().document().upgrade();
    QVERIFY(changes.has_value());
    tree().setModified();
    tree().buildTree();
    editor().document().announceUpgrade(*changes);
}

void UpgradeNoticeTest::saysWhatWasUpgraded()
{
    openOld(old);
    QCOMPARE(editor().notice().text(), QString("Upgraded from 2.0 to 2.1: 3 changes"));
    QVERIFY(tree().isModified());
}

void UpgradeNoticeTest::saysItWithoutVersions()
{
    openOld("FLOW: A\n  Mode = Steady\nEND\n");
    QCOMPARE(editor().notice().text(), QString("Upgraded: 2 changes"));
    QCOMPARE(editor().history().undoText(), QString("Upgrade to 2.1"));
}

void UpgradeNoticeTest::countsOneChange()
{
    openOld("LANGUAGE:\n  Version = 2.0\nEND\n");
    QCOMPARE(editor().notice().text(), QString("Upgraded from 2.0 to 2.1: 1 change"));
}

void UpgradeNoticeTest::showsTheChanges()
{
    openOld(old);
    pressButton(editor().notice(), "Show");
    auto &dialog = shown<VELUpgradeMessagesDialog>();
    QCOMPARE(dialog.objectName(), QString("Command File Updates"));
    QCOMPARE(dialog.findChild<QTextEdit *>()->toPlainText(),
             QString("The following changes were made:\n\n"
                     "/FLOW:A/Mode: renamed to \"Run Mode\"\n"
                     "/FLOW:B/Mode: renamed to \"Run Mode\"\n"
                     "/LANGUAGE/Version: changed from 2.0 to 2.1"));
    QVERIFY(!dialog.isModal());
    QCOMPARE(editor().notice().text(), QString("Upgraded from 2.0 to 2.1: 3 changes"));
    pressButton(editor().notice(), "Show");
    QCOMPARE(editor().findChildren<VELUpgradeMessagesDialog *>().size(), 1);
}

void UpgradeNoticeTest::isOneStep()
{
    openOld(old);
    const std::string upgraded = dump(storedData());
    QCOMPARE(editor().history().undoText(), QString("Upgrade to 2.1"));
    press("Ctrl+Z");
    QVERIFY(!editor().history().canUndo());
    QVERIFY(!tree().isModified());
    QCOMPARE(editor().windowTitle(), file());
    press("Ctrl+Y");
    QCOMPARE(dump(storedData()), upgraded);
    QVERIFY(tree().isModified());
    QVERIFY(!editor().history().canRedo());
}

void UpgradeNoticeTest::undoesTheUpgrade()
{
    openOld(old);
    const QString upgraded = treeText(tree());
    QVERIFY(upgraded.contains("Run Mode = Steady"));
    pressButton(editor().notice(), "Undo");
    QVERIFY(treeText(tree()).contains("    Mode = Steady"));
    QVERIFY(!treeText(tree()).contains("Run Mode"));
    QVERIFY(!tree().isModified());
    QCOMPARE(editor().notice().text(), QString());
    editor().findChild<QAction *>("Redo")->trigger();
    QVERIFY(treeText(tree()).contains("Run Mode = Steady"));
    QVERIFY(tree().isModified());
}

void UpgradeNoticeTest::undoesWhatCameAfterTheUpgrade()
{
    openOld(old);
    QCOMPARE(editor().document().apply(settingValue("/FLOW:A/Title", "z")), std::nullopt);
    QCOMPARE(editor().document().apply(settingValue("/FLOW:A/Run Mode", "Transient")),
             std::nullopt);
    const std::string edited = dump(storedData());
    pressButton(editor().notice(), "Undo");
    QVERIFY(!tree().isModified());
    QCOMPARE(editor().document().data().value("/FLOW:A/Mode"), std::string("Steady"));
    QCOMPARE(editor().document().data().value("/FLOW:A/Title"), std::string("x"));
    for (int i = 0; i < 3; ++i) {
        press("Ctrl+Y");
    }
    QCOMPARE(dump(storedData()), edited);
}

void UpgradeNoticeTest::goesWhenTheUpgradeIsUndone()
{
    openOld(old);
    press("Ctrl+Z");
    QCOMPARE(editor().notice().text(), QString());
    press("Ctrl+Y");
    QCOMPARE(editor().notice().text(), QString());
}

// A rename makes the parameters after it again, so that they come after the objects.
void UpgradeNoticeTest::bringsBackTheOrderOfTheFile()
{
    open(newFile("same.vel", old));
    const std::string before = dump(storedData());
    const Message changes = editor().document().upgrade();
    tree().setModified();
    tree().buildTree();
    editor().document().announceUpgrade(*changes);
    QVERIFY(dump(storedData()) != before);
    const std::string upgraded = dump(storedData());
    for (int i = 0; i < 3; ++i) {
        press("Ctrl+Z");
        QCOMPARE(dump(storedData()), before);
        press("Ctrl+Y");
        QCOMPARE(dump(storedData()), upgraded);
    }
}

void UpgradeNoticeTest::canBeUndoneAfterASave()
{
    openOld(old);
    press("Ctrl+S");
    QVERIFY(!tree().isModified());
    pressButton(editor().notice(), "Undo");
    QVERIFY(tree().isModified());
    QCOMPARE(editor().document().data().value("/LANGUAGE/Version"), std::string("2.0"));
    press("Ctrl+Y");
    QVERIFY(!tree().isModified());
}

// The rows are made again for each object that comes or goes.
void UpgradeNoticeTest::replacesManyObjectsTogether()
{
    qputenv("ZOT5_VEL_LIBSDIR", qgetenv("VEL_BUILD_DIR") + "/libraries");
    qputenv("ZOT5_VEL_LIBS", "rules.vel;upgrades.vel");
    QByteArray text = "LANGUAGE:\n  Version = 2.0\nEND\nFLOW:\n";
    for (int i = 0; i < 30; ++i) {
        text +=
            "  SENSOR: s" + QByteArray::number(i) + "\n    Place = 0 [m], 0 [m], 0 [m]\n  END\n";
    }
    open(newFile("many.vel", text + "END\n"));
    const std::string before = dump(storedData());
    const Message changes = editor().document().upgrade();
    tree().setModified();
    tree().buildTree();
    editor().document().announceUpgrade(*changes);
    QCOMPARE(editor().notice().text(), QString("Upgraded from 2.0 to 3.0: 61 changes"));
    const std::string upgraded = dump(storedData());
    QSignalSpy removed(&editor().document(), &Document::objectRemoved);
    pressButton(editor().notice(), "Undo");
    QCOMPARE(dump(storedData()), before);
    QVERIFY(!tree().isModified());
    press("Ctrl+Y");
    QCOMPARE(dump(storedData()), upgraded);
    QCOMPARE(removed.count(), 0);
}

VEL_EDITOR_TEST(UpgradeNoticeTest)
#include "UpgradeNotice_test.moc"
