// Keep Comments and Layout in the window: the setting, what a save writes, and the notice
// about comments that a save dropped.
#include "veleditor/tests/EditorTest.h"

#include "veleditor/src/Document.h"
#include "veleditor/src/MessageDialog.h"
#include "veleditor/src/NoticeBar.h"
#include "veleditor/src/Settings.h"
#include "veleditor/src/UndoHistory.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QMenu>

using namespace velEditor;

class KeepLayoutTest : public EditorTest
{
    Q_OBJECT

private:
    /// The file of settings for the next window, with this content.
    void setUp(const QByteArray &settings = QByteArray());
    [[nodiscard]] QString settingsFile() const;
    QAction &action();
    void set(const char *path, const char *value);
    /// What `Startup.cpp` does when the file is old.
    void upgrade();

private slots:
    void isOffAtFirstAndInTheMenu();
    void isStored();
    void readsTheFileOfSettings();
    void usesADamagedFileOfSettingsOnce();
    void saysThatTheSettingCannotBeStored();
    void savesOnlyTheLinesOfWhatWasEdited();
    void keepsLineEndsEncodingAndMark();
    void savesTwice();
    void saysThatASaveDroppedComments();
    void saysNothingWhereThereAreNoComments();
    void countsNoCommentThatEndsALine();
    void countsOneComment();
    void bringsCommentsBack();
    void bringsCommentsBackWithLaterEdits();
    void offersAgainWhatTheUserDidNotSave();
    void keepsAVersionOfAnotherProgramAsTheBackup();
    void saysWhyItCannotKeepTheLayout();
    void savesOtherNamesFormatted();
    void keepsTheCommentsOfAnUpgrade();
    void keepsTheCommentsOfAnUpgradeThatIsUndone();
    void bringsBackTheCommentsOfAnUpgrade();
};

namespace {

const char text[] = "# top\n"
                    "LANGUAGE:\n"
                    "  Version = 2.1   # now\n"
                    "END\n"
                    "FLOW: Analysis\n"
                    "\tTitle =   First  # why\n"
                    "  Run Mode = Steady\n"
                    "END # of all\n";

const char formatted[] = "LANGUAGE:\n"
                         "  Version = 2.1\n"
                         "END\n"
                         "FLOW: Analysis\n"
                         "  Title = Second\n"
                         "  Run Mode = Steady\n"
                         "END\n";

const char title[] = "/FLOW:Analysis/Title";

const QByteArray on("[save]\nkeepLayout=true\n");

QByteArray replaced(QByteArray bytes, const char *from, const char *to)
{
    return bytes.replace(from, to);
}

} // namespace

QString KeepLayoutTest::settingsFile() const
{
    return folder() + "/config/veleditor/veleditor.conf";
}

void KeepLayoutTest::setUp(const QByteArray &settings)
{
    qputenv("XDG_CONFIG_HOME", (folder() + "/config").toUtf8());
    if (settings.isEmpty()) {
        return;
    }
    QDir().mkpath(folder() + "/config/veleditor");
    QFile out(settingsFile());
    QVERIFY(out.open(QIODevice::WriteOnly));
    out.write(settings);
}

QAction &KeepLayoutTest::action()
{
    return *editor().findChild<QAction *>("KeepLayout");
}

void KeepLayoutTest::set(const char *path, const char *value)
{
    QCOMPARE(editor().document().apply(settingValue(path, value)), std::nullopt);
}

void KeepLayoutTest::upgrade()
{
    const Message changes = editor().document().upgrade();
    QVERIFY(changes.has_value());
    tree().setModified();
    tree().buildTree();
    editor().document().announceUpgrade(*changes);
}

void KeepLayoutTest::isOffAtFirstAndInTheMenu()
{
    setUp();
    open(newFile("a.vel", text));
    QVERIFY(action().isCheckable());
    QVERIFY(!action().isChecked());
    QCOMPARE(action().text(), QString("Keep Comments and &Layout"));
    QVERIFY(editor().findChild<QMenu *>("MoreMenu")->actions().contains(&action()));
    QVERIFY(!QFile::exists(settingsFile()));
    QCOMPARE(editor().notice().text(), QString());
}

void KeepLayoutTest::isStored()
{
    setUp();
    open(newFile("a.vel", text));
    action().trigger();
    QCOMPARE(contentOf(settingsFile()), on);
    QVERIFY(Settings(settingsFile()).keepsLayout());
    action().trigger();
    QVERIFY(!Settings(settingsFile()).keepsLayout());
    QCOMPARE(editor().notice().text(), QString());
}

void KeepLayoutTest::readsTheFileOfSettings()
{
    setUp(on);
    open(newFile("a.vel", text));
    QVERIFY(action().isChecked());
    QCOMPARE(editor().notice().text(), QString());
}

void KeepLayoutTest::usesADamagedFileOfSettingsOnce()
{
    setUp("[save\nkeep");
    open(newFile("a.vel", text));
    QVERIFY(!action().isChecked());
    QCOMPARE(editor().notice().text(),
             "The settings cannot be used: " + settingsFile() + ": it is damaged");
    pressButton(editor().notice(), "Close");
    action().trigger();
    QCOMPARE(contentOf(settingsFile()), on);
    QCOMPARE(editor().notice().text(), QString());

    QVERIFY(Settings(newFile("odd.conf", "[save]\nkeepLayout=maybe\n"))
                .fault()
                .endsWith("odd.conf: save/keepLayout must be true or false"));
    QCOMPARE(Settings(newFile("other.conf", "[x]\ny=1\n")).fault(), QString());
    QCOMPARE(Settings(folder() + "/none.conf").fault(), QString());
    QVERIFY(Settings(folder()).fault().endsWith(": it cannot be read or written"));
}

void KeepLayoutTest::saysThatTheSettingCannotBeStored()
{
    const QString file = newFile("config", "a file, not a folder");
    qputenv("XDG_CONFIG_HOME", file.toUtf8());
    open(newFile("a.vel", text));
    QCOMPARE(editor().notice().text(), QString());
    action().trigger();
    QVERIFY(action().isChecked());
    QVERIFY2(editor().notice().text().startsWith("The setting is not stored: " + file),
             qPrintable(editor().notice().text()));

    qunsetenv("XDG_CONFIG_HOME");
    qunsetenv("HOME");
    Settings none;
    QCOMPARE(none.setKeepsLayout(true), QString("neither XDG_CONFIG_HOME nor HOME names a folder"));
    QVERIFY(none.keepsLayout());
}

void KeepLayoutTest::savesOnlyTheLinesOfWhatWasEdited()
{
    setUp(on);
    open(newFile("a.vel", text));
    set(title, "Second");
    press("Ctrl+S");
    QCOMPARE(contentOf(file()), replaced(text, "First", "Second"));
    QCOMPARE(contentOf(file() + ".bak"), QByteArray(text));
    QCOMPARE(editor().windowTitle(), file());
    QCOMPARE(editor().notice().text(), QString());
}

void KeepLayoutTest::keepsLineEndsEncodingAndMark()
{
    const QByteArray odd = "\xEF\xBB\xBF# caf\xE9\r\nFLOW: Analysis\r\n  Title = First # \xB5\r\n"
                           "  Run Mode = Steady\r\nEND\r\n# end";
    setUp(on);
    open(newFile("a.vel", odd));
    set(title, "Second");
    press("Ctrl+S");
    QCOMPARE(contentOf(file()), replaced(odd, "First", "Second"));
}

// The second save starts from what the first one has written.
void KeepLayoutTest::savesTwice()
{
    setUp(on);
    open(newFile("a.vel", text));
    set(title, "Second");
    press("Ctrl+S");
    QCOMPARE(editor().document().apply(deletingParameter("/FLOW:Analysis/Run Mode")), std::nullopt);
    press("Ctrl+S");
    QCOMPARE(contentOf(file()),
             replaced(replaced(text, "First", "Second"), "  Run Mode = Steady\n", ""));
    QCOMPARE(contentOf(file() + ".bak"), replaced(text, "First", "Second"));
}

void KeepLayoutTest::saysThatASaveDroppedComments()
{
    setUp();
    open(newFile("a.vel", text));
    set(title, "Second");
    press("Ctrl+S");
    QCOMPARE(contentOf(file()), QByteArray(formatted));
    QCOMPARE(editor().notice().text(), QString("This save dropped 4 comments"));
    set(title, "Third");
    press("Ctrl+S");
    QCOMPARE(editor().notice().text(), QString("This save dropped 4 comments"));
    pressButton(editor().notice(), "Close");
    set(title, "Fourth");
    press("Ctrl+S");
    QCOMPARE(editor().notice().text(), QString());
}

void KeepLayoutTest::saysNothingWhereThereAreNoComments()
{
    setUp();
    open(newFile("a.vel", formatted));
    set(title, "Third");
    press("Ctrl+S");
    QCOMPARE(editor().notice().text(), QString());
}

// After a backslash the formatted text has an empty comment, too.
void KeepLayoutTest::countsNoCommentThatEndsALine()
{
    setUp();
    open(newFile("c.vel", "FLOW: Analysis\n  Title = C:\\ #\n  Run Mode = Steady\nEND\n"));
    set("/FLOW:Analysis/Run Mode", "Transient");
    press("Ctrl+S");
    QCOMPARE(contentOf(file()),
             QByteArray("FLOW: Analysis\n  Title = C:\\ #\n  Run Mode = Transient\nEND\n"));
    QCOMPARE(editor().notice().text(), QString());
}

void KeepLayoutTest::countsOneComment()
{
    setUp();
    open(newFile("b.vel", "FLOW: Analysis # one\n  Title = x\nEND\n"));
    set(title, "Third");
    press("Ctrl+S");
    QCOMPARE(editor().notice().text(), QString("This save dropped 1 comment"));
}

void KeepLayoutTest::bringsCommentsBack()
{
    setUp();
    open(newFile("a.vel", text));
    set(title, "Second");
    press("Ctrl+S");
    pressButton(editor().notice(), "Keep Them");
    QCOMPARE(contentOf(file()), replaced(text, "First", "Second"));
    QCOMPARE(contentOf(file() + ".bak"), QByteArray(text)); // not the text without comments
    QVERIFY(action().isChecked());
    QVERIFY(Settings(settingsFile()).keepsLayout());
    QCOMPARE(editor().notice().text(), QString());
    QCOMPARE(editor().windowTitle(), file());
    QCOMPARE(QDir(folder()).entryList(QDir::Files), QStringList({"a.vel", "a.vel.bak"}));

    set(title, "Third");
    press("Ctrl+S");
    QCOMPARE(contentOf(file()), replaced(text, "First", "Third"));
    QCOMPARE(contentOf(file() + ".bak"), replaced(text, "First", "Second"));
}

void KeepLayoutTest::bringsCommentsBackWithLaterEdits()
{
    setUp();
    open(newFile("a.vel", text));
    set(title, "Second");
    press("Ctrl+S");
    set(title, "Third");
    press("Ctrl+S"); // a save without comments replaces the backup
    set("/FLOW:Analysis/Run Mode", "Transient");
    pressButton(editor().notice(), "Keep Them");
    QCOMPARE(contentOf(file()), replaced(replaced(text, "First", "Third"), "Steady", "Transient"));
    QVERIFY(!tree().isModified());
}

void KeepLayoutTest::offersAgainWhatTheUserDidNotSave()
{
    setUp();
    open(newFile("a.vel", text));
    set(title, "Second");
    press("Ctrl+S");
    QCOMPARE(editor().document().apply(addingObject("/PUMP:p", "PUMP: p\nEND\n")), std::nullopt);
    onDialog<ErrorDialog>([](ErrorDialog &dialog) { dialog.reject(); });
    pressButton(editor().notice(), "Keep Them");
    QCOMPARE(contentOf(file()), QByteArray(formatted));
    QCOMPARE(editor().notice().text(), QString("This save dropped 4 comments"));
    onDialog<ErrorDialog>([](ErrorDialog &dialog) { dialog.accept(); });
    pressButton(editor().notice(), "Keep Them");
    QCOMPARE(contentOf(file()), replaced(text, "First", "Second") + "PUMP: p\nEND\n");
}

// Then the former version is what the user must not lose.
void KeepLayoutTest::keepsAVersionOfAnotherProgramAsTheBackup()
{
    setUp();
    open(newFile("a.vel", text));
    set(title, "Second");
    press("Ctrl+S");
    newFile("a.vel", "FLOW: Other\nEND\n");
    editor().notice().withdraw("file");
    pressButton(editor().notice(), "Keep Them");
    QCOMPARE(contentOf(file()), replaced(text, "First", "Second"));
    QCOMPARE(contentOf(file() + ".bak"), QByteArray("FLOW: Other\nEND\n"));
}

void KeepLayoutTest::saysWhyItCannotKeepTheLayout()
{
    setUp(on);
    open(newFile("a.vel", text));
    set(title, "a  b");
    press("Ctrl+S");
    QCOMPARE(contentOf(file()), replaced(formatted, "Second", "a  b"));
    QCOMPARE(editor().notice().text(),
             QString("This save did not keep the layout: /FLOW:Analysis/Title: value \"a  b\" "
                     "cannot be stored in a file: tabs, blanks at its ends and several blanks in a "
                     "row are not kept; use single blanks; it dropped 4 comments"));
    QVERIFY(!tree().isModified());
}

void KeepLayoutTest::savesOtherNamesFormatted()
{
    setUp(on);
    open(newFile("a.vel", text));
    set(title, "Second");
    QVERIFY(editor().save((folder() + "/b.vel").toStdString()));
    QCOMPARE(contentOf(folder() + "/b.vel"), QByteArray(formatted));
    QCOMPARE(contentOf(folder() + "/b.vel.bak"), QByteArray(text));
    QCOMPARE(editor().notice().text(), QString());
}

const char oldText[] = "FLOW: Analysis # all\n"
                       "  Title = First\n"
                       "  Mode = Steady # why\n"
                       "END\n"
                       "LANGUAGE:\n"
                       "  Version = 2.0 # then\n"
                       "END\n";

void KeepLayoutTest::keepsTheCommentsOfAnUpgrade()
{
    setUp(on);
    open(newFile("a.vel", oldText));
    upgrade();
    set(title, "Second");
    press("Ctrl+S");
    QCOMPARE(
        contentOf(file()),
        replaced(replaced(replaced(oldText, "First", "Second"), "Mode", "Run Mode"), "2.0", "2.1"));
}

void KeepLayoutTest::keepsTheCommentsOfAnUpgradeThatIsUndone()
{
    setUp(on);
    open(newFile("a.vel", oldText));
    upgrade();
    press("Ctrl+Z");
    set(title, "Second");
    onDialog<ErrorDialog>([](ErrorDialog &dialog) { dialog.accept(); }); // the former name
    press("Ctrl+S");
    QCOMPARE(contentOf(file()), replaced(oldText, "First", "Second"));
}

void KeepLayoutTest::bringsBackTheCommentsOfAnUpgrade()
{
    setUp();
    open(newFile("a.vel", oldText));
    upgrade();
    press("Ctrl+Z");
    press("Ctrl+Y");
    press("Ctrl+S");
    QCOMPARE(editor().notice().text(), QString("This save dropped 3 comments"));
    pressButton(editor().notice(), "Keep Them");
    QCOMPARE(contentOf(file()), replaced(replaced(oldText, "Mode", "Run Mode"), "2.0", "2.1"));
    QCOMPARE(contentOf(file() + ".bak"), QByteArray(oldText));
}

VEL_EDITOR_TEST(KeepLayoutTest)
#include "KeepLayout_test.moc"
