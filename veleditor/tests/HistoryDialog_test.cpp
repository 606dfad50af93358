// The dialog "History", and what a save keeps, in the real window.
#include "veleditor/src/HistoryDialog.h"

#include "veleditor/src/DifferenceList.h"
#include "veleditor/src/Document.h"
#include "veleditor/src/NoticeBar.h"
#include "veleditor/tests/EditorTest.h"
#include "veleditor/tests/TreeText.h"
#include "veltext/history.h"

#include <QAction>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTreeWidget>

using namespace velEditor;

namespace {

const char title[] = "/FLOW:Analysis/Title";

} // namespace

class HistoryDialogTest : public EditorTest
{
    Q_OBJECT

private:
    void edit(const char *value);
    void openWithThreeVersions();
    HistoryDialog &openDialog();
    static QTreeWidget &versions() { return *shown<HistoryDialog>().findChild<QTreeWidget *>(); }
    static DifferenceList &list() { return *shown<HistoryDialog>().findChild<DifferenceList *>(); }
    static QLabel &faults() { return *shown<HistoryDialog>().findChild<QLabel *>("Faults"); }
    static QPushButton &restore();
    static QStringList cells(int column);
    static QStringList rows();
    [[nodiscard]] veltext::History history() const
    {
        return veltext::History(file().toStdString());
    }
    [[nodiscard]] QString inHistory(const char *name) const
    {
        return QString::fromStdString(history().folder()) + u'/' + QString::fromLatin1(name);
    }
    static void overwrite(const QString &path, const QByteArray &content);

private slots:
    void isInMore();
    void saysThatThereIsNone();
    void listsWhatSavesHaveReplaced();
    void countsTheChanges();
    void showsTheDifferences();
    void followsTheWindow();
    void followsSaves();
    void restoresAsOneStep();
    void saysWhyAVersionCannotBeRead();
    void saysWhyAVersionIsNotVel();
    void reportsDamage();
    void mayCloseWhileItCounts();
    void keepsNothingOfAnotherTarget();
    void saysOnceThatNothingIsKept();
};

void HistoryDialogTest::edit(const char *value)
{
    QCOMPARE(editor().document().apply(settingValue(title, value)), std::nullopt);
}

/// The versions are "Third run", "Second run" and that of the tests' data, newest
/// first; the file and the window have "Fourth run".
void HistoryDialogTest::openWithThreeVersions()
{
    open(copyOf("duct.vel"));
    for (const char *value : {"Second run", "Third run", "Fourth run"}) {
        edit(value);
        press("Ctrl+S");
    }
}

HistoryDialog &HistoryDialogTest::openDialog()
{
    QApplication::setActiveWindow(&editor());
    press("Ctrl+H");
    return shown<HistoryDialog>();
}

QPushButton &HistoryDialogTest::restore()
{
    return *shown<HistoryDialog>().findChild<QPushButton *>("Restore");
}

QStringList HistoryDialogTest::cells(int column)
{
    QStringList texts;
    for (int i = 0; i < versions().topLevelItemCount(); ++i) {
        texts.append(versions().topLevelItem(i)->text(column));
    }
    return texts;
}

/// The differences that are shown, a line each.
QStringList HistoryDialogTest::rows()
{
    QStringList lines;
    for (int row = 0; row < list().model()->rowCount(); ++row) {
        QStringList texts;
        for (int column = 0; column < DifferenceList::Action; ++column) {
            texts.append(list().model()->index(row, column).data().toString());
        }
        lines.append(texts.join(u'|'));
    }
    return lines;
}

void HistoryDialogTest::overwrite(const QString &path, const QByteArray &content)
{
    QFile out(path);
    QVERIFY2(out.open(QIODevice::WriteOnly | QIODevice::Truncate), qPrintable(path));
    QCOMPARE(out.write(content), content.size());
}

// --- The versions ---------------------------------------------------------------------

void HistoryDialogTest::isInMore()
{
    open(copyOf("duct.vel"));
    const auto *menu = editor().findChild<QMenu *>("MoreMenu");
    const auto *action = editor().findChild<QAction *>("History");
    QVERIFY(menu->actions().contains(action));
    QCOMPARE(action->shortcut().toString(), QString("Ctrl+H"));
}

void HistoryDialogTest::saysThatThereIsNone()
{
    open(copyOf("duct.vel"));
    openDialog();
    QCOMPARE(versions().topLevelItemCount(), 0);
    QCOMPARE(list().accessibleDescription(),
             QString("No version of this file is kept yet.\n"
                     "Each save keeps the version that it replaces."));
    QVERIFY(!restore().isEnabled());
    QVERIFY(!faults().isVisible());
}

void HistoryDialogTest::listsWhatSavesHaveReplaced()
{
    const QDateTime start = QDateTime::currentDateTime().addSecs(-1);
    openWithThreeVersions();
    openDialog();
    QCOMPARE(cells(2), QStringList({"veleditor", "veleditor", "veleditor"}));
    for (const QString &size : cells(1)) {
        QVERIFY2(size.endsWith(" bytes") || size.endsWith(" kB"), qPrintable(size));
    }
    for (const QString &time : cells(0)) {
        const QDateTime parsed = QDateTime::fromString(time, "yyyy-MM-dd HH:mm:ss");
        QVERIFY2(parsed.isValid() && parsed >= start, qPrintable(time));
    }
    QVERIFY(!faults().isVisible());
}

void HistoryDialogTest::countsTheChanges()
{
    openWithThreeVersions();
    openDialog();
    QTRY_COMPARE(cells(3), QStringList({"1", "1", "1"}));
}

void HistoryDialogTest::showsTheDifferences()
{
    openWithThreeVersions();
    openDialog();
    QCOMPARE(versions().indexOfTopLevelItem(versions().currentItem()), 0);
    QCOMPARE(rows(), QStringList("changed|/FLOW:Analysis/Title|Third run|Fourth run"));
    QTest::keyClick(&versions(), Qt::Key_End);
    QCOMPARE(rows(), QStringList("changed|/FLOW:Analysis/Title|First run|Fourth run"));
}

void HistoryDialogTest::followsTheWindow()
{
    openWithThreeVersions();
    openDialog();
    edit("Third run");
    QTRY_COMPARE(rows(), QStringList());
    QCOMPARE(list().accessibleDescription(), QString("This window has the data of this version."));
    QVERIFY(!restore().isEnabled());
}

void HistoryDialogTest::followsSaves()
{
    openWithThreeVersions();
    openDialog();
    QTest::keyClick(&versions(), Qt::Key_End);
    edit("Fifth run");
    editor().doSave();
    QCOMPARE(versions().topLevelItemCount(), 4);
    QCOMPARE(rows(), QStringList("changed|/FLOW:Analysis/Title|First run|Fifth run"));
    QTRY_COMPARE(cells(3), QStringList({"1", "1", "1", "1"}));
}

void HistoryDialogTest::restoresAsOneStep()
{
    openWithThreeVersions();
    const QString before = treeText(tree());
    openDialog();
    QTest::keyClick(&versions(), Qt::Key_End);
    const QString time = cells(0).last().left(16);
    pressButton(shown<HistoryDialog>(), "Restore");
    QCOMPARE(row(title).value(), QString("First run"));
    QCOMPARE(rows(), QStringList());
    QCOMPARE(editor().windowTitle(), file() + " - Modified");
    QCOMPARE(editor().findChild<QAction *>("Undo")->toolTip(),
             "Undo: Restore the version of " + time);
    QVERIFY(contentOf(file()).contains("Fourth run"));
    QApplication::setActiveWindow(&editor());
    press("Ctrl+Z");
    QCOMPARE(treeText(tree()), before);
    QCOMPARE(editor().windowTitle(), file());
}

// --- Damage ---------------------------------------------------------------------------

void HistoryDialogTest::saysWhyAVersionCannotBeRead()
{
    openWithThreeVersions();
    QFile object(inHistory("3.gz"));
    QVERIFY(object.open(QIODevice::ReadWrite));
    QByteArray bytes = object.readAll();
    bytes[bytes.size() / 2] = static_cast<char>(bytes[bytes.size() / 2] ^ 0x55);
    QVERIFY(object.seek(0));
    object.write(bytes);
    object.close();
    openDialog();
    QCOMPARE(rows(), QStringList());
    QVERIFY2(list().accessibleDescription().startsWith("This version cannot be restored:\n"),
             qPrintable(list().accessibleDescription()));
    QVERIFY(!restore().isEnabled());
    QTRY_COMPARE(cells(3), QStringList({"unknown", "unknown", "1"}));
    QTest::keyClick(&versions(), Qt::Key_Down);
    QCOMPARE(rows().size(), 1);
    QVERIFY(restore().isEnabled());
}

void HistoryDialogTest::saysWhyAVersionIsNotVel()
{
    open(copyOf("duct.vel"));
    const QByteArray text = contentOf(file());
    newFile("duct.vel", "FLOW: Analysis\nb c\n");
    QCOMPARE(history().keep("other"), std::string());
    newFile("duct.vel", text);
    openDialog();
    QCOMPARE(cells(2), QStringList("other"));
    QVERIFY2(
        list().accessibleDescription().endsWith("):2: parseVELLineH: syntax error near \"b c\""),
        qPrintable(list().accessibleDescription()));
    QVERIFY(!restore().isEnabled());
    QTRY_COMPARE(cells(3), QStringList("unknown"));
}

void HistoryDialogTest::reportsDamage()
{
    openWithThreeVersions();
    overwrite(inHistory("index"), "broken\n");
    openDialog();
    QVERIFY(faults().isVisible());
    QVERIFY2(faults().text().startsWith("Part of the history is damaged:\n"),
             qPrintable(faults().text()));
    QCOMPARE(versions().topLevelItemCount(), 3);
    QCOMPARE(rows().size(), 1);
}

void HistoryDialogTest::mayCloseWhileItCounts()
{
    openWithThreeVersions();
    for (int i = 0; i < 20; ++i) {
        QTest::keyClick(&openDialog(), Qt::Key_Escape);
        QTRY_VERIFY(visible<HistoryDialog>() == nullptr);
    }
}

// --- Keeping --------------------------------------------------------------------------

void HistoryDialogTest::keepsNothingOfAnotherTarget()
{
    open(copyOf("duct.vel"));
    edit("Second run");
    QVERIFY(editor().save(folder().toStdString() + "/other.vel"));
    QVERIFY(history().list().versions.empty());
}

// The save itself is as always.
void HistoryDialogTest::saysOnceThatNothingIsKept()
{
    open(copyOf("duct.vel"));
    const QByteArray former = contentOf(file());
    QVERIFY(QDir(folder()).mkpath("state/veleditor"));
    static_cast<void>(newFile("state/veleditor/history", "not a folder"));
    qputenv("XDG_STATE_HOME", (folder() + "/state").toUtf8());
    edit("Second run");
    press("Ctrl+S");
    QCOMPARE(editor().windowTitle(), file());
    QCOMPARE(contentOf(file() + ".bak"), former);
    QVERIFY2(editor().notice().text().startsWith(
                 file() + ": the history does not have the previous version: "),
             qPrintable(editor().notice().text()));
    editor().notice().withdraw("state");
    edit("Third run");
    press("Ctrl+S");
    QVERIFY(contentOf(file()).contains("Third run"));
    QCOMPARE(editor().notice().text(), QString());
}

VEL_EDITOR_TEST(HistoryDialogTest)
#include "HistoryDialog_test.moc"
